// Plain copies, of images and of signals.
#include "core/checks.hpp"
#include "move/runs.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// The weaker variants stream whatever is large; from AVX2 on the size of the cache and the offsets of the images are looked at.
constexpr bool plansByCache = hasAVX2;

constexpr Kuv64s tooLarge = 0x80000000;

constexpr ptrdiff_t leastPlannedRun = 32768;
constexpr Kuv64s leastStreamedRun = 0x400000, leastStreamedUnasked = 0x100000;
// Less than this behind the source within a page, a destination is close.
constexpr ptrdiff_t closeOffset = 160;

KUV_INLINE ptrdiff_t offsetInPage(const Kuv8u* dst, const Kuv8u* src) { return offsetIn(dst, pageBytes) - offsetIn(src, pageBytes); }

void copyRun(Kuv8u* dst, const Kuv8u* src, ptrdiff_t n) {
    if (n < leastPlannedRun) return copyShort(dst, src, n);
    if constexpr (plansByCache) {
        if (n > leastStreamedRun && exceedsCache(n, 1, 2)) {
            copyStreaming(dst, src, n);
            return streamFence();
        }
        if (movesStringsFast()) return copyString(dst, src, n);
        const ptrdiff_t offset = offsetInPage(dst, src);
        if (offset >= 0 && offset < closeOffset) return copyBackward(dst, src, n);
    }
    copyForward(dst, src, n);
}

template <class CopyRow>
KUV_INLINE void copyRows(const Kuv8u* src, ptrdiff_t srcStep, Kuv8u* dst, ptrdiff_t dstStep, ptrdiff_t w, ptrdiff_t height,
                         CopyRow copyRow) {
    for (ptrdiff_t row = 0; row < height; ++row) copyRow(rowAt(dst, dstStep, row), rowAt(src, srcStep, row), w);
}

KUV_INLINE void copyRowsStreaming(const Kuv8u* src, ptrdiff_t srcStep, Kuv8u* dst, ptrdiff_t dstStep, ptrdiff_t w, ptrdiff_t height) {
    copyRows(src, srcStep, dst, dstStep, w, height, copyStreaming);
    streamFence();
}

// w: bytes of a row.
void copyPlanned(const Kuv8u* src, ptrdiff_t srcStep, Kuv8u* dst, ptrdiff_t dstStep, ptrdiff_t w, ptrdiff_t height) {
    const bool fits = w <= (tooLarge - 1) / height;
    if (!fits) return copyRowsStreaming(src, srcStep, dst, dstStep, w, height);
    const ptrdiff_t n = w * height;
    if (srcStep == w && dstStep == w) return copyRun(dst, src, n);
    if (w < leastAlignedRow) return copyRows(src, srcStep, dst, dstStep, w, height, copyShort<>);
    if (copyBypassesCaches(w, height)) return copyRowsStreaming(src, srcStep, dst, dstStep, w, height);
    if (copyByStrings(w, height)) return copyRows(src, srcStep, dst, dstStep, w, height, copyString);
    const bool aligned = offsetIn(dst, 32) == 0 && dstStep % 32 == 0 && w % 32 == 0;
    const ptrdiff_t offset = offsetInPage(dst, src);
    if (aligned && srcStep == dstStep && offset >= 0 && offset < closeOffset) {
        return copyRows(src, srcStep, dst, dstStep, w, height, copyBackward);
    }
    // On aligned rows the short copy's vectors are aligned ones.
    if (aligned) return copyRows(src, srcStep, dst, dstStep, w, height, copyShort<>);
    copyRows(src, srcStep, dst, dstStep, w, height, copyForward);
}

void copyUnasked(const Kuv8u* src, ptrdiff_t srcStep, Kuv8u* dst, ptrdiff_t dstStep, ptrdiff_t w, ptrdiff_t height) {
    const bool streaming = w > leastStreamedUnasked / height;
    joinRows(w, height, {{srcStep, 1}, {dstStep, 1}});
    if (streaming) return copyRowsStreaming(src, srcStep, dst, dstStep, w, height);
    copyRows(src, srcStep, dst, dstStep, w, height, copyForward);
}

template <int channels, class T>
KuvStatus copyImage(const T* src, Kuv32s srcStep, T* dst, Kuv32s dstStep, KuviSize roi) {
    if (anyNull(src, dst)) return kuvStatusNullPtr;
    if (emptyRoi(roi)) return kuvStatusBadSize;
    const ptrdiff_t samples = ptrdiff_t{channels} * roi.width, w = samples * static_cast<ptrdiff_t>(sizeof(T));
    if constexpr (!hasVectors) {
        for (ptrdiff_t row = 0; row < roi.height; ++row) copySamples(rowAt(dst, dstStep, row), rowAt(src, srcStep, row), samples);
    } else if constexpr (plansByCache) {
        copyPlanned(bytesOf(src), srcStep, bytesOf(dst), dstStep, w, roi.height);
    } else {
        copyUnasked(bytesOf(src), srcStep, bytesOf(dst), dstStep, w, roi.height);
    }
    return kuvStatusOk;
}

}  // namespace
}  // namespace kuv::KUV_VARIANT

#define KUV_COPY(name, T, channels)                                                                                                   \
    KuvStatus KUV_VARIANT_FUNCTION(name)(const T* src, Kuv32s srcStep, T* dst, Kuv32s dstStep, KuviSize roiSize) {                    \
        return kuv::KUV_VARIANT::copyImage<channels>(src, srcStep, dst, dstStep, roiSize);                                            \
    }
KUV_COPY(kuviCopy_8u_C1R, Kuv8u, 1)
KUV_COPY(kuviCopy_16u_C1R, Kuv16u, 1)
KUV_COPY(kuviCopy_16s_C1R, Kuv16s, 1)
KUV_COPY(kuviCopy_32s_C1R, Kuv32s, 1)
KUV_COPY(kuviCopy_8u_C3R, Kuv8u, 3)
KUV_COPY(kuviCopy_16u_C3R, Kuv16u, 3)
KUV_COPY(kuviCopy_8u_C4R, Kuv8u, 4)

// As integers: a register for floating point may make a signalling NaN quiet.
KuvStatus KUV_VARIANT_FUNCTION(kuviCopy_32f_C1R)(const Kuv32f* src, Kuv32s srcStep, Kuv32f* dst, Kuv32s dstStep, KuviSize roiSize) {
    return kuv::KUV_VARIANT::copyImage<1>(reinterpret_cast<const Kuv32s*>(src), srcStep, reinterpret_cast<Kuv32s*>(dst), dstStep, roiSize);
}

KuvStatus KUV_VARIANT_FUNCTION(kuvsCopy_8u)(const Kuv8u* src, Kuv8u* dst, Kuv32s len) {
    using namespace kuv::KUV_VARIANT;
    if (anyNull(src, dst)) return kuvStatusNullPtr;
    if (len < 1) return kuvStatusBadSize;
    if constexpr (hasVectors) {
        copyRun(dst, src, len);
    } else {
        copySamples(dst, src, len);
    }
    return kuvStatusOk;
}
