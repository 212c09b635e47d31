"""What make-release writes is what the update site has to serve, or nothing is written."""

import os
import plistlib
import subprocess
import sys
import tempfile
import unittest
import zipfile
from pathlib import Path
from xml.etree import ElementTree

ROOT = Path(__file__).resolve().parents[2]
SCRIPT = ROOT / "scripts/make-release"


class MakeRelease(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.site = Path(folder.name) / "site"
        self.app = Path(folder.name) / "app"
        (self.app / "bin").mkdir(parents=True)
        (self.app / "Contents").mkdir()
        (self.app / "bin/program").write_bytes(os.urandom(5000))
        (self.app / "bin/program").chmod(0o755)
        os.symlink("bin/program", self.app / "current")
        os.symlink("../bin", self.app / "Contents/programs")
        self.number_application("413")

    def number_application(self, number):
        (self.app / "Contents/Info.plist").write_bytes(plistlib.dumps(
            {"CFBundleVersion": number, "CFBundleExecutable": "program"}))
        (self.app / "Info.json").write_text(f'{{"CFBundleVersion": "{number}"}}')

    def make(self, number="413"):
        return subprocess.run([sys.executable, SCRIPT, number, self.site, "--bundle", self.app],
                              capture_output=True, text=True, check=False)

    def assert_refused(self, words, number="413"):
        done = self.make(number)
        self.assertNotEqual(done.returncode, 0)
        self.assertIn(words, done.stderr)
        self.assertEqual(list(self.site.glob("*")) if self.site.exists() else [], [])

    def test_version_and_archive(self):
        self.assertEqual(self.make().returncode, 0)
        self.assertEqual(sorted(path.name for path in self.site.iterdir()),
                         ["Torvane-P2P-Mac.zip", "screenshots", "version.txt"])
        self.assertEqual((self.site / "version.txt").read_text(), "413\n")
        with zipfile.ZipFile(self.site / "Torvane-P2P-Mac.zip") as archive:
            top = "Torvane P2P Helper.app/"
            self.assertEqual(archive.namelist()[0], top)
            self.assertEqual(archive.read(top + "bin/program"),
                             (self.app / "bin/program").read_bytes())
            self.assertEqual(archive.getinfo(top + "bin/program").external_attr >> 16, 0o100755)
            self.assertEqual(archive.read(top + "current"), b"bin/program")
            self.assertEqual(archive.getinfo(top + "current").external_attr >> 28, 0o12)

    def test_pictures_that_software_centres_ask_for(self):
        self.make()
        metainfo = ROOT / "packaging/app.torvane.p2p_helper.metainfo.xml.in"
        pictures = [image.text for image in ElementTree.parse(metainfo).iter("image")]
        self.assertGreater(len(pictures), 1)
        for picture in pictures:
            base, _, path = picture.partition("/")
            self.assertEqual(base, "@TORVANE_UPDATE_BASE@")
            self.assertTrue((self.site / path).read_bytes().startswith(b"\x89PNG"), path)

    def test_same_application_makes_the_same_archive(self):
        self.make()
        first = (self.site / "Torvane-P2P-Mac.zip").read_bytes()
        os.utime(self.app / "bin/program", (0, 0))
        self.make()
        self.assertEqual((self.site / "Torvane-P2P-Mac.zip").read_bytes(), first)

    def test_refuses_what_is_no_build_number(self):
        for number in ("", "4.13", "413a", "-1", "٤١٣", "9" * 32):
            self.assert_refused("build number" if number != "-1" else "BUILD", number)

    def test_refuses_an_application_of_another_build(self):
        self.number_application("412")
        self.assert_refused("says build 412, not 413")

    def test_refuses_an_application_that_contradicts_itself(self):
        (self.app / "Info.json").write_text('{"CFBundleVersion": "412"}')
        self.assert_refused("Info.json says build 412, not 413")

    def test_refuses_an_application_without_its_program(self):
        (self.app / "bin/program").chmod(0o644)
        self.assert_refused("has no program program")

    def test_refuses_what_is_no_application(self):
        (self.app / "Contents/Info.plist").unlink()
        self.assert_refused("has no Contents/Info.plist")

    def test_refuses_links_that_lead_out(self):
        for target in ("/etc/passwd", "..", "bin/../..", "bin/.."):
            os.symlink(target, self.app / "out")
            self.assert_refused("the link out leads out")
            (self.app / "out").unlink()

    def test_refuses_what_is_no_file(self):
        os.mkfifo(self.app / "pipe")
        self.assert_refused("pipe is neither")

    def test_keeps_what_is_published_when_it_refuses(self):
        self.make()
        self.number_application("414")
        self.assertNotEqual(self.make("415").returncode, 0)
        self.assertEqual((self.site / "version.txt").read_text(), "413\n")

    def test_explains_itself(self):
        done = subprocess.run([sys.executable, SCRIPT, "--help"], capture_output=True, text=True,
                              check=True)
        self.assertIn("--bundle", done.stdout)


if __name__ == "__main__":
    unittest.main()
