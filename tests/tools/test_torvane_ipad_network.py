"""torvane-ipad looking for helpers through a real Avahi daemon, in a network of its own."""
import fcntl
import os
import shutil
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import time
import unittest

from scripted_helper import Certificate, ScriptedHelper

PROGRAM = os.environ.get("TORVANE_IPAD", "torvane-ipad")
INSIDE = "TORVANE_INSIDE_OWN_NETWORK"
DEADLINE = 60
NAMESPACES = ["unshare", "--mount", "--net"]
BUS = """<busconfig><type>system</type><listen>unix:path=%s/bus</listen>
<policy context="default"><allow user="*"/><allow own="*"/>
<allow send_type="*" send_destination="*"/><allow receive_type="*"/></policy></busconfig>"""
DAEMON = ("[server]\nhost-name=stage\nallow-interfaces=lo\nuse-ipv6=no\n"
          "[wide-area]\nenable-wide-area=no\n")
SERVICE = ("<service-group><name>%s</name><service><type>_torvane._tcp</type>"
           "<port>%d</port></service></service-group>")


@unittest.skipIf(INSIDE in os.environ, "this is the process with the network of its own")
class OwnNetwork(unittest.TestCase):
    def test_network_cases(self):
        for program in ("unshare", "dbus-daemon", "avahi-daemon"):
            if not shutil.which(program):
                self.skipTest(f"there is no {program} here")
        if subprocess.run([*NAMESPACES, "true"], capture_output=True, check=False).returncode:
            self.skipTest("this user may not make a network of its own")
        result = subprocess.run([*NAMESPACES, sys.executable, "-m", "unittest", "-v",
                                 "test_torvane_ipad_network"],
                                cwd=os.path.dirname(os.path.abspath(__file__)), timeout=240,
                                env={**os.environ, INSIDE: "1"}, capture_output=True, check=False)
        self.assertEqual(result.returncode, 0, result.stderr.decode())
        self.assertIn(b"test_helpers_are_found_by_what_they_announce", result.stderr)


@unittest.skipUnless(INSIDE in os.environ, "needs a network of its own")
class Network(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        with socket.socket() as any_socket:  # up, running and able to multicast
            flags = struct.pack("16sh22x", b"lo", 0x1 | 0x40 | 0x1000)
            fcntl.ioctl(any_socket, 0x8914, flags)
        for folder in ("/run", "/etc/avahi"):
            subprocess.run(["mount", "-t", "tmpfs", "none", folder], check=True)

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        shutil.rmtree("/etc/avahi/services", ignore_errors=True)
        for name in ("/etc/avahi/services", "/run/avahi-daemon"):
            os.makedirs(name, exist_ok=True)
        self.environment = {**os.environ, "HOME": self.folder,
                            "XDG_DATA_HOME": self.folder + "/data",
                            "XDG_RUNTIME_DIR": self.folder,
                            "DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={self.folder}/bus"}

    def start(self, *command):
        # pylint: disable=consider-using-with
        child = subprocess.Popen(command, env=self.environment, stdout=subprocess.DEVNULL,
                                 stderr=subprocess.DEVNULL)
        self.addCleanup(child.wait)
        self.addCleanup(child.terminate)
        return child

    def start_bus(self):
        with open(self.folder + "/bus.conf", "w", encoding="ascii") as file:
            file.write(BUS % self.folder)
        self.start("dbus-daemon", f"--config-file={self.folder}/bus.conf", "--nofork",
                   "--nopidfile")
        self.wait_until(lambda: os.path.exists(self.folder + "/bus"))

    def start_daemon(self):
        with open(self.folder + "/avahi.conf", "w", encoding="ascii") as file:
            file.write(DAEMON)
        return self.start("avahi-daemon", "-f", self.folder + "/avahi.conf", "--no-drop-root",
                          "--no-chroot", "--no-rlimits")

    def announce(self, name, port):
        with open(f"/etc/avahi/services/{port}.service", "w", encoding="utf-8") as file:
            file.write(SERVICE % (name, port))

    def wait_until(self, condition):
        end = time.monotonic() + DEADLINE
        while not condition():
            self.assertLess(time.monotonic(), end, "it takes too long")
            time.sleep(0.01)

    def helper(self, name):
        helper = ScriptedHelper(Certificate(self.folder, name))
        helper.__enter__()
        self.addCleanup(helper.__exit__)
        return helper

    def tool(self, *arguments):
        return subprocess.run([PROGRAM, *arguments], env=self.environment, capture_output=True,
                              timeout=DEADLINE, text=True, check=False)

    def wait_until_found(self, text):
        self.wait_until(lambda: text in self.tool("find").stdout)

    def test_missing_service_is_named(self):
        for start in (lambda: None, self.start_bus):
            start()
            result = self.tool("find")
            self.assertEqual(result.returncode, 3)
            self.assertIn("the Avahi service is not running", result.stderr)
        self.assertIn("the Avahi service is not running", self.tool("info").stderr)

    def test_helpers_are_found_by_what_they_announce(self):
        first, second = self.helper("first"), self.helper("second")
        self.announce("Stage &amp; hall", first.port)
        self.start_bus()
        daemon = self.start_daemon()
        self.wait_until_found(f"Stage & hall at stage.local:{first.port}, on the network")
        self.assertIn("was never paired with", self.tool("info").stderr)
        self.assertEqual(self.tool("pair").returncode, 0)
        info = self.tool("info")
        self.assertEqual(info.stdout, "The helper is build 42.\n", info.stderr)
        self.assertEqual(len(first.invitations), 2)

        self.announce("Another", second.port)
        daemon.send_signal(signal.SIGHUP)
        self.wait_until_found("Another at")
        known = self.tool("info")
        self.assertEqual(known.returncode, 0, known.stderr)
        self.assertEqual((len(first.invitations), len(second.invitations)), (3, 0))

        shutil.rmtree(self.folder + "/data")
        result = self.tool("info")
        self.assertEqual(result.returncode, 3)
        self.assertIn(f"--host stage.local --port {second.port}  (Another)", result.stderr)
        named = self.tool("pair", "--host", "stage.local", "--port", str(second.port))
        self.assertEqual(named.returncode, 0, named.stderr)
        self.assertEqual(len(second.invitations), 1)


if __name__ == "__main__":
    unittest.main()
