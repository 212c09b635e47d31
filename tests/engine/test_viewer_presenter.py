"""The engine's side of the viewer, with a stand-in for its program."""
from __future__ import annotations

import os
import socket
import subprocess
import tempfile
import threading
import time
import unittest
from pathlib import Path
from unittest import mock

from engine_support import DEADLINE, STAND_IN_VIEWER
from torvane_engine.presenters.presenter import Absent, Refused, Unavailable
from torvane_engine.presenters.viewer import program, resting, running, sockets
from torvane_engine.presenters.viewer.facts import MISSING
from torvane_engine.presenters.viewer.presenter import Viewer


class ViewerPresenterTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.runtime = Path(folder.name)
        self.set_environment(XDG_RUNTIME_DIR=folder.name, TORVANE_SHOW=str(STAND_IN_VIEWER))
        self.viewer = Viewer()
        self.addCleanup(self.viewer.close)

    def set_environment(self, **variables):
        patch = mock.patch.dict(os.environ, variables)
        patch.start()
        self.addCleanup(patch.stop)

    def show(self, path):
        """A viewer that somebody else started."""
        process = subprocess.Popen([str(STAND_IN_VIEWER), str(path)])
        self.addCleanup(process.wait)
        self.addCleanup(process.terminate)
        deadline = time.monotonic() + DEADLINE
        while not (self.places() / str(process.pid)).exists() and time.monotonic() < deadline:
            time.sleep(0.01)
        return process

    def places(self):
        return self.runtime / "torvane" / "show"

    def listen(self, name, answer=None):
        """A socket where viewers have theirs; each connection gets `answer` and is kept."""
        self.places().mkdir(mode=0o700, parents=True, exist_ok=True)
        listener = socket.socket(socket.AF_UNIX)
        self.addCleanup(listener.close)
        listener.bind(str(self.places() / name))
        listener.listen()
        kept = []

        def serve():
            while True:
                try:
                    client, _ = listener.accept()
                except OSError:
                    return
                kept.append(client)
                if answer is not None:
                    client.sendall(answer)

        threading.Thread(target=serve, daemon=True).start()

    # At rest

    def test_the_sample_deck_rests_here_at_first(self):
        look = self.viewer.look()
        self.assertEqual((look.document, look.count, look.slide, look.presenting, look.is_sample),
                         ("sample", 5, 1, False, True))
        self.viewer.next()
        self.assertEqual(self.viewer.look().slide, 2)
        self.viewer.previous()
        self.viewer.previous()
        self.assertEqual(self.viewer.look().slide, 1)
        self.viewer.go_to(5)
        self.viewer.next()
        self.assertEqual(self.viewer.look().slide, 5)
        self.assertRaises(Refused, self.viewer.go_to, 6)
        self.assertRaises(Refused, self.viewer.blank, True)
        self.assertTrue(self.viewer.read_page("sample", 2).notes)
        self.assertTrue(self.viewer.picture("sample", 2, 320).startswith(b"\x89PNG"))

    def test_what_reads_in_the_deck_ends_when_nobody_asks_any_more(self):
        self.viewer.look()
        self.assertTrue(self.children())
        with mock.patch.object(resting, "IDLE_SECONDS", 0.0):
            self.viewer.look()
        self.assertEqual(self.children(), [])
        self.assertEqual(self.viewer.look().count, 5)

    def children(self):
        with open(f"/proc/self/task/{threading.get_native_id()}/children", encoding="ascii") as file:
            return file.read().split()

    def test_without_its_program_there_is_nothing(self):
        self.set_environment(TORVANE_SHOW="/nonexistent")
        for call in (self.viewer.look, self.viewer.start):
            with self.assertRaises(Absent) as raised:
                call()
            self.assertEqual(str(raised.exception), MISSING)

    def test_a_sample_that_cannot_be_read_is_told(self):
        self.set_environment(TORVANE_SHOW="/bin/false")
        self.assertRaisesRegex(Unavailable, "sample deck cannot be read", self.viewer.look)

    # Shows

    def test_start_shows_the_deck_at_its_slide_and_end_leaves_it_there(self):
        self.viewer.look()
        self.viewer.go_to(3)
        self.viewer.start()
        look = self.viewer.look()
        self.assertEqual((look.document, look.slide, look.presenting), ("sample", 3, True))
        self.viewer.start()
        self.assertEqual(len(list(self.places().iterdir())), 1)
        self.viewer.next()
        self.assertEqual(self.viewer.look().slide, 4)
        self.viewer.blank(True)
        self.assertTrue(self.viewer.look().blank)
        self.viewer.end()
        look = self.viewer.look()
        self.assertEqual((look.slide, look.presenting), (4, False))
        self.viewer.end()

    def test_a_start_that_fails_says_what_the_viewer_said(self):
        failing = self.runtime / "failing"
        failing.write_text(f'#!/bin/sh\n[ "$1" = --answer ] && exec {STAND_IN_VIEWER} "$@"\n'
                           'echo "torvane-show: there is no screen to show anything on." >&2\n'
                           'exit 1\n')
        failing.chmod(0o700)
        self.set_environment(TORVANE_SHOW=str(failing))
        self.viewer.look()
        self.assertRaisesRegex(Refused, "^there is no screen to show anything on.$",
                               self.viewer.start)
        self.assertFalse(self.viewer.look().presenting)

    def test_a_viewer_that_somebody_started_is_found_and_its_deck_stays(self):
        deck = self.runtime / "talk.pdf"
        deck.write_bytes(b"a deck")
        process = self.show(deck)
        look = self.viewer.look()
        self.assertEqual((look.documents[0].title, look.presenting, look.is_sample),
                         ("talk.pdf", True, False))
        self.assertNotIn("/", look.document)
        process.terminate()
        process.wait()
        after = self.viewer.look()
        self.assertEqual((after.document, after.presenting), (look.document, False))
        deck.unlink()
        self.assertTrue(self.viewer.look().is_sample)

    def test_a_killed_viewer_is_told_once_and_its_socket_removed(self):
        deck = self.runtime / "talk.pdf"
        deck.write_bytes(b"a deck")
        process = self.show(deck)
        self.viewer.look()
        process.kill()
        process.wait()
        self.assertRaisesRegex(Unavailable, "ended unexpectedly", self.viewer.look)
        look = self.viewer.look()
        self.assertEqual((look.documents[0].title, look.presenting), ("talk.pdf", False))
        (left,) = self.places().iterdir()
        os.utime(left, (100, 100))
        self.viewer.look()
        self.assertFalse(left.exists())

    def test_other_documents_are_refused(self):
        self.viewer.choose("sample")
        self.assertRaises(Refused, self.viewer.choose, "other")
        self.assertRaises(Refused, self.viewer.read_page, "other", 1)
        self.assertRaises(Refused, self.viewer.picture, "other", 1, 320)

    def test_export_copies_the_file(self):
        target, told = self.runtime / "copy.pdf", []
        count = self.viewer.export_pdf("sample", str(target), lambda *progress: told.append(progress))
        self.assertEqual(target.read_bytes(), Path(program.SAMPLE).read_bytes())
        self.assertEqual((count, told), (5, [(0, 5), (5, 5)]))
        self.assertRaises(Refused, self.viewer.export_pdf, "other", str(target), lambda *_: None)

    # Sockets of others

    def test_a_silent_socket_is_told_in_time(self):
        self.listen("1")
        with mock.patch.object(running, "CALL_SECONDS", 0.1):
            self.assertRaisesRegex(Unavailable, "does not answer", self.viewer.look)

    def test_nonsense_on_a_socket_is_no_fault(self):
        self.listen("1", b'{"id":1,"answer":7}\n')
        self.assertRaises(Unavailable, self.viewer.look)

    def test_only_sockets_in_a_folder_of_ones_own_count(self):
        self.listen("1")
        (self.places() / "file").write_text("x")
        (self.places() / "link").symlink_to(self.places() / "1")
        self.assertEqual(sockets.newest_first(), [str(self.places() / "1")])
        self.places().chmod(0o777)
        self.assertEqual(sockets.newest_first(), [])
        self.assertTrue(self.viewer.look().is_sample)

    def test_the_newest_is_asked_first(self):
        for name, made in (("1", 100), ("2", 300), ("3", 200)):
            self.listen(name)
            os.utime(self.places() / name, (made, made))
        self.assertEqual([Path(path).name for path in sockets.newest_first()], ["2", "3", "1"])

    @unittest.skipUnless(os.getuid() == 0, "only root can give files away")
    def test_what_belongs_to_somebody_else_does_not_count(self):
        self.listen("1")
        os.chown(self.places() / "1", 65534, 65534)
        self.assertEqual(sockets.newest_first(), [])
        os.chown(self.places() / "1", 0, 0)
        self.assertEqual(len(sockets.newest_first()), 1)
        os.chown(self.places(), 65534, 65534)
        self.assertEqual(sockets.newest_first(), [])

    def test_a_folder_that_is_a_link_does_not_count(self):
        elsewhere = self.runtime / "elsewhere"
        elsewhere.mkdir()
        (self.runtime / "torvane").mkdir()
        self.places().symlink_to(elsewhere)
        self.assertEqual(sockets.newest_first(), [])


if __name__ == "__main__":
    unittest.main()
