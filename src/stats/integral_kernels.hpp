// Rows of the table of sums, each from the one above it.
#pragma once

#include "simd/bytes.hpp"
#include "simd/rows.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// Of the table, `dst` is the row above, from the column before the first that is computed.

// Unsigned: sums wrap.
KUV_INLINE void sumRow(const Kuv8u* src, Kuv32s* dst, ptrdiff_t dstStep, ptrdiff_t width) {
    Kuv32s* const to = rowAt(dst, dstStep, 1);
    Kuv32u sum = 0;
    const auto next = [&](ptrdiff_t i) {
        sum += src[i];
        storeSample(to + i + 1, static_cast<Kuv32s>(static_cast<Kuv32u>(loadSample(dst + i + 1)) + sum));
    };
    ptrdiff_t done = 0;
    for (; done + 4 <= width; done += 4) {
#pragma GCC unroll 4
        for (int k = 0; k < 4; ++k) next(done + k);
    }
    for (; done < width; ++done) next(done);
}

using Columns = Native<Kuv32s>;
constexpr ptrdiff_t stripColumns = 8;
constexpr int stripRegisters = stripColumns / Columns::lanes;

// The running sums of eight samples, from 0 on.
#ifdef __AVX2__
// Column k takes the samples 0 to k, each with a weight of 1: of four samples each, those of all columns.
struct Weights {
    Kuv8s ofFour[2][32];
};
constexpr Weights weights = [] {
    Weights all{};
    for (int column = 0; column < stripColumns; ++column) {
        for (int k = 0; k <= column; ++k) all.ofFour[k / 4][4 * column + k % 4] = 1;
    }
    return all;
}();

KUV_INLINE void runningSums(const Kuv8u* src, Columns (&sums)[stripRegisters]) {
    const auto weighted = [src](int k) {
        const auto repeated = as<Kuv8u>(fill<Columns>(loadSample(reinterpret_cast<const Kuv32s*>(src + 4 * k))));
        return multiplyAddPairs(repeated, load<Vector<Kuv8s, 32>>(weights.ofFour[k]));
    };
    sums[0] = multiplyAddPairs(add(weighted(0), weighted(1)), fill<Vector<Kuv16s, 32>>(1));
}
#else
KUV_INLINE void runningSums(const Kuv8u* src, Columns (&sums)[stripRegisters]) {
    const auto zero = fill<Vector<Kuv16u, 16>>(0);
    auto words = as<Kuv16s>(loadWidened<Vector<Kuv16u, 16>>(src));
    words = add(words, as<Kuv16s>(shiftLeft<16>(as<Kuv64u>(words))));
    words = add(words, as<Kuv16s>(shiftLeft<32>(as<Kuv64u>(words))));
    sums[0] = as<Kuv32s>(interleaveLow(as<Kuv16u>(words), zero));
    sums[1] = add(as<Kuv32s>(interleaveHigh(as<Kuv16u>(words), zero)), fillFrom<3>(sums[0]));
}
#endif

// Eight columns of some rows. Less the column before them, the table's columns grow from row to row by the running sums of eight samples
// alone, and that column is known: no sum is carried along a row, and strips may lie on each other.
template <int rows>
KUV_INLINE void sumStrip(const Kuv8u* src, ptrdiff_t srcStep, Kuv32s* dst, ptrdiff_t dstStep) {
    const auto before = [](const Kuv32s* row) { return fill<Columns>(loadSample(row)); };
    Columns grown[stripRegisters];
#pragma GCC unroll 2
    for (int k = 0; k < stripRegisters; ++k) grown[k] = sub(load<Columns>(dst + 1 + k * Columns::lanes), before(dst));
#pragma GCC unroll 4
    for (int row = 0; row < rows; ++row) {
        Kuv32s* const to = rowAt(dst, dstStep, row + 1);
        Columns sums[stripRegisters];
        runningSums(rowAt(src, srcStep, row), sums);
        const Columns column = before(to);
#pragma GCC unroll 2
        for (int k = 0; k < stripRegisters; ++k) {
            grown[k] = add(grown[k], sums[k]);
            store(to + 1 + k * Columns::lanes, add(grown[k], column));
        }
    }
}

// A strip's columns at least.
template <int rows>
void sumRows(const Kuv8u* src, ptrdiff_t srcStep, Kuv32s* dst, ptrdiff_t dstStep, ptrdiff_t width) {
    const auto stripAt = [=](ptrdiff_t i) { sumStrip<rows>(src + i, srcStep, dst + i, dstStep); };
    constexpr ptrdiff_t leastAligned = 8 * stripColumns;
    const ptrdiff_t last = width - stripColumns, first = width < leastAligned ? 0 : samplesToAlignment(dst + 1, Columns::bytes);
    if (first > 0) stripAt(0);
    for (ptrdiff_t i = first; i < last; i += stripColumns) stripAt(i);
    stripAt(last);
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
