"""What tests of torvane-ipad have in common. TORVANE_IPAD names the program."""
import atexit
import json
import os
import pty
import subprocess
import tempfile
import unittest

from scripted_helper import Certificate

PROGRAM = os.environ.get("TORVANE_IPAD", "torvane-ipad")
DEADLINE = 60

FOLDER = tempfile.TemporaryDirectory()  # pylint: disable=consider-using-with
atexit.register(FOLDER.cleanup)
CERTIFICATES = [Certificate(FOLDER.name, name) for name in ("first", "second")]


class ToolTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.home = folder.name
        self.environment = {**os.environ, "XDG_DATA_HOME": self.home + "/data",
                            "XDG_RUNTIME_DIR": self.home + "/run", "HOME": self.home}

    def data(self, name):
        return f"{self.home}/data/torvane-ipad/{name}"

    def command(self, *arguments):
        return [PROGRAM, *arguments]

    def run_tool(self, helper, *arguments, **more):
        port = ["--port", str(helper.port)] if helper else []
        return subprocess.run(self.command(*arguments, *port), env=self.environment,
                              capture_output=True, timeout=DEADLINE, check=False, **more)

    def run_on_terminal(self, helper, *arguments):
        """Exit status and everything that a terminal got."""
        ours, its = pty.openpty()
        with subprocess.Popen(self.command(*arguments, "--port", str(helper.port)), stdin=its,
                              env=self.environment, stdout=its, stderr=its) as tool:
            os.close(its)
            shown = b""
            try:
                while part := os.read(ours, 65536):
                    shown += part
            except OSError:  # nobody has the terminal open any more
                pass
            status = tool.wait(DEADLINE)
        os.close(ours)
        return status, shown.decode()

    def check(self, result, status, text=""):
        said = (result.stdout + result.stderr).decode()
        self.assertEqual(result.returncode, status, said)
        self.assertIn(text, said)
        return said

    def know(self, *certificates):
        """As after pairing with these helpers, somewhere else."""
        os.makedirs(self.data(""), mode=0o700)
        with open(self.data("known-helpers.json"), "w", encoding="utf-8") as known:
            json.dump({"helpers": [
                {"address": "elsewhere.local:48484", "name": "Scripted",
                 "fingerprint": certificate.fingerprint} for certificate in certificates]}, known)

    def start(self, helper):
        helper.__enter__()
        self.addCleanup(helper.__exit__)
        return helper


class KnownHelperTest(ToolTest):
    def setUp(self):
        super().setUp()
        self.know(CERTIFICATES[0])
