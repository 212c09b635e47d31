"""What a thread waits for that others may wake."""
from __future__ import annotations

import os
import select


class Wake:
    """A flag, like threading.Event, that is waited for together with descriptors."""

    def __init__(self) -> None:
        self._reading, self._writing = os.pipe()
        for end in (self._reading, self._writing):
            os.set_blocking(end, False)

    def set(self) -> None:
        try:
            os.write(self._writing, b".")
        except BlockingIOError:
            pass  # it is set many times over

    def clear(self) -> None:
        try:
            while os.read(self._reading, 4096):
                pass
        except BlockingIOError:
            pass

    def wait(self, seconds: float, *others: int) -> bool:
        """Until it is set, or one of the other descriptors can be read, whereupon it returns True."""
        found = select.select([self._reading, *others], [], [], max(seconds, 0))[0]
        return any(one in found for one in others)
