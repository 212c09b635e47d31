"""The show of one presentation, or its editor while no show runs."""
from __future__ import annotations

import time
from typing import Any, Callable, Dict, Set, Tuple

from ..presenter import Refused
from .connection import values
from .document import Deck
from .show_news import ShowNews

SEEN_SECONDS = 0.2  # that an action waits until what it did can be seen
GLANCE_SECONDS = 0.004
# A press in the middle of an effect or of a show's start is taken for "finish this" and lost.
PACE_SECONDS, START_PACE_SECONDS = 0.12, 0.5


class Show:
    """Slides are pages of the document: an index of the show leaves out hidden ones, or not,
    depending on how the show was started."""

    def __init__(self, deck: Deck, news: Callable[[], None]) -> None:
        self._deck = deck
        self._news = ShowNews(news)
        self._control: Any = None
        self._index_of: Any = None   # the control's
        self._paused_of: Any = None
        self._known: Tuple[int, int] = (-2, 0)  # index in the show, page
        self._step = 0
        self._ready = 0.0   # when the next press counts
        self._dark = False  # it was darkened from here, which the end of a show looks like
        self._unhidden: Set[int] = set()  # hidden slides that this show went to

    def look(self) -> Dict[str, Any]:
        running = self._deck.is_running()
        if not running:
            self._control, self._known, self._step, self._dark = None, (-2, 0), 0, False
            self._unhidden.clear()
            slide, steps, paused = self._editor_page().Number, 0, False
        else:
            slide, paused = self._page(), self._is_paused()
            steps = self._deck.steps(slide)
            self._dark = self._dark and paused
        at_end = paused and not self._dark and self._is_last(slide)
        return {"slide": slide, "step": steps if at_end else min(self._step, steps),
                "steps": steps, "presenting": running, "at_end": at_end,
                "blank": paused and not at_end}

    def _editor_page(self) -> Any:
        page = getattr(self._deck.model.CurrentController, "CurrentPage", None)
        return page if page is not None else self._deck.page(1)

    def _controller(self) -> Any:
        if self._control is None:
            self._control = self._deck.show.getController()
            if self._control is None:
                raise Refused("The slide show is starting or ending: try again.")
            self._control.addSlideShowListener(self._news)
            # Looked up once: that takes longer than the calls.
            self._index_of = self._control.getCurrentSlideIndex
            self._paused_of = self._control.isPaused
        return self._control

    def _is_paused(self) -> bool:
        self._controller()
        return self._paused_of()

    def _page(self) -> int:
        """The one on the screen. Asked for only when the index is another: that is much quicker."""
        self._controller()
        index = self._index_of()
        if index != self._known[0] or index < 0:
            slide = self._controller().getCurrentSlide()
            number = slide.Number if slide is not None else self._known[1] or 1
            if number != self._known[1]:
                self._step = 0
            self._known = (index, number)
        return self._known[1]

    def _is_last(self, slide: int) -> bool:
        return all(not self._deck.page(number).Visible
                   for number in range(slide + 1, self._deck.count + 1))

    def _until(self, seen: Callable[[], bool]) -> None:
        deadline = time.monotonic() + SEEN_SECONDS
        while not seen() and time.monotonic() < deadline:
            time.sleep(GLANCE_SECONDS)

    def _pace(self) -> None:
        time.sleep(max(self._ready - time.monotonic(), 0.0))
        self._ready = time.monotonic() + PACE_SECONDS

    def next(self) -> None:
        now = self.look()
        if not now["presenting"]:
            return self._turn_page(1)
        if now["at_end"]:
            return  # Impress would go back to the last slide
        if self._known[0] < 0:
            return self._turn_hidden(1)
        self._pace()
        self._controller().gotoNextEffect()
        self._dark = False  # on the last slide the press leads from one pause to another: the end
        if now["step"] < now["steps"]:
            self._step = now["step"] + 1
        else:
            self._until(lambda: self._page() != now["slide"] or self._is_paused())

    def previous(self) -> None:
        now = self.look()
        if not now["presenting"]:
            return self._turn_page(-1)
        if now["at_end"]:
            self._controller().gotoLastSlide()
            return self._until(lambda: not self._is_paused())
        if self._known[0] < 0 or (now["step"] == 0 and self._would_unhide(now["slide"])):
            return self._turn_hidden(-1)
        self._pace()
        self._controller().gotoPreviousEffect()
        if now["step"] > 0:
            self._step = now["step"] - 1
        elif now["slide"] > 1:
            self._until(lambda: self._page() != now["slide"])
            self._step = self._deck.steps(self._page())

    def _turn_page(self, by: int) -> None:
        number = self._editor_page().Number + by
        if 1 <= number <= self._deck.count:
            self.go_to(number)

    def _would_unhide(self, slide: int) -> bool:
        """On its way back Impress shows a hidden slide again that was shown before."""
        number = slide - 1
        while self._unhidden and number >= 1 and not self._deck.page(number).Visible:
            if number in self._unhidden:
                return True
            number -= 1
        return False

    def _turn_hidden(self, by: int) -> None:
        """From a hidden slide that the show leaves out Impress would go back to where it was."""
        number = self._page() + by
        while 1 <= number <= self._deck.count:
            if self._deck.page(number).Visible:
                return self.go_to(number)
            number += by

    def go_to(self, number: int) -> None:
        page = self._deck.page(number)
        if not self._deck.is_running():
            controller = self._deck.model.CurrentController
            if controller is None or not hasattr(controller, "setCurrentPage"):
                raise Refused("The presentation has no window to show a slide in.")
            controller.setCurrentPage(page)
            return
        self._controller().gotoSlide(page)
        if not page.Visible:
            self._unhidden.add(number)
        self._ready = time.monotonic() + PACE_SECONDS
        self._until(lambda: self._page() == number and not self._is_paused())
        self._step = 0

    def start(self) -> None:
        if self._deck.is_running():
            return
        page = self._editor_page()
        # With a first page Impress leaves out hidden slides from its count; both are understood.
        if page.Number == 1:
            self._deck.show.start()
        else:
            self._deck.show.startWithArguments(values(FirstPage=page.Name))
        self._ready = time.monotonic() + START_PACE_SECONDS
        self._until(lambda: self._deck.is_running()
                    and self._deck.show.getController() is not None)

    def end(self) -> None:
        if self._deck.is_running():
            self._deck.show.end()

    def blank(self, on: bool) -> None:
        if not self._deck.is_running():
            raise Refused("No slide show runs: start it first.")
        now = self.look()
        if now["blank"] == on or (on and now["at_end"]):
            return
        if on:
            self._controller().blankScreen(0x000000)
        else:
            self._controller().resume()
        self._dark = on
        self._until(lambda: self._is_paused() == on)
