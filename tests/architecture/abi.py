"""The binary interface against the description of it that is kept: types, constants and prototypes of the header, and symbols, versions
and name of the library.

usage: abi.py ABIDW ABIDIFF READELF CC HEADER VERSION_SCRIPT LIBRARY DESCRIPTION [--renew]

The library itself tells no types: its exports are stubs in assembler, and it is built without debugging information. So a library of
empty functions is made from the header's own prototypes, with debugging information, under the same version script and name, and
described by abigail's tools. The real one is then compared by its symbols."""
import os
import re
import subprocess
import sys
import tempfile

from binaries import output

*arguments, description = [argument for argument in sys.argv[1:] if argument != "--renew"]
abidw, abidiff, readelf, cc, header, version_script, library = arguments
renew = "--renew" in sys.argv[1:]


def empty_functions():
    """A C unit that defines every function of the header, and an enumeration of its numeric macros, which debugging information omits."""
    with open(header) as file:
        text = re.sub(r"/\*.*?\*/", "", file.read(), flags=re.DOTALL)
    prototypes = re.findall(r"^KUV_API ([^;]*);", text, re.MULTILINE)
    macros = re.findall(r"^#define (KUV_\w+) \(", text, re.MULTILINE)
    if not prototypes or not macros:
        sys.exit(f"{header}: no prototypes or no macros found")
    yield "#include <kuvcv.h>"
    yield from (prototype + " { __builtin_unreachable(); }" for prototype in prototypes)
    yield "enum KuvMacros { " + ", ".join(f"enum_{name} = {name}" for name in macros) + " };"


def describe(directory, soname, target):
    with open(os.path.join(directory, "kuvcv.c"), "w") as file:
        file.write("\n".join(empty_functions()) + "\n")
    # Freestanding, since the C library's <stdint.h> would bring its own types along.
    subprocess.run([cc, "-std=gnu11", "-O0", "-g", "-ffreestanding", "-fno-eliminate-unused-debug-types", "-fPIC", "-shared", "-nostdlib",
                    "-I", os.path.dirname(header), "-Wl,--version-script=" + version_script, "-Wl,-soname," + soname,
                    "kuvcv.c", "-o", "kuvcv.so"], cwd=directory, check=True)
    subprocess.run([abidw, "--load-all-types", "--no-show-locs", "--no-comp-dir-path", "--no-corpus-path", "--out-file", target,
                    os.path.join(directory, "kuvcv.so")], check=True)


def compare(what, other, *options):
    """Whether the stored description and the other file agree; tells the differences if not."""
    found = subprocess.run([abidiff, "--harmless", "--no-show-locs", *options, description, other], capture_output=True, text=True)
    if found.returncode:
        print(f"The {what} differs from {description}:\n{found.stdout}{found.stderr}")
    return found.returncode == 0


match = re.search(r"Library soname: \[(.*)\]", output(readelf, "-W", "-d", library))
with tempfile.TemporaryDirectory() as directory:
    current = os.path.join(directory, "kuvcv.abi")
    describe(directory, match[1], description if renew else current)
    agreed = [renew or compare("header", current, "--non-reachable-types"), compare("library", library)]
if not all(agreed):
    print("If this change is wanted, say so in CHANGELOG.md and renew the description:\n"
          "    cmake --build --preset release --target renew_abi")
    sys.exit(1)
