"""What the program's menu says, as a panel shows it: "-" for a separator."""

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
