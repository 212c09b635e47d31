"""What torvane-ipad says for --help, in its parts."""

import re
import subprocess

NAME = "torvane-ipad"
# "  --port PORT         the helper's port", "  get PATH            Fetch a path of the engine"
OPTION = re.compile(r"  (--[a-z-]+(?: [A-Z]+)?) +(\S.*)")
COMMAND = re.compile(r"  ([a-z-]+(?: \S+)*?)  +(\S.*)")
SECTIONS = ("Usage", "Commands", "Options", "Options of every command that reaches a helper",
            "Options of every command", "Example")


class NotUnderstood(Exception):
    """The help has another form than this script knows."""


def sections(text):
    """The help's parts by heading; "" for what stands under none."""
    parts, current = {"": []}, ""
    for line in text.splitlines():
        heading, colon, rest = line.partition(":")
        if colon and heading in SECTIONS:
            current = "" if heading == "Usage" else heading
            parts.setdefault(heading, []).extend([rest.strip()] if rest else [])
        elif not line and current:
            current = ""
        else:
            parts[current].append(line)
    return parts


def listed(lines, form):
    """Two columns as paragraphs with tags."""
    found = []
    for line in lines:
        start = form.fullmatch(line)
        if start:
            found.append(list(start.groups()))
        elif line.startswith("   ") and found:
            found[-1][1] += " " + line.strip()
        else:
            raise NotUnderstood(line)
    return found


def show(program, *arguments):
    return subprocess.run([program, *arguments], check=True, capture_output=True, text=True).stdout
