"""What numbers of errors and words of the script mean to the user. The numbers are those of Apple
events; their texts are in the user's language and are not used."""
from __future__ import annotations

from typing import Dict, Tuple, Type

from ..presenter import Absent, Refused, Unavailable

NOT_RUNNING = "PowerPoint is not running: open your presentation in it."
NOTHING_OPEN = "No presentation is open in PowerPoint: open one."
SILENT = "PowerPoint does not answer: look whether it asks something on the computer."
ASKING = ("PowerPoint does not answer yet: if macOS asks whether it may be controlled, allow it on the "
          "computer.")
LOST = "The connection to PowerPoint was lost; it is being looked for."
FORBIDDEN = ("PowerPoint may not be controlled: allow it in System Settings › Privacy & Security › "
             "Automation.")

# Whatever was asked for: PowerPoint cannot be driven.
PROBLEMS: Dict[int, Tuple[Type[Exception], str]] = {
    -1743: (Unavailable, FORBIDDEN),
    -1744: (Unavailable, ASKING),
    -600: (Absent, NOT_RUNNING),
    -609: (Unavailable, LOST),
    -1712: (Unavailable, SILENT),
    -128: (Unavailable, "PowerPoint has cancelled what was asked for: look whether it asks something "
                        "on the computer."),
}
NEW_SCRIPT = (-600, -609)  # PowerPoint has ended: another one may not be known to the same script

# What PowerPoint does not do now.
REFUSALS: Dict[int, str] = {
    -1728: "PowerPoint has changed meanwhile: try again.",
    -50: "PowerPoint does not do this now: try again in a moment.",
}
REFUSAL = "PowerPoint does not do this (error {})."

WORDS: Dict[str, Tuple[Type[Exception], str]] = {
    "absent": (Absent, NOT_RUNNING),
    "closed": (Refused, "This presentation is not open any more."),
    "missing": (Refused, "There is no such slide."),
    "hidden": (Refused, "This slide is hidden, and PowerPoint shows no hidden slide in a running slide "
                        "show."),
    "showless": (Refused, "No slide show runs: start it first."),
    "windowless": (Refused, "The presentation has no window to show a slide in."),
    "unreached": (Refused, "PowerPoint did not come to this slide: it may not be part of this slide "
                           "show."),
    "unreadable": (Refused, "The pictures that PowerPoint has made cannot be read."),
}


def problem_of(number: int, looking: bool) -> Exception:
    """The exception for an error; `looking`: in a look, where nothing was asked to be done."""
    if number in PROBLEMS:
        kind, text = PROBLEMS[number]
        return kind(text)
    if not looking:
        return Refused(REFUSALS.get(number, REFUSAL.format(number)))
    if number == -1728:
        return Absent(NOTHING_OPEN)
    return Unavailable(f"PowerPoint answers with an error (number {number}).")
