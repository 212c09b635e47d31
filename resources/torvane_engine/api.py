"""Paths and methods, and checks of what was sent."""
from __future__ import annotations

import re
from typing import Any, Callable, Dict

from .checks import check_event, parse_object
from .engine import Engine
from .http_message import Answer, Handler, HttpError, Request, attachment, json_answer
from .presenters.presenter import Refused

MAX_BODY = 1024 * 1024           # bytes of a JSON request
MAX_PICTURE = 16 * 1024 * 1024   # bytes of an overlay picture
DEFAULT_WIDTH = 1280             # of slide pictures


class Api:
    """Finds the handler of a request; each handler checks what was sent and asks the engine."""

    SLIDE_PATH = re.compile(r"/api/slides/([0-9]{1,9})/(picture|notes)")

    def __init__(self, engine: Engine, port: int, stop: Callable[[], Any]) -> None:
        self._engine, self._stop = engine, stop
        self._hosts = {f"127.0.0.1:{port}", f"localhost:{port}"}
        self._origins = {"", *(f"http://{host}" for host in self._hosts)}
        self._routes: Dict[str, Dict[str, Handler]] = {
            "/api/state": {"GET": lambda *_: json_answer(engine.state())},
            "/api/slides": {"GET": lambda *_: json_answer(engine.slides())},
            "/api/goto": {"POST": self._go_to},
            "/api/documents": {"GET": lambda *_: json_answer(engine.documents())},
            "/api/document": {"POST": self._choose},
            "/api/next": {"POST": lambda *_: json_answer(engine.act("next"))},
            "/api/previous": {"POST": lambda *_: json_answer(engine.act("previous"))},
            "/api/show/start": {"POST": lambda *_: json_answer(engine.start_show())},
            "/api/show/end": {"POST": lambda *_: json_answer(engine.act("end"))},
            "/api/blank": {"POST": self._blank},
            "/api/ink": {"POST": self._add_ink},
            "/api/ink/undo": {"POST": lambda *_: json_answer(engine.undo_ink())},
            "/api/ink/events": {"GET": self._ink_events},
            "/api/ink/overlay": {"GET": self._overlay, "POST": self._set_overlay},
            "/api/export": {"GET": self._exported, "POST": self._export},
            "/api/shutdown": {"POST": self._shutdown},
        }

    def find(self, request: Request) -> Handler:
        """Judges a request by its head alone, before its body is read."""
        # The name that a foreign page used to get here, and the page itself, give it away.
        if request.headers.get("host", "").lower() not in self._hosts:
            raise HttpError(403, "the Host header does not name this engine")
        if request.headers.get("origin", "").lower() not in self._origins:
            raise HttpError(403, "requests from other origins are refused")
        methods = self._routes.get(request.path)
        if methods is None and self.SLIDE_PATH.fullmatch(request.path):
            methods = {"GET": self._slide}
        if methods is None:
            raise HttpError(404, "no such path")
        handler = methods.get("GET" if request.method == "HEAD" else request.method)
        if handler is None:
            raise HttpError(405, f"use {' or '.join(methods)}",
                            f"Allow: {', '.join(methods)}\r\n")
        limit = MAX_PICTURE if request.path == "/api/ink/overlay" else MAX_BODY
        if request.length > limit:
            raise HttpError(413, f"the body is larger than {limit} bytes")
        return lambda *of: self._unless_refused(handler, *of)

    def _unless_refused(self, handler: Handler, request: Request, body: bytes) -> Answer:
        try:
            return handler(request, body)
        except Refused as error:
            raise HttpError(409, str(error)) from None

    def _slide(self, request: Request, _: bytes) -> Answer:
        digits, part = self.SLIDE_PATH.fullmatch(request.path).groups()
        number = int(digits)
        if not self._engine.has_slide(number):
            raise HttpError(404, "no such slide")
        if part == "notes":
            return json_answer(self._engine.notes(number))
        picture = self._engine.picture(number, self._width(request))
        if picture is None:
            raise HttpError(503, "the picture cannot be made now", "Retry-After: 2\r\n")
        headers = f"Cache-Control: private, no-cache\r\nETag: {picture.tag}\r\n"
        known = picture.tag in request.headers.get("if-none-match", "")
        return Answer(304 if known else 200, picture.data, picture.content_type, headers)

    def _width(self, request: Request) -> int:
        digits = request.parameter("width", str(DEFAULT_WIDTH))
        if not re.fullmatch("[1-9][0-9]{0,3}", digits):
            raise HttpError(400, "\"width\" must be a number of pixels from 1 to 9999")
        return int(digits)

    def _go_to(self, _: Request, body: bytes) -> Answer:
        number = parse_object(body).get("slide")
        if not self._engine.has_slide(number):
            raise HttpError(400, "\"slide\" must be the number of a slide")
        return json_answer(self._engine.act("go_to", number))

    def _blank(self, _: Request, body: bytes) -> Answer:
        on = parse_object(body).get("on")
        if type(on) is not bool:
            raise HttpError(400, "\"on\" must be true or false")
        return json_answer(self._engine.act("blank", on))

    def _choose(self, _: Request, body: bytes) -> Answer:
        document = parse_object(body).get("document")
        if not isinstance(document, str):
            raise HttpError(400, "\"document\" must be the id of a presentation")
        return json_answer(self._engine.choose(document))

    def _add_ink(self, _: Request, body: bytes) -> Answer:
        events = parse_object(body).get("events")
        if not isinstance(events, list):
            raise HttpError(400, "\"events\" must be a list")
        return json_answer(self._engine.add_ink(
            [check_event(event, index) for index, event in enumerate(events)]))

    def _ink_events(self, request: Request, _: bytes) -> Answer:
        since = request.parameter("since", "0")
        if not re.fullmatch("[0-9]{1,19}", since):
            raise HttpError(400, "\"since\" must be a whole number, 0 or more")
        return json_answer(self._engine.ink_since(int(since)))

    def _overlay(self, *_: Any) -> Answer:
        overlay = self._engine.overlay()
        if overlay is None:
            raise HttpError(404, "there is no overlay picture")
        return Answer(200, *overlay)

    def _set_overlay(self, _: Request, body: bytes) -> Answer:
        if not body:
            return json_answer(self._engine.set_overlay(None))
        for magic, content_type in ((b"\x89PNG\r\n\x1a\n", "image/png"),
                                    (b"\xff\xd8\xff", "image/jpeg")):
            if body.startswith(magic):
                return json_answer(self._engine.set_overlay((body, content_type)))
        raise HttpError(415, "the picture must be PNG or JPEG")

    def _export(self, _: Request, body: bytes) -> Answer:
        document = parse_object(body).get("document") if body else None
        if document is not None and not isinstance(document, str):
            raise HttpError(400, "\"document\" must be the id of a presentation")
        return json_answer(self._engine.export(document))

    def _exported(self, *_: Any) -> Answer:
        found = self._engine.exported()
        if found is None:
            raise HttpError(404, "no PDF was asked for; POST makes one")
        title, data = found
        return Answer(200, data, "application/pdf",
                      "Cache-Control: no-store\r\n" + attachment(title, " annotated.pdf"))

    def _shutdown(self, *_: Any) -> Answer:
        return json_answer(self._engine.state())._replace(after=self._stop)
