"""What the program's menu says, as a panel shows it: "-" for a separator."""

import fcntl
import socket
import struct

FLAGS, ADDRESS = 0x8913, 0x8915  # SIOCGIFFLAGS, SIOCGIFADDR
UP, LOOPBACK, RUNNING = 0x1, 0x8, 0x40


def _own_addresses():
    """Of IP version 4, one of each network."""
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as probe:
        for _, name in socket.if_nameindex():
            asked = struct.pack("40s", name.encode())
            flags = struct.unpack_from("H", fcntl.ioctl(probe, FLAGS, asked), 16)[0]
            if flags & (UP | LOOPBACK | RUNNING) != UP | RUNNING:
                continue
            try:
                yield socket.inet_ntoa(fcntl.ioctl(probe, ADDRESS, asked)[20:24])
            except OSError:
                pass  # it has none


def connect_by_address():
    """The lines that say by what addresses to connect, while nobody is."""
    addresses = [address + ":48484" for address in _own_addresses()]
    if len(addresses) == 1:
        return ["Connect by address: " + addresses[0]]
    return addresses and ["Connect by address:", *("    " + address for address in addresses)]


ENGINE_ON = ["Presentation server running on port 8484", "Stop Server", "-"]
ENGINE_OFF = ["Presentation server not running", "Start Server", "-"]
REST = ["How Does This Work?", "Launch at Login", "Quit"]
FORGET = "Forget Paired Devices…"


def connected_menu(name, *update):
    """The texts while this device is paired and connected and the engine runs; `update`: what there
    is of updates."""
    return ["Connected:", "    " + name, "-", *ENGINE_ON, *paired(name), *update, *REST]


def paired(name):
    return ["Paired devices:", "    " + name, FORGET, "-"]
