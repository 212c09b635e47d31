"""The other end of lines.LineProcess: a child process that answers questions."""
from __future__ import annotations

import json
import os
import queue
import sys
import threading
from typing import Any, Callable, Dict

from .lines import Report

Respond = Callable[[Dict[str, Any], Report], Dict[str, Any]]


def answer_lines(respond: Respond) -> None:
    """Answers one question after the other, until the process ends with its standard input, also in
    the middle of an answer. `report` tells how far a long answer is: how much of how much."""
    questions: queue.Queue = queue.Queue()
    writing = threading.Lock()

    def read() -> None:
        for line in sys.stdin:
            questions.put(line)
        os._exit(0)

    def write(number: int, members: Dict[str, Any]) -> None:
        with writing:  # progress may come from another thread
            sys.stdout.write(json.dumps({"id": number, **members}) + "\n")
            sys.stdout.flush()

    threading.Thread(target=read, daemon=True).start()
    while True:
        question = json.loads(questions.get())
        number = question["id"]
        write(number, respond(question, lambda *done: write(number, {"progress": done})))
