// How every sample of a region gets to an accumulator. An accumulator has
//
//   blockSamples       how many samples it takes at a time
//   blocksToFlush      after how many blocks it must be flushed, so that nothing overflows
//   block(samples)     takes them
//   padding(k)         what stands for sample k of a block where a row has none, and changes no result; or
//   rest(samples, n)   takes n samples, fewer than a block's
//   anyLane            where there is that, samples may stand anywhere in a block, and padding(k) is the same for all k
//   flush()            is called at the end of each row, too
#pragma once

#include "core/rows.hpp"
#include "simd/real.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// For accumulators that cannot overflow.
constexpr ptrdiff_t endless = PTRDIFF_MAX;

// Whole blocks.
template <class Accumulator, class T>
KUV_INLINE const T* takeBlocks(Accumulator& accumulator, const T* samples, ptrdiff_t blocks) {
    constexpr ptrdiff_t block = Accumulator::blockSamples, blockBytes = block * static_cast<ptrdiff_t>(sizeof(T));
    constexpr ptrdiff_t lineBytes = 64, together = hasVectors && blockBytes < lineBytes ? lineBytes / blockBytes : 1;
    constexpr ptrdiff_t bytesAhead = 2048;  // what the processor foresees by itself ends with each page
    const T* const end = samples + blocks * block;
    for (; blocks >= together; blocks -= together, samples += together * block) {
        if constexpr (hasVectors) __builtin_prefetch(reinterpret_cast<const char*>(samples) + bytesAhead);
#pragma GCC unroll 4
        for (ptrdiff_t k = 0; k < together; ++k) accumulator.block(samples + k * block);
    }
    if constexpr (together > 1) {
        for (; samples != end; samples += block) accumulator.block(samples);
    }
    return end;
}

// The last `rest` samples of a row that has a block at least, as the end of a block of padding. Written by whole vectors: the accumulator's
// loads would wait for narrower stores.
template <class T, ptrdiff_t block>
KUV_INLINE void moveToEnd(T (&padded)[block], const T* end, ptrdiff_t rest, T padding) {
    using V = Native<T>;
    static constexpr struct Masks {
        Kuv8u gapThenOnes[2 * block * sizeof(T)] = {};
        constexpr Masks() {
            for (size_t i = block * sizeof(T); i < sizeof(gapThenOnes); ++i) gapThenOnes[i] = 0xFF;
        }
    } masks;
    for (ptrdiff_t i = 0; i < block; i += V::lanes) {
        const V mask = load<V>(reinterpret_cast<const T*>(masks.gapThenOnes) + rest + i);
        store(padded + i, bitOr(bitAnd(mask, load<V>(end - block + i)), bitAndNot(mask, fill<V>(padding))));
    }
}

template <class Accumulator, class T>
KUV_INLINE void takeRow(Accumulator& accumulator, const T* samples, ptrdiff_t count) {
    constexpr ptrdiff_t block = Accumulator::blockSamples, most = Accumulator::blocksToFlush;
    ptrdiff_t blocks = count / block;
    const ptrdiff_t rest = count - blocks * block;
    if constexpr (most != endless) {
        for (; blocks >= most; blocks -= most) {  // leaves room for a padded one
            samples = takeBlocks(accumulator, samples, most);
            accumulator.flush();
        }
    }
    samples = takeBlocks(accumulator, samples, blocks);
    if constexpr (requires { accumulator.rest(samples, rest); }) {
        if (rest != 0) accumulator.rest(samples, rest);
    } else if (rest != 0) {
        T padded[block];
        if constexpr (hasVectors && requires { Accumulator::anyLane; }) {
            if (count >= block) {
                moveToEnd(padded, samples + rest, rest, accumulator.padding(0));
                accumulator.block(padded);
                accumulator.flush();
                return;
            }
        }
        for (ptrdiff_t k = 0; k < block; ++k) padded[k] = accumulator.padding(k);
        __builtin_memcpy(padded, samples, static_cast<size_t>(rest) * sizeof(T));
        accumulator.block(padded);
    }
    accumulator.flush();
}

// `count` samples of each row, row after row.
template <class Accumulator, class T>
KUV_INLINE void reduce(Accumulator& accumulator, const T* src, ptrdiff_t step, ptrdiff_t count, ptrdiff_t rows) {
    for (ptrdiff_t row = 0; row < rows; ++row) takeRow(accumulator, rowAt(src, step, row), count);
}

// The same where it does not matter how the samples lie in rows.
template <int channels, class Accumulator, class T>
KUV_INLINE void reduceAll(Accumulator& accumulator, const T* src, ptrdiff_t step, KuviSize size) {
    ptrdiff_t width = size.width, rows = size.height;
    joinRows(width, rows, step, channels * static_cast<ptrdiff_t>(sizeof(T)));
    reduce(accumulator, src, step, channels * width, rows);
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
