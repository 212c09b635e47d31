#!/usr/bin/python3
"""The whole program's menu where it draws it itself: in a tray of the old kind, and in the window that
stands in for one. Every entry is chosen with the pointer.

usage: menu_elsewhere_test.py BUILD_FOLDER PICTURE_FOLDER
"""

import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "support"))

from private_desktop import (  # noqa: E402
    PATIENCE, DesktopError, end, skip_where_incomplete, wait_until)

skip_where_incomplete(("dbus", "gi"))

from helper_program import engine_answers, engine_listens, pair, start_helper  # noqa: E402
from menu_stage import FORGET, REST, MenuStage, main  # noqa: E402
from popup_menu import PopupMenu  # noqa: E402
from tray_icon import icon_middle  # noqa: E402

STAND_IN = "^Torvane P2P Helper Menu$"


class Elsewhere(MenuStage):
    """What both kinds have in common; `open_menu` opens the menu with the pointer."""

    COMMANDS = ("Start or stop", FORGET, *REST)

    def choose(self, entry, commands=COMMANDS):
        """Clicks on this entry of those that can be chosen."""
        menu = wait_until(lambda: PopupMenu.opened(self.desktop, self.click_where_menu_opens),
                          "the menu")
        self.assertEqual(len(menu.middles), len(commands))
        menu.choose(commands.index(entry))

    def choose_until(self, condition):
        """Starts or stops the engine. An entry that the program has not changed yet, for it asks
        the engine every three seconds, does nothing."""
        def has_come():
            self.choose("Start or stop")
            try:
                return wait_until(condition, "it", 5)
            except DesktopError:
                return None

        wait_until(has_come, "what was chosen")

    def answer_alert(self):
        self.alert()
        self.press("Return")

    def choose_every_entry(self):
        pair(self.desktop, self.tool)
        self.choose_until(lambda: not engine_listens())
        self.choose("How Does This Work?")
        self.answer_alert()
        self.choose_until(engine_answers)
        entry = os.path.join(self.desktop.environment["XDG_CONFIG_HOME"], "autostart",
                             "torvane-p2p-helper.desktop")
        self.choose("Launch at Login")
        wait_until(lambda: os.path.exists(entry), "the autostart entry")
        self.choose("Launch at Login")
        wait_until(lambda: not os.path.exists(entry), "the autostart entry's end")
        self.choose(FORGET)
        self.answer_alert()
        self.choose("Quit", [entry for entry in self.COMMANDS if entry != FORGET])
        self.assertEqual(self.helper.wait(PATIENCE), 0)


class TrayTest(Elsewhere):
    def setUp(self):
        super().setUp()
        self.desktop.start_panel()
        self.start_engine()
        self.start()

    def click_where_menu_opens(self, button="3"):
        x, y = wait_until(lambda: icon_middle(self.desktop), "the icon")
        self.desktop.run("xdotool", "mousemove", str(x), str(y), "click", button)

    def test_every_entry_works(self):
        self.choose_every_entry()

    def test_opens_with_the_other_button_too(self):
        for button in ("1", "3"):
            menu = PopupMenu.opened(self.desktop, lambda: self.click_where_menu_opens(button))
            self.assertIsNotNone(menu)
            self.picture("tray-menu")
            menu.close()


class NoTrayTest(Elsewhere):
    def setUp(self):
        super().setUp()
        self.start_engine()
        self.start()
        self.window = self.wait_for_window()

    def wait_for_window(self):
        return wait_until(self.stand_ins, "the stand-in")[0]

    def stand_ins(self):
        return self.desktop.windows("--name", STAND_IN)

    def press_until(self, key, condition, what):
        """Presses a key in the window; again where a busy desktop was not listening yet."""
        def has_come():
            self.desktop.run("xdotool", "windowactivate", str(self.window), check=False)
            try:
                wait_until(lambda: self.desktop.active_window() == self.window, "it active", 5)
                self.desktop.run("xdotool", "key", key)
                return wait_until(condition, what, 5)
            except DesktopError:
                return condition()

        wait_until(has_come, what)

    def click_where_menu_opens(self):
        # The button is at the end of the row.
        _, _, width, height = self.desktop.geometry(self.window)
        self.desktop.run("xdotool", "mousemove", "--window", str(self.window), str(width - 30),
                         str(height // 2), "click", "1")

    def test_every_entry_works(self):
        self.choose_every_entry()

    def test_closed_it_comes_back_and_needs_no_pointer(self):
        def popups():
            return [window for window in self.desktop.windows("--classname", "torvane-p2p-helper")
                    if window not in self.stand_ins()]

        self.picture("stand-in")
        self.press_until("alt+F4", lambda: not self.stand_ins(), "the window's end")
        self.assertIsNone(self.helper.poll())
        self.assertEqual(start_helper(self.desktop, self.build).wait(PATIENCE), 0)
        self.window = self.wait_for_window()
        self.assertIsNone(self.helper.poll())
        self.press_until("space", popups, "the menu")
        self.picture("stand-in-menu")
        self.desktop.run("xdotool", "key", "Up", "Return")  # the last entry
        self.assertEqual(self.helper.wait(PATIENCE), 0)

    def test_gives_way_to_a_panel_that_comes_and_stands_in_again(self):
        panel = self.desktop.start_panel()
        wait_until(lambda: not self.stand_ins(), "the stand-in's end")
        wait_until(lambda: self.desktop.windows("--classname", "torvane-p2p-helper"), "the icon")
        end(panel)
        self.window = self.wait_for_window()


if __name__ == "__main__":
    main()
