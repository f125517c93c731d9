"""All functions of the library under their own names, as C has them: pointers, steps and sizes go in, statuses come out.

    step = ctypes.c_int32()
    image = kuvcv.raw.kuviMalloc_8u_C1(640, 480, ctypes.byref(step))
    status = kuvcv.raw.kuviSet_8u_C1R(7, image, step, (640, 480))

A pointer is None, an address, a pointer or array of ctypes, or a NumPy array, of which the address of its first element is taken. A
structure may be given as a tuple. Integers that do not fit their type are refused. Nothing else is checked. The interpreter's lock is
released during each call."""
import ctypes
import operator
import re

import numpy

from . import _contract, _library

_SCALARS = {
    "uint8_t": ctypes.c_uint8, "int8_t": ctypes.c_int8, "uint16_t": ctypes.c_uint16, "int16_t": ctypes.c_int16,
    "uint32_t": ctypes.c_uint32, "int32_t": ctypes.c_int32, "uint64_t": ctypes.c_uint64, "int64_t": ctypes.c_int64,
    "float": ctypes.c_float, "double": ctypes.c_double, "char": ctypes.c_char,
}


def _scalar(name):
    """The ctypes type behind a name of the header, or None."""
    while name in _contract.ALIASES:
        name = _contract.ALIASES[name]
    return _SCALARS.get(name)


class _Integer:
    """An argument that must fit its type; ctypes alone would cut it."""

    def __init__(self, kind):
        self.kind, bits = kind, 8 * ctypes.sizeof(kind)
        signed = kind(-1).value < 0
        self.lowest, self.highest = (-1 << bits - 1, (1 << bits - 1) - 1) if signed else (0, (1 << bits) - 1)

    def from_param(self, value):
        if isinstance(value, self.kind):
            return value
        number = operator.index(value)
        if not self.lowest <= number <= self.highest:
            raise OverflowError(f"{number} is not within {self.lowest} to {self.highest}")
        return self.kind(number)


class _Real:
    """An argument that is a number, NumPy's own included."""

    def __init__(self, kind):
        self.kind = kind

    def from_param(self, value):
        return value if isinstance(value, self.kind) else self.kind(float(value))


class _Pointer:
    """A pointer argument: to elements of a ctypes type, or to anything if that is None."""

    def __init__(self, element, constant):
        self.element, self.constant = element, constant
        self.pointer = ctypes.POINTER(element) if element else ctypes.c_void_p
        self.dtype = numpy.dtype(element) if element in _SCALARS.values() else None

    def from_param(self, value):
        if isinstance(value, numpy.ndarray):
            if self.dtype is not None and value.dtype != self.dtype:
                raise TypeError(f"an array of {self.dtype} is wanted, not of {value.dtype}")
            if not self.constant and not value.flags.writeable:
                raise ValueError("the array is read-only")
            return ctypes.c_void_p(value.ctypes.data)
        if value is None or isinstance(value, (int, ctypes.c_void_p)):
            return ctypes.c_void_p.from_param(value)
        return self.pointer.from_param(value)


class _Pointers:
    """A pointer to pointers: an array of ctypes, or a sequence of what _Pointer takes."""

    def __init__(self, element, constant):
        self.pointer = _Pointer(element, constant)

    def from_param(self, value):
        if value is None or isinstance(value, (int, ctypes.c_void_p, ctypes.Array, ctypes._Pointer)):
            return ctypes.c_void_p.from_param(value)
        converted = [self.pointer.from_param(one) for one in value]
        addresses = [one if isinstance(one, (int, type(None))) else ctypes.cast(one, ctypes.c_void_p) for one in converted]
        return (ctypes.c_void_p * len(addresses))(*addresses)


def _argument(kind):
    match = re.fullmatch(r"(const )?(\w+)((?:\*| const)*)(?:\[\d+\])?", kind)
    depth = kind.count("*") + kind.count("[")
    element = globals().get(match[2]) if match[2] in _contract.STRUCTS else _scalar(match[2])
    if depth == 0:
        return element if match[2] in _contract.STRUCTS else (_Real if element in (ctypes.c_float, ctypes.c_double) else _Integer)(element)
    return (_Pointer if depth == 1 else _Pointers)(element, bool(match[1]))


def _structure(name, members):
    fields = []
    for kind, member in members:
        array = re.fullmatch(r"(\w+)\[(\d+)\]", kind)
        fields.append((member, ctypes.c_char_p if kind == "const char*" else _scalar(array[1]) * int(array[2]) if array else _scalar(kind)))

    arguments = [_argument(kind) for kind, _ in members]

    def from_param(cls, value):
        if isinstance(value, cls):
            return value
        if len(value) != len(arguments):
            raise TypeError(f"{name} has {len(arguments)} members, not {len(value)}")
        return cls(*(argument.from_param(one) for argument, one in zip(arguments, value)))

    return type(name, (ctypes.Structure,), {"_fields_": fields, "from_param": classmethod(from_param), "__module__": __name__})


for _name, _members in _contract.STRUCTS.items():
    globals()[_name] = _structure(_name, _members)
globals().update(_contract.CONSTANTS)


def _result(kind):
    if kind == "void":
        return None
    if kind == "const KuvLibraryVersion*":
        return ctypes.POINTER(globals()["KuvLibraryVersion"])
    return ctypes.c_void_p if kind.endswith("*") else _scalar(kind)


def declaration(name):
    """A function's prototype in C."""
    result, parameters = _contract.FUNCTIONS[name]
    arguments = (re.sub(r"^(.*?)(\[\d+\])?$", lambda kind: f"{kind[1]} {parameter}{kind[2] or ''}", kind) for kind, parameter in parameters)
    return f"{result} {name}({', '.join(arguments) or 'void'})"


_shared = _library.load()
for _name, (_kind, _parameters) in _contract.FUNCTIONS.items():
    _function = getattr(_shared, _name)
    _function.restype = _result(_kind)
    _function.argtypes = [_argument(kind) for kind, _ in _parameters]
    _function.__doc__ = declaration(_name)
    globals()[_name] = _function

__all__ = [*_contract.FUNCTIONS, *_contract.STRUCTS, *_contract.CONSTANTS, "declaration"]
