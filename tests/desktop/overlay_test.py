#!/usr/bin/python3
"""The helper's ink over a full-screen show under one window manager.

usage: overlay_test.py BUILD_FOLDER PICTURES openbox|bare|scaled|xfwm4|metacity

"bare" is a desktop without a compositor; "scaled" one with more pixels than points.
"""

import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "support"))

from helper_program import require_free_engine_port  # noqa: E402
from ink_stage import INK, LINE, InkStage  # noqa: E402
from private_desktop import (  # noqa: E402
    HEIGHT, OPENBOX, PICOM, WIDTH, PrivateDesktop, end, skip_where_incomplete, wait_until)
from slide_show import COVER, SHOW, start_show  # noqa: E402

# Window manager, compositor, further environment of the helper
DESKTOPS = {
    "openbox": (OPENBOX, PICOM, {}),
    "bare": (OPENBOX, None, {}),
    "scaled": (OPENBOX, PICOM, {"QT_SCALE_FACTOR": "1.25"}),
    "xfwm4": (["xfwm4", "--compositor=on", "--vblank=off"], None, {}),
    "metacity": (["metacity", "--composite"], None, {}),
}
BUILD = PICTURES = NAME = None

# On 1280 x 800 the slide is 1280 x 720, 40 from the top; its lines are 6.4 wide.
SCREEN = (0, 0, WIDTH, HEIGHT)
MIDDLE = (100, 100, WIDTH - 100, HEIGHT - 100)
LINE_INSIDE = (256, 398, 1024, 402)
LINE_AND_EDGE = (252, 396, 1028, 404)
ON_LINE = (640, 400)
SECOND_LINE = [{"t": "begin", "id": 2, "x": 0.1, "y": 0.9}, {"t": "pt", "id": 2, "x": 0.3, "y": 0.9}]
ON_SECOND_LINE = (256, 688)


def only_on(*names):
    """For what does not depend on the window manager: one desktop of each kind is enough."""
    return lambda test: unittest.skipIf(sys.argv[-1] not in names, "tried elsewhere")(test)


class OverlayTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        manager, compositor, environment = DESKTOPS[NAME]
        cls.desktop = cls.enterClassContext(PrivateDesktop())
        cls.compositor = cls.desktop.start_windows(manager, compositor)
        cls.show = start_show(
            cls.desktop, os.path.join(BUILD, "tests", "desktop", "show_window"))
        cls.desktop.environment.update(environment)
        cls.stage = InkStage(cls.desktop, BUILD, PICTURES)

    def setUp(self):
        self.stage.send({"t": "clear"})
        self.stage.post("/api/show/start")

    def draw_line(self):
        self.stage.send(*LINE)
        return self.stage.wait_for(
            lambda screen: screen.is_all(INK, LINE_INSIDE), "ink over the show")

    def wait_for_line_alone(self):
        self.stage.wait_for(
            lambda screen: screen.is_all(INK, LINE_INSIDE)
            and screen.is_all_around(SHOW, LINE_AND_EDGE), "ink over the show")

    def wait_for_bare_show(self):
        self.stage.wait_for(lambda screen: screen.is_all(SHOW, SCREEN), "nothing but the show")

    def test_draws_nothing_but_the_ink_over_the_show(self):
        screen = self.draw_line()
        self.stage.keep(NAME)
        self.assertTrue(screen.is_all_around(SHOW, LINE_AND_EDGE))

    def test_leaves_clicks_keys_and_focus_to_the_show(self):
        focused = self.desktop.active_window()
        self.draw_line()
        self.desktop.run("xdotool", "mousemove", *map(str, ON_LINE), "click", "1", "key", "n")
        self.assertEqual(self.show.read_line(), "click 640 400")
        self.assertEqual(self.show.read_line(), "key n")
        self.assertEqual(self.desktop.active_window(), focused)

    @only_on("openbox", "bare", "xfwm4", "metacity")
    def test_comes_back_above_a_show_that_raises_itself(self):
        self.draw_line()
        self.show.ask("raise")
        self.stage.wait_for(lambda screen: screen.is_all(INK, LINE_INSIDE), "ink once more")

    @only_on("openbox", "bare", "xfwm4", "metacity")
    def test_comes_back_above_a_window_of_its_own_kind(self):
        self.draw_line()
        for _ in range(2):
            self.show.ask("cover")
            self.stage.wait_for(
                lambda screen: screen.is_all(INK, LINE_INSIDE)
                and screen.is_all_around(COVER, LINE_AND_EDGE, MIDDLE), "ink over that window")
            self.show.ask("uncover")
        self.wait_for_line_alone()

    @only_on("openbox", "bare")
    def test_takes_off_what_is_deleted(self):
        self.draw_line()
        self.stage.send(*SECOND_LINE, {"t": "del", "ids": [1]})
        screen = self.stage.wait_for_pixel(*ON_SECOND_LINE, INK, "the second line")
        self.assertTrue(screen.is_all(SHOW, LINE_INSIDE))
        self.stage.post("/api/ink/undo")
        self.wait_for_bare_show()

    @only_on("openbox", "bare", "xfwm4", "metacity")
    def test_is_there_while_the_show_runs(self):
        self.draw_line()
        self.stage.post("/api/show/end")
        self.stage.wait_for(lambda screen: not self.stage.overlay_window(), "the window's end")
        self.wait_for_bare_show()
        self.stage.post("/api/show/start")
        self.stage.wait_for(lambda screen: screen.is_all(INK, LINE_INSIDE), "ink once more")

    @only_on("openbox", "bare")
    def test_shows_the_laser_dot_until_it_has_faded(self):
        def is_dot(screen):
            self.stage.send({"t": "laser", "x": 0.25, "y": 0.75})
            return screen.is_like(320, 580, (244, 61, 48))

        self.stage.wait_for(is_dot, "the dot")
        self.stage.keep(NAME + "-laser")
        self.stage.send({"t": "laserend"})
        self.wait_for_bare_show()

    @only_on("bare", "scaled")
    def test_shows_a_picture_under_the_ink(self):
        file = os.path.join(self.desktop.folder, "picture.png")
        self.desktop.run("convert", "-size", "32x18", "xc:none", "-fill", "#005ac8",
                         "-draw", "rectangle 8,8 11,15", file)
        with open(file, "rb") as picture:
            self.stage.post("/api/ink/overlay", picture.read())
        self.draw_line()
        self.stage.wait_for_pixel(400, 600, (0, 90, 200), "the picture")
        self.stage.keep(NAME + "-picture")
        self.stage.wait_for_pixel(400, 400, INK, "ink over the picture")
        self.stage.post("/api/ink/overlay")
        self.stage.wait_for_pixel(400, 600, SHOW, "the show without the picture")

    @only_on("openbox")
    def test_follows_the_compositor_as_it_ends_and_begins(self):
        self.draw_line()
        end(self.compositor)
        self.wait_for_line_alone()
        type(self).compositor = self.desktop.start_compositor(PICOM)
        self.wait_for_line_alone()
        wait_until(lambda: "No window shape" in self.desktop.run(
            "xwininfo", "-shape", "-id", str(self.stage.overlay_window())), "a whole window")
        self.stage.send(*SECOND_LINE)
        self.stage.wait_for_pixel(*ON_SECOND_LINE, INK, "the second line")


if __name__ == "__main__":
    NAME = sys.argv.pop()
    PICTURES = os.path.abspath(sys.argv.pop())
    BUILD = os.path.abspath(sys.argv.pop())
    skip_where_incomplete(tools=[command[0] for command in DESKTOPS[NAME][:2] if command])
    require_free_engine_port()
    unittest.main(verbosity=2)
