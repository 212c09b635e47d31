"""What an application for a Mac must be: check_bundle.py APP EXPORTS

Its program holds both processors' code, asks for macOS 13.0, and loads the libraries that EXPORTS
names and no others. Its information says what the system must know, its icon has every size, and
the engine and the licences of what is linked in are there.
"""

import plistlib
import re
import struct
import subprocess
import sys
from pathlib import Path

import make_icon

ROOT = Path(__file__).resolve().parent.parent.parent
ARCHITECTURES = ["arm64", "x86_64"]
INFORMATION = {
    "CFBundleIdentifier": "app.torvane.p2p-helper",
    "CFBundleName": "Torvane P2P Helper",
    "CFBundlePackageType": "APPL",
    "LSMinimumSystemVersion": "13.0",
    "LSUIElement": True,
    "NSPrincipalClass": "NSApplication",
    # The peer framework finds others under these names.
    "NSBonjourServices": ["_torvane._tcp", "_torvane._udp"],
    # The engine answers plain HTTP on this computer; everything else has to be encrypted.
    "NSAppTransportSecurity": {"NSAllowsLocalNetworking": True},
}
SAID_TO_THE_USER = ("NSLocalNetworkUsageDescription", "NSAppleEventsUsageDescription")
LICENCES = {"Torvane P2P Helper.txt": "Torvane", "libsodium.txt": "ISC", "Boost.txt": "Boost Software License"}


def objdump(program, arch, *options):
    return subprocess.run(["llvm-objdump-19", "--macho", f"--arch={arch}", *options, program],
                          check=True, capture_output=True, text=True).stdout


def program_problems(program, exports):
    expected = {line.strip() for line in Path(exports).read_text().splitlines() if line.startswith("/")}
    found = subprocess.run(["llvm-lipo-19", "-archs", program], check=True, capture_output=True,
                           text=True).stdout.split()
    if sorted(found) != ARCHITECTURES:
        yield f"processors: {found}"
        return
    for arch in ARCHITECTURES:
        libraries = set(re.findall(r"^\s+(/\S+) \(", objdump(program, arch, "--dylibs-used"), re.M))
        for name in sorted(libraries ^ expected):
            yield f"{arch}: {'loads' if name in libraries else 'does not load'} {name}"
        versions = re.findall(r"^\s+minos (\S+)", objdump(program, arch, "--private-headers"), re.M)
        if versions != ["13.0"]:
            yield f"{arch}: minimum version {versions}"


def information_problems(info, contents):
    for key, value in INFORMATION.items():
        if info.get(key) != value:
            yield f"{key}: {info.get(key)}"
    for key in SAID_TO_THE_USER:
        if not info.get(key):
            yield f"{key}: the user is told nothing"
    for key, form in (("CFBundleVersion", r"\d+"), ("CFBundleShortVersionString", r"\d+(\.\d+)+")):
        if not re.fullmatch(form, info.get(key, "")):
            yield f"{key}: {info.get(key)}"
    if not (contents / "MacOS" / info.get("CFBundleExecutable", "")).is_file():
        yield f"CFBundleExecutable: {info.get('CFBundleExecutable')}"


def icon_problems(path):
    data = path.read_bytes() if path.is_file() else b""
    if data[:4] != b"icns" or struct.unpack_from(">I", data, 4)[0] != len(data):
        yield f"{path.name}: no icon"
        return
    sizes, at = {}, 8
    while at + 8 <= len(data):
        kind, length = struct.unpack_from(">4sI", data, at)
        is_png = data[at + 8:at + 16] == b"\x89PNG\r\n\x1a\n"
        sizes[kind] = struct.unpack_from(">II", data, at + 24) if is_png else None
        at += max(length, 8)
    if sizes != {kind: (side, side) for kind, side in make_icon.SIZES.items()}:
        yield f"{path.name}: sizes {sizes}"


def files(folder, *patterns):
    return {path.relative_to(folder): path for pattern in patterns for path in folder.rglob(pattern)}


def resource_problems(resources):
    sources = files(ROOT / "resources", "*.py", "*.js", "sample.*")
    found = files(resources, "*.py*", "*.js", "sample.*")
    for name in sorted(sources.keys() | found.keys()):
        if (name not in sources or name not in found
                or found[name].read_bytes() != sources[name].read_bytes()):
            yield f"{name} is not the engine's"
    for name, words in LICENCES.items():
        path = resources / "Licences" / name
        if not path.is_file() or words not in path.read_text():
            yield f"Licences/{name}: not the licence"


def main(app, exports):
    contents = Path(app) / "Contents"
    with (contents / "Info.plist").open("rb") as file:
        info = plistlib.load(file)
    problems = [*information_problems(info, contents), *resource_problems(contents / "Resources"),
                *icon_problems(contents / "Resources" / (info.get("CFBundleIconFile", "") + ".icns"))]
    program = contents / "MacOS" / info.get("CFBundleExecutable", "")
    if program.is_file():
        problems += program_problems(program, exports)
    for problem in problems:
        print(problem)
    size = sum(path.stat().st_size for path in Path(app).rglob("*") if path.is_file())
    print(f"bundle: {' and '.join(ARCHITECTURES)}, macOS 13.0, build {info.get('CFBundleVersion')}, "
          f"{size} bytes: {len(problems)} problem(s)")
    return bool(problems)


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
