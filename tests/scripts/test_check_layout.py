"""The layout check finds each fault that is planted in a copy of the tree."""

import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


class CheckLayout(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.tree = Path(folder.name)
        for part in ("src", "tools", "scripts"):
            shutil.copytree(ROOT / part, self.tree / part)

    def check(self):
        run = subprocess.run([sys.executable, self.tree / "scripts/check-layout"],
                             capture_output=True, text=True, check=False)
        return run.returncode, run.stdout

    def plant(self, path, text):
        with open(self.tree / path, "a", encoding="utf-8") as file:
            file.write(text)

    def assert_found(self, words):
        code, output = self.check()
        self.assertEqual(code, 1, output)
        self.assertIn(words, output)

    def test_tree_as_it_is_has_no_problem(self):
        self.assertEqual(self.check(), (0, "layout: 0 problem(s)\n"))

    def test_adapter_included_by_the_core(self):
        self.plant("src/app/lifecycle.cpp", '#include "platform/linux/system_clock.h"\n')
        self.assert_found("the core includes no adapter")

    def test_desktop_library_included_by_the_core(self):
        self.plant("src/app/lifecycle.cpp", "#include <QString>\n")
        self.assert_found("the core knows no platform")

    def test_platform_switch_in_the_core(self):
        self.plant("src/app/lifecycle.cpp", "#ifdef __APPLE__\n#endif\n")
        self.assert_found("the core knows no platform")

    def test_part_that_sees_the_delegate(self):
        self.plant("src/peer/invitations.cpp", '#include "app/bridge_delegate.h"\n')
        self.assert_found("peer/ may not include app/")

    def test_library_that_sees_what_lies_above_it(self):
        self.plant("src/protocol/p2p_frame.cpp", '#include "ports/clock.h"\n')
        self.assert_found("protocol/ may not include ports/")

    def test_adapter_of_one_desktop_that_sees_anothers(self):
        self.plant("src/platform/linux/main.cpp", '#include "platform/mac/edge.h"\n')
        self.assert_found("platform/linux/ may not include platform/mac/")

    def test_method_in_another_file_than_the_header_says(self):
        self.plant("src/app/dialogs.cpp", "void BridgeDelegate::updateIcon() {}\n")
        self.assert_found("updateIcon() belongs to app/status_icon.cpp")

    def test_method_missing_in_the_table_of_contents(self):
        self.plant("src/app/dialogs.cpp", "void BridgeDelegate::surprise() {}\n")
        self.assert_found("surprise() belongs to the table of contents first")

    def test_file_and_function_that_ran_away(self):
        self.plant("src/app/dialogs.cpp", "void f() {\n" + "  g();\n" * 300 + "}\n")
        code, output = self.check()
        self.assertEqual(code, 1)
        self.assertIn("lines, where 300 are the most", output)
        self.assertIn("a function of 301 lines", output)


if __name__ == "__main__":
    unittest.main()
