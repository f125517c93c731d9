"""The functions on images and signals that need no record and no buffer, wrapped by rules.

A function's name tells sample types and channels, its prototype the rest. Arrays take the place of pointers, steps and sizes; what a
function returns through pointers is returned; a status becomes an exception or a warning. `dst` may be left out where all of it is
written, and is returned."""
import inspect
import re

import numpy

from . import _contract, raw
from ._arrays import Image, constants, row
from ._status import check

_NAME = re.compile(r"kuv(?P<object>[is])(?P<operation>\w+?)_(?P<types>(?:\d+[usf]+){1,2})"
                   r"(?:_(?P<layouts>(?:AC4|[CP]\d){1,2})?(?P<rest>C?M?I?R?(?:Sfs)?))?")
_SAMPLES = {"Kuv8u": "u1", "Kuv16u": "u2", "Kuv16s": "i2", "Kuv32u": "u4", "Kuv32s": "i4", "Kuv32f": "f4", "Kuv64f": "f8"}
_DEFAULTS = {"scaleFactor": 0, "hint": 2, "roundMode": 1, "val": 0, "nBitSize": None}
# Images of which the function takes one channel of several, by the address of its first sample: how many there are.
_CHANNEL_OF = {("kuviCopy_8u_C1C3R", "dst"): 3, ("kuviSet_8u_C4CR", "dst"): 4}
# Functions that clear the lowest bits of a step: an array's own rows would not be met.
_STEP_UNITS = {"kuviAbs_32f_C1IR": 4, "kuviSqr_32f_C1IR": 4, "kuviSqrt_32f_C1IR": 4, "kuviSqr_16s_C1IRSfs": 2}
_DIAGONALS = (raw.kuvAxisDiagonal, raw.kuvAxisSecondDiagonal)


class Form:
    """One function: what its parameters mean, and how it is called."""

    def __init__(self, name):
        self.name, self.raw = name, getattr(raw, name)
        match = _NAME.fullmatch(name)
        if not match or _contract.FUNCTIONS[name][0] != "KuvStatus":
            raise ValueError(f"{name} is no function of this kind")
        self.operation, self.rest = match["operation"], match["rest"] or ""
        self.layouts = re.findall(r"AC4|[CP]\d", match["layouts"] or "")
        self.parameters = _contract.FUNCTIONS[name][1]
        names = [parameter for _, parameter in self.parameters]
        self.roles = {parameter: self._role(kind, parameter, names, match["object"] == "s") for kind, parameter in self.parameters}
        self.images = [parameter for parameter, role in self.roles.items() if role in ("image", "planes")]
        # The part of dst that is not written has to be there before.
        kept = "M" in self.rest or self.layouts[-1:] == ["AC4"] or (name, "dst") in _CHANNEL_OF
        self.makes = "dst" if self.roles.get("dst") == "image" and not kept and self.images != ["dst"] else None
        self.signature = self._signature()

    def _role(self, kind, parameter, names, signal):
        sample = _SAMPLES.get(re.sub(r"const |[\*\[].*", "", kind))
        const = kind.startswith("const ")
        if parameter.endswith("Step") and parameter[:-4] in names:
            return "step"
        if parameter in ("roiSize", "len"):
            return "size"
        if sample and parameter + "Step" in names:
            return "planes" if "* const[" in kind else "image"
        if sample and kind.count("*") == 1 and "[" not in kind:
            if signal and parameter in ("src", "dst", "srcDst"):
                return "signal"
            if "8x8" in self.operation:
                return "block"
            if const and parameter in ("table", "dstOrder"):
                return parameter
            if not const and parameter in ("sum", "mean", "stdDev", "minValue", "maxValue"):
                return "result"
        if re.fullmatch(r"(const )?\w+\[3\]", kind):
            return "constants" if const else "result"
        if "*" not in kind and "[" not in kind and kind not in _contract.STRUCTS:
            return "number"
        raise ValueError(f"{self.name}: {parameter} follows none of the rules")

    def _signature(self):
        shown = [parameter for parameter, role in self.roles.items() if role not in ("step", "size", "result") and parameter != self.makes]
        order = [one for one in shown if one not in _DEFAULTS] + [one for one in shown if one in _DEFAULTS]
        kind = inspect.Parameter.POSITIONAL_OR_KEYWORD
        found = [inspect.Parameter(one, kind, default=_DEFAULTS.get(one, inspect.Parameter.empty)) for one in order]
        if self.makes:
            found.append(inspect.Parameter(self.makes, kind, default=None))
        return inspect.Signature(found)

    def dtype(self, parameter):
        kind = dict(map(reversed, self.parameters))[parameter]
        return numpy.dtype(_SAMPLES[re.sub(r"const |[\*\[].*", "", kind)])

    def channels(self, parameter):
        if "24u" in self.name and parameter == "dst":
            return 3
        if parameter == "mask" or (self.name, parameter) in _CHANNEL_OF:
            return 1
        layout = self.layouts[-1] if parameter.startswith("dst") else self.layouts[0]
        return int(layout[-1])

    def image(self, parameter, array):
        if parameter == "mask" and isinstance(array, numpy.ndarray) and array.dtype == bool:
            array = array.view(numpy.uint8)
        apart = _CHANNEL_OF.get((self.name, parameter), 0) * self.dtype(parameter).itemsize
        image = Image(array, self.dtype(parameter), self.channels(parameter), parameter, parameter in ("dst", "srcDst"), apart or None)
        if image.step % _STEP_UNITS.get(self.name, 1):
            raise ValueError(f"{parameter}: rows are {image.step} bytes apart, which is no multiple of {_STEP_UNITS[self.name]}")
        return image

    def planes(self, parameter, arrays):
        count = self.channels(parameter)
        if not isinstance(arrays, (list, tuple)) or len(arrays) != count:
            raise TypeError(f"{parameter}: a list of {count} planes is wanted")
        found = [Image(array, self.dtype(parameter), 1, f"{parameter}[{index}]") for index, array in enumerate(arrays)]
        if len({(one.step, one.size) for one in found}) > 1:
            raise ValueError(f"{parameter}: the planes differ in size or step")
        return found

    def signal(self, parameter, array, length=None):
        if numpy.ndim(array) != 1:
            raise ValueError(f"{parameter} has {numpy.ndim(array)} dimensions instead of one")
        return row(array, self.dtype(parameter), length, parameter, parameter != "src")

    def block(self, parameter, array):
        return row(array, self.dtype(parameter), 64, parameter, parameter != "src")

    def bind(self, arguments, keywords):
        bound = self.signature.bind(*arguments, **keywords)
        bound.apply_defaults()
        return bound.arguments

    def fits(self, given):
        """Whether the arrays are of the types and shapes that the function is for."""
        try:
            for parameter in self.images:
                if parameter != self.makes or given[parameter] is not None:
                    getattr(self, self.roles[parameter])(parameter, given[parameter])
            for parameter, role in self.roles.items():
                if role in ("signal", "block"):
                    getattr(self, role)(parameter, given[parameter])
                elif role == "constants" and numpy.ndim(given[parameter]) != 1 or role == "number" and numpy.ndim(given[parameter]) != 0:
                    return False
        except (TypeError, ValueError):
            return False
        return True

    def sizes(self, found, given):
        """The size that the function is told, after those of all images have been compared."""
        sizes = {parameter: (image[0] if isinstance(image, list) else image).size for parameter, image in found.items()}
        first = next(iter(sizes.values()))
        told, wanted = first, dict.fromkeys(sizes, first)
        if self.operation == "Integral":
            wanted["dst"] = (first[0] + 1, first[1] + 1)
        elif self.operation == "Mirror" and given["axis"] in _DIAGONALS:
            told = wanted["dst"] = first[::-1]
        if self.operation == "CbYCr422ToRGB" and told[0] < 2:
            raise ValueError("video of a single column has no pair of pixels")
        for parameter, size in sizes.items():
            if size != wanted[parameter]:
                raise ValueError(f"{parameter} is {size[0]} x {size[1]} pixels instead of {wanted[parameter][0]} x {wanted[parameter][1]}")
        return told

    def make(self, found, given):
        """A new image for `dst`, which fits the first source."""
        first = next(iter(found.values()))
        width, height = (first[0] if isinstance(first, list) else first).size
        if self.operation == "Integral":
            width, height = width + 1, height + 1
        elif self.operation == "Mirror" and given["axis"] in _DIAGONALS:
            width, height = height, width
        channels = self.channels(self.makes)
        return numpy.empty((height, width) if channels == 1 else (height, width, channels), self.dtype(self.makes))

    def call(self, given, stacklevel):
        # Each number as its type has it, whatever type it is given in; the bits of an index may be left to the table.
        for (_, parameter), argument in zip(self.parameters, self.raw.argtypes):
            if self.roles[parameter] != "number" or parameter == "nBitSize" and given[parameter] is None:
                continue
            try:
                given[parameter] = argument.from_param(given[parameter]).value
            except (TypeError, OverflowError) as error:
                raise type(error)(f"{parameter}: {error}") from None
        found = {}
        for parameter in self.images:
            if parameter == self.makes and given[parameter] is None:
                continue
            found[parameter] = getattr(self, self.roles[parameter])(parameter, given[parameter])
        if self.makes and self.makes not in found:
            found[self.makes] = self.image(self.makes, self.make(found, given))
        size = self.sizes(found, given) if found else None
        results, arguments = [], []
        for (kind, parameter), argument in zip(self.parameters, self.raw.argtypes):
            role = self.roles[parameter]
            if role == "step":
                image = found[parameter[:-4]]
                arguments.append((image[0] if isinstance(image, list) else image).step)
            elif role == "image":
                arguments.append(found[parameter].array)
            elif role == "planes":
                arguments.append([image.array for image in found[parameter]])
            elif role == "size":
                arguments.append(size)
            elif role == "result":
                results.append(numpy.zeros(3 if "[" in kind else 1, self.dtype(parameter)))
                arguments.append(results[-1])
            elif role == "signal":
                arguments.append(self.signal(parameter, given[parameter], size))
                size = arguments[-1].size
            elif role == "block":
                arguments.append(self.block(parameter, given[parameter]))
            elif role == "constants":
                arguments.append(constants(given[parameter], self.dtype(parameter), 3, parameter))
            elif role == "dstOrder":
                arguments.append(constants(given[parameter], numpy.int32, 4 if self.layouts == ["C4"] else 3, parameter))
            elif role == "table":
                arguments.append(self.table(given))
            else:
                arguments.append(argument.from_param(given[parameter]))
        # The length of a signal stands behind it in every prototype, and was told by the last one that was checked.
        arguments = [size if self.roles[parameter] == "size" else argument for (_, parameter), argument in zip(self.parameters, arguments)]
        check(self.name, self.raw(*arguments), stacklevel + 1)
        if results:
            results = [one if one.size > 1 else one.item() for one in results]
            return results[0] if len(results) == 1 else tuple(results)
        for parameter in ("dst", "srcDst"):
            if parameter in self.roles:
                return found[parameter].array if parameter in found else given[parameter]

    def table(self, given):
        each = 3 if "24u" in self.name else 1
        table = row(given["table"], self.dtype("table"), name="table")
        if each > 1 and table.shape[-1:] != (each,):
            raise ValueError(f"table has the shape {table.shape} instead of (entries, {each})")
        entries = table.size // each
        if given["nBitSize"] is None:
            given["nBitSize"] = max(entries.bit_length() - 1, 0)
        elif 0 <= given["nBitSize"] <= 16 and entries < 1 << given["nBitSize"]:
            raise ValueError(f"table has {entries} entries, fewer than {given['nBitSize']} bits tell apart")
        return table


def _bound_to(form):
    def function(*arguments, **keywords):
        return form.call(form.bind(arguments, keywords), 3)
    function.__name__ = function.__qualname__ = form.name
    function.__doc__, function.__signature__, function.__module__ = raw.declaration(form.name), form.signature, "kuvcv"
    return function


def _family(name, forms):
    shown = "\n".join(f"    {form.name}{form.signature}" for form in forms)

    def function(*arguments, **keywords):
        fitting = []
        for form in forms:
            try:
                given = form.bind(arguments, keywords)
            except TypeError:
                continue
            if form.fits(given):
                fitting.append((form, given))
        # Nothing is changed in place as long as another form does the same, a single column is no channel of several, and a layout stays.
        fitting = [one for one in fitting if "srcDst" not in one[0].roles] or fitting
        fitting = [one for one in fitting if (one[0].name, "dst") not in _CHANNEL_OF] or fitting
        fitting = [one for one in fitting if len(one[0].layouts) < 2] or fitting
        if len(fitting) != 1:
            told = "no function takes these arguments" if not fitting else "more than one function takes these arguments, so name it"
            raise TypeError(f"{name}: {told}:\n" + (shown if not fitting else "\n".join("    " + form.name for form, _ in fitting)))
        return fitting[0][0].call(fitting[0][1], 3)
    function.__name__ = function.__qualname__ = name
    function.__doc__ = f"The one of these functions that the arguments are for:\n\n{shown}"
    function.__module__ = "kuvcv"
    return function


def snake(operation):
    """An operation's name as Python writes names."""
    known = {"CbYCr422ToRGB": "cbycr422_to_rgb", "LShiftC": "lshift_c", "RShiftC": "rshift_c"}
    return known.get(operation) or re.sub(r"(?<=[a-z0-9])(?=[A-Z])|(?<=[A-Z])(?=[A-Z][a-z])", "_", operation).lower().replace("__", "_")


FORMS = {}
for _name in _contract.FUNCTIONS:
    try:
        FORMS[_name] = Form(_name)
    except ValueError:
        pass
FUNCTIONS = {name: _bound_to(form) for name, form in FORMS.items()}
_families = {}
for _form in FORMS.values():
    _families.setdefault(snake(_form.operation), []).append(_form)
FAMILIES = {name: _family(name, forms) for name, forms in _families.items()}
