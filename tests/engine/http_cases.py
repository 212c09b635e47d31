"""Requests at random for a fuzz test, well-formed and otherwise; the same for the same seed."""
from __future__ import annotations

import json
import random
from typing import Any, FrozenSet, NamedTuple, Optional, Sequence, Tuple

from http_oddities import (
    BAD_BODIES, BAD_EVENTS, BAD_HEADERS, BAD_LENGTHS, BAD_LINES, FIELDS, GET_PATHS, NEVER,
    ODD_PATHS, OTHER_HEADERS, OTHER_LENGTHS, OTHER_LINES, POSTS, QUERIES, TEXTS)

DOCUMENTED = frozenset((200, 304, 400, 403, 404, 405, 408, 409, 413, 415, 431, 501, 503, 505))
FINE = frozenset((200, 304, 404, 409, 503))


class Case(NamedTuple):
    kind: str
    pieces: Tuple[bytes, ...]             # written one after the other
    allowed: FrozenSet[int] = DOCUMENTED  # statuses of every answer
    answers: Optional[int] = None         # exactly so many
    heads: Tuple[bool, ...] = ()          # whether the answers have no bodies


class Cases:
    def __init__(self, seed: int, port: int) -> None:
        self.random = random.Random(seed)
        self.own = own = f"127.0.0.1:{port}"
        self._hosts = (
            "evil.example", f"evil.example:{port}", "127.0.0.1", f"127.0.0.1:{port + 1}", "",
            f"{own}.evil.example", f"user@{own}", f"[::1]:{port}", f"{own},{own}", f"{own}\xa0",
            f"0.0.0.0:{port}", f"127.1:{port}", f"http://{own}", f"{own}/")
        self._origins = (  # an empty one is as good as none
            "null", "http://evil.example", f"https://{own}", "http://127.0.0.1", "file://", own,
            f"http://{own}/", f"http://{own}.evil.example", f"http://{own} http://x", "*")
        self._kinds = (
            self._fine, self._foreign, self._json, self._text, self._length, self._head, self._line,
            self._path, self._query, self._bytes, self._bytes, self._body)

    def case(self) -> Case:
        return self._one_of(self._kinds)()

    def _one_of(self, choices: Sequence[Any]) -> Any:
        return self.random.choice(choices)

    def _request(self, method: str, path: str, body: bytes = b"", *headers: str,
                 line: str = "{m} {p} HTTP/1.1", host: Optional[str] = None,
                 length: Optional[str] = None) -> bytes:
        lines = [line.replace("{m}", method).replace("{p}", path),
                 f"Host: {self.own if host is None else host}"]
        if body or length is not None:
            lines.append(f"Content-Length: {len(body) if length is None else length}")
        return "\r\n".join([*lines, *headers, "", ""]).encode("latin-1") + body

    def _some(self) -> Tuple[str, str, bytes]:
        """Method, path and body of a request that is right."""
        if self.random.random() < 0.5:
            slide = str(self.random.randint(1, 5))
            return "GET", self._one_of(GET_PATHS).replace("{n}", slide), b""
        path, body = self._one_of(POSTS)
        return "POST", path, json.dumps(body).encode() if body else b""

    def _split(self, data: bytes) -> Tuple[bytes, ...]:
        """In up to four pieces, mostly in one."""
        cuts = self._one_of((0, 0, 0, 1, 3))
        ends = [0, *sorted(self.random.randint(0, len(data)) for _ in range(cuts)), len(data)]
        return tuple(data[start:end] for start, end in zip(ends, ends[1:]))

    def _any(self, kind: str, data: bytes) -> Case:
        return Case(kind, self._split(data))

    def _one(self, kind: str, data: bytes, *allowed: int) -> Case:
        return Case(kind, self._split(data), frozenset(allowed), 1)

    def _fine(self) -> Case:
        """Several requests, sent ahead."""
        data, heads = b"", []
        for _ in range(self.random.randint(1, 4)):
            method, path, body = self._some()
            heads.append(method == "GET" and self.random.random() < 0.2)
            data += self._request("HEAD" if heads[-1] else method, path, body)
        return Case("fine", self._split(data), FINE, len(heads), tuple(heads))

    def _foreign(self) -> Case:
        """Whose body is a request that would be answered."""
        method, path, _ = self._some()
        if self.random.random() < 0.2:
            method, path = "POST", "/api/shutdown"
        hidden = self._request("GET", "/api/state")
        if self.random.random() < 0.5:
            data = self._request(method, path, hidden, host=self._one_of(self._hosts))
        else:
            data = self._request(method, path, hidden, f"Origin: {self._one_of(self._origins)}")
        return self._one("foreign", data, 403)

    def _json(self) -> Case:
        """A member that is never right, or is there twice and wrong the second time."""
        path, field = self._one_of(FIELDS)
        value = self._one_of(NEVER)
        if field == "events" or self.random.random() < 0.2:
            path, field, value = "/api/ink", "events", f"[{self._one_of(BAD_EVENTS)}]"
        before = self._one_of(("", f'"{field}":1,', '"x":"ü",'))
        body = f'{{{before}"{field}":{value}}}'.encode()
        return self._one("json", self._request("POST", path, body), 400)

    def _text(self) -> Case:
        """A text where an id belongs is of the right type, but no presentation. An export that is
        under way answers anything with itself."""
        path, *more = self._one_of((("/api/document",), ("/api/export", 200)))
        body = f'{{"document":{self._one_of(TEXTS)}}}'.encode()
        return self._one("text", self._request("POST", path, body), 409, *more)

    def _body(self) -> Case:
        """What is no JSON, no object, or lacks all members."""
        noise = bytes(self.random.randrange(256) for _ in range(200))
        path, _ = self._one_of(FIELDS[:4])
        body = self._one_of((*BAD_BODIES, noise))
        return self._one("body", self._request("POST", path, body), 400)

    def _length(self) -> Case:
        method, path, body = self._some()
        if self.random.random() < 0.3:
            length = self._one_of(OTHER_LENGTHS)
            return self._any("length", self._request(method, path, body or b"{}", length=length))
        data = self._request(method, path, body or b"{}", length=self._one_of(BAD_LENGTHS))
        return self._one("length", data, 400, 413)

    def _head(self) -> Case:
        method, path, body = self._some()
        odd = self.random.sample(OTHER_HEADERS, self.random.randint(1, 3))
        if self.random.random() < 0.3:
            return self._any("head", self._request(method, path, body, *odd))
        odd.insert(self.random.randint(0, 1), self._one_of(BAD_HEADERS))
        return self._one("head", self._request(method, path, body, *odd), 400, 431, 501)

    def _line(self) -> Case:
        method, path, body = self._some()
        if self.random.random() < 0.2:
            data = self._request(method, path, body, line=self._one_of(OTHER_LINES))
            return self._one("line", data, 400, 404, 405)
        data = self._request(method, path, body, line=self._one_of(BAD_LINES))
        return self._one("line", data, 400, 431, 505)

    def _path(self) -> Case:
        return self._one("path", self._request("GET", self._one_of(ODD_PATHS)), 400, 404, 405)

    def _query(self) -> Case:
        path = self._one_of(("/api/ink/events", "/api/slides/1/picture", "/api/state"))
        data = self._request("GET", f"{path}?{self._one_of(QUERIES)}")
        return self._one("query", data, 200, 400, 503)

    def _bytes(self) -> Case:
        """Bytes of two requests that are right, changed, lost, doubled or put in."""
        data = bytearray(self._request(*self._some()) + self._request(*self._some()))
        for _ in range(self._one_of((1, 1, 2, 5, 20))):
            at = self.random.randrange(len(data))
            size = self._one_of((1, 1, 2, 8))
            other = bytes((self.random.randrange(256),))
            flipped = bytes((data[at] ^ 1 << self.random.randrange(8),))
            data[at:at + size] = self._one_of((
                other, flipped, b"", bytes(data[at:at + size]) * 2, b"\r\n", b"\r\n\r\n", b"\0",
                b" ", b":"))
        return self._any("bytes", bytes(data))
