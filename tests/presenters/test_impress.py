"""LibreOffice Impress itself, on a private display. Skipped where it is not installed."""
from __future__ import annotations

import http.client
import json
import os
import signal
import threading
import time
import unittest

import decks
from impress_case import OfficeTest
from presenter_suite import SOON, PresenterSuite
from private_office import wait_until

WITHIN = 3.0  # a problem is told and forgotten


class OdpTest(OfficeTest, PresenterSuite):
    def test_previous_leaves_out_a_hidden_slide_that_was_shown_before(self):
        for first in (1, 3):
            with self.subTest(first=first):
                self.start_at(first)
                self.go("/api/goto", {"slide": self.hidden}, slide=self.hidden)
                self.go("/api/next", slide=self.hidden + 1)
                slides = {self.engine.post("/api/previous")["slide"]}
                slides.add(self.wait_for(slide=self.hidden - 1)["slide"])
                self.assertNotIn(self.hidden, slides)
                self.go("/api/next", slide=self.hidden + 1)
                self.go("/api/show/end", presenting=False)

    def test_next_leads_out_of_the_dark_to_the_end(self):
        self.start_at(self.count)
        self.go("/api/blank", {"on": True}, blank=True, atEnd=False)
        self.go("/api/next", slide=self.count, blank=False, atEnd=True)
        self.go("/api/next", slide=self.count, blank=False, atEnd=True)
        self.go("/api/previous", slide=self.count, blank=False, atEnd=False)


class FourToThreeTest(OfficeTest, PresenterSuite):
    size, aspect = (28, 21), 0.75


class PptxTest(OfficeTest, PresenterSuite):
    deck = "deck.pptx"


class TroubleTest(OfficeTest):
    """An office that is frozen, killed, started anew; documents that come and go."""

    def watch(self):
        """Polls ink and state; the list of what the state said, and how long answers took."""
        seen, times, stop = [], [], threading.Event()

        def poll():
            client = http.client.HTTPConnection("127.0.0.1", self.engine.port, timeout=SOON)
            while not stop.is_set():
                for path in ("/api/ink/events?since=0", "/api/state"):
                    before = time.monotonic()
                    client.request("GET", path)
                    answer = json.loads(client.getresponse().read())
                    times.append(time.monotonic() - before)
                seen.append((time.monotonic(), answer["problem"], answer["presenting"]))
                time.sleep(0.02)
            client.close()

        thread = threading.Thread(target=poll)
        thread.start()
        self.addCleanup(thread.join)
        self.addCleanup(stop.set)
        return seen, times

    def since(self, seen, start, holds):
        def found():
            return next((at - start for at, *what in list(seen) if at >= start and holds(*what)),
                        None)
        return wait_until(found, "it is told", 60)

    def test_frozen_killed_and_started_again(self):
        self.engine.post("/api/show/start")
        wait_until(lambda: self.engine.get("/api/state")["presenting"], "the show", SOON)
        seen, times = self.watch()
        process = self.office.pid()

        os.kill(process, signal.SIGSTOP)
        start = time.monotonic()
        told = self.since(seen, start, lambda problem, _: problem and "does not answer" in problem)
        self.assertLess(told, WITHIN)
        self.assertTrue(seen[-1][2], "ink stays over a show that is frozen")
        status, answer = self.engine.call("POST", "/api/next")
        self.assertEqual((status, "does not answer" in answer["error"]), (409, True))
        os.kill(process, signal.SIGCONT)
        start = time.monotonic()
        self.assertLess(self.since(seen, start, lambda problem, _: problem is None), WITHIN)

        self.office.kill_office()
        start = time.monotonic()
        told = self.since(seen, start, lambda problem, _: problem and "not running" in problem)
        self.assertLess(told, WITHIN)
        self.assertFalse(seen[-1][2])

        self.office.start(self.office.path(self.deck))
        self.reach()
        times.sort()
        self.assertLess(times[len(times) // 2], 0.05)
        self.assertLess(times[-1], 1.0)  # 50 ms on a machine with nothing else to do

    def close_document(self, name):
        self.office.key("ctrl+w")  # the office would ask whether to save what had changed
        wait_until(lambda: self.engine.get("/api/state")["deck"] != name, f"{name} is closed", SOON)

    def test_export_is_told_page_by_page_and_changes_nothing(self):
        many = self.office.path("many.odp")
        decks.write(many, decks.slides(60))
        with open(many, "rb") as file:
            written, files = file.read(), sorted(os.listdir(self.office.home))
        self.office.open(many)
        wait_until(lambda: self.engine.get("/api/state")["deck"] == "many.odp", "many slides")
        wait_until(lambda: not self.engine.get("/api/state")["progress"], "they are read")
        state = self.engine.get("/api/state")
        seen = self.export_states()
        self.assertEqual(seen[-1]["state"], "done", seen[-1])
        pages = [one["progress"]["done"] for one in seen
                 if one["progress"] and one["progress"]["task"] == "pages"]
        self.assertGreater(len(set(pages)), 3)
        self.assertEqual(pages, sorted(pages))
        response, data = self.engine.request("GET", "/api/export")
        self.assertIn('"many annotated.pdf"', response.headers["Content-Disposition"])
        self.assertEqual(data.count(b"/Type/Page/"), 60)
        after = self.engine.get("/api/state")
        self.assertEqual({**after, "export": None}, {**state, "export": None})
        with open(many, "rb") as file:
            self.assertEqual(file.read(), written)
        self.assertEqual(sorted(set(os.listdir(self.office.home)) - {".~lock.many.odp#"}), files)
        self.close_document("many.odp")

    def test_office_that_freezes_during_an_export(self):
        many = self.office.path("frozen.odp")
        decks.write(many, decks.slides(200))
        self.office.open(many)
        wait_until(lambda: self.engine.get("/api/state")["deck"] == "frozen.odp", "many slides")
        seen, times = self.watch()
        process = self.office.pid()
        self.engine.post("/api/export")
        wait_until(lambda: self.engine.get("/api/state")["export"]["progress"], "it is under way")
        os.kill(process, signal.SIGSTOP)
        start = time.monotonic()
        try:
            state = wait_until(lambda: (lambda now: now["state"] == "failed" and now)(
                self.engine.get("/api/state")["export"]), "it is given up", 30)
            self.assertLess(time.monotonic() - start, 10 + WITHIN)
            self.assertIn("does not answer", state["sentence"])
            self.assertIn("does not answer", self.engine.get("/api/state")["problem"])
            self.assertEqual(self.engine.call("GET", "/api/export"), (409, {"error": state["sentence"]}))
        finally:
            os.kill(process, signal.SIGCONT)
        wait_until(lambda: self.engine.get("/api/state")["problem"] is None, "it is back")
        self.assertEqual(self.export_states()[-1]["state"], "done")
        self.close_document("frozen.odp")
        times.sort()
        self.assertLess(times[len(times) // 2], 0.05)

    def choose(self, document, title):
        """A window that was opened may come to the front once more, and is driven then."""
        wait_until(lambda: self.engine.post("/api/document", {"document": document})["deck"] == title,
                   f"{title} is driven")

    def test_documents_come_and_go(self):
        first = self.engine.get("/api/documents")["document"]
        other = self.office.path("other.odp")
        decks.write(other, decks.slides(3))
        self.office.open(other)
        state = wait_until(lambda: (lambda now: now["deck"] == "other.odp" and now)(
            self.engine.get("/api/state")), "the new document is in front")
        self.assertEqual(state["count"], 3)
        self.choose(first, "deck.odp")
        self.choose(state["document"], "other.odp")
        self.office.key("ctrl+w")
        wait_until(lambda: self.engine.get("/api/state")["deck"] == "deck.odp", "the other is left")
        titles = [one["title"] for one in self.engine.get("/api/documents")["documents"]]
        self.assertNotIn("other.odp", titles)


if __name__ == "__main__":
    unittest.main()
