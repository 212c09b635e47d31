"""The other end of lines.LineProcess: a child process that answers questions."""
from __future__ import annotations

import json
import os
import queue
import sys
import threading
from typing import Any, Callable, Dict

from .lines import NEWS, Report

Respond = Callable[[Dict[str, Any], Report], Dict[str, Any]]
WRITING = threading.Lock()  # news and progress may come from any thread


def tell_news() -> None:
    """Something is to be seen that nobody has asked for yet."""
    _write(NEWS, {})


def _write(number: int, members: Dict[str, Any]) -> None:
    with WRITING:
        sys.stdout.write(json.dumps({"id": number, **members}) + "\n")
        sys.stdout.flush()


def answer_lines(respond: Respond) -> None:
    """Answers one question after the other, until the process ends with its standard input, also in
    the middle of an answer. `report` tells how far a long answer is: how much of how much."""
    questions: queue.Queue = queue.Queue()

    def read() -> None:
        for line in sys.stdin:
            questions.put(line)
        os._exit(0)

    threading.Thread(target=read, daemon=True).start()
    while True:
        question = json.loads(questions.get())
        number = question["id"]
        _write(number, respond(question, lambda *done: _write(number, {"progress": done})))
