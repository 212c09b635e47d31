"""Talks in lines with something that may hang or die: one JSON object for a question, one for its
answer, and a time limit for each. Lines that tell the progress of a long answer may come first, and
those that tell news at any time."""
from __future__ import annotations

import json
import math
import os
import select
import subprocess
import sys
import time
from typing import Any, Callable, Dict, Optional, Sequence

from .wake import Wake

MAX_LINE = 4 * 1024 * 1024
NEWS = 0  # in place of a question's number: there is something to be asked about
PACKAGES = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))

Report = Callable[[int, int], None]  # how much is done of how much


class Gone(Exception):
    """The other side has ended, or talks nonsense."""


class Silent(Exception):
    """No answer in time. What was asked for may still happen."""


class Lines:
    """Questions and answers over two descriptors, which may be one socket."""

    def __init__(self, incoming: int, outgoing: int) -> None:
        self._incoming, self._outgoing = incoming, outgoing
        self._received = b""
        self._number = NEWS
        self._has_news = False

    def ask(self, question: Dict[str, Any], seconds: float, report: Optional[Report] = None,
            in_all: float = math.inf) -> Dict[str, Any]:
        """Raises Gone and Silent. Late answers to earlier questions are passed over. With `report`,
        `seconds` begin anew with each progress, until there were `in_all` of them."""
        deadline = time.monotonic() + seconds
        self.send(question, seconds)
        return self.answer(deadline - time.monotonic(), report, in_all)

    def send(self, question: Dict[str, Any], seconds: float) -> None:
        """Raises Gone and Silent."""
        self._number += 1
        line = json.dumps({**question, "id": self._number}).encode("ascii") + b"\n"
        self._write(line, time.monotonic() + seconds)

    def answer(self, seconds: float, report: Optional[Report] = None,
               in_all: float = math.inf) -> Dict[str, Any]:
        """To what was sent last; may be asked for again after Silent."""
        start = time.monotonic()
        deadline = start + seconds
        while True:
            answer = self._object(deadline)
            if answer.get("id") != self._number:
                self._has_news |= answer.get("id") == NEWS
                continue
            if report is None or "progress" not in answer:
                return answer
            report(*answer["progress"])
            deadline = min(time.monotonic() + seconds, start + in_all)

    def wait_for_news(self, seconds: float, wake: Wake) -> bool:
        """Between two questions: until there are any or it is woken. Whether there are. Raises Gone
        and Silent."""
        if not self._has_news and (self._received or wake.wait(seconds, self._incoming)):
            self._has_news = self._object(time.monotonic() + seconds).get("id") == NEWS
        told, self._has_news = self._has_news, False
        return told

    def _object(self, deadline: float) -> Dict[str, Any]:
        try:
            told = json.loads(self._line(deadline))
        except (ValueError, RecursionError):
            raise Gone("no JSON") from None
        if not isinstance(told, dict):
            raise Gone("no JSON object")
        return told

    def _write(self, data: bytes, deadline: float) -> None:
        while data:
            left = deadline - time.monotonic()
            if left <= 0 or not select.select([], [self._outgoing], [], left)[1]:
                raise Silent()
            try:
                data = data[os.write(self._outgoing, data[:select.PIPE_BUF]):]
            except OSError as error:
                raise Gone(str(error)) from None

    def _line(self, deadline: float) -> bytes:
        while True:
            line, end, rest = self._received.partition(b"\n")
            if end:
                self._received = rest
                return line
            if len(line) > MAX_LINE:
                raise Gone("a line without end")
            left = deadline - time.monotonic()
            if left <= 0 or not select.select([self._incoming], [], [], left)[0]:
                raise Silent()
            try:
                data = os.read(self._incoming, 65536)
            except OSError as error:
                raise Gone(str(error)) from None
            if not data:
                raise Gone("closed")
            self._received += data


class LineProcess:
    """A child process that answers lines on its standard output. It is started with the first
    question, and anew after it was given up."""

    def __init__(self, command: Sequence[str], environment: Optional[Dict[str, str]] = None) -> None:
        self._command, self._environment = list(command), environment
        self._process: Optional[subprocess.Popen] = None
        self._lines: Optional[Lines] = None

    @property
    def is_running(self) -> bool:
        return self._process is not None

    def ask(self, question: Dict[str, Any], seconds: float, report: Optional[Report] = None,
            in_all: float = math.inf) -> Dict[str, Any]:
        """As Lines.ask. Raises Gone and Silent, having ended the process: it can only be started
        anew then."""
        lines = self.lines()
        try:
            return lines.ask(question, seconds, report, in_all)
        except (Gone, Silent):
            self.end()
            raise

    def wait_for_news(self, seconds: float, wake: Wake) -> bool:
        """As Lines.wait_for_news, of a process that runs; that it ends is news."""
        try:
            return self._lines.wait_for_news(seconds, wake)
        except Silent:
            return False
        except (Gone, OSError):  # it may be ended by another thread
            return True

    def lines(self) -> Lines:
        """Of the running process, for those who wait longer: they end it themselves after Gone."""
        if self._process is None:
            self._start()
        return self._lines

    def _start(self) -> None:
        try:
            self._process = subprocess.Popen(
                self._command, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                stderr=subprocess.DEVNULL, env=self._environment, bufsize=0)
        except OSError as error:
            raise Gone(str(error)) from None
        os.set_blocking(self._process.stdin.fileno(), False)
        self._lines = Lines(self._process.stdout.fileno(), self._process.stdin.fileno())

    def end(self) -> None:
        """At once, whatever it is doing."""
        process, self._process = self._process, None
        if process is None:
            return
        process.kill()
        process.stdin.close()
        process.stdout.close()
        process.wait()


def python_child(package: str) -> LineProcess:
    """A process that runs the __main__ of a package of the engine's."""
    return LineProcess([sys.executable, "-B", "-m", package],
                       {**os.environ, "PYTHONPATH": PACKAGES, "PYTHONDONTWRITEBYTECODE": "1"})
