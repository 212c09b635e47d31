"""LibreOffice Impress on a private desktop, driven by torvane-ipad through the helper and its engine."""

import json
import os
import sys

from helper_program import pair
from ink_stage import InkStage, Screenshot
from private_desktop import WIDTH, DesktopError, wait_until

TESTS = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
sys.path.insert(0, os.path.join(TESTS, "presenters"))

import decks  # noqa: E402
from private_office import missing  # noqa: E402, F401

WIDE, NARROW = (28, 15.75), (28, 21)  # centimetres
BACK = (0xfb, 0xfa, 0xf7)             # of decks.py's slides
COLOURS = [tuple(bytes.fromhex(name[1:])) for name in decks.COLOURS]
BOXES = COLOURS[:3]                   # of the effects of slide 3
NEAR = 2                              # pixels


class SlideArea(tuple):
    """left, top, right and bottom of a slide on the screen."""

    def at(self, x, y):
        """The pixel for a part of the slide's width and height."""
        left, top, right, bottom = self
        return round(left + x * (right - left)), round(top + y * (bottom - top))

    def line(self, left, right, y):
        """The same in pixels."""
        (left, y), (right, _) = self.at(left, y), self.at(right, y)
        return left, right, y

    def boxes(self, screen):
        """The colours in the places of the effects of slide 3: of a box or of the slide's back."""
        return [screen.pixel(*self.at((4 + 6 * n) / 28, 0.6)) for n in range(len(BOXES))]

    def shows(self, screen, slide):
        """Each slide has a bar at its bottom that is of another length and colour."""
        foot = (*self.at(0, 0.92), *self.at(1, 0.98))
        bar = screen.bounds(COLOURS[slide % len(COLOURS)], foot)
        return bar is not None and is_near(bar, (*foot[:2], *self.at(slide / 20, 0.98)))


def is_near(area, wanted):
    return all(abs(a - b) <= NEAR for a, b in zip(area, wanted))


def slide_inside(window, aspect):
    """Where a window of that left, top, width and height shows a whole slide."""
    left, top, width, height = window
    wide = min(width, height / aspect)
    x, y = left + (width - wide) / 2, top + (height - wide * aspect) / 2
    return SlideArea(map(round, (x, y, x + wide, y + wide * aspect)))


class Picture(Screenshot):
    """One as wide as the screen that is not of the screen."""

    def __init__(self, pixels):
        self.bytes = pixels


class ImpressStage(InkStage):
    """`toolkit` is the office's: the plain one ("gen") leaves the show of a single monitor blank,
    and GTK does not see a monitor without an output of its own."""

    def __init__(self, desktop, build, pictures, toolkit="gtk3"):
        desktop.start_windows()
        desktop.environment.update(SAL_USE_VCLPLUGIN=toolkit, NO_AT_BRIDGE="1")
        super().__init__(desktop, build, pictures)
        self.program = os.path.join(build, "tools", "torvane-ipad")
        pair(desktop, self.program)

    def path(self, name):
        return os.path.join(self.desktop.folder, name)

    def open_deck(self, name, size=WIDE):
        """In Impress, which is started unless it runs; once the engine drives it."""
        path = self.path(name)
        if not os.path.exists(path):
            decks.write(path, decks.slides(8), size)
        self.desktop.spawn(
            "impress", ["soffice", "--norestore", "--nologo", "--nofirststartwizard", path])
        self.wait_for_state(deck=name, progress=None)

    def make_pptx(self, source):
        """With an office of its own, as the other may run."""
        self.desktop.run(
            "soffice", f"-env:UserInstallation=file://{self.path('convert')}", "--headless",
            "--convert-to", "pptx", "--outdir", self.desktop.folder, self.path(source))

    def ipad(self, *arguments):
        """What it says, in words."""
        return self.desktop.run(self.program, *arguments)

    def draw(self, left, right, y):
        """A level line, in parts of the slide."""
        path = self.path("line")
        with open(path, "w", encoding="ascii") as file:
            file.write(f"{left} {y}\n{right} {y}\n")
        self.ipad("draw", path, "--duration", "0.1")

    def state(self):
        """What it says as an object: the engine's state."""
        return json.loads(self.ipad("get", "/api/state"))

    def wait_for_state(self, **members):
        def there():
            state = self.state()
            return state if all(state[name] == value for name, value in members.items()) else None

        try:
            return wait_until(there, f"a state with {members}")
        except DesktopError as error:
            self.keep("failed")
            raise DesktopError(f"{error}; there is {self.state()}") from None

    def slide_area(self):
        """Where the running show has its slide."""
        window = wait_until(lambda: self.desktop.windows("--name", "^Presenting"), "the show")[0]
        return slide_inside(self.desktop.geometry(window), self.state()["aspect"])

    def wait_for_slide(self, area, slide):
        return self.wait_for(lambda screen: area.shows(screen, slide), f"slide {slide}")

    def picture(self, file):
        return Picture(self.desktop.run(
            "convert", file, "-resize", str(WIDTH), "-depth", "8", "rgb:-", text=False))

    def page(self, file, number):
        """Of a PDF; it is kept as well."""
        made = os.path.join(self.pictures, f"impress-page-{number}")
        self.desktop.run("pdftoppm", "-png", "-singlefile", "-scale-to-x", str(WIDTH),
                         "-scale-to-y", "-1", "-f", str(number), "-l", str(number), file, made)
        return self.picture(made + ".png")
