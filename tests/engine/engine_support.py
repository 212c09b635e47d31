"""The engine as a process, and what its tests share."""
from __future__ import annotations

import http.client
import json
import os
import socket
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

SCRIPT = Path(__file__).resolve().parents[2] / "resources" / "torvane.py"
PYTHON = "/usr/bin/python3" if os.path.exists("/usr/bin/python3") else sys.executable
DEADLINE = 10.0  # for things that are expected within milliseconds
STAND_IN_VIEWER = Path(__file__).resolve().parent / "stand_in_viewer"
JPEG = b"\xff\xd8\xff\xe0" + bytes(range(256))

sys.dont_write_bytecode = True
sys.path.insert(0, str(SCRIPT.parent))


class EngineProcess:
    """A started engine, and a client with one kept connection to it."""

    def __init__(self, port: int = 0, script: Path = SCRIPT, **environment: str) -> None:
        inherited = {k: v for k, v in os.environ.items() if k != "TORVANE_PARENT_PID"}
        inherited.pop("PYTHONDONTWRITEBYTECODE", None)
        # Offices and viewers of the developer's are none of our business.
        self.folder = tempfile.TemporaryDirectory()
        inherited.update(HOME="/nonexistent", XDG_RUNTIME_DIR=self.folder.name,
                         TORVANE_SHOW=str(STAND_IN_VIEWER))
        self.process = subprocess.Popen(
            [PYTHON, str(script), str(port)], env={**inherited, **environment},
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.first_line = self.process.stdout.readline()
        self.port = int(self.first_line.partition("127.0.0.1:")[2].split()[0])
        self.client = http.client.HTTPConnection("127.0.0.1", self.port, timeout=DEADLINE)

        deadline = time.monotonic() + DEADLINE
        while time.monotonic() < deadline:
            state = self.get("/api/state")
            if state["count"] and state["title"] and not state["progress"]:
                break  # titles, notes and small pictures were read
            time.sleep(0.01)

    def request(self, method, path, body=None, **headers):
        if isinstance(body, (dict, list)):
            body = json.dumps(body)
        self.client.request(method, path, body, {k.replace("_", "-"): v
                                                 for k, v in headers.items()})
        response = self.client.getresponse()
        return response, response.read()

    def call(self, method, path, body=None, **headers):
        """Status and JSON of a request."""
        response, data = self.request(method, path, body, **headers)
        return response.status, json.loads(data)

    def get(self, path):
        status, value = self.call("GET", path)
        assert status == 200, (path, status, value)
        return value

    def post(self, path, body=None):
        status, value = self.call("POST", path, body)
        assert status == 200, (path, status, value)
        return value

    def ink(self, *events):
        return self.post("/api/ink", {"events": list(events)})

    def poll(self, since=0):
        return self.get(f"/api/ink/events?since={since}")

    def connect(self):
        return socket.create_connection(("127.0.0.1", self.port), timeout=DEADLINE)

    def raw(self, data: bytes):
        """Status and JSON of an answer to bytes sent as they are, on a connection of their own."""
        with self.connect() as sock:
            sock.sendall(data)
            response = http.client.HTTPResponse(sock)
            response.begin()
            return response.status, json.loads(response.read())

    def head(self, line="GET /api/state HTTP/1.1", *headers):
        return "\r\n".join([line, f"Host: 127.0.0.1:{self.port}", *headers, "", ""]).encode()

    def stop(self):
        """Ends the engine; returns what it wrote after its first line."""
        self.client.close()
        if self.process.poll() is None:
            self.process.terminate()
        output = self.process.communicate(timeout=DEADLINE)
        self.folder.cleanup()
        return output


def begin(stroke, x=0.1, y=0.2):
    return {"t": "begin", "id": stroke, "x": x, "y": y}


def pt(stroke, x=0.3, y=0.4):
    return {"t": "pt", "id": stroke, "x": x, "y": y}


class Poller:
    """What a poller shows, by the rules of the overlay."""

    def __init__(self) -> None:
        self.seq, self.strokes = 0, {}

    def take(self, answer):
        self.seq = answer["seq"]
        for event in answer["events"]:
            if event["t"] == "clear":
                self.strokes = {}
            elif event["t"] == "begin":
                self.strokes.pop(event["id"], None)
                self.strokes[event["id"]] = [(event["x"], event["y"])]
            elif event["t"] == "pt" and event["id"] in self.strokes:
                self.strokes[event["id"]].append((event["x"], event["y"]))
            elif event["t"] == "del":
                for stroke in event["ids"]:
                    self.strokes.pop(stroke, None)

    @property
    def shown(self):
        return list(self.strokes.items())  # the order counts


class EngineTest(unittest.TestCase):
    """An engine of its own for each test; it must end with status 0 and without complaint."""

    def setUp(self):
        self.engine = EngineProcess()
        self.addCleanup(self.stop_engine)

    def stop_engine(self):
        self.assertEqual(self.engine.stop(), ("", ""))
        self.assertEqual(self.engine.process.returncode, 0)


class SharedEngineTest(unittest.TestCase):
    """One engine for all tests of a class, which leave it as it was."""

    @classmethod
    def setUpClass(cls):
        cls.engine = EngineProcess()

    @classmethod
    def tearDownClass(cls):
        output = cls.engine.stop()
        assert output == ("", ""), output

    def tearDown(self):
        state = self.engine.get("/api/state")
        self.assertEqual((state["slide"], state["inkSeq"], state["overlayV"]), (1, 0, 0))
