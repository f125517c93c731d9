// Between masks and bits: bit i of a word for byte i of a vector.
#pragma once

#include "simd/integer.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// One bit per byte of a mask (all ones or all zeros).
template <int bytes>
KUV_INLINE Kuv32u bitsOf(Vector<Kuv8u, bytes> mask) {
    if constexpr (bytes == 16) {
        return static_cast<Kuv32u>(_mm_movemask_epi8(mask.raw));
    } else {
        KUV_AVX2(return static_cast<Kuv32u>(_mm256_movemask_epi8(mask.raw));)
    }
}

// The mask whose bits these are; bits beyond the last byte are ignored.
template <class V>
KUV_INLINE V maskOf(Kuv32u bits) {
    static_assert(sizeof(typename V::Lane) == 1);
    if constexpr (V::bytes == 16) {
        // Each of the two bytes to eight lanes.
        __m128i spread = _mm_cvtsi32_si128(static_cast<int>(bits));
        spread = _mm_unpacklo_epi8(spread, spread);
        spread = _mm_shufflelo_epi16(spread, 0x50);
        spread = _mm_shuffle_epi32(spread, 0x50);
        const __m128i lane = _mm_set1_epi64x(static_cast<Kuv64s>(0x8040201008040201));
        return {_mm_cmpeq_epi8(_mm_and_si128(spread, lane), lane)};
    } else {
        KUV_AVX2(const __m256i byte = _mm256_setr_epi64x(0, 0x0101010101010101, 0x0202020202020202, 0x0303030303030303);
                 const __m256i lane = _mm256_set1_epi64x(static_cast<Kuv64s>(0x8040201008040201));
                 const __m256i spread = _mm256_shuffle_epi8(_mm256_set1_epi32(static_cast<int>(bits)), byte);
                 return {_mm256_cmpeq_epi8(_mm256_and_si256(spread, lane), lane)};)
    }
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
