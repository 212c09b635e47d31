"""What a running process takes, from /proc."""

import glob
import os
import re


def cpu_seconds(pid):
    """Processor time of all its threads, to the nanosecond."""
    nanoseconds = 0
    for path in glob.glob(f"/proc/{pid}/task/*/schedstat"):
        nanoseconds += int(read(path).split()[0])
    return nanoseconds * 1e-9


def wake_ups(pid):
    """How often its threads went to sleep and came back."""
    switches = 0
    for path in glob.glob(f"/proc/{pid}/task/*/status"):
        switches += int(re.search(r"^voluntary_ctxt_switches:\s*(\d+)", read(path), re.M).group(1))
    return switches


def memory(pid, kind="Pss"):
    """In bytes. Pss: what is shared counts in equal parts for all who share it. Pss_Anon: of that,
    what is not a mapped file."""
    found = re.search(rf"^{kind}:\s*(\d+) kB", read(f"/proc/{pid}/smaps_rollup"), re.M)
    return int(found.group(1)) * 1024


def descriptors(pid):
    return len(os.listdir(f"/proc/{pid}/fd"))


def connections_to(port, pid):
    """How many of its descriptors are TCP connections to this port of any computer."""
    rows = (line.split() for line in read(f"/proc/{pid}/net/tcp").splitlines()[1:])
    sockets = {f"socket:[{row[9]}]" for row in rows if int(row[2].split(":")[1], 16) == port}
    count = 0
    for descriptor in os.listdir(f"/proc/{pid}/fd"):
        try:
            count += os.readlink(f"/proc/{pid}/fd/{descriptor}") in sockets
        except OSError:  # closed meanwhile
            continue
    return count


def threads(pid):
    return len(os.listdir(f"/proc/{pid}/task"))


def children(pid):
    """Its children: process identifier → state, "Z" for a zombie."""
    found = {}
    for path in glob.glob("/proc/[0-9]*/stat"):
        try:
            text = read(path)
        except OSError:
            continue  # ended meanwhile
        state, parent = text[text.rindex(")") + 1:].split()[:2]
        if int(parent) == pid:
            found[int(text.split()[0])] = state
    return found


def read(path):
    with open(path, encoding="utf-8", errors="replace") as file:
        return file.read()
