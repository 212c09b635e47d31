"""What torvane-ipad saves in files: pictures, the PDF, answers."""
import json
import os
import signal
import stat
import subprocess
import threading
import unittest

from scripted_engine import ScriptedEngine
from scripted_helper import ScriptedHelper
from tool_test import CERTIFICATES, DEADLINE, KnownHelperTest

PICTURE = b"\x89PNG\r\n\x1a\n" + bytes(range(256))
PDF = b"%PDF-1.7\n" + bytes(range(256)) * 8
PICTURE_PATH = ("GET", "/api/slides/3/picture")


def made(state, done=0, total=0, sentence=None, task="pages"):
    """The state's "export"."""
    return {"state": state, "document": "talk", "sentence": sentence,
            "progress": {"task": task, "done": done, "total": total} if total else None}


class FileTest(KnownHelperTest):
    def setUp(self):
        super().setUp()
        self.engine = ScriptedEngine()
        self.engine.answers = {PICTURE_PATH: (200, "image/png", PICTURE),
                               ("GET", "/api/export"): (200, "application/pdf", PDF)}
        self.helper = ScriptedHelper(CERTIFICATES[0])
        self.helper.engine = self.engine
        self.start(self.helper)
        self.file = self.home + "/saved"

    def ipad(self, *arguments):
        return self.run_tool(self.helper, *arguments)

    def put(self, content=b"the old one", mode=0o644):
        with open(self.file, "wb") as file:
            file.write(content)
        os.chmod(self.file, mode)

    def content(self, file=None):
        with open(file or self.file, "rb") as opened:
            return opened.read()

    def names(self):
        """What lies in the home folder besides what the program keeps."""
        return sorted(set(os.listdir(self.home)) - {"data"})


class Preview(FileTest):
    def test_is_saved(self):
        self.check(self.ipad("preview", "3", self.file), 0,
                   f"Saved slide 3 as a PNG picture in {self.file}, 264 bytes.")
        self.assertEqual(self.content(), PICTURE)
        self.assertEqual(self.names(), ["saved"])

    def test_asks_for_a_width(self):
        path = "/api/slides/3/picture?width=640"
        self.engine.answers["GET", path] = (200, "image/jpeg", b"\xff\xd8\xff")
        said = self.check(self.ipad("preview", "3", self.file, "--width", "640", "--json"), 0)
        self.assertEqual(json.loads(said), {"event": "saved", "file": self.file, "bytes": 3})
        self.assertEqual(self.engine.asked, ["GET " + path])

    def test_replaces_a_file_and_keeps_its_mode(self):
        self.put(mode=0o640)
        self.check(self.ipad("preview", "3", self.file), 0)
        self.assertEqual(self.content(), PICTURE)
        self.assertEqual(stat.S_IMODE(os.stat(self.file).st_mode), 0o640)

    def test_the_old_file_is_whole_until_the_new_one_is(self):
        self.put(b"the old one" * 100)
        os.link(self.file, self.home + "/old")  # what somebody has open
        self.check(self.ipad("preview", "3", self.file), 0)
        self.assertEqual(self.content(), PICTURE)
        self.assertEqual(self.content(self.home + "/old"), b"the old one" * 100)

    def test_new_file_has_the_usual_mode(self):
        self.check(self.run_tool(self.helper, "preview", "3", self.file, umask=0o027), 0)
        self.assertEqual(stat.S_IMODE(os.stat(self.file).st_mode), 0o640)

    def test_a_link_stays_one(self):
        self.put()
        os.symlink("saved", self.home + "/link")
        self.check(self.ipad("preview", "3", self.home + "/link"), 0)
        self.assertEqual(os.readlink(self.home + "/link"), "saved")
        self.assertEqual(self.content(), PICTURE)

    def test_the_old_file_stays_where_there_is_no_picture(self):
        self.put()
        for status, sentence in ((503, "cannot be made now. Try again in a moment."),
                                 (404, "There is no slide 3. \"torvane-ipad slides\" lists those"),
                                 (500, "The engine answered with status 500: it is ill.")):
            self.engine.answers[PICTURE_PATH] = (status, "application/json",
                                                 b'{"error":"it is ill"}')
            self.check(self.ipad("preview", "3", self.file), 1, sentence)
            self.assertEqual((self.content(), self.names()), (b"the old one", ["saved"]))

    def test_a_picture_that_cannot_be_made_has_a_reason(self):
        self.engine.answers[PICTURE_PATH] = (503, "application/json", b'{"error":"not now"}')
        self.engine.state["problem"] = "LibreOffice does not answer."
        self.check(self.ipad("preview", "3", self.file), 1, "The picture of slide 3 cannot be made "
                   "now. LibreOffice does not answer.")

    def test_the_old_file_stays_when_the_connection_breaks(self):
        class Leaving(ScriptedHelper):
            async def serve_request(self, ws, header, body):
                await ws.close(1001)

        self.helper = self.start(Leaving(CERTIFICATES[0]))
        self.put()
        for command in (["preview", "3"], ["export"], ["get", "/x", "--output"]):
            said = self.check(self.ipad(*command, self.file), 3, "was lost")
            self.assertIn("Try again when the helper runs.", said)
            self.assertEqual((self.content(), self.names()), (b"the old one", ["saved"]))

    def test_goes_into_what_is_no_file(self):
        self.check(self.ipad("preview", "3", "/dev/null"), 0, "in /dev/null")
        self.assertTrue(stat.S_ISCHR(os.stat("/dev/null").st_mode))

    def test_goes_through_a_pipe_as_it_is(self):
        result = self.ipad("preview", "3", "-")
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, PICTURE, b""))

    def test_is_not_for_a_terminal(self):
        for command in (["preview", "3", "-"], ["export", "-"]):
            status, shown = self.run_on_terminal(self.helper, *command)
            self.assertEqual((status, self.engine.asked), (2, []))
            self.assertIn("This is no text for a terminal. Give a file instead of \"-\"", shown)
        status, shown = self.run_on_terminal(self.helper, "get", PICTURE_PATH[1])
        self.assertEqual(status, 2)
        self.assertIn("Save it with --output FILE", shown)
        self.assertNotIn("PNG", shown)

    def test_places_that_cannot_be_are_refused_before_anything_is_asked(self):
        for file, sentence in ((self.home, "is a folder. Give the name of a file in it."),
                               (self.home + "/no/x", f"There is no folder {self.home}/no.")):
            for command in (["preview", "3"], ["export"]):
                self.check(self.ipad(*command, file), 2, sentence)
        self.assertEqual((self.engine.asked, self.helper.invitations), ([], []))

    def test_a_disk_that_is_full_is_told(self):
        for file in ("/dev/full", "/proc/sys/kernel/none"):
            self.check(self.ipad("preview", "3", file), 2,
                       file + " cannot be written: is there room, and may you write there?")


class Export(FileTest):
    def test_is_waited_for_and_saved(self):
        self.engine.exports = [made("running"), made("running", 1, 4),
                               made("running", 3, 4, task="ink"), made("done")]
        said = self.check(self.ipad("export", self.file, "--json"), 0)
        facts = [json.loads(line) for line in said.splitlines()]
        self.assertEqual(facts, [
            {"event": "progress", "task": "pages", "done": 1, "total": 4},
            {"event": "progress", "task": "ink", "done": 3, "total": 4},
            {"event": "saved", "file": self.file, "bytes": len(PDF)}])
        self.assertEqual(self.content(), PDF)
        self.assertEqual((self.engine.asked[0], self.engine.asked[-1]),
                         ("POST /api/export", "GET /api/export"))

    def test_tells_a_terminal_how_far_it_is(self):
        self.engine.exports = [made("running", 1, 4), made("running", 3, 4, task="ink"),
                               made("done")]
        status, shown = self.run_on_terminal(self.helper, "export", self.file)
        self.assertEqual(status, 0)
        self.assertEqual(shown, "\r\x1b[KMaking the PDF: 1 of 4"
                         "\r\x1b[KDrawing the ink on the PDF: 3 of 4"
                         f"\r\x1b[KSaved the slides as a PDF in {self.file}, 2057 bytes.\r\n")

    def test_says_once_that_it_is_put_off(self):
        late = "The export starts when the show ends."
        self.engine.exports = [made("waiting", sentence=late)] * 3 + [made("done")]
        result = self.ipad("export", self.file)
        self.assertEqual((result.returncode, result.stderr.decode()), (0, late + "\n"))
        self.assertEqual(self.content(), PDF)

    def test_that_fails_keeps_the_old_file(self):
        self.put()
        for sentence, said in (("The disk is full.", "The disk is full."),
                              (None, "No PDF could be made.")):
            self.engine.exports = [made("running"), made("failed", sentence=sentence)]
            self.check(self.ipad("export", self.file), 1, said)
            self.assertEqual((self.content(), self.names()), (b"the old one", ["saved"]))

    def test_of_an_engine_that_was_started_anew(self):
        self.engine.exports = [made("running"), made("none")]
        self.check(self.ipad("export", self.file), 1, "it may have been started anew. Try again.")
        self.assertEqual(self.names(), [])

    def test_longer_than_a_message_to_the_helper_may_be(self):
        long = os.urandom(1 << 20) * 40
        self.engine.exports = [made("done")]
        self.engine.answers["GET", "/api/export"] = (200, "application/pdf", long)
        self.check(self.ipad("export", self.file), 0, "41 MB")
        self.assertEqual(self.content(), long)

    def test_that_is_interrupted_saves_nothing(self):
        waits = threading.Event()
        self.engine.exports = [made("waiting")]

        def engine(header, body):
            if header["path"] == "/api/state":
                waits.set()
            return self.engine(header, body)

        self.helper.engine = engine
        command = self.command("export", self.file, "--port", str(self.helper.port))
        with subprocess.Popen(command, env=self.environment, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, text=True) as tool:
            self.assertTrue(waits.wait(DEADLINE))
            tool.send_signal(signal.SIGINT)
            said = tool.communicate(timeout=DEADLINE)[1]
        self.assertEqual((tool.returncode, self.names()), (1, []))
        self.assertIn("Interrupted. Nothing was saved.", said)


if __name__ == "__main__":
    unittest.main()
