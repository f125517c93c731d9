"""kuvCV: exact image and signal primitives for x86 processors, on NumPy arrays.

Three layers: `kuvcv.raw` has all functions as C has them. Under the same names `kuvcv` has those that need no records, on arrays,
`kuvcv.kuviAdd_32f_C1IR(src, srcDst)`, and by operation those of a kind, `kuvcv.add(src, srcDst)`, of which the arrays choose one. What
takes records and buffers is in classes and functions: ToneMap, Bins, Filter, ResizePlan, Fourier, demosaic() and so on.

Images are arrays of the shape (height, width) or (height, width, channels), at any row step; nothing is copied. Names of arguments are
those of kuvcv.h, which documents every function. An Error is raised for what the library refuses, a StatusWarning tells its warnings."""
from . import raw
from ._forms import FAMILIES as _FAMILIES, FUNCTIONS as _FUNCTIONS
from ._pictures import cfa_to_rgb, demosaic, reduce_bits
from ._processor import VARIANTS, cpu_features, set_cpu_features, use_variant, variant, version
from ._records import Bins, Filter, Fourier, ResizePlan, ToneMap, histogram, label_markers, resize
from ._status import Error, StatusWarning

globals().update(_FAMILIES)
globals().update(_FUNCTIONS)
globals().update({name: value for name, value in vars(raw).items() if name in raw._contract.CONSTANTS})

__version__ = "{0.major}.{0.minor}.{0.update}".format(version())


def __getattr__(name):
    if name in raw._contract.FUNCTIONS:
        raise AttributeError(f"{name} takes records, buffers or plain memory: it is in kuvcv.raw, and what is made of it has a class here")
    raise AttributeError(f"module {__name__!r} has no attribute {name!r}")
