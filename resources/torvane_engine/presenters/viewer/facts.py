"""What a viewer answers, whether it shows something or not, and what is said about it."""
from __future__ import annotations

import sys
from typing import Any, Dict

from ..lines import Gone
from ..presenter import Refused

MISSING = ("No presentation is open: open one in LibreOffice Impress." if sys.platform == "linux"
           else "No presentation is open: open one in PowerPoint.")
NO_SUCH_SLIDE = "There is no such slide."
SLOW = "This page takes too long to draw."


def answered(answer: Dict[str, Any]) -> Dict[str, Any]:
    """Raises Refused, and Gone for what is no answer."""
    if "refused" in answer:
        raise Refused(str(answer["refused"]))
    facts = answer.get("answer")
    if not isinstance(facts, dict):
        raise Gone("no answer")
    return facts
