// Integer samples: counts of every value, added up for each bin; or bins found by division.
#pragma once

#include "core/integers.hpp"
#include "simd/bytes.hpp"
#include "simd/mask.hpp"
#include "stats/histogram_bins.hpp"
#include "stats/lanes.hpp"

namespace kuv::KUV_VARIANT {
namespace {

using IntegerBins = ChannelBins<Kuv32s>;

KUV_INLINE Kuv32u sumOfCounts(const Kuv32u* counts, ptrdiff_t n) {
    constexpr ptrdiff_t lanes = CountVector::lanes;
    Kuv32u sum = 0;
    ptrdiff_t i = 0;
    if constexpr (hasVectors) {
        if (n >= 4 * lanes) {
            CountVector sums[4];
#pragma GCC unroll 4
            for (int k = 0; k < 4; ++k) sums[k] = loadCounts(counts + k * lanes);
            for (i = 4 * lanes; i + 4 * lanes <= n; i += 4 * lanes) {
#pragma GCC unroll 4
                for (int k = 0; k < 4; ++k) sums[k] = add(sums[k], loadCounts(counts + i + k * lanes));
            }
            sum = static_cast<Kuv32u>(sumOfLanes<Kuv32u>(add(add(sums[0], sums[1]), add(sums[2], sums[3]))));
        }
    }
    for (; i < n; ++i) sum += loadSample(counts + i);
    return sum;
}

// Where a level lies among the counts of all values.
template <class T>
KUV_INLINE ptrdiff_t placeOf(Kuv32s level) {
    return clamped(ptrdiff_t{level} - lowestValue<T>, 0, valueCount<T>);
}

// Whether the bins from k on, as many as a vector has counts, hold one value each.
template <class T>
KUV_INLINE bool holdOneEach(const IntegerBins& channel, ptrdiff_t k) {
    using V = CountVector;
    const ptrdiff_t place = ptrdiff_t{channel.level(k)} - lowestValue<T>;
    if (place < 0 || place + V::lanes > valueCount<T>) return false;
    const V widths = sub(load<V>(channel.levels + k + 1), load<V>(channel.levels + k));
    return bitsOf(equal(as<Kuv8u>(widths), as<Kuv8u>(fill<V>(1)))) == static_cast<Kuv32u>(-1) >> (32 - V::bytes);
}

template <class T>
void sumBins(const Kuv32u* counts, const IntegerBins& channel) {
    for (ptrdiff_t k = 0; k < channel.bins;) {
        const ptrdiff_t low = placeOf<T>(channel.level(k)), high = placeOf<T>(channel.level(k + 1));
        if constexpr (hasVectors) {
            if (k + CountVector::lanes <= channel.bins && holdOneEach<T>(channel, k)) {
                storeCounts(channel.hist + k, loadCounts(counts + low));
                k += CountVector::lanes;
                continue;
            }
        }
        storeSample(channel.hist + k, low < high ? sumOfCounts(counts + low, high - low) : 0);
        ++k;
    }
}

// Counts values. Samples are taken out of words of eight bytes; those of a channel go to each of its `sets` tables in turn.
template <int channelCount, int sets, ptrdiff_t stride, class T>
void countRows(Kuv32u* tables, const T* src, ptrdiff_t step, ptrdiff_t samples, ptrdiff_t rows) {
    constexpr int perWord = 8 / sizeof(T), block = hasVectors ? (channelCount == 3 ? 24 : 8) : 2 * channelCount;
    const auto count = [tables](T sample, ptrdiff_t i) {
        constexpr ptrdiff_t period = channelCount * sets;
        countOne(tables + stride * (i % period), sample - lowestValue<T>);
    };
    for (ptrdiff_t row = 0; row < rows; ++row) {
        const T* from = rowAt(src, step, row);
        ptrdiff_t left = samples;
        for (; left >= block; left -= block, from += block) {
            if constexpr (hasVectors) {
#pragma GCC unroll 3
                for (int w = 0; w < block / perWord; ++w) {
                    const Kuv64u word = loadSample(reinterpret_cast<const Kuv64u*>(from + w * perWord));
#pragma GCC unroll 8
                    for (int k = 0; k < perWord; ++k) count(static_cast<T>(word >> 8 * static_cast<int>(sizeof(T)) * k), w * perWord + k);
                }
            } else {
#pragma GCC unroll 8
                for (int i = 0; i < block; ++i) count(loadSample(from + i), i);
            }
        }
        for (ptrdiff_t i = 0; i < left; ++i) count(loadSample(from + i), i);
    }
}

// The same by way of several tables for each channel: equal neighbours would wait for each other's counts. Tables lie at distances that
// differ modulo 4096, like those of BinCounts.
template <int channelCount, int sets>
__attribute__((noinline)) void countInTables(Kuv32u* counts, const Kuv8u* src, ptrdiff_t step, ptrdiff_t samples, ptrdiff_t rows) {
    constexpr ptrdiff_t values = valueCount<Kuv8u>, stride = values + 16;
    alignas(64) Kuv32u tables[sets * channelCount * stride];
    clearCounts(tables, sets * channelCount * stride);
    countRows<channelCount, sets, stride>(tables, src, step, samples, rows);
    for (int c = 0; c < channelCount; ++c) addTables<sets>(counts + c * values, tables + c * stride, channelCount * stride, values);
}

// Counts values in `counts`.
template <int channelCount, class T>
void countValues(Kuv32u* counts, const T* src, ptrdiff_t step, ptrdiff_t samples, ptrdiff_t rows) {
    if constexpr (hasVectors && sizeof(T) == 1) {
        // About eight tables in all, or four where eight would take longer to clear and add than they save.
        constexpr int sets = channelCount == 1 ? 8 : 2;
        const ptrdiff_t all = samples * rows;
        if (all >= (channelCount == 1 ? 2048 : 8192)) return countInTables<channelCount, sets>(counts, src, step, samples, rows);
        if (channelCount == 1 && all >= 256) return countInTables<channelCount, 4>(counts, src, step, samples, rows);
    }
    clearCounts(counts, ptrdiff_t{channelCount} * valueCount<T>);
    countRows<channelCount, 1, valueCount<T>>(counts, src, step, samples, rows);
}

// Bins of one width: x is in bin (x - first) / step.
struct EvenBins {
    Kuv32s first = 0, last = 0;
    Kuv32u step = 1;

    EvenBins() = default;
    // Whether the whole range is a multiple of the bins' number.
    bool spread(const IntegerBins& channel) {
        if (channel.bins == 0) return true;
        first = channel.level(0);
        last = channel.level(channel.bins);
        const Kuv32u range = static_cast<Kuv32u>(last) - static_cast<Kuv32u>(first);
        step = range / static_cast<Kuv32u>(channel.bins);
        return range % static_cast<Kuv32u>(channel.bins) == 0;
    }
    // Whether the levels between are where this takes them to be.
    bool agree(const IntegerBins& channel) const {
        bool same = true;
        for (ptrdiff_t k = 0; k < channel.bins; ++k) {
            same = same && static_cast<Kuv32u>(channel.level(k)) == static_cast<Kuv32u>(first) + static_cast<Kuv32u>(k) * step;
        }
        return same;
    }
};

template <int channelCount, class T>
void countSamplesByDivision(const EvenBins (&even)[channelCount], const IntegerBins (&channels)[channelCount], const T* src, ptrdiff_t step,
                            ptrdiff_t samples, ptrdiff_t rows) {
    for (const IntegerBins& each : channels) clearCounts(each.hist, each.bins);
    for (ptrdiff_t row = 0; row < rows; ++row) {
        const T* const from = rowAt(src, step, row);
        for (ptrdiff_t i = 0; i < samples; ++i) {
            const EvenBins& bins = even[i % channelCount];
            const Kuv32s x = loadSample(from + i);
            if (x < bins.first || x >= bins.last) continue;
            countOne(channels[i % channelCount].hist, (static_cast<Kuv32u>(x) - static_cast<Kuv32u>(bins.first)) / bins.step);
        }
    }
}

// The same for eight samples, in single precision. Quotients of integers below 2^22 are cut to the right integer, however they are
// rounded: one that is no integer misses the next by more than the rounding moves it.
template <int channelCount>
class Quotients {
    using V = CountVector;
    using Reals = Vector<Kuv32f, V::bytes>;
    static constexpr Kuv32s exact = 1 << 22;

public:
    // No sample is that far above the first level.
    static bool suit(const EvenBins (&even)[channelCount]) {
        bool near = true;
        for (const EvenBins& each : even) near = near && each.first > 65536 - exact;
        return near;
    }

    Quotients(const EvenBins (&even)[channelCount], const IntegerBins (&channels)[channelCount]) {
        for (int i = 0; i < V::lanes; ++i) {
            const EvenBins& each = even[i % channelCount];
            const Kuv64s range = Kuv64s{each.last} - each.first;
            first_[i] = each.first;
            range_[i] = static_cast<Kuv32s>(clamped(range, 0, exact));
            step_[i] = static_cast<Kuv32f>(smaller(each.step, exact));
            bins_[i] = channels[i % channelCount].bins;
        }
    }

    template <class T>
    KUV_INLINE void operator()(const T* samples, Kuv32s* indices) const {
#pragma GCC unroll 2
        for (int i = 0; i < 8; i += V::lanes) {
            const V distance = sub(loadWidened<V>(samples + i), load<V>(first_));
            const V inside = bitAnd(greater(distance, fill<V>(-1)), greater(load<V>(range_), distance));
            const V bin = truncated(divide(toReals(distance), load<Reals>(step_)));
            store(indices + i, bitOr(bitAnd(inside, bin), bitAndNot(inside, load<V>(bins_))));  // a blend takes as long, or longer
        }
    }

private:
    Kuv32s first_[V::lanes], range_[V::lanes], bins_[V::lanes];
    Kuv32f step_[V::lanes];
};

}  // namespace
}  // namespace kuv::KUV_VARIANT
