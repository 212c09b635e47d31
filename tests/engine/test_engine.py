#!/usr/bin/python3
"""Tests of the engine: the real process on a free port, and its parts where time or size count.

Run with: python3 -m unittest discover -s tests/engine
"""
from __future__ import annotations

import contextlib
import http.client
import importlib.util
import json
import os
import random
import select
import signal
import socket
import struct
import subprocess
import sys
import threading
import time
import unittest
import zlib
from pathlib import Path
from unittest import mock

SCRIPT = Path(__file__).resolve().parents[2] / "resources" / "torvane.py"
PYTHON = "/usr/bin/python3" if os.path.exists("/usr/bin/python3") else sys.executable
DEADLINE = 10.0  # for things that are expected within milliseconds
JPEG = b"\xff\xd8\xff\xe0" + bytes(range(256))


def load_module():
    sys.dont_write_bytecode = True
    spec = importlib.util.spec_from_file_location("torvane", SCRIPT)
    module = importlib.util.module_from_spec(spec)
    sys.modules["torvane"] = module
    spec.loader.exec_module(module)
    return module


torvane = load_module()


class EngineProcess:
    """A started engine, and a client with one kept connection to it."""

    def __init__(self, port: int = 0, **environment: str) -> None:
        inherited = {k: v for k, v in os.environ.items() if k != "TORVANE_PARENT_PID"}
        self.process = subprocess.Popen(
            [PYTHON, str(SCRIPT), str(port)], env={**inherited, **environment},
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.first_line = self.process.stdout.readline()
        self.port = int(self.first_line.partition("127.0.0.1:")[2].split()[0])
        self.client = http.client.HTTPConnection("127.0.0.1", self.port, timeout=DEADLINE)

    def request(self, method, path, body=None, **headers):
        if isinstance(body, (dict, list)):
            body = json.dumps(body)
        self.client.request(method, path, body, {k.replace("_", "-"): v
                                                 for k, v in headers.items()})
        response = self.client.getresponse()
        return response, response.read()

    def call(self, method, path, body=None, **headers):
        """Status and JSON of a request."""
        response, data = self.request(method, path, body, **headers)
        return response.status, json.loads(data)

    def get(self, path):
        status, value = self.call("GET", path)
        assert status == 200, (path, status, value)
        return value

    def post(self, path, body=None):
        status, value = self.call("POST", path, body)
        assert status == 200, (path, status, value)
        return value

    def ink(self, *events):
        return self.post("/api/ink", {"events": list(events)})

    def poll(self, since=0):
        return self.get(f"/api/ink/events?since={since}")

    def connect(self):
        return socket.create_connection(("127.0.0.1", self.port), timeout=DEADLINE)

    def raw(self, data: bytes):
        """Status and JSON of an answer to bytes sent as they are, on a connection of their own."""
        with self.connect() as sock:
            sock.sendall(data)
            response = http.client.HTTPResponse(sock)
            response.begin()
            return response.status, json.loads(response.read())

    def head(self, line="GET /api/state HTTP/1.1", *headers):
        return "\r\n".join([line, f"Host: 127.0.0.1:{self.port}", *headers, "", ""]).encode()

    def stop(self):
        """Ends the engine; returns what it wrote after its first line."""
        self.client.close()
        if self.process.poll() is None:
            self.process.terminate()
        return self.process.communicate(timeout=DEADLINE)


def begin(stroke, x=0.1, y=0.2):
    return {"t": "begin", "id": stroke, "x": x, "y": y}


def pt(stroke, x=0.3, y=0.4):
    return {"t": "pt", "id": stroke, "x": x, "y": y}


class Poller:
    """What a poller shows, by the rules of the overlay."""

    def __init__(self) -> None:
        self.seq, self.strokes = 0, {}

    def take(self, answer):
        self.seq = answer["seq"]
        for event in answer["events"]:
            if event["t"] == "clear":
                self.strokes = {}
            elif event["t"] == "begin":
                self.strokes.pop(event["id"], None)
                self.strokes[event["id"]] = [(event["x"], event["y"])]
            elif event["t"] == "pt" and event["id"] in self.strokes:
                self.strokes[event["id"]].append((event["x"], event["y"]))
            elif event["t"] == "del":
                for stroke in event["ids"]:
                    self.strokes.pop(stroke, None)

    @property
    def shown(self):
        return list(self.strokes.items())  # the order counts


class EngineTest(unittest.TestCase):
    """An engine of its own for each test; it must end with status 0 and without complaint."""

    def setUp(self):
        self.engine = EngineProcess()
        self.addCleanup(self.stop_engine)

    def stop_engine(self):
        self.assertEqual(self.engine.stop(), ("", ""))
        self.assertEqual(self.engine.process.returncode, 0)


class SharedEngineTest(unittest.TestCase):
    """One engine for all tests of a class, which leave it as it was."""

    @classmethod
    def setUpClass(cls):
        cls.engine = EngineProcess()

    @classmethod
    def tearDownClass(cls):
        output = cls.engine.stop()
        assert output == ("", ""), output

    def tearDown(self):
        state = self.engine.get("/api/state")
        self.assertEqual((state["slide"], state["inkSeq"], state["overlayV"]), (1, 0, 0))


class SlideTest(EngineTest):
    def test_state_at_start(self):
        self.assertEqual(self.engine.get("/api/state"), {
            "version": torvane.VERSION, "deck": "Torvane sample deck", "slide": 1, "count": 5,
            "title": "Welcome to Torvane", "presenting": False, "aspect": 0.5625, "strokes": 0,
            "inkSeq": 0, "overlayV": 0})

    def test_goto_answers_with_the_new_state(self):
        state = self.engine.post("/api/goto", {"slide": 4})
        self.assertEqual((state["slide"], state["title"]), (4, "Point with the laser"))
        self.assertEqual(self.engine.get("/api/state"), state)

    def test_goto_refuses_what_is_not_a_slide(self):
        self.engine.post("/api/goto", {"slide": 3})
        for bad in (0, 6, -1, 10 ** 18, 2.0, "2", True, None, [2], {}):
            status, answer = self.engine.call("POST", "/api/goto", {"slide": bad})
            self.assertEqual((status, list(answer)), (400, ["error"]), bad)
        for body in ({}, [], "2", "", "null"):
            self.assertEqual(self.engine.call("POST", "/api/goto", body)[0], 400, body)
        self.assertEqual(self.engine.get("/api/state")["slide"], 3)

    def test_next_and_previous_stay_at_the_ends(self):
        self.assertEqual(self.engine.post("/api/previous")["slide"], 1)
        seen = [self.engine.post("/api/next")["slide"] for _ in range(6)]
        self.assertEqual(seen, [2, 3, 4, 5, 5, 5])
        self.assertEqual(self.engine.post("/api/previous")["slide"], 4)

    def test_show_starts_and_ends_and_may_be_told_twice(self):
        for path, presenting in (("start", True), ("start", True), ("end", False), ("end", False)):
            self.assertIs(self.engine.post(f"/api/show/{path}")["presenting"], presenting)
            self.assertIs(self.engine.poll()["presenting"], presenting)

    def test_slide_list_names_pictures_that_exist(self):
        answer = self.engine.get("/api/slides")
        self.assertEqual([s["slide"] for s in answer["slides"]], [1, 2, 3, 4, 5])
        self.assertEqual(answer["count"], 5)
        self.assertEqual([s["hasNotes"] for s in answer["slides"]], [True] * 4 + [False])
        for slide in answer["slides"]:
            response, _ = self.engine.request("HEAD", slide["picture"])
            self.assertEqual((response.status, response.headers["Content-Type"]),
                             (200, "image/png"))

    def test_notes(self):
        self.assertIn("sample deck", self.engine.get("/api/slides/1/notes")["notes"])
        self.assertEqual(self.engine.get("/api/slides/5/notes"), {"slide": 5, "notes": ""})

    def test_pictures_are_whole_pngs_and_differ(self):
        pictures = [self.engine.request("GET", f"/api/slides/{n}/picture")[1] for n in range(1, 6)]
        self.assertEqual(len(set(pictures)), 5)
        for picture in pictures:
            self.assertEqual(self.png_size(picture), (1280, 720))
        self.assertEqual(pictures[0], torvane.draw_slide(1))

    def png_size(self, png):
        self.assertEqual(png[:8], b"\x89PNG\r\n\x1a\n")
        at, chunks = 8, {}
        while at < len(png):
            length, kind = struct.unpack(">I4s", png[at:at + 8])
            data, at = png[at + 8:at + 8 + length], at + 12 + length
            self.assertEqual(struct.unpack(">I", png[at - 4:at])[0], zlib.crc32(kind + data))
            chunks[kind] = data
        width, height, *form = struct.unpack(">IIBBBBB", chunks[b"IHDR"])
        self.assertEqual(form, [8, 2, 0, 0, 0])
        self.assertEqual(len(zlib.decompress(chunks[b"IDAT"])), height * (3 * width + 1))
        self.assertEqual(list(chunks), [b"IHDR", b"IDAT", b"IEND"])
        return width, height

    def test_unchanged_picture_is_not_sent_again(self):
        first, _ = self.engine.request("GET", "/api/slides/1/picture")
        again, body = self.engine.request("GET", "/api/slides/1/picture",
                                          If_None_Match=first.headers["ETag"])
        self.assertEqual((again.status, body), (304, b""))
        other, body = self.engine.request("GET", "/api/slides/2/picture",
                                          If_None_Match=first.headers["ETag"])
        self.assertEqual((other.status, body[1:4]), (200, b"PNG"))

    def test_state_is_answered_while_a_picture_is_drawn(self):
        with self.engine.connect() as sock:
            sock.sendall(self.engine.head("GET /api/slides/3/picture HTTP/1.1"))
            self.assertEqual(self.engine.get("/api/state")["slide"], 1)
            self.assertTrue(sock.recv(100).startswith(b"HTTP/1.1 200"))


class InkTest(EngineTest):
    def test_events_arrive_as_they_were_sent(self):
        events = [begin(7, 0, 1.2), pt(7, -0.25, 0.1234567890123), begin(-2 ** 63),
                  {"t": "laser", "x": 0.5, "y": 1}, {"t": "laserend"}, {"t": "del", "ids": [7]}]
        self.assertEqual(self.engine.ink(*events)["inkSeq"], 6)
        self.assertEqual(self.engine.poll(), {"seq": 6, "events": events, "presenting": False,
                                              "aspect": 0.5625, "overlayV": 0})

    def test_poller_gets_only_what_is_new(self):
        self.engine.ink(begin(1), pt(1))
        self.assertEqual(self.engine.poll(1)["events"], [pt(1)])
        self.assertEqual(self.engine.poll(2)["events"], [])
        self.engine.ink(pt(1, 0.9, 0.9))
        self.assertEqual(self.engine.poll(2)["events"], [pt(1, 0.9, 0.9)])

    def test_poller_from_before_a_restart_gets_the_lower_number(self):
        self.engine.ink(begin(1))
        for since in (2, 1000, 2 ** 63 - 1):
            self.assertEqual(self.engine.poll(since)["seq"], 1)
            self.assertEqual(self.engine.poll(since)["events"], [])

    def test_bad_event_changes_nothing_of_its_batch(self):
        bad = [{}, [], "begin", 1, None, {"t": 1}, {"t": ["pt"]}, {"t": "Begin", "id": 1},
               {"t": "begin", "id": 1, "x": 0.1}, begin("3"), begin(True), begin(3.0),
               begin(2 ** 63), begin(1, "0", 0), begin(1, None, 0), begin(1, True, 0),
               begin(1, 10.5, 0), begin(1, 0, -1e300), pt(None), {"t": "del"},
               {"t": "del", "ids": 1}, {"t": "del", "ids": [1, "2"]}, {"t": "laser", "x": 1}]
        for event in bad:
            status, answer = self.engine.call("POST", "/api/ink", {"events": [begin(1), event]})
            self.assertEqual(status, 400, event)
            self.assertIn("event 1 ", answer["error"])
        for body in ({}, {"events": {}}, {"events": None}, []):
            self.assertEqual(self.engine.call("POST", "/api/ink", body)[0], 400, body)
        self.assertEqual(self.engine.get("/api/state")["inkSeq"], 0)

    def test_numbers_that_json_does_not_know_are_refused(self):
        for number in ("NaN", "Infinity", "-Infinity", "1e400", "1" * 5000, "01", "0x1", ".5"):
            body = f'{{"events": [{{"t": "laser", "x": {number}, "y": 0}}]}}'
            self.assertEqual(self.engine.call("POST", "/api/ink", body)[0], 400, number)

    def test_unknown_fields_are_not_passed_on(self):
        self.engine.ink({**begin(1), "colour": "red", "ids": [1]})
        self.assertEqual(self.engine.poll()["events"], [begin(1)])

    def test_points_of_no_stroke_are_ignored(self):
        self.assertEqual(self.engine.ink(pt(5), {"t": "del", "ids": [5]})["inkSeq"], 0)

    def test_beginning_a_stroke_again_replaces_it(self):
        self.engine.ink(begin(1), begin(2), begin(1, 0.9, 0.9))
        self.assertEqual(self.engine.poll(2)["events"],
                         [{"t": "del", "ids": [1]}, begin(1, 0.9, 0.9)])
        self.assertEqual(self.engine.get("/api/state")["strokes"], 2)

    def test_undo_deletes_the_last_stroke(self):
        self.engine.ink(begin(1), pt(1), begin(2))
        self.assertEqual(self.engine.post("/api/ink/undo")["strokes"], 1)
        self.assertEqual(self.engine.poll(3)["events"], [{"t": "del", "ids": [2]}])
        self.assertEqual(self.engine.post("/api/ink/undo")["strokes"], 0)
        seq = self.engine.get("/api/state")["inkSeq"]
        self.assertEqual(self.engine.post("/api/ink/undo")["inkSeq"], seq)

    def test_clear_empties_the_slide_and_reaches_every_poller(self):
        self.engine.ink(begin(1), pt(1))
        self.assertEqual(self.engine.ink({"t": "clear"}, begin(2))["strokes"], 1)
        for since in (0, 1, 2):
            self.assertEqual(self.engine.poll(since)["events"], [{"t": "clear"}, begin(2)])
        self.assertEqual(self.engine.poll(3)["events"], [begin(2)])

    def test_each_slide_keeps_its_own_ink(self):
        poller = Poller()

        def shown():
            poller.take(self.engine.poll(poller.seq))
            return poller.shown

        self.engine.ink(begin(1), pt(1))
        first = shown()
        self.engine.post("/api/next")
        self.assertEqual(shown(), [])
        self.engine.ink(begin(1, 0.7, 0.7), pt(1, 0.8, 0.8))
        second = shown()
        self.assertEqual(second, [(1, [(0.7, 0.7), (0.8, 0.8)])])
        self.engine.post("/api/previous")
        self.assertEqual(shown(), first)
        self.engine.post("/api/ink/undo")
        self.assertEqual(shown(), [])
        self.engine.post("/api/goto", {"slide": 2})
        self.assertEqual(shown(), second)

    def test_slide_change_starts_with_clear_and_going_nowhere_does_not(self):
        self.engine.ink(begin(1))
        self.assertEqual(self.engine.post("/api/goto", {"slide": 1})["inkSeq"], 1)
        self.engine.post("/api/goto", {"slide": 2})
        self.assertEqual(self.engine.poll(1)["events"], [{"t": "clear"}])
        self.engine.post("/api/goto", {"slide": 1})
        self.assertEqual(self.engine.poll(2)["events"], [{"t": "clear"}, begin(1)])

    def test_overlay_picture_comes_back_and_goes(self):
        _, png = self.engine.request("GET", "/api/slides/1/picture")
        self.assertEqual(self.engine.call("GET", "/api/ink/overlay")[0], 404)
        for version, (picture, kind) in enumerate(((png, "image/png"), (JPEG, "image/jpeg")), 1):
            self.assertEqual(self.engine.post("/api/ink/overlay", picture)["overlayV"], version)
            response, data = self.engine.request("GET", "/api/ink/overlay")
            self.assertEqual((response.headers["Content-Type"], data), (kind, picture))
        self.assertEqual(self.engine.post("/api/ink/overlay")["overlayV"], 3)
        self.assertEqual(self.engine.poll()["overlayV"], 3)
        self.assertEqual(self.engine.call("GET", "/api/ink/overlay")[0], 404)

    def test_overlay_takes_large_pictures_and_no_other_format(self):
        large = JPEG + bytes(3 * 1024 * 1024)
        self.engine.post("/api/ink/overlay", large)
        self.assertEqual(self.engine.request("GET", "/api/ink/overlay")[1], large)
        for bad in (b"GIF89a....", b"<svg/>", b"\xff", b"\x89PNG"):
            self.assertEqual(self.engine.call("POST", "/api/ink/overlay", bad)[0], 415)
        self.assertEqual(self.engine.get("/api/state")["overlayV"], 1)


class HttpTest(SharedEngineTest):
    def test_one_connection_serves_many_requests(self):
        with self.engine.connect() as sock:
            for _ in range(50):
                sock.sendall(self.engine.head())
                response = http.client.HTTPResponse(sock)
                response.begin()
                self.assertEqual(response.status, 200)
                self.assertEqual(response.headers["Connection"], "keep-alive")
                self.assertEqual(len(response.read()), int(response.headers["Content-Length"]))

    def test_head_and_body_arrive_together(self):
        for _ in range(20):
            with self.engine.connect() as sock:
                sock.sendall(self.engine.head())
                head, _, body = sock.recv(65536).partition(b"\r\n\r\n")
                self.assertIn(b"Content-Length: %d\r\n" % len(body), head)
                self.assertEqual(json.loads(body)["slide"], 1)

    def test_request_may_arrive_in_pieces(self):
        with self.engine.connect() as sock:
            sock.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            head = self.engine.head("POST /api/previous HTTP/1.1", "Content-Length: 2")
            for byte in head + b"{}":
                sock.sendall(bytes([byte]))
            self.assertTrue(sock.recv(65536).startswith(b"HTTP/1.1 200 "))

    def test_requests_sent_ahead_are_answered_in_order(self):
        with self.engine.connect() as sock:
            sock.sendall(self.engine.head("POST /api/goto HTTP/1.1", "Content-Length: 11")
                         + b'{"slide":1}' + self.engine.head("GET /nowhere HTTP/1.1")
                         + self.engine.head("GET /api/state HTTP/1.1", "Connection: close"))
            answers = b"".join(iter(lambda: sock.recv(65536), b""))
        codes = [part[:3] for part in answers.split(b"HTTP/1.1 ")[1:]]
        self.assertEqual(codes, [b"200", b"404", b"200"])

    def test_connection_closes_when_asked_and_for_http_1_0(self):
        for head in (self.engine.head("GET /api/state HTTP/1.1", "Connection: close"),
                     self.engine.head("GET /api/state HTTP/1.0")):
            with self.engine.connect() as sock:
                sock.sendall(head)
                answer = b"".join(iter(lambda: sock.recv(65536), b""))
            self.assertIn(b"Connection: close\r\n", answer)

    def test_head_has_no_body(self):
        response, body = self.engine.request("HEAD", "/api/state")
        self.assertEqual(body, b"")
        self.assertGreater(int(response.headers["Content-Length"]), 50)
        self.assertEqual(self.engine.get("/api/state")["slide"], 1)

    def test_body_waits_for_the_word_to_continue(self):
        with self.engine.connect() as sock:
            sock.sendall(self.engine.head("POST /api/goto HTTP/1.1", "Content-Length: 11",
                                          "Expect: 100-continue"))
            self.assertEqual(sock.recv(65536), b"HTTP/1.1 100 Continue\r\n\r\n")
            sock.sendall(b'{"slide":1}')
            self.assertTrue(sock.recv(65536).startswith(b"HTTP/1.1 200 OK\r\n"))

    def test_refuses_foreign_hosts(self):
        port = self.engine.port
        for host in ("evil.example", f"evil.example:{port}", "127.0.0.1", "127.0.0.1:1", "",
                     f"127.0.0.1:{port}.evil.example", f"user@127.0.0.1:{port}", f"[::1]:{port}"):
            for line in ("GET /api/state", "POST /api/next"):
                status, _ = self.engine.raw(f"{line} HTTP/1.1\r\nHost: {host}\r\n\r\n".encode())
                self.assertEqual(status, 403, host)
        self.assertEqual(self.engine.raw(b"GET /api/state HTTP/1.1\r\n\r\n")[0], 403)
        self.assertEqual(self.engine.call("GET", "/api/state", Host=f"LocalHost:{port}")[0], 200)

    def test_refuses_foreign_origins(self):
        port = self.engine.port
        for origin in ("http://evil.example", "null", f"https://127.0.0.1:{port}",
                       "http://127.0.0.1", f"http://127.0.0.1:{port}.evil.example", "file://"):
            for method, path in (("GET", "/api/state"), ("POST", "/api/next"),
                                 ("POST", "/api/shutdown")):
                self.assertEqual(self.engine.call(method, path, Origin=origin)[0], 403, origin)
        self.assertEqual(
            self.engine.call("GET", "/api/state", Origin=f"http://127.0.0.1:{port}")[0], 200)

    def test_actions_need_post_and_questions_get(self):
        actions = ("goto", "next", "previous", "show/start", "show/end", "ink", "ink/undo",
                   "shutdown")
        for path in actions:
            for method in ("GET", "HEAD", "PUT", "DELETE", "OPTIONS", "post"):
                response, _ = self.engine.request(method, f"/api/{path}")
                self.assertEqual((response.status, response.headers["Allow"]), (405, "POST"), path)
        for path in ("state", "slides", "slides/1/picture", "slides/1/notes", "ink/events"):
            response, _ = self.engine.request("POST", f"/api/{path}")
            self.assertEqual((response.status, response.headers["Allow"]), (405, "GET"), path)
        response, _ = self.engine.request("DELETE", "/api/ink/overlay")
        self.assertEqual((response.status, response.headers["Allow"]), (405, "GET, POST"))

    def test_unknown_paths_and_slides_are_not_found(self):
        for path in ("/", "/api", "/api/state/", "/API/state", "/api/slides/", "/api/slides/1",
                     "/api/slides/0/picture", "/api/slides/6/notes", "/api/slides/-1/notes",
                     "/api/slides/99999999999999/notes", "/api/slides/1/picture/x",
                     "/../../etc/passwd", "/api/../api/state", "//api/state",
                     "/api/slides/../state", "/api/slides/%2e%2e/state", "/api/state%00",
                     "/api/slides/%31/notes", "/torvane.py"):
            status, answer = self.engine.call("GET", path)
            self.assertEqual((status, list(answer)), (404, ["error"]), path)

    def test_query_of_events_is_checked(self):
        self.assertEqual(self.engine.get("/api/ink/events")["seq"], 0)
        self.assertEqual(self.engine.get("/api/ink/events?x=1&since=0")["seq"], 0)
        for bad in ("-1", "", "abc", "1.5", "+1", "0x1", "9" * 20, "%31", "1;2"):
            status, _ = self.engine.call("GET", f"/api/ink/events?since={bad}")
            self.assertEqual(status, 400, bad)

    def test_malformed_heads(self):
        host = f"Host: 127.0.0.1:{self.engine.port}"
        for first in ("GARBAGE", "", "GET", "GET /api/state", "GET  /api/state HTTP/1.1",
                      "GET /api/state HTTP/1.1 ", "GET /api/st ate HTTP/1.1",
                      "GET api/state HTTP/1.1", "GET http://evil.example/ HTTP/1.1",
                      "GET * HTTP/1.1", "G(T /api/state HTTP/1.1", "GET /\x01 HTTP/1.1",
                      "GET /\xe9 HTTP/1.1", "GET /api/state\nX: y HTTP/1.1", "\x16\x03\x01"):
            status, _ = self.engine.raw(f"{first}\r\n{host}\r\n\r\n".encode("latin-1"))
            self.assertEqual(status, 400, first)
        for line in ("no colon", "Space : 1", " folded: 1", ": empty", "Bad\x00: 1", "A: \x00",
                     "A: b\nC: d", "A: b\rC: d", host, "Content-Length: 0\r\nContent-Length: 0"):
            self.assertEqual(self.engine.raw(self.engine.head("GET /api/state HTTP/1.1", line))[0],
                             400, line)
        self.assertEqual(self.engine.raw(self.engine.head("GET /api/state HTTP/2.0"))[0], 505)

    def test_lengths_that_are_none_or_too_much(self):
        for length, expected in (("-1", 400), ("+1", 400), ("1e3", 400), ("", 400), ("0x10", 400),
                                 ("1 1", 400), ("1,1", 400), ("9" * 30, 400), ("9" * 18, 413),
                                 (str(torvane.MAX_BODY + 1), 413)):
            head = self.engine.head("POST /api/ink HTTP/1.1", f"Content-Length: {length}")
            self.assertEqual(self.engine.raw(head)[0], expected, length)
        head = self.engine.head("POST /api/ink/overlay HTTP/1.1",
                                f"Content-Length: {torvane.MAX_PICTURE + 1}")
        self.assertEqual(self.engine.raw(head)[0], 413)

    def test_answer_survives_a_body_that_is_not_read(self):
        body = bytes(2 * torvane.MAX_BODY)
        head = self.engine.head("POST /api/ink HTTP/1.1", f"Content-Length: {len(body)}")
        self.assertEqual(self.engine.raw(head + body)[0], 413)

    def test_chunked_bodies_are_not_supported(self):
        head = self.engine.head("POST /api/goto HTTP/1.1", "Transfer-Encoding: chunked")
        self.assertEqual(self.engine.raw(head + b"b\r\n{\"slide\":2}\r\n0\r\n\r\n")[0], 501)
        both = self.engine.head("POST /api/goto HTTP/1.1", "Content-Length: 0",
                                "Transfer-Encoding: chunked")
        self.assertEqual(self.engine.raw(both)[0], 501)

    def test_endless_headers_are_cut_off(self):
        for junk in (b"X: " + b"a" * 20000, b"X: a\r\n" * 4000):
            self.assertEqual(self.engine.raw(self.engine.head()[:-2] + junk)[0], 431)

    def test_bodies_that_are_not_json(self):
        for body in (b"", b"{", b"\xff\xfe{\x00}\x00", b'{"slide":1}x', b"{'slide':1}", b"\x00",
                     b'{"slide":"\xc3\x28"}', b"\xef\xbb\xbf{}", b"[" * 100000,
                     b'{"a":' * 100000, b'{"slide":' + b"9" * 100000 + b"}", b"\xed\xa0\x80"):
            status, answer = self.engine.call("POST", "/api/goto", body)
            self.assertEqual((status, list(answer)), (400, ["error"]), body[:20])

    def test_published_json_vectors(self):
        folder = Path(os.environ.get("TORVANE_VECTORS_DIR", "")) / "JSONTestSuite/test_parsing"
        if not folder.is_dir():
            self.skipTest("TORVANE_VECTORS_DIR does not name the published vectors")
        files = sorted(folder.glob("[ny]_*.json"))
        self.assertGreater(len(files), 200)
        for file in files:
            status, answer = self.engine.call("POST", "/api/ink", file.read_bytes())
            self.assertEqual(status, 400, file.name)
            invalid = answer["error"] == "the body is not valid JSON"
            self.assertEqual(invalid, file.name.startswith("n_"), file.name)

    def test_client_that_leaves_early_disturbs_nobody(self):
        for data in (b"", b"GET /api", self.engine.head("POST /api/goto HTTP/1.1",
                                                        "Content-Length: 50") + b"{"):
            with self.engine.connect() as sock:
                sock.sendall(data)
                sock.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        self.assertEqual(self.engine.get("/api/state")["slide"], 1)

    def test_many_connections_at_once(self):
        with contextlib.ExitStack() as stack:
            socks = [stack.enter_context(self.engine.connect()) for _ in range(100)]
            for sock in socks:
                sock.sendall(self.engine.head())
            for sock in socks:
                self.assertTrue(sock.recv(65536).startswith(b"HTTP/1.1 200 OK\r\n"))


class ConcurrencyTest(EngineTest):
    def test_concurrent_posts_lose_nothing(self):
        threads, strokes, failures = 6, 40, []

        def draw(worker):
            client = http.client.HTTPConnection("127.0.0.1", self.engine.port, timeout=DEADLINE)
            for index in range(strokes):
                stroke = worker * strokes + index
                client.request("POST", "/api/ink", json.dumps(
                    {"events": [begin(stroke), pt(stroke, 0.5, 0.5), pt(stroke, 0.6, 0.6)]}))
                response = client.getresponse()
                if response.status != 200 or "inkSeq" not in json.loads(response.read()):
                    failures.append(stroke)
            client.close()

        workers = [threading.Thread(target=draw, args=(n,)) for n in range(threads)]
        poller = Poller()
        for worker in workers:
            worker.start()
        while any(worker.is_alive() for worker in workers):
            poller.take(self.engine.poll(poller.seq))
        poller.take(self.engine.poll(poller.seq))
        self.assertEqual(failures, [])
        self.assertEqual(poller.seq, threads * strokes * 3)
        points = [(0.1, 0.2), (0.5, 0.5), (0.6, 0.6)]
        self.assertEqual(sorted(poller.shown), [(n, points) for n in range(threads * strokes)])


class ProcessTest(unittest.TestCase):
    def test_says_where_it_listens_and_nothing_more(self):
        engine = EngineProcess()
        self.assertEqual(engine.first_line, f"Torvane engine listening on 127.0.0.1:{engine.port} "
                                            f"(pid {engine.process.pid})\n")
        engine.call("GET", "/nowhere")
        engine.post("/api/next")
        self.assertEqual(engine.stop(), ("", ""))

    def test_shutdown_answers_and_ends_with_status_0(self):
        engine = EngineProcess()
        self.assertEqual(engine.post("/api/shutdown")["slide"], 1)
        self.assertEqual(engine.process.wait(DEADLINE), 0)
        engine.stop()

    def test_signals_end_it_with_status_0_also_with_clients(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            engine = EngineProcess()
            engine.get("/api/state")
            with engine.connect() as sock:
                sock.sendall(b"POST /api/goto HTTP/1.1\r\n")
                started = time.monotonic()
                engine.process.send_signal(number)
                self.assertEqual(engine.process.wait(DEADLINE), 0)
                self.assertLess(time.monotonic() - started, 1.0)
            self.assertEqual(engine.stop(), ("", ""))

    def test_busy_port_is_one_clear_line(self):
        engine = EngineProcess()
        second = self.run_script(str(engine.port))
        self.assertEqual((second.returncode, second.stdout), (1, ""))
        self.assertEqual(second.stderr, f"torvane: port {engine.port} is busy: "
                                        "another program listens on it\n")
        engine.stop()

    def test_port_is_free_again_after_the_end(self):
        first = EngineProcess()
        first.get("/api/state")
        first.post("/api/shutdown")
        first.process.wait(DEADLINE)
        second = EngineProcess(first.port)
        self.assertEqual(second.get("/api/state")["slide"], 1)
        for engine in (first, second):
            engine.stop()

    def test_listens_on_loopback_only(self):
        engine = EngineProcess()
        with self.assertRaises(OSError):
            socket.create_connection(("127.0.0.2", engine.port), timeout=DEADLINE)
        engine.stop()

    def test_arguments(self):
        shown = self.run_script("--help")
        self.assertEqual(shown.returncode, 0)
        for word in ("PORT", "TORVANE_PARENT_PID", "127.0.0.1", "/api/shutdown"):
            self.assertIn(word, shown.stdout)
        for bad in ([], ["x"], ["-1"], ["65536"], ["8484", "1"], ["84e2"], ["999999999999"]):
            refused = self.run_script(*bad)
            self.assertEqual(refused.returncode, 2, bad)
            self.assertNotIn("Traceback", refused.stderr)

    def run_script(self, *arguments):
        return subprocess.run([PYTHON, str(SCRIPT), *arguments], capture_output=True, text=True,
                              timeout=DEADLINE)

    def test_ends_with_its_parent_even_while_that_is_a_zombie(self):
        program = ("import os, subprocess, sys\n"
                   "os.environ['TORVANE_PARENT_PID'] = str(os.getpid())\n"
                   "subprocess.Popen(sys.argv[1:])\n"
                   "sys.stdin.read()\n")
        parent = subprocess.Popen([PYTHON, "-c", program, PYTHON, str(SCRIPT), "0"],
                                  stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                  stderr=subprocess.DEVNULL)
        self.assertIn(b"listening", parent.stdout.readline())
        parent.kill()
        self.assert_closes(parent.stdout)  # held open by the engine; the parent is not yet reaped
        parent.communicate()

    def test_ends_with_the_named_process_when_that_is_not_its_parent(self):
        other = subprocess.Popen([PYTHON, "-c", "input()"], stdin=subprocess.PIPE,
                                 stderr=subprocess.DEVNULL)
        engine = EngineProcess(TORVANE_PARENT_PID=str(other.pid))
        self.assertEqual(engine.get("/api/state")["slide"], 1)
        other.kill()
        other.communicate()
        self.assertEqual(engine.process.wait(DEADLINE), 0)
        self.assertEqual(engine.stop()[1], "torvane: the helper has gone; ending\n")

    def test_parent_that_is_no_process_id_is_not_watched(self):
        for value in ("", "0", "-1", "abc", "1.5", "99999999999999999999"):
            with mock.patch.dict(os.environ, TORVANE_PARENT_PID=value):
                self.assertTrue(torvane.parent_check()(), value)

    def assert_closes(self, stream):
        ready, _, _ = select.select([stream], [], [], DEADLINE)
        self.assertTrue(ready, "the engine did not end")
        self.assertEqual(stream.read(), b"")


class InkModelTest(unittest.TestCase):
    """The ink behind the interface, where clocks and sizes are at hand."""

    def setUp(self):
        self.ink = torvane.Ink()

    def limit(self, **values):
        for name, value in values.items():
            patch = mock.patch.object(torvane, name, value)
            patch.start()
            self.addCleanup(patch.stop)

    def poll(self, poller):
        poller.take({"seq": self.ink.seq, "events": self.ink.events_since(poller.seq)})
        return poller.shown

    def test_log_stays_small_and_late_pollers_get_the_whole_picture(self):
        self.limit(MAX_LOG=10)
        early = Poller()
        self.ink.apply(begin(1))
        self.poll(early)
        for index in range(100):
            self.ink.apply(pt(1, index / 100, 0.5))
            self.assertLessEqual(len(self.ink._log), 10)
        self.assertEqual(self.ink.seq, 101)
        self.assertEqual(self.ink.events_since(1)[:2], [{"t": "clear"}, begin(1)])
        self.assertEqual(self.poll(early), self.poll(Poller()))
        self.assertEqual(len(early.strokes[1]), 101)

    def test_laser_flood_stays_small(self):
        self.limit(MAX_LOG=100)
        for _ in range(1000):
            self.ink.apply({"t": "laser", "x": 0.5, "y": 0.5})
        self.assertEqual(self.ink.seq, 1000)
        self.assertLessEqual(len(self.ink._log), 100)

    def test_old_laser_is_not_shown_to_a_late_poller(self):
        with mock.patch.object(torvane.time, "monotonic", lambda: 50.0):
            self.ink.apply(begin(1))
            self.ink.apply({"t": "laser", "x": 0.5, "y": 0.5})
            self.assertEqual(len(self.ink.events_since(0)), 2)
        with mock.patch.object(torvane.time, "monotonic", lambda: 51.5):
            self.assertEqual(self.ink.events_since(0), [begin(1)])

    def test_laser_right_after_a_slide_change_is_not_lost(self):
        laser = {"t": "laser", "x": 0.5, "y": 0.5}
        self.ink.show_slide(2)
        self.ink.apply(laser)
        self.assertEqual(self.ink.events_since(0), [{"t": "clear"}, laser])

    def test_long_strokes_stop_growing(self):
        self.limit(MAX_STROKE_POINTS=5)
        for event in [begin(1)] + [pt(1)] * 20:
            self.ink.apply(event)
        self.assertEqual(self.ink.seq, 5)

    def test_oldest_strokes_make_room(self):
        self.limit(MAX_STROKES=3)
        poller = Poller()
        for stroke in range(6):
            self.ink.apply(begin(stroke))
            self.poll(poller)
        self.assertEqual(list(poller.strokes), [3, 4, 5])

    def test_points_of_a_slide_are_bounded_by_dropping_the_oldest_strokes(self):
        self.limit(MAX_SLIDE_POINTS=10)
        poller = Poller()
        for stroke in range(5):
            for event in [begin(stroke)] + [pt(stroke)] * 3:
                self.ink.apply(event)
        self.assertEqual([n for n, _ in self.poll(poller)], [3, 4])
        for _ in range(20):
            self.ink.apply(pt(4))
        self.assertEqual([n for n, _ in self.poll(poller)], [4])
        self.assertEqual(self.ink._page.points, len(poller.strokes[4]))

    def test_pollers_of_any_pace_agree(self):
        self.limit(MAX_LOG=25, MAX_STROKES=6, MAX_SLIDE_POINTS=40)
        dice = random.Random(8484)
        pollers = [(Poller(), pace) for pace in (1, 3, 40, 200)]
        for step in range(3000):
            stroke = dice.randrange(9)
            roll = dice.random()
            if roll < 0.03:
                self.ink.show_slide(dice.randrange(1, 4))
            elif roll < 0.06:
                self.ink.undo()
            else:
                self.ink.apply(dice.choices(
                    [begin(stroke, step, 0), pt(stroke, step, 1), {"t": "clear"},
                     {"t": "del", "ids": [stroke, stroke, 99]}, {"t": "laserend"}],
                    [20, 60, 1, 8, 8])[0])
            for poller, pace in pollers:
                if step % pace == 0:
                    self.assertEqual(self.poll(poller), self.poll(Poller()), step)

    def test_ink_follows_a_slide_changed_at_the_computer(self):
        deck = torvane.SampleDeck()
        engine = torvane.Engine(deck)
        engine.add_ink([begin(1)])
        deck.current = 3
        self.assertEqual(engine.ink_since(1)["events"], [{"t": "clear"}])
        self.assertEqual(engine.add_ink([begin(2)])["strokes"], 1)
        deck.current = 1
        self.assertEqual(engine.ink_since(0)["events"], [{"t": "clear"}, begin(1)])


class TimeoutTest(unittest.TestCase):
    """Time-outs and limits made small, with the server on a thread of the test."""

    def serve(self, **limits):
        for name, value in limits.items():
            patch = mock.patch.object(torvane, name, value)
            patch.start()
            self.addCleanup(patch.stop)
        listener = torvane.open_listener(0)
        address = listener.getsockname()
        api = torvane.Api(torvane.Engine(torvane.SampleDeck()), address[1], lambda: None)
        # The thread is a daemon that waits in accept; it ends with the tests.
        threading.Thread(target=torvane.accept_connections, args=(listener, api),
                         daemon=True).start()
        self.request = f"GET /api/state HTTP/1.1\r\nHost: 127.0.0.1:{address[1]}\r\n\r\n".encode()
        return lambda: socket.create_connection(address, timeout=DEADLINE)

    def test_idle_connection_is_closed(self):
        with self.serve(IDLE_SECONDS=0.05)() as sock:
            self.assertEqual(sock.recv(100), b"")

    def test_dripping_request_is_refused(self):
        with self.serve(REQUEST_SECONDS=0.1)() as sock:
            sock.sendall(self.request[:10])
            for _ in range(500):  # each drop comes well before the time is up
                if select.select([sock], [], [], 0.02)[0]:
                    break
                sock.sendall(b"x")
            self.assertTrue(sock.recv(1000).startswith(b"HTTP/1.1 408 "))

    def test_connections_beyond_the_limit_wait_their_turn(self):
        connect = self.serve(MAX_CONNECTIONS=1)
        with connect() as first:
            first.sendall(self.request)
            self.assertIn(b" 200 OK", first.recv(65536))
            with connect() as second:
                second.sendall(self.request)
                self.assertEqual(select.select([second], [], [], 0.1)[0], [])
                first.close()
                self.assertIn(b" 200 OK", second.recv(65536))

    def test_fault_of_the_engine_is_answered_and_logged_in_one_line(self):
        connect = self.serve()
        with mock.patch.object(torvane.Engine, "state", side_effect=KeyError("boom")), \
                mock.patch.object(torvane, "log_error") as log, connect() as sock:
            sock.sendall(self.request)
            answer = sock.recv(65536)
        self.assertTrue(answer.startswith(b"HTTP/1.1 500 "))
        self.assertTrue(answer.endswith(b'{"error":"internal error"}'))
        log.assert_called_once()
        self.assertNotIn("\n", log.call_args[0][0])


if __name__ == "__main__":
    unittest.main()
