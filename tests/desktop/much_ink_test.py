#!/usr/bin/python3
"""Ten thousand strokes over a show on a desktop without a compositor, each looked for on the screen,
and what the menu says about such a desktop.

usage: much_ink_test.py BUILD_FOLDER PICTURE_FOLDER
"""

import http.server
import json
import os
import sys
import threading
import time
import unittest
import urllib.parse

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "support"))

from helper_program import ENGINE_PORT, require_free_engine_port, start_helper  # noqa: E402
from ink_stage import INK, Screenshot  # noqa: E402
from private_desktop import (  # noqa: E402
    HEIGHT, OPENBOX, WIDTH, PrivateDesktop, skip_where_incomplete, wait_until)
from slide_show import SHOW, start_show  # noqa: E402

BUILD = PICTURES = None
COLUMNS = ROWS = 100
POINTS = 100
SLIDE_TOP, SLIDE_HEIGHT = 40, 720  # of 1280 x 720 on a screen of 1280 x 800
NEW_STROKE = [{"t": "begin", "id": 20000, "x": 0.1, "y": -0.03},
              {"t": "pt", "id": 20000, "x": 0.9, "y": -0.03}]
ON_NEW_STROKE = (640, SLIDE_TOP - 22)


def stroke(column, row):
    """A stroke that leans so much in the left part of its cell that no two rows of pixels are alike:
    some 70,000 rectangles for all."""
    number = row * COLUMNS + column
    for i in range(POINTS):
        along = i / (POINTS - 1)
        yield {"t": "pt" if i else "begin", "id": number,
               "x": round((column + 0.1 + 0.35 * along) / COLUMNS, 5),
               "y": round((row + 0.1 + 0.8 * along) / ROWS, 5)}


def pixel(column, row, x, y):
    """The pixel at these fractions of a cell."""
    return (int((column + x) * WIDTH / COLUMNS),
            SLIDE_TOP + int((row + y) * SLIDE_HEIGHT / ROWS))


class Engine(http.server.ThreadingHTTPServer):
    """Has what it is given as the answers to one question for ink after the other."""

    def __init__(self):
        super().__init__(("127.0.0.1", ENGINE_PORT), Answers)
        self.answers = []
        threading.Thread(target=self.serve_forever, daemon=True).start()

    def add(self, events):
        self.answers.append(events)


class Answers(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def do_GET(self):
        address = urllib.parse.urlparse(self.path)
        if address.path == "/api/ink/overlay":
            return self.answer(404, {})
        answer = {}
        if address.path == "/api/ink/events":
            since = int(urllib.parse.parse_qs(address.query)["since"][0])
            events = self.server.answers[since] if since < len(self.server.answers) else []
            answer = {"seq": since + bool(events), "events": events, "presenting": True}
        return self.answer(200, answer)

    def do_POST(self):
        self.answer(200, {})

    def answer(self, status, content):
        body = json.dumps(content).encode()
        self.send_response(status)
        self.send_header("Content-Type", "application/json")
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, *_):
        pass


class MuchInkTest(unittest.TestCase):
    def setUp(self):
        self.engine = Engine()
        self.addCleanup(self.engine.server_close)
        self.addCleanup(self.engine.shutdown)
        self.desktop = self.enterContext(PrivateDesktop())
        self.desktop.start_windows(OPENBOX, None)
        self.show = start_show(
            self.desktop, os.path.join(BUILD, "tests", "desktop", "show_window"))
        self.helper = start_helper(self.desktop, BUILD)

    def screen(self):
        self.assertIsNone(self.helper.poll(), self.desktop.log("helper"))
        return Screenshot(self.desktop)

    def keep(self, name):
        os.makedirs(PICTURES, exist_ok=True)
        self.desktop.screenshot(os.path.join(PICTURES, f"{name}.png"))

    def missing(self, rows):
        """How many strokes of the first rows are not to be seen, or run into the next."""
        screen = self.screen()
        return sum(screen.pixel(*pixel(column, row, 0.275, 0.5)) != INK
                   or screen.pixel(*pixel(column, row, 0.775, 0.5)) != SHOW
                   for row in range(rows) for column in range(COLUMNS))

    def test_shows_each_of_ten_thousand_strokes_and_the_next(self):
        for row in range(ROWS):
            self.engine.add([event for column in range(COLUMNS) for event in stroke(column, row)])
        wait_until(lambda: self.missing(ROWS) == 0, "ten thousand strokes", 240)
        self.keep("much-ink")
        started = time.monotonic()
        self.engine.add(NEW_STROKE)
        wait_until(lambda: self.screen().pixel(*ON_NEW_STROKE) == INK, "one more")
        print(f"one more stroke was seen after {time.monotonic() - started:.2f} s")
        self.engine.add([{"t": "del", "ids": list(range(COLUMNS * ROWS))}])
        wait_until(lambda: self.screen().is_all(SHOW, (0, SLIDE_TOP, WIDTH, HEIGHT)), "the show")
        self.assertEqual(self.screen().pixel(*ON_NEW_STROKE), INK)


if __name__ == "__main__":
    PICTURES = os.path.abspath(sys.argv.pop())
    BUILD = os.path.abspath(sys.argv.pop())
    skip_where_incomplete()
    require_free_engine_port()
    unittest.main(verbosity=2)
