"""What takes records and buffers: set up once, run on as many arrays as there are, by any number of threads at once."""
import numpy

from . import raw
from ._arrays import Image, array_of, block, constants, row, whole
from ._processor import variant
from ._status import check

_DATA_TYPES = {numpy.dtype("u1"): "8u", numpy.dtype("u2"): "16u", numpy.dtype("i2"): "16s", numpy.dtype("f4"): "32f"}


def _type_code(dtype, known):
    code = _DATA_TYPES.get(numpy.dtype(dtype))
    if code not in known:
        raise TypeError(f"samples of {numpy.dtype(dtype)} are none of {', '.join(known)}")
    return code


def _choice(name, value, known):
    if value not in known:
        raise ValueError(f"{name} is {value!r} instead of one of {', '.join(map(repr, known))}")
    return known[value]


def _sizes(count):
    """Results of a size query, as NumPy's integers to be written to."""
    return [numpy.zeros(1, numpy.int32) for _ in range(count)]


def _output(dst, shape, dtype, channels, name="dst"):
    """The caller's destination or a new one, as an image."""
    image = Image(numpy.empty(shape, dtype) if dst is None else dst, dtype, channels, name, True)
    if image.array.shape != tuple(shape):
        raise ValueError(f"{name} has the shape {image.array.shape} instead of {tuple(shape)}")
    return image


class ToneMap:
    """A curve for 8- or 16-bit samples through control points: the sample `levels[k]` becomes `values[k]`, what lies between is
    interpolated, and what lies outside stays. See kuviLUT_Init_8u() in kuvcv.h.

    `curve` is "step", "linear" or "cubic"; `layout` is "C1", "C3", or "AC4", which leaves the fourth channel alone. Of several channels
    all have the same curve, unless `levels` and `values` are lists of three sequences."""

    _CURVES = {"step": raw.kuvLutStep, "linear": raw.kuvLutLinear, "cubic": raw.kuvLutCubic}
    _LAYOUTS = {"C1": raw.kuvChannelsC1, "C3": raw.kuvChannelsC3, "AC4": raw.kuvChannelsAC4}

    def __init__(self, levels, values, curve="linear", dtype=numpy.uint8, layout="C1"):
        self.dtype, code = numpy.dtype(dtype), _type_code(dtype, ("8u", "16u"))
        selectors = _choice("curve", curve, self._CURVES), _choice("layout", layout, self._LAYOUTS)
        count = 1 if layout == "C1" else 3
        several = count > 1 and numpy.ndim(levels[0]) == 1
        levels = [constants(one, numpy.int32, name="levels") for one in (levels if several else [levels] * count)]
        values = [constants(one, numpy.int32, name="values") for one in (values if several else [values] * count)]
        if len(levels) != count or len(values) != count:
            raise ValueError(f"{count} sequences of levels and of values are wanted")
        for one, other in zip(levels, values):
            if one.ndim != 1 or one.shape != other.shape:
                raise ValueError(f"{one.shape} levels do not fit {other.shape} values")
        self.channels = 4 if layout == "AC4" else count
        counts, size = constants([one.size for one in levels], numpy.int32), _sizes(1)[0]
        if counts.sum(dtype=numpy.int64) >= 1 << 24:
            raise ValueError("too many levels")
        check("kuviLUT_GetSize", raw.kuviLUT_GetSize(selectors[0], getattr(raw, "kuvDataType" + code), selectors[1], (1, 1), counts, size))
        self._spec = block(int(size[0]))
        name = "kuviLUT_Init_" + code
        check(name, getattr(raw, name)(*selectors, (1, 1), values, levels, counts, self._spec))
        self._name = f"kuviLUT_{code}_{layout}IR"

    def apply(self, image):
        """Replaces the samples of an image, in place, and returns it."""
        done = Image(image, self.dtype, self.channels, writes=True)
        check(self._name, getattr(raw, self._name)(image, done.step, done.size, self._spec))
        return image


class Bins:
    """Bins of a histogram: `bins` of one width in `range`, or between the given `levels`, of which bin k counts the samples from
    `levels[k]` to before `levels[k + 1]`. See #KuviBinPlan in kuvcv.h. The range of integers is that of their type unless told."""

    def __init__(self, dtype, channels=1, levels=None, bins=256, range=None):
        self.dtype, self.channels = numpy.dtype(dtype), channels
        self._code = _type_code(dtype, ("8u", "16u", "16s", "32f"))
        self._name = f"kuviHistogram_{self._code}_C{channels}R"
        if not hasattr(raw, self._name):
            raise ValueError(f"there are no histograms of {channels} channels of {self.dtype}")
        if levels is not None:
            if range is not None:
                raise ValueError("levels have no range beside them")
            levels = constants(levels, numpy.float32, name="levels")
            if levels.ndim != 1:
                raise ValueError(f"levels have the shape {levels.shape} instead of (bins + 1,)")
            self._make([levels] * channels)
        else:
            if range is None:
                if self.dtype.kind == "f":
                    raise ValueError("the range of floating-point samples is not known")
                limits = numpy.iinfo(self.dtype)
                range = limits.min, limits.max + 1
            self._make_uniform(bins, *range)
        self.levels = self._levels()

    def _blocks(self, count):
        if not 2 <= count < 1 << 24:
            raise ValueError(f"{count} levels are too few or too many")
        counts, sizes = constants([count] * self.channels, numpy.int32), _sizes(2)
        self._type = getattr(raw, "kuvDataType" + self._code)
        check("kuviHistogramGetBufferSize",
              raw.kuviHistogramGetBufferSize(self._type, (1, 1), counts, self.channels, 0, *sizes))
        self._spec, self._scratch, self._count = block(int(sizes[0][0])), int(sizes[1][0]), count
        return counts

    def _make(self, levels):
        counts = self._blocks(levels[0].size)
        self._uniform = None
        check("kuviHistogramInit", raw.kuviHistogramInit(self._type, levels, counts, self.channels, self._spec))

    def _make_uniform(self, bins, lower, upper):
        counts = self._blocks(whole(bins)[0] + 1)
        ends = [constants([end] * self.channels, numpy.float32) for end in (lower, upper)]
        check("kuviHistogramUniformInit", raw.kuviHistogramUniformInit(self._type, *ends, counts, self.channels, self._spec))
        self._uniform = True

    def _levels(self):
        found = [numpy.empty(self._count, numpy.float32) for _ in range(self.channels)]
        check("kuviHistogramGetLevels", raw.kuviHistogramGetLevels(self._spec, found))
        return found[0]

    def count(self, image):
        """The number of samples in each bin: of one channel an array, of several one with a row for each."""
        source = Image(image, self.dtype, self.channels)
        if self._uniform and self._code == "32f" and source.size[1] > 1 and source.step // 16 == source.size[0]:
            # By its step such a region would be taken for samples without gaps. Levels that are told one by one are exempt.
            return Bins(self.dtype, self.channels, self.levels).count(image)
        counts = numpy.zeros((self.channels, self._count - 1), numpy.uint32)
        target = counts[0] if self.channels == 1 else list(counts)
        check(self._name, getattr(raw, self._name)(image, source.step, source.size, target, self._spec, block(self._scratch)))
        return counts[0] if self.channels == 1 else counts


def histogram(image, bins=256, range=None, levels=None):
    """Counts of the samples of an image in bins, and the bins' levels; see Bins."""
    plan = Bins(array_of(image, "the image").dtype, image.shape[2] if image.ndim == 3 else 1, levels, bins, range)
    return plan.count(image), plan.levels


class Filter:
    """A filter by a kernel of any size, for single-precision images: a correlation, the kernel is not turned. Its middle is at row
    (height - 1) // 2, column (width - 1) // 2. See kuviFilterBorder_32f_C1R() in kuvcv.h.

    Beyond the image stands, as `border` says, the nearest pixel ("clamp"), the image mirrored about its outermost pixels ("reflect"), or
    a constant `value` ("fill")."""

    _BORDERS = {"clamp": raw.kuvBorderClamp, "reflect": raw.kuvBorderReflect, "fill": raw.kuvBorderFill}

    def __init__(self, kernel):
        kernel = constants(kernel, numpy.float32, name="kernel")
        if kernel.ndim != 2 or not kernel.size:
            raise ValueError(f"the kernel has the shape {kernel.shape} instead of (height, width)")
        self._size = kernel.shape[::-1]
        self._spec = block(self._query((1, 1))[0])
        check("kuviFilterBorderInit_32f",
              raw.kuviFilterBorderInit_32f(kernel, self._size, raw.kuvDataType32f, 1, 0, self._spec))

    def _query(self, region):
        sizes = _sizes(2)
        check("kuviFilterBorderGetSize",
              raw.kuviFilterBorderGetSize(self._size, region, raw.kuvDataType32f, raw.kuvDataType32f, 1, *sizes))
        return int(sizes[0][0]), int(sizes[1][0])

    def apply(self, src, dst=None, border="reflect", value=0.0):
        """Filters an image into `dst` or a new one, which is returned."""
        rule = _choice("border", border, self._BORDERS)
        source = Image(src, numpy.float32, 1, "src")
        target = _output(dst, src.shape, numpy.float32, 1)
        buffer = block(self._query(source.size)[1])
        check("kuviFilterBorder_32f_C1R",
              raw.kuviFilterBorder_32f_C1R(src, source.step, target.array, target.step, source.size, rule,
                                           constants([value], numpy.float32), self._spec, buffer))
        return target.array


class ResizePlan:
    """Linear resizing of 16-bit images of three channels from one size to another, sizes as (width, height). See
    kuviResizeLinear_16s_C3R() in kuvcv.h."""

    def __init__(self, src_size, dst_size):
        self.src_size, self.dst_size = whole(*src_size), whole(*dst_size)
        if 0 in self.src_size + self.dst_size:
            raise ValueError("nothing can be resized from or to nothing")
        sizes = _sizes(2)
        check("kuviResizeGetSize_16s",
              raw.kuviResizeGetSize_16s(self.src_size, self.dst_size, raw.kuvResizeLinear, 0, *sizes))
        self._spec = block(int(sizes[0][0]))
        check("kuviResizeLinearInit_16s", raw.kuviResizeLinearInit_16s(self.src_size, self.dst_size, self._spec))

    def render(self, src, dst=None, offset=(0, 0)):
        """Renders the tile `dst` of the resized image, whose first pixel is at `offset` (x, y), or the whole of it. `src` is the whole
        source image in any case."""
        source = Image(src, numpy.int16, 3, "src")
        if source.size != self.src_size:
            raise ValueError(f"src is {source.size[0]} x {source.size[1]} pixels instead of {self.src_size[0]} x {self.src_size[1]}")
        (x, y), (width, height) = whole(*offset), self.dst_size
        target = Image(numpy.empty((height, width, 3), numpy.int16) if dst is None else dst, numpy.int16, 3, "dst", True)
        if x < 0 or y < 0 or x + target.size[0] > width or y + target.size[1] > height:
            raise ValueError(f"a tile of {target.size[0]} x {target.size[1]} pixels at {x}, {y} is not within {width} x {height}")
        size = _sizes(1)[0]
        check("kuviResizeGetBufferSize_16s", raw.kuviResizeGetBufferSize_16s(self._spec, target.size, 3, size))
        first = src[y * self.src_size[1] // height:, x * self.src_size[0] // width:]
        check("kuviResizeLinear_16s_C3R",
              raw.kuviResizeLinear_16s_C3R(first, source.step, target.array, target.step, (x, y), target.size, raw.kuvBorderClamp, None,
                                           self._spec, block(int(size[0]))))
        return target.array


def resize(src, size, dst=None):
    """An image of three channels of int16 in another size, (width, height), by linear interpolation."""
    plan = ResizePlan(Image(src, numpy.int16, 3, "src").size, size)
    width, height = plan.dst_size
    return plan.render(src, _output(dst, (height, width, 3), numpy.int16, 3).array)


class Fourier:
    """Fourier transforms of `length` single-precision values, real and imaginary parts in arrays of their own.

    `scale` tells which transform is divided by the length: "inverse" (as NumPy does), "forward", "both" by its root, or "none". A plan
    belongs to the library's variant that it was made under."""

    _SCALES = {"forward": raw.kuvDftScaleForward, "inverse": raw.kuvDftScaleInverse, "both": raw.kuvDftScaleBoth,
               "none": raw.kuvDftScaleNone}

    def __init__(self, length, scale="inverse"):
        self.length, = whole(length)
        flag, sizes = _choice("scale", scale, self._SCALES), _sizes(3)
        self._inverse_factor = {"inverse": 1 / max(self.length, 1), "forward": self.length}.get(scale)
        self._variant = variant()
        check("kuvsDFTGetSize_C_32f", raw.kuvsDFTGetSize_C_32f(self.length, flag, 0, *sizes))
        self._spec, initial, self._work = block(int(sizes[0][0])), block(int(sizes[1][0])), int(sizes[2][0])
        self._same_variant()
        check("kuvsDFTInit_C_32f", raw.kuvsDFTInit_C_32f(self.length, flag, 0, self._spec, initial))
        self._same_variant()

    def _same_variant(self):
        if variant() != self._variant:
            raise RuntimeError(f"the plan was made under the variant {self._variant}, and {variant()} is in force")

    def _run(self, src, dst):
        self._same_variant()
        for plane, name in zip(src, ("re", "im")):
            row(plane, numpy.float32, self.length, name)
        dst = [numpy.empty(self.length, numpy.float32) if plane is None else plane for plane in dst]
        for plane, name in zip(dst, ("dst_re", "dst_im")):
            row(plane, numpy.float32, self.length, name, True)
        check("kuvsDFTFwd_CToC_32f", raw.kuvsDFTFwd_CToC_32f(*src, *dst, self._spec, block(self._work)))
        return dst

    def forward(self, re, im, dst_re=None, dst_im=None):
        """The transform's real and imaginary parts, in new arrays unless they are given, which may be the values themselves."""
        return tuple(self._run((re, im), (dst_re, dst_im)))

    def inverse(self, re, im, dst_re=None, dst_im=None):
        """The inverse transform's parts: the forward one with the parts exchanged, and scaled as the inverse one is."""
        dst_im, dst_re = self._run((im, re), (dst_im, dst_re))
        if self._inverse_factor is not None:
            for plane in (dst_re, dst_im):
                plane *= numpy.float32(self._inverse_factor)
        return dst_re, dst_im


def label_markers(markers, first=1, last=65534, neighbours=8):
    """Gives every connected group of non-zero samples of a uint16 image a label, in place; returns the number of groups."""
    norm = _choice("neighbours", neighbours, {8: raw.kuvLabelNeighbours8, 4: raw.kuvLabelNeighbours4})
    image = Image(markers, numpy.uint16, writes=True)
    if 6 * image.size[0] * image.size[1] + 32 > 2**31 - 1:
        raise ValueError("the image is too large: its buffer exceeds 31 bits")
    size, count = _sizes(2)
    check("kuviLabelMarkersGetBufferSize_16u_C1R", raw.kuviLabelMarkersGetBufferSize_16u_C1R(image.size, size))
    check("kuviLabelMarkers_16u_C1IR",
          raw.kuviLabelMarkers_16u_C1IR(markers, image.step, image.size, first, last, norm, count, block(int(size[0]))))
    return int(count[0])
