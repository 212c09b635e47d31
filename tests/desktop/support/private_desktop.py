"""A desktop of one's own: a display without a screen, a session bus and folders nobody else uses.

Everything is started here, lives in one temporary folder and ends with the `with` block:

    with PrivateDesktop() as desktop:
        desktop.start_windows()
        helper = desktop.spawn("helper", ["/path/to/program"])
"""

import ctypes
import importlib.util
import os
import shutil
import signal
import struct
import subprocess
import tempfile
import time

WIDTH, HEIGHT = 1280, 800
PATIENCE = 60  # seconds; a busy computer is not a failure

BUS_CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path={socket}</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""

PANEL_CONFIGURATION = """rounded = 0
border_width = 0
background_color = {colour} 100
panel_items = FSC
panel_position = top center horizontal
panel_size = 100% 30
panel_background_id = 1
panel_padding = 8 2 12
panel_layer = top
systray_padding = 4 2 6
systray_icon_size = 22
time1_format = %H:%M
time1_font = DejaVu Sans 10
clock_font_color = {text} 100
clock_padding = 10 0
"""


TOOLS = ("Xvfb", "dbus-daemon", "openbox", "picom", "tint2", "hsetroot", "xdotool", "xprop", "import")
STAND_IN_VIEWER = os.path.join(  # a show that covers nothing of the screen
    os.path.dirname(os.path.abspath(__file__)), "../../engine/stand_in_viewer")
OPENBOX = ["openbox", "--sm-disable"]
ACCESSIBILITY = "/usr/libexec/at-spi-bus-launcher"
PICOM = ["picom", "--backend", "xrender", "--config", "/dev/null"]
SKIPPED = 77  # the exit status by which ctest knows a skipped test


def skip_where_incomplete(modules=(), tools=()):
    """Ends a test program where this computer lacks what a desktop is made of, or what is named."""
    missing = [tool for tool in (*TOOLS, *tools) if not shutil.which(tool)]
    missing += [module for module in modules if not importlib.util.find_spec(module)]
    if missing:
        print("skipped, because this is missing:", ", ".join(missing))
        print("scripts/install-deps scene installs it.")
        raise SystemExit(SKIPPED)


class DesktopError(Exception):
    """Something of the desktop itself did not come up."""


def wait_until(condition, what, seconds=PATIENCE):
    """The first true result of `condition`, asked again and again."""
    deadline = time.monotonic() + seconds
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > deadline:
            raise DesktopError(f"{what}: nothing after {seconds} s")
        time.sleep(0.05)


class PrivateDesktop:
    def __init__(self):
        self.folder = tempfile.mkdtemp(prefix="torvane-desktop-")
        self.processes = []
        self.environment = self._make_environment()

    def __enter__(self):
        try:
            self._start_display()
            self._start_bus()
        except BaseException:
            self.close()
            raise
        return self

    def __exit__(self, *_):
        self.close()

    # What runs on it

    def spawn(self, name, command, **options):
        """Starts a program of this desktop; its output goes to NAME.log in the folder."""
        with open(self.log_path(name), "ab") as log:
            options.setdefault("stdin", subprocess.DEVNULL)
            options.setdefault("stdout", log)
            process = subprocess.Popen(
                command, env=self.environment, stderr=log, preexec_fn=end_with_parent, **options
            )
        process.name = name
        self.processes.append(process)
        return process

    def run(self, *command, check=True, seconds=PATIENCE, text=True):
        """Runs a tool to its end; what it printed."""
        done = subprocess.run(
            command, env=self.environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
            stderr=subprocess.PIPE, timeout=seconds, text=text,
        )
        if check and done.returncode != 0:
            raise DesktopError(f"{' '.join(command)}: {done.stderr.strip() or done.returncode}")
        return done.stdout

    def log_path(self, name):
        return os.path.join(self.folder, name + ".log")

    def log(self, name):
        try:
            with open(self.log_path(name), encoding="utf-8", errors="replace") as log:
                return log.read()
        except FileNotFoundError:
            return ""

    # Windows

    def start_windows(self, manager=OPENBOX, compositor=PICOM):
        """A window manager and, if there is to be one, a compositor; the latter."""
        self.spawn("windows", manager)
        wait_until(lambda: "window id" in self.run(
            "xprop", "-root", "_NET_SUPPORTING_WM_CHECK", check=False), "the window manager")
        self.run("hsetroot", "-add", "#5d7fa3", "-add", "#33475b", "-gradient", "180")
        return self.start_compositor(compositor) if compositor else None

    def start_compositor(self, command):
        return self.spawn("compositor", command)

    def start_panel(self, colour="#f2f2f4", text="#202024"):
        """A panel with an XEmbed tray."""
        path = os.path.join(self.folder, "panel.conf")
        with open(path, "w", encoding="utf-8") as file:
            file.write(PANEL_CONFIGURATION.format(colour=colour, text=text))
        panel = self.spawn("panel", ["tint2", "-c", path])
        wait_until(lambda: self.windows("--class", "tint2"), "the panel")
        return panel

    def windows(self, *search):
        """The windows that xdotool finds, visible ones only."""
        found = self.run("xdotool", "search", "--onlyvisible", *search, check=False)
        return [int(line) for line in found.split()]

    def geometry(self, window):
        """x, y, width and height on the screen."""
        lines = self.run("xdotool", "getwindowgeometry", "--shell", str(window)).split()
        values = dict(line.split("=") for line in lines)
        return tuple(int(values[name]) for name in ("X", "Y", "WIDTH", "HEIGHT"))

    def active_window(self):
        found = self.run("xdotool", "getactivewindow", check=False).strip()
        return int(found) if found else None

    def screenshot(self, path, area=None):
        """A picture of the screen, or of x, y, width and height of it."""
        crop = ["-crop", "{2}x{3}+{0}+{1}".format(*area), "+repage"] if area else []
        self.run("import", "-silent", "-window", "root", *crop,
                 "-define", "png:exclude-chunk=date,tEXt,tIME", path)

    def pixels(self):
        """Red, green and blue of each pixel of the screen, row by row."""
        return self.run("import", "-silent", "-window", "root", "-depth", "8", "rgb:-", text=False)

    def colours(self, left, top, width, height):
        """Blue, green and red of each pixel of an area, row by row. Unlike the tools' pictures it
        waits for nobody, whoever has the display to himself at the moment."""
        with open(os.path.join(self.folder, "Xvfb_screen0"), "rb") as screen:
            header = struct.unpack(">25I", screen.read(100))
            size, bits, line, colours = header[0], header[11], header[12], header[19]
            step = bits // 8
            first = size + colours * 12 + left * step  # there are twelve bytes for each colour
            rows = []
            for row in range(top, top + height):
                screen.seek(first + row * line)
                pixels = screen.read(width * step)
                rows.append([pixels[at:at + 3] for at in range(0, len(pixels), step)])
            return rows

    # Beginning and end

    def _make_environment(self):
        environment = {
            name: os.environ[name] for name in ("PATH", "TERM", "TZ", "ASAN_OPTIONS",
                                                "LSAN_OPTIONS", "UBSAN_OPTIONS") if name in os.environ
        }
        environment["LANG"] = "C.UTF-8"
        folders = {
            "HOME": "home", "XDG_CONFIG_HOME": "home/.config", "XDG_DATA_HOME": "home/.local/share",
            "XDG_STATE_HOME": "home/.local/state",
            "XDG_CACHE_HOME": "home/.cache", "XDG_RUNTIME_DIR": "runtime", "TMPDIR": "tmp",
        }
        for name, folder in folders.items():
            environment[name] = os.path.join(self.folder, folder)
            os.makedirs(environment[name], mode=0o700, exist_ok=True)
        # Nothing of the computer's own services, and nothing published on its networks.
        environment["DBUS_SYSTEM_BUS_ADDRESS"] = f"unix:path={self.folder}/no-system-bus"
        environment["TORVANE_SHOW"] = STAND_IN_VIEWER
        return environment

    def _start_display(self):
        read_end, write_end = os.pipe()
        self.spawn("display", [
            "Xvfb", "-displayfd", str(write_end), "-screen", "0", f"{WIDTH}x{HEIGHT}x24",
            "-fbdir", self.folder, "-nolisten", "tcp", "-noreset"], pass_fds=[write_end])
        os.close(write_end)
        with os.fdopen(read_end) as pipe:
            number = pipe.readline().strip()
        if not number:
            raise DesktopError("Xvfb did not start: " + self.log("display"))
        self.environment["DISPLAY"] = ":" + number

    def _start_bus(self):
        socket = os.path.join(self.folder, "bus")
        path = os.path.join(self.folder, "bus.conf")
        with open(path, "w", encoding="utf-8") as file:
            file.write(BUS_CONFIGURATION.format(socket=socket))
        self.spawn("bus", ["dbus-daemon", "--nofork", "--config-file", path])
        wait_until(lambda: os.path.exists(socket), "the session bus")
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=" + socket

    def close(self):
        for process in reversed(self.processes):
            end(process)
        self.processes = []
        shutil.rmtree(self.folder, ignore_errors=True)


def end_with_parent():
    """In a new process: nothing of a desktop outlives the program that made it."""
    set_parent_death_signal = 1
    ctypes.CDLL(None).prctl(set_parent_death_signal, signal.SIGTERM)


def end(process, seconds=5):
    """Ends one process, politely at first."""
    for how in (signal.SIGTERM, signal.SIGKILL):
        if process.poll() is not None:
            break
        process.send_signal(how)
        try:
            process.wait(seconds)
        except subprocess.TimeoutExpired:
            continue
    for pipe in (process.stdin, process.stdout):
        if pipe:
            pipe.close()
