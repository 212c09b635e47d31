"""Five built-in slides that need no presentation program."""
from __future__ import annotations

from .presenter import Document, Look, Page, Presenter, Refused
from .sample_drawing import PICTURE_HEIGHT, PICTURE_WIDTH, SLIDES, draw_slide


class SampleDeck(Presenter):
    """Is always there; its show is nowhere but in its state."""

    name = "Sample deck"
    poll_seconds = 3600.0  # nobody but the engine changes it
    widths = (PICTURE_WIDTH,)
    idle_width = None

    def __init__(self) -> None:
        self._slide, self._presenting, self._blank = 1, False, False

    def look(self) -> Look:
        document = Document("sample", "Torvane sample deck", self._presenting)
        return Look((document,), document.id, self._slide, len(SLIDES),
                    aspect=PICTURE_HEIGHT / PICTURE_WIDTH, presenting=self._presenting,
                    blank=self._blank)

    def next(self) -> None:
        self._slide = min(self._slide + 1, len(SLIDES))

    def previous(self) -> None:
        self._slide = max(self._slide - 1, 1)

    def go_to(self, page: int) -> None:
        self._slide = page

    def start(self) -> None:
        self._presenting = True

    def end(self) -> None:
        self._presenting = self._blank = False

    def blank(self, on: bool) -> None:
        if not self._presenting:
            raise Refused("No slide show runs: start it first.")
        self._blank = on

    def choose(self, document: str) -> None:
        if document != "sample":
            raise Refused("This presentation is not open.")

    def read_page(self, document: str, page: int) -> Page:
        return Page(SLIDES[page - 1].title, SLIDES[page - 1].notes)

    def picture(self, document: str, page: int, width: int) -> bytes:
        return draw_slide(page)
