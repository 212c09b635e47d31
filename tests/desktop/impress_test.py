#!/usr/bin/python3
"""A show of LibreOffice Impress, driven and drawn over through the helper and its engine.

usage: impress_test.py BUILD_FOLDER PICTURES

Skipped where Impress is not installed: scripts/install-deps office installs it.
"""

import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "support"))

from helper_program import require_free_engine_port  # noqa: E402
from impress_stage import (  # noqa: E402
    BACK, BOXES, NARROW, ImpressStage, SlideArea, is_near, missing)
from ink_stage import INK  # noqa: E402
from private_desktop import (  # noqa: E402
    HEIGHT, PATIENCE, SKIPPED, WIDTH, PrivateDesktop, skip_where_incomplete, wait_until)
from two_monitors import OTHER, PRIMARY, plug_in  # noqa: E402

BUILD = PICTURES = None
BLACK = (0, 0, 0)
# From left to right at a height, in parts of the slide: one in the middle, and the upper edge of the
# first box of slide 3.
MIDDLE = (0.2, 0.8, 0.5)
EDGE = (2 / 28, 6 / 28, 0.5)
PEN = 0.005  # torvane-ipad's, as a part of the slide's width


def is_line(screen, area, line):
    """Whether the area has ink along that line alone: left, right and y in pixels."""
    left, right, y = line
    pen = PEN * (area[2] - area[0]) / 2
    inked = screen.bounds(INK, area)
    return (inked is not None and is_near(inked, (left - pen, y - pen, right + pen, y + pen))
            and screen.is_all(INK, (left, y, right, y + 1)))


class OneMonitor(unittest.TestCase):
    """One office and one helper for all tests; a show ends with its test."""

    @classmethod
    def setUpClass(cls):
        desktop = cls.enterClassContext(PrivateDesktop())
        cls.stage = ImpressStage(desktop, BUILD, PICTURES)
        cls.stage.open_deck("deck.odp")

    def start_at(self, slide):
        """Where the show has its slides."""
        self.stage.ipad("goto", str(slide))
        self.addCleanup(self.stage.ipad, "end")
        self.assertIn(f"The slide show is running. Slide {slide} of 8", self.stage.ipad("start"))
        area = self.stage.slide_area()
        self.stage.wait_for_slide(area, slide)
        return area

    def wait_for_boxes(self, area, count):
        colours = [*BOXES[:count], *[BACK] * (len(BOXES) - count)]
        return self.stage.wait_for(lambda screen: area.boxes(screen) == colours, f"{count} boxes")

    def has_slides_notes_and_effects(self, kind):
        slides = [line[2:].split(maxsplit=1)[1] for line in self.stage.ipad("slides").splitlines()]
        self.assertEqual(slides, [f"Slide {n} für alle" + (" (hidden)" if n == 5 else "")
                                  for n in range(1, 9)])
        self.assertEqual(self.stage.ipad("notes", "3"), "Notes of slide 3: Größe & <Maß>.\n")
        area = self.start_at(3)
        self.wait_for_boxes(area, 0)
        for step in (1, 2, 3):
            self.assertIn(f"Slide 3 of 8, step {step} of 3", self.stage.ipad("next"))
            self.wait_for_boxes(area, step)
        self.stage.keep(f"impress-{kind}-slide-3")
        for slide in (4, 6):  # 5 is hidden
            self.assertIn(f"Slide {slide} of 8", self.stage.ipad("next"))
            self.stage.wait_for_slide(area, slide)

    def test_odp_has_its_slides_notes_and_effects(self):
        self.stage.open_deck("deck.odp")
        self.has_slides_notes_and_effects("odp")

    def test_pptx_has_its_slides_notes_and_effects(self):
        self.stage.make_pptx("deck.odp")
        self.stage.open_deck("deck.pptx")
        self.has_slides_notes_and_effects("pptx")

    def test_documents_are_listed_and_chosen(self):
        self.stage.open_deck("deck.odp")
        self.stage.open_deck("narrow.odp", NARROW)
        self.assertIn("> narrow.odp", self.stage.ipad("documents"))
        self.stage.ipad("documents", "deck.odp")
        self.assertIn("> deck.odp", self.stage.ipad("documents"))
        self.assertEqual(self.start_at(2), (0, 40, WIDTH, HEIGHT - 40))

    def test_dark_screen(self):
        area = self.start_at(2)
        self.assertEqual(self.stage.ipad("black", "on"), "The screen is dark.\n")
        self.stage.wait_for(lambda screen: screen.is_all(BLACK, area), "a dark screen")
        self.assertIn("Slide 2 of 8", self.stage.ipad("black", "off"))
        self.stage.wait_for_slide(area, 2)

    def wait_for_line(self, area, line):
        return self.stage.wait_for(lambda screen: is_line(screen, area, area.line(*line)),
                                   "ink along the line alone")

    def is_exactly_inked(self, kind, place):
        area = self.start_at(3)
        self.assertEqual(area, place)
        self.stage.ipad("next")
        box = self.wait_for_boxes(area, 1).bounds(BOXES[0], area)
        self.stage.draw(*EDGE)
        # Where Impress has painted the edge, whatever is known of its window.
        edge = (box[0], area.line(*EDGE)[1], box[1])
        self.stage.wait_for(lambda screen: is_line(screen, area, edge), "ink over the box's edge")
        self.stage.keep(f"impress-{kind}-edge")
        self.stage.ipad("goto", "2")
        self.stage.wait_for_slide(area, 2)
        self.stage.draw(*MIDDLE)
        self.assertTrue(self.wait_for_line(area, MIDDLE).is_all_around(BLACK, area))
        self.stage.keep(f"impress-{kind}-line")
        self.stage.ipad("clear")
        self.stage.ipad("goto", "3")
        self.wait_for_line(area, EDGE)
        self.stage.ipad("clear")
        self.stage.wait_for(lambda screen: not screen.bounds(INK, area), "no ink")

    def test_ink_lies_exactly_over_wide_slides(self):
        self.stage.open_deck("deck.odp")
        self.is_exactly_inked("wide", (0, 40, WIDTH, HEIGHT - 40))

    def test_ink_lies_exactly_over_narrow_slides(self):
        self.stage.open_deck("narrow.odp", NARROW)
        self.is_exactly_inked("narrow", (107, 0, WIDTH - 107, HEIGHT))

    def test_pdf_waits_for_the_end_of_the_show_and_has_the_ink(self):
        self.stage.open_deck("deck.odp")
        self.start_at(4)
        self.stage.ipad("goto", "5")
        self.stage.draw(*MIDDLE)
        file = self.stage.path("annotated.pdf")
        exporting = self.stage.desktop.spawn("export", [self.stage.program, "export", file])
        wait_until(lambda: self.stage.state()["export"]["state"] == "waiting", "the export waits")
        self.stage.ipad("clear")  # does not matter: the ink is that of the end
        self.stage.draw(*EDGE)
        self.stage.ipad("end")
        self.assertEqual(exporting.wait(PATIENCE), 0, self.stage.desktop.log("export"))
        page = SlideArea((0, 0, WIDTH, 720))
        for number in (1, 4, 5, 6, 8):
            picture = self.stage.page(file, number)
            self.assertTrue(page.shows(picture, number), number)
            if number == 5:
                self.assertTrue(is_line(picture, page, page.line(*EDGE)))
            else:
                self.assertIsNone(picture.bounds(INK, page))
        pages = self.stage.desktop.run("pdfinfo", file).partition("Pages:")[2].split()[0]
        self.assertEqual(pages, "8")

    def test_preview_is_the_slide_with_all_its_boxes(self):
        self.stage.open_deck("deck.odp")
        file = self.stage.path("preview.png")
        for slide in (3, 5):
            self.stage.ipad("preview", str(slide), file)
            picture = self.stage.picture(file)
            area = SlideArea((0, 0, WIDTH, 720))
            self.assertTrue(area.shows(picture, slide))
            self.assertEqual(area.boxes(picture), list(BOXES) if slide == 3 else [BACK] * 3)


class TwoMonitors(unittest.TestCase):
    def test_slides_are_driven_and_inked_beside_the_presenters_notes(self):
        desktop = self.enterContext(PrivateDesktop())
        plug_in(desktop)
        stage = ImpressStage(desktop, BUILD, PICTURES, toolkit="gen")
        stage.open_deck("deck.odp")
        stage.ipad("goto", "2")
        stage.ipad("start")
        area = SlideArea(OTHER)  # of the same shape as the slides
        stage.wait_for_slide(area, 2)
        stage.draw(*MIDDLE)
        screen = stage.wait_for(lambda screen: is_line(screen, area, area.line(*MIDDLE)), "ink")
        stage.keep("impress-two-monitors")
        self.assertIsNone(screen.bounds(INK, PRIMARY))
        self.assertEqual(len(desktop.windows("--name", "deck")), 3)  # editor, slides, notes
        for command, slide in ((["goto", "4"], 4), (["next"], 6), (["previous"], 4),
                               (["goto", "5"], 5), (["previous"], 4)):
            self.assertIn(f"Slide {slide} of 8", stage.ipad(*command))
            stage.wait_for_slide(area, slide)
        stage.ipad("end")
        wait_until(lambda: len(desktop.windows("--name", "deck")) == 1, "the end of both windows")


if __name__ == "__main__":
    PICTURES = os.path.abspath(sys.argv.pop())
    BUILD = os.path.abspath(sys.argv.pop())
    skip_where_incomplete(tools=["xrandr", "pdftoppm", "pdfinfo"])
    if missing():
        print("skipped, because this is missing:", missing())
        print("scripts/install-deps office installs it.")
        raise SystemExit(SKIPPED)
    require_free_engine_port()
    unittest.main(verbosity=2)
