"""What the tests share of what an installed copy's menu shows and does of updates. It lies in a file
system of its own. That the update itself goes well is in update_test.py."""

import os
import shutil
import sys

import menu_stage
from dialog_stage import ReaderStage
from discovery_double import start_discovery
from helper_program import BUNDLE
from installed_copy import BUILD, INSTALLED, NEXT, ROOT, application, take_application
from menu_texts import FORGET, REST, connected_menu
from private_desktop import wait_until
from update_world import Site, enter

IPAD = "iPad"
UPDATING = "Updating…"
QUESTION = "Update the helper?"
BUTTONS = ["Update and Restart", "Later"]
NOT_UNPACKED = "Helper update not installed.\n\nThe downloaded file could not be unpacked."


class InstalledStage(ReaderStage):
    """The site has a newer build, which cannot be unpacked."""

    site = None

    def setUp(self):
        super().setUp()
        shutil.rmtree(INSTALLED, ignore_errors=True)
        application(INSTALLED, BUILD)
        self.bundle = INSTALLED
        self.site.version, self.site.archive = BUILD.encode(), b"<html>"
        self.site.hold.set()
        self.site.requests.clear()

    def start_with_ipad(self):
        """The program, its engine and a connected device. The site has nothing new until the
        program has looked there by itself."""
        start_discovery(self.desktop)
        self.start_with_engine()
        self.connect_ipad(IPAD)
        wait_until(lambda: self.site.requests_for("version.txt"), "the first look for updates")
        self.site.version = NEXT.encode()

    def answer_question(self, how, picture=None):
        text = self.answer(QUESTION, BUTTONS, how, picture)
        self.assertTrue(text.startswith(f"Build {NEXT} will be downloaded"))

    def answer_failure(self, how, picture=None):
        text = self.answer("Torvane P2P Helper", ["OK"], how, picture)
        self.assertEqual(text, NOT_UNPACKED)


def menu_with(*update, can_be_chosen=True):
    """Labels and commands of the menu with a connected device and this about updates."""
    return (connected_menu(IPAD, *update),
            ["Stop Server", FORGET, *(update if can_be_chosen else ()), *REST])


def main():
    """Runs the tests: TEST BUILD_FOLDER PICTURE_FOLDER UPDATE_BASE [OPTION...]"""
    build, pictures = sys.argv[1:3] = [os.path.abspath(folder) for folder in sys.argv[1:3]]
    os.makedirs(pictures, exist_ok=True)
    enter(ROOT, build, pictures)
    InstalledStage.site = Site.trusted_at(sys.argv.pop(3))
    take_application(os.path.join(build, BUNDLE))
    menu_stage.main()
