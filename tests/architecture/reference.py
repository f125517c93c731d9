"""Makes the reference of the header with Doxygen: without a warning, and with every name of the header in the group of a family.

usage: reference.py DOXYGEN SOURCE DIRECTORY"""
import pathlib
import re
import subprocess
import sys
import xml.etree.ElementTree

from binaries import exports, finish

doxygen, source, directory = sys.argv[1], *map(pathlib.Path, sys.argv[2:])
directory = directory.resolve()
directory.mkdir(parents=True, exist_ok=True)
tags = directory / "kuvcv.tag"
tags.unlink(missing_ok=True)

settings = (source / "docs/Doxyfile").read_text() + f'OUTPUT_DIRECTORY = "{directory}"\nGENERATE_TAGFILE = "{tags}"\n'
run = subprocess.run([doxygen, "-"], input=settings, cwd=source, text=True, stderr=subprocess.PIPE)
complaints = run.stderr.splitlines()
if run.returncode != 0 or not tags.exists():
    finish(complaints + [f"{doxygen} ends with {run.returncode}"])

groups = {}
for compound in xml.etree.ElementTree.parse(tags).findall("compound[@kind='group']"):
    for element in [*compound.findall("member/name"), *compound.findall("class"), *compound.findall("member/enumvalue")]:
        groups.setdefault(element.text, []).append(compound.find("name").text)

header = (source / "include/kuvcv.h").read_text()
code = re.sub(r"/\*.*?\*/", "", header, flags=re.DOTALL)
wanted = set(exports(source / "src/core/exports.def"))
wanted |= set(re.findall(r"^#define (KUV_CPU_\w+)", code, re.MULTILINE))
wanted |= set(re.findall(r"^typedef .*?(\w+);", code, re.MULTILINE)) | set(re.findall(r"^} (\w+);", code, re.MULTILINE))
wanted |= set(re.findall(r"^ +(kuv\w+) = ", code, re.MULTILINE))
for name in sorted(wanted):
    if len(groups.get(name, [])) != 1:
        complaints.append(f"{name} is in {groups.get(name, 'no group')}, not in the one group of its family")
finish(complaints)
