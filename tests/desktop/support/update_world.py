"""A computer of its own for updates: the whole file system, copied on write, with stand-ins for the
system's tools at their real paths, and an update site with a certificate that this computer trusts.

Needs the superuser. Nothing of it is seen outside, and all of it ends with the test program."""

import hashlib
import os
import shutil
import ssl
import stat
import subprocess
import sys
import tempfile
import threading
import urllib.parse
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

from private_desktop import SKIPPED

INSIDE = "TORVANE_UPDATE_WORLD"
CONTROL = "/run/torvane-update-test"  # what the stand-ins are told, and what they say
TOOLS = {
    "ditto": "/usr/bin/ditto", "spctl": "/usr/sbin/spctl", "codesign": "/usr/bin/codesign",
    "PlistBuddy": "/usr/libexec/PlistBuddy", "open": "/usr/bin/open",
}
STAND_IN = os.path.join(os.path.dirname(os.path.abspath(__file__)), "system_tool.py")


def skip(why):
    print("skipped:", why)
    raise SystemExit(SKIPPED)


def run(*command, **options):
    return subprocess.run(command, check=True, **options)


def enter(*folders):
    """Starts this program again in a world of its own and enters it there. `folders` are kept as
    they are."""
    world = os.environ.get(INSIDE)
    if world:
        build(world, folders)
        return
    if os.geteuid() != 0:
        skip("a file system of its own needs the superuser")
    missing = [tool for tool in ("unshare", "mount", "ip", "openssl") if not shutil.which(tool)]
    if missing:
        skip("there is no " + ", ".join(missing))
    unshare = ["unshare", "--mount", "--net", "--pid", "--fork", "--kill-child"]
    if subprocess.run([*unshare, "true"], check=False, capture_output=True).returncode != 0:
        skip("this computer does not let a program have name spaces of its own")
    world = tempfile.mkdtemp(prefix="torvane-update-")
    done = subprocess.run([*unshare, sys.executable, *sys.argv], check=False,
                          env={**os.environ, INSIDE: world, "PYTHONDONTWRITEBYTECODE": "1"})
    os.rmdir(world)
    raise SystemExit(done.returncode)


def build(world, folders):
    """The file system of this process from here on is a copy of what it was."""
    run("mount", "--make-rprivate", "/")
    run("mount", "-t", "tmpfs", "-o", "mode=0755", "tmpfs", world)
    upper, work, root = (os.path.join(world, name) for name in ("upper", "work", "root"))
    for folder in (upper, work, root):
        os.mkdir(folder, 0o755)
    layers = f"lowerdir=/,upperdir={upper},workdir={work}"
    if subprocess.run(["mount", "-t", "overlay", "-o", layers, "overlay", root],
                      check=False).returncode != 0:
        skip("this computer cannot lay one file system over another")
    run("mount", "--rbind", "/dev", root + "/dev")
    run("mount", "-t", "proc", "proc", root + "/proc")
    for place in ("/tmp", "/run"):
        run("mount", "-t", "tmpfs", "-o", "mode=1777", "tmpfs", root + place)
    for folder in folders:
        os.makedirs(root + folder, exist_ok=True)
        run("mount", "--bind", folder, root + folder)
    os.chroot(root)
    os.chdir("/")
    run("ip", "link", "set", "lo", "up")
    os.makedirs("/Applications", exist_ok=True)
    os.makedirs(CONTROL)
    for path in TOOLS.values():
        os.makedirs(os.path.dirname(path), exist_ok=True)
        shutil.copy(STAND_IN, path)
        os.chmod(path, 0o755)


class Site:
    """The update site: its version text and archive, and how it treats who asks for the latter."""

    def __init__(self, host, port):
        self.host = host
        self.version = b""
        self.archive = b""
        self.status = 200
        self.cut = False  # ends the connection in the middle of the archive
        self.hold = threading.Event()  # the second half of the archive waits for it
        self.hold.set()
        self.requests = []
        self.certificate = self._make_certificate("trusted", host)
        self.server = ThreadingHTTPServer(("127.0.0.1", port), self._handler())
        self.server.daemon_threads = True
        self.server.handle_error = lambda *_: None  # who does not trust us hangs up
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(self.certificate + ".pem", self.certificate + ".key")
        self.server.socket = context.wrap_socket(self.server.socket, server_side=True,
                                                 do_handshake_on_connect=False)
        threading.Thread(target=self.server.serve_forever, daemon=True).start()
        with open("/etc/hosts", "w", encoding="ascii") as hosts:
            hosts.write(f"127.0.0.1 localhost {host}\n")

    def requests_for(self, path):
        return len([request for request in self.requests if path in request])

    @classmethod
    def trusted_at(cls, base):
        """The one with this address, whose certificate this computer trusts."""
        address = urllib.parse.urlsplit(base)
        site = cls(address.hostname, address.port or 443)
        cls.trust(site.certificate)
        return site

    @staticmethod
    def trust(certificate):
        os.makedirs("/etc/ssl/certs", exist_ok=True)
        shutil.copy(certificate + ".pem", "/etc/ssl/certs/ca-certificates.crt")

    @staticmethod
    def _make_certificate(name, host):
        path = os.path.join(CONTROL, name)
        run("openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256",
            "-nodes", "-days", "2", "-subj", f"/CN={host}", "-addext",
            f"subjectAltName=DNS:{host}", "-keyout", path + ".key", "-out", path + ".pem",
            stderr=subprocess.DEVNULL)
        return path

    def another_certificate(self, host):
        """One for the same name, by somebody else."""
        return self._make_certificate("another", host)

    def _handler(self):
        site = self

        class Handler(BaseHTTPRequestHandler):
            protocol_version = "HTTP/1.1"

            def do_GET(self):
                version = site.version  # as it is before anybody knows of this request
                site.requests.append(self.path)
                if "/version.txt?t=" in self.path:
                    self.answer(200, version)
                elif "/Torvane-P2P-Mac.zip?t=" in self.path:
                    self.answer(site.status, site.archive, site.cut, site.hold)
                else:
                    self.answer(404, b"")

            def answer(self, status, body, cut=False, hold=None):
                self.send_response(status)
                self.send_header("Content-Length", str(len(body)))
                self.end_headers()
                self.wfile.write(body[:len(body) // 2])
                self.wfile.flush()
                if cut:
                    self.close_connection = True
                    return
                if hold:
                    hold.wait(60)
                self.wfile.write(body[len(body) // 2:])

            def log_message(self, *_):
                pass

        return Handler


def size_of(folder):
    """Bytes in all its files."""
    return sum(os.lstat(os.path.join(place, name)).st_size
               for place, _, files in os.walk(folder) for name in files)


def tree(folder):
    """Everything a folder holds, to compare it with later."""
    found = {}
    for place, folders, files in os.walk(folder):
        for name in folders + files:
            path = os.path.join(place, name)
            status = os.lstat(path)
            if stat.S_ISLNK(status.st_mode):
                content = os.readlink(path)
            elif stat.S_ISREG(status.st_mode):
                with open(path, "rb") as file:
                    content = hashlib.file_digest(file, "sha256").hexdigest()
            else:
                content = None
            found[os.path.relpath(path, folder)] = (status.st_mode, content)
    return found
