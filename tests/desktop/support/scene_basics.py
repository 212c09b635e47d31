"""What the steps of scripts/play-scene share."""

import urllib.request

from helper_program import ENGINE_PORT


class Failure(Exception):
    """A step that did not hold, in words."""


def check(holds, otherwise):
    if not holds:
        raise Failure(otherwise)


def ask_engine(path):
    """The engine's own answer, past the helper."""
    with urllib.request.urlopen(f"http://127.0.0.1:{ENGINE_PORT}{path}", timeout=10) as answer:
        return answer.read()
