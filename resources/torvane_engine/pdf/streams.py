"""Streams and their filters (ISO 32000-1, 7.3.8 and 7.4.4), as far as cross-references and packed
objects use them: zlib, with or without the predictors of PNG."""
from __future__ import annotations

import re
import zlib
from typing import Any, Callable, Dict, Tuple

from .objects import DAMAGED, SPACE, UNKNOWN, Parser, Unreadable, integer

MAX_STREAM = 64 * 1024 * 1024  # bytes, packed and unpacked
HEADER = re.compile(SPACE + rb"*(\d{1,10})" + SPACE + rb"+(\d{1,5})" + SPACE + rb"+obj")
STREAM = re.compile(SPACE + rb"*stream(?:\r\n|\n|\r)")
SHORT = 1000  # bytes in which a header must be found

Resolve = Callable[[Any], Any]  # follows references


def object_at(parser: Parser, at: int) -> Tuple[int, Any, int]:
    """The number of the object that begins there, its value, and the place behind that."""
    found = HEADER.match(parser.data, at, at + SHORT)
    if not found:
        raise Unreadable(DAMAGED)
    value, after = parser.value(found.end())
    return int(found[1]), value, after


def stream_at(parser: Parser, at: int, resolve: Resolve) -> Tuple[int, Dict[str, Any], bytes]:
    """Number, dictionary and unpacked data of the stream that begins there."""
    number, head, at = object_at(parser, at)
    found = STREAM.match(parser.data, at, at + SHORT)
    if not found or not isinstance(head, dict):
        raise Unreadable(DAMAGED)
    start, length = found.end(), integer(resolve(head.get("/Length")))
    if length > min(MAX_STREAM, len(parser.data) - start):
        raise Unreadable(DAMAGED)
    return number, head, _unpack(parser, parser.data[start:start + length], head, resolve)


def _unpack(parser: Parser, packed: bytes, head: Dict[str, Any], resolve: Resolve) -> bytes:
    filters = _only(resolve(head.get("/Filter")), resolve)
    if filters in (None, b"null"):
        return packed
    if filters != "/FlateDecode":
        raise Unreadable(UNKNOWN)
    unpacker = zlib.decompressobj()
    try:
        data = unpacker.decompress(packed, MAX_STREAM)
    except zlib.error:
        raise Unreadable(DAMAGED) from None
    parser.budget.spend(unpacked=len(data))
    if unpacker.unconsumed_tail:
        raise Unreadable(DAMAGED)
    settings = _only(resolve(head.get("/DecodeParms")), resolve)
    if not isinstance(settings, dict):
        return data
    given = {key: integer(resolve(value)) for key, value in settings.items()}
    kind = given.get("/Predictor", 1)
    if kind == 1:
        return data
    if kind < 10:
        raise Unreadable(UNKNOWN)
    bits = given.get("/Colors", 1) * given.get("/BitsPerComponent", 8)
    row = (bits * given.get("/Columns", 1) + 7) // 8
    if not 0 < bits <= 256 or not 0 < row <= len(data):
        raise Unreadable(DAMAGED)
    return unpredicted(data, row, max(bits // 8, 1))


def _only(value: Any, resolve: Resolve) -> Any:
    """A filter may be given alone or as a list of one."""
    if not isinstance(value, list):
        return value
    if len(value) > 1:
        raise Unreadable(UNKNOWN)
    return resolve(value[0]) if value else None


def unpredicted(data: bytes, length: int, pixel: int) -> bytes:
    """Takes back the predictors of PNG: rows of `length` bytes, each behind its own's number."""
    rows, above = [], bytearray(length)
    for start in range(0, len(data), length + 1):
        row = bytearray(data[start + 1:start + 1 + length])
        row.extend(bytes(length - len(row)))
        _take_back(data[start], row, above, pixel)
        rows.append(row)
        above = row
    return b"".join(rows)


def _take_back(kind: int, row: bytearray, above: bytearray, pixel: int) -> None:
    if kind > 4:
        raise Unreadable(DAMAGED)
    if kind == 2:  # by far the most common one
        row[:] = bytes([(one + up) & 255 for one, up in zip(row, above)])
    elif kind:
        for index in range(len(row)):
            left, corner = (row[index - pixel], above[index - pixel]) if index >= pixel else (0, 0)
            row[index] = (row[index] + expected(kind, left, above[index], corner)) & 255


def expected(kind: int, left: int, up: int, corner: int) -> int:
    """By its neighbours (PNG specification, 9.2 to 9.4)."""
    if kind == 1:
        return left
    if kind == 3:
        return (left + up) // 2
    guess = left + up - corner
    return min((left, up, corner), key=lambda one: abs(guess - one))
