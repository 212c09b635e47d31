"""Ink on the real process, and its model where clocks and sizes are at hand."""
from __future__ import annotations

import random
import unittest
from unittest import mock

from engine_support import EngineTest, JPEG, Poller, begin, pt
from torvane_engine import ink


class InkTest(EngineTest):
    def test_events_arrive_as_they_were_sent(self):
        events = [begin(7, 0, 1.2), pt(7, -0.25, 0.1234567890123), begin(-2 ** 63),
                  {"t": "laser", "x": 0.5, "y": 1}, {"t": "laserend"}, {"t": "del", "ids": [7]}]
        self.assertEqual(self.engine.ink(*events)["inkSeq"], 6)
        self.assertEqual(self.engine.poll(), {"seq": 6, "events": events, "presenting": False,
                                              "aspect": 0.5625, "overlayV": 0})

    def test_poller_gets_only_what_is_new(self):
        self.engine.ink(begin(1), pt(1))
        self.assertEqual(self.engine.poll(1)["events"], [pt(1)])
        self.assertEqual(self.engine.poll(2)["events"], [])
        self.engine.ink(pt(1, 0.9, 0.9))
        self.assertEqual(self.engine.poll(2)["events"], [pt(1, 0.9, 0.9)])

    def test_poller_from_before_a_restart_gets_the_lower_number(self):
        self.engine.ink(begin(1))
        for since in (2, 1000, 2 ** 63 - 1):
            self.assertEqual(self.engine.poll(since)["seq"], 1)
            self.assertEqual(self.engine.poll(since)["events"], [])

    def test_bad_event_changes_nothing_of_its_batch(self):
        bad = [{}, [], "begin", 1, None, {"t": 1}, {"t": ["pt"]}, {"t": "Begin", "id": 1},
               {"t": "begin", "id": 1, "x": 0.1}, begin("3"), begin(True), begin(3.0),
               begin(2 ** 63), begin(1, "0", 0), begin(1, None, 0), begin(1, True, 0),
               begin(1, 10.5, 0), begin(1, 0, -1e300), pt(None), {"t": "del"},
               {"t": "del", "ids": 1}, {"t": "del", "ids": [1, "2"]}, {"t": "laser", "x": 1}]
        for event in bad:
            status, answer = self.engine.call("POST", "/api/ink", {"events": [begin(1), event]})
            self.assertEqual(status, 400, event)
            self.assertIn("event 1 ", answer["error"])
        for body in ({}, {"events": {}}, {"events": None}, []):
            self.assertEqual(self.engine.call("POST", "/api/ink", body)[0], 400, body)
        self.assertEqual(self.engine.get("/api/state")["inkSeq"], 0)

    def test_numbers_that_json_does_not_know_are_refused(self):
        for number in ("NaN", "Infinity", "-Infinity", "1e400", "1" * 5000, "01", "0x1", ".5"):
            body = f'{{"events": [{{"t": "laser", "x": {number}, "y": 0}}]}}'
            self.assertEqual(self.engine.call("POST", "/api/ink", body)[0], 400, number)

    def test_unknown_fields_are_not_passed_on(self):
        self.engine.ink({**begin(1), "colour": "red", "ids": [1]})
        self.assertEqual(self.engine.poll()["events"], [begin(1)])

    def test_points_of_no_stroke_are_ignored(self):
        self.assertEqual(self.engine.ink(pt(5), {"t": "del", "ids": [5]})["inkSeq"], 0)

    def test_beginning_a_stroke_again_replaces_it(self):
        self.engine.ink(begin(1), begin(2), begin(1, 0.9, 0.9))
        self.assertEqual(self.engine.poll(2)["events"],
                         [{"t": "del", "ids": [1]}, begin(1, 0.9, 0.9)])
        self.assertEqual(self.engine.get("/api/state")["strokes"], 2)

    def test_undo_deletes_the_last_stroke(self):
        self.engine.ink(begin(1), pt(1), begin(2))
        self.assertEqual(self.engine.post("/api/ink/undo")["strokes"], 1)
        self.assertEqual(self.engine.poll(3)["events"], [{"t": "del", "ids": [2]}])
        self.assertEqual(self.engine.post("/api/ink/undo")["strokes"], 0)
        seq = self.engine.get("/api/state")["inkSeq"]
        self.assertEqual(self.engine.post("/api/ink/undo")["inkSeq"], seq)

    def test_clear_empties_the_slide_and_reaches_every_poller(self):
        self.engine.ink(begin(1), pt(1))
        self.assertEqual(self.engine.ink({"t": "clear"}, begin(2))["strokes"], 1)
        for since in (0, 1, 2):
            self.assertEqual(self.engine.poll(since)["events"], [{"t": "clear"}, begin(2)])
        self.assertEqual(self.engine.poll(3)["events"], [begin(2)])

    def test_each_slide_keeps_its_own_ink(self):
        poller = Poller()

        def shown():
            poller.take(self.engine.poll(poller.seq))
            return poller.shown

        self.engine.ink(begin(1), pt(1))
        first = shown()
        self.engine.post("/api/next")
        self.assertEqual(shown(), [])
        self.engine.ink(begin(1, 0.7, 0.7), pt(1, 0.8, 0.8))
        second = shown()
        self.assertEqual(second, [(1, [(0.7, 0.7), (0.8, 0.8)])])
        self.engine.post("/api/previous")
        self.assertEqual(shown(), first)
        self.engine.post("/api/ink/undo")
        self.assertEqual(shown(), [])
        self.engine.post("/api/goto", {"slide": 2})
        self.assertEqual(shown(), second)

    def test_slide_change_starts_with_clear_and_going_nowhere_does_not(self):
        self.engine.ink(begin(1))
        self.assertEqual(self.engine.post("/api/goto", {"slide": 1})["inkSeq"], 1)
        self.engine.post("/api/goto", {"slide": 2})
        self.assertEqual(self.engine.poll(1)["events"], [{"t": "clear"}])
        self.engine.post("/api/goto", {"slide": 1})
        self.assertEqual(self.engine.poll(2)["events"], [{"t": "clear"}, begin(1)])

    def test_overlay_picture_comes_back_and_goes(self):
        _, png = self.engine.request("GET", "/api/slides/1/picture")
        self.assertEqual(self.engine.call("GET", "/api/ink/overlay")[0], 404)
        for version, (picture, kind) in enumerate(((png, "image/png"), (JPEG, "image/jpeg")), 1):
            self.assertEqual(self.engine.post("/api/ink/overlay", picture)["overlayV"], version)
            response, data = self.engine.request("GET", "/api/ink/overlay")
            self.assertEqual((response.headers["Content-Type"], data), (kind, picture))
        self.assertEqual(self.engine.post("/api/ink/overlay")["overlayV"], 3)
        self.assertEqual(self.engine.poll()["overlayV"], 3)
        self.assertEqual(self.engine.call("GET", "/api/ink/overlay")[0], 404)

    def test_overlay_takes_large_pictures_and_no_other_format(self):
        large = JPEG + bytes(3 * 1024 * 1024)
        self.engine.post("/api/ink/overlay", large)
        self.assertEqual(self.engine.request("GET", "/api/ink/overlay")[1], large)
        for bad in (b"GIF89a....", b"<svg/>", b"\xff", b"\x89PNG"):
            self.assertEqual(self.engine.call("POST", "/api/ink/overlay", bad)[0], 415)
        self.assertEqual(self.engine.get("/api/state")["overlayV"], 1)


class InkModelTest(unittest.TestCase):
    """The ink behind the interface, where clocks and sizes are at hand."""

    def setUp(self):
        self.ink = ink.Ink()

    def limit(self, **values):
        for name, value in values.items():
            patch = mock.patch.object(ink, name, value)
            patch.start()
            self.addCleanup(patch.stop)

    def poll(self, poller):
        poller.take({"seq": self.ink.seq, "events": self.ink.events_since(poller.seq)})
        return poller.shown

    def test_log_stays_small_and_late_pollers_get_the_whole_picture(self):
        self.limit(MAX_LOG=10)
        early = Poller()
        self.ink.apply(begin(1))
        self.poll(early)
        for index in range(100):
            self.ink.apply(pt(1, index / 100, 0.5))
            self.assertLessEqual(len(self.ink._log), 10)
        self.assertEqual(self.ink.seq, 101)
        self.assertEqual(self.ink.events_since(1)[:2], [{"t": "clear"}, begin(1)])
        self.assertEqual(self.poll(early), self.poll(Poller()))
        self.assertEqual(len(early.strokes[1]), 101)

    def test_laser_flood_stays_small(self):
        self.limit(MAX_LOG=100)
        for _ in range(1000):
            self.ink.apply({"t": "laser", "x": 0.5, "y": 0.5})
        self.assertEqual(self.ink.seq, 1000)
        self.assertLessEqual(len(self.ink._log), 100)

    def test_old_laser_is_not_shown_to_a_late_poller(self):
        with mock.patch.object(ink.time, "monotonic", lambda: 50.0):
            self.ink.apply(begin(1))
            self.ink.apply({"t": "laser", "x": 0.5, "y": 0.5})
            self.assertEqual(len(self.ink.events_since(0)), 2)
        with mock.patch.object(ink.time, "monotonic", lambda: 51.5):
            self.assertEqual(self.ink.events_since(0), [begin(1)])

    def test_laser_right_after_a_slide_change_is_not_lost(self):
        laser = {"t": "laser", "x": 0.5, "y": 0.5}
        self.ink.apply(begin(1))
        self.ink.show_slide(2)
        self.ink.apply(laser)
        self.assertEqual(self.ink.events_since(0), [{"t": "clear"}, laser])

    def test_long_strokes_stop_growing(self):
        self.limit(MAX_STROKE_POINTS=5)
        for event in [begin(1)] + [pt(1)] * 20:
            self.ink.apply(event)
        self.assertEqual(self.ink.seq, 5)

    def test_oldest_strokes_make_room(self):
        self.limit(MAX_STROKES=3)
        poller = Poller()
        for stroke in range(6):
            self.ink.apply(begin(stroke))
            self.poll(poller)
        self.assertEqual(list(poller.strokes), [3, 4, 5])

    def test_points_of_a_slide_are_bounded_by_dropping_the_oldest_strokes(self):
        self.limit(MAX_SLIDE_POINTS=10)
        poller = Poller()
        for stroke in range(5):
            for event in [begin(stroke)] + [pt(stroke)] * 3:
                self.ink.apply(event)
        self.assertEqual([n for n, _ in self.poll(poller)], [3, 4])
        for _ in range(20):
            self.ink.apply(pt(4))
        self.assertEqual([n for n, _ in self.poll(poller)], [4])
        self.assertEqual(self.ink._page.points, len(poller.strokes[4]))

    def test_pollers_of_any_pace_agree(self):
        self.limit(MAX_LOG=25, MAX_STROKES=6, MAX_SLIDE_POINTS=40)
        dice = random.Random(8484)
        pollers = [(Poller(), pace) for pace in (1, 3, 40, 200)]
        for step in range(3000):
            stroke = dice.randrange(9)
            roll = dice.random()
            if roll < 0.03:
                self.ink.show_slide(dice.randrange(1, 4))
            elif roll < 0.06:
                self.ink.undo()
            else:
                self.ink.apply(dice.choices(
                    [begin(stroke, step, 0), pt(stroke, step, 1), {"t": "clear"},
                     {"t": "del", "ids": [stroke, stroke, 99]}, {"t": "laserend"}],
                    [20, 60, 1, 8, 8])[0])
            for poller, pace in pollers:
                if step % pace == 0:
                    self.assertEqual(self.poll(poller), self.poll(Poller()), step)
