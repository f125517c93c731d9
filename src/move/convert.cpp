// Samples of another type, with their number kept, or with a range of numbers laid on that of 8 bits.
#include "core/checks.hpp"
#include "move/convert_kernels.hpp"
#include "simd/rounding.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// From which part of the largest cache on an image bypasses the caches. Many processors share that cache; but 8 bits to single
// precision, which grow most, are often computed on at once.
template <class Operation>
constexpr Kuv32s partsOfCache = 16;
template <>
constexpr Kuv32s partsOfCache<ToSingles<Kuv8u>> = 1;

template <class Operation, class S, class D>
KuvStatus convertRows(const Operation& operation, const S* src, ptrdiff_t srcStep, D* dst, ptrdiff_t dstStep, ptrdiff_t samples,
                      ptrdiff_t rows) {
    constexpr ptrdiff_t srcBytes = sizeof(S), dstBytes = sizeof(D);
    joinRows(samples, rows, {{srcStep, srcBytes}, {dstStep, dstBytes}});
    const bool streaming = hasVectors && bypassesCaches(rows, samples, srcBytes + dstBytes, samples * dstBytes, partsOfCache<Operation>);
    const auto convert = [&](auto byHalves) {
        for (ptrdiff_t row = 0; row < rows; ++row) {
            convertRow<byHalves.value>(operation, rowAt(src, srcStep, row), rowAt(dst, dstStep, row), samples, streaming);
        }
    };
    if (vectorBytes == 32 && samples * dstBytes > firstLevelBytes / rows) convert(std::true_type{});
    else convert(std::false_type{});
    if (streaming) streamFence();
    return kuvStatusOk;
}

template <int channels, class Operation, class S, class D>
KuvStatus convertImage(const Operation& operation, const S* src, Kuv32s srcStep, D* dst, Kuv32s dstStep, KuviSize roi) {
    if (anyNull(src, dst)) return kuvStatusNullPtr;
    if (emptyRoi(roi)) return kuvStatusBadSize;
    if (srcStep < 1 || dstStep < 1) return kuvStatusBadStep;
    return convertRows(operation, src, srcStep, dst, dstStep, ptrdiff_t{channels} * roi.width, roi.height);
}

// A NaN passes.
KUV_INLINE bool emptyRange(Kuv32f vMin, Kuv32f vMax) { return Kuv64f{vMax} - Kuv64f{vMin} <= 0.0; }

template <class Operation, class S, class D>
KuvStatus scaleImage(const S* src, Kuv32s srcStep, D* dst, Kuv32s dstStep, KuviSize roi, Kuv32f vMin, Kuv32f vMax) {
    if (emptyRange(vMin, vMax)) return kuvStatusEmptyRange;
    if (anyNull(src, dst)) return kuvStatusNullPtr;
    if (emptyRoi(roi)) return kuvStatusBadSize;
    if (srcStep < 1 || dstStep < 1) return kuvStatusBadStep;
    return convertRows(Operation(vMin, vMax), src, srcStep, dst, dstStep, ptrdiff_t{3} * roi.width, roi.height);
}

}  // namespace
}  // namespace kuv::KUV_VARIANT

#define KUV_CONVERT(name, S, D, channels, Operation)                                                                                  \
    KuvStatus KUV_VARIANT_FUNCTION(name)(const S* src, Kuv32s srcStep, D* dst, Kuv32s dstStep, KuviSize roiSize) {                    \
        using namespace kuv::KUV_VARIANT;                                                                                             \
        return convertImage<channels>(Operation{}, src, srcStep, dst, dstStep, roiSize);                                              \
    }
KUV_CONVERT(kuviConvert_8u32f_C1R, Kuv8u, Kuv32f, 1, ToSingles<Kuv8u>)
KUV_CONVERT(kuviConvert_16u32f_C1R, Kuv16u, Kuv32f, 1, ToSingles<Kuv16u>)
KUV_CONVERT(kuviConvert_16u8u_C1R, Kuv16u, Kuv8u, 1, WordsToBytes)
KUV_CONVERT(kuviConvert_16u8u_C3R, Kuv16u, Kuv8u, 3, WordsToBytes)

// Of all checks the width's comes first.
KuvStatus KUV_VARIANT_FUNCTION(kuviConvert_8u32f_C3R)(const Kuv8u* src, Kuv32s srcStep, Kuv32f* dst, Kuv32s dstStep, KuviSize roiSize) {
    using namespace kuv::KUV_VARIANT;
    if (roiSize.width < 1) return kuvStatusBadSize;
    return convertImage<3>(ToSingles<Kuv8u>{}, src, srcStep, dst, dstStep, roiSize);
}

KuvStatus KUV_VARIANT_FUNCTION(kuviConvert_32f8u_C3R)(const Kuv32f* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize,
                                                      Kuv32s roundMode) {
    using namespace kuv::KUV_VARIANT;
    if (roundMode == 0) return convertImage<3>(SinglesToBytes<Cut::towardZero>{}, src, srcStep, dst, dstStep, roiSize);
    if (roundMode == 1) {
        const RoundingScope scope(Rounding::nearest);
        return convertImage<3>(SinglesToBytes<Cut::nearestEven>{}, src, srcStep, dst, dstStep, roiSize);
    }
    const RoundingScope scope(Rounding::towardZero);
    return convertImage<3>(SinglesToBytes<Cut::nearestAway>{}, src, srcStep, dst, dstStep, roiSize);
}

KuvStatus KUV_VARIANT_FUNCTION(kuviScale_8u32f_C3R)(const Kuv8u* src, Kuv32s srcStep, Kuv32f* dst, Kuv32s dstStep, KuviSize roiSize,
                                                    Kuv32f vMin, Kuv32f vMax) {
    using namespace kuv::KUV_VARIANT;
    return scaleImage<BytesToRange>(src, srcStep, dst, dstStep, roiSize, vMin, vMax);
}

KuvStatus KUV_VARIANT_FUNCTION(kuviScale_32f8u_C3R)(const Kuv32f* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize,
                                                    Kuv32f vMin, Kuv32f vMax) {
    using namespace kuv::KUV_VARIANT;
    return scaleImage<RangeToBytes>(src, srcStep, dst, dstStep, roiSize, vMin, vMax);
}
