#!/usr/bin/python3
"""The whole program's menu where it draws it itself: in a tray of the old kind, and in the window that
stands in for one. Every entry is chosen with the pointer. What it shows of updates is in
menu_update_elsewhere_test.py.

usage: menu_elsewhere_test.py BUILD_FOLDER PICTURE_FOLDER
"""

import os
import socket
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "support"))

from private_desktop import (  # noqa: E402
    PATIENCE, DesktopError, end, skip_where_incomplete, wait_until)

skip_where_incomplete(("dbus", "gi"))

from discovery_double import start_discovery  # noqa: E402
from drawn_menu import InStandIn, InTray  # noqa: E402
from helper_program import engine_answers, engine_listens, pair, start_helper  # noqa: E402
from menu_stage import main  # noqa: E402
from menu_texts import (  # noqa: E402
    ENGINE_ON, FORGET, REST, connect_by_address, connected_menu, paired)
from popup_menu import PopupMenu  # noqa: E402

NOT_ADVERTISING = ("Not advertising: Other devices cannot find this computer: the Avahi service is "
                   "not running.")
ADVERTISING = f"Advertising as “{socket.gethostname()}” — open the iPad app"
WHILE_PAIRED = [NOT_ADVERTISING, *connect_by_address(), "-", *ENGINE_ON, *paired("iPad"),
                *REST]


class Elsewhere:
    """What is tried in both places."""

    def test_shows_an_advertising_error(self):
        self.start_with_engine()
        self.open_menu([NOT_ADVERTISING, *connect_by_address(), "-", *ENGINE_ON, *REST], ["Stop Server", *REST])
        self.picture_of_menu("not-advertising")

    def test_names_connected_and_paired_ipads(self):
        start_discovery(self.desktop)
        self.start_with_engine()
        commands = ["Stop Server", FORGET, *REST]
        pair(self.desktop, self.tool, "--name", "iPad")
        menu = self.open_menu([ADVERTISING, *connect_by_address(), "-", *ENGINE_ON,
                               *paired("iPad"), *REST], commands)
        self.picture_of_menu("paired")
        menu.close()
        self.watch_as("iPad")
        self.open_menu(connected_menu("iPad"), commands)
        self.picture_of_menu("connected")

    def test_every_entry_works(self):
        self.start_with_engine()
        pair(self.desktop, self.tool, "--name", "iPad")
        self.choose_until("Stop Server", lambda: not engine_listens())
        self.choose_while_paired("How Does This Work?")
        self.answer_alert()
        self.choose_until("Stop Server", engine_answers)  # where "Start Server" is now
        entry = os.path.join(self.desktop.environment["XDG_CONFIG_HOME"], "autostart",
                             "torvane-p2p-helper.desktop")
        self.choose_while_paired("Launch at Login")
        wait_until(lambda: os.path.exists(entry), "the autostart entry")
        self.choose_while_paired("Launch at Login")
        wait_until(lambda: not os.path.exists(entry), "the autostart entry's end")
        self.choose_while_paired(FORGET)
        self.answer_alert()
        self.choose("Quit", [NOT_ADVERTISING, *connect_by_address(), "-", *ENGINE_ON, *REST], ["Stop Server", *REST])
        self.assertEqual(self.helper.wait(PATIENCE), 0)

    def choose_while_paired(self, entry):
        self.choose(entry, WHILE_PAIRED, ["Stop Server", FORGET, *REST])

    def choose_until(self, entry, condition):
        """An entry that the program has not changed yet, for it asks the engine every three
        seconds, does nothing."""
        def has_come():
            self.choose_while_paired(entry)
            try:
                return wait_until(condition, "it", 5)
            except DesktopError:
                return None

        wait_until(has_come, "what was chosen")

    def answer_alert(self):
        self.alert()
        self.press("Return")


class TrayTest(Elsewhere, InTray):
    def test_opens_with_the_other_button_too(self):
        self.start_with_engine()
        self.wait_for_place()
        for button in ("1", "3"):
            menu = PopupMenu.opened(self.desktop, lambda: self.click_on_place(button))
            self.assertIsNotNone(menu)
            menu.close()


class NoTrayTest(Elsewhere, InStandIn):
    def press_until(self, key, condition, what):
        """Presses a key in the window; again where a busy desktop was not listening yet."""
        window = self.wait_for_place()

        def has_come():
            self.desktop.run("xdotool", "windowactivate", str(window), check=False)
            try:
                wait_until(lambda: self.desktop.active_window() == window, "it active", 5)
                self.desktop.run("xdotool", "key", key)
                return wait_until(condition, what, 5)
            except DesktopError:
                return condition()

        wait_until(has_come, what)

    def test_closed_it_comes_back_and_needs_no_pointer(self):
        def popups():
            return [window for window in self.desktop.windows("--classname", "torvane-p2p-helper")
                    if window not in self.stand_ins()]

        self.start_with_engine()
        self.wait_for_place()
        self.picture("stand-in")
        self.press_until("alt+F4", lambda: not self.stand_ins(), "the window's end")
        self.assertIsNone(self.helper.poll())
        self.assertEqual(start_helper(self.desktop, self.build).wait(PATIENCE), 0)
        self.wait_for_place()
        self.assertIsNone(self.helper.poll())
        self.press_until("space", popups, "the menu")
        self.desktop.run("xdotool", "key", "Up", "Return")  # the last entry
        self.assertEqual(self.helper.wait(PATIENCE), 0)

    def test_gives_way_to_a_panel_that_comes_and_stands_in_again(self):
        self.start()
        self.wait_for_place()
        panel = self.desktop.start_panel()
        wait_until(lambda: not self.stand_ins(), "the stand-in's end")
        wait_until(lambda: self.desktop.windows("--classname", "torvane-p2p-helper"), "the icon")
        end(panel)
        self.wait_for_place()


if __name__ == "__main__":
    main()
