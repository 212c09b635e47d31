#!/usr/bin/python3
"""The whole program updates itself, and does not: installed below /Applications, with an update
site that serves HTTPS, in a file system and a network of its own.

usage: update_test.py BUNDLE_FOLDER TORVANE_IPAD UPDATE_BASE
"""

import json
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(os.path.dirname(HERE))
sys.path.insert(0, os.path.join(HERE, "support"))

from private_desktop import (  # noqa: E402
    PATIENCE, DesktopError, PrivateDesktop, end, skip_where_incomplete, wait_until)

skip_where_incomplete(("dbus", "gi"))

from alert_texts import ENVIRONMENT, alert_texts  # noqa: E402
from helper_program import ANSWERED_BEFORE, engine_listens, pair  # noqa: E402
from installed_copy import (  # noqa: E402
    APPLICATION, BUILD, CHECK, INSTALLED, NAME, NEXT, OFFER, OURS, application, archive,
    archive_of_entries, take_application)
from status_notifier import Item, start_watcher  # noqa: E402
from update_world import CONTROL, Site, enter, run, size_of, tree  # noqa: E402

CACHE_HOME = "/var/cache/torvane-update-test"  # on the same disk as the installed copy
MEGABYTE = 1 << 20
QUIT_WITHIN = 2  # seconds
LOST = 20  # seconds until a click or a key that had no effect is taken for lost

FULL = "The disk is full. Make some room on it and try again from the menu."
DOWNLOAD = "The download failed. Check the internet connection and try again from the menu."
UNPACK = "The downloaded file could not be unpacked."
GATEKEEPER = "The download failed Gatekeeper verification."
SIGNER = "The download is not signed by the expected developer."
VERSION = ("The downloaded version does not match the published one — the site may still be "
           "deploying. Try again in a few minutes.")
REPLACE = "Could not replace the app in /Applications: "
INSTALL = "Could not install the new copy."


SITE = None
TOOL = None


def tell(tool, wish):
    Path(CONTROL, tool).write_text(wish)


def forget_wishes():
    for path in Path(CONTROL).glob("*"):
        if path.suffix == "" and path.name != "opened":
            path.unlink()


class UpdateTest(unittest.TestCase):
    def setUp(self):
        self.assertFalse(engine_listens(), "port 8484 is in use by another program")
        self.install()
        self.desktop = self.enterContext(PrivateDesktop())
        self.desktop.environment.update(
            ENVIRONMENT, AT_SPI_BUS_ADDRESS=self.desktop.environment["DBUS_SESSION_BUS_ADDRESS"])
        self.desktop.start_windows()
        self.watcher = start_watcher(self.desktop)
        self.assertTrue(self.watcher.stdout.readline().startswith("ready"))
        self.desktop.environment["XDG_CACHE_HOME"] = CACHE_HOME
        run("rm", "-rf", CACHE_HOME)
        self.cache = os.path.join(CACHE_HOME, "torvane")
        os.makedirs(self.cache, 0o700)
        defaults = os.path.join(self.desktop.environment["XDG_CONFIG_HOME"], "torvane")
        os.makedirs(defaults)
        Path(defaults, "defaults.json").write_text(json.dumps(ANSWERED_BEFORE))
        SITE.version, SITE.archive, SITE.status, SITE.cut = NEXT.encode(), archive(), 200, False
        SITE.hold.set()
        SITE.requests.clear()
        forget_wishes()
        self.start()

    def install(self):
        for name in os.listdir("/Applications"):
            run("rm", "-rf", os.path.join("/Applications", name))
        application(INSTALLED, BUILD)
        self.before = tree(INSTALLED)

    # The helper and its menu

    def start(self):
        self.helper = self.desktop.spawn(
            "helper", [os.path.join(INSTALLED, "bin/torvane-p2p-helper")])
        self.item = self.next_item()
        self.addCleanup(end, self.helper)
        # What runs on finds its files while the copy is moved; what starts just then does not.
        wait_until(engine_listens, "the engine")

    def next_item(self):
        service = self.watcher.stdout.readline().strip()
        return Item(self.desktop.environment["DBUS_SESSION_BUS_ADDRESS"], service)

    def labels(self):
        return self.item.labels()

    def texts(self):
        return alert_texts(self.desktop.log("helper"))

    def alert_in_front(self):
        """Whether there is one with the keyboard: some have to be given it."""
        windows = self.desktop.windows("--name", "^Torvane P2P Helper$")
        if not windows:
            return False
        if self.desktop.active_window() not in windows:
            self.desktop.run("xdotool", "windowactivate", str(windows[-1]))
        return self.desktop.active_window() in windows

    def next_alert(self, count):
        """The text of the alert with this number, once it can be answered."""
        try:
            wait_until(lambda: len(self.texts()) > count and self.alert_in_front(), "an alert")
        except DesktopError as error:
            self.fail(f"{error}\nmenu: {self.labels()}\nalerts: {self.texts()[count - 1:]}\n"
                      f"in front: {self.desktop.active_window()}")
        return self.texts()[count]

    def press(self, key="Return"):
        windows = set(self.desktop.windows("--name", "^Torvane P2P Helper$"))
        self.until(lambda: self.desktop.run("xdotool", "key", key),
                   lambda: windows != set(self.desktop.windows("--name", "^Torvane P2P Helper$")),
                   "the alert's end")

    def choose(self, *entries):
        """Chooses one of these entries, whichever the menu has, and waits for the alert that comes
        of it; its text."""
        count = len(self.texts())

        def click():
            entry = next((entry for entry in entries if entry in self.labels()), None)
            if entry:
                try:
                    self.item.choose(entry)
                except LookupError:
                    pass  # the menu was built anew in between

        self.until(click, lambda: len(self.texts()) > count, f"an alert after {entries}")
        return self.next_alert(count)

    def until(self, act, has_effect, what):
        """Acts until it had an effect: a menu that is built anew just then loses a click."""
        for seconds in (LOST, LOST, PATIENCE):
            act()
            try:
                return wait_until(has_effect, what, seconds)
            except DesktopError:
                pass
        self.fail(f"{what}: nothing\nmenu: {self.labels()}\nalerts: {self.texts()}")

    def confirm(self, *entries):
        """Chooses the menu's entry for updates and confirms; how many alerts there were by then."""
        count = len(self.texts())
        asked = self.choose(*(entries or (OFFER, CHECK)))
        self.assertIn(f"Build {NEXT} will be downloaded", asked)
        self.press()
        return count + 1

    def assert_refused(self, reason, because):
        """An update goes as far as this reason; the installed copy is what it was, and runs."""
        count = self.confirm()
        told = self.next_alert(count)
        self.press()
        self.assertTrue(told.startswith("Helper update not installed.\n\n" + reason),
                        f"{because}: {told}")
        self.assert_untouched(because)
        self.assertEqual(os.listdir(self.cache), [], because)
        wait_until(lambda: OFFER in self.labels(), f"the offer again: {because}")

    def assert_untouched(self, because=None):
        self.assertEqual(tree(INSTALLED), self.before, because)
        self.assertIsNone(self.helper.poll(), because)
        self.assertEqual(os.listdir("/Applications"), [NAME], because)

    # The cache may be on a disk of its own, of any size, and others beside it

    def mount_cache(self, size=1024 * MEGABYTE):
        run("mount", "-t", "tmpfs", "-o", f"mode=0700,size={size}", "tmpfs", self.cache)
        self.addCleanup(subprocess.run, ["umount", "-l", self.cache], check=False,
                        capture_output=True)

    def work_folder(self):
        return os.path.join(self.cache, f"torvane-helper-update-{self.helper.pid}")

    def set_aside(self):
        return f"{INSTALLED}.before-update-{self.helper.pid}"

    # A program that is killed

    def kill(self):
        self.helper.kill()
        self.helper.wait(PATIENCE)
        wait_until(lambda: not engine_listens(), "the engine's end")

    def kill_at(self, tool):
        """Kills the program, and nothing else, while a tool is in the middle of its work; the
        tool's process."""
        tell(tool, "wait")
        self.confirm()
        wait_until(lambda: os.path.exists(f"{CONTROL}/{tool}-reached"), tool)
        self.kill()
        return int(Path(CONTROL, tool + "-reached").read_text())

    def assert_starts_and_offers(self, because):
        self.start()
        self.assertIn(f"Build {NEXT} will be downloaded", self.choose(OFFER, CHECK), because)
        self.press("Escape")
        wait_until(lambda: OFFER in self.labels(), because)

    def build_that_answers(self):
        done = self.desktop.run(TOOL, "info", "--json", "--host", "127.0.0.1", check=False)
        return json.loads(done.splitlines()[-1])["version"] if done.startswith("{") else done

    # The way that leads to a new copy

    def test_finds_checks_installs_and_opens_the_new_build(self):
        Path("/tmp/site").mkdir(exist_ok=True)
        with tempfile.TemporaryDirectory() as folder:
            app = application(os.path.join(folder, NAME))
            expected = tree(app)
            run(sys.executable, os.path.join(ROOT, "scripts", "make-release"), NEXT, "/tmp/site",
                "--bundle", app, stdout=subprocess.DEVNULL)
        SITE.version = Path("/tmp/site/version.txt").read_bytes()
        SITE.archive = Path("/tmp/site/Torvane-P2P-Mac.zip").read_bytes()
        pair(self.desktop, TOOL, "--host", "127.0.0.1")
        self.assertEqual(self.build_that_answers(), BUILD)

        SITE.hold.clear()
        self.confirm()
        wait_until(lambda: "Updating…" in self.labels(), "the menu")
        self.assertNotIn(OFFER, self.labels())
        SITE.hold.set()

        self.assertEqual(self.helper.wait(PATIENCE), 0, self.desktop.log("helper"))
        self.item = self.next_item()
        self.assertEqual(tree(INSTALLED), expected)
        wait_until(lambda: self.build_that_answers() == NEXT, "the new build")
        wait_until(lambda: not os.listdir(self.cache), "the end of the work folder")
        opened = int(Path(CONTROL, "opened").read_text().split()[-1])
        self.assertEqual(os.readlink(f"/proc/{opened}/exe"),
                         os.path.join(INSTALLED, "bin/torvane-p2p-helper"))
        self.item.choose("Quit")
        wait_until(lambda: not os.path.exists(f"/proc/{opened}/exe"), "the new copy's end")

    def test_says_when_there_is_nothing_newer(self):
        for version in (BUILD, "99", "0412"):
            SITE.version = version.encode()
            self.assertEqual(self.choose(CHECK),
                             f"You're up to date — build {BUILD} is the latest.")
            self.press()

    def test_a_site_it_cannot_trust_is_not_reached(self):
        unreachable = ("Couldn't reach the update server — check the internet connection and try "
                       "again.")
        Site.trust(SITE.another_certificate(SITE.host))
        self.addCleanup(Site.trust, SITE.certificate)
        for version in (NEXT.encode(), b"4.13", b"413a", b""):
            SITE.version = version
            self.assertEqual(self.choose(CHECK), unreachable)
            self.press()
            Site.trust(SITE.certificate)  # what follows fails for what the site says
            if version == NEXT.encode():
                self.assertEqual(SITE.requests_for("/version.txt"), 0)

    # What must not be installed

    def test_refuses_what_is_not_the_published_build_of_ours(self):
        stranger = {**OURS, "team": "AAAAAAAAAA"}
        disguised = {**stranger, "identifier": "TeamIdentifier=ZQ4W8N2HJT"}
        second_line = {**OURS, "team": "ZQ4W8N2HJT\nTeamIdentifier=AAAAAAAAAA"}
        good = archive()
        slip = archive_of_entries(
            (NAME + "/Contents/x", "x"),
            ("../../../../../../../../../.." + INSTALLED + "/Info.json", "slipped"))
        absolute = archive_of_entries((INSTALLED + "/Info.json", "slipped"), beside=good)
        elsewhere = archive_of_entries((NAME, "→" + INSTALLED))
        stranger_as_old = archive_of_entries(("old.app/bin/program", "x"), beside=good)

        def leads_out(app):
            os.symlink("/etc", app / "Resources/out")

        def climbs_out(app):
            os.symlink("../../old.app", app / "Resources/out")

        for because, payload, reason in (
                ("another team", archive(signed_by=stranger), SIGNER),
                ("our team in the identifier's line", archive(signed_by=disguised), SIGNER),
                ("two teams", archive(signed_by=second_line), SIGNER),
                ("no signature", archive(signed_by=None), GATEKEEPER),
                ("not notarized", archive(signed_by={**OURS, "notarized": False}), GATEKEEPER),
                ("notarized but without a team",
                 archive(signed_by={"identifier": "x", "notarized": True}), SIGNER),
                ("an older build", archive(build="411"), VERSION),
                ("the same build", archive(build=BUILD), VERSION),
                ("another build than published", archive(build="414"), VERSION),
                ("a truncated archive", good[:-2000], UNPACK),
                ("an empty archive", b"", UNPACK),
                ("a web page", b"<html>", UNPACK),
                ("an entry that leads out", slip, UNPACK),
                ("an entry with an absolute path", absolute, UNPACK),
                ("something in the old copy's place", stranger_as_old,
                 REPLACE + "Directory not empty."),
                ("an application that is a link", elsewhere, UNPACK),
                ("a link that leads out", archive(leads_out), UNPACK),
                ("a link that climbs out", archive(climbs_out), UNPACK)):
            SITE.archive = payload
            self.assert_refused(reason, because)

    def test_trouble_on_the_way_leaves_everything_as_it_was(self):
        SITE.cut = True
        self.assert_refused(DOWNLOAD, "the server is gone in mid-download")
        SITE.cut, SITE.status = False, 404
        self.assert_refused(DOWNLOAD, "there is no archive")
        SITE.status = 200
        for tool, reason in (("unpack", UNPACK), ("spctl", GATEKEEPER), ("codesign", SIGNER),
                             ("PlistBuddy", VERSION), ("copy", INSTALL)):
            tell(tool, "kill")
            self.assert_refused(reason, f"{tool} is killed")
            forget_wishes()
        os.chown(self.cache, 65534, 65534)
        os.chmod(self.cache, 0o777)
        self.assert_refused(UNPACK, "another user prepared the folder")

    def test_a_full_disk_leaves_everything_as_it_was(self):
        def with_ballast(app):
            (app / "Resources/ballast").write_bytes(os.urandom(16 * MEGABYTE))

        SITE.archive = archive(with_ballast)
        archived = len(SITE.archive)
        new, old = 16 * MEGABYTE, size_of(INSTALLED)
        for because, room, reason in (
                ("no room for the download", archived // 2, FULL),
                ("no room to unpack", archived + new // 2, UNPACK + "\n\n" + FULL),
                ("no room for the old copy", archived + new + old // 2, REPLACE + "No space left")):
            self.mount_cache(room)
            self.assert_refused(reason, because)
            run("umount", self.cache)
        self.mount_cache()
        self.helper.terminate()
        self.helper.wait(PATIENCE)
        run("mount", "-t", "tmpfs", "-o", f"mode=0755,size={old + 8 * MEGABYTE}", "tmpfs",
            "/Applications")
        self.addCleanup(run, "umount", "-l", "/Applications")
        self.install()
        self.start()
        self.assert_refused(INSTALL + "\n\n" + FULL, "no room for the new copy")

    def test_a_helper_that_is_killed_on_the_way_runs_again(self):
        SITE.hold.clear()
        self.confirm()
        wait_until(lambda: os.listdir(self.cache), "the download")
        self.kill()
        SITE.hold.set()
        for tool in ("unpack", "spctl", "codesign", "PlistBuddy"):
            self.assertEqual(tree(INSTALLED), self.before, "before " + tool)
            self.start()
            os.kill(self.kill_at(tool), signal.SIGKILL)
            forget_wishes()
        self.assert_starts_and_offers("after all of them")
        self.assertNotEqual(os.listdir(self.cache), [])
        tell("spctl", "kill")
        self.assert_refused(GATEKEEPER, "another attempt, after which nothing is left of any")

    def test_the_new_copy_is_finished_when_only_the_helper_is_killed(self):
        SITE.archive = archive(program=Path(APPLICATION, "bin/torvane-p2p-helper").read_bytes())
        tool = self.kill_at("copy")
        self.assertNotIn("bin", os.listdir(INSTALLED))
        self.assertEqual(tree(self.work_folder() + "/old.app"), self.before)
        forget_wishes()
        wait_until(lambda: not os.path.exists(f"/proc/{tool}/exe"), "the copy")
        self.assertEqual(tree(INSTALLED), tree(os.path.join(self.work_folder(), NAME)))
        self.start()
        self.assertNotEqual(self.labels(), [])

    def test_an_old_copy_is_left_when_everything_is_killed(self):
        for disks in (1, 2):
            if disks == 2:
                self.helper.terminate()
                self.helper.wait(PATIENCE)
                self.mount_cache()
                self.start()
            os.kill(self.kill_at("copy"), signal.SIGKILL)
            forget_wishes()
            self.assertNotIn("bin", os.listdir(INSTALLED))
            old = [self.work_folder() + "/old.app", *([self.set_aside()] if disks == 2 else [])]
            for copy in old:
                self.assertEqual(tree(copy), self.before)
            shutil.rmtree(INSTALLED)  # what a user has to do
            shutil.move(old[-1], INSTALLED)
            self.assert_starts_and_offers(f"{disks} disks")
            self.assert_untouched(f"{disks} disks")

    def test_the_old_copy_is_in_its_place_until_all_of_it_is_on_the_other_disk(self):
        Path(INSTALLED, "Resources/ballast").write_bytes(bytes(256 * MEGABYTE))
        self.before = tree(INSTALLED)
        self.mount_cache()
        old = self.work_folder() + "/old.app"
        self.confirm()
        deadline = time.monotonic() + PATIENCE
        while not os.path.exists(old) and time.monotonic() < deadline:
            pass  # what follows is over in a moment
        self.helper.send_signal(signal.SIGSTOP)
        self.assertIn(self.before, [tree(copy) for copy in (INSTALLED, self.set_aside(), old)])
        self.kill()

    def test_quitting_in_mid_download_leaves_nothing_behind(self):
        SITE.hold.clear()
        self.confirm()
        wait_until(lambda: os.listdir(self.cache), "the download")
        self.item.choose("Quit")
        self.assertEqual(self.helper.wait(PATIENCE), 0)
        self.assertEqual(os.listdir(self.cache), [])
        self.assertEqual(tree(INSTALLED), self.before)

    def quit(self):
        """Quits from the menu; how long it took."""
        began = time.monotonic()
        self.item.choose("Quit")
        self.assertEqual(self.helper.wait(PATIENCE), 0)
        return time.monotonic() - began

    def assert_stays_ended(self, because):
        commands = [Path(place, "cmdline").read_bytes() for place in Path("/proc").iterdir()
                    if place.name.isdigit() and Path(place, "cmdline").exists()]
        self.assertFalse([command for command in commands if b"; open '" in command], because)
        self.assertEqual(tree(INSTALLED), self.before, because)
        self.assertEqual(os.listdir("/Applications"), [NAME], because)
        self.assertEqual(os.listdir(self.cache), [], because)

    def test_quitting_while_a_tool_hangs_ends_at_once_for_good(self):
        took = {}
        for tool in ("unpack", "spctl", "codesign", "PlistBuddy", "copy"):
            tell(tool, "wait")
            self.confirm()
            wait_until(lambda name=tool: os.path.exists(f"{CONTROL}/{name}-reached"), tool)
            took[tool] = self.quit()
            forget_wishes()
            self.assert_stays_ended(tool)
            self.start()
        print("quit after", {tool: f"{seconds:.2f} s" for tool, seconds in took.items()})
        self.assertLess(max(took.values()), QUIT_WITHIN)

    def test_quitting_while_the_old_copy_goes_to_another_disk_leaves_it(self):
        Path(INSTALLED, "Resources/ballast").write_bytes(bytes(512 * MEGABYTE))
        self.before = tree(INSTALLED)
        self.mount_cache()
        old = self.work_folder() + "/old.app"
        self.confirm()
        deadline = time.monotonic() + PATIENCE
        while not os.path.exists(old) and time.monotonic() < deadline:
            pass  # what follows is over in a moment
        self.helper.terminate()
        self.assertEqual(self.helper.wait(PATIENCE), 0)
        self.assert_stays_ended("terminated in mid-copy")

    def test_what_a_user_has_beside_the_installed_copy_stays(self):
        SITE.archive = archive(program=Path(APPLICATION, "bin/torvane-p2p-helper").read_bytes())
        self.mount_cache()
        Path(INSTALLED + ".old").write_text("mine")
        self.confirm()
        self.assertEqual(self.helper.wait(PATIENCE), 0, self.desktop.log("helper"))
        self.item = self.next_item()
        self.assertEqual(Path(INSTALLED + ".old").read_text(), "mine")
        wait_until(lambda: sorted(os.listdir("/Applications")) == [NAME, NAME + ".old"],
                   "nothing else beside it")
        self.item.choose("Quit")

    def test_the_way_to_the_cache_may_be_the_users_own_in_any_form_but_nobody_elses(self):
        tell("spctl", "kill")  # as far as this it goes where the folder is taken
        os.chmod(CACHE_HOME, 0o2755)
        os.chmod(self.cache, 0o2700)
        self.assert_refused(GATEKEEPER, "a set-group-ID folder")
        os.rename(CACHE_HOME, CACHE_HOME + "-elsewhere")
        os.symlink(CACHE_HOME + "-elsewhere", CACHE_HOME)
        self.addCleanup(run, "rm", "-rf", CACHE_HOME, CACHE_HOME + "-elsewhere")
        self.assert_refused(GATEKEEPER, "behind a link")
        os.lchown(CACHE_HOME, 65534, 65534)
        self.assert_refused(UNPACK, "behind somebody else's link")
        os.lchown(CACHE_HOME, 0, 0)
        os.chmod(CACHE_HOME, 0o777)
        self.assert_refused(UNPACK, "below a folder that others may write to")
        os.chmod(CACHE_HOME, 0o1777)
        self.assert_refused(GATEKEEPER, "below a sticky one")

    def test_a_copy_elsewhere_offers_nothing(self):
        self.helper.terminate()
        self.helper.wait(PATIENCE)
        elsewhere = os.path.join(self.desktop.folder, NAME)
        application(elsewhere, BUILD)
        self.helper = self.desktop.spawn(
            "helper", [os.path.join(elsewhere, "bin/torvane-p2p-helper")])
        self.item = self.next_item()
        self.assertFalse([label for label in self.labels() if "Updat" in label])


def main():
    global SITE, TOOL
    bundle, TOOL = (os.path.abspath(sys.argv.pop(1)) for _ in range(2))
    base = sys.argv.pop(1)
    SITE = Site.trusted_at(base)
    take_application(bundle)
    unittest.main(verbosity=2)


if __name__ == "__main__":
    if len(sys.argv) < 4:
        raise SystemExit(__doc__)
    enter(ROOT, os.path.abspath(sys.argv[1]), os.path.dirname(os.path.abspath(sys.argv[2])))
    main()
