// Rows for columns.
#pragma once

#include "simd/bytes.hpp"
#include "simd/real.hpp"

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

// Four vectors' lanes as rows become columns, in each 16 bytes.
#define KUV_TRANSPOSE_FOURS(bytes, raw_t, prefix)                                                                              \
    KUV_INLINE void transposeFours(Vector<Kuv32f, bytes>* v) {                                                                 \
        const raw_t even = prefix##_unpacklo_ps(v[0].raw, v[2].raw), evenHigh = prefix##_unpackhi_ps(v[0].raw, v[2].raw);      \
        const raw_t odd = prefix##_unpacklo_ps(v[1].raw, v[3].raw), oddHigh = prefix##_unpackhi_ps(v[1].raw, v[3].raw);        \
        v[0].raw = prefix##_unpacklo_ps(even, odd);                                                                            \
        v[1].raw = prefix##_unpackhi_ps(even, odd);                                                                            \
        v[2].raw = prefix##_unpacklo_ps(evenHigh, oddHigh);                                                                    \
        v[3].raw = prefix##_unpackhi_ps(evenHigh, oddHigh);                                                                    \
    }
KUV_TRANSPOSE_FOURS(16, __m128, _mm)
KUV_AVX(KUV_TRANSPOSE_FOURS(32, __m256, _mm256))
#undef KUV_TRANSPOSE_FOURS

}  // namespace
}  // namespace kuv::KUV_VARIANT
