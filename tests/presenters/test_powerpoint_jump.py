"""Going to a slide of a running show, which PowerPoint for a Mac has no way to."""
from __future__ import annotations

import unittest

from powerpoint_case import PowerPointSteps, WithoutEngineTest, long_deck
from presenter_suite import SOON
from private_office import wait_until
from private_powerpoint import SOME
from torvane_engine.presenters.powerpoint.presenter import PowerPoint
from torvane_engine.presenters.presenter import Refused


class JumpTest(PowerPointSteps):
    count = 60

    @classmethod
    def decks(cls):
        return [long_deck(60, s10={"effects": 4}, s20={"hidden": True}, s21={"hidden": True},
                          s30={"effects": 40})]

    def jump(self, first, to):
        """What was asked for meanwhile, from a show at a slide on."""
        self.go("/api/goto", {"slide": 1}, slide=1)
        self.go("/api/show/start", presenting=True, slide=1)
        self.addCleanup(self.powerpoint.set, slow=0, late=0)
        self.addCleanup(self.go, "/api/show/end", presenting=False)
        if first > 1:
            self.go("/api/goto", {"slide": first}, slide=first)
        mark = self.powerpoint.mark()
        self.go("/api/goto", {"slide": to}, slide=to, blank=False, presenting=True)
        return self.powerpoint.events(mark)

    def moves(self, events):
        return [one.split(".")[-2] for one in events if ".goTo" in one]

    def dark(self, events):
        return [one.rpartition("state ")[2] for one in events if "slideState.=" in one]

    def test_up_to_three_slides_are_stepped_in_sight(self):
        events = self.jump(6, 9)
        self.assertEqual((self.moves(events), self.dark(events)), (["goToNextSlide"] * 3, []))
        self.go("/api/goto", {"slide": 7}, slide=7)

    def test_more_are_stepped_in_the_dark_within_one_question(self):
        events = self.jump(6, 16)
        self.assertEqual(self.moves(events), ["goToNextSlide"] * 14)  # four effects of slide 10
        self.assertEqual(self.dark(events), ["black screen", "running"])
        during = events[events.index(next(one for one in events if "slideState.=" in one)):]
        during = during[:during.index(next(one for one in during if "running" in one))]
        self.assertFalse([one for one in during if "fullName" in one], "a look came in between")

    def test_hidden_slides_in_between(self):
        self.assertEqual(len(self.moves(self.jump(18, 24))), 4)

    def test_first_and_last_are_gone_to_at_once(self):
        self.assertEqual(self.moves(self.jump(30, 60)), ["goToLastSlide"])
        events = self.jump(30, 1)
        self.assertEqual((self.moves(events), self.dark(events)), (["goToFirstSlide"], []))

    def test_shortest_way_is_taken(self):
        self.assertEqual(self.moves(self.jump(30, 3)), ["goToFirstSlide"] + ["goToNextSlide"] * 2)
        self.assertEqual(self.moves(self.jump(30, 58)), ["goToLastSlide"] + ["goToPreviousSlide"] * 2)

    def test_state_tells_that_a_jump_is_on_its_way(self):
        self.start_at(1)
        self.powerpoint.set(slow=8)
        self.addCleanup(self.powerpoint.set, slow=0)
        self.engine.post("/api/goto", {"slide": 30})
        seen = []
        while True:
            state = self.state()
            if state["slide"] == 30:
                break
            if state["progress"] not in seen:
                seen.append(state["progress"])
        self.powerpoint.set(slow=0)
        jumps = [one for one in seen if one and one["task"] == "jump"]
        self.assertGreater(len(jumps), 5)
        self.assertEqual({one["total"] for one in jumps}, {29})
        self.assertEqual(jumps, sorted(jumps, key=lambda one: one["done"]))
        wait_until(lambda: (self.state()["progress"] or {}).get("task") != "jump", "it is over", SOON)
        self.wait_for(blank=False, slide=30)

    def test_position_that_is_told_late(self):
        for milliseconds in (30, 130):
            with self.subTest(milliseconds):
                self.powerpoint.set(late=milliseconds)
                moves = self.moves(self.jump(2, 8))
                self.assertEqual(self.powerpoint.state()["show"]["index"], 8)
                self.assertEqual(moves.count("goToPreviousSlide") > 0, milliseconds == 130)
                self.go("/api/show/end", presenting=False)


class RefusedJumpTest(WithoutEngineTest):
    """Asked without the engine, which answers before a jump has failed."""

    def in_show(self, state=None, **settings):
        mine = long_deck(60, s30={"effects": 40})
        mine["settings"].update(settings)
        self.open(mine, **state or {})
        presenter = PowerPoint()
        self.addCleanup(presenter.close)
        self.powerpoint.press("F5")
        self.assertTrue(presenter.look().presenting)
        return presenter

    def assert_stays(self, presenter, slide):
        look = presenter.look()
        self.assertEqual((look.slide, look.presenting, look.blank, look.at_end),
                         (slide, True, False, False))

    def test_slide_outside_of_the_show(self):
        for state, outside in (({}, 2), ({}, 18), ({"endHasSlide": True}, 18)):
            presenter = self.in_show(state, starting=5, ending=15, range=SOME)
            presenter.go_to(7)
            with self.subTest(outside, **state), self.assertRaisesRegex(Refused, "did not come"):
                presenter.go_to(outside)
            self.assert_stays(presenter, 7)

    def test_more_effects_than_can_be_believed(self):
        presenter = self.in_show()
        presenter.go_to(29)
        with self.assertRaisesRegex(Refused, "did not come"):
            presenter.go_to(33)
        self.assert_stays(presenter, 29)


if __name__ == "__main__":
    unittest.main()
