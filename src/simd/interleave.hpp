// Planes to interleaved pixels.
#pragma once

#include "simd/bytes.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// Which byte of each 16 of a plane goes to each byte of the three output registers: pixel p, channel c of samples of sampleSize bytes
// stands at byte (3p + c) * sampleSize. 0x80 where another plane's byte goes. Twice the same, for registers of 32 bytes.
struct Interleave3Shuffles {
    unsigned char index[3][3][32];  // output, plane, byte
    unsigned char together[3][32];  // of a plane: each byte for the only output that has it at that place
};

template <int sampleSize>
constexpr Interleave3Shuffles interleave3Shuffles = [] {
    Interleave3Shuffles all{};
    for (int byte = 0; byte < 48; ++byte) {
        const int sample = byte / sampleSize;
        for (int at = byte % 16; at < 32; at += 16) {
            for (int plane = 0; plane < 3; ++plane) {
                const auto from = static_cast<unsigned char>(sample / 3 * sampleSize + byte % sampleSize);
                all.index[byte / 16][plane][at] = sample % 3 == plane ? from : 0x80;
                if (sample % 3 == plane) all.together[plane][at] = from;
            }
        }
    }
    return all;
}();

// A bit for each sample of an output register that comes from that plane.
constexpr int samplesOfPlane(int output, int plane, int samples) {
    int bits = 0;
    for (int i = 0; i < samples; ++i) bits |= ((samples * output + i) % 3 == plane) << i;
    return bits;
}

// Lanes of 32 bits where nothing blends them.
template <class T>
KUV_INLINE void interleave3OfFour(const Vector<T, 16> (&planes)[3], Vector<T, 16> (&out)[3]) {
    const auto lanes = [](__m128i v) { return _mm_castsi128_ps(v); };
    const __m128 a = lanes(planes[0].raw), b = lanes(planes[1].raw), c = lanes(planes[2].raw);
    const __m128 low = _mm_unpacklo_ps(a, b), high = _mm_unpackhi_ps(a, b);
    out[0].raw = _mm_castps_si128(_mm_shuffle_ps(low, _mm_shuffle_ps(c, a, 0x50), 0x84));
    out[1].raw = _mm_castps_si128(_mm_shuffle_ps(_mm_shuffle_ps(b, c, 0x55), high, 0x48));
    out[2].raw = _mm_castps_si128(_mm_shuffle_ps(_mm_shuffle_ps(c, a, 0xFA), _mm_shuffle_ps(b, c, 0xFF), 0x88));
}

#ifdef __SSSE3__
template <class V>
KUV_INLINE void interleave3(const V (&planes)[3], V (&out)[3]) {
    using Bytes = Vector<Kuv8u, V::bytes>;
    using T = typename V::Lane;
    constexpr auto& shuffles = interleave3Shuffles<sizeof(T)>;
    const auto shuffled = [&](int plane, const unsigned char (&order)[32]) {
        return as<T>(shuffleBytes(as<Kuv8u>(planes[plane]), load<Bytes>(order)));
    };
    if constexpr (sizeof(T) == 4 && !hasSSE41) {
        interleave3OfFour(planes, out);
    } else if constexpr (sizeof(T) > 1 && hasSSE41) {
        const V a = shuffled(0, shuffles.together[0]), b = shuffled(1, shuffles.together[1]), c = shuffled(2, shuffles.together[2]);
        const auto merged = [&](auto output) {
            constexpr int samples = 16 / sizeof(T);
            out[output] = blend<samplesOfPlane(output, 2, samples)>(blend<samplesOfPlane(output, 1, samples)>(a, b), c);
        };
        merged(std::integral_constant<int, 0>{});
        merged(std::integral_constant<int, 1>{});
        merged(std::integral_constant<int, 2>{});
    } else {
        for (int i = 0; i < 3; ++i) {
            const auto& index = shuffles.index[i];
            out[i] = bitOr(bitOr(shuffled(0, index[0]), shuffled(1, index[1])), shuffled(2, index[2]));
        }
    }
}
#else
// Without a byte shuffle: to pixels of three samples and a zero, then the gaps closed step by step.
template <class T>
KUV_INLINE void interleave3(const Vector<T, 16> (&planes)[3], Vector<T, 16> (&out)[3]) {
    if constexpr (sizeof(T) == 4) {
        interleave3OfFour(planes, out);
    } else {
        const __m128i a = planes[0].raw, b = planes[1].raw, c = planes[2].raw, zero = _mm_setzero_si128();
        __m128i quarter[4];  // the low 12 bytes of each: four pixels of bytes, or two of 16-bit samples
        if constexpr (sizeof(T) == 1) {
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
        out[0].raw = _mm_or_si128(quarter[0], _mm_slli_si128(quarter[1], 12));
        out[1].raw = _mm_or_si128(_mm_srli_si128(quarter[1], 4), _mm_slli_si128(quarter[2], 8));
        out[2].raw = _mm_or_si128(_mm_srli_si128(quarter[2], 8), _mm_slli_si128(quarter[3], 4));
    }
}
#endif

// Writes as many pixels a, b, c, a, b, c ... as a register has lanes.
template <class T, int bytes>
KUV_INLINE void storeInterleaved3(T* to, Vector<T, bytes> a, Vector<T, bytes> b, Vector<T, bytes> c) {
    Vector<T, bytes> out[3];
    interleave3({a, b, c}, out);
    storeParts3(reinterpret_cast<Kuv8u*>(to), as<Kuv8u>(out[0]), as<Kuv8u>(out[1]), as<Kuv8u>(out[2]));
}

// Writes as many pixels a, b, c, d, a, b, c, d ... as a register has bytes.
template <int bytes>
KUV_INLINE void storeInterleaved4(Kuv8u* to, Vector<Kuv8u, bytes> a, Vector<Kuv8u, bytes> b, Vector<Kuv8u, bytes> c,
                                  Vector<Kuv8u, bytes> d) {
    const auto abLow = as<Kuv16u>(interleaveLow(a, b)), abHigh = as<Kuv16u>(interleaveHigh(a, b));
    const auto cdLow = as<Kuv16u>(interleaveLow(c, d)), cdHigh = as<Kuv16u>(interleaveHigh(c, d));
    storePartsOf(to, {as<Kuv8u>(interleaveLow(abLow, cdLow)), as<Kuv8u>(interleaveHigh(abLow, cdLow)),
                      as<Kuv8u>(interleaveLow(abHigh, cdHigh)), as<Kuv8u>(interleaveHigh(abHigh, cdHigh))});
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
