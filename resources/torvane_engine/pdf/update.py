"""New and changed objects at the end of a file (ISO 32000-1, 7.5.6)."""
from __future__ import annotations

import zlib
from typing import Any, BinaryIO, Dict, List

from .document import MAX_FILE, Document
from .objects import DAMAGED, TOO_LARGE, Name, Reference, Unreadable, integer, written

MAX_NUMBER = 8_388_607  # of an object (Annex C)
MAX_GENERATION = 65_535
KEPT = ("/Root", "/Info", "/ID")
ROW = (1, 5, 2)  # bytes of the fields of an entry in a cross-reference stream


class Update:
    """One more section, of the same kind as the newest one there is. Nothing that is there moves.
    Raises Unreadable when the file becomes too large, and OSError."""

    def __init__(self, document: Document, file: BinaryIO) -> None:
        self._document, self._file = document, file
        self._end = file.seek(0, 2)
        self._places: Dict[Reference, int] = {}
        self._next = max(integer(document.trailer.get("/Size")),
                         max(document.cross_references.places, default=0) + 1)
        self._write(b"\n")  # the last line may lack its end

    def _write(self, data: bytes) -> None:
        self._end += self._file.write(data)
        if self._end > MAX_FILE or self._next > MAX_NUMBER:
            raise Unreadable(TOO_LARGE)

    def new_reference(self) -> Reference:
        """To an object that change() gives its value later."""
        self._next += 1
        return Reference(self._next - 1, 0)

    def change(self, reference: Reference, value: Any) -> None:
        """The object has this value from now on."""
        if reference.generation > MAX_GENERATION:
            raise Unreadable(DAMAGED)
        self._places[reference] = self._end
        self._write(b"%d %d obj\n%s\nendobj\n" % (*reference, written(value)))

    def add_stream(self, data: bytes) -> Reference:
        reference = self.new_reference()
        self._write_stream(reference, {}, data)
        return reference

    def _write_stream(self, reference: Reference, head: Dict[Name, Any], data: bytes) -> None:
        packed = zlib.compress(data)
        head = {**head, Name("/Length"): len(packed), Name("/Filter"): Name("/FlateDecode")}
        self._places[reference] = self._end
        self._write(b"%d %d obj\n%s\nstream\n" % (*reference, written(head)))
        self._write(packed)
        self._write(b"\nendstream\nendobj\n")

    def finish(self) -> None:
        references, start = self._document.cross_references, self._end
        trailer = {Name(key): references.trailer[key] for key in KEPT if key in references.trailer}
        trailer[Name("/Prev")] = references.start
        if references.is_table:
            self._finish_table(trailer)
        else:
            self._finish_stream(trailer)
        self._write(b"startxref\n%d\n%%%%EOF\n" % start)

    def _finish_table(self, trailer: Dict[Name, Any]) -> None:
        entries = b"".join(b"%d 1\n%010d %05d n \n" % (number, at, generation)
                           for (number, generation), at in sorted(self._places.items()))
        trailer[Name("/Size")] = self._next
        self._write(b"xref\n%strailer\n%s\n" % (entries, written(trailer)))

    def _finish_stream(self, trailer: Dict[Name, Any]) -> None:
        itself = self.new_reference()
        rows: List[bytes] = []
        index: List[int] = []
        for (number, generation), at in sorted({**self._places, itself: self._end}.items()):
            fields = zip((1, at, generation), ROW)
            rows.append(b"".join(value.to_bytes(width, "big") for value, width in fields))
            index += [number, 1]
        trailer.update({Name("/Type"): Name("/XRef"), Name("/Size"): self._next,
                        Name("/W"): list(ROW), Name("/Index"): index})
        self._write_stream(itself, trailer, b"".join(rows))
