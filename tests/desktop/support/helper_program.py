"""The program on a private desktop, as a user has it who was welcomed before."""

import base64
import json
import os
import socket
import urllib.request

from private_desktop import DesktopError, wait_until

ENGINE_PORT = 8484
ENDING = 5  # seconds
PAIRING_WAIT = 1.2  # seconds in which the question about a new device takes no key, and some more
BUNDLE = "bundle/Torvane P2P Helper"  # in a build folder
IN_BUNDLE = "bin/torvane-p2p-helper"
PROGRAM = f"{BUNDLE}/{IN_BUNDLE}"
ANSWERED_BEFORE = {"didShowWelcome": True, "fdaNudgeShown": True}


def require_free_engine_port():
    """Ends this program with a message when the port is taken, and not by an engine that is just
    ending: a helper that quits does not wait for its own."""
    try:
        wait_until(lambda: not engine_listens(), "the port's end of use", ENDING)
    except DesktopError:
        raise SystemExit(
            f"Port {ENGINE_PORT} is taken, and the program knows no other for its engine.\n"
            "End what listens there (a running helper has its engine there) and start again.")


def engine_listens():
    with socket.socket() as probe:
        return probe.connect_ex(("127.0.0.1", ENGINE_PORT)) == 0


def engine_answers():
    try:
        with urllib.request.urlopen(f"http://127.0.0.1:{ENGINE_PORT}/api/state", timeout=2) as got:
            return got.status == 200
    except OSError:
        return False


def start_helper(desktop, build, around=()):
    """Starts it without a first welcome; `build` is the build folder, `around` a command that runs
    the program."""
    return start_bundle(desktop, os.path.join(build, BUNDLE), around)


def start_bundle(desktop, bundle, around=()):
    """The same, wherever its bundle is."""
    write_defaults(desktop.environment["XDG_CONFIG_HOME"])
    return desktop.spawn("helper", [*around, os.path.join(bundle, IN_BUNDLE)])


def write_defaults(folder, paired=()):
    """Those of a user who was welcomed before, unless there are some in this configuration folder.
    `paired`: signing keys of devices."""
    path = os.path.join(folder, "torvane", "defaults.json")
    os.makedirs(os.path.dirname(path), mode=0o700, exist_ok=True)
    if os.path.exists(path):
        return
    keys = {base64.b64encode(bytes(key.verify_key)).decode(): "iPad" for key in paired}
    with open(path, "w", encoding="utf-8") as file:
        json.dump({**ANSWERED_BEFORE, **({"pairedDeviceKeys": keys} if keys else {})}, file)


def link_port(desktop):
    """Where the desktop's helper listens; none while it does not."""
    return listening_port(desktop.environment["XDG_RUNTIME_DIR"])


def listening_port(runtime):
    """The same, by the folder of the user's sockets."""
    try:
        with open(os.path.join(runtime, "torvane", "peer-link.json"), encoding="utf-8") as file:
            return json.load(file)["port"]
    except FileNotFoundError:
        return None


def press_first_button(desktop):
    """Answers an open alert of the program with its first button; whether there was one."""
    windows = desktop.windows("--name", "^Torvane P2P Helper$")
    if not windows or desktop.active_window() not in windows:
        return False
    desktop.run("xdotool", "key", "Return")
    return True


def pair(desktop, tool, *options):
    """Lets the devices of torvane-ipad in, by pressing "Pair" for each."""
    wait_until(lambda: link_port(desktop), "a helper that listens")
    pairing = desktop.spawn("pair", [tool, "pair", "--approval", "60", *options])

    def has_ended():
        press_first_button(desktop)
        return pairing.poll() is not None

    wait_until(has_ended, "pairing", seconds=60)
    if pairing.returncode != 0:
        raise SystemExit("pairing failed:\n" + desktop.log("pair"))
