"""The objects of a PDF file as values, and back (ISO 32000-1, 7.2 and 7.3).

A dictionary is a dict, an array a list; numbers, strings and words such as null are the bytes that
stand in the file, so that they are written as they were.
"""
from __future__ import annotations

import re
from typing import Any, Dict, List, NamedTuple, Tuple

DAMAGED = "The PDF is damaged."
PROTECTED = "The PDF is protected by a password: nothing can be drawn on it."
UNKNOWN = "The PDF is packed in a way that the engine does not know."
TOO_LARGE = "The PDF is too large or too complicated to be drawn on."

MAX_DEPTH = 100           # of arrays and dictionaries in each other
MAX_PIECE = 1024 * 1024   # bytes of one name, number or string
MAX_GAP = 64 * 1024       # bytes of spaces and comments between them
SPACE, OTHER = rb"[\0\t\n\f\r ]", rb"[^\0\t\n\f\r ()<>\[\]{}/%]"
GAP = re.compile(rb"(?:" + SPACE + rb"+|%[^\r\n]*)*")
PIECE = re.compile(rb"<<|>>|[\[\]]|/" + OTHER + rb"*|<[0-9A-Fa-f\0\t\n\f\r ]*>|" + OTHER + rb"+")
REFERENCE = re.compile(rb"(\d{1,10})" + SPACE + rb"+(\d{1,5})" + SPACE + rb"+R(?!" + OTHER + rb")")
STRING_MARK = re.compile(rb"[()\\]")
INTEGER = re.compile(rb"\+?\d{1,15}")
NUMBER = re.compile(rb"[+-]?(?:\d{1,15}\.?\d{0,30}|\.\d{1,30})")


class Unreadable(Exception):
    """Its text says why nothing can be drawn on the file, in a sentence."""


class Budget:
    """What reading one file may cost."""

    def __init__(self, pieces: int = 2_000_000, unpacked: int = 256 * 1024 * 1024) -> None:
        self._pieces, self._unpacked = pieces, unpacked

    def spend(self, pieces: int = 0, unpacked: int = 0) -> None:
        self._pieces -= pieces
        self._unpacked -= unpacked
        if self._pieces < 0 or self._unpacked < 0:
            raise Unreadable(TOO_LARGE)


class Name(str):
    """With its slash; escapes (#20) stay as they are."""


class Reference(NamedTuple):
    number: int
    generation: int


class Parser:
    """Reads the objects in a buffer (bytes or a mapped file). Raises Unreadable."""

    def __init__(self, data: Any, budget: Budget) -> None:
        self.data, self.budget = data, budget

    def value(self, at: int) -> Tuple[Any, int]:
        """The object at a place, and the place behind it."""
        return self._whole(*self.piece(at), 0)

    def piece(self, at: int) -> Tuple[Any, int]:
        """The next name, reference, string, number, word or bracket, and the place behind it."""
        self.budget.spend(pieces=1)
        gap = GAP.match(self.data, at, at + MAX_GAP)
        at = gap.end()
        if len(gap[0]) == MAX_GAP:
            raise Unreadable(TOO_LARGE)
        if self.data[at:at + 1] == b"(":
            return self._string(at)
        found = REFERENCE.match(self.data, at, at + 100)
        if found:
            return Reference(int(found[1]), int(found[2])), found.end()
        found = PIECE.match(self.data, at, at + MAX_PIECE)
        if not found:
            raise Unreadable(DAMAGED)
        text = found[0]
        return (Name(text.decode("latin-1")) if text[:1] == b"/" else text), found.end()

    def _string(self, start: int) -> Tuple[bytes, int]:
        """Brackets may be in it in pairs, or behind a backslash."""
        at, open_brackets, end = start, 0, start + MAX_PIECE
        while True:
            self.budget.spend(pieces=1)
            found = STRING_MARK.search(self.data, at, end)
            if not found:
                raise Unreadable(DAMAGED)
            at = found.end() + (found[0] == b"\\")
            open_brackets += {b"(": 1, b")": -1}.get(found[0], 0)
            if not open_brackets:
                return self.data[start:at], at

    def _whole(self, piece: Any, at: int, depth: int) -> Tuple[Any, int]:
        if piece in (b">>", b"]") or depth > MAX_DEPTH:
            raise Unreadable(DAMAGED)
        if piece == b"<<":
            return self._dictionary(at, depth + 1)
        return self._array(at, depth + 1) if piece == b"[" else (piece, at)

    def _array(self, at: int, depth: int) -> Tuple[List[Any], int]:
        items: List[Any] = []
        while True:
            piece, at = self.piece(at)
            if piece == b"]":
                return items, at
            item, at = self._whole(piece, at, depth)
            items.append(item)

    def _dictionary(self, at: int, depth: int) -> Tuple[Dict[Name, Any], int]:
        members: Dict[Name, Any] = {}
        while True:
            key, at = self.piece(at)
            if key == b">>":
                return members, at
            if not isinstance(key, Name):
                raise Unreadable(DAMAGED)
            piece, at = self.piece(at)
            members[key], at = self._whole(piece, at, depth)


def integer(value: Any) -> int:
    """0 or more."""
    if not isinstance(value, bytes) or not INTEGER.fullmatch(value):
        raise Unreadable(DAMAGED)
    return int(value)


def number(value: Any) -> float:
    if not isinstance(value, bytes) or not NUMBER.fullmatch(value):
        raise Unreadable(DAMAGED)
    return float(value)


def written(value: Any) -> bytes:
    if isinstance(value, dict):
        members = b"\n".join(written(key) + b" " + written(one) for key, one in value.items())
        return b"<<" + members + b">>"
    if isinstance(value, list):
        return b"[" + b" ".join(map(written, value)) + b"]"
    if isinstance(value, Reference):
        return b"%d %d R" % value
    if isinstance(value, Name):
        return value.encode("latin-1")
    return b"%d" % value if isinstance(value, int) else value
