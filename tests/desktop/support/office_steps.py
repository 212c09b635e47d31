"""The steps of scripts/play-scene in which an iPad runs a presentation in LibreOffice Impress."""

import os
import shutil
import subprocess

from ink_steps import PAPER, PAPER_AT
from scene_basics import check

PRESENTATION = os.path.join(
    os.path.dirname(os.path.abspath(__file__)), "..", "..", "..", "resources", "sample.odp")
TOOLKIT = "gtk3"  # the plain one leaves the show of a single monitor blank
SHOW = "^Presenting"


def is_office_there():
    """With the way to drive it."""
    if not shutil.which("soffice"):
        return False
    tried = subprocess.run(["/usr/bin/python3", "-c", "import uno"], capture_output=True)
    return tried.returncode == 0


class OfficeSteps:
    """Part of the scene, after InkSteps, whose ways to look at the screen it uses."""

    OFFICE_STEPS = ("office", "office_show", "office_ink", "office_next", "office_end")

    def step_office(self):
        self.desktop.environment.update(SAL_USE_VCLPLUGIN=TOOLKIT, NO_AT_BRIDGE="1")
        own = shutil.copy(PRESENTATION, self.desktop.folder)  # an office locks what it opens
        self.office = self.desktop.spawn(
            "office", ["soffice", "--norestore", "--nologo", "--nofirststartwizard", own])
        name = os.path.basename(PRESENTATION)
        self.wait(lambda: self.state()["deck"] == name, f"{name} as what the engine drives")
        return f"“{name}” was opened in LibreOffice Impress, and the engine drives it from now on"

    def step_office_show(self):
        self.run_ipad("goto", "3")
        self.run_ipad("start")
        self.wait_for_slide(3)
        self.wait(lambda: self.desktop.windows("--name", SHOW), "Impress' slide show")
        self.wait(lambda: self.colours("office-show", [PAPER_AT]) == [PAPER], "the slide")
        self.wait(self.overlay_is_there, "the overlay in the show's place")
        self.settled_picture("office-show")
        check(self.ink_on("office-show") == 0, "there is ink already")
        return "Impress shows slide 3 on the whole screen"

    def step_office_ink(self):
        self.draw_strokes()
        self.settled_picture("office-ink")
        return "two strokes of a file lie where they were drawn"

    def step_office_next(self):
        self.run_ipad("next")
        self.wait_for_slide(4)
        self.wait(lambda: self.ink_on("office-next-slide") == 0, "a slide without ink")
        self.settled_picture("office-next-slide")
        return "the next slide has no ink"

    def step_office_end(self):
        self.run_ipad("end")
        self.wait(lambda: not self.desktop.windows("--name", SHOW), "the end of the show")
        self.wait(lambda: not self.overlay_is_there(), "an overlay that hides")
        self.desktop.run("xdotool", "key", "ctrl+q")
        self.wait(lambda: self.office.poll() is not None, "the end of Impress")
        return "show and overlay have gone, and Impress was quit"
