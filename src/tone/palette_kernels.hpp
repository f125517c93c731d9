// Rows of palette indices expanded to colours, a block of pixels at a time.
#pragma once

#include "simd/interleave.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// An entry of three bytes, and a pixel of it.
struct Colour {
    Kuv8u channels[3];
};

// What a call looks colours up with: a sample's bits beyond `mask` do not count.
template <class Entry>
struct Palette {
    const Entry* table;
    Kuv32u mask;
};

// Not by way of a value: three bytes would go over the stack.
template <class Entry>
KUV_INLINE void copyEntry(Entry* to, const Entry* from) {
    __builtin_memcpy(to, from, sizeof(Entry));
}

template <class S, class Entry>
KUV_INLINE void expandPixels(Palette<Entry> palette, const S* src, Entry* dst, ptrdiff_t first, ptrdiff_t last) {
#pragma GCC unroll 2
    for (ptrdiff_t i = first; i < last; ++i) {
        copyEntry(dst + i, palette.table + (loadSample(src + i) & palette.mask));
    }
}

// The indices in so many samples in a row, which one word holds.
template <class S, int count>
class Indices {
public:
    using Word = std::conditional_t<sizeof(S) * count == 8, Kuv64u, Kuv32u>;
    static constexpr int sampleBits = 8 * sizeof(S);

    static constexpr Word maskOfAll(Kuv32u mask) { return static_cast<Word>(~Word{0} / static_cast<S>(~S{0}) * mask); }

    KUV_INLINE Indices(const S* src, Word mask) : word_(loadSample(reinterpret_cast<const Word*>(src)) & mask) {}
    KUV_INLINE ptrdiff_t operator[](int i) const { return static_cast<S>(word_ >> sampleBits * i); }

private:
    Word word_;
};

// Blocks of `lanes` pixels. They may write over the pixel that follows, if `pixelsAfter` says so.
template <class S, class Entry>
class Blocks;

#ifdef __AVX2__
// Scaled offsets of eight entries fit the lanes of a gather.
template <class S>
class Blocks<S, Kuv32u> {
public:
    static constexpr int lanes = 8, pixelsAfter = 0;

    explicit Blocks(Palette<Kuv32u> palette) : table_(palette.table), mask_(fill<Index>(static_cast<Kuv32s>(palette.mask))) {}

    KUV_INLINE void operator()(const S* src, Kuv32u* dst) const {
        const Index index = bitAnd(loadWidened<Index>(src), mask_);
        store<Vector<Kuv32u, 32>>(dst, {_mm256_i32gather_epi32(reinterpret_cast<const int*>(table_), index.raw, 4)});
    }

private:
    using Index = Vector<Kuv32s, 32>;
    const Kuv32u* table_;
    Index mask_;
};

// Four bytes are read for an entry of three: one more behind it, but of the last entry, one before it.
template <class S>
class Blocks<S, Colour> {
public:
    static constexpr int lanes = 8, pixelsAfter = 0;

    explicit Blocks(Palette<Colour> palette)
        : table_(palette.table),
          mask_(fill<Offset>(static_cast<Kuv32s>(palette.mask))),
          beforeLast_(fill<Offset>(static_cast<Kuv32s>(3 * palette.mask - 1))) {}

    KUV_INLINE void operator()(const S* src, Colour* dst) const {
        const Offset index = bitAnd(loadWidened<Offset>(src), mask_);
        const Offset wanted = add(index, add(index, index)), read = minimum(wanted, beforeLast_);
        const __m256i words = _mm256_i32gather_epi32(reinterpret_cast<const int*>(table_), read.raw, 1);
        const __m256i entries = _mm256_srlv_epi32(words, shiftLeft<3>(sub(wanted, read)).raw);
        const __m256i closing = _mm256_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1,  //
                                                 0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
        const Vector<Kuv8u, 32> pixels = joinTwelves(shuffleBytes({entries}, {closing}));
        __m128i* const to = reinterpret_cast<__m128i*>(dst);
        _mm_storeu_si128(to, _mm256_castsi256_si128(pixels.raw));
        _mm_storel_epi64(to + 1, _mm256_extracti128_si256(pixels.raw, 1));
    }

private:
    using Offset = Vector<Kuv32s, 32>;
    const Colour* table_;
    Offset mask_, beforeLast_;
};
#else
template <class S>
class Blocks<S, Kuv32u> {
public:
    static constexpr int lanes = 4, pixelsAfter = 0;

    explicit Blocks(Palette<Kuv32u> palette) : table_(palette.table), mask_(Indices<S, lanes>::maskOfAll(palette.mask)) {}

    KUV_INLINE void operator()(const S* src, Kuv32u* dst) const {
        const Indices<S, lanes> index(src, mask_);
        const auto entry = [&](int i) { return _mm_cvtsi32_si128(static_cast<int>(loadSample(table_ + index[i]))); };
        const __m128i low = _mm_unpacklo_epi32(entry(0), entry(1)), high = _mm_unpacklo_epi32(entry(2), entry(3));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), _mm_unpacklo_epi64(low, high));
    }

private:
    const Kuv32u* table_;
    typename Indices<S, lanes>::Word mask_;
};

template <class S>
class Blocks<S, Colour> {
public:
    static constexpr int lanes = 4, pixelsAfter = 0;

    explicit Blocks(Palette<Colour> palette) : table_(palette.table), mask_(Indices<S, lanes>::maskOfAll(palette.mask)) {}

    KUV_INLINE void operator()(const S* src, Colour* dst) const {
        const Indices<S, lanes> index(src, mask_);
#pragma GCC unroll 4
        for (int i = 0; i < lanes; ++i) copyEntry(dst + i, table_ + index[i]);
    }

private:
    const Colour* table_;
    typename Indices<S, lanes>::Word mask_;
};
#endif

// Three-byte entries from a copy of the table in which they have a byte more, so that one is a load and a store.
template <class S>
class WidenedBlocks {
public:
    static constexpr int lanes = 4, pixelsAfter = 1;
    static constexpr Kuv32u entries = 256;

    // The copy costs as much as it gains on some pixels an entry.
    static bool suits(Palette<Colour> palette, KuviSize roi) {
        return palette.mask < entries && Kuv64s{roi.width} * roi.height >= Kuv64s{4} * palette.mask;
    }

    explicit WidenedBlocks(Palette<Colour> palette) : mask_(Indices<S, lanes>::maskOfAll(palette.mask)) {
        for (Kuv32u i = 0; i <= palette.mask; ++i) {
            const Colour entry = loadSample(palette.table + i);
            table_[i] = entry.channels[0] | Kuv32u{entry.channels[1]} << 8 | Kuv32u{entry.channels[2]} << 16;
        }
    }

    KUV_INLINE void operator()(const S* src, Colour* dst) const {
        const Indices<S, lanes> index(src, mask_);
#pragma GCC unroll 4
        for (int i = 0; i < lanes; ++i) storeSample(reinterpret_cast<Kuv32u*>(dst + i), table_[index[i]]);
    }

private:
    typename Indices<S, lanes>::Word mask_;
    Kuv32u table_[entries];
};

#ifdef __SSSE3__
// Up to 16 entries, byte by byte in a register each: a shuffle looks up as many pixels as it has bytes.
template <class S, class Entry>
class ShuffledBlocks {
    using Bytes = Native<Kuv8u>;
    using Samples = Native<S>;

public:
    static constexpr int lanes = Bytes::lanes, pixelsAfter = 0;
    static constexpr Kuv32u entries = 16;

    // Filling the registers costs as much as it gains on some hundred pixels.
    static bool suits(Palette<Entry> palette, KuviSize roi) {
        return palette.mask < entries && roi.width >= lanes && Kuv64s{roi.width} * roi.height >= 256;
    }

    explicit ShuffledBlocks(Palette<Entry> palette) : mask_(fill<Samples>(static_cast<S>(palette.mask))) {
        Kuv8u planes[channels][entries] = {};
        for (Kuv32u i = 0; i <= palette.mask; ++i) {
            const Kuv8u* const entry = reinterpret_cast<const Kuv8u*>(palette.table + i);
            for (int c = 0; c < channels; ++c) planes[c][i] = entry[c];
        }
        for (int c = 0; c < channels; ++c) planes_[c] = loadParts<Bytes>(planes[c], 0);
    }

    KUV_INLINE void operator()(const S* src, Entry* dst) const {
        Bytes index;
        if constexpr (sizeof(S) == 1) {
            index = bitAnd(load<Bytes>(src), mask_);
        } else {
            const Samples low = bitAnd(load<Samples>(src), mask_), high = bitAnd(load<Samples>(src + Samples::lanes), mask_);
            index = narrowed(as<Kuv16s>(low), as<Kuv16s>(high));
        }
        const Bytes a = shuffleBytes(planes_[0], index), b = shuffleBytes(planes_[1], index), c = shuffleBytes(planes_[2], index);
        Kuv8u* const to = reinterpret_cast<Kuv8u*>(dst);
        if constexpr (channels == 3) {
            storeInterleaved3(to, a, b, c);
        } else {
            storeInterleaved4(to, a, b, c, shuffleBytes(planes_[3], index));
        }
    }

private:
    static constexpr int channels = sizeof(Entry);
    Samples mask_;
    Bytes planes_[channels];
};
#endif

// The last block overlaps the one before.
template <class Expand, class S, class Entry>
KUV_INLINE void expandRow(const Expand& expand, Palette<Entry> palette, const S* src, Entry* dst, ptrdiff_t width) {
    const ptrdiff_t last = width - Expand::pixelsAfter - Expand::lanes;
    if (last < 0) return expandPixels(palette, src, dst, 0, width);
#pragma GCC unroll 2
    for (ptrdiff_t i = 0; i < last; i += Expand::lanes) expand(src + i, dst + i);
    expand(src + last, dst + last);
    expandPixels(palette, src, dst, width - Expand::pixelsAfter, width);
}

template <class Expand, class S, class Entry>
void expandRows(const Expand& expand, Palette<Entry> palette, const S* src, ptrdiff_t srcStep, Entry* dst, ptrdiff_t dstStep,
                KuviSize roi) {
    for (ptrdiff_t row = 0; row < roi.height; ++row) {
        expandRow(expand, palette, rowAt(src, srcStep, row), rowAt(dst, dstStep, row), roi.width);
    }
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
