// Planes to interleaved pixels.
#pragma once

#include "simd/bytes.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// Which byte of a plane's 16 goes to each byte of the three output registers: pixel p, channel c of samples of sampleSize bytes
// stands at byte (3p + c) * sampleSize. 0x80 where another plane's byte goes.
struct Interleave3Shuffles {
    unsigned char index[3][3][16];  // output, plane, byte
};

constexpr Interleave3Shuffles interleave3Shuffles(int sampleSize) {
    Interleave3Shuffles all{};
    for (int byte = 0; byte < 48; ++byte) {
        const int sample = byte / sampleSize;
        for (int plane = 0; plane < 3; ++plane) {
            const int from = sample / 3 * sampleSize + byte % sampleSize;
            all.index[byte / 16][plane][byte % 16] = static_cast<unsigned char>(sample % 3 == plane ? from : 0x80);
        }
    }
    return all;
}

template <int sampleSize>
struct Interleave3 {
    static constexpr Interleave3Shuffles shuffles = interleave3Shuffles(sampleSize);
};

#ifdef __SSSE3__
KUV_INLINE __m128i interleave3Part(int sampleSize, int output, __m128i a, __m128i b, __m128i c) {
    const auto& index = (sampleSize == 1 ? Interleave3<1>::shuffles : Interleave3<2>::shuffles).index[output];
    const auto shuffle = [](__m128i plane, const unsigned char* order) {
        return _mm_shuffle_epi8(plane, _mm_loadu_si128(reinterpret_cast<const __m128i*>(order)));
    };
    return _mm_or_si128(_mm_or_si128(shuffle(a, index[0]), shuffle(b, index[1])), shuffle(c, index[2]));
}
#else
// Without a byte shuffle: to pixels of three samples and a zero, then the gaps closed step by step.
KUV_INLINE void interleave3Registers(int sampleSize, __m128i a, __m128i b, __m128i c, __m128i out[3]) {
    const __m128i zero = _mm_setzero_si128();
    __m128i quarter[4];  // the low 12 bytes of each: four pixels of bytes, or two of 16-bit samples
    if (sampleSize == 1) {
        const __m128i ab[2] = {_mm_unpacklo_epi8(a, b), _mm_unpackhi_epi8(a, b)};
        const __m128i c0[2] = {_mm_unpacklo_epi8(c, zero), _mm_unpackhi_epi8(c, zero)};
        const __m128i first = _mm_set1_epi64x(0xFFFFFF), second = _mm_set1_epi64x(0xFFFFFF000000);
        for (int i = 0; i < 4; ++i) {
            const __m128i pixels = i % 2 == 0 ? _mm_unpacklo_epi16(ab[i / 2], c0[i / 2]) : _mm_unpackhi_epi16(ab[i / 2], c0[i / 2]);
            quarter[i] = _mm_or_si128(_mm_and_si128(pixels, first), _mm_and_si128(_mm_srli_epi64(pixels, 8), second));
        }
    } else {
        const __m128i ab[2] = {_mm_unpacklo_epi16(a, b), _mm_unpackhi_epi16(a, b)};
        const __m128i c0[2] = {_mm_unpacklo_epi16(c, zero), _mm_unpackhi_epi16(c, zero)};
        for (int i = 0; i < 4; ++i) {
            quarter[i] = i % 2 == 0 ? _mm_unpacklo_epi32(ab[i / 2], c0[i / 2]) : _mm_unpackhi_epi32(ab[i / 2], c0[i / 2]);
        }
    }
    const __m128i low = _mm_set_epi64x(0, 0xFFFFFFFFFFFF);
    for (__m128i& each : quarter) {
        each = _mm_or_si128(_mm_and_si128(each, low), _mm_srli_si128(_mm_andnot_si128(low, each), 2));
    }
    out[0] = _mm_or_si128(quarter[0], _mm_slli_si128(quarter[1], 12));
    out[1] = _mm_or_si128(_mm_srli_si128(quarter[1], 4), _mm_slli_si128(quarter[2], 8));
    out[2] = _mm_or_si128(_mm_srli_si128(quarter[2], 8), _mm_slli_si128(quarter[3], 4));
}
#endif

// Writes V::lanes pixels a, b, c, a, b, c ...
template <class T>
KUV_INLINE void storeInterleaved3(T* to, Vector<T, 16> a, Vector<T, 16> b, Vector<T, 16> c) {
    __m128i out[3];
#ifdef __SSSE3__
    for (int i = 0; i < 3; ++i) out[i] = interleave3Part(sizeof(T), i, a.raw, b.raw, c.raw);
#else
    interleave3Registers(sizeof(T), a.raw, b.raw, c.raw, out);
#endif
    storeParts3(reinterpret_cast<Kuv8u*>(to), Vector<Kuv8u, 16>{out[0]}, {out[1]}, {out[2]});
}

#ifdef __AVX2__
KUV_INLINE __m256i interleave3Part(int sampleSize, int output, __m256i a, __m256i b, __m256i c) {
    const auto& index = (sampleSize == 1 ? Interleave3<1>::shuffles : Interleave3<2>::shuffles).index[output];
    const auto shuffle = [](__m256i plane, const unsigned char* order) {
        const __m128i half = _mm_loadu_si128(reinterpret_cast<const __m128i*>(order));
        return _mm256_shuffle_epi8(plane, _mm256_broadcastsi128_si256(half));
    };
    return _mm256_or_si256(_mm256_or_si256(shuffle(a, index[0]), shuffle(b, index[1])), shuffle(c, index[2]));
}

template <class T>
KUV_INLINE void storeInterleaved3(T* to, Vector<T, 32> a, Vector<T, 32> b, Vector<T, 32> c) {
    // Each part holds its piece of the first 48 bytes in the lower half and of the second 48 bytes in the upper half.
    __m256i part[3];
    for (int i = 0; i < 3; ++i) part[i] = interleave3Part(sizeof(T), i, a.raw, b.raw, c.raw);
    storeParts3(reinterpret_cast<Kuv8u*>(to), Vector<Kuv8u, 32>{part[0]}, {part[1]}, {part[2]});
}
#endif

// Writes as many pixels a, b, c, d, a, b, c, d ... as a register has bytes.
template <int bytes>
KUV_INLINE void storeInterleaved4(Kuv8u* to, Vector<Kuv8u, bytes> a, Vector<Kuv8u, bytes> b, Vector<Kuv8u, bytes> c, Vector<Kuv8u, bytes> d) {
    const auto abLow = as<Kuv16u>(interleaveLow(a, b)), abHigh = as<Kuv16u>(interleaveHigh(a, b));
    const auto cdLow = as<Kuv16u>(interleaveLow(c, d)), cdHigh = as<Kuv16u>(interleaveHigh(c, d));
    storeParts4(to, as<Kuv8u>(interleaveLow(abLow, cdLow)), as<Kuv8u>(interleaveHigh(abLow, cdLow)),
                as<Kuv8u>(interleaveLow(abHigh, cdHigh)), as<Kuv8u>(interleaveHigh(abHigh, cdHigh)));
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
