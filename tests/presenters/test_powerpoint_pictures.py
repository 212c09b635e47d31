"""Pictures of PowerPoint's slides: from its PDF, which is late, in pieces, and may lack slides."""
from __future__ import annotations

import os
import tempfile
import time
import unittest
import zlib
from unittest import mock

from powerpoint_case import PowerPointSteps, WithoutEngineTest, long_deck, suite_deck
from presenter_suite import SOON
from private_office import wait_until
from private_powerpoint import is_alive
from torvane_engine.presenters.powerpoint import presenter
from torvane_engine.presenters.powerpoint.presenter import PowerPoint
from torvane_engine.presenters.presenter import NotYet, Refused

SAVE = "save.()"


def slide_in(png):
    """The number of the slide, which the stand-in draws as so many dark lines; and the size."""
    width, height = (int.from_bytes(png[at:at + 4], "big") for at in (16, 20))
    length = int.from_bytes(png[33:37], "big")
    rows = zlib.decompress(png[41:41 + length])
    return sum(rows[y * (width + 1) + 1] == 0 for y in range(height)), (width, height)


class PicturesTest(PowerPointSteps):
    printed_hidden = 0  # what is on the page of hidden slide 5

    def picture(self, number, width=320):
        response, data = self.engine.request("GET", f"/api/slides/{number}/picture?width={width}")
        self.assertEqual(response.status, 200)
        return slide_in(data)

    def test_each_slide_has_its_own_and_hidden_ones_an_empty_page(self):
        self.assertEqual([self.picture(number)[0] for number in range(1, 9)],
                         [1, 2, 3, 4, self.printed_hidden, 6, 7, 8])
        self.assertEqual(self.picture(8, 1280), (8, (1280, 720)))
        self.assertEqual(self.powerpoint.events().count(SAVE), 1)
        self.assertEqual(self.powerpoint.staged(), [], "nothing is left in PowerPoint's folder")

    def test_export_has_a_page_for_each_slide(self):
        self.engine.ink({"t": "begin", "id": 1, "x": 0.5, "y": 0.5}, {"t": "pt", "id": 1, "x": 1, "y": 1})
        self.engine.post("/api/export")
        done = wait_until(lambda: (lambda export: export["state"] in ("done", "failed") and export)(
            self.state()["export"]), "it is made", SOON)
        self.assertEqual((done["state"], done["sentence"]), ("done", None))
        response, pages = self.engine.request("GET", "/api/export")
        self.assertEqual((response.status, pages[:5]), (200, b"%PDF-"))
        self.assertIn(b"/Count 8", pages)


class PrintedHiddenTest(PicturesTest):
    first_state = {"printsHidden": True}
    printed_hidden = 5


class ChangesTest(PowerPointSteps):
    def tag(self, slide=1):
        response, _ = self.engine.request("GET", f"/api/slides/{slide}/picture?width=320")
        return response.status, response.headers["ETag"]

    def test_moved_slides_have_new_pictures_and_titles(self):
        first = self.tag(8)
        self.assertEqual(first[0], 200)
        mine = long_deck(7)
        mine["path"] = suite_deck()["path"]
        self.powerpoint.set(decks=[mine])
        self.addCleanup(self.powerpoint.set, decks=[suite_deck()])
        self.wait_for(count=7)
        wait_until(lambda: self.engine.get("/api/slides")["slides"][6]["title"] == "Slide 7", "titles", SOON)
        wait_until(lambda: self.tag(5)[1] not in (None, first[1]), "slide 5 is not hidden now", SOON)

    def test_pictures_are_not_begun_in_a_show(self):
        mine = long_deck(3, "new.pptx")
        self.powerpoint.set(decks=[mine], show={"deck": 0, "index": 1, "effect": 0, "from": 1, "to": 3,
                                                "state": "running"})
        self.wait_for(deck="new.pptx", presenting=True)
        mark = self.powerpoint.mark()
        self.assertEqual(self.tag()[0], 503)
        self.assertNotIn(SAVE, self.powerpoint.events(mark))
        self.go("/api/show/end", presenting=False)
        wait_until(lambda: self.tag()[0] == 200, "after the show", SOON)
        self.powerpoint.set(decks=[suite_deck()])
        self.wait_for(deck="deck.pptx")


class ExportTest(WithoutEngineTest):
    def setUp(self):
        super().setUp()
        self.open(suite_deck())
        self.presenter = PowerPoint()
        self.addCleanup(self.presenter.close)

    def export(self):
        """The PDF, how many pages there are, and what was told meanwhile."""
        told = []
        with tempfile.NamedTemporaryFile(suffix=".pdf") as file:
            count = self.presenter.export_pdf(self.presenter.look().document, file.name,
                                              lambda *pages: told.append(pages))
            return file.read(), count, told

    def test_pdf_has_a_page_for_each_slide(self):
        pages, count, told = self.export()
        self.assertEqual((pages.count(b"/Type /Page "), count), (8, 8))
        self.assertEqual(set(told), {(0, 8)})
        self.presenter.go_to(2)
        self.presenter.start()
        self.assertEqual(self.export(), (pages, 8, []), "what was made before is there in a show")
        self.presenter.end()
        self.assertEqual(self.powerpoint.events().count(SAVE), 1)

    def test_pdf_has_what_was_typed_since(self):
        self.export()
        self.powerpoint.set(decks=[{**suite_deck(), "saved": False}])
        with mock.patch.object(presenter, "DETAILS_SECONDS", 0):
            self.presenter.look()
            self.presenter.look()
        self.export()
        self.assertEqual(self.powerpoint.events().count(SAVE), 2)

    def test_none_is_made_in_a_show(self):
        self.presenter.look()
        self.presenter.start()
        document = self.presenter.look().document
        with self.assertRaisesRegex(Refused, "while a slide show runs"):
            self.presenter.export_pdf(document, "/nonexistent/file", lambda *_: None)
        self.assertNotIn(SAVE, self.powerpoint.events())

    def test_nothing_is_left_behind(self):
        document = self.presenter.look().document
        self.assertRaises(NotYet, self.presenter.picture, document, 1, 320)
        wait_until(self.powerpoint.staged, "it is being written", SOON)
        time.sleep(0.4)  # until PowerPoint has let go of it
        folder = self.presenter._folder
        self.presenter.close()
        self.assertEqual([is_alive(process) for process in self.powerpoint.scripts()], [False])
        self.assertEqual((self.powerpoint.staged(), os.path.exists(folder)), ([], False))
        leftover = os.path.join(self.powerpoint.folder, "Library/Containers/com.microsoft.Powerpoint",
                                "Data/tmp/torvane-of-a-killed-engine.pdf")
        with open(leftover, "w", encoding="utf-8"):
            pass
        self.presenter = PowerPoint()
        self.addCleanup(self.presenter.close)
        self.presenter.look()
        self.assertRaises(NotYet, self.presenter.picture, document, 1, 320)
        self.assertFalse(os.path.exists(leftover))


if __name__ == "__main__":
    unittest.main()
