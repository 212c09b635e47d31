#!/usr/bin/python3
"""Shows that each check of the Mac's program can fail: seeded_faults.py OUT TYPES

Puts one fault at a time into a copy of a file and runs the one check that is there to find it. OUT
is where build-mac and the checks have been made. Fails when a fault is not found.
"""

import os
import re
import shutil
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
OUT, TYPES = sys.argv[1:]
MAC = "src/platform/mac"
APP = f"{OUT}/Torvane P2P Helper.app/Contents"
PROGRAM = f"{APP}/MacOS/Torvane P2P Helper"
ARM64 = ROOT / OUT / "arm64/build"

# What is wrong, the file, what stands there, what comes in its place, and the check to find it.
# With nothing to stand there, one byte of the file changes; without a file, one is made.
FAULTS = [
    ("a selector misspelt in a declaration", "tests/mac/include/AppKit/AppKit.h",
     "statusItemWithLength:", "statusItemWithWidth:", "facts"),
    ("a method of a class that has none such", "tests/mac/include/Foundation/Foundation.h",
     "- (void)removeObjectForKey:(NSString*)defaultName;",
     "- (void)removeObjectForKey:(NSString*)defaultName;\n- (void)removeAll;", "facts"),
    ("another value of an enumeration", "tests/mac/include/MultipeerConnectivity/MultipeerConnectivity.h",
     "MCEncryptionRequired = 1", "MCEncryptionRequired = 2", "facts"),
    ("another superclass", "tests/mac/include/AppKit/AppKit.h",
     "@interface NSStatusBarButton : NSButton", "@interface NSStatusBarButton : NSView", "facts"),
    ("another type of argument", "tests/mac/include/AppKit/AppKit.h",
     "- (void)orderOut:(nullable id)sender;", "- (void)orderOut:(BOOL)sender;", "facts"),
    ("a constant that is none", "tests/mac/include/CoreGraphics/CoreGraphics.h",
     "kCGColorSpaceSRGB;", "kCGColorSpaceRGBS;", "facts"),
    ("an optional delegate method misspelt", f"{MAC}/mac_status_item.mm",
     "(void)menuNeedsUpdate:", "(void)menuNeedUpdate:", "methods"),
    ("an optional delegate method misspelt", f"{MAC}/http_transfers.mm",
     "didCompleteWithError:(NSError*)error {", "didCompleteWithErrors:(NSError*)error {", "methods"),
    ("a message that nobody declares", f"{MAC}/mac_alerts.mm", "[alert runModal]", "[alert runModel]", "compiler"),
    ("a required delegate method removed", f"{MAC}/mac_peer_session.mm",
     "didStartReceivingResourceWithName:", "didStartReceivingResourceNamed:", "compiler"),
    ("something newer than macOS 13 of the C++ library", f"{MAC}/mac_clock.mm",
     "#include <chrono>\n", "#include <charconv>\n#include <chrono>\n"
     "inline char* newer(char* p) { return std::to_chars(p, p + 9, 1.0).ptr; }\n", "compiler"),
    ("a symbol that no library is known to export", "tests/mac/exports.txt", "_CACurrentMediaTime", "", "link"),
    ("a byte of the program changed", PROGRAM, "", "", "signature"),
    ("a byte of the engine changed", f"{APP}/Resources/torvane.py", "", "", "signature"),
    ("a byte of a module changed", f"{APP}/Resources/torvane_engine/ink.py", "", "", "signature"),
    ("a byte of the information changed", f"{APP}/Info.plist", "Torvane lets", "Torvann lets", "signature"),
    ("a rule of the sealed list changed", f"{APP}/_CodeSignature/CodeResources", ">2000.0<", ">2001.0<", "signature"),
    ("a file added", f"{APP}/Resources/more.py", None, "", "signature"),
    ("no way to the engine without encryption", f"{APP}/Info.plist", "NSAllowsLocalNetworking", "NSAllows", "bundle"),
    ("a key that the system must know gone", f"{APP}/Info.plist", "LSUIElement", "LSUI", "bundle"),
    ("no icon", f"{APP}/Info.plist", ">AppIcon<", ">Icon<", "bundle"),
    ("the menu's delegate not kept", f"{MAC}/mac_status_item.h",
     "TorvaneStatusMenu* menu_ = nil;", "__weak TorvaneStatusMenu* menu_ = nil;", "test"),
    ("the session's delegate not kept", f"{MAC}/mac_peer_session.h",
     "TorvaneSessionEvents* events_ = nil;", "__weak TorvaneSessionEvents* events_ = nil;", "test"),
    ("an object kept for ever", f"{MAC}/mac_alerts.mm", "NSAlert* alert = [[NSAlert alloc] init];",
     "NSAlert* alert = [[NSAlert alloc] init]; (void)(__bridge_retained void*)alert;", "test"),
    ("the advertiser's delegate not kept", f"{MAC}/mac_advertiser.h",
     "TorvaneAdvertiserEvents* events_;", "__weak TorvaneAdvertiserEvents* events_;", "test"),
    ("the application's delegate not kept", f"{MAC}/main.mm",
     "__attribute__((objc_precise_lifetime)) TorvaneApplicationDelegate*", "__weak TorvaneApplicationDelegate*", "test"),
    ("a picture of any size decoded", f"{MAC}/mac_picture_decoder.mm", "!isSmallEnough(sides)", "false", "test"),
    ("a redirect of the engine followed", f"{MAC}/mac_http_session.mm",
     "initFollowingRedirects:!isPinned", "initFollowingRedirects:YES", "test"),
    ("an answer of any length taken", f"{MAC}/http_transfers.mm",
     "return maxBytes != 0 && bytes > maxBytes;", "return bytes == 0 && maxBytes == 1;", "test"),
    ("an invitation under a bad name counted", f"{MAC}/mac_advertiser.mm", "isNamed ? ", "(isNamed || true) ? ", "test"),
    ("a peer of any name known to a session", f"{MAC}/peer_tokens.mm", "  if (!name) return std::nullopt;\n", "  if (!name) name = \"\";\n", "test"),
    ("drawing upside down", f"{MAC}/mac_canvas.mm",
     "CGContextScaleCTM(context_.get(), scale_, -scale_);", "CGContextScaleCTM(context_.get(), scale_, scale_);", "test"),
    ("pictures upside down", f"{MAC}/mac_canvas.mm",
     "CGContextScaleCTM(context, 1, -1);", "CGContextScaleCTM(context, 1, 1);", "test"),
    ("another window level", f"{MAC}/mac_overlay_surface.mm",
     "window.level = NSScreenSaverWindowLevel;", "window.level = 3;", "test"),
    ("an answer sent to every peer", f"{MAC}/mac_peer_session.mm",
     "toPeers:@[ connected ]", "toPeers:session_.connectedPeers", "test"),
    ("any address let through to", f"{MAC}/mac_http_session.mm",
     "if (url == nil || (request.onlyEndpoint && !leadsTo(url, *request.onlyEndpoint))) {",
     "if (url == nil) {", "test"),
    ("exceptions let through", f"{MAC}/edge.h", "catch (const std::exception& error)",
     "catch (const std::bad_alloc& error)", "test"),
    ("work queued before an alert held up by it", f"{MAC}/mac_main_queue.mm",
     "    if (!waiting_.empty()) askForTurn();\n", "", "test"),
    ("work held up by what can wait", f"{MAC}/mac_main_queue.mm",
     "if (!isTurnDue_) askForTurn();", "if (waiting_.size() == 1) askForTurn();", "test"),
]


class Faulty:
    """One fault in a folder of its own, beside what is right."""

    def __init__(self, number, path, old, new):
        self.folder = ROOT / OUT / f"faulty/{number}"
        self.path = path
        shutil.rmtree(self.folder, ignore_errors=True)
        if path.startswith(APP):
            shutil.copytree(ROOT / APP, self.folder / APP)
        elif path.startswith("tests/mac/include"):
            shutil.copytree(ROOT / "tests/mac/include", self.folder / "tests/mac/include")
        self.file = self.folder / path
        self.file.parent.mkdir(parents=True, exist_ok=True)
        self.file.write_bytes(self.changed(old, new))

    def changed(self, old, new):
        if old is None:
            return b""
        data = (ROOT / self.path).read_bytes()
        if not old:
            place = len(data) // 4  # what is in the middle may be the room between two architectures
            return data[:place] + bytes([data[place] ^ 1]) + data[place + 1:]
        if old.encode() not in data:
            sys.exit(f"{self.path} has nothing like: {old}")
        return data.replace(old.encode(), new.encode(), 1)

    def redirected(self, command, made):
        """A compiler's command, of the faulty files instead, without a cache in between."""
        command = command.removeprefix("ccache ")
        for stem in (str(ROOT) + "/", ""):
            if self.path.endswith(".mm"):
                command = command.replace(f"-c {stem}{self.path}", f"-c {self.file}")
            command = command.replace(f" -I {stem}src ", f" -I {self.folder}/src -I {stem}src ")
            command = command.replace(f" -I{stem}src ", f" -I{self.folder}/src -I{stem}src ")
        command = re.sub(r"-M[FT] \S+", "", re.sub(r"-MM?D ", "", command))
        return re.sub(r" -o \S+", f" -o {made}", command)


def run(command, folder=ROOT):
    return subprocess.run(command, cwd=folder, shell=isinstance(command, str), capture_output=True,
                          text=True, check=False)


def commands(file, target):
    return run(["ninja", "-C", file, "-t", "commands", target]).stdout.splitlines()


def of_test(target):
    return run(["ninja", "-f", f"{OUT}/checks/build.ninja", "-t", "commands", f"{OUT}/{target}"]).stdout.splitlines()


def linux_object(source):
    return f"obj/linux/{re.sub(r'[^a-zA-Z0-9_.]', '_', source)}.o"


def users(path):
    """The sources to compile anew after a change to `path`."""
    if path.endswith(".mm"):
        return [path]
    name = path.removeprefix("src/")
    including = [p for p in sorted((ROOT / MAC).glob("*.mm")) if f'"{name}"' in p.read_text()]
    own = ROOT / path.replace(".h", ".mm")
    return [f"{MAC}/{p.name}" for p in {*including, *([own] if own.exists() else [])}]


def check_facts(fault):
    return run(["python3", "tests/mac/check_facts.py", TYPES, str(fault.folder / "tests/mac/include")])


def check_methods(fault):
    command = of_test("checks/methods.txt")[-1]
    flags = re.search(r"check_methods.py (.*?) -- ", command)[1]
    return run(f"python3 tests/mac/check_methods.py {flags} -ferror-limit=0 -- {fault.file}")


def check_compiler(fault):
    made = f"src/platform/mac/CMakeFiles/torvane-p2p-helper.dir/{Path(fault.path).name}.o"
    command = commands(ARM64, made)[-1]
    return run(fault.redirected(command, fault.folder / "made.o"), ARM64)


def check_link(fault):
    run(["python3", "scripts/mac/link_stubs.py", str(fault.file), f"{OUT}/cxx.txt", f"{fault.folder}/sdk"])
    command = commands(ARM64, "torvane-p2p-helper")[-1]
    command = command.replace(f"-isysroot {ROOT}/{OUT}/sdk", f"-isysroot {fault.folder}/sdk")
    return run(re.sub(r' -o "[^"]+"', f" -o {fault.folder}/helper", command), ARM64)


def check_signature(fault):
    return run(["python3", "scripts/mac/adhoc_sign.py", "verify", str(fault.folder / APP).removesuffix("/Contents")])


def check_bundle(fault):
    return run(["python3", "scripts/mac/check_bundle.py", str(fault.folder / APP).removesuffix("/Contents"),
                "tests/mac/exports.txt"])


def check_test(fault):
    link = of_test("mac_test")[-1]
    for number, source in enumerate(users(fault.path)):
        made = f"{fault.folder}/{number}.o"
        # Some the compiler would warn of, too; here the program has to show them.
        result = run(fault.redirected(of_test(linux_object(source))[-1], made) + " -w")
        if result.returncode:
            sys.exit(f"the fault does not compile:\n{result.stderr}")
        link = link.replace(f" {OUT}/{linux_object(source)} ", f" {made} ")
    result = run(re.sub(r" -o \S+", f" -o {fault.folder}/mac_test", link))
    if result.returncode:
        sys.exit(f"the fault does not link:\n{result.stderr}")
    return run([f"{fault.folder}/mac_test"])


# Each check, and what it says when it has found something: failing for another reason is no find.
CHECKS = {
    "facts": (check_facts, r"[1-9]\d* wrong or unknown"),
    "methods": (check_methods, r"is declared nowhere"),
    "compiler": (check_compiler, r"error: (no visible|.*instance method|method '.*' in protocol|'to_chars' is unavailable)"),
    "link": (check_link, r"undefined symbol"),
    "signature": (check_signature, r"signature: .* (differs|is not sealed)"),
    "bundle": (check_bundle, r"[1-9]\d* problem\(s\)"),
    "test": (check_test, r"FAILED|Sanitizer|is not implemented"),
}
# With nothing wrong, none of them may find anything.
CONTROLS = [("nothing", path, " ", " ", check) for path, check in (
    ("tests/mac/include/AppKit/AppKit.h", "facts"), (f"{MAC}/mac_status_item.mm", "methods"),
    (f"{MAC}/mac_status_item.mm", "compiler"), ("tests/mac/exports.txt", "link"),
    (f"{APP}/Info.plist", "signature"), (f"{APP}/Info.plist", "bundle"), (f"{MAC}/mac_alerts.mm", "test"))]


def is_found(numbered):
    number, (_, path, old, new, check) = numbered
    fault = Faulty(number, path, old, new)
    perform, evidence = CHECKS[check]
    result = perform(fault)
    shutil.rmtree(fault.folder)
    said = result.stdout + result.stderr
    if result.returncode and not re.search(evidence, said):
        sys.exit(f"the {check} failed for another reason:\n{said[-2000:]}")
    return result.returncode != 0


def main():
    cases = [*CONTROLS, *FAULTS]
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        found = list(pool.map(is_found, enumerate(cases)))
    false_alarms, missed = sum(found[:len(CONTROLS)]), len(FAULTS) - sum(found[len(CONTROLS):])
    for (what, path, _, _, check), is_one in list(zip(cases, found))[len(CONTROLS):]:
        print(f"{'found by' if is_one else 'NOT FOUND BY'} the {check}: {what} ({path.removeprefix(APP + '/')})")
    print(f"faults: {len(FAULTS) - missed} of {len(FAULTS)} found; {false_alarms} found where nothing is wrong")
    return bool(missed or false_alarms)


if __name__ == "__main__":
    sys.exit(main())
