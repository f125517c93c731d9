// The bins of a channel, and how samples get there eight at a time.
#pragma once

#include "core/record.hpp"
#include "simd/real.hpp"
#include "stats/histogram_layout.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// Of a channel that the record does not have, there are none.
template <class Level>
struct ChannelBins {
    const Level* levels = nullptr;
    Kuv32s bins = 0;
    Kuv32u* hist = nullptr;

    ChannelBins() = default;
    ChannelBins(const KuviBinPlan* spec, int c, Kuv32u* results) : hist(results) {
        const Kuv32s count = static_cast<Kuv32s>(wordAt(spec, offsetof(HistogramHeader, levelCounts) + 4 * c));
        levels = placeIn<Level>(spec, wordAt(spec, offsetof(HistogramHeader, levels) + 4 * c));
        bins = count < 2 ? 0 : count - 1;
    }
    KUV_INLINE Level level(ptrdiff_t k) const { return loadSample(levels + k); }
};

KUV_INLINE void countOne(Kuv32u* counts, ptrdiff_t index) { storeSample(counts + index, loadSample(counts + index) + 1); }

using CountVector = Native<Kuv32s>;

KUV_INLINE CountVector loadCounts(const Kuv32u* from) { return load<CountVector>(reinterpret_cast<const Kuv32s*>(from)); }
KUV_INLINE void storeCounts(Kuv32u* to, CountVector counts) { store(reinterpret_cast<Kuv32s*>(to), counts); }

void clearCounts(Kuv32u* counts, ptrdiff_t n) {
    constexpr ptrdiff_t block = 2 * CountVector::lanes;
    const ptrdiff_t whole = hasVectors ? n / block * block : 0;
    if constexpr (hasVectors) {
        const auto none = fill<CountVector>(0);
        for (ptrdiff_t i = 0; i < whole; i += block) {
            storeCounts(counts + i, none);
            storeCounts(counts + i + CountVector::lanes, none);
        }
    }
    for (ptrdiff_t i = whole; i < n; ++i) storeSample(counts + i, Kuv32u{0});
}

// to[i] = the sum of element i of all tables.
template <int tables>
void addTables(Kuv32u* to, const Kuv32u* from, ptrdiff_t tableStride, ptrdiff_t n) {
    const ptrdiff_t whole = n / CountVector::lanes * CountVector::lanes;
    for (ptrdiff_t i = 0; i < whole; i += CountVector::lanes) {
        CountVector sum = loadCounts(from + i);
#pragma GCC unroll 8
        for (int t = 1; t < tables; ++t) sum = add(sum, loadCounts(from + t * tableStride + i));
        storeCounts(to + i, sum);
    }
    for (ptrdiff_t i = whole; i < n; ++i) {
        Kuv32u sum = from[i];
        for (int t = 1; t < tables; ++t) sum += from[t * tableStride + i];
        storeSample(to + i, sum);
    }
}

// The counts of eight samples' bins at a time, of four channels or one. A sample that is to be counted nowhere has the index `bins`.
//
// The results of small histograms are kept in tables, of one channel in four side by side: the next sample often goes to the same bin,
// and would wait for the count before.
template <int channelCount>
class BinCounts {
    static_assert(channelCount == 1 || channelCount == 4);
    static constexpr int tables = 4;
    // Tables at distances that differ modulo 4096: the processor compares no more of an address before it lets a load pass a store.
    static constexpr ptrdiff_t mostBins = 511, stride = mostBins + 1 + 16;

public:
    static constexpr ptrdiff_t block = 8;

    template <class Level>
    static bool fit(const ChannelBins<Level> (&channels)[channelCount]) {
        bool small = true;
        for (int c = 0; c < channelCount; ++c) small = small && channels[c].bins <= mostBins;
        return small;
    }

    template <class Level>
    explicit BinCounts(const ChannelBins<Level> (&channels)[channelCount]) : small_(fit(channels)) {
        for (int t = 0; t < tables; ++t) {
            hist_[t] = channels[t % channelCount].hist;
            bins_[t] = channels[t % channelCount].bins;
        }
    }

    // `find(samples, indices)` tells the bins of eight samples.
    template <class Find, class T>
    void take(Find find, const T* src, ptrdiff_t step, ptrdiff_t samples, ptrdiff_t rows) {
        if (small_) takeRows<true>(find, src, step, samples, rows);
        else takeRows<false>(find, src, step, samples, rows);
    }

private:
    template <bool small, class Find, class T>
    __attribute__((noinline)) void takeRows(Find find, const T* src, ptrdiff_t step, ptrdiff_t samples, ptrdiff_t rows) {
        for (int t = 0; t < (small ? tables : channelCount); ++t) {
            if (small) clearCounts(pool_ + t * stride, bins_[t] + 1);
            else clearCounts(hist_[t], bins_[t]);
        }
        alignas(32) Kuv32s indices[block];
        for (ptrdiff_t row = 0; row < rows; ++row) {
            const T* from = rowAt(src, step, row);
            ptrdiff_t left = samples;
            for (; left >= block; left -= block, from += block) {
                find(from, indices);
#pragma GCC unroll 8
                for (int i = 0; i < block; ++i) count<small>(indices[i], i);
            }
            if (left > 0) {
                T padded[block] = {};
                __builtin_memcpy(padded, from, static_cast<size_t>(left) * sizeof(T));
                find(padded, indices);
                for (int i = 0; i < left; ++i) count<small>(indices[i], i);
            }
        }
#ifdef __AVX__
        _mm256_zeroupper();  // GCC 12 forgets it before what follows
#endif
        if constexpr (small && channelCount == 1) {
            addTables<tables>(hist_[0], pool_, stride, bins_[0]);
        } else if constexpr (small) {
            for (int t = 0; t < tables; ++t) addTables<1>(hist_[t], pool_ + t * stride, stride, bins_[t]);
        }
    }
    template <bool small>
    KUV_INLINE void count(Kuv32s index, int i) {
        if constexpr (small) ++pool_[i % tables * stride + index];
        else if (index < bins_[i % tables]) countOne(hist_[i % tables], index);
    }

    Kuv32u* hist_[tables];
    Kuv32s bins_[tables];
    bool small_;
    alignas(64) Kuv32u pool_[tables * stride];
};

}  // namespace
}  // namespace kuv::KUV_VARIANT
