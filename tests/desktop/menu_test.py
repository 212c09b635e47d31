#!/usr/bin/python3
"""The whole program's menu and dialogs, in a panel that draws menus itself.

usage: menu_test.py BUILD_FOLDER PICTURE_FOLDER
"""

import json
import os
import shutil
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "support"))

from private_desktop import (  # noqa: E402
    PATIENCE, DesktopError, PrivateDesktop, end, skip_where_incomplete, wait_until)

skip_where_incomplete(("dbus", "gi"))

from discovery_double import start_discovery  # noqa: E402
from helper_program import (  # noqa: E402
    PROGRAM, engine_answers, engine_listens, pair, require_free_engine_port, start_helper)
from status_notifier import Item, start_watcher  # noqa: E402

BUILD = None
PICTURES = None

ENGINE_ON = ["PowerPoint server running on port 8484", "Stop Server", "-"]
ENGINE_OFF = ["PowerPoint server not running", "Start Server", "-"]
REST = ["How Does This Work?", "Launch at Login", "Quit"]
ALERT = "^Torvane P2P Helper$"


class MenuTest(unittest.TestCase):
    def setUp(self):
        require_free_engine_port()
        self.desktop = self.enterContext(PrivateDesktop())
        self.desktop.start_windows()
        self.watcher = start_watcher(self.desktop)
        self.assertTrue(self.watcher.stdout.readline().startswith("ready"))
        self.tool = os.path.join(BUILD, "tools", "torvane-ipad")

    def start(self, build=None):
        self.helper = start_helper(self.desktop, build or BUILD)
        service = self.watcher.stdout.readline().strip()
        self.item = Item(self.desktop.environment["DBUS_SESSION_BUS_ADDRESS"], service)

    def start_with_engine(self):
        self.start()
        wait_until(engine_answers, "the engine")
        self.wait_for_line("Stop Server")

    def copy_of_the_bundle(self):
        """A build folder with a copy of the bundle that a test may change."""
        copy = os.path.join(self.desktop.folder, "copy")
        bundle = os.path.join(copy, os.path.dirname(os.path.dirname(PROGRAM)))
        shutil.copytree(os.path.join(BUILD, os.path.dirname(os.path.dirname(PROGRAM))), bundle)
        return copy, bundle

    def wait_for_line(self, line):
        wait_until(lambda: line in self.item.labels(), line)

    def wait_for_menu(self, lines):
        wait_until(lambda: self.item.labels() == lines, f"{lines}, not {self.item.labels()}")

    def entry(self, label):
        for _, properties in self.item.entries():
            if str(properties.get("label", "")) == label:
                return properties
        raise LookupError(label)

    def alert(self, picture=None):
        """Waits for an alert in front; its window."""
        def in_front():
            windows = self.desktop.windows("--name", ALERT)
            return windows and self.desktop.active_window() in windows and windows[0]

        window = wait_until(in_front, "an alert in front")
        if picture:
            self.picture(picture)
        return window

    def picture(self, name):
        os.makedirs(PICTURES, exist_ok=True)
        self.desktop.screenshot(os.path.join(PICTURES, name + ".png"))

    def press(self, key):
        """Answers the alert in front."""
        self.desktop.run("xdotool", "key", key)
        wait_until(lambda: not self.desktop.windows("--name", ALERT), "the alert's end")

    # What it shows

    def test_waits_for_the_first_ipad(self):
        start_discovery(self.desktop)
        self.start()
        self.assertRegex(self.item.labels()[0], "^Advertising as “.+” — open the iPad app$")
        wait_until(engine_answers, "the engine")
        self.wait_for_line("Stop Server")
        self.assertEqual(self.item.labels()[1:], ["-", *ENGINE_ON, *REST])

    def test_advertising_error_comes_first(self):
        self.start()
        wait_until(lambda: self.item.labels()[0].startswith(
            "Not advertising: Other devices cannot find this computer"), "the error")
        self.assertEqual(self.item.labels()[1], "-")

    def test_names_connected_and_paired_ipads(self):
        start_discovery(self.desktop)
        self.start_with_engine()
        name = "R&D_iPad & <b>Co</b>_"
        pair(self.desktop, self.tool, "--name", name)
        # Paired, and gone again.
        self.wait_for_menu([self.item.labels()[0], "-", *ENGINE_ON, "Paired devices:",
                            "    " + name, "Forget Paired Devices…", "-", *REST])
        self.desktop.spawn("watch", [self.tool, "watch", "--name", name])
        connected = ["Connected:", "    " + name, "-", *ENGINE_ON]
        self.wait_for_menu([*connected, "Paired devices:", "    " + name,
                            "Forget Paired Devices…", "-", *REST])
        self.item.choose("Forget Paired Devices…")
        self.alert("forget")
        self.press("Escape")
        self.assertIn("Paired devices:", self.item.labels())
        self.item.choose("Forget Paired Devices…")
        self.alert()
        self.press("Return")
        self.wait_for_menu([*connected, *REST])

    def test_only_commands_can_be_chosen(self):
        self.start_with_engine()
        enabled = [str(properties["label"]) for _, properties in self.item.entries()
                   if properties.get("type") != "separator" and properties.get("enabled", True)]
        self.assertEqual(enabled, ["Stop Server", *REST])

    # What it does

    def test_stops_and_starts_the_engine(self):
        self.start_with_engine()
        self.item.choose("Stop Server")
        wait_until(lambda: not engine_listens(), "the engine's end")
        self.wait_for_line("Start Server")
        self.assertIn("PowerPoint server not running", self.item.labels())
        self.item.choose("Start Server")
        wait_until(engine_answers, "the engine")
        self.wait_for_line("Stop Server")
        self.assertEqual(self.desktop.windows("--name", ALERT), [])

    def test_explains_how_it_works(self):
        self.start_with_engine()
        for key in ("Return", "Escape"):
            self.item.choose("How Does This Work?")
            self.alert("how-it-works")
            self.press(key)
        self.assertIsNone(self.helper.poll())

    def test_launches_at_login_when_told_to(self):
        self.start_with_engine()
        path = os.path.join(self.desktop.environment["XDG_CONFIG_HOME"], "autostart",
                            "torvane-p2p-helper.desktop")
        self.assertFalse(os.path.exists(path))
        self.item.choose("Launch at Login")
        wait_until(lambda: self.entry("Launch at Login").get("toggle-state") == 1, "the mark")
        with open(path, encoding="utf-8") as file:
            entry = file.read()
        self.assertIn(f'Exec="{os.path.join(BUILD, PROGRAM)}"\n', entry)
        with open(path, "a", encoding="utf-8") as file:
            file.write("Hidden=true\n")  # as a desktop's settings do
        self.assertNotEqual(self.entry("Launch at Login").get("toggle-state"), 1)
        self.item.choose("Launch at Login")
        wait_until(lambda: self.entry("Launch at Login").get("toggle-state") == 1, "the mark")
        self.item.choose("Launch at Login")
        wait_until(lambda: not os.path.exists(path), "the entry's end")
        self.assertNotEqual(self.entry("Launch at Login").get("toggle-state"), 1)

    def test_says_why_launch_at_login_cannot_be_changed(self):
        self.start_with_engine()
        with open(os.path.join(self.desktop.environment["XDG_CONFIG_HOME"], "autostart"), "w",
                  encoding="utf-8"):
            pass  # a file where the folder should be
        self.item.choose("Launch at Login")
        self.alert("login-failure")
        self.press("Return")
        self.assertNotEqual(self.entry("Launch at Login").get("toggle-state"), 1)

    def test_quits(self):
        self.start_with_engine()
        self.item.choose("Quit")
        self.assertEqual(self.helper.wait(PATIENCE), 0)
        wait_until(lambda: not engine_listens(), "the engine's end")

    # An engine that does not start

    def test_says_that_the_script_is_missing(self):
        copy, bundle = self.copy_of_the_bundle()
        os.remove(os.path.join(bundle, "Resources", "torvane.py"))
        self.start(copy)
        self.alert("engine-missing")
        self.press("Return")
        self.item.choose("Start Server")
        self.alert()
        self.press("Escape")
        self.assertIn("Start Server", self.item.labels())

    def test_shows_the_last_words_of_an_engine_that_dies_at_once(self):
        copy, bundle = self.copy_of_the_bundle()
        with open(os.path.join(os.path.dirname(bundle), "torvane.py"), "w",
                  encoding="utf-8") as file:
            file.write("import sys\nprint('<b>No</b> slides today.')\nsys.exit(3)\n")
        self.start(copy)
        self.alert("engine-died")
        self.press("Return")
        self.assertIn("PowerPoint server not running", self.item.labels())

    def test_uses_an_engine_that_runs_already_and_leaves_it_running(self):
        script = os.path.join(BUILD, os.path.dirname(os.path.dirname(PROGRAM)), "Resources",
                              "torvane.py")
        engine = self.desktop.spawn("engine", ["/usr/bin/python3", script, "8484"])
        wait_until(engine_answers, "the engine")
        self.start()
        self.wait_for_line("Stop Server")
        self.item.choose("Quit")
        self.assertEqual(self.helper.wait(PATIENCE), 0)
        self.assertIsNone(engine.poll())
        self.assertTrue(engine_answers())

    # More than one

    def test_copy_from_another_folder_ends_the_first(self):
        self.start_with_engine()
        first = self.helper
        copy, _ = self.copy_of_the_bundle()
        self.start(copy)
        self.assertEqual(first.wait(PATIENCE), 0)
        wait_until(engine_answers, "the engine")
        self.wait_for_line("Stop Server")

    def test_second_launch_shows_the_first(self):
        self.start()
        second = start_helper(self.desktop, BUILD)
        self.assertEqual(second.wait(PATIENCE), 0)
        window = wait_until(lambda: self.desktop.windows("--name", "^Torvane P2P Helper Menu$"),
                            "the window")[0]
        wait_until(lambda: self.desktop.active_window() == window, "the window in front")
        self.assertIsNone(self.helper.poll())
        with open(os.path.join(self.desktop.environment["XDG_RUNTIME_DIR"], "torvane",
                               "peer-link.json"), encoding="utf-8") as file:
            self.assertEqual(json.load(file)["pid"], self.helper.pid)


class NoTrayTest(unittest.TestCase):
    def setUp(self):
        require_free_engine_port()
        self.desktop = self.enterContext(PrivateDesktop())
        self.desktop.start_windows()
        self.helper = start_helper(self.desktop, BUILD)
        self.window = self.wait_for_window()

    def wait_for_window(self):
        return wait_until(self.stand_ins, "the stand-in")[0]

    def stand_ins(self):
        return self.desktop.windows("--name", "^Torvane P2P Helper Menu$")

    def popups(self):
        return [window for window in self.desktop.windows("--classname", "torvane-p2p-helper")
                if window not in self.stand_ins()]

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

    def picture(self, name):
        os.makedirs(PICTURES, exist_ok=True)
        self.desktop.screenshot(os.path.join(PICTURES, name + ".png"))

    def test_has_the_same_menu(self):
        wait_until(engine_answers, "the engine")
        self.press_until("space", self.popups, "the menu")
        self.picture("stand-in-menu")
        self.desktop.run("xdotool", "key", "Up", "Return")  # the last entry
        self.assertEqual(self.helper.wait(PATIENCE), 0)

    def test_closed_it_comes_back_with_a_second_launch(self):
        self.picture("stand-in")
        self.press_until("alt+F4", lambda: not self.stand_ins(), "the window's end")
        self.assertIsNone(self.helper.poll())
        self.assertEqual(start_helper(self.desktop, BUILD).wait(PATIENCE), 0)
        self.window = self.wait_for_window()
        self.assertIsNone(self.helper.poll())

    def test_gives_way_to_a_panel_that_comes_and_stands_in_again(self):
        panel = self.desktop.start_panel()
        wait_until(lambda: not self.stand_ins(), "the stand-in's end")
        wait_until(self.popups, "the icon")
        end(panel)
        self.window = self.wait_for_window()


if __name__ == "__main__":
    PICTURES = os.path.abspath(sys.argv.pop(2))
    BUILD = os.path.abspath(sys.argv.pop(1))
    unittest.main(verbosity=2)
