#!/usr/bin/python3
"""The whole program's menu, in a panel that draws menus itself.

Of what the menu can show, "Stop File-Access Prompts…" is missing on this desktop, which keeps no
store of privacy permissions: its own menus have nothing to offer there (tests/app has both). What it
shows of updates is in menu_update_test.py.

usage: menu_test.py BUILD_FOLDER PICTURE_FOLDER
"""

import json
import os
import sys
import urllib.request

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "support"))

from private_desktop import PATIENCE, PICOM, skip_where_incomplete, wait_until  # noqa: E402

skip_where_incomplete(("dbus", "gi"))

from discovery_double import start_discovery  # noqa: E402
from helper_program import (  # noqa: E402
    ANSWERED_BEFORE, ENGINE_PORT, PROGRAM, engine_answers, engine_listens, pair, start_helper)
from menu_stage import PanelStage, main  # noqa: E402
from menu_texts import (  # noqa: E402
    ENGINE_OFF, ENGINE_ON, FORGET, REST, connect_by_address, connected_menu, paired)

HOW = "How Does This Work?"
LOGIN = "Launch at Login"
HARD_EDGES = "Ink has hard edges: this desktop has no compositor"


class MenuTest(PanelStage):
    # What it shows

    def test_waits_for_the_first_ipad(self):
        start_discovery(self.desktop)
        self.start()
        self.assertRegex(self.item.labels()[0], "^Advertising as “.+” — open the iPad app$")
        wait_until(engine_answers, "the engine")
        self.wait_for_line("Stop Server")
        self.assertEqual(self.item.labels()[1:], [*connect_by_address(), "-", *ENGINE_ON, *REST])
        self.assertEqual(self.item.commands(), ["Stop Server", *REST])

    def test_advertising_error_comes_first(self):
        self.start()
        wait_until(lambda: self.item.labels()[0].startswith(
            "Not advertising: Other devices cannot find this computer"), "the error")
        shown = [*connect_by_address(), "-"]
        self.assertEqual(self.item.labels()[1:1 + len(shown)], shown)
        self.wait_for_line("Stop Server")
        self.assertEqual(self.item.commands(), ["Stop Server", *REST])
        self.connect_ipad("iPad")
        wait_until(lambda: "connected (iPad)" in str(self.item.properties()["ToolTip"][2]), "it")
        self.assertTrue(self.item.labels()[0].startswith("Not advertising: "))

    def test_an_advertising_error_passes(self):
        bus = self.desktop.environment["DBUS_SESSION_BUS_ADDRESS"]
        self.desktop.environment["DBUS_SYSTEM_BUS_ADDRESS"] = bus  # without a discovery service
        self.start_with_engine()
        wait_until(lambda: self.item.labels()[0].startswith("Not advertising: "), "the error")
        self.connect_ipad("iPad")
        start_discovery(self.desktop)
        self.wait_for_menu(connected_menu("iPad"))

    def test_names_connected_and_paired_ipads(self):
        start_discovery(self.desktop)
        self.start_with_engine()
        name = "R&D_iPad & <b>Co</b>_"
        pair(self.desktop, self.tool, "--name", name)
        # Paired, and gone again.
        self.wait_for_menu([self.item.labels()[0], *connect_by_address(), "-", *ENGINE_ON,
                            *paired(name), *REST])
        self.watch_as(name)
        self.wait_for_menu(connected_menu(name))
        self.assertEqual(self.item.commands(), ["Stop Server", FORGET, *REST])
        self.item.choose(FORGET)
        self.alert("forget")
        self.press("Return")
        self.wait_for_menu(["Connected:", "    " + name, "-", *ENGINE_ON, *REST])

    def test_shows_names_of_all_kinds_as_they_are(self):
        names = naughty_names()
        if not names:
            self.skipTest("no list of naughty names below TORVANE_VECTORS_DIR")
        self.remember({f"{number:03}": name for number, name in enumerate(names)})
        self.start()
        # In one line, and without the mark that a text may begin with, which nobody sees.
        as_shown = str.maketrans("\t\n\r", "   ")
        expected = ["    " + name.translate(as_shown).removeprefix("\ufeff")
                    for name in sorted(names, key=lambda name: name.encode())]
        lines = self.item.labels()
        first = lines.index("Paired devices:") + 1
        self.assertEqual(lines[first:lines.index(FORGET)], expected)

    # What it does

    def test_tells_what_a_compositor_would_give_once_ink_was_shown(self):
        self.start_with_engine()
        self.assertNotIn(HARD_EDGES, self.item.labels())
        self.show("start")
        self.wait_for_line(HARD_EDGES)
        self.assertEqual(self.item.labels()[1:3], [HARD_EDGES, "-"])
        self.show("end")
        self.wait_for_line(HARD_EDGES)
        self.desktop.start_compositor(PICOM)
        wait_until(lambda: HARD_EDGES not in self.item.labels(), "no such line")

    def show(self, change):
        address = f"http://127.0.0.1:{ENGINE_PORT}/api/show/{change}"
        with urllib.request.urlopen(urllib.request.Request(address, method="POST")) as answer:
            answer.read()

    def test_stops_and_starts_the_engine(self):
        self.start_with_engine()
        self.item.choose("Stop Server")
        wait_until(lambda: not engine_listens(), "the engine's end")
        self.wait_for_line("Start Server")
        self.assertEqual(self.item.labels()[1:], [*connect_by_address(), "-", *ENGINE_OFF, *REST])
        self.assertEqual(self.item.commands(), ["Start Server", *REST])
        self.item.choose("Start Server")
        wait_until(engine_answers, "the engine")
        self.wait_for_line("Stop Server")
        self.assertEqual(self.alerts(), [])

    def test_explains_how_it_works(self):
        self.start()
        for key in ("Return", "Escape"):
            self.item.choose(HOW)
            self.alert("how-it-works")
            self.press(key)
        self.assertIsNone(self.helper.poll())

    def test_launches_at_login_when_told_to(self):
        self.start()
        path = os.path.join(self.desktop.environment["XDG_CONFIG_HOME"], "autostart",
                            "torvane-p2p-helper.desktop")
        self.assertFalse(os.path.exists(path))
        self.item.choose(LOGIN)
        wait_until(lambda: self.entry(LOGIN).get("toggle-state") == 1, "the mark")
        with open(path, encoding="utf-8") as file:
            entry = file.read()
        program = os.path.join(self.build, PROGRAM)
        self.assertIn(f'Exec="{program}"\nTryExec={program}\n', entry)
        with open(path, "a", encoding="utf-8") as file:
            file.write("Hidden=true\n")  # as a desktop's settings do
        self.assertEqual(self.entry(LOGIN).get("toggle-state"), 0)
        self.item.choose(LOGIN)
        wait_until(lambda: self.entry(LOGIN).get("toggle-state") == 1, "the mark")
        self.item.choose(LOGIN)
        wait_until(lambda: not os.path.exists(path), "the entry's end")
        self.assertEqual(self.entry(LOGIN).get("toggle-state"), 0)

    def test_quits(self):
        self.start()
        self.item.choose("Quit")
        self.assertEqual(self.helper.wait(PATIENCE), 0)
        wait_until(lambda: not engine_listens(), "the engine's end")

    # What it does with a click on what it showed before

    def test_a_click_counts_when_the_menu_has_changed_under_it(self):
        self.start_with_engine()
        numbers = {line: self.item.number(line) for line in (HOW, "Stop Server", "Quit")}
        pair(self.desktop, self.tool)
        self.wait_for_line(FORGET)
        self.item.click(numbers[HOW])
        self.alert()
        self.press("Return")
        self.item.click(numbers["Stop Server"])
        self.wait_for_line("Start Server")
        self.item.click(numbers["Quit"])
        self.assertEqual(self.helper.wait(PATIENCE), 0)

    def test_a_click_on_what_has_gone_does_nothing(self):
        self.remember({"key": "iPad"})
        self.start_with_engine()
        gone = [self.item.number("Stop Server"), self.item.number(FORGET)]
        self.item.choose(FORGET)
        self.alert()
        self.press("Return")
        self.item.choose("Stop Server")
        self.wait_for_line("Start Server")
        gone.append(self.item.number("Start Server"))
        self.item.choose("Start Server")
        self.wait_for_line("Stop Server")
        for number in gone:
            self.item.click(number)
        self.item.choose(HOW)  # comes after all that
        self.alert()
        self.press("Return")
        self.assertTrue(engine_answers())
        self.assertIn("Stop Server", self.item.labels())

    # More than one

    def test_copy_from_another_folder_ends_the_first(self):
        self.start()
        wait_until(engine_answers, "the engine")
        first = self.helper
        self.start(self.copy_of_the_bundle())
        self.assertEqual(first.wait(PATIENCE), 0)
        wait_until(engine_answers, "the engine")
        self.wait_for_line("Stop Server")

    def test_second_launch_shows_the_first(self):
        self.start()
        second = start_helper(self.desktop, self.build)
        self.assertEqual(second.wait(PATIENCE), 0)
        window = wait_until(lambda: self.desktop.windows("--name", "^Torvane P2P Helper Menu$"),
                            "the window")[0]
        wait_until(lambda: self.desktop.active_window() == window, "the window in front")
        self.assertIsNone(self.helper.poll())
        with open(os.path.join(self.desktop.environment["XDG_RUNTIME_DIR"], "torvane",
                               "peer-link.json"), encoding="utf-8") as file:
            self.assertEqual(json.load(file)["pid"], self.helper.pid)

    def remember(self, devices):
        """For a helper that starts later."""
        folder = os.path.join(self.desktop.environment["XDG_CONFIG_HOME"], "torvane")
        os.makedirs(folder, mode=0o700)
        with open(os.path.join(folder, "defaults.json"), "w", encoding="utf-8") as file:
            json.dump({**ANSWERED_BEFORE, "pairedDeviceKeys": devices}, file)


def naughty_names():
    """A public list of texts that programs have tripped over; empty where it is not there."""
    path = os.path.join(os.environ.get("TORVANE_VECTORS_DIR", ""), "blns/blns.json")
    try:
        with open(path, encoding="utf-8") as file:
            return json.load(file)
    except FileNotFoundError:
        return []


if __name__ == "__main__":
    main()
