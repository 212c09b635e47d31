#!/usr/bin/python3
"""What the menu of an installed copy shows and does of updates where the program draws it itself: in
a tray of the old kind, and in the window that stands in for one.

usage: menu_update_elsewhere_test.py BUILD_FOLDER PICTURE_FOLDER UPDATE_BASE
"""

import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "support"))

from private_desktop import ACCESSIBILITY, skip_where_incomplete  # noqa: E402

skip_where_incomplete(("dbus", "gi"), (ACCESSIBILITY,))

from dialog_stage import KEYS  # noqa: E402
from drawn_menu import InStandIn, InTray  # noqa: E402
from installed_copy import CHECK, OFFER  # noqa: E402
from installed_stage import UPDATING, InstalledStage, main, menu_with  # noqa: E402
from menu_texts import REST  # noqa: E402


class Elsewhere:
    """What is tried in both places."""

    def setUp(self):
        super().setUp()
        self.start_with_ipad()

    def test_a_newer_build_is_offered_until_it_is_wanted(self):
        self.choose(CHECK, *menu_with(CHECK), "check-for-updates")
        self.answer_question(KEYS["last"])
        looks = self.site.requests_for("version.txt")
        self.choose(OFFER, *menu_with(OFFER), "update-offered")
        self.answer_question(KEYS["second"])
        self.choose(OFFER, *menu_with(OFFER))
        self.answer_question("Later")
        self.assertEqual(self.site.requests_for("version.txt"), looks)  # not asked again
        self.assertEqual(self.site.requests_for(".zip"), 0)

    def test_an_update_that_goes_on_cannot_be_chosen_again(self):
        self.site.hold.clear()
        self.choose(CHECK, *menu_with(CHECK))
        self.answer_question(KEYS["first"])
        labels, commands = menu_with(UPDATING, can_be_chosen=False)
        menu = self.open_menu(labels, commands)
        self.picture_of_menu("updating")
        menu.click_at(menu.lines[labels.index(UPDATING)].middle)
        menu.choose(commands.index(REST[0]))  # in the menu that is still open
        self.answer("How Torvane works", ["OK"], "OK")
        self.site.hold.set()
        self.answer_failure("OK")
        self.open_menu(*menu_with(OFFER))
        self.assertEqual(self.site.requests_for(".zip"), 1)
        self.assertEqual(self.reader.alerts(), [])


class TrayUpdateTest(Elsewhere, InstalledStage, InTray):
    pass


class NoTrayUpdateTest(Elsewhere, InstalledStage, InStandIn):
    pass


if __name__ == "__main__":
    if len(sys.argv) < 4:
        raise SystemExit(__doc__)
    main()
