// Integer operations on vectors: one instruction where the set has one, else the shortest known sequence.
#pragma once

#include "simd/vector.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// result = instruction(a, b) for lanes of one type, in both widths.
#define KUV_BINARY(operation, T, Result, instruction)                                         \
    KUV_INLINE Vector<Result, 16> operation(Vector<T, 16> a, Vector<T, 16> b) {               \
        return {_mm_##instruction(a.raw, b.raw)};                                             \
    }                                                                                         \
    KUV_AVX2(KUV_INLINE Vector<Result, 32> operation(Vector<T, 32> a, Vector<T, 32> b) {      \
        return {_mm256_##instruction(a.raw, b.raw)};                                          \
    })

// Wrapping sums and differences.
KUV_BINARY(add, Kuv8s, Kuv8s, add_epi8)
KUV_BINARY(add, Kuv16s, Kuv16s, add_epi16)
KUV_BINARY(add, Kuv32s, Kuv32s, add_epi32)
KUV_BINARY(add, Kuv64u, Kuv64u, add_epi64)
KUV_BINARY(sub, Kuv8s, Kuv8s, sub_epi8)
KUV_BINARY(sub, Kuv16s, Kuv16s, sub_epi16)
KUV_BINARY(sub, Kuv32s, Kuv32s, sub_epi32)

// Sums and differences that stop at the ends of the range.
KUV_BINARY(addSaturated, Kuv16s, Kuv16s, adds_epi16)
KUV_BINARY(subSaturated, Kuv16s, Kuv16s, subs_epi16)
KUV_BINARY(subSaturated, Kuv8u, Kuv8u, subs_epu8)
KUV_BINARY(subSaturated, Kuv16u, Kuv16u, subs_epu16)

// (a + b + 1) >> 1
KUV_BINARY(average, Kuv8u, Kuv8u, avg_epu8)
KUV_BINARY(average, Kuv16u, Kuv16u, avg_epu16)

// The lower and the upper halves of the products.
KUV_BINARY(multiplyLow, Kuv16s, Kuv16s, mullo_epi16)
KUV_BINARY(multiplyLow, Kuv16u, Kuv16u, mullo_epi16)
KUV_BINARY(multiplyHigh, Kuv16s, Kuv16s, mulhi_epi16)
KUV_BINARY(multiplyHigh, Kuv16u, Kuv16u, mulhi_epu16)

// Lane i of the result: a[2i] * b[2i] + a[2i + 1] * b[2i + 1].
KUV_BINARY(multiplyAddPairs, Kuv16s, Kuv32s, madd_epi16)

// Two words in turn, as such products take them.
template <class V>
KUV_INLINE V fillPairs(Kuv16s first, Kuv16s second) {
    const Kuv32u pair = static_cast<Kuv16u>(first) | static_cast<Kuv32u>(second) << 16;
    return as<Kuv16s>(fill<Vector<Kuv32s, V::bytes>>(static_cast<Kuv32s>(pair)));
}

// Comparisons give all ones or all zeros.
KUV_BINARY(equal, Kuv8u, Kuv8u, cmpeq_epi8)
KUV_BINARY(equal, Kuv8s, Kuv8s, cmpeq_epi8)
KUV_BINARY(equal, Kuv16u, Kuv16u, cmpeq_epi16)
KUV_BINARY(equal, Kuv16s, Kuv16s, cmpeq_epi16)
KUV_BINARY(greater, Kuv8s, Kuv8s, cmpgt_epi8)
KUV_BINARY(greater, Kuv16s, Kuv16s, cmpgt_epi16)
KUV_BINARY(greater, Kuv32s, Kuv32s, cmpgt_epi32)

// The lower (upper) halves of each 16 bytes of a and b, lane by lane in turn, a first.
KUV_BINARY(interleaveLow, Kuv8u, Kuv8u, unpacklo_epi8)
KUV_BINARY(interleaveLow, Kuv16u, Kuv16u, unpacklo_epi16)
KUV_BINARY(interleaveHigh, Kuv8u, Kuv8u, unpackhi_epi8)
KUV_BINARY(interleaveHigh, Kuv16u, Kuv16u, unpackhi_epi16)

// Lanes of half the width with signed saturation, each 16 bytes of a before the same of b.
KUV_BINARY(pack, Kuv16s, Kuv8s, packs_epi16)
KUV_BINARY(pack, Kuv32s, Kuv16s, packs_epi32)

// Extremes. Of other types they take SSE4.1: see below.
KUV_BINARY(minimum, Kuv8u, Kuv8u, min_epu8)
KUV_BINARY(maximum, Kuv8u, Kuv8u, max_epu8)
KUV_BINARY(minimum, Kuv16s, Kuv16s, min_epi16)
KUV_BINARY(maximum, Kuv16s, Kuv16s, max_epi16)

#undef KUV_BINARY

#define KUV_BITWISE(operation, instruction)                                                   \
    template <class T>                                                                        \
    KUV_INLINE Vector<T, 16> operation(Vector<T, 16> a, Vector<T, 16> b) {                    \
        return {_mm_##instruction##_si128(a.raw, b.raw)};                                     \
    }                                                                                         \
    KUV_AVX2(template <class T> KUV_INLINE Vector<T, 32> operation(Vector<T, 32> a, Vector<T, 32> b) { \
        return {_mm256_##instruction##_si256(a.raw, b.raw)};                                  \
    })

KUV_BITWISE(bitAnd, and)
KUV_BITWISE(bitOr, or)
KUV_BITWISE(bitXor, xor)
KUV_BITWISE(bitAndNot, andnot)  // ~a & b

#undef KUV_BITWISE

// Shifts by a constant. Right shifts of signed lanes keep the sign.
#define KUV_SHIFT(operation, T, instruction)                                                  \
    template <int count>                                                                      \
    KUV_INLINE Vector<T, 16> operation(Vector<T, 16> a) {                                     \
        return {_mm_##instruction(a.raw, count)};                                             \
    }                                                                                         \
    KUV_AVX2(template <int count> KUV_INLINE Vector<T, 32> operation(Vector<T, 32> a) {       \
        return {_mm256_##instruction(a.raw, count)};                                          \
    })

KUV_SHIFT(shiftLeft, Kuv16s, slli_epi16)
KUV_SHIFT(shiftLeft, Kuv32s, slli_epi32)
KUV_SHIFT(shiftLeft, Kuv64u, slli_epi64)
KUV_SHIFT(shiftRight, Kuv16s, srai_epi16)
KUV_SHIFT(shiftRight, Kuv32s, srai_epi32)
KUV_SHIFT(shiftRight, Kuv16u, srli_epi16)
KUV_SHIFT(shiftRight, Kuv32u, srli_epi32)
KUV_SHIFT(shiftRight, Kuv64u, srli_epi64)

#undef KUV_SHIFT

// The same by one count for all lanes, up to 31.
KUV_INLINE Vector<Kuv32s, 16> shiftRight(Vector<Kuv32s, 16> a, int count) {
    return {_mm_sra_epi32(a.raw, _mm_cvtsi32_si128(count))};
}
KUV_AVX2(KUV_INLINE Vector<Kuv32s, 32> shiftRight(Vector<Kuv32s, 32> a, int count) {
    return {_mm256_sra_epi32(a.raw, _mm_cvtsi32_si128(count))};
})

// Lane by lane mask ? a : b, for masks of all ones or all zeros.
template <class T, int bytes>
KUV_INLINE Vector<T, bytes> select(Vector<T, bytes> mask, Vector<T, bytes> a, Vector<T, bytes> b) {
    if constexpr (bytes == 32) {
        KUV_AVX2(return {_mm256_blendv_epi8(b.raw, a.raw, mask.raw)};)
    } else if constexpr (hasSSE41) {
        return {_mm_blendv_epi8(b.raw, a.raw, mask.raw)};
    } else {
        return bitOr(bitAnd(mask, a), bitAndNot(mask, b));
    }
}

// Without SSE4.1 they are made of a comparison or of the saturating difference.
#define KUV_EXTREME(operation, T, instruction, otherwise)                                     \
    KUV_INLINE Vector<T, 16> operation(Vector<T, 16> a, Vector<T, 16> b) {                    \
        if constexpr (hasSSE41) {                                                             \
            return {_mm_##instruction(a.raw, b.raw)};                                         \
        } else {                                                                              \
            return otherwise;                                                                 \
        }                                                                                     \
    }                                                                                         \
    KUV_AVX2(KUV_INLINE Vector<T, 32> operation(Vector<T, 32> a, Vector<T, 32> b) {           \
        return {_mm256_##instruction(a.raw, b.raw)};                                          \
    })

KUV_EXTREME(minimum, Kuv16u, min_epu16, as<Kuv16u>(sub(as<Kuv16s>(a), as<Kuv16s>(subSaturated(a, b)))))
KUV_EXTREME(maximum, Kuv16u, max_epu16, as<Kuv16u>(add(as<Kuv16s>(b), as<Kuv16s>(subSaturated(a, b)))))
KUV_EXTREME(minimum, Kuv32s, min_epi32, select(greater(a, b), b, a))
KUV_EXTREME(maximum, Kuv32s, max_epi32, select(greater(a, b), a, b))

#undef KUV_EXTREME

template <class T, int bytes>
KUV_INLINE Vector<T, bytes> absoluteDifference(Vector<T, bytes> a, Vector<T, bytes> b) {
    static_assert(std::is_unsigned_v<T>);
    return bitOr(subSaturated(a, b), subSaturated(b, a));
}
template <int bytes>
KUV_INLINE Vector<Kuv16u, bytes> absoluteDifference(Vector<Kuv16s, bytes> a, Vector<Kuv16s, bytes> b) {
    return as<Kuv16u>(sub(maximum(a, b), minimum(a, b)));
}

// Lane i of the result: a[2i] * b[2i] + a[2i + 1] * b[2i + 1] of unsigned and signed bytes; the sum must fit 16 bits.
template <int bytes>
KUV_INLINE Vector<Kuv16s, bytes> multiplyAddPairs(Vector<Kuv8u, bytes> a, Vector<Kuv8s, bytes> b) {
    if constexpr (bytes == 32) {
        KUV_AVX2(return {_mm256_maddubs_epi16(a.raw, b.raw)};)
    } else if constexpr (hasSSSE3) {
        return {_mm_maddubs_epi16(a.raw, b.raw)};
    } else {
        const auto low = multiplyLow(bitAnd(as<Kuv16s>(a), fill<Vector<Kuv16s, bytes>>(0xFF)),
                                     shiftRight<8>(shiftLeft<8>(as<Kuv16s>(b))));
        const auto high = multiplyLow(as<Kuv16s>(shiftRight<8>(as<Kuv16u>(a))), shiftRight<8>(as<Kuv16s>(b)));
        return add(low, high);
    }
}

// The sums of eight bytes each.
template <int bytes>
KUV_INLINE Vector<Kuv64u, bytes> sumsOfEight(Vector<Kuv8u, bytes> v) {
    if constexpr (bytes == 16) {
        return {_mm_sad_epu8(v.raw, _mm_setzero_si128())};
    } else {
        KUV_AVX2(return {_mm256_sad_epu8(v.raw, _mm256_setzero_si256())};)
    }
}

// The sums of two lanes each.
template <int bytes>
KUV_INLINE Vector<Kuv64u, bytes> sumsOfTwo(Vector<Kuv32u, bytes> v) {
    const auto low = as<Kuv64u>(bitAnd(v, as<Kuv32u>(fill<Vector<Kuv64u, bytes>>(0xFFFFFFFF))));
    return add(low, shiftRight<32>(as<Kuv64u>(v)));
}

// The products divided by 32768 and rounded, halves up.
template <int bytes>
KUV_INLINE Vector<Kuv16s, bytes> multiplyRounded(Vector<Kuv16s, bytes> a, Vector<Kuv16s, bytes> b) {
    if constexpr (bytes == 32) {
        KUV_AVX2(return {_mm256_mulhrs_epi16(a.raw, b.raw)};)
    } else if constexpr (hasSSSE3) {
        return {_mm_mulhrs_epi16(a.raw, b.raw)};
    } else {
        // Bits 16 and above of a product, twice, and its bits 14 and 15, halved and rounded.
        const auto high = multiplyHigh(a, b);
        const auto low = average(shiftRight<14>(as<Kuv16u>(multiplyLow(a, b))), Vector<Kuv16u, bytes>{_mm_setzero_si128()});
        return add(add(high, high), as<Kuv16s>(low));
    }
}

// The lower 32 bits of the products.
template <int bytes>
KUV_INLINE Vector<Kuv32s, bytes> multiplyLow(Vector<Kuv32s, bytes> a, Vector<Kuv32s, bytes> b) {
    if constexpr (bytes == 32) {
        KUV_AVX2(return {_mm256_mullo_epi32(a.raw, b.raw)};)
    } else if constexpr (hasSSE41) {
        return {_mm_mullo_epi32(a.raw, b.raw)};
    } else {
        const __m128i even = _mm_mul_epu32(a.raw, b.raw);
        const __m128i odd = _mm_mul_epu32(_mm_srli_epi64(a.raw, 32), _mm_srli_epi64(b.raw, 32));
        return {_mm_unpacklo_epi32(_mm_shuffle_epi32(even, 0x08), _mm_shuffle_epi32(odd, 0x08))};
    }
}

// Lanes of half the width with unsigned saturation, each 16 bytes of a before the same of b.
template <int bytes>
KUV_INLINE Vector<Kuv8u, bytes> packUnsigned(Vector<Kuv16s, bytes> a, Vector<Kuv16s, bytes> b) {
    if constexpr (bytes == 32) {
        KUV_AVX2(return {_mm256_packus_epi16(a.raw, b.raw)};)
    } else {
        return {_mm_packus_epi16(a.raw, b.raw)};
    }
}
template <int bytes>
KUV_INLINE Vector<Kuv16u, bytes> packUnsigned(Vector<Kuv32s, bytes> a, Vector<Kuv32s, bytes> b) {
    if constexpr (bytes == 32) {
        KUV_AVX2(return {_mm256_packus_epi32(a.raw, b.raw)};)
    } else if constexpr (hasSSE41) {
        return {_mm_packus_epi32(a.raw, b.raw)};
    } else {
        // Saturated as signed lanes less 32768; lanes below -2^31 + 32768 would wrap around.
        const auto less = [](Vector<Kuv32s, bytes> v) { return _mm_sub_epi32(v.raw, _mm_set1_epi32(32768)); };
        return {_mm_xor_si128(_mm_packs_epi32(less(a), less(b)), _mm_set1_epi16(-32768))};
    }
}

// Within each 16 bytes, the lanes of the lower and of the upper half in turn.
template <class T, int bytes>
KUV_INLINE Vector<T, bytes> interleaveHalves(Vector<T, bytes> v) {
    static_assert(sizeof(T) <= 2);
    constexpr Kuv64s order[2] = {sizeof(T) == 1 ? 0x0B030A0209010800 : 0x0B0A030209080100,
                                 sizeof(T) == 1 ? 0x0F070E060D050C04 : 0x0F0E07060D0C0504};
    if constexpr (bytes == 32) {
        KUV_AVX2(return {_mm256_shuffle_epi8(v.raw, _mm256_setr_epi64x(order[0], order[1], order[0], order[1]))};)
    } else if constexpr (hasSSSE3) {
        return {_mm_shuffle_epi8(v.raw, _mm_set_epi64x(order[1], order[0]))};
    } else {
        const __m128i upper = _mm_srli_si128(v.raw, 8);
        return {sizeof(T) == 1 ? _mm_unpacklo_epi8(v.raw, upper) : _mm_unpacklo_epi16(v.raw, upper)};
    }
}

// Within each 16 bytes: one lane in all places.
template <int lane>
KUV_INLINE Vector<Kuv32s, 16> fillFrom(Vector<Kuv32s, 16> v) { return {_mm_shuffle_epi32(v.raw, lane * 0x55)}; }
KUV_AVX2(template <int lane> KUV_INLINE Vector<Kuv32s, 32> fillFrom(Vector<Kuv32s, 32> v) {
    return {_mm256_shuffle_epi32(v.raw, lane * 0x55)};
})

// Within each half of each 16 bytes: the second and the third lane exchanged.
KUV_INLINE Vector<Kuv16s, 16> exchangeMiddle(Vector<Kuv16s, 16> v) {
    return {_mm_shufflehi_epi16(_mm_shufflelo_epi16(v.raw, 0xD8), 0xD8)};
}
KUV_AVX2(KUV_INLINE Vector<Kuv16s, 32> exchangeMiddle(Vector<Kuv16s, 32> v) {
    return {_mm256_shufflehi_epi16(_mm256_shufflelo_epi16(v.raw, 0xD8), 0xD8)};
})

// Of each 16 bytes the lower half, and the lanes of the upper one in reverse.
KUV_INLINE Vector<Kuv16s, 16> reverseUpperHalf(Vector<Kuv16s, 16> v) { return {_mm_shufflehi_epi16(v.raw, 0x1B)}; }
KUV_AVX2(KUV_INLINE Vector<Kuv16s, 32> reverseUpperHalf(Vector<Kuv16s, 32> v) { return {_mm256_shufflehi_epi16(v.raw, 0x1B)}; })

// Of each 16 bytes the lanes of b that have their bit in `chosen`, else those of a.
template <int chosen, class T, int bytes>
KUV_INLINE Vector<T, bytes> blend(Vector<T, bytes> a, Vector<T, bytes> b) {
    static_assert(sizeof(T) == 2 || sizeof(T) == 4);
    if constexpr (bytes == 32) {
        KUV_AVX2(if constexpr (sizeof(T) == 2) return {_mm256_blend_epi16(a.raw, b.raw, chosen)};
                 else return {_mm256_blend_epi32(a.raw, b.raw, chosen * 17)};)
    } else if constexpr (hasSSE41) {
        constexpr int pairs = (chosen & 1) * 3 + (chosen >> 1 & 1) * 12 + (chosen >> 2 & 1) * 48 + (chosen >> 3 & 1) * 192;
        return {_mm_blend_epi16(a.raw, b.raw, sizeof(T) == 2 ? chosen : pairs)};
    } else {
        const auto lane = [](int i) { return static_cast<short>(chosen >> (sizeof(T) == 2 ? i : i / 2) & 1 ? -1 : 0); };
        const Vector<T, bytes> mask = {_mm_setr_epi16(lane(0), lane(1), lane(2), lane(3), lane(4), lane(5), lane(6), lane(7))};
        return bitOr(bitAndNot(mask, a), bitAnd(mask, b));
    }
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
