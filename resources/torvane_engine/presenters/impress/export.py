"""A presentation as a PDF file, written by the office."""
from __future__ import annotations

from typing import Any

import uno
import unohelper
from com.sun.star.io import IOException
from com.sun.star.task import XStatusIndicator

from ..lines import Report
from ..presenter import Refused
from .connection import values

# Hidden slides are kept and no notes are added, whatever its user chose last: page n is slide n.
PAGES = {"ExportHiddenSlides": True, "ExportNotesPages": False, "ExportOnlyNotesPages": False,
         "EncryptFile": False, "RestrictPermissions": False}
UNWRITTEN = "LibreOffice could not write the PDF: look whether the disk is full."


class Bar(unohelper.Base, XStatusIndicator):
    """What the office believes to be the progress bar of a window."""

    def __init__(self, report: Report) -> None:
        self._report, self._done, self._total = report, -1, 1

    def start(self, _: str, total: int) -> None:
        self._total = max(total, 1)

    def setValue(self, done: int) -> None:  # noqa: N802  the office calls it so
        if done > self._done:
            self._done = done
            self._report(min(done, self._total), self._total)

    def end(self) -> None:
        pass

    def reset(self) -> None:
        pass

    def setText(self, _: str) -> None:  # noqa: N802
        pass


def export_pdf(model: Any, path: str, report: Report) -> None:
    """The document is neither saved by this nor does it count as changed or as another file."""
    settings = uno.Any("[]com.sun.star.beans.PropertyValue", values(**PAGES))
    try:
        model.storeToURL(uno.systemPathToFileUrl(path), values(
            FilterName="impress_pdf_Export", FilterData=settings, Overwrite=True,
            StatusIndicator=Bar(report)))
    except IOException:
        raise Refused(UNWRITTEN) from None
