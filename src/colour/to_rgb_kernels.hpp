// Rows of packed video and of grey samples to pixels R, G, B.
#pragma once

#include "core/integers.hpp"
#include "simd/interleave.hpp"
#include "simd/rows.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// Weights in fixed point with 16 fraction bits. `start` stands for luma's offset of 16 and for one half, which rounds.
constexpr Kuv32s lumaWeight = 76282, redCr = 104593, greenCb = -25689, greenCr = -53279, blueCb = 132184;
constexpr Kuv32s start = 32768 - 16 * lumaWeight;

// The sums of the chroma weights, with the 128 taken off each sample.
constexpr Kuv32s redStart = start - 128 * redCr, greenStart = start - 128 * (greenCb + greenCr), blueStart = start - 128 * blueCb;

KUV_INLINE Kuv8u integerPart(Kuv32s sum) {
    return static_cast<Kuv8u>(clamped(sum >> 16, 0, 255));
}

template <int pixels>
KUV_INLINE void exactPixels(Kuv32s cb, Kuv32s cr, const Kuv8u* luma, Kuv8u* dst) {
    const Kuv32s red = redCr * cr + redStart, green = greenCb * cb + greenCr * cr + greenStart, blue = blueCb * cb + blueStart;
#pragma GCC unroll 2
    for (int i = 0; i < pixels; ++i) {
        const Kuv32s y = lumaWeight * luma[2 * i];
        dst[3 * i] = integerPart(y + red);
        dst[3 * i + 1] = integerPart(y + green);
        dst[3 * i + 2] = integerPart(y + blue);
    }
}

// The same sums for eight pixels. A product by a weight is that by its lower 16 bits, taken as signed, and whole multiples of 65536.
KUV_INLINE void exactWords(Vector<Kuv8u, 16> packed, Vector<Kuv16s, 16>& red, Vector<Kuv16s, 16>& green, Vector<Kuv16s, 16>& blue) {
    using Words = Vector<Kuv16s, 16>;
    using Sums = Vector<Kuv32s, 16>;
    const auto weighted = [](Words pairs, Kuv32s first, Kuv32s second) {
        return multiplyAddPairs(pairs, fillPairs<Words>(static_cast<Kuv16s>(first), static_cast<Kuv16s>(second)));
    };
    const Words chroma = bitAnd(as<Kuv16s>(packed), fill<Words>(0xFF));               // Cb, Cr
    const Words luma = as<Kuv16s>(shiftRight<8>(as<Kuv16u>(packed)));                 // of the even and of the odd pixel
    const Sums second = fill<Sums>(-65536);
    const Sums cb = shiftLeft<16>(as<Kuv32s>(chroma)), cr = bitAnd(as<Kuv32s>(chroma), second);  // times 65536

    static_assert(lumaWeight >> 16 == 1 && (redCr + 0x8000) >> 16 == 2 && (blueCb + 0x8000) >> 16 == 2);
    static_assert((greenCb + 0x8000) >> 16 == 0 && (greenCr + 0x8000) >> 16 == -1);
    const Sums even = add(weighted(luma, lumaWeight, 0), shiftLeft<16>(as<Kuv32s>(luma)));
    const Sums odd = add(weighted(luma, 0, lumaWeight), bitAnd(as<Kuv32s>(luma), second));
    const auto words = [&](Sums colour, Kuv32s constant) {
        colour = add(colour, fill<Sums>(constant));
        const auto evens = as<Kuv16u>(shiftRight<16>(as<Kuv32u>(add(even, colour))));
        return as<Kuv16s>(blend<0xAA>(evens, as<Kuv16u>(add(odd, colour))));
    };
    red = words(add(weighted(chroma, 0, redCr), add(cr, cr)), redStart);
    green = words(sub(weighted(chroma, greenCb, greenCr), cr), greenStart);
    blue = words(add(weighted(chroma, blueCb, 0), add(cb, cb)), blueStart);
}

// 16 pixels, as the scalar formulae give them.
constexpr ptrdiff_t exactBlockPixels = 16;

KUV_INLINE void exactBlock(const Kuv8u* src, Kuv8u* dst) {
    Vector<Kuv16s, 16> red[2], green[2], blue[2];
#pragma GCC unroll 2
    for (int i = 0; i < 2; ++i) exactWords(load<Vector<Kuv8u, 16>>(src + 16 * i), red[i], green[i], blue[i]);
    storeInterleaved3(dst, packUnsigned(red[0], red[1]), packUnsigned(green[0], green[1]), packUnsigned(blue[0], blue[1]));
}

#ifdef __SSSE3__
// Of lower precision: 3 fraction bits. No sum leaves the range from -2216 to 4275. The two terms of a pair's chroma stand in two lanes
// and are added to luma as they stand and exchanged: `redBlue` gets R of even pixels and B of odd ones, `blueRed` the others.
template <int bytes>
KUV_INLINE void quickWords(Vector<Kuv8u, bytes> packed, Vector<Kuv16s, bytes>& redBlue, Vector<Kuv16s, bytes>& green,
                           Vector<Kuv16s, bytes>& blueRed) {
    using Bytes = Vector<Kuv8u, bytes>;
    using Words = Vector<Kuv16s, bytes>;
    const auto exchanged = [](Words v) {
        alignas(16) static constexpr Kuv8u order[16] = {2, 3, 0, 1, 6, 7, 4, 5, 10, 11, 8, 9, 14, 15, 12, 13};
        return as<Kuv16s>(shuffleBytes(as<Kuv8u>(v), loadParts<Bytes>(order, 0)));
    };
    // Samples and weights both negated: -128 is a signed byte, 128 is not.
    const Words luma = add(multiplyAddPairs(packed, as<Kuv8s>(fill<Words>(-128 * 256))), fill<Words>(16 << 7));
    const Words chroma = add(multiplyAddPairs(packed, as<Kuv8s>(fill<Words>(0x80))), fill<Words>(128 << 7));
    const Words y = multiplyHigh(luma, fill<Words>(-4769)), eighth = fill<Words>(4096);
    const Words terms = multiplyHigh(chroma, fillPairs<Words>(-8263, -6537)),
                greens = multiplyHigh(chroma, fillPairs<Words>(-1605, -3330));
    redBlue = multiplyRounded(add(y, exchanged(terms)), eighth);
    blueRed = multiplyRounded(add(y, terms), eighth);
    green = multiplyRounded(sub(y, add(greens, exchanged(greens))), eighth);
}

// Half a register of four pixels, and four bytes beyond them.
template <int bytes>
KUV_INLINE void storeFour(Kuv8u* to, Vector<Kuv8u, bytes> v, [[maybe_unused]] int half) {
    if constexpr (bytes == 16) {
        store(to, v);
    } else {
        KUV_AVX2(if (half == 0) _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm256_castsi256_si128(v.raw));
                 else _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm256_extracti128_si256(v.raw, 1));)
    }
}

// As many pixels as the registers have bytes. Writes four bytes beyond them unless it is the last block.
template <int bytes, bool last>
KUV_INLINE void quickBlock(const Kuv8u* src, Kuv8u* dst) {
    using Bytes = Vector<Kuv8u, bytes>;
    Vector<Kuv16s, bytes> redBlue[2], green[2], blueRed[2];
#pragma GCC unroll 2
    for (int i = 0; i < 2; ++i) quickWords(load<Bytes>(src + bytes * i), redBlue[i], green[i], blueRed[i]);
    const Bytes rb = packUnsigned(redBlue[0], redBlue[1]), g = packUnsigned(green[0], green[1]), br = packUnsigned(blueRed[0], blueRed[1]);
    // Double words R, G, B of even pixels and B, G, R of odd ones; of each 16 bytes of a source register, the first four and the others.
    const auto low0 = as<Kuv16u>(interleaveLow(rb, g)), low1 = as<Kuv16u>(interleaveHigh(rb, g));
    const auto high0 = as<Kuv16u>(interleaveLow(br, br)), high1 = as<Kuv16u>(interleaveHigh(br, br));
    alignas(16) static constexpr Kuv8u order[16] = {0, 1, 2, 6, 5, 4, 8, 9, 10, 14, 13, 12, 0x80, 0x80, 0x80, 0x80};
    const auto pixels = [](Vector<Kuv16u, bytes> four) { return shuffleBytes(as<Kuv8u>(four), loadParts<Bytes>(order, 0)); };
    const Bytes fours[2][2] = {{pixels(interleaveLow(low0, high0)), pixels(interleaveHigh(low0, high0))},
                               {pixels(interleaveLow(low1, high1)), pixels(interleaveHigh(low1, high1))}};
    constexpr int count = bytes / 4, halves = bytes / 16;
#pragma GCC unroll 8
    for (int i = 0; i < (last ? count - 1 : count); ++i) storeFour(dst + 12 * i, fours[i / 2 / halves][i % 2], i / 2 % halves);
    if constexpr (last) {
        Kuv8u end[16];
        storeFour(end, fours[1][1], halves - 1);
        __builtin_memcpy(dst + 3 * bytes - 12, end, 12);
    }
}

// The first pixels of a row, `width` of them, whole halves of blocks.
KUV_INLINE void quickPixels(const Kuv8u* src, Kuv8u* dst, ptrdiff_t width) {
    if (width >= vectorBytes) {
        const ptrdiff_t last = width - vectorBytes;
        for (ptrdiff_t i = 0; i < last; i += vectorBytes) quickBlock<vectorBytes, false>(src + 2 * i, dst + 3 * i);
        quickBlock<vectorBytes, true>(src + 2 * last, dst + 3 * last);
    } else if (width > 0) {
        if constexpr (vectorBytes == 32) {
            quickBlock<16, true>(src, dst);
        } else {
            Kuv8u from[32] = {}, to[48];
            __builtin_memcpy(from, src, 16);
            quickBlock<16, true>(from, to);
            __builtin_memcpy(dst, to, 24);
        }
    }
}
#endif

KUV_INLINE void videoRow(const Kuv8u* src, Kuv8u* dst, ptrdiff_t width) {
    const ptrdiff_t even = width & ~ptrdiff_t{1}, last = even - exactBlockPixels;
    ptrdiff_t done = 0;
#ifdef __SSSE3__
    // An exact block that covers what is left lies on others: they are written after it.
    const ptrdiff_t quick = width / (vectorBytes / 2) * (vectorBytes / 2);
    const bool coversRest = last >= 0 && quick < even;
    if (coversRest) exactBlock(src + 2 * last, dst + 3 * last);
    quickPixels(src, dst, quick);
    done = coversRest ? even : quick;
#else
    if constexpr (hasVectors) {
        if (last >= 0) {
            for (ptrdiff_t i = 0; i < last; i += exactBlockPixels) exactBlock(src + 2 * i, dst + 3 * i);
            exactBlock(src + 2 * last, dst + 3 * last);
            done = even;
        }
    }
#endif
    for (ptrdiff_t i = done; i < even; i += 2) exactPixels<2>(src[2 * i], src[2 * i + 2], src + 2 * i + 1, dst + 3 * i);
    if (even < width) {
        // The last Cr lies in the pair before. The two kinds of variants see differently that there is none.
        const Kuv8u* const pixel = src + 2 * even;
        const bool none = hasSSSE3 ? width / 2 == 1 : width == 1;
        exactPixels<1>(pixel[0], none ? pixel[0] : pixel[-2], pixel + 1, dst + 3 * even);
    }
}

// Each byte three times. By 16 bytes in all variants: stores of 32 bytes take longer once an image leaves the first-level cache.
#ifdef __SSSE3__
struct Threefold {
    struct Table {
        Kuv8u from[3][16];
    };
    static constexpr Table table = [] {
        Table all{};
        for (int at = 0; at < 48; ++at) all.from[at / 16][at % 16] = static_cast<Kuv8u>(at / 3);
        return all;
    }();
};

KUV_INLINE void tripled(Vector<Kuv8u, 16> v, Vector<Kuv8u, 16> (&thirds)[3]) {
#pragma GCC unroll 3
    for (int k = 0; k < 3; ++k) thirds[k] = shuffleBytes(v, load<Vector<Kuv8u, 16>>(Threefold::table.from[k]));
}
#else
// Words of v, picked by double words and then within each half.
template <int doubleWords, int low, int high>
KUV_INLINE __m128i pickWords(__m128i v) {
    return _mm_shufflehi_epi16(_mm_shufflelo_epi16(_mm_shuffle_epi32(v, doubleWords), low), high);
}

// Two bytes a, b become the words aa, ab, bb: the first and the third from bytes doubled, the second as it stands in v.
KUV_INLINE void tripled(Vector<Kuv8u, 16> all, Vector<Kuv8u, 16> (&thirds)[3]) {
    const __m128i v = all.raw, from4 = _mm_srli_si128(v, 4);
    const __m128i doubled[3] = {_mm_unpacklo_epi8(v, v), _mm_unpacklo_epi8(from4, from4), _mm_unpackhi_epi8(v, v)};
    const auto merge = [](__m128i single, __m128i kept, __m128i twice) {
        return Vector<Kuv8u, 16>{_mm_or_si128(_mm_and_si128(single, kept), _mm_andnot_si128(single, twice))};
    };
    thirds[0] = merge(_mm_setr_epi16(0, -1, 0, 0, -1, 0, 0, -1),
                      pickWords<_MM_SHUFFLE(1, 0, 0, 0), _MM_SHUFFLE(0, 0, 0, 0), _MM_SHUFFLE(2, 0, 0, 1)>(v),
                      pickWords<_MM_SHUFFLE(2, 1, 1, 0), _MM_SHUFFLE(2, 1, 0, 0), _MM_SHUFFLE(0, 2, 1, 0)>(doubled[0]));
    thirds[1] = merge(_mm_setr_epi16(0, 0, -1, 0, 0, -1, 0, 0),
                      pickWords<_MM_SHUFFLE(2, 2, 1, 1), _MM_SHUFFLE(0, 1, 0, 0), _MM_SHUFFLE(0, 0, 0, 0)>(v),
                      pickWords<_MM_SHUFFLE(3, 2, 1, 0), _MM_SHUFFLE(3, 0, 2, 1), _MM_SHUFFLE(2, 1, 0, 0)>(doubled[1]));
    thirds[2] = merge(_mm_setr_epi16(-1, 0, 0, -1, 0, 0, -1, 0),
                      pickWords<_MM_SHUFFLE(3, 3, 3, 2), _MM_SHUFFLE(2, 0, 0, 1), _MM_SHUFFLE(0, 1, 0, 0)>(v),
                      pickWords<_MM_SHUFFLE(3, 2, 2, 1), _MM_SHUFFLE(0, 2, 1, 0), _MM_SHUFFLE(3, 0, 2, 1)>(doubled[2]));
}
#endif

KUV_INLINE void greyRow(const Kuv8u* src, Kuv8u* dst, ptrdiff_t width) {
    constexpr ptrdiff_t block = 16;
    if constexpr (hasVectors) {
        if (width >= block) {
            const auto tripleAt = [=](ptrdiff_t i) {
                Vector<Kuv8u, 16> thirds[3];
                tripled(load<Vector<Kuv8u, 16>>(src + i), thirds);
                storeParts3(dst + 3 * i, thirds[0], thirds[1], thirds[2]);
            };
            // The first block and the last may lie on others.
            const ptrdiff_t last = width - block, first = pixelsToAlignment<3>(dst, block);
            if (first > 0) tripleAt(0);
            for (ptrdiff_t i = first; i < last; i += block) tripleAt(i);
            return tripleAt(last);
        }
    }
    ptrdiff_t done = 0;
    const auto pixels = [&](ptrdiff_t i, int count) {
#pragma GCC unroll 12
        for (int k = 0; k < 3 * count; ++k) dst[3 * i + k] = src[i + k / 3];
    };
    for (; done + 4 <= width; done += 4) pixels(done, 4);
    for (; done < width; ++done) pixels(done, 1);
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
