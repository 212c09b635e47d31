#!/usr/bin/python3
"""Starting and ending the whole program on a desktop that may lack this or that.

usage: helper_test.py BUNDLE_FOLDER
"""

import json
import os
import signal
import stat
import sys
import time
import unittest
import urllib.request

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "support"))

from helper_program import engine_listens, require_free_engine_port  # noqa: E402
from private_desktop import PATIENCE, PrivateDesktop, skip_where_incomplete, wait_until  # noqa: E402
from process_figures import wake_ups  # noqa: E402

skip_where_incomplete()

BUNDLE = None


def is_presenting():
    with urllib.request.urlopen("http://127.0.0.1:8484/api/state", timeout=PATIENCE) as answer:
        return json.load(answer)["presenting"]


class HelperTest(unittest.TestCase):
    def setUp(self):
        require_free_engine_port()
        self.desktop = self.enterContext(PrivateDesktop())
        self.defaults = os.path.join(
            self.desktop.environment["XDG_CONFIG_HOME"], "torvane", "defaults.json")

    def start(self, *arguments):
        program = os.path.join(BUNDLE, "bin", "torvane-p2p-helper")
        return self.desktop.spawn("helper", [program, *arguments])

    def start_as_if_welcomed(self, *arguments):
        os.makedirs(os.path.dirname(self.defaults))
        with open(self.defaults, "w", encoding="utf-8") as file:
            json.dump({"didShowWelcome": True}, file)
        helper = self.start(*arguments)
        wait_until(engine_listens, "the engine")
        return helper

    def windows(self):
        return self.desktop.windows("--name", "^Torvane P2P Helper$")

    def assert_ends(self, helper):
        self.assertEqual(helper.wait(PATIENCE), 0, self.desktop.log("helper"))
        wait_until(lambda: not engine_listens(), "the engine's end")

    def test_ends_while_an_alert_is_open(self):
        for how in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            helper = self.start()
            wait_until(self.windows, "the welcome")
            helper.send_signal(how)
            self.assert_ends(helper)
            os.remove(self.defaults)

    def test_ends_at_any_moment_of_its_start(self):
        for milliseconds in range(0, 200, 10):
            helper = self.start()
            time.sleep(milliseconds / 1000)
            helper.send_signal(signal.SIGTERM)
            # Before the program has taken the signals into its hands, they end it themselves.
            self.assertIn(helper.wait(PATIENCE), (0, -signal.SIGTERM), self.desktop.log("helper"))

    def test_takes_its_engine_along(self):
        helper = self.start_as_if_welcomed()
        helper.send_signal(signal.SIGTERM)
        self.assert_ends(helper)

    def test_an_engine_without_its_helper_ends(self):
        helper = self.start_as_if_welcomed()
        helper.kill()
        helper.wait(PATIENCE)
        wait_until(lambda: not engine_listens(), "the engine's end")

    def test_welcomes_once(self):
        helper = self.start()
        wait_until(self.windows, "the welcome")
        self.assertEqual(stat.S_IMODE(os.stat(self.defaults).st_mode), 0o600)
        helper.send_signal(signal.SIGTERM)
        self.assert_ends(helper)
        helper = self.start()
        wait_until(engine_listens, "the engine")
        self.assertEqual(self.windows(), [])
        helper.send_signal(signal.SIGTERM)
        self.assert_ends(helper)

    def test_runs_without_session_bus_and_panel(self):
        self.desktop.environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/nowhere"
        helper = self.start_as_if_welcomed()
        helper.send_signal(signal.SIGTERM)
        self.assert_ends(helper)

    def test_says_once_that_ink_needs_an_x_server_and_works_on(self):
        del self.desktop.environment["DISPLAY"]
        self.desktop.environment["QT_QPA_PLATFORM"] = "minimal"
        helper = self.start_as_if_welcomed()
        request = urllib.request.Request(
            "http://127.0.0.1:8484/api/show/start", b"", method="POST")
        with urllib.request.urlopen(request, timeout=PATIENCE) as answer:
            answer.read()
        wait_until(is_presenting, "a show")
        before = wake_ups(helper.pid)
        wait_until(lambda: wake_ups(helper.pid) > before + 100, "more polls for ink")
        self.assertEqual(self.desktop.log("helper").count("ink will not be shown"), 1)
        helper.send_signal(signal.SIGTERM)
        self.assert_ends(helper)

    def test_tells_what_was_wrong_with_a_display_that_it_did_without(self):
        del self.desktop.environment["DISPLAY"]
        self.desktop.environment["QT_QPA_PLATFORM"] = "xcb;minimal"
        helper = self.start_as_if_welcomed()
        self.assertIn("could not connect to display", self.desktop.log("helper"))
        helper.send_signal(signal.SIGTERM)
        self.assert_ends(helper)

    def test_ignores_other_arguments(self):
        helper = self.start_as_if_welcomed("--reverse", "-platform", "nonsense")
        helper.send_signal(signal.SIGTERM)
        self.assert_ends(helper)


if __name__ == "__main__":
    BUNDLE = os.path.abspath(sys.argv.pop(1))
    unittest.main(verbosity=2)
