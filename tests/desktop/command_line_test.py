#!/usr/bin/python3
"""What the program says on the command line, and where there is no desktop.

usage: command_line_test.py BUNDLE_FOLDER
"""

import json
import os
import subprocess
import sys
import tempfile
import unittest

BUNDLE = None
PATIENCE = 60
SENTENCE = ("Torvane P2P Helper needs a desktop, and finds no display: start it from a terminal or "
            "menu of your desktop session.\n")


class CommandLine(unittest.TestCase):
    def setUp(self):
        self.home = self.enterContext(tempfile.TemporaryDirectory())

    def run_program(self, *arguments, **variables):
        """In a home of its own, without a desktop."""
        environment = {"PATH": os.environ["PATH"], "HOME": self.home, "XDG_RUNTIME_DIR": self.home,
                       "TMPDIR": self.home, "LANG": "C.UTF-8", **variables}
        program = os.path.join(BUNDLE, "bin", "torvane-p2p-helper")
        return subprocess.run([program, *arguments], env=environment, capture_output=True,
                              text=True, timeout=PATIENCE, check=False)

    def test_help_says_what_it_does(self):
        for option in ("--help", "-h"):
            done = self.run_program(option)
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            self.assertIn("Usage: torvane-p2p-helper [--help | --version]", done.stdout)
            self.assertLessEqual(max(map(len, done.stdout.splitlines())), 100)

    def test_version_is_that_of_its_bundle(self):
        with open(os.path.join(BUNDLE, "Info.json"), encoding="utf-8") as file:
            info = json.load(file)
        done = self.run_program("--version")
        self.assertEqual((done.returncode, done.stdout), (0, "torvane-p2p-helper "
                         f"{info['CFBundleShortVersionString']} (build {info['CFBundleVersion']})\n"))

    def test_questions_leave_nothing_behind(self):
        self.run_program("--version")
        self.run_program("--help")
        self.assertEqual(os.listdir(self.home), [])

    def test_without_a_display_it_ends_with_one_sentence(self):
        for variables in ({}, {"DISPLAY": ":4711"}, {"WAYLAND_DISPLAY": "wayland-none"},
                          {"DISPLAY": ":4711", "WAYLAND_DISPLAY": "/nowhere/wayland-0"},
                          {"QT_QPA_PLATFORM": "nonsense"}):
            done = self.run_program(**variables)
            self.assertEqual((done.returncode, done.stdout, done.stderr), (1, "", SENTENCE),
                             variables)


if __name__ == "__main__":
    BUNDLE = os.path.abspath(sys.argv.pop(1))
    unittest.main(verbosity=2)
