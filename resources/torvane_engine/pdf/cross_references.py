"""Where the objects of a file are (ISO 32000-1, 7.5.4 to 7.5.8): tables, streams, and both at once,
in sections of which each names the one before it."""
from __future__ import annotations

import re
from typing import Any, Dict, List, NamedTuple, Optional, Set, Tuple

from .objects import DAMAGED, PROTECTED, SPACE, TOO_LARGE, Parser, Unreadable, integer
from .streams import SHORT, stream_at

MAX_OBJECTS = 500_000
MAX_SECTIONS = 1000
TAIL = 2048  # bytes at the end of a file in which its last section must be named
SUBSECTION = re.compile(SPACE + rb"*(\d{1,10})" + SPACE + rb"+(\d{1,10})(?=" + SPACE + rb")")
ENTRY = re.compile(SPACE + rb"*(\d{1,10})" + SPACE + rb"+\d{1,5}" + SPACE + rb"+([nf])")
TRAILER = re.compile(SPACE + rb"*trailer")
START = re.compile(rb"startxref" + SPACE + rb"+(\d{1,15})")


class Place(NamedTuple):
    stream: Optional[int]  # number of the object stream it is packed in
    at: int                # in the file, without a stream


class CrossReferences:
    """`places` by object number, None for objects that were deleted."""

    def __init__(self, parser: Parser) -> None:
        self._parser = parser
        self.places: Dict[int, Optional[Place]] = {}
        self.trailer: Dict[str, Any] = {}  # the newest
        self.start = self._newest()
        self.is_table = parser.data[self.start:self.start + 4] == b"xref"
        self._read_sections()

    def _newest(self) -> int:
        data = self._parser.data
        found = list(START.finditer(data, max(len(data) - TAIL, 0)))
        if not found:
            raise Unreadable(DAMAGED)
        return int(found[-1][1])

    def _read_sections(self) -> None:
        at: Optional[int] = self.start
        seen: Set[int] = set()
        while at is not None:
            if at in seen or len(seen) >= MAX_SECTIONS:
                raise Unreadable(DAMAGED)
            seen.add(at)
            trailer = self._section(at)
            if "/Encrypt" in trailer:
                raise Unreadable(PROTECTED)
            self.trailer = self.trailer or trailer
            at = integer(trailer["/Prev"]) if "/Prev" in trailer else None

    def _section(self, at: int) -> Dict[str, Any]:
        if self._parser.data[at:at + 4] != b"xref":
            return self._stream(at)
        trailer, deleted = self._table(at + 4)
        if "/XRefStm" in trailer:
            # Its objects count as deleted for readers that know tables only.
            self._stream(integer(trailer["/XRefStm"]))
        for number in deleted:
            self._add(number, None)
        return trailer

    def _add(self, number: int, place: Optional[Place]) -> None:
        """Newer sections come first."""
        self.places.setdefault(number, place)
        if len(self.places) > MAX_OBJECTS:
            raise Unreadable(TOO_LARGE)

    def _table(self, at: int) -> Tuple[Dict[str, Any], List[int]]:
        data, deleted = self._parser.data, []
        subsection = SUBSECTION.match(data, at, at + SHORT)
        while subsection:
            first, at = int(subsection[1]), subsection.end()
            for number in range(first, first + int(subsection[2])):
                self._parser.budget.spend(pieces=1)
                entry = ENTRY.match(data, at, at + SHORT)
                if not entry:
                    raise Unreadable(DAMAGED)
                at = entry.end()
                if entry[2] == b"n":
                    self._add(number, Place(None, int(entry[1])))
                else:
                    deleted.append(number)
            subsection = SUBSECTION.match(data, at, at + SHORT)
        found = TRAILER.match(data, at, at + SHORT)
        trailer = self._parser.value(found.end())[0] if found else None
        if not isinstance(trailer, dict):
            raise Unreadable(DAMAGED)
        return trailer, deleted

    def _stream(self, at: int) -> Dict[str, Any]:
        # What is needed to read it stands in itself, not behind references.
        _, head, data = stream_at(self._parser, at, lambda value: value)
        try:
            widths = [integer(one) for one in head["/W"]]
            index = [integer(one) for one in head.get("/Index", [b"0", head["/Size"]])]
        except (KeyError, TypeError, ValueError):
            raise Unreadable(DAMAGED) from None
        if len(widths) != 3 or not 0 < sum(widths) <= 64:
            raise Unreadable(DAMAGED)
        row, start = sum(widths), 0
        for first, count in zip(index[::2], index[1::2]):
            if start + count * row > len(data):
                raise Unreadable(DAMAGED)
            for number in range(first, first + count):
                self._parser.budget.spend(pieces=1)
                self._add(number, self._place(data[start:start + row], widths))
                start += row
        return head

    def _place(self, row: bytes, widths: List[int]) -> Optional[Place]:
        behind_kind = widths[0]
        kind = int.from_bytes(row[:behind_kind], "big") if behind_kind else 1
        field = int.from_bytes(row[behind_kind:behind_kind + widths[1]], "big")
        return {1: Place(None, field), 2: Place(field, 0)}.get(kind)
