// Copies between layouts of pixels, copies of some samples of a pixel, and copies under a mask.
#include "core/checks.hpp"
#include "move/copy_layout_kernels.hpp"
#include "simd/rows.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// Rows of fewer pixels stay in the caches.
constexpr Kuv32s leastStreamed = 512;

template <class T, class CopyRow>
KUV_INLINE KuvStatus copyLayout(const T* src, Kuv32s srcStep, T* dst, Kuv32s dstStep, KuviSize roi, CopyRow copyRow) {
    if (anyNull(src, dst)) return kuvStatusNullPtr;
    if (emptyRoi(roi)) return kuvStatusBadSize;
    for (ptrdiff_t row = 0; row < roi.height; ++row) copyRow(rowAt(src, srcStep, row), rowAt(dst, dstStep, row), roi.width);
    return kuvStatusOk;
}

template <int channels>
KuvStatus copyPlanes(const Kuv8u* const* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roi) {
    if (anyNull(src, dst)) return kuvStatusNullPtr;
    const Kuv8u* first[channels];
    for (int c = 0; c < channels; ++c) {
        first[c] = src[c];
        if (anyNull(first[c])) return kuvStatusNullPtr;
    }
    if (emptyRoi(roi)) return kuvStatusBadSize;
    ptrdiff_t width = roi.width, height = roi.height;
    joinRows(width, height, {{srcStep, 1}, {dstStep, channels}});
    const bool streaming = hasVectors && width >= leastStreamed && bypassesCaches(height, width, 2 * channels, channels * width, 32);
    for (ptrdiff_t row = 0; row < height; ++row) {
        const Kuv8u* planes[channels];
        for (int c = 0; c < channels; ++c) planes[c] = rowAt(first[c], srcStep, row);
        Kuv8u* const to = rowAt(dst, dstStep, row);
        if (!streaming || !interleaveRowStreaming<channels>(planes, to, width)) interleaveRow<channels>(planes, to, width);
    }
    if (streaming) streamFence();
    return kuvStatusOk;
}

template <class T>
KuvStatus copyUnderMask(const T* src, Kuv32s srcStep, T* dst, Kuv32s dstStep, KuviSize roi, const Kuv8u* mask, Kuv32s maskStep) {
    if (anyNull(src, dst, mask)) return kuvStatusNullPtr;
    if (emptyRoi(roi)) return kuvStatusBadSize;
    ptrdiff_t width = roi.width, height = roi.height;
    joinRows(width, height, {{srcStep, sizeof(T)}, {dstStep, sizeof(T)}, {maskStep, 1}});
    for (ptrdiff_t row = 0; row < height; ++row) {
        copyMasked(rowAt(src, srcStep, row), rowAt(dst, dstStep, row), rowAt(mask, maskStep, row), width);
    }
    return kuvStatusOk;
}

}  // namespace
}  // namespace kuv::KUV_VARIANT

#define KUV_COPY_LAYOUT(name, T, ...)                                                                                                 \
    KuvStatus KUV_VARIANT_FUNCTION(name)(const T* src, Kuv32s srcStep, T* dst, Kuv32s dstStep, KuviSize roiSize) {                    \
        using namespace kuv::KUV_VARIANT;                                                                                             \
        return copyLayout(src, srcStep, dst, dstStep, roiSize, __VA_ARGS__);                                                          \
    }
KUV_COPY_LAYOUT(kuviCopy_8u_AC4R, Kuv8u, copyKeepingAlpha<4, Kuv8u>)
KUV_COPY_LAYOUT(kuviCopy_16u_AC4R, Kuv16u, copyKeepingAlpha<4, Kuv16u>)
KUV_COPY_LAYOUT(kuviCopy_8u_C3AC4R, Kuv8u, copyKeepingAlpha<3, Kuv8u>)
KUV_COPY_LAYOUT(kuviCopy_16u_C3AC4R, Kuv16u, copyKeepingAlpha<3, Kuv16u>)
KUV_COPY_LAYOUT(kuviCopy_8u_AC4C3R, Kuv8u, copyAC4C3<Kuv8u>)
KUV_COPY_LAYOUT(kuviCopy_16u_AC4C3R, Kuv16u, copyAC4C3<Kuv16u>)
KUV_COPY_LAYOUT(kuviCopy_8u_C1C3R, Kuv8u, copyC1C3)

KuvStatus KUV_VARIANT_FUNCTION(kuviCopy_8u_P3C3R)(const Kuv8u* const src[3], Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize) {
    return kuv::KUV_VARIANT::copyPlanes<3>(src, srcStep, dst, dstStep, roiSize);
}

KuvStatus KUV_VARIANT_FUNCTION(kuviCopy_8u_P4C4R)(const Kuv8u* const src[4], Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize) {
    return kuv::KUV_VARIANT::copyPlanes<4>(src, srcStep, dst, dstStep, roiSize);
}

KuvStatus KUV_VARIANT_FUNCTION(kuviCopy_8u_C1MR)(const Kuv8u* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize,
                                                 const Kuv8u* mask, Kuv32s maskStep) {
    return kuv::KUV_VARIANT::copyUnderMask(src, srcStep, dst, dstStep, roiSize, mask, maskStep);
}

KuvStatus KUV_VARIANT_FUNCTION(kuviCopy_16u_C1MR)(const Kuv16u* src, Kuv32s srcStep, Kuv16u* dst, Kuv32s dstStep, KuviSize roiSize,
                                                  const Kuv8u* mask, Kuv32s maskStep) {
    return kuv::KUV_VARIANT::copyUnderMask(src, srcStep, dst, dstStep, roiSize, mask, maskStep);
}
