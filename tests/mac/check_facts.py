#!/usr/bin/python3
"""Holds our declarations of the Mac's frameworks against published facts.

check_facts.py TYPES [INCLUDE]   TYPES is package/types of @nativescript/macos-node-api, which was
generated from the real frameworks. The program compiles with -Werror against these declarations,
so every message that it sends is checked with them.
"""

import json
import re
import subprocess
import sys
import tempfile
from collections import Counter
from os.path import commonprefix
from pathlib import Path

HERE = Path(__file__).resolve().parent
# Of the language itself and of the compiler, which the facts do not speak of.
LANGUAGE = {"NSObject", "NSConstantString", "NSSimpleCString", "NSFastEnumeration", "NSCopying"}
# Values that the facts leave out: macros, and functions inlined by the headers.
NOT_IN_FACTS = {"CFBridgingRelease", "CGRectMake", "NSLog"}

CLASS = re.compile(r"declare (class|interface) (\w+)(?:<.*?>)?(?: extends ([\w.]+))?")
PROPERTY = re.compile(r"  (static )?(?:readonly )?(?:get )?(\w+)(?:\(\)|\??): (.*);$")
METHOD = re.compile(r"  (static )?(\w+)(\?)?(?:<.*?>)?\((?:this: This(?:, )?)?(.*)\): (.*);$")
FUNCTION = re.compile(r"declare function (\w+)\((.*)\): (.*);")
ENUM = re.compile(r"declare const (\w+): \{$")
MEMBER = re.compile(r"  (\w+): (-?\d+),$")
CONSTANT = re.compile(r"declare const (\w+): (.*);")


class Facts:
    def __init__(self, folder):
        self.classes, self.enums, self.constants, self.functions = {}, {}, {}, {}
        for path in sorted(Path(folder).glob("*.d.ts")):
            self.read(path.read_text().splitlines())

    def read(self, lines):
        current, members = None, None
        for line in lines:
            if line.startswith("}"):
                current, members = None, None
            elif found := CLASS.match(line):
                kind, name, parent = found.groups()
                current = self.classes.setdefault(name, {"super": None, "methods": {}, "properties": {}})
                if kind == "class" and parent != "NativeObject":
                    current["super"] = parent
            elif found := ENUM.match(line):
                members = self.enums.setdefault(found[1], {})
            elif members is not None and (found := MEMBER.match(line)):
                members[found[1]] = int(found[2])
            elif found := CONSTANT.match(line):
                self.constants[found[1]] = found[2]
            elif found := FUNCTION.match(line):
                self.functions[found[1]] = (found[2], found[3])
            elif current is not None and not line.startswith("  get ") and (found := METHOD.match(line)):
                current["methods"][bool(found[1]), found[2]] = (found[4], found[5], bool(found[3]))
            elif current is not None and (found := PROPERTY.match(line)):
                current["properties"][bool(found[1]), found[2]] = found[3]

    def lineage(self, name):
        while name:
            if name in self.classes:
                yield self.classes[name]
            name = self.classes.get(name, {}).get("super")
        yield self.classes["NSObjectProtocol"]

    def find(self, name, kind, key):
        return next((known[kind][key] for known in self.lineage(name) if key in known[kind]), None)

    def value(self, enum, name):
        """Of an enumeration's constant: facts name it in full, or without what all have in common."""
        every = [self.enums[enum]] if enum in self.enums else self.enums.values()
        for members in every:
            if name in members:
                return members[name]
        if enum in self.enums:
            ends = [member for member in self.enums[enum] if name.endswith(member)]
            return self.enums[enum][max(ends, key=len)] if ends else None
        bare = name.removeprefix("k")
        for prefix, members in self.enums.items():
            shared = len(commonprefix([bare, prefix]))
            for cut in range(5, shared + 1):
                if bare[cut:] in members:
                    return members[bare[cut:]]
        return None


def arguments(text):
    """The types of a list of arguments, split at its outer commas."""
    parts, depth, part = [], 0, ""
    for i, c in enumerate(text):
        depth += c in "(<{["
        depth -= c in ")}]" or (c == ">" and text[i - 1] != "=")
        if c == "," and depth == 0:
            parts.append(part)
            part = ""
        else:
            part += c
    return [p.strip().split(": ", 1)[1] for p in [*parts, part] if p.strip()]


def plain(ctype):
    words = r"\b(const|_Nullable|_Nonnull|_Null_unspecified|__kindof|__autoreleasing|__strong|__unsafe_unretained)\b"
    return re.sub(words, "", ctype).strip()


def agrees(ctype, fact):
    """Whether a type of ours and a type of the facts can be the same."""
    ctype, fact = plain(ctype), fact.replace(" | null", "")
    if "(^" in ctype:
        return "=>" in fact
    if ctype in ("BOOL", "bool"):
        return fact == "boolean"
    if ctype == "void":
        return fact == "void"
    if re.match(r"NSString ?\*$|NSRunLoopMode$", ctype):
        return fact == "string"
    if named := re.match(r"([A-Z][A-Z]\w+)(<.*>)? ?\*$", ctype):
        return bool(re.search(rf"\b{named[1]}\b", fact)) or fact in ("this", "interop.Object") or "InstanceType" in fact
    if ctype.startswith(("id", "instancetype", "ObjectType", "KeyType")) or ctype == "SEL":
        return fact not in ("number", "boolean", "void")
    if "*" in ctype or "[" in ctype or ctype.endswith(("Ref", "_t")) or ctype == "CFTypeRef":
        return fact not in ("boolean", "void")
    if re.match(r"(NS|CG)(Rect|Point|Size)$", ctype):
        return fact == "CG" + ctype[2:]
    return fact in ("number", f"interop.Enum<typeof {ctype}>", ctype)


class Check:
    def __init__(self, facts):
        self.facts, self.problems, self.counts = facts, [], Counter()

    def wrong(self, what):
        self.problems.append(what)

    def enumeration(self, node):
        auto = -1
        for entry in node.get("inner", []):
            if entry["kind"] != "EnumConstantDecl":
                continue
            given = next((int(x["value"]) for x in entry.get("inner", []) if "value" in x), None)
            auto = given if given is not None else auto + 1
            self.counts["constants"] += 1
            fact = self.facts.value(node.get("name", ""), entry["name"])
            if fact is None and self.facts.constants.get(entry["name"]) == "number":
                self.counts["of these without a published value"] += 1
            elif fact != auto:
                self.wrong(f"constant {entry['name']}: ours {auto}, fact {fact}")

    def function(self, node):
        if node["name"] in NOT_IN_FACTS:
            return
        self.counts["functions"] += 1
        fact = self.facts.functions.get(node["name"])
        if fact is None:
            self.wrong(f"function {node['name']}: unknown")
            return
        result = node["type"]["qualType"].split("(")[0].strip()
        ours = [p["type"]["qualType"] for p in node.get("inner", []) if p["kind"] == "ParmVarDecl"]
        self.types(f"function {node['name']}", ours, arguments(fact[0]), result, fact[1], loosely=True)

    def types(self, where, ours, facts, result, fact, loosely=False):
        def same(ctype, known):
            return agrees(ctype, known) or (loosely and (ctype, known) == ("Boolean", "number")) or (
                loosely and known.startswith("interop.") and not re.search(r"^(BOOL|bool|double|CGFloat)$", ctype))
        if len(ours) != len(facts):
            self.wrong(f"{where}: {len(ours)} arguments, fact {facts}")
            return
        for ctype, known in zip(ours, facts):
            if not same(ctype, known):
                self.wrong(f"{where}: argument {ctype}, fact {known}")
        if not same(result, fact):
            self.wrong(f"{where}: result {result}, fact {fact}")

    def variable(self, node):
        known = self.facts.constants.get(node["name"])
        value = next((x for x in walk(node) if x["kind"] in ("IntegerLiteral", "FloatingLiteral")), None)
        self.counts["constants"] += 1
        if known is None and self.facts.value("", node["name"]) is None:
            self.wrong(f"constant {node['name']}: unknown")
        elif value and not agrees(node["type"]["qualType"].replace("const ", ""), known or "number"):
            self.wrong(f"constant {node['name']}: {node['type']['qualType']}, fact {known}")

    def class_or_protocol(self, node):
        name, is_protocol = node["name"], node["kind"] == "ObjCProtocolDecl"
        known = self.facts.classes.get("NSObjectProtocol" if is_protocol and name == "NSObject" else name)
        self.counts["protocols" if is_protocol else "classes"] += 1
        if known is None:
            self.wrong(f"{name}: unknown")
            return
        parent = node.get("super", {}).get("name")
        if not is_protocol and known["super"] != parent:
            self.wrong(f"{name}: superclass {parent}, fact {known['super']}")
        for member in node["inner"]:
            if member["kind"] == "ObjCPropertyDecl":
                self.property(name, member)
            elif member["kind"] == "ObjCMethodDecl" and not member.get("isImplicit"):
                self.method(name, member)

    def property(self, name, node):
        self.counts["properties"] += 1
        fact = self.facts.find(name, "properties", (bool(node.get("class")), node["name"]))
        ctype = node["type"]["qualType"]
        if fact is None:
            self.wrong(f"{name}.{node['name']}: unknown")
        elif not agrees(ctype, fact) and not (ctype.endswith("Ref") and fact.startswith("interop.")):
            self.wrong(f"{name}.{node['name']}: {ctype}, fact {fact}")

    def method(self, name, node):
        self.counts["methods"] += 1
        head, *rest = node["name"].rstrip(":").split(":")
        script = head + "".join(part[:1].upper() + part[1:] for part in rest)
        static = not node["instance"]
        ours = [p["type"]["qualType"] for p in node.get("inner", []) if p["kind"] == "ParmVarDecl"]
        where = f"{'+' if static else '-'}[{name} {node['name']}]"
        fact = self.facts.find(name, "methods", (static, script))
        if fact is None and (setter := re.match(r"set([A-Z]\w*):$", node["name"])):
            written = setter[1][0].lower() + setter[1][1:]
            if self.facts.find(name, "properties", (static, written)):
                return
        if fact is None:
            self.wrong(f"{where}: unknown")
            return
        self.types(where, ours, arguments(fact[0]), node["returnType"]["qualType"], fact[1])


def walk(node):
    yield node
    for inner in node.get("inner", []):
        yield from walk(inner)


def declarations(include):
    """The compiler's own reading of all our headers."""
    heads = sorted(str(path.relative_to(include)) for path in Path(include).rglob("*.h"))
    with tempfile.NamedTemporaryFile("w", suffix=".mm") as source:
        source.write("#include <Foundation/Foundation.h>\n" + "".join(f"#include <{head}>\n" for head in heads))
        source.flush()
        result = subprocess.run(
            ["clang++-19", "-target", "arm64-apple-macos13", "-std=c++20", "-fobjc-arc", "-fblocks",
             "-nostdlibinc", "-I", str(include), "-I", str(HERE / "libc"), "-fsyntax-only", "-Xclang",
             "-ast-dump=json", source.name], capture_output=True, text=True, check=False)
    if result.returncode:
        sys.exit(result.stderr)
    return json.loads(result.stdout)["inner"]


def main(types, include=HERE / "include"):
    check = Check(Facts(types))
    todo = list(declarations(include))
    while todo:
        node = todo.pop(0)
        kind, name = node["kind"], node.get("name", "")
        if kind == "LinkageSpecDecl":
            todo = node.get("inner", []) + todo
        elif kind == "EnumDecl":
            check.enumeration(node)
        elif kind == "FunctionDecl" and not node.get("isImplicit"):
            check.function(node)
        elif kind == "VarDecl":
            check.variable(node)
        elif kind in ("ObjCInterfaceDecl", "ObjCProtocolDecl") and node.get("inner"):
            if name not in LANGUAGE and not name.startswith("OS_"):
                check.class_or_protocol(node)
    for problem in check.problems:
        print(problem)
    counted = ", ".join(f"{count} {what}" for what, count in sorted(check.counts.items()))
    names = sum(check.counts.values()) - check.counts["of these without a published value"]
    print(f"facts: {names} names checked ({counted}), {len(check.problems)} wrong or unknown")
    return bool(check.problems)


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
