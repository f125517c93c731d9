// Rows of copies that change the layout of pixels or leave some of their samples alone.
//
// Vector loops take whole pixels and stop before the last one, whose samples behind the last colour need not be memory. What is
// left goes pixel by pixel.
#pragma once

#include "move/runs.hpp"
#include "simd/bytes.hpp"
#include "simd/interleave.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// Runs block(i) for blocks of `step` pixels, up to pixel `end`. The last block may lie on the one before; it comes first, so that its
// stores have reached the cache when the loop reads there. Gives the first pixel that is not done.
template <class Block>
KUV_INLINE ptrdiff_t overlappingBlocks(ptrdiff_t end, ptrdiff_t step, Block block) {
    if (end < step) return 0;
    block(end - step);
    for (ptrdiff_t i = 0; i < end - step; i += step) block(i);
    return end;
}

template <int colours, int srcSamples, int dstSamples, class T>
KUV_INLINE void copyPixels(const T* src, T* dst, ptrdiff_t first, ptrdiff_t end) {
    for (ptrdiff_t i = first; i < end; ++i) {
        T pixel[colours];
        for (int c = 0; c < colours; ++c) pixel[c] = loadSample(src + i * srcSamples + c);
        for (int c = 0; c < colours; ++c) storeSample(dst + i * dstSamples + c, pixel[c]);
    }
}

// Between 16 bytes of pixels of four samples and 12 bytes of pixels of three: from which byte each comes, 0x80 from none; and ones in
// the bytes of the fourth samples.
template <class T>
struct FourAndThree {
    struct Tables {
        Kuv8u toFour[16], toThree[16], alpha[16];
    };
    static constexpr Tables tables = [] {
        constexpr int three = 3 * sizeof(T), four = 4 * sizeof(T);
        Tables all{};
        for (int b = 0; b < 16; ++b) {
            const bool colour = b % four < three;
            all.alpha[b] = colour ? 0 : 0xFF;
            all.toFour[b] = static_cast<Kuv8u>(colour ? b / four * three + b % four : 0x80);
            all.toThree[b] = static_cast<Kuv8u>(b < 12 ? b / three * four + b % three : 0x80);
        }
        return all;
    }();
    static constexpr ptrdiff_t pixels = vectorBytes / (4 * static_cast<ptrdiff_t>(sizeof(T)));  // of a vector
    // 16 bytes of pixels of three hold more than the 12: so many pixels more must be there.
    static constexpr ptrdiff_t margin = sizeof(T) == 1 ? 2 : 1;

    // A pixel of four samples as a word.
    using Word = std::conditional_t<sizeof(T) == 1, Kuv32u, Kuv64u>;
    static constexpr Word colourBits = static_cast<Word>(~Word{0}) >> (8 * sizeof(T));
};

KUV_INLINE ByteVector repeated(const Kuv8u (&sixteen)[16]) { return loadParts<ByteVector>(sixteen, 0); }

template <class Word>
KUV_INLINE Word loadWord(const void* from) {
    return loadSample(static_cast<const Word*>(from));
}
template <class Word>
KUV_INLINE void storeWord(void* to, Word value) {
    storeSample(static_cast<Word*>(to), value);
}

// Four samples to four, the fourth kept.
template <class T>
void copyAC4(const T* src, T* dst, ptrdiff_t width) {
    ptrdiff_t done = 0;
    if constexpr (hasVectors) {
        const ByteVector alpha = repeated(FourAndThree<T>::tables.alpha);
        done = overlappingBlocks(width - 1, FourAndThree<T>::pixels, [&](ptrdiff_t i) {
            Kuv8u* const to = bytesOf(dst + 4 * i);
            store(to, select(alpha, load<ByteVector>(to), load<ByteVector>(bytesOf(src + 4 * i))));
        });
    }
    copyPixels<3, 4, 4>(src, dst, done, width);
}

// Three samples to four, the fourth kept.
template <class T>
void copyC3AC4(const T* src, T* dst, ptrdiff_t width) {
    using Shape = FourAndThree<T>;
    ptrdiff_t done = 0;
#ifdef __SSSE3__
    const ByteVector alpha = repeated(Shape::tables.alpha), toFour = repeated(Shape::tables.toFour);
    done = overlappingBlocks(width - Shape::margin, Shape::pixels, [&](ptrdiff_t i) {
        Kuv8u* const to = bytesOf(dst + 4 * i);
        store(to, bitOr(bitAnd(alpha, load<ByteVector>(to)), shuffleBytes(loadParts<ByteVector>(bytesOf(src + 3 * i), 12), toFour)));
    });
#else
    if constexpr (hasVectors) {
        using Word = typename Shape::Word;
        for (; done < width - 1; ++done) {
            const Word colours = loadWord<Word>(src + 3 * done) & Shape::colourBits;
            storeWord(dst + 4 * done, colours | (loadWord<Word>(dst + 4 * done) & static_cast<Word>(~Shape::colourBits)));
        }
    }
#endif
    copyPixels<3, 3, 4>(src, dst, done, width);
}

// Four samples to three. Blocks write beyond their pixels; what comes after them writes there again.
template <class T>
void copyAC4C3(const T* src, T* dst, ptrdiff_t width) {
    using Shape = FourAndThree<T>;
    ptrdiff_t done = 0;
#ifdef __SSSE3__
    const ByteVector toThree = repeated(Shape::tables.toThree);
    for (; done + Shape::pixels <= width - Shape::margin; done += Shape::pixels) {
        storeParts(bytesOf(dst + 3 * done), 12, shuffleBytes(load<ByteVector>(bytesOf(src + 4 * done)), toThree));
    }
#else
    if constexpr (hasVectors) {
        using Word = typename Shape::Word;
        for (; done < width - 1; ++done) storeWord(dst + 3 * done, loadWord<Word>(src + 4 * done));
    }
#endif
    copyPixels<3, 4, 3>(src, dst, done, width);
}

// One sample to the first of three.
KUV_INLINE void copyC1C3(const Kuv8u* src, Kuv8u* dst, ptrdiff_t width) {
    ptrdiff_t done = 0;
#ifdef __SSSE3__
    const auto& shuffles = Interleave3<1>::shuffles.index;
    const ByteVector index[3] = {repeated(shuffles[0][0]), repeated(shuffles[1][0]), repeated(shuffles[2][0])};
    const ByteVector other[3] = {signsOf(index[0]), signsOf(index[1]), signsOf(index[2])};
    done = overlappingBlocks(width - 1, vectorBytes, [&](ptrdiff_t i) {
        const ByteVector samples = load<ByteVector>(src + i);
#pragma GCC unroll 3
        for (int k = 0; k < 3; ++k) {
            Kuv8u* const to = dst + 3 * i + 16 * k;
            storeParts(to, 48, bitOr(bitAnd(other[k], loadParts<ByteVector>(to, 48)), shuffleBytes(samples, index[k])));
        }
    });
#endif
    copyPixels<1, 1, 3>(src, dst, done, width);
}

// Planes to pixels of as many samples.
template <int channels>
KUV_INLINE void interleave(const Kuv8u* const (&planes)[channels], ptrdiff_t i, Kuv8u* to) {
    ByteVector v[channels];
    for (int c = 0; c < channels; ++c) v[c] = load<ByteVector>(planes[c] + i);
    if constexpr (channels == 3) {
        storeInterleaved3(to, v[0], v[1], v[2]);
    } else {
        const auto low01 = as<Kuv16u>(interleaveLow(v[0], v[1])), high01 = as<Kuv16u>(interleaveHigh(v[0], v[1]));
        const auto low23 = as<Kuv16u>(interleaveLow(v[2], v[3])), high23 = as<Kuv16u>(interleaveHigh(v[2], v[3]));
        storeParts(to, 64, as<Kuv8u>(interleaveLow(low01, low23)));
        storeParts(to + 16, 64, as<Kuv8u>(interleaveHigh(low01, low23)));
        storeParts(to + 32, 64, as<Kuv8u>(interleaveLow(high01, high23)));
        storeParts(to + 48, 64, as<Kuv8u>(interleaveHigh(high01, high23)));
    }
}

template <int channels>
KUV_INLINE void interleavePixels(const Kuv8u* const (&planes)[channels], ptrdiff_t first, ptrdiff_t end, Kuv8u* dst) {
    for (ptrdiff_t i = first; i < end; ++i) {
        for (int c = 0; c < channels; ++c) dst[channels * i + c] = planes[c][i];
    }
}

template <int channels>
void interleaveRow(const Kuv8u* const (&planes)[channels], Kuv8u* dst, ptrdiff_t width) {
    ptrdiff_t done = 0;
    if constexpr (hasVectors) {
        done = overlappingBlocks(width, vectorBytes, [&](ptrdiff_t i) { interleave(planes, i, dst + channels * i); });
    }
    interleavePixels(planes, done, width, dst);
}

// Past the caches, where a pixel begins on a vector's boundary. The caller closes with a fence.
template <int channels>
void interleaveRowStreaming(const Kuv8u* const (&planes)[channels], Kuv8u* dst, ptrdiff_t width) {
    ptrdiff_t i = 0;
    while (i < width && i < vectorBytes && offsetIn(dst + channels * i, vectorBytes) != 0) ++i;
    interleavePixels(planes, 0, i, dst);
    if (offsetIn(dst + channels * i, vectorBytes) == 0) {
        for (; i + vectorBytes <= width; i += vectorBytes) {
            alignas(vectorBytes) Kuv8u block[channels * vectorBytes];
            interleave(planes, i, block);
            for (int k = 0; k < channels; ++k) {
                stream(dst + channels * i + k * vectorBytes, load<ByteVector>(block + k * vectorBytes));
            }
        }
    }
    interleavePixels(planes, i, width, dst);
}

// Samples whose mask element is not 0.
template <class T>
void copyMasked(const T* src, T* dst, const Kuv8u* mask, ptrdiff_t width) {
    ptrdiff_t done = 0;
    if constexpr (hasVectors) {
        using V = Native<T>;
        done = overlappingBlocks(width, V::lanes, [&](ptrdiff_t i) {
            V marks;
            if constexpr (sizeof(T) == 1) {
                marks = load<V>(mask + i);
            } else {
                marks = loadWidened<V>(mask + i);
            }
            store(dst + i, select(equal(marks, fill<V>(0)), load<V>(dst + i), load<V>(src + i)));
        });
    }
    for (ptrdiff_t i = done; i < width; ++i) {
        if (mask[i] != 0) storeSample(dst + i, loadSample(src + i));
    }
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
