"""When titles, notes and pictures of a presentation may be others."""
from __future__ import annotations

import math
from typing import Any, Dict, List, Optional

QUIET_SECONDS = 60.0  # between two revisions for what was only edited: reading all again costs


class Changes:
    """PowerPoint tells of no change. A presentation counts as changed when slides come, go or move,
    and when it has been saved: then what was typed is complete. In a show nothing is read anew."""

    def __init__(self) -> None:
        self.revision = 0
        self.count, self.aspect = 0, 0.5625
        self._slides: Optional[List[Any]] = None
        self._saved, self._dirty = True, False
        self._since = -math.inf

    def seen(self, details: Dict[str, Any], showing: bool, now: float) -> None:
        if self._slides is not None and details["slides"] != self._slides:
            self.again()
            self._since = now
        if details["saved"] and not self._saved:
            self._dirty = True
        self._slides, self._saved = details["slides"], details["saved"]
        self.count = len(self._slides)
        self.aspect = details["height"] / details["width"]
        if self._dirty and not showing and now - self._since >= QUIET_SECONDS:
            self.again()
            self._since = now

    @property
    def edited(self) -> bool:
        """Something may have been typed since the last revision."""
        return self._dirty or not self._saved

    def again(self) -> None:
        self.revision, self._dirty = self.revision + 1, False
