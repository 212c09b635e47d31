"""Finds the LibreOffice that the user has started and asks it to open a pipe for its owner."""
from __future__ import annotations

import glob
import hashlib
import os
import signal
import stat
import subprocess
from typing import Dict, List, NamedTuple, Optional, Tuple

NOT_RUNNING = "LibreOffice is not running: open your presentation in Impress."
OPEN_SECONDS = 1.0  # for a running office to take the request
CALM_SECONDS = 0.8  # over which it is judged whether an office is busy with loading
CALM_SHARE = 0.3    # of a processor
LISTENING = 0x10000  # in /proc/net/unix
PIPES = "/tmp/OSL_PIPE_{user}_{name}"  # where offices make their named pipes: Unix sockets


class Office(NamedTuple):
    process: int
    launcher: str               # the program that hands its arguments to this office
    profile: str                # the argument that names another profile than the user's own, or ""
    environment: Dict[str, str]


def may_run() -> bool:
    """Whether an office of this user has been started: quick, and wrong only after one was killed."""
    return bool(glob.glob(PIPES.format(user=os.getuid(), name="SingleOfficeIPC_*")))


def pipe_name() -> str:
    """Another one for each home folder, whose profile an office has."""
    home = hashlib.sha256(os.fsencode(os.environ.get("HOME", ""))).hexdigest()
    return f"torvane-{os.getuid()}-{home[:12]}"


def processes() -> List[int]:
    """The offices of this user and home folder, also those that are starting."""
    found = []
    for name in filter(str.isdigit, os.listdir("/proc")):
        try:
            if (os.stat(f"/proc/{name}").st_uid == os.getuid()
                    and _read(f"/proc/{name}/comm") == "soffice.bin\n"
                    and _environment(int(name)).get("HOME") == os.environ.get("HOME")):
                found.append(int(name))
        except OSError:
            pass  # it has ended meanwhile
    return found


def _environment(process: int) -> Dict[str, str]:
    lines = _read(f"/proc/{process}/environ").split("\0")
    return dict(line.split("=", 1) for line in lines if "=" in line)


def office(process: int) -> Optional[Office]:
    """None when its files cannot be seen from here, as those of an office in a sandbox."""
    folder = f"/proc/{process}"
    try:
        launcher = os.path.join(os.path.dirname(os.readlink(f"{folder}/exe")), "soffice")
        arguments = _read(f"{folder}/cmdline").split("\0")
        environment = _environment(process)
    except OSError:
        return None
    profile = [one for one in arguments if one.startswith("-env:UserInstallation=")]
    if not os.access(launcher, os.X_OK):
        return None
    return Office(process, launcher, profile[0] if profile else "", environment)


def takes_requests(process: int) -> bool:
    """Whether it listens where its launcher would ask it. A launcher that finds nobody there becomes
    an office itself, and would take the documents of one that is just starting away from it."""
    pipe = PIPES.format(user=os.getuid(), name="SingleOfficeIPC_")
    sockets = {f"socket:[{fields[6]}]" for fields in map(str.split, _read("/proc/net/unix").split("\n"))
               if len(fields) == 8 and fields[7].startswith(pipe) and int(fields[3], 16) & LISTENING}
    folder = f"/proc/{process}/fd"
    try:
        return any(os.readlink(f"{folder}/{name}") in sockets for name in os.listdir(folder))
    except OSError:
        return False


class Calm:
    """Tells whether a process has had little to do lately: one that is still loading is left alone."""

    def __init__(self) -> None:
        self._seen: Dict[int, Tuple[float, float]] = {}

    def is_calm(self, process: int, now: float) -> bool:
        try:
            fields = _read(f"/proc/{process}/stat").rpartition(")")[2].split()
        except OSError:
            return False
        used = (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")
        at, before = self._seen.get(process, (now, used))
        if now - at >= CALM_SECONDS or process not in self._seen:
            self._seen[process] = (now, used)
        return now - at >= CALM_SECONDS and used - before < CALM_SHARE * (now - at)


def _read(path: str) -> str:
    with open(path, encoding="utf-8", errors="surrogateescape") as file:
        return file.read()


def is_ours(pipe: str) -> bool:
    """Whether the pipe is there and was made by this user: anybody may make files in /tmp."""
    try:
        found = os.lstat(PIPES.format(user=os.getuid(), name=pipe))
    except OSError:
        return False
    return found.st_uid == os.getuid() and stat.S_ISSOCK(found.st_mode)


def open_pipe(office: Office, pipe: str) -> None:
    """The launcher hands its arguments to the office of its profile and ends. Had that office ended
    in between, the launcher would become one itself: it does not end then, and is stopped."""
    arguments = [office.launcher, "--norestore", "--nologo", "--nodefault", "--invisible",
                 f"--accept=pipe,name={pipe};urp"]
    arguments += [office.profile] if office.profile else []
    launcher = subprocess.Popen(arguments, env=office.environment, start_new_session=True,
                                stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                stderr=subprocess.DEVNULL)
    try:
        launcher.wait(OPEN_SECONDS)
    except subprocess.TimeoutExpired:
        os.killpg(launcher.pid, signal.SIGKILL)
        launcher.wait()
