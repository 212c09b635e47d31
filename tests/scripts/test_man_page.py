"""The manual page of torvane-ipad says what the program's own help says."""

import os
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SCRIPT = Path(__file__).resolve().parents[2] / "packaging/man-page"
PROGRAM = os.environ.get("TORVANE_IPAD")


def page(program):
    return subprocess.run([sys.executable, SCRIPT, program], capture_output=True, text=True,
                          check=False)


def plain(text):
    return text.replace("\\-", "-").replace("\\e", "\\").replace("\\&", "")


@unittest.skipUnless(PROGRAM, "TORVANE_IPAD does not name the program")
class ManPage(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.done = page(PROGRAM)
        cls.lines = plain(cls.done.stdout).splitlines()

    def help(self, *arguments):
        return subprocess.run([PROGRAM, *arguments, "--help"], capture_output=True, text=True,
                              check=True).stdout

    def commands(self):
        listed = self.help().partition("Commands:\n")[2].partition("\n\n")[0]
        return [line.split()[0] for line in listed.splitlines()]

    def test_every_command_has_a_part(self):
        self.assertEqual(self.done.returncode, 0, self.done.stderr)
        self.assertIn("pair", self.commands())
        parts = [line.split()[1].strip('"') for line in self.lines if line.startswith(".SS ")]
        self.assertEqual(parts, self.commands())

    def test_every_option_of_every_command(self):
        for command in self.commands():
            part = self.done.stdout.partition(f'.SS "{command}')[2].partition("\n.S")[0]
            own = self.help(command).partition("\nOptions:\n")[2].partition("\n\n")[0]
            options = re.findall(r"^  (--\S+)", own, re.M)
            there = [line.split()[1] for line in plain(part).splitlines()
                     if line.startswith(".B ")]
            self.assertEqual(there, options, command)

    def test_options_of_every_command(self):
        common = self.help().partition("Options of every command:\n")[2].partition("\n\n")[0]
        for option in re.findall(r"^  (--\S+)", common, re.M):
            self.assertTrue(any(line.split()[:2] == [".B", option] for line in self.lines), option)


class StrangeHelp(unittest.TestCase):
    def test_is_refused(self):
        with tempfile.TemporaryDirectory() as folder:
            program = Path(folder) / "program"
            program.write_text("#!/bin/sh\nprintf 'p: does\\n\\nUsage: p\\n\\nCommands:\\nunindented\\n"
                               "\\nEnds\\n'\n", encoding="ascii")
            program.chmod(0o755)
            done = page(program)
            self.assertEqual(done.returncode, 1)
            self.assertEqual(done.stdout, "")
            self.assertIn("unindented", done.stderr)


if __name__ == "__main__":
    unittest.main()
