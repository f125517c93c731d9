"""What the checks of the built files share: the binutils' answers as Python values, and how a check ends."""
import re
import subprocess
import sys


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True, errors="replace").stdout


def symbols(nm, *arguments):
    """(name, type letter) of each symbol that nm lists; a version suffix stays part of the name."""
    found = []
    for line in output(nm, *arguments).splitlines():
        match = re.fullmatch(r"(?:[0-9a-f]+)? *([A-Za-z]) (\S+)", line.strip())
        if match:
            found.append((match[2], match[1]))
    return found


def exports(exports_def):
    """Names of the exports, direct and dispatched."""
    with open(exports_def) as file:
        return re.findall(r"^KUV_(?:DIRECT|DISPATCHED)\((\w+)", file.read(), re.MULTILINE)


def finish(complaints):
    for each in complaints:
        print(each)
    sys.exit(1 if complaints else 0)
