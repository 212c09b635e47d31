"""The build takes no other address for updates than a secure one in the right form."""

import subprocess
import unittest
from pathlib import Path

CHECK = Path(__file__).resolve().parents[2] / "cmake/UpdateBase.cmake"


def check(*settings):
    return subprocess.run(["cmake", *settings, "-P", CHECK], capture_output=True, text=True,
                          check=False)


class UpdateBase(unittest.TestCase):
    def test_taken(self):
        self.assertEqual(check().returncode, 0)
        for address in ("https://torvane.example/torvane", "https://a-b.example:8443/x/y.z/torvane"):
            self.assertEqual(check(f"-DTORVANE_UPDATE_BASE={address}").returncode, 0, address)

    def test_refused(self):
        for address in ("", "http://torvane.example/torvane", "torvane.example/torvane",
                        "https://torvane.example/torvane/", "https://torvane.example/other",
                        "https://torvane.example", "https:///torvane",
                        "https://torvane.example/mytorvane", "https://user@torvane.example/torvane",
                        "https://torvane.example/?/torvane", "https://torvane.example/#/torvane",
                        "https://torvane.example/\"/torvane", "https://torvane.example/a b/torvane",
                        "xhttps://torvane.example/torvane", "HTTP://torvane.example/torvane"):
            done = check(f"-DTORVANE_UPDATE_BASE={address}")
            self.assertNotEqual(done.returncode, 0, address)
            self.assertIn("must be an HTTPS URL", done.stderr)


if __name__ == "__main__":
    unittest.main()
