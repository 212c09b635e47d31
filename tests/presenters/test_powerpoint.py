"""PowerPoint, with a stand-in for it and for osascript: what holds for every presenter, and which of
several presentations is driven."""
from __future__ import annotations

import time
import unittest

from powerpoint_case import PowerPointSetUp, PowerPointSteps, long_deck, suite_deck
from presenter_suite import SOON, PresenterSuite
from private_office import wait_until


class PowerPointTest(PowerPointSetUp, PresenterSuite):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        wait_until(lambda: cls.engine.get("/api/state")["progress"] is None, "all is read", SOON)

    def test_hidden_slide_is_shown_when_it_is_asked_for(self):
        """PowerPoint has no way to one in a running show: this is said, and nothing moves."""
        self.start_at(2)
        mark = self.powerpoint.mark()
        status, answer = self.engine.call("POST", "/api/goto", {"slide": self.hidden})
        if status == 409:
            self.assertIn("hidden", answer["error"])
        else:  # it took longer than answers wait
            self.assertEqual((status, answer["slide"]), (200, 2))
        self.assertNotIn("goTo", "".join(self.powerpoint.events(mark)))
        self.go("/api/show/end", presenting=False)
        self.go("/api/goto", {"slide": self.hidden}, slide=self.hidden)


class DocumentsTest(PowerPointSteps):
    @classmethod
    def decks(cls):
        return [suite_deck(), long_deck(3, "other.pptx")]

    def titles(self):
        return [one["title"] for one in self.engine.get("/api/documents")["documents"]]

    def test_documents_come_to_the_front_and_are_chosen(self):
        self.wait_for(deck="deck.pptx")
        answer = self.engine.get("/api/documents")
        ids = {one["title"]: one["id"] for one in answer["documents"]}
        self.assertEqual(list(ids)[:2], ["deck.pptx", "other.pptx"])
        self.powerpoint.set(front=1)
        self.assertEqual(self.wait_for(deck="other.pptx")["count"], 3)
        chosen = self.engine.post("/api/document", {"document": ids["deck.pptx"]})
        self.assertEqual((chosen["deck"], chosen["count"]), ("deck.pptx", 8))
        self.go("/api/show/start", presenting=True, deck="deck.pptx")
        self.addCleanup(self.go, "/api/show/end", presenting=False)
        status, answer = self.engine.call("POST", "/api/document", {"document": ids["other.pptx"]})
        self.assertEqual((status, "end its slide show" in answer["error"]), (409, True))
        for front in (0, 1):
            self.powerpoint.set(front=front)
            time.sleep(0.3)
            self.assertEqual(self.state()["deck"], "deck.pptx", "its show runs")
        self.powerpoint.set(front=0)
        documents = self.engine.get("/api/documents")["documents"]
        self.assertEqual([one["presenting"] for one in documents[:2]], [True, False])

    def test_closed_document_is_gone(self):
        self.powerpoint.set(front=0, decks=self.decks()[:1])
        self.addCleanup(self.powerpoint.set, decks=self.decks())
        wait_until(lambda: "other.pptx" not in self.titles(), "it is gone", SOON)
        self.powerpoint.set(decks=[])
        self.assertIn("No presentation is open in PowerPoint", wait_until(
            lambda: self.state()["problem"], "it is told", SOON))
        self.assertEqual(self.powerpoint.scripts(), self.powerpoint.scripts()[:1])


if __name__ == "__main__":
    unittest.main()
