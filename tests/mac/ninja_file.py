"""The ninja file of the checks of the Mac's program: ninja_file.py OUT

The same program on Linux with fakes of the frameworks, which is the test; clang's analyzer; our
declarations against published facts; methods that nobody declares. The analyzer reads each source
without precompiled headers, so that it has to include what it needs.
"""

import os
import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "scripts/mac"))
from ninja_file import WARNINGS, NinjaFile  # pylint: disable=wrong-import-position

CORE = ("protocol", "ports", "bridge", "engine", "ink", "peer", "update", "app", "platform/posix")
SANITIZERS = "-fsanitize=address,undefined -fno-sanitize=vptr,function -fno-sanitize-recover=all"
LINUX = f"-std=c++20 -g1 {SANITIZERS} -fno-omit-frame-pointer -I src -I tests"
LINUX_OBJC = ("-x objective-c++ -fobjc-runtime=gnustep-2.0 -fobjc-arc -fblocks "
              "-isystem tests/mac/include")

# The test calls it, and has this computer's Python.
MAIN = " -Dmain=torvane_main -DkMacPython=kLinuxPython"

RULES = """\
builddir = {out}/checks
rule compile
  command = {launcher}$compiler $flags -MMD -MF $out.d -c $in -o $out
  depfile = $out.d
  deps = gcc
  description = $out
rule link_test
  command = clang++-19 -fuse-ld=lld {sanitizers} -o $out $in -lgtest_main -lgtest -lboost_json $
    -lboost_url -lsodium -lpthread
  description = $out
rule analyze
  command = clang++-19 --analyze {apple} -Xclang -analyzer-output=text -Xclang -analyzer-werror $
    $in && touch $out
  description = $out
rule check
  command = $check >$out.new || (cat $out.new && false) && mv $out.new $out
  description = $out
"""


def update_base():
    """The update site that the CMake build takes, unless the environment names another."""
    text = (ROOT / "cmake/UpdateBase.cmake").read_text()
    known = re.search(r'set\(TORVANE_UPDATE_BASE "([^"]+)"', text)[1]
    return os.environ.get("TORVANE_UPDATE_BASE", known)


class ChecksFile(NinjaFile):
    def __init__(self, out):
        super().__init__(out)
        self.base = update_base()
        self.apple = f"-target arm64-apple-macos13 -std=c++20 -fobjc-arc {self.system} -isystem tests/mac/include -I src"
        self.lines = [RULES.format(out=out.relative_to(ROOT), launcher=self.launcher,
                                   sanitizers=SANITIZERS, apple=self.apple)]
        self.mac = sorted((ROOT / "src/platform/mac").glob("*.mm"))

    def linux(self, source, flags, headers=None):
        site = f"'-DTORVANE_UPDATE_BASE=\"{self.base}\"' " if source.name == "updater.cpp" else ""
        return self.compile("linux", source, site + flags, headers=headers)

    def precompiled(self, folder, flags):
        return self.compile(folder, ROOT / "tests/mac/precompiled.h", f"{flags} -Xclang -fno-pch-timestamp")

    def test(self):
        tests = ROOT / "tests/mac"
        plain = self.precompiled("linux", f"{LINUX} -x c++-header")
        objc = self.precompiled("linux-objc", f"{LINUX} {LINUX_OBJC} -x objective-c++-header")
        own, own_objc = f"{LINUX} {WARNINGS}", f"{LINUX} {LINUX_OBJC}"
        objects = [self.linux(source, own, plain) for folder in CORE
                   for source in sorted((ROOT / "src" / folder).glob("*.cpp"))]
        objects += [self.linux(source, f"{own_objc} {WARNINGS}" +
                               (MAIN if source.name == "main.mm" else ""), objc)
                    for source in self.mac]
        objects += [self.linux(source, f"{own_objc} -w", objc)
                    for source in sorted([*tests.glob("fakes/*.mm"), *tests.glob("*_test.mm")])]
        objects += [self.linux(source, f"-std=c++20 -O1 -g1 -I tests {'' if source.suffix == '.S' else WARNINGS + ' -Wno-c99-extensions'}")
                    for source in sorted([*tests.glob("runtime/*.cpp"), *tests.glob("runtime/*.S")])]
        objects.append(self.linux(tests.parent / "support/signing_device.cpp", own, plain))
        self.lines.append(f"build {self.name('mac_test')}: link_test {' '.join(objects)}")

    def check(self, name, command, inputs):
        made = self.name(f"checks/{name}.txt")
        self.lines.append(f"build {made}: check | tests/mac/check_{name}.py {' '.join(inputs)}\n  check = {command}")
        return made

    def checks(self):
        headers = [str(path.relative_to(ROOT)) for folder in ("src", "tests/mac/include", "tests/mac/libc")
                   for path in sorted((ROOT / folder).rglob("*.h")) if "platform/linux" not in str(path)]
        sources = [str(source.relative_to(ROOT)) for source in self.mac]
        types = self.name("facts/package/types")
        facts = self.check("facts", f"python3 tests/mac/check_facts.py {types}", [types, *headers])
        standard = self.precompiled("arm64-standard", f"{self.apple} -x objective-c++-header")
        methods = self.check("methods", f"python3 tests/mac/check_methods.py {self.apple} -include-pch {standard} "
                                        f"-- {' '.join(sources)}", [standard, *sources, *headers])
        analyzed = [self.name(f"checks/{Path(source).stem}.analyzed") for source in sources]
        for source, made in zip(sources, analyzed):
            self.lines.append(f"build {made}: analyze {source} | {' '.join(headers)}")
        self.lines.append(f"build checks: phony {facts} {methods} {' '.join(analyzed)} {self.name('mac_test')}")

    def text(self):
        self.test()
        self.checks()
        return "\n".join(self.lines) + "\n"


def main(out):
    out = Path(out).resolve()
    (out / "checks").mkdir(parents=True, exist_ok=True)
    (out / "checks/build.ninja").write_text(ChecksFile(out).text())


if __name__ == "__main__":
    main(sys.argv[1])
