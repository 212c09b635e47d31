"""The viewer's program, and the processes of it that the engine starts."""
from __future__ import annotations

import os
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path
from typing import IO, Any, Dict, Optional

from ..lines import LineProcess

RESOURCES = Path(__file__).resolve().parents[3]
SAMPLE = str(RESOURCES / "sample.pdf")
BESIDE = RESOURCES.parent / "bin" / "torvane-show"  # in the program's folder


def find() -> Optional[str]:
    """None where it is not installed, as on a Mac."""
    named = os.environ.get("TORVANE_SHOW")
    if named is None and sys.platform == "linux":
        named = str(BESIDE) if os.access(BESIDE, os.X_OK) else shutil.which("torvane-show")
    return named if named and os.access(named, os.X_OK) else None


class Reading:
    """A viewer that shows nothing and answers about one PDF."""

    def __init__(self, program: str, path: str) -> None:
        self.path = path
        self._process = LineProcess([program, "--answer", "--", path])

    def ask(self, seconds: float, action: str, *arguments: Any) -> Dict[str, Any]:
        """Raises Gone and Silent."""
        return self._process.ask({"do": action, "with": arguments}, seconds)

    def end(self) -> None:
        self._process.end()


class Showing:
    """A viewer that was started to show a PDF. It outlives the engine: a talk goes on."""

    def __init__(self, program: str, path: str, page: int) -> None:
        self._said: IO[bytes] = tempfile.TemporaryFile()
        self._process = subprocess.Popen(
            [program, "--page", str(page), "--", path], start_new_session=True,
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=self._said)

    def has_ended(self) -> bool:
        return self._process.poll() is not None

    def complaint(self) -> str:
        """The last that it said, once it has ended; else an empty text."""
        self._said.seek(0)
        lines = self._said.read(10_000).decode("utf-8", "replace").strip().split("\n")
        return lines[-1].partition("torvane-show: ")[2]

    def forget(self) -> None:
        self._said.close()
