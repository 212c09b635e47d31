"""How many effects of the slide in the show were played, as far as is known."""
from __future__ import annotations

from typing import Any, Dict, Optional


class Presses:
    """PowerPoint does not tell which effect it is at: presses are counted since the slide came."""

    def __init__(self) -> None:
        self.slide = self.step = self.steps = 0
        self.start = 0           # the show's first slide, where it was started from here
        self._played: Optional[int] = None  # a slide that was gone back to: its effects are played

    @property
    def effects_left(self) -> bool:
        return self.step < self.steps

    def seen(self, slide: int, steps: Optional[int]) -> None:
        """A look has found a slide, with the number of its effects where that was asked for."""
        if slide != self.slide:
            self.slide, self.step, self.steps = slide, 0, 0
        if steps is not None:
            self.steps = max(steps, 0)
            if self._played == slide:
                self.step = self.steps
        self._played = None
        self.steps = max(self.steps, self.step)

    def moved(self, answer: Optional[Dict[str, Any]], by: int = 0) -> None:
        """An action has led from one slide to another, or been a press on the same."""
        if answer is None:
            return
        self.start = answer.get("start", self.start)
        if "from" not in answer:
            return
        if answer["from"] == answer["slide"]:
            self.step = max(self.step + by, 0)
        elif answer.get("played"):
            self._played = answer["slide"]

    def ended(self) -> None:
        self.__init__()
