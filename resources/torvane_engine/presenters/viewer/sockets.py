"""The viewers that run: each has a socket in a folder that only its user can enter."""
from __future__ import annotations

import os
import socket
import stat
import struct
import time
from pathlib import Path
from typing import Any, Dict, List, Optional

from ..lines import Gone, Lines

MAX_SOCKETS = 50   # that are looked at
NEW_SECONDS = 2.0  # since a socket was made


def folder() -> Path:
    """Where the viewer puts them, too."""
    base = os.environ.get("XDG_RUNTIME_DIR") or os.environ.get("XDG_CACHE_HOME")
    return Path(base or os.path.expanduser("~/.cache")) / "torvane" / "show"


def newest_first() -> List[str]:
    """Of this user's sockets; empty when others may write where they lie."""
    place = folder()
    try:
        found = os.lstat(place)
        if (not stat.S_ISDIR(found.st_mode) or found.st_uid != os.getuid()
                or found.st_mode & 0o022):
            return []
        with os.scandir(place) as entries:
            files = [(entry.stat(follow_symlinks=False), entry.path) for entry in entries]
    except OSError:
        return []
    ours = [(status.st_mtime_ns, path) for status, path in files
            if stat.S_ISSOCK(status.st_mode) and status.st_uid == os.getuid()]
    return [path for _, path in sorted(ours, reverse=True)[:MAX_SOCKETS]]


class Show:
    """The connection to a viewer."""

    def __init__(self, path: str) -> None:
        """Raises OSError when nobody listens there, or somebody else does."""
        self.path = path
        self._socket = socket.socket(socket.AF_UNIX)
        try:
            self._socket.setblocking(False)
            self._socket.connect(path)
            self._check_peer()
        except OSError:
            self._socket.close()
            raise
        self._lines = Lines(self._socket.fileno(), self._socket.fileno())

    def _check_peer(self) -> None:
        if not hasattr(socket, "SO_PEERCRED"):
            return  # a Mac; the folder keeps others out
        size = struct.calcsize("3i")
        credentials = self._socket.getsockopt(socket.SOL_SOCKET, socket.SO_PEERCRED, size)
        if struct.unpack("3i", credentials)[1] != os.getuid():
            raise PermissionError("another user's")

    def ask(self, seconds: float, action: str, *arguments: Any) -> Dict[str, Any]:
        """Raises Gone and Silent, after which it must be closed."""
        if self._socket.fileno() < 0:
            raise Gone("closed")
        return self._lines.ask({"do": action, "with": arguments}, seconds)

    def has_left(self) -> bool:
        """Whether the viewer, which has ended, has done so on purpose: it removes its socket then."""
        return not os.path.lexists(self.path)

    def close(self) -> None:
        self._socket.close()


def newest(current: Optional[Show]) -> Optional[Show]:
    """The newest viewer's, which may be the current one. What killed ones have left is removed."""
    for path in newest_first():
        if current is not None and current.path == path:
            return current
        try:
            return Show(path)
        except ConnectionRefusedError:
            _remove_when_dead(path)
        except OSError:
            pass
    return None


def _remove_when_dead(path: str) -> None:
    """A new one may be about to listen."""
    try:
        if time.time() - os.lstat(path).st_mtime > NEW_SECONDS:
            os.remove(path)
    except OSError:
        pass
