"""The ninja file that builds the program for a Mac: ninja_file.py OUT

Every source of the core, of platform/posix and of platform/mac is compiled for both processors,
with libsodium and Boost's two libraries, and linked against the project's own link stubs.
"""

import os
import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
ARCHITECTURES = ("arm64", "x86_64")
CORE = ("protocol", "bridge", "engine", "ink", "peer", "update", "app", "platform/posix")
FRAMEWORKS = ("AppKit", "ApplicationServices", "CoreFoundation", "CoreGraphics", "Foundation",
              "ImageIO", "MultipeerConnectivity", "QuartzCore", "ServiceManagement")
LLVM = "/usr/lib/llvm-19"

OPTIMISED = "-Os -g0 -fvisibility=hidden -ffunction-sections"
WARNINGS = ("-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor "
            "-Woverloaded-virtual -Wformat=2 -Werror")
OBJC = ("-x objective-c++ -fobjc-arc -fblocks -isystem tests/mac/include -Wundeclared-selector "
        "-Wobjc-method-access -Wprotocol -Wnullable-to-nonnull-conversion "
        "-Warc-repeated-use-of-weak -Wunguarded-availability")
SODIUM = ("-DCONFIGURED=1 -DSODIUM_STATIC=1 -DNATIVE_LITTLE_ENDIAN=1 -DHAVE_TI_MODE=1 "
          "-DHAVE_WEAK_SYMBOLS=1 -DHAVE_C11_MEMORY_FENCES=1 -DHAVE_PTHREAD=1 -DHAVE_SYS_MMAN_H=1 "
          "-DHAVE_MMAP=1 -DHAVE_MLOCK=1 -DHAVE_MPROTECT=1 -DHAVE_POSIX_MEMALIGN=1 "
          "-DHAVE_ARC4RANDOM=1 -DHAVE_ARC4RANDOM_BUF=1 -DHAVE_SAFE_ARC4RANDOM=1 -DHAVE_GETPID=1 -w")

# The same sources on Linux, against fakes of the frameworks.
SANITIZERS = "-fsanitize=address,undefined -fno-sanitize=vptr,function -fno-sanitize-recover=all"
LINUX = f"-std=c++20 -O1 -g1 {SANITIZERS} -fno-omit-frame-pointer -I src -I tests"
LINUX_OBJC = ("-x objective-c++ -fobjc-runtime=gnustep-2.0 -fobjc-arc -fblocks "
              "-isystem tests/mac/include")

RULES = """\
builddir = {out}
rule compile
  command = {launcher}$compiler $flags -MMD -MF $out.d -c $in -o $out
  depfile = $out.d
  deps = gcc
  description = $out
rule link
  command = ld64.lld-19 -arch $arch -platform_version macos 13.0 13.0 -syslibroot {out}/sdk $
    -adhoc_codesign -dead_strip -fatal_warnings -o $out $in $libraries
  description = $out
rule link_test
  command = clang++-19 -fuse-ld=lld {sanitizers} -o $out $in -lgtest_main -lgtest -lboost_json $
    -lboost_url -lsodium -lpthread
  description = $out
rule stubs
  command = rm -rf {out}/sdk && python3 scripts/mac/link_stubs.py $in {out}/sdk && touch $out
  description = link stubs
"""


def update_base():
    """The update site that the CMake build takes, unless the environment names another."""
    text = (ROOT / "cmake/UpdateBase.cmake").read_text()
    known = re.search(r'set\(TORVANE_UPDATE_BASE "([^"]+)"', text)[1]
    base = os.environ.get("TORVANE_UPDATE_BASE", known)
    subprocess.run(["cmake", f"-DTORVANE_UPDATE_BASE={base}", "-P", str(ROOT / "cmake/UpdateBase.cmake")], check=True)
    return base


def resources():
    return subprocess.run(["clang-19", "-print-resource-dir"], check=True, capture_output=True,
                          text=True).stdout.strip()


def sodium_headers(out):
    """The one header that its configuration makes, as make would."""
    source = out / "libsodium"
    version = re.search(r"AC_INIT\(\[libsodium\],\[([^]]+)\]", (source / "configure.ac").read_text())[1]
    numbers = dict(re.findall(r"^SODIUM_LIBRARY_VERSION_(MAJOR|MINOR)=(\d+)",
                              (source / "configure.ac").read_text(), re.M))
    text = (source / "src/libsodium/include/sodium/version.h.in").read_text()
    for name, value in (("VERSION", version), ("SODIUM_LIBRARY_VERSION_MAJOR", numbers["MAJOR"]),
                        ("SODIUM_LIBRARY_VERSION_MINOR", numbers["MINOR"]),
                        ("SODIUM_LIBRARY_MINIMAL_DEF", "")):
        text = text.replace(f"@{name}@", value)
    header = source / "src/libsodium/include/sodium/version.h"
    if not header.exists() or header.read_text() != text:
        header.write_text(text)


class NinjaFile:
    def __init__(self, out):
        self.out = out
        self.base = update_base()
        launcher = "ccache " if subprocess.run(["which", "ccache"], capture_output=True).returncode == 0 else ""
        self.lines = [RULES.format(out=out.relative_to(ROOT), launcher=launcher, sanitizers=SANITIZERS)]
        self.system = (f"-nostdinc -isystem tests/mac/libcxx -isystem {LLVM}/include/c++/v1 "
                       f"-isystem {resources()}/include -isystem tests/mac/libc "
                       f"-isystem {self.name('boost')} -isystem {self.name('libsodium')}/src/libsodium/include")

    def name(self, path):
        return str((self.out / path).relative_to(ROOT))

    def site(self, source):
        return f"'-DTORVANE_UPDATE_BASE=\"{self.base}\"' " if source.name == "update_check.cpp" else ""

    def compile(self, arch, source, flags, compiler="clang++-19"):
        base = re.sub(r"[^\w.]", "_", str(source.relative_to(self.out if source.is_relative_to(self.out) else ROOT)))
        made = self.name(f"obj/{arch}/{base}.o")
        self.lines.append(f"build {made}: compile {source.relative_to(ROOT)}\n"
                          f"  compiler = {compiler}\n"
                          f"  flags = {self.site(source)}-target {arch}-apple-macos13 {OPTIMISED} {flags}")
        return made

    def program(self, arch):
        cxx = f"-std=c++20 -nostdinc++ {self.system}"
        own = f"{cxx} -I src {WARNINGS}"
        objects = [self.compile(arch, source, own) for folder in CORE
                   for source in sorted((ROOT / "src" / folder).glob("*.cpp"))]
        objects += [self.compile(arch, source, f"{own} {OBJC}")
                    for source in sorted((ROOT / "src/platform/mac").glob("*.mm"))]
        objects += [self.compile(arch, source, f"{cxx} -w")
                    for source in sorted((ROOT / "scripts/mac").glob("boost_*.cpp"))]
        objects.append(self.compile(arch, ROOT / "tests/mac/abi_check.cpp", own))
        sodium = self.out / "libsodium/src/libsodium"
        include = f"-I {self.name('libsodium/src/libsodium/include/sodium')}"
        private = f"{include} -I {self.name('libsodium/src/libsodium/include/sodium/private')}"
        c_system = self.system.replace(f"-isystem {LLVM}/include/c++/v1 ", "").replace(
            "-isystem tests/mac/libcxx ", "")
        objects += [self.compile(arch, source, f"-std=c11 {c_system} {private} {SODIUM}", "clang-19")
                    for source in sorted(sodium.rglob("*.c"))]
        libraries = "-lSystem -lobjc -lc++ " + " ".join(f"-framework {name}" for name in FRAMEWORKS)
        self.lines.append(f"build {self.name(f'helper.{arch}')}: link {' '.join(objects)} | {self.name('sdk.made')}\n"
                          f"  arch = {arch}\n  libraries = {libraries}")

    def linux(self, source, flags):
        base = re.sub(r"[^\w.]", "_", str(source.relative_to(ROOT)))
        made = self.name(f"obj/linux/{base}.o")
        self.lines.append(f"build {made}: compile {source.relative_to(ROOT)}\n"
                          f"  compiler = clang++-19\n  flags = {self.site(source)}{flags}")
        return made

    def test(self):
        own = f"{LINUX} {WARNINGS}"
        tests = ROOT / "tests/mac"
        objects = [self.linux(source, own) for folder in CORE
                   for source in sorted((ROOT / "src" / folder).glob("*.cpp"))]
        objects += [self.linux(source, f"{own} {LINUX_OBJC}" +
                               (" -Dmain=torvane_main" if source.name == "main.mm" else ""))
                    for source in sorted((ROOT / "src/platform/mac").glob("*.mm"))]
        objects += [self.linux(source, f"{LINUX} {LINUX_OBJC} -w")
                    for source in sorted([*tests.glob("fakes/*.mm"), *tests.glob("*_test.mm")])]
        objects += [self.linux(source, f"-std=c++20 -O1 -g1 -I tests {'' if source.suffix == '.S' else WARNINGS + ' -Wno-c99-extensions'}")
                    for source in sorted([*tests.glob("runtime/*.cpp"), *tests.glob("runtime/*.S")])]
        objects.append(self.linux(ROOT / "tests/support/signing_device.cpp", own))
        self.lines.append(f"build {self.name('mac_test')}: link_test {' '.join(objects)}")

    def text(self):
        self.lines.append(f"build {self.name('sdk.made')}: stubs tests/mac/exports.txt {self.name('cxx.txt')} "
                          f"| scripts/mac/link_stubs.py")
        for arch in ARCHITECTURES:
            self.program(arch)
        self.test()
        return "\n".join(self.lines) + "\n"


def main(out):
    out = Path(out).resolve()
    sodium_headers(out)
    (out / "build.ninja").write_text(NinjaFile(out).text())


if __name__ == "__main__":
    main(sys.argv[1])
