"""Slides, pictures and moving, on the real process."""
from __future__ import annotations

import struct
import time
import zlib

from engine_support import EngineTest
from torvane_engine import VERSION
from torvane_engine.presenters.impress.running_office import NOT_RUNNING


class SlideTest(EngineTest):
    def state_once_looked(self, patience=10):
        """The state once the engine has looked for an office, which it does beside its answers."""
        for _ in range(patience * 20):
            state = self.engine.get("/api/state")
            if state["problem"] is not None:
                break
            time.sleep(0.05)
        return state

    def wait_for(self, **members):
        for _ in range(200):
            state = self.engine.get("/api/state")
            if all(state[name] == value for name, value in members.items()):
                return state
            time.sleep(0.05)
        raise AssertionError(f"not {members}: {state}")

    def test_state_at_start(self):
        self.assertEqual(self.state_once_looked(), {
            "version": VERSION, "deck": "Torvane sample deck", "document": "sample",
            "slide": 1, "count": 5, "title": "Page 1", "step": 0, "steps": 0,
            "presenting": False, "blank": False, "atEnd": False, "aspect": 0.5625,
            "problem": NOT_RUNNING, "progress": None, "strokes": 0, "inkSeq": 0, "overlayV": 0,
            "export": {"state": "none", "document": None, "progress": None, "sentence": None}})

    def test_goto_answers_with_the_new_state(self):
        state = self.engine.post("/api/goto", {"slide": 4})
        self.assertEqual((state["slide"], state["title"]), (4, "Page 4"))
        self.assertEqual(self.engine.get("/api/state"), state)

    def test_goto_refuses_what_is_not_a_slide(self):
        self.engine.post("/api/goto", {"slide": 3})
        for bad in (0, 6, -1, 10 ** 18, 2.0, "2", True, None, [2], {}):
            status, answer = self.engine.call("POST", "/api/goto", {"slide": bad})
            self.assertEqual((status, list(answer)), (400, ["error"]), bad)
        for body in ({}, [], "2", "", "null"):
            self.assertEqual(self.engine.call("POST", "/api/goto", body)[0], 400, body)
        self.assertEqual(self.engine.get("/api/state")["slide"], 3)

    def test_next_and_previous_stay_at_the_ends(self):
        self.assertEqual(self.engine.post("/api/previous")["slide"], 1)
        seen = [self.engine.post("/api/next")["slide"] for _ in range(6)]
        self.assertEqual(seen, [2, 3, 4, 5, 5, 5])
        self.assertEqual(self.engine.post("/api/previous")["slide"], 4)

    def test_show_starts_and_ends_and_may_be_told_twice(self):
        for path, presenting in (("start", True), ("start", True), ("end", False), ("end", False)):
            self.engine.post(f"/api/show/{path}")
            self.wait_for(presenting=presenting)
            self.assertIs(self.engine.poll()["presenting"], presenting)

    def test_slide_list_names_pictures_that_exist(self):
        answer = self.engine.get("/api/slides")
        self.assertEqual([s["slide"] for s in answer["slides"]], [1, 2, 3, 4, 5])
        self.assertEqual(answer["count"], 5)
        self.assertEqual([s["hasNotes"] for s in answer["slides"]], [True] * 5)
        for slide in answer["slides"]:
            response, _ = self.engine.request("HEAD", slide["picture"])
            self.assertEqual((response.status, response.headers["Content-Type"]),
                             (200, "image/png"))

    def test_notes(self):
        self.assertIn("Welcome", self.engine.get("/api/slides/1/notes")["notes"])
        self.assertIn("audience", self.engine.get("/api/slides/5/notes")["notes"])

    def test_pictures_are_whole_pngs_and_differ(self):
        pictures = [self.engine.request("GET", f"/api/slides/{n}/picture")[1] for n in range(1, 6)]
        self.assertEqual(len(set(pictures)), 5)
        for picture in pictures:
            self.assertEqual(self.png_size(picture), (1280, 720))

    def png_size(self, png):
        self.assertEqual(png[:8], b"\x89PNG\r\n\x1a\n")
        at, chunks = 8, {}
        while at < len(png):
            length, kind = struct.unpack(">I4s", png[at:at + 8])
            data, at = png[at + 8:at + 8 + length], at + 12 + length
            self.assertEqual(struct.unpack(">I", png[at - 4:at])[0], zlib.crc32(kind + data))
            chunks[kind] = data
        width, height, *form = struct.unpack(">IIBBBBB", chunks[b"IHDR"])
        self.assertEqual(form, [8, 2, 0, 0, 0])
        self.assertEqual(len(zlib.decompress(chunks[b"IDAT"])), height * (3 * width + 1))
        self.assertEqual(list(chunks), [b"IHDR", b"IDAT", b"IEND"])
        return width, height

    def test_unchanged_picture_is_not_sent_again(self):
        first, _ = self.engine.request("GET", "/api/slides/1/picture")
        again, body = self.engine.request("GET", "/api/slides/1/picture",
                                          If_None_Match=first.headers["ETag"])
        self.assertEqual((again.status, body), (304, b""))
        other, body = self.engine.request("GET", "/api/slides/2/picture",
                                          If_None_Match=first.headers["ETag"])
        self.assertEqual((other.status, body[1:4]), (200, b"PNG"))

    def test_state_is_answered_while_a_picture_is_drawn(self):
        with self.engine.connect() as sock:
            sock.sendall(self.engine.head("GET /api/slides/3/picture HTTP/1.1"))
            self.assertEqual(self.engine.get("/api/state")["slide"], 1)
            self.assertTrue(sock.recv(100).startswith(b"HTTP/1.1 200"))
