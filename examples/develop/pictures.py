"""Makes the documentation's pictures of what the examples do: pictures.py DEVELOP FILTERS SPECTRUM DIRECTORY"""
import pathlib
import subprocess
import sys
import tempfile

import matplotlib
from PIL import Image, ImageDraw, ImageFont

matplotlib.use("Agg")
from matplotlib import pyplot  # noqa: E402

program, filters, spectrum, images = *sys.argv[1:4], pathlib.Path(sys.argv[4])
work = tempfile.TemporaryDirectory()
font = ImageFont.truetype(f"{matplotlib.get_data_path()}/fonts/ttf/DejaVuSans.ttf", 13)

REGION = "724,344,224,284"  # of the scene: fine lines before a sky, and gradients
DITHERS = [("no dither", ["none"]), ("ordered", ["ordered"]), ("ordered, noise 30", ["ordered", "--noise", "30"]),
           ("Floyd, Steinberg", ["floyd"]), ("Jarvis, Judice, Ninke", ["jarvis"]), ("Stucki", ["stucki"])]
POINTS = "0:0,0.05:0.2,0.2:0.5,0.5:0.8,1:1"
KERNELS, BORDERS = ("shift", "blur", "streak", "sharpen", "edges"), ("clamp", "reflect", "fill")
SPECTRA = [("as it is", []), ("--notch auto --notch auto", ["--notch", "auto", "--notch", "auto"]), ("--low-pass 3", ["--low-pass", "3"])]
CURVES = [("screen", ["--curve", "screen"])]
CURVES += [(form, ["--curve", POINTS, "--curve-form", form]) for form in ("cubic", "linear", "step")]


def develop(*arguments):
    path = f"{work.name}/picture.png"
    subprocess.run([program, "-o", path, *arguments], check=True, stdout=subprocess.DEVNULL)
    with Image.open(path) as picture:
        return picture.convert("RGB")


def save(picture, name):
    picture.save(images / name, optimize=True)
    print(f"{name}: {(images / name).stat().st_size} bytes")


def dither_sheet(levels):
    """All dithers side by side, pixel by pixel."""
    gap, caption, columns = 10, 24, 3
    tiles = [(name, develop("--region", REGION, "--levels", str(levels), "--dither", *options)) for name, options in DITHERS]
    width, height = tiles[0][1].size
    sheet = Image.new("RGB", (columns * (width + gap) + gap, len(tiles) // columns * (height + caption) + gap), "#e8e8e8")
    draw = ImageDraw.Draw(sheet)
    for i, (name, tile) in enumerate(tiles):
        x, y = gap + i % columns * (width + gap), i // columns * (height + caption)
        draw.text((x, y + 4), name, "black", font)
        sheet.paste(tile, (x, y + caption))
    save(sheet, f"dither-{levels}.png")


def filter_sheet():
    """A row for each kernel, a column for each border rule."""
    gap, caption, margin = 10, 24, 66
    path = f"{work.name}/filtered.png"

    def tile(kernel, border):
        subprocess.run([filters, "-o", path, "--kernel", kernel, "--border", border], check=True, stdout=subprocess.DEVNULL)
        with Image.open(path) as picture:
            return picture.convert("L")

    tiles = [[tile(kernel, border) for border in BORDERS] for kernel in KERNELS]
    width, height = tiles[0][0].size
    sheet = Image.new("L", (margin + len(BORDERS) * (width + gap), caption + len(KERNELS) * (height + gap)), 232)
    draw = ImageDraw.Draw(sheet)
    for column, border in enumerate(BORDERS):
        draw.text((margin + column * (width + gap), 4), border, 0, font)
    for row, kernel in enumerate(KERNELS):
        draw.text((gap // 2, caption + row * (height + gap)), kernel, 0, font)
        for column, each in enumerate(tiles[row]):
            sheet.paste(each, (margin + column * (width + gap), caption + row * (height + gap)))
    save(sheet, "filters.png")


def spectrum_sheet():
    """The picture and its spectrum, a column for each filter. Rings show where the waves stand that were removed in one of them."""
    gap, caption, radius = 10, 24, 9
    waves, columns = [], []
    for _, options in SPECTRA:
        paths = [f"{work.name}/{name}.png" for name in ("filtered", "spectrum")]
        told = subprocess.run([spectrum, "-o", paths[0], "--spectrum", paths[1], *options], check=True, text=True, stdout=subprocess.PIPE)
        waves += [tuple(map(int, line.split()[-1].split(","))) for line in told.stdout.splitlines() if line.startswith("wave")]
        columns.append([Image.open(path).convert("RGB") for path in paths])
    width, height = columns[0][0].size
    sheet = Image.new("RGB", (gap + len(columns) * (width + gap), caption + 2 * (height + gap)), "#e8e8e8")
    draw = ImageDraw.Draw(sheet)
    for column, (name, _) in enumerate(SPECTRA):
        left, below = gap + column * (width + gap), caption + height + gap
        draw.text((left, 4), name, "black", font)
        sheet.paste(columns[column][0], (left, caption))
        sheet.paste(columns[column][1], (left, below))
        for across, down in waves + [(-across, -down) for across, down in waves]:
            x, y = left + width // 2 + across, below + height // 2 + down
            draw.ellipse((x - radius, y - radius, x + radius, y + radius), outline="#e05030")
    save(sheet, "spectrum.png")


def write_ramp(path, width):
    """A mosaic that grows from no light on the left to full scale on the right."""
    row = b"".join((x * 65535 // (width - 1)).to_bytes(2, "big") for x in range(width))
    path.write_bytes(b"P5 %d 2 65535\n" % width + 2 * row)


def curve_sheet():
    """Each curve as the program applies it, above the picture that it makes."""
    width = 1024
    ramp = pathlib.Path(work.name, "ramp.pgm")
    write_ramp(ramp, width)
    figure, axes = pyplot.subplots(2, len(CURVES), figsize=(9.6, 5.2), dpi=100, layout="constrained",
                                   gridspec_kw={"height_ratios": [1, 1]})
    points = [tuple(map(float, point.split(":"))) for point in POINTS.split(",")]
    for (name, options), plot, view in zip(CURVES, axes[0], axes[1]):
        shown = develop("--method", "quick", *options, str(ramp)).crop((0, 0, width, 1)).getchannel("G").getdata()
        plot.plot([x / (width - 1) for x in range(width)], [value / 255 for value in shown], color="#1f4e8c")
        if name != "screen":
            plot.plot(*zip(*points), "o", color="#b03020", markersize=4)
        plot.set(title=name, aspect="equal", xlim=(-0.03, 1.03), ylim=(-0.03, 1.03), xticks=(0, 0.5, 1), yticks=(0, 0.5, 1))
        plot.grid(alpha=0.3)
        view.imshow(develop("--region", REGION, *options), interpolation="antialiased")
        view.axis("off")
    path = f"{work.name}/curves.png"
    figure.savefig(path)
    with Image.open(path) as drawn:
        save(drawn.convert("RGB"), "curves.png")


for count in (2, 4, 16):
    dither_sheet(count)
curve_sheet()
filter_sheet()
spectrum_sheet()
develop("--compare", str(images / "before-after.png"))
