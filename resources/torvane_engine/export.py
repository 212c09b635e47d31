"""The PDF of a presentation with the ink of its slides, made beside everything else."""
from __future__ import annotations

import json
import mmap
import os
import shutil
import tempfile
import threading
from typing import Any, Callable, Dict, List, NamedTuple, Optional, Sequence, Tuple

from .log import log_error
from .presenters.chooser import Chooser
from .presenters.lines import Gone, Report, Silent, python_child
from .presenters.presenter import Document, Progress, Refused
from .presenters.presenter_thread import PresenterThread

SHOW_RUNS = "The export starts when the show ends."
CLOSED = "The presentation was closed before its PDF was made."
ENDING = "The engine ends."
SILENT = "The presentation program did not make the PDF in time."
UNDRAWN = "The ink could not be drawn on the PDF."
FAULT = "The PDF could not be made; the engine's log says why."

GLANCE_SECONDS = 0.2    # between two looks whether a show still runs
SEEN_SECONDS = 0.3      # in which a show that has just begun is seen
TURN_SECONDS = 30.0     # for the export to begin, behind pictures that are being made
PAGES_SECONDS = 310.0   # for the pages: beyond what a presenter may take
DRAW_SECONDS, ALL_DRAW_SECONDS = 10.0, 120.0  # for the ink: without progress; altogether

# Red, green, blue, opacity, and the width as a part of the slide's: as the helper draws it.
PEN = (1.0, 59 / 255, 48 / 255, 1.0, 0.005)

Points = Sequence[Tuple[float, float]]


class Status(NamedTuple):
    """What the state says of it. Never changed, only replaced."""

    state: str = "none"  # waiting, running, done, failed
    document: Optional[str] = None
    progress: Optional[Progress] = None
    sentence: Optional[str] = None

    @property
    def is_under_way(self) -> bool:
        return self.state in ("waiting", "running")


class Exporter:
    """Makes one PDF at a time. Every method may be called from any thread, and none waits.

    `strokes_of` is asked for the strokes of a slide, by document and number. The file is made in a
    folder of its own that only its owner may enter. When it is done its name leaves the disk and it
    is kept mapped, so nothing remains of it, however the engine ends.
    """

    def __init__(self, chooser: Chooser, strokes_of: Callable[[str, int], List[Points]]) -> None:
        self._chooser, self._strokes_of = chooser, strokes_of
        self._writer = python_child("torvane_engine.pdf")
        self._status = Status()
        self._file: Optional[Tuple[str, Any]] = None
        self._folder: Optional[str] = None
        self._closed = threading.Event()
        self._lock = threading.Lock()  # of a start

    def status(self) -> Dict[str, Any]:
        status = self._status
        progress = status.progress._asdict() if status.progress else None
        return {**status._asdict(), "progress": progress}

    def file(self) -> Optional[Tuple[str, Any]]:
        """The title of the presentation and the file, a buffer. None when none was asked for.
        Raises Refused while it is not there."""
        status, file = self._status, self._file
        if status.state == "none":
            return None
        if status.state != "done" or file is None:
            raise Refused(status.sentence or "The PDF is being made.")
        return file

    def start(self, identifier: Optional[str]) -> None:
        """Of an open presentation, or of the one that is driven. Does nothing while one is made.
        Raises Refused."""
        with self._lock:
            if self._status.is_under_way:
                return
            thread, document = self._chooser.find(identifier)
            if thread.snapshot.problem is not None:
                raise Refused(thread.snapshot.problem)
            waits = self._is_held_up(thread)
            self._file, self._status = None, Status(
                "waiting" if waits else "running", document.id, sentence=SHOW_RUNS if waits else None)
            threading.Thread(target=self._run, args=(thread, document), daemon=True).start()

    def close(self) -> None:
        """Ends what is under way and leaves nothing on the disk."""
        self._closed.set()
        self._writer.end()
        self._remove_folder()

    def _remove_folder(self) -> None:
        if self._folder is not None:
            shutil.rmtree(self._folder, ignore_errors=True)

    def _tell(self, **members: Any) -> None:
        self._status = self._status._replace(**{"progress": None, "sentence": None, **members})

    def _run(self, thread: PresenterThread, document: Document) -> None:
        failure: Optional[str] = None
        try:
            self._folder = tempfile.mkdtemp(prefix="torvane-export-")
            path = os.path.join(self._folder, "slides.pdf")
            count = self._write_pages(thread, document.id, path)
            self._draw_ink(document.id, path, count)
            with open(path, "rb") as file:
                self._file = document.title, mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ)
        except Refused as error:
            failure = str(error)
        except OSError as error:
            failure = f"The PDF could not be written: {error.strerror}."
        except Exception as error:  # a fault of the engine's own must not look like a long export
            log_error(f"export: {error!r}")
            failure = FAULT
        self._remove_folder()
        self._tell(state="failed" if failure else "done", sentence=failure)

    def _write_pages(self, thread: PresenterThread, document: str, path: str) -> int:
        """Returns how many there are."""
        while True:
            self._wait_for_the_show(thread, document)
            self._tell(state="running")
            try:
                ticket = thread.submit("export_pdf", document, path, self._report("pages"),
                                       patience=TURN_SECONDS)
                if not ticket.wait(PAGES_SECONDS):
                    raise Refused(SILENT)
                return ticket.result
            except Refused:
                self._closed.wait(SEEN_SECONDS)
                if not self._is_held_up(thread):
                    raise

    def _wait_for_the_show(self, thread: PresenterThread, document: str) -> None:
        while self._is_held_up(thread):
            self._tell(state="waiting", sentence=SHOW_RUNS)
            if self._closed.wait(GLANCE_SECONDS):
                raise Refused(ENDING)
        if all(one.id != document for one in thread.snapshot.look.documents):
            raise Refused(CLOSED)

    def _is_held_up(self, thread: PresenterThread) -> bool:
        """The program would stand still in the middle of a show, whichever presentation's it is."""
        look = thread.snapshot.look
        shows = look.presenting or any(one.presenting for one in look.documents)
        return shows and not thread.presenter.exports_in_show

    def _report(self, task: str) -> Report:
        def report(done: int, total: int) -> None:
            if self._status.state == "running":  # else it comes too late
                self._tell(progress=Progress(task, done, total))
        return report

    def _draw_ink(self, document: str, path: str, count: int) -> None:
        ink = path + ".ink"
        with open(ink, "w", encoding="ascii") as file:
            for page in range(1, count + 1):
                for points in self._strokes_of(document, page):
                    file.write(json.dumps([page, PEN, points]) + "\n")
        try:
            answer = self._writer.ask({"pdf": path, "count": count, "ink": ink}, DRAW_SECONDS,
                                      self._report("ink"), ALL_DRAW_SECONDS)
        except (Gone, Silent):
            raise Refused(UNDRAWN) from None
        finally:
            self._writer.end()  # it needs no memory until the next time
        if answer.get("problem") is not None:
            raise Refused(answer["problem"])
