"""The parts of PowerPoint's presenter, with a script of the test's and a clock that it moves."""
from __future__ import annotations

import os
import tempfile
import unittest
from unittest import mock

import engine_support  # noqa: F401  finds the engine
from fake_presenter import Clock
from torvane_engine import process
from torvane_engine.presenters.powerpoint import staging
from torvane_engine.presenters.powerpoint.changes import QUIET_SECONDS, Changes
from torvane_engine.presenters.powerpoint.presenter import PowerPoint, identity, plain
from torvane_engine.presenters.powerpoint.presses import Presses
from torvane_engine.presenters.powerpoint.problems import problem_of
from torvane_engine.presenters.powerpoint.script import Silence
from torvane_engine.presenters.powerpoint.staging import Pdf, Staging
from torvane_engine.presenters.presenter import (Absent, Document, NotYet, Page, Refused,
                                                 Unavailable)

PDF = b"%PDF-1.4\n" + b"x" * 3000 + b"\n%%EOF\n"
DETAILS = {"names": ["A.pptx", "B.pptx"], "slides": [256, 257, 258], "saved": True, "width": 4,
           "height": 3}


class FakeScript:
    def __init__(self):
        self.asked, self.seen, self.error = [], {}, None
        self.answers = {"save": {"count": 3, "hidden": []}}

    def ask(self, seconds, action, report=None, **arguments):
        self.asked.append((action, arguments))
        if self.error:
            raise self.error
        return self.answers.get(action)

    def look(self, **arguments):
        self.asked.append(("look", arguments))
        return dict(self.seen)

    def end(self):
        self.asked.append(("ended", {}))

    def count(self, action):
        return sum(one == action for one, _ in self.asked)


class StagingTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder, self.script, self.clock = folder.name, FakeScript(), Clock()
        container = os.path.join(folder.name, "container")
        patch = mock.patch.object(staging, "CONTAINER", container)
        patch.start()
        self.addCleanup(patch.stop)
        self.staging = Staging(self.script, folder.name, self.clock)

    def after(self, seconds, revision=1, showing=False, document="/a.pptx"):
        """The pages' file name, or why there is none."""
        self.clock.now += seconds
        try:
            return self.staging.pdf(document, revision, showing).path
        except (NotYet, Refused) as error:
            return type(error)

    def write(self, data, mode="wb"):
        with open([given for action, given in self.script.asked if action == "save"][-1]["path"],
                  mode) as file:
            file.write(data)

    def whole(self, **more):
        self.assertIs(self.after(0, **more), NotYet)
        self.write(PDF)
        self.assertIs(self.after(0.3, **more), NotYet)
        return self.after(1.0, **more)

    def test_whole_when_it_ends_well_and_stands_still(self):
        self.assertIs(self.after(0), NotYet)
        self.assertIs(self.after(5), NotYet)  # nothing yet
        self.write(PDF[:1500])
        for seconds in (0.1, 1.5, 3.0):  # still, but without an end
            self.assertIs(self.after(seconds), NotYet)
        self.write(PDF[1500:], "ab")
        self.assertIs(self.after(0.9), NotYet)
        self.assertIs(self.after(0.9), NotYet)
        path = self.after(0.2)
        with open(path, "rb") as file:
            self.assertEqual(file.read(), PDF)
        self.assertEqual(os.path.dirname(path), self.folder)
        self.assertEqual(self.script.asked[-1],
                         ("complete", {"path": path, "count": 3, "hidden": []}))

    def test_asked_for_once_in_a_revision(self):
        path = self.whole()
        self.assertEqual([self.after(100), self.after(100)], [path, path])
        self.assertEqual(self.script.count("save"), 1)
        new = self.whole(revision=2)
        self.assertNotEqual(new, path)
        self.assertEqual(os.listdir(self.folder).count(os.path.basename(path)), 0)

    def test_changed_right_after_it_was_made(self):
        self.whole()
        self.assertIsInstance(self.whole(revision=2), str)

    def test_what_was_made_before_is_used_in_a_show(self):
        self.assertIs(self.after(0, showing=True), Refused)
        self.assertEqual(self.script.asked, [])
        path = self.whole()
        self.assertEqual(self.after(0, revision=9, showing=True), path)
        self.assertEqual(self.script.count("save"), 1)

    def test_never_written(self):
        self.assertIs(self.after(0), NotYet)
        self.assertIs(self.after(staging.WRITE_SECONDS), Refused)
        self.assertIs(self.after(staging.PAUSE_SECONDS - 1), Refused)
        self.assertEqual(self.script.count("save"), 1)
        self.assertIs(self.after(1), NotYet)
        self.assertEqual(self.script.count("save"), 2)

    def test_powerpoint_that_hangs_over_it_is_left_alone_for_a_minute(self):
        self.script.error = Unavailable("does not answer")
        self.assertRaises(Unavailable, self.after, 0)
        self.assertIs(self.after(59), Refused)
        self.assertRaises(Unavailable, self.after, 1)

    def test_one_at_a_time(self):
        self.assertIs(self.after(0), NotYet)
        self.assertIs(self.after(0, document="/b.pptx"), NotYet)
        self.assertEqual(self.script.count("save"), 1)
        self.write(PDF)
        self.after(0.1, document="/b.pptx")
        self.assertIs(self.after(1, document="/b.pptx"), NotYet)  # takes over the first
        self.assertEqual(self.script.count("save"), 2)
        self.assertIsInstance(self.after(0), str)

    def test_those_of_few_documents_are_kept(self):
        paths = [self.whole(document=f"/{number}.pptx") for number in range(staging.MAX_PDFS + 2)]
        self.assertEqual([os.path.exists(path) for path in paths],
                         [False] * 2 + [True] * staging.MAX_PDFS)

    def test_pages_that_do_not_fit_are_refused(self):
        self.assertIs(self.after(0), NotYet)
        self.write(PDF)
        self.after(0.1)
        self.script.error = Refused("cannot be read")
        self.assertIs(self.after(1), Refused)
        self.assertEqual(os.listdir(self.folder), ["container"])
        self.script.error = None
        self.assertIs(self.after(1), Refused)  # for a minute


class PressesTest(unittest.TestCase):
    def setUp(self):
        self.presses = Presses()
        self.presses.seen(3, 2)

    def shown(self):
        return self.presses.slide, self.presses.step, self.presses.steps

    def test_presses_on_a_slide(self):
        self.presses.moved({"from": 3, "slide": 3}, 1)
        self.assertEqual((self.shown(), self.presses.effects_left), ((3, 1, 2), True))
        self.presses.moved({"from": 3, "slide": 3}, 1)
        self.assertFalse(self.presses.effects_left)
        for _ in range(4):
            self.presses.moved({"from": 3, "slide": 3, "played": True}, -1)
        self.assertEqual(self.shown(), (3, 0, 2))

    def test_more_presses_than_effects_were_counted(self):
        for _ in range(3):
            self.presses.moved({"from": 3, "slide": 3}, 1)
        self.presses.seen(3, None)
        self.assertEqual(self.shown(), (3, 3, 3))

    def test_another_slide(self):
        self.presses.moved({"from": 3, "slide": 4}, 1)
        self.presses.seen(4, 5)
        self.assertEqual(self.shown(), (4, 0, 5))
        self.presses.moved({"from": 4, "slide": 3, "played": True}, -1)
        self.presses.seen(3, 2)
        self.assertEqual(self.shown(), (3, 2, 2))
        self.presses.seen(2, 1)  # at the computer
        self.assertEqual(self.shown(), (2, 0, 1))

    def test_number_of_effects_that_makes_no_sense(self):
        self.presses.seen(4, -1)
        self.assertEqual(self.shown(), (4, 0, 0))


class ChangesTest(unittest.TestCase):
    def setUp(self):
        self.changes = Changes()
        self.look(0)

    def look(self, now, showing=False, **details):
        self.changes.seen({**DETAILS, **details}, showing, now)
        return self.changes.revision

    def test_measures(self):
        self.assertEqual((self.changes.count, self.changes.aspect, self.changes.revision), (3, 0.75, 0))

    def test_slides_that_come_go_or_move(self):
        self.assertEqual([self.look(1, slides=[256, 258]), self.look(2, slides=[258, 256]),
                          self.look(3, slides=[258, 256], showing=True), self.look(4)], [1, 2, 2, 3])

    def test_saved_after_typing(self):
        self.assertEqual([self.look(1, saved=False), self.look(2), self.look(3)], [0, 1, 1])

    def test_saved_all_the_time_counts_once_a_minute(self):
        seen = {self.look(second, saved=bool(second % 2)) for second in range(1, 60)}
        self.assertEqual(seen, {0, 1})
        self.assertEqual(self.look(1 + QUIET_SECONDS + 2), 2)

    def test_saved_after_slides_moved_counts_a_minute_later(self):
        self.look(1, slides=[1], saved=False)
        self.assertEqual([self.look(2, slides=[1]), self.look(1 + QUIET_SECONDS, slides=[1])], [1, 2])

    def test_edited_until_it_is_saved_and_read(self):
        seen = []
        for details in ({"saved": False}, {"saved": True}):
            self.look(len(seen) + 1, showing=True, **details)
            seen.append(self.changes.edited)
        self.look(4)
        self.assertEqual((seen, self.changes.edited), ([True, True], False))

    def test_saved_in_a_show_counts_after_it(self):
        self.look(1, saved=False)
        self.assertEqual([self.look(2, showing=True), self.look(3)], [0, 1])


class PresenterTest(unittest.TestCase):
    def setUp(self):
        self.script, self.clock = FakeScript(), Clock()
        self.presenter = PowerPoint(self.script, self.clock)
        self.addCleanup(self.presenter.close)

    def look(self, **seen):
        self.script.seen = {"open": ["/x/A.pptx", "/x/B.pptx"], "front": "/x/A.pptx",
                            "driven": "/x/A.pptx", "presenting": False, "slide": 2, **seen}
        return self.presenter.look()

    def test_look(self):
        look = self.look(details=DETAILS)
        self.assertEqual(look.documents, (Document(identity("/x/A.pptx"), "A.pptx"),
                                          Document(identity("/x/B.pptx"), "B.pptx")))
        self.assertEqual((look.document, look.slide, look.count, look.aspect, look.presenting),
                         (identity("/x/A.pptx"), 2, 3, 0.75, False))
        self.assertNotIn("/", look.document)

    def test_asks_for_details_now_and_then_and_less_often_without_a_show(self):
        self.look(details=DETAILS)
        self.assertEqual(self.presenter.poll_seconds, 0.2)
        self.look(presenting=True, state="running", steps=0)
        self.assertEqual(self.presenter.poll_seconds, 0.1)
        self.clock.now += 2
        self.look(details=DETAILS)
        self.assertEqual([given["details"] for _, given in self.script.asked], [True, False, True])

    def test_states_of_the_screen(self):
        self.look(details=DETAILS)
        found = [self.look(presenting=True, state=state, slide=slide, steps=1) for state, slide in (
            ("running", 3), ("black", 3), ("paused", 3), ("running", 3), ("paused", 3), ("white", 3),
            ("done", 0))]
        self.assertEqual([look.blank for look in found],
                         [False, True, True, False, False, True, False])
        self.assertEqual([(look.slide, look.step, look.at_end) for look in found[-2:]],
                         [(3, 0, False), (3, 1, True)])
        look = self.look(slide=3)
        self.assertEqual((look.step, look.steps, look.at_end, look.blank), (0, 0, False, False))

    def show_and_end(self):
        """Revisions before, in and after a show."""
        return [self.look(details=DETAILS).revision,
                self.look(presenting=True, state="running", steps=0).revision, self.look().revision]

    def test_what_could_not_be_made_in_a_show_is_read_after_it(self):
        self.assertEqual(self.show_and_end(), [0, 0, 1])
        with mock.patch.object(Staging, "has", return_value=True):
            self.assertEqual(self.show_and_end(), [1, 1, 1])
            self.script.error = Silence("does not answer")
            self.assertRaises(Silence, self.presenter.read_page, identity("/x/A.pptx"), 1)
            self.assertEqual(self.show_and_end(), [1, 1, 2])

    def test_reading_that_hangs_is_tried_without_notes_and_then_no_more(self):
        self.look(details=DETAILS)
        self.script.error = Silence("does not answer")
        document = identity("/x/A.pptx")
        for page in (1, 2):
            self.assertRaises(Silence, self.presenter.read_page, document, page)
        self.assertEqual(self.presenter.read_page(document, 3), Page())
        self.assertEqual([given["notes"] for action, given in self.script.asked if action == "read"],
                         [True, False])

    def test_picture_is_read_and_removed(self):
        self.look(details=DETAILS)
        seen = []

        def draw(_, action, **given):
            seen.append((action, given["page"], given["width"], given["to"]))
            with open(given["to"], "wb") as file:
                file.write(b"\x89PNG")

        pdf = Pdf("/a.pdf", 0, 3)
        with mock.patch.object(Staging, "pdf", return_value=pdf), \
                mock.patch.object(self.script, "ask", draw):
            self.assertEqual(self.presenter.picture(identity("/x/A.pptx"), 2, 640), b"\x89PNG")
            self.assertRaises(Refused, self.presenter.picture, identity("/x/A.pptx"), 4, 640)
        self.assertEqual([one[:3] for one in seen], [("draw", 2, 640)])
        self.assertFalse(os.path.exists(seen[0][3]))

    def test_no_presentation(self):
        with self.assertRaisesRegex(Absent, "No presentation is open in PowerPoint"):
            self.look(open=[])

    def test_texts_have_usual_line_ends(self):
        self.look(details=DETAILS)
        self.script.answers["read"] = {"title": "A\vB", "notes": "1\r2\r\n3\ud800", "hidden": True}
        self.assertEqual(self.presenter.read_page(identity("/x/A.pptx"), 1),
                         Page("A\nB", "1\n2\n3?", True))
        self.assertEqual(plain(""), "")

    def test_document_that_is_not_open(self):
        self.look(details=DETAILS)
        for call in (lambda: self.presenter.choose("zz"), lambda: self.presenter.read_page("zz", 1),
                     lambda: self.presenter.picture("zz", 1, 320)):
            self.assertRaisesRegex(Refused, "not open", call)


class ProblemsTest(unittest.TestCase):
    def test_numbers_are_sentences(self):
        for number, kind, words in (
                (-1743, Unavailable, "may not be controlled: allow it in System Settings › Privacy & "
                                     "Security › Automation"),
                (-1744, Unavailable, "if macOS asks whether"), (-600, Absent, "is not running"),
                (-609, Unavailable, "was lost"), (-1712, Unavailable, "does not answer"),
                (-128, Unavailable, "has cancelled"), (-1728, Absent, "No presentation is open"),
                (-10000, Unavailable, "number -10000")):
            problem = problem_of(number, looking=True)
            with self.subTest(number):
                self.assertIs(type(problem), kind)
                self.assertIn(words, str(problem))
                self.assertTrue(str(problem).endswith("."))

    def test_actions_are_refused_where_powerpoint_can_be_reached(self):
        for number in (-1728, -50, -10006, -2700):
            self.assertIs(type(problem_of(number, looking=False)), Refused)
        for number in (-1743, -1712, -128):
            self.assertIs(type(problem_of(number, looking=False)), Unavailable)


class RegistrationTest(unittest.TestCase):
    def names(self, platform):
        with mock.patch.object(process.sys, "platform", platform):
            made = process.presenters()
        for one in made:
            one.close()
        return [one.name for one in made]

    def test_each_system_has_its_program(self):
        for platform, own in (("darwin", ["PowerPoint"]), ("linux", ["LibreOffice"]), ("plan9", [])):
            names = self.names(platform)
            self.assertEqual([name for name in names if name in ("PowerPoint", "LibreOffice")], own)
            self.assertEqual(names[:len(own)], own)
            self.assertGreater(len(names), len(own), "there is something without a program, too")


if __name__ == "__main__":
    unittest.main()
