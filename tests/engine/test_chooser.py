"""Which presenter the engine's actions go to, and ink that follows."""
from __future__ import annotations

import unittest
from unittest import mock

from engine_support import begin
from fake_presenter import Clock, FakePresenter
from torvane_engine.engine import Engine
from torvane_engine.presenters import presenter_thread
from torvane_engine.presenters.chooser import Chooser
from torvane_engine.presenters.presenter import Absent, Document, Empty, Refused, Unavailable
from torvane_engine.presenters.presenter_thread import PresenterThread


class ChooserTest(unittest.TestCase):
    def setUp(self):
        patch = mock.patch.object(presenter_thread, "log_error")
        patch.start()
        self.addCleanup(patch.stop)
        self.clock = Clock()
        self.office, self.deck = FakePresenter("office"), FakePresenter("deck")
        self.deck.set(is_sample=True)
        self.threads = [PresenterThread(one, self.clock) for one in (self.office, self.deck)]
        self.chooser = Chooser(self.threads)
        self.engine = Engine(self.chooser)
        self.look()

    def look(self):
        self.clock.now += 2.0
        for thread in self.threads:
            while thread.turn() <= self.clock.now:
                pass

    def shown(self):
        self.look()
        state = self.engine.state()
        return state["document"], state["problem"]

    def act(self, function, *arguments):
        """An action whose answer is not waited for, as the threads have their turns afterwards."""
        function(*arguments)
        self.look()
        return self.engine.state()

    def test_first_with_a_presentation_is_driven(self):
        self.assertEqual(self.shown(), ("office", None))
        self.office.error = Absent("Open one.")
        self.assertEqual(self.shown(), ("deck", "Open one."))
        self.office.error = None
        self.assertEqual(self.shown(), ("office", None))

    def test_program_with_nothing_open_shows_the_sample_deck(self):
        self.office.error = Empty("Open one.")
        self.assertEqual(self.shown(), ("deck", "Open one."))
        self.deck.set(slide=2)
        self.look()
        with self.assertRaisesRegex(Refused, "Open one."):
            self.threads[0].submit("next")
        state = self.act(self.engine.start_show)
        self.assertIn(("start_sample", 2), self.office.calls)
        self.assertEqual((state["document"], state["slide"], state["presenting"]), ("office", 2, True))
        self.assertNotIn(("start",), self.deck.calls)

    def test_sample_deck_is_shown_without_a_program(self):
        self.office.error = Absent("Start it.")
        self.look()
        self.assertEqual(self.act(self.engine.start_show)["document"], "deck")
        self.assertIn(("start",), self.deck.calls)

    def test_presentation_of_the_users_is_no_sample_deck(self):
        self.office.error = Empty("Open one.")
        self.deck.set(is_sample=False)
        self.look()
        self.act(self.engine.start_show)
        self.assertIn(("start",), self.deck.calls)

    def test_running_show_of_the_sample_deck_stays_where_it_is(self):
        self.office.error = Empty("Open one.")
        self.deck.set(presenting=True)
        self.look()
        self.act(self.engine.start_show)
        self.assertNotIn("start_sample", [call[0] for call in self.office.calls])

    def test_running_show_comes_first(self):
        self.deck.set(presenting=True)
        self.assertEqual(self.shown(), ("deck", None))
        self.office.set(presenting=True)
        self.assertEqual(self.shown(), ("office", None))

    def test_problem_of_another_is_no_concern_of_a_running_show(self):
        self.office.error = Absent("Open one.")
        self.deck.set(presenting=True)
        self.assertEqual(self.shown(), ("deck", None))

    def test_problem_of_another_is_no_concern_of_a_presentation_of_the_users(self):
        self.office.error = Absent("Open one.")
        self.deck.set(is_sample=False)
        self.assertEqual(self.shown(), ("deck", None))

    def test_program_that_hangs_is_not_left(self):
        self.office.set(presenting=True)
        self.assertEqual(self.shown(), ("office", None))
        self.office.error = Unavailable("It hangs.")
        self.deck.set(presenting=True)
        self.assertEqual(self.shown(), ("office", "It hangs."))
        self.assertRaisesRegex(Refused, "It hangs.", self.engine.act, "next")
        self.office.error = Absent("It has gone.")
        self.assertEqual(self.shown(), ("deck", None))

    def test_program_that_was_never_reached_lets_others_be_driven(self):
        self.office.error = Absent("Open one.")
        self.assertEqual(self.shown(), ("deck", "Open one."))
        self.office.error = Unavailable("Install something.")
        self.assertEqual(self.shown(), ("deck", "Install something."))

    def test_without_any_there_is_a_problem_and_nothing_else(self):
        self.office.error, self.deck.error = Absent("Open one."), Absent("There is none.")
        self.assertEqual(self.shown(), (None, "Open one."))
        state = self.engine.state()
        self.assertEqual((state["deck"], state["slide"], state["count"], state["title"]),
                         ("", 0, 0, ""))
        self.assertFalse(self.engine.has_slide(1))
        self.assertRaisesRegex(Refused, "Open one.", self.engine.act, "start")

    def test_documents_of_all_can_be_chosen(self):
        self.office.set(documents=(Document("office", "A"), Document("o2", "B")))
        self.look()
        answer = self.engine.documents()
        self.assertEqual([one["id"] for one in answer["documents"]], ["office", "o2", "deck"])
        self.assertEqual(answer["document"], "office")
        self.assertEqual(self.act(self.engine.choose, "o2")["document"], "o2")
        self.assertEqual(self.act(self.engine.choose, "deck")["document"], "deck")
        self.assertRaisesRegex(Refused, "not open", self.engine.choose, "nowhere")

    def test_nothing_else_is_chosen_while_a_show_runs(self):
        self.office.set(presenting=True)
        self.look()
        self.assertRaisesRegex(Refused, "end its slide show", self.engine.choose, "deck")
        self.assertEqual(self.shown(), ("office", None))

    def test_ink_follows_the_slide_and_the_document(self):
        self.engine.add_ink([begin(1)])
        self.office.set(slide=3)
        self.look()
        self.assertEqual(self.engine.ink_since(1)["events"], [{"t": "clear"}])
        self.assertEqual(self.engine.add_ink([begin(2)])["strokes"], 1)
        self.deck.set(presenting=True, slide=3)
        self.look()
        self.assertEqual(self.engine.ink_since(0)["events"], [{"t": "clear"}])
        self.deck.set(presenting=False)
        self.office.set(slide=1)
        self.look()
        self.assertEqual(self.engine.ink_since(0)["events"], [{"t": "clear"}, begin(1)])


if __name__ == "__main__":
    unittest.main()
