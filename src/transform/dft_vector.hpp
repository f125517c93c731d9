// Runs of plans by vectors. All work on planes, those within a chirp too.
#pragma once

#include "core/integers.hpp"
#include "transform/dft_fixed.hpp"
#include "transform/dft_vector_schedule.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// ---- Powers of two

// Up to 64 values: two passes, whose twiddle factors stand in the code.
template <int first, int second>
struct FixedTwiddles {
    Kuv32f of[2 * (first - 1) * second];
};
template <int first, int second>
constexpr FixedTwiddles<first, second> makeFixedTwiddles() {
    FixedTwiddles<first, second> twiddles = {};
    Schedule schedule;
    schedule.add(first);
    schedule.add(second);
    fillTwiddles(schedule, first * second, 1, twiddles.of, [](ptrdiff_t k) { return rootOfUnity(k, first * second); });
    return twiddles;
}
template <int first, int second>
__attribute__((noinline)) void transformShort(Kuv32f* srcRe, Kuv32f* srcIm, Kuv32f* dstRe, Kuv32f* dstIm) {
    const Planes src = {srcRe, srcIm}, dst = {dstRe, dstIm};
    static constexpr FixedTwiddles<first, second> twiddles = makeFixedTwiddles<first, second>();
    Kuv32f between[2 * first * second];
    const Planes work = planesAt(between, first * second);
    passesOf<first * second, 1, first, second>(src, dst, work, work, twiddles.of);
}

// Twiddle factors between rows and columns are products: of those of columns within a block, and those of blocks.
constexpr int twiddleBlockOrder(int columns) { return columns <= 4 ? 7 : 6; }

struct Split {
    int columns, rows, block;
    ptrdiff_t side, row, blockSize;

    explicit KUV_INLINE Split(int order)
        : columns(splitOrder(order)),
          rows(order - columns),
          block(twiddleBlockOrder(columns)),
          side(ptrdiff_t{1} << columns),
          row(ptrdiff_t{1} << rows),
          blockSize(ptrdiff_t{1} << block) {}
};

// Rows of `side` values become columns: value (i, j) goes to `dst[j * step + i]`. `count` is a multiple of `tile`, `side` of 4.
void transposeRows(const Kuv32f* src, ptrdiff_t count, ptrdiff_t side, Kuv32f* dst, ptrdiff_t step) {
    for (ptrdiff_t first = 0; first < count; first += tile) {
        for (ptrdiff_t j = 0; j < side; j += 4) {
#pragma GCC unroll 4
            for (ptrdiff_t i = first; i < first + tile; i += 4) {
                Narrow v[4];
#pragma GCC unroll 4
                for (int k = 0; k < 4; ++k) v[k] = load<Narrow>(src + (i + k) * side + j);
                transposeFours(v);
#pragma GCC unroll 4
                for (int k = 0; k < 4; ++k) store(dst + (j + k) * step + i, v[k]);
            }
        }
    }
}

// The same with all rows of a plane, in place: parts that fit `work` first, whose pieces then change places.
void transposeInPlace(Kuv32f* plane, const Split& split, int order, Kuv32f* work, int workOrder) {
    const int partOrder = smaller(workOrder, split.rows), parts = order - partOrder;
    const ptrdiff_t part = ptrdiff_t{1} << partOrder, piece = part / split.side, pieces = ptrdiff_t{1} << (parts + split.columns);
    const size_t pieceBytes = static_cast<size_t>(piece) * sizeof(Kuv32f);
    for (ptrdiff_t i = 0; i < ptrdiff_t{1} << parts; ++i) {
        transposeRows(plane + part * i, piece, split.side, work, piece);
        __builtin_memcpy(plane + part * i, work, static_cast<size_t>(part) * sizeof(Kuv32f));
    }
    // A piece's number is that of its part, then that of its column; these two change places.
    const auto target = [&](ptrdiff_t i) { return (i >> split.columns) | ((i & (split.side - 1)) << parts); };
    for (ptrdiff_t i = 0; i < pieces; ++i) {
        ptrdiff_t next = target(i);
        while (next > i) next = target(next);
        if (next < i || target(i) == i) continue;  // moved with the first of its cycle
        __builtin_memcpy(work, plane + piece * i, pieceBytes);
        for (next = target(i); next != i; next = target(next)) {
            __builtin_memcpy(work + piece, plane + piece * next, pieceBytes);
            __builtin_memcpy(plane + piece * next, work, pieceBytes);
            __builtin_memcpy(work, work + piece, pieceBytes);
        }
        __builtin_memcpy(plane + piece * i, work, pieceBytes);
    }
}

// Transforms of columns, `tile` of them at a time, times the twiddle factors between rows and columns.
void transformColumns(const void* record, Planes points, const Split& split, int level, Kuv32f* work) {
    const Kuv32f* const fine = planTable<Kuv32f>(record, fft::splitTwiddles + 4 * level);
    const Kuv32f* coarse = fine + 2 * split.side * split.blockSize;
    const Kuv32f* const twiddles = planTable<Kuv32f>(record, fft::columnTwiddles + 4 * level);
    const ptrdiff_t count = split.side * tile;
    const Planes first = planesAt(work, count), second = planesAt(work + 2 * count, count);
    const Kuv8u* const radices = radicesOf(split.columns);
    for (ptrdiff_t c = 0; c < split.row; c += tile) {
        const Kuv32f* const blockTwiddles = coarse + (c >> split.block) * 2 * split.side;
        const Kuv32f* column = fine + (c & (split.blockSize - 1));
        for (ptrdiff_t j = 0; j < split.side; ++j, column += 2 * split.blockSize) {
            const Wide blockRe = fill<Wide>(blockTwiddles[2 * j]), blockIm = fill<Wide>(blockTwiddles[2 * j + 1]);
            const Planes from = points.from(j * split.row + c), to = first.from(j * tile);
#pragma GCC unroll 4
            for (int i = 0; i < tile; i += Wide::lanes) {
                Wide factorRe = load<Wide>(column + i), factorIm = load<Wide>(column + split.blockSize + i);
                multiplyBy(factorRe, factorIm, blockRe, blockIm);
                Wide re = load<Wide>(from.re + i), im = load<Wide>(from.im + i);
                multiplyBy(re, im, factorRe, factorIm);
                store(to.re + i, re);
                store(to.im + i, im);
            }
        }
        runPasses(radices, split.side, tile, twiddles, first, second, first, noRoots);
        for (ptrdiff_t j = 0; j < split.side; ++j) {
            const Planes to = points.from(j * split.row + c);
#pragma GCC unroll 4
            for (int i = 0; i < tile; i += Wide::lanes) {
                store(to.re + i, load<Wide>(second.re + j * tile + i));
                store(to.im + i, load<Wide>(second.im + j * tile + i));
            }
        }
    }
}

KUV_INLINE void transformRow(const void* record, int order, Planes src, Planes dst, Planes work) {
    const Kuv32f* const twiddles = planTable<Kuv32f>(record, fft::twiddles);
    switch (order) {
        case 6: return runShort<8, 8>(twiddles, src.re, src.im, dst.re, dst.im, work.re, work.im);
        case 7: return runShort<16, 8>(twiddles, src.re, src.im, dst.re, dst.im, work.re, work.im);
        case 8: return runShort<8, 8, 4>(twiddles, src.re, src.im, dst.re, dst.im, work.re, work.im);
        case 9: return runShort<8, 8, 8>(twiddles, src.re, src.im, dst.re, dst.im, work.re, work.im);
        case 10: return runShort<8, 8, 4, 4>(twiddles, src.re, src.im, dst.re, dst.im, work.re, work.im);
        default: return runPasses(radicesOf(order), ptrdiff_t{1} << order, 1, twiddles, src, dst, work, noRoots);
    }
}

void transformFft(const void* record, Kuv32f* srcRe, Kuv32f* srcIm, Kuv32f* dstRe, Kuv32f* dstIm, int order, int level,
                  Kuv32f* work, int workOrder) {
    const Planes src = {srcRe, srcIm}, dst = {dstRe, dstIm};
    const ptrdiff_t count = ptrdiff_t{1} << order;
    if (splitOrder(order) == 0) {
        // Not a power of two apart, or they would be in each other's way in the cache. Of rows the work area has just the size.
        const Planes between = {work, work + count + (level == 0 ? 16 : 0)};
        transformRow(record, order, src, dst, between);
        return;
    }
    const Split split(order);
    const auto transpose = [&](const Kuv32f* from, Kuv32f* to) {
        if (from == to) transposeInPlace(to, split, order, work, workOrder);
        else transposeRows(from, split.row, split.side, to, split.row);
    };
    transpose(src.re, dst.re);
    transpose(src.im, dst.im);
    for (ptrdiff_t j = 0; j < split.side; ++j) {
        const Planes row = dst.from(j * split.row);
        transformFft(record, row.re, row.im, row.re, row.im, split.rows, level + 1, work, workOrder);
    }
    transformColumns(record, dst, split, level, work);
}

// A prime length p, by the sums and differences of each pair x[n], x[p - n]. Indices are powers of a primitive root g: then
// roots of unity depend on the sum of two exponents alone and are read side by side. Those below (p - 1) / 2 give one index of each
// pair.
constexpr Kuv32s longestDirect = 47, mostDirectPairs = (longestDirect - 1) / 2;
constexpr Kuv32s primitiveRoot(Kuv32s prime) {
    for (Kuv32s root = 2;; ++root) {
        Kuv32s order = 1;
        for (Kuv32s power = root; power != 1; power = power * root % prime) ++order;
        if (order == prime - 1) return root;
    }
}
struct Permutations {
    Kuv8u of[longestDirect + 1][mostDirectPairs];
};
constexpr Permutations makePermutations() {
    Permutations permutations = {};
    constexpr Kuv32s primes[] = {17, 19, 23, 29, 31, 37, 41, 43, longestDirect};
    for (const Kuv32s prime : primes) {
        const Kuv32s generator = primitiveRoot(prime);
        for (Kuv32s i = 0, index = 1; i < prime / 2; ++i, index = index * generator % prime) {
            permutations.of[prime][i] = static_cast<Kuv8u>(index);
        }
    }
    return permutations;
}

// Cosines, then sines, of the powers of the primitive root.
void fillDirectTwiddles(Kuv32s prime, const Complex* roots, Kuv32f* twiddles) {
    const Kuv32s generator = primitiveRoot(prime);
    for (Kuv32s i = 0, index = 1; i < prime - 1; ++i, index = index * generator % prime) {
        twiddles[i] = roots[index].re;
        twiddles[prime - 1 + i] = roots[index].im;
    }
}

// Products with planes of factors; the rest of a vector sample by sample.
KUV_INLINE void multiplyPlanes(Planes src, const Kuv32f* factors, ptrdiff_t plane, Planes dst, ptrdiff_t count) {
    constexpr ptrdiff_t lanes = Wide::lanes;
    const auto multiplyAt = [&](ptrdiff_t i, auto one) {
        using T = decltype(one);
        T re = LanesOf<T>::from(src.re + i), im = LanesOf<T>::from(src.im + i);
        multiplyBy(re, im, LanesOf<T>::from(factors + i), LanesOf<T>::from(factors + plane + i));
        LanesOf<T>::to(dst.re + i, re);
        LanesOf<T>::to(dst.im + i, im);
    };
    ptrdiff_t i = 0;
    for (; i + lanes <= count; i += lanes) multiplyAt(i, Wide{});
    for (; i < count; ++i) multiplyAt(i, Kuv32f{});
}

KUV_INLINE void clearPlanes(Planes points, ptrdiff_t first, ptrdiff_t count) {
    const size_t bytes = static_cast<size_t>(count - first) * sizeof(Kuv32f);
    __builtin_memset(points.re + first, 0, bytes);
    __builtin_memset(points.im + first, 0, bytes);
}

struct VectorRuns {
    static KUV_INLINE void runFixed(int length, bool scales, Planes src, Planes dst, Kuv32f scale) {
        if (length < 16 || scales) fixedOf(length, scales, src, dst, scale);
        else transformShort<4, 4>(src.re, src.im, dst.re, dst.im);
    }
    static __attribute__((noinline)) void runFft(const void* record, Kuv32f* srcRe, Kuv32f* srcIm, Kuv32f* dstRe, Kuv32f* dstIm,
                                                 bool scales, Kuv32f* work) {
        const Planes src = {srcRe, srcIm}, dst = {dstRe, dstIm};
        const int order = static_cast<int>(planWord(record, fft::order));
        if (order == 5) {
            transformShort<4, 8>(src.re, src.im, dst.re, dst.im);
        } else if (order == 6 && tableFreeOrder == 6) {
            transformShort<8, 8>(src.re, src.im, dst.re, dst.im);
        } else {
            const int workOrder = orderOf(static_cast<Kuv32s>(planWord(record, plan::workBytes) / 8));
            transformFft(record, srcRe, srcIm, dstRe, dstIm, order, 0, work, workOrder);
        }
        if (!scales) return;
        scaleBy(planScale(record), dst.re, ptrdiff_t{1} << order);
        scaleBy(planScale(record), dst.im, ptrdiff_t{1} << order);
    }

    // ---- Other lengths

    static __attribute__((noinline)) void runMixedRadix(const void* record, Kuv32f* srcRe, Kuv32f* srcIm, Kuv32f* dstRe,
                                                        Kuv32f* dstIm, Kuv32f* work) {
        const ptrdiff_t length = planWord(record, plan::length);
        const auto stageWord = [record](int k, int field) { return planWord(record, plan::stages + stage::bytes * k + field); };
        const auto rootsOf = [&](int radix) -> const Kuv32f* {
            if (!needsRadixTable(radix)) return nullptr;
            const int behind = static_cast<int>(planWord(record, plan::lastStage)) + 1;
            int k = 0;
            while (k < behind && stageWord(k, stage::radix) != radix) ++k;
            return planTable<Kuv32f>(record, plan::stages + stage::bytes * k + stage::radixTable);
        };
        runPasses(planTable<Kuv8u>(record, plan::digitTable), length, 1,
                  planTable<Kuv32f>(record, plan::stages + stage::twiddles), {srcRe, srcIm}, {dstRe, dstIm},
                  planesAt(work, length), rootsOf);
    }

    static __attribute__((noinline)) void runDirect(const void* record, Kuv32f* srcRe, Kuv32f* srcIm, Kuv32f* dstRe,
                                                    Kuv32f* dstIm, Kuv32f*) {
        const Planes src = {srcRe, srcIm}, dst = {dstRe, dstIm};
        static constexpr Permutations permutations = makePermutations();
        const ptrdiff_t length = planWord(record, plan::length), pairs = length / 2;
        const Kuv8u* const indices = permutations.of[length];
        const Kuv32f* const cosines = planTable<Kuv32f>(record, plan::directTwiddles);
        const Kuv32f* const sines = cosines + length - 1;
        Kuv32f folded[mostDirectPairs][4];
        const Complex first = src[0];
        Complex total = first;
        for (ptrdiff_t i = 0; i < pairs; ++i) {
            const Complex low = src[indices[i]], high = src[length - indices[i]];
            const Complex sum = low + high, difference = low - high;
            folded[i][0] = sum.re;
            folded[i][1] = sum.im;
            folded[i][2] = difference.re;
            folded[i][3] = difference.im;
            total = total + sum;
        }
        dst.set(0, total);
        Kuv32f results[4][mostDirectPairs + 1];
        for (ptrdiff_t k = 0;;) {
            Wide evenRe = fill<Wide>(first.re), evenIm = fill<Wide>(first.im), oddRe = fill<Wide>(0), oddIm = oddRe;
            for (ptrdiff_t i = 0; i < pairs; ++i) {
                const Wide cosine = load<Wide>(cosines + k + i), sine = load<Wide>(sines + k + i);
                evenRe = plusProduct(fill<Wide>(folded[i][0]), cosine, evenRe);
                evenIm = plusProduct(fill<Wide>(folded[i][1]), cosine, evenIm);
                oddRe = plusProduct(fill<Wide>(folded[i][2]), sine, oddRe);
                oddIm = plusProduct(fill<Wide>(folded[i][3]), sine, oddIm);
            }
            store(results[0] + k, evenRe - oddIm);
            store(results[1] + k, evenIm + oddRe);
            store(results[2] + k, evenRe + oddIm);
            store(results[3] + k, evenIm - oddRe);
            if (k + Wide::lanes >= pairs) break;
            k = k + 2 * Wide::lanes <= pairs ? k + Wide::lanes : pairs - Wide::lanes;
        }
        for (ptrdiff_t i = 0; i < pairs; ++i) {
            dst.set(indices[i], {results[0][i], results[1][i]});
            dst.set(length - indices[i], {results[2][i], results[3][i]});
        }
    }

    // ---- Chirps

    // The transform within a chirp's, in place.
    static void runNested(const void* nested, Planes points, Kuv32f* work) {
        if (planWord(nested, plan::usesFft)) {
            const void* const fftPlan = planTable<char>(nested, plan::fftPlan);
            runFft(fftPlan, points.re, points.im, points.re, points.im, false, work);
        } else {
            runMixedRadix(nested, points.re, points.im, points.re, points.im, work);
        }
    }

    static __attribute__((noinline)) void runChirp(const void* record, Kuv32f* srcRe, Kuv32f* srcIm, Kuv32f* dstRe, Kuv32f* dstIm,
                                                   Kuv32f* buffer) {
        const ptrdiff_t length = planWord(record, plan::length), points = planWord(record, plan::chirpLength);
        const Kuv32f* const chirp = planTable<Kuv32f>(record, plan::chirpTable);
        const void* const nested = planTable<char>(record, plan::chirpPlan);
        const Planes work = planesAt(buffer, points);
        multiplyPlanes({srcRe, srcIm}, chirp, length, work, length);
        clearPlanes(work, length, points);
        runNested(nested, work, buffer + 2 * points);
        multiplyPlanes(work, planTable<Kuv32f>(record, plan::chirpSpectrum), points, work, points);
        runNested(nested, work.exchanged(), buffer + 2 * points);
        multiplyPlanes(work, chirp, length, {dstRe, dstIm}, length);
    }
};

}  // namespace
}  // namespace kuv::KUV_VARIANT
