"""A stand-in for PowerPoint and osascript (standin/), run by node, with an engine that takes this
computer for a Mac."""
from __future__ import annotations

import itertools
import json
import os
import shutil
import sys
import tempfile
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "engine"))

from engine_support import EngineProcess  # noqa: E402

HERE = Path(__file__).resolve().parent
CONTAINER = "Library/Containers/com.microsoft.Powerpoint/Data/tmp"
ALL, SOME = "slide show range show all", "slide show range"


def missing() -> str:
    return "" if shutil.which("node") else "nodejs"


def deck(path, slides):
    return {"path": path, "saved": True, "window": {"slide": 1}, "width": 28 * 36, "height": 15.75 * 36,
            "settings": {"starting": 1, "ending": 1, "range": ALL}, "slides": slides}


def slide(number, title="", notes="", hidden=False, effects=0):
    return {"id": 256 + number, "title": title, "notes": notes, "hidden": hidden, "effects": effects}


def is_alive(process):
    try:
        os.kill(process, 0)
    except ProcessLookupError:
        return False
    return True


class PrivatePowerPoint:
    """A folder with what it shows, a home folder, and an engine when started."""

    def __init__(self, *decks, **state) -> None:
        self.folder = tempfile.mkdtemp(prefix="torvane-powerpoint-")
        self._keys = itertools.count()
        self._path("keys").mkdir()
        self._path("events.log").touch()
        self._path("world.json").write_text(json.dumps(
            {"running": True, "decks": list(decks), "front": 0, "show": None, **state}))
        self.environment = {"HOME": self.folder, "TORVANE_STAND_IN": self.folder,
                            "PATH": f"{HERE / 'standin'}{os.pathsep}{os.environ['PATH']}"}
        self.engine = None

    def _path(self, *names) -> Path:
        return Path(self.folder, *names)

    def start_engine(self) -> EngineProcess:
        self.engine = EngineProcess(script=HERE / "engine_on_a_mac.py", **self.environment)
        return self.engine

    def _do(self, what) -> None:
        name = f"{next(self._keys):06}"
        new = self._path("keys", name + ".new")
        new.write_text(json.dumps(what))
        new.rename(self._path("keys", name))

    def set(self, **state) -> None:
        """Changes what it shows, or what goes wrong with it, at its next event."""
        self._do({"set": state})

    def press(self, key) -> None:
        self._do({"press": key})

    def state(self):
        return json.loads(self._path("world.json").read_text())

    def events(self, start=0):
        """What it was asked, from a number of entries on."""
        with open(self._path("events.log"), encoding="utf-8") as log:
            entries = [json.loads(line) for line in log if line.endswith("\n")]
        return [one["event"] for one in entries[start:] if "event" in one]

    def mark(self) -> int:
        with open(self._path("events.log"), encoding="utf-8") as log:
            return sum(1 for _ in log)

    def scripts(self):
        """Processes that were started, in their order."""
        with open(self._path("events.log"), encoding="utf-8") as log:
            entries = [json.loads(line) for line in log if line.endswith("\n")]
        return [one["started"] for one in entries if "started" in one]

    def staged(self):
        folder = self._path(CONTAINER)
        return sorted(one.name for one in folder.iterdir()) if folder.is_dir() else []

    def close(self) -> None:
        if self.engine:
            self.engine.stop()
        shutil.rmtree(self.folder, ignore_errors=True)
