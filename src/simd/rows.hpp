// Row drivers: how an operation object gets to every sample of a row. An operation object has `template <class V> V operator()`,
// which is called with vectors and with single samples alike.
#pragma once

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

}  // namespace
}  // namespace kuv::KUV_VARIANT
