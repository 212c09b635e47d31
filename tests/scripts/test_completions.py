"""bash and zsh complete what the help of torvane-ipad names, and nothing else."""

import functools
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SCRIPT = Path(__file__).resolve().parents[2] / "packaging/completions"
PROGRAM = os.environ.get("TORVANE_IPAD")

# What bash does for a completion; "<files>" stands for names of files.
BASH = """
compopt() { [[ $* == '-o default' ]] && files='<files>'; }
source "$1"; shift
COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); files=
_torvane_ipad
printf '%s\\n' "${COMPREPLY[@]}" $files
"""
# zsh's own helpers say what they were asked to complete.
ZSH = """
_arguments() { print -rl -- "$@"; state=$told; [[ -z $told ]] }
_describe() { print -rl -- "${(@P)2}" }
told=$1; shift
words=("${@:2}"); source "$1"
"""


@functools.cache
def written(shell, program):
    return subprocess.run([sys.executable, SCRIPT, shell, program], capture_output=True, text=True,
                          check=False)


@functools.cache
def help_of(*command):
    return subprocess.run([PROGRAM, *command, "--help"], capture_output=True, text=True,
                          check=True).stdout


@unittest.skipUnless(PROGRAM, "TORVANE_IPAD does not name the program")
class Completions(unittest.TestCase):
    def setUp(self):
        self.folder = self.enterContext(tempfile.TemporaryDirectory())

    def commands(self):
        listed = help_of().partition("Commands:\n")[2].partition("\n\n")[0]
        return [line.split()[0] for line in listed.splitlines()]

    def options(self, *command):
        return sorted(re.findall(r"^  (--[a-z-]+)", help_of(*command), re.M))

    def file(self, shell):
        done = written(shell, PROGRAM)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        path = Path(self.folder) / shell
        path.write_text(done.stdout, encoding="utf-8")
        return str(path)

    def run_shell(self, *command):
        done = subprocess.run(command, capture_output=True, text=True, check=False)
        self.assertEqual(done.stderr, "")
        return done.stdout.split("\n")[:-1]


class Bash(Completions):
    def complete(self, *words):
        lines = self.run_shell("bash", "--norc", "-c", BASH, "bash", self.file("bash"),
                               "torvane-ipad", *words)
        return [line for line in lines if line]

    def test_commands_are_those_of_the_help(self):
        self.assertIn("export", self.commands())
        self.assertEqual(self.complete(""), self.commands())
        self.assertEqual(self.complete("--host", "desk", ""), self.commands())
        self.assertEqual(self.complete("pre"), ["previous", "preview"])

    def test_options_are_those_of_each_command(self):
        self.assertEqual(sorted(self.complete("--")), self.options())
        for command in self.commands():
            self.assertEqual(sorted(self.complete(command, "--")), self.options(command), command)

    def test_files_stand_where_files_belong(self):
        for words in (["export", ""], ["preview", "3", "x"], ["draw", "x"], ["info", "--key", ""],
                      ["get", "/x", "--output", "y"]):
            self.assertEqual(self.complete(*words), ["<files>"], words)
        for words in (["next", ""], ["goto", "3"], ["info", "--port", ""], ["nonsense", "--"]):
            self.assertEqual(self.complete(*words), [], words)

    def test_words_that_an_operand_may_be(self):
        self.assertEqual(self.complete("black", "o"), ["on", "off"])


@unittest.skipUnless(shutil.which("zsh"), "there is no zsh")
class Zsh(Completions):
    def complete(self, state, *words):
        return self.run_shell("zsh", "-f", "-c", ZSH, "zsh", state, self.file("zsh"), *words)

    def test_is_found_by_its_first_line(self):
        self.assertEqual(Path(self.file("zsh")).read_text(encoding="utf-8").split("\n")[0],
                         "#compdef torvane-ipad")

    def test_commands_are_those_of_the_help(self):
        lines = self.complete("command")
        described = [line.partition(":")[0] for line in lines if re.match("[a-z]", line)]
        self.assertEqual(described, self.commands())

    def test_options_are_those_of_each_command(self):
        shared = sorted(re.findall(r"(--[a-z-]+)\[", "\n".join(self.complete(""))))
        self.assertEqual(shared, self.options())
        for command in self.commands():
            own = "\n".join(self.complete("operands", command)).partition("*::operand")[2]
            self.assertEqual(sorted(re.findall(r"^(--[a-z-]+)\[", own, re.M)),
                             self.options(command), command)

    def test_operands_of_a_command(self):
        self.assertIn("1:file:_files", self.complete("operands", "export"))
        self.assertIn("1:on or off:(on off)", self.complete("operands", "black"))


class StrangeUse(unittest.TestCase):
    def test_strange_help_is_refused(self):
        with tempfile.TemporaryDirectory() as folder:
            program = Path(folder) / "program"
            program.write_text("#!/bin/sh\nprintf 'Commands:\\nunindented\\n'\n", encoding="ascii")
            program.chmod(0o755)
            done = written("bash", program)
            self.assertEqual((done.returncode, done.stdout), (1, ""))
            self.assertIn("unindented", done.stderr)

    def test_another_shell_is_refused(self):
        done = written("fish", "/bin/true")
        self.assertEqual((done.returncode, done.stdout), (2, ""))
        self.assertIn("bash|zsh", done.stderr)


if __name__ == "__main__":
    unittest.main()
