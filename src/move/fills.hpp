// Fills of images. This is the only file of the folder that other families include; copies they call as the exports' bodies,
// under the names that KUV_VARIANT_FUNCTION gives.
#pragma once

#include "core/checks.hpp"
#include "move/runs.hpp"
#include "simd/rows.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// All channels of an image are `width` samples; three times the width of an image may be more than 31 bits tell.
template <class T>
void fillImage(T value, T* dst, ptrdiff_t dstStep, ptrdiff_t width, ptrdiff_t height, bool streaming = false) {
    if constexpr (!hasVectors) {
        for (ptrdiff_t row = 0; row < height; ++row) {
            T* const to = rowAt(dst, dstStep, row);
            for (ptrdiff_t i = 0; i < width; ++i) storeSample(to + i, value);
        }
    } else {
        constexpr ptrdiff_t sampleBytes = sizeof(T);
        joinRows(width, height, dstStep, sampleBytes);
        const FillPattern<T> pattern(value);
        for (ptrdiff_t row = 0; row < height; ++row) {
            fillRun(bytesOf(rowAt(dst, dstStep, row)), width * sampleBytes, pattern, streaming);
        }
        if (streaming) streamFence();
    }
}

struct Masked {
    KUV_INLINE Kuv16u operator()(Kuv16u a, Kuv16u mask) const { return a & mask; }
    template <int bytes>
    KUV_INLINE Vector<Kuv16u, bytes> operator()(Vector<Kuv16u, bytes> a, Vector<Kuv16u, bytes> mask) const {
        return bitAnd(a, mask);
    }
};

// The three colour samples of each pixel set to 0. Vectors write alpha back as it was; what lies behind a row's last colour
// sample is not touched.
void clearColours(Kuv16u* dst, ptrdiff_t dstStep, ptrdiff_t width, ptrdiff_t height) {
    joinRows(width, height, dstStep, 4 * sizeof(Kuv16u));
    if constexpr (hasVectors) {
        transformInPlace(Masked{}, dst, dstStep, 4 * width - 1, height, Periodic<Kuv16u, 4>({0, 0, 0, 0xFFFF}));
    } else {
        for (ptrdiff_t row = 0; row < height; ++row) {
            Kuv16u* const to = rowAt(dst, dstStep, row);
            for (ptrdiff_t i = 0; i < width; ++i) {
                for (int c = 0; c < 3; ++c) storeSample<Kuv16u>(to + 4 * i + c, 0);
            }
        }
    }
}

KuvStatus clearSignal(Kuv16u* dst, Kuv32s len) {
    if (anyNull(dst)) return kuvStatusNullPtr;
    if (len < 1) return kuvStatusBadSize;
    fillImage<Kuv16u>(0, dst, 0, len, 1);
    return kuvStatusOk;
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
