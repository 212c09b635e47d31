#!/usr/bin/python3
"""What the menu of an installed copy shows and does of updates, in a panel that draws menus itself
and in a file system of its own. That the update itself goes well is in update_test.py.

usage: menu_update_test.py BUNDLE_FOLDER UPDATE_BASE
"""

import os
import shutil
import sys
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "support"))

from private_desktop import ACCESSIBILITY, skip_where_incomplete  # noqa: E402

skip_where_incomplete(("dbus", "gi"), (ACCESSIBILITY,))

from helper_program import start_program  # noqa: E402
from installed_copy import (  # noqa: E402
    BUILD, CHECK, INSTALLED, NEXT, OFFER, ROOT, application, take_application)
from menu_stage import ENGINE_ON, KEYS, REST, DialogStage  # noqa: E402
from update_world import Site, enter  # noqa: E402

SITE = None
QUESTION = "Update the Mac helper?"
BUTTONS = ["Update and Restart", "Later"]


class MenuUpdateTest(DialogStage):
    build = ""

    def setUp(self):
        super().setUp()
        shutil.rmtree(INSTALLED, ignore_errors=True)
        application(INSTALLED, BUILD)
        SITE.version, SITE.archive = NEXT.encode(), b"<html>"
        SITE.requests.clear()
        self.helper = start_program(
            self.desktop, os.path.join(INSTALLED, "bin", "torvane-p2p-helper"))
        self.take_item()
        self.wait_for_line("Stop Server")

    def assert_menu(self, *update):
        self.assertEqual(self.item.labels()[1:], ["-", *ENGINE_ON, *update, *REST])

    def test_an_installed_copy_can_look_for_updates(self):
        self.assert_menu(CHECK)
        self.assertEqual(self.item.commands(), ["Stop Server", CHECK, *REST])
        SITE.version = BUILD.encode()
        self.item.choose(CHECK)
        self.assertEqual(self.answer("Torvane P2P Helper", ["OK"], "OK"),
                         f"You're up to date — build {BUILD} is the latest.")
        self.assert_menu(CHECK)

    def test_a_newer_build_is_offered_until_it_is_wanted(self):
        self.item.choose(CHECK)
        for how in ("Later", KEYS["second"], KEYS["last"]):
            text = self.answer(QUESTION, BUTTONS, how)
            self.assertTrue(text.startswith(f"Build {NEXT} will be downloaded"))
            self.assert_menu(OFFER)
            self.assertEqual(self.item.commands(), ["Stop Server", OFFER, *REST])
            self.item.choose(OFFER)
        self.assertEqual(SITE.requests_for(".zip"), 0)

    def test_an_update_that_goes_on_cannot_be_chosen_again(self):
        self.item.choose(CHECK)
        self.answer(QUESTION, BUTTONS, "Later")
        for count, how in enumerate(("Update and Restart", KEYS["first"]), 1):
            SITE.hold.clear()
            offer = self.item.number(OFFER)
            self.item.click(offer)
            self.answer(QUESTION, BUTTONS, how)
            self.wait_for_line("Updating…")
            self.assert_menu("Updating…")
            self.assertEqual(self.item.commands(), ["Stop Server", *REST])
            for number in (offer, self.item.number("Updating…")):
                self.item.click(number)
            self.item.choose(REST[0])  # comes after those
            self.answer("How Torvane works", ["OK"], "OK")
            SITE.hold.set()
            self.assertEqual(
                self.answer("Torvane P2P Helper", ["OK"], how if count > 1 else "OK"),
                "Helper update not installed.\n\nThe downloaded file could not be unpacked.")
            self.assert_menu(OFFER)
            self.assertEqual(SITE.requests_for(".zip"), count)
        self.assertEqual(self.reader.alerts(), [])


def main():
    global SITE
    bundle, base = (sys.argv.pop(1) for _ in range(2))
    SITE = Site.trusted_at(base)
    take_application(bundle)
    unittest.main(verbosity=2)


if __name__ == "__main__":
    if len(sys.argv) < 3:
        raise SystemExit(__doc__)
    enter(ROOT, os.path.abspath(sys.argv[1]))
    main()
