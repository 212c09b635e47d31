"""What the tests of the menu and the dialogs share: the program on a private desktop."""

import os
import shutil
import sys
import unittest

from helper_program import (
    ENGINE_PORT, PROGRAM, engine_answers, engine_listens, require_free_engine_port, start_helper)
from private_desktop import DesktopError, PrivateDesktop, wait_until
from screen_reader import ScreenReader
from status_notifier import Item, start_watcher

ENGINE_ON = ["PowerPoint server running on port 8484", "Stop Server", "-"]
ENGINE_OFF = ["PowerPoint server not running", "Start Server", "-"]
REST = ["How Does This Work?", "Launch at Login", "Quit"]
FORGET = "Forget Paired Devices…"
ALERT = "^Torvane P2P Helper$"
LOST = 15  # seconds until keys that had no effect are taken for lost
# How a button is pressed that is the first, the second or the last one, beside by a screen reader.
KEYS = {"first": ("Return",), "second": ("Tab", "space"), "last": ("Escape",)}


class MenuStage(unittest.TestCase):
    """The program itself is started by each test."""

    build = pictures = None  # folders

    def setUp(self):
        require_free_engine_port()
        # The last that happens: an engine whose helper was killed ends by itself.
        self.addCleanup(wait_until, lambda: not engine_listens(), "the engine's end")
        self.desktop = self.enterContext(PrivateDesktop())
        self.desktop.start_windows(compositor=None)
        self.tool = os.path.join(self.build, "tools", "torvane-ipad")

    def start(self, build=None, around=()):
        """`around`: a command that runs the program."""
        self.helper = start_helper(self.desktop, build or self.build, around)

    def start_engine(self):
        """One that is there before the program."""
        script = os.path.join(self.build, os.path.dirname(os.path.dirname(PROGRAM)), "Resources",
                              "torvane.py")
        engine = self.desktop.spawn("engine", ["/usr/bin/python3", script, str(ENGINE_PORT)])
        wait_until(engine_answers, "the engine")
        return engine

    def copy_of_the_bundle(self):
        """A build folder with a copy of the bundle that a test may change, and the bundle."""
        copy = os.path.join(self.desktop.folder, "copy")
        folder = os.path.dirname(os.path.dirname(PROGRAM))
        shutil.copytree(os.path.join(self.build, folder), os.path.join(copy, folder))
        return copy, os.path.join(copy, folder)

    def alerts(self):
        return self.desktop.windows("--name", ALERT)

    def alert(self, picture=None):
        """Waits for an alert in front; its window."""
        def in_front():
            windows = self.alerts()
            return windows and self.desktop.active_window() in windows and windows[0]

        window = wait_until(in_front, "an alert in front")
        if picture:
            self.picture(picture)
        return window

    def press(self, key):
        """Answers the alert in front."""
        self.type_until([key], lambda: not self.alerts())

    def type_until(self, keys, condition):
        """Again where they had no effect: a busy desktop loses some."""
        def has_come():
            self.desktop.run("xdotool", "key", *keys)
            try:
                return wait_until(condition, "an effect", LOST)
            except DesktopError:
                return None

        wait_until(has_come, f"an effect of {keys}")

    def picture(self, name):
        os.makedirs(self.pictures, exist_ok=True)
        self.desktop.screenshot(os.path.join(self.pictures, name + ".png"))


class PanelStage(MenuStage):
    """With a panel that draws the menu itself, from what comes over D-Bus."""

    def setUp(self):
        super().setUp()
        self.watcher = start_watcher(self.desktop)
        self.assertTrue(self.watcher.stdout.readline().startswith("ready"))

    def start(self, build=None, around=()):
        super().start(build, around)
        self.take_item()

    def take_item(self):
        """The next that appears in the panel."""
        service = self.watcher.stdout.readline().strip()
        self.item = Item(self.desktop.environment["DBUS_SESSION_BUS_ADDRESS"], service)

    def start_with_engine(self):
        """Sooner than by its own engine, for which it leaves itself time."""
        self.start_engine()
        self.start()
        self.wait_for_line("Stop Server")

    def wait_for_line(self, line):
        wait_until(lambda: line in self.item.labels(), line)

    def wait_for_menu(self, lines):
        wait_until(lambda: self.item.labels() == lines, f"{lines}, not {self.item.labels()}")

    def entry(self, label):
        for _, properties in self.item.entries():
            if str(properties.get("label", "")) == label:
                return properties
        raise LookupError(label)


class DialogStage(PanelStage):
    """With a screen reader, too."""

    def setUp(self):
        super().setUp()
        self.reader = ScreenReader(self.desktop)

    def answer(self, name, buttons, how):
        """Presses a button of the alert of this name: `how` is the button's text for the screen
        reader, or keys. What the alert says."""
        alert = self.reader.alert(name)
        self.assertEqual(list(alert.buttons), buttons)
        self.assertEqual(alert.texts[0], name)

        def is_gone():
            return name not in [other.name for other in self.reader.alerts()]

        if isinstance(how, str):
            alert.buttons[how].press()
            wait_until(is_gone, "the alert's end")
        else:
            self.alert()
            self.type_until(how, is_gone)
        return alert.texts[1]


def main():
    """Runs the tests of the program: TEST BUILD_FOLDER PICTURE_FOLDER [OPTION...]"""
    MenuStage.pictures = os.path.abspath(sys.argv.pop(2))
    MenuStage.build = os.path.abspath(sys.argv.pop(1))
    unittest.main(verbosity=2)
