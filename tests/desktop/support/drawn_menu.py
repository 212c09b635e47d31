"""The menu where the program draws it itself: in a tray of the old kind, and in the window that stands
in for one."""

import re

from menu_stage import MenuStage
from popup_menu import COMMAND, INFORMATION, SEPARATOR, PopupMenu
from private_desktop import DesktopError, wait_until
from tray_icon import icon_middle

STAND_IN = "^Torvane P2P Helper Menu$"
LONG = 80  # characters, from which on a text may be drawn in more than one line


class DrawnMenuStage(MenuStage):
    """Its `PLACE` has a name, comes up some time after the program and opens the menu when it is
    clicked on: see below."""

    def open_menu(self, labels, commands):
        """The menu, opened with the pointer, once it has a line for each of these labels, and those
        light up that are commands."""
        expected = "".join(pattern(label, commands) for label in labels)
        seen = []

        def opened():
            self.wait_for_place()
            menu = PopupMenu.opened(self.desktop, self.click_on_place)
            if menu is None:
                return None
            seen.append(menu.shape)
            if re.fullmatch(expected, menu.shape):
                return menu
            menu.close()
            return None

        try:
            menu = wait_until(opened, "the menu")
        except DesktopError as error:
            raise DesktopError(f"{error} is like {expected}, but {seen}") from None
        self.assertTrue(menu.is_on_screen())
        return menu

    def choose(self, entry, labels, commands, picture=None):
        menu = self.open_menu(labels, commands)
        menu.point_at(commands.index(entry))
        if picture:
            self.picture_of_menu(picture)
        menu.choose(commands.index(entry))

    def picture_of_menu(self, state):
        self.picture(f"{self.PLACE}-menu-{state}")


def pattern(label, commands):
    if label == "-":
        return SEPARATOR
    kind = COMMAND if label in commands else INFORMATION
    return kind + "+" if len(label) >= LONG else kind


class InTray(DrawnMenuStage):
    PLACE = "tray"

    def setUp(self):
        super().setUp()
        self.desktop.start_panel()

    def wait_for_place(self):
        """The icon's middle."""
        return wait_until(lambda: icon_middle(self.desktop), "the icon")

    def click_on_place(self, button="3"):
        x, y = self.wait_for_place()
        self.desktop.run("xdotool", "mousemove", str(x), str(y), "click", button)


class InStandIn(DrawnMenuStage):
    PLACE = "stand-in"

    def stand_ins(self):
        return self.desktop.windows("--name", STAND_IN)

    def wait_for_place(self):
        """The window."""
        return wait_until(self.stand_ins, "the stand-in")[0]

    def click_on_place(self):
        # The button is at the end of the row.
        window = self.wait_for_place()
        _, _, width, height = self.desktop.geometry(window)
        self.desktop.run("xdotool", "mousemove", "--window", str(window), str(width - 30),
                         str(height // 2), "click", "1")
