"""The sample deck in resources/ is what its script makes."""

import json
import subprocess
import sys
import tempfile
import unittest
import zipfile
from pathlib import Path
from xml.etree import ElementTree

ROOT = Path(__file__).resolve().parents[2]
RESOURCES = ROOT / "resources"
DRAW = "{urn:oasis:names:tc:opendocument:xmlns:drawing:1.0}"
ANIMATION = "{urn:oasis:names:tc:opendocument:xmlns:animation:1.0}"
PRESENTATION = "{urn:oasis:names:tc:opendocument:xmlns:presentation:1.0}"


class MakeSample(unittest.TestCase):
    def test_made_anew_it_is_the_same_to_the_byte(self):
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run([sys.executable, ROOT / "scripts/make-sample", folder], check=True)
            for name in ("sample.odp", "sample.pdfpc"):
                self.assertEqual((Path(folder) / name).read_bytes(),
                                 (RESOURCES / name).read_bytes(), f"{name}: run scripts/make-sample")

    def test_type_comes_first_and_can_be_read_in_the_file_itself(self):
        start = (RESOURCES / "sample.odp").read_bytes()[30:100]
        self.assertTrue(start.startswith(
            b"mimetypeapplication/vnd.oasis.opendocument.presentation"), start)

    def test_five_slides_with_notes_one_of_them_animated(self):
        with zipfile.ZipFile(RESOURCES / "sample.odp") as archive:
            pages = ElementTree.fromstring(archive.read("content.xml")).iter(f"{DRAW}page")
        pages = list(pages)
        self.assertEqual(len(pages), 5)
        steps = [len(list(page.iter(f"{ANIMATION}set"))) for page in pages]
        self.assertEqual(sorted(steps), [0, 0, 0, 0, 3])
        notes = ["\n".join(paragraph.text for paragraph in page.find(f"{PRESENTATION}notes").iter()
                           if paragraph.text) for page in pages]
        self.assertTrue(all(notes))
        written = json.loads((RESOURCES / "sample.pdfpc").read_text(encoding="utf-8"))["pages"]
        self.assertEqual([(page["idx"], page["note"]) for page in written], list(enumerate(notes)))

    def test_pdf_has_as_many_pages(self):
        pdf = (RESOURCES / "sample.pdf").read_bytes()
        self.assertTrue(pdf.startswith(b"%PDF-1."))
        self.assertIn(b"/Count 5", pdf)


if __name__ == "__main__":
    unittest.main()
