"""The script that speaks with PowerPoint, in a process of its own."""
from __future__ import annotations

import os
import time
from typing import Any, Callable, Dict, Optional

from ..lines import Gone, LineProcess, Report, Silent
from ..presenter import Unavailable
from .problems import ASKING, LOST, NEW_SCRIPT, SILENT, WORDS, problem_of

FOLDER = os.path.dirname(os.path.abspath(__file__))
PARTS = ("program", "look", "show", "jump", "pages", "lines")
LOOK_SECONDS = 1.5
PERMISSION_SECONDS = 120.0  # for the user to answer whether PowerPoint may be controlled
# The interpreter keeps memory of every event, so it is replaced now and then.
MAX_CALLS, MAX_SECONDS = 2000, 1800.0


class Silence(Unavailable):
    """PowerPoint has not answered in time."""


class Script:
    """Questions to PowerPoint. Raises what problems.py says, and Silence: a call that hangs ends
    with its process only."""

    def __init__(self, folder: str, clock: Callable[[], float] = time.monotonic) -> None:
        file = os.path.join(folder, "powerpoint.js")
        with open(file, "w", encoding="utf-8") as whole:
            for part in PARTS:
                with open(os.path.join(FOLDER, part + ".js"), encoding="utf-8") as one:
                    whole.write(one.read())
        self._process = LineProcess(["osascript", "-l", "JavaScript", file])
        self._clock = clock
        self._calls, self._started = 0, 0.0
        self._allowed = False
        self._greeted: Optional[float] = None  # when the first event was sent that waits for leave

    def look(self, **arguments: Any) -> Any:
        """A look; between two of them a process that has run for long is replaced."""
        if self._calls >= MAX_CALLS or self._clock() - self._started >= MAX_SECONDS:
            self.end()
        if not self._allowed:
            self._greet()
        return self._ask(LOOK_SECONDS, "look", arguments, None, True)

    def ask(self, seconds: float, action: str, report: Optional[Report] = None,
            **arguments: Any) -> Any:
        """With `report`, `seconds` begin anew with each progress."""
        return self._ask(seconds, action, arguments, report, False)

    def _ask(self, seconds: float, action: str, arguments: Dict[str, Any],
             report: Optional[Report], looking: bool) -> Any:
        self._count()
        try:
            answer = self._process.ask({"do": action, "with": arguments}, seconds, report)
        except Silent:
            raise Silence(SILENT) from None
        except Gone:
            raise Unavailable(LOST) from None
        return self._understand(answer, looking)

    def _count(self) -> None:
        if not self._process.is_running:
            self._calls, self._started = 0, self._clock()
        self._calls += 1

    def _understand(self, answer: Any, looking: bool) -> Any:
        if "refused" in answer:
            kind, text = WORDS[answer["refused"]]
            raise kind(text)
        if "error" in answer:
            if answer["error"] in NEW_SCRIPT:
                self.end()
            raise problem_of(answer["error"], looking)
        return answer["answer"]

    def _greet(self) -> None:
        """The very first event is answered when the user has answered the system's question. The
        process must not be ended before."""
        try:
            if self._greeted is None:
                self._count()
                self._process.lines().send({"do": "hello"}, LOOK_SECONDS)
                self._greeted = self._clock()
            answer = self._process.lines().answer(LOOK_SECONDS)
        except Silent:
            if self._greeted is None or self._clock() - self._greeted >= PERMISSION_SECONDS:
                self.end()
            raise Unavailable(ASKING) from None
        except Gone:
            self.end()
            raise Unavailable(LOST) from None
        self._greeted = None
        self._understand(answer, True)
        self._allowed = True

    def end(self) -> None:
        self._greeted = None
        self._process.end()
