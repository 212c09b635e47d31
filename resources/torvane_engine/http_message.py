"""Requests and answers of HTTP/1.1, and the head of a request read strictly."""
from __future__ import annotations

import json
import os
import re
import unicodedata
from typing import Any, Callable, Dict, NamedTuple, Optional
from urllib.parse import quote

MAX_HEAD = 16 * 1024             # bytes of request line and header lines


class HttpError(Exception):
    """A request that is answered with an error status and a text for the developer."""

    def __init__(self, status: int, message: str, headers: str = "") -> None:
        super().__init__(message)
        self.status, self.message, self.headers = status, message, headers


class Request(NamedTuple):
    method: str
    path: str
    query: str
    headers: Dict[str, str]
    length: int
    close: bool

    def parameter(self, name: str, default: str) -> str:
        """The first value that the query gives a name; nothing is decoded."""
        start = name + "="
        return next((part[len(start):] for part in self.query.split("&")
                     if part.startswith(start)), default)


class Answer(NamedTuple):
    status: int
    body: Any  # bytes or another buffer
    content_type: str = "application/json"
    headers: str = "Cache-Control: no-store\r\n"
    after: Optional[Callable[[], Any]] = None  # called when the answer has been sent


Handler = Callable[[Request, bytes], Answer]


def json_answer(value: Dict[str, Any], status: int = 200, headers: str = "") -> Answer:
    body = json.dumps(value, separators=(",", ":")).encode("ascii")
    return Answer(status, body, headers="Cache-Control: no-store\r\n" + headers)


MAX_NAME = 80  # characters of a title in the name of a file


def attachment(title: str, ending: str) -> str:
    """A header (RFC 6266) with the name of `title`, a file's, and another ending; for any disk."""
    visible = "".join(one for one in os.path.splitext(title)[0]
                      if not unicodedata.category(one).startswith("C"))
    name = re.sub(r'[\\/:*?"<>|;%]', "_", visible)[:MAX_NAME].strip(" .") or "Presentation"
    plain = re.sub(r"[^ -~]", "_", name)
    return (f'Content-Disposition: attachment; filename="{plain}{ending}"; '
            f"filename*=UTF-8''{quote(name + ending, safe='')}\r\n")


TOKEN = r"[!#$%&'*+.^_`|~0-9A-Za-z-]+"
REQUEST_LINE = re.compile(rf"({TOKEN}) (/[!-~]*) HTTP/([0-9])\.([0-9])")
HEADER_NAME = re.compile(TOKEN)
CONTROL = re.compile(r"[\x00-\x08\x0a-\x1f\x7f]")
SINGLE = {"host", "origin", "content-length", "transfer-encoding"}


def parse_head(head: bytes) -> Request:
    """The request line and headers of a request; raises HttpError."""
    first, *lines = head.decode("latin-1").split("\r\n")
    found = REQUEST_LINE.fullmatch(first)
    if not found:
        raise HttpError(400, "malformed request line")
    method, target, major, minor = found.groups()
    if major != "1":
        raise HttpError(505, "only HTTP/1 is spoken here")
    headers: Dict[str, str] = {}
    for text_line in lines:
        name, colon, value = text_line.partition(":")
        if not colon or not HEADER_NAME.fullmatch(name) or CONTROL.search(value):
            raise HttpError(400, "malformed header line")
        name = name.lower()
        if name in SINGLE and name in headers:
            raise HttpError(400, f"more than one {name} header")
        headers[name] = value.strip(" \t")
    if "transfer-encoding" in headers:
        raise HttpError(501, "transfer encodings are not supported; send Content-Length")
    length = headers.get("content-length", "0")
    if not re.fullmatch("[0-9]{1,18}", length):
        raise HttpError(400, "malformed Content-Length")
    path_part, _, query = target.partition("?")
    close = minor == "0" or "close" in headers.get("connection", "").lower()
    return Request(method, path_part, query, headers, int(length), close)
