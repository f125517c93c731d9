// Rows of samples to bits, and labels into rows.
#pragma once

#include "core/integers.hpp"
#include "segment/marker_runs.hpp"
#include "simd/bytes.hpp"
#include "simd/mask.hpp"

namespace kuv::KUV_VARIANT {
namespace {

using Samples = Native<Kuv16u>;

// A bit for each of up to 64 samples that is not 0.
KUV_INLINE Word markersAmong(const Kuv16u* row, ptrdiff_t count) {
    Word bits = 0;
    for (ptrdiff_t i = 0; i < count; ++i) bits |= Word{loadSample(row + i) != 0} << i;
    return bits;
}

// The same for so many vectors of samples.
template <int vectors>
KUV_INLINE Word markersIn(const Kuv16u* row) {
    static_assert(vectors % 2 == 0);
    const auto empty = [row](int i) {
        return as<Kuv16s>(shiftRight<8>(equal(load<Samples>(row + i * Samples::lanes), fill<Samples>(0))));
    };
    Word bits = 0;
#pragma GCC unroll 8
    for (int i = 0; i < vectors; i += 2) {
        const Word markers = bitsOf(equal(narrowed(empty(i), empty(i + 1)), fill<ByteVector>(0)));
        bits |= markers << (i * Samples::lanes);
    }
    return bits;
}

void findMarkers(const Kuv16u* row, ptrdiff_t width, Word* bits) {
    if constexpr (hasVectors) {
        constexpr int vectors = wordColumns / Samples::lanes;
        constexpr ptrdiff_t pair = 2 * Samples::lanes;
        if (width < pair) {
            *bits = markersAmong(row, width);
            return;
        }
        for (; width >= wordColumns; width -= wordColumns, row += wordColumns) *bits++ = markersIn<vectors>(row);
        // The last pair of vectors ends with the row.
        const ptrdiff_t end = width - pair;
        const Word atEnd = width > 0 ? markersIn<2>(row + end) : 0;
        Word last = end >= 0 ? atEnd << end : atEnd >> -end;
        for (ptrdiff_t i = 0; i < end; i += pair) last |= markersIn<2>(row + i) << i;
        *bits = last;
    } else {
        for (; width >= wordColumns; width -= wordColumns, row += wordColumns) *bits++ = markersAmong(row, wordColumns);
        *bits = markersAmong(row, width);
    }
}

// Writes the labels of a band's runs into its markers.
class Painter {
public:
    Painter(Band band, const Kuv32u* labels) : band_(band), labels_(labels) {}

    // The band's rows. `bits` tells where a row has markers.
    struct Row {
        Kuv16u* samples;
        const Word* bits;
    };

    template <int rowCount>
    void paint(const Row (&rows)[rowCount], ptrdiff_t width, Kuv16u* line) {
        constexpr ptrdiff_t stretch = hasVectors ? stretchWords : 1;
        RunStarts starts;
        for (ptrdiff_t first = 0; first < band_.words; first += stretch) {
            const ptrdiff_t end = smaller(first + stretch, band_.words);
            for (ptrdiff_t k = first; k < end; ++k) {
                const Word all = band_.all(k);
                for (Word rest = all; rest != 0;) {
                    const Word column = lowestOf(rest), behind = rest + column;
                    const auto label = static_cast<Kuv16u>(labels_[placeOf(starts.behind(~all & (column - 1)))]);
                    if constexpr (hasVectors) {
                        const ptrdiff_t from = __builtin_ctzll(rest), to = behind == 0 ? wordColumns : __builtin_ctzll(behind);
                        repeat(line + (k - first) * wordColumns + from, to - from, label);
                    } else {
                        for (const Row& row : rows) scatter(row, k, rest & ~behind, label);
                    }
                    rest &= behind;
                }
                starts.leave(all);
            }
            if constexpr (hasVectors) {
                for (ptrdiff_t k = first; k < end; ++k) {
                    if (band_.all(k) == 0) continue;
                    const Kuv16u* const from = line + (k - first) * wordColumns;
                    const ptrdiff_t columns = width - k * wordColumns;
                    for (const Row& row : rows) {
                        if (columns >= wordColumns) replaceWord(row.samples + k * wordColumns, from);
                        else replaceFew(row.samples + k * wordColumns, from, columns);
                    }
                }
            }
        }
    }

    static constexpr ptrdiff_t stretchWords = 16;
    static constexpr ptrdiff_t lineSamples = stretchWords * wordColumns + Samples::lanes;

private:
    static void scatter(const Row& row, ptrdiff_t k, Word run, Kuv16u label) {
        for (Word markers = row.bits[k] & run; markers != 0; markers = withoutLowest(markers)) {
            storeSample(row.samples + k * wordColumns + __builtin_ctzll(markers), label);
        }
    }

    // May write up to a vector more, which what follows overwrites.
    static KUV_INLINE void repeat(Kuv16u* to, ptrdiff_t count, Kuv16u label) {
        const Samples labels = fill<Samples>(label);
        do {
            store(to, labels);
            to += Samples::lanes;
            count -= Samples::lanes;
        } while (count > 0);
    }

    static KUV_INLINE Samples replaced(const Kuv16u* samples, const Kuv16u* labels) {
        return bitAndNot(equal(load<Samples>(samples), fill<Samples>(0)), load<Samples>(labels));
    }
    static KUV_INLINE void replaceWord(Kuv16u* samples, const Kuv16u* labels) {
#pragma GCC unroll 8
        for (ptrdiff_t i = 0; i < wordColumns; i += Samples::lanes) store(samples + i, replaced(samples + i, labels + i));
    }
    // The last vector is read before the one that it overlaps is written.
    static KUV_INLINE void replaceFew(Kuv16u* samples, const Kuv16u* labels, ptrdiff_t count) {
        const ptrdiff_t end = count - Samples::lanes;
        if (end < 0) {
            for (ptrdiff_t i = 0; i < count; ++i) storeSample<Kuv16u>(samples + i, loadSample(samples + i) != 0 ? labels[i] : 0);
            return;
        }
        const Samples last = replaced(samples + end, labels + end);
        for (ptrdiff_t i = 0; i < end; i += Samples::lanes) store(samples + i, replaced(samples + i, labels + i));
        store(samples + end, last);
    }

    Band band_;
    const Kuv32u* labels_;
};

}  // namespace
}  // namespace kuv::KUV_VARIANT
