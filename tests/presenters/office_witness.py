"""What an office says of its show, over a connection that has nothing to do with the engine's."""
from __future__ import annotations

from typing import NamedTuple

import uno
from com.sun.star.connection import NoConnectException

from private_office import PrivateOffice, wait_until


class Seen(NamedTuple):
    presenting: bool
    slide: int
    dark: bool  # darkened, or past the last slide: the office knows one word for both


def seen_in(state: dict) -> Seen:
    """The same of the engine's state."""
    return Seen(state["presenting"], state["slide"], state["blank"] or state["atEnd"])


class Witness:
    """Of an office that it starts with one deck, which opens a pipe for it from the beginning."""

    def __init__(self, office: PrivateOffice, deck: str) -> None:
        pipe = "witness" + office.home.rpartition("-")[2]
        office.start(f"--accept=pipe,name={pipe};urp", deck)
        local = uno.getComponentContext()
        resolver = local.ServiceManager.createInstanceWithContext(
            "com.sun.star.bridge.UnoUrlResolver", local)

        def context():
            try:
                return resolver.resolve(f"uno:pipe,name={pipe};urp;StarOffice.ComponentContext")
            except NoConnectException:
                return None

        context = wait_until(context, "the office's pipe")
        desktop = context.ServiceManager.createInstanceWithContext(
            "com.sun.star.frame.Desktop", context)
        url = uno.systemPathToFileUrl(deck)

        def document():
            parts = desktop.Components.createEnumeration()
            while parts.hasMoreElements():
                part = parts.nextElement()
                if getattr(part, "URL", None) == url and part.CurrentController is not None:
                    return part
            return None

        self._model = wait_until(document, "the deck's window")

    def look(self) -> Seen:
        show = self._model.Presentation
        control = show.getController() if show.isRunning() else None
        if control is None:
            return Seen(False, self._model.CurrentController.CurrentPage.Number, False)
        page = control.getCurrentSlide()
        return Seen(True, page.Number if page is not None else 0, control.isPaused())
