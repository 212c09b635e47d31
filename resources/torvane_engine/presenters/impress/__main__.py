"""The child process that speaks with the office, whose calls may never return."""
from __future__ import annotations

from typing import Any, Dict, Optional

from ..line_child import answer_lines
from ..lines import Report
from ..presenter import Absent, Refused, Unavailable
from . import running_office
from .running_office import NOT_RUNNING

DESKTOP: Optional[Any] = None


def desktop() -> Any:
    global DESKTOP
    if DESKTOP is None:
        try:
            from .desktop import Desktop
        except ImportError:
            raise Unavailable("The package python3-uno is missing: install it so that LibreOffice "
                              "can be controlled.") from None
        DESKTOP = Desktop()
    return DESKTOP


def answer(question: Dict[str, Any], report: Report) -> Any:
    kind, arguments = question["do"], question.get("with", [])
    if kind in ("look", "choose", "start_sample"):
        return getattr(desktop(), kind)(*arguments)
    if kind == "read_page":
        return list(desktop().deck(arguments[0]).read(arguments[1]))
    if kind == "picture":
        document, page, width, path = arguments
        return desktop().deck(document).picture(
            desktop().manager, desktop().context, page, width, path)
    if kind == "export_pdf":
        return desktop().export_pdf(*arguments, report)
    return getattr(desktop().show(), kind)(*arguments)


def respond(question: Dict[str, Any], report: Report) -> Dict[str, Any]:
    global DESKTOP
    try:
        return {"answer": answer(question, report)}
    except (Absent, Refused, Unavailable) as error:
        return {"problem": type(error).__name__, "text": str(error)}
    except Exception as error:
        # The document was closed or the office has ended in the middle: look anew from the start.
        DESKTOP = None
        if not running_office.processes():
            return {"problem": "Absent", "text": NOT_RUNNING}
        return {"problem": "fault", "text": f"{type(error).__name__}: {error}"[:300]}


answer_lines(respond)
