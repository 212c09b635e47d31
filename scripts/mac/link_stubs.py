"""Link stubs from a list of what each library of macOS exports: link_stubs.py EXPORTS CXX OUT

EXPORTS names, under each library's install name, the classes and symbols that the program uses; a
symbol that is not listed is a link error. "@cxx" stands for the file CXX, what the C++ library of
the oldest macOS exports.
"""

import sys
from pathlib import Path

TARGETS = "targets: [ arm64-macos, x86_64-macos ]"
STUB_NAMES = {"libSystem.B": "libSystem", "libobjc.A": "libobjc", "libc++.1": "libc++"}


def read_exports(path, cxx):
    libraries, current = {}, None
    for line in Path(path).read_text().splitlines():
        words = line.split("#")[0].split()
        if not words:
            continue
        if words[0].startswith("/"):
            current = libraries.setdefault(words[0], {"class": [], "symbol": []})
        elif words == ["@cxx"]:
            current["symbol"] += Path(cxx).read_text().split()
        else:
            current[words[0]] += words[1:]
    return libraries


def stub_path(install_name):
    folder, _, name = install_name.strip("/").rpartition("/")
    if ".framework/" in folder:
        return f"{folder.split('/Versions/')[0]}/{name}.tbd"
    return f"{folder}/{STUB_NAMES[name.removesuffix('.dylib')]}.tbd"


def stub(install_name, exports):
    def listed(names):
        return "[ " + ", ".join(f"'{name}'" for name in sorted(set(names))) + " ]"

    lines = ["--- !tapi-tbd", "tbd-version: 4", TARGETS, f"install-name: '{install_name}'", "exports:",
             f"  - {TARGETS}"]
    if exports["symbol"]:
        lines.append(f"    symbols: {listed(exports['symbol'])}")
    if exports["class"]:
        lines.append(f"    objc-classes: {listed(exports['class'])}")
    return "\n".join([*lines, "...", ""])


def main(exports, cxx, out):
    for install_name, names in read_exports(exports, cxx).items():
        path = Path(out) / stub_path(install_name)
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(stub(install_name, names))


if __name__ == "__main__":
    main(*sys.argv[1:])
