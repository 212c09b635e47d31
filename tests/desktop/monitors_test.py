#!/usr/bin/python3
"""The helper's ink on two monitors goes where the show is, and its questions to the other one.

usage: monitors_test.py BUILD_FOLDER PICTURES
"""

import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "support"))

from private_desktop import (  # noqa: E402
    PrivateDesktop, end, skip_where_incomplete, wait_until)

skip_where_incomplete(("websockets", "nacl"), ("xrandr",))

from helper_program import require_free_engine_port  # noqa: E402
from ink_stage import INK, LINE, InkStage  # noqa: E402
from link_device import start_device  # noqa: E402
from slide_show import SHOW, start_show  # noqa: E402
from two_monitors import (  # noqa: E402
    NUMBER, OTHER, PRIMARY, line_and_edge, line_inside, middle, plug_in, plug_in_other, unplug_other)

BUILD = PICTURES = None
ALERT = "^Torvane P2P Helper$"


class MonitorsTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.desktop = cls.enterClassContext(PrivateDesktop())
        plug_in(cls.desktop)
        cls.desktop.start_windows()
        cls.stage = InkStage(cls.desktop, BUILD, PICTURES)
        cls.stage.send(*LINE)

    def setUp(self):
        self.stage.post("/api/show/end")
        wait_until(lambda: not self.stage.overlay_window(), "an overlay that is gone")

    def start_show(self, area):
        program = os.path.join(BUILD, "tests", "desktop", "show_window")
        show = start_show(self.desktop, program, NUMBER[area]).process
        self.addCleanup(end, show)
        return show

    def start_shows(self, *monitors):
        self.shows = [self.start_show(area) for area in monitors]
        self.stage.post("/api/show/start")

    def wait_for_line(self, area):
        return self.stage.wait_for(
            lambda screen: screen.is_all(INK, line_inside(area)), "ink on the monitor")

    def assert_only_on(self, area, screen):
        self.assertTrue(screen.is_all_around(SHOW, line_and_edge(area), area))
        elsewhere = PRIMARY if area == OTHER else OTHER
        self.assertFalse(screen.is_like(*middle(elsewhere), INK))

    def test_lies_over_the_show_left_of_and_above_the_primary(self):
        self.start_shows(OTHER)
        screen = self.wait_for_line(OTHER)
        self.stage.keep("other-monitor")
        self.assert_only_on(OTHER, screen)

    def test_lies_over_the_show_on_the_primary(self):
        self.start_shows(PRIMARY)
        self.assert_only_on(PRIMARY, self.wait_for_line(PRIMARY))

    def test_prefers_the_monitor_that_is_not_the_primary(self):
        self.start_shows(OTHER, PRIMARY)
        screen = self.wait_for_line(OTHER)
        self.stage.keep("two-shows")
        self.assert_only_on(OTHER, screen)

    def test_asks_about_a_new_device_where_the_show_is_not(self):
        for show, other in ((PRIMARY, OTHER), (OTHER, PRIMARY)):
            with self.subTest(show=show):
                self.start_shows(show)
                self.wait_for_line(show)
                name = f"iPad beside {NUMBER[show]}"
                device = start_device(self.desktop, name)
                self.addCleanup(end, device)
                window = wait_until(lambda: self.desktop.windows("--name", ALERT), "a question")[0]
                wait_until(lambda: self.is_on(other, window), "the question beside the show")
                self.stage.keep(f"question-beside-{NUMBER[show]}")
                self.assertEqual(self.desktop.log(name), "")

                def is_answered():
                    self.desktop.run("xdotool", "key", "Escape")
                    return device.poll() is not None

                wait_until(is_answered, "the answer")
                self.assertEqual(self.desktop.log(name), "declined\n")
                self.assertTrue(self.stage.wait_for(
                    lambda screen: screen.is_all(INK, line_inside(show)), "ink"))
                end(self.shows[0])

    def is_on(self, area, window):
        x, y, width, height = self.desktop.geometry(window)
        left, top, right, bottom = area
        return left <= x and top <= y and x + width <= right and y + height <= bottom

    def test_covers_the_monitor_with_the_focus_where_there_is_no_show(self):
        document = self.desktop.spawn("document", ["xev", "-geometry", "200x100+50+50"])
        self.addCleanup(end, document)
        wait_until(self.desktop.active_window, "a window with the focus")
        self.start_shows()
        self.wait_for_line(OTHER)

    def test_leaves_a_monitor_that_is_unplugged_and_comes_back(self):
        self.start_shows(OTHER)
        self.wait_for_line(OTHER)
        self.addCleanup(plug_in_other, self.desktop)
        unplug_other(self.desktop)
        self.wait_for_line(PRIMARY)
        self.stage.keep("unplugged")
        plug_in_other(self.desktop)
        end(self.shows[0])
        self.start_show(OTHER)
        self.wait_for_line(OTHER)


if __name__ == "__main__":
    PICTURES = os.path.abspath(sys.argv.pop())
    BUILD = os.path.abspath(sys.argv.pop())
    require_free_engine_port()
    unittest.main(verbosity=2)
