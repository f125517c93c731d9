"""The documents are true: their programs run and print what is shown, and their lists of functions and links are right.

usage: documents.py C_COMPILER SOURCE LIBRARY DIRECTORY [OPTION...]

A block of C with a main function is a program. It must run without an error, and print what a block of text right behind it shows. Any
other block of C must stand literally in the header or in the list of exports. The families' pages list all functions in tables, whose first
cell is what names begin with and whose second cell is what they end with."""
import pathlib
import re
import subprocess
import sys

from binaries import exports, finish

compiler, source, library, directory = sys.argv[1], *(pathlib.Path(each).resolve() for each in sys.argv[2:5])
options = sys.argv[5:]
directory.mkdir(parents=True, exist_ok=True)
families = {each.name for each in (source / "src").iterdir() if each.is_dir()} - {"core", "simd"}
complaints = []
listed = set()

quotable = (source / "include/kuvcv.h").read_text() + (source / "src/core/exports.def").read_text()
known = set(exports(source / "src/core/exports.def"))


def run(where, *command):
    result = subprocess.run([str(each) for each in command], capture_output=True, text=True, errors="replace")
    if result.returncode != 0:
        complaints.append(f"{where}: {pathlib.Path(command[0]).name} ends with {result.returncode}\n{result.stdout}{result.stderr}")
    return result


def check_program(where, name, text, shown):
    program = directory / name
    unit = program.with_suffix(".c")
    unit.write_text(text)
    strict = ["-std=c11", "-Wall", "-Wextra", "-Werror", f"-I{source / 'include'}"]
    if run(where, compiler, *strict, *options, unit, library, f"-Wl,-rpath,{library.parent}", "-lm", "-o", program).returncode == 0:
        result = run(where, program)
        if shown is not None and result.stdout != shown:
            complaints.append(f"{where} prints\n{result.stdout}not\n{shown}")


for path in [source / "README.md", source / "CONTRIBUTING.md", *sorted((source / "docs").glob("*.md"))]:
    text = path.read_text()
    blocks = list(re.finditer(r"^```(\w*)\n(.*?)^```\n", text, re.MULTILINE | re.DOTALL))
    for number, (block, following) in enumerate(zip(blocks, [*blocks[1:], None])):
        where = f"{path.relative_to(source)}:{text.count(chr(10), 0, block.start()) + 1}"
        if block[1] != "c":
            continue
        if "int main(" in block[2]:
            adjoins = following and following[1] == "text" and not text[block.end():following.start()].strip()
            check_program(where, f"{path.stem}-{number}", block[2], following[2] if adjoins else None)
        elif block[2] not in quotable:
            complaints.append(f"{where}: stands neither in the header nor in the list of exports")

    prose = re.sub(r"^```.*?^```\n", "", text, flags=re.MULTILINE | re.DOTALL)
    for first, second in re.findall(r"^\| `(kuv[is][A-Z]\w*)` +\|([^|]*)\|", prose, re.MULTILINE) if path.stem in families else ():
        listed |= {first + ending for ending in re.findall(r"`(\w*)`", second)} or {first}
    for name in sorted(set(re.findall(r"\bkuv[is]?[A-Z]\w*\b(?![*_])", prose)) - known):
        if name not in quotable:
            complaints.append(f"{path.relative_to(source)}: there is no {name}")
    for target in re.findall(r"\]\(([^)#]+)[^)]*\)", prose):
        if "://" not in target and not (path.parent / target).exists():
            complaints.append(f"{path.relative_to(source)}: there is no {target}")

complaints += [f"a table lists {name}, which is no export" for name in sorted(listed - known)]
housekeeping = re.compile(r"kuvInit|kuv[SG]etCpuFeatures|kuvAlignPtr|kuvcvGetLibVersion|kuv[is]?(Malloc|Free)")
complaints += [f"{name} is in no table" for name in sorted(known - listed) if not housekeeping.match(name)]
finish(complaints)
