"""What a show of one of decks.py's decks must look like after each action."""
from __future__ import annotations

from typing import List, Optional, Sequence

from decks import Slide


class ShowModel:
    def __init__(self, deck: Sequence[Slide]) -> None:
        self.deck = deck
        self.count = len(deck)
        self.slide, self.step = 1, 0
        self.presenting = self.dark = self.at_end = False

    @property
    def is_hidden(self) -> bool:
        return self.deck[self.slide - 1].hidden

    @property
    def steps(self) -> int:
        return self.deck[self.slide - 1].effects if self.presenting else 0

    def follow(self, slide: int) -> None:
        """Takes over what the office decides by itself."""
        self.slide = slide

    def next(self) -> None:
        self.dark = False
        if not self.presenting:
            self.slide = min(self.slide + 1, self.count)
        elif self.step < self.steps:
            self.step += 1
        elif not self.at_end:
            following = self._visible(range(self.slide + 1, self.count + 1))
            self.at_end = following is None
            self.slide, self.step = following or self.slide, 0 if following else self.step

    def previous(self) -> None:
        self.dark = False
        if not self.presenting:
            self.slide = max(self.slide - 1, 1)
        elif self.at_end:
            self.at_end = False
        elif self.step > 0:
            self.step -= 1
        else:
            before = self._visible(range(self.slide - 1, 0, -1))
            if before is not None:
                self.slide = before
                self.step = self.steps

    def go_to(self, slide: int) -> None:
        self.slide, self.step = slide, 0
        self.dark = self.at_end = False

    def start(self) -> None:
        if not self.presenting:
            self.presenting, self.step = True, 0

    def end(self) -> None:
        self.presenting = self.dark = self.at_end = False
        self.step = 0

    def blank(self, on: bool) -> None:
        self.dark = on and not self.at_end

    def _is_behind_hidden(self) -> bool:
        return self.slide > 1 and self.deck[self.slide - 2].hidden

    def _visible(self, numbers: Sequence[int]) -> Optional[int]:
        return next((number for number in numbers if not self.deck[number - 1].hidden), None)

    def actions(self) -> List[str]:
        """Those that make sense now, each as often as it is likely."""
        likely = {"next": 60, "previous": 18, "goto": 10}
        if self.presenting:
            likely.update(dark=4, end=1)
            # At the end a key would end the show; at hidden slides it goes where Impress wants.
            if not self.at_end and not self.is_hidden and not self._is_behind_hidden():
                likely["key"] = 6
        elif not self.is_hidden:
            likely["start"] = 40
        if self.dark:
            likely = {"light": 6, "goto": 1, "next": 1, "previous": 1}
        return [name for name, weight in likely.items() for _ in range(weight)]
