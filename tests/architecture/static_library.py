"""The static library: whose symbols it defines, and what it asks of the C runtime.

usage: static_library.py NM LIBRARY"""
import re
import sys

from binaries import finish, symbols

nm, library = sys.argv[1:]

OURS = re.compile(r"kuv|_ZN?K?3kuv|_ZZN3kuv|_ZGVN3kuv")
# All that the objects may refer to. Memory comes from nowhere else; nothing prints, aborts or throws.
RUNTIME = {"malloc", "free", "memcpy", "memmove", "memset", "memcmp", "_GLOBAL_OFFSET_TABLE_",
           "bcmp"}  # Clang's choice where memcmp() only tells whether anything differs

complaints = []
defined = symbols(nm, "-g", "--defined-only", library)
if not defined:
    complaints.append("no symbols found")
for name, _ in defined:
    if not OURS.match(name):
        complaints.append(f"global symbol without the prefix: {name}")
for name, _ in symbols(nm, "-u", library):
    if name not in RUNTIME and not OURS.match(name):
        complaints.append(f"refers to {name}")

finish(sorted(set(complaints)))
