"""HTTP: what is malformed, too large, too slow, foreign, or many at once."""
from __future__ import annotations

import contextlib
import http.client
import json
import os
import select
import socket
import struct
import threading
import unittest
from pathlib import Path
from unittest import mock

from engine_support import DEADLINE, EngineTest, Poller, SharedEngineTest, begin, pt
from fake_presenter import FakePresenter
from torvane_engine import http_server
from torvane_engine.api import Api, MAX_BODY, MAX_PICTURE
from torvane_engine.engine import Engine
from torvane_engine.presenters.chooser import Chooser
from torvane_engine.presenters.presenter_thread import PresenterThread


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
        actions = ("goto", "next", "previous", "show/start", "show/end", "blank", "document", "ink", "ink/undo",
                   "shutdown")
        for path in actions:
            for method in ("GET", "HEAD", "PUT", "DELETE", "OPTIONS", "post"):
                response, _ = self.engine.request(method, f"/api/{path}")
                self.assertEqual((response.status, response.headers["Allow"]), (405, "POST"), path)
        for path in ("state", "slides", "documents", "slides/1/picture", "slides/1/notes", "ink/events"):
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
                                 (str(MAX_BODY + 1), 413)):
            head = self.engine.head("POST /api/ink HTTP/1.1", f"Content-Length: {length}")
            self.assertEqual(self.engine.raw(head)[0], expected, length)
        head = self.engine.head("POST /api/ink/overlay HTTP/1.1",
                                f"Content-Length: {MAX_PICTURE + 1}")
        self.assertEqual(self.engine.raw(head)[0], 413)

    def test_answer_survives_a_body_that_is_not_read(self):
        body = bytes(2 * MAX_BODY)
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


class TimeoutTest(unittest.TestCase):
    """Time-outs and limits made small, with the server on a thread of the test."""

    def serve(self, **limits):
        for name, value in limits.items():
            patch = mock.patch.object(http_server, name, value)
            patch.start()
            self.addCleanup(patch.stop)
        listener = http_server.open_listener(0)
        address = listener.getsockname()
        chooser = Chooser([PresenterThread(FakePresenter())])
        chooser.start()
        api = Api(Engine(chooser), address[1], lambda: None)
        # The thread is a daemon that waits in accept; it ends with the tests.
        threading.Thread(target=http_server.accept_connections, args=(listener, api),
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
        with mock.patch.object(Engine, "state", side_effect=KeyError("boom")), \
                mock.patch.object(http_server, "log_error") as log, connect() as sock:
            sock.sendall(self.request)
            answer = sock.recv(65536)
        self.assertTrue(answer.startswith(b"HTTP/1.1 500 "))
        self.assertTrue(answer.endswith(b'{"error":"internal error"}'))
        log.assert_called_once()
        self.assertNotIn("\n", log.call_args[0][0])
