"""Lines for the log; the helper collects standard output and error in a file."""
from __future__ import annotations

import sys
from typing import Any


def write_line(stream: Any, message: str) -> None:
    try:
        print(message, file=stream, flush=True)
    except (OSError, ValueError, AttributeError):
        pass  # a full disk or a closed log is no reason to stop a presentation


def log_error(message: str) -> None:
    write_line(sys.stderr, f"torvane: {message}")
