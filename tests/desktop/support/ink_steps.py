"""The steps of scripts/play-scene in which an iPad draws over the viewer's running slide show."""

import json
import math
import os
import signal

from private_desktop import HEIGHT, WIDTH
from scene_basics import ask_engine, check

INK = (255, 59, 48)
BADGE = (10, 132, 255)
SLIDE = (0, (HEIGHT - WIDTH * 9 // 16) // 2, WIDTH, WIDTH * 9 // 16)  # x, y, width, height
FIGURE_POINTS = 101
PAPER, PAPER_AT = (251, 250, 247), (WIDTH - 20, HEIGHT // 2)  # of the slides
LASER_HALO = 3.6 * 0.011 * WIDTH  # its diameter


def on_screen(x, y):
    """The pixel where this fraction of the slide is shown."""
    return round(SLIDE[0] + x * SLIDE[2]), round(SLIDE[1] + y * SLIDE[3])


def hand_drawn_strokes():
    """A ring around one line of the sample deck's third slide, and a line under another."""
    turns = [-0.35 + 1.06 * i / 90 for i in range(91)]
    ring = [(0.270 + (0.19 + 0.01 * t) * math.cos(2 * math.pi * t),
             0.537 + (0.05 + 0.01 * t) * math.sin(2 * math.pi * t)) for t in turns]
    line = [(0.107 + 0.42 * i / 40, 0.460 + 0.002 * math.sin(i / 4)) for i in range(41)]
    return [ring, line]


class InkSteps:
    """Part of the scene: it uses the scene's desktop, its torvane-ipad and its pictures."""

    INK_STEPS = ("show", "strokes", "figure", "laser", "underlay", "next", "clear", "back", "end")

    def step_show(self):
        self.ipad("post", "/api/show/start")
        self.wait_for_slide(3)
        self.wait(lambda: self.colours("show", [PAPER_AT]) == [PAPER], "the slide")
        self.wait(self.overlay_is_there, "the overlay in the show's place")
        self.settled_picture("show")
        check(self.ink_on("show") == 0, "there is ink already")
        return "the viewer shows slide 3 on the whole screen, under an overlay that nothing is drawn on"

    def step_strokes(self):
        places = self.draw_strokes()
        self.settled_picture("ink")
        return f"two strokes of a file lie where they were drawn, by {places} looks at them"

    def draw_strokes(self):
        """Once they are seen; at how many places."""
        file = os.path.join(self.desktop.folder, "strokes")
        with open(file, "w", encoding="utf-8") as text:
            text.write("\n\n".join("\n".join(f"{x:.5f} {y:.5f}" for x, y in stroke)
                                   for stroke in hand_drawn_strokes()))
        self.ipad("draw", file, "--duration", "1")
        places = [place for stroke in hand_drawn_strokes() for place in stroke[::8]]
        self.wait_for_ink(places)
        return len(places)

    def step_figure(self):
        self.ipad("draw", "--figure", "star", "--duration", "0.5")
        star = [(event["x"], event["y"]) for event in self.engine_ink()[-FIGURE_POINTS:]]
        self.wait_for_ink(star[::10])
        self.settled_picture("figure")
        self.ipad("undo")
        self.wait_for_picture("figure-undone", "ink")
        return "a star appeared, and “undo” took it and nothing else"

    def step_laser(self):
        moving = self.start_ipad("laser", "--figure", "line", "--for", "20")
        left, top = self.wait(self.laser_dot, f"a dot of {LASER_HALO:.0f} pixels")
        x = (left + LASER_HALO / 2 - SLIDE[0]) / SLIDE[2]
        y = (top + LASER_HALO / 2 - SLIDE[1]) / SLIDE[3]
        check(abs(y - (0.75 - 0.5 * (x - 0.15) / 0.7)) < 0.01,
              f"the dot is beside its line, at {x:.3f}, {y:.3f}")
        moving.send_signal(signal.SIGINT)
        self.finish_ipad(moving)
        self.wait_for_picture("laser-faded", "ink")
        return "a dot moved along a line, and faded when it was let go"

    def step_underlay(self):
        picture = os.path.join(self.desktop.folder, "underlay.png")
        self.desktop.run(
            "convert", "-size", "640x360", "xc:none", "-fill", "#0a84ff",
            "-draw", "circle 585,120 585,150", "-fill", "#ffd60a60",
            "-draw", "roundrectangle 60,219 306,247 8,8", "PNG32:" + picture)
        self.ipad("post", "/api/ink/overlay", picture)
        badge = on_screen(585 / 640, 120 / 360)
        self.wait(lambda: self.colours("overlay-picture", [badge]) == [BADGE], "the picture")
        self.settled_picture("overlay-picture")
        self.wait_for_ink(hand_drawn_strokes()[0][::8])  # above the picture, and its own colour
        self.ipad("post", "/api/ink/overlay")
        self.wait_for_picture("overlay-picture-removed", "ink")
        return "a picture was shown over the slide and under the ink, and taken away"

    def step_next(self):
        self.ipad("post", "/api/next")
        self.wait_for_slide(4)
        self.wait(lambda: self.ink_on("next-slide") == 0, "a slide without ink")
        self.settled_picture("next-slide")
        return "the next slide has no ink"

    def step_clear(self):
        self.ipad("draw", "--figure", "circle", "--duration", "0.5")
        circle = [(event["x"], event["y"]) for event in self.engine_ink()]
        check(len(circle) == FIGURE_POINTS, f"{len(circle)} points are on this slide")
        self.wait_for_ink(circle[::10])
        self.settled_picture("next-slide-ink")
        self.ipad("clear")
        self.wait_for_picture("cleared", "next-slide")
        return "a circle of its own, until it was cleared"

    def step_back(self):
        self.ipad("post", "/api/previous")
        self.wait_for_slide(3)
        self.wait_for_picture("back", "ink")
        return "the slide before has its ink again, to the pixel"

    def step_end(self):
        self.ipad("post", "/api/show/end")
        self.wait(lambda: not self.overlay_is_there(), "an overlay that hides")
        self.wait(lambda: self.ink_on("show-ended") == 0, "a show without its overlay")
        self.wait(lambda: not self.state()["presenting"], "the end of the show")
        self.settled_picture("show-ended")
        strokes = json.loads(ask_engine("/api/state"))["strokes"]
        check(strokes == 2, f"the engine has {strokes} strokes")
        return "viewer and overlay have gone, and the engine keeps the ink"

    # The show and the overlay

    def state(self):
        return json.loads(ask_engine("/api/state"))

    def wait_for_slide(self, slide):
        self.wait(lambda: (self.state()["presenting"], self.state()["slide"]) == (True, slide),
                  f"a show at slide {slide}")

    def overlay_is_there(self):
        return (0, 0, WIDTH, HEIGHT) in self.helper_windows().values()

    def engine_ink(self):
        """The strokes' events of the slide that is shown."""
        events = json.loads(ask_engine("/api/ink/events?since=0"))["events"]
        return [event for event in events if event["t"] in ("begin", "pt")]

    # What is seen

    def colours(self, name, pixels):
        """A new picture of the screen, and the colours of some pixels of it."""
        self.desktop.screenshot(self.picture_path(name))
        asked = " ".join(f"%[fx:round(255*p{{{x},{y}}}.{channel})]"
                         for x, y in pixels for channel in "rgb")
        values = [int(value) for value in self.desktop.run(
            "convert", self.picture_path(name), "-format", asked, "info:").split()]
        return list(zip(values[::3], values[1::3], values[2::3]))

    def wait_for_ink(self, places):
        pixels = [on_screen(x, y) for x, y in places]
        self.wait(lambda: set(self.colours("ink-wanted", pixels)) == {INK},
                  f"ink at all of {pixels}")
        os.remove(self.picture_path("ink-wanted"))

    def ink_on(self, name):
        """How many pixels of the screen, kept as this picture, have the colour of ink."""
        self.desktop.screenshot(self.picture_path(name))
        share = self.desktop.run(
            "convert", self.picture_path(name), "-fill", "black", "+opaque", f"rgb{INK}",
            "-fill", "white", "-opaque", f"rgb{INK}", "-format", "%[fx:mean]", "info:")
        return round(float(share) * WIDTH * HEIGHT)

    def change_since(self, before, name):
        """x, y, width and height of where the screen differs from a picture; None when it does
        not."""
        self.desktop.screenshot(self.picture_path(name))
        box = self.desktop.run(
            "convert", self.picture_path(before), self.picture_path(name), "-compose", "difference",
            "-composite", "-bordercolor", "black", "-border", "1", "-format", "%[fx:maxima] %@",
            "info:").split()
        if float(box[0]) == 0:
            return None
        size, left, top = box[1].split("+")
        return (int(left) - 1, int(top) - 1, *map(int, size.split("x")))

    def laser_dot(self):
        """Where its left and top edges are; None as long as nothing has a dot's size."""
        box = self.change_since("ink", "laser")
        has_size = box and all(abs(size - LASER_HALO) < 4 for size in box[2:])
        return box[:2] if has_size else None

    def wait_for_picture(self, name, like):
        self.wait(lambda: self.change_since(like, name) is None, f"the screen as in {like}.png")
