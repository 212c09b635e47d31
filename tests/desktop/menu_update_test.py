#!/usr/bin/python3
"""What the menu of an installed copy shows and does of updates, in a panel that draws menus itself.

usage: menu_update_test.py BUILD_FOLDER PICTURE_FOLDER UPDATE_BASE
"""

import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "support"))

from private_desktop import ACCESSIBILITY, skip_where_incomplete  # noqa: E402

skip_where_incomplete(("dbus", "gi"), (ACCESSIBILITY,))

from dialog_stage import KEYS  # noqa: E402
from installed_copy import BUILD, CHECK, OFFER  # noqa: E402
from installed_stage import IPAD, UPDATING, InstalledStage, main, menu_with  # noqa: E402
from menu_stage import PanelStage  # noqa: E402
from menu_texts import REST, connected_menu  # noqa: E402


class MenuUpdateTest(InstalledStage, PanelStage):
    def setUp(self):
        super().setUp()
        self.start_with_ipad()
        self.wait_for_menu(connected_menu(IPAD, CHECK))

    def assert_menu(self, labels, commands):
        self.assertEqual(self.item.labels(), labels)
        self.assertEqual(self.item.commands(), commands)

    def test_an_installed_copy_can_look_for_updates(self):
        self.assert_menu(*menu_with(CHECK))
        self.site.version = BUILD.encode()
        self.item.choose(CHECK)
        self.assertEqual(self.answer("Torvane P2P Helper", ["OK"], "OK", "dialog-up-to-date"),
                         f"You're up to date — build {BUILD} is the latest.")
        self.assert_menu(*menu_with(CHECK))

    def test_a_newer_build_is_offered_until_it_is_wanted(self):
        self.item.choose(CHECK)
        for how in ("Later", KEYS["second"], KEYS["last"]):
            self.answer_question(how, "dialog-update")
            self.assert_menu(*menu_with(OFFER))
            self.item.choose(OFFER)
        self.assertEqual(self.site.requests_for(".zip"), 0)

    def test_an_update_that_goes_on_cannot_be_chosen_again(self):
        self.item.choose(CHECK)
        self.answer_question("Later")
        for count, how in enumerate(("Update and Restart", KEYS["first"]), 1):
            self.site.hold.clear()
            offer = self.item.number(OFFER)
            self.item.click(offer)
            self.answer_question(how)
            self.wait_for_line(UPDATING)
            self.assert_menu(*menu_with(UPDATING, can_be_chosen=False))
            for number in (offer, self.item.number(UPDATING)):
                self.item.click(number)
            self.item.choose(REST[0])  # comes after those
            self.answer("How Torvane works", ["OK"], "OK")
            self.site.hold.set()
            self.answer_failure(how if count > 1 else "OK", "dialog-update-failed")
            self.assert_menu(*menu_with(OFFER))
            self.assertEqual(self.site.requests_for(".zip"), count)
        self.assertEqual(self.reader.alerts(), [])


if __name__ == "__main__":
    if len(sys.argv) < 4:
        raise SystemExit(__doc__)
    main()
