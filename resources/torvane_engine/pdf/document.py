"""A PDF file's objects and pages (ISO 32000-1, 7.7.3)."""
from __future__ import annotations

from typing import Any, Dict, Iterator, List, NamedTuple, Optional, Set, Tuple

from .cross_references import CrossReferences
from .objects import DAMAGED, TOO_LARGE, Budget, Name, Parser, Reference, Unreadable, integer
from .streams import object_at, stream_at

MAX_FILE = 256 * 1024 * 1024
MAX_PAGES = 10_000
MAX_NODES = 100_000  # of the tree that the pages are in
MAX_STEPS = 30       # from a reference to a reference and so on
INHERITED = ("/Resources", "/MediaBox", "/CropBox", "/Rotate")

Members = Dict[Name, Any]


class Page(NamedTuple):
    reference: Reference
    own: Members        # as it is in the file
    all: Members        # with what it inherits


class Document:
    """`data` is bytes or a mapped file. Everything raises Unreadable."""

    def __init__(self, data: Any, budget: Optional[Budget] = None) -> None:
        if len(data) > MAX_FILE:
            raise Unreadable(TOO_LARGE)
        self._parser = Parser(data, budget or Budget())
        self.cross_references = CrossReferences(self._parser)
        self.trailer = self.cross_references.trailer
        self._packed: Dict[int, Tuple[Parser, Dict[int, int]]] = {}  # object streams, unpacked
        self._unpacking: Set[int] = set()

    def resolve(self, value: Any) -> Any:
        """What a reference leads to; anything else is itself. Missing objects are null."""
        for _ in range(MAX_STEPS):
            if not isinstance(value, Reference):
                return value
            value = self._object(value.number)
        raise Unreadable(DAMAGED)

    def members(self, value: Any) -> Members:
        """Of a dictionary, or of one that a reference leads to; a copy."""
        found = self.resolve(value)
        if not isinstance(found, dict):
            raise Unreadable(DAMAGED)
        return dict(found)

    def _object(self, number: int) -> Any:
        place = self.cross_references.places.get(number)
        if place is None:
            return b"null"
        if place.stream is not None:
            parser, places = self._stream(place.stream)
            return parser.value(places[number])[0] if number in places else b"null"
        found, value, _ = object_at(self._parser, place.at)
        if found != number:
            raise Unreadable(DAMAGED)
        return value

    def _stream(self, number: int) -> Tuple[Parser, Dict[int, int]]:
        """An object stream: what is in it, and where (7.5.7)."""
        if number not in self._packed:
            place = self.cross_references.places.get(number)
            # One that is packed itself, or needs itself to be unpacked, is none.
            if place is None or place.stream is not None or number in self._unpacking:
                raise Unreadable(DAMAGED)
            self._unpacking.add(number)
            _, head, data = stream_at(self._parser, place.at, self.resolve)
            self._unpacking.remove(number)
            parser = Parser(data, self._parser.budget)
            first = integer(self.resolve(head.get("/First")))
            self._packed[number] = parser, self._places(parser, head, first)
        return self._packed[number]

    def _places(self, parser: Parser, head: Members, first: int) -> Dict[int, int]:
        places: Dict[int, int] = {}
        at = 0
        for _ in range(integer(self.resolve(head.get("/N")))):
            number, at = parser.piece(at)
            place, at = parser.piece(at)
            places[integer(number)] = first + integer(place)
        return places

    def pages(self) -> Iterator[Page]:
        root = self.members(self.trailer.get("/Root"))
        waiting: List[Tuple[Any, Members]] = [(root.get("/Pages"), {})]
        seen: Set[Any] = set()
        count = 0
        while waiting:
            reference, above = waiting.pop()
            if not isinstance(reference, Reference) or reference in seen or len(seen) >= MAX_NODES:
                raise Unreadable(DAMAGED)
            seen.add(reference)
            own = self.members(reference)
            if "/Kids" in own:
                kids = self.resolve(own["/Kids"])
                if not isinstance(kids, list) or len(kids) > MAX_NODES:
                    raise Unreadable(DAMAGED)
                here = {**above, **{key: own[key] for key in INHERITED if key in own}}
                waiting.extend((kid, here) for kid in reversed(kids))
                continue
            count += 1
            if count > MAX_PAGES:
                raise Unreadable(TOO_LARGE)
            yield Page(reference, own, {**above, **own})
