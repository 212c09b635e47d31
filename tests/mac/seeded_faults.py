#!/usr/bin/python3
"""Shows that each check of the Mac's program can fail: seeded_faults.py OUT TYPES

Puts one fault after the other into a copy of a file and runs the check that is there to find it.
OUT is where build-mac and the test have been built. Fails when a fault is not found.
"""

import re
import shutil
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
OUT, TYPES = sys.argv[1:]
FAULTY = Path(OUT) / "faulty"
MAC = "src/platform/mac"

# What is wrong, the file, what stands there, what comes in its place, and the check to find it.
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
    ("a sealed file changed", "signed.arm64", "", "", "signature"),
    ("the menu's delegate not kept", f"{MAC}/mac_status_item.h",
     "TorvaneStatusMenu* menu_ = nil;", "__weak TorvaneStatusMenu* menu_ = nil;", "test"),
    ("the session's delegate not kept", f"{MAC}/mac_peer_session.h",
     "TorvaneSessionEvents* events_ = nil;", "__weak TorvaneSessionEvents* events_ = nil;", "test"),
    ("an object kept for ever", f"{MAC}/mac_alerts.mm", "NSAlert* alert = [[NSAlert alloc] init];",
     "NSAlert* alert = [[NSAlert alloc] init]; (void)(__bridge_retained void*)alert;", "test"),
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
     "    if (!waiting_.empty()) wake();\n", "", "test"),
]


def run(command):
    return subprocess.run(command, cwd=ROOT, shell=isinstance(command, str), capture_output=True,
                          text=True, check=False)


def commands(target):
    return run(["ninja", "-f", f"{OUT}/build.ninja", "-t", "commands", target]).stdout.splitlines()


def compiled(target, path, made):
    """The command that made `target`, of the faulty files instead, without a cache in between."""
    source = MAC + "/" + Path(path).name
    command = commands(target)[-1].removeprefix("ccache ")
    command = command.replace(f"-c {source}", f"-c {FAULTY / source if (FAULTY / source).exists() else source}")
    command = command.replace(" -I src ", f" -I {FAULTY}/src -I src ")
    command = re.sub(r"-isystem tests/mac/include", f"-isystem {FAULTY}/tests/mac/include -isystem tests/mac/include", command)
    return re.sub(r"-MF \S+", "", command.replace("-MMD", "")).replace(f"-o {target}", f"-o {made}")


def users(path):
    """The sources to compile anew after a change to `path`."""
    if path.endswith(".mm"):
        return [path]
    name = path.removeprefix("src/")
    including = [p for p in sorted((ROOT / MAC).glob("*.mm")) if f'"{name}"' in p.read_text()]
    own = ROOT / path.replace(".h", ".mm")
    return [f"{MAC}/{p.name}" for p in {*including, *([own] if own.exists() else [])}]


def object_of(folder, source):
    return f"{OUT}/obj/{folder}/{re.sub(r'[^a-zA-Z0-9_.]', '_', source)}.o"


def check_facts(_):
    return run(["python3", "tests/mac/check_facts.py", TYPES, str(FAULTY / "tests/mac/include")])


def check_methods(path):
    words = compiled(object_of("arm64", path), path, "/dev/null").split()
    flags = [w for i, w in enumerate(words[1:], 1)
             if w not in ("-c", "-o", "/dev/null") and not w.endswith(".mm") and not w.startswith("-W")]
    return run(["python3", "tests/mac/check_methods.py", *flags, "-ferror-limit=0", "--", str(FAULTY / path)])


def check_compiler(path):
    return run(compiled(object_of("arm64", path), path, f"{FAULTY}/object.o"))


def check_link(path):
    run(["python3", "scripts/mac/link_stubs.py", str(FAULTY / path), f"{OUT}/cxx.txt", f"{FAULTY}/sdk"])
    command = commands(f"{OUT}/helper.arm64")[-1]
    return run(command.replace(f"-syslibroot {OUT}/sdk", f"-syslibroot {FAULTY}/sdk")
               .replace(f"-o {OUT}/helper.arm64", f"-o {FAULTY}/helper"))


def check_signature(_):
    data = bytearray((Path(OUT) / "signed.arm64").read_bytes())
    data[5000] ^= 1
    FAULTY.mkdir(parents=True, exist_ok=True)
    (FAULTY / "signed").write_bytes(data)
    return run(["python3", "scripts/mac/adhoc_sign.py", "verify", str(FAULTY / "signed")])


def check_test(path):
    link = commands(f"{OUT}/mac_test")[-1]
    for number, source in enumerate(users(path)):
        made = f"{FAULTY}/object{number}.o"
        # Some the compiler would warn of, too; here the program has to show them.
        result = run(compiled(object_of("linux", source), source, made) + " -w")
        if result.returncode:
            sys.exit(f"the fault does not compile:\n{result.stderr}")
        link = link.replace(f" {object_of('linux', source)} ", f" {made} ")
    result = run(link.replace(f"-o {OUT}/mac_test", f"-o {FAULTY}/mac_test"))
    if result.returncode:
        sys.exit(f"the fault does not link:\n{result.stderr}")
    return run([f"{FAULTY}/mac_test"])


# Each check, and what it says when it has found something: failing for another reason is no find.
CHECKS = {
    "facts": (check_facts, r"[1-9]\d* wrong or unknown"),
    "methods": (check_methods, r"is declared nowhere"),
    "compiler": (check_compiler, r"error: (no visible|.*instance method|method '.*' in protocol|'to_chars' is unavailable)"),
    "link": (check_link, r"undefined symbol"),
    "signature": (check_signature, r"page 1 differs"),
    "test": (check_test, r"FAILED|AddressSanitizer|LeakSanitizer|is not implemented"),
}
# With nothing wrong, none of them may find anything.
CONTROLS = [("tests/mac/include/AppKit/AppKit.h", "facts"), (f"{MAC}/mac_status_item.mm", "methods"),
            (f"{MAC}/mac_status_item.mm", "compiler"), ("tests/mac/exports.txt", "link"),
            (f"{MAC}/mac_alerts.mm", "test")]


def is_found(path, old, new, check):
    shutil.rmtree(FAULTY, ignore_errors=True)
    if path.startswith("tests/mac/include"):
        shutil.copytree(ROOT / "tests/mac/include", FAULTY / "tests/mac/include")
    if old:
        text = (ROOT / path).read_text()
        if old not in text:
            sys.exit(f"{path} has nothing like: {old}")
        (FAULTY / path).parent.mkdir(parents=True, exist_ok=True)
        (FAULTY / path).write_text(text.replace(old, new, 1))
    perform, evidence = CHECKS[check]
    result = perform(path)
    if result.returncode == 0:
        return False
    said = result.stdout + result.stderr
    if not re.search(evidence, said):
        sys.exit(f"the {check} failed for another reason:\n{said[-2000:]}")
    return True


def main():
    for path, check in CONTROLS:
        if is_found(path, "\n", "\n", check):
            sys.exit(f"the {check} finds something where nothing is wrong ({path})")
    missed = 0
    for what, path, old, new, check in FAULTS:
        found = is_found(path, old, new, check)
        missed += not found
        print(f"{'found by' if found else 'NOT FOUND BY'} the {check}: {what} ({path})", flush=True)
    shutil.rmtree(FAULTY, ignore_errors=True)
    print(f"faults: {len(FAULTS) - missed} of {len(FAULTS)} found")
    return bool(missed)


if __name__ == "__main__":
    sys.exit(main())
