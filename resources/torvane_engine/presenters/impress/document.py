"""One open presentation."""
from __future__ import annotations

import functools
import hashlib
from typing import Any, Callable, Dict, Optional, Tuple

import uno
import unohelper
from com.sun.star.util import XModifyListener

from ..presenter import Page, Refused
from .connection import values

TITLE = "com.sun.star.presentation.TitleTextShape"
NOTES = "com.sun.star.presentation.NotesShape"
MAX_TEXT = 100_000     # characters of a title or of notes
MAX_SHAPES = 200       # of a page that are looked at for its title or notes
ON_CLICK = 9           # com.sun.star.animations.EventTrigger.ON_NEXT
MAIN_SEQUENCE = 4      # com.sun.star.presentation.EffectNodeType.MAIN_SEQUENCE


class Changes(unohelper.Base, XModifyListener):
    """Counts the changes of a document."""

    def __init__(self) -> None:
        self.count = 0

    def modified(self, _: Any) -> None:
        self.count += 1

    def disposing(self, _: Any) -> None:
        pass


class Deck:
    """Wraps a model. Every method may raise what UNO raises when the document has been closed."""

    def __init__(self, model: Any) -> None:
        self.model, self.show = model, model.Presentation
        # A file keeps its id when it is opened again; one that was never saved has none to keep.
        name = model.URL or f"unsaved {model.RuntimeUID}"
        self.id = hashlib.sha256(name.encode("utf-8", "replace")).hexdigest()[:16]
        self._changes = Changes()
        model.addModifyListener(self._changes)
        self._steps: Dict[int, int] = {}
        self._steps_revision = -1
        self._measured: Optional[Tuple[int, Tuple[int, float]]] = None

    @functools.cached_property
    def is_running(self) -> Callable[[], bool]:
        """Whether its show runs. Looking up a method of the office takes longer than calling it."""
        return self.show.isRunning

    @property
    def count(self) -> int:
        return self._measures()[0]

    @property
    def aspect(self) -> float:
        return self._measures()[1]

    def _measures(self) -> Tuple[int, float]:
        """Asked for again after a change only."""
        if self._measured is None or self._measured[0] != self.revision:
            revision, page = self.revision, self.model.DrawPages.getByIndex(0)
            self._measured = (revision, (self.model.DrawPages.Count, page.Height / page.Width))
        return self._measured[1]

    @property
    def revision(self) -> int:
        return self._changes.count

    def page(self, number: int) -> Any:
        if not 1 <= number <= self.count:
            raise Refused("There is no such slide.")
        return self.model.DrawPages.getByIndex(number - 1)

    def read(self, number: int) -> Page:
        page = self.page(number)
        title = self._text(page, TITLE) or page.Name
        return Page(title, self._text(page.NotesPage, NOTES), not page.Visible)

    def _text(self, page: Any, kind: str) -> str:
        for index in range(min(page.Count, MAX_SHAPES)):
            shape = page.getByIndex(index)
            if shape.ShapeType == kind and not shape.IsEmptyPresentationObject:
                return shape.String[:MAX_TEXT]
        return ""

    def steps(self, number: int) -> int:
        """Effects of the slide that wait for a press."""
        if self._steps_revision != self.revision:
            self._steps, self._steps_revision = {}, self.revision
        if number not in self._steps:
            self._steps[number] = self._count_steps(self.page(number))
        return self._steps[number]

    def _count_steps(self, page: Any) -> int:
        presses = 0
        sequences = page.AnimationNode.createEnumeration()
        while sequences.hasMoreElements():
            sequence = sequences.nextElement()
            kinds = [one.Value for one in sequence.UserData if one.Name == "node-type"]
            if MAIN_SEQUENCE in kinds:
                effects = sequence.createEnumeration()
                while effects.hasMoreElements():
                    begin = effects.nextElement().Begin
                    presses += getattr(begin, "Trigger", None) == ON_CLICK
        return presses

    def picture(self, manager: Any, context: Any, number: int, width: int, path: str) -> None:
        page = self.page(number)
        export = manager.createInstanceWithContext(
            "com.sun.star.drawing.GraphicExportFilter", context)
        export.setSourceDocument(page)
        height = max(round(width * page.Height / page.Width), 1)
        size = uno.Any("[]com.sun.star.beans.PropertyValue",
                       values(PixelWidth=width, PixelHeight=height))
        export.filter(values(MediaType="image/png", URL=uno.systemPathToFileUrl(path),
                             Overwrite=True, FilterData=size))
