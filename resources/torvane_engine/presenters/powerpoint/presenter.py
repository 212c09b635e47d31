"""The engine's side of PowerPoint."""
from __future__ import annotations

import hashlib
import os
import shutil
import tempfile
import time
from typing import Any, Callable, Dict, Optional, Tuple

from ..lines import Report
from ..presenter import Absent, Document, Look, NotYet, Page, Presenter, Progress, Refused
from .changes import Changes
from .presses import Presses
from .problems import NOTHING_OPEN
from .script import Script, Silence
from .staging import Pdf, Staging

ACTION_SECONDS = 2.5
READ_SECONDS = 3.0          # a slide's title and notes; they take some 60 ms
DRAW_SECONDS = 10.0
SHOW_POLL_SECONDS, EDITOR_POLL_SECONDS = 0.1, 0.2  # a look takes PowerPoint some 20 ms
GLANCE_SECONDS = 0.1        # between two looks at a PDF that is being written
DETAILS_SECONDS = 2.0       # between two looks at what changes seldom


class PowerPoint(Presenter):
    name = "PowerPoint"

    def __init__(self, script: Optional[Script] = None,
                 clock: Callable[[], float] = time.monotonic) -> None:
        self._folder = tempfile.mkdtemp(prefix="torvane-")
        self._script = script or Script(self._folder)
        self._clock = clock
        self._staging = Staging(self._script, self._folder, clock)
        self._presses = Presses()
        self._front: Optional[str] = None
        self._driven: Optional[str] = None   # the full name of its file, as all names here
        self._names: Dict[str, str] = {}     # titles by full names
        self._paths: Dict[str, str] = {}     # full names by ids
        self._changes: Dict[str, Changes] = {}
        self._details_due = 0.0
        self._look = Look()
        self._hangs: Dict[Tuple[str, int], int] = {}  # while reading a document in a revision

    def look(self) -> Look:
        now, presses = self._clock(), self._presses
        seen = self._script.look(
            before={"front": self._front, "driven": self._driven, "stepsOf": presses.slide},
            details=now >= self._details_due)
        if not seen["open"]:
            raise Absent(NOTHING_OPEN)
        self._front, self._driven = seen["front"], seen["driven"]
        changes = self._changes.setdefault(self._driven, Changes())
        if "details" in seen:
            self._details_due = now + DETAILS_SECONDS
            self._names = dict(zip(seen["open"], seen["details"]["names"]))
            changes.seen(seen["details"], seen["presenting"], now)
        self._paths = {identity(path): path for path in seen["open"]}
        self._look = self._found(seen, changes)
        self.poll_seconds = SHOW_POLL_SECONDS if seen["presenting"] else EDITOR_POLL_SECONDS
        return self._look

    def _found(self, seen: Dict[str, Any], changes: Changes) -> Look:
        showing, state, presses = seen["presenting"], seen.get("state"), self._presses
        before = self._look if self._look.document == identity(self._driven) else Look()
        slide = seen["slide"] or min(before.slide, changes.count)
        if showing:
            presses.seen(slide, seen.get("steps"))
        else:
            if before.presenting and (self._hangs or not self._staging.has(self._driven)):
                changes.again()  # for what could not be read in the show
            presses.ended()
        done = state == "done"
        return Look(
            tuple(Document(one, self._names.get(path) or os.path.basename(path),
                           showing and path == self._driven)
                  for one, path in self._paths.items()),
            identity(self._driven), slide, changes.count,
            presses.steps if done else presses.step, presses.steps, changes.aspect, showing,
            state in ("black", "white") or (state == "paused" and before.blank),
            done, changes.revision)

    def _act(self, action: str, report: Optional[Report] = None, **arguments: Any) -> Any:
        return self._script.ask(ACTION_SECONDS, action, report, document=self._driven, **arguments)

    def next(self) -> None:
        self._presses.moved(self._act("next", effects=self._presses.effects_left), 1)

    def previous(self) -> None:
        presses = self._presses
        presses.moved(self._act("previous", effects=presses.step > 0, start=presses.start), -1)

    def go_to(self, page: int) -> None:
        self._presses.moved(self._act(
            "goTo", lambda done, total: self.tell(Progress("jump", done, total)), page=page,
            start=self._presses.start))

    def start(self) -> None:
        self._presses.moved(self._act("start", page=self._look.slide))

    def end(self) -> None:
        self._act("end")

    def blank(self, on: bool) -> None:
        self._act("blank", on=on)

    def choose(self, document: str) -> None:
        path = self._path(document)
        if self._look.presenting and path != self._driven:
            raise Refused("Another presentation is being shown: end its slide show first.")
        self._driven, self._details_due = path, 0.0

    def _path(self, document: str) -> str:
        if document not in self._paths:
            raise Refused("This presentation is not open any more.")
        return self._paths[document]

    def read_page(self, document: str, page: int) -> Page:
        path, key = self._path(document), (document, self._look.revision)
        hangs = self._hangs.get(key, 0)
        if hangs > 1:
            return Page()
        try:
            # Notes make some versions hang, above all in a show; titles are read without them then.
            found = self._script.ask(READ_SECONDS, "read", document=path, page=page, notes=hangs == 0)
        except Silence:
            self._hangs = {key: hangs + 1}
            raise
        return Page(plain(found["title"]), plain(found["notes"]), found["hidden"])

    def picture(self, document: str, page: int, width: int) -> bytes:
        pdf = self._pdf(document)
        if page > pdf.count:
            raise Refused("There is no such slide.")
        to = os.path.join(self._folder, "slide.png")
        self._script.ask(DRAW_SECONDS, "draw", path=pdf.path, page=page, width=width, to=to)
        with open(to, "rb") as file:
            data = file.read()
        os.remove(to)
        return data

    def export_pdf(self, document: str, path: str, report: Report) -> int:
        """Hidden slides may be empty pages. What was edited since the pages were made is in it."""
        changes = self._changes.setdefault(self._path(document), Changes())
        if changes.edited and not self._look.presenting:
            changes.again()
        while True:
            try:
                pdf = self._pdf(document)
                break
            except NotYet:
                report(0, changes.count)
                time.sleep(GLANCE_SECONDS)
        shutil.copyfile(pdf.path, path)
        return pdf.count

    def _pdf(self, document: str) -> Pdf:
        path = self._path(document)
        changes = self._changes.setdefault(path, Changes())
        return self._staging.pdf(path, changes.revision, self._look.presenting)

    def close(self) -> None:
        self._script.end()
        self._staging.close()
        shutil.rmtree(self._folder, ignore_errors=True)


def identity(path: str) -> str:
    """Another one for each file, that does not tell where it lies."""
    return hashlib.sha256(path.encode("utf-8", "replace")).hexdigest()[:16]


def plain(text: str) -> str:
    """With the usual line ends: PowerPoint has its own for paragraphs and for lines."""
    whole = text.encode("utf-8", "replace").decode("utf-8")
    return whole.replace("\r\n", "\n").replace("\r", "\n").replace("\v", "\n")
