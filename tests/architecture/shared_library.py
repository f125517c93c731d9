"""The shared library: it exports exactly the listed functions, and needs nothing but the C runtime.

usage: shared_library.py NM READELF LIBRARY EXPORTS_DEF"""
import re
import sys

from binaries import exports, finish, output, symbols

nm, readelf, library, exports_def = sys.argv[1:]
complaints = []

wanted = {name + "@@KUVCV_2017" for name in exports(exports_def)}
got = {name for name, kind in symbols(nm, "-D", "--defined-only", "--with-symbol-versions", library) if kind != "A"}
complaints += [f"not exported: {name}" for name in sorted(wanted - got)]
complaints += [f"exported, but not in the list: {name}" for name in sorted(got - wanted)]

dynamic = output(readelf, "-W", "-d", library)
needed = re.findall(r"\(NEEDED\).*\[(.*)\]", dynamic)
if needed != ["libc.so.6"]:
    complaints.append(f"needs {needed}, not the C library alone")
soname = re.findall(r"\(SONAME\).*\[(.*)\]", dynamic)
if soname != ["libkuvcv.so.2017"]:
    complaints.append(f"SONAME is {soname}")
if "(TEXTREL)" in dynamic:
    complaints.append("has text relocations")
if not re.search(r"\(FLAGS\).*BIND_NOW|\(FLAGS_1\).*NOW", dynamic):
    complaints.append("is bound lazily, so that its dispatch records are not write-protected")

segments = output(readelf, "-W", "-l", library)
stack = re.findall(r"GNU_STACK.*", segments)
if len(stack) != 1 or "RWE" in stack[0]:
    complaints.append(f"wants an executable stack: {stack}")
if "GNU_RELRO" not in segments:
    complaints.append("has no read-only relocations")
for segment in re.findall(r"^ +LOAD.*", segments, re.MULTILINE):
    if "RWE" in segment:
        complaints.append(f"has a segment both writable and executable: {segment}")

finish(complaints)
