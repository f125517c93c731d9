// Mirror images: checks, and what becomes of each row.
#include "core/checks.hpp"
#include "move/mirror_kernels.hpp"

namespace kuv::KUV_VARIANT {
namespace {

constexpr bool isDiagonal(Kuv32s axis) { return axis == kuvAxisDiagonal || axis == kuvAxisSecondDiagonal; }
constexpr bool isPlain(Kuv32s axis) { return axis == kuvAxisHorizontal || axis == kuvAxisVertical || axis == kuvAxisBoth; }

// About the horizontal axis rows are copied.
void copyRowsUpward(const Kuv8u* src, ptrdiff_t srcStep, Kuv8u* dst, ptrdiff_t dstStep, ptrdiff_t n, ptrdiff_t height) {
    const bool streaming = copyBypassesCaches(n, height), aligned = offsetIn(dst, vectorBytes) == 0 && dstStep % vectorBytes == 0;
    const bool large = n > firstLevelBytes / height, strings = copyByStrings(n, height);
    for (ptrdiff_t row = 0; row < height; ++row) {
        const Kuv8u* const from = rowAt(src, srcStep, row);
        Kuv8u* const to = rowAt(dst, dstStep, height - 1 - row);
        if (streaming) copyStreaming(to, from, n);
        else if (strings) copyString(to, from, n);
        else if (large && aligned) copyShort<true>(to, from, n);
        else if (aligned || n < leastAlignedRow) copyShort(to, from, n);
        else copyForward(to, from, n);
    }
    if (streaming) streamFence();
}

// Rows that share bytes are exchanged a sample after the other, so that all variants agree on what comes of it.
template <int channels, class T>
KUV_INLINE void exchangePair(T* upper, T* lower, ptrdiff_t width, Kuv32s axis, [[maybe_unused]] bool apart) {
    const ptrdiff_t samples = channels * width;
    if constexpr (hasVectors) {
        if (apart && axis == kuvAxisHorizontal) return exchangeRows(bytesOf(upper), bytesOf(lower), width * pixelBytes<T, channels>);
        if (apart) return exchangeRowsReversed<channels>(upper, lower + samples, width);
    }
    if (axis == kuvAxisHorizontal) return exchangeSamples(upper, lower, samples);
    exchangePixelsReversed<channels>(upper, lower + samples, width);
}

// The middle pixel of an odd width changes places with itself.
template <int channels, class T>
KUV_INLINE void reverseInPlace(T* row, ptrdiff_t width) {
    exchangeRowsReversed<channels>(row, row + channels * width, (width + 1) / 2);
}

template <int channels, class T>
KuvStatus mirrorInPlace(T* srcDst, ptrdiff_t step, KuviSize roi, Kuv32s axis) {
    if (anyNull(srcDst)) return kuvStatusNullPtr;
    if (emptyRoi(roi)) return kuvStatusBadSize;
    if (!isPlain(axis)) return kuvStatusBadAxis;
    const ptrdiff_t width = roi.width, height = roi.height;
    if (axis == kuvAxisVertical) {
        for (ptrdiff_t r = 0; r < height; ++r) reverseInPlace<channels>(rowAt(srcDst, step, r), width);
        return kuvStatusOk;
    }
    const bool apart = (step < 0 ? -step : step) >= width * pixelBytes<T, channels>;
    for (ptrdiff_t r = 0; r < height / 2; ++r) {
        exchangePair<channels>(rowAt(srcDst, step, r), rowAt(srcDst, step, height - 1 - r), width, axis, apart);
    }
    if (axis == kuvAxisBoth && height % 2 != 0) reverseInPlace<channels>(rowAt(srcDst, step, height / 2), width);
    return kuvStatusOk;
}

template <int channels, class T>
KuvStatus mirrorBetween(const T* src, ptrdiff_t srcStep, T* dst, ptrdiff_t dstStep, KuviSize roi, Kuv32s axis) {
    if (src == dst && srcStep == dstStep) return mirrorInPlace<channels>(dst, dstStep, roi, axis);
    if (anyNull(src, dst)) return kuvStatusNullPtr;
    if (emptyRoi(roi)) return kuvStatusBadSize;
    if (!isPlain(axis)) return kuvStatusBadAxis;
    const ptrdiff_t height = roi.height;
    if constexpr (hasVectors) {
        if (axis == kuvAxisHorizontal) {
            copyRowsUpward(bytesOf(src), srcStep, bytesOf(dst), dstStep, roi.width * pixelBytes<T, channels>, height);
            return kuvStatusOk;
        }
    }
    for (ptrdiff_t r = 0; r < height; ++r) {
        const T* const from = rowAt(src, srcStep, r);
        T* const to = rowAt(dst, dstStep, axis == kuvAxisVertical ? r : height - 1 - r);
        if (axis == kuvAxisHorizontal) {
            copySamples(to, from, channels * ptrdiff_t{roi.width});
        } else {
            reverseRow<channels>(from, to, roi.width);
        }
    }
    return kuvStatusOk;
}

// The ground that an image covers: rows a positive step apart, as the addresses of their first and last samples tell.
template <class T>
struct Footprint {
    Kuv64s first, step, span, rows;

    Footprint(const T* image, ptrdiff_t rowStep, ptrdiff_t width, ptrdiff_t height)
        : first(static_cast<Kuv64s>(reinterpret_cast<size_t>(image))), step(rowStep), span((width - 1) * static_cast<ptrdiff_t>(sizeof(T))),
          rows(height) {}

    // Of all rows that begin at or before the address, the last reaches furthest.
    bool holds(Kuv64s address) const {
        const Kuv64s offset = address - first;
        if (offset < 0) return false;
        const Kuv64s row = offset / step < rows ? offset / step : rows - 1;
        return offset - row * step <= span;
    }
    bool holdsCornerOf(const Footprint& other) const {
        const Kuv64s last = other.first + (other.rows - 1) * other.step;
        return holds(other.first) || holds(other.first + other.span) || holds(last) || holds(last + other.span);
    }
};

template <class T>
KuvStatus mirrorDiagonally(const T* src, ptrdiff_t srcStep, T* dst, ptrdiff_t dstStep, KuviSize roi, Kuv32s axis) {
    constexpr ptrdiff_t sampleBytes = sizeof(T);
    if (anyNull(src, dst)) return kuvStatusNullPtr;
    if (srcStep < 1 || dstStep < 1 || srcStep % sampleBytes != 0 || dstStep % sampleBytes != 0) return kuvStatusBadStep;
    if (emptyRoi(roi)) return kuvStatusBadSize;
    const Footprint<T> from(src, srcStep, roi.height, roi.width), to(dst, dstStep, roi.width, roi.height);
    if (from.holdsCornerOf(to) || to.holdsCornerOf(from)) return kuvStatusInternal;
    const bool second = axis == kuvAxisSecondDiagonal;
    T* const lastRow = rowAt(dst, dstStep, roi.height - 1);
    if constexpr (hasVectors) {
        // Rows of the destination that share bytes keep what is written last, so they are written in order.
        if (dstStep >= roi.width * sampleBytes) {
            // With both images upside down one diagonal is the other.
            const bool done = second ? transposeBlocks(rowAt(src, srcStep, roi.width - 1), -srcStep, lastRow, -dstStep, roi)
                                     : transposeBlocks(src, srcStep, dst, dstStep, roi);
            if (done) return kuvStatusOk;
        }
    }
    if (second) transposeSamples(src, srcStep, lastRow + roi.width - 1, -dstStep, -1, roi);
    else transposeSamples(src, srcStep, dst, dstStep, 1, roi);
    return kuvStatusOk;
}

template <class T>
KuvStatus mirrorSamples(const T* src, ptrdiff_t srcStep, T* dst, ptrdiff_t dstStep, KuviSize roi, Kuv32s axis) {
    if (isDiagonal(axis)) return mirrorDiagonally(src, srcStep, dst, dstStep, roi, axis);
    return mirrorBetween<1>(src, srcStep, dst, dstStep, roi, axis);
}

}  // namespace
}  // namespace kuv::KUV_VARIANT

#define KUV_MIRROR(name, T, mirror)                                                                                                   \
    KuvStatus KUV_VARIANT_FUNCTION(name)(const T* src, Kuv32s srcStep, T* dst, Kuv32s dstStep, KuviSize roiSize, Kuv32s axis) {       \
        return kuv::KUV_VARIANT::mirror(src, srcStep, dst, dstStep, roiSize, axis);                                                   \
    }
KUV_MIRROR(kuviMirror_8u_C1R, Kuv8u, mirrorSamples)
KUV_MIRROR(kuviMirror_8u_C3R, Kuv8u, mirrorBetween<3>)
KUV_MIRROR(kuviMirror_16u_C1R, Kuv16u, mirrorSamples)
KUV_MIRROR(kuviMirror_16u_C3R, Kuv16u, mirrorBetween<3>)

#define KUV_MIRROR_IN_PLACE(name, T, channels)                                                                                        \
    KuvStatus KUV_VARIANT_FUNCTION(name)(T* srcDst, Kuv32s srcDstStep, KuviSize roiSize, Kuv32s axis) {                               \
        return kuv::KUV_VARIANT::mirrorInPlace<channels>(srcDst, srcDstStep, roiSize, axis);                                          \
    }
KUV_MIRROR_IN_PLACE(kuviMirror_8u_C1IR, Kuv8u, 1)
KUV_MIRROR_IN_PLACE(kuviMirror_8u_C3IR, Kuv8u, 3)
KUV_MIRROR_IN_PLACE(kuviMirror_16u_C1IR, Kuv16u, 1)
KUV_MIRROR_IN_PLACE(kuviMirror_16u_C3IR, Kuv16u, 3)
