#!/usr/bin/python3 -IS
"""Stands in for one of a system's tools, by the name it is called. Each does what an update needs
of it, with the same command line, exit status and lines of output:

  ditto -x -k ARCHIVE FOLDER   unpacks; refuses entries that lead out of the folder
  ditto FROM TO                copies a folder
  spctl -a -t exec APP         refuses an application without a signature, or with one that is
                               not notarized
  codesign -dv --verbose=2 APP prints whose the signature is
  PlistBuddy -c "Print :KEY" PLIST
  open APP                     runs its program

A signature is a JSON file in the application. When a file says "kill" or "wait" under this tool's
name in the control folder, the tool gets no further than half of its work, or only once the file is
gone; NAME-reached holds its process ID then."""

import json
import os
import plistlib
import shutil
import signal
import stat
import sys
import time
import zipfile

CONTROL = "/run/torvane-update-test"


def half_way(name):
    """What a test wants to happen in the middle of this tool's work."""
    wish = wished(name)
    if not wish:
        return
    with open(f"{CONTROL}/{name}-began", "w", encoding="ascii") as file:
        file.write(str(os.getpid()))
    os.rename(f"{CONTROL}/{name}-began", f"{CONTROL}/{name}-reached")
    if wish == "kill":
        os.kill(os.getpid(), signal.SIGKILL)
    while wished(name) == "wait":
        time.sleep(0.05)


def wished(name):
    try:
        with open(f"{CONTROL}/{name}", encoding="ascii") as file:
            return file.read()
    except FileNotFoundError:
        return None


def unpack(archive, folder):
    with zipfile.ZipFile(archive) as packed:
        entries = packed.infolist()
        for entry in entries:
            parts = entry.filename.split("/")
            if entry.filename.startswith("/") or ".." in parts:
                raise ValueError(f"{entry.filename}: Path contains '..'")
        for number, entry in enumerate(entries):
            if number == len(entries) // 2:
                half_way("unpack")
            target = os.path.join(folder, entry.filename)
            mode = entry.external_attr >> 16
            os.makedirs(os.path.dirname(target.rstrip("/")), exist_ok=True)
            if stat.S_ISLNK(mode):
                os.symlink(packed.read(entry).decode(), target)
            elif entry.filename.endswith("/"):
                os.makedirs(target, exist_ok=True)
            else:
                with packed.open(entry) as source, open(target, "wb") as out:
                    shutil.copyfileobj(source, out)
                os.chmod(target, stat.S_IMODE(mode))


def copy(source, target):
    names = sorted(os.listdir(source))
    os.makedirs(target, exist_ok=True)
    for number, name in enumerate(names):
        if number == len(names) // 2:
            half_way("copy")
        one, other = os.path.join(source, name), os.path.join(target, name)
        if os.path.isdir(one) and not os.path.islink(one):
            shutil.copytree(one, other, symlinks=True)
        else:
            shutil.copy2(one, other, follow_symlinks=False)


def ditto(arguments):
    try:
        if arguments[:2] == ["-x", "-k"]:
            unpack(*arguments[2:])
        else:
            copy(*arguments)
    except (OSError, ValueError, zipfile.BadZipFile, shutil.Error) as problem:
        print("ditto:", problem, file=sys.stderr)
        return 1
    return 0


def signature(application):
    try:
        with open(f"{application}/Contents/_CodeSignature/signature.json", encoding="utf-8") as file:
            return json.load(file)
    except FileNotFoundError:
        return None


def spctl(arguments):
    half_way("spctl")
    signed = signature(arguments[-1])
    if signed is None or not signed["notarized"]:
        print(f"{arguments[-1]}: rejected", file=sys.stderr)
        return 3
    return 0


def codesign(arguments):
    half_way("codesign")
    signed = signature(arguments[-1])
    if signed is None or "team" not in signed:
        print(f"{arguments[-1]}: code object is not signed at all", file=sys.stderr)
        return 1
    print(f"Executable={arguments[-1]}/bin/torvane-p2p-helper\nIdentifier={signed['identifier']}\n"
          f"Format=app bundle\nTeamIdentifier={signed['team']}\nSealed Resources=none",
          file=sys.stderr)
    return 0


def plist_buddy(arguments):
    half_way("PlistBuddy")
    try:
        with open(arguments[-1], "rb") as file:
            print(plistlib.load(file)[arguments[1].removeprefix("Print :")])
    except (OSError, KeyError, plistlib.InvalidFileException) as problem:
        print(problem)
        return 1
    return 0


def open_application(arguments):
    program = os.path.join(arguments[0], "bin/torvane-p2p-helper")
    with open(f"{CONTROL}/opened", "a", encoding="ascii") as file:
        file.write(f"{os.getpid()}\n")
    with open(f"{CONTROL}/opened.log", "ab") as log:
        os.dup2(log.fileno(), 2)
    os.execv(program, [program])


TOOLS = {"ditto": ditto, "spctl": spctl, "codesign": codesign, "PlistBuddy": plist_buddy,
         "open": open_application}

if __name__ == "__main__":
    sys.exit(TOOLS[os.path.basename(sys.argv[0])](sys.argv[1:]))
