"""The helper's overlay over a show, on a private desktop: ink is sent to the engine, and what comes
of it is looked for on the screen."""

import json
import os
import urllib.request

from helper_program import ENGINE_PORT, engine_answers, start_helper
from private_desktop import HEIGHT, WIDTH, DesktopError, wait_until

INK = (255, 59, 48)
# From the left to the right of the slide, in its middle.
LINE = [{"t": "begin", "id": 1, "x": 0.2, "y": 0.5},
        *({"t": "pt", "id": 1, "x": 0.2 + 0.01 * i, "y": 0.5} for i in range(1, 61))]


class Screenshot:
    """All pixels of the screen."""

    def __init__(self, desktop):
        self.bytes = desktop.pixels()

    def pixel(self, x, y):
        at = 3 * (y * WIDTH + x)
        return tuple(self.bytes[at:at + 3])

    def row(self, y, left, right):
        return self.bytes[3 * (y * WIDTH + left):3 * (y * WIDTH + right)]

    def is_all(self, colour, area):
        """Whether left, top, right and bottom hold one colour."""
        left, top, right, bottom = area
        wanted = bytes(colour) * (right - left)
        return all(self.row(y, left, right) == wanted for y in range(top, bottom))

    def is_all_around(self, colour, hole, area=(0, 0, WIDTH, HEIGHT)):
        """Whether the area holds one colour outside of the hole."""
        left, top, right, bottom = area
        return (self.is_all(colour, (left, top, right, hole[1]))
                and self.is_all(colour, (left, hole[1], hole[0], hole[3]))
                and self.is_all(colour, (hole[2], hole[1], right, hole[3]))
                and self.is_all(colour, (left, hole[3], right, bottom)))

    def bounds(self, colour, area):
        """The smallest area inside of this one that holds all of a colour; None when there is none."""
        left, top, right, bottom = area
        found = [(x, y) for y in range(top, bottom) if bytes(colour) in self.row(y, left, right)
                 for x in range(left, right) if self.pixel(x, y) == colour]
        if not found:
            return None
        xs, ys = zip(*found)
        return min(xs), min(ys), max(xs) + 1, max(ys) + 1

    def is_like(self, x, y, colour):
        return all(abs(a - b) < 12 for a, b in zip(self.pixel(x, y), colour))


class InkStage:
    def __init__(self, desktop, build, pictures):
        self.desktop = desktop
        self.pictures = pictures
        self.helper = start_helper(desktop, build)
        wait_until(engine_answers, "the engine")

    def post(self, path, body=b""):
        request = urllib.request.Request(f"http://127.0.0.1:{ENGINE_PORT}{path}", body, method="POST")
        with urllib.request.urlopen(request, timeout=60) as answer:
            answer.read()

    def send(self, *events):
        self.post("/api/ink", json.dumps({"events": events}).encode())

    def overlay_window(self):
        found = self.desktop.windows("--name", "^Torvane ink$")
        return found[0] if found else None

    def wait_for(self, holds, what):
        """The first screenshot of which that is true."""
        taken = []

        def look():
            if self.helper.poll() is not None:
                raise DesktopError("the helper has ended: " + self.desktop.log("helper"))
            taken[:] = [Screenshot(self.desktop)]
            return holds(taken[0])

        try:
            wait_until(look, what)
        except DesktopError:
            self.keep("failed")
            raise
        return taken[0]

    def wait_for_pixel(self, x, y, colour, what):
        return self.wait_for(lambda screen: screen.is_like(x, y, colour), what)

    def keep(self, name):
        os.makedirs(self.pictures, exist_ok=True)
        self.desktop.screenshot(os.path.join(self.pictures, f"overlay-{name}.png"))
