// Histograms.
#include "core/checks.hpp"
#include "stats/histogram_integers.hpp"
#include "stats/histogram_reals.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// Up to so many levels are scanned where no faster way is known; beyond, a search halves them.
constexpr Kuv32s mostScanned = hasVectors ? 102 : 30;
// h9 takes a step of sixteen times the width for rows that touch.
constexpr bool hasSingleRowRule = facts.code == Code::h9;

bool isPlan(const KuviBinPlan* spec) { return wordAt(spec, offsetof(HistogramHeader, identity)) == histogramIdentity; }
bool isUniform(const KuviBinPlan* spec) { return wordAt(spec, offsetof(HistogramHeader, uniform)) != 0; }

// The counts of all 65536 values take longer to clear and sum than so many divisions. The product wraps.
constexpr bool isSmall(KuviSize roi) { return static_cast<Kuv32s>(wrappedPixels(roi)) < 65536; }

template <int channelCount, class T>
void countByDivision(const EvenBins (&even)[channelCount], const IntegerBins (&channels)[channelCount], const T* src, ptrdiff_t step,
                     ptrdiff_t samples, ptrdiff_t rows) {
    if constexpr (hasVectors) {
        if (Quotients<channelCount>::suit(even)) {
            BinCounts<channelCount> counts(channels);
            return counts.take(Quotients<channelCount>(even, channels), src, step, samples, rows);
        }
    }
    countSamplesByDivision(even, channels, src, step, samples, rows);
}

// Whether it did all there is to do.
template <int channelCount, class T>
bool measureByDivision(const IntegerBins (&channels)[channelCount], const KuviBinPlan* spec, const T* src, ptrdiff_t step, KuviSize roi,
                       ptrdiff_t samples, ptrdiff_t rows) {
    if (!isUniform(spec)) return false;
    EvenBins even[channelCount];
    for (int c = 0; c < channelCount; ++c) {
        if (!even[c].spread(channels[c])) return false;
    }
    if (!isSmall(roi)) {
        // With levels just where the division takes them to be, it gives the same, and eight at a time faster in few bins.
        if constexpr (!hasAVX2) {
            return false;
        } else {
            if (!BinCounts<channelCount>::fit(channels) || !Quotients<channelCount>::suit(even)) return false;
            for (int c = 0; c < channelCount; ++c) {
                if (!even[c].agree(channels[c])) return false;
            }
        }
    }
    countByDivision(even, channels, src, step, samples, rows);
    return true;
}

template <int channelCount, class T>
KuvStatus measure(const T* src, Kuv32s srcStep, KuviSize roi, Kuv32u* const (&hist)[channelCount], const KuviBinPlan* spec,
                  Kuv8u* buffer) {
    if (emptyRoi(roi)) return kuvStatusBadSize;
    if (ptrdiff_t{channelCount} * static_cast<ptrdiff_t>(sizeof(T)) * roi.width > srcStep) return kuvStatusBadStep;
    if (!isPlan(spec)) return kuvStatusBadArg;

    ptrdiff_t width = roi.width, rows = roi.height;
    joinRows(width, rows, srcStep, channelCount * static_cast<ptrdiff_t>(sizeof(T)));
    IntegerBins channels[channelCount];
    for (int c = 0; c < channelCount; ++c) channels[c] = IntegerBins(spec, c, hist[c]);
    if constexpr (sizeof(T) == 2) {
        if (measureByDivision(channels, spec, src, srcStep, roi, channelCount * width, rows)) return kuvStatusOk;
    }
    Kuv32u* const counts = reinterpret_cast<Kuv32u*>(buffer);
    countValues<channelCount>(counts, src, srcStep, channelCount * width, rows);
    for (int c = 0; c < channelCount; ++c) sumBins<T>(counts + ptrdiff_t{c} * valueCount<T>, channels[c]);
    return kuvStatusOk;
}

// The same with the checks of pointers. The list of results may stand at any address.
template <int channelCount, class T>
KuvStatus measureEach(const T* src, Kuv32s srcStep, KuviSize roi, Kuv32u* const* hist, const KuviBinPlan* spec, Kuv8u* buffer) {
    if (anyNull(src, hist, spec, buffer)) return kuvStatusNullPtr;
    Kuv32u* each[channelCount];
    __builtin_memcpy(each, hist, sizeof(each));
    for (const Kuv32u* one : each) {
        if (anyNull(one)) return kuvStatusNullPtr;
    }
    return measure<channelCount>(src, srcStep, roi, each, spec, buffer);
}

void measureReals(const RealBins& channel, const KuviBinPlan* spec, const Kuv32f* src, ptrdiff_t step, ptrdiff_t width, ptrdiff_t rows) {
    const bool isEven = isUniform(spec) && channel.bins > 2;
    if (hasSingleRowRule && isEven && width == step >> 4) {
        width *= rows;
        rows = 1;
    }
    joinRows(width, rows, step, sizeof(Kuv32f));
    if constexpr (hasVectors) {
        const RealBins all[1] = {channel};
        BinCounts<1> counts(all);
        if (isEven) {
            const Kuv32f binWidth = loadSample(placeIn<Kuv32f>(spec, offsetof(HistogramHeader, steps)));
            const Estimate estimate(channel, binWidth);
            if (estimate.suits()) return counts.take(estimate, src, step, width, rows);
        }
        if (doRise(channel)) {
            if (channel.bins <= LevelCount::mostBins) counts.take(LevelCount(channel), src, step, width, rows);
            else counts.take(SteadySearch(channel), src, step, width, rows);
            return;
        }
    }
    if (channel.bins < mostScanned) searchSamples(Scan{}, channel, src, step, width, rows);
    else searchSamples(BinarySearch{}, channel, src, step, width, rows);
}

}  // namespace
}  // namespace kuv::KUV_VARIANT

#define KUV_HISTOGRAM_C1(name, T)                                                                                              \
    KuvStatus KUV_VARIANT_FUNCTION(name)(const T* src, Kuv32s srcStep, KuviSize roiSize, Kuv32u* hist, const KuviBinPlan* spec, \
                                         Kuv8u* buffer) {                                                                      \
        return kuv::KUV_VARIANT::measureEach<1>(src, srcStep, roiSize, &hist, spec, buffer);                                   \
    }
#define KUV_HISTOGRAM(name, T, channelCount)                                                                                   \
    KuvStatus KUV_VARIANT_FUNCTION(name)(const T* src, Kuv32s srcStep, KuviSize roiSize, Kuv32u* const hist[channelCount],     \
                                         const KuviBinPlan* spec, Kuv8u* buffer) {                                             \
        return kuv::KUV_VARIANT::measureEach<channelCount>(src, srcStep, roiSize, hist, spec, buffer);                         \
    }
KUV_HISTOGRAM_C1(kuviHistogram_8u_C1R, Kuv8u)
KUV_HISTOGRAM(kuviHistogram_8u_C3R, Kuv8u, 3)
KUV_HISTOGRAM(kuviHistogram_8u_C4R, Kuv8u, 4)
KUV_HISTOGRAM_C1(kuviHistogram_16u_C1R, Kuv16u)
KUV_HISTOGRAM(kuviHistogram_16u_C4R, Kuv16u, 4)
KUV_HISTOGRAM_C1(kuviHistogram_16s_C1R, Kuv16s)

KuvStatus KUV_VARIANT_FUNCTION(kuviHistogram_32f_C1R)(const Kuv32f* src, Kuv32s srcStep, KuviSize roiSize, Kuv32u* hist,
                                                      const KuviBinPlan* spec, Kuv8u*) {
    using namespace kuv::KUV_VARIANT;
    if (anyNull(src, hist, spec)) return kuvStatusNullPtr;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    if (static_cast<ptrdiff_t>(sizeof(Kuv32f)) * roiSize.width > srcStep) return kuvStatusBadStep;
    if (!isPlan(spec)) return kuvStatusBadArg;
    const RealBins channel(spec, 0, hist);
    if (channel.bins > 0) measureReals(channel, spec, src, srcStep, roiSize.width, roiSize.height);
    return kuvStatusOk;
}
