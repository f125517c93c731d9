// Rows of copies that change the layout of pixels or leave some of their samples alone.
//
// Vector loops take whole pixels and stop before the last one, whose samples behind the last colour need not be memory. What is
// left goes pixel by pixel.
#pragma once

#include "move/runs.hpp"
#include "simd/bytes.hpp"
#include "simd/interleave.hpp"
#include "simd/rows.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// Reads and writes blocks of `step` pixels, up to pixel `end`. The last block may lie on the one before. Blocks hold what they keep of
// the destination, so it is read first and written last: no read has to wait for a write. Gives the first pixel that is not done.
template <class Value, class Read, class Write>
KUV_INLINE ptrdiff_t overlappingBlocks(ptrdiff_t end, ptrdiff_t step, Read read, Write write) {
    if (end < step) return 0;
    Value last;
    read(end - step, last);
    for (ptrdiff_t i = 0; i < end - step; i += step) {
        Value value;
        read(i, value);
        write(i, value);
    }
    write(end - step, last);
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
    using Word = std::conditional_t<sizeof(T) == 1, Kuv32s, Kuv64s>;
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

// Three samples, or the first three of four, to four, the fourth kept.
template <int srcSamples, class T>
void copyKeepingAlpha(const T* src, T* dst, ptrdiff_t width) {
    using Shape = FourAndThree<T>;
    ptrdiff_t done = 0;
    if constexpr (hasVectors) {
        const ByteVector alpha = repeated(Shape::tables.alpha);
        [[maybe_unused]] const ByteVector toFour = repeated(Shape::tables.toFour);
        const auto read = [&](ptrdiff_t i, ByteVector& v) {
            const ByteVector kept = bitAnd(alpha, load<ByteVector>(bytesOf(dst + 4 * i)));
            const T* const from = src + srcSamples * i;
            if constexpr (srcSamples == 4) {
                v = bitOr(kept, bitAndNot(alpha, load<ByteVector>(bytesOf(from))));
            } else {
#ifdef __SSSE3__
                v = bitOr(kept, shuffleBytes(loadParts<ByteVector>(bytesOf(from), 12), toFour));
#else
                v = bitOr(kept, bitAndNot(alpha, loadWords<typename Shape::Word>(bytesOf(from), 3 * sizeof(T))));
#endif
            }
        };
        const auto write = [&](ptrdiff_t i, ByteVector v) { store(bytesOf(dst + 4 * i), v); };
        done = overlappingBlocks<ByteVector>(width - (srcSamples == 3 ? Shape::margin : 1), Shape::pixels, read, write);
    }
    copyPixels<3, srcSamples, 4>(src, dst, done, width);
}

// Four samples to three. Blocks write beyond their pixels; what comes after them writes there again.
template <class T>
void copyAC4C3(const T* src, T* dst, ptrdiff_t width) {
    using Shape = FourAndThree<T>;
    ptrdiff_t done = 0;
#ifdef __SSSE3__
    const ByteVector toThree = repeated(Shape::tables.toThree);
    constexpr ptrdiff_t pixel = 3 * sizeof(T), beyond = (vectorBytes - Shape::pixels * pixel + pixel - 1) / pixel;
    for (; done + Shape::pixels <= width - beyond; done += Shape::pixels) {
        store(bytesOf(dst + 3 * done), joinTwelves(shuffleBytes(load<ByteVector>(bytesOf(src + 4 * done)), toThree)));
    }
#else
    if constexpr (hasVectors) {
        using Word = typename Shape::Word;
        for (; done < width - 1; ++done) storeWord(dst + 3 * done, loadWord<Word>(src + 4 * done));
    }
#endif
    copyPixels<3, 4, 3>(src, dst, done, width);
}

// Of three vectors of pixels of three bytes: where within its 16 each first byte comes from, 0x80 for the others; and ones in these.
struct FirstOfThree {
    struct Tables {
        Kuv8u from[3][vectorBytes], others[3][vectorBytes];
    };
    static constexpr Tables tables = [] {
        Tables all{};
        for (int at = 0; at < 3 * vectorBytes; ++at) {
            const bool first = at % 3 == 0;
            all.from[at / vectorBytes][at % vectorBytes] = static_cast<Kuv8u>(first ? at / 3 % 16 : 0x80);
            all.others[at / vectorBytes][at % vectorBytes] = first ? 0 : 0xFF;
        }
        return all;
    }();
};

// One sample to the first of three.
KUV_INLINE void copyC1C3(const Kuv8u* src, Kuv8u* dst, ptrdiff_t width) {
    ptrdiff_t done = 0;
#ifdef __SSSE3__
    using Thirds = ByteVector[3];
    const auto read = [&](ptrdiff_t i, Thirds& thirds) {
        // The middle third's lower half comes from the first 16 samples, its upper half from the last 16.
        const Kuv8u* const from = src + i;
        const ByteVector samples[3] = {loadParts<ByteVector>(from, 0), load<ByteVector>(from),
                                       loadParts<ByteVector>(from + vectorBytes - 16, 0)};
#pragma GCC unroll 3
        for (int k = 0; k < 3; ++k) {
            const ByteVector all = load<ByteVector>(dst + 3 * i + vectorBytes * k);
            const ByteVector old = bitAnd(load<ByteVector>(FirstOfThree::tables.others[k]), all);
            thirds[k] = bitOr(old, shuffleBytes(samples[k], load<ByteVector>(FirstOfThree::tables.from[k])));
        }
    };
    const auto write = [&](ptrdiff_t i, const Thirds& thirds) {
#pragma GCC unroll 3
        for (int k = 0; k < 3; ++k) store(dst + 3 * i + vectorBytes * k, thirds[k]);
    };
    done = overlappingBlocks<Thirds>(width - 1, vectorBytes, read, write);
#else
    if constexpr (hasVectors) {
        // To spread bytes without a byte shuffle takes longer than to store them one by one.
        for (; done + 8 <= width; done += 8) {
            const Kuv64u samples = loadWord<Kuv64u>(src + done);
#pragma GCC unroll 8
            for (int k = 0; k < 8; ++k) dst[3 * (done + k)] = static_cast<Kuv8u>(samples >> (8 * k));
        }
    }
#endif
    copyPixels<1, 1, 3>(src, dst, done, width);
}

// Planes to pixels of as many samples.
template <int channels, class V>
KUV_INLINE void loadPlanes(const Kuv8u* const (&planes)[channels], ptrdiff_t i, V (&v)[channels]) {
#pragma GCC unroll 4
    for (int c = 0; c < channels; ++c) v[c] = load<V>(planes[c] + i);
}
template <int channels, class V>
KUV_INLINE void storePixels(Kuv8u* to, const V (&v)[channels]) {
    if constexpr (channels == 3) {
        storeInterleaved3(to, v[0], v[1], v[2]);
    } else {
        storeInterleaved4(to, v[0], v[1], v[2], v[3]);
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
        using Samples = ByteVector[channels];
        done = overlappingBlocks<Samples>(
            width, vectorBytes, [&](ptrdiff_t i, Samples& v) { loadPlanes(planes, i, v); },
            [&](ptrdiff_t i, const Samples& v) { storePixels(dst + channels * i, v); });
    }
    interleavePixels(planes, done, width, dst);
}

// Past the caches; false if no pixel begins on a vector's boundary. Rows have a vector of pixels at least. The caller closes with a fence.
template <int channels>
bool interleaveRowStreaming(const Kuv8u* const (&planes)[channels], Kuv8u* dst, ptrdiff_t width) {
    // Of four channels both halves of a register go to the same line, for which 16 bytes at a time do.
    using V = std::conditional_t<channels == 4, Vector<Kuv8u, 16>, ByteVector>;
    ptrdiff_t i = pixelsToAlignment<channels>(dst, V::bytes);
    if (offsetIn(dst + channels * i, V::bytes) != 0) return false;
    interleavePixels(planes, 0, i, dst);
    for (; i + V::bytes <= width; i += V::bytes) {
        alignas(V::bytes) Kuv8u block[channels * V::bytes];
        V v[channels];
        loadPlanes(planes, i, v);
        storePixels(block, v);
        for (int k = 0; k < channels; ++k) {
            stream(dst + channels * i + k * V::bytes, load<V>(block + k * V::bytes));
        }
    }
    interleavePixels(planes, i, width, dst);
    return true;
}

// Samples whose mask element is not 0.
template <class T>
void copyMasked(const T* src, T* dst, const Kuv8u* mask, ptrdiff_t width) {
    ptrdiff_t done = 0;
    if constexpr (hasVectors) {
        using V = Native<T>;
        const auto read = [&](ptrdiff_t i, V& v) {
            V marks;
            if constexpr (sizeof(T) == 1) {
                marks = load<V>(mask + i);
            } else {
                marks = loadWidened<V>(mask + i);
            }
            v = select(equal(marks, fill<V>(0)), load<V>(dst + i), load<V>(src + i));
        };
        done = overlappingBlocks<V>(width, V::lanes, read, [&](ptrdiff_t i, V v) { store(dst + i, v); });
    }
    for (ptrdiff_t i = done; i < width; ++i) {
        if (mask[i] != 0) storeSample(dst + i, loadSample(src + i));
    }
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
