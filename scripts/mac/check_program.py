"""What a universal program says of itself: check_program.py PROGRAM EXPORTS

Fails unless it holds both processors' code, asks for macOS 13.0, and loads the libraries that
EXPORTS names and no others.
"""

import re
import subprocess
import sys

ARCHITECTURES = ["arm64", "x86_64"]


def objdump(program, arch, *options):
    return subprocess.run(["llvm-objdump-19", "--macho", f"--arch={arch}", *options, program],
                          check=True, capture_output=True, text=True).stdout


def main(program, exports):
    with open(exports, encoding="utf-8") as file:
        expected = {line.strip() for line in file if line.startswith("/")}
    found = subprocess.run(["llvm-lipo-19", "-archs", program], check=True, capture_output=True,
                           text=True).stdout.split()
    problems = [] if sorted(found) == ARCHITECTURES else [f"processors: {found}"]
    for arch in ARCHITECTURES:
        libraries = set(re.findall(r"^\s+(/\S+) \(", objdump(program, arch, "--dylibs-used"), re.M))
        for name in sorted(libraries ^ expected):
            problems.append(f"{arch}: {'loads' if name in libraries else 'does not load'} {name}")
        versions = re.findall(r"^\s+minos (\S+)", objdump(program, arch, "--private-headers"), re.M)
        if versions != ["13.0"]:
            problems.append(f"{arch}: minimum version {versions}")
    for problem in problems:
        print(problem)
    print(f"program: {' and '.join(found)}, {len(expected)} libraries, macOS 13.0: "
          f"{len(problems)} problem(s)")
    return bool(problems)


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
