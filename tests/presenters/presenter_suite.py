"""What must hold for every presenter, seen from HTTP: one suite, a subclass for each program.

A subclass is a unittest.TestCase as well and sets `engine` (an EngineProcess) for its class, with the
deck of decks.py's slides(8) open in its program and no show running. It overrides the members below
where its program is another; each test leaves things as it found them.
"""
from __future__ import annotations

import http.client
import json
import shutil
import subprocess
import tempfile
import threading
import time

from private_office import wait_until

SOON = 10.0  # for what takes a tenth of a second on an idle machine


class PresenterSteps:
    """What tests of a presenter are made of."""

    effects = 3        # of slide 3 that wait for a press
    hidden = 5         # a slide that shows leave out, or None
    count = 8
    aspect = 15.75 / 28
    exports_in_show = False  # whether its shows go on while a PDF is made
    titles = [f"Slide {n} für alle" for n in range(1, 9)]
    notes = [f"Notes of slide {n}: Größe & <Maß>." if n < 8 else "" for n in range(1, 9)]

    # What a program must offer for some of the tests; the base can do without.
    def press(self, key):
        self.skipTest("nobody can press a key at the computer here")

    def state(self):
        return self.engine.get("/api/state")

    def wait_for(self, **members):
        def there():
            state = self.state()
            return state if all(state[name] == value for name, value in members.items()) else None
        return wait_until(there, f"{members}; there is {self.state()}", SOON)

    def go(self, path, body=None, **members):
        """An action, and the state in which `members` hold."""
        self.engine.post(path, body)
        return self.wait_for(**members)

    def exported(self):
        """The PDF, once it is there."""
        def there():
            state = self.state()["export"]
            self.assertNotEqual(state["state"], "failed", state["sentence"])
            return state["state"] == "done"
        wait_until(there, "the PDF", 60)
        response, data = self.engine.request("GET", "/api/export")
        self.assertEqual((response.status, response.headers["Content-Type"]),
                         (200, "application/pdf"))
        return data

    def pixel_of_pdf(self, data, page, x, y):
        """The colour at a part of a page; 100 pixels are a page's width."""
        with tempfile.NamedTemporaryFile(suffix=".pdf") as file:
            file.write(data)
            file.flush()
            picture = subprocess.run(
                ["pdftoppm", "-f", str(page), "-l", str(page), "-scale-to-x", "100", "-scale-to-y",
                 str(round(100 * self.aspect)), file.name], capture_output=True, check=True).stdout
        _, size, _, pixels = picture.split(b"\n", 3)
        width, height = map(int, size.split())
        at = 3 * (int(y * height) * width + int(x * width))
        return tuple(pixels[at:at + 3])

    def start_at(self, slide):
        self.go("/api/goto", {"slide": slide}, slide=slide)
        self.addCleanup(self.go, "/api/goto", {"slide": 1}, slide=1)
        self.addCleanup(self.go, "/api/show/end", presenting=False)
        return self.go("/api/show/start", presenting=True, slide=slide)


class PresenterSuite(PresenterSteps):
    def test_deck_titles_notes_and_hidden_slides(self):
        wait_until(lambda: self.state()["progress"] is None, "the slides are read", 60)
        slides = self.engine.get("/api/slides")["slides"]
        self.assertEqual([one["title"] for one in slides], self.titles)
        self.assertEqual([one["slide"] for one in slides if one["hidden"]],
                         [self.hidden] if self.hidden else [])
        self.assertEqual([self.engine.get(f"/api/slides/{n}/notes")["notes"]
                          for n in range(1, self.count + 1)], self.notes)
        state = self.state()
        self.assertEqual((state["count"], state["problem"]), (self.count, None))
        self.assertAlmostEqual(state["aspect"], self.aspect, 3)

    def test_next_plays_effects_and_leaves_out_hidden_slides(self):
        state = self.start_at(2)
        seen = [(state["slide"], state["step"])]
        for _ in range(self.effects + 3):
            before = seen[-1]
            self.engine.post("/api/next")
            state = wait_until(lambda: (lambda now: (now["slide"], now["step"]) != before and now)(
                self.state()), f"next after {before}", SOON)
            seen.append((state["slide"], state["step"]))
        after_hidden = 6 if self.hidden == 5 else 5
        self.assertEqual(seen, [(2, 0), *((3, step) for step in range(self.effects + 1)), (4, 0),
                                (after_hidden, 0)])

    def test_previous_takes_back_effects(self):
        self.start_at(4)
        self.go("/api/previous", slide=3, step=self.effects, steps=self.effects)
        for step in range(self.effects - 1, -1, -1):
            self.go("/api/previous", slide=3, step=step)
        self.go("/api/previous", slide=2)

    def test_hidden_slide_is_shown_when_it_is_asked_for(self):
        if self.hidden is None:
            self.skipTest("this program has no hidden slides")
        for first in (1, 3):
            with self.subTest(first=first):
                self.start_at(first)
                self.go("/api/goto", {"slide": self.hidden}, slide=self.hidden,
                        title=self.titles[self.hidden - 1])
                self.go("/api/next", slide=self.hidden + 1)
                self.go("/api/goto", {"slide": self.hidden}, slide=self.hidden)
                self.go("/api/previous", slide=self.hidden - 1)
                self.go("/api/show/end", presenting=False)

    def test_end_of_the_show(self):
        self.start_at(self.count)
        self.go("/api/next", slide=self.count, atEnd=True, presenting=True, blank=False)
        self.go("/api/next", slide=self.count, atEnd=True, presenting=True)
        self.go("/api/previous", slide=self.count, atEnd=False, presenting=True)
        self.go("/api/previous", slide=self.count - 1, atEnd=False)

    def test_dark_screen(self):
        status, answer = self.engine.call("POST", "/api/blank", {"on": True})
        self.assertEqual((status, list(answer)), (409, ["error"]))
        self.start_at(2)
        self.go("/api/blank", {"on": True}, blank=True, slide=2, presenting=True)
        self.go("/api/blank", {"on": True}, blank=True)
        self.go("/api/blank", {"on": False}, blank=False, slide=2)
        self.go("/api/next", slide=3)

    def test_starting_and_ending_twice_changes_nothing(self):
        self.start_at(2)
        self.go("/api/show/start", presenting=True, slide=2)
        self.go("/api/show/end", presenting=False)
        self.go("/api/show/end", presenting=False)

    def test_goto_refuses_what_is_not_a_slide(self):
        for slide in (0, self.count + 1, -1, "2", None):
            self.assertEqual(self.engine.call("POST", "/api/goto", {"slide": slide})[0], 400)
        self.assertEqual(self.state()["slide"], 1)

    def test_pictures_differ_and_keep_their_tag(self):
        tags = {}
        for width in (320, 1280):
            for slide in (1, 3, self.hidden or 5):
                path = f"/api/slides/{slide}/picture?width={width}"
                response, data = self.engine.request("GET", path)
                self.assertEqual((response.status, response.headers["Cache-Control"]),
                                 (200, "private, no-cache"))
                if data.startswith(b"\x89PNG"):
                    self.assertEqual(int.from_bytes(data[16:20], "big"), width)
                tags[slide, width] = response.headers["ETag"]
                again, body = self.engine.request("GET", path, If_None_Match=tags[slide, width])
                self.assertEqual((again.status, body), (304, b""))
        self.assertEqual(len(set(tags.values())), 6)

    def test_document_is_listed_and_can_be_chosen(self):
        answer = self.engine.get("/api/documents")
        self.assertIn(answer["document"], [one["id"] for one in answer["documents"]])
        self.assertEqual(self.engine.post("/api/document", {"document": answer["document"]})
                         ["document"], answer["document"])
        self.assertEqual(self.engine.call("POST", "/api/document", {"document": "/etc/x"})[0], 409)
        self.assertNotIn("/", answer["document"])

    def test_ink_belongs_to_its_slide(self):
        self.start_at(2)
        self.engine.ink({"t": "begin", "id": 1, "x": 0.5, "y": 0.5})
        self.go("/api/next", slide=3, strokes=0)
        self.go("/api/previous", slide=2, strokes=1)
        self.engine.ink({"t": "clear"})

    def test_pdf_has_every_slide_with_its_ink(self):
        if not shutil.which("pdftoppm"):
            self.skipTest("not installed: pdftoppm")
        marks = {1: 0.3, self.hidden or 2: 0.5, self.count: 0.7}
        for slide, y in marks.items():
            self.go("/api/goto", {"slide": slide}, slide=slide)
            # Many short strokes, as one is thinner than a pixel here.
            for number in range(8):
                self.engine.ink({"t": "begin", "id": number, "x": 0.95, "y": y + number * 0.005},
                                {"t": "pt", "id": number, "x": 0.99, "y": y + number * 0.005})
        before = self.engine.get("/api/documents")
        self.engine.post("/api/export")
        data = self.exported()
        for slide in range(1, self.count + 1):
            for y in marks.values():
                red = self.pixel_of_pdf(data, slide, 0.97, y + 0.02) == (255, 59, 48)
                self.assertEqual(red, marks.get(slide) == y, (slide, y))
        self.assertEqual(self.engine.get("/api/documents"), before)
        for slide in marks:
            self.go("/api/goto", {"slide": slide}, slide=slide)
            self.engine.ink({"t": "clear"})
        self.go("/api/goto", {"slide": 1}, slide=1)

    def test_pdf_holds_up_no_show(self):
        self.start_at(2)
        self.engine.post("/api/export")
        if not self.exports_in_show:
            waiting = wait_until(
                lambda: (lambda now: now["state"] == "waiting" and now)(self.state()["export"]),
                "the export waits", SOON)
            self.assertEqual(waiting["sentence"], "The export starts when the show ends.")
            self.go("/api/next", slide=3)
            self.assertEqual(self.state()["export"], waiting)
            self.go("/api/show/end", presenting=False)
        self.assertTrue(self.exported().startswith(b"%PDF-"))

    def test_what_is_pressed_at_the_computer_is_followed(self):
        self.start_at(1)
        self.engine.ink({"t": "begin", "id": 1, "x": 0.5, "y": 0.5})
        self.press("Next")
        self.wait_for(slide=2, strokes=0)
        self.press("Prior")
        self.wait_for(slide=1, strokes=1)
        self.press("Escape")
        self.wait_for(presenting=False)
        self.engine.ink({"t": "clear"})

    def test_many_actions_at_once_are_answered_by_what_is(self):
        self.start_at(1)
        failures = []

        def hurry():
            client = http.client.HTTPConnection("127.0.0.1", self.engine.port, timeout=SOON)
            for path in ("next", "previous", "next", "previous"):
                client.request("POST", f"/api/{path}")
                response = client.getresponse()
                answer = json.loads(response.read())
                if response.status not in (200, 409):
                    failures.append(answer)
            client.close()

        threads = [threading.Thread(target=hurry) for _ in range(4)]
        for thread in threads:
            thread.start()
        slowest = 0.0
        while any(thread.is_alive() for thread in threads):
            before = time.monotonic()
            self.engine.poll()
            slowest = max(slowest, time.monotonic() - before)
        self.assertEqual(failures, [])
        self.assertLess(slowest, 1.0)
        self.go("/api/goto", {"slide": 2}, slide=2)
