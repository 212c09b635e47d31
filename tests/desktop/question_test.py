#!/usr/bin/python3
"""The question about a new device while a show runs on the only screen: what was on its way to the
show does not answer it, it is seen whole above the ink, and it can be answered then.

usage: question_test.py BUILD_FOLDER PICTURES openbox|bare|xfwm4|metacity

"bare" is a desktop without a compositor.
"""

import os
import sys
import time
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "support"))

from private_desktop import (  # noqa: E402
    ACCESSIBILITY, HEIGHT, OPENBOX, PATIENCE, PICOM, WIDTH, PrivateDesktop, end,
    skip_where_incomplete, wait_until)

skip_where_incomplete(("dbus", "gi", "websockets", "nacl"), (ACCESSIBILITY,))

from helper_program import PAIRING_WAIT, require_free_engine_port  # noqa: E402
from ink_stage import INK, InkStage, Screenshot  # noqa: E402
from link_device import start_device  # noqa: E402
from screen_reader import ScreenReader  # noqa: E402
from slide_show import SHOW, start_show  # noqa: E402

DESKTOPS = {
    "openbox": (OPENBOX, PICOM),
    "bare": (OPENBOX, None),
    "xfwm4": (["xfwm4", "--compositor=on", "--vblank=off"], None),
    "metacity": (["metacity", "--composite"], None),
}
BUILD = PICTURES = NAME = None
ALERT = "^Torvane P2P Helper$"
FRAME = 80  # twice what a window manager puts around a window: xdotool takes it for the window's
# Across the whole slide, wherever the question lies.
HATCH = [event for number in range(1, 30) for event in (
    {"t": "begin", "id": number, "x": 0.01, "y": number / 30},
    {"t": "pt", "id": number, "x": 0.99, "y": number / 30})]


class QuestionTest(unittest.TestCase):
    asked = 0

    @classmethod
    def setUpClass(cls):
        manager, compositor = DESKTOPS[NAME]
        cls.desktop = cls.enterClassContext(PrivateDesktop())
        cls.reader = ScreenReader(cls.desktop)
        cls.desktop.start_windows(manager, compositor)
        cls.show = start_show(cls.desktop, os.path.join(BUILD, "tests", "desktop", "show_window"))
        cls.stage = InkStage(cls.desktop, BUILD, PICTURES)

    def tearDown(self):
        self.desktop.run("xdotool", "keyup", "space", "mouseup", "1", "mousemove", "2", "2")
        if self.windows():
            self.reader.alert(self.question).buttons["Ignore"].press()
            wait_until(lambda: not self.windows(), "the question's end")

    def windows(self):
        return self.desktop.windows("--name", ALERT)

    def ask(self):
        """A new device knocks; the question's window once it can be seen, and a moment when it could
        not be seen yet."""
        QuestionTest.asked += 1
        self.name = f"iPad {self.asked + 10}"
        self.question = f"Pair with “{self.name}”?"
        self.device = start_device(self.desktop, self.name)
        self.addCleanup(end, self.device)
        looks = []

        def look():
            looks.append(time.monotonic())
            return self.windows()

        return wait_until(look, "the question")[0], looks[-2] if len(looks) > 1 else 0

    def keep(self, name):
        self.stage.keep(f"question-{NAME}-{name}")

    def place_of_pair(self):
        """For xdotool; the window is where it stays."""
        return map(str, self.reader.alert(self.question).buttons["Pair"].middle())

    def is_open(self):
        return bool(self.windows()) and self.desktop.log(self.name) == ""

    def assert_stays_open(self, seconds):
        until = time.monotonic() + seconds
        while time.monotonic() < until:
            self.assertTrue(self.is_open(), self.desktop.log(self.name))
            time.sleep(0.1)

    def assert_answer(self, answer):
        self.assertEqual(self.device.wait(PATIENCE), 0)
        self.assertEqual(self.desktop.log(self.name), answer + "\n")

    def in_first_second(self, act):
        """Acts on a question that is younger than a second; again where the desktop was too slow."""
        def was_in_time():
            _, unseen = self.ask()
            act()
            in_time = time.monotonic() - unseen < 1
            if not in_time:
                self.tearDown()
            return in_time

        wait_until(was_in_time, "a quick desktop")

    # What was on its way

    def test_keys_in_the_first_second_answer_nothing(self):
        keys = ("Next", "space", "Return", "Escape")
        self.in_first_second(lambda: self.desktop.run("xdotool", "key", *keys))
        self.assert_stays_open(2)
        self.desktop.run("xdotool", "key", "Return")
        self.assert_answer("accepted")

    def test_a_key_that_is_held_answers_nothing_until_it_is_let_go(self):
        for key in ("space", "Return"):
            self.desktop.run("xdotool", "keydown", key)
            self.ask()
            self.assert_stays_open(4)
            self.desktop.run(
                "xdotool", "mousemove", *self.place_of_pair(), "click", "1", "key", "KP_Enter")
            self.assert_stays_open(1)
            self.desktop.run("xdotool", "keyup", key)
            self.assert_stays_open(1)
            self.desktop.run("xdotool", "key", key)
            self.assert_answer("accepted")

    def test_a_click_in_the_first_second_answers_nothing(self):
        window, _ = self.ask()
        wait_until(lambda: self.desktop.active_window() == window, "the question in front")
        time.sleep(PAIRING_WAIT)  # it has its place by then
        place = list(self.place_of_pair())
        self.tearDown()
        self.desktop.run("xdotool", "mousemove", *place)
        self.in_first_second(lambda: self.desktop.run("xdotool", "click", "1", "click", "1"))
        self.assert_stays_open(2)
        self.desktop.run("xdotool", "mousemove", *self.place_of_pair())
        self.desktop.run("xdotool", "click", "1")
        self.assert_answer("accepted")

    @unittest.skipIf(sys.argv[-1] == "xfwm4", "it has no key for that unless it is set up")
    def test_closing_it_in_the_first_second_answers_nothing(self):
        self.in_first_second(lambda: self.desktop.run("xdotool", "key", "alt+F4"))
        self.assert_stays_open(2)
        self.desktop.run("xdotool", "key", "alt+F4")
        self.assert_answer("declined")

    def test_keys_wait_anew_when_the_keyboard_comes_back(self):
        window, _ = self.ask()
        time.sleep(PAIRING_WAIT)
        self.show.ask("raise")
        wait_until(lambda: self.desktop.active_window() not in (window, None), "the show in front")
        time.sleep(1)  # the toolkit takes a moment without the keyboard for none
        self.desktop.run("xdotool", "windowactivate", "--sync", str(window), "key", "space")
        self.assert_stays_open(PAIRING_WAIT)
        self.desktop.run("xdotool", "key", "space")
        self.assert_answer("accepted")

    # What answers

    def test_a_screen_reader_answers(self):
        for button, answer, wait in (("Pair", "accepted", PAIRING_WAIT), ("Ignore", "declined", 0)):
            self.ask()
            alert = self.reader.alert(self.question)
            time.sleep(wait)
            alert.buttons[button].press()
            self.assert_answer(answer)
            wait_until(lambda: not self.windows(), "the question's end")

    # How it looks

    def test_is_seen_whole_above_the_ink(self):
        self.stage.send({"t": "clear"}, *HATCH)
        self.stage.post("/api/show/start")
        self.addCleanup(self.stage.post, "/api/show/end")
        self.stage.wait_for(lambda screen: screen.is_like(20, HEIGHT // 2, INK), "ink")
        window, _ = self.ask()
        wait_until(lambda: self.desktop.active_window() == window, "the question in front")
        x, y, width, height = self.desktop.geometry(window)
        width, height = width - FRAME, height - FRAME

        def has_no_ink(screen):
            return all(bytes(INK) not in screen.row(line, x, x + width)
                       for line in range(y, y + height))

        screen = self.stage.wait_for(has_no_ink, "a question without ink on it")
        self.keep("ink")
        self.assertTrue(screen.is_like(20, HEIGHT // 2, INK))
        self.assertTrue(screen.is_like(WIDTH - 20, HEIGHT // 2, INK))
        self.assertFalse(screen.is_all(SHOW, (x, y, x + width, y + height)))
        time.sleep(1)  # the overlay has come to the front by then
        self.assertTrue(has_no_ink(Screenshot(self.desktop)))
        self.reader.alert(self.question).buttons["Ignore"].press()
        self.assert_answer("declined")
        self.show.ask("raise")  # the window that stands in for the icon may have the keyboard now
        self.stage.wait_for(
            lambda screen: all(screen.is_like(WIDTH // 2, 40 + 24 * number, INK)
                               for number in range(1, 30)), "the whole drawing once more")

    def test_has_no_buttons_that_hide_or_enlarge_it(self):
        window, _ = self.ask()
        wait_until(lambda: self.desktop.active_window() == window, "the question in front")
        allowed = wait_until(lambda: self.desktop.run(
            "xprop", "-id", str(window), "_NET_WM_ALLOWED_ACTIONS"), "what it allows")
        self.keep("frame")
        self.assertIn("_NET_WM_ACTION_CLOSE", allowed)
        if NAME in ("openbox", "bare"):
            self.skipTest("openbox leaves a dialog these buttons, whatever the program says")
        self.assertNotIn("_NET_WM_ACTION_MINIMIZE", allowed)
        self.assertNotIn("_NET_WM_ACTION_MAXIMIZE_HORZ", allowed)


if __name__ == "__main__":
    NAME = sys.argv.pop()
    PICTURES = os.path.abspath(sys.argv.pop())
    BUILD = os.path.abspath(sys.argv.pop())
    require_free_engine_port()
    unittest.main(verbosity=2)
