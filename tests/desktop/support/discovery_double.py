"""A stand-in for the service discovery daemon: takes every service and says that it is published.

Run as a program it offers itself on the session bus; a helper whose system bus address is the
session's finds it there.
"""

import subprocess
import sys

import dbus
import dbus.mainloop.glib
import dbus.service
from dbus.lowlevel import SignalMessage

NAME = "org.freedesktop.Avahi"
SERVER = NAME + ".Server"
GROUP = NAME + ".EntryGroup"
API_VERSION = 0x0201
SERVER_RUNNING = 2
UNCOMMITTED, REGISTERING, ESTABLISHED = range(3)


class Group(dbus.service.Object):
    state = UNCOMMITTED
    is_empty = True

    @dbus.service.method(GROUP, out_signature="i")
    def GetState(self):
        return self.state

    @dbus.service.method(GROUP, out_signature="b")
    def IsEmpty(self):
        return self.is_empty

    @dbus.service.method(GROUP, in_signature="iiussssqaay")
    def AddService(self, interface, protocol, flags, name, kind, domain, host, port, text):
        self.is_empty = False
        print("published", kind, name, flush=True)

    @dbus.service.method(GROUP, sender_keyword="client")
    def Commit(self, client):
        self.change(REGISTERING, client)
        self.change(ESTABLISHED, client)

    @dbus.service.method(GROUP, sender_keyword="client")
    def Reset(self, client):
        self.is_empty = True
        self.change(UNCOMMITTED, client)

    @dbus.service.method(GROUP)
    def Free(self):
        self.remove_from_connection()

    def change(self, state, client):
        """Told to the client alone, which listens to nothing else."""
        self.state = state
        signal = SignalMessage(self.__dbus_object_path__, GROUP, "StateChanged")
        signal.append(state, "", signature="is")
        signal.set_destination(client)
        self.connection.send_message(signal)


class Server(dbus.service.Object):
    def __init__(self, bus):
        super().__init__(bus, "/")
        self.bus = bus
        self.groups = []

    @dbus.service.method(SERVER, out_signature="u")
    def GetAPIVersion(self):
        return API_VERSION

    @dbus.service.method(SERVER, out_signature="i")
    def GetState(self):
        return SERVER_RUNNING

    @dbus.service.method(SERVER, out_signature="o")
    def EntryGroupNew(self):
        path = f"/Client1/EntryGroup{len(self.groups)}"
        self.groups.append(Group(self.bus, path))
        return path


def start_discovery(desktop):
    """The stand-in as a process of the desktop, for every helper started from now on."""
    double = desktop.spawn("discovery", [sys.executable, __file__], stdout=subprocess.PIPE,
                           text=True)
    if not double.stdout.readline().startswith("ready"):
        raise RuntimeError(desktop.log("discovery"))
    desktop.environment["DBUS_SYSTEM_BUS_ADDRESS"] = (
        desktop.environment["DBUS_SESSION_BUS_ADDRESS"])


def main():
    from gi.repository import GLib

    dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
    bus = dbus.SessionBus()
    name = dbus.service.BusName(NAME, bus)
    server = Server(bus)
    print("ready", flush=True)
    GLib.MainLoop().run()
    del name, server


if __name__ == "__main__":
    main()
