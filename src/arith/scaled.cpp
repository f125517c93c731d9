// Sums, differences and squares of 16-bit samples with a scale factor.
#include "arith/scaled.hpp"

#include "core/checks.hpp"
#include "move/fills.hpp"
#include "simd/rows.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// From one more on nothing is left.
constexpr Kuv32s mostPlaces = 16, mostPlacesOfSquares = 30;

// Gives `run` the operation that a scale factor up to `mostPlaces` asks for.
template <class Exact, class Run>
KUV_INLINE void withOperation(Kuv32s scaleFactor, Run run) {
    if (scaleFactor == 0) run(Unscaled<Exact>{});
    else if (scaleFactor < 0) run(ShiftedLeft<Exact>{LeftShift(scaleFactor)});
    else if (scaleFactor == 1) run(Halved<Exact>{});
    else run(ShiftedRight<Exact>(scaleFactor));
}

// dst[i] from a[i] and b[i].
template <class Exact>
void scaleImages(const Kuv16s* a, ptrdiff_t aStep, const Kuv16s* b, ptrdiff_t bStep, Kuv16s* dst, ptrdiff_t dstStep,
                 ptrdiff_t count, ptrdiff_t rows, Kuv32s scaleFactor) {
    if (scaleFactor > mostPlaces) return fillImage<Kuv16s>(0, dst, dstStep, count, rows);
    withOperation<Exact>(scaleFactor, [&](auto operation) __attribute__((always_inline)) {
        combine(operation, a, aStep, b, bStep, dst, dstStep, count, rows);
    });
}

template <class Exact, int channels>
void scaleConstant(const Kuv16s* value, Kuv16s* srcDst, ptrdiff_t step, KuviSize roi, Kuv32s scaleFactor) {
    ptrdiff_t width = roi.width, rows = roi.height;
    joinRows(width, rows, step, channels * sizeof(Kuv16s));
    if (scaleFactor > mostPlaces) return fillImage<Kuv16s>(0, srcDst, step, channels * width, rows);
    Kuv16s values[channels];
    for (int c = 0; c < channels; ++c) values[c] = loadSample(value + c);
    const Periodic constants(values);
    withOperation<Exact>(scaleFactor, [&](auto operation) __attribute__((always_inline)) {
        transformInPlace(operation, srcDst, step, channels * width, rows, constants);
    });
}

void scaleSquares(Kuv16s* srcDst, ptrdiff_t step, KuviSize roi, Kuv32s scaleFactor) {
    ptrdiff_t width = roi.width, rows = roi.height;
    joinRows(width, rows, step, sizeof(Kuv16s));
    const auto run = [&](auto operation) __attribute__((always_inline)) {
        transformInPlace(operation, srcDst, step, width, rows);
    };
    if (scaleFactor > mostPlacesOfSquares) fillImage<Kuv16s>(0, srcDst, step, width, rows);
    else if (scaleFactor == 0) run(SquareUnscaled{});
    else if (scaleFactor < -14) run(SquareSign{});
    else if (scaleFactor < 0) run(SquareShiftedLeft{LeftShift(scaleFactor)});
    else if (scaleFactor == 1) run(SquareHalved{});
    else if (scaleFactor <= 16) run(SquareShiftedRight(scaleFactor));
    else run(SquareShiftedFar(scaleFactor));
}

template <class Exact>
KuvStatus scaleTwoC1(const Kuv16s* src1, Kuv32s src1Step, const Kuv16s* src2, Kuv32s src2Step, Kuv16s* dst, Kuv32s dstStep,
                     KuviSize roiSize, Kuv32s scaleFactor) {
    if (anyNull(src1, src2, dst)) return kuvStatusNullPtr;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    scaleImages<Exact>(src2, src2Step, src1, src1Step, dst, dstStep, roiSize.width, roiSize.height, scaleFactor);
    return kuvStatusOk;
}

template <class Exact>
KuvStatus scaleConstantC1(Kuv16s value, Kuv16s* srcDst, Kuv32s srcDstStep, KuviSize roiSize, Kuv32s scaleFactor) {
    if (anyNull(srcDst)) return kuvStatusNullPtr;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    scaleConstant<Exact, 1>(&value, srcDst, srcDstStep, roiSize, scaleFactor);
    return kuvStatusOk;
}

}  // namespace
}  // namespace kuv::KUV_VARIANT

KuvStatus KUV_VARIANT_FUNCTION(kuviAdd_16s_C1RSfs)(const Kuv16s* src1, Kuv32s src1Step, const Kuv16s* src2, Kuv32s src2Step,
                                                   Kuv16s* dst, Kuv32s dstStep, KuviSize roiSize, Kuv32s scaleFactor) {
    using namespace kuv::KUV_VARIANT;
    return scaleTwoC1<Sum>(src1, src1Step, src2, src2Step, dst, dstStep, roiSize, scaleFactor);
}

KuvStatus KUV_VARIANT_FUNCTION(kuviSub_16s_C1RSfs)(const Kuv16s* src1, Kuv32s src1Step, const Kuv16s* src2, Kuv32s src2Step,
                                                   Kuv16s* dst, Kuv32s dstStep, KuviSize roiSize, Kuv32s scaleFactor) {
    using namespace kuv::KUV_VARIANT;
    return scaleTwoC1<Difference>(src1, src1Step, src2, src2Step, dst, dstStep, roiSize, scaleFactor);
}

KuvStatus KUV_VARIANT_FUNCTION(kuviSub_16s_C1IRSfs)(const Kuv16s* src, Kuv32s srcStep, Kuv16s* srcDst, Kuv32s srcDstStep,
                                                    KuviSize roiSize, Kuv32s scaleFactor) {
    using namespace kuv::KUV_VARIANT;
    return scaleTwoC1<Difference>(src, srcStep, srcDst, srcDstStep, srcDst, srcDstStep, roiSize, scaleFactor);
}

KuvStatus KUV_VARIANT_FUNCTION(kuviAdd_16s_C3IRSfs)(const Kuv16s* src, Kuv32s srcStep, Kuv16s* srcDst, Kuv32s srcDstStep,
                                                    KuviSize roiSize, Kuv32s scaleFactor) {
    using namespace kuv::KUV_VARIANT;
    if (roiSize.width < 1) return kuvStatusBadSize;
    if (anyNull(src, srcDst)) return kuvStatusNullPtr;
    if (roiSize.height < 1) return kuvStatusBadSize;
    const ptrdiff_t count = ptrdiff_t{3} * roiSize.width;
    scaleImages<Sum>(srcDst, srcDstStep, src, srcStep, srcDst, srcDstStep, count, roiSize.height, scaleFactor);
    return kuvStatusOk;
}

KuvStatus KUV_VARIANT_FUNCTION(kuviAddC_16s_C1IRSfs)(Kuv16s value, Kuv16s* srcDst, Kuv32s srcDstStep, KuviSize roiSize,
                                                     Kuv32s scaleFactor) {
    using namespace kuv::KUV_VARIANT;
    return scaleConstantC1<Sum>(value, srcDst, srcDstStep, roiSize, scaleFactor);
}

KuvStatus KUV_VARIANT_FUNCTION(kuviSubC_16s_C1IRSfs)(Kuv16s value, Kuv16s* srcDst, Kuv32s srcDstStep, KuviSize roiSize,
                                                     Kuv32s scaleFactor) {
    using namespace kuv::KUV_VARIANT;
    return scaleConstantC1<Difference>(value, srcDst, srcDstStep, roiSize, scaleFactor);
}

KuvStatus KUV_VARIANT_FUNCTION(kuviAddC_16s_C3IRSfs)(const Kuv16s value[3], Kuv16s* srcDst, Kuv32s srcDstStep, KuviSize roiSize,
                                                     Kuv32s scaleFactor) {
    using namespace kuv::KUV_VARIANT;
    if (anyNull(value, srcDst)) return kuvStatusNullPtr;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    scaleConstant<Sum, 3>(value, srcDst, srcDstStep, roiSize, scaleFactor);
    return kuvStatusOk;
}

KuvStatus KUV_VARIANT_FUNCTION(kuviSqr_16s_C1IRSfs)(Kuv16s* srcDst, Kuv32s srcDstStep, KuviSize roiSize, Kuv32s scaleFactor) {
    using namespace kuv::KUV_VARIANT;
    if (anyNull(srcDst)) return kuvStatusNullPtr;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    if (srcDstStep < 1) return kuvStatusBadStep;
    scaleSquares(srcDst, srcDstStep & ~1, roiSize, scaleFactor);
    return kuvStatusOk;
}
