#!/usr/bin/env python3
"""Writes kuvcv/_contract.py from the library's header: python/generate.py [--check]

The header is read declaration by declaration. What this reader does not know is an error, never passed over. With --check nothing is
written, and the exit status tells whether the module is up to date."""
import pathlib
import pprint
import re
import sys

HERE = pathlib.Path(__file__).resolve().parent
HEADER = HERE.parent / "include" / "kuvcv.h"
MODULE = HERE / "kuvcv" / "_contract.py"

SPACE = r"(?:\s|/\*.*?\*/)"
TYPE = r"(?:const )?\w+(?:\*(?: const)?)*"
DECLARATIONS = {
    "skip": SPACE + "+",
    "macro": r"#define (?P<name>KUV_\w+) \(\((?P<type>\w+)\)(?P<value>0x[0-9a-fA-F]+)\)",
    "directive": r"#(?:ifndef|ifdef|if|else|endif|include|define KUV(?:CV_H|_API))\b[^\n]*",
    "linkage": r'extern "C" \{|\}(?=\s*#endif)',
    "alias": r"typedef (?P<type>\w+) (?P<name>\w+);",
    "opaque": r"typedef struct (?P<name>\w+) (?P=name);",
    "struct": r"typedef struct (?P<name>\w+) \{(?P<body>[^}]*)\} (?P=name);",
    "enum": r"enum \{(?P<body>[^}]*)\};",
    "function": rf"KUV_API (?P<type>{TYPE}) (?P<name>\w+)\((?P<body>[^()]*)\);",
}
DECLARATIONS = {kind: re.compile(pattern, re.DOTALL) for kind, pattern in DECLARATIONS.items()}


class Unknown(Exception):
    pass


def entries(pattern, body, what):
    """All of a body, which must consist of nothing but matches of the pattern, as their groups."""
    position, found = 0, []
    for match in re.compile(pattern, re.DOTALL).finditer(body):
        if body[position:match.start()].strip():
            break
        position = match.end()
        found.append(match.groups())
    if body[position:].strip():
        raise Unknown(f"{what}: {body[position:].strip()[:80]!r}")
    return found


def text_of(comment):
    return re.sub(r"\s+", " ", comment.strip().replace("#", ""))


def parameters(body, name):
    """(type, name) of each parameter; an array's length is part of its type."""
    if body.strip() == "void":
        return ()
    found = []
    for one in re.sub(r"\s+", " ", body.strip()).split(", "):
        match = re.fullmatch(rf"({TYPE}) (\w+)((?:\[\d+\])?)", one)
        if not match:
            raise Unknown(f"{name}: parameter {one!r}")
        found.append((match[1] + match[3], match[2]))
    return tuple(found)


def read(header):
    contract = {"STATUSES": {}, "CONSTANTS": {}, "ALIASES": {}, "OPAQUE": [], "STRUCTS": {}, "FUNCTIONS": {}}
    position = 0
    while position < len(header):
        for kind, pattern in DECLARATIONS.items():
            match = pattern.match(header, position)
            if match:
                break
        else:
            line = header.count("\n", 0, position) + 1
            raise Unknown(f"line {line}: {header[position:position + 80]!r}")
        position = match.end()
        groups = match.groupdict()
        if kind == "macro":
            contract["CONSTANTS"][groups["name"]] = int(groups["value"], 16)
        elif kind == "alias":
            contract["ALIASES"][groups["name"]] = groups["type"]
        elif kind == "opaque":
            contract["OPAQUE"].append(groups["name"])
        elif kind == "struct":
            members = entries(rf"({TYPE}) (\w+)((?:\[\d+\])?);{SPACE}*", groups["body"], groups["name"])
            contract["STRUCTS"][groups["name"]] = tuple((kind + length, name) for kind, name, length in members)
        elif kind == "enum":
            for name, value, comment in entries(r"(\w+) = (-?\d+),?\s*/\*\*<(.*?)\*/", groups["body"], "enum"):
                contract["CONSTANTS"][name] = int(value)
                if name.startswith("kuvStatus"):
                    contract["STATUSES"][int(value)] = (name, text_of(comment))
        elif kind == "function":
            contract["FUNCTIONS"][groups["name"]] = (groups["type"], parameters(groups["body"], groups["name"]))
    contract["OPAQUE"] = tuple(contract["OPAQUE"])
    return contract


def module(contract):
    lines = ['"""The declarations of kuvcv.h. Written by generate.py; not to be edited."""']
    for name, value in contract.items():
        lines.append(f"{name} = " + pprint.pformat(value, width=130, compact=True, sort_dicts=False))
    return "\n\n".join(lines) + "\n"


def main():
    if sys.argv[1:] not in ([], ["--check"]):
        sys.exit(__doc__)
    wanted = read(HEADER.read_text())
    if not sys.argv[1:]:
        MODULE.write_text(module(wanted))
        return
    found = {}
    exec(MODULE.read_text(), found)
    if any(found.get(name) != value for name, value in wanted.items()):
        sys.exit(f"{MODULE} is not what {HEADER} declares: run python/generate.py")


if __name__ == "__main__":
    main()
