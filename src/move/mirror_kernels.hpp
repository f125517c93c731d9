// Rows reversed and exchanged, and blocks transposed.
//
// Reversals move blocks of whole pixels. A block knows how to read its pixels, reversed, from the front or from the back end of what is
// still to be done, and how to write them to the other. The last block ends exactly where the pixels do and may lie on the one before.
#pragma once

#include "core/integers.hpp"
#include "move/runs.hpp"
#include "simd/bytes.hpp"
#include "simd/rows.hpp"
#include "simd/transpose.hpp"

namespace kuv::KUV_VARIANT {
namespace {

template <class T, int channels>
constexpr ptrdiff_t pixelBytes = channels * static_cast<ptrdiff_t>(sizeof(T));

// Pixels one by one, as the axes are defined.
template <int channels, class T>
void reversePixels(const T* src, T* dst, ptrdiff_t width) {
    const T* from = src + channels * (width - 1);
    for (; width > 0; --width, from -= channels, dst += channels) {
        for (int c = 0; c < channels; ++c) storeSample(dst + c, loadSample(from + c));
    }
}

template <class T>
KUV_INLINE void exchange(T* a, T* b) {
    const T kept = loadSample(a);
    storeSample(a, loadSample(b));
    storeSample(b, kept);
}

template <class T>
void exchangeSamples(T* a, T* b, ptrdiff_t count) {
    for (ptrdiff_t i = 0; i < count; ++i) exchange(a + i, b + i);
}

// Pixels from `front` on with those before `backEnd`.
template <int channels, class T>
void exchangePixelsReversed(T* front, T* backEnd, ptrdiff_t width) {
    T* back = backEnd - channels;
    for (; width > 0; --width, front += channels, back -= channels) {
        for (int c = 0; c < channels; ++c) exchange(front + c, back + c);
    }
}

// A row at a time from the source, down a column of the destination; columns are a sample apart, or `direction` ones.
template <class T>
void transposeSamples(const T* src, ptrdiff_t srcStep, T* dst, ptrdiff_t dstStep, ptrdiff_t direction, KuviSize dstSize) {
    for (ptrdiff_t r = 0; r < dstSize.width; ++r) {
        const T* const from = rowAt(src, srcStep, r);
        for (ptrdiff_t c = 0; c < dstSize.height; ++c) storeSample(rowAt(dst, dstStep, c) + direction * r, loadSample(from + c));
    }
}

// A register of samples that are pixels.
template <class V>
struct SampleBlock {
    using T = typename V::Lane;
    using Value = V;
    using Wide = void;
    static constexpr ptrdiff_t bytes = V::bytes, reach = bytes;

    static KUV_INLINE Value readFront(const Kuv8u* front) { return loadReversed<V>(reinterpret_cast<const T*>(front)); }
    static KUV_INLINE Value readBack(const Kuv8u* backEnd) { return readFront(backEnd - bytes); }
    static KUV_INLINE void writeFront(Kuv8u* front, Value v) { store(reinterpret_cast<T*>(front), v); }
    static KUV_INLINE void writeBack(Kuv8u* backEnd, Value v) { writeFront(backEnd - bytes, v); }
    static KUV_INLINE Value readExactly(const Kuv8u* from) { return readFront(from); }
    static KUV_INLINE void writeExactly(Kuv8u* to, Value v) { writeFront(to, v); }
};

// Pixels of three samples do not fill a register: reads and writes reach on by less than a pixel, towards what is still to be done. What
// is written there is meaningless and the next block lies on it.
#ifdef __SSSE3__
struct PixelShuffles {
    Kuv8u toBack[16];    // from pixels at the register's front to its back
    Kuv8u toFront[16];   // from its back to its front
    Kuv8u exactly[16];   // with the first and the last eight bytes of the pixels, as readExactly() gives them
};

constexpr PixelShuffles pixelShuffles(int pixel) {
    PixelShuffles all{};
    const int bytes = 16 / pixel * pixel, spare = 16 - bytes;
    for (int at = 0; at < 16; ++at) all.toBack[at] = all.toFront[at] = 0x80;
    for (int at = 0; at < bytes; ++at) {
        const int from = bytes - pixel - at / pixel * pixel + at % pixel;
        all.toBack[spare + at] = static_cast<Kuv8u>(from);
        all.toFront[at] = static_cast<Kuv8u>(spare + from);
        const int place = from < 8 ? from : from + spare;
        if (at < 8) all.exactly[at] = static_cast<Kuv8u>(place);
        if (at >= bytes - 8) all.exactly[at + spare] = static_cast<Kuv8u>(place);
    }
    return all;
}

#ifdef __AVX2__
// Three registers of pixels, in each half of which stand 48 bytes of their own.
struct WidePixelShuffles {
    Kuv8u index[3][3][16];  // of the bytes of an output in an input; 0x80 where they come from another one
};

constexpr WidePixelShuffles widePixelShuffles(int pixel) {
    WidePixelShuffles all{};
    for (int at = 0; at < 48; ++at) {
        const int from = 48 - pixel - at / pixel * pixel + at % pixel;
        for (int input = 0; input < 3; ++input) {
            all.index[at / 16][input][at % 16] = static_cast<Kuv8u>(from / 16 == input ? from % 16 : 0x80);
        }
    }
    return all;
}

template <class T>
struct WidePixelBlock {
    using V = Vector<Kuv8u, 32>;
    struct Value {
        V each[3];
    };
    static constexpr int pixel = 3 * sizeof(T);
    static constexpr ptrdiff_t bytes = 96;
    static constexpr WidePixelShuffles shuffles = widePixelShuffles(pixel);

    static KUV_INLINE V index(int output, int input) { return loadParts<V>(shuffles.index[output][input], 0); }
    static KUV_INLINE Value readFront(const Kuv8u* from) {
        const V a = loadParts<V>(from + 48, -48), b = loadParts<V>(from + 64, -48), c = loadParts<V>(from + 80, -48);
        return {{bitOr(shuffleBytes(b, index(0, 1)), shuffleBytes(c, index(0, 2))),
                 bitOr(bitOr(shuffleBytes(a, index(1, 0)), shuffleBytes(b, index(1, 1))), shuffleBytes(c, index(1, 2))),
                 bitOr(shuffleBytes(a, index(2, 0)), shuffleBytes(b, index(2, 1)))}};
    }
    static KUV_INLINE Value readBack(const Kuv8u* backEnd) { return readFront(backEnd - bytes); }
    static KUV_INLINE void writeFront(Kuv8u* front, const Value& v) { storeParts3(front, v.each[0], v.each[1], v.each[2]); }
    static KUV_INLINE void writeBack(Kuv8u* backEnd, const Value& v) { writeFront(backEnd - bytes, v); }
};
#else
template <class T>
using WidePixelBlock = void;
#endif

template <class T>
struct PixelBlock {
    using Value = Vector<Kuv8u, 16>;
    using Wide = WidePixelBlock<T>;
    static constexpr int pixel = 3 * sizeof(T);
    static constexpr ptrdiff_t bytes = 16 / pixel * pixel, reach = 16;
    static constexpr PixelShuffles shuffles = pixelShuffles(pixel);

    static KUV_INLINE Value readFront(const Kuv8u* front) { return shuffled(load<Value>(front), shuffles.toBack); }
    static KUV_INLINE Value readBack(const Kuv8u* backEnd) { return shuffled(load<Value>(backEnd - 16), shuffles.toFront); }
    static KUV_INLINE void writeFront(Kuv8u* front, Value v) { store(front, v); }
    static KUV_INLINE void writeBack(Kuv8u* backEnd, Value v) { store(backEnd - 16, v); }
    static KUV_INLINE Value readExactly(const Kuv8u* from) {
        const auto eight = [](const Kuv8u* at) { return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(at)); };
        return shuffled({_mm_unpacklo_epi64(eight(from), eight(from + bytes - 8))}, shuffles.exactly);
    }
    static KUV_INLINE void writeExactly(Kuv8u* to, Value v) {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(to), v.raw);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(to + bytes - 8), _mm_unpackhi_epi64(v.raw, v.raw));
    }

private:
    static KUV_INLINE Value shuffled(Value v, const Kuv8u (&order)[16]) { return shuffleBytes(v, load<Value>(order)); }
};
#else
// Without a byte shuffle a pixel at a time, as a word.
template <class T>
struct PixelBlock {
    using Value = std::conditional_t<sizeof(T) == 1, Kuv32u, Kuv64u>;
    using Wide = void;
    using Half = std::conditional_t<sizeof(T) == 1, Kuv16u, Kuv32u>;
    static constexpr ptrdiff_t bytes = 3 * sizeof(T), reach = sizeof(Value), half = sizeof(Half);
    static constexpr int spareBits = 8 * (reach - bytes), halfBits = 8 * half;

    static KUV_INLINE Value readFront(const Kuv8u* front) { return read<Value>(front) << spareBits; }
    static KUV_INLINE Value readBack(const Kuv8u* backEnd) { return read<Value>(backEnd - reach) >> spareBits; }
    static KUV_INLINE void writeFront(Kuv8u* front, Value v) { write(front, v); }
    static KUV_INLINE void writeBack(Kuv8u* backEnd, Value v) { write(backEnd - reach, v); }
    static KUV_INLINE Value readExactly(const Kuv8u* from) { return read<Half>(from) | Value{read<Half>(from + bytes - half)} << halfBits; }
    static KUV_INLINE void writeExactly(Kuv8u* to, Value v) {
        write(to, static_cast<Half>(v));
        write(to + bytes - half, static_cast<Half>(v >> halfBits));
    }

private:
    template <class Word>
    static KUV_INLINE Word read(const Kuv8u* from) {
        return loadSample(reinterpret_cast<const Word*>(from));
    }
    template <class Word>
    static KUV_INLINE void write(Kuv8u* to, Word value) {
        storeSample(reinterpret_cast<Word*>(to), value);
    }
};
#endif

// Of shorter rows the wide blocks' constants cost more than the blocks gain.
constexpr ptrdiff_t leastWideReversal = 1024, leastWideExchange = 480;

// In functions of their own, so that short rows do not pay for wide registers. They give how many bytes are done.
template <class W>
__attribute__((noinline)) ptrdiff_t reverseWide(const Kuv8u* srcEnd, Kuv8u* dst, ptrdiff_t n) {
    W::writeFront(dst, W::readBack(srcEnd));
    const ptrdiff_t toAlignment = W::pixel * pixelsToAlignment<W::pixel>(dst, 32);
    ptrdiff_t i = toAlignment > 0 ? toAlignment : W::bytes;
    for (; n - i >= W::bytes; i += W::bytes) W::writeFront(dst + i, W::readBack(srcEnd - i));
    return i;
}
template <class W>
__attribute__((noinline)) ptrdiff_t exchangeWide(Kuv8u* front, Kuv8u* backEnd, ptrdiff_t n) {
    ptrdiff_t i = 0;
    for (; n - i >= W::bytes; i += W::bytes) {
        const auto toBack = W::readFront(front + i), toFront = W::readBack(backEnd - i);
        W::writeFront(front + i, toFront);
        W::writeBack(backEnd - i, toBack);
    }
    return i;
}

// n bytes, at least a block.
template <class B>
void reverseRun(const Kuv8u* src, Kuv8u* dst, ptrdiff_t n) {
    const Kuv8u* const srcEnd = src + n;
    const ptrdiff_t last = n - B::bytes;
    const auto lastBlock = B::readExactly(src);
    ptrdiff_t i = 0;
    if constexpr (!std::is_void_v<typename B::Wide>) {
        if (n >= leastWideReversal) i = reverseWide<typename B::Wide>(srcEnd, dst, n);
    }
    for (; last - i > 3 * B::bytes; i += 4 * B::bytes) {
        typename B::Value v[4];
#pragma GCC unroll 4
        for (int k = 0; k < 4; ++k) v[k] = B::readBack(srcEnd - i - k * B::bytes);
#pragma GCC unroll 4
        for (int k = 0; k < 4; ++k) B::writeFront(dst + i + k * B::bytes, v[k]);
    }
    for (; i < last; i += B::bytes) B::writeFront(dst + i, B::readBack(srcEnd - i));
    B::writeExactly(dst + last, lastBlock);
}

// n bytes from `front` on with the n bytes before `backEnd`. They may be one run, of which n is half, the middle pixel included.
template <class B>
void exchangeReversed(Kuv8u* front, Kuv8u* backEnd, ptrdiff_t n) {
    const ptrdiff_t last = n - B::bytes;
    const auto lastFront = B::readExactly(front + last), lastBack = B::readExactly(backEnd - n);
    ptrdiff_t i = 0;
    if constexpr (!std::is_void_v<typename B::Wide>) {
        if (n >= leastWideExchange) i = exchangeWide<typename B::Wide>(front, backEnd, n);
    }
    if constexpr (B::reach == B::bytes) {
        const auto some = [&](ptrdiff_t at) {
            const auto toBack = B::readFront(front + at), toFront = B::readBack(backEnd - at);
            B::writeFront(front + at, toFront);
            B::writeBack(backEnd - at, toBack);
        };
        for (; last - i > B::bytes; i += 2 * B::bytes) {
            some(i);
            some(i + B::bytes);
        }
        if (i < last) some(i);
    } else if (i < last) {
        // A write reaches on into the next block, so that is read before.
        auto toBack = B::readFront(front + i), toFront = B::readBack(backEnd - i);
        for (; i + B::bytes < last; i += B::bytes) {
            const auto nextToBack = B::readFront(front + i + B::bytes), nextToFront = B::readBack(backEnd - i - B::bytes);
            B::writeFront(front + i, toFront);
            B::writeBack(backEnd - i, toBack);
            toBack = nextToBack;
            toFront = nextToFront;
        }
        B::writeFront(front + i, toFront);
        B::writeBack(backEnd - i, toBack);
    }
    B::writeExactly(front + last, lastBack);
    B::writeExactly(backEnd - n, lastFront);
}

// Rows that share no byte. They are exchanged by pairs of vectors; the last pair is read before anything is written.
void exchangeRows(Kuv8u* a, Kuv8u* b, ptrdiff_t n) {
    if (n < vectorBytes) {
        Kuv8u kept[vectorBytes];
        copyFew(kept, a, n);
        copyFew(a, b, n);
        return copyFew(b, kept, n);
    }
    const auto vector = [](const Kuv8u* from) { return load<ByteVector>(from); };
    const auto exchangeVectors = [&](ptrdiff_t i) {
        const ByteVector fromA = vector(a + i), fromB = vector(b + i);
        store(a + i, fromB);
        store(b + i, fromA);
    };
    const ptrdiff_t last = n > pairBytes ? n - pairBytes : 0, end = n - vectorBytes;
    const ByteVector lastA = vector(a + last), endA = vector(a + end), lastB = vector(b + last), endB = vector(b + end);
    for (ptrdiff_t i = 0; i < last; i += pairBytes) {
        exchangeVectors(i);
        exchangeVectors(i + vectorBytes);
    }
    store(a + last, lastB);
    store(a + end, endB);
    store(b + last, lastA);
    store(b + end, endA);
}

// The blocks that suit n bytes. False if there are less pixels than a block has.
template <int channels, class T, class Run>
KUV_INLINE bool withBlocks(ptrdiff_t n, Run run) {
    const auto tried = [&]<class B>(std::type_identity<B>, ptrdiff_t least = B::bytes) {
        if (n < least) return false;
        run(std::type_identity<B>{});
        return true;
    };
    if constexpr (!hasVectors) {
        return false;
    } else if constexpr (channels == 1) {
        return tried(std::type_identity<SampleBlock<Native<T>>>{}, 4 * vectorBytes) ||
               tried(std::type_identity<SampleBlock<Vector<T, 16>>>{});
    } else {
        return tried(std::type_identity<PixelBlock<T>>{});
    }
}

template <int channels, class T>
void reverseRow(const T* src, T* dst, ptrdiff_t width) {
    const ptrdiff_t n = width * pixelBytes<T, channels>;
    const auto run = [&]<class B>(std::type_identity<B>) { reverseRun<B>(bytesOf(src), bytesOf(dst), n); };
    if (!withBlocks<channels, T>(n, run)) reversePixels<channels>(src, dst, width);
}

template <int channels, class T>
void exchangeRowsReversed(T* front, T* backEnd, ptrdiff_t width) {
    const ptrdiff_t n = width * pixelBytes<T, channels>;
    const auto run = [&]<class B>(std::type_identity<B>) { exchangeReversed<B>(bytesOf(front), bytesOf(backEnd), n); };
    if (!withBlocks<channels, T>(n, run)) exchangePixelsReversed<channels>(front, backEnd, width);
}

template <class V>
struct WholeRegisters {
    using T = typename V::Lane;
    static constexpr ptrdiff_t rows = V::lanes;

    static KUV_INLINE void transpose(const T* src, ptrdiff_t srcStep, T* dst, ptrdiff_t dstStep) {
        transposeBlock<V>(src, srcStep, dst, dstStep);
    }
};

// Four rows, so that a row of the destination gets a part of a register.
template <class T>
struct FourRows {
    static constexpr ptrdiff_t rows = 4;

    static KUV_INLINE void transpose(const T* src, ptrdiff_t srcStep, T* dst, ptrdiff_t dstStep) {
        using V = Vector<T, 16>;
        using Four = std::conditional_t<sizeof(T) == 1, Kuv32u, Kuv64u>;
        const auto row = [&](int i) { return load<V>(rowAt(src, srcStep, i)); };
        const V a = row(0), b = row(1), c = row(2), d = row(3);
        const V ac[2] = {interleaveLow(a, c), interleaveHigh(a, c)}, bd[2] = {interleaveLow(b, d), interleaveHigh(b, d)};
        T samples[4 * V::lanes];
        for (int i = 0; i < 2; ++i) {
            store(samples + 2 * i * V::lanes, interleaveLow(ac[i], bd[i]));
            store(samples + (2 * i + 1) * V::lanes, interleaveHigh(ac[i], bd[i]));
        }
#pragma GCC unroll 16
        for (int i = 0; i < V::lanes; ++i) {
            storeSample(reinterpret_cast<Four*>(rowAt(dst, dstStep, i)), loadSample(reinterpret_cast<const Four*>(samples + 4 * i)));
        }
    }
};

// False if the image is smaller than a block. Blocks at the far edges end there and lie on others.
template <class B, class T>
bool transposeIn(const T* src, ptrdiff_t srcStep, T* dst, ptrdiff_t dstStep, KuviSize dstSize) {
    constexpr ptrdiff_t side = 16 / sizeof(T), band = 64 / sizeof(T);  // rows of the source that make a cache line of the destination
    const ptrdiff_t rows = dstSize.width, columns = dstSize.height;
    if (rows < B::rows || columns < side) return false;
    for (ptrdiff_t first = 0; first < rows; first += band) {
        const ptrdiff_t end = smaller(first + band, rows);
        for (ptrdiff_t column = 0; column < columns; column += side) {
            const ptrdiff_t c = smaller(column, columns - side);
            for (ptrdiff_t row = first; row < end; row += B::rows) {
                const ptrdiff_t r = smaller(row, rows - B::rows);
                B::transpose(rowAt(src, srcStep, r) + c, srcStep, rowAt(dst, dstStep, c) + r, dstStep);
            }
        }
    }
    return true;
}

template <class T>
bool transposeBlocks(const T* src, ptrdiff_t srcStep, T* dst, ptrdiff_t dstStep, KuviSize dstSize) {
    return transposeIn<WholeRegisters<Native<T>>>(src, srcStep, dst, dstStep, dstSize) ||
           transposeIn<WholeRegisters<Vector<T, 16>>>(src, srcStep, dst, dstStep, dstSize) ||
           transposeIn<FourRows<T>>(src, srcStep, dst, dstStep, dstSize);
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
