#!/usr/bin/python3
"""Each of the whole program's dialogs, answered from the keyboard and by a screen reader, every
button both ways.

The offer of full disk access is missing: this desktop has nothing like it to offer (tests/app has
it). Those of the engine and of updates are in engine_start_test.py and menu_update_test.py.

usage: dialogs_test.py BUILD_FOLDER PICTURE_FOLDER
"""

import json
import os
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "support"))

from private_desktop import (  # noqa: E402
    ACCESSIBILITY, PATIENCE, skip_where_incomplete, wait_until)

skip_where_incomplete(("dbus", "gi", "websockets", "nacl"), (ACCESSIBILITY,))

from dialog_stage import KEYS, DialogStage  # noqa: E402
from helper_program import PROGRAM  # noqa: E402
from link_device import start_device  # noqa: E402
from menu_stage import main  # noqa: E402
from menu_texts import FORGET  # noqa: E402


class DialogsTest(DialogStage):
    def defaults(self):
        path = os.path.join(self.desktop.environment["XDG_CONFIG_HOME"], "torvane/defaults.json")
        with open(path, encoding="utf-8") as file:
            return json.load(file)

    def paired(self):
        return self.defaults().get("pairedDeviceKeys", {})

    def answer(self, name, buttons, how, picture=None):
        what = self.id().rpartition(".test_")[2].replace("_", "-")
        return super().answer(name, buttons, how, picture or "dialog-" + what)

    # With one button

    def test_welcome(self):
        for how in ("OK", KEYS["first"], KEYS["last"]):
            helper = self.desktop.spawn("helper", [os.path.join(self.build, PROGRAM)])
            text = self.answer("Welcome to Torvane P2P Helper", ["OK"], how)
            self.assertTrue(text.startswith("Your iPad can control the presentation on this computer"))
            self.assertTrue(self.defaults()["didShowWelcome"])
            helper.terminate()
            self.assertEqual(helper.wait(PATIENCE), 0)
            os.remove(os.path.join(self.desktop.environment["XDG_CONFIG_HOME"],
                                   "torvane/defaults.json"))

    def test_explanation(self):
        self.start()
        for how in ("OK", KEYS["first"], KEYS["last"]):
            self.item.choose("How Does This Work?")
            text = self.answer("How Torvane works", ["OK"], how)
            self.assertTrue(text.endswith("guide to every control."))

    def test_failure(self):
        self.start()
        path = os.path.join(self.desktop.environment["XDG_CONFIG_HOME"], "autostart")
        with open(path, "w", encoding="utf-8"):
            pass  # a file where the folder should be
        for how in ("OK", KEYS["first"], KEYS["last"]):
            self.item.choose("Launch at Login")
            self.assertEqual(
                self.answer("Torvane P2P Helper", ["OK"], how),
                f"Couldn't change Launch at Login: {path}/torvane-p2p-helper.desktop: Not a "
                "directory")
            self.assertNotEqual(self.entry("Launch at Login").get("toggle-state"), 1)

    def test_old_device(self):
        self.start()
        for number, how in enumerate(("OK", KEYS["first"])):  # no more of an address in a minute
            name = f"Old iPad {number}"
            device = start_device(self.desktop, name, "old")
            text = self.answer(f"“{name}” needs the new Torvane app", ["OK"], how)
            self.assertTrue(text.startswith("That iPad is running an older Torvane"))
            self.assertEqual(device.wait(PATIENCE), 0)
            self.assertEqual(self.desktop.log(name), "declined\n")

    def test_pairing_that_finds_no_room(self):
        folder = os.path.join(self.desktop.environment["XDG_CONFIG_HOME"], "torvane")
        os.makedirs(folder)
        mount = ["mount", "-t", "tmpfs", "-o", "size=64k,mode=0700", "tmpfs", folder]
        if subprocess.run(mount, check=False, capture_output=True).returncode != 0:
            self.skipTest("a disk that is full needs the superuser")
        self.addCleanup(subprocess.run, ["umount", "-l", folder], check=True)
        self.start()
        wait_until(self.item.labels, "the menu")
        ballast = os.path.join(folder, "ballast")
        with self.assertRaises(OSError), open(ballast, "wb", buffering=0) as file:
            while file.write(bytes(4096)):
                pass
        device = start_device(self.desktop, "iPad")
        self.answer("Pair with “iPad”?", ["Pair", "Ignore"], "Pair", "dialog-pairing")
        self.assertEqual(device.wait(PATIENCE), 0)
        self.assertEqual(self.desktop.log("iPad"), "accepted\n")
        text = self.answer("Torvane P2P Helper", ["OK"], "OK")
        self.assertTrue(text.startswith("The pairing with “iPad” could not be saved."), text)
        self.assertEqual(self.paired(), {})
        os.remove(ballast)
        wait_until(self.paired, "the pairing on the disk")
        self.assertTrue(self.defaults()["didShowWelcome"])

    # With two

    def test_pairing(self):
        self.start()
        for number, (how, answer) in enumerate((
                ("Pair", "accepted"), (KEYS["first"], "accepted"), ("Ignore", "declined"),
                (KEYS["second"], "declined"), (KEYS["last"], "declined"))):
            name = f"iPad {number}"
            before = len(self.paired())
            device = start_device(self.desktop, name)
            text = self.answer(f"Pair with “{name}”?", ["Pair", "Ignore"], how)
            self.assertTrue(text.startswith(f"A device named “{name}” wants to control"))
            self.assertEqual(device.wait(PATIENCE), 0)
            self.assertEqual(self.desktop.log(name), answer + "\n")
            self.assertEqual(len(self.paired()) - before, answer == "accepted")

    def test_forgetting(self):
        self.start()
        for how, forgets in (("Cancel", False), (KEYS["second"], False), (KEYS["last"], False),
                             ("Forget All", True), (KEYS["first"], True)):
            if not self.paired():
                device = start_device(self.desktop, "iPad")
                self.answer("Pair with “iPad”?", ["Pair", "Ignore"], "Pair")
                self.assertEqual(device.wait(PATIENCE), 0)
            self.item.choose(FORGET)
            text = self.answer("Forget all paired devices?", ["Forget All", "Cancel"], how)
            self.assertTrue(text.startswith("Each device will need to be approved again"))
            wait_until(lambda: bool(self.paired()) != forgets, "what was chosen")
            self.assertEqual(FORGET not in self.item.labels(), forgets)


if __name__ == "__main__":
    main()
