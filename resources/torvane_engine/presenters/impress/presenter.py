"""The engine's side of LibreOffice Impress."""
from __future__ import annotations

import os
import shutil
import tempfile
import time
from pathlib import Path
from typing import Any, Optional

from ..lines import Gone, Report, Silent, python_child
from ..presenter import Absent, Document, Empty, Look, Page, Presenter, Refused, Unavailable
from ..wake import Wake
from . import running_office

CALL_SECONDS = 1.5    # a look
# Between two looks: in the editor; in a show, which tells what happens; and while it happens, as it
# is told a little before it can be seen.
EDITOR_SECONDS, SHOW_SECONDS, CHANGE_SECONDS = 0.1, 0.5, 0.05
CHANGING_SECONDS = 0.3
ACTION_SECONDS = 2.5  # an action: a show takes long to begin on a busy machine
START_SECONDS = 5.0  # for the child, UNO and the way to the office
LONG_SECONDS = 10.0
EXPORT_SECONDS, ALL_EXPORT_SECONDS = 10.0, 300.0  # without progress; altogether
SAMPLE = str(Path(__file__).resolve().parents[3] / "sample.odp")
SILENT = "LibreOffice does not answer: look whether it asks something on the computer."
LOST = "The connection to LibreOffice was lost; it is being looked for."
PROBLEMS = {"Absent": Absent, "Empty": Empty, "Refused": Refused, "Unavailable": Unavailable}


class Impress(Presenter):
    name = "LibreOffice"

    def __init__(self, process: Any = None) -> None:
        self._process = process or python_child(__package__)
        self._folder = tempfile.mkdtemp(prefix="torvane-")
        self._changing_until = 0.0

    def _ask(self, seconds: float, action: str, *arguments: Any,
             report: Optional[Report] = None) -> Any:
        if not self._process.is_running:
            if not running_office.may_run():
                raise Absent(running_office.NOT_RUNNING)
            seconds = max(seconds, START_SECONDS)
        try:
            answer = self._process.ask({"do": action, "with": arguments}, seconds, report,
                                       ALL_EXPORT_SECONDS)
        except Silent:
            raise Unavailable(SILENT) from None
        except Gone:
            raise Unavailable(LOST) from None
        problem = answer.get("problem")
        if problem is None:
            return answer.get("answer")
        if problem in PROBLEMS:
            if problem == "Absent" and not running_office.may_run():
                self._process.end()  # needs no memory until an office is there
            raise PROBLEMS[problem](answer["text"])
        raise Unavailable(LOST)

    def look(self) -> Look:
        answer = self._ask(CALL_SECONDS, "look")
        documents = tuple(Document(*one) for one in answer.pop("documents"))
        look = Look(documents, **answer)
        self.poll_seconds = self._pace(look)
        return look

    def _pace(self, look: Look) -> float:
        if not look.presenting:
            return EDITOR_SECONDS
        return CHANGE_SECONDS if time.monotonic() < self._changing_until else SHOW_SECONDS

    def rest(self, seconds: float, wake: Wake) -> bool:
        if not self._process.is_running:
            return super().rest(seconds, wake)
        news = self._process.wait_for_news(seconds, wake)
        if news:
            self._changing_until = time.monotonic() + CHANGING_SECONDS
        return news

    def next(self) -> None:
        self._ask(ACTION_SECONDS, "next")

    def previous(self) -> None:
        self._ask(ACTION_SECONDS, "previous")

    def go_to(self, page: int) -> None:
        self._ask(ACTION_SECONDS, "go_to", page)

    def start(self) -> None:
        self._ask(ACTION_SECONDS, "start")

    def start_sample(self, slide: int) -> None:
        self._ask(LONG_SECONDS, "start_sample", SAMPLE, slide)

    def end(self) -> None:
        self._ask(ACTION_SECONDS, "end")

    def blank(self, on: bool) -> None:
        self._ask(ACTION_SECONDS, "blank", on)

    def choose(self, document: str) -> None:
        self._ask(ACTION_SECONDS, "choose", document)

    def read_page(self, document: str, page: int) -> Page:
        return Page(*self._ask(LONG_SECONDS, "read_page", document, page))

    def picture(self, document: str, page: int, width: int) -> bytes:
        path = os.path.join(self._folder, "slide.png")
        self._ask(LONG_SECONDS, "picture", document, page, width, path)
        with open(path, "rb") as file:
            data = file.read()
        os.remove(path)
        return data

    def export_pdf(self, document: str, path: str, report: Report) -> int:
        return self._ask(EXPORT_SECONDS, "export_pdf", document, path, report=report)

    def close(self) -> None:
        self._process.end()
        shutil.rmtree(self._folder, ignore_errors=True)
