// What filters work on: kernels, images, and a product added to a sum.
#pragma once

#include "simd/real.hpp"
#include "simd/rows.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// A kernel as it is kept: from its first coefficient downward in memory.
struct Kernel {
    const Kuv32f* first;
    ptrdiff_t width, height;

    KUV_INLINE const Kuv32f* at(ptrdiff_t row, ptrdiff_t column) const { return first - (row * width + column); }
};

// Source and destination, from their first pixels on. filter() takes as the source's what the kernel's first coefficient covers of the
// first sum.
struct Images {
    const Kuv32f* src;
    ptrdiff_t srcStep;
    Kuv32f* dst;
    ptrdiff_t dstStep;
    ptrdiff_t width, height;
    bool streaming;  // past the caches, where whole lines are written
};

// sum + a * b, of a single sample rounded as of all others.
template <int bytes>
KUV_INLINE Vector<Kuv32f, bytes> sumWithProduct(Vector<Kuv32f, bytes> sum, Vector<Kuv32f, bytes> a, Vector<Kuv32f, bytes> b) {
    return plusProduct(a, b, sum);
}
KUV_INLINE Kuv32f sumWithProduct(Kuv32f sum, Kuv32f a, Kuv32f b) {
#ifdef __FMA__
    return __builtin_fmaf(a, b, sum);
#else
    return sum + a * b;
#endif
}

// A part of a kernel that is summed up by itself.
struct Part {
    const Kuv32f* first;
    ptrdiff_t pitch;  // to the row above it
    ptrdiff_t rows, columns;
};

// For what the next row of blocks begins with: each page of it is new to the processor.
template <int rows>
KUV_INLINE void prefetchRows(const Kuv32f* first, ptrdiff_t step, ptrdiff_t samples) {
#pragma GCC unroll 8
    for (int r = 0; r < rows; ++r) prefetchRow(rowAt(first, step, r), samples);
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
