"""The process: arguments, signals and the parent that it must not outlive."""
from __future__ import annotations

import argparse
import os
import re
import select
import signal
import socket
import sys
import threading
from typing import Callable, List

from . import VERSION
from .api import Api
from .engine import Engine
from .http_server import ADDRESS, accept_connections, open_listener
from .log import log_error, write_line
from .presenters.chooser import Chooser
from .presenters.impress.presenter import Impress
from .presenters.powerpoint.presenter import PowerPoint
from .presenters.presenter import Presenter
from .presenters.presenter_thread import PresenterThread
from .presenters.viewer.presenter import Viewer

PARENT_SECONDS = 1.0             # between two looks at the parent process


def parent_check() -> Callable[[], bool]:
    """Tells whether the process named by TORVANE_PARENT_PID still lives (or none is named)."""
    named = os.environ.get("TORVANE_PARENT_PID", "")
    if not re.fullmatch("[1-9][0-9]{0,9}", named):
        return lambda: True
    parent = int(named)
    if os.getppid() == parent:
        # Children of a process that ended are handed on at once, also while it is a zombie.
        return lambda: os.getppid() == parent

    def exists() -> bool:
        try:
            os.kill(parent, 0)
        except (ProcessLookupError, OverflowError):
            return False
        except PermissionError:
            pass  # it exists, under another user
        return True
    return exists


def port_number(digits: str) -> int:
    if not re.fullmatch("[0-9]{1,5}", digits) or int(digits) > 65535:
        raise argparse.ArgumentTypeError("a port is a number from 0 to 65535")
    return int(digits)


def parse_arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(
        prog="torvane.py", formatter_class=argparse.RawDescriptionHelpFormatter,
        description="Torvane engine: runs a presentation and answers HTTP on 127.0.0.1.",
        epilog="environment:\n  TORVANE_PARENT_PID  the engine ends when this process does\n"
               "  TORVANE_SHOW        the viewer's program, in place of the one beside the engine\n\n"
               "example:\n  python3 torvane.py 8484 &\n"
               "  curl http://127.0.0.1:8484/api/state\n"
               "  curl -X POST http://127.0.0.1:8484/api/next\n\n"
               "The engine ends on POST /api/shutdown, SIGTERM and SIGINT.")
    parser.add_argument("port", type=port_number, metavar="PORT",
                        help="port to listen on; 0 takes a free one, named in the first line")
    parser.add_argument("--version", action="version", version=f"torvane.py {VERSION}")
    return parser.parse_args()


def presenters() -> List[Presenter]:
    """In their order of preference."""
    # A Mac's own Python has no way to LibreOffice.
    programs = {"linux": [Impress], "darwin": [PowerPoint]}.get(sys.platform, [])
    return [program() for program in programs] + [Viewer()]


def run(port: int) -> int:
    # A signal may reach any thread; through the socket it wakes this one wherever it landed.
    wake, waker = socket.socketpair()
    waker.setblocking(False)
    signal.set_wakeup_fd(waker.fileno())
    for number in (signal.SIGTERM, signal.SIGINT):
        signal.signal(number, lambda *_: None)
    parent_lives = parent_check()
    listener = open_listener(port)
    if listener is None:
        return 1
    port = listener.getsockname()[1]
    chooser = Chooser([PresenterThread(one) for one in presenters()])
    chooser.start()
    engine = Engine(chooser)
    api = Api(engine, port, stop=lambda: waker.send(b"stop"))
    threading.Thread(target=accept_connections, args=(listener, api), daemon=True).start()
    write_line(sys.stdout, f"Torvane engine listening on {ADDRESS}:{port} (pid {os.getpid()})")
    while not select.select([wake], [], [], PARENT_SECONDS)[0]:
        if not parent_lives():
            log_error("the helper has gone; ending")
            break
    chooser.close()
    engine.close()
    return 0


def main() -> None:
    status = run(parse_arguments().port)
    os._exit(status)  # every line is flushed; threads in the middle of an answer cannot delay it
