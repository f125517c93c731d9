// Between lane masks and bits: bit i of a word for lane i of a vector.
#pragma once

#include "simd/integer.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// One bit per lane of a mask (all ones or all zeros).
template <class T, int bytes>
KUV_INLINE Kuv32u bitsOf(Vector<T, bytes> mask) {
    static_assert(sizeof(T) <= 2);
    if constexpr (bytes == 16) {
        if constexpr (sizeof(T) == 1) return static_cast<Kuv32u>(_mm_movemask_epi8(mask.raw));
        return static_cast<Kuv32u>(_mm_movemask_epi8(_mm_packs_epi16(mask.raw, _mm_setzero_si128())));
    } else {
        KUV_AVX2(if constexpr (sizeof(T) == 1) return static_cast<Kuv32u>(_mm256_movemask_epi8(mask.raw));
                 const __m256i halves = _mm256_packs_epi16(mask.raw, _mm256_setzero_si256());
                 const auto bits = static_cast<Kuv32u>(_mm256_movemask_epi8(halves));
                 return (bits & 0xFF) | (bits >> 8 & 0xFF00);)
    }
}

// The mask whose bits these are; bits beyond the last lane are ignored.
template <class V>
KUV_INLINE V maskOf(Kuv32u bits) {
    constexpr int size = sizeof(typename V::Lane);
    static_assert(size <= 2);
    if constexpr (V::bytes == 16 && size == 1) {
        // Each of the two bytes to eight lanes.
        __m128i spread = _mm_cvtsi32_si128(static_cast<int>(bits));
        spread = _mm_unpacklo_epi8(spread, spread);
        spread = _mm_shufflelo_epi16(spread, 0x50);
        spread = _mm_shuffle_epi32(spread, 0x50);
        const __m128i lane = _mm_set1_epi64x(static_cast<Kuv64s>(0x8040201008040201));
        return {_mm_cmpeq_epi8(_mm_and_si128(spread, lane), lane)};
    } else if constexpr (V::bytes == 16) {
        const __m128i lane = _mm_setr_epi16(1, 2, 4, 8, 16, 32, 64, 128);
        return {_mm_cmpeq_epi16(_mm_and_si128(_mm_set1_epi16(static_cast<short>(bits)), lane), lane)};
    } else if constexpr (size == 1) {
        KUV_AVX2(const __m256i byte = _mm256_setr_epi64x(0, 0x0101010101010101, 0x0202020202020202, 0x0303030303030303);
                 const __m256i lane = _mm256_set1_epi64x(static_cast<Kuv64s>(0x8040201008040201));
                 const __m256i spread = _mm256_shuffle_epi8(_mm256_set1_epi32(static_cast<int>(bits)), byte);
                 return {_mm256_cmpeq_epi8(_mm256_and_si256(spread, lane), lane)};)
    } else {
        KUV_AVX2(const __m256i lane = _mm256_setr_epi16(1, 2, 4, 8, 16, 32, 64, 128, 256, 512, 1024, 2048, 4096, 8192, 16384,
                                                        static_cast<short>(32768));
                 const __m256i spread = _mm256_set1_epi16(static_cast<short>(bits));
                 return {_mm256_cmpeq_epi16(_mm256_and_si256(spread, lane), lane)};)
    }
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
