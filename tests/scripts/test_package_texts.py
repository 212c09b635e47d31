"""What a package says of the program holds on Linux."""

import re
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
TEXTS = ("packaging/app.torvane.p2p_helper.metainfo.xml.in",
         "packaging/app.torvane.p2p-helper.desktop", "packaging/torvane-p2p-helper.1.in",
         "packaging/app.torvane.show.desktop", "packaging/torvane-show.1")
FOREIGN = re.compile(r"\bMac\b|macOS|PowerPoint|AirDrop|Bluetooth|menu bar|status bar"
                     r"|System Settings|without a shared network|~/Library")


def description():
    cmake = (ROOT / "cmake/Packaging.cmake").read_text(encoding="utf-8")
    return re.search(r'set\(CPACK_PACKAGE_DESCRIPTION\s+"(.+?)"\)', cmake, re.DOTALL)[1]


class PackageTexts(unittest.TestCase):
    def test_speak_of_nothing_that_is_a_macs_alone(self):
        for text in (description(), *((ROOT / name).read_text(encoding="utf-8") for name in TEXTS)):
            self.assertEqual(FOREIGN.findall(text), [])

    def test_say_that_a_shared_network_is_needed(self):
        metainfo = (ROOT / TEXTS[0]).read_text(encoding="utf-8")
        for text in (description(), metainfo):
            self.assertIn("on the same network", " ".join(text.split()))


if __name__ == "__main__":
    unittest.main()
