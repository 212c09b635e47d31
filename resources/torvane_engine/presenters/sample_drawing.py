"""Pictures of the built-in sample slides, as PNG."""
from __future__ import annotations

import functools
import math
import struct
import zlib
from typing import Callable, Dict, Iterable, Iterator, List, NamedTuple, Tuple

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
