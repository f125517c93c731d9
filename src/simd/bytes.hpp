// Bytes moved within 16, and registers whose halves stand apart in memory.
#pragma once

#include "core/rows.hpp"
#include "simd/integer.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// Each 16 bytes of a register from a place `distance` bytes after that of the 16 before. With a distance of 0 they repeat.
template <class V>
KUV_INLINE V loadParts(const Kuv8u* from, [[maybe_unused]] ptrdiff_t distance) {
    const Vector<Kuv8u, 16> low = load<Vector<Kuv8u, 16>>(from);
    if constexpr (V::bytes == 16) {
        return low;
    } else {
        KUV_AVX2(const auto high = load<Vector<Kuv8u, 16>>(from + distance);
                 return {_mm256_inserti128_si256(_mm256_castsi128_si256(low.raw), high.raw, 1)};)
    }
}

// And each 16 bytes to such a place.
template <class V>
KUV_INLINE void storeParts(Kuv8u* to, [[maybe_unused]] ptrdiff_t distance, V v) {
    if constexpr (V::bytes == 16) {
        store(to, v);
    } else {
        KUV_AVX2(store<Vector<Kuv8u, 16>>(to, {_mm256_castsi256_si128(v.raw)});
                 store<Vector<Kuv8u, 16>>(to + distance, {_mm256_extracti128_si256(v.raw, 1)});)
    }
}

// Words of 4 or 8 bytes, each from a place `distance` bytes after that of the one before.
template <class Word>
KUV_INLINE Vector<Kuv8u, 16> loadWords(const Kuv8u* from, ptrdiff_t distance) {
    const auto word = [&](int k) __attribute__((always_inline)) { return loadSample(reinterpret_cast<const Word*>(from + k * distance)); };
    if constexpr (sizeof(Word) == 4) {
        return {_mm_setr_epi32(word(0), word(1), word(2), word(3))};
    } else {
        return {_mm_set_epi64x(word(1), word(0))};
    }
}

// Within each 16 bytes: lanes of one or two bytes in reverse.
template <class T, int bytes>
KUV_INLINE Vector<T, bytes> reverseLanes(Vector<T, bytes> v) {
    constexpr bool ofBytes = sizeof(T) == 1;
    static_assert(ofBytes || sizeof(T) == 2);
    constexpr Kuv64s order[2] = {ofBytes ? 0x08090A0B0C0D0E0F : 0x09080B0A0D0C0F0E, ofBytes ? 0x0001020304050607 : 0x0100030205040706};
    if constexpr (bytes == 32) {
        KUV_AVX2(return {_mm256_shuffle_epi8(v.raw, _mm256_setr_epi64x(order[0], order[1], order[0], order[1]))};)
    } else if constexpr (hasSSSE3) {
        return {_mm_shuffle_epi8(v.raw, _mm_set_epi64x(order[1], order[0]))};
    } else {
        const __m128i quarters = _mm_shuffle_epi32(v.raw, 0x4E);
        const __m128i words = _mm_shufflehi_epi16(_mm_shufflelo_epi16(quarters, 0x1B), 0x1B);
        if constexpr (!ofBytes) return {words};
        return {_mm_or_si128(_mm_slli_epi16(words, 8), _mm_srli_epi16(words, 8))};
    }
}

// Lanes of one or two bytes, the last one in memory first.
template <class V>
KUV_INLINE V loadReversed(const typename V::Lane* from) {
    const auto v = loadParts<Vector<Kuv8u, V::bytes>>(reinterpret_cast<const Kuv8u*>(from) + V::bytes - 16, -16);
    return reverseLanes(as<typename V::Lane>(v));
}

// Three registers one after the other: first the low 16 bytes of each, then the high ones.
KUV_INLINE void storeParts3(Kuv8u* to, Vector<Kuv8u, 16> a, Vector<Kuv8u, 16> b, Vector<Kuv8u, 16> c) {
    store(to, a);
    store(to + 16, b);
    store(to + 32, c);
}
KUV_AVX2(KUV_INLINE void storeParts3(Kuv8u* to, Vector<Kuv8u, 32> a, Vector<Kuv8u, 32> b, Vector<Kuv8u, 32> c) {
    store<Vector<Kuv8u, 32>>(to, {_mm256_permute2x128_si256(a.raw, b.raw, 0x20)});
    store<Vector<Kuv8u, 32>>(to + 32, {_mm256_permute2x128_si256(c.raw, a.raw, 0x30)});
    store<Vector<Kuv8u, 32>>(to + 64, {_mm256_permute2x128_si256(b.raw, c.raw, 0x31)});
})

// The same for an even number of them.
template <int count, int bytes>
KUV_INLINE void storePartsOf(Kuv8u* to, const Vector<Kuv8u, bytes> (&parts)[count]) {
    static_assert(count % 2 == 0);
    if constexpr (bytes == 16) {
#pragma GCC unroll 6
        for (int i = 0; i < count; ++i) store(to + 16 * i, parts[i]);
    } else {
#pragma GCC unroll 3
        for (int i = 0; i < count; i += 2) {
            KUV_AVX2(store<Vector<Kuv8u, 32>>(to + 16 * i, {_mm256_permute2x128_si256(parts[i].raw, parts[i + 1].raw, 0x20)});)
        }
#pragma GCC unroll 3
        for (int i = 0; i < count; i += 2) {
            KUV_AVX2(store<Vector<Kuv8u, 32>>(to + 16 * (count + i), {_mm256_permute2x128_si256(parts[i].raw, parts[i + 1].raw, 0x31)});)
        }
    }
}

// The first 12 of each 16 bytes one after the other, and after them the last 4 of each.
KUV_INLINE Vector<Kuv8u, 16> joinTwelves(Vector<Kuv8u, 16> v) { return v; }
KUV_AVX2(KUV_INLINE Vector<Kuv8u, 32> joinTwelves(Vector<Kuv8u, 32> v) {
    return {_mm256_permutevar8x32_epi32(v.raw, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7))};
})

// Lanes of 16 or 32 bits from as many narrower ones in memory.
template <class V, class T>
KUV_INLINE V loadWidened(const T* from) {
    using Lane = typename V::Lane;
    constexpr bool fromBytes = sizeof(T) == 1, toWords = sizeof(Lane) == 2, isSigned = std::is_signed_v<T>;
    static_assert(sizeof(Lane) > sizeof(T) && sizeof(Lane) <= 4 && (!isSigned || (!fromBytes && std::is_signed_v<Lane>)));
    [[maybe_unused]] const auto* const at = reinterpret_cast<const __m128i*>(from);
    if constexpr (V::bytes == 32) {
        KUV_AVX2(if constexpr (toWords) return {_mm256_cvtepu8_epi16(_mm_loadu_si128(at))};
                 else if constexpr (fromBytes) return {_mm256_cvtepu8_epi32(_mm_loadl_epi64(at))};
                 else if constexpr (isSigned) return {_mm256_cvtepi16_epi32(_mm_loadu_si128(at))};
                 else return {_mm256_cvtepu16_epi32(_mm_loadu_si128(at))};)
    } else if constexpr (fromBytes && !toWords) {
        const __m128i four = _mm_cvtsi32_si128(loadSample(reinterpret_cast<const Kuv32s*>(from)));
#ifdef __SSE4_1__
        return {_mm_cvtepu8_epi32(four)};
#else
        const __m128i zero = _mm_setzero_si128();
        return {_mm_unpacklo_epi16(_mm_unpacklo_epi8(four, zero), zero)};
#endif
    } else {
        const __m128i half = _mm_loadl_epi64(at), zero = _mm_setzero_si128();
        if constexpr (isSigned) return {_mm_srai_epi32(_mm_unpacklo_epi16(half, half), 16)};
        else return {fromBytes ? _mm_unpacklo_epi8(half, zero) : _mm_unpacklo_epi16(half, zero)};
    }
}

// The lanes of the lower and of the upper half of a register in turn.
template <int bytes>
KUV_INLINE Vector<Kuv16s, bytes> interleaveAcross(Vector<Kuv16s, bytes> v) {
    if constexpr (bytes == 16) {
        return interleaveHalves(v);
    } else {
        KUV_AVX2(return interleaveHalves(Vector<Kuv16s, bytes>{_mm256_permute4x64_epi64(v.raw, 0xD8)});)
    }
}

// Words of wider lanes, with signed saturation, in their order.
template <int bytes>
KUV_INLINE Vector<Kuv16s, bytes> narrowed(Vector<Kuv32s, bytes> a, Vector<Kuv32s, bytes> b) {
    const Vector<Kuv16s, bytes> packed = pack(a, b);
    if constexpr (bytes == 16) {
        return packed;
    } else {
        KUV_AVX2(return {_mm256_permute4x64_epi64(packed.raw, 0xD8)};)
    }
}

// Bytes of wider lanes, with unsigned saturation, in their order.
template <int bytes>
KUV_INLINE Vector<Kuv8u, bytes> narrowed(Vector<Kuv16s, bytes> a, Vector<Kuv16s, bytes> b) {
    const Vector<Kuv8u, bytes> packed = packUnsigned(a, b);
    if constexpr (bytes == 16) {
        return packed;
    } else {
        KUV_AVX2(return {_mm256_permute4x64_epi64(packed.raw, 0xD8)};)
    }
}
template <int bytes>
KUV_INLINE Vector<Kuv8u, bytes> narrowed(Vector<Kuv32s, bytes> a, Vector<Kuv32s, bytes> b, Vector<Kuv32s, bytes> c,
                                         Vector<Kuv32s, bytes> d) {
    const Vector<Kuv8u, bytes> packed = packUnsigned(pack(a, b), pack(c, d));
    if constexpr (bytes == 16) {
        return packed;
    } else {
        KUV_AVX2(return {_mm256_permutevar8x32_epi32(packed.raw, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7))};)
    }
}

#ifdef __SSSE3__
// Within each 16 bytes: v[index[i] & 15], or 0 where the index has its highest bit set.
KUV_INLINE Vector<Kuv8u, 16> shuffleBytes(Vector<Kuv8u, 16> v, Vector<Kuv8u, 16> index) {
    return {_mm_shuffle_epi8(v.raw, index.raw)};
}
KUV_AVX2(KUV_INLINE Vector<Kuv8u, 32> shuffleBytes(Vector<Kuv8u, 32> v, Vector<Kuv8u, 32> index) {
    return {_mm256_shuffle_epi8(v.raw, index.raw)};
})
#endif

}  // namespace
}  // namespace kuv::KUV_VARIANT
