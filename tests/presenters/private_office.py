"""LibreOffice on a display and with a home folder of its own."""
from __future__ import annotations

import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "engine"))

from engine_support import PYTHON, EngineProcess  # noqa: E402

START = 90.0  # for an office on a busy machine

# Saves a file again, with a password, in the office that will listen at a pipe.
PROTECT = """
import sys, time, uno
from com.sun.star.beans import PropertyValue
from com.sun.star.connection import NoConnectException
pipe, source, target, password = sys.argv[1:]
local = uno.getComponentContext()
resolver = local.ServiceManager.createInstanceWithContext(
    "com.sun.star.bridge.UnoUrlResolver", local)
while True:
    try:
        context = resolver.resolve(f"uno:pipe,name={pipe};urp;StarOffice.ComponentContext")
        break
    except NoConnectException:
        time.sleep(0.2)
desktop = context.ServiceManager.createInstanceWithContext("com.sun.star.frame.Desktop", context)
document = desktop.loadComponentFromURL(
    uno.systemPathToFileUrl(source), "_blank", 0, (PropertyValue(Name="Hidden", Value=True),))
protection = PropertyValue(Name="Password", Value=password)
document.storeToURL(uno.systemPathToFileUrl(target), (protection,))
"""


def missing() -> str:
    """What is not installed of what these tests need."""
    programs = [one for one in ("Xvfb", "openbox", "xdotool", "soffice") if not shutil.which(one)]
    uno = subprocess.run([PYTHON, "-c", "import uno"], capture_output=True).returncode == 0
    return ", ".join(programs + ([] if uno else ["python3-uno"]))


def wait_until(ask, what, seconds=START):
    deadline = time.monotonic() + seconds
    while True:
        found = ask()
        if found:
            return found
        if time.monotonic() > deadline:
            raise AssertionError(f"not within {seconds} s: {what}")
        time.sleep(0.02)


class PrivateOffice:
    """A display with a window manager, a home folder, an engine and, when started, an office."""

    def __init__(self) -> None:
        self.home = tempfile.mkdtemp(prefix="torvane-office-")
        self.environment = {**os.environ, "HOME": self.home, "SAL_USE_VCLPLUGIN": "gtk3",
                            "GDK_BACKEND": "x11", "NO_AT_BRIDGE": "1", "GIO_USE_VFS": "local"}
        self.environment.pop("WAYLAND_DISPLAY", None)
        reading, writing = os.pipe()
        self._log = open(os.path.join(self.home, "log"), "w", encoding="utf-8")
        self._display = self._spawn(["Xvfb", "-displayfd", str(writing), "-screen", "0",
                                     "1280x720x24", "-nolisten", "tcp"], pass_fds=(writing,))
        os.close(writing)
        with os.fdopen(reading) as number:
            self.environment["DISPLAY"] = ":" + number.readline().strip()
        self._manager = self._spawn(["openbox"])
        self.office = None
        self.engine = None

    def _spawn(self, command, **more):
        return subprocess.Popen(command, env=self.environment, stdout=self._log,
                                stderr=self._log, start_new_session=True, **more)

    def path(self, name: str) -> str:
        return os.path.join(self.home, name)

    def start(self, *files: str) -> None:
        self.office = self._spawn(["soffice", "--norestore", "--nologo", "--nolockcheck", *files])

    def open(self, *arguments: str) -> None:
        """In the office that runs."""
        subprocess.run(["soffice", "--norestore", "--nologo", *arguments], env=self.environment,
                       stdout=self._log, stderr=self._log, timeout=START, check=True)

    def convert(self, source: str, kind: str) -> None:
        """With an office of its own, as the other may run."""
        subprocess.run(["soffice", f"-env:UserInstallation=file://{self.home}/convert",
                        "--headless", "--convert-to", kind, "--outdir", self.home, source],
                       env=self.environment, stdout=self._log, stderr=self._log, timeout=START,
                       check=True)

    def protect(self, source: str, target: str, password: str) -> None:
        """With an office of its own."""
        pipe = "protect" + os.path.basename(self.home)
        office = self._spawn(["soffice", f"-env:UserInstallation=file://{self.home}/convert",
                              "--headless", "--norestore", f"--accept=pipe,name={pipe};urp"])
        try:
            subprocess.run([PYTHON, "-c", PROTECT, pipe, source, target, password],
                           stdout=self._log, stderr=self._log, timeout=START, check=True)
        finally:
            os.killpg(office.pid, signal.SIGKILL)
            office.wait()

    def start_engine(self) -> EngineProcess:
        self.engine = EngineProcess(**{name: self.environment[name] for name in ("HOME", "DISPLAY")})
        return self.engine

    def key(self, name: str) -> None:
        """Pressed at the computer, in the window that has the keyboard."""
        subprocess.run(["xdotool", "key", name], env=self.environment, check=True)

    def answer(self, window: str, text: str) -> None:
        """Types into a window that asks for something, and confirms."""
        wait_until(lambda: subprocess.run(
            ["xdotool", "search", "--onlyvisible", "--name", window, "windowfocus", "--sync",
             "type", text], env=self.environment, stdout=self._log, stderr=self._log)
            .returncode == 0, f"a window {window}")
        self.key("Return")

    def pid(self) -> int:
        """Of the office itself: what was started is a script and its child."""
        home = f"HOME={self.home}\0".encode()
        for folder in Path("/proc").glob("[0-9]*"):
            try:
                if ((folder / "comm").read_text() == "soffice.bin\n"
                        and home in (folder / "environ").read_bytes()):
                    return int(folder.name)
            except OSError:
                pass  # it has ended meanwhile
        raise AssertionError("there is no office")

    def kill_office(self) -> None:
        if self.office and self.office.poll() is None:
            os.killpg(self.office.pid, signal.SIGKILL)
            self.office.wait()
        self.office = None

    def close(self) -> None:
        if self.engine:
            self.engine.stop()
        self.kill_office()
        for process in (self._manager, self._display):
            process.terminate()
            process.wait()
        self._log.close()
        shutil.rmtree(self.home, ignore_errors=True)
