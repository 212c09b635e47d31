#!/usr/bin/python3
"""Every method of ours must be declared, by its class, a superclass or a protocol.

check_methods.py CLANG-ARGUMENTS... -- FILE.mm...   The compiler asks for the methods that a
protocol requires, but takes a misspelt optional one for a new method that nobody ever calls.
"""

import os
import re
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor

ENTITY = re.compile(r"[|`]-ObjC(Interface|Protocol|Category|Implementation)Decl .*?(?: (\w+))?$")
PARENT = re.compile(r"[| ] [|`]-(super )?ObjC(Interface|Protocol) 0x\w+ '(\w+)'")
METHOD = re.compile(r"[| ] [|`]-ObjCMethodDecl (.*) ([-+]) (\S+) '")


class Reading:
    """What one file declares and implements, from the compiler's own account."""

    def __init__(self, account):
        self.declared, self.implemented, self.parents = {}, {}, {}
        current, kind = None, None
        for line in account.splitlines():
            if entity := ENTITY.match(line):
                kind, current = entity[1], entity[2] or "a class extension"
            elif re.match(r"[|`]-", line):
                current = None
            elif current and (parent := PARENT.match(line)):
                current = self.parent(current, kind, *parent.groups())
            elif current and (method := METHOD.match(line)):
                self.method(current, kind, *method.groups())

    def parent(self, current, kind, is_super, what, name):
        if kind == "Category" and what == "Interface":
            return name
        if what == "Protocol" or is_super:
            self.parents.setdefault(current, set()).add(name)
        return current

    def method(self, current, kind, details, sign, name):
        if kind == "Implementation":
            if " implicit" not in details and not name.startswith(".cxx_"):
                self.implemented.setdefault(current, set()).add(sign + name)
        else:
            self.declared.setdefault(current, set()).add(sign + name)

    def known(self, name, seen):
        if name in seen:
            return set()
        seen.add(name)
        found = set(self.declared.get(name, ()))
        for parent in self.parents.get(name, ()):
            found |= self.known(parent, seen)
        return found


def account_of(flags, path):
    """What is read from precompiled headers is left out."""
    return subprocess.run(["clang++-19", *flags, "-fsyntax-only", "-fno-color-diagnostics", "-Xclang", "-ast-dump",
                           path], capture_output=True, text=True, check=True).stdout


def main(arguments):
    split = arguments.index("--")
    count, problems = 0, []
    paths = arguments[split + 1:]
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        accounts = list(pool.map(lambda path: account_of(arguments[:split], path), paths))
    for path, account in zip(paths, accounts):
        reading = Reading(account)
        for name, methods in reading.implemented.items():
            count += len(methods)
            missing = methods - reading.known(name, set())
            problems += [f"{path}: {method[0]}[{name} {method[1:]}] is declared nowhere" for method in sorted(missing)]
    print("\n".join(problems), end="\n" if problems else "")
    print(f"methods: {count} checked, {len(problems)} declared nowhere")
    return bool(problems) or count == 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
