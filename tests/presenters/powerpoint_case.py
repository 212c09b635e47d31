"""What the tests of PowerPoint share. They are skipped where node is not installed."""
from __future__ import annotations

import os
import unittest
from unittest import mock

from presenter_suite import SOON, PresenterSteps, PresenterSuite
from private_office import wait_until
from private_powerpoint import PrivatePowerPoint, deck, missing, slide

LACKS = missing()


def suite_deck(name="deck.pptx"):
    return deck(f"/Users/anna/Vorträge/{name}", [
        slide(number, title, notes, hidden=number == 5, effects=3 if number == 3 else 0)
        for number, (title, notes) in enumerate(zip(PresenterSuite.titles, PresenterSuite.notes), 1)])


def long_deck(count, name="deck.pptx", **special):
    """Slides without notes; those named s3, s17 and so on have what is given."""
    return deck(f"/Users/anna/{name}", [
        slide(number, f"Slide {number}", **special.get(f"s{number}", {}))
        for number in range(1, count + 1)])


class PowerPointSetUp(unittest.TestCase):
    """One PowerPoint for all tests of a class."""

    first_state = {}

    @classmethod
    def decks(cls):
        return [suite_deck()]

    @classmethod
    def setUpClass(cls):
        if LACKS:
            raise unittest.SkipTest(f"not installed: {LACKS}")
        cls.powerpoint = PrivatePowerPoint(*cls.decks(), **cls.first_state)
        cls.addClassCleanup(cls.powerpoint.close)
        cls.engine = cls.powerpoint.start_engine()
        wait_until(lambda: cls.engine.get("/api/state")["deck"] == "deck.pptx", "it is driven", SOON)

    def press(self, key):
        self.powerpoint.press(key)


class PowerPointSteps(PowerPointSetUp, PresenterSteps):
    """With what tests of a presenter are made of, and tests of their own."""


class WithoutEngineTest(unittest.TestCase):
    """A PowerPoint for each test, and whoever asks `osascript` in this process."""

    def setUp(self):
        if LACKS:
            self.skipTest(f"not installed: {LACKS}")

    def open(self, *decks, **state):
        self.powerpoint = PrivatePowerPoint(*decks, **state)
        self.addCleanup(self.powerpoint.close)
        patch = mock.patch.dict(os.environ, self.powerpoint.environment)
        patch.start()
        self.addCleanup(patch.stop)
