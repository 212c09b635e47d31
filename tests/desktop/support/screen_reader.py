"""What a screen reader hears of the program and does in it, on an accessibility bus of its own."""

import dbus

from private_desktop import ACCESSIBILITY, DesktopError, wait_until

ENVIRONMENT = {"QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1"}

ROOT = "/org/a11y/atspi/accessible/root"
ACCESSIBLE = "org.a11y.atspi.Accessible"
COMPONENT = "org.a11y.atspi.Component"
ACTION = "org.a11y.atspi.Action"
PROPERTIES = "org.freedesktop.DBus.Properties"
SHOWING = 25  # the bit of a state
PATIENCE_FOR_ONE = 5  # seconds

PROGRAM = "Torvane P2P Helper"


class Part:
    """A window, or something in it."""

    def __init__(self, bus, service, path):
        self.bus = bus
        self.object = bus.get_object(service, path, introspect=False)

    def call(self, interface, method, *arguments):
        # What has closed meanwhile may never answer.
        return getattr(dbus.Interface(self.object, interface), method)(
            *arguments, timeout=PATIENCE_FOR_ONE)

    def text(self, which):
        return str(self.call(PROPERTIES, "Get", ACCESSIBLE, which))

    @property
    def name(self):
        return self.text("Name")

    @property
    def role(self):
        return str(self.call(ACCESSIBLE, "GetRoleName"))

    def is_showing(self):
        low, _ = self.call(ACCESSIBLE, "GetState")
        return bool(int(low) >> SHOWING & 1)

    def children(self):
        return [Part(self.bus, str(service), str(path))
                for service, path in self.call(ACCESSIBLE, "GetChildren")]

    def within(self, role):
        """All parts of this role, however deep they are."""
        found = []
        for child in self.children():
            found += [child] if child.role == role else child.within(role)
        return found

    def middle(self):
        """Where it is on the screen."""
        x, y, width, height = self.call(COMPONENT, "GetExtents", 0)
        return int(x) + int(width) // 2, int(y) + int(height) // 2

    def press(self):
        names = [str(name).lower() for name, _, _ in self.call(ACTION, "GetActions")]
        self.call(ACTION, "DoAction", names.index("press"))


class Alert:
    """An open alert as it is read out."""

    def __init__(self, window):
        self.window = window
        self.name = window.name
        self.texts = [label.name for label in window.within("label") if label.name]
        self.buttons = {button.name: button for button in window.within("push button")}


class ScreenReader:
    def __init__(self, desktop):
        desktop.environment.update(ENVIRONMENT)
        desktop.spawn("accessibility", [ACCESSIBILITY, "--launch-immediately"])
        session = dbus.bus.BusConnection(desktop.environment["DBUS_SESSION_BUS_ADDRESS"])
        wait_until(lambda: session.name_has_owner("org.a11y.Bus"), "the accessibility bus")
        service = session.get_object("org.a11y.Bus", "/org/a11y/bus", introspect=False)
        self.bus = dbus.bus.BusConnection(
            str(dbus.Interface(service, "org.a11y.Bus").GetAddress()))

    def alerts(self):
        """Those on the screen now."""
        return wait_until(self._alerts_at_once, "an answer")[0]

    def _alerts_at_once(self):
        """A list in a list; none when something closed while it was read."""
        try:
            programs = [child for child in self._everything().children() if child.name == PROGRAM]
            windows = [window for program in programs for window in program.children()]
            return [[Alert(window) for window in windows
                     if window.role.startswith("alert") and window.is_showing()]]
        except dbus.DBusException:
            return None

    def alert(self, name):
        """The one of this name, once it is there."""
        def found():
            return next((alert for alert in self.alerts() if alert.name == name), None)

        try:
            return wait_until(found, name)
        except DesktopError as error:
            names = [alert.name for alert in self.alerts()]
            raise DesktopError(f"{error}; there are {names}") from None

    def _everything(self):
        return Part(self.bus, "org.a11y.atspi.Registry", ROOT)
