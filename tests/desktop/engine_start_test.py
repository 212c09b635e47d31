#!/usr/bin/python3
"""What the whole program says when its engine does not start, as a screen reader hears it.

usage: engine_start_test.py BUILD_FOLDER PICTURE_FOLDER
"""

import os
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "support"))

from private_desktop import (  # noqa: E402
    ACCESSIBILITY, PATIENCE, skip_where_incomplete)

skip_where_incomplete(("dbus", "gi"), (ACCESSIBILITY,))

from dialog_stage import DialogStage  # noqa: E402
from helper_program import engine_answers, engine_listens  # noqa: E402
from menu_stage import main  # noqa: E402

ALERT = "Torvane P2P Helper"

# Runs a program that sees another /usr/bin/python3, or none, in place of this computer's.
WITH_OTHER_PYTHON = """
set -e
mount --make-rprivate /
mount -t tmpfs tmpfs "$1"
mkdir "$1/upper" "$1/work"
if [ -n "$2" ]; then
  printf '%s' "$2" > "$1/upper/python3"
  chmod 755 "$1/upper/python3"
else
  mknod "$1/upper/python3" c 0 0
fi
mount -t overlay overlay -o "lowerdir=/usr/bin,upperdir=$1/upper,workdir=$1/work" /usr/bin
shift 2
exec "$@"
"""


class EngineStartTest(DialogStage):
    def told(self, picture=None):
        """What the next alert says; it is answered."""
        return self.answer(ALERT, ["OK"], "OK", picture)

    def replace_engine(self, text):
        """Puts another script next to the application's folder."""
        bundle = self.copy_of_the_bundle()
        with open(os.path.join(os.path.dirname(bundle), "torvane.py"), "w",
                  encoding="utf-8") as file:
            file.write(text)
        return bundle

    def start_with_other_python(self, script=""):
        layers = os.path.join(self.desktop.folder, "layers")
        os.mkdir(layers)
        aside = ["unshare", "--mount", "sh", "-c", WITH_OTHER_PYTHON, "sh", layers, script]
        if os.geteuid() != 0 or subprocess.run(
                [*aside, "true"], check=False, capture_output=True).returncode != 0:
            self.skipTest("a file system of its own needs the superuser and overlays")
        self.start(around=aside)

    def test_says_that_the_script_is_missing(self):
        bundle = self.copy_of_the_bundle()
        os.remove(os.path.join(bundle, "Resources", "torvane.py"))
        self.start(bundle)
        missing = ("Cannot find torvane.py, which is the presentation server. Install Torvane P2P "
                   "Helper again to bring it back.")
        self.assertEqual(self.told("engine-missing"), missing)
        self.item.choose("Start Server")
        self.assertEqual(self.told(), missing)
        self.assertIn("Start Server", self.item.labels())

    def test_shows_the_last_words_of_an_engine_that_dies_at_once(self):
        self.start(self.replace_engine(
            "import sys\nprint('<b>No</b> slides today.')\nsys.exit(3)\n"))
        log = os.path.join(self.desktop.environment["XDG_STATE_HOME"],
                           "torvane-p2p-helper/engine.log")
        self.assertEqual(
            self.told("engine-died"),
            "The presentation server stopped straight after starting (exit code 3).\n\n"
            f"<b>No</b> slides today.\n\nFull log: {log}")
        self.assertIn("Presentation server not running", self.item.labels())
        self.assertFalse(os.path.exists(os.path.join(self.desktop.environment["HOME"], "Library")))

    def test_says_when_an_engine_dies_without_a_word(self):
        self.start(self.replace_engine("raise SystemExit(7)\n"))
        self.assertIn("(exit code 7).\n\nIt gave no explanation.\n\n", self.told())

    def test_uses_an_engine_that_runs_already_and_leaves_it_running(self):
        engine = self.start_engine()
        self.start()
        self.wait_for_line("Stop Server")
        self.item.choose("Quit")
        self.assertEqual(self.helper.wait(PATIENCE), 0)
        self.assertIsNone(engine.poll())
        self.assertTrue(engine_answers())

    def test_says_how_to_get_python_where_there_is_none(self):
        self.start_with_other_python()
        self.assertEqual(
            self.told("python-missing"),
            "One more step: the presentation server needs Python 3, and /usr/bin/python3 is not "
            "there.\n\nOpen a terminal, run `sudo apt install python3` (or install the package "
            "“python3” in your system's own way), then choose “Start Server” from this app's "
            "status icon.")
        self.assertFalse(engine_listens())
        self.item.choose("Start Server")
        self.assertTrue(self.told().startswith("One more step: "))

    def test_says_what_python_says_that_does_not_run(self):
        self.start_with_other_python("#!/bin/sh\necho 'No <python> & no license.' >&2; exit 69\n")
        self.assertEqual(
            self.told("python-refused"),
            "This computer refused to run Python, so the presentation server can't start.\n\n"
            "/usr/bin/python3 --version said:\nNo <python> & no license.")
        self.assertFalse(engine_listens())


if __name__ == "__main__":
    main()
