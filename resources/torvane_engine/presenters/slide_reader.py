"""Reads titles, notes and pictures of slides while the presenter has nothing else to do."""
from __future__ import annotations

import collections
import math
import threading
from typing import Any, Deque, Dict, List, Optional, Tuple

from .picture_cache import Key, Picture, PictureCache
from .presenter import Look, NotYet, Page, Presenter, Progress, Refused

MAX_DOCUMENTS = 8        # whose titles and notes are kept
MAX_WISHES = 64          # pictures that clients wait for at a time
CHANGED_SECONDS = 2.0    # of quiet before a changed document is read again
REST_SECONDS = 1.0       # without a step in a show before anything is read that nobody waits for
LARGE_REST_SECONDS = 1.0  # the same before each picture that could hold up the next step
NOT_YET_SECONDS = 0.25   # until a picture that was on its way is asked for again
SMALL_WIDTH = 320        # pictures up to this width hold up nothing


class SlideReader:
    """One thread calls follow() and step(); wish() may be called by any."""

    def __init__(self, presenter: Presenter, cache: PictureCache) -> None:
        self._presenter, self._cache = presenter, cache
        self._look = Look(count=0)
        self._pages: collections.OrderedDict[str, List[Optional[Page]]] = collections.OrderedDict()
        self._texts: Deque[int] = collections.deque()
        self._pictures: Deque[int] = collections.deque()
        self._due, self._moved = -math.inf, -math.inf
        self._pictures_due = -math.inf
        self._wishes: Dict[Key, threading.Event] = {}
        self._lock = threading.Lock()
        self._first_time = False
        self.pages: Tuple[Page, ...] = ()

    def follow(self, look: Look, now: float) -> None:
        """Learns what is shown; a slide that is shown for the first time is read at once."""
        old, self._look = self._look, look
        known = look.document in self._pages
        if (look.document, look.slide, look.step, look.presenting) != (
                old.document, old.slide, old.step, old.presenting):
            self._moved = now
        if (look.document, look.revision, look.count) != (old.document, old.revision, old.count):
            self._plan(look, known)
            self._due = now + CHANGED_SECONDS if known and look.document == old.document else now
        pages = self._pages.get(look.document, [])
        if 1 <= look.slide <= len(pages) and pages[look.slide - 1] is None:
            self._read(look.slide)

    def _plan(self, look: Look, known: bool) -> None:
        if look.document:
            pages = self._pages.setdefault(look.document, [])
            pages[look.count:] = [None] * (look.count - len(pages))
            self._pages.move_to_end(look.document)
            while len(self._pages) > MAX_DOCUMENTS:
                self._pages.popitem(last=False)
        numbers = range(1, look.count + 1) if look.document else ()
        in_order = sorted(numbers, key=lambda number: number != look.slide)
        self._texts = collections.deque(in_order)
        self._pictures = collections.deque(in_order if self._presenter.idle_width else ())
        self._first_time = not known or None in self._pages.get(look.document, [])
        self._publish()

    def _publish(self) -> None:
        pages = self._pages.get(self._look.document, [])
        self.pages = tuple(page or Page() for page in pages)

    def _read(self, number: int) -> None:
        document = self._look.document
        try:
            page = self._presenter.read_page(document, number)
        except Refused:
            page = Page()  # it has gone meanwhile, as the next look will tell
        self._pages[document][number - 1] = page
        self._publish()

    @property
    def progress(self) -> Optional[Progress]:
        """Of the first reading of a document; later ones are nobody's concern."""
        if self._look.progress or not self._look.document or not self._first_time:
            return self._look.progress
        for task, left in (("slides", self._texts), ("pictures", self._pictures)):
            if left:
                return Progress(task, self._look.count - len(left), self._look.count)
        return None

    def wish(self, page: int, width: int, document: str) -> threading.Event:
        """Asks for a picture; the event is set when it is in the cache or cannot be made.
        Raises Refused when too many are waited for."""
        with self._lock:
            key = (document, page, width)
            if key not in self._wishes and len(self._wishes) >= MAX_WISHES:
                raise Refused("Too many pictures are being made: try again.")
            return self._wishes.setdefault(key, threading.Event())

    def forget_wishes(self) -> None:
        """The presenter cannot make them; nobody should wait."""
        with self._lock:
            wishes, self._wishes = self._wishes, {}
        for event in wishes.values():
            event.set()

    def step(self, now: float) -> float:
        """Reads one thing, if it is time for one; returns when there may be more to do."""
        rest = now - self._moved if self._look.presenting else math.inf
        with self._lock:
            waited_for = sorted(self._wishes, key=lambda key: key[2])
        if now < self._pictures_due and not (self._texts and rest >= REST_SECONDS):
            return self._pictures_due
        for key in waited_for if now >= self._pictures_due else ():
            if key[2] <= SMALL_WIDTH:
                self._make(key, now)
                return now
            if rest >= LARGE_REST_SECONDS:
                self._make(key, now)
                self._moved = now if self._look.presenting else self._moved  # one for each rest
                return now
        if not self._texts and not self._pictures:
            return self._moved + LARGE_REST_SECONDS if waited_for else math.inf
        if now < self._due or rest < REST_SECONDS:
            return min(max(self._due, self._moved + REST_SECONDS if rest < REST_SECONDS else now),
                       self._moved + LARGE_REST_SECONDS if waited_for else math.inf)
        if self._texts:
            self._read(self._texts.popleft())
        else:
            number = self._pictures.popleft()
            if not self._make_small(number, now):
                self._pictures.appendleft(number)
        return now

    def _make_small(self, number: int, now: float) -> bool:
        key = (self._look.document, number, self._presenter.idle_width)
        return self._cache.revision(key) == self._look.revision or self._make(key, now)

    def _make(self, key: Key, now: float) -> bool:
        """Whether nothing is left to do about this picture."""
        revision: Any = self._look.revision
        done = True
        try:
            if self._cache.revision(key) != revision or key[0] != self._look.document:
                self._cache.put(key, Picture.of(revision, self._presenter.picture(*key)))
        except NotYet:
            done, self._pictures_due = False, now + NOT_YET_SECONDS
        except Refused:
            pass  # it has gone meanwhile
        finally:
            if done:
                self._answer(key)
        return done

    def _answer(self, key: Key) -> None:
        with self._lock:
            event = self._wishes.pop(key, None)
        if event:
            event.set()
