"""Ink on the pages of PDF files: of every kind, seen by other programs, and meant to do harm."""
from __future__ import annotations

import os
import random
import re
import shutil
import subprocess
import tempfile
import unittest
import zlib
from unittest import mock

import engine_support  # noqa: F401  finds the engine
from pdf_files import SIZE, PdfFile, predicted
from torvane_engine.pdf import document, objects
from torvane_engine.pdf.document import Document
from torvane_engine.pdf.drawing import Pen, Stroke, draw_on_file
from torvane_engine.pdf.objects import Budget, Parser, Unreadable
from torvane_engine.pdf.streams import stream_at, unpredicted

THIN, THICK = Pen(1.0, 0.0, 0.0, 1.0, 0.02), Pen(1.0, 0.0, 0.0, 1.0, 0.1)
FAINT = Pen(0.0, 0.0, 1.0, 0.4, 0.1)
RED, GREEN, WHITE = (255, 0, 0), (0, 255, 0), (255, 255, 255)
LACKS = [tool for tool in ("qpdf", "pdftoppm") if not shutil.which(tool)]
needs_tools = unittest.skipIf(LACKS, f"not installed: {', '.join(LACKS)}")


class PdfTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def write(self, data, name="deck.pdf"):
        path = os.path.join(self.folder, name)
        with open(path, "wb") as file:
            file.write(data)
        return path

    def read(self, path):
        with open(path, "rb") as file:
            return file.read()

    def draw(self, path, ink=None, count=2):
        told = []
        draw_on_file(path, count, ink or {1: [Stroke(THIN, [(0.1, 0.2), (0.9, 0.2)])]},
                     lambda *done: told.append(done))
        return told

    def qpdf(self, *arguments):
        result = subprocess.run(["qpdf", *arguments], capture_output=True, text=True)
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        self.assertNotIn("WARNING", result.stdout + result.stderr)
        return result.stdout

    def pixels(self, path, page=1):
        """Of the page that is seen, a pixel for a point: its size, and the colour at a part of it."""
        data = subprocess.run(["pdftoppm", "-f", str(page), "-l", str(page), "-cropbox",
                               "-r", "72", path], capture_output=True, check=True).stdout
        _, size, _, rest = data.split(b"\n", 3)
        width, height = map(int, size.split())

        def colour(x, y):
            at = 3 * (int(y * height) * width + int(x * width))
            return tuple(rest[at:at + 3])
        return (width, height), colour


class DrawingTest(PdfTest):
    def test_what_was_there_stays_as_it_was(self):
        data = PdfFile().with_table()
        path = self.write(data)
        self.assertEqual(self.draw(path), [(0, 1)])
        new = self.read(path)
        self.assertTrue(new.startswith(data + b"\n"))  # its own last line had no end

    def test_new_objects_take_nobodys_number(self):
        data = PdfFile().with_table()
        path = self.write(data.replace(b"/Size 22", b"/Size 11"))
        self.draw(path)
        new = self.read(path)[len(data):]
        numbers = [int(one) for one in re.findall(rb"\n(\d+) 0 obj", new)]
        self.assertEqual(sorted(numbers), [10, 22, 23, 24])

    def test_file_without_ink_is_left_alone(self):
        path = self.write(PdfFile().with_table())
        before = self.read(path)
        self.draw(path, {1: []})
        self.assertEqual(self.read(path), before)

    def test_ink_of_other_slides_than_there_are_pages_is_refused(self):
        path = self.write(PdfFile().with_table())
        self.assertRaisesRegex(Unreadable, "2 pages for 3 slides", self.draw, path, count=3)

    def test_shared_resources_are_written_once(self):
        states = b"<</ExtGState<</Mine<</CA .5>>>>/ProcSet[/PDF]>>"
        for how in ({"shared": True}, {"inherit": True}):
            path = self.write(PdfFile(pages=50, resources=states, **how).with_table())
            before = os.path.getsize(path)
            self.draw(path, {page: [Stroke(FAINT, [(0.5, 0.5)])] for page in range(1, 51)}, 50)
            added = self.read(path)[before:]
            self.assertEqual((added.count(b"/ProcSet"), added.count(b"/Mine")), (1, 1), how)

    def test_somebody_elses_state_of_the_same_name_is_kept(self):
        path = self.write(PdfFile(
            resources=b"<</ExtGState<</TorvaneInk40<</CA .9>>>>>>").with_table())
        self.draw(path, {1: [Stroke(FAINT, [(0.5, 0.5)])]})
        with_ink = Document(self.read(path))
        page = next(with_ink.pages())
        states = with_ink.members(with_ink.members(page.own["/Resources"])["/ExtGState"])
        self.assertEqual(states, {"/TorvaneInk40": {"/CA": b".9"},
                                  "/TorvaneInk40x": {"/CA": b"0.40"}})

    def test_new_section_is_of_the_same_kind_and_keeps_the_trailer(self):
        for kind in ("table", "stream"):
            pdf = PdfFile()
            ids = b"/Info 10 0 R/ID[<00>(a\\)b)]"
            data = pdf.with_table(ids) if kind == "table" else pdf.with_stream(members=ids)
            path = self.write(data)
            self.draw(path)
            new = Document(self.read(path))
            self.assertEqual(new.cross_references.is_table, kind == "table")
            self.assertEqual((new.trailer["/Info"], new.trailer["/ID"]),
                             ((10, 0), [b"<00>", b"(a\\)b)"]))
            self.assertEqual(int(new.trailer["/Prev"]), int(data.split()[-2]))

    def test_object_of_another_generation_keeps_it(self):
        data = PdfFile().with_table().replace(b"10 0 obj", b"10 3 obj").replace(
            b"Kids[10 0 R", b"Kids[10 3 R")
        path = self.write(data)
        self.draw(path)
        self.assertIn(b"\n10 3 obj\n", self.read(path)[len(data):])
        self.assertRegex(self.read(path)[len(data):], rb"\n10 1\n\d{10} 00003 n ")

    def test_pages_inherit_from_all_that_they_are_in(self):
        pdf = PdfFile(media=(0, 0, 100, 50))
        pdf.objects[2] = b"<</Type/Pages/Count 2/MediaBox[0 0 100 50]/Kids[4 0 R]>>"
        pdf.objects[4] = b"<</Type/Pages/Count 2/Rotate 270/Kids[10 0 R 20 0 R]>>"
        pdf.objects[10] = pdf.objects[20] = b"<</Type/Page>>"
        path = self.write(pdf.with_table())
        self.draw(path, {2: [Stroke(THIN, [(0.0, 0.0)])]})
        second = list(Document(self.read(path)).pages())[1]
        new = Document(self.read(path))
        ink = stream_at(Parser(self.read(path), Budget()), new.cross_references.places[
            second.own["/Contents"][-1].number].at, new.resolve)[2]
        self.assertIn(b"0 -1 -1 0 100.000 50.000 cm", ink)

    def test_predictors(self):
        rows = [bytes(random.Random(row).randrange(256) for _ in range(12)) for row in range(20)]
        for kind in range(5):
            for pixel in (1, 3):
                self.assertEqual(unpredicted(predicted(rows, kind, pixel), 12, pixel),
                                 b"".join(rows), (kind, pixel))
            path = self.write(PdfFile().with_stream(kind))
            self.draw(path)
            self.assertEqual(len(list(Document(self.read(path)).pages())), 2)

    def test_object_that_only_readers_of_streams_see(self):
        """A hybrid file: its table calls a page deleted, and its stream knows better."""
        pdf = PdfFile()
        both = pdf.with_stream()
        hidden, stream = both.index(b"\n10 0 obj") + 1, int(both.split()[-2])
        start, size = len(both) - len(both.split(b"startxref")[-1]) - 9, max(pdf.objects) + 1
        table = b"xref\n0 %d\n" % size + b"0000000000 65535 f \n" * size
        trailer = b"trailer\n<</Size %d/Root 1 0 R/XRefStm %d>>\n" % (size, stream)
        data = both[:start] + table + trailer + b"startxref\n%d\n%%%%EOF\n" % start
        self.assertGreater(hidden, 0)
        path = self.write(data)
        self.draw(path)
        self.assertEqual(len(list(Document(self.read(path)).pages())), 2)


@needs_tools
class OtherProgramsTest(PdfTest):
    """What qpdf and poppler think of the files."""

    KINDS = {
        "plain": [], "object streams": ["--object-streams=generate"], "linearized": ["--linearize"],
        "both": ["--linearize", "--object-streams=generate"],
        "old": ["--object-streams=disable", "--force-version=1.3"], "unpacked": ["--qdf"],
        "preserved": ["--compress-streams=n", "--object-streams=generate"],
        **{f"turned {turn}": [f"--rotate=+{turn}"] for turn in (90, 180, 270)},
    }

    def check(self, path):
        self.assertIn("No syntax or stream encoding errors", self.qpdf("--check", path))
        self.assertEqual(self.qpdf("--show-npages", path), "2\n")

    def test_every_kind_of_file_drawn_on_twice(self):
        source = self.write(PdfFile().with_table(), "source.pdf")
        for kind, arguments in self.KINDS.items():
            with self.subTest(kind):
                path = os.path.join(self.folder, "kind.pdf")
                self.qpdf(*arguments, source, path)
                self.draw(path)
                self.check(path)
                self.assertEqual(self.pixels(path)[1](0.5, 0.2), RED)
                self.draw(path, {1: [Stroke(THIN, [(0.1, 0.8), (0.9, 0.8)])],
                                 2: [Stroke(THIN, [(0.5, 0.5)])]})
                self.check(path)
                colour = self.pixels(path)[1]
                self.assertEqual((colour(0.5, 0.2), colour(0.5, 0.8)), (RED, RED))
                self.assertEqual(colour(0.5, 0.5), WHITE)
                self.assertEqual(self.pixels(path, 2)[1](0.5, 0.5), RED)

    def test_predictors_of_others(self):
        for kind in range(5):
            path = self.write(PdfFile().with_stream(kind))
            self.draw(path)
            self.check(path)

    def test_ink_lies_where_it_was_seen_however_the_page_lies(self):
        place = (0.31, 0.77)
        for turn, corner in ((0, (0, 0)), (90, (1, 0)), (180, (1, 1)), (270, (0, 1)), (-90, (0, 1)),
                             (450, (1, 0))):
            for inherit in (False, True):
                for media, crop in (((0, 0, 400, 300), None), ((-50, 20, 350, 320), None),
                                    ((0, 0, 600, 500), (30, 40, 430, 340)),
                                    ((0, 0, 400, 300), (-100, -100, 900, 900))):
                    with self.subTest(turn=turn, inherit=inherit, media=media, crop=crop):
                        path = self.write(PdfFile(media=media, crop=crop, rotate=turn,
                                                  inherit=inherit).with_table())
                        self.draw(path, {1: [Stroke(THICK, [place])]})
                        (width, height), colour = self.pixels(path)
                        self.assertEqual((width, height), SIZE[::-1] if turn % 180 else SIZE)
                        for reach, there in ((0.0, RED), (0.95, RED), (1.15, WHITE)):
                            away = reach * THICK.width / 2
                            self.assertEqual([colour(place[0] + x, place[1] + y * width / height)
                                              for x, y in ((away, 0), (-away, 0), (0, away),
                                                           (0, -away))], [there] * 4, reach)
                        if media == (0, 0, *SIZE):  # the page itself is where it was
                            x, y = (0.02 + 0.95 * part for part in corner)
                            self.assertEqual(colour(x, y), GREEN)

    def test_translucent_ink_lets_the_page_through(self):
        path = self.write(PdfFile().with_table())
        self.draw(path, {1: [Stroke(FAINT, [(0.0, 0.03), (0.5, 0.03)])]})
        self.check(path)
        colour = self.pixels(path)[1]
        self.assertEqual((colour(0.4, 0.04), colour(0.03, 0.04)), ((153, 153, 255), (0, 153, 102)))

    def test_ink_goes_beyond_the_page(self):
        path = self.write(PdfFile().with_table())
        self.draw(path, {1: [Stroke(THIN, [(-10.0, 0.5), (10.0, 0.5)])]})
        self.check(path)
        self.assertEqual(self.pixels(path)[1](0.01, 0.5), RED)

    def test_protected_files_are_refused(self):
        source = self.write(PdfFile().with_table(), "source.pdf")
        for bits in ("128", "256"):
            path = os.path.join(self.folder, "protected.pdf")
            self.qpdf("--encrypt", "", "owner", bits, *(["--use-aes=y"] if bits == "128" else []),
                      "--", source, path)
            before = self.read(path)
            self.assertRaisesRegex(Unreadable, "password", self.draw, path)
            self.assertEqual(self.read(path), before)


class HostileTest(PdfTest):
    def refused(self, data, words="", count=2):
        path = self.write(data)
        with self.assertRaisesRegex(Unreadable, words) as caught:
            self.draw(path, count=count)
        return str(caught.exception)

    def test_no_pdf_at_all(self):
        for data in (b"", b"x", b"%PDF-1.4\n", b"startxref\n0\n", b"startxref\n99999999999999\n",
                     b"xref\nstartxref\n0\n", bytes(100_000), b"startxref " * 1000):
            self.refused(data, "damaged")

    def changed(self, old, new, data=None):
        data = data or PdfFile().with_table()
        self.assertIn(old, data)
        return data.replace(old, new.ljust(len(old)) if len(new) <= len(old) else new)

    def test_circles(self):
        table = PdfFile()
        table.objects[2] = b"<</Type/Pages/Kids[10 0 R 2 0 R]>>"
        self.refused(table.with_table(), "damaged")
        table.objects[2] = b"2 0 R"
        self.refused(table.with_table(), "damaged")
        table = PdfFile()
        table.objects[2] = b"<</Type/Pages/Kids[10 0 R 10 0 R]>>"
        self.refused(table.with_table(), "damaged")
        data = PdfFile().with_table()
        start = int(data.split()[-2])
        self.refused(PdfFile().with_table(b"/Prev %d" % start), "damaged")

    def test_object_stream_that_needs_itself(self):
        data = PdfFile().with_stream()
        number = max(int(line.split()[0]) for line in data.split(b"\n") if line.endswith(b" obj"))
        pdf = PdfFile()
        pdf.objects[5] = b"<</Type/ObjStm/N 1/First 4/Length 6 0 R>>\nstream\n6 0 \n9\nendstream"
        whole = pdf.with_stream()
        # Object 6, its length, is said to be in it.
        rows = []
        for one in range(number + 1):
            at = whole.find(b"\n%d 0 obj" % one) + 1
            rows.append(b"\2\0\0\5\0" if one in (1, 6) else b"\1" + at.to_bytes(3, "big") + b"\0")
        packed = zlib.compress(b"".join(rows))
        start = whole.rindex(b"startxref")
        section = (b"%d 0 obj\n<</Type/XRef/Size %d/Root 1 0 R/W[1 3 1]/Filter/FlateDecode"
                   b"/Length %d>>\nstream\n%s\nendstream\nendobj\n" % (
                       number, number + 1, len(packed), packed))
        self.refused(whole[:start] + section + b"startxref\n%d\n%%%%EOF\n" % start, "damaged")

    def test_references_to_the_wrong_place(self):
        data = PdfFile().with_table()
        first, second = (b"%010d 00000 n" % (data.index(b"\n%d 0 obj" % one) + 1) for one in (10, 20))
        self.refused(self.changed(first, second, data), "damaged")

    def test_streams_that_are_shorter_than_they_say(self):
        data = PdfFile().with_stream()
        section = data[int(data.split()[-2]):]
        length = section[section.index(b"/Length"):].split(b">>")[0]
        self.refused(data.replace(length, b"/Length 99999"), "damaged")
        self.refused(PdfFile().with_stream(members=b"/Index[0 22 50 9]"), "damaged")

    def test_depth(self):
        pdf = PdfFile()
        for deep in (b"[" * 100_000, b"<</A" * 100_000, b"(" * 100_000):
            pdf.objects[10] = b"<</Type/Page/Deep " + deep
            self.refused(pdf.with_table(), "damaged")

    def test_gaps(self):
        for gap, words in ((b" " * 60_000 + b"%" * 5_000 + b"\n", None), (b" " * 70_000, "too large"),
                           (b"%\n" * 40_000, "too large"), (b"%" * 70_000 + b"\n", "too large")):
            pdf = PdfFile()
            pdf.objects[10] = pdf.objects[10].replace(b"/Parent", gap + b"/Parent")
            if words:
                self.refused(pdf.with_table(), words)
            else:
                self.draw(self.write(pdf.with_table()))

    def test_bombs(self):
        zeros = zlib.compress(bytes(70 * 1024 * 1024))
        pdf = PdfFile()
        data = pdf._body()[0]
        section = (b"99 0 obj\n<</Type/XRef/Size 9/Root 1 0 R/W[1 3 1]/Filter/FlateDecode/Length %d>>\n"
                   b"stream\n%s\nendstream\nendobj\nstartxref\n%d\n%%%%EOF\n" % (
                       len(zeros), zeros, len(data)))
        self.refused(data + section, "damaged")
        path = self.write(PdfFile().with_stream(more=70 * 1024 * 1024))
        self.assertRaisesRegex(Unreadable, "damaged", self.draw, path)
        long = Parser(b"[" + b"1 " * 1000 + b"]", Budget(500))
        self.assertRaisesRegex(Unreadable, "too large", long.value, 0)
        self.assertRaisesRegex(Unreadable, "too large", Budget(unpacked=10).spend, 0, 11)

    def test_counts_that_are_too_large(self):
        pdf = PdfFile()
        data = pdf.with_table()
        size = max(pdf.objects) + 1
        self.refused(self.changed(b"xref\n0 %d\n" % size, b"xref\n0 9999999999\n"), "damaged")
        self.refused(self.changed(b"/Size %d" % size, b"/Size 99999999999"), "too large")
        self.refused(self.changed(b"/Length", b"/LengthX", PdfFile().with_stream()), "damaged")
        with mock.patch.object(document, "MAX_PAGES", 1):
            self.refused(data, "too large")
        with mock.patch.object(document, "MAX_FILE", 100):
            self.refused(data, "too large")

    def test_pages_that_cannot_be(self):
        for old, new in ((b"[0 0 400 300]", b"[0 0 0 300]"), (b"[0 0 400 300]", b"[0 0 400]"),
                         (b"[0 0 400 300]", b"(0 0 400 300)"), (b"[0 0 400 300]", b"[0 0 1e9 3]"),
                         (b"[0 0 400 300]", b"[0 0 999999 3]"), (b"/MediaBox", b"/MediaBux")):
            self.refused(self.changed(old, new), "damaged")
        self.refused(PdfFile(rotate=45).with_table(), "damaged")

    def test_unknown_filters(self):
        data = PdfFile().with_stream()
        self.refused(self.changed(b"/FlateDecode", b"/LZWDecode", data), "does not know")
        self.refused(self.changed(b"/Predictor 15", b"/Predictor 2", data), "does not know")
        self.refused(self.changed(b"/FlateDecode", b"[/FlateDecode/FlateDecode]", data),
                     "does not know")

    def test_damage_is_told_whatever_it_is(self):
        """Mutated files, the same ones each time: drawn on, or refused with a sentence."""
        sources = [PdfFile(rotate=90).with_table(), PdfFile(shared=True).with_stream(4)]
        drawn = PdfFile(inherit=True).with_stream()
        path = self.write(drawn)
        self.draw(path)
        sources.append(self.read(path))
        if not LACKS:
            self.qpdf("--object-streams=generate", path, path + "2")
            sources.append(self.read(path + "2"))
        rest, told = random.Random(20), set()
        for turn in range(2000):
            data = mutated(rest, sources[turn % len(sources)])
            path = self.write(data)
            try:
                self.draw(path)
                told.add("drawn")
            except Unreadable as error:
                told.add(str(error))
        self.assertLessEqual({"drawn", objects.DAMAGED}, told)


def mutated(rest, data):
    """A few places are overwritten, cut out, doubled or given another number."""
    data = bytearray(data)
    for _ in range(rest.choice((1, 1, 2, 4))):
        at = rest.randrange(len(data))
        kind = rest.randrange(5)
        if kind == 0:
            data[at] = rest.randrange(256)
        elif kind == 1:
            del data[at:at + rest.randrange(1, 40)]
        elif kind == 2:
            data[at:at] = data[at:at + rest.randrange(1, 200)]
        elif kind == 3:
            numbers = [one.span() for one in objects.re.finditer(rb"\d+", data)]
            start, end = rest.choice(numbers)
            data[start:end] = rest.choice((b"0", b"1", b"-1", b"99999", b"4294967296", b"2 0 R"))
        else:
            data[at:at + 2] = rest.choice(b"<< >> [ ] ( ) / % <".split(b" "))
    return bytes(data)


if __name__ == "__main__":
    unittest.main()
