"""Object files that the linker cannot mix: a variant's unit defines no symbol that another variant's unit defines too.

usage: objects.py NM READELF VARIANT OBJECT...

An inline function or template instance in a unit that is compiled once per variant would be a weak symbol of which the linker keeps any
one, with that variant's instructions. The code is px .. h9, or core for what is compiled once."""
import os
import re
import sys

from binaries import exports, finish, output, symbols

nm, readelf, code, *objects = sys.argv[1:]
complaints = []

for path in objects:
    name = os.path.basename(path)
    for symbol, kind in symbols(nm, path):
        if kind in "VWvwui" and code != "core":
            complaints.append(f"{name}: weak or unique symbol {symbol}")
        if kind in "TDBRC" and code != "core" and not symbol.endswith("_" + code):
            complaints.append(f"{name}: global symbol without the variant's code: {symbol}")

    sections = output(readelf, "-W", "-S", path)
    initialisers = re.findall(r" (\.(?:init_array|ctors|preinit_array)\S*)", sections)
    hook = name.startswith("selection.cpp")  # the load hook is the library's only initialiser
    if bool(initialisers) != hook:
        complaints.append(f"{name}: initialisers {initialisers}")
    if re.search(r" \.t(?:bss|data)\b", sections):
        complaints.append(f"{name}: thread-local data")
    stack_note = re.findall(r" \.note\.GNU-stack .*", sections)
    if len(stack_note) != 1 or re.search(r" \d+ +[WAX]*X[A-Z]* ", stack_note[0]):
        complaints.append(f"{name}: no note of a non-executable stack: {stack_note}")

finish(complaints)
