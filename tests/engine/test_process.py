"""The process: its end, its parent, its arguments."""
from __future__ import annotations

import os
import select
import shutil
import signal
import socket
import subprocess
import tempfile
import time
import unittest
from pathlib import Path
from unittest import mock

from engine_support import DEADLINE, PYTHON, SCRIPT, EngineProcess
from torvane_engine.process import parent_check


class ProcessTest(unittest.TestCase):
    def test_says_where_it_listens_and_nothing_more(self):
        engine = EngineProcess()
        self.assertEqual(engine.first_line, f"Torvane engine listening on 127.0.0.1:{engine.port} "
                                            f"(pid {engine.process.pid})\n")
        engine.call("GET", "/nowhere")
        engine.post("/api/next")
        self.assertEqual(engine.stop(), ("", ""))

    def test_shutdown_answers_and_ends_with_status_0(self):
        engine = EngineProcess()
        self.assertEqual(engine.post("/api/shutdown")["slide"], 1)
        self.assertEqual(engine.process.wait(DEADLINE), 0)
        engine.stop()

    def test_signals_end_it_with_status_0_also_with_clients(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            engine = EngineProcess()
            engine.get("/api/state")
            with engine.connect() as sock:
                sock.sendall(b"POST /api/goto HTTP/1.1\r\n")
                started = time.monotonic()
                engine.process.send_signal(number)
                self.assertEqual(engine.process.wait(DEADLINE), 0)
                self.assertLess(time.monotonic() - started, 1.0)
            self.assertEqual(engine.stop(), ("", ""))

    def test_busy_port_is_one_clear_line(self):
        engine = EngineProcess()
        second = self.run_script(str(engine.port))
        self.assertEqual((second.returncode, second.stdout), (1, ""))
        self.assertEqual(second.stderr, f"torvane: port {engine.port} is busy: "
                                        "another program listens on it\n")
        engine.stop()

    def test_port_is_free_again_after_the_end(self):
        first = EngineProcess()
        first.get("/api/state")
        first.post("/api/shutdown")
        first.process.wait(DEADLINE)
        second = EngineProcess(first.port)
        self.assertEqual(second.get("/api/state")["slide"], 1)
        for engine in (first, second):
            engine.stop()

    def test_listens_on_loopback_only(self):
        engine = EngineProcess()
        with self.assertRaises(OSError):
            socket.create_connection(("127.0.0.2", engine.port), timeout=DEADLINE)
        engine.stop()

    def test_nothing_is_written_beside_the_program(self):
        with tempfile.TemporaryDirectory() as folder:
            copy = Path(folder) / "Resources"
            shutil.copytree(SCRIPT.parent, copy)
            before = sorted(copy.rglob("*"))
            engine = EngineProcess(script=copy / SCRIPT.name)
            engine.post("/api/next")
            self.assertEqual(engine.stop(), ("", ""))
            self.assertEqual(sorted(copy.rglob("*")), before)
            self.assertNotIn("__pycache__", {path.name for path in before})

    def test_arguments(self):
        shown = self.run_script("--help")
        self.assertEqual(shown.returncode, 0)
        for word in ("PORT", "TORVANE_PARENT_PID", "127.0.0.1", "/api/shutdown"):
            self.assertIn(word, shown.stdout)
        for bad in ([], ["x"], ["-1"], ["65536"], ["8484", "1"], ["84e2"], ["999999999999"]):
            refused = self.run_script(*bad)
            self.assertEqual(refused.returncode, 2, bad)
            self.assertNotIn("Traceback", refused.stderr)

    def run_script(self, *arguments):
        return subprocess.run([PYTHON, str(SCRIPT), *arguments], capture_output=True, text=True,
                              timeout=DEADLINE)

    def test_ends_with_its_parent_even_while_that_is_a_zombie(self):
        program = ("import os, subprocess, sys\n"
                   "os.environ['TORVANE_PARENT_PID'] = str(os.getpid())\n"
                   "subprocess.Popen(sys.argv[1:])\n"
                   "sys.stdin.read()\n")
        parent = subprocess.Popen([PYTHON, "-c", program, PYTHON, str(SCRIPT), "0"],
                                  stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                  stderr=subprocess.DEVNULL)
        self.assertIn(b"listening", parent.stdout.readline())
        parent.kill()
        self.assert_closes(parent.stdout)  # held open by the engine; the parent is not yet reaped
        parent.communicate()

    def test_ends_with_the_named_process_when_that_is_not_its_parent(self):
        other = subprocess.Popen([PYTHON, "-c", "input()"], stdin=subprocess.PIPE,
                                 stderr=subprocess.DEVNULL)
        engine = EngineProcess(TORVANE_PARENT_PID=str(other.pid))
        self.assertEqual(engine.get("/api/state")["slide"], 1)
        other.kill()
        other.communicate()
        self.assertEqual(engine.process.wait(DEADLINE), 0)
        self.assertEqual(engine.stop()[1], "torvane: the helper has gone; ending\n")

    def test_parent_that_is_no_process_id_is_not_watched(self):
        for value in ("", "0", "-1", "abc", "1.5", "99999999999999999999"):
            with mock.patch.dict(os.environ, TORVANE_PARENT_PID=value):
                self.assertTrue(parent_check()(), value)

    def assert_closes(self, stream):
        ready, _, _ = select.select([stream], [], [], DEADLINE)
        self.assertTrue(ready, "the engine did not end")
        self.assertEqual(stream.read(), b"")
