#!/usr/bin/python3
"""A second client of the peer link, written from docs/peer-link.md and the frame format alone.

Pairs, authenticates, asks for the helper's version and prints the answer as one JSON object.
Needs python3-websockets and python3-nacl. Exit status 0 means that every step went as documented.
"""

import argparse
import asyncio
import base64
import hashlib
import json
import os
import ssl
import struct
import sys

import nacl.signing
import websockets

TIMEOUT = 20


class Failure(Exception):
    pass


def encode_frame(header, body=b""):
    text = json.dumps(header, separators=(",", ":")).encode()
    return struct.pack(">I", len(text)) + text + body


def decode_frame(message):
    if not isinstance(message, bytes) or len(message) < 4:
        raise Failure(f"not a frame: {message!r}")
    (length,) = struct.unpack(">I", message[:4])
    return json.loads(message[4 : 4 + length]), message[4 + length :]


async def receive(link):
    return await asyncio.wait_for(link.recv(), TIMEOUT)


async def control(link, *expected):
    message = await receive(link)
    if not isinstance(message, str):
        raise Failure("a binary message where a control message was due")
    value = json.loads(message)
    if value.get("type") == "refused":
        raise Failure("refused: " + value["reason"])
    if value.get("type") not in expected:
        raise Failure(f"expected {expected}, got {message}")
    return value


def plain(value):
    return base64.b64decode(value, validate=True)


def text(data):
    return base64.b64encode(data).decode()


def digits(key, certificate, computers_nonce, devices_nonce):
    """Six digits to compare with those on the computer's screen."""
    hashed = hashlib.sha256(b"torvane-pairing-digits-2" + key + certificate + computers_nonce
                            + devices_nonce).digest()
    number = "%06d" % (struct.unpack(">Q", hashed[:8])[0] % 1_000_000)
    return number[:3] + " " + number[3:]


async def pair(link, name, key, wait, version):
    """The hello, and the digits where there are any."""
    hello = await control(link, "hello")
    shown = link.transport.get_extra_info("ssl_object").getpeercert(binary_form=True)
    certificate = hashlib.sha256(shown).digest()
    nonce = plain(hello["nonce"])
    if hello["version"] != version or len(nonce) != 32:
        raise Failure(f"unknown hello {hello}")
    public_key = bytes(key.verify_key)
    invite = {"type": "invite", "name": name, "context": text(public_key)}
    signed = f"torvane-peer-link-{version}".encode() + nonce + certificate
    if version == 2:
        own_nonce = os.urandom(32)
        invite["nonce"] = text(own_nonce)
        commitment = plain(hello["commitment"])
        signed += commitment + own_nonce
    invite["signature"] = text(key.sign(signed).signature)
    await link.send(json.dumps(invite))
    waiting = await control(link, "waiting")
    shown_digits = None
    if version == 2:
        opening = plain(waiting["opening"])
        if len(opening) != 32 or hashlib.sha256(opening).digest() != commitment:
            raise Failure("the computer did not keep to its commitment")
        shown_digits = digits(public_key, certificate, opening, own_nonce)
    message = await asyncio.wait_for(link.recv(), wait)
    answer = json.loads(message)
    if answer["type"] != "accepted":
        raise Failure("refused: " + answer["reason"])
    return hello, shown_digits


async def request(link, frame, number):
    await link.send(frame)
    header, body = decode_frame(await receive(link))
    if header.get("id") != number:
        raise Failure(f"reply to another request: {header}")
    if header.get("status") != 200:
        raise Failure(f"status {header.get('status')}: {header.get('error', '')}")
    return json.loads(body)


async def run(options):
    tls = ssl.SSLContext(ssl.PROTOCOL_TLS_CLIENT)
    tls.minimum_version = ssl.TLSVersion.TLSv1_3
    tls.check_hostname = False
    tls.verify_mode = ssl.CERT_NONE  # known by its fingerprint instead
    key = nacl.signing.SigningKey(bytes.fromhex(options.seed)) if options.seed else \
        nacl.signing.SigningKey.generate()
    subprotocol = f"torvane.link.{options.version}"
    async with websockets.connect(
        f"wss://{options.host}:{options.port}/link",
        ssl=tls,
        subprotocols=[subprotocol],
        compression=None,
        max_size=64 << 20,
        open_timeout=TIMEOUT,
    ) as link:
        if link.subprotocol != subprotocol:
            raise Failure("the server did not choose the subprotocol")
        certificate = link.transport.get_extra_info("ssl_object").getpeercert(binary_form=True)
        fingerprint = hashlib.sha256(certificate).hexdigest()
        if options.ca_fingerprint not in ("none", fingerprint):
            raise Failure(f"another computer: its fingerprint is {fingerprint}")
        hello, shown_digits = await pair(link, options.name, key, options.wait, options.version)
        challenge = (
            await request(link, encode_frame({"id": 1, "path": "/p2p/auth"}), 1)
        )["challenge"]
        inner = encode_frame({"id": 2, "path": "/p2p/bridge-info"})
        signature = key.sign(challenge.encode() + inner).signature
        envelope = encode_frame({"signature": base64.b64encode(signature).decode()}, inner)
        info = await request(link, envelope, 2)
    return {
        "computer": hello["name"],
        "fingerprint": fingerprint,
        "deviceKey": base64.b64encode(bytes(key.verify_key)).decode(),
        "digits": shown_digits,
        "challenge": challenge,
        "bridgeInfo": info,
    }


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--host", default="127.0.0.1")
    parser.add_argument("--port", type=int, required=True)
    parser.add_argument("--ca-fingerprint", default="none", help="64 hexadecimal digits, or none")
    parser.add_argument("--version", type=int, choices=[1, 2], default=2)
    parser.add_argument("--name", default="Independent iPad")
    parser.add_argument("--seed", help="64 hexadecimal digits: the secret key; random without it")
    parser.add_argument("--wait", type=float, default=60, help="seconds to wait for the user")
    try:
        print(json.dumps(asyncio.run(run(parser.parse_args()))))
    except (Failure, OSError, asyncio.TimeoutError, websockets.WebSocketException) as failure:
        print(f"{type(failure).__name__}: {failure}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
