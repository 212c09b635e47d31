"""Devices that knock at the helper's door, as docs/peer-link.md says it, some of them badly brought
up. As a program: one device, which prints how it was answered.

usage: link_device.py PORT NAME [old]

They speak version 1 of the link, which shows no digits, so that questions have the same text each
time.
"""

import asyncio
import base64
import hashlib
import json
import ssl
import struct
import sys

import nacl.signing
import websockets

from helper_program import link_port
from private_desktop import wait_until

TIMEOUT = 60
TLS = ssl.SSLContext(ssl.PROTOCOL_TLS_CLIENT)
TLS.check_hostname = False
TLS.verify_mode = ssl.CERT_NONE  # known by its fingerprint instead


def start_device(desktop, name, *options):
    """One device as a process of the desktop, once its helper listens; its output is in NAME.log."""
    port = wait_until(lambda: link_port(desktop), "a helper that listens")
    return desktop.spawn(name, [sys.executable, __file__, str(port), name, *options])


def frame(header, body=b""):
    text = json.dumps(header).encode()
    return struct.pack(">I", len(text)) + text + body


class Device:
    """Comes from an address of its own among this computer's, if one is given. `key` is made up
    where there is none; an old device has none at all."""

    def __init__(self, port, name, key=None, is_old=False, address=None):
        self.port = port
        self.name = name
        self.key = None if is_old else key or nacl.signing.SigningKey.generate()
        self.address = address
        self.link = None
        self.challenge = ""
        self.requests = 0

    async def invite(self):
        """Connects and asks to be let in; the first answer, "waiting" or a reason."""
        self.link = await websockets.connect(
            f"wss://127.0.0.1:{self.port}/link", ssl=TLS, subprotocols=["torvane.link.1"],
            compression=None, open_timeout=TIMEOUT, max_size=64 << 20,
            local_addr=(self.address, 0) if self.address else None)
        hello = json.loads(await self.link.recv())
        message = {"type": "invite", "name": self.name}
        if self.key:
            message.update(self._proof(base64.b64decode(hello["nonce"])))
        await self.link.send(json.dumps(message))
        return await self.answer()

    async def answer(self):
        """The next word from the helper: "waiting", "accepted", or why not."""
        message = json.loads(await asyncio.wait_for(self.link.recv(), TIMEOUT))
        return message.get("reason", message["type"])

    async def final_answer(self):
        first = await self.invite()
        return await self.answer() if first == "waiting" else first

    async def enter(self):
        """As a paired device: after that it may send requests."""
        answer = await self.final_answer()
        if answer != "accepted":
            raise ConnectionRefusedError(f"the helper does not let {self.name} in: {answer}")
        header, body = await self._exchange(frame({"id": 0, "path": "/p2p/auth"}))
        self.challenge = json.loads(body)["challenge"]

    async def request(self, path, method="GET", body=b""):
        """A signed one; status and body of the answer."""
        self.requests += 1
        inner = frame({"id": self.requests, "path": path, "method": method}, body)
        signature = self.key.sign(self.challenge.encode() + inner).signature
        header, body = await self._exchange(
            frame({"signature": base64.b64encode(signature).decode()}, inner))
        return header["status"], body

    async def _exchange(self, message):
        await self.link.send(message)
        answer = await asyncio.wait_for(self.link.recv(), TIMEOUT)
        (length,) = struct.unpack(">I", answer[:4])
        return json.loads(answer[4:4 + length]), answer[4 + length:]

    async def close(self):
        if self.link:
            await self.link.close()

    def _proof(self, nonce):
        shown = self.link.transport.get_extra_info("ssl_object").getpeercert(binary_form=True)
        signed = b"torvane-peer-link-1" + nonce + hashlib.sha256(shown).digest()
        return {"context": base64.b64encode(bytes(self.key.verify_key)).decode(),
                "signature": base64.b64encode(self.key.sign(signed).signature).decode()}


async def main(port, name, *options):
    device = Device(int(port), name, is_old="old" in options)
    print(await device.final_answer(), flush=True)
    await device.close()


if __name__ == "__main__":
    asyncio.run(main(*sys.argv[1:]))
