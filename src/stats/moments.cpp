// Sums, means and standard deviations.
#include "core/checks.hpp"
#include "stats/moments_kernels.hpp"

namespace kuv::KUV_VARIANT {
namespace {

constexpr Kuv32s accurate = 2;

constexpr Kuv64s countOf(KuviSize size) { return Kuv64s{size.width} * size.height; }

template <class Accumulator>
Kuv64f rowSums(const Kuv32f* src, Kuv32s srcStep, KuviSize roi) {
    Accumulator accumulator;
    reduce(accumulator, src, srcStep, roi.width, roi.height);
    return accumulator.total();
}

Kuv64f sumOf(const Kuv32f* src, Kuv32s srcStep, KuviSize roi, Kuv32s hint) {
    if constexpr (!hasVectors) return rowSums<WideSum<2>>(src, srcStep, roi);
    else return hint == accurate ? rowSums<WideSum<16>>(src, srcStep, roi) : rowSums<NarrowSum>(src, srcStep, roi);
}

struct MeanAndDeviation {
    Kuv64f mean, deviation;

    // Of the means of samples and of their squares.
    MeanAndDeviation(Kuv64f meanValue, Kuv64f meanSquare) : mean(meanValue) {
        deviation = squareRoot(__builtin_fabs(meanSquare - mean * mean));
    }
    void store(Kuv64f* meanTo, Kuv64f* deviationTo) const {
        if (meanTo != nullptr) storeSample(meanTo, mean);
        if (deviationTo != nullptr) storeSample(deviationTo, deviation);
    }
};

MeanAndDeviation measured(Moments moments, KuviSize roi) {
    const Kuv32u count = wrappedPixels(roi);
    if (count == 0) return {0, 0};
    return {static_cast<Kuv64f>(moments.sum) / count, static_cast<Kuv64f>(moments.squares) / count};
}

template <int channels>
MeanAndDeviation measureBytes(const Kuv8u* src, Kuv32s srcStep, KuviSize roi, ChannelBytes<channels> samples) {
    ByteMoments<channels> accumulator(samples);
    reduceAll<channels>(accumulator, src, srcStep, roi);
    return measured(accumulator.total(), roi);
}

// Where the deviation is small against the mean, the difference that it is the root of has lost digits.
MeanAndDeviation measureReals(const Kuv32f* src, Kuv32s srcStep, KuviSize roi) {
    const auto count = static_cast<Kuv64f>(countOf(roi));
    RealMoments moments;
    reduce(moments, src, srcStep, roi.width, roi.height);
    MeanAndDeviation result(moments.sums.total() / count, moments.squares.total() / count);
    if (result.deviation * result.deviation < 0.05 * result.mean * result.mean) {
        SquaredDistances distances(result.mean);
        reduce(distances, src, srcStep, roi.width, roi.height);
        result.deviation = squareRoot(distances.total() / count);
    }
    return result;
}

KuvStatus checkMeasured(const void* src, Kuv32s srcStep, KuviSize roi, Kuv64s pixelBytes) {
    if (anyNull(src)) return kuvStatusNullPtr;
    if (emptyRoi(roi)) return kuvStatusBadSize;
    if (pixelBytes * roi.width > srcStep) return kuvStatusBadStep;
    return kuvStatusOk;
}

}  // namespace
}  // namespace kuv::KUV_VARIANT

KuvStatus KUV_VARIANT_FUNCTION(kuviSum_32f_C1R)(const Kuv32f* src, Kuv32s srcStep, KuviSize roiSize, Kuv64f* sum, Kuv32s hint) {
    using namespace kuv::KUV_VARIANT;
    if (anyNull(src, sum)) return kuvStatusNullPtr;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    storeSample(sum, sumOf(src, srcStep, roiSize, hint));
    return kuvStatusOk;
}

KuvStatus KUV_VARIANT_FUNCTION(kuviMean_32f_C1R)(const Kuv32f* src, Kuv32s srcStep, KuviSize roiSize, Kuv64f* mean, Kuv32s hint) {
    using namespace kuv::KUV_VARIANT;
    if (anyNull(mean, src)) return kuvStatusNullPtr;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    storeSample(mean, sumOf(src, srcStep, roiSize, hint) / static_cast<Kuv32s>(wrappedPixels(roiSize)));
    return kuvStatusOk;
}

KuvStatus KUV_VARIANT_FUNCTION(kuviMean_16s_C1R)(const Kuv16s* src, Kuv32s srcStep, KuviSize roiSize, Kuv64f* mean) {
    using namespace kuv::KUV_VARIANT;
    if (anyNull(mean, src)) return kuvStatusNullPtr;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    SignedSum sum;
    reduceAll<1>(sum, src, srcStep, roiSize);
    storeSample(mean, static_cast<Kuv64f>(sum.total()) / static_cast<Kuv64f>(countOf(roiSize)));
    return kuvStatusOk;
}

KuvStatus KUV_VARIANT_FUNCTION(kuviMean_8u_C3R)(const Kuv8u* src, Kuv32s srcStep, KuviSize roiSize, Kuv64f mean[3]) {
    using namespace kuv::KUV_VARIANT;
    if (anyNull(mean, src)) return kuvStatusNullPtr;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    ChannelSums accumulator;
    reduceAll<3>(accumulator, src, srcStep, roiSize);
    Kuv64u sums[3];
    accumulator.totals(sums);
    const Kuv64f reciprocal = 1 / static_cast<Kuv64f>(countOf(roiSize));
    for (int c = 0; c < 3; ++c) storeSample(mean + c, static_cast<Kuv64f>(sums[c]) * reciprocal);
    return kuvStatusOk;
}

KuvStatus KUV_VARIANT_FUNCTION(kuviMean_StdDev_8u_C1R)(const Kuv8u* src, Kuv32s srcStep, KuviSize roiSize, Kuv64f* mean,
                                                       Kuv64f* stdDev) {
    using namespace kuv::KUV_VARIANT;
    if (const KuvStatus status = checkMeasured(src, srcStep, roiSize, 1); status != kuvStatusOk) return status;
    measureBytes<1>(src, srcStep, roiSize, {}).store(mean, stdDev);
    return kuvStatusOk;
}

KuvStatus KUV_VARIANT_FUNCTION(kuviMean_StdDev_8u_C3CR)(const Kuv8u* src, Kuv32s srcStep, KuviSize roiSize, Kuv32s coi, Kuv64f* mean,
                                                        Kuv64f* stdDev) {
    using namespace kuv::KUV_VARIANT;
    if (const KuvStatus status = checkMeasured(src, srcStep, roiSize, 3); status != kuvStatusOk) return status;
    if (coi < 1 || coi > 3) return kuvStatusBadChannelOfInterest;
    measureBytes<3>(src, srcStep, roiSize, ChannelBytes<3>(coi - 1)).store(mean, stdDev);
    return kuvStatusOk;
}

KuvStatus KUV_VARIANT_FUNCTION(kuviMean_StdDev_16u_C1R)(const Kuv16u* src, Kuv32s srcStep, KuviSize roiSize, Kuv64f* mean,
                                                        Kuv64f* stdDev) {
    using namespace kuv::KUV_VARIANT;
    if (const KuvStatus status = checkMeasured(src, srcStep, roiSize, 2); status != kuvStatusOk) return status;
    if (srcStep % 2 != 0) return kuvStatusStepNotMultiple;
    CentredMoments accumulator;
    reduceAll<1>(accumulator, src, srcStep, roiSize);
    measured(accumulator.total(static_cast<Kuv64u>(countOf(roiSize))), roiSize).store(mean, stdDev);
    return kuvStatusOk;
}

KuvStatus KUV_VARIANT_FUNCTION(kuviMean_StdDev_32f_C1R)(const Kuv32f* src, Kuv32s srcStep, KuviSize roiSize, Kuv64f* mean,
                                                        Kuv64f* stdDev) {
    using namespace kuv::KUV_VARIANT;
    if (const KuvStatus status = checkMeasured(src, srcStep, roiSize, 4); status != kuvStatusOk) return status;
    if (srcStep % 4 != 0) return kuvStatusStepNotMultiple;
    measureReals(src, srcStep, roiSize).store(mean, stdDev);
    return kuvStatusOk;
}
