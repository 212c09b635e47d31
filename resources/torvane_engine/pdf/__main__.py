"""The child process that draws on files: one that is meant to do harm can be given up with it."""
from __future__ import annotations

import json
import resource
from typing import Any, Dict, List

from ..presenters.line_child import answer_lines
from ..presenters.lines import Report
from .drawing import Pen, Stroke, draw_on_file
from .objects import TOO_LARGE, Unreadable

MEMORY = 2 * 1024 * 1024 * 1024  # bytes of addresses, those of the mapped file among them


def read_ink(path: str) -> Dict[int, List[Stroke]]:
    """A stroke is a line of JSON: page, pen, points."""
    ink: Dict[int, List[Stroke]] = {}
    with open(path, encoding="ascii") as file:
        for line in file:
            page, pen, points = json.loads(line)
            ink.setdefault(page, []).append(Stroke(Pen(*pen), points))
    return ink


def respond(question: Dict[str, Any], report: Report) -> Dict[str, Any]:
    try:
        draw_on_file(question["pdf"], question["count"], read_ink(question["ink"]), report)
        return {"answer": None}
    except Unreadable as error:
        return {"problem": str(error)}
    except MemoryError:
        return {"problem": TOO_LARGE}
    except OSError as error:
        return {"problem": f"The PDF could not be written: {error.strerror}."}


try:
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
except (ValueError, OSError):
    pass  # a Mac may not know this limit
answer_lines(respond)
