"""Makes the pictures of the families' pages: pictures.py SCENE DIRECTORY

SCENE is a picture of which details are shown. All that is computed, the library computes."""
import pathlib
import sys

import kuvcv
import matplotlib
import numpy

matplotlib.use("Agg")
from matplotlib import pyplot  # noqa: E402
from PIL import Image  # noqa: E402

images = pathlib.Path(sys.argv[2])
scene = numpy.array(Image.open(sys.argv[1]).convert("RGB"))
ORANGE, BLUE, RED = "#e08020", "#1f4e8c", "#b03020"


def grey(picture):
    return numpy.ascontiguousarray(picture.mean(axis=2).astype(numpy.uint8))


def real(picture):
    return kuvcv.kuviConvert_8u32f_C1R(picture)


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
    kuvcv.kuviDiv_32f_C1IR(shade, even)
    before, after = text.copy(), text.copy()
    after[60:90, 210:240], before[60:90, 190:220] = 60, 60
    difference = kuvcv.kuviAbsDiff_32f_C1R(before, after)
    threes = difference.reshape(difference.shape[0], -1, 3)
    kuvcv.kuviMulC_32f_C3IR([-1, -1, -1], threes)
    kuvcv.kuviAddC_32f_C3IR([255, 255, 255], threes)
    sheet("arith.png", [("src: a page, unevenly lit", shaded), ("the light alone", 255 * shade), ("kuviDiv_32f_C1IR: src / light", even),
                        ("src1", before), ("src2: the square has moved", after), ("255 - |src1 - src2|", difference)], 3)


def scaling():
    """Scaled results over exact ones."""
    exact = numpy.arange(-9, 10, dtype=numpy.int16)[None]
    figure, axes = pyplot.subplots(1, 3, figsize=(9.6, 3.2), dpi=100, layout="constrained")
    for plot, factor in zip(axes, (1, 2, -1)):
        result = exact.copy()
        kuvcv.kuviAddC_16s_C1IRSfs(0, result, factor)
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
        tiles.append((name, kuvcv.kuviMirror_8u_C1R(plane, axis)))
    swapped = kuvcv.kuviSwapChannels_8u_C3R(detail, [2, 1, 0])
    y, x = numpy.mgrid[:160, :160]
    mask = numpy.ascontiguousarray((numpy.hypot(x - 80, y - 80) < 60).astype(numpy.uint8))
    masked = numpy.full_like(plane, 200)
    kuvcv.kuviCopy_8u_C1MR(plane, masked, mask)
    channel = numpy.zeros_like(detail)
    kuvcv.kuviCopy_8u_C1C3R(grey(detail), channel[..., 0])
    filled = detail.copy()
    kuvcv.kuviSet_8u_C1R(128, filled.reshape(160, 480)[50:110, 120:360])
    planes = [numpy.ascontiguousarray(detail[..., c]) for c in (1, 1, 2)]
    merged = kuvcv.kuviCopy_8u_P3C3R(planes)
    tiles += [("src, three channels", detail), ("swapped: {2, 1, 0}", swapped), ("one channel: C1C3R", channel),
              ("three planes: P3C3R", merged), ("a region set to 128", filled), ("under a mask: C1MR", masked)]
    sheet("move.png", tiles, 6)


def statistics():
    """A histogram with its mean, and means of windows by a table of sums."""
    picture = grey(scene[16:336, 352:944])
    counts, _ = kuvcv.histogram(picture, bins=64)
    mean, deviation = kuvcv.kuviMean_StdDev_8u_C1R(picture)
    table = kuvcv.kuviIntegral_8u32s_C1R(picture, 0)
    reach = 12
    sums = table[reach:, reach:] - table[reach:, :-reach] - table[:-reach, reach:] + table[:-reach, :-reach]
    figure, axes = pyplot.subplots(2, 2, figsize=(9.6, 6.0), dpi=100, layout="constrained")
    for plot, caption, shown in ((axes[0, 0], "src", picture), (axes[1, 0], "table of running sums", table),
                                 (axes[1, 1], f"means of {reach} by {reach}, four reads each", sums)):
        plot.imshow(shown, cmap="gray")
        plot.set_title(caption, fontsize=9)
        plot.axis("off")
    plot = axes[0, 1]
    plot.bar(numpy.arange(64) * 4 + 2, counts, width=4, color=BLUE)
    plot.axvline(mean, color=RED)
    plot.axvspan(mean - deviation, mean + deviation, color=ORANGE, alpha=0.25)
    plot.set_title(f"64 bins; mean {mean:.1f}, deviation {deviation:.1f}", fontsize=9)
    save(figure, "stats.png")


def palettes():
    """A grey picture in false colours."""
    picture = grey(scene[352:528, 560:944])
    tiles = [("8-bit samples", picture)]
    for name, bits in (("viridis", 8), ("inferno", 8), ("viridis", 3)):
        colours = matplotlib.colormaps[name](numpy.linspace(0, 1, 2**bits))[:, :3]
        entries = numpy.ascontiguousarray((colours * 255 + 0.5).astype(numpy.uint8))
        tiles.append((f"{name}, nBitSize {bits}", kuvcv.kuviLUTPalette_8u24u_C1R(picture >> (8 - bits), entries, bits)))
    sheet("palette.png", tiles, 2, width=8)


def colours():
    """A mosaic, and both ways to a picture."""
    region = numpy.ascontiguousarray(scene[352:512, 560:944])
    mosaic = numpy.ascontiguousarray(region[..., 1])
    mosaic[0::2, 0::2], mosaic[1::2, 1::2] = region[0::2, 0::2, 0], region[1::2, 1::2, 2]
    seen = numpy.zeros_like(region)
    for y, x, c in ((0, 0, 0), (0, 1, 1), (1, 0, 1), (1, 1, 2)):
        seen[y::2, x::2, c] = mosaic[y::2, x::2]
    quick, adaptive = kuvcv.cfa_to_rgb(mosaic), kuvcv.demosaic(mosaic)

    def told(name, picture):
        error = numpy.mean((picture.astype(float) - region) ** 2)
        return f"{name}: {10 * numpy.log10(255**2 / error):.1f} dB", picture[16:140, 190:376]

    shown = [("scene", region[16:140, 190:376]), ("mosaic RGGB", seen[16:140, 190:376])]
    sheet("colour.png", [*shown, told("kuviCFAToRGB", quick), told("kuviDemosaicAHD", adaptive)], 2, interpolation="nearest")


def resized(picture, width, height):
    return kuvcv.resize(picture.astype(numpy.int16), (width, height))


def gaussian(reach, deviation):
    weights = numpy.exp(-(numpy.arange(-reach, reach + 1) ** 2) / (2 * deviation**2))
    weights = numpy.outer(weights, weights)
    return weights / weights.sum()


def resizes():
    """Enlarged, shrunk, and shrunk after a blur."""
    detail = scene[352:512, 560:720]
    rings = scene[16:336, 352:672]
    blur = kuvcv.Filter(gaussian(6, 1.6))
    smooth = numpy.stack([blur.apply(real(numpy.ascontiguousarray(rings[..., c])), border="clamp") for c in range(3)], axis=2)
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
    for neighbours in (8, 4):
        labels = markers.copy()
        count = kuvcv.label_markers(labels, 1, 255, neighbours)
        tiles.append((f"kuvLabelNeighbours{neighbours}: {count} groups", kuvcv.kuviLUTPalette_16u24u_C1R(labels, palette, 8)))
    sheet("segment.png", tiles, 1, width=8, interpolation="nearest")


def cosines():
    """What is left of a picture with the first coefficients of each block."""
    picture = grey(scene[352:512, 560:720])
    scan = numpy.zeros(64, numpy.int16)
    kuvcv.raw.kuviZigzagInv8x8_16s_C1(numpy.arange(64, dtype=numpy.int16), scan)
    tiles = [("8-bit samples", picture)]
    for kept in (1, 6, 15):
        result = numpy.zeros(picture.shape, numpy.int16)
        for y in range(0, picture.shape[0], 8):
            for x in range(0, picture.shape[1], 8):
                block = numpy.ascontiguousarray(picture[y:y + 8, x:x + 8].astype(numpy.int16) - 128).reshape(64)
                kuvcv.raw.kuviDCT8x8Fwd_16s_C1I(block)
                block[scan >= kept] = 0
                kuvcv.raw.kuviDCT8x8Inv_16s_C1I(block)
                result[y:y + 8, x:x + 8] = block.reshape(8, 8)
        tiles.append((f"{kept} of 64 coefficients", result + 128))
    sheet("dct.png", tiles, 4)


for make in (arithmetic, scaling, moves, statistics, palettes, colours, resizes, segments, cosines):
    make()
