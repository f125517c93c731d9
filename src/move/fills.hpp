// Fills of images. This is the only file of the folder that other families include.
#pragma once

#include "move/runs.hpp"

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

}  // namespace
}  // namespace kuv::KUV_VARIANT
