"""The child process that speaks with the office: a question is a line of JSON, so is its answer.
It ends with its standard input, also in the middle of a call that never returns."""
from __future__ import annotations

import json
import os
import queue
import sys
import threading
from typing import Any, Dict, Optional

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


def answer(question: Dict[str, Any]) -> Any:
    kind, arguments = question["do"], question.get("with", [])
    if kind in ("look", "choose"):
        return getattr(desktop(), kind)(*arguments)
    if kind == "read_page":
        return list(desktop().deck(arguments[0]).read(arguments[1]))
    if kind == "picture":
        document, page, width, path = arguments
        return desktop().deck(document).picture(
            desktop().manager, desktop().context, page, width, path)
    return getattr(desktop().show(), kind)(*arguments)


def respond(question: Dict[str, Any]) -> Dict[str, Any]:
    global DESKTOP
    try:
        return {"answer": answer(question)}
    except (Absent, Refused, Unavailable) as error:
        return {"problem": type(error).__name__, "text": str(error)}
    except Exception as error:
        # The document was closed or the office has ended in the middle: look anew from the start.
        DESKTOP = None
        if not running_office.processes():
            return {"problem": "Absent", "text": NOT_RUNNING}
        return {"problem": "fault", "text": f"{type(error).__name__}: {error}"[:300]}


def main() -> None:
    questions: queue.Queue = queue.Queue()

    def read() -> None:
        for line in sys.stdin:
            questions.put(line)
        os._exit(0)

    threading.Thread(target=read, daemon=True).start()
    while True:
        question = json.loads(questions.get())
        line = json.dumps({"id": question["id"], **respond(question)})
        sys.stdout.write(line + "\n")
        sys.stdout.flush()


main()
