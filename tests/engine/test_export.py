"""The PDF of the annotated slides: when it is made, what is told, and that nothing waits for it."""
from __future__ import annotations

import http.client
import json
import os
import socket
import tempfile
import threading
import time
import unittest
from unittest import mock

from engine_support import DEADLINE, PYTHON, begin, pt
from fake_presenter import FakePresenter
from pdf_files import PdfFile
from torvane_engine import export
from torvane_engine.api import Api
from torvane_engine.engine import Engine
from torvane_engine.http_message import HttpError, attachment, json_answer, parse_head
from torvane_engine.http_server import Connection
from torvane_engine.pdf.document import Document as Pdf
from torvane_engine.presenters import presenter_thread
from torvane_engine.presenters.chooser import Chooser
from torvane_engine.presenters.lines import LineProcess
from torvane_engine.presenters.presenter import Absent, Document, Refused, Unavailable
from torvane_engine.presenters.presenter_thread import PresenterThread


class ExportTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        self.log = []
        for patch in (mock.patch.object(presenter_thread, "log_error"),
                      mock.patch.object(export, "log_error", self.log.append),
                      mock.patch.object(tempfile, "tempdir", self.folder)):
            patch.start()
            self.addCleanup(patch.stop)
        self.fake = FakePresenter()
        self.fake.retry_seconds = 0.05
        self.fake.pdf = PdfFile(pages=3).with_table()
        self.chooser = Chooser([PresenterThread(self.fake)])
        self.addCleanup(self.chooser.close)
        self.chooser.start()
        self.start_engine()

    def start_engine(self):
        self.engine = Engine(self.chooser)
        self.addCleanup(self.engine.close)
        self.api = Api(self.engine, 1, None)

    def draw_with(self, program):
        """Instead of what draws the ink."""
        child = LineProcess([PYTHON, "-c", program])
        with mock.patch.object(export, "python_child", return_value=child):
            self.start_engine()
        return child

    def request(self, method, body=b""):
        request = parse_head(f"{method} /api/export HTTP/1.1\r\nHost: localhost:1\r\n"
                             f"Content-Length: {len(body)}".encode())
        try:
            return self.api.find(request)(request, body)
        except HttpError as error:
            return json_answer({"error": error.message}, error.status)

    def post(self, document=None):
        answer = self.request("POST", json.dumps({"document": document}).encode()
                              if document else b"")
        return answer.status, json.loads(answer.body)

    def refusal(self, method="GET", body=b""):
        answer = self.request(method, body)
        return answer.status, json.loads(answer.body)["error"]

    def wait_for(self, found, what):
        deadline = time.monotonic() + DEADLINE
        while not found(self.engine.state()):
            self.assertLess(time.monotonic(), deadline, f"{what}: {self.engine.state()}")
            time.sleep(0.01)
        return self.engine.state()["export"]

    def once(self, *states):
        return self.wait_for(lambda state: state["export"]["state"] in states, states)

    def made(self):
        """Waits for the end, and reads the pages of the file."""
        self.assertEqual(self.once("done", "failed"), {
            "state": "done", "document": "d1", "progress": None, "sentence": None})
        return list(Pdf(bytes(self.request("GET").body)).pages())

    def failed(self):
        """Waits for the end; the sentence, which GET tells as well."""
        sentence = self.once("done", "failed")["sentence"]
        self.assertEqual(self.refusal(), (409, sentence))
        self.assertEqual(os.listdir(self.folder), [])
        return sentence

    def gate(self):
        """Holds up exports; what lets them go on, and an event for one that has come so far."""
        arrived, go = threading.Event(), threading.Event()
        self.addCleanup(go.set)

        def hold():
            arrived.set()
            go.wait(DEADLINE)
        self.fake.exporting = hold
        return go, arrived

    def test_there_is_none_before_one_is_asked_for(self):
        self.assertEqual(self.refusal()[0], 404)
        self.assertEqual(self.engine.state()["export"]["state"], "none")

    def test_ink_of_each_slide_is_on_its_page(self):
        self.engine.add_ink([begin(1), pt(1), begin(2)])
        self.fake.set(slide=3)
        self.wait_for(lambda state: state["slide"] == 3, "slide 3")
        self.engine.add_ink([begin(1), {"t": "laser", "x": 0.5, "y": 0.5}])
        status, state = self.post()
        self.assertEqual((status, state["export"]["state"]), (200, "running"))
        pages = self.made()
        self.assertEqual([isinstance(page.own["/Contents"], list) for page in pages],
                         [True, False, True])
        with_ink = bytes(self.request("GET").body)
        self.assertTrue(with_ink.startswith(self.fake.pdf))
        self.assertEqual([name for name, *_ in self.fake.calls].count("export_pdf"), 1)

    def test_answer_is_a_file_with_a_name(self):
        self.post()
        self.made()
        answer = self.request("GET")
        self.assertEqual((answer.status, answer.content_type), (200, "application/pdf"))
        self.assertIn('filename="Deck d1 annotated.pdf"', answer.headers)
        self.assertIn("Cache-Control: no-store\r\n", answer.headers)

    def test_names_suit_every_disk_and_header(self):
        for title, plain, whole in (
                ("Größe.v2.odp", "Gr__e.v2", "Gr%C3%B6%C3%9Fe.v2"),
                ("../../etc/pass\\wd.odp", "_.._etc_pass_wd", "_.._etc_pass_wd"),
                ('a"b\r\nX-Evil: 1;%41', "a_bX-Evil_ 1__41", "a_bX-Evil_%201__41"),
                ("\u202e\u200b\ud800", "Presentation", "Presentation"),
                ("", "Presentation", "Presentation"), (".odp", "odp", "odp"), ("x" * 500, "x" * 80, "x" * 80)):
            self.assertEqual(attachment(title, ".pdf"),
                             f'Content-Disposition: attachment; filename="{plain}.pdf"; '
                             f"filename*=UTF-8''{whole}.pdf\r\n")

    def test_long_file_goes_over_the_wire_whole(self):
        pdf = PdfFile(pages=3)
        pdf.stream(99, os.urandom(3_000_000))
        self.fake.pdf = pdf.with_table()
        self.post()
        self.made()
        with socket.create_server(("127.0.0.1", 0)) as listener:
            ours = socket.create_connection(listener.getsockname(), timeout=DEADLINE)
            self.addCleanup(ours.close)
            theirs = listener.accept()[0]
        threading.Thread(target=Connection(theirs, self.api).serve, daemon=True).start()
        for method in ("HEAD", "GET", "GET"):
            ours.sendall(f"{method} /api/export HTTP/1.1\r\nHost: localhost:1\r\n\r\n".encode())
            response = http.client.HTTPResponse(ours, method=method)
            response.begin()
            body = response.read()
            self.assertEqual(response.headers["Content-Length"], str(len(self.fake.pdf)))
            self.assertEqual(body, self.fake.pdf if method == "GET" else b"")

    def test_progress_and_everything_else_goes_on(self):
        go, arrived = self.gate()
        self.post()
        self.assertTrue(arrived.wait(DEADLINE))
        state = self.engine.state()
        self.assertEqual((state["export"]["state"], state["export"]["progress"], state["problem"]),
                         ("running", {"task": "pages", "done": 1, "total": 3}, None))
        self.assertEqual(self.refusal(), (409, "The PDF is being made."))
        self.assertEqual(self.engine.add_ink([begin(1)])["strokes"], 1)
        go.set()
        self.assertIsInstance(self.made()[0].own["/Contents"], list)  # ink of the last moment too

    def test_progress_of_the_ink(self):
        child = self.draw_with("import json, sys, time\n"
                               "id = json.loads(sys.stdin.readline())['id']\n"
                               "print(json.dumps({'id': id, 'progress': [2, 7]}), flush=True)\n"
                               "time.sleep(1000)")
        self.post()
        self.wait_for(lambda state: state["export"]["progress"] == {
            "task": "ink", "done": 2, "total": 7}, "the progress")
        self.engine.close()
        self.assertFalse(child.is_running)
        self.assertEqual(self.failed(), "The ink could not be drawn on the PDF.")

    def test_second_request_answers_the_first(self):
        go, arrived = self.gate()
        self.post()
        self.assertTrue(arrived.wait(DEADLINE))
        for document in (None, "d1", "nowhere"):
            status, state = self.post(document)
            self.assertEqual((status, state["export"]["state"]), (200, "running"))
        go.set()
        self.made()
        self.assertEqual([name for name, *_ in self.fake.calls].count("export_pdf"), 1)

    def test_new_one_takes_the_place_of_the_old_one(self):
        self.post()
        self.made()
        old = self.request("GET").body
        go, arrived = self.gate()
        self.engine.add_ink([begin(1)])
        self.post()
        self.assertTrue(arrived.wait(DEADLINE))
        self.assertEqual(self.refusal()[0], 409)
        go.set()
        self.assertIsInstance(self.made()[0].own["/Contents"], list)
        self.assertEqual(bytes(old), self.fake.pdf)  # for who still reads it

    def test_it_waits_for_the_end_of_the_show(self):
        self.fake.set(presenting=True)
        self.wait_for(lambda state: state["presenting"], "the show")
        _, state = self.post()
        self.assertEqual((state["export"]["state"], state["export"]["sentence"]),
                         ("waiting", "The export starts when the show ends."))
        self.assertEqual(self.refusal(), (409, "The export starts when the show ends."))
        self.assertNotIn(("export_pdf", "d1"), self.fake.calls)
        self.fake.set(presenting=False)
        self.made()

    def test_it_waits_for_the_show_of_another_document_too(self):
        both = (Document("d1", "One"), Document("d2", "Two", presenting=True))
        self.fake.set(documents=both)
        self.wait_for(lambda _: len(self.engine.documents()["documents"]) == 2, "both")
        self.post("d1")
        self.once("waiting")
        self.fake.set(documents=both[:1])
        self.made()

    def test_program_whose_export_holds_up_nothing_does_not_wait(self):
        self.fake.exports_in_show = True
        self.fake.set(presenting=True)
        self.wait_for(lambda state: state["presenting"], "the show")
        self.post()
        self.made()

    def test_show_that_begins_in_the_last_moment(self):
        def begin_show():
            if self.fake.calls[-1][0] == "export_pdf" and not self.fake.now_shown.presenting:
                self.fake.set(presenting=True)
                self.fake.before = None
                raise Refused("A slide show runs.")
        self.fake.before = begin_show
        self.post()
        self.once("waiting")
        self.fake.set(presenting=False)
        self.made()

    def test_presentation_that_is_closed_meanwhile(self):
        for gone in (lambda: setattr(self.fake, "error", Absent("Open one.")),
                     lambda: self.fake.set(documents=(), document="", presenting=False)):
            self.fake.set(presenting=True)
            self.wait_for(lambda state: state["presenting"], "the show")
            self.post()
            self.once("waiting")
            gone()
            self.assertEqual(self.failed(), "The presentation was closed before its PDF was made.")
            self.fake.error = None
            self.fake.set(documents=(Document("d1", "Deck"),), document="d1")

    def test_program_that_cannot_or_does_not_answer(self):
        self.fake.pdf = None
        self.post()
        self.assertEqual(self.failed(), "This presentation cannot be made a PDF.")
        self.fake.pdf = PdfFile(pages=3).with_table()

        def hang():
            raise Unavailable("It does not answer.")
        self.fake.exporting = hang
        self.post()
        self.assertEqual(self.failed(), "It does not answer.")
        self.fake.exporting = None
        self.wait_for(lambda state: state["problem"] is None, "it answers again")
        self.post()
        self.made()

    def test_file_that_cannot_be_drawn_on(self):
        self.fake.pdf = b"no PDF"
        self.post()
        self.assertEqual(self.failed(), "The PDF is damaged.")
        self.fake.pdf = PdfFile(pages=2).with_table()
        self.post()
        self.assertIn("2 pages for 3 slides", self.failed())

    def test_drawing_that_hangs_or_dies(self):
        for body in ("import time; time.sleep(1000)", "raise SystemExit(3)"):
            child = self.draw_with(body)
            with mock.patch.object(export, "DRAW_SECONDS", 0.2):
                self.post()
                self.assertEqual(self.failed(), "The ink could not be drawn on the PDF.")
            self.assertFalse(child.is_running)

    def test_what_cannot_begin_is_refused(self):
        self.assertEqual(self.refusal("POST", b'{"document":"nowhere"}'),
                         (409, "This presentation is not open."))
        for body in (b"[]", b'{"document":1}', b"{"):
            self.assertEqual(self.refusal("POST", body)[0], 400)
        for error in (Unavailable("It hangs."), Absent("Open one.")):
            self.fake.error = error
            self.wait_for(lambda state: state["problem"] == str(error), "the problem")
            self.assertEqual(self.refusal("POST"), (409, str(error)))
        self.assertEqual(self.engine.state()["export"]["state"], "none")

    def test_files_are_for_their_owner_only_and_do_not_stay(self):
        go, arrived = self.gate()
        self.post()
        self.assertTrue(arrived.wait(DEADLINE))
        [folder] = os.listdir(self.folder)
        self.assertEqual(os.stat(os.path.join(self.folder, folder)).st_mode & 0o777, 0o700)
        go.set()
        self.made()
        self.assertEqual(os.listdir(self.folder), [])

    def test_end_of_the_engine_leaves_nothing(self):
        _, arrived = self.gate()
        self.post()
        self.assertTrue(arrived.wait(DEADLINE))
        self.engine.close()
        self.assertEqual(os.listdir(self.folder), [])

    def test_disk_that_is_full(self):
        full = OSError(28, "No space left on device")
        with mock.patch.object(tempfile, "mkdtemp", side_effect=full):
            self.post()
            self.assertEqual(self.failed(), "The PDF could not be written: No space left on device.")

    def test_fault_of_the_engine_is_told_and_logged(self):
        self.fake.exporting = lambda: 1 // 0
        self.post()
        self.failed()
        self.wait_for(lambda state: state["problem"] is None, "the presenter is back")
        self.fake.export_pdf = lambda *_: None
        self.post()
        self.assertEqual(self.failed(), export.FAULT)
        self.assertEqual(len(self.log), 1)
        self.assertIn("export: TypeError", self.log[0])


if __name__ == "__main__":
    unittest.main()
