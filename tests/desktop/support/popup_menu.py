"""A menu that the program draws itself, as somebody sees it who has eyes and a pointer and no more:
what can be chosen lights up."""

from itertools import groupby
from typing import NamedTuple

from private_desktop import HEIGHT, WIDTH, DesktopError, wait_until

LEAST_HEIGHT = 8  # of an entry, in pixels
# Pixels from the left: where nothing is drawn but the ground of what is lit, and where texts begin.
EDGE, TEXT = 4, 24
BEGINNING = 60  # pixels of each text that are looked at

COMMAND, INFORMATION, SEPARATOR = "c", "i", "-"


class Line(NamedTuple):
    kind: str
    middle: int  # on the screen


class PopupMenu:
    """`middles`: where each entry is that can be chosen, from top to bottom. `lines`: all there is."""

    def __init__(self, desktop, window):
        self.desktop = desktop
        self.window = window
        self.x, self.y, self.width, self.height = desktop.geometry(window)
        self.middles = []
        lit = self._light_next(None)
        while lit not in self.middles:
            self.middles.append(lit)
            lit = self._light_next(lit)
        self.lines = self._read_lines()

    @property
    def shape(self):
        """The kinds of its lines, as one word."""
        return "".join(line.kind for line in self.lines)

    @classmethod
    def opened(cls, desktop, click):
        """The menu that comes up with this click; none where nothing comes for some time."""
        before = windows(desktop)
        click()
        try:
            came = wait_until(lambda: windows(desktop) - before, "the menu", 5)
            return cls(desktop, came.pop())
        except DesktopError:
            return None

    def has_gone(self):
        return self.window not in windows(self.desktop)

    def is_on_screen(self):
        return (0 <= self.x and self.x + self.width <= WIDTH
                and 0 <= self.y and self.y + self.height <= HEIGHT)

    def close(self):
        self.desktop.run("xdotool", "key", "Escape")
        wait_until(self.has_gone, "the menu's end")

    def point_at(self, number):
        """Lights the entry with this number of those that can be chosen."""
        self._move_to(self.middles[number])
        wait_until(lambda: self._lit() == self.middles[number], "the lit entry")

    def choose(self, number):
        """Clicks on that entry."""
        self.click_at(self.middles[number])
        wait_until(self.has_gone, "the menu's end")

    def click_at(self, y):
        self._move_to(y, "click", "1")

    def _move_to(self, y, *then):
        self.desktop.run("xdotool", "mousemove", str(self.x + self.width // 2), str(y), *then)

    def _light_next(self, before):
        self.desktop.run("xdotool", "key", "Down")
        return wait_until(lambda: self._lit() not in (None, before) and self._lit(), "a lit entry",
                          10)

    def _lit(self):
        """The middle of the rows that have another colour than the rest at their left."""
        rows = self.desktop.colours(self.x + EDGE, self.y, 1, self.height)
        plain = most_common(rows)
        for is_plain, top, height in runs(row == plain for row in rows):
            if not is_plain and height >= LEAST_HEIGHT:
                return self.y + top + height // 2
        return None

    def _read_lines(self):
        rows = self.desktop.colours(self.x + EDGE, self.y, TEXT - EDGE + BEGINNING, self.height)
        plain = most_common([row[0] for row in rows])
        lines = []
        for look, top, height in runs(look_of(row, plain) for row in rows):
            top += self.y
            if look == SEPARATOR:
                lines.append(Line(SEPARATOR, top + height // 2))
            elif look == "text" or look == "lit" and height >= LEAST_HEIGHT:
                can_be_chosen = any(top <= middle < top + height for middle in self.middles)
                lines.append(Line(COMMAND if can_be_chosen else INFORMATION, top + height // 2))
        return lines


def look_of(row, plain):
    """What a row of pixels belongs to, which begins at the menu's edge."""
    if row[0] != plain:
        return "lit"  # or the menu's frame
    inside = set(row[TEXT - EDGE:])
    if inside == {plain}:
        return None
    return SEPARATOR if len(inside) == 1 else "text"


def most_common(values):
    return max(values, key=values.count)


def runs(values):
    """Value, place and length of each run of equal ones."""
    place = 0
    for value, run in groupby(values):
        length = len(list(run))
        yield value, place, length
        place += length


def windows(desktop):
    return set(desktop.windows("--classname", "torvane-p2p-helper"))
