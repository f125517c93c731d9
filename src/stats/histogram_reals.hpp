// Single-precision samples: how their bins are found among the levels.
#pragma once

#include "core/integers.hpp"
#include "stats/histogram_bins.hpp"

namespace kuv::KUV_VARIANT {
namespace {

using RealBins = ChannelBins<Kuv32f>;

// From the first level upward.
struct Scan {
    KUV_INLINE ptrdiff_t operator()(const RealBins& channel, Kuv32f x) const {
        ptrdiff_t k = 0;
        while (!(channel.level(k + 1) > x)) ++k;
        return k;
    }
};

struct BinarySearch {
    KUV_INLINE ptrdiff_t operator()(const RealBins& channel, Kuv32f x) const {
        ptrdiff_t base = 0, length = channel.bins;
        while (length > 1) {
            const ptrdiff_t half = length / 2;
            if (x >= channel.level(base + half)) {
                base += half;
                length -= half;
            } else {
                length = half;
            }
        }
        return base;
    }
};

template <class Find>
void searchSamples(Find find, const RealBins& channel, const Kuv32f* src, ptrdiff_t step, ptrdiff_t samples, ptrdiff_t rows) {
    const Kuv32f first = channel.level(0), last = channel.level(channel.bins);
    clearCounts(channel.hist, channel.bins);
    for (ptrdiff_t row = 0; row < rows; ++row) {
        const Kuv32f* const from = rowAt(src, step, row);
        for (ptrdiff_t i = 0; i < samples; ++i) {
            const Kuv32f x = loadSample(from + i);
            if (x >= first && x < last) countOne(channel.hist, find(channel, x));
        }
    }
}

// What follows finds the bins of eight samples at once, among levels that rise.
bool doRise(const RealBins& channel) {
    bool rise = true;
    for (ptrdiff_t k = 0; k < channel.bins; ++k) rise = rise && channel.level(k) <= channel.level(k + 1);
    return rise;
}

// Vectors are filled where they are used, out of loops: those of 32 bytes must not get into the callers of loops.
class RealFinder {
protected:
    using V = Native<Kuv32f>;

    explicit RealFinder(const RealBins& channel) : channel_(channel), first_(channel.level(0)), last_(channel.level(channel.bins)) {}

    KUV_INLINE V inside(V x) const { return bitAnd(atLeast(x, fill<V>(first_)), greater(fill<V>(last_), x)); }
    // Cut to the index of no bin, and far from any level.
    KUV_INLINE V none() const { return fill<V>(static_cast<Kuv32f>(channel_.bins) + 0.5f); }

    RealBins channel_;
    Kuv32f first_, last_;
};

// Counts the levels up to a sample.
class LevelCount : RealFinder {
public:
    // More bins are searched faster.
    static constexpr Kuv32s mostBins = V::bytes == 32 ? 101 : 40;

    explicit LevelCount(const RealBins& channel) : RealFinder(channel) {}
    KUV_INLINE void operator()(const Kuv32f* samples, Kuv32s* indices) const {
        constexpr int registers = 8 / V::lanes;
        V x[registers], count[registers];
#pragma GCC unroll 2
        for (int r = 0; r < registers; ++r) {
            x[r] = load<V>(samples + r * V::lanes);
            count[r] = fill<V>(0);
        }
        for (ptrdiff_t k = 1; k < channel_.bins; ++k) {
            const V level = fill<V>(channel_.level(k));
#pragma GCC unroll 2
            for (int r = 0; r < registers; ++r) count[r] = add(count[r], bitAnd(atLeast(x[r], level), fill<V>(1)));
        }
#pragma GCC unroll 2
        for (int r = 0; r < registers; ++r) storeTruncated(indices + r * V::lanes, select(inside(x[r]), count[r], none()));
    }
};

// Halves what may hold a sample, without a branch: all take the same steps, side by side. Gathering levels instead takes longer.
class SteadySearch : RealFinder {
public:
    explicit SteadySearch(const RealBins& channel) : RealFinder(channel) {}
    KUV_INLINE void operator()(const Kuv32f* samples, Kuv32s* indices) const {
        Kuv32f x[8];
        ptrdiff_t base[8] = {};
        __builtin_memcpy(x, samples, sizeof(x));
        for (ptrdiff_t length = channel_.bins; length > 1;) {
            const ptrdiff_t half = length / 2;
#pragma GCC unroll 8
            for (int i = 0; i < 8; ++i) base[i] += half & -static_cast<ptrdiff_t>(x[i] >= channel_.level(base[i] + half));
            length -= half;
        }
#pragma GCC unroll 8
        for (int i = 0; i < 8; ++i) indices[i] = x[i] >= first_ && x[i] < last_ ? static_cast<Kuv32s>(base[i]) : channel_.bins;
    }
};

// Takes a sample's distance from the first level, in bins, and cuts it; close to a level, the levels themselves decide.
class Estimate : RealFinder {
public:
    Estimate(const RealBins& channel, Kuv32f step) : RealFinder(channel) {
        const Kuv32f reciprocal = 1 / step;
        // Roundings: of step, reciprocal and difference, in parts of at most `bins`; of products and levels, in parts of the largest level
        // in bins. Each is at most 2^-23 of that in any rounding mode.
        const Kuv64f first = __builtin_fabs(static_cast<Kuv64f>(channel.level(0)));
        const Kuv64f last = __builtin_fabs(static_cast<Kuv64f>(channel.level(channel.bins)));
        const Kuv64f largest = (first > last ? first : last) * __builtin_fabs(static_cast<Kuv64f>(reciprocal));
        const Kuv64f error = 0x4p-23 * (channel.bins + largest);
        // The product of normal numbers, and a bin of either side at most.
        suits_ = step >= 0x1p-100f && step <= 0x1p100f && error < 0.25;
        const Kuv32f margin = error < 0.001 ? 0.001f : static_cast<Kuv32f>(error);
        reciprocal_ = reciprocal;
        offset_ = channel.level(0) * reciprocal;
        margin_ = margin;
    }
    bool suits() const { return suits_; }

    KUV_INLINE void operator()(const Kuv32f* samples, Kuv32s* indices) const {
#pragma GCC unroll 2
        for (int i = 0; i < 8; i += V::lanes) {
            const V x = load<V>(samples + i), bin = select(inside(x), quotient(x), none());
            const V fromMiddle = absolute(sub(sub(bin, wholePart(bin)), fill<V>(0.5f)));
            storeTruncated(indices + i, bin);
            const unsigned unsure = laneBits(greater(fromMiddle, fill<V>(0.5f - margin_)));
            if (unsure != 0) settle(samples + i, indices + i, unsure);
        }
    }

private:
    KUV_INLINE V quotient(V x) const { return productMinus(x, fill<V>(reciprocal_), fill<V>(offset_)); }
    // The bin, or the one before or behind it, of those samples whose bits are set.
    KUV_INLINE void settle(const Kuv32f* samples, Kuv32s* indices, unsigned bits) const {
        const Kuv32s lastBin = channel_.bins - 1;
#pragma GCC unroll 8
        for (int i = 0; i < V::lanes; ++i) {
            if ((bits >> i & 1) == 0) continue;
            const Kuv32f x = loadSample(samples + i);
            const Kuv32s bin = clamped(indices[i], 0, lastBin);
            indices[i] = bin + (x >= channel_.level(bin + 1)) - (x < channel_.level(bin));
        }
    }

    bool suits_;
    Kuv32f reciprocal_, offset_, margin_;
};

}  // namespace
}  // namespace kuv::KUV_VARIANT
