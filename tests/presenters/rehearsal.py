"""A show at random, with ink, in front of an office that is asked what it really shows."""
from __future__ import annotations

import collections
import random
import time
from typing import Any, Callable, Counter, Deque, Dict, List

import decks
from engine_support import Poller, begin, pt
from office_witness import Witness, seen_in
from private_office import PrivateOffice
from show_clients import Client, Differs, OutOfReach
from show_model import ShowModel

SOON = 10.0           # seconds until the state must have what was done
BACK = 60.0           # until an office that is out of reach must be driven again
KEY_PACE = 0.16       # an office takes a quicker press for "finish this effect"
START_PACE = 0.6
MOST_STROKES = 200    # of a slide, well below what the engine keeps


class Rehearsal:
    def __init__(self, office: PrivateOffice, witness: Witness, client: Client, slides: int,
                 seed: int) -> None:
        self.office, self.witness, self.client = office, witness, client
        self.random = random.Random(seed)
        self.model = ShowModel(decks.slides(slides))
        self.ink: Dict[int, Dict[int, List[Any]]] = {}
        self.strokes = 0  # sent and acknowledged
        self.poller = Poller()
        self.next_seconds: List[float] = []
        self.counts: Counter[str] = collections.Counter()
        self.out_of_reach: Counter[str] = collections.Counter()
        self.last: Deque[str] = collections.deque(maxlen=10)  # actions, for who looks for a fault
        self._last_press = 0.0
        self.state = self.client.ask("GET", "/api/state")

    def change(self) -> None:
        """One action, what it must lead to, and now and then some ink."""
        action = self.random.choice(self.model.actions())
        self.counts[action] += 1
        self.last.append(f"{action} on {self.model.slide}")
        before = time.monotonic()
        shown = self._shown()
        try:
            getattr(self, "_" + action)()
            self._wait()
        except OutOfReach as problem:
            self.out_of_reach[str(problem)] += 1
            return self._come_back()
        if action == "next" and self._shown() != shown:
            self.next_seconds.append(time.monotonic() - before)
        self._last_press = time.monotonic()
        self._draw()

    def _come_back(self) -> None:
        """Whether the action was done nobody can say now, so the show goes on at a known slide."""
        deadline = time.monotonic() + BACK
        while True:
            self.state = self.client.ask("GET", "/api/state")
            office = self.witness.look()
            if self.state["problem"] is None and office == seen_in(self.state):
                break
            if time.monotonic() > deadline:
                raise Differs(f"not back: the office shows {office}, the state is {self.state}")
            time.sleep(0.1)
        self.model.end()
        self.model.presenting = office.presenting
        self.model.follow(office.slide)
        try:
            self._goto()
            self._wait()
        except OutOfReach:
            self._come_back()

    def _shown(self) -> Any:
        model = self.model
        return model.presenting, model.slide, model.dark, model.at_end

    def _wait(self) -> None:
        """Until the state is the model's."""
        deadline = time.monotonic() + SOON
        while self._of_state() != self._shown():
            if self.state["problem"]:
                raise OutOfReach(self.state["problem"])
            if time.monotonic() > deadline:
                raise Differs(f"expected {self._shown()}, the state is {self._of_state()}, "
                              f"the office shows {self.witness.look()}")
            self.state = self.client.ask("GET", "/api/state")

    def _of_state(self) -> Any:
        state = self.state
        return state["presenting"], state["slide"], state["blank"], state["atEnd"]

    def _post(self, path: str, body: Any = None) -> None:
        self.state = self.client.ask("POST", "/api/" + path, body)

    def _next(self) -> None:
        self.model.next()
        self._post("next")

    def _previous(self) -> None:
        self.model.previous()
        self._post("previous")

    def _goto(self) -> None:
        self._go_to(self.random.choice([number for number in range(1, self.model.count + 1)
                                        if number != self.model.slide]))

    def _go_to(self, slide: int) -> None:
        self.model.go_to(slide)
        self._post("goto", {"slide": slide})

    def _dark(self) -> None:
        self.model.blank(True)
        self._post("blank", {"on": True})

    def _light(self) -> None:
        self.model.blank(False)
        self._post("blank", {"on": False})

    def _start(self) -> None:
        self.model.start()
        self._post("show/start")
        self._wait()
        time.sleep(START_PACE)

    def _end(self) -> None:
        """Where the show leaves the editor is for the office to say."""
        self.model.end()
        self._post("show/end")
        deadline = time.monotonic() + SOON
        while self.witness.look().presenting and time.monotonic() < deadline:
            time.sleep(0.05)
        time.sleep(START_PACE)
        self.model.follow(self.witness.look().slide)
        self.state = self.client.ask("GET", "/api/state")

    def _key(self) -> None:
        """Pressed at the computer, when the office counts it as one."""
        time.sleep(max(self._last_press + KEY_PACE - time.monotonic(), 0.0))
        key, press = self.random.choice((("Next", self.model.next),
                                         ("Prior", self.model.previous)))
        press()
        self.last.append(key)
        self.office.key(key)
        time.sleep(KEY_PACE)

    def _draw(self) -> None:
        ink = self.ink.setdefault(self.model.slide, {})
        what = self.random.random()
        if what < 0.6:
            self.strokes += 1
            points = [(self.random.random(), self.random.random())
                      for _ in range(self.random.randint(1, 12))]
            self.client.ask("POST", "/api/ink", {"events": [
                (pt if index else begin)(self.strokes, *point)
                for index, point in enumerate(points)]})
            ink[self.strokes] = points
        elif what < 0.65:
            self.client.ask("POST", "/api/ink/undo")
            if ink:
                ink.popitem()
        elif what < 0.68 or len(ink) > MOST_STROKES:
            self.client.ask("POST", "/api/ink", {"events": [{"t": "clear"}]})
            ink.clear()
        elif what < 0.75:
            self.client.ask("POST", "/api/ink", {"events": [{"t": "laser", "x": what, "y": what}]})
        self.compare_ink()

    def compare_ink(self) -> None:
        """Of the slide that is shown: every acknowledged stroke, and no other."""
        self.poller.take(self.client.ask("GET", f"/api/ink/events?since={self.poller.seq}"))
        expected = list(self.ink[self.model.slide].items())
        if self.poller.shown != expected:
            lost = set(self.ink[self.model.slide]) - set(self.poller.strokes)
            more = set(self.poller.strokes) - set(self.ink[self.model.slide])
            raise Differs(f"ink of slide {self.model.slide}: lost {lost}, more {more}")

    def compare_office(self) -> None:
        """State and office must agree; what happens at this moment gets its time."""
        deadline = time.monotonic() + SOON
        while True:
            office, state = self.witness.look(), self.client.ask("GET", "/api/state")
            if office == seen_in(state):
                return
            if time.monotonic() > deadline:
                raise Differs(f"the office shows {office}, the state says {seen_in(state)}")

    def compare_all_ink(self) -> None:
        """Outside a show, where every slide can be gone to."""
        self._insist(self._end)
        for slide in self.ink:
            self._insist(self._go_to, slide)
            self.compare_ink()

    def _insist(self, act: Callable[..., None], *arguments: Any) -> None:
        while True:
            try:
                act(*arguments)
                return self._wait()
            except OutOfReach as problem:
                self.out_of_reach[str(problem)] += 1
                self._come_back()
