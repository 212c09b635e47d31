"""What a running show tells by itself."""
from __future__ import annotations

from typing import Any, Callable

import unohelper
from com.sun.star.presentation import XSlideShowListener


class ShowNews(unohelper.Base, XSlideShowListener):
    """Told by the office in threads of UNO's own. What happened is looked at, not taken from here."""

    def __init__(self, tell: Callable[[], None]) -> None:
        self._tell = tell

    def slideTransitionStarted(self) -> None:
        self._tell()

    def slideTransitionEnded(self) -> None:
        self._tell()

    def slideAnimationsEnded(self) -> None:
        self._tell()

    def slideEnded(self, _: bool) -> None:
        self._tell()

    def paused(self) -> None:
        self._tell()

    def resumed(self) -> None:
        self._tell()

    def disposing(self, _: Any) -> None:
        """The end of the show."""
        self._tell()

    # Effects come and go in great numbers, and nothing that is looked at changes with them.

    def beginEvent(self, _: Any) -> None:
        pass

    def endEvent(self, _: Any) -> None:
        pass

    def repeat(self, *_: Any) -> None:
        pass

    def hyperLinkClicked(self, _: str) -> None:
        pass
