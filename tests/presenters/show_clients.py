"""Clients of an engine during a show: one who acts, and others who keep asking."""
from __future__ import annotations

import http.client
import json
import threading
import time
from typing import Any, Callable, Dict, List, Tuple

INK_SECONDS, STATE_SECONDS = 0.08, 0.25  # between two polls, as the helper and an iPad ask


class Differs(Exception):
    """From what is to be."""


class OutOfReach(Exception):
    """By the engine's own word, as is its right on a busy computer."""


class Client:
    """One kept connection to the engine."""

    def __init__(self, port: int) -> None:
        self._connection = http.client.HTTPConnection("127.0.0.1", port, timeout=30)

    def exchange(self, method: str, path: str, body: bytes) -> Tuple[int, bytes]:
        """Status and body of the answer."""
        self._connection.request(method, path, body or None)
        response = self._connection.getresponse()
        return response.status, response.read()

    def ask(self, method: str, path: str, body: Any = None) -> Dict[str, Any]:
        status, data = self.exchange(method, path, json.dumps(body).encode() if body else b"")
        answer = json.loads(data)
        if status == 409:
            raise OutOfReach(answer["error"])
        if status != 200:
            raise Differs(f"{method} {path} {body or ''}: {status} {answer}")
        return answer


class Polls(threading.Thread):
    """One who asks again and again while the show goes on; the seconds each answer took."""

    def __init__(self, client: Client, path: Callable[[int], str], pause: float) -> None:
        super().__init__(daemon=True)
        self._client, self._path, self._pause = client, path, pause
        self.seconds: List[float] = []
        self.failure = None
        self.over = threading.Event()

    def run(self) -> None:
        number = 0
        try:
            while not self.over.wait(self._pause):
                before = time.monotonic()
                answer = self._client.ask("GET", self._path(number))
                self.seconds.append(time.monotonic() - before)
                number = answer.get("seq", 0)
        except Exception as error:  # told at the end, whatever it is
            self.failure = repr(error)
