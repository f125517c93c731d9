// Channels of interleaved pixels reordered: dst[c] = src[order[c]] in each pixel.
//
// The vector kernels turn blocks of whole pixels, each read before it is written. The last block of a row ends with the row and
// may lie on the one before: it is read before any is written, so that the kernels serve in place, too.
#pragma once

#include "core/rows.hpp"
#include "simd/bytes.hpp"
#include "simd/rows.hpp"

namespace kuv::KUV_VARIANT {
namespace {

template <class T, int sampleCount, int colourCount>
struct Pixel {
    using Sample = T;
    static constexpr int samples = sampleCount;
    static constexpr int colours = colourCount;  // samples that are reordered; they come first
    static constexpr int bytes = samples * static_cast<int>(sizeof(T));
    static constexpr bool hasAlpha = colours < samples;
};

template <class P>
struct ChannelOrder {
    Kuv32s from[P::colours];

    // How many bytes after a channel's own sample the one stands that goes there.
    KUV_INLINE int displacement(int channel) const {
        return (from[channel] - channel) * static_cast<int>(sizeof(typename P::Sample));
    }
};

// Pixels `first` to `end` - 1 of a row.
template <class P>
KUV_INLINE void swapPixels(const ChannelOrder<P>& order, const typename P::Sample* src, typename P::Sample* dst, ptrdiff_t first,
                           ptrdiff_t end) {
    using T = typename P::Sample;
    const T* from[P::colours];
    for (int c = 0; c < P::colours; ++c) from[c] = src + order.from[c];
    for (ptrdiff_t i = first * P::samples; i < end * P::samples; i += P::samples) {
        T pixel[P::colours];
        for (int c = 0; c < P::colours; ++c) pixel[c] = loadSample(from[c] + i);
        for (int c = 0; c < P::colours; ++c) storeSample(dst + i + c, pixel[c]);
    }
}

// Pixels of three samples fill three registers, all others one. What repeats after that is the block's pattern.
template <class P>
constexpr int patternRegisters = P::samples == 3 ? 3 : 1;

// Ones in the bytes of a channel, and the bytes' places.
template <class P>
struct BlockPattern {
    Kuv8u channel[P::samples][patternRegisters<P>][16];
    Kuv8u place[patternRegisters<P>][16];
};

template <class P>
constexpr BlockPattern<P> blockPattern = [] {
    BlockPattern<P> pattern{};
    for (int at = 0; at < 16 * patternRegisters<P>; ++at) {
        const int sample = at / static_cast<int>(sizeof(typename P::Sample));
        pattern.channel[sample % P::samples][at / 16][at % 16] = 0xFF;
        pattern.place[at / 16][at % 16] = static_cast<Kuv8u>(at);
    }
    return pattern;
}();

// What the kinds of blocks have in common. The halves of wide registers work on pixels of their own, a pattern apart.
template <class P, class V, int registerCount>
struct BlockBase {
    static constexpr int registers = registerCount, pattern = patternRegisters<P>;
    static constexpr ptrdiff_t bytes = registers * V::bytes, boundary = V::bytes;
    static_assert(pattern == 1 || pattern == registers);

    struct Value {
        V each[registers];
    };

    static KUV_INLINE V at(const Kuv8u* block, int i) {
        if constexpr (pattern == 1) return load<V>(block + V::bytes * i);
        return loadParts<V>(block + 16 * i, 16 * pattern);
    }
    static KUV_INLINE V repeated(const Kuv8u (&half)[16]) { return loadParts<V>(half, 0); }
    static KUV_INLINE V channel(int number, int i) { return repeated(blockPattern<P>.channel[number][i % pattern]); }

    static KUV_INLINE V withAlpha(V value, [[maybe_unused]] const Kuv8u* dst, [[maybe_unused]] int i) {
        if constexpr (P::hasAlpha) return bitOr(value, bitAnd(channel(P::colours, i), at(dst, i)));
        return value;
    }

    static KUV_INLINE void write(Kuv8u* dst, const Value& value) {
        if constexpr (pattern == 3) {
            storeParts3(dst, value.each[0], value.each[1], value.each[2]);
        } else {
            for (int i = 0; i < registers; ++i) store(dst + V::bytes * i, value.each[i]);
        }
    }
};

#ifdef __SSSE3__
// Each register is shuffled from itself and, where pixels reach across, from its neighbours.
template <class P, class V, int registerCount>
class Block : public BlockBase<P, V, registerCount> {
    using Base = BlockBase<P, V, registerCount>;

public:
    static constexpr ptrdiff_t margin = 0;

    KUV_INLINE explicit Block(const ChannelOrder<P>& order) {
        const auto filled = [](int value) { return as<Kuv8s>(fill<V>(static_cast<Kuv8u>(value))); };
        for (int i = 0; i < Base::pattern; ++i) {
            auto place = as<Kuv8s>(Base::repeated(blockPattern<P>.place[i]));
            for (int c = 0; c < P::colours; ++c) {
                place = add(place, bitAnd(as<Kuv8s>(Base::channel(c, i)), filled(order.displacement(c))));
            }
            if constexpr (P::hasAlpha) place = bitOr(place, as<Kuv8s>(Base::channel(P::colours, i)));
            for (int from = 0; from < Base::pattern; ++from) {
                const auto index = sub(place, filled(16 * from));  // negative, or above 15: in another register
                index_[i][from] = as<Kuv8u>(bitOr(index, greater(index, filled(15))));
            }
        }
    }

    KUV_INLINE typename Base::Value read(const Kuv8u* src, const Kuv8u* dst) const {
        typename Base::Value from, value;
        for (int i = 0; i < Base::registers; ++i) from.each[i] = Base::at(src, i);
        for (int i = 0; i < Base::registers; ++i) {
            V shuffled = shuffleBytes(from.each[i], index_[i % Base::pattern][i % Base::pattern]);
            if constexpr (Base::pattern > 1) {
                if (i > 0) shuffled = bitOr(shuffled, shuffleBytes(from.each[i - 1], index_[i][i - 1]));
                if (i + 1 < Base::registers) shuffled = bitOr(shuffled, shuffleBytes(from.each[i + 1], index_[i][i + 1]));
            }
            value.each[i] = Base::withAlpha(shuffled, dst, i);
        }
        return value;
    }

private:
    V index_[Base::pattern][Base::pattern];  // of a register's bytes in another one
};
#else
// Without a byte shuffle: for each channel the block as it stands so many bytes further on, and of that only the channel.
template <class P, class V, int registerCount>
class Block : public BlockBase<P, V, registerCount> {
    using Base = BlockBase<P, V, registerCount>;

public:
    static constexpr ptrdiff_t margin = 1;  // pixels before and after the block that are read

    KUV_INLINE explicit Block(const ChannelOrder<P>& order) {
        for (int c = 0; c < P::colours; ++c) displacement_[c] = order.displacement(c);
    }

    KUV_INLINE typename Base::Value read(const Kuv8u* src, const Kuv8u* dst) const {
        typename Base::Value value;
        for (int i = 0; i < Base::registers; ++i) {
            const auto only = [&](int c) { return bitAnd(Base::channel(c, i), Base::at(src + displacement_[c], i)); };
            V chosen = only(0);
            for (int c = 1; c < P::colours; ++c) chosen = bitOr(chosen, only(c));
            value.each[i] = Base::withAlpha(chosen, dst, i);
        }
        return value;
    }

private:
    ptrdiff_t displacement_[P::colours];
};
#endif

// Pixels of a row that blocks do not take: what they read beyond themselves must stand in the row, and the last alpha must be
// left alone, since nothing behind the last colour need be memory.
template <class P, class B>
constexpr ptrdiff_t pixelsBefore = B::margin;
template <class P, class B>
constexpr ptrdiff_t pixelsAfter = B::margin > 0 || P::hasAlpha ? 1 : 0;

// Blocks from `at` to past `last`, at which another one is still to be written.
template <class B>
KUV_INLINE void swapBlocks(const B& blocks, const Kuv8u* from, Kuv8u* to, ptrdiff_t at, ptrdiff_t last) {
    if (B::margin > 0 && from == to && at < last) {
        // What a block reads beyond itself the one before has just written; to read such bytes the processor would wait for them.
        auto block = blocks.read(from + at, to + at);
        for (; at + B::bytes < last; at += B::bytes) {
            const auto next = blocks.read(from + at + B::bytes, to + at + B::bytes);
            B::write(to + at, block);
            block = next;
        }
        B::write(to + at, block);
    } else {
        for (; at < last; at += B::bytes) B::write(to + at, blocks.read(from + at, to + at));
    }
}

// A row of at least a block. Writes of long rows are aligned: a first block takes in what stands before.
template <class P, class B>
KUV_INLINE void swapRow(const ChannelOrder<P>& order, const B& blocks, const typename P::Sample* src, typename P::Sample* dst,
                        ptrdiff_t width) {
    const auto* const from = reinterpret_cast<const Kuv8u*>(src);
    auto* const to = reinterpret_cast<Kuv8u*>(dst);
    const ptrdiff_t first = pixelsBefore<P, B> * P::bytes, last = (width - pixelsAfter<P, B>) * P::bytes - B::bytes;
    const auto lastBlock = blocks.read(from + last, to + last);
    if (last - first < 8 * B::bytes) {
        swapBlocks(blocks, from, to, first, last);
    } else {
        const auto firstBlock = blocks.read(from + first, to + first);
        swapBlocks(blocks, from, to, first + P::bytes * pixelsToAlignment<P::bytes>(to + first, B::boundary), last);
        B::write(to + first, firstBlock);
    }
    B::write(to + last, lastBlock);
    swapPixels(order, src, dst, 0, pixelsBefore<P, B>);
    swapPixels(order, src, dst, width - pixelsAfter<P, B>, width);
}

// False if a row has no room for a block.
template <class P, class B>
bool swapRows(const ChannelOrder<P>& order, const typename P::Sample* src, ptrdiff_t srcStep, typename P::Sample* dst,
              ptrdiff_t dstStep, ptrdiff_t width, ptrdiff_t height) {
    if (width - pixelsBefore<P, B> - pixelsAfter<P, B> < B::bytes / P::bytes) return false;
    const B blocks(order);
    for (ptrdiff_t row = 0; row < height; ++row) {
        swapRow(order, blocks, rowAt(src, srcStep, row), rowAt(dst, dstStep, row), width);
    }
    return true;
}

// `src` may be `dst`.
template <class P>
KUV_INLINE void swapImage(const ChannelOrder<P>& order, const typename P::Sample* src, ptrdiff_t srcStep, typename P::Sample* dst,
                          ptrdiff_t dstStep, ptrdiff_t width, ptrdiff_t height) {
    joinRows(width, height, {{srcStep, P::bytes}, {dstStep, P::bytes}});
    if constexpr (hasVectors) {
        using Half = Vector<Kuv8u, 16>;
        constexpr int pattern = patternRegisters<P>, many = pattern == 1 && hasSSSE3 ? 4 : pattern;
        using Widest = std::conditional_t<pattern == 1, Half, Native<Kuv8u>>;
        const bool small = width * P::bytes <= firstLevelBytes / height;  // beyond that cache wide stores gain nothing
        if ((small && swapRows<P, Block<P, Widest, many>>(order, src, srcStep, dst, dstStep, width, height)) ||
            swapRows<P, Block<P, Half, many>>(order, src, srcStep, dst, dstStep, width, height) ||
            swapRows<P, Block<P, Half, pattern>>(order, src, srcStep, dst, dstStep, width, height)) {
            return;
        }
    }
    for (ptrdiff_t row = 0; row < height; ++row) {
        swapPixels(order, rowAt(src, srcStep, row), rowAt(dst, dstStep, row), 0, width);
    }
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
