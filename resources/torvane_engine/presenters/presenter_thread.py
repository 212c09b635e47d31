"""The thread that drives one presenter, and the snapshot that everybody else reads."""
from __future__ import annotations

import collections
import math
import threading
import time
from typing import Any, Callable, Deque, NamedTuple, Optional, Tuple

from ..log import log_error
from .picture_cache import Picture, PictureCache
from .presenter import Absent, Empty, Look, Page, Presenter, Progress, Refused, Unavailable
from .slide_reader import SlideReader
from .wake import Wake

MAX_COMMANDS = 16        # that wait for their turn
COMMAND_SECONDS = 2.0    # a command that could not begin by then is no longer meant
PICTURE_SECONDS = 10.0   # that a client waits for a picture


class Snapshot(NamedTuple):
    """What is known of a presenter. Never changed, only replaced."""

    look: Look = Look(slide=0, count=0)
    pages: Tuple[Page, ...] = ()
    progress: Optional[Progress] = None
    problem: Optional[str] = None
    absent: bool = True  # there is nothing to drive; with a problem and not absent: out of reach
    empty: bool = False  # absent, but the program is there and can show the sample deck

    @property
    def page(self) -> Page:
        """The current slide's."""
        inside = 1 <= self.look.slide <= len(self.pages)
        return self.pages[self.look.slide - 1] if inside else Page()


class Ticket:
    """One action on its way to a presenter."""

    def __init__(self, action: str, arguments: Tuple[Any, ...], expires: float) -> None:
        self.action, self.arguments, self.expires = action, arguments, expires
        self.refusal: Optional[str] = None
        self.result: Any = None
        self._done = threading.Event()

    def finish(self, refusal: Optional[str] = None) -> None:
        self.refusal = refusal
        self._done.set()

    def wait(self, seconds: float) -> bool:
        """Until the snapshot shows what the action did, at most `seconds`; whether it does. Raises
        Refused."""
        done = self._done.wait(seconds)
        if done and self.refusal is not None:
            raise Refused(self.refusal)
        return done


class PresenterThread:
    """Every public member may be used by any thread, and none of them waits for the program."""

    def __init__(self, presenter: Presenter, clock: Callable[[], float] = time.monotonic) -> None:
        self.presenter = presenter
        presenter.tell = self._tell
        self.snapshot = Snapshot()
        self.first_look = threading.Event()
        self._clock = clock
        self._cache = PictureCache()
        self._reader = SlideReader(presenter, self._cache)
        self._commands: Deque[Ticket] = collections.deque()
        self._next_look = -math.inf
        self._wake = Wake()
        self._stopped = False

    def start(self) -> None:
        threading.Thread(target=self._run, name=self.presenter.name, daemon=True).start()

    def stop(self) -> None:
        """Does not wait for a call that is on its way; the process is about to end."""
        self._stopped = True
        self._wake.set()
        self.presenter.close()

    def submit(self, action: str, *arguments: Any, patience: float = COMMAND_SECONDS) -> Ticket:
        """Queues an action, named by Presenter's method, which is given up if it cannot begin within
        `patience`. Raises Refused, with the problem there is."""
        snapshot = self.snapshot
        if snapshot.problem is not None and not (snapshot.empty and action == "start_sample"):
            raise Refused(snapshot.problem)
        if len(self._commands) >= MAX_COMMANDS:
            raise Refused("Too many actions are waiting: try again.")
        ticket = Ticket(action, arguments, self._clock() + patience)
        self._commands.append(ticket)
        self._wake.set()
        return ticket

    def picture(self, page: int, width: int) -> Optional[Picture]:
        """Of the current document, as wide as asked for or the next width there is. None when it
        cannot be made in time; an older one when there is one. Raises Refused."""
        widths = self.presenter.widths
        width = next((there for there in widths if there >= width), widths[-1])
        look = self.snapshot.look
        key = (look.document, page, width)
        picture = self._cache.get(key)
        if picture is None or picture.revision != look.revision:
            if self.snapshot.problem is None:
                made = self._reader.wish(page, width, look.document)
                self._wake.set()
                made.wait(PICTURE_SECONDS)
            picture = self._cache.get(key)
        return picture

    def _run(self) -> None:
        while not self._stopped:
            self._wake.clear()  # before the look at what there is to do: nothing is missed
            seconds = self.turn() - self._clock()
            if seconds > 0 and self.presenter.rest(min(seconds, 3600.0), self._wake):
                self._next_look = -math.inf

    def turn(self) -> float:
        """One thing, the most urgent first; returns when the next may be due."""
        now = self._clock()
        try:
            if self._commands:
                self._execute(self._commands.popleft(), now)
            elif now >= self._next_look:
                self._look()
            elif self.snapshot.problem is None:
                due = self._reader.step(now)
                self._publish(self.snapshot.look)
                return min(due, self._next_look)
            else:
                return self._next_look
        except (Absent, Unavailable) as error:
            self._fail(str(error), isinstance(error, Absent), isinstance(error, Empty))
        except Exception as error:  # a fault of a presenter must not end the others
            if not self._stopped:
                log_error(f"{self.presenter.name}: {error!r}")
            self._fail("The engine could not drive the presentation; its log says why.", False)
        return now

    def _execute(self, ticket: Ticket, now: float) -> None:
        if now > ticket.expires:
            return ticket.finish("The presentation did not answer in time.")
        refusal: Optional[str] = "The presentation did not answer."
        try:
            ticket.result = getattr(self.presenter, ticket.action)(*ticket.arguments)
            self._look()
            refusal = None
        except (Refused, Absent, Unavailable) as error:
            refusal = str(error)
            if not isinstance(error, Refused):
                raise
        finally:
            ticket.finish(refusal)

    def _look(self) -> None:
        look = self.presenter.look()
        now = self._clock()
        self._next_look = now + self.presenter.poll_seconds
        self._reader.follow(look, now)
        if self.snapshot.problem is not None:
            log_error(f"{self.presenter.name}: ready")
        self._publish(look)
        self.first_look.set()

    def _publish(self, look: Look) -> None:
        """Replaces the snapshot only when it is another one: nobody has to judge it again then."""
        snapshot = Snapshot(look, self._reader.pages, self._reader.progress, None, absent=False)
        if snapshot != self.snapshot:
            self.snapshot = snapshot

    def _tell(self, progress: Progress) -> None:
        """Of the action that is being done; the look after it tells what it led to."""
        self.snapshot = self.snapshot._replace(progress=progress)

    def _fail(self, problem: str, absent: bool, empty: bool = False) -> None:
        if self._stopped:
            return  # it was closed in the middle of a call
        self._next_look = self._clock() + self.presenter.retry_seconds
        if problem != self.snapshot.problem and self.first_look.is_set():
            log_error(f"{self.presenter.name}: {problem}")
        # What is out of reach for a moment is still there; what has gone shows nothing any more.
        kept = Snapshot() if absent else self.snapshot
        self.snapshot = kept._replace(problem=problem, absent=absent, empty=empty, progress=None)
        self._reader.forget_wishes()
        self.first_look.set()
