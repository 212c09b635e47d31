#!/usr/bin/python3
"""The icon, the menu and the largest alerts, drawn for a small screen with large dots and for light
and dark desktops: all of it is on the screen and stands out. Pictures are left for people.

usage: looks_test.py BUILD_FOLDER PICTURE_FOLDER
"""

import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "support"))

from private_desktop import HEIGHT, WIDTH, skip_where_incomplete, wait_until  # noqa: E402

skip_where_incomplete(("dbus", "gi"))

from helper_program import PROGRAM, engine_answers  # noqa: E402
from menu_stage import MenuStage, main  # noqa: E402
from popup_menu import PopupMenu  # noqa: E402
from tray_icon import icon_area, icon_middle  # noqa: E402

DARK_COLOURS = """[Colors:Window]
BackgroundNormal=42,46,50
ForegroundNormal=252,252,252
[Colors:View]
BackgroundNormal=27,30,32
ForegroundNormal=252,252,252
[Colors:Button]
BackgroundNormal=49,54,59
ForegroundNormal=252,252,252
[Colors:Selection]
BackgroundNormal=61,174,233
ForegroundNormal=252,252,252
"""
LEAST, CLEAR = 3, 4.5  # contrasts, of what is dimmed and of what is not
STRIP = 60  # pixels at a menu's left that hold the beginnings of its texts


class LooksTest(MenuStage):
    def look_at_everything(self, name):
        helper = self.desktop.spawn("helper", [os.path.join(self.build, PROGRAM)])
        self.look_at_alert(name + "-welcome")
        wait_until(lambda: icon_middle(self.desktop), "the icon")
        wait_until(lambda: self.contrast_of_icon() > LEAST, "an icon that stands out")
        clear = max(CLEAR, 1.2 * self.contrast_of_icon())  # it is dimmed now
        self.press("Return")
        wait_until(engine_answers, "the engine")
        wait_until(lambda: self.contrast_of_icon() > clear, "an icon that is clear")
        menu = wait_until(lambda: PopupMenu.opened(self.desktop, self.click), "the menu")
        self.assert_on_screen(menu.x, menu.y, menu.width, menu.height)
        information = menu.middles[0] - menu.y - 12  # above the first that can be chosen
        self.assertGreater(self.contrast(menu.x + 8, menu.y + 4, STRIP, information), CLEAR)
        self.picture(name + "-menu")
        menu.choose(1)  # "How Does This Work?"
        self.look_at_alert(name + "-explanation")
        self.press("Return")
        self.assertIsNone(helper.poll())

    def click(self):
        x, y = icon_middle(self.desktop)
        self.desktop.run("xdotool", "mousemove", str(x), str(y), "click", "3")

    def look_at_alert(self, name):
        area = self.desktop.geometry(self.alert())
        self.assert_on_screen(*area)
        self.picture(name)

    def assert_on_screen(self, x, y, width, height):
        self.assertTrue(0 <= x and x + width <= WIDTH and 0 <= y and y + height <= HEIGHT,
                        (x, y, width, height))

    def contrast_of_icon(self):
        return self.contrast(*icon_area(self.desktop))

    def contrast(self, left, top, width, height):
        """Of the commonest colour of an area and the one that differs most from it."""
        pixels = [pixel for row in self.desktop.colours(left, top, width, height)
                  for pixel in row]
        ground = luminance(max(set(pixels), key=pixels.count))
        return max(contrast(ground, luminance(pixel)) for pixel in set(pixels))

    def test_on_a_light_desktop(self):
        self.desktop.start_panel()
        self.look_at_everything("light")

    def test_on_a_dark_desktop(self):
        """One whose colours the toolkit knows."""
        self.desktop.environment.update(XDG_CURRENT_DESKTOP="KDE", KDE_SESSION_VERSION="5")
        with open(os.path.join(self.desktop.environment["XDG_CONFIG_HOME"], "kdeglobals"), "w",
                  encoding="utf-8") as file:
            file.write(DARK_COLOURS)
        self.desktop.start_panel("#202226", "#f0f0f0")
        self.look_at_everything("dark")

    def test_on_a_dark_panel_of_a_light_desktop(self):
        self.desktop.start_panel("#202226", "#f0f0f0")
        self.look_at_everything("dark-panel")

    def test_at_two_hundred_percent(self):
        self.desktop.environment["QT_SCALE_FACTOR"] = "2"
        self.desktop.start_panel()
        self.look_at_everything("large")


def luminance(pixel):
    blue, green, red = (
        part / 12.92 if part <= 0.04045 else ((part + 0.055) / 1.055) ** 2.4
        for part in (value / 255 for value in pixel[:3]))
    return 0.2126 * red + 0.7152 * green + 0.0722 * blue


def contrast(a, b):
    return (max(a, b) + 0.05) / (min(a, b) + 0.05)


if __name__ == "__main__":
    main()
