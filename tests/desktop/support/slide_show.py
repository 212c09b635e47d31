"""The stand-in for a running slide show, and programs like it that are told what to do by lines."""

import subprocess

from private_desktop import DesktopError

SHOW = (0, 120, 60)  # the colour of a show without a picture
COVER = (0, 40, 140)  # of what covers it


class Told:
    """A program that carries out each line it gets and then says "done" and the line's first word."""

    def __init__(self, desktop, name, command):
        self.process = desktop.spawn(
            name, command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True, bufsize=1)
        self.desktop = desktop
        self.name = name
        self.read_until("started")

    def read_line(self):
        line = self.process.stdout.readline()
        if not line:
            raise DesktopError(f"{self.name} ended: {self.desktop.log(self.name)}")
        return line.strip()

    def read_until(self, last):
        """The lines before that one."""
        lines = []
        while (line := self.read_line()) != last:
            lines.append(line)
        return lines

    def ask(self, line):
        """What it says while it carries out the line."""
        self.process.stdin.write(line + "\n")
        self.process.stdin.flush()
        return self.read_until("done " + line.split()[0])


def start_show(desktop, program, screen=None):
    """A full-screen show, once it is on the screen; `program` is show_window of the build folder."""
    command = [program] + ([str(screen)] if screen is not None else [])
    return Told(desktop, "show" if screen is None else f"show-{screen}", command)
