#!/usr/bin/python3
"""Torvane engine: runs a presentation and answers HTTP on the loopback address.

Started by the helper as "python3 torvane.py 8484". The interface is described in
docs/engine-api.md. The file is built in layers, each knowing only the one above it:

    drawing         pictures of the sample slides, as PNG
    SampleDeck      the presentation driver: slides, notes, pictures, moving, showing
    Ink             strokes of every slide and the numbered event log for pollers
    Engine          deck, ink and overlay picture behind one lock
    Api             paths and methods, checks of what was sent
    Connection      HTTP/1.1 on one socket

Another presentation program is driven by another class with SampleDeck's public members.
"""
from __future__ import annotations

import argparse
import errno
import functools
import json
import math
import os
import re
import select
import signal
import socket
import struct
import sys
import threading
import time
import zlib
from typing import Any, Callable, Dict, Iterable, Iterator, List, NamedTuple, Optional, Tuple

VERSION = "1.0"
ADDRESS = "127.0.0.1"

MAX_HEAD = 16 * 1024             # bytes of request line and header lines
MAX_BODY = 1024 * 1024           # bytes of a JSON request
MAX_PICTURE = 16 * 1024 * 1024   # bytes of an overlay picture
MAX_CONNECTIONS = 256
IDLE_SECONDS = 75.0              # between two requests of a connection
REQUEST_SECONDS = 15.0           # from a request's first byte to its last, and for an answer
PARENT_SECONDS = 1.0             # between two looks at the parent process

MAX_STROKES = 1000               # of one slide; the oldest make room for new ones
MAX_STROKE_POINTS = 5000         # of one stroke; later points are not kept
MAX_SLIDE_POINTS = 50000         # of one slide; the oldest strokes make room
MAX_LOG = 20000                  # events kept for pollers
MAX_COORDINATE = 10.0            # in slide widths or heights, either sign
LASER_SECONDS = 1.0              # a laser event older than this has faded everywhere

# --- drawing --------------------------------------------------------------------------------

PICTURE_WIDTH, PICTURE_HEIGHT = 1280, 720
SAMPLES = 2                      # drawn at twice the size and averaged, for smooth edges

Colour = Tuple[int, int, int]
Span = Tuple[int, float, float]  # row, left, right; in samples

# Letters as strokes: pairs of digits are points (x 0-4, y 0-7, top left 00), "/" lifts the pen.
GLYPHS = {
    "A": "062046/1434", "B": "06003041423303/3344453606", "C": "4130100105163645",
    "D": "06003041453606", "E": "40000646/0333", "F": "400006/0333",
    "G": "41301001051636454323", "H": "0006/4046/0343", "I": "0006", "J": "4045361605",
    "K": "0006/4004/2246", "L": "000646", "M": "0600234046", "N": "06004640",
    "O": "103041453616050110", "P": "06003041423303", "Q": "103041453616050110/2446",
    "R": "06003041423303/2346", "S": "413010010213334445361605", "T": "0040/2026",
    "U": "000516364540", "V": "002640", "W": "0016223640", "X": "0046/4006",
    "Y": "002340/2326", "Z": "00400646", "0": "102031352616050110", "1": "011016",
    "2": "01103041420646", "3": "01103041423313/334445361605", "4": "36300444",
    "5": "400002324345361605", "6": "4130100105163645443303", "7": "004016",
    "8": "103041423313020110/133344453616050413", "9": "0516364541301001021343",
    ".": "0606", ",": "0607", "-": "0323", "'": "0001", "?": "01103041422324/2626",
    "/": "0640", " ": "",
}


def box(x: float, y: float, width: float, height: float, corner: float) -> Iterator[Span]:
    """A rectangle with round corners."""
    x, y, width, height, corner = (v * SAMPLES for v in (x, y, width, height, corner))
    for row in range(math.ceil(y), math.floor(y + height) + 1):
        inside = max(y + corner - row, row - (y + height - corner), 0.0)
        inset = corner - math.sqrt(max(corner * corner - inside * inside, 0.0))
        yield row, x + inset, x + width - inset


def disc(x: float, y: float, radius: float) -> Iterator[Span]:
    return box(x - radius, y - radius, 2 * radius, 2 * radius, radius)


def line(x0: float, y0: float, x1: float, y1: float, width: float) -> Iterator[Span]:
    """A straight line with round ends: two discs and the band between them."""
    x0, y0, x1, y1, radius = (v * SAMPLES for v in (x0, y0, x1, y1, width / 2))
    scale = radius / (math.hypot(x1 - x0, y1 - y0) or 1.0)
    dx, dy = (y0 - y1) * scale, (x1 - x0) * scale
    sides = ((x0 - dx, y0 - dy, x1 - dx, y1 - dy), (x0 + dx, y0 + dy, x1 + dx, y1 + dy))
    for row in range(math.ceil(min(y0, y1) - radius), math.floor(max(y0, y1) + radius) + 1):
        found = []
        for cx, cy in ((x0, y0), (x1, y1)):
            if abs(row - cy) <= radius:
                half = math.sqrt(radius * radius - (row - cy) ** 2)
                found += [cx - half, cx + half]
        for ax, ay, bx, by in sides:
            if ay != by and min(ay, by) <= row <= max(ay, by):
                found.append(ax + (bx - ax) * (row - ay) / (by - ay))
        yield row, min(found), max(found)


def path(points: List[Tuple[float, float]], width: float) -> Iterator[Span]:
    for start, end in zip(points, points[1:]):
        yield from line(*start, *end, width)


def text(words: str, x: float, y: float, unit: float) -> Iterator[Span]:
    """Capital letters, 6 units high, whose top left corner is at x and y."""
    for letter in words.upper():
        glyph = [[(int(a) * unit, int(b) * unit) for a, b in zip(stroke[::2], stroke[1::2])]
                 for stroke in GLYPHS[letter].split("/")]
        for stroke in glyph:
            yield from path([(x + a, y + b) for a, b in stroke], unit * 0.95)
        x += max((a for stroke in glyph for a, _ in stroke), default=unit) + 2.1 * unit


@functools.lru_cache(maxsize=1024)
def blend_table(value: int, alpha: float) -> bytes:
    return bytes(round(old + (value - old) * alpha) for old in range(256))


def average(first: bytes, second: bytes) -> bytes:
    """Means of two rows of bytes, all at once: (a & b) + half of (a ^ b), in one big number."""
    a, b = int.from_bytes(first, "big"), int.from_bytes(second, "big")
    mask = int.from_bytes(b"\xfe" * len(first), "big")
    return ((a & b) + (((a ^ b) & mask) >> 1)).to_bytes(len(first), "big")


class Canvas:
    """Three planes of samples (red, green, blue), filled with a gradient from top to bottom."""

    def __init__(self, top: Colour, bottom: Colour) -> None:
        self._width, self._height = PICTURE_WIDTH * SAMPLES, PICTURE_HEIGHT * SAMPLES
        self._planes = []
        for start, end in zip(top, bottom):
            rows = (round(start + (end - start) * y / self._height) for y in range(self._height))
            self._planes.append(bytearray(b"".join(bytes([v]) * self._width for v in rows)))

    def paint(self, shape: Iterable[Span], colour: Colour, alpha: float = 1.0) -> None:
        """Blend a shape in; places that the shape covers twice are painted once."""
        rows: Dict[int, List[Tuple[int, int]]] = {}
        for row, left, right in shape:
            if 0 <= row < self._height:
                left, right = max(round(left), 0), min(round(right), self._width)
                rows.setdefault(row, []).append((left, right))
        tables = [blend_table(value, alpha) for value in colour]
        for row, spans in rows.items():
            start, done = row * self._width, 0
            for left, right in sorted(spans):
                left = max(left, done)
                if left < right:
                    done, area = right, slice(start + left, start + right)
                    for plane, table in zip(self._planes, tables):
                        plane[area] = plane[area].translate(table)

    def png(self) -> bytes:
        pixels = bytearray(PICTURE_WIDTH * PICTURE_HEIGHT * 3)
        for index, plane in enumerate(self._planes):
            columns, width = average(plane[0::2], plane[1::2]), PICTURE_WIDTH
            rows = [columns[at:at + width] for at in range(0, len(columns), width)]
            pixels[index::3] = average(b"".join(rows[0::2]), b"".join(rows[1::2]))
        row = PICTURE_WIDTH * 3
        raw = b"".join(b"\0" + pixels[at:at + row] for at in range(0, len(pixels), row))
        header = struct.pack(">IIBBBBB", PICTURE_WIDTH, PICTURE_HEIGHT, 8, 2, 0, 0, 0)
        chunks = ((b"IHDR", header), (b"IDAT", zlib.compress(raw, 6)), (b"IEND", b""))
        return b"\x89PNG\r\n\x1a\n" + b"".join(
            struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
            for kind, data in chunks)


# --- the sample deck ------------------------------------------------------------------------

WHITE, DARK, RED = (255, 255, 255), (20, 24, 34), (255, 69, 58)


class Slide(NamedTuple):
    title: str
    lines: Tuple[str, ...]
    notes: str
    top: Colour
    bottom: Colour
    accent: Colour
    art: Callable[[Canvas, Colour], None]


def draw_waves(canvas: Canvas, accent: Colour) -> None:
    circle = [(math.cos(i * math.pi / 45), math.sin(i * math.pi / 45)) for i in range(91)]
    for radius, alpha in ((222, 0.22), (172, 0.4), (122, 0.65), (72, 1.0)):
        canvas.paint(path([(980 + radius * x, 420 + radius * y) for x, y in circle], 15),
                     accent, alpha)
    canvas.paint(disc(980, 420, 27), WHITE)


def draw_tablet(canvas: Canvas, accent: Colour) -> None:
    canvas.paint(box(732, 268, 440, 316, 34), DARK, 0.85)
    canvas.paint(box(752, 288, 400, 276, 18), WHITE, 0.1)
    for index in range(6):
        thumbnail = box(772 + 124 * (index % 3), 320 + 116 * (index // 3), 112, 96, 12)
        canvas.paint(thumbnail, *((accent, 1.0) if index == 1 else (WHITE, 0.28)))


def draw_pen(canvas: Canvas, accent: Colour) -> None:
    wave = [(690 + 4 * i, 490 - 0.9 * i + 70 * math.sin(i / 11)) for i in range(90)]
    canvas.paint(path(wave, 16), accent)
    x, y = wave[-1]
    canvas.paint(line(x + 26, y - 26, x + 110, y - 110, 30), WHITE)
    canvas.paint(line(x + 3, y - 3, x + 26, y - 26, 12), DARK)


def draw_laser(canvas: Canvas, accent: Colour) -> None:
    for index, height in enumerate((110, 170, 140, 230, 290)):
        canvas.paint(box(722 + 96 * index, 590 - height, 64, height, 14),
                     accent, 0.35 + 0.15 * index)
    canvas.paint(disc(1138, 330, 46), RED, 0.35)
    canvas.paint(disc(1138, 330, 26), RED)


def draw_question(canvas: Canvas, accent: Colour) -> None:
    canvas.paint(line(850, 520, 800, 600, 44), accent)
    canvas.paint(box(740, 250, 420, 300, 60), accent)
    canvas.paint(text("?", 888, 304, 31), WHITE)


SLIDES = (
    Slide("Welcome to Torvane", ("Slides, notes and ink", "from the tablet in your hand"),
          "Welcome everyone. This is the sample deck that comes with the engine: five slides "
          "to try the remote with.\n\nTap the right half of the slide to go on.",
          (24, 32, 78), (16, 96, 128), (94, 214, 214), draw_waves),
    Slide("Jump to any slide", ("See every slide in a grid", "Tap one to go there",
                                "Your notes come along"),
          "Open the grid and tap any slide to jump. The notes on the tablet follow at once.",
          (52, 24, 84), (134, 46, 110), (255, 170, 94), draw_tablet),
    Slide("Draw on the slide", ("Ink appears while you write", "Each slide keeps its own",
                                "Undo takes back a stroke"),
          "Draw something with the pencil, go to the next slide and come back: "
          "the drawing is still here.",
          (10, 62, 58), (28, 122, 84), (250, 216, 96), draw_pen),
    Slide("Point with the laser", ("Drag to show the red dot", "Let go and it fades away"),
          "Point at the tallest column and ask the room what happened there.",
          (26, 34, 58), (44, 76, 132), (128, 182, 255), draw_laser),
    Slide("Thank you", ("Any questions?",), "",
          (88, 28, 40), (188, 78, 52), (255, 148, 96), draw_question),
)


def draw_slide(number: int) -> bytes:
    slide = SLIDES[number - 1]
    canvas = Canvas(slide.top, slide.bottom)
    canvas.paint(disc(1180, 90, 300), WHITE, 0.04)
    canvas.paint(disc(120, 700, 240), WHITE, 0.04)
    canvas.paint(text(slide.title, 84, 92, 9), WHITE)
    canvas.paint(box(80, 178, 132, 8, 4), slide.accent)
    for index, words in enumerate(slide.lines):
        canvas.paint(disc(92, 290 + 68 * index, 7), slide.accent)
        canvas.paint(text(words, 120, 278 + 68 * index, 4), (226, 232, 240))
    slide.art(canvas, slide.accent)
    canvas.paint(text("Torvane sample deck", 84, 654, 2.4), WHITE, 0.55)
    for index in range(len(SLIDES)):
        chosen = index + 1 == number
        canvas.paint(disc(1084 + 24 * index, 661, 6), WHITE, 0.95 if chosen else 0.3)
    canvas.paint(text(str(number), 1214, 649, 4), WHITE, 0.8)
    return canvas.png()


class SampleDeck:
    """A presentation driver without a presentation program: five built-in slides.

    The engine calls it with its lock held, except picture(), which may take its time.
    Slides are numbered from 1; the engine has checked every number.
    """

    name = "Torvane sample deck"
    aspect = PICTURE_HEIGHT / PICTURE_WIDTH
    count = len(SLIDES)

    def __init__(self) -> None:
        self.current = 1
        self.presenting = False
        self._pictures: Dict[int, bytes] = {}
        self._drawing = threading.Lock()

    def title(self, number: int) -> str:
        return SLIDES[number - 1].title

    def notes(self, number: int) -> str:
        return SLIDES[number - 1].notes

    def picture(self, number: int) -> bytes:
        with self._drawing:
            if number not in self._pictures:
                self._pictures[number] = draw_slide(number)
            return self._pictures[number]

    def go_to(self, number: int) -> None:
        self.current = number

    def start_show(self) -> None:
        self.presenting = True

    def end_show(self) -> None:
        self.presenting = False


# --- ink ------------------------------------------------------------------------------------

Event = Dict[str, Any]


class Page:
    """The strokes of one slide, oldest first."""

    def __init__(self) -> None:
        self.strokes: Dict[int, List[Tuple[float, float]]] = {}
        self.points = 0

    def remove(self, stroke: int) -> None:
        self.points -= len(self.strokes.pop(stroke))

    def events(self) -> Iterator[Event]:
        for stroke, points in self.strokes.items():
            for index, (x, y) in enumerate(points):
                yield {"t": "pt" if index else "begin", "id": stroke, "x": x, "y": y}


class Ink:
    """Strokes of all slides, and the log from which pollers learn what changed.

    Every event has a number; `seq` is the last one's. The log holds the events after `_base`.
    A poller that is further behind is told to clear and then gets the shown slide's strokes,
    so the log may be cut at any time, and is, when the shown ink is replaced as a whole.
    """

    def __init__(self) -> None:
        self.slide = 1
        self.seq = 0
        self._pages: Dict[int, Page] = {1: Page()}
        self._page = self._pages[1]
        self._base = 0
        self._log: List[Tuple[Event, Optional[float]]] = []  # with the time of laser events

    @property
    def stroke_count(self) -> int:
        return len(self._page.strokes)

    def show_slide(self, slide: int) -> None:
        self.slide = slide
        self._page = self._pages.setdefault(slide, Page())
        self._restart_log()

    def apply(self, event: Event) -> None:
        kind = event["t"]
        if kind == "begin":
            self._delete([event["id"]])
            self._page.strokes[event["id"]] = []
            self._add_point(event)
            self._make_room()
        elif kind == "pt":
            # A stroke that was undone, cleared or left on another slide is not an error.
            stroke = self._page.strokes.get(event["id"])
            if stroke is not None and len(stroke) < MAX_STROKE_POINTS:
                self._add_point(event)
                self._make_room()
        elif kind == "del":
            self._delete(event["ids"])
        elif kind == "clear":
            self._page = self._pages[self.slide] = Page()
            self._restart_log()
        else:
            self._record(event, time.monotonic())

    def undo(self) -> None:
        self._delete(list(self._page.strokes)[-1:])

    def events_since(self, since: int) -> List[Event]:
        fresh = time.monotonic() - LASER_SECONDS
        if since >= self._base:
            return [event for event, at in self._log[since - self._base:]
                    if at is None or at >= fresh]
        laser = [event for event, at in self._log if at is not None and at >= fresh]
        return [{"t": "clear"}, *self._page.events(), *laser]

    def _add_point(self, event: Event) -> None:
        self._page.strokes[event["id"]].append((event["x"], event["y"]))
        self._page.points += 1
        self._record(event)

    def _make_room(self) -> None:
        """Drop the oldest strokes of an overfull slide, but never the only one."""
        page = self._page
        while 1 < len(page.strokes) and (len(page.strokes) > MAX_STROKES
                                         or page.points > MAX_SLIDE_POINTS):
            self._delete([next(iter(page.strokes))])

    def _delete(self, strokes: List[int]) -> None:
        present = [stroke for stroke in dict.fromkeys(strokes) if stroke in self._page.strokes]
        for stroke in present:
            self._page.remove(stroke)
        if present:
            self._record({"t": "del", "ids": present})

    def _record(self, event: Event, at: Optional[float] = None) -> None:
        self._log.append((event, at))
        self.seq += 1
        if len(self._log) > MAX_LOG:
            del self._log[:MAX_LOG // 2]
            self._base = self.seq - len(self._log)

    def _restart_log(self) -> None:
        self.seq += 1
        self._base = self.seq
        self._log.clear()


# --- the engine -----------------------------------------------------------------------------

class Engine:
    """Deck, ink and overlay picture; every method may be called from any thread."""

    def __init__(self, deck: SampleDeck) -> None:
        self._deck = deck
        self._ink = Ink()
        self._overlay: Optional[Tuple[bytes, str]] = None
        self._overlay_version = 0
        self._lock = threading.RLock()

    def state(self) -> Dict[str, Any]:
        with self._lock:
            self._follow_deck()
            deck = self._deck
            return {"version": VERSION, "deck": deck.name, "slide": deck.current,
                    "count": deck.count, "title": deck.title(deck.current),
                    "presenting": deck.presenting, "aspect": deck.aspect,
                    "strokes": self._ink.stroke_count, "inkSeq": self._ink.seq,
                    "overlayV": self._overlay_version}

    def slides(self) -> Dict[str, Any]:
        with self._lock:
            return {"count": self._deck.count, "slides": [
                {"slide": number, "title": self._deck.title(number),
                 "hasNotes": bool(self._deck.notes(number)),
                 "picture": f"/api/slides/{number}/picture"}
                for number in range(1, self._deck.count + 1)]}

    def has_slide(self, number: Any) -> bool:
        with self._lock:
            return type(number) is int and 1 <= number <= self._deck.count

    def notes(self, number: int) -> Dict[str, Any]:
        with self._lock:
            return {"slide": number, "notes": self._deck.notes(number)}

    def picture(self, number: int) -> bytes:
        return self._deck.picture(number)

    def go_to(self, number: int) -> Dict[str, Any]:
        with self._lock:
            if number != self._deck.current:
                self._deck.go_to(number)
            return self.state()

    def move(self, step: int) -> Dict[str, Any]:
        """Go `step` slides on, or stay where the deck ends."""
        with self._lock:
            return self.go_to(min(max(self._deck.current + step, 1), self._deck.count))

    def show(self, on: bool) -> Dict[str, Any]:
        with self._lock:
            if on != self._deck.presenting:
                (self._deck.start_show if on else self._deck.end_show)()
            return self.state()

    def add_ink(self, events: List[Event]) -> Dict[str, Any]:
        with self._lock:
            self._follow_deck()
            for event in events:
                self._ink.apply(event)
            return self.state()

    def undo_ink(self) -> Dict[str, Any]:
        with self._lock:
            self._follow_deck()
            self._ink.undo()
            return self.state()

    def ink_since(self, since: int) -> Dict[str, Any]:
        with self._lock:
            self._follow_deck()
            return {"seq": self._ink.seq, "events": self._ink.events_since(since),
                    "presenting": self._deck.presenting, "aspect": self._deck.aspect,
                    "overlayV": self._overlay_version}

    def overlay(self) -> Optional[Tuple[bytes, str]]:
        with self._lock:
            return self._overlay

    def set_overlay(self, overlay: Optional[Tuple[bytes, str]]) -> Dict[str, Any]:
        with self._lock:
            self._overlay = overlay
            self._overlay_version += 1
            return self.state()

    def _follow_deck(self) -> None:
        """The slide may have been changed at the computer as well as through the engine."""
        if self._ink.slide != self._deck.current:
            self._ink.show_slide(self._deck.current)


# --- the interface --------------------------------------------------------------------------

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


class Answer(NamedTuple):
    status: int
    body: bytes
    content_type: str = "application/json"
    headers: str = "Cache-Control: no-store\r\n"
    after: Optional[Callable[[], Any]] = None  # called when the answer has been sent


Handler = Callable[[Request, bytes], Answer]


def json_answer(value: Dict[str, Any], status: int = 200, headers: str = "") -> Answer:
    body = json.dumps(value, separators=(",", ":")).encode("ascii")
    return Answer(status, body, headers="Cache-Control: no-store\r\n" + headers)


def parse_integer(digits: str) -> int:
    if len(digits) > 20:  # more than 64 bits; a long one would take long to convert
        raise ValueError("number out of range")
    return int(digits)


def refuse_constant(name: str) -> None:
    raise ValueError(f"{name} is not JSON")


def parse_object(body: bytes) -> Dict[str, Any]:
    try:
        value = json.loads(body.decode("utf-8"), parse_int=parse_integer,
                           parse_constant=refuse_constant)
    except (ValueError, RecursionError):
        raise HttpError(400, "the body is not valid JSON") from None
    if not isinstance(value, dict):
        raise HttpError(400, "the body is not a JSON object")
    return value


def is_stroke_id(value: Any) -> bool:
    return type(value) is int and -2 ** 63 <= value < 2 ** 63  # a bool is not an id


def is_coordinate(value: Any) -> bool:
    return type(value) in (int, float) and -MAX_COORDINATE <= value <= MAX_COORDINATE


def is_id_list(value: Any) -> bool:
    return isinstance(value, list) and all(map(is_stroke_id, value))


POINT = {"x": is_coordinate, "y": is_coordinate}
EVENT_FIELDS: Dict[str, Dict[str, Callable[[Any], bool]]] = {
    "begin": {"id": is_stroke_id, **POINT}, "pt": {"id": is_stroke_id, **POINT},
    "del": {"ids": is_id_list}, "clear": {}, "laser": POINT, "laserend": {},
}


def check_event(event: Any, index: int) -> Event:
    """The event with its known fields only."""
    kind = event.get("t") if isinstance(event, dict) else None
    fields = EVENT_FIELDS.get(kind) if isinstance(kind, str) else None
    if fields is None:
        raise HttpError(400, f"event {index} has no known kind \"t\"")
    clean = {"t": kind}
    for name, is_valid in fields.items():
        if name not in event or not is_valid(event[name]):
            raise HttpError(400, f"event {index} ({kind}) has no valid \"{name}\"")
        clean[name] = event[name]
    return clean


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
            "/api/next": {"POST": lambda *_: json_answer(engine.move(1))},
            "/api/previous": {"POST": lambda *_: json_answer(engine.move(-1))},
            "/api/show/start": {"POST": lambda *_: json_answer(engine.show(True))},
            "/api/show/end": {"POST": lambda *_: json_answer(engine.show(False))},
            "/api/ink": {"POST": self._add_ink},
            "/api/ink/undo": {"POST": lambda *_: json_answer(engine.undo_ink())},
            "/api/ink/events": {"GET": self._ink_events},
            "/api/ink/overlay": {"GET": self._overlay, "POST": self._set_overlay},
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
        return handler

    def _slide(self, request: Request, _: bytes) -> Answer:
        digits, part = self.SLIDE_PATH.fullmatch(request.path).groups()
        number = int(digits)
        if not self._engine.has_slide(number):
            raise HttpError(404, "no such slide")
        if part == "notes":
            return json_answer(self._engine.notes(number))
        picture = self._engine.picture(number)
        tag = f'"{zlib.crc32(picture):08x}-{len(picture):x}"'
        headers = f"Cache-Control: no-cache\r\nETag: {tag}\r\n"
        known = tag in request.headers.get("if-none-match", "")
        return Answer(304 if known else 200, picture, "image/png", headers)

    def _go_to(self, _: Request, body: bytes) -> Answer:
        number = parse_object(body).get("slide")
        if not self._engine.has_slide(number):
            raise HttpError(400, "\"slide\" must be the number of a slide")
        return json_answer(self._engine.go_to(number))

    def _add_ink(self, _: Request, body: bytes) -> Answer:
        events = parse_object(body).get("events")
        if not isinstance(events, list):
            raise HttpError(400, "\"events\" must be a list")
        return json_answer(self._engine.add_ink(
            [check_event(event, index) for index, event in enumerate(events)]))

    def _ink_events(self, request: Request, _: bytes) -> Answer:
        values = [part[6:] for part in request.query.split("&") if part.startswith("since=")]
        since = values[0] if values else "0"
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

    def _shutdown(self, *_: Any) -> Answer:
        return json_answer(self._engine.state())._replace(after=self._stop)


# --- HTTP -----------------------------------------------------------------------------------

REASONS = {200: "OK", 304: "Not Modified", 400: "Bad Request", 403: "Forbidden",
           404: "Not Found", 405: "Method Not Allowed", 408: "Request Timeout",
           413: "Content Too Large", 415: "Unsupported Media Type",
           431: "Request Header Fields Too Large", 500: "Internal Server Error",
           501: "Not Implemented", 505: "HTTP Version Not Supported"}
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
        """Head and body leave in one write: two would wait for each other's acknowledgement."""
        head = (f"HTTP/1.1 {answer.status} {REASONS[answer.status]}\r\n"
                f"Content-Type: {answer.content_type}\r\n"
                f"Content-Length: {len(answer.body)}\r\n"
                f"X-Content-Type-Options: nosniff\r\n{answer.headers}"
                f"{'Connection: close' if close else 'Connection: keep-alive'}\r\n\r\n")
        self._socket.settimeout(REQUEST_SECONDS)
        self._socket.sendall(head.encode("latin-1") + (b"" if head_only else answer.body))

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


# --- the process ----------------------------------------------------------------------------

def write_line(stream: Any, message: str) -> None:
    try:
        print(message, file=stream, flush=True)
    except (OSError, ValueError, AttributeError):
        pass  # a full disk or a closed log is no reason to stop a presentation


def log_error(message: str) -> None:
    write_line(sys.stderr, f"torvane: {message}")


def parent_check() -> Callable[[], bool]:
    """Tells whether the process named by TORVANE_PARENT_PID still lives (or none is named)."""
    named = os.environ.get("TORVANE_PARENT_PID", "")
    if not re.fullmatch("[1-9][0-9]{0,9}", named):
        return lambda: True
    parent = int(named)
    if os.getppid() == parent:
        # Children of a process that ended are handed on at once, also while it is a zombie.
        return lambda: os.getppid() == parent

    def exists() -> bool:
        try:
            os.kill(parent, 0)
        except (ProcessLookupError, OverflowError):
            return False
        except PermissionError:
            pass  # it exists, under another user
        return True
    return exists


def port_number(digits: str) -> int:
    if not re.fullmatch("[0-9]{1,5}", digits) or int(digits) > 65535:
        raise argparse.ArgumentTypeError("a port is a number from 0 to 65535")
    return int(digits)


def parse_arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(
        prog="torvane.py", formatter_class=argparse.RawDescriptionHelpFormatter,
        description="Torvane engine: runs a presentation and answers HTTP on 127.0.0.1.",
        epilog="environment:\n  TORVANE_PARENT_PID  the engine ends when this process does\n\n"
               "example:\n  python3 torvane.py 8484 &\n"
               "  curl http://127.0.0.1:8484/api/state\n"
               "  curl -X POST http://127.0.0.1:8484/api/next\n\n"
               "The engine ends on POST /api/shutdown, SIGTERM and SIGINT.")
    parser.add_argument("port", type=port_number, metavar="PORT",
                        help="port to listen on; 0 takes a free one, named in the first line")
    parser.add_argument("--version", action="version", version=f"torvane.py {VERSION}")
    return parser.parse_args()


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


def run(port: int) -> int:
    # A signal may reach any thread; through the socket it wakes this one wherever it landed.
    wake, waker = socket.socketpair()
    waker.setblocking(False)
    signal.set_wakeup_fd(waker.fileno())
    for number in (signal.SIGTERM, signal.SIGINT):
        signal.signal(number, lambda *_: None)
    parent_lives = parent_check()
    listener = open_listener(port)
    if listener is None:
        return 1
    port = listener.getsockname()[1]
    api = Api(Engine(SampleDeck()), port, stop=lambda: waker.send(b"stop"))
    threading.Thread(target=accept_connections, args=(listener, api), daemon=True).start()
    write_line(sys.stdout, f"Torvane engine listening on {ADDRESS}:{port} (pid {os.getpid()})")
    while not select.select([wake], [], [], PARENT_SECONDS)[0]:
        if not parent_lives():
            log_error("the helper has gone; ending")
            break
    return 0


def main() -> None:
    status = run(parse_arguments().port)
    os._exit(status)  # every line is flushed; threads in the middle of an answer cannot delay it


if __name__ == "__main__":
    main()
