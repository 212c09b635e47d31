"""A presenter whose program is a few variables of the test, and a clock that the test moves."""
from __future__ import annotations

from torvane_engine.presenters.presenter import Document, Look, NotYet, Page, Presenter, Refused


class Clock:
    def __init__(self):
        self.now = 100.0

    def __call__(self):
        return self.now


class FakePresenter(Presenter):
    name = "Fake"

    def __init__(self, document="d1", count=3):
        documents = (Document(document, f"Deck {document}"),) if document else ()
        self.now_shown = Look(documents, document, 1, count, revision=1)
        self.error = None    # raised by everything
        self.before = None   # called first by everything
        self.calls = []
        self.pdf = None      # the file that an export writes; None refuses
        self.exporting = None  # called in the middle of an export
        self.pictures_take = 0  # questions for pictures that are answered "not yet"

    def set(self, **members):
        self.now_shown = self.now_shown._replace(**members)

    def _do(self, *call):
        self.calls.append(call)
        if self.before:
            self.before()
        if self.error:
            raise self.error

    def look(self):
        self._do("look")
        return self.now_shown

    def next(self):
        self._do("next")
        self.set(slide=self.now_shown.slide + 1)

    def previous(self):
        self._do("previous")
        self.set(slide=self.now_shown.slide - 1)

    def go_to(self, page):
        self._do("go_to", page)
        self.set(slide=page)

    def start(self):
        self._do("start")
        self.set(presenting=True)

    def start_sample(self, slide):
        self.calls.append(("start_sample", slide))
        self.error = None
        self.set(slide=slide, presenting=True)

    def end(self):
        self._do("end")
        self.set(presenting=False)

    def blank(self, on):
        self._do("blank", on)
        if not self.now_shown.presenting:
            raise Refused("No slide show runs.")
        self.set(blank=on)

    def choose(self, document):
        self._do("choose", document)
        self.set(document=document)

    def read_page(self, document, page):
        self._do("read_page", document, page)
        if page > self.now_shown.count:
            raise Refused("There is no such slide.")
        return Page(f"{document} {page} r{self.now_shown.revision}", "notes" if page == 2 else "")

    def picture(self, document, page, width):
        self._do("picture", document, page, width)
        if self.pictures_take > 0:
            self.pictures_take -= 1
            raise NotYet()
        return f"\x89PNG {document} {page} {width} r{self.now_shown.revision}".encode("latin-1")

    def export_pdf(self, document, path, report):
        self._do("export_pdf", document)
        if self.pdf is None:
            return super().export_pdf(document, path, report)
        report(1, self.now_shown.count)
        if self.exporting:
            self.exporting()
        with open(path, "wb") as file:
            file.write(self.pdf)
        return self.now_shown.count
