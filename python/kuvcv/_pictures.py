"""Mosaics to pictures, and pictures to fewer bits."""
import numpy

from . import raw
from ._arrays import Image, array_of, block, whole
from ._records import _choice, _output, _sizes, _type_code
from ._status import check

_LAYOUTS = {code: getattr(raw, "kuvCfa" + code) for code in ("BGGR", "RGGB", "GBRG", "GRBG")}
_DITHERS = {"off": raw.kuvDitherOff, "ordered": raw.kuvDitherOrdered4x4, "floyd-steinberg": raw.kuvDitherFloydSteinberg,
            "jarvis-judice-ninke": raw.kuvDitherJarvisJudiceNinke, "stucki": raw.kuvDitherStucki}


def _mosaic(mosaic, layout, region, dst, least):
    """What both ways have in common: (code, source, layout, region, destination)."""
    code = _type_code(array_of(mosaic, "mosaic").dtype, ("8u", "16u"))
    source = Image(mosaic, mosaic.dtype, 1, "mosaic")
    width, height = source.size
    if min(width, height) < least:
        raise ValueError(f"a mosaic of {width} x {height} is too small: at least {least} x {least} samples are wanted")
    x, y, across, down = whole(*region) if region is not None else (0, 0, width, height)
    if x < 0 or y < 0 or across < 1 or down < 1 or x + across > width or y + down > height:
        raise ValueError(f"the region {(x, y, across, down)} is not within {width} x {height}")
    target = _output(dst, (down, across, 3), mosaic.dtype, 3)
    return code, source, _choice("layout", layout, _LAYOUTS), (x, y, across, down), target


def demosaic(mosaic, layout="RGGB", region=None, dst=None):
    """Red, green and blue of a Bayer mosaic of uint8 or uint16 by adaptive interpolation; see kuviDemosaicAHD_8u_C1C3R() in kuvcv.h.

    `layout` names the first two samples of the first two rows. `region` is (x, y, width, height), or None for all; `dst` receives it.
    A mosaic has at least 6 by 6 samples."""
    code, source, layout, region, target = _mosaic(mosaic, layout, region, dst, 6)
    line = (region[2] + 8) * mosaic.itemsize
    name = f"kuviDemosaicAHD_{code}_C1C3R"
    check(name, getattr(raw, name)(mosaic, region, source.size, source.step, target.array, target.step, layout,
                                   numpy.empty(30 * (region[2] + 8), mosaic.dtype), line))
    return target.array


def cfa_to_rgb(mosaic, layout="RGGB", region=None, dst=None):
    """As demosaic(), by quick interpolation; see kuviCFAToRGB_8u_C1C3R() in kuvcv.h. A mosaic has at least 2 by 2 samples."""
    code, source, layout, region, target = _mosaic(mosaic, layout, region, dst, 2)
    name = f"kuviCFAToRGB_{code}_C1C3R"
    check(name, getattr(raw, name)(mosaic, region, source.size, source.step, target.array, target.step, layout, 0))
    return target.array


def reduce_bits(src, dst=None, levels=256, dither="ordered", noise=0):
    """Brings an image of uint16 to `levels` values of uint8; see kuviReduceBits_* in kuvcv.h.

    `dither` is "off", "ordered", "floyd-steinberg", "jarvis-judice-ninke" or "stucki"; `noise` disturbs thresholds by up to as many
    percent. Images of four channels need a `dst`, whose fourth channel is left alone."""
    dither = _choice("dither", dither, _DITHERS)
    channels = src.shape[2] if array_of(src, "src").ndim == 3 else 1
    if channels not in (1, 3, 4):
        raise ValueError(f"src has {channels} channels")
    if channels == 4 and dst is None:
        raise ValueError("dst is wanted, whose fourth channel is left alone")
    source = Image(src, numpy.uint16, channels, "src")
    target = _output(dst, src.shape, numpy.uint8, channels)
    if source.size[0] > 1 << 27:
        raise ValueError("the rows are too long: their buffer exceeds 31 bits")
    size = _sizes(1)[0]
    check("kuviReduceBitsGetBufferSize",
          raw.kuviReduceBitsGetBufferSize(raw.kuvChannelsAC4 if channels == 4 else channels, source.size, noise, dither, size))
    name = f"kuviReduceBits_16u8u_{'AC4' if channels == 4 else f'C{channels}'}R"
    check(name, getattr(raw, name)(src, source.step, target.array, target.step, source.size, noise, dither, levels, block(int(size[0]))))
    return target.array
