"""A panel's side of the StatusNotifier protocol: the watcher, the host and the menu's client."""

import subprocess
import sys

import dbus
import dbus.mainloop.glib
import dbus.service

WATCHER = "org.kde.StatusNotifierWatcher"
ITEM = "org.kde.StatusNotifierItem"
MENU = "com.canonical.dbusmenu"
PROPERTIES = "org.freedesktop.DBus.Properties"

DECLARED = (
    f'<interface name="{WATCHER}">'
    '<property name="IsStatusNotifierHostRegistered" type="b" access="read"/>'
    '<property name="ProtocolVersion" type="i" access="read"/>'
    '<property name="RegisteredStatusNotifierItems" type="as" access="read"/>'
)


class Watcher(dbus.service.Object):
    """Prints the name of each item that registers."""

    def __init__(self, bus):
        self.items = []
        super().__init__(bus, "/StatusNotifierWatcher")

    @dbus.service.method(WATCHER, in_signature="s", sender_keyword="sender")
    def RegisterStatusNotifierItem(self, service, sender=None):
        self.items.append(service)
        print(service if not service.startswith("/") else sender, flush=True)
        self.StatusNotifierItemRegistered(service)

    @dbus.service.method(WATCHER, in_signature="s")
    def RegisterStatusNotifierHost(self, service):
        self.StatusNotifierHostRegistered()

    @dbus.service.signal(WATCHER, signature="s")
    def StatusNotifierItemRegistered(self, service):
        pass

    @dbus.service.signal(WATCHER)
    def StatusNotifierHostRegistered(self):
        pass

    # Qt believes only in properties that the introspection declares.
    @dbus.service.method("org.freedesktop.DBus.Introspectable", out_signature="s",
                         path_keyword="object_path", connection_keyword="connection")
    def Introspect(self, object_path, connection):
        text = dbus.service.Object.Introspect(self, object_path, connection)
        return text.replace(f'<interface name="{WATCHER}">', DECLARED)

    @dbus.service.method(PROPERTIES, in_signature="ss", out_signature="v")
    def Get(self, interface, name):
        return self.GetAll(interface)[name]

    @dbus.service.method(PROPERTIES, in_signature="s", out_signature="a{sv}")
    def GetAll(self, interface):
        return {
            "RegisteredStatusNotifierItems": dbus.Array(self.items, signature="s"),
            "IsStatusNotifierHostRegistered": True,
            "ProtocolVersion": dbus.Int32(0),
        }


class Item:
    """One status item, as the panel sees it."""

    def __init__(self, address, service):
        self.bus = dbus.bus.BusConnection(address)
        self.service = service
        self.object = self.bus.get_object(service, "/StatusNotifierItem", introspect=False)
        menu_path = str(self.properties()["Menu"])
        menu_object = self.bus.get_object(service, menu_path, introspect=False)
        self.menu = dbus.Interface(menu_object, MENU)

    def properties(self):
        return dbus.Interface(self.object, PROPERTIES).GetAll(ITEM)

    def picture(self):
        """Width, height and ARGB bytes of the largest picture offered."""
        pictures = self.properties()["IconPixmap"]
        width, height, data = max(pictures, key=lambda picture: picture[0])
        return int(width), int(height), bytes(data)

    def activate(self):
        dbus.Interface(self.object, ITEM).Activate(100, 100)

    def layout(self):
        """The menu as it was last announced: id and properties of each entry."""
        _, (_, _, children) = self.menu.GetLayout(0, -1, dbus.Array([], signature="s"))
        return [(int(number), properties) for number, properties, _ in children]

    def entries(self):
        """The same as the panel gets it when it is about to open."""
        self.menu.AboutToShow(0)
        return self.layout()

    def labels(self):
        """The texts as a panel shows them, "-" for a separator."""
        return [shown(str(properties.get("label", ""))) if properties.get("type") != "separator"
                else "-" for _, properties in self.entries()]

    def number(self, label):
        """By which the panel knows the entry of this label."""
        for number, properties in self.entries():
            if shown(str(properties.get("label", ""))) == label:
                return number
        raise LookupError(label)

    def click(self, number, seconds=3):
        self.menu.Event(number, "clicked", dbus.Int32(0, variant_level=1), dbus.UInt32(0),
                        timeout=seconds)

    def choose(self, label):
        self.click(self.number(label))

    def commands(self):
        """The texts of what can be chosen."""
        return [shown(str(properties["label"])) for _, properties in self.entries()
                if properties.get("type") != "separator" and properties.get("enabled", True)]


def shown(label):
    """Two underscores are one, a single one marks the key that follows."""
    return "_".join(part.replace("_", "") for part in label.split("__"))


def start_watcher(desktop):
    """The watcher as a process of the desktop; each line it prints is an item."""
    return desktop.spawn("watcher", [sys.executable, __file__], stdout=subprocess.PIPE, text=True)


def main():
    from gi.repository import GLib

    dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
    bus = dbus.SessionBus()
    names = [dbus.service.BusName("org.kde.StatusNotifierHost-1", bus)]
    names.append(dbus.service.BusName(WATCHER, bus))
    watcher = Watcher(bus)
    print("ready", len(names), flush=True)
    GLib.MainLoop().run()
    del watcher, names


if __name__ == "__main__":
    main()
