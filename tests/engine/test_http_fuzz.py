"""Thousands of requests at random, most of them broken, against the engine as a process.

TORVANE_FUZZ_CASES is how many, TORVANE_FUZZ_SEED which; a failure names the case that led to it.
"""
from __future__ import annotations

import json
import os
import re
import socket
import time
import unittest

from engine_support import DEADLINE, EngineProcess
from http_cases import Case, Cases
from torvane_engine.presenters.impress import running_office

CASES = int(os.environ.get("TORVANE_FUZZ_CASES", "2000"))
SEED = int(os.environ.get("TORVANE_FUZZ_SEED", "1"))
EACH = 100  # cases between two looks at the state
STATUS_LINE = re.compile(rb"HTTP/1\.1 ([0-9]{3}) [A-Za-z' -]+")
HEADER_LINE = re.compile(rb"([A-Za-z-]+): ([ -~]+)")
NEEDED = {b"content-length", b"content-type", b"connection"}
GO_ON = b"HTTP/1.1 100 Continue\r\n\r\n"
NUMBERS = ("slide", "count", "step", "steps", "strokes", "inkSeq", "overlayV")


class Malformed(Exception):
    pass


def take_answer(data: bytes, has_no_body: bool):
    """Status of the first of some answers, and what follows it."""
    head, end, rest = data.partition(b"\r\n\r\n")
    first, *lines = head.split(b"\r\n")
    status = STATUS_LINE.fullmatch(first)
    headers = [HEADER_LINE.fullmatch(line) for line in lines]
    if not (status and end and all(headers)):
        raise Malformed(f"head {head[:300]!r}")
    values = {found[1].lower(): found[2] for found in headers}
    if len(values) != len(headers) or not NEEDED <= set(values):
        raise Malformed(f"headers {head[:300]!r}")
    code = int(status[1])
    length = 0 if has_no_body or code == 304 else int(values[b"content-length"])
    body = rest[:length]
    if len(body) != length:
        raise Malformed(f"{len(body)} of {length} bytes after {head[:300]!r}")
    rest = rest[length:]
    if rest and values[b"connection"] != b"keep-alive":
        raise Malformed(f"{rest[:300]!r} after the end of the connection")
    if length and values[b"content-type"] == b"application/json":
        value = json.loads(body)
        if code >= 400 and not (list(value) == ["error"] and isinstance(value["error"], str)):
            raise Malformed(f"error {body[:300]!r}")
    return code, rest


class HttpFuzzTest(unittest.TestCase):
    def setUp(self):
        self.engine = EngineProcess()
        self.addCleanup(self.engine.stop)
        self.before = self.engine.get("/api/state")

    def test_any_request_is_answered_or_refused(self):
        cases = Cases(SEED, self.engine.port)
        seen = {}
        for number in range(CASES):
            case = cases.case()
            told = f"seed {SEED}, case {number}, {case.kind}: {b''.join(case.pieces)[:600]!r}"
            try:
                statuses = self.statuses(case)
            except (Malformed, ValueError, OSError) as error:
                self.fail(f"{error!r} after {told}")
            self.assertLessEqual(set(statuses), case.allowed, told)
            if case.answers is not None:
                self.assertEqual(len(statuses), case.answers, told)
            seen.setdefault(case.kind, set()).update(statuses)
            if number % EACH == 0 or number == CASES - 1:
                self.check_engine(told)
        self.assertEqual(self.engine.stop(), ("", ""))
        self.assertEqual(self.engine.process.returncode, 0)
        if CASES >= 1000:  # else chance may leave one out
            self.assertLessEqual({200, 400, 404, 501, 505}, set().union(*seen.values()))
            self.assertEqual(seen["foreign"], {403})

    def statuses(self, case: Case):
        """Of all answers on a connection of its own that is written to and then half closed."""
        with socket.create_connection(("127.0.0.1", self.engine.port), DEADLINE) as sock:
            sock.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            for piece in case.pieces:
                sock.sendall(piece)
            sock.shutdown(socket.SHUT_WR)
            data = b"".join(iter(lambda: sock.recv(1 << 20), b""))
        statuses = []
        while data:
            if data.startswith(GO_ON):
                data = data[len(GO_ON):]
                continue
            has_no_body = case.heads[len(statuses)] if len(statuses) < len(case.heads) else False
            status, data = take_answer(data, has_no_body)
            statuses.append(status)
        return statuses

    def check_engine(self, told):
        begun = time.monotonic()
        state = self.engine.get("/api/state")
        self.assertLess(time.monotonic() - begun, 1.0, told)
        self.assertEqual(list(state), list(self.before), told)
        for name in NUMBERS:
            self.assertIs(type(state[name]), int, told)
        self.assertEqual((state["count"], state["document"]), (5, "sample"), told)
        # Without a show the engine says that there is no office, once it has looked.
        self.assertIn(state["problem"], (None, running_office.NOT_RUNNING), told)
        self.assertTrue(1 <= state["slide"] <= 5 and 0 <= state["step"] <= state["steps"], told)
        self.assertTrue(0 <= state["strokes"] <= 1000, told)
        for name in ("inkSeq", "overlayV"):
            self.assertGreaterEqual(state[name], self.before[name], told)
        self.assertEqual(self.engine.poll()["seq"], state["inkSeq"], told)
        self.before = state


if __name__ == "__main__":
    unittest.main()
