"""The deck that was shown last, while no viewer shows it: at first the sample deck."""
from __future__ import annotations

import os
import time
from typing import Any, Dict, Optional, Tuple

from ..lines import Gone, Silent
from ..presenter import Absent, Refused, Unavailable
from . import program
from .facts import MISSING, NO_SUCH_SLIDE, SLOW, answered

LONG_SECONDS = 10.0
IDLE_SECONDS = 10.0  # after which nobody reads in a PDF any more
UNREADABLE = "The sample deck cannot be read: install the program again."
FORGOTTEN = "The PDF that was shown cannot be read any more."


class Resting:
    """A file and its current slide. What is told of it is read by a viewer that shows nothing; a
    file that changed is read anew, and the sample deck takes the place of one that has gone."""

    def __init__(self) -> None:
        self.path, self.slide = program.SAMPLE, 1
        self._facts: Dict[str, Any] = {}
        self._aspects: Dict[int, float] = {}  # by slide: pages may differ in their form
        self._read: Optional[Tuple[str, int, int]] = None  # what `_facts` are of
        self._reading: Optional[program.Reading] = None
        self._asked_at = 0.0

    @property
    def is_sample(self) -> bool:
        return self.path == program.SAMPLE

    def follow(self, path: str, slide: int) -> None:
        """A viewer shows this one."""
        if path != self.path:
            self.path = path
            self.stop_reading()
        self.slide, self._read = slide, None

    def look(self) -> Dict[str, Any]:
        if program.find() is None:
            raise Absent(MISSING)
        if self._asked_at + IDLE_SECONDS < time.monotonic():
            self.stop_reading()
        stamp = self._stamp()
        if stamp != self._read:
            self.stop_reading()
            self._facts, self._aspects = self.ask("look"), {}
            self.turn(min(self.slide, self._facts["count"]))
            self._read = stamp
        return self._facts

    def _stamp(self) -> Tuple[str, int, int]:
        try:
            found = os.stat(self.path)
        except OSError:
            if self.is_sample:
                raise Unavailable(UNREADABLE) from None
            self.follow(program.SAMPLE, 1)
            return self._stamp()
        return self.path, found.st_mtime_ns, found.st_size

    def turn(self, slide: int) -> None:
        if not 1 <= slide <= self._facts.get("count", 0):
            raise Refused(NO_SUCH_SLIDE)
        if slide not in self._aspects:
            self._aspects[slide] = self.ask("page", slide)["aspect"]
        self._facts["aspect"] = self._aspects[slide]
        self.slide = slide

    def turn_by(self, slides: int) -> None:
        """Stays at the ends."""
        self.turn(max(1, min(self.slide + slides, self._facts.get("count", 0))))

    def ask(self, action: str, *arguments: Any) -> Dict[str, Any]:
        found = program.find()
        if found is None:
            raise Absent(MISSING)
        if self._reading is None:
            self._reading = program.Reading(found, self.path)
        self._asked_at = time.monotonic()
        try:
            return answered(self._reading.ask(LONG_SECONDS, action, *arguments))
        except (Gone, Silent) as error:
            self.stop_reading()
            if action == "picture" and isinstance(error, Silent):
                raise Refused(SLOW) from None
        if self.is_sample:
            raise Unavailable(UNREADABLE)
        self.follow(program.SAMPLE, 1)
        raise Unavailable(FORGOTTEN)

    def stop_reading(self) -> None:
        if self._reading is not None:
            self._reading.end()
            self._reading = None
