// Cosine transforms of 8x8 blocks on vectors, by products of pairs of samples that are added in 32 bits. Each output of a pass is the
// sum of exact products, rounded once and saturated to 16 bits; the factors are small enough that no sum overflows.
//
// The first pass leaves its results too large, 4 sqrt(8) times forward and, as in px, 8 sqrt(8) times inverse, which the second one takes
// out again. Forward that leaves room for the sums of two of them, where px adds in 32 bits.
#pragma once

#include "simd/bytes.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// 2^13 * sqrt(2) * cos(i pi / 16), and 2^13 for the constant term, in both passes; what they are shifted by makes the scale.
constexpr Kuv16s f0 = 8192, f1 = 11363, f2 = 10703, f3 = 9633, f5 = 6436, f6 = 4433, f7 = 2260;
struct Shifts {
    static constexpr int rows = 11, columns = 18;  // forward: rows first
    static constexpr int inverseColumns = 10, inverseRows = 19;
};

using Words = Native<Kuv16s>;
using Sums = Native<Kuv32s>;

// 32 bytes: two rows of words, or the sums of eight columns.
template <class V>
struct Twin {
    static constexpr int parts = 32 / V::bytes;

    V part[parts];
};

template <class Operation, class... Operands>
KUV_INLINE auto eachPart(Operation operation, const Operands&... operands) {
    Twin<decltype(operation(operands.part[0]...))> result;
    for (int i = 0; i < result.parts; ++i) result.part[i] = operation(operands.part[i]...);
    return result;
}

KUV_INLINE Twin<Words> addSaturated(const Twin<Words>& a, const Twin<Words>& b) {
    return eachPart([](Words x, Words y) { return addSaturated(x, y); }, a, b);
}
KUV_INLINE Twin<Words> subSaturated(const Twin<Words>& a, const Twin<Words>& b) {
    return eachPart([](Words x, Words y) { return subSaturated(x, y); }, a, b);
}
KUV_INLINE Twin<Sums> add(const Twin<Sums>& a, const Twin<Sums>& b) {
    return eachPart([](Sums x, Sums y) { return add(x, y); }, a, b);
}
KUV_INLINE Twin<Sums> sub(const Twin<Sums>& a, const Twin<Sums>& b) {
    return eachPart([](Sums x, Sums y) { return sub(x, y); }, a, b);
}

KUV_INLINE Twin<Words> loadRows(const Kuv16s* block, int first, int second) {
    Twin<Words> rows;
    for (int i = 0; i < Twin<Words>::parts; ++i) {
        const auto* from = reinterpret_cast<const Kuv8u*>(block + 8 * (i ? second : first));
        rows.part[i] = as<Kuv16s>(loadParts<ByteVector>(from, 16 * (second - first)));
    }
    return rows;
}
KUV_INLINE void storeRows(Kuv16s* block, int first, const Twin<Words>& rows) {
    for (int i = 0; i < Twin<Words>::parts; ++i) store(block + 8 * first + i * Words::lanes, rows.part[i]);
}

// The samples of two rows in turn: a pair for each column.
template <class V>
KUV_INLINE Twin<V> pairsOf(const Twin<V>& rows) {
    if constexpr (Twin<V>::parts == 1) {
        KUV_AVX2(return {{interleaveAcross(rows.part[0])}};)
    } else {
        const auto a = as<Kuv16u>(rows.part[0]), b = as<Kuv16u>(rows.part[1]);
        return {{as<Kuv16s>(interleaveLow(a, b)), as<Kuv16s>(interleaveHigh(a, b))}};
    }
}
template <class V>
KUV_INLINE Twin<Words> rowsOf(const Twin<V>& first, const Twin<V>& second) {
    if constexpr (Twin<V>::parts == 1) {
        return {{narrowed(first.part[0], second.part[0])}};
    } else {
        return {{narrowed(first.part[0], first.part[1]), narrowed(second.part[0], second.part[1])}};
    }
}

// Pairs times factors.
KUV_INLINE Twin<Sums> products(const Twin<Words>& pairs, Kuv16s first, Kuv16s second) {
    const auto factors = fillPairs<Words>(first, second);
    return eachPart([factors](Words p) { return multiplyAddPairs(p, factors); }, pairs);
}

// The pair of that number in each 16 bytes, times four pairs of factors.
template <int pair>
KUV_INLINE Sums products(Words row, const Kuv16s (&factors)[8]) {
    const auto weights = as<Kuv16s>(loadParts<ByteVector>(reinterpret_cast<const Kuv8u*>(factors), 0));
    return multiplyAddPairs(as<Kuv16s>(fillFrom<pair>(as<Kuv32s>(row))), weights);
}

template <int shift>
KUV_INLINE Sums rounded(Sums v) {
    return shiftRight<shift>(add(v, fill<Sums>(1 << (shift - 1))));
}
template <int shift>
KUV_INLINE Twin<Sums> rounded(const Twin<Sums>& v) {
    return eachPart([](Sums x) { return rounded<shift>(x); }, v);
}

// Of the odd samples of a row, in both directions.
alignas(16) constexpr Kuv16s oddFactors[2][8] = {{f1, f3, f3, -f7, f5, -f1, f7, -f5}, {f5, f7, -f1, -f5, f7, f3, f3, -f1}};

KUV_INLINE Words transformRow(Words x) {
    alignas(16) static constexpr Kuv16s even[2][8] = {{f0, f0, f2, f6, f0, -f0, f6, -f2}, {f0, f0, -f6, -f2, -f0, f0, f2, -f6}};
    const Words reversed = reverseLanes(x), s = addSaturated(x, reversed), d = subSaturated(x, reversed);
    const Sums evens = add(products<0>(s, even[0]), products<1>(s, even[1]));
    const Sums odds = add(products<0>(d, oddFactors[0]), products<1>(d, oddFactors[1]));
    return interleaveHalves(pack(rounded<Shifts::rows>(evens), rounded<Shifts::rows>(odds)));
}
KUV_INLINE Twin<Words> transformRows(const Twin<Words>& rows) {
    return eachPart([](Words x) { return transformRow(x); }, rows);
}

KUV_INLINE void transformBlock(Kuv16s* block) {
    const auto x01 = transformRows(loadRows(block, 0, 1)), x76 = transformRows(loadRows(block, 7, 6));
    const auto x23 = transformRows(loadRows(block, 2, 3)), x54 = transformRows(loadRows(block, 5, 4));
    const auto s01 = pairsOf(addSaturated(x01, x76)), s23 = pairsOf(addSaturated(x23, x54));
    const auto d01 = pairsOf(subSaturated(x01, x76)), d23 = pairsOf(subSaturated(x23, x54));
    const auto row = [](const auto& a, Kuv16s a0, Kuv16s a1, const auto& b, Kuv16s b0, Kuv16s b1) {
        return rounded<Shifts::columns>(add(products(a, a0, a1), products(b, b0, b1)));
    };
    storeRows(block, 0, rowsOf(row(s01, f0, f0, s23, f0, f0), row(d01, f1, f3, d23, f5, f7)));
    storeRows(block, 2, rowsOf(row(s01, f2, f6, s23, -f6, -f2), row(d01, f3, -f7, d23, -f1, -f5)));
    storeRows(block, 4, rowsOf(row(s01, f0, -f0, s23, -f0, f0), row(d01, f5, -f1, d23, f7, f3)));
    storeRows(block, 6, rowsOf(row(s01, f6, -f2, s23, f2, -f6), row(d01, f7, -f5, d23, f3, -f1)));
}

KUV_INLINE Words restoreRow(Words x) {
    alignas(16) static constexpr Kuv16s even[2][8] = {{f0, f2, f0, f6, f0, -f6, f0, -f2}, {f0, f6, -f0, -f2, -f0, f2, f0, -f6}};
    const Words x02134657 = exchangeMiddle(x);
    const Sums evens = add(products<0>(x02134657, even[0]), products<2>(x02134657, even[1]));
    const Sums odds = add(products<1>(x02134657, oddFactors[0]), products<3>(x02134657, oddFactors[1]));
    const Sums first = rounded<Shifts::inverseRows>(add(evens, odds)), last = rounded<Shifts::inverseRows>(sub(evens, odds));
    return reverseUpperHalf(pack(first, last));
}

KUV_INLINE void restoreBlock(Kuv16s* block) {
    const auto x04 = pairsOf(loadRows(block, 0, 4)), x26 = pairsOf(loadRows(block, 2, 6));
    const auto x13 = pairsOf(loadRows(block, 1, 3)), x57 = pairsOf(loadRows(block, 5, 7));
    const auto sum = products(x04, f0, f0), difference = products(x04, f0, -f0);
    const auto outer = products(x26, f2, f6), inner = products(x26, f6, -f2);
    const auto a0 = add(sum, outer), a1 = add(difference, inner), a2 = sub(difference, inner), a3 = sub(sum, outer);
    const auto b0 = add(products(x13, f1, f3), products(x57, f5, f7)), b1 = add(products(x13, f3, -f7), products(x57, -f1, -f5));
    const auto b2 = add(products(x13, f5, -f1), products(x57, f7, f3)), b3 = add(products(x13, f7, -f5), products(x57, f3, -f1));
    const auto finish = [block](int row, const auto& first, const auto& second) {
        const auto rows = rowsOf(rounded<Shifts::inverseColumns>(first), rounded<Shifts::inverseColumns>(second));
        storeRows(block, row, eachPart([](Words x) { return restoreRow(x); }, rows));
    };
    finish(0, add(a0, b0), add(a1, b1));
    finish(2, add(a2, b2), add(a3, b3));
    finish(4, sub(a3, b3), sub(a2, b2));
    finish(6, sub(a1, b1), sub(a0, b0));
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
