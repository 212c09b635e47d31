"""The ninja file of what the program for a Mac needs besides itself: ninja_file.py OUT

For both processors, libsodium and Boost's two libraries, and the link stubs.
"""

import re
import shutil
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
ARCHITECTURES = ("arm64", "x86_64")
LLVM = "/usr/lib/llvm-19"

OPTIMISED = "-Os -g0 -fvisibility=hidden -ffunction-sections -DNDEBUG"
WARNINGS = ("-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor "
            "-Woverloaded-virtual -Wformat=2 -Werror")
SODIUM = ("-DCONFIGURED=1 -DSODIUM_STATIC=1 -DNATIVE_LITTLE_ENDIAN=1 -DHAVE_TI_MODE=1 "
          "-DHAVE_WEAK_SYMBOLS=1 -DHAVE_C11_MEMORY_FENCES=1 -DHAVE_PTHREAD=1 -DHAVE_SYS_MMAN_H=1 "
          "-DHAVE_MMAP=1 -DHAVE_MLOCK=1 -DHAVE_MPROTECT=1 -DHAVE_POSIX_MEMALIGN=1 "
          "-DHAVE_ARC4RANDOM=1 -DHAVE_ARC4RANDOM_BUF=1 -DHAVE_SAFE_ARC4RANDOM=1 -DHAVE_GETPID=1 -w")


RULES = """\
builddir = {out}
rule compile
  command = {launcher}$compiler $flags -MMD -MF $out.d -c $in -o $out
  depfile = $out.d
  deps = gcc
  description = $out
rule archive
  command = rm -f $out && llvm-ar-19 rcs $out $in
  description = $out
rule stubs
  command = rm -rf {out}/sdk && python3 scripts/mac/link_stubs.py $in {out}/sdk && touch $out
  description = link stubs
"""


def resources():
    return subprocess.run(["clang-19", "-print-resource-dir"], check=True, capture_output=True,
                          text=True).stdout.strip()


# What CMake is told of Boost's libraries.
BOOST = """\
add_library(Boost::headers INTERFACE IMPORTED)
target_include_directories(Boost::headers INTERFACE {out}/boost)
foreach(name json url)
  add_library(Boost::${{name}} STATIC IMPORTED)
  set(Boost_${{name}}_FOUND ON)
  set_target_properties(Boost::${{name}} PROPERTIES
    IMPORTED_LOCATION {out}/{arch}/lib/libboost_${{name}}.a INTERFACE_LINK_LIBRARIES Boost::headers)
endforeach()
"""


def write(path, text):
    """Only what is new, so that nothing is built anew that need not be."""
    path.parent.mkdir(parents=True, exist_ok=True)
    if not path.exists() or path.read_text() != text:
        path.write_text(text)


def configure(out):
    """What libsodium's own configuration makes, as make would, and where CMake finds the libraries."""
    source = out / "libsodium"
    version = re.search(r"AC_INIT\(\[libsodium\],\[([^]]+)\]", (source / "configure.ac").read_text())[1]
    numbers = dict(re.findall(r"^SODIUM_LIBRARY_VERSION_(MAJOR|MINOR)=(\d+)",
                              (source / "configure.ac").read_text(), re.M))
    text = (source / "src/libsodium/include/sodium/version.h.in").read_text()
    for name, value in (("VERSION", version), ("SODIUM_LIBRARY_VERSION_MAJOR", numbers["MAJOR"]),
                        ("SODIUM_LIBRARY_VERSION_MINOR", numbers["MINOR"]),
                        ("SODIUM_LIBRARY_MINIMAL_DEF", "")):
        text = text.replace(f"@{name}@", value)
    write(source / "src/libsodium/include/sodium/version.h", text)
    known = re.search(r'BOOST_LIB_VERSION "([\d_]+)"', (out / "boost/boost/version.hpp").read_text())
    boost = known[1].replace("_", ".")
    for arch in ARCHITECTURES:
        lib = out / arch / "lib"
        write(lib / "pkgconfig/libsodium.pc",
              f"Name: libsodium\nDescription: libsodium\nVersion: {version}\n"
              f"Cflags: -I{source}/src/libsodium/include\nLibs: -L{lib} -lsodium\n")
        write(lib / "cmake/BoostConfig.cmake", BOOST.format(out=out, arch=arch))
        write(lib / "cmake/BoostConfigVersion.cmake",
              f"set(PACKAGE_VERSION {boost})\nset(PACKAGE_VERSION_COMPATIBLE ON)\n")


class NinjaFile:
    def __init__(self, out):
        self.out = out
        self.launcher = "ccache " if shutil.which("ccache") else ""
        self.lines = [RULES.format(out=out.relative_to(ROOT), launcher=self.launcher)]
        self.c_system = (f"-nostdinc -isystem {resources()}/include -isystem tests/mac/libc "
                         f"-isystem {self.name('libsodium')}/src/libsodium/include")
        self.system = (f"-nostdinc -nostdinc++ -isystem tests/mac/libcxx -isystem {LLVM}/include/c++/v1 "
                       f"-isystem {resources()}/include -isystem tests/mac/libc -isystem {self.name('boost')}")

    def name(self, path):
        return str((self.out / path).relative_to(ROOT))

    def compile(self, folder, source, flags, compiler="clang++-19", headers=None):
        """`headers`: precompiled ones, which the source takes in first."""
        base = re.sub(r"[^\w.]", "_", str(source.relative_to(self.out if source.is_relative_to(self.out) else ROOT)))
        made = self.name(f"obj/{folder}/{base}.o")
        if headers:
            flags += f" -include-pch {headers}"
        self.lines.append(f"build {made}: compile {source.relative_to(ROOT)} {f'| {headers}' if headers else ''}\n"
                          f"  compiler = {compiler}\n  flags = {flags}")
        return made

    def libraries(self, arch):
        target = f"-target {arch}-apple-macos13 {OPTIMISED}"
        cxx = f"{target} -std=c++20 {self.system}"
        sodium = self.out / "libsodium/src/libsodium"
        include = self.name("libsodium/src/libsodium/include/sodium")
        private = f"-std=c11 {self.c_system} -I {include} -I {include}/private {SODIUM}"
        parts = {"libsodium": [self.compile(arch, source, f"{target} {private}", "clang-19")
                               for source in sorted(sodium.rglob("*.c"))]}
        for source in sorted((ROOT / "scripts/mac").glob("boost_*.cpp")):
            parts[f"lib{source.stem}"] = [self.compile(arch, source, f"{cxx} -w")]
        for name, objects in parts.items():
            self.lines.append(f"build {self.name(f'{arch}/lib/{name}.a')}: archive {' '.join(objects)}")
        checked = self.compile(arch, ROOT / "tests/mac/abi_check.cpp", f"{cxx} {WARNINGS}")
        made = " ".join(self.name(f"{arch}/lib/{name}.a") for name in parts)
        self.lines.append(f"build {arch}: phony {made} {checked}")

    def text(self):
        stubs = self.name("sdk.made")
        self.lines.append(f"build {stubs}: stubs tests/mac/exports.txt {self.name('cxx.txt')} "
                          f"| scripts/mac/link_stubs.py")
        for arch in ARCHITECTURES:
            self.libraries(arch)
        self.lines.append(f"build parts: phony {stubs} {' '.join(ARCHITECTURES)}")
        return "\n".join(self.lines) + "\n"


def main(out):
    out = Path(out).resolve()
    configure(out)
    (out / "build.ninja").write_text(NinjaFile(out).text())


if __name__ == "__main__":
    main(sys.argv[1])
