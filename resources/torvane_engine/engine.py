"""Presentation, ink and overlay picture as one state."""
from __future__ import annotations

import threading
from typing import Any, Dict, List, Optional, Tuple

from . import VERSION
from .export import Exporter
from .ink import Event, Ink
from .presenters.chooser import Chooser
from .presenters.picture_cache import Picture
from .presenters.presenter_thread import Snapshot

ACTION_SECONDS = 0.3  # that an answer waits for what its action did


class Engine:
    """Every method may be called from any thread. None waits for a presentation program, but
    actions for ACTION_SECONDS and pictures for as long as they may take."""

    def __init__(self, chooser: Chooser) -> None:
        self._chooser = chooser
        self._ink = Ink()
        self._overlay: Optional[Tuple[bytes, str]] = None
        self._overlay_version = 0
        self._lock = threading.Lock()  # of ink and overlay; nothing is waited for with it
        self._exporter = Exporter(chooser, self._strokes)

    def state(self) -> Dict[str, Any]:
        with self._lock:
            shown = self._follow()
            look, progress = shown.look, shown.progress
            document = next((one for one in look.documents if one.id == look.document), None)
            return {"version": VERSION, "deck": document.title if document else "",
                    "document": look.document or None, "slide": look.slide, "count": look.count,
                    "title": shown.page.title, "step": look.step, "steps": look.steps,
                    "presenting": look.presenting, "blank": look.blank, "atEnd": look.at_end,
                    "aspect": look.aspect, "problem": self._chooser.problem(),
                    "progress": progress._asdict() if progress else None,
                    "strokes": self._ink.stroke_count, "inkSeq": self._ink.seq,
                    "overlayV": self._overlay_version, "export": self._exporter.status()}

    def slides(self) -> Dict[str, Any]:
        shown = self._shown()
        return {"count": shown.look.count, "slides": [
            {"slide": number, "title": page.title, "hasNotes": bool(page.notes),
             "hidden": page.hidden, "picture": f"/api/slides/{number}/picture"}
            for number, page in enumerate(shown.pages, 1)]}

    def has_slide(self, number: Any) -> bool:
        return type(number) is int and 1 <= number <= self._shown().look.count

    def notes(self, number: int) -> Dict[str, Any]:
        pages = self._shown().pages
        return {"slide": number, "notes": pages[number - 1].notes if number <= len(pages) else ""}

    def picture(self, number: int, width: int) -> Optional[Picture]:
        return self._chooser.active().picture(number, width)

    def documents(self) -> Dict[str, Any]:
        return {"document": self._shown().look.document or None,
                "documents": [one._asdict() for one in self._chooser.documents()]}

    def choose(self, document: str) -> Dict[str, Any]:
        self._chooser.choose(document, ACTION_SECONDS)
        return self.state()

    def act(self, action: str, *arguments: Any) -> Dict[str, Any]:
        """One of Presenter's actions. Raises Refused."""
        self._chooser.active().submit(action, *arguments).wait(ACTION_SECONDS)
        return self.state()

    def start_show(self) -> Dict[str, Any]:
        """Raises Refused."""
        thread, action, arguments = self._chooser.starter()
        thread.submit(action, *arguments).wait(ACTION_SECONDS)
        return self.state()

    def add_ink(self, events: List[Event]) -> Dict[str, Any]:
        with self._lock:
            self._follow()
            for event in events:
                self._ink.apply(event)
        return self.state()

    def undo_ink(self) -> Dict[str, Any]:
        with self._lock:
            self._follow()
            self._ink.undo()
        return self.state()

    def ink_since(self, since: int) -> Dict[str, Any]:
        with self._lock:
            shown = self._follow()
            return {"seq": self._ink.seq, "events": self._ink.events_since(since),
                    "presenting": shown.look.presenting, "aspect": shown.look.aspect,
                    "overlayV": self._overlay_version}

    def overlay(self) -> Optional[Tuple[bytes, str]]:
        with self._lock:
            return self._overlay

    def set_overlay(self, overlay: Optional[Tuple[bytes, str]]) -> Dict[str, Any]:
        with self._lock:
            self._overlay = overlay
            self._overlay_version += 1
        return self.state()

    def export(self, document: Optional[str]) -> Dict[str, Any]:
        """Raises Refused."""
        self._exporter.start(document)
        return self.state()

    def exported(self) -> Optional[Tuple[str, Any]]:
        """As Exporter.file()."""
        return self._exporter.file()

    def close(self) -> None:
        self._exporter.close()

    def _strokes(self, document: str, slide: int) -> List[List[Tuple[float, float]]]:
        with self._lock:
            return self._ink.strokes((document, slide))

    def _shown(self) -> Snapshot:
        return self._chooser.active().snapshot

    def _follow(self) -> Snapshot:
        """The slide may have been changed at the computer as well as through the engine."""
        shown = self._shown()
        self._ink.show_slide((shown.look.document, shown.look.slide))
        return shown
