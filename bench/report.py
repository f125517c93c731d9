"""Makes docs/performance.md and its plots from what kuvcv_peers has printed, and prints the tables.

Usage: report.py COMPARISON.csv [PAGE.md]
Without PAGE.md it only prints. The plots go to images/ beside the page.
"""

import csv
import pathlib
import re
import statistics
import string
import sys
from collections import namedtuple

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402  (after the choice of a backend that needs no screen)

LARGE = ["1920x1080", "4000x3000"]
PICTURES = ["320x240", *LARGE]
SIZES = ["61x7", "128x24", *PICTURES]
MAIN = "1920x1080"

Row = namedtuple("Row", "kind function case size ours other median low high ours_ns other_ns rounds slower")
Aim = namedtuple("Aim", "text kind function ours other least most")
Family = namedtuple("Family", "text functions cases least wanted peers", defaults=[""])

AIMS = [
    Aim("8-bit adaptive demosaicing against LibRaw's", "peer", "kuviDemosaicAHD_8u_C1C3R", "h9", "LibRaw", 40, None),
    Aim("16-bit adaptive demosaicing against LibRaw's", "peer", "kuviDemosaicAHD_16u_C1C3R", "h9", "LibRaw", 20, None),
    Aim("8-bit adaptive demosaicing against px", "px", "kuviDemosaicAHD_8u_C1C3R", "h9", "px", 4, None),
    Aim("8-bit adaptive demosaicing on two threads against one", "threads", "kuviDemosaicAHD_8u_C1C3R", "2-threads", "1-thread",
        1.8, None),
    Aim("16-bit adaptive demosaicing on two threads against one", "threads", "kuviDemosaicAHD_16u_C1C3R", "2-threads",
        "1-thread", 1.8, None),
    Aim("8-bit tone map of one channel against OpenCV's", "peer", "kuviLUT_8u_C1IR", "h9", "OpenCV", 1.5, None),
    Aim("8-bit tone map of three channels against OpenCV's", "peer", "kuviLUT_8u_C3IR", "h9", "OpenCV", 2, None),
    Aim("4:2:2 video to RGB against OpenCV's", "peer", "kuviCbYCr422ToRGB_8u_C2C3R", "h9", "OpenCV", 3, None),
    Aim("4:2:2 video to RGB against libyuv's to ARGB", "peer", "kuviCbYCr422ToRGB_8u_C2C3R", "h9", "libyuv", 1, None),
    Aim("A call through the export less a direct one, ns", "stub", "kuvcvGetLibVersion", "stub", "direct", None, 2),
]

# The strongest variant against peers, all of them unless told, on pictures: what each comparison is to reach at least, and what is wanted.
FAMILIES = [
    Family("Floating-point arithmetic", r"kuvi(Add|Sub|AddC|MulC|SubC|DivC|Div|Abs|AbsDiff|Sqr|Sqrt)_32f_.*", "", 1, 1.15),
    Family("16-bit arithmetic, plain", r"kuvi(Add|Sub|AddC|SubC|Sqr)_16s_.*", "plain|unaligned", 1, 1.15, "OpenCV"),
    Family("16-bit arithmetic, scaled", r"kuvi(Add|Sub|AddC|SubC|Sqr)_16s_.*", "halved|right|far|left|sign", 1.3, 2.5),
    Family("Plain copies and fills", r"kuv[is](Copy_(8u|16u|16s|32s|32f)_C[134]R|Copy_8u|Set_.*_C1R|Zero_8u)", "", 0.95, 1.05),
    Family("Copies under a mask", r"kuviCopy_.*_C1MR", "", 1.2, 1.6),
    Family("Copies between layouts, channel swaps", r"kuvi(Copy_.*(AC4R|C3R|P4C4R|AC4C3R)|Set_8u_C4CR|SwapChannels_.*)", "", 1.1, 1.5),
    Family("Conversions of integers", r"kuviConvert_(8u|16u).*", "", 1.1, 1.4),
    Family("Single precision to 8 bits, ranges", r"kuvi(Convert_32f8u|Scale)_.*", "", 1.2, 2),
    Family("Mirror images of one channel", r"kuviMirror_.*_C1I?R", "axis|axes", 1, 1.3),
    Family("Mirror images of three channels, vertical axis", r"kuviMirror_.*_C3I?R", "vertical", 5, 8),
    Family("Transposition", r"kuviMirror_.*", "diagonal", 2, 3),
    Family("Tone maps of 16 bits", r"kuviLUT_16u_.*", "", 1, 1.2),
    Family("Palettes", r"kuviLUTPalette_.*", "", 1.1, 1.5),
    Family("Quick interpolation, 8 bits", r"kuviCFAToRGB_8u_.*", "", 2, 3),
    Family("Quick interpolation, 16 bits", r"kuviCFAToRGB_16u_.*", "", 4, 8),
    Family("Bit reduction without error diffusion", r"kuviReduceBits_.*", "off|ordered", 10, 20),
    Family("Bit reduction with error diffusion", r"kuviReduceBits_.*", "", 4, 8),
    Family("Grey to RGB", r"kuviGrayToRGB_.*", "", 1, 1.2),
    Family("Shifts", r"kuv[is][LR]ShiftC_.*", "", 1, 1.3),
    Family("Sums and means of single precision", r"kuvi(Sum|Mean)_32f_C1R", "fast", 1, 1.2, "OpenCV"),
    Family("Deviation of single precision", r"kuviMean_StdDev_32f_C1R", "two", 4, 8, "OpenCV"),
    Family("Extremes of single precision", r"kuvi(MinMax_32f_C1R|Max_32f_C3R)", "", 4, 5, "OpenCV"),
    Family("Deviation of 16 bits", r"kuviMean_StdDev_16u_C1R", "", 6, 12, "OpenCV"),
    Family("Deviation of 8 bits", r"kuviMean_StdDev_8u_.*", "", 1, 1.3, "OpenCV"),
    Family("Means of three channels", r"kuviMean_8u_C3R", "", 5, 8, "OpenCV"),
    Family("Mean and extremes of signed 16 bits", r"kuvi(Mean|MinMax)_16s_C1R", "", 1, 2, "OpenCV"),
    Family("Histograms of 8 bits", r"kuviHistogram_8u_.*", "", 1.2, 2, "OpenCV"),
    Family("Histograms of 16 bits", r"kuviHistogram_16.*", "", 1, 1.3, "loop"),
    Family("Histograms of single precision", r"kuviHistogram_32f_C1R", "^(noise|flat)$", 3, 6, "OpenCV"),
    Family("Tables of sums", r"kuviIntegral_.*", "", 1.3, 2, "OpenCV"),
    Family("Labels", r"kuviLabelMarkers_.*", "", 1.2, 2, "OpenCV"),
    Family("Filters", r"kuviFilterBorder_.*", "", 2, 3, "OpenCV"),
    Family("Resizing", r"kuviResizeLinear_.*", "", 3, 5, "OpenCV"),
    Family("Fourier transforms, powers of two", r"kuvsDFTFwd_.*", "^power of two", 0.8, 1.1),
    Family("Fourier transforms, long powers of two", r"kuvsDFTFwd_.*", "^long", 0.9, 1.2),
    Family("Fourier transforms, small factors", r"kuvsDFTFwd_.*", "factors", 0.6, 1),
    Family("Fourier transforms, primes and chirps", r"kuvsDFTFwd_.*", "prime|chirp", 1, 2),
    Family("Cosine transforms of blocks", r"kuviDCT8x8.*", "", 1, 1.5),
    Family("Zigzag scans", r"kuviZigzag.*", "", 3, 6),
]


def read(path):
    facts, lines = [], []
    for line in pathlib.Path(path).read_text().splitlines():
        if line.startswith("# "):
            facts.append(tuple(line[2:].split(": ", 1)))
        else:
            lines.append(line)
    rows = []
    for fields in csv.DictReader(lines):
        for name in ("median", "low", "high", "ours_ns", "other_ns"):
            fields[name] = float(fields[name])
        fields["slower"] = fields["slower"] == "1"
        rows.append(Row(**fields))
    return facts, rows


def number(value):
    if abs(value) >= 100:
        return f"{value:.0f}"
    if abs(value) >= 10:
        return f"{value:.1f}"
    return f"{value:.2f}" if abs(value) >= 0.1 else f"{value:.3f}"


def middle_half(row):
    return f"{number(row.low)} to {number(row.high)}"


def table(heads, lines):
    """Markdown, padded so that it reads well on a terminal, too. Numbers stand to the right."""
    if not lines:
        return "Nothing was measured."
    cells = [heads] + [[str(cell) for cell in line] for line in lines]
    widths = [max(len(line[i]) for line in cells) for i in range(len(heads))]
    numeric = [all(line[i][:1].isdigit() or line[i][:1] in "-–" for line in cells[1:]) for i in range(len(heads))]

    def joined(line):
        padded = (cell.rjust(width) if right else cell.ljust(width) for cell, width, right in zip(line, widths, numeric))
        return "| " + " | ".join(padded) + " |"

    rule = "|" + "|".join("-" * (width + 1) + (":" if right else "-") for width, right in zip(widths, numeric)) + "|"
    return "\n".join([joined(cells[0]), rule] + [joined(line) for line in cells[1:]])


def unique(values):
    return list(dict.fromkeys(values))


def bound(rows, like):
    """What limits the strongest variant, judged by how its memory traffic compares with that of a plain copy."""
    key = (like.function, like.case, like.size, like.ours)
    copy = next((r for r in rows if r.kind == "copy" and (r.function, r.case, r.size, r.ours) == key), None)
    if copy is None:
        return ""
    share = f"it moves bytes at {number(100 * copy.median)} % of the rate of `memcpy`"
    if copy.median >= 0.7:
        return share + ": loads and stores bound it"
    if copy.median <= 0.3:
        return share + ": computation bounds it, not loads and stores"
    return share


def aims(rows):
    lines, missed = [], []
    for aim in AIMS:
        found = [r for r in rows if (r.kind, r.function, r.ours, r.other) == (aim.kind, aim.function, aim.ours, aim.other)]
        if aim.kind != "stub":
            found = [r for r in found if r.size in LARGE]
        wanted = f"at least {aim.least}" if aim.most is None else f"at most {aim.most}"
        if not found:
            lines.append([aim.text, "", "", wanted, "–", "", "not measured on this processor"])
        for row in found:
            reached = row.median >= aim.least if aim.most is None else row.median <= aim.most
            size = "" if aim.kind == "stub" else row.size
            lines.append([aim.text, row.case, size, wanted, number(row.median), middle_half(row), "yes" if reached else "no"])
            if reached:
                continue
            if aim.kind == "threads":
                control = control_of(rows, row)
                reason = f"the control on small separate images gained {number(control.median)} in the same rounds"
            else:
                reason = "" if aim.kind == "stub" else bound(rows, row)
            place = f" at {size}, {row.case}" if size else ""
            missed.append(f"- {aim.text}{place}: {number(row.median)}, aim {wanted}" + (f"; {reason}." if reason else "."))
    heads = ["Aim", "Case", "Size", "Wanted", "Median", "Middle half", "Reached"]
    text = table(heads, lines)
    if missed:
        text += "\n\nNot reached:\n\n" + "\n".join(missed)
    return text


def by_family(rows):
    """The families of which something was measured, with the strongest variant's comparisons; each comparison is in one of them."""
    strongest = next((r.ours for r in reversed(rows) if r.kind == "px"), None)
    taken = set()
    for family in FAMILIES:
        found = [r for r in rows if r.kind == "peer" and r.ours == strongest and (r.size in PICTURES or is_signal(r)) and r not in taken
                 and re.fullmatch(family.functions, r.function) and re.search(family.cases, r.case) and re.search(family.peers, r.other)]
        taken.update(found)
        if found:
            yield family, found


def told(pattern):
    """What a family's pattern for cases or peers stands for."""
    return re.sub(r"[\^$()]", "", pattern).replace("|", ", ") or "all"


def families(rows):
    """How many comparisons of a family reach what is aimed at, and the one that is furthest from it."""
    lines = []
    for family, found in by_family(rows):
        last = min(found, key=lambda r: r.median)
        reached = [sum(r.median >= aim for r in found) for aim in (family.least, family.wanted)]
        lines.append([family.text, told(family.cases), told(family.peers), len(found),
                      f"{family.least:g}", reached[0], f"{family.wanted:g}", reached[1],
                      number(statistics.median(r.median for r in found)), number(last.median),
                      f"`{last.function}`, {last.case}, {last.size}, {last.other}"])
    return table(["Family", "Cases", "Peers", "Comparisons", "Least", "Reached", "Wanted", "Reached", "Median", "Smallest", "Where"], lines)


def is_signal(row):
    """Of a length, not of a size."""
    return row.kind != "stub" and row.size.endswith("x1")


def signals(rows):
    """The strongest variant at each length."""
    chosen = [r for r in rows if is_signal(r) and r.kind in ("px", "peer")]
    lines = []
    for (function, case, size), group in grouped(chosen, lambda r: (r.function, r.case, r.size)):
        last = [r for r in group if r.kind == "px"][-1]
        peer = next((r for r in group if r.kind == "peer"), None)
        lines.append([f"`{function}`", case, size.removesuffix("x1"), number(last.ours_ns), number(last.median),
                      peer.other if peer else "–", number(peer.median) if peer else "–"])
    return table(["Function", "Case", "Length", "ns/value", "px", "Peer", "Against the peer"], lines)


def by_size(rows, value=lambda r: number(r.median)):
    """One line's cells, a size each."""
    of = {r.size: value(r) for r in rows}
    return [of.get(size, "–") for size in SIZES]


def grouped(rows, key):
    return [(each, [r for r in rows if key(r) == each]) for each in unique(map(key, rows))]


def peers(rows):
    chosen = [r for r in rows if r.kind == "peer"]
    lines = [[f"`{function}`", case, ours, other, *by_size(group)]
             for (function, case, ours, other), group in grouped(chosen, lambda r: (r.function, r.case, r.ours, r.other))]
    return table(["Function", "Case", "Variant", "Peer", *SIZES], lines)


def variants(rows):
    chosen = [r for r in rows if r.kind == "px"]
    codes = unique(r.ours for r in chosen)
    lines = []
    for (function, case), group in grouped(chosen, lambda r: (r.function, r.case)):
        main = {r.ours: r for r in group if r.size == MAIN} or {r.ours: r for r in group}
        first, last = next(iter(main.values())), main[codes[-1]]
        lines.append([f"`{function}`", case, number(first.other_ns), *(number(main[code].median) for code in codes),
                      number(last.ours_ns), *by_size([r for r in group if r.ours == codes[-1]])])
    last = codes[-1] if codes else ""
    return table(["Function", "Case", "px ns/pixel", *codes, f"{last} ns/pixel", *(f"{last} {size}" for size in SIZES)], lines)


def slower(rows):
    chosen = [r for r in rows if r.slower]
    lines = [[f"`{function}`", case, ours, other, *by_size(group, lambda r: number(1 / r.median))]
             for (function, case, ours, other), group in grouped(chosen, lambda r: (r.function, r.case, r.ours, r.other))]
    return table(["Function", "Case", "Variant", "Faster one", *SIZES], lines) if lines else "Nowhere, in this run."


def copies(rows):
    chosen = [r for r in rows if r.kind == "copy"]
    lines = [[f"`{function}`", case, ours, *by_size(group, lambda r: f"{number(100 * r.median)} %")]
             for (function, case, ours), group in grouped(chosen, lambda r: (r.function, r.case, r.ours))]
    return table(["Function", "Case", "Variant", *SIZES], lines)


def control_of(rows, row):
    return next(r for r in rows if r.kind == "threads" and r.ours == "control-2-threads"
                and (r.function, r.size) == (row.function, row.size))


def threads(rows):
    lines = []
    for r in rows:
        if r.kind == "threads" and r.ours == "2-threads":
            control = control_of(rows, r)
            lines.append([f"`{r.function}`", r.size, number(r.median), middle_half(r), number(control.median),
                          middle_half(control), number(r.ours_ns), number(r.other_ns)])
    return table(["Function", "Size", "Ratio", "Middle half", "Control", "Its middle half", "ns/pixel on two", "ns/pixel on one"],
                 lines)


def calls(rows):
    names = {"stub": "through the export", "direct": "direct", "empty": "empty function"}
    lines = [[f"`{r.function}`", f"{names[r.ours]} less {names[r.other]}", number(r.median), middle_half(r)]
             for r in rows if r.kind == "stub"]
    return table(["Function", "Difference", "ns", "Middle half"], lines)


def machine(facts):
    names = {"processor": "Processor", "processors": "Processors", "compiler": "Compiler", "library": "kuvCV",
             "peer": "Peer"}
    return table(["", ""], [[names[key], value] for key, value in facts if key in names])


def short(function):
    return re.sub(r"^kuv[is]", "", function.replace("_", " ", 1))


def finish(figure, path):
    figure.tight_layout()
    figure.savefig(path, dpi=110, metadata={"Software": None})
    plt.close(figure)


def plot_demosaicing(rows, path):
    """Nanoseconds per pixel, variants and peer side by side."""
    functions = unique(r.function for r in rows if r.kind == "px" and "Demosaic" in r.function)
    figure, axes = plt.subplots(1, max(1, len(functions)), figsize=(10, 4), sharey=True, squeeze=False)
    for axis, function in zip(axes[0], functions):
        for offset, size in zip((-0.2, 0.2), LARGE):
            chosen = [r for r in rows if r.kind == "px" and (r.function, r.size) == (function, size)]
            bars = {chosen[0].other: chosen[0].other_ns} if chosen else {}
            bars |= {r.ours: r.ours_ns for r in chosen}
            bars = {r.other: r.other_ns for r in rows if r.kind == "peer" and (r.function, r.size) == (function, size)} | bars
            places = [i + offset for i in range(len(bars))]
            axis.bar(places, bars.values(), 0.38, label=size)
            for place, value in zip(places, bars.values()):
                axis.text(place, value, number(value), ha="center", va="bottom", fontsize=7)
            axis.set_xticks(range(len(bars)), bars.keys())
        axis.margins(y=0.1)
        axis.set_title(short(function), fontsize=10)
        axis.legend()
    axes[0][0].set_ylabel("ns per pixel, one thread")
    finish(figure, path)


def plot_families(rows, path):
    """A row for each family: every comparison, their median, and what they are to reach at least."""
    found = list(by_family(rows))
    figure, axis = plt.subplots(figsize=(10, 1.2 + 0.22 * len(found)))
    for place, (family, comparisons) in zip(range(len(found), 0, -1), found):
        ratios = [r.median for r in comparisons]
        axis.plot(ratios, [place] * len(ratios), "o", markersize=3, alpha=0.4, color="tab:blue", label="a comparison")
        axis.plot(statistics.median(ratios), place, "D", markersize=5, color="tab:red", label="their median")
        axis.plot([family.least] * 2, [place - 0.4, place + 0.4], color="black", label="the least wanted")
    axis.axvline(1, color="black", linewidth=0.8)
    axis.set_xscale("log", base=2)
    axis.xaxis.set_major_formatter(lambda value, _: f"{value:g}")
    axis.set_yticks(range(len(found), 0, -1), [family.text for family, _ in found], fontsize=7)
    axis.set_ylim(0, len(found) + 1)
    axis.grid(axis="x", alpha=0.4)
    axis.set_xlabel("peer's time / ours")
    handles, labels = axis.get_legend_handles_labels()
    axis.legend(handles[:3], labels[:3], fontsize=8)
    finish(figure, path)


def plot_ratios(rows, kind, name, label, path):
    """A row for each function, its first case on a large picture: the ratios on a logarithmic scale, with the middle half as a bar."""
    chosen = [r for r in rows if r.kind == kind and r.size == MAIN]
    first = {r.function: r.case for r in reversed(chosen)}
    chosen = [r for r in chosen if r.case == first[r.function]]
    functions = unique(r.function for r in chosen)
    places = {function: len(functions) - i for i, function in enumerate(functions)}
    figure, axis = plt.subplots(figsize=(10, 1.2 + 0.22 * len(functions)))
    for each in unique(name(r) for r in chosen):
        points = [r for r in chosen if name(r) == each]
        medians = [r.median for r in points]
        errors = [[r.median - r.low for r in points], [r.high - r.median for r in points]]
        axis.errorbar(medians, [places[r.function] for r in points], xerr=errors, fmt="o", markersize=4, label=each)
    axis.axvline(1, color="black", linewidth=0.8)
    axis.set_xscale("log", base=2)
    axis.xaxis.set_major_formatter(lambda value, _: f"{value:g}")
    axis.set_yticks(list(places.values()), [f"{short(function)}, {first[function]}" for function in functions], fontsize=7)
    axis.set_ylim(0, len(functions) + 1)
    axis.grid(axis="x", alpha=0.4)
    axis.set_xlabel(f"{label}, {MAIN}")
    axis.legend(fontsize=8)
    finish(figure, path)


def main(arguments):
    if len(arguments) not in (1, 2):
        sys.exit(__doc__)
    facts, rows = read(arguments[0])
    everything = rows
    parts = {"families": families(rows), "signals": signals(rows)}
    rows = [r for r in rows if not is_signal(r)]
    parts |= {"machine": machine(facts), "aims": aims(rows), "peers": peers(rows), "variants": variants(rows),
             "slower": slower(rows), "copies": copies(rows), "threads": threads(rows), "calls": calls(rows)}
    titles = {"machine": "Machine", "aims": "Aims", "families": "Aims by family", "peers": "Against other libraries",
              "signals": "Transforms by length", "variants": "Variants against px",
              "slower": "Where it is slower", "copies": "Against a copy", "threads": "Two threads against one",
              "calls": "Cost of a call, in ns"}
    for key, text in parts.items():
        print(f"{titles[key]}\n\n{text}\n")
    if len(arguments) == 1:
        return

    page = pathlib.Path(arguments[1])
    images = page.parent / "images"
    images.mkdir(parents=True, exist_ok=True)
    plot_families(everything, images / "performance-families.png")
    plot_demosaicing(rows, images / "performance-demosaicing.png")
    plot_ratios(rows, "peer", lambda r: f"{r.other} / {r.ours}", "peer's time / ours", images / "performance-peers.png")
    plot_ratios(rows, "px", lambda r: r.ours, "px's time / the variant's", images / "performance-variants.png")
    template = string.Template((pathlib.Path(__file__).parent / "performance.md.in").read_text())
    page.write_text(template.substitute(parts | dict(facts)))
    print(f"Written: {page}")


if __name__ == "__main__":
    main(sys.argv[1:])
