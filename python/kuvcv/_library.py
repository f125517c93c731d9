"""Where the shared library is."""
import ctypes
import os
import pathlib

NAME = "libkuvcv.so.2017"


def candidates():
    """Names for the dynamic linker, the first that is there to be taken."""
    chosen = os.environ.get("KUVCV_LIBRARY")
    if chosen:
        return [chosen]  # who names one wants no other
    found = []
    beside = pathlib.Path(__file__).resolve().parent / NAME
    if beside.exists():
        found.append(str(beside))
    return [*found, NAME]


def load():
    reasons = []
    for name in candidates():
        try:
            return ctypes.CDLL(name)
        except OSError as reason:
            reasons.append(str(reason))
    raise ImportError("the kuvCV library cannot be loaded; KUVCV_LIBRARY may name it: " + "; ".join(reasons))
