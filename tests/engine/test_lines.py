"""Children that answer in lines: late, in pieces, wrongly, or not at all."""
from __future__ import annotations

import os
import subprocess
import time
import unittest

from engine_support import DEADLINE, PYTHON, SCRIPT
from torvane_engine.presenters import lines
from torvane_engine.presenters.lines import Gone, LineProcess, Silent
from torvane_engine.presenters.wake import Wake

START = """
import json, os, sys, time
def say(text): sys.stdout.write(text); sys.stdout.flush()
def answer(question, **members): say(json.dumps({"id": question["id"], **members}) + "\\n")
for line in sys.stdin:
    question = json.loads(line)
    do = question["do"]
"""


ANSWERING = """
import sys
sys.path.insert(0, sys.argv[1])
from torvane_engine.presenters.line_child import answer_lines
def respond(question, report):
    report(1, 2)
    while question["do"] == "hang": pass
    return {"answer": question["do"]}
answer_lines(respond)
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

    def test_answer_can_be_waited_for_again(self):
        child = self.child("time.sleep(0.3); answer(question, answer=7)")
        lines = child.lines()
        lines.send({"do": ""}, DEADLINE)
        self.assertRaises(Silent, lines.answer, 0.01)
        self.assertTrue(child.is_running)
        self.assertEqual(lines.answer(DEADLINE)["answer"], 7)

    def test_news_between_two_questions(self):
        child = self.child("answer(question); say('{\"id\": 0}\\n')")
        wake = Wake()
        child.ask({"do": ""}, DEADLINE)
        self.assertTrue(child.wait_for_news(DEADLINE, wake))
        self.assertFalse(child.wait_for_news(0.01, wake))
        child.ask({"do": ""}, DEADLINE)
        self.assertTrue(child.wait_for_news(DEADLINE, wake))

    def test_news_that_come_before_an_answer_are_not_lost(self):
        child = self.child("say('{\"id\": 0}\\n'); answer(question)")
        child.ask({"do": ""}, DEADLINE)
        self.assertTrue(child.wait_for_news(0, Wake()))
        self.assertFalse(child.wait_for_news(0, Wake()))

    def test_late_answers_are_no_news(self):
        child = self.child("answer(question); answer(question)")
        child.ask({"do": ""}, DEADLINE)
        self.assertFalse(child.wait_for_news(0.1, Wake()))

    def test_waiting_for_news_ends_when_it_is_woken(self):
        child = self.child("answer(question)")
        child.ask({"do": ""}, DEADLINE)
        wake = Wake()
        wake.set()
        before = time.monotonic()
        self.assertFalse(child.wait_for_news(1000, wake))
        self.assertLess(time.monotonic() - before, DEADLINE)
        wake.clear()
        self.assertFalse(child.wait_for_news(0.01, wake))

    def test_a_child_that_ends_is_news(self):
        for end in ("os._exit(0)", "say('nonsense\\n')"):
            child = self.child("answer(question); " + end)
            child.ask({"do": ""}, DEADLINE)
            self.assertTrue(child.wait_for_news(DEADLINE, Wake()))

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

    def test_progress_gives_more_time_but_not_for_ever(self):
        child = self.child("""
for done in range(int(do)):
    answer(question, progress=[done, 9])
    time.sleep(0.1)
answer(question, answer="whole")
""")
        told = []
        child.ask({"do": "0"}, DEADLINE)  # it is there
        answer = child.ask({"do": "20"}, 1.5, lambda *done: told.append(done), 10 * DEADLINE)
        self.assertEqual((answer["answer"], told), ("whole", [(done, 9) for done in range(20)]))
        self.assertRaises(Silent, child.ask, {"do": "1000"}, 1.5, lambda *_: None, 2.0)
        self.assertFalse(child.is_running)

    def test_progress_that_stops_is_silence(self):
        child = self.child("answer(question, progress=[1, 2]); time.sleep(1000)")
        before = time.monotonic()
        self.assertRaises(Silent, child.ask, {"do": ""}, 0.2, lambda *_: None, 10 * DEADLINE)
        self.assertLess(time.monotonic() - before, DEADLINE)

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

    def test_children_of_the_engine_answer_with_progress(self):
        child = LineProcess([PYTHON, "-c", ANSWERING, str(SCRIPT.parent)])
        self.addCleanup(child.end)
        told = []
        for text in ("one", "two"):
            self.assertEqual(child.ask({"do": text}, DEADLINE, lambda *done: told.append(done))
                             ["answer"], text)
        self.assertEqual(told, [(1, 2)] * 2)
        self.assertEqual(child.ask({"do": ""}, DEADLINE)["progress"], [1, 2])

    def test_children_of_the_engine_end_with_it_in_the_middle_of_an_answer(self):
        child = subprocess.Popen([PYTHON, "-c", ANSWERING, str(SCRIPT.parent)],
                                 stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.addCleanup(child.kill)
        child.stdin.write(b'{"id":1,"do":"hang"}\n')
        child.stdin.flush()
        self.assertIn(b"progress", child.stdout.readline())
        child.stdin.close()
        self.assertEqual(child.wait(DEADLINE), 0)
        child.stdout.close()

    def test_program_that_does_not_exist_is_gone(self):
        self.assertRaises(Gone, LineProcess(["/nowhere/program"]).ask, {"do": ""}, DEADLINE)


if __name__ == "__main__":
    unittest.main()
