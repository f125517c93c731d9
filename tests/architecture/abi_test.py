"""abi.py against headers and libraries that have been changed, so that it can be trusted to find a change.

usage: abi_test.py ABIDW ABIDIFF READELF CC HEADER VERSION_SCRIPT DESCRIPTION"""
import os
import re
import subprocess
import sys
import tempfile

from binaries import finish

*tools, cc, header, version_script, description = sys.argv[1:]
check = [sys.executable, "-B", os.path.join(os.path.dirname(os.path.abspath(__file__)), "abi.py"), *tools, cc]

# What is changed in the header, all at once: a pattern of its text and what takes its place; and what the report says of it.
HEADERS = [
    ("a parameter's type", r"(kuviSet_8u_C1R\()Kuv8u", r"\1Kuv16u", "parameter 1 of type 'typedef Kuv8u' changed"),
    ("another const", r"(kuvsZero_8u\()(Kuv8u)", r"\1const \2", "'function KuvStatus kuvsZero_8u(Kuv8u*, Kuv32s)'"),
    ("a structure's member", r"Kuv32s (width;[^{}]*\} KuviSize)", r"Kuv64s \1", "type of 'Kuv32s width' changed"),
    ("a sample type", r"typedef int16_t Kuv16s", "typedef int32_t Kuv16s", "typedef name changed from int16_t to int32_t"),
    ("a status's value", r"kuvStatusBadFlag = -16", "kuvStatusBadFlag = -19", "kuvStatusBadFlag' from value '-16' to '-19'"),
    ("a macro's value", r"(KUV_CPU_MOVBE \(\(KuvCpuFeatures\))0x20", r"\g<1>0x1000", "KUV_CPU_MOVBE' from value '32' to '4096'"),
]

complaints = []
with open(header) as file:
    text = file.read()
with open(version_script) as file:
    names = re.findall(r"^ +(kuv\w+);", file.read(), re.MULTILINE)

with tempfile.TemporaryDirectory() as directory:
    def library(name, exported, soname="libkuvcv.so.2017"):
        """A library of empty functions under these names."""
        path = os.path.join(directory, name)
        unit = "".join(f"void {export}(void) {{}}\n" for export in exported)
        script = "KUVCV_2017 { global: " + "".join(export + "; " for export in exported) + "local: *; };\n"
        with open(path + ".map", "w") as file:
            file.write(script)
        subprocess.run([cc, "-x", "c", "-", "-shared", "-fPIC", "-nostdlib", "-Wl,--version-script=" + path + ".map",
                        "-Wl,-soname," + soname, "-o", path], input=unit, text=True, check=True)
        return path

    def report(header, library):
        found = subprocess.run([*check, header, version_script, library, description], capture_output=True, text=True)
        return found.returncode, found.stdout + found.stderr

    def expect_failure(what, mentions, result):
        missing = [mention for mention in (*mentions, "renew_abi") if mention not in result[1]]
        if result[0] != 1 or missing:
            complaints.append(f"{what}: ended with {result[0]}, without {missing}: {result[1]}")

    whole = library("whole", names)
    result = report(header, whole)
    if result[0] != 0:
        complaints.append(f"no change: ended with {result[0]}: {result[1]}")
    expect_failure("a symbol less", [names[-1]], report(header, library("less", names[:-1])))
    expect_failure("a symbol more", ["kuvMore"], report(header, library("more", names + ["kuvMore"])))
    expect_failure("another name", ["libkuvcv.so.2018"], report(header, library("name", names, "libkuvcv.so.2018")))

    for what, pattern, replacement, _ in HEADERS:
        text, count = re.subn(pattern, replacement, text)
        if count != 1:
            complaints.append(f"{what}: the header holds {pattern} {count} times")
    changed = os.path.join(directory, "kuvcv.h")
    with open(changed, "w") as file:
        file.write(text)
    expect_failure("another header", [mention for *_, mention in HEADERS], report(changed, whole))

finish(complaints)
