"""torvane-show itself, on a private display. Skipped where it was not built."""
from __future__ import annotations

import glob
import os
import select
import signal
import socket
import stat
import subprocess
import time
import unittest
from pathlib import Path

import decks
import pdf_decks
from presenter_suite import SOON, PresenterSuite
from private_display import PrivateDisplay, missing_programs, wait_until

ROOT = Path(__file__).resolve().parents[2]
PROGRAM = os.environ.get(
    "TORVANE_VIEWER", str(ROOT / "build/dev/bundle/Torvane P2P Helper/bin/torvane-show"))
LACKS = ", ".join(missing_programs("import") + ([] if os.access(PROGRAM, os.X_OK) else [PROGRAM]))
WITHIN = 3.0  # a problem is told and forgotten
ESCAPED = 0.2  # until the state has followed a key


class ViewerSetUp(unittest.TestCase):
    """A display, a deck of eight pages and an engine for all tests of a class."""

    size = "1280x720x24"
    sizes = (pdf_decks.SIZE,)
    hidden, effects = None, 0
    exports_in_show = True
    aspect = pdf_decks.SIZE[1] / pdf_decks.SIZE[0]

    @classmethod
    def setUpClass(cls):
        if LACKS:
            raise unittest.SkipTest(f"not there: {LACKS}")
        cls.display = PrivateDisplay(cls.size)
        cls.addClassCleanup(cls.display.close)
        cls.deck = cls.display.path("deck.pdf")
        pdf_decks.write(cls.deck, decks.slides(8), cls.sizes)
        cls.engine = cls.display.start_engine(TORVANE_SHOW=PROGRAM)
        cls.addClassCleanup(lambda: cls.engine.call("POST", "/api/show/end"))

    def setUp(self):
        """The deck is at rest: it was shown, and its show was ended."""
        viewer = self.show(self.deck)
        self.display.key("Escape")
        self.assertEqual(viewer.wait(SOON), 0)
        self.wait_until_state(deck="deck.pdf", presenting=False, slide=1, progress=None)

    def show(self, *arguments):
        viewer = self.display.spawn([PROGRAM, *arguments])
        self.addCleanup(self.end, viewer)
        self.wait_until_state(presenting=True, problem=None)
        return viewer

    def end(self, viewer):
        viewer.terminate()
        viewer.wait(SOON)
        self.wait_until_state(presenting=False)

    def wait_until_state(self, **members):
        def there():
            state = self.engine.get("/api/state")
            return state if all(state[name] == value for name, value in members.items()) else None
        return wait_until(there, f"{members}; there is {self.engine.get('/api/state')}", SOON)

    def press(self, key):
        self.display.key(key)

    def sockets(self):
        return glob.glob(self.display.path("run/torvane/show/*"))

    def pixel(self, x, y):
        """Red, green and blue of what the audience sees there."""
        text = subprocess.run(
            ["import", "-window", "root", "-crop", f"1x1+{x}+{y}", "-depth", "8", "rgb:-"],
            env=self.display.environment, check=True, capture_output=True).stdout
        return tuple(text[:3])


class ViewerTest(ViewerSetUp, PresenterSuite):
    pass


class TallPagesTest(ViewerSetUp, PresenterSuite):
    sizes, aspect = ((600, 800),), 4 / 3


class ShowTest(ViewerSetUp):
    """What is seen, and keys at the computer."""

    sizes = ((800, 450), (450, 800), (800, 100))

    def assert_seen(self, page, x=640, y=360):
        wait_until(lambda: self.pixel(x, y) == pdf_decks.colour(page),
                   f"page {page}; there is {self.pixel(x, y)}", SOON)

    def test_pages_of_any_size_lie_in_the_middle_of_black(self):
        self.show(self.deck)
        self.assert_seen(1)
        self.assert_seen(1, 4, 600)
        for page, aspect, black in ((2, 800 / 450, (400, 360)), (3, 100 / 800, (640, 200))):
            self.press("Next")
            self.assert_seen(page)
            self.assertEqual(self.pixel(*black), (0, 0, 0))
            state = self.wait_until_state(slide=page)
            self.assertAlmostEqual(state["aspect"], aspect, 3)

    def test_keys(self):
        viewer = self.show(self.deck)
        for key, page in (("Right", 2), ("space", 3), ("Down", 4), ("Up", 3), ("Left", 2),
                          ("End", 8), ("Prior", 7), ("Home", 1), ("Next", 2)):
            self.press(key)
            self.wait_until_state(slide=page)
        self.press("b")
        self.wait_until_state(blank=True, slide=2)
        wait_until(lambda: self.pixel(640, 360) == (0, 0, 0), "a dark screen", SOON)
        self.press("b")
        self.wait_until_state(blank=False, slide=2)
        self.assert_seen(2)
        self.press("End")
        self.press("Right")
        self.wait_until_state(slide=8, atEnd=True)
        wait_until(lambda: self.pixel(640, 360) == (0, 0, 0), "the end", SOON)
        self.press("Escape")
        self.assertEqual(viewer.wait(SOON), 0)

    def test_the_state_follows_escape_at_once(self):
        times = []
        for _ in range(3):
            viewer = self.show(self.deck)
            self.press("Escape")
            viewer.wait(SOON)
            ended = time.monotonic()
            self.wait_until_state(presenting=False, problem=None)
            times.append(time.monotonic() - ended)
        self.assertLess(min(times), ESCAPED)
        self.assertEqual(self.sockets(), [])

    def test_ten_quick_presses_leave_no_backlog(self):
        self.show(self.deck)
        for _ in range(10):
            self.engine.post("/api/next")
        self.wait_until_state(slide=8, atEnd=True)
        before = time.monotonic()
        self.engine.post("/api/goto", {"slide": 4})
        self.wait_until_state(slide=4)
        self.assertLess(time.monotonic() - before, 1.0)
        self.assert_seen(4)

    def test_a_page_that_takes_long_is_not_told_before_it_is_seen_and_holds_up_no_key(self):
        slow = self.display.path("slow.pdf")
        Path(slow).write_bytes(pdf_decks.pdf(decks.slides(3), slow=2))
        viewer = self.show(slow)
        self.assert_seen(1)
        self.press("Next")
        before = time.monotonic()
        state = self.engine.post("/api/next")  # to page 3, while page 2 is being drawn
        self.assertLess(time.monotonic() - before, 1.0)
        seen = self.pixel(640, 360)
        self.assertEqual(state["slide"], 1)
        self.assertEqual(seen, pdf_decks.colour(1))
        self.wait_until_state(slide=3)
        self.assert_seen(3)
        self.press("Prior")
        time.sleep(0.3)
        self.press("Escape")
        before = time.monotonic()
        viewer.wait(SOON)
        self.assertLess(time.monotonic() - before, 1.0)

    def test_the_deck_rests_at_the_page_that_was_seen_last(self):
        viewer = self.show(self.deck)
        self.press("Next")
        self.wait_until_state(slide=2)
        self.press("Escape")
        viewer.wait(SOON)
        state = self.wait_until_state(presenting=False, slide=2, title="Slide 2 für alle")
        self.assertAlmostEqual(state["aspect"], 800 / 450, 3)
        state = self.engine.post("/api/goto", {"slide": 3})
        self.assertAlmostEqual(state["aspect"], 100 / 800, 3)

    def test_a_show_can_begin_in_the_middle(self):
        self.show("--page", "5", self.deck)
        self.wait_until_state(slide=5)
        self.assert_seen(5)

    def test_the_newest_viewer_is_driven_and_then_the_one_before(self):
        other = self.display.path("other.pdf")
        pdf_decks.write(other, decks.slides(3))
        self.show(self.deck)
        newer = self.display.spawn([PROGRAM, other])
        self.addCleanup(newer.wait, SOON)
        state = self.wait_until_state(deck="other.pdf", presenting=True, count=3)
        self.assertNotIn("/", state["document"])
        self.engine.post("/api/show/end")
        self.wait_until_state(deck="deck.pdf", presenting=True, count=8)

    def test_a_deck_that_changed_is_read_again(self):
        other = self.display.path("changing.pdf")
        pdf_decks.write(other, decks.slides(3))
        viewer = self.show(other)
        self.press("Escape")
        viewer.wait(SOON)
        self.wait_until_state(count=3, presenting=False)
        pdf_decks.write(other, decks.slides(2))
        self.wait_until_state(count=2)
        os.remove(other)
        self.wait_until_state(document="sample", count=5)

    def test_the_sample_deck_is_there_without_any(self):
        engine = self.display.start_engine(TORVANE_SHOW=PROGRAM)
        self.display.engine = self.engine
        self.addCleanup(engine.stop)
        state = wait_until(lambda: (lambda now: now["problem"] and now)(engine.get("/api/state")),
                           "that there is no office", SOON)
        self.assertEqual((state["document"], state["count"], state["title"], state["presenting"]),
                         ("sample", 5, "Torvane", False))
        self.assertIn("LibreOffice is not running", state["problem"])
        engine.post("/api/goto", {"slide": 3})
        engine.post("/api/show/start")
        wait_until(lambda: engine.get("/api/state")["presenting"], "the show", SOON)
        wait_until(lambda: self.pixel(900, 550) != (0, 0, 0), "a slide", SOON)
        state = engine.get("/api/state")
        self.assertEqual((state["slide"], state["title"], state["problem"]),
                         (3, "Draw on what you talk about", None))
        engine.post("/api/show/end")
        wait_until(lambda: not engine.get("/api/state")["presenting"], "the end", SOON)


class TroubleTest(ViewerSetUp):
    def problem(self, words):
        """How long until the state told it."""
        start = time.monotonic()
        wait_until(lambda: words in (self.engine.get("/api/state")["problem"] or ""), words, SOON)
        return time.monotonic() - start

    def test_frozen(self):
        viewer = self.show(self.deck)
        viewer.send_signal(signal.SIGSTOP)
        self.addCleanup(viewer.send_signal, signal.SIGCONT)
        self.assertLess(self.problem("does not answer"), WITHIN)
        status, answer = self.engine.call("POST", "/api/next")
        self.assertEqual((status, "does not answer" in answer["error"]), (409, True))
        viewer.send_signal(signal.SIGCONT)
        start = time.monotonic()
        self.wait_until_state(problem=None, presenting=True)
        self.assertLess(time.monotonic() - start, WITHIN)
        self.engine.post("/api/next")
        self.wait_until_state(slide=2)

    def test_killed(self):
        viewer = self.show(self.deck)
        viewer.kill()
        self.assertLess(self.problem("ended unexpectedly"), WITHIN)
        start = time.monotonic()
        self.wait_until_state(problem=None, presenting=False, deck="deck.pdf")
        self.assertLess(time.monotonic() - start, WITHIN)
        wait_until(lambda: not self.sockets(), "what it left is removed", SOON)
        self.engine.post("/api/show/start")
        self.wait_until_state(presenting=True)
        self.engine.post("/api/show/end")
        self.wait_until_state(presenting=False)

    def test_files_that_cannot_be_shown(self):
        for name, data, words in (
                ("broken.pdf", b"%PDF-1.4\nnothing", "broken.pdf is not a PDF that can be shown."),
                ("empty.pdf", b"", "empty.pdf is not a PDF that can be shown."),
                ("locked.pdf", pdf_decks.pdf(decks.slides(1), trailer=pdf_decks.ENCRYPTED),
                 "locked.pdf is protected by a password: show a copy without one."),
                ("pipe.pdf", None, "pipe.pdf cannot be opened."),
                (None, None, "missing.pdf cannot be opened.")):
            if name and data is None:
                os.mkfifo(self.display.path(name))
            elif name:
                Path(self.display.path(name)).write_bytes(data)
            run = subprocess.run([PROGRAM, self.display.path(name or "missing.pdf")],
                                 env=self.display.environment, capture_output=True, text=True,
                                 timeout=SOON, check=False)
            self.assertEqual(run.returncode, 1, name)
            self.assertIn(words, run.stderr)
            self.assertEqual(len(run.stderr.strip().split("\n")), 1, run.stderr)

    def test_tells_in_a_dialog_when_a_desktop_started_it(self):
        viewer = self.display.spawn([PROGRAM, "--dialog", self.display.path("missing.pdf")])
        self.addCleanup(viewer.kill)
        wait_until(lambda: subprocess.run(
            ["xdotool", "search", "--name", "Torvane Show"], env=self.display.environment,
            capture_output=True, check=False).stdout, "the dialog", SOON)
        wait_until(lambda: (self.press("Return"), viewer.poll() is not None)[1], "its end", SOON)
        self.assertEqual(viewer.returncode, 1)

    def test_help_and_version_need_no_display(self):
        for argument, words in (("--help", "Usage: torvane-show"), ("--version", "torvane-show 1")):
            run = subprocess.run([PROGRAM, argument], env={}, capture_output=True, text=True,
                                 timeout=SOON, check=False)
            self.assertEqual((run.returncode, run.stderr), (0, ""))
            self.assertIn(words, run.stdout)
        run = subprocess.run([PROGRAM, self.deck], env={}, capture_output=True, text=True,
                             timeout=SOON, check=False)
        self.assertEqual((run.returncode, run.stderr),
                         (1, "torvane-show: there is no screen to show anything on.\n"))

    def test_its_socket_is_for_its_user_alone(self):
        self.show(self.deck)
        (path,) = self.sockets()
        self.assertEqual(stat.S_IMODE(os.stat(os.path.dirname(path)).st_mode), 0o700)
        self.assertEqual(stat.S_IMODE(os.stat(path).st_mode) & 0o077, 0)

    def test_nonsense_on_its_socket_ends_that_connection_only(self):
        self.show(self.deck)
        (path,) = self.sockets()
        good = b'{"id":1,"do":"look"}\n'
        for nonsense in (b"hello\n", b"{}\n", b"\xff\xff\n", b"[" * 100_000,
                         b'{"id":1,"do":"open","with":["/etc/passwd"]}\n', b"x" * 1_000_000,
                         b'{"id":1,"do":"go_to","with":["2"]}\n', b"\0\n"):
            with socket.socket(socket.AF_UNIX) as client:
                client.settimeout(SOON)
                client.connect(path)
                client.sendall(good)
                self.assertIn(b'"slide":1', client.recv(65536))
                try:
                    client.sendall(nonsense)
                    self.assertEqual(client.recv(65536), b"", nonsense[:40])
                except (BrokenPipeError, ConnectionResetError):
                    pass  # it did not even read that to its end
        self.wait_until_state(presenting=True, slide=1, problem=None)

    def test_many_connections_that_say_nothing_hold_nobody_up(self):
        self.show(self.deck)
        (path,) = self.sockets()
        clients = [socket.socket(socket.AF_UNIX) for _ in range(100)]
        self.addCleanup(lambda: [client.close() for client in clients])
        for client in clients:
            client.setblocking(False)
            client.connect_ex(path)
        refused = lambda: sum(bool(select.select([one], [], [], 0)[0]) for one in clients)  # noqa
        wait_until(lambda: refused() >= 80, f"most are refused: {refused()}", SOON)
        self.engine.post("/api/next")
        self.wait_until_state(slide=2, problem=None)


class SecondScreenTest(ViewerSetUp):
    """Two monitors of one display; the pointer is on the left one."""

    size = "1280x400x24"

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        if missing_programs("xrandr"):
            raise unittest.SkipTest("not there: xrandr")
        for name, place, output in (("*Left", "640/160x400/100+0+0", "screen"),
                                    ("Right", "640/160x400/100+640+0", "none")):
            subprocess.run(["xrandr", "--setmonitor", name, place, output],
                           env=cls.display.environment, check=True)

    def test_shows_on_the_screen_that_nobody_looks_at(self):
        for pointer, shown, other in ((100, 960, 320), (1200, 320, 960)):
            subprocess.run(["xdotool", "mousemove", str(pointer), "200"],
                           env=self.display.environment, check=True)
            viewer = self.show(self.deck)
            wait_until(lambda: self.pixel(shown, 200) == pdf_decks.colour(1), "the page", SOON)
            self.assertNotEqual(self.pixel(other, 200), pdf_decks.colour(1))
            self.engine.post("/api/show/end")
            viewer.wait(SOON)
            self.wait_until_state(presenting=False)


if __name__ == "__main__":
    unittest.main()
