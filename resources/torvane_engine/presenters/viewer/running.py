"""The show of the newest viewer that runs."""
from __future__ import annotations

import time
from typing import Any, Dict, Optional

from ..lines import Gone, Silent
from ..presenter import Refused, Unavailable
from . import program, sockets
from .facts import SLOW, answered

START_SECONDS = 2.0  # until the first slide is seen
SEEN_SECONDS = 0.25  # that an end is waited for
GLANCE_SECONDS = 0.02
CALL_SECONDS = 1.5
PICTURE_SECONDS = 1.0  # the next step of the show must not wait for a page that is hard to draw
SILENT = "The viewer does not answer: end its slide show with Escape, or end the program."
LOST = "The viewer of the slides has ended unexpectedly: start the slide show again."
FAILED = "The viewer has ended at once."


class Ended(Refused):
    """The viewer was closed on purpose."""


class Running:
    """Viewers of any origin are found; one that was started here is no different, but that it is
    waited for and that its complaint is told."""

    def __init__(self) -> None:
        self._show: Optional[sockets.Show] = None
        self._started: Optional[program.Showing] = None

    def find(self) -> bool:
        """Whether there is one."""
        newest = sockets.newest(self._show)
        # One that is ending has no socket any more; its connection tells when.
        if newest is not None and newest is not self._show:
            self._leave()
            self._show = newest
        if self._started is not None and self._started.has_ended():
            self._started.forget()
            self._started = None
        return self.is_there

    @property
    def is_there(self) -> bool:
        return self._show is not None

    def ask(self, action: str, *arguments: Any) -> Dict[str, Any]:
        show = self._show
        if show is None:
            raise Ended("The slide show has ended.")
        try:
            seconds = PICTURE_SECONDS if action == "picture" else CALL_SECONDS
            return answered(show.ask(seconds, action, *arguments))
        except Silent:
            if action == "picture":
                raise Refused(SLOW) from None  # the answer, when it comes, is passed over
            self._leave()
            raise Unavailable(SILENT) from None
        except Gone:
            self._leave()
            if not show.has_left():
                raise Unavailable(LOST) from None
            raise Ended("The slide show has ended.") from None

    def start(self, found: str, path: str, slide: int) -> None:
        if self._started is None:
            self._started = program.Showing(found, path, slide)
        deadline = time.monotonic() + START_SECONDS
        while time.monotonic() < deadline:
            if self._started.has_ended():
                raise Refused(self._started.complaint() or FAILED)
            if sockets.newest_first() and self.find() and self.ask("look")["presenting"]:
                return
            time.sleep(GLANCE_SECONDS)

    def end(self) -> None:
        show = self._show
        try:
            self.ask("end")
        except Ended:
            return
        deadline = time.monotonic() + SEEN_SECONDS
        while not show.has_left() and time.monotonic() < deadline:
            time.sleep(GLANCE_SECONDS)

    def _leave(self) -> None:
        if self._show is not None:
            self._show.close()
            self._show = None

    def close(self) -> None:
        self._leave()
        if self._started is not None:
            self._started.forget()
