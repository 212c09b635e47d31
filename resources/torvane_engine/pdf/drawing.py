"""Strokes drawn over the pages of a PDF file."""
from __future__ import annotations

import mmap
from typing import Any, Callable, Dict, List, Mapping, NamedTuple, Sequence, Tuple

from .document import Document, Members, Page
from .objects import DAMAGED, Name, Reference, Unreadable, integer, number
from .update import Update

MAX_SIDE = 100_000.0  # of a page, in points
NO_RESOURCES: Members = {}

# /Rotate turns the page that is seen. For each turn, the first four numbers of the matrix that leads
# from there to the page, and which sides (left, bottom, right, top) meet in its upper left corner.
TURNS = {0: ((1, 0, 0, -1), (0, 3)), 90: ((0, 1, 1, 0), (0, 1)),
         180: ((-1, 0, 0, 1), (2, 1)), 270: ((0, -1, -1, 0), (2, 3))}


class Pen(NamedTuple):
    red: float
    green: float
    blue: float
    opacity: float
    width: float  # as a part of the page's width


class Stroke(NamedTuple):
    pen: Pen
    points: Sequence[Tuple[float, float]]  # as parts of the page that is seen, from its upper left


class Shown(NamedTuple):
    """What is seen of a page."""

    width: float
    height: float
    matrix: Tuple[float, ...]  # from its upper left corner, in points, to the page

    @classmethod
    def of(cls, document: Document, page: Page) -> Shown:
        media = box(document, page.all.get("/MediaBox"))
        crop = box(document, page.all.get("/CropBox")) if "/CropBox" in page.all else media
        corners = (max(media[0], crop[0]), max(media[1], crop[1]),
                   min(media[2], crop[2]), min(media[3], crop[3]))
        width, height = corners[2] - corners[0], corners[3] - corners[1]
        if not (0 < width <= MAX_SIDE and 0 < height <= MAX_SIDE):
            raise Unreadable(DAMAGED)
        turn = int(number(document.resolve(page.all.get("/Rotate", b"0")))) % 360
        if turn not in TURNS:
            raise Unreadable(DAMAGED)
        directions, (x, y) = TURNS[turn]
        size = (height, width) if turn in (90, 270) else (width, height)
        return cls(*size, (*directions, corners[x], corners[y]))


def box(document: Document, value: Any) -> Tuple[float, float, float, float]:
    """Two opposite corners in any order."""
    sides = document.resolve(value)
    if not isinstance(sides, list) or len(sides) != 4:
        raise Unreadable(DAMAGED)
    x1, y1, x2, y2 = (number(document.resolve(side)) for side in sides)
    return min(x1, x2), min(y1, y2), max(x1, x2), max(y1, y2)


class Drawing:
    """Draws on one page after the other."""

    def __init__(self, document: Document, update: Update) -> None:
        self._document, self._update = document, update
        self._saving: List[Reference] = []
        # The resources of pages are often shared; a copy for each would be many times the file.
        self._resources: Dict[Any, Tuple[Reference, Members]] = {}

    def draw(self, page: Page, strokes: Sequence[Stroke]) -> None:
        shown = Shown.of(self._document, page)
        resources, states = self._resources_of(page)
        if not self._saving:
            self._saving.append(self._update.add_stream(b"q"))
        # Whatever the page leaves behind is put back before the ink.
        body = ["Q q", "%d %d %d %d %.3f %.3f cm 1 J 1 j [] 0 d" % shown.matrix]
        for pen, points in strokes:
            body.append("/%s gs %.3f %.3f %.3f RG %.3f w" % (
                state_name(states, pen.opacity), *pen[:3], pen.width * shown.width))
            # Two equal points with round ends are a dot.
            path = ["%.2f %.2f" % (x * shown.width, y * shown.height)
                    for x, y in (points if len(points) > 1 else [*points, *points])]
            body.append(path[0] + " m " + " l ".join(path[1:]) + " l S")
        ink = self._update.add_stream("\n".join([*body, "Q"]).encode("ascii"))
        self._update.change(page.reference, {
            **page.own, Name("/Resources"): resources,
            Name("/Contents"): [*self._saving, *self._contents(page), ink]})

    def _contents(self, page: Page) -> List[Any]:
        given = page.own.get("/Contents", b"null")
        inner = self._document.resolve(given)
        return inner if isinstance(inner, list) else [] if inner == b"null" else [given]

    def _resources_of(self, page: Page) -> Tuple[Reference, Members]:
        """And the graphics states in them, for new ones."""
        given = page.all.get("/Resources", NO_RESOURCES)
        key = given if isinstance(given, Reference) else id(given)
        if key not in self._resources:
            members = self._document.members(given)
            members[Name("/ExtGState")] = self._document.members(members.get("/ExtGState", {}))
            reference = given if isinstance(given, Reference) else self._update.new_reference()
            self._resources[key] = reference, members
        reference, members = self._resources[key]
        return reference, members["/ExtGState"]

    def finish(self) -> None:
        for reference, members in self._resources.values():
            self._update.change(reference, members)


def state_name(states: Members, opacity: float) -> str:
    """Of the graphics state with this opacity, which is added if it is not there."""
    state = {Name("/CA"): b"%.2f" % opacity}
    name = Name("/TorvaneInk%d" % round(opacity * 100))
    while states.setdefault(name, state) != state:
        name = Name(name + "x")  # somebody else's
    return name[1:]


def draw_on_file(path: str, count: int, ink: Mapping[int, Sequence[Stroke]],
                 report: Callable[[int, int], None]) -> None:
    """Draws strokes by page number, from 1, on a file of `count` pages. The file is of no use after
    Unreadable or OSError. `report` is told how many pages of how many are done."""
    with open(path, "r+b", buffering=1024 * 1024) as file:
        try:
            data = mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ)
        except ValueError:  # there is nothing in it
            raise Unreadable(DAMAGED) from None
        with data:
            document = Document(data)
            pages = list(document.pages())
            if len(pages) != count:
                raise Unreadable(f"The PDF has {len(pages)} pages for {count} slides: "
                                 "nobody knows which ink belongs to which.")
            drawn = {page: strokes for page, strokes in ink.items() if strokes}
            if not drawn:
                return
            update = Update(document, file)
            drawing = Drawing(document, update)
            for done, page in enumerate(sorted(drawn)):
                report(done, len(drawn))
                drawing.draw(pages[page - 1], drawn[page])
            drawing.finish()
            update.finish()
