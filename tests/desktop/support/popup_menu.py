"""A menu that the program draws itself, as somebody sees it who has eyes and a pointer and no more:
what can be chosen lights up."""

from itertools import groupby

from private_desktop import DesktopError, wait_until

LEAST_HEIGHT = 8  # of an entry, in pixels


class PopupMenu:
    """`middles`: where each entry is that can be chosen, from top to bottom."""

    def __init__(self, desktop, window):
        self.desktop = desktop
        self.window = window
        self.x, self.y, self.width, self.height = desktop.geometry(window)
        self.middles = []
        lit = self._light_next(None)
        while lit not in self.middles:
            self.middles.append(lit)
            lit = self._light_next(lit)

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

    def close(self):
        self.desktop.run("xdotool", "key", "Escape")
        wait_until(self.has_gone, "the menu's end")

    def click(self, number):
        """Chooses the entry with this number of those that can be chosen."""
        self.desktop.run("xdotool", "mousemove", str(self.x + self.width // 2),
                         str(self.middles[number]), "click", "1")
        wait_until(self.has_gone, "the menu's end")

    def _light_next(self, before):
        self.desktop.run("xdotool", "key", "Down")
        return wait_until(lambda: self._lit() not in (None, before) and self._lit(), "a lit entry",
                          10)

    def _lit(self):
        """The middle of the rows that have another colour than the rest at their left."""
        rows = self.desktop.column(self.x + 4, self.y, self.height)
        plain = max(set(rows), key=rows.count)
        top = self.y
        for colour, run in groupby(rows):
            length = len(list(run))
            if colour != plain and length >= LEAST_HEIGHT:
                return top + length // 2
            top += length
        return None


def windows(desktop):
    return set(desktop.windows("--classname", "torvane-p2p-helper"))
