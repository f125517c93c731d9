// Samples replaced by entries of their channel's table, or by what a search among the control points gives, in place.
#pragma once

#include "core/integers.hpp"
#include "core/rows.hpp"
#include "simd/bytes.hpp"
#include "simd/rows.hpp"
#include "tone/tone_map_layout.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// Of the four samples of a pixel, the last one is not mapped.
constexpr int mappedChannels(int channels) { return channels == 4 ? 3 : channels; }

template <class T>
KUV_INLINE const T* tableOf(const T* tables, int channel) {
    return tables + toneEntries<T> * channel;
}

// All samples of a group are read before one is written: the compiler cannot know that a store leaves the tables alone.
template <int channels, int pixels, class T>
KUV_INLINE void mapGroup(const T* tables, const T* src, T* dst) {
    constexpr int mapped = mappedChannels(channels), count = pixels * mapped;
    const auto place = [](int i) { return i / mapped * channels + i % mapped; };
    T results[count];
#pragma GCC unroll 12
    for (int i = 0; i < count; ++i) results[i] = tableOf(tables, i % mapped)[loadSample(src + place(i))];
#pragma GCC unroll 12
    for (int i = 0; i < count; ++i) storeSample(dst + place(i), results[i]);
}

template <int channels, class T>
KUV_INLINE void mapPixels(const T* tables, T* srcDst, ptrdiff_t width) {
    constexpr int group = !hasVectors ? 1 : channels == 1 ? 8 : sizeof(T) == 2 ? 4 : 1;
    ptrdiff_t x = 0;
    for (; x <= width - group; x += group) mapGroup<channels, group>(tables, srcDst + x * channels, srcDst + x * channels);
    for (; x < width; ++x) mapGroup<channels, 1>(tables, srcDst + x * channels, srcDst + x * channels);
}

// What a 16-bit step map keeps of a channel.
struct StoredPoints {
    const Kuv32s* values;
    const Kuv32s* levels;
    Kuv32s count;

    KUV_INLINE Kuv16u valueAt(ptrdiff_t k) const {
        return static_cast<Kuv16u>(clamped(values[k], 0, 65535));
    }

    KUV_INLINE Kuv16u operator()(Kuv16u x) const {
        if (x < levels[0] || x >= levels[count - 1]) return x;
        ptrdiff_t base = 0;
        for (Kuv32s length = count - 1; length > 1;) {
            const Kuv32s half = length / 2;
            const bool upper = x >= levels[base + half];
            base += upper ? half : 0;
            length = upper ? length - half : half;
        }
        return valueAt(base);
    }
};

template <int channels>
KUV_INLINE void searchPixels(const StoredPoints (&points)[channels], Kuv16u* srcDst, ptrdiff_t width) {
    for (ptrdiff_t x = 0; x < width; ++x, srcDst += channels) {
#pragma GCC unroll 3
        for (int c = 0; c < channels; ++c) storeSample(srcDst + c, points[c](loadSample(srcDst + c)));
    }
}

// What a search among few levels in ascending order gives, without one: of the levels that a sample reaches, the last one counts. From the
// last of all levels on, samples are kept. The channels' rules stand next to each other, so that a vector has those of its lanes.
template <int channels>
class StepRules {
    using V = Native<Kuv16u>;

public:
    static constexpr Kuv32s most = 16;

    static bool suits(const StoredPoints (&points)[channels]) {
        for (const StoredPoints& each : points) {
            if (each.count > most) return false;
            for (ptrdiff_t k = 1; k < each.count; ++k) {
                if (each.levels[k] < each.levels[k - 1]) return false;
            }
        }
        return true;
    }

    explicit StepRules(const StoredPoints (&points)[channels]) {
        for (const StoredPoints& each : points) count_ = larger(count_, each.count);
        for (int c = 0; c < channels; ++c) {
            Rule rule = {0, 0, 0xFFFF};  // as if there were no level
            for (ptrdiff_t k = 0; k < count_; ++k) {
                // What no sample reaches, or is not there, repeats the rule before it.
                if (k < points[c].count && points[c].levels[k] <= 65535) {
                    const bool last = k == points[c].count - 1;
                    rule.level = static_cast<Kuv16u>(larger(points[c].levels[k], 0));
                    rule.value = last ? Kuv16u{0} : points[c].valueAt(k);
                    rule.kept = last ? 0xFFFF : 0;
                }
                for (int i = c; i < samples; i += channels) {
                    levels_[k][i] = rule.level;
                    values_[k][i] = rule.value;
                    kept_[k][i] = rule.kept;
                }
            }
        }
    }

    // For lanes of which the first one is of this channel.
    KUV_INLINE V operator()(V x, int channel) const {
        V result = x;
        for (ptrdiff_t k = 0; k < count_; ++k) {
            const V reached = equal(subSaturated(load<V>(levels_[k] + channel), x), fill<V>(0));
            const V value = bitOr(bitAnd(x, load<V>(kept_[k] + channel)), load<V>(values_[k] + channel));
            result = bitXor(result, bitAnd(reached, bitXor(result, value)));
        }
        return result;
    }
    KUV_INLINE Kuv16u operator()(Kuv16u x, int channel) const {
        Kuv16u result = x;
        for (ptrdiff_t k = 0; k < count_; ++k) {
            if (levels_[k][channel] <= x) result = static_cast<Kuv16u>((x & kept_[k][channel]) | values_[k][channel]);
        }
        return result;
    }

private:
    struct Rule {
        Kuv16u level, value, kept;
    };
    static constexpr int samples = V::lanes + channels - 1;
    Kuv32s count_ = 0;
    Kuv16u levels_[most][samples], values_[most][samples], kept_[most][samples];
};

// The channel of each sample of a row, as an operand.
template <int channels>
struct ChannelOfSample {
    KUV_INLINE int sample(ptrdiff_t i) const { return static_cast<int>(i % channels); }
    KUV_INLINE ChannelOfSample vectorsFrom(ptrdiff_t) const { return *this; }
    KUV_INLINE int at(ptrdiff_t i, int) const { return sample(i); }
};

#ifdef __AVX2__
using Bytes = Vector<Kuv8u, 32>;

// A byte table in registers' halves. Entry 16h + l of the lower 128 is the exclusive or of the differences between neighbouring pieces
// of 16 entries, at l, from the first piece to the h-th: the pieces past it are shuffled by a negative index, which gives 0. An index that
// saturates stays negative, so bytes from 128 on see nothing of the lower pieces; the others, nothing of the upper ones.
class ShuffledTable {
public:
    explicit ShuffledTable(const Kuv8u* table) {
        for (int p = 0; p < pieces; ++p) {
            const Bytes piece = loadParts<Bytes>(table + 16 * p, 0);
            steps_[p] = p % half == 0 ? piece : bitXor(piece, loadParts<Bytes>(table + 16 * (p - 1), 0));
        }
    }

    KUV_INLINE Bytes operator()(Bytes x) const {
        const __m256i sixteen = _mm256_set1_epi8(16);
        __m256i lower = x.raw, upper = _mm256_xor_si256(x.raw, _mm256_set1_epi8(-128));
        Bytes result = bitXor(shuffleBytes(steps_[0], {lower}), shuffleBytes(steps_[half], {upper}));
#pragma GCC unroll 8
        for (int p = 1; p < half; ++p) {
            lower = _mm256_subs_epi8(lower, sixteen);
            upper = _mm256_subs_epi8(upper, sixteen);
            result = bitXor(result, bitXor(shuffleBytes(steps_[p], {lower}), shuffleBytes(steps_[half + p], {upper})));
        }
        return result;
    }

private:
    static constexpr int pieces = 16, half = 8;
    Bytes steps_[pieces];
};

struct ByteMap {
    const Kuv8u* table;
    const ShuffledTable& shuffled;

    KUV_INLINE Bytes operator()(Bytes x) const { return shuffled(x); }
    KUV_INLINE Kuv8u operator()(Kuv8u x) const { return table[x]; }
};

// Blocks of pixels of three channels with a table each. The shuffles leave room for loads, so some pixels of a block go one by one.
//
// Byte i of a block's three registers is of channel i, i + 2 and i + 1 modulo 3. With every third byte of two of them exchanged, for each
// two another third, each register is of one channel. The same exchange puts the bytes back.
class ThreeChannelBlocks {
public:
    static constexpr ptrdiff_t pixels = 40;

    explicit ThreeChannelBlocks(const Kuv8u* tables)
        : tables_(tables), first_(tables), second_(tableOf(tables, 1)), third_(tableOf(tables, 2)) {
        Kuv8u thirds[34];
        for (int i = 0; i < 34; ++i) thirds[i] = i % 3 == 0 ? 0xFF : 0;
        for (int i = 0; i < 3; ++i) masks_[i] = load<Bytes>(thirds + (3 - i) % 3);
    }

    KUV_INLINE void operator()(const Kuv8u* src, Kuv8u* dst) const {
        Bytes a = load<Bytes>(src), b = load<Bytes>(src + 32), c = load<Bytes>(src + 64);
        exchange(a, b, c);
#pragma GCC unroll 8
        for (int i = 96; i < 120; i += 3) mapGroup<3, 1>(tables_, src + i, dst + i);
        a = first_(a);
        b = second_(b);
        c = third_(c);
        exchange(a, b, c);
        store(dst, a);
        store(dst + 32, b);
        store(dst + 64, c);
    }

private:
    KUV_INLINE void exchange(Bytes& a, Bytes& b, Bytes& c) const {
        const Bytes bc = bitAnd(bitXor(b, c), masks_[0]), ab = bitAnd(bitXor(a, b), masks_[1]), ac = bitAnd(bitXor(a, c), masks_[2]);
        a = bitXor(a, bitXor(ab, ac));
        b = bitXor(b, bitXor(ab, bc));
        c = bitXor(c, bitXor(bc, ac));
    }

    const Kuv8u* tables_;
    ShuffledTable first_, second_, third_;
    Bytes masks_[3];
};

// At least a block. The last one is read before one that it overlaps is written.
KUV_INLINE void mapRowByBlocks(const ThreeChannelBlocks& blocks, Kuv8u* srcDst, ptrdiff_t width) {
    constexpr ptrdiff_t pixels = ThreeChannelBlocks::pixels;
    const ptrdiff_t end = width - pixels;
    Kuv8u last[pixels * 3];
    blocks(srcDst + end * 3, last);
    for (ptrdiff_t x = 0; x < end; x += pixels) blocks(srcDst + x * 3, srcDst + x * 3);
    __builtin_memcpy(srcDst + end * 3, last, sizeof last);
}

// Gathered as aligned pairs of entries, none of which lies across two pages or outside of the tables.
struct WordMap {
    using Words = Vector<Kuv16u, 32>;
    const Kuv16u* tables;

    KUV_INLINE Kuv16u operator()(Kuv16u x) const { return tables[x]; }
    KUV_INLINE Words operator()(Words x) const { return mapped(x, {_mm256_setzero_si256()}); }

    // A sample's channel is the upper half of its index into all tables.
    KUV_INLINE Kuv16u operator()(Kuv16u x, Kuv16u channel) const { return tableOf(tables, channel)[x]; }
    KUV_INLINE Words operator()(Words x, Words channels) const { return mapped(x, channels); }

private:
    KUV_INLINE Words mapped(Words x, Words channels) const {
        return packUnsigned(entries(interleaveLow(x, channels).raw), entries(interleaveHigh(x, channels).raw));
    }
    KUV_INLINE Vector<Kuv32s, 32> entries(__m256i index) const {
        const __m256i pairs = _mm256_i32gather_epi32(reinterpret_cast<const int*>(tables), _mm256_srli_epi32(index, 1), 4);
        const __m256i odd = _mm256_and_si256(_mm256_slli_epi32(index, 4), _mm256_set1_epi32(16));
        return {_mm256_blend_epi16(_mm256_srlv_epi32(pairs, odd), _mm256_setzero_si256(), 0xAA)};
    }
};
#endif

}  // namespace
}  // namespace kuv::KUV_VARIANT
