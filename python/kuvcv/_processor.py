"""The library's version, the processor's features, and the choice of the variant."""
import collections
import contextlib
import ctypes

from . import raw
from ._status import Error, check

Version = collections.namedtuple("Version", "major minor update revision variant title text date")

# The feature that selects a variant. px is what no feature selects.
VARIANTS = {"px": 0, "w7": raw.KUV_CPU_SSE2, "s8": raw.KUV_CPU_SSSE3, "p8": raw.KUV_CPU_SSE42, "g9": raw.KUV_CPU_AVX,
            "h9": raw.KUV_CPU_AVX2}


def version():
    """The library's version, as seen by the variant in force."""
    found = raw.kuvcvGetLibVersion().contents
    return Version(found.versionMajor, found.versionMinor, found.versionUpdate, found.revision, found.variantCode.decode(),
                   found.libraryTitle.decode(), found.versionText.decode(), found.buildDateText.decode())


def variant():
    """The code of the variant in force: "px", "w7", "s8", "p8", "g9" or "h9"."""
    return raw.kuvcvGetLibVersion().contents.variantCode.decode()


def cpu_features():
    """The processor's features, a sum of raw.KUV_CPU_*."""
    found = ctypes.c_uint64(0)
    check("kuvGetCpuFeatures", raw.kuvGetCpuFeatures(ctypes.byref(found), None))
    return found.value


def set_cpu_features(features):
    """Selects the best variant for a set of features, for all threads; see kuvSetCpuFeatures() in kuvcv.h."""
    check("kuvSetCpuFeatures", raw.kuvSetCpuFeatures(features))


def _select(code):
    status = raw.kuvSetCpuFeatures(VARIANTS[code])
    if status < 0 or variant() != code:
        raise Error("kuvSetCpuFeatures", status if status else raw.kuvStatusFeatureMissing)


@contextlib.contextmanager
def use_variant(code):
    """Runs what stands below it in one variant, in all threads:

        with kuvcv.use_variant("px"):
            expected = kuvcv.integral(image)
    """
    if code not in VARIANTS:
        raise ValueError(f"the variant {code!r} is none of {', '.join(VARIANTS)}")
    before = variant()
    try:
        _select(code)
        yield
    finally:
        _select(before)
