// Labels for connected groups of markers.
#include "core/align.hpp"
#include "core/checks.hpp"
#include "segment/label_markers_kernels.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// Where things stand in the caller's buffer. From a width of 2 on they need at most 6 bytes a pixel and 25 more, which leaves 7 to align.
struct Workspace {
    Word* bits;        // of all rows
    Kuv32u* parents;   // of all runs
    Kuv32u* lines[2];  // a number for each place of a band; two bands
    ptrdiff_t words;   // of a row

    Workspace(void* buffer, ptrdiff_t width, ptrdiff_t bands, ptrdiff_t bandRows) : words(wordsOf(width)) {
        bits = alignedUp(static_cast<Word*>(buffer), sizeof(Word));
        parents = reinterpret_cast<Kuv32u*>(bits + words * bands * bandRows);
        lines[0] = parents + placesOf(width) * bands;
        lines[1] = lines[0] + placesOf(width);  // not used for a single band
    }
};

void clear(Word* bits, ptrdiff_t words) {
    for (ptrdiff_t k = 0; k < words; ++k) bits[k] = 0;
}

// Groups that touch at sides, or also at corners, in an image at least 2 pixels wide.
template <bool corners>
Kuv32u labelMarkers(Kuv16u* srcDst, ptrdiff_t step, ptrdiff_t width, ptrdiff_t height, Labels labels, void* buffer) {
    constexpr int bandRows = corners ? 2 : 1;
    const ptrdiff_t bands = (height + bandRows - 1) / bandRows;
    const Workspace work(buffer, width, bands, bandRows);
    const auto bandAt = [&work](ptrdiff_t index) {
        const Word* const upper = work.bits + index * bandRows * work.words;
        return Band{upper, corners ? upper + work.words : upper, work.words};
    };

    Pieces pieces(work.parents);
    Kuv32u runs = 0;
    for (ptrdiff_t index = 0; index < bands; ++index) {
        for (ptrdiff_t row = index * bandRows; row < (index + 1) * bandRows; ++row) {
            Word* const bits = work.bits + row * work.words;
            if (row < height) findMarkers(rowAt(srcDst, step, row), width, bits);
            else clear(bits, work.words);
        }
        const Band band = bandAt(index);
        Kuv32u* const numbers = work.lines[index % 2];
        visitRuns<corners>(band, [&](ptrdiff_t start) {
            pieces.add(runs);
            numbers[placeOf(start)] = runs++;
        });
        if (index > 0) joinBands<corners>(pieces, bandAt(index - 1), work.lines[(index - 1) % 2], band, numbers);
    }

    const Kuv32u groups = pieces.label(runs, labels);
    const Kuv32u* label = work.parents;
    Kuv16u line[Painter::lineSamples] = {};
    for (ptrdiff_t index = 0; index < bands; ++index) {
        const Band band = bandAt(index);
        Kuv32u* const labelsOfRuns = work.lines[0];
        visitRuns<corners>(band, [&](ptrdiff_t start) { labelsOfRuns[placeOf(start)] = *label++; });
        Painter painter(band, labelsOfRuns);
        const ptrdiff_t row = index * bandRows;
        if (corners && row + 1 < height) {
            painter.paint<2>({{rowAt(srcDst, step, row), band.upper}, {rowAt(srcDst, step, row + 1), band.lower}}, width, line);
        } else {
            painter.paint<1>({{rowAt(srcDst, step, row), band.upper}}, width, line);
        }
    }
    return groups;
}

// One column. For this width the buffer is too small for rows of bits.
Kuv32u labelColumn(Kuv16u* srcDst, ptrdiff_t step, ptrdiff_t height, Labels labels) {
    Kuv32u groups = 0, label = labels.last;
    bool inGroup = false;
    for (ptrdiff_t row = 0; row < height; ++row) {
        Kuv16u* const sample = rowAt(srcDst, step, row);
        const bool marked = loadSample(sample) != 0;
        if (marked && !inGroup) {
            ++groups;
            label = labels.after(label);
        }
        if (marked) storeSample(sample, static_cast<Kuv16u>(label));
        inGroup = marked;
    }
    return groups;
}

}  // namespace
}  // namespace kuv::KUV_VARIANT

KuvStatus KUV_VARIANT_FUNCTION(kuviLabelMarkers_16u_C1IR)(Kuv16u* srcDst, Kuv32s srcDstStep, KuviSize roiSize, Kuv32s minLabel,
                                                          Kuv32s maxLabel, Kuv32s norm, Kuv32s* count, Kuv8u* buffer) {
    using namespace kuv::KUV_VARIANT;
    if (anyNull(srcDst, buffer, count)) return kuvStatusNullPtr;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    if (srcDstStep < Kuv64s{roiSize.width} * 2) return kuvStatusBadStep;
    if (srcDstStep % 2 != 0) return kuvStatusStepNotMultiple;
    if (minLabel < 1 || maxLabel >= 65535 || minLabel > maxLabel) return kuvStatusBadArg;
    if (norm != kuvLabelNeighbours8 && norm != kuvLabelNeighbours4) return kuvStatusBadArg;
    const Labels labels = {static_cast<Kuv32u>(minLabel), static_cast<Kuv32u>(maxLabel)};
    const auto [width, height] = roiSize;
    Kuv32u groups;
    if (width == 1) groups = labelColumn(srcDst, srcDstStep, height, labels);
    else if (norm == kuvLabelNeighbours8) groups = labelMarkers<true>(srcDst, srcDstStep, width, height, labels, buffer);
    else groups = labelMarkers<false>(srcDst, srcDstStep, width, height, labels, buffer);
    storeSample(count, static_cast<Kuv32s>(groups));
    return kuvStatusOk;
}
