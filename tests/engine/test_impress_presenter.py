"""The engine's side of Impress, with a child of the test's; and how an office is found and asked."""
from __future__ import annotations

import os
import socket
import subprocess
import tempfile
import unittest
from unittest import mock

from engine_support import DEADLINE, PYTHON
from torvane_engine.presenters.impress import running_office
from torvane_engine.presenters.impress.presenter import Impress
from torvane_engine.presenters.lines import Gone, Silent
from torvane_engine.presenters.presenter import Absent, Document, Page, Refused, Unavailable
from torvane_engine.presenters.wake import Wake

LOOK = {"documents": [["a", "A.odp", True], ["b", "B.odp", False]], "document": "a", "slide": 3,
        "count": 9, "step": 1, "steps": 2, "aspect": 0.75, "presenting": True, "blank": False,
        "at_end": False, "revision": 4}


class Child:
    """Answers what it is told to, or raises it."""

    def __init__(self):
        self.is_running, self.asked, self.answer = True, [], {"answer": None}
        self.progress = []
        self.news = []

    def wait_for_news(self, seconds, wake):
        return bool(self.news) and self.news.pop()

    def ask(self, question, seconds, report, in_all):
        self.asked.append((question["do"], question["with"], seconds))
        if isinstance(self.answer, Exception):
            raise self.answer
        for done in self.progress:
            report(*done)
        return self.answer

    def end(self):
        self.is_running = False


class ImpressTest(unittest.TestCase):
    def setUp(self):
        self.child = Child()
        self.impress = Impress(self.child)
        self.addCleanup(self.impress.close)
        self.runs = mock.patch.object(running_office, "may_run", return_value=True).start()
        self.addCleanup(mock.patch.stopall)

    def test_look(self):
        self.child.answer = {"answer": dict(LOOK)}
        look = self.impress.look()
        self.assertEqual(look.documents, (Document("a", "A.odp", True), Document("b", "B.odp")))
        self.assertEqual((look.document, look.slide, look.step, look.aspect, look.revision),
                         ("a", 3, 1, 0.75, 4))

    def test_a_show_is_looked_at_when_it_has_news_and_seldom_else(self):
        self.child.answer = {"answer": {**LOOK, "presenting": False}}
        self.impress.look()
        self.assertEqual(self.impress.poll_seconds, 0.1)
        self.child.answer = {"answer": dict(LOOK)}
        self.impress.look()
        self.assertEqual(self.impress.poll_seconds, 0.5)
        self.assertFalse(self.impress.rest(1, Wake()))
        self.child.news = [True]
        self.assertTrue(self.impress.rest(1, Wake()))
        self.child.answer = {"answer": dict(LOOK)}
        self.impress.look()  # what is told can be seen a little later
        self.assertEqual(self.impress.poll_seconds, 0.05)

    def test_rests_without_a_child(self):
        self.child.is_running = False
        self.assertFalse(self.impress.rest(0, Wake()))

    def test_actions_go_to_the_child_with_limits(self):
        self.impress.next()
        self.impress.go_to(4)
        self.impress.blank(True)
        self.child.answer = {"answer": ["Title", "Notes", True]}
        self.assertEqual(self.impress.read_page("a", 2), Page("Title", "Notes", True))
        self.assertEqual([(name, list(given)) for name, given, _ in self.child.asked],
                         [("next", []), ("go_to", [4]), ("blank", [True]), ("read_page", ["a", 2])])
        self.assertTrue(all(0 < seconds <= 2.5 for name, _, seconds in self.child.asked[:3]))

    def test_troubles_are_sentences(self):
        for answer, kind, words in (
                (Silent(), Unavailable, "does not answer"), (Gone("x"), Unavailable, "lost"),
                ({"problem": "fault", "text": "RuntimeException"}, Unavailable, "lost"),
                ({"problem": "Refused", "text": "No."}, Refused, "No."),
                ({"problem": "Absent", "text": "Open one."}, Absent, "Open one.")):
            self.child.answer = answer
            with self.subTest(words), self.assertRaisesRegex(kind, words):
                self.impress.look()

    def test_no_child_is_started_while_no_office_is_there(self):
        self.runs.return_value, self.child.is_running = False, False
        self.assertRaisesRegex(Absent, "not running", self.impress.look)
        self.assertEqual(self.child.asked, [])

    def test_child_ends_with_the_office(self):
        self.runs.return_value = False
        self.child.answer = {"problem": "Absent", "text": "It is not running."}
        self.assertRaises(Absent, self.impress.look)
        self.assertFalse(self.child.is_running)

    def test_picture_is_read_from_a_folder_that_nobody_else_sees_and_removed(self):
        def make(question, *_):
            path = question["with"][3]
            self.assertEqual(os.stat(os.path.dirname(path)).st_mode & 0o777, 0o700)
            with open(path, "wb") as file:
                file.write(b"\x89PNG")
            self.path = path
            return {"answer": None}

        self.child.ask = make
        self.assertEqual(self.impress.picture("a", 1, 320), b"\x89PNG")
        self.assertFalse(os.path.exists(self.path))
        self.impress.close()
        self.assertFalse(os.path.exists(os.path.dirname(self.path)))

    def test_export_tells_its_progress_and_how_many_slides_there_are(self):
        told, self.child.progress, self.child.answer = [], [(0, 2), (1, 2)], {"answer": 2}
        count = self.impress.export_pdf("a", "/x.pdf", lambda *done: told.append(done))
        self.assertEqual((count, told), (2, [(0, 2), (1, 2)]))
        self.assertEqual(self.child.asked, [("export_pdf", ("a", "/x.pdf"), 10.0)])


@unittest.skipUnless(os.path.isdir("/proc/self"), "no /proc")
class RunningOfficeTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        patch = mock.patch.object(running_office, "PIPES", self.folder.name + "/PIPE_{user}_{name}")
        patch.start()
        self.addCleanup(patch.stop)

    def listen(self, name):
        sock = socket.socket(socket.AF_UNIX)
        self.addCleanup(sock.close)
        sock.bind(running_office.PIPES.format(user=os.getuid(), name=name))
        sock.listen()

    def test_pipe_must_be_a_socket_of_this_user(self):
        self.assertFalse(running_office.is_ours("p"))
        self.listen("p")
        self.assertTrue(running_office.is_ours("p"))
        here = running_office.PIPES.replace("{user}", str(os.getuid()))
        with mock.patch.object(running_office, "PIPES", here), \
                mock.patch.object(os, "getuid", return_value=os.getuid() + 1):
            self.assertFalse(running_office.is_ours("p"))
        open(running_office.PIPES.format(user=os.getuid(), name="file"), "w").close()
        self.assertFalse(running_office.is_ours("file"))

    def test_only_who_listens_takes_requests(self):
        bound = socket.socket(socket.AF_UNIX)
        self.addCleanup(bound.close)
        bound.bind(running_office.PIPES.format(user=os.getuid(), name="SingleOfficeIPC_0"))
        self.assertFalse(running_office.takes_requests(os.getpid()))
        self.listen("SingleOfficeIPC_abc")
        self.assertTrue(running_office.takes_requests(os.getpid()))
        self.assertFalse(running_office.takes_requests(os.getppid()))
        self.assertTrue(running_office.may_run())

    def test_offices_of_other_homes_are_others(self):
        here = running_office.pipe_name()
        with mock.patch.dict(os.environ, HOME="/nowhere"):
            self.assertNotEqual(running_office.pipe_name(), here)

    def test_busy_process_is_not_calm(self):
        with mock.patch.object(running_office, "_read") as read:
            calm = running_office.Calm()

            def at(now, ticks):
                read.return_value = f"7 (a ) b) S {' 0' * 10} {ticks} 0 0"
                return calm.is_calm(7, now)

            second = os.sysconf("SC_CLK_TCK")
            self.assertFalse(at(10.0, 0))
            self.assertFalse(at(11.0, second * 9 // 10))
            self.assertTrue(at(12.0, second))

    def test_launcher_that_becomes_an_office_is_stopped(self):
        launcher = os.path.join(self.folder.name, "soffice")
        told = os.path.join(self.folder.name, "told")
        with open(launcher, "w", encoding="utf-8") as file:
            file.write(f"#!/bin/sh\necho $$ \"$@\" > {told}\nexec sleep 1000\n")
        os.chmod(launcher, 0o755)
        office = running_office.Office(1, launcher, "-env:UserInstallation=file:///x",
                                       dict(os.environ))
        running_office.open_pipe(office, "torvane-1")
        with open(told, encoding="utf-8") as file:
            process, *arguments = file.read().split()
        self.assertIn("--accept=pipe,name=torvane-1;urp", arguments)
        self.assertIn("-env:UserInstallation=file:///x", arguments)
        self.assertRaises(ProcessLookupError, os.kill, int(process), 0)

    def test_child_ends_with_the_engine(self):
        packages = os.path.dirname(os.path.dirname(os.path.dirname(running_office.__file__)))
        child = subprocess.Popen(
            [PYTHON, "-B", "-m", "torvane_engine.presenters.impress"], stdin=subprocess.PIPE,
            stdout=subprocess.PIPE, env={**os.environ, "PYTHONPATH": os.path.dirname(packages),
                                         "HOME": self.folder.name})
        child.stdin.write(b'{"id":1,"do":"look"}\n')
        child.stdin.flush()
        self.assertIn(b'"id": 1, "problem"', child.stdout.readline())
        self.addCleanup(child.kill)
        child.stdin.close()
        self.assertEqual(child.wait(DEADLINE), 0)
        child.stdout.close()


if __name__ == "__main__":
    unittest.main()
