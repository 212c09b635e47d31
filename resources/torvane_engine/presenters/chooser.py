"""Which of the presenters the engine's actions go to."""
from __future__ import annotations

import threading
import time
from typing import Any, Dict, List, Optional, Sequence, Tuple

from .presenter import Document, Refused
from .presenter_thread import PresenterThread, Snapshot

START_SECONDS = 0.3  # for the presenters' first looks, all together
NOT_OPEN = "This presentation is not open."


class Chooser:
    """Presenters in their order of preference; the last one is what is left without the others."""

    def __init__(self, threads: Sequence[PresenterThread]) -> None:
        self._threads = list(threads)
        self._active = self._threads[-1]
        self._judged: List[Optional[Snapshot]] = [None] * len(self._threads)
        self._chosen: Optional[Tuple[PresenterThread, str]] = None
        self._lock = threading.Lock()

    def start(self) -> None:
        for thread in self._threads:
            thread.start()
        deadline = time.monotonic() + START_SECONDS
        for thread in self._threads:
            thread.first_look.wait(max(deadline - time.monotonic(), 0))

    def close(self) -> None:
        for thread in self._threads:
            thread.stop()

    def active(self) -> PresenterThread:
        """The one whose show runs; one that is out of reach for a moment; the one that was chosen;
        the first that has a presentation."""
        with self._lock:
            snapshots = [thread.snapshot for thread in self._threads]
            if any(new is not old for new, old in zip(snapshots, self._judged)):
                self._active, self._judged = self._pick(snapshots), snapshots
            return self._active

    def _pick(self, all_snapshots: List[Snapshot]) -> PresenterThread:
        snapshots = list(zip(self._threads, all_snapshots))
        there = [(thread, snapshot) for thread, snapshot in snapshots if snapshot.look.document]
        if any(thread is self._active and snapshot.problem for thread, snapshot in there):
            return self._active
        for thread, snapshot in there:
            if snapshot.look.presenting and snapshot.problem is None:
                return thread
        for thread, snapshot in there:
            if self._chosen and self._chosen == (thread, snapshot.look.document):
                return thread
        usable = [thread for thread, snapshot in there if snapshot.problem is None]
        return usable[0] if usable else self._threads[0]

    def starter(self) -> Tuple[PresenterThread, str, Tuple[Any, ...]]:
        """Who starts a show, by which action: the active one, or a program with nothing open that can
        show the sample deck better."""
        active = self.active()
        look = active.snapshot.look
        if look.is_sample and not look.presenting:
            for thread in self._threads[:self._threads.index(active)]:
                if thread.snapshot.empty:
                    return thread, "start_sample", (look.slide,)
        return active, "start", ()

    def problem(self) -> Optional[str]:
        """The active one's; else, while there is but a sample at rest, why a better one is not active."""
        active = self.active()
        snapshot = active.snapshot
        if snapshot.problem is not None or snapshot.look.presenting or not snapshot.look.is_sample:
            return snapshot.problem
        before = self._threads[:self._threads.index(active)]
        return next((thread.snapshot.problem for thread in before if thread.snapshot.problem), None)

    def documents(self) -> List[Document]:
        return [document for documents in self._by_thread().values() for document in documents]

    def _by_thread(self) -> Dict[PresenterThread, Tuple[Document, ...]]:
        return {thread: thread.snapshot.look.documents for thread in self._threads}

    def find(self, document: Optional[str]) -> Tuple[PresenterThread, Document]:
        """An open presentation and who drives it; without an id the one that is driven. Raises
        Refused."""
        wanted = self.active().snapshot.look.document if document is None else document
        for thread, documents in self._by_thread().items():
            for one in documents:
                if one.id == wanted:
                    return thread, one
        raise Refused((document is None and self.problem()) or NOT_OPEN)

    def choose(self, document: str, seconds: float) -> None:
        """Makes an open presentation the active one; waits `seconds` for it. Raises Refused."""
        thread, _ = self.find(document)
        showing = self.active()
        if showing is not thread and showing.snapshot.look.presenting:
            raise Refused("Another presentation is being shown: end its slide show first.")
        thread.submit("choose", document).wait(seconds)
        with self._lock:
            self._chosen = (thread, document)
            self._judged = [None] * len(self._threads)
