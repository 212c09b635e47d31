"""The helper on a private display, with its engine, and a paired device's way to that through it."""
from __future__ import annotations

import asyncio
import os
import subprocess
import sys
import threading
from pathlib import Path
from typing import Any, Coroutine, Dict, List, Optional, Tuple

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "desktop" / "support"))

import nacl.signing  # noqa: E402

from helper_program import PROGRAM, engine_answers, listening_port, write_defaults  # noqa: E402
from link_device import Device  # noqa: E402
from private_display import PrivateDisplay, wait_until  # noqa: E402
from show_clients import Client  # noqa: E402


class LinkedClient(Client):
    """One connection to the engine by way of the helper, kept alive by a thread of its own."""

    def __init__(self, port: int, key: nacl.signing.SigningKey) -> None:
        self._loop = asyncio.new_event_loop()
        self._thread = threading.Thread(target=self._loop.run_forever, daemon=True)
        self._thread.start()
        self._device = Device(port, "iPad", key)
        self._run(self._device.enter())

    def _run(self, work: Coroutine) -> Any:
        return asyncio.run_coroutine_threadsafe(work, self._loop).result()

    def exchange(self, method: str, path: str, body: bytes) -> Tuple[int, bytes]:
        return self._run(self._device.request(path, method, body))

    def close(self) -> None:
        self._run(self._device.close())
        self._loop.call_soon_threadsafe(self._loop.stop)
        self._thread.join()
        self._loop.close()


class HelperProcess:
    """Takes the place of EngineProcess. One key is one device, so each client has its own."""

    def __init__(self, display: PrivateDisplay, build: str, clients: int) -> None:
        self._display = display
        self._keys = [nacl.signing.SigningKey.generate() for _ in range(clients)]
        write_defaults(display.path(".config"), self._keys)
        environment = {**display.environment, "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent",
                       "DBUS_SYSTEM_BUS_ADDRESS": "unix:path=/nonexistent"}
        for name in ("XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"):
            environment.pop(name, None)
        self.process = subprocess.Popen(
            [os.path.join(build, PROGRAM)], env=environment,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        wait_until(engine_answers, "the helper's engine")
        self._clients: List[LinkedClient] = []
        self._client = self.connect()

    def connect(self) -> LinkedClient:
        def port() -> Optional[int]:
            return listening_port(self._display.path("run"))

        client = LinkedClient(wait_until(port, "the peer link"), self._keys.pop())
        self._clients.append(client)
        return client

    def get(self, path: str) -> Dict[str, Any]:
        return self._client.ask("GET", path)

    def stop(self) -> Tuple[str, str]:
        """What the engine wrote."""
        for client in self._clients:
            client.close()
        self.process.terminate()
        self.process.wait(30)
        log = self._display.path(".local/state/torvane-p2p-helper/engine.log")
        with open(log, encoding="utf-8", errors="replace") as file:
            return "", file.read()
