// Rows for columns.
#pragma once

#include "simd/bytes.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// A block of as many columns as 16 bytes have samples, and of as many rows as V has lanes. Steps are in bytes.
template <class V, class T = typename V::Lane>
KUV_INLINE void transposeBlock(const T* src, ptrdiff_t srcStep, T* dst, ptrdiff_t dstStep) {
    constexpr int side = 16 / sizeof(T);
    V v[side];
#pragma GCC unroll 16
    for (int i = 0; i < side; ++i) {
        v[i] = as<T>(loadParts<Vector<Kuv8u, V::bytes>>(reinterpret_cast<const Kuv8u*>(rowAt(src, srcStep, i)), side * srcStep));
    }
    // Each time the number of a sample in the block, row and column one after the other, is rotated by a bit.
#pragma GCC unroll 4
    for (int distance = 1; distance < side; distance *= 2) {
        V interleaved[side];
#pragma GCC unroll 8
        for (int i = 0; i < side / 2; ++i) {
            interleaved[2 * i] = interleaveLow(v[i], v[i + side / 2]);
            interleaved[2 * i + 1] = interleaveHigh(v[i], v[i + side / 2]);
        }
#pragma GCC unroll 16
        for (int i = 0; i < side; ++i) v[i] = interleaved[i];
    }
#pragma GCC unroll 16
    for (int i = 0; i < side; ++i) store(rowAt(dst, dstStep, i), v[i]);
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
