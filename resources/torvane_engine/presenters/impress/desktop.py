"""The open presentations of an office, and the one that is driven."""
from __future__ import annotations

import time
from typing import Any, Dict, List, Optional

import uno

from ..line_child import tell_news
from ..lines import Report
from ..presenter import Empty, Refused
from .connection import connect, values
from .document import Deck
from .export import export_pdf
from .show import Show

LIST_SECONDS = 3.0  # between two looks at which documents are open: they take long
MAX_DOCUMENTS = 50
PRESENTATION = "com.sun.star.presentation.PresentationDocument"


class Desktop:
    """Driven is the document whose show runs; else the one that was chosen, until another comes to
    the front; else the one in front; else the one before."""

    def __init__(self) -> None:
        self.context = connect()
        self.manager = self.context.ServiceManager
        self._desktop = self.manager.createInstanceWithContext(
            "com.sun.star.frame.Desktop", self.context)
        self._front_component = self._desktop.getCurrentComponent
        self._decks: Dict[str, Deck] = {}   # by the office's own id of the model
        self._shows: Dict[str, Show] = {}
        self._titles: Dict[str, str] = {}
        self._running: List[str] = []
        self._front: Optional[str] = None
        self._driven: Optional[str] = None
        self._list_due = 0.0

    def _list(self) -> None:
        models: Dict[str, Any] = {}
        parts = self._desktop.Components.createEnumeration()
        while parts.hasMoreElements() and len(models) < MAX_DOCUMENTS:
            part = parts.nextElement()
            if hasattr(part, "supportsService") and part.supportsService(PRESENTATION):
                models[part.RuntimeUID] = part
        for uid in self._decks.keys() - models.keys():
            del self._decks[uid], self._shows[uid]
        for uid in models.keys() - self._decks.keys():
            self._decks[uid] = self._new_deck(models[uid])
            self._shows[uid] = Show(self._decks[uid], tell_news)
        self._decks = {uid: self._decks[uid] for uid in models}
        self._titles = {uid: model.Title for uid, model in models.items()}
        self._running = [uid for uid, deck in self._decks.items() if deck.is_running()]

    def _new_deck(self, model: Any) -> Deck:
        """The same file may be open twice; ids must differ."""
        deck = Deck(model)
        if any(other.id == deck.id for other in self._decks.values()):
            deck.id += "-" + model.RuntimeUID
        return deck

    def _drive(self) -> str:
        front = self._front_component()
        uid = getattr(front, "RuntimeUID", None)
        if time.monotonic() >= self._list_due or (uid != self._front and uid not in self._decks):
            self._list()
            self._list_due = time.monotonic() + LIST_SECONDS
        if uid != self._front and uid in self._decks:
            self._driven = uid
            self._running = [one for one, deck in self._decks.items() if deck.is_running()]
        self._front = uid
        if self._running and self._driven not in self._running:
            self._driven = self._running[0]
        if self._driven not in self._decks:
            if not self._decks:
                raise Empty("No presentation is open in LibreOffice: open one in Impress.")
            self._driven = next(iter(self._decks))
        return self._driven

    def look(self) -> Dict[str, Any]:
        driven = self._driven
        # While a show runs nothing else is asked for but once a second: it takes long.
        if (driven not in self._decks or time.monotonic() >= self._list_due
                or not self._decks[driven].is_running()):
            driven = self._drive()
        deck = self._decks[driven]
        shown = self._shows[driven].look()
        if shown["presenting"] != (driven in self._running):
            self._list_due = 0.0
        return {"documents": [[other.id, self._titles[uid],
                               shown["presenting"] if uid == driven else uid in self._running]
                              for uid, other in self._decks.items()],
                "document": deck.id, "count": deck.count, "aspect": deck.aspect,
                "revision": deck.revision, **shown}

    def show(self) -> Show:
        """Of the driven document."""
        return self._shows[self._driven if self._driven in self._decks else self._drive()]

    def deck(self, document: str) -> Deck:
        for deck in self._decks.values():
            if deck.id == document:
                return deck
        raise Refused("This presentation is not open any more.")

    def export_pdf(self, document: str, path: str, report: Report) -> int:
        """Refused in a show of any document: the office would stand still meanwhile."""
        self._list()
        if self._running:
            raise Refused("A slide show runs: it would be held up.")
        deck = self.deck(document)
        export_pdf(deck.model, path, report)
        return deck.count

    def choose(self, document: str) -> None:
        self._list()
        uid = next((uid for uid, deck in self._decks.items() if deck.id == document), None)
        if uid is None:
            raise Refused("This presentation is not open any more.")
        if self._running and uid not in self._running:
            raise Refused("Another presentation is being shown: end its slide show first.")
        self._driven = uid

    def start_sample(self, path: str, slide: int) -> None:
        model = self._desktop.loadComponentFromURL(
            uno.systemPathToFileUrl(path), "_default", 0, values(ReadOnly=True))
        if model is None:
            raise Refused("LibreOffice could not open the sample deck: install the program again.")
        self._list()
        self._driven = self._front = model.RuntimeUID
        show = self._shows[self._driven]
        show.go_to(slide)
        show.start()
