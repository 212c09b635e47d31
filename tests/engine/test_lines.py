"""Children that answer in lines: late, in pieces, wrongly, or not at all."""
from __future__ import annotations

import os
import time
import unittest

from engine_support import DEADLINE, PYTHON
from torvane_engine.presenters import lines
from torvane_engine.presenters.lines import Gone, LineProcess, Silent

START = """
import json, os, sys, time
def say(text): sys.stdout.write(text); sys.stdout.flush()
def answer(question, **members): say(json.dumps({"id": question["id"], **members}) + "\\n")
for line in sys.stdin:
    question = json.loads(line)
    do = question["do"]
"""


class LineProcessTest(unittest.TestCase):
    def child(self, body):
        process = LineProcess([PYTHON, "-c", START + "".join(
            f"    {line}\n" for line in body.strip().splitlines())])
        self.addCleanup(process.end)
        return process

    def test_answers_and_goes_on(self):
        child = self.child("answer(question, answer=do * 2, process=os.getpid())")
        first = child.ask({"do": "ab"}, DEADLINE)
        self.assertEqual(first["answer"], "abab")
        self.assertEqual(child.ask({"do": "c" * 100000}, DEADLINE)["process"], first["process"])

    def test_answer_in_pieces_and_late_answers_to_others(self):
        child = self.child("""
text = json.dumps({"id": question["id"], "answer": "ä" * 3})
say('{"id": 0, "answer": "late"}\\n' + text[:5])
time.sleep(0.02)
for letter in text[5:]: say(letter)
say("\\n")
""")
        self.assertEqual(child.ask({"do": ""}, DEADLINE)["answer"], "äää")

    def test_silent_child_is_ended_and_started_anew(self):
        child = self.child("""
if do == "hang": time.sleep(1000)
answer(question, process=os.getpid())
""")
        first = child.ask({"do": ""}, DEADLINE)["process"]
        before = time.monotonic()
        self.assertRaises(Silent, child.ask, {"do": "hang"}, 0.05)
        self.assertLess(time.monotonic() - before, DEADLINE)
        self.assertFalse(child.is_running)
        self.assertRaises(ProcessLookupError, os.kill, first, 0)
        self.assertNotEqual(child.ask({"do": ""}, DEADLINE)["process"], first)

    def test_child_that_does_not_read_is_silent(self):
        child = self.child("answer(question); time.sleep(1000)")
        child.ask({"do": ""}, DEADLINE)
        self.assertRaises(Silent, child.ask, {"do": "x" * 1000000}, 0.1)

    def test_child_that_dies_or_talks_nonsense_is_gone(self):
        for body in ("os._exit(3)", "say('{\\n')", "say('[]\\n')", "say('\\xff\\n')",
                     "say('[' * 100000 + '\\n')", "say('x' * 3000)"):
            child = self.child(body)
            limit, lines.MAX_LINE = lines.MAX_LINE, 2000
            try:
                with self.subTest(body):
                    self.assertRaises(Gone, child.ask, {"do": ""}, DEADLINE)
                    self.assertFalse(child.is_running)
            finally:
                lines.MAX_LINE = limit

    def test_program_that_does_not_exist_is_gone(self):
        self.assertRaises(Gone, LineProcess(["/nowhere/program"]).ask, {"do": ""}, DEADLINE)


if __name__ == "__main__":
    unittest.main()
