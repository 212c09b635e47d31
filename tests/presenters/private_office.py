"""LibreOffice on a display and with a home folder of its own."""
from __future__ import annotations

import os
import signal
import subprocess
from pathlib import Path

from private_display import START, PrivateDisplay, missing_programs, wait_until  # noqa: F401
from engine_support import PYTHON

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
    uno = subprocess.run([PYTHON, "-c", "import uno"], capture_output=True).returncode == 0
    return ", ".join(missing_programs("soffice") + ([] if uno else ["python3-uno"]))


class PrivateOffice(PrivateDisplay):
    """With an engine and, when started, an office."""

    def __init__(self) -> None:
        super().__init__(SAL_USE_VCLPLUGIN="gtk3", GDK_BACKEND="x11", NO_AT_BRIDGE="1",
                         GIO_USE_VFS="local")
        self.office = None

    def start(self, *files: str) -> None:
        self.office = self.spawn(["soffice", "--norestore", "--nologo", "--nolockcheck", *files])

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
        office = self.spawn(["soffice", f"-env:UserInstallation=file://{self.home}/convert",
                             "--headless", "--norestore", f"--accept=pipe,name={pipe};urp"])
        try:
            subprocess.run([PYTHON, "-c", PROTECT, pipe, source, target, password],
                           stdout=self._log, stderr=self._log, timeout=START, check=True)
        finally:
            os.killpg(office.pid, signal.SIGKILL)
            office.wait()

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
        self.kill_office()
        super().close()
