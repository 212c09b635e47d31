"""LibreOffice Impress with files and shows of less usual kinds, and what is done at it."""
from __future__ import annotations

import time
import unittest

import decks
from impress_case import OfficeTest
from presenter_suite import SOON, PresenterSteps
from private_office import wait_until

WITHIN = 3.0  # a problem is told and forgotten


class DrivenTest(OfficeTest, PresenterSteps):
    def is_driven(self):
        """A show of the deck from its slide 2, with pages, effects, notes and a picture."""
        self.start_at(2)
        self.go("/api/next", slide=3, step=0, steps=3)
        self.go("/api/next", slide=3, step=1)
        self.assertEqual(self.engine.get("/api/slides/3/notes")["notes"], self.notes[2])
        response, data = self.engine.request("GET", "/api/slides/3/picture?width=320")
        self.assertEqual((response.status, data[:4], int.from_bytes(data[16:20], "big")),
                         (200, b"\x89PNG", 320))
        self.go("/api/goto", {"slide": 5}, slide=5)
        self.go("/api/next", slide=6)
        self.go("/api/previous", slide=4)
        self.go("/api/blank", {"on": True}, blank=True, slide=4)
        self.go("/api/blank", {"on": False}, blank=False, presenting=True)


class PasswordTest(DrivenTest):
    deck = "secret.odp"

    @classmethod
    def start_office(cls):
        cls.office.protect(cls.office.path("deck.odp"), cls.office.path(cls.deck), "secret")
        cls.office.start(cls.office.path(cls.deck))
        cls.office.answer("Password", "secret")

    def test_file_is_exported_as_it_is_open(self):
        self.assertEqual(self.export_states()[-1]["state"], "done")
        _, data = self.engine.request("GET", "/api/export")
        self.assertNotIn(b"/Encrypt", data)
        self.assertEqual(data.count(b"/Type/Page/"), 8)

    def test_file_is_driven(self):
        self.is_driven()


class ReadOnlyTest(DrivenTest):
    @classmethod
    def start_office(cls):
        cls.office.start("--view", cls.office.path(cls.deck))

    @classmethod
    def reach(cls):
        wait_until(lambda: cls.engine.get("/api/state")["deck"] == "deck.odp (read-only)", "Impress")

    def test_file_is_driven(self):
        self.is_driven()


class WindowedTest(DrivenTest):
    """A show that the editor's window has, instead of the screen."""

    @classmethod
    def start_office(cls):
        decks.write(cls.office.path(cls.deck), decks.slides(8), windowed=True)
        super().start_office()

    def test_show_is_driven(self):
        self.is_driven()
        self.assertEqual(self.office.windows("^Presenting"), [])


class AtTheComputerTest(DrivenTest):
    """What somebody does there."""

    def test_show_that_was_started_in_the_middle(self):
        self.go("/api/goto", {"slide": 3}, slide=3)
        self.addCleanup(self.go, "/api/goto", {"slide": 1}, slide=1)
        self.addCleanup(self.go, "/api/show/end", presenting=False)
        self.press("shift+F5")
        self.wait_for(presenting=True, slide=3, step=0)
        self.go("/api/previous", slide=2)
        self.go("/api/previous", slide=1)
        self.go("/api/goto", {"slide": 4}, slide=4)
        self.go("/api/next", slide=6)
        self.go("/api/goto", {"slide": 8}, slide=8)
        self.go("/api/next", slide=8, atEnd=True)

    def goes_on(self):
        """State and ink, for longer than a frozen office would take to be told of."""
        slowest, end = 0.0, time.monotonic() + 2.0
        while time.monotonic() < end:
            before = time.monotonic()
            self.assertIsNone(self.engine.get("/api/state")["problem"])
            self.engine.poll()
            slowest = max(slowest, time.monotonic() - before)
            time.sleep(0.02)
        self.assertLess(slowest, 1.0)

    def answer_nothing(self):
        if self.office.windows("^Save"):
            self.press("Escape", "^Save")
        wait_until(lambda: not self.office.windows("^Save"), "the question is gone", SOON)

    def test_office_that_asks_its_user_something_is_driven_on(self):
        self.press("ctrl+shift+s")
        wait_until(lambda: self.office.windows("^Save"), "the office asks where to save", SOON)
        self.addCleanup(self.answer_nothing)
        self.goes_on()
        self.go("/api/goto", {"slide": 3}, slide=3)
        self.assertTrue(self.office.windows("^Save"))
        self.start_at(2)
        self.go("/api/next", slide=3)
        self.goes_on()

    def shows_the_sample_deck(self):
        """In the office, which has nothing open, and not in the viewer."""
        self.go("/api/goto", {"slide": 3})
        self.engine.post("/api/show/start")
        self.wait_for(presenting=True, count=5, slide=3, problem=None)
        self.assertIn("sample.odp", self.state()["deck"])
        self.go("/api/next", slide=4)
        self.engine.post("/api/show/end")
        self.wait_for(presenting=False)
        self.press("ctrl+w", "^sample.odp")
        self.wait_for(problem="No presentation is open in LibreOffice: open one in Impress.")

    def test_last_document_is_closed_and_opened_again(self):
        self.press("ctrl+w")
        start = time.monotonic()
        self.wait_for(problem="No presentation is open in LibreOffice: open one in Impress.",
                      presenting=False)
        self.assertLess(time.monotonic() - start, WITHIN)
        documents = self.engine.get("/api/documents")["documents"]
        self.assertNotIn("deck.odp", [one["title"] for one in documents])
        self.shows_the_sample_deck()
        self.office.open(self.office.path(self.deck))
        wait_until(lambda: self.office.windows("^deck.odp - "), "the editor")
        start = time.monotonic()
        self.wait_for(deck="deck.odp", problem=None, slide=1)
        self.assertLess(time.monotonic() - start, WITHIN)


if __name__ == "__main__":
    unittest.main()
