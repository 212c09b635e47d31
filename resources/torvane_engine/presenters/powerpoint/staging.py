"""PDFs of presentations. PowerPoint may write without a question only into its own container; it
answers before it has begun, and the file grows in pieces."""
from __future__ import annotations

import glob
import os
import shutil
import time
import uuid
from typing import Any, Callable, Dict, NamedTuple, Optional

from ..presenter import NotYet, Refused
from .script import Script

CONTAINER = "~/Library/Containers/com.microsoft.Powerpoint/Data/tmp"
PREFIX = "torvane-"
STILL_SECONDS = 1.0    # without another byte: it is whole
WRITE_SECONDS = 180.0  # then nothing more is expected
PAUSE_SECONDS = 60.0   # after a failure: to try again holds PowerPoint up
SAVE_SECONDS = 10.0
MAX_PDFS = 8           # that are kept, one for each presentation
UNWRITTEN = "PowerPoint did not write the pages of the presentation."
IN_SHOW = "PowerPoint makes no pictures while a slide show runs."


class Pdf(NamedTuple):
    """Page n is slide n. Hidden slides that PowerPoint leaves out are empty pages."""

    path: str
    revision: Any
    count: int


class Pending(NamedTuple):
    """A file that PowerPoint is to write, and its size when it was seen to grow."""

    document: str
    path: str
    revision: Any
    pages: Dict[str, Any]  # what the script needs to complete it
    begun: float
    size: int = 0
    grown: float = 0.0


class Staging:
    """One export at a time; nobody waits for it."""

    def __init__(self, script: Script, folder: str,
                 clock: Callable[[], float] = time.monotonic) -> None:
        self._script, self._folder, self._clock = script, folder, clock
        self._pdfs: Dict[str, Pdf] = {}
        self._pending: Optional[Pending] = None
        self._next_try: Dict[str, float] = {}
        self._container = ""

    def has(self, document: str) -> bool:
        return document in self._pdfs

    def pdf(self, document: str, revision: Any, showing: bool) -> Pdf:
        """Raises NotYet while it is being written, Refused when it is not, and what asking raises."""
        self._finish()
        pdf = self._pdfs.get(document)
        if pdf and (pdf.revision == revision or showing):
            return pdf
        if self._pending is None:
            if showing:
                raise Refused(IN_SHOW)
            if self._clock() < self._next_try.get(document, 0.0):
                raise Refused(UNWRITTEN)
            self._begin(document, revision)
        raise NotYet()

    def _begin(self, document: str, revision: Any) -> None:
        now = self._clock()
        self._next_try[document] = now + PAUSE_SECONDS  # also when PowerPoint hangs over it
        path = os.path.join(self._staging_folder(), f"{PREFIX}{uuid.uuid4().hex}.pdf")
        pages = self._script.ask(SAVE_SECONDS, "save", document=document, path=path)
        self._pending = Pending(document, path, revision, pages, now, grown=now)

    def _staging_folder(self) -> str:
        if not self._container:
            self._container = os.path.expanduser(CONTAINER)
            os.makedirs(self._container, exist_ok=True)
            for left in glob.glob(os.path.join(glob.escape(self._container), PREFIX + "*.pdf")):
                os.remove(left)  # by an engine that was killed
        return self._container

    def _finish(self) -> None:
        """Takes over what is whole by now."""
        pending, now = self._pending, self._clock()
        if pending is None:
            return
        size = os.path.getsize(pending.path) if os.path.exists(pending.path) else 0
        if size != pending.size:
            self._pending = pending._replace(size=size, grown=now)
        elif size and now - pending.grown >= STILL_SECONDS and ends_well(pending.path):
            self._pending = None
            self._take(pending)
        elif now - pending.begun >= WRITE_SECONDS:
            self._pending = None
            self._next_try[pending.document] = now + PAUSE_SECONDS
            remove(pending.path)

    def _take(self, pending: Pending) -> None:
        path = os.path.join(self._folder, os.path.basename(pending.path))
        shutil.move(pending.path, path)
        try:
            self._script.ask(SAVE_SECONDS, "complete", path=path, **pending.pages)
        except Exception:
            remove(path)
            raise
        old = self._pdfs.pop(pending.document, None)
        self._pdfs[pending.document] = Pdf(path, pending.revision, pending.pages["count"])
        del self._next_try[pending.document]
        gone = [old] if old else []
        while len(self._pdfs) > MAX_PDFS:
            gone.append(self._pdfs.pop(next(iter(self._pdfs))))
        for pdf in gone:
            remove(pdf.path)

    def close(self) -> None:
        """Leaves nothing in PowerPoint's folder."""
        if self._pending:
            remove(self._pending.path)


def ends_well(path: str) -> bool:
    with open(path, "rb") as file:
        file.seek(max(os.path.getsize(path) - 1024, 0))
        return b"%%EOF" in file.read()


def remove(path: str) -> None:
    if os.path.exists(path):
        os.remove(path)
