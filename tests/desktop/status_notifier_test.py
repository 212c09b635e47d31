#!/usr/bin/python3
"""The status item in a panel that draws icons and menus itself, from what comes over D-Bus.

usage: status_notifier_test.py TRAY_PROBE
"""

import os
import signal
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "support"))

from private_desktop import (  # noqa: E402
    PATIENCE, PrivateDesktop, end, skip_where_incomplete, wait_until)

skip_where_incomplete(("dbus", "gi"))

from status_notifier import Item, start_watcher  # noqa: E402

PROBE = None


class StatusNotifierTest(unittest.TestCase):
    def setUp(self):
        self.desktop = self.enterContext(PrivateDesktop())
        self.desktop.start_windows()

    def start(self):
        """The panel, the probe in it, and its item."""
        self.start_panel()
        self.start_probe()
        self.item = self.next_item()

    def start_panel(self):
        self.watcher = start_watcher(self.desktop)
        self.assertTrue(self.watcher.stdout.readline().startswith("ready"))

    def start_probe(self):
        self.probe = self.desktop.spawn("probe", [PROBE])
        self.wait_for("started")

    def next_item(self):
        service = self.watcher.stdout.readline().strip()
        return Item(self.desktop.environment["DBUS_SESSION_BUS_ADDRESS"], service)

    def wait_for(self, line):
        wait_until(lambda: line in self.desktop.log("probe").splitlines(), line)

    def test_shows_menu_texts_as_they_are(self):
        self.start()
        self.assertEqual(
            self.item.labels(),
            ["Connected:", "    R&D_iPad & <b>Co</b>_", "-", "Show Alert…", "Connect", "Checked",
             "Quit"])

    def test_only_commands_can_be_chosen(self):
        self.start()
        entries = [properties for _, properties in self.item.entries()]
        self.assertEqual([bool(entry.get("enabled", True)) for entry in entries
                          if entry.get("type") != "separator"],
                         [False, False, True, True, True, True])
        self.assertEqual(entries[5]["toggle-state"], 1)

    def test_icon_and_tooltip_follow_the_state(self):
        self.start()
        before = self.item.picture()
        self.assertEqual(self.item.properties()["ToolTip"][2], "waiting")
        self.item.choose("Connect")
        self.wait_for("connected")
        after = self.item.picture()
        self.assertNotEqual(before, after)
        self.assertAlmostEqual(max(before[2][0::4]), 217, delta=2)
        self.assertEqual(max(after[2][0::4]), 255)
        tooltip = str(self.item.properties()["ToolTip"][2])
        self.assertEqual(tooltip.replace("\u2060", ""), "connected (<b>R&D</b>)")
        self.assertNotIn("<b>", tooltip)

    def test_is_called_by_the_programs_name(self):
        self.start()
        self.assertEqual(self.item.properties()["Title"], "Torvane P2P Helper")

    def test_menu_is_right_before_the_panel_asks(self):
        self.start()
        self.item.choose("Connect")
        self.wait_for("connected")
        labels = [str(properties.get("label", "")) for _, properties in self.item.layout()]
        self.assertIn("Disconnect", labels)

    def test_an_alert_does_not_hold_up_the_panel(self):
        self.start()
        self.item.choose("Show Alert…")  # fails when the answer takes longer than 3 s
        self.wait_for("alert open")
        window = wait_until(lambda: self.desktop.windows("--name", "^Torvane P2P Helper$"),
                            "the alert")[0]
        wait_until(lambda: self.desktop.active_window() == window, "the alert in front")
        self.assertIn("Quit", self.item.labels())
        self.desktop.run("xdotool", "key", "Escape")
        self.wait_for("alert answered 1001")

    def test_a_plain_click_opens_the_menu_too(self):
        self.start()
        self.assertEqual(self.desktop.windows("--classname", "tray_probe"), [])
        self.item.activate()
        wait_until(lambda: self.desktop.windows("--classname", "tray_probe"), "the menu")
        self.desktop.run("xdotool", "key", "Up", "Return")
        self.assertEqual(self.probe.wait(PATIENCE), 0)

    def test_quits_from_the_menu(self):
        self.start()
        self.item.choose("Quit")
        self.assertEqual(self.probe.wait(PATIENCE), 0)
        self.wait_for("ended")

    def test_appears_in_a_panel_that_starts_later(self):
        self.start_probe()
        self.start_panel()
        self.assertIn("Quit", self.next_item().labels())

    def test_does_without_a_panel_that_hangs_until_it_goes_on(self):
        self.start_panel()
        self.watcher.send_signal(signal.SIGSTOP)
        self.start_probe()
        wait_until(self.stand_ins, "the stand-in")
        self.watcher.send_signal(signal.SIGCONT)
        self.assertIn("Quit", self.next_item().labels())
        wait_until(lambda: not self.stand_ins(), "the stand-in's end")

    def stand_ins(self):
        return self.desktop.windows("--name", "^Torvane P2P Helper Menu$")

    def test_comes_back_when_the_panel_starts_anew(self):
        self.start()
        end(self.watcher)
        self.start_panel()
        self.assertIn("Quit", self.next_item().labels())


if __name__ == "__main__":
    PROBE = os.path.abspath(sys.argv.pop(1))
    unittest.main(verbosity=2)
