"""HTTP/1.1 on the loopback address: one thread for each kept connection.

The standard library's http.server was tried in its place. It reads each header as an e-mail's,
which takes four times as long (140 to 190 µs of processor for a request instead of 36 to 48), and
cannot hold what is promised here: it lets malformed lines and heads of several megabytes pass, and
limits the time of each read but not of a whole request. socketserver ignores a failing accept in a
busy loop.
"""
from __future__ import annotations

import errno
import socket
import threading
import time
from http import HTTPStatus
from typing import Optional

from .api import Api
from .http_message import Answer, HttpError, MAX_HEAD, Request, json_answer, parse_head
from .log import log_error

ADDRESS = "127.0.0.1"
MAX_CONNECTIONS = 256
IDLE_SECONDS = 75.0              # between two requests of a connection
MAX_JOINED = 1024 * 1024         # bytes of a body that leaves in one write with its head
REQUEST_SECONDS = 15.0           # from a request's first byte to its last, and for an answer


class Connection:
    """One client's socket, served by a thread of its own until either side has had enough."""

    def __init__(self, sock: socket.socket, api: Api) -> None:
        self._socket, self._api = sock, api
        self._received = b""
        self._deadline = 0.0

    def serve(self) -> None:
        try:
            self._socket.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            while self._wait_for_request() and self._serve_one():
                pass
        except OSError:
            pass  # the client has gone or is too slow; nobody is left to tell
        finally:
            self._socket.close()

    def _wait_for_request(self) -> bool:
        if not self._received:
            self._socket.settimeout(IDLE_SECONDS)
            self._received = self._socket.recv(65536)
        self._deadline = time.monotonic() + REQUEST_SECONDS
        return bool(self._received)

    def _serve_one(self) -> bool:
        """Answers one request; False when the connection is to be closed after it."""
        request, all_read = None, False
        try:
            request = parse_head(self._read_head())
            all_read = request.length == 0
            handler = self._api.find(request)
            body = self._read_body(request)
            all_read = True
            answer = handler(request, body)
        except HttpError as error:
            answer = json_answer({"error": error.message}, error.status, error.headers)
        except socket.timeout:
            answer = json_answer({"error": "the request took too long"}, 408)
        except OSError:
            raise
        except Exception as error:  # a fault of the engine's own must not end it
            log_error(f"{request and request.path!r}: {error!r}")
            answer = json_answer({"error": "internal error"}, 500)
        close = request is None or request.close or not all_read
        asked_head = request is not None and request.method == "HEAD"
        self._send(answer, close, head_only=asked_head or answer.status == 304)
        if answer.after:
            answer.after()
        if not all_read:
            self._drain()
        return not close

    def _send(self, answer: Answer, close: bool, head_only: bool) -> None:
        """Head and body leave in one write, as long as copying them together is the quicker way."""
        head = (f"HTTP/1.1 {answer.status} {HTTPStatus(answer.status).phrase}\r\n"
                f"Content-Type: {answer.content_type}\r\n"
                f"Content-Length: {len(answer.body)}\r\n"
                f"X-Content-Type-Options: nosniff\r\n{answer.headers}"
                f"{'Connection: close' if close else 'Connection: keep-alive'}\r\n\r\n")
        self._socket.settimeout(REQUEST_SECONDS)
        body = b"" if head_only else answer.body
        if len(body) <= MAX_JOINED:
            self._socket.sendall(head.encode("latin-1") + bytes(body))
        else:
            self._socket.sendall(head.encode("latin-1"))
            self._socket.sendall(body)

    def _receive(self) -> bytes:
        self._socket.settimeout(max(self._deadline - time.monotonic(), 0.001))
        data = self._socket.recv(65536)
        if not data:
            raise ConnectionError("closed in the middle of a request")
        return data

    def _read_head(self) -> bytes:
        while True:
            head, end, rest = self._received.partition(b"\r\n\r\n")
            if len(head) > MAX_HEAD:
                raise HttpError(431, f"the headers are larger than {MAX_HEAD} bytes")
            if end:
                self._received = rest
                return head
            self._received += self._receive()

    def _read_body(self, request: Request) -> bytes:
        if not request.length:
            return b""
        if request.headers.get("expect", "").lower() == "100-continue":
            self._socket.sendall(b"HTTP/1.1 100 Continue\r\n\r\n")
        body = bytearray(self._received)
        while len(body) < request.length:
            body += self._receive()
        self._received = bytes(body[request.length:])
        return bytes(body[:request.length])

    def _drain(self) -> None:
        """Closing over unread data would reset the connection and lose the answer."""
        self._socket.shutdown(socket.SHUT_WR)
        self._deadline = time.monotonic() + 1.0
        while time.monotonic() < self._deadline:
            self._receive()


def accept_connections(listener: socket.socket, api: Api) -> None:
    """Serves each client on a thread of its own; those beyond the limit wait to be accepted."""
    free = threading.Semaphore(MAX_CONNECTIONS)

    def serve(client: socket.socket) -> None:
        try:
            Connection(client, api).serve()
        finally:
            free.release()

    while True:
        free.acquire()
        try:
            client = listener.accept()[0]
            threading.Thread(target=serve, args=(client,), daemon=True).start()
        except (OSError, RuntimeError) as error:  # no descriptors or no threads are left
            free.release()
            log_error(f"cannot accept a connection: {error}")
            time.sleep(1.0)


def open_listener(port: int) -> Optional[socket.socket]:
    listener = socket.socket(socket.AF_INET, socket.SOCK_STREAM)
    try:
        listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        listener.bind((ADDRESS, port))
        listener.listen(128)
        return listener
    except OSError as error:
        busy = error.errno == errno.EADDRINUSE
        log_error(f"port {port} is busy: another program listens on it" if busy else
                  f"cannot listen on {ADDRESS}:{port}: {error.strerror}")
        listener.close()
        return None
