#!/usr/bin/python3
"""The helper's ink over a real show of LibreOffice Impress.

usage: impress_test.py BUILD_FOLDER PICTURES

Skipped unless TORVANE_IMPRESS_TEST is set: Impress is large, and is installed by this test (with
apt) where it is missing.
"""

import os
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "support"))

from helper_program import require_free_engine_port  # noqa: E402
from ink_stage import INK, LINE, InkStage  # noqa: E402
from private_desktop import (  # noqa: E402
    HEIGHT, SKIPPED, WIDTH, PrivateDesktop, skip_where_incomplete)
from two_monitors import OTHER, PRIMARY, line_inside, middle, plug_in  # noqa: E402

BUILD = PICTURES = None

SLIDE = (244, 241, 232)
DECK = """<?xml version="1.0" encoding="UTF-8"?>
<office:document xmlns:office="urn:oasis:names:tc:opendocument:xmlns:office:1.0"
 xmlns:style="urn:oasis:names:tc:opendocument:xmlns:style:1.0"
 xmlns:draw="urn:oasis:names:tc:opendocument:xmlns:drawing:1.0"
 xmlns:fo="urn:oasis:names:tc:opendocument:xmlns:xsl-fo-compatible:1.0"
 xmlns:svg="urn:oasis:names:tc:opendocument:xmlns:svg-compatible:1.0"
 xmlns:text="urn:oasis:names:tc:opendocument:xmlns:text:1.0"
 office:version="1.2" office:mimetype="application/vnd.oasis.opendocument.presentation">
 <office:automatic-styles>
  <style:page-layout style:name="wide"><style:page-layout-properties fo:margin="0cm"
   fo:page-width="28cm" fo:page-height="15.75cm" style:print-orientation="landscape"/>
  </style:page-layout>
  <style:style style:name="back" style:family="drawing-page"><style:drawing-page-properties
   draw:fill="solid" draw:fill-color="#f4f1e8"/></style:style>
 </office:automatic-styles>
 <office:master-styles><style:master-page style:name="Default" style:page-layout-name="wide"
  draw:style-name="back"/></office:master-styles>
 <office:body><office:presentation>
  <draw:page draw:name="One" draw:master-page-name="Default" draw:style-name="back">
   <draw:frame svg:x="3cm" svg:y="2cm" svg:width="22cm" svg:height="3cm"><draw:text-box>
    <text:p>A running show</text:p></draw:text-box></draw:frame>
  </draw:page>
 </office:presentation></office:body>
</office:document>
"""


def install_impress():
    wanted = ["libreoffice-impress", "libreoffice-gtk3"]
    known = subprocess.run(["dpkg-query", "-W", "-f", "${db:Status-Abbrev}", *wanted],
                           stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, check=False)
    if known.stdout.split() == ["ii", "ii"]:
        return
    command = ["apt-get", "install", "-y", "--no-install-recommends", *wanted]
    if os.getuid() != 0:
        command.insert(0, "sudo")
    subprocess.run(command, check=True, stdin=subprocess.DEVNULL,
                   env={**os.environ, "DEBIAN_FRONTEND": "noninteractive"})


class ImpressTest(unittest.TestCase):
    def setUp(self):
        self.desktop = self.enterContext(PrivateDesktop())

    def start(self, toolkit):
        self.desktop.start_windows()
        self.desktop.environment["SAL_USE_VCLPLUGIN"] = toolkit
        self.stage = InkStage(self.desktop, BUILD, PICTURES)
        deck = os.path.join(self.desktop.folder, "deck.fodp")
        with open(deck, "w", encoding="utf-8") as file:
            file.write(DECK)
        self.desktop.spawn("impress", [
            "soffice", "--norestore", "--nologo", "--nofirststartwizard",
            f"-env:UserInstallation=file://{self.desktop.folder}/office", "--show", deck])

    def wait_for_ink_on(self, area):
        y = middle(area)[1]
        band = (area[0] + 4, y + 60, area[2] - 4, y + 120)  # of a slide as wide as the monitor
        self.stage.wait_for(lambda screen: screen.is_all(SLIDE, band), "the slide")
        self.stage.send(*LINE)
        self.stage.post("/api/show/start")
        return self.stage.wait_for(
            lambda screen: screen.is_all(INK, line_inside(area)), "ink over the slide")

    def test_lies_over_a_running_show(self):
        self.start("gtk3")  # the plain toolkit leaves the show of a single monitor blank
        screen = self.wait_for_ink_on((0, 0, WIDTH, HEIGHT))
        self.stage.keep("impress")
        self.assertTrue(screen.is_all(SLIDE, (4, 410, WIDTH - 4, 740)))

    def test_lies_over_the_slides_and_not_over_the_presenters_notes(self):
        plug_in(self.desktop)
        self.start("gen")  # GTK does not see a monitor without an output of its own
        screen = self.wait_for_ink_on(OTHER)
        self.stage.keep("impress-two-monitors")
        self.assertFalse(screen.is_like(*middle(PRIMARY), INK))


if __name__ == "__main__":
    PICTURES = os.path.abspath(sys.argv.pop())
    BUILD = os.path.abspath(sys.argv.pop())
    skip_where_incomplete(tools=["xrandr"])
    if not os.environ.get("TORVANE_IMPRESS_TEST"):
        print("skipped: set TORVANE_IMPRESS_TEST=1 to install LibreOffice Impress and test with it")
        raise SystemExit(SKIPPED)
    require_free_engine_port()
    install_impress()
    unittest.main(verbosity=2)
