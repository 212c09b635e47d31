"""What drives one presentation program: the contract between it and the engine.

A program is driven by a subclass of Presenter. All of its methods are called by one thread, a
PresenterThread, one after the other; nothing else waits for them but a client for the 0.3 s in
which it likes to see what its action did. A presenter keeps no caches and polls nothing by itself.
"""
from __future__ import annotations

import abc
from typing import Any, Callable, NamedTuple, Optional, Tuple

from .lines import Report
from .wake import Wake


class Progress(NamedTuple):
    """Something that takes long. `task` is one of the words of docs/engine-api.md."""

    task: str
    done: int
    total: int


class Document(NamedTuple):
    """An open presentation.

    `id` goes over HTTP and must not tell where the file lies. A file that is opened again, also by a
    restarted program, has its old id again and so its ink.
    """

    id: str
    title: str
    presenting: bool = False


class Look(NamedTuple):
    """What a program shows at one moment. Slides are numbered from 1 as the editor shows them,
    hidden ones included."""

    documents: Tuple[Document, ...] = ()
    document: str = ""        # id of the one that actions go to
    slide: int = 1            # the one on the screen, else the one in the editor
    count: int = 1
    step: int = 0             # effects that were played on the slide, as far as is known
    steps: int = 0            # effects that wait for a press on the slide
    aspect: float = 0.5625    # height divided by width
    presenting: bool = False  # a show of `document` runs
    blank: bool = False       # the show is dark
    at_end: bool = False      # the show is past its last slide
    revision: Any = 0         # another value whenever titles, notes or pictures may be others
    progress: Optional[Progress] = None
    is_sample: bool = False   # there is nothing better: a problem of another program is told with it


class Page(NamedTuple):
    """What is read of a slide once, and again after changes."""

    title: str = ""
    notes: str = ""
    hidden: bool = False


class Absent(Exception):
    """Nothing is there to be driven. Its text says what to open, in a whole sentence."""


class Empty(Absent):
    """The program is there with nothing open, and can show the sample deck."""


class Unavailable(Exception):
    """The program is there, but cannot be driven now. Its text says what to do, in a sentence."""


class Refused(Exception):
    """The action does not go together with what is shown. Its text says why, in a sentence."""


class NotYet(Exception):
    """A picture is on its way, and will be asked for again in a moment. Until then the presenter is
    free for everything else."""


class Presenter(abc.ABC):
    """Drives one presentation program.

    Every method but close() may raise Absent or Unavailable, after which look() is asked again until
    it succeeds. Every method has a time limit of its own making: look() 1.5 s, actions 2.5 s,
    read_page() and picture() 10 s, export_pdf() 10 s without progress and 300 s altogether. A
    program that takes longer is given up (its process, script or connection ended) and Unavailable
    is raised. Anything else that is raised is logged as a fault.

    An action returns when what it did can be seen by look(), or after 0.25 s without that; it may
    raise Refused, and has done nothing then. One that takes longer calls `tell` meanwhile, and at
    least every 2.5 s.
    """

    name = ""            # for the log
    poll_seconds = 0.1   # between two looks while all is well, and it tells no news
    retry_seconds = 1.0  # between two looks while it is absent or unavailable
    widths: Tuple[int, ...] = (320, 640, 1280, 1920)  # of pictures
    idle_width: Optional[int] = 320  # of the pictures that are made before anybody asks
    exports_in_show = False  # whether export_pdf() holds up no show; else it waits for the end
    tell: Callable[[Progress], None] = staticmethod(lambda progress: None)  # set by its thread

    @abc.abstractmethod
    def look(self) -> Look:
        """Asked ten times a second: cheap, and the only way in which the engine learns anything."""

    def rest(self, seconds: float, wake: Wake) -> bool:
        """Waits until it is woken, at most `seconds`. True, and sooner, when there is news: a look is
        due at once. A presenter that tells all news need not be looked at as often."""
        wake.wait(seconds)
        return False

    @abc.abstractmethod
    def next(self) -> None:
        """What a clicker does: the next effect, else the next slide, hidden ones left out. Stays at
        the end. Without a show: the next slide in the editor."""

    @abc.abstractmethod
    def previous(self) -> None:
        """Takes back the last effect, else goes to the slide before. Stays at the beginning."""

    @abc.abstractmethod
    def go_to(self, page: int) -> None:
        """Shows a slide, also a hidden one. Refused when there is none of this number."""

    @abc.abstractmethod
    def start(self) -> None:
        """Starts the show at the current slide. Does nothing while one runs."""

    def start_sample(self, slide: int) -> None:
        """After Empty: opens the sample deck and starts its show at this slide."""
        raise Refused("There is no sample deck.")

    @abc.abstractmethod
    def end(self) -> None:
        """Ends the show. Does nothing while none runs."""

    @abc.abstractmethod
    def blank(self, on: bool) -> None:
        """Makes the show dark or brings it back. Refused while none runs."""

    @abc.abstractmethod
    def choose(self, document: str) -> None:
        """Makes an open document the one that actions go to, until another is chosen here or at the
        computer. Refused when it is not open or another one is being shown."""

    @abc.abstractmethod
    def read_page(self, document: str, page: int) -> Page:
        """Title, notes and whether the slide is left out of shows."""

    @abc.abstractmethod
    def picture(self, document: str, page: int, width: int) -> bytes:
        """The slide with all its objects as a PNG or JPEG file `width` pixels wide; without ink.
        Raises NotYet as well."""

    def export_pdf(self, document: str, path: str, report: Report) -> int:
        """Writes all slides without ink to a new PDF file, one page for each, hidden ones included:
        page n is slide n. Returns how many there are. A program that shows a PDF copies it. `report`
        is told how many pages of how many are done. Neither the document nor its file is touched.
        Refused where it cannot be done or would hold up a show; what was begun is of no use then."""
        raise Refused("This presentation cannot be made a PDF.")

    def close(self) -> None:
        """The engine ends or the presenter is no longer wanted. Must not wait for the program, and
        is called by another thread, perhaps in the middle of a call."""
