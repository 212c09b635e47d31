"""A helper for tests of torvane-ipad: honest by default, and as rude as a test wants it."""
import asyncio
import base64
import hashlib
import http
import json
import socket
import ssl
import struct
import subprocess
import threading
import uuid

import nacl.exceptions
import nacl.signing
import websockets

SUBPROTOCOL = "torvane.link.2"
NONCE = bytes(range(32))
PAIRING_NONCE = bytes(range(32, 64))
COMMITMENT = hashlib.sha256(PAIRING_NONCE).digest()


def base64_text(data):
    return base64.b64encode(data).decode()


def encode(header, body=b""):
    text = json.dumps(header).encode()
    return struct.pack(">I", len(text)) + text + body


def decode(frame):
    length, = struct.unpack(">I", frame[:4])
    return json.loads(frame[4:4 + length]), frame[4 + length:]


def reply(number, body=b"{}", status=200, content_type="application/json", **more):
    return encode({"id": number, "status": status, "contentType": content_type, **more}, body)


class Certificate:
    def __init__(self, folder, name="helper"):
        self.file = f"{folder}/{name}.pem"
        subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt",
                        "ec_paramgen_curve:P-256", "-nodes", "-days", "2", "-subj", "/CN=helper",
                        "-keyout", self.file, "-out", self.file + ".crt"],
                       check=True, capture_output=True)
        with open(self.file + ".crt", encoding="ascii") as crt:
            text = crt.read()
        with open(self.file, "a", encoding="ascii") as both:
            both.write(text)
        self.digest = hashlib.sha256(ssl.PEM_cert_to_DER_cert(text)).digest()
        self.fingerprint = self.digest.hex()


class ScriptedHelper:
    """Serves on a loopback port while it is entered. Override what should go wrong."""

    subprotocols = [SUBPROTOCOL]
    newest_tls = ssl.TLSVersion.TLSv1_3

    def __init__(self, certificate, port=0):
        self.certificate = certificate
        self.port = port
        self.invitations = []  # (name, device key)
        self.requests = []     # inner headers and bodies, in order
        self.refused = 0       # requests with a wrong signature
        self.faults = []
        self.digits = None     # of the last invitation

    # ------------------------------------------------------------- what tests override

    async def greet(self, ws):
        await ws.send(json.dumps({"type": "hello", "version": 2, "name": "Scripted",
                                  "nonce": base64_text(NONCE),
                                  "commitment": base64_text(COMMITMENT)}))

    def opening(self):
        return PAIRING_NONCE

    async def answer_invitation(self, ws):
        await ws.send('{"type":"accepted"}')
        return True

    def new_challenge(self):
        return str(uuid.uuid4()).upper()

    def engine(self, header, body):
        """The engine's status, content type and body."""
        return 200, "application/json", b"{}"

    async def serve_frame(self, ws, state, frame):
        header, body = decode(frame)
        if header.get("path") == "/p2p/auth":
            await ws.send(reply(header["id"], json.dumps({"challenge": state["challenge"]}).encode()))
            return
        try:
            state["key"].verify(state["challenge"].encode() + body,
                                base64.b64decode(header["signature"]))
        except (nacl.exceptions.BadSignatureError, KeyError):
            self.refused += 1
            return
        inner, inner_body = decode(body)
        if inner["id"] not in state["ids"]:
            state["ids"].add(inner["id"])
            self.requests.append((inner, inner_body))
            await self.serve_request(ws, inner, inner_body)

    async def serve_request(self, ws, header, body):
        if header["path"] == "/p2p/bridge-info":
            await ws.send(reply(header["id"], b'{"version":"42"}'))
        else:
            status, content_type, answer = self.engine(header, body)
            await ws.send(reply(header["id"], answer, status, content_type))

    # ------------------------------------------------------------------------ the rest

    async def _invite(self, ws):
        invite = json.loads(await ws.recv())
        key = base64.b64decode(invite["context"])
        self.invitations.append((invite["name"], invite["context"]))
        nonce = base64.b64decode(invite["nonce"])
        proof = (b"torvane-peer-link-2" + NONCE + self.certificate.digest + COMMITMENT + nonce)
        number = int.from_bytes(hashlib.sha256(
            b"torvane-pairing-digits-2" + key + self.certificate.digest + PAIRING_NONCE +
            nonce).digest()[:8], "big") % 10 ** 6
        self.digits = f"{number // 1000:03} {number % 1000:03}"
        verify_key = nacl.signing.VerifyKey(key)
        verify_key.verify(proof, base64.b64decode(invite["signature"]))
        return {"key": verify_key, "ids": set(), "challenge": self.new_challenge()}

    async def _serve(self, ws):
        try:
            await self.greet(ws)
            state = await self._invite(ws)
            await ws.send(json.dumps({"type": "waiting", "opening": base64_text(self.opening())}))
            if not await self.answer_invitation(ws):
                await ws.close(1008)
                return
            async for frame in ws:
                await self.serve_frame(ws, state, frame)
        except websockets.ConnectionClosed:
            pass
        except Exception as error:  # pylint: disable=broad-except
            self.faults.append(repr(error))

    async def _refuse_other_paths(self, path, _headers):
        return None if path == "/link" else (http.HTTPStatus.NOT_FOUND, [], b"")

    async def _main(self, started):
        tls = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        tls.load_cert_chain(self.certificate.file)
        tls.maximum_version = self.newest_tls
        self._loop = asyncio.get_running_loop()
        self._stop = asyncio.Event()
        async with websockets.serve(self._serve, "127.0.0.1", self.port, ssl=tls,
                                    subprotocols=self.subprotocols, compression=None,
                                    process_request=self._refuse_other_paths,
                                    ping_interval=None) as server:
            self.port = server.sockets[0].getsockname()[1]
            started.set()
            await self._stop.wait()

    def __enter__(self):
        started = threading.Event()
        self._thread = threading.Thread(target=lambda: asyncio.run(self._main(started)))
        self._thread.start()
        if not started.wait(20):
            raise RuntimeError("the scripted helper does not start")
        return self

    def __exit__(self, *_):
        self._loop.call_soon_threadsafe(self._stop.set)
        self._thread.join()


class PlainServer:
    """Accepts TCP connections, says `greeting` and hangs up, or says nothing and stays."""

    def __init__(self, greeting):
        self._greeting = greeting
        self._kept = []

    def _accept(self):
        while True:
            try:
                client, _ = self._listener.accept()
            except OSError:
                return
            self._kept.append(client)
            if self._greeting is not None:
                client.sendall(self._greeting)
                client.close()

    def __enter__(self):
        self._listener = socket.create_server(("127.0.0.1", 0))
        self.port = self._listener.getsockname()[1]
        self._thread = threading.Thread(target=self._accept)
        self._thread.start()
        return self

    def __exit__(self, *_):
        self._listener.shutdown(socket.SHUT_RDWR)
        self._listener.close()
        self._thread.join()
        for client in self._kept:
            client.close()
