"""A display with a window manager, and a home folder, of one's own."""
from __future__ import annotations

import os
import shutil
import subprocess
import sys
import tempfile
import time
from pathlib import Path
from typing import List

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "engine"))

from engine_support import EngineProcess  # noqa: E402

START = 90.0  # for a program on a busy machine


def missing_programs(*more: str) -> List[str]:
    """Those of a display, and those that are named, that are not installed."""
    return [one for one in ("Xvfb", "openbox", "xdotool", *more) if not shutil.which(one)]


def wait_until(ask, what, seconds=START):
    deadline = time.monotonic() + seconds
    while True:
        found = ask()
        if found:
            return found
        if time.monotonic() > deadline:
            raise AssertionError(f"not within {seconds} s: {what}")
        time.sleep(0.02)


class PrivateDisplay:
    def __init__(self, size: str = "1280x720x24", **environment: str) -> None:
        self.home = tempfile.mkdtemp(prefix="torvane-display-")
        self.environment = {**os.environ, "HOME": self.home, "XDG_RUNTIME_DIR": self.path("run"),
                            **environment}
        self.environment.pop("WAYLAND_DISPLAY", None)
        os.mkdir(self.path("run"), 0o700)
        reading, writing = os.pipe()
        self._log = open(self.path("log"), "w", encoding="utf-8")
        self._display = self.spawn(["Xvfb", "-displayfd", str(writing), "-screen", "0", size,
                                    "-nolisten", "tcp", "-noreset"], pass_fds=(writing,))
        os.close(writing)
        with os.fdopen(reading) as number:
            self.environment["DISPLAY"] = ":" + number.readline().strip()
        self._manager = self.spawn(["openbox"])
        self.engine = None

    def spawn(self, command, **more):
        return subprocess.Popen(command, env=self.environment, start_new_session=True,
                                **{"stdout": self._log, "stderr": self._log, **more})

    def path(self, name: str) -> str:
        return os.path.join(self.home, name)

    def start_engine(self, **environment: str) -> EngineProcess:
        kept = ("HOME", "DISPLAY", "XDG_RUNTIME_DIR")
        self.engine = EngineProcess(**{**{name: self.environment[name] for name in kept},
                                       **environment})
        return self.engine

    def key(self, name: str, window: str = "") -> None:
        """Pressed at the computer, in the window that has the keyboard, or gets it."""
        focus = []
        if window:
            found = wait_until(lambda: self.windows(window), f"a window {window}")
            focus = ["windowfocus", "--sync", found[-1], "sleep", "0.2"]
        subprocess.run(["xdotool", *focus, "key", name], env=self.environment, check=True)

    def windows(self, name: str) -> List[str]:
        """The visible ones with such a name."""
        return subprocess.run(["xdotool", "search", "--onlyvisible", "--name", name], text=True,
                              env=self.environment, capture_output=True).stdout.split()

    def close(self) -> None:
        if self.engine:
            self.engine.stop()
        for process in (self._manager, self._display):
            process.terminate()
            process.wait()
        self._log.close()
        shutil.rmtree(self.home, ignore_errors=True)
