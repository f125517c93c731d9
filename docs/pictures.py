"""Makes the pictures of the families' pages: pictures.py LIBRARY SCENE DIRECTORY

LIBRARY is libkuvcv.so, SCENE a picture of which details are shown. All that is computed, the library computes."""
import ctypes
import pathlib
import sys

import matplotlib
import numpy

matplotlib.use("Agg")
from matplotlib import pyplot  # noqa: E402
from PIL import Image  # noqa: E402

library, images = ctypes.CDLL(sys.argv[1]), pathlib.Path(sys.argv[3])
scene = numpy.array(Image.open(sys.argv[2]).convert("RGB"))
ORANGE, BLUE, RED = "#e08020", "#1f4e8c", "#b03020"


class Size(ctypes.Structure):
    _fields_ = [("width", ctypes.c_int32), ("height", ctypes.c_int32)]


class Rectangle(ctypes.Structure):
    _fields_ = [("x", ctypes.c_int32), ("y", ctypes.c_int32), ("width", ctypes.c_int32), ("height", ctypes.c_int32)]


class Point(ctypes.Structure):
    _fields_ = [("x", ctypes.c_int32), ("y", ctypes.c_int32)]


def address(array):
    return ctypes.c_void_p(array.ctypes.data)


def call(name, *arguments):
    """An array stands for the pointer to an image and its row step; a list is taken for an array of integers."""
    flat = []
    for each in arguments:
        if isinstance(each, numpy.ndarray):
            flat += [address(each), each.strides[0]]
        elif isinstance(each, list):
            flat.append((ctypes.c_int32 * len(each))(*each))
        elif isinstance(each, float):
            flat.append(ctypes.c_float(each))
        else:
            flat.append(each)
    status = getattr(library, name)(*flat)
    if status != 0:
        sys.exit(f"{name}: status {status}")


def sizes(name, *arguments, results):
    """Blocks of the sizes that a query tells."""
    told = [ctypes.c_int32() for _ in range(results)]
    call(name, *arguments, *(ctypes.byref(each) for each in told))
    return [numpy.zeros(max(each.value, 1), numpy.uint8) for each in told]


def size(image):
    return Size(image.shape[1], image.shape[0])


def blank(like, samples, channels=1):
    shape = like.shape[:2] if channels == 1 else (*like.shape[:2], channels)
    return numpy.zeros(shape, samples)


def grey(picture):
    return numpy.ascontiguousarray(picture.mean(axis=2).astype(numpy.uint8))


def real(picture):
    result = blank(picture, numpy.float32)
    call("kuviConvert_8u32f_C1R", picture, result, size(picture))
    return result


def sheet(name, tiles, columns, width=9.6, zoom=1.0, **options):
    """Pictures with captions, in rows. Greys are shown from `low` to `high`."""
    rows = -(-len(tiles) // columns)
    height, across = tiles[0][1].shape[:2]
    figure, axes = pyplot.subplots(rows, columns, dpi=100, layout="constrained", squeeze=False,
                                   figsize=(width, rows * (width / columns * height / across + 0.28) * zoom))
    low, high = options.get("low", 0), options.get("high", 255)
    for plot, (caption, picture) in zip(axes.flat, tiles):
        plot.imshow(picture, cmap="gray", vmin=low, vmax=high, interpolation=options.get("interpolation", "antialiased"))
        plot.set_title(caption, fontsize=9)
    for plot in axes.flat:
        plot.axis("off")
    save(figure, name)


def save(figure, name):
    path = images / name
    figure.savefig(path)
    pyplot.close(figure)
    with Image.open(path) as drawn:
        drawn.convert("RGB").quantize(256, dither=Image.Dither.NONE).save(path, optimize=True)
    print(f"{name}: {path.stat().st_size} bytes")


def arithmetic():
    """A shaded picture made even, and what has moved between two others."""
    text = real(grey(scene[356:508, 20:380]))
    y, x = numpy.mgrid[: text.shape[0], : text.shape[1]].astype(numpy.float32)
    shade = numpy.ascontiguousarray(1 / (1 + ((x - 120) / 180) ** 2 + ((y - 60) / 110) ** 2), numpy.float32)
    shaded = numpy.ascontiguousarray(text * shade)
    even = shaded.copy()
    call("kuviDiv_32f_C1IR", shade, even, size(even))
    before, after = text.copy(), text.copy()
    after[60:90, 210:240], before[60:90, 190:220] = 60, 60
    difference = blank(text, numpy.float32)
    call("kuviAbsDiff_32f_C1R", before, after, difference, size(text))
    call("kuviMulC_32f_C3IR", (ctypes.c_float * 3)(-1, -1, -1), difference, Size(text.shape[1] // 3, text.shape[0]))
    call("kuviAddC_32f_C3IR", (ctypes.c_float * 3)(255, 255, 255), difference, Size(text.shape[1] // 3, text.shape[0]))
    sheet("arith.png", [("src: a page, unevenly lit", shaded), ("the light alone", 255 * shade), ("kuviDiv_32f_C1IR: src / light", even),
                        ("src1", before), ("src2: the square has moved", after), ("255 - |src1 - src2|", difference)], 3)


def scaling():
    """Scaled results over exact ones."""
    exact = numpy.arange(-9, 10, dtype=numpy.int16)[None]
    figure, axes = pyplot.subplots(1, 3, figsize=(9.6, 3.2), dpi=100, layout="constrained")
    for plot, factor in zip(axes, (1, 2, -1)):
        result = exact.copy()
        call("kuviAddC_16s_C1IRSfs", ctypes.c_int16(0), result, size(result), factor)
        plot.plot(exact[0], exact[0] * 2.0**-factor, color="#a0a0a0", label=f"v · 2^{-factor}")
        plot.plot(exact[0], result[0], "o", color=BLUE, markersize=5, label="result")
        plot.set_title(f"scaleFactor {factor}", fontsize=9)
        plot.set_xlabel("v")
        plot.grid(alpha=0.3)
        plot.legend(fontsize=8)
    save(figure, "scaling.png")


def moves():
    """Mirrors about each axis, and copies of other kinds."""
    detail = numpy.ascontiguousarray(scene[352:512, 560:720])
    plane = grey(scene[352:512, 20:180])
    tiles = [("src", plane)]
    for axis, name in enumerate(("horizontal", "vertical", "both", "diagonal", "second diagonal")):
        turned = blank(plane, numpy.uint8)
        call("kuviMirror_8u_C1R", plane, turned, size(turned), axis)
        tiles.append((name, turned))
    swapped = blank(detail, numpy.uint8, 3)
    call("kuviSwapChannels_8u_C3R", detail, swapped, size(detail), [2, 1, 0])
    y, x = numpy.mgrid[:160, :160]
    mask = numpy.ascontiguousarray((numpy.hypot(x - 80, y - 80) < 60).astype(numpy.uint8))
    masked = numpy.full_like(plane, 200)
    call("kuviCopy_8u_C1MR", plane, masked, size(plane), mask)
    channel = blank(detail, numpy.uint8, 3)
    call("kuviCopy_8u_C1C3R", grey(detail), channel, size(detail))
    filled = detail.copy()
    call("kuviSet_8u_C1R", 128, filled[50:110, 40:120], Size(240, 60))
    planes = [numpy.ascontiguousarray(detail[..., c]) for c in (1, 1, 2)]
    merged = blank(detail, numpy.uint8, 3)
    pointers = (ctypes.c_void_p * 3)(*(each.ctypes.data for each in planes))
    call("kuviCopy_8u_P3C3R", pointers, planes[0].strides[0], merged, size(detail))
    tiles += [("src, three channels", detail), ("swapped: {2, 1, 0}", swapped), ("one channel: C1C3R", channel),
              ("three planes: P3C3R", merged), ("a region set to 128", filled), ("under a mask: C1MR", masked)]
    sheet("move.png", tiles, 6)


def statistics():
    """A histogram with its mean, and means of windows by a table of sums."""
    picture = grey(scene[16:336, 352:944])
    histogram = numpy.zeros(64, numpy.uint32)
    plan, buffer = sizes("kuviHistogramGetBufferSize", 1, size(picture), [65], 1, 1, results=2)
    call("kuviHistogramUniformInit", 1, (ctypes.c_float * 1)(0), (ctypes.c_float * 1)(256), [65], 1, address(plan))
    call("kuviHistogram_8u_C1R", picture, size(picture), address(histogram), address(plan), address(buffer))
    mean, deviation = ctypes.c_double(), ctypes.c_double()
    call("kuviMean_StdDev_8u_C1R", picture, size(picture), ctypes.byref(mean), ctypes.byref(deviation))
    table = numpy.zeros((picture.shape[0] + 1, picture.shape[1] + 1), numpy.int32)
    call("kuviIntegral_8u32s_C1R", picture, table, size(picture), 0)
    reach = 12
    sums = table[reach:, reach:] - table[reach:, :-reach] - table[:-reach, reach:] + table[:-reach, :-reach]
    figure, axes = pyplot.subplots(2, 2, figsize=(9.6, 6.0), dpi=100, layout="constrained")
    for plot, caption, shown in ((axes[0, 0], "src", picture), (axes[1, 0], "table of running sums", table),
                                 (axes[1, 1], f"means of {reach} by {reach}, four reads each", sums)):
        plot.imshow(shown, cmap="gray")
        plot.set_title(caption, fontsize=9)
        plot.axis("off")
    plot = axes[0, 1]
    plot.bar(numpy.arange(64) * 4 + 2, histogram, width=4, color=BLUE)
    plot.axvline(mean.value, color=RED)
    plot.axvspan(mean.value - deviation.value, mean.value + deviation.value, color=ORANGE, alpha=0.25)
    plot.set_title(f"64 bins; mean {mean.value:.1f}, deviation {deviation.value:.1f}", fontsize=9)
    save(figure, "stats.png")


def palettes():
    """A grey picture in false colours."""
    picture = grey(scene[352:528, 560:944])
    tiles = [("8-bit samples", picture)]
    for name, bits in (("viridis", 8), ("inferno", 8), ("viridis", 3)):
        colours = matplotlib.colormaps[name](numpy.linspace(0, 1, 2**bits))[:, :3]
        entries = numpy.ascontiguousarray((colours * 255 + 0.5).astype(numpy.uint8))
        shown = blank(picture, numpy.uint8, 3)
        source = numpy.ascontiguousarray(picture >> (8 - bits))
        call("kuviLUTPalette_8u24u_C1R", source, shown, size(picture), address(entries), bits)
        tiles.append((f"{name}, nBitSize {bits}", shown))
    sheet("palette.png", tiles, 2, width=8)


def colours():
    """A mosaic, and both ways to a picture."""
    region = numpy.ascontiguousarray(scene[352:512, 560:944])
    mosaic = numpy.ascontiguousarray(region[..., 1])
    mosaic[0::2, 0::2], mosaic[1::2, 1::2] = region[0::2, 0::2, 0], region[1::2, 1::2, 2]
    seen = numpy.zeros_like(region)
    for y, x, c in ((0, 0, 0), (0, 1, 1), (1, 0, 1), (1, 1, 2)):
        seen[y::2, x::2, c] = mosaic[y::2, x::2]
    whole = Rectangle(0, 0, region.shape[1], region.shape[0])
    quick, adaptive = blank(region, numpy.uint8, 3), blank(region, numpy.uint8, 3)
    lines = numpy.zeros((30, region.shape[1] + 6), numpy.uint8)
    call("kuviCFAToRGB_8u_C1C3R", address(mosaic), whole, size(mosaic), mosaic.strides[0], quick, 1, 0)
    call("kuviDemosaicAHD_8u_C1C3R", address(mosaic), whole, size(mosaic), mosaic.strides[0], adaptive, 1, lines)

    def told(name, picture):
        error = numpy.mean((picture.astype(float) - region) ** 2)
        return f"{name}: {10 * numpy.log10(255**2 / error):.1f} dB", picture[16:140, 190:376]

    shown = [("scene", region[16:140, 190:376]), ("mosaic RGGB", seen[16:140, 190:376])]
    sheet("colour.png", [*shown, told("kuviCFAToRGB", quick), told("kuviDemosaicAHD", adaptive)], 2, interpolation="nearest")


def resized(picture, width, height):
    source = numpy.ascontiguousarray(picture.astype(numpy.int16))
    wanted = Size(width, height)
    plan, _ = sizes("kuviResizeGetSize_16s", size(source), wanted, 2, 0, results=2)
    call("kuviResizeLinearInit_16s", size(source), wanted, address(plan))
    (buffer,) = sizes("kuviResizeGetBufferSize_16s", address(plan), wanted, 3, results=1)
    result = numpy.zeros((height, width, 3), numpy.int16)
    call("kuviResizeLinear_16s_C3R", source, result, Point(0, 0), wanted, 1, None, address(plan), address(buffer))
    return result


def filtered(picture, kernel, border=1):
    kernel = numpy.ascontiguousarray(kernel, numpy.float32)
    spec, buffer = sizes("kuviFilterBorderGetSize", size(kernel), size(picture), 13, 13, 1, results=2)
    call("kuviFilterBorderInit_32f", address(kernel), size(kernel), 13, 1, 0, address(spec))
    result = blank(picture, numpy.float32)
    call("kuviFilterBorder_32f_C1R", picture, result, size(picture), border, None, address(spec), address(buffer))
    return result


def gaussian(reach, deviation):
    weights = numpy.exp(-(numpy.arange(-reach, reach + 1) ** 2) / (2 * deviation**2))
    weights = numpy.outer(weights, weights)
    return weights / weights.sum()


def resizes():
    """Enlarged, shrunk, and shrunk after a blur."""
    detail = scene[352:512, 560:720]
    rings = scene[16:336, 352:672]
    smooth = numpy.stack([filtered(real(numpy.ascontiguousarray(rings[..., c])), gaussian(6, 1.6)) for c in range(3)], axis=2)
    tiles = [("40 x 40 to 160 x 160", resized(detail[20:60, 60:100], 160, 160)), ("320 x 320 to 160 x 160", resized(rings, 160, 160)),
             ("320 x 320 to 80 x 80", resized(rings, 80, 80)), ("to 80 x 80, blurred before", resized(smooth.round(), 80, 80))]
    sheet("resize.png", [(name, numpy.clip(shown, 0, 255).astype(numpy.uint8)) for name, shown in tiles], 4, interpolation="nearest")


def segments():
    """Groups by both kinds of neighbours, in colours."""
    page = grey(scene[356:428, 20:380])
    markers = numpy.ascontiguousarray((page < 150).astype(numpy.uint16))
    random = numpy.random.default_rng(5)
    palette = numpy.ascontiguousarray(matplotlib.colormaps["turbo"](random.permutation(256))[:, :3] * 255 + 0.5).astype(numpy.uint8)
    palette[0] = 255
    tiles = [("markers", 255 - 255 * markers)]
    for name, norm in (("kuvLabelNeighbours8", 0), ("kuvLabelNeighbours4", 1)):
        labels, count = markers.copy(), ctypes.c_int32()
        (buffer,) = sizes("kuviLabelMarkersGetBufferSize_16u_C1R", size(labels), results=1)
        call("kuviLabelMarkers_16u_C1IR", labels, size(labels), 1, 255, norm, ctypes.byref(count), address(buffer))
        shown = blank(labels, numpy.uint8, 3)
        call("kuviLUTPalette_16u24u_C1R", labels, shown, size(labels), address(palette), 8)
        tiles.append((f"{name}: {count.value} groups", shown))
    sheet("segment.png", tiles, 1, width=8, interpolation="nearest")


def cosines():
    """What is left of a picture with the first coefficients of each block."""
    picture = grey(scene[352:512, 560:720])
    scan = numpy.zeros(64, numpy.int16)
    call("kuviZigzagInv8x8_16s_C1", address(numpy.arange(64, dtype=numpy.int16)), address(scan))
    tiles = [("8-bit samples", picture)]
    for kept in (1, 6, 15):
        result = numpy.zeros(picture.shape, numpy.int16)
        for y in range(0, picture.shape[0], 8):
            for x in range(0, picture.shape[1], 8):
                block = numpy.ascontiguousarray(picture[y:y + 8, x:x + 8].astype(numpy.int16) - 128).reshape(64)
                call("kuviDCT8x8Fwd_16s_C1I", address(block))
                block[scan >= kept] = 0
                call("kuviDCT8x8Inv_16s_C1I", address(block))
                result[y:y + 8, x:x + 8] = block.reshape(8, 8)
        tiles.append((f"{kept} of 64 coefficients", result + 128))
    sheet("dct.png", tiles, 4)


for make in (arithmetic, scaling, moves, statistics, palettes, colours, resizes, segments, cosines):
    make()
