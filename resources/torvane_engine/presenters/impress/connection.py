"""The connection to a running office, and what UNO needs for it."""
from __future__ import annotations

import time
from typing import Any, Tuple

import uno
from com.sun.star.beans import PropertyValue
from com.sun.star.connection import NoConnectException

from ..presenter import Absent, Unavailable
from . import running_office

CONNECT_SECONDS = 1.0  # from the request for a pipe until it is there


def values(**members: Any) -> Tuple[PropertyValue, ...]:
    return tuple(PropertyValue(Name=name, Value=value) for name, value in members.items())


STARTING = "LibreOffice is starting."
BUSY = "LibreOffice does not take requests: look whether it asks something on the computer."
CALM = running_office.Calm()


def connect() -> Any:
    """The component context of the user's office. Starts none."""
    pipe = running_office.pipe_name()
    try:
        return _resolve(pipe)
    except NoConnectException:
        pass  # nobody has asked that office yet
    processes = running_office.processes()
    if not processes:
        raise Absent(running_office.NOT_RUNNING)
    for process in processes:
        office = running_office.office(process)
        calm = CALM.is_calm(process, time.monotonic())
        if office is None or not calm or not running_office.takes_requests(process):
            continue
        running_office.open_pipe(office, pipe)
        deadline = time.monotonic() + CONNECT_SECONDS
        while time.monotonic() < deadline:
            try:
                return _resolve(pipe)
            except NoConnectException:
                time.sleep(0.02)
        raise Unavailable(BUSY)
    raise Absent(STARTING)


def _resolve(pipe: str) -> Any:
    if not running_office.is_ours(pipe):
        raise NoConnectException()
    local = uno.getComponentContext()
    resolver = local.ServiceManager.createInstanceWithContext(
        "com.sun.star.bridge.UnoUrlResolver", local)
    return resolver.resolve(f"uno:pipe,name={pipe};urp;StarOffice.ComponentContext")
