// Powers of two, sample by sample: bit reversal, then passes of decimation in time, in place.
#pragma once

#include "transform/dft_butterflies.hpp"
#include "transform/dft_plan.hpp"
#include "transform/dft_tables.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// ---- Tables

// The number that, its bits reversed, is one more than `number` is; of numbers below `count`, a power of two.
template <class Integer>
KUV_INLINE Integer nextReversed(Integer number, Integer count) {
    Integer bit = count / 2;
    for (; number & bit; bit /= 2) number ^= bit;
    return number | bit;
}

// Pairs of indices of the bits between the first and the last that change places, a 0, those that stay, a 0; all times 4.
void fillBitReversal(int order, Kuv32s* table) {
    const Kuv32s count = 1 << (order - 2);
    Kuv32s* pairs = table;
    Kuv32s* own = table + count;
    *own = 0;
    for (Kuv32s i = 1, j = 0; i < count; ++i) {
        j = nextReversed(j, count);
        if (i < j) {
            *pairs++ = 4 * i;
            *pairs++ = 4 * j;
        } else if (i == j) {
            *--own = 4 * i;
        }
    }
    *pairs = 0;
}

// W^k, W^2k and W^3k for a quarter of a turn.
constexpr int tripleFloats = 6;
void fillTriples(const SineTable& sines, int order, Kuv32f* table) {
    for (Kuv64s k = 0; k <= Kuv64s{1} << (order - 2); ++k) {
        for (int power = 1; power <= 3; ++power) {
            const Complex root = sines.root(power * k, order);
            *table++ = root.re;
            *table++ = root.im;
        }
    }
}

// ---- Bit reversal

template <class Move>
KUV_INLINE void reverseBits(const Kuv32s* table, int order, Move move) {
    const ptrdiff_t half = ptrdiff_t{1} << (order - 1);
    const auto ownPair = [&](ptrdiff_t i) {
        move(i, i);
        move(half + i, i + 1);
        move(half + i + 1, half + i + 1);
    };
    ownPair(0);
    for (; *table != 0; table += 2) {
        const ptrdiff_t i = table[0] / 2, j = table[1] / 2;
        move(i, j);
        move(half + i, j + 1);
        move(i + 1, half + j);
        move(half + i + 1, half + j + 1);
    }
    for (++table; *table != 0; ++table) ownPair(*table / 2);
}

template <int step>
void reverseBits(const Kuv32s* table, int order, const Kuv32f* src, Kuv32f* dst) {
    reverseBits(table, order, [&](ptrdiff_t i, ptrdiff_t j) {
        const Kuv32f a = loadSample(src + step * i), b = loadSample(src + step * j);
        storeSample(dst + step * j, a);
        storeSample(dst + step * i, b);
    });
}

// ---- Passes

// Four transforms of `span` points become one. The second and third of them are exchanged, as bit reversal leaves them.
template <int step>
KUV_INLINE void join(Points<step> points, ptrdiff_t span, Complex x0, Complex x2, Complex x1, Complex x3) {
    transform4(x0.re, x0.im, x1.re, x1.im, x2.re, x2.im, x3.re, x3.im);
    points.set(0, x0);
    points.set(span, x1);
    points.set(2 * span, x2);
    points.set(3 * span, x3);
}

KUV_INLINE Complex quarterTurn(Complex root) { return {root.im, -root.re}; }

// Two transforms of `span` points become one. Roots of a quarter of a turn stand `advance` apart.
template <int step>
KUV_INLINE void joinTwo(Points<step> points, ptrdiff_t span, const Kuv32f* roots, ptrdiff_t advance) {
    const ptrdiff_t half = span / 2;
    for (ptrdiff_t k = 0; k < span; ++k) {
        const Complex root = k < half ? complexAt(roots + advance * k) : quarterTurn(complexAt(roots + advance * (k - half)));
        const Complex even = points[k], odd = points[span + k] * root;
        points.set(k, even + odd);
        points.set(span + k, even - odd);
    }
}

// The whole of a transform that fits the cache, of bit-reversed values; `triples` are those of its order.
template <int step>
void leafTransform(Points<step> points, int order, const Kuv32f* triples) {
    const ptrdiff_t count = ptrdiff_t{1} << order;
    for (ptrdiff_t i = 0; i < count; i += 4) {
        const Points<step> four = points.from(i);
        join(four, 1, four[0], four[1], four[2], four[3]);
    }
    ptrdiff_t span = 4;
    for (; 4 * span <= count; span *= 4) {
        const ptrdiff_t advance = count / (4 * span) * tripleFloats;
        for (ptrdiff_t i = 0; i < count; i += 4 * span) {
            const Points<step> first = points.from(i);
            join(first, span, first[0], first[span], first[2 * span], first[3 * span]);
            for (ptrdiff_t k = 1; k < span; ++k) {
                const Points<step> at = first.from(k);
                const Kuv32f* const roots = triples + advance * k;
                join(at, span, at[0], at[span] * complexAt(roots + 2), at[2 * span] * complexAt(roots),
                     at[3 * span] * complexAt(roots + 4));
            }
        }
    }
    if (span < count) joinTwo(points, span, triples, tripleFloats);
}

template <int step>
void scalePoints(Points<step> points, ptrdiff_t count, Kuv32f scale) {
    for (ptrdiff_t i = 0; i < count; ++i) points.set(i, {points[i].re * scale, points[i].im * scale});
}

// Leaves, and passes of radix 2 that join them.
template <int step>
void joinedTransform(const void* record, Points<step> points, int order, bool scales) {
    const ptrdiff_t count = ptrdiff_t{1} << order, leafCount = ptrdiff_t{1} << leafOrder;
    const Kuv32f* const triples = planTable<Kuv32f>(record, fft::twiddles);
    const Kuv32f* const roots = planTable<Kuv32f>(record, fft::longTwiddles);
    for (ptrdiff_t i = 0; i < count; i += leafCount) {
        leafTransform(points.from(i), leafOrder, triples);
        if (scales) scalePoints(points.from(i), leafCount, planScale(record));
    }
    for (ptrdiff_t span = leafCount; span < count; span *= 2) {
        for (ptrdiff_t i = 0; i < count; i += 2 * span) joinTwo(points.from(i), span, roots, count / span);
    }
}

template <int step>
void transformReversed(const void* record, Points<step> points, int order, int level, bool scales, Kuv32f* work);

// Rows, twiddle factors between them, and columns, four of them at a time.
template <int step>
void splitTransform(const void* record, Points<step> points, int order, int level, bool scales, Kuv32f* work) {
    const int columns = columnOrder(order), rows = order - columns;
    const ptrdiff_t side = ptrdiff_t{1} << columns, row = ptrdiff_t{1} << rows;
    for (ptrdiff_t i = 0; i < side; ++i) transformReversed(record, points.from(row * i), rows, level + 1, scales, work);
    const Kuv32f* const triples = planTable<Kuv32f>(record, fft::columnTwiddles + 4 * level);
    const Kuv32f* twiddles = planTable<Kuv32f>(record, fft::splitTwiddles + 4 * level);
    for (ptrdiff_t c = 0; c < row; c += 4) {
        for (ptrdiff_t j = 0; j < side; ++j) {
            for (ptrdiff_t t = 0; t < 4; ++t, twiddles += 2)
                pairsAt(work + 2 * side * t).set(j, points[row * j + c + t] * complexAt(twiddles));
        }
        for (ptrdiff_t t = 0; t < 4; ++t) leafTransform(pairsAt(work + 2 * side * t), columns, triples);
        for (ptrdiff_t j = 0; j < side; ++j) {
            for (ptrdiff_t t = 0; t < 4; ++t) points.set(row * j + c + t, pairsAt(work + 2 * side * t)[j]);
        }
    }
}

// Of values that are bit-reversed already.
template <int step>
void transformReversed(const void* record, Points<step> points, int order, int level, bool scales, Kuv32f* work) {
    if (columnOrder(order) > 0) return splitTransform(record, points, order, level, scales, work);
    if (order > leafOrder) return joinedTransform(record, points, order, scales);
    leafTransform(points, order, planTable<Kuv32f>(record, fft::twiddles));
    if (scales) scalePoints(points, ptrdiff_t{1} << order, planScale(record));
}

template <bool scales>
void transform32(Planes src, Planes dst, Kuv32f scale) {
    static constexpr Roots<32> roots = rootsOf<32>();
    Kuv32f re[2][16], im[2][16];
    for (int i = 0; i < 32; ++i) {
        const Complex value = src[i];
        re[i % 2][i / 2] = scales ? value.re * scale : value.re;
        im[i % 2][i / 2] = scales ? value.im * scale : value.im;
    }
    transform<16, 1>(re[0], im[0]);
    transform<16, 1>(re[1], im[1]);
    for (int k = 0; k < 16; ++k) {
        const Complex even = {re[0][k], im[0][k]}, odd = Complex{re[1][k], im[1][k]} * roots.of[k];
        dst.set(k, even + odd);
        dst.set(k + 16, even - odd);
    }
}

// With a scale where `scales` says so: a chirp's transforms have none.
template <int step>
void runPowerOfTwo(const void* record, Points<step> src, Points<step> dst, bool scales, Kuv32f* work) {
    const int order = static_cast<int>(planWord(record, fft::order));
    if constexpr (step == 1) {
        if (order == tableFreeOrder) return (scales ? transform32<true> : transform32<false>)(src, dst, planScale(record));
    }
    const Kuv32s* const reversal = planTable<Kuv32s>(record, fft::bitReverseTable);
    reverseBits<step>(reversal, order, src.re, dst.re);
    reverseBits<step>(reversal, order, src.im, dst.im);
    transformReversed(record, dst, order, 0, scales, work);
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
