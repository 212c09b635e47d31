"""What a presenter's thread does and in which order, turn by turn under the test's clock."""
from __future__ import annotations

import tempfile
import threading
import time
import unittest
from unittest import mock

import engine_support  # noqa: F401  finds the engine
from fake_presenter import Clock, FakePresenter
from torvane_engine.presenters import presenter_thread, slide_reader
from torvane_engine.presenters.presenter import Absent, Document, Progress, Refused, Unavailable
from torvane_engine.presenters.presenter_thread import PresenterThread

DEADLINE = engine_support.DEADLINE


class TurnTest(unittest.TestCase):
    def setUp(self):
        self.clock, self.fake = Clock(), FakePresenter()
        self.thread = PresenterThread(self.fake, self.clock)
        self.log = []
        patch = mock.patch.object(presenter_thread, "log_error", self.log.append)
        patch.start()
        self.addCleanup(patch.stop)

    def settle(self):
        """Turns until there is nothing to do at this moment."""
        for _ in range(1000):
            if self.thread.turn() > self.clock.now:
                return
        self.fail("there is always something to do")

    def after(self, seconds):
        self.clock.now += seconds
        self.settle()
        return self.thread.snapshot

    def named(self, name):
        return [call for call in self.fake.calls if call[0] == name]

    def test_first_turn_knows_the_slide_and_its_title(self):
        self.thread.turn()
        snapshot = self.thread.snapshot
        self.assertEqual((snapshot.look, snapshot.page.title), (self.fake.now_shown, "d1 1 r1"))
        self.assertTrue(self.thread.first_look.is_set())

    def test_texts_are_read_once_and_then_small_pictures_with_progress(self):
        seen = []
        for _ in range(20):
            self.thread.turn()
            if self.thread.snapshot.progress not in seen:
                seen.append(self.thread.snapshot.progress)
        self.assertEqual(seen, [Progress("slides", 0, 3), Progress("slides", 1, 3),
                                Progress("slides", 2, 3), Progress("pictures", 0, 3),
                                Progress("pictures", 1, 3), Progress("pictures", 2, 3), None])
        self.assertEqual([page.title for page in self.thread.snapshot.pages],
                         ["d1 1 r1", "d1 2 r1", "d1 3 r1"])
        read = len(self.fake.calls)
        for _ in range(50):
            self.after(0.1)
        self.assertEqual({call[0] for call in self.fake.calls[read:]}, {"look"})

    def test_looks_ten_times_a_second_and_no_more(self):
        self.settle()
        before = len(self.named("look"))
        for _ in range(100):
            self.after(0.01)
        self.assertIn(len(self.named("look")) - before, (9, 10))

    def test_change_is_read_again_after_two_quiet_seconds_and_old_titles_stay(self):
        self.settle()
        for revision in (2, 3, 4):
            self.fake.set(revision=revision)
            self.assertEqual(self.after(1.0).pages[1].title, "d1 2 r1")
        self.assertEqual(self.after(0.9).pages[1].title, "d1 2 r1")
        self.assertEqual(self.after(1.2).pages[1].title, "d1 2 r4")
        self.assertIsNone(self.thread.snapshot.progress)
        self.assertEqual(len(self.named("picture")), 6)

    def test_picture_on_its_way_is_asked_for_again_and_holds_up_nothing(self):
        self.fake.pictures_take = 3
        self.settle()
        self.assertEqual([page.title for page in self.thread.snapshot.pages],
                         ["d1 1 r1", "d1 2 r1", "d1 3 r1"])
        self.assertEqual(self.thread.snapshot.progress, Progress("pictures", 0, 3))
        self.assertEqual(self.named("picture"), [("picture", "d1", 1, 320)])
        self.after(0.1)
        self.thread.submit("next")
        self.settle()
        self.assertEqual((self.thread.snapshot.look.slide, len(self.named("picture"))), (2, 1))
        for asked in (2, 3):
            self.after(slide_reader.NOT_YET_SECONDS)
            self.assertEqual(len(self.named("picture")), asked)
        self.assertIsNone(self.after(slide_reader.NOT_YET_SECONDS).progress)
        self.assertEqual([call[2] for call in self.named("picture")], [1, 1, 1, 1, 2, 3])

    def test_client_waits_for_a_picture_on_its_way(self):
        self.settle()
        self.fake.pictures_take = 2
        made = self.thread._reader.wish(2, 1280, "d1")
        self.settle()
        self.assertFalse(made.is_set())
        self.after(slide_reader.NOT_YET_SECONDS)
        self.assertFalse(made.is_set())
        self.after(slide_reader.NOT_YET_SECONDS)
        self.assertTrue(made.is_set())

    def test_action_tells_its_progress(self):
        self.settle()
        seen = []

        def jump():
            self.fake.tell(Progress("jump", 4, 9))
            seen.append((self.thread.snapshot.progress, self.thread.snapshot.look.slide))

        self.fake.before = jump
        self.thread.submit("go_to", 3)
        self.thread.turn()
        self.assertEqual(seen[0], (Progress("jump", 4, 9), 1))
        self.assertEqual((self.thread.snapshot.progress, self.thread.snapshot.look.slide), (None, 3))

    def test_change_in_the_middle_of_the_first_reading_hides_no_progress(self):
        for _ in range(2):
            self.thread.turn()
        self.fake.set(revision=2)
        self.assertEqual(self.after(1.0).progress, Progress("slides", 0, 3))
        self.assertIsNone(self.after(2.0).progress)

    def test_number_of_slides_may_change(self):
        self.settle()
        self.fake.set(count=5, revision=2)
        self.assertEqual(len(self.after(1.0).pages), 5)
        self.assertEqual(self.after(5.0).pages[4].title, "d1 5 r2")
        self.fake.set(count=1, revision=3)
        self.assertEqual(len(self.after(0.1).pages), 1)
        self.assertEqual([page.title for page in self.after(5.0).pages], ["d1 1 r3"])

    def test_action_is_done_before_everything_else_and_read_back(self):
        self.thread.turn()
        ticket = self.thread.submit("go_to", 3)
        self.thread.turn()
        ticket.wait(0)
        self.assertEqual((self.thread.snapshot.look.slide, self.thread.snapshot.page.title),
                         (3, "d1 3 r1"))

    def test_refusal_reaches_the_one_who_asked_and_nobody_else(self):
        self.settle()
        ticket = self.thread.submit("blank", True)
        self.settle()
        with self.assertRaisesRegex(Refused, "No slide show runs."):
            ticket.wait(0)
        self.assertEqual((self.thread.snapshot.problem, self.log), (None, []))

    def test_action_that_waited_too_long_is_not_done(self):
        self.settle()
        late = self.thread.submit("next")
        self.clock.now += presenter_thread.COMMAND_SECONDS + 0.1
        self.settle()
        self.assertRaises(Refused, late.wait, 0)
        self.assertEqual((self.named("next"), self.thread.snapshot.look.slide), ([], 1))

    def test_patient_action_is_done_late_and_its_result_is_kept(self):
        self.settle()
        self.fake.pdf = b"%PDF"
        with tempfile.TemporaryDirectory() as folder:
            late = self.thread.submit("export_pdf", "d1", folder + "/x", lambda *_: None,
                                      patience=30.0)
            self.clock.now += 29.0
            self.assertFalse(late.wait(0))
            self.settle()
            self.assertTrue(late.wait(0))
        self.assertEqual(late.result, 3)

    def test_queue_is_limited(self):
        self.settle()
        tickets = [self.thread.submit("next") for _ in range(presenter_thread.MAX_COMMANDS)]
        self.assertRaisesRegex(Refused, "Too many", self.thread.submit, "next")
        self.settle()
        self.assertEqual(len(self.named("next")), len(tickets))
        self.thread.submit("next")

    def test_unreachable_program_keeps_what_was_shown_and_is_logged_once(self):
        self.fake.set(presenting=True, slide=2)
        self.settle()
        self.fake.error = Unavailable("It does not answer.")
        for _ in range(50):
            self.after(0.1)
        snapshot = self.thread.snapshot
        self.assertEqual((snapshot.problem, snapshot.look.slide, snapshot.look.presenting,
                          snapshot.absent), ("It does not answer.", 2, True, False))
        self.assertRaisesRegex(Refused, "It does not answer.", self.thread.submit, "next")
        self.fake.error = None
        self.assertIsNone(self.after(1.0).problem)
        self.assertEqual(self.log, ["Fake: It does not answer.", "Fake: ready"])

    def test_absent_program_shows_nothing(self):
        self.fake.set(presenting=True)
        self.settle()
        self.fake.error = Absent("Open a presentation.")
        snapshot = self.after(0.1)
        self.assertEqual((snapshot.problem, snapshot.look.document, snapshot.look.presenting,
                          snapshot.absent), ("Open a presentation.", "", False, True))
        self.assertEqual(self.log, ["Fake: Open a presentation."])

    def test_program_that_is_absent_from_the_start_is_not_worth_a_line(self):
        self.fake.error = Absent("Open a presentation.")
        self.assertEqual(self.after(5.0).problem, "Open a presentation.")
        self.assertEqual(self.log, [])

    def test_fault_of_a_presenter_is_one_line_and_a_problem(self):
        self.settle()
        self.fake.error = KeyError("boom")
        snapshot = self.after(0.1)
        self.assertIn("its log says why", snapshot.problem)
        self.assertEqual(self.log[0], "Fake: KeyError('boom')")

    def test_program_that_goes_during_an_action_refuses_it(self):
        self.settle()
        self.fake.error = Absent("It has gone.")
        ticket = self.thread.submit("next")
        self.settle()
        with self.assertRaisesRegex(Refused, "It has gone."):
            ticket.wait(0)
        self.assertEqual(self.thread.snapshot.problem, "It has gone.")

    def test_nothing_is_read_for_later_within_a_second_of_a_step_in_a_show(self):
        self.fake.set(presenting=True)
        self.thread.turn()
        self.assertEqual(self.named("read_page"), [("read_page", "d1", 1)])
        for _ in range(9):
            self.after(0.1)
        self.assertEqual(len(self.named("read_page")), 1)
        self.after(0.2)
        self.assertEqual(len(self.named("read_page")), 4)

    def test_each_large_picture_waits_for_a_second_of_rest_in_a_show(self):
        self.settle()
        self.fake.set(presenting=True)
        self.after(0.1)
        for page in (2, 3):
            self.thread._reader.wish(page, 1280, "d1")
        small = self.thread._reader.wish(2, 320, "d1")
        self.after(0.9)
        self.assertTrue(small.is_set())
        self.assertNotIn(("picture", "d1", 2, 1280), self.fake.calls)
        self.after(0.2)
        self.assertIn(("picture", "d1", 2, 1280), self.fake.calls)
        self.assertNotIn(("picture", "d1", 3, 1280), self.fake.calls)
        self.after(1.1)
        self.assertIn(("picture", "d1", 3, 1280), self.fake.calls)

    def test_wishes_are_limited_and_end_with_the_program(self):
        self.settle()
        made = [self.thread._reader.wish(page, 1280, "d1")
                for page in range(slide_reader.MAX_WISHES)]
        self.assertRaises(Refused, self.thread._reader.wish, 999, 1280, "d1")
        self.fake.error = Unavailable("It hangs.")
        self.after(0.1)
        self.assertTrue(all(event.is_set() for event in made))

    def test_slide_that_goes_while_it_is_read_is_no_problem(self):
        self.fake.set(count=3)
        self.thread.turn()
        self.fake.now_shown = self.fake.now_shown._replace(count=1)
        snapshot = self.after(0.1)
        self.assertEqual((snapshot.problem, len(snapshot.pages), self.log), (None, 1, []))

    def test_document_that_is_shown_again_has_its_titles_at_once(self):
        self.settle()
        self.fake.set(document="d2", documents=(Document("d2", "Two"),))
        self.assertEqual(self.after(0.1).page.title, "d2 1 r1")
        self.fake.set(document="d1", documents=(Document("d1", "One"),))
        self.clock.now += 0.1
        self.thread.turn()
        self.assertEqual([page.title for page in self.thread.snapshot.pages],
                         ["d1 1 r1", "d1 2 r1", "d1 3 r1"])


class NewsPresenter(FakePresenter):
    poll_seconds = 1000.0

    def __init__(self):
        super().__init__()
        self.has_news = threading.Event()

    def rest(self, seconds, wake):
        had = self.has_news.wait(min(seconds, 0.01))
        self.has_news.clear()
        return had


class RunningThreadTest(unittest.TestCase):
    """The thread itself, with a presenter that hangs."""

    def setUp(self):
        self.fake, self.go_on = FakePresenter(), threading.Event()
        self.thread = PresenterThread(self.fake)
        self.thread.start()
        self.addCleanup(self.thread.stop)
        self.addCleanup(self.go_on.set)
        self.assertTrue(self.thread.first_look.wait(DEADLINE))

    def test_news_are_looked_at_at_once(self):
        fake = NewsPresenter()
        thread = PresenterThread(fake)
        thread.start()
        self.addCleanup(thread.stop)
        self.assertTrue(thread.first_look.wait(DEADLINE))
        fake.now_shown = fake.now_shown._replace(slide=2)
        fake.has_news.set()
        deadline = time.monotonic() + DEADLINE
        while thread.snapshot.look.slide != 2:
            self.assertLess(time.monotonic(), deadline)
            time.sleep(0.001)

    def test_picture_is_made_on_demand_in_the_next_width_and_kept(self):
        picture = self.thread.picture(2, 600)
        self.assertEqual(picture.data, b"\x89PNG d1 2 640 r1")
        self.assertIs(self.thread.picture(2, 640), picture)
        self.assertEqual(self.thread.picture(2, 9999).data, b"\x89PNG d1 2 1920 r1")

    def test_nobody_waits_for_a_presenter_that_hangs(self):
        hangs = threading.Event()

        def hang():
            hangs.set()
            self.go_on.wait(DEADLINE)

        self.fake.before = hang
        self.assertTrue(hangs.wait(DEADLINE))
        ticket = self.thread.submit("next")
        ticket.wait(0.01)  # no answer is no refusal
        self.assertEqual(self.thread.snapshot.look.slide, 1)
        with mock.patch.object(presenter_thread, "PICTURE_SECONDS", 0.01):
            self.assertIsNone(self.thread.picture(3, 1920))
        self.fake.before = None
        self.go_on.set()
        ticket.wait(DEADLINE)
        self.assertEqual(self.thread.snapshot.look.slide, 2)


if __name__ == "__main__":
    unittest.main()
