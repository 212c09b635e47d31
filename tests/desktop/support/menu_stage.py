"""What the tests of the menu and the dialogs share: the program on a private desktop."""

import os
import shutil
import sys
import unittest

from helper_program import (
    BUNDLE, ENGINE_PORT, engine_answers, engine_listens, pair, require_free_engine_port, start_bundle)
from private_desktop import DesktopError, PrivateDesktop, wait_until
from status_notifier import Item, start_watcher

ALERT = "^Torvane P2P Helper$"
LOST = 15  # seconds until keys that had no effect are taken for lost


class MenuStage(unittest.TestCase):
    """The program itself is started by each test."""

    build = pictures = None  # folders

    def setUp(self):
        require_free_engine_port()
        # The last that happens: an engine whose helper was killed ends by itself.
        self.addCleanup(wait_until, lambda: not engine_listens(), "the engine's end")
        self.desktop = self.enterContext(PrivateDesktop())
        self.desktop.start_windows(compositor=None)
        self.bundle = os.path.join(self.build, BUNDLE)
        self.tool = os.path.join(self.build, "tools", "torvane-ipad")

    def start(self, bundle=None, around=()):
        """`bundle`: another than is usual; `around`: a command that runs the program."""
        self.helper = start_bundle(self.desktop, bundle or self.bundle, around)

    def start_engine(self):
        """One that is there before the program."""
        script = os.path.join(self.build, BUNDLE, "Resources", "torvane.py")
        engine = self.desktop.spawn("engine", ["/usr/bin/python3", script, str(ENGINE_PORT)])
        wait_until(engine_answers, "the engine")
        return engine

    def start_with_engine(self):
        """Sooner than with an engine of its own, for which it leaves itself time."""
        self.start_engine()
        self.start()

    def copy_of_the_bundle(self):
        """One that a test may change."""
        copy = os.path.join(self.desktop.folder, "copy", BUNDLE)
        shutil.copytree(self.bundle, copy)
        return copy

    def connect_ipad(self, name):
        """Pairs a device of this name and leaves it connected."""
        pair(self.desktop, self.tool, "--name", name)
        self.watch_as(name)

    def watch_as(self, name):
        """Connects a paired device, until the test ends."""
        self.desktop.spawn("watch", [self.tool, "watch", "--name", name])

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

    def quiet_alert(self, picture=None):
        """Waits for an alert, which need not be in front; its window."""
        window = wait_until(self.alerts, "an alert")[0]
        if picture:
            self.picture(picture)
        return window

    def give_keyboard(self, window):
        """As a click on its frame does."""
        self.desktop.run("xdotool", "windowactivate", str(window))
        wait_until(lambda: self.desktop.active_window() == window, "the keyboard")

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

    def start(self, bundle=None, around=()):
        super().start(bundle, around)
        service = self.watcher.stdout.readline().strip()
        self.item = Item(self.desktop.environment["DBUS_SESSION_BUS_ADDRESS"], service)

    def start_with_engine(self):
        super().start_with_engine()
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


def main():
    """Runs the tests of the program: TEST BUILD_FOLDER PICTURE_FOLDER [OPTION...]"""
    MenuStage.pictures = os.path.abspath(sys.argv.pop(2))
    MenuStage.build = os.path.abspath(sys.argv.pop(1))
    unittest.main(verbosity=2)
