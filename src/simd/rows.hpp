// Row drivers: how an operation object gets to every sample of a row. An operation object has `template <class V> V operator()`,
// which is called with vectors and with single samples alike.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/rows.hpp"
#include "simd/vector.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// How many single samples stand before the next address that is a multiple of `bytes`; 0 if none is, at this address.
template <class T>
KUV_INLINE ptrdiff_t samplesToAlignment(const T* address, ptrdiff_t bytes) {
    const auto value = reinterpret_cast<std::intptr_t>(address);
    if (value % static_cast<std::intptr_t>(sizeof(T)) != 0) return 0;
    return (-value & (bytes - 1)) / static_cast<ptrdiff_t>(sizeof(T));
}

// srcDst[i] = operation(srcDst[i], src[i]) for i in 0 .. count - 1. In place, so no sample is computed twice: single samples up to
// the destination's alignment, blocks of vectors, and single samples again.
template <class Operation, class T>
KUV_INLINE void combineRowInPlace(Operation operation, const T* src, T* srcDst, ptrdiff_t count) {
    ptrdiff_t i = 0;
    const auto single = [&](ptrdiff_t end) {
        for (; i < end; ++i) storeSample(srcDst + i, operation(loadSample(srcDst + i), loadSample(src + i)));
    };
    if constexpr (hasVectors) {
        using V = Native<T>;
        constexpr ptrdiff_t lanes = V::lanes, block = 4 * lanes;
        const auto vectors = [&](ptrdiff_t at) { store(srcDst + at, operation(load<V>(srcDst + at), load<V>(src + at))); };
        if (count >= 2 * block) single(samplesToAlignment(srcDst, V::bytes));
        for (; count - i >= block; i += block) {
            for (ptrdiff_t at = 0; at < block; at += lanes) vectors(i + at);
        }
        for (; count - i >= lanes; i += lanes) vectors(i);
    }
    single(count);
}

// combineRowInPlace on every row, from the first.
template <class Operation, class T>
KUV_INLINE void combineInPlace(Operation operation, const T* src, ptrdiff_t srcStep, T* srcDst, ptrdiff_t srcDstStep,
                               KuviSize size) {
    for (ptrdiff_t row = 0; row < size.height; ++row) {
        combineRowInPlace(operation, rowAt(src, srcStep, row), rowAt(srcDst, srcDstStep, row), size.width);
    }
}

// How a block's vectors get to memory.
struct ThroughCaches {
    template <class V>
    KUV_INLINE void operator()(typename V::Lane* to, V value) const {
        store(to, value);
    }
};
struct PastCaches {
    template <class V>
    KUV_INLINE void operator()(typename V::Lane* to, V value) const {
        stream(to, value);
    }
};

// dst[i] = operation(src[i]) for i in 0 .. count - 1, into another image, of another type. The operation does a single sample, and in
// `block` so many that whole vectors are written. Blocks may lie on each other. Streams past the caches if asked to and if the
// destination's samples are aligned; the caller closes with a fence then.
template <class Operation, class S, class D>
KUV_INLINE void convertRow(const Operation& operation, const S* src, D* dst, ptrdiff_t count, bool streaming) {
    if constexpr (hasVectors) {
        constexpr ptrdiff_t block = Operation::blockSamples, line = 64 / sizeof(D), fewBlocks = 4;
        if (count < block) {
            S from[block] = {};
            D to[block];
            __builtin_memcpy(from, src, static_cast<size_t>(count) * sizeof(S));
            operation.block(from, to, ThroughCaches{});
            __builtin_memcpy(dst, to, static_cast<size_t>(count) * sizeof(D));
            return;
        }
        // The last block ends at `end`.
        const auto blocks = [&](ptrdiff_t first, ptrdiff_t end) {
            for (; first < end - block; first += block) operation.block(src + first, dst + first, ThroughCaches{});
            operation.block(src + end - block, dst + end - block, ThroughCaches{});
        };
        if (count < fewBlocks * block) return blocks(0, count);
        ptrdiff_t first = samplesToAlignment(dst, 64);
        if (streaming && reinterpret_cast<std::uintptr_t>(dst + first) % 64 == 0) {
            // Whole lines, which nothing else is written to.
            while (first > 0 && first < block) first += line;
            constexpr ptrdiff_t step = block > line ? block : line;
            ptrdiff_t end = first + (count - first) / step * step;
            while (end > first && count > end && count - end < block) end -= step;
            if (first > 0) blocks(0, first);
            for (ptrdiff_t i = first; i < end; i += block) operation.block(src + i, dst + i, PastCaches{});
            if (end < count) blocks(end, count);
            return;
        }
        first = samplesToAlignment(dst, integerBytes);
        if (first > 0) operation.block(src, dst, ThroughCaches{});
        blocks(first, count);
    } else {
        for (ptrdiff_t i = 0; i < count; ++i) storeSample(dst + i, operation(loadSample(src + i)));
    }
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
