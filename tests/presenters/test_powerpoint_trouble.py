"""PowerPoint that hangs, ends, refuses or is not there; and scripts that are replaced."""
from __future__ import annotations

import time
import unittest
from unittest import mock

from powerpoint_case import PowerPointSteps, WithoutEngineTest, suite_deck
from presenter_suite import SOON
from private_office import wait_until
from private_powerpoint import is_alive
from torvane_engine.presenters.powerpoint import script
from torvane_engine.presenters.powerpoint.script import Script

WITHIN = 3.0  # a problem is told and forgotten
SENTENCES = {
    -1743: "may not be controlled: allow it in System Settings › Privacy & Security › Automation",
    -609: "connection to PowerPoint was lost", -1728: "No presentation is open in PowerPoint"}
BEFORE = {"front": None, "driven": None, "stepsOf": 0}


class TroubleTest(PowerPointSteps):
    def told(self, holds):
        """Seconds until the problem is as it should be; ink is answered at once all the time."""
        start = time.monotonic()
        while True:
            time.sleep(0.02)
            before = time.monotonic()
            self.engine.poll()
            self.slowest = max(self.slowest, time.monotonic() - before)
            if holds(self.state()["problem"]):
                return time.monotonic() - start
            self.assertLess(time.monotonic() - start, SOON)

    def setUp(self):
        self.slowest = 0.0
        self.wait_for(problem=None, deck="deck.pptx")
        self.addCleanup(self.powerpoint.set, running=True, hang=False, errors={}, decks=[suite_deck()])

    def test_hang_in_a_show_is_told_and_forgotten(self):
        self.start_at(2)
        self.powerpoint.set(hang=True)
        self.assertLess(self.told(lambda problem: problem and "does not answer" in problem), WITHIN)
        state = self.state()
        self.assertEqual((state["presenting"], state["slide"]), (True, 2), "ink stays over the show")
        status, answer = self.engine.call("POST", "/api/next")
        self.assertEqual((status, "does not answer" in answer["error"]), (409, True))
        self.powerpoint.set(hang=False)
        self.assertLess(self.told(lambda problem: problem is None), WITHIN)
        self.assertLess(self.slowest, 0.5)
        self.go("/api/next", slide=3)
        *ended, now = self.powerpoint.scripts()
        self.assertEqual([is_alive(process) for process in (*ended, now)], [False] * len(ended) + [True])

    def test_hang_in_an_action_ends_its_script(self):
        self.start_at(2)
        scripts = len(self.powerpoint.scripts())
        self.powerpoint.set(hang="goToNextSlide")
        self.engine.post("/api/next")
        wait_until(lambda: "does not answer" in (self.state()["problem"] or ""), "it is told", WITHIN)
        self.powerpoint.set(hang=False)
        self.wait_for(problem=None, slide=2)
        self.assertEqual(len(self.powerpoint.scripts()), scripts + 1)

    def test_errors_are_sentences_and_pass(self):
        for number, words in SENTENCES.items():
            with self.subTest(number):
                scripts = len(self.powerpoint.scripts())
                self.powerpoint.set(errors={str(number): "fullName"})
                self.assertLess(self.told(lambda problem: problem and words in problem), WITHIN)
                self.powerpoint.set(errors={})
                self.assertLess(self.told(lambda problem: problem is None), WITHIN)
                self.assertEqual(len(self.powerpoint.scripts()) > scripts, number == -609,
                                 "another PowerPoint is asked by another script")

    def test_powerpoint_that_ends_is_gone_and_is_never_started(self):
        self.start_at(2)
        self.powerpoint.set(running=False, show=None)
        self.assertLess(self.told(lambda problem: problem and "not running" in problem), WITHIN)
        self.assertFalse(self.state()["presenting"])
        mark, scripts = self.powerpoint.mark(), len(self.powerpoint.scripts())
        time.sleep(1.5)  # for more than one look
        self.assertEqual((self.powerpoint.events(mark), len(self.powerpoint.scripts())), ([], scripts))
        self.assertNotIn("launched", self.powerpoint.state())
        self.powerpoint.set(running=True)
        self.assertLess(self.told(lambda problem: problem is None), WITHIN)

    def test_action_that_powerpoint_does_not_do_is_refused_and_no_problem(self):
        self.start_at(2)
        for number, words in ((-50, "now"), (-1728, "has changed"), (-10006, "error -10006")):
            with self.subTest(number):
                self.powerpoint.set(errors={str(number): "goToNextSlide"})
                status, answer = self.engine.call("POST", "/api/next")
                self.assertEqual((status, words in answer["error"]), (409, True))
                self.assertEqual((self.state()["slide"], self.state()["problem"]), (2, None))
        self.powerpoint.set(errors={})
        self.go("/api/next", slide=3)

    def test_show_that_cannot_be_read_for_a_moment_is_still_a_show(self):
        self.start_at(2)
        self.powerpoint.set(errors={"-1728": "slideshowView"})
        time.sleep(0.3)
        state = self.state()
        self.assertEqual((state["presenting"], state["slide"], state["problem"]), (True, 2, None))
        self.powerpoint.set(errors={"-1743": "slideState"})
        self.told(lambda problem: problem and "may not be controlled" in problem)
        self.powerpoint.set(errors={})
        self.wait_for(problem=None)


class ReadingTest(PowerPointSteps):
    first_state = {"hang": "notesPage"}

    def test_titles_are_read_where_notes_hang(self):
        wait_until(lambda: self.engine.get("/api/slides")["slides"][7]["title"], "all are read", SOON)
        self.assertEqual([one["title"] for one in self.engine.get("/api/slides")["slides"][1:]],
                         self.titles[1:])
        self.assertEqual(len(self.powerpoint.scripts()), 2)
        self.go("/api/show/start", presenting=True, problem=None)
        self.powerpoint.set(hang=False)
        self.go("/api/show/end", presenting=False)
        wait_until(lambda: self.engine.get("/api/slides/7/notes")["notes"] == self.notes[6],
                   "they are read after the show", SOON)


class PermissionTest(WithoutEngineTest):
    def test_first_event_may_wait_for_the_user(self):
        self.open(suite_deck(), hang="presentations.length")
        powerpoint, engine = self.powerpoint, self.powerpoint.start_engine()
        wait_until(lambda: "macOS asks" in (engine.get("/api/state")["problem"] or ""), "it is told", WITHIN)
        time.sleep(1.3)  # another look
        self.assertIn("macOS asks", engine.get("/api/state")["problem"])
        self.assertEqual(len(powerpoint.scripts()), 1, "the question stays on the screen")
        powerpoint.set(hang=False)
        wait_until(lambda: engine.get("/api/state")["problem"] is None, "it is allowed", WITHIN)
        self.assertEqual(len(powerpoint.scripts()), 1)


class ScriptTest(WithoutEngineTest):
    """The script alone, with a clock of the test's."""

    def setUp(self):
        super().setUp()
        self.open(suite_deck())
        self.now = 1000.0
        self.script = Script(self.powerpoint.folder, lambda: self.now)
        self.addCleanup(self.script.end)

    def look(self):
        return self.script.look(before=BEFORE, details=False)

    def scripts(self):
        return len(self.powerpoint.scripts())

    def test_replaced_after_two_thousand_calls_between_two_looks(self):
        self.assertEqual(script.MAX_CALLS, 2000)
        with mock.patch.object(script, "MAX_CALLS", 20):
            for _ in range(18):
                self.look()
            for _ in range(5):
                self.script.ask(1.0, "hello")
            self.assertEqual(self.scripts(), 1)
            self.assertEqual(self.look()["driven"], self.look()["front"])
            self.assertEqual(self.scripts(), 2)
            for _ in range(30):
                self.look()
            self.assertEqual(self.scripts(), 3)
        self.assertEqual(sum(map(is_alive, self.powerpoint.scripts())), 1)

    def test_replaced_after_half_an_hour(self):
        self.look()
        self.now += 1799
        self.look()
        self.assertEqual(self.scripts(), 1)
        self.now += 2
        self.look()
        self.assertEqual(self.scripts(), 2)

    def test_leave_is_asked_for_once(self):
        self.look()
        self.script.end()
        mark = self.powerpoint.mark()
        self.look()
        self.assertNotIn("presentations.length", self.powerpoint.events(mark))

    def test_question_for_leave_ends_after_two_minutes(self):
        self.powerpoint.set(hang=True)
        for seconds in (0, 119, 2):
            self.now += seconds
            with self.assertRaisesRegex(Exception, "macOS asks"), \
                    mock.patch.object(script, "LOOK_SECONDS", 0.3):
                self.look()
        self.assertFalse(is_alive(self.powerpoint.scripts()[0]))


if __name__ == "__main__":
    unittest.main()
