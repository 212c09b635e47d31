"""The engine's side of the viewer."""
from __future__ import annotations

import base64
import binascii
import hashlib
import shutil
from typing import Any, Dict

from ..lines import Report
from ..presenter import Absent, Document, Look, Page, Presenter, Refused
from . import program
from .facts import MISSING
from .resting import FORGOTTEN, Resting
from .running import Ended, Running

SAMPLE_TITLE = "Torvane sample deck"
NO_SHOW = "No slide show runs: start it first."
NOT_OPEN = "This presentation is not open any more."
# Between two looks: while a viewer runs, and to find one that somebody has opened.
RUNNING_SECONDS, RESTING_SECONDS = 0.1, 0.5
BROKEN = "The viewer sent no picture."


class Viewer(Presenter):
    """Drives the newest viewer that runs. When its show ends, the deck rests here with its slide, and
    a start shows it again; at first that is the sample deck. Paths come from viewers of the same
    user only."""

    name = "Viewer"
    exports_in_show = True  # by a copy

    def __init__(self) -> None:
        self._running = Running()
        self._resting = Resting()

    def look(self) -> Look:
        self.poll_seconds = RESTING_SECONDS
        if self._running.find():
            self.poll_seconds = RUNNING_SECONDS
            try:
                facts = self._running.ask("look")
                self._resting.follow(facts["path"], facts["slide"])
                return self._told(facts)
            except Ended:
                pass
        return self._told(self._resting.look())

    def _told(self, facts: Dict[str, Any]) -> Look:
        deck = self._resting
        if deck.is_sample:
            document = Document("sample", SAMPLE_TITLE, facts["presenting"])
        else:
            name = hashlib.sha256(deck.path.encode("utf-8", "replace")).hexdigest()[:16]
            document = Document(name, facts["title"], facts["presenting"])
        return Look((document,), document.id, deck.slide, facts["count"], aspect=facts["aspect"],
                    presenting=facts["presenting"], blank=facts["blank"], at_end=facts["at_end"],
                    revision=facts["revision"], is_sample=deck.is_sample)

    # Actions

    def next(self) -> None:
        if self._running.is_there:
            self._running.ask("next")
        else:
            self._resting.turn_by(1)

    def previous(self) -> None:
        if self._running.is_there:
            self._running.ask("previous")
        else:
            self._resting.turn_by(-1)

    def go_to(self, page: int) -> None:
        if self._running.is_there:
            self._running.ask("go_to", page)
        else:
            self._resting.turn(page)

    def start(self) -> None:
        found = program.find()
        if self._running.is_there:
            return
        if found is None:
            raise Absent(MISSING)
        self._running.start(found, self._resting.path, self._resting.slide)

    def end(self) -> None:
        if self._running.is_there:
            self._running.end()

    def blank(self, on: bool) -> None:
        if not self._running.is_there:
            raise Refused(NO_SHOW)
        self._running.ask("blank", on)

    def choose(self, document: str) -> None:
        if self.look().document != document:
            raise Refused(NOT_OPEN)

    # Slides

    def _ask(self, document: str, action: str, *arguments: Any) -> Dict[str, Any]:
        self.choose(document)
        if self._running.is_there:
            try:
                return self._running.ask(action, *arguments)
            except Ended:
                pass
        return self._resting.ask(action, *arguments)

    def read_page(self, document: str, page: int) -> Page:
        facts = self._ask(document, "page", page)
        return Page(facts["title"], facts["notes"])

    def picture(self, document: str, page: int, width: int) -> bytes:
        answer = self._ask(document, "picture", page, width)
        try:
            return base64.b64decode(answer["picture"], validate=True)
        except binascii.Error:
            raise Refused(BROKEN) from None

    def export_pdf(self, document: str, path: str, report: Report) -> int:
        self.choose(document)
        count = self.look().count
        report(0, count)
        try:
            shutil.copyfile(self._resting.path, path)
        except OSError:
            raise Refused(FORGOTTEN) from None
        report(count, count)
        return count

    def close(self) -> None:
        self._resting.stop_reading()
        self._running.close()
