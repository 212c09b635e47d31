"""What the tests of LibreOffice Impress itself share; they are skipped where it is not installed."""
from __future__ import annotations

import unittest

import decks
from private_office import PrivateOffice, missing, wait_until

LACKS = missing()


class OfficeTest(unittest.TestCase):
    """One office with one deck, for all tests of a class."""

    size = (28, 15.75)
    deck = "deck.odp"

    @classmethod
    def setUpClass(cls):
        if LACKS:
            raise unittest.SkipTest(f"not installed: {LACKS}")
        cls.office = PrivateOffice()
        cls.addClassCleanup(cls.office.close)
        decks.write(cls.office.path("deck.odp"), decks.slides(8), cls.size)
        cls.start_office()
        cls.engine = cls.office.start_engine()
        cls.reach()

    @classmethod
    def start_office(cls):
        if cls.deck != "deck.odp":
            cls.office.convert(cls.office.path("deck.odp"), cls.deck.rpartition(".")[2])
        cls.office.start(cls.office.path(cls.deck))

    @classmethod
    def reach(cls):
        wait_until(lambda: cls.engine.get("/api/state")["deck"] == cls.deck, "Impress is driven")

    def press(self, key, window=""):
        self.office.key(key, window)

    def export_states(self):
        """Every one that is seen until the end of an export."""
        seen = [self.engine.post("/api/export")["export"]]
        while seen[-1]["state"] not in ("done", "failed"):
            state = self.engine.get("/api/state")["export"]
            if state != seen[-1]:
                seen.append(state)
        return seen
