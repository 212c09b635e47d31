"""Shows of PowerPoint's that start in the middle, at the computer, or with settings of the user's."""
from __future__ import annotations

import time
import unittest

from powerpoint_case import PowerPointSteps, WithoutEngineTest, suite_deck
from presenter_suite import SOON, PresenterSuite
from private_office import wait_until
from private_powerpoint import ALL, SOME
from torvane_engine.presenters.powerpoint.presenter import PowerPoint


class ShowTest(PowerPointSteps):
    """Shows that start in the middle, on their own, or with settings of the user's; all of it with
    questions and answers that come in pieces, and an end that still names the last slide."""

    first_state = {"split": True, "endHasSlide": True}

    def test_end_of_the_show(self):
        PresenterSuite.test_end_of_the_show(self)
        self.assertEqual((self.state()["step"], self.state()["steps"]), (0, 0))

    def test_letters_of_all_kinds(self):
        mine = suite_deck()
        mine["path"] = "/Users/anna/\U0001f600 “deck”.pptx"
        mine["slides"][0]["title"] = "\U0001f600 \ud83d — 日本"
        self.powerpoint.set(decks=[mine])
        self.wait_for(deck="\U0001f600 “deck”.pptx", title="\U0001f600 ? — 日本", problem=None)
        self.powerpoint.set(decks=[suite_deck()])
        self.wait_for(deck="deck.pptx")

    def deck_state(self):
        return self.powerpoint.state()["decks"][0]

    def test_settings_of_the_user_are_put_back(self):
        for settings, saved in (({"starting": 2, "ending": 4, "range": SOME}, True),
                                ({"starting": 7, "ending": 8, "range": SOME}, False),
                                ({"starting": 1, "ending": 8, "range": ALL}, True)):
            with self.subTest(settings=settings, saved=saved):
                mine = suite_deck()
                mine.update(settings=settings, saved=saved)
                self.powerpoint.set(decks=[mine])
                self.go("/api/goto", {"slide": 6}, slide=6)
                self.go("/api/show/start", presenting=True, slide=6)
                show = self.powerpoint.state()["show"]
                self.assertEqual((show["from"], show["to"]), (6, 8))
                self.assertEqual((self.deck_state()["settings"], self.deck_state()["saved"]),
                                 (settings, saved))
                self.go("/api/show/end", presenting=False)

    def test_range_of_the_user_does_not_keep_the_first_slide_away(self):
        mine = suite_deck()
        mine["settings"] = {"starting": 3, "ending": 4, "range": SOME}
        self.powerpoint.set(decks=[mine])
        self.addCleanup(self.powerpoint.set, decks=[suite_deck()])
        self.start_at(1)

    def test_jump_out_of_the_dark(self):
        self.start_at(1)
        self.go("/api/blank", {"on": True}, blank=True)
        self.go("/api/goto", {"slide": 2}, slide=2, blank=False)

    def test_effects_that_need_no_press(self):
        mine = suite_deck()
        mine["slides"][2].update(effects=1, printed=3)
        self.powerpoint.set(decks=[mine])
        self.addCleanup(self.powerpoint.set, decks=[suite_deck()])
        self.start_at(4)
        self.go("/api/previous", slide=3)
        self.assertEqual(self.powerpoint.state()["show"]["index"], 3)
        self.go("/api/next", slide=4)

    def test_settings_are_put_back_when_the_show_does_not_start(self):
        self.powerpoint.set(decks=[suite_deck()], errors={"-50": "runSlideShow"})
        self.go("/api/goto", {"slide": 4}, slide=4)
        mark = self.powerpoint.mark()
        self.engine.call("POST", "/api/show/start")
        self.addCleanup(self.powerpoint.set, errors={})

        def tries():
            return [one for one in self.powerpoint.events(mark) if "runSlideShow" in one]
        wait_until(lambda: len(tries()) == 3 and "saved.=" in "".join(self.powerpoint.events(mark)),
                   "it has tried three times", SOON)
        self.wait_for(presenting=False, problem=None)
        self.assertEqual(self.deck_state()["settings"], suite_deck()["settings"])
        self.assertEqual(len(tries()), 3)

    def test_start_right_after_the_end_is_tried_again(self):
        self.start_at(1)
        mark = self.powerpoint.mark()
        self.engine.post("/api/show/end")
        self.go("/api/show/start", presenting=True, slide=1)
        self.assertGreaterEqual(sum("runSlideShow" in one for one in self.powerpoint.events(mark)), 2)

    def test_what_lies_before_the_start_can_be_gone_to(self):
        self.start_at(6)
        self.go("/api/previous", slide=4)
        self.go("/api/previous", slide=3, step=3, steps=3)
        self.go("/api/previous", slide=3, step=2)
        self.go("/api/goto", {"slide": 2}, slide=2, step=0)
        self.go("/api/next", slide=3, step=0)

    def test_started_at_the_computer(self):
        self.press("F5")
        self.wait_for(presenting=True, slide=1)
        self.press("Next")
        self.press("Next")
        self.press("Next")
        self.wait_for(slide=3, steps=3)
        self.press("b")
        self.wait_for(blank=True)
        self.press("Escape")
        self.wait_for(presenting=False, slide=3, steps=0)

    def test_editor_without_a_slide_in_it_keeps_the_last_one(self):
        self.go("/api/goto", {"slide": 7}, slide=7)
        self.addCleanup(self.go, "/api/goto", {"slide": 1}, slide=1)
        mine = suite_deck()
        mine["window"] = {"slide": 7, "sorting": True}
        self.powerpoint.set(decks=[mine])
        self.addCleanup(self.powerpoint.set, decks=[suite_deck()])
        time.sleep(0.5)
        self.assertEqual((self.state()["slide"], self.state()["problem"]), (7, None))


class LateTest(WithoutEngineTest):
    def test_actions_wait_until_what_they_did_can_be_seen(self):
        self.open(suite_deck(), late=100)
        presenter = PowerPoint()
        self.addCleanup(presenter.close)
        presenter.look()
        presenter.start()
        for action, slide in (("next", 2), ("next", 3), ("previous", 2)):
            getattr(presenter, action)()
            self.assertEqual(presenter.look().slide, slide, action)


if __name__ == "__main__":
    unittest.main()
