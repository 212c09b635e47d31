"""Strokes of every slide and the numbered event log for pollers."""
from __future__ import annotations

import time
from typing import Any, Dict, Iterator, List, Optional, Tuple

MAX_STROKES = 1000               # of one slide; the oldest make room for new ones
MAX_STROKE_POINTS = 5000         # of one stroke; later points are not kept
MAX_SLIDE_POINTS = 50000         # of one slide; the oldest strokes make room
MAX_SLIDES = 1000                # with ink; those shown longest ago lose theirs
MAX_LOG = 20000                  # events kept for pollers
LASER_SECONDS = 1.0              # a laser event older than this has faded everywhere

Event = Dict[str, Any]


class Page:
    """The strokes of one slide, oldest first."""

    def __init__(self) -> None:
        self.strokes: Dict[int, List[Tuple[float, float]]] = {}
        self.points = 0

    def remove(self, stroke: int) -> None:
        self.points -= len(self.strokes.pop(stroke))

    def events(self) -> Iterator[Event]:
        for stroke, points in self.strokes.items():
            for index, (x, y) in enumerate(points):
                yield {"t": "pt" if index else "begin", "id": stroke, "x": x, "y": y}


class Ink:
    """Strokes of all slides, and the log from which pollers learn what changed.

    Every event has a number; `seq` is the last one's. The log holds the events after `_base`.
    A poller that is further behind is told to clear and then gets the shown slide's strokes,
    so the log may be cut at any time, and is, when the shown ink is replaced as a whole.
    """

    def __init__(self) -> None:
        self.slide: Any = None
        self.seq = 0
        self._page = Page()
        self._pages: Dict[Any, Page] = {None: self._page}  # the one shown last is the last
        self._base = 0
        self._log: List[Tuple[Event, Optional[float]]] = []  # with the time of laser events

    @property
    def stroke_count(self) -> int:
        return len(self._page.strokes)

    def strokes(self, slide: Any) -> List[List[Tuple[float, float]]]:
        """Of any slide, oldest first; copies."""
        page = self._pages.get(slide)
        return [list(points) for points in page.strokes.values()] if page else []

    def show_slide(self, slide: Any) -> None:
        """`slide` is anything that stands for a slide; nothing happens while it is the same."""
        if slide == self.slide:
            return
        if not self._page.strokes:
            del self._pages[self.slide]
        self.slide = slide
        self._page = self._pages[slide] = self._pages.pop(slide, None) or Page()
        while len(self._pages) > MAX_SLIDES:
            del self._pages[next(iter(self._pages))]
        if self.seq:  # else there is nothing that a poller might have to forget
            self._restart_log()

    def apply(self, event: Event) -> None:
        kind = event["t"]
        if kind == "begin":
            self._delete([event["id"]])
            self._page.strokes[event["id"]] = []
            self._add_point(event)
            self._make_room()
        elif kind == "pt":
            # A stroke that was undone, cleared or left on another slide is not an error.
            stroke = self._page.strokes.get(event["id"])
            if stroke is not None and len(stroke) < MAX_STROKE_POINTS:
                self._add_point(event)
                self._make_room()
        elif kind == "del":
            self._delete(event["ids"])
        elif kind == "clear":
            self._page = self._pages[self.slide] = Page()
            self._restart_log()
        else:
            self._record(event, time.monotonic())

    def undo(self) -> None:
        self._delete(list(self._page.strokes)[-1:])

    def events_since(self, since: int) -> List[Event]:
        fresh = time.monotonic() - LASER_SECONDS
        if since >= self._base:
            return [event for event, at in self._log[since - self._base:]
                    if at is None or at >= fresh]
        laser = [event for event, at in self._log if at is not None and at >= fresh]
        return [{"t": "clear"}, *self._page.events(), *laser]

    def _add_point(self, event: Event) -> None:
        self._page.strokes[event["id"]].append((event["x"], event["y"]))
        self._page.points += 1
        self._record(event)

    def _make_room(self) -> None:
        """Drop the oldest strokes of an overfull slide, but never the only one."""
        page = self._page
        while 1 < len(page.strokes) and (len(page.strokes) > MAX_STROKES
                                         or page.points > MAX_SLIDE_POINTS):
            self._delete([next(iter(page.strokes))])

    def _delete(self, strokes: List[int]) -> None:
        present = [stroke for stroke in dict.fromkeys(strokes) if stroke in self._page.strokes]
        for stroke in present:
            self._page.remove(stroke)
        if present:
            self._record({"t": "del", "ids": present})

    def _record(self, event: Event, at: Optional[float] = None) -> None:
        self._log.append((event, at))
        self.seq += 1
        if len(self._log) > MAX_LOG:
            del self._log[:MAX_LOG // 2]
            self._base = self.seq - len(self._log)

    def _restart_log(self) -> None:
        self.seq += 1
        self._base = self.seq
        self._log.clear()
