// Lengths that are not powers of two, sample by sample: mixed radices, primes by the definition, and chirps.
#pragma once

#include "transform/dft_fixed.hpp"
#include "transform/dft_scalar_fft.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// An odd length, by the sums and differences of each pair x[n], x[length - n], which are rounded to single precision; their
// products with the roots of unity, `roots`, are added up in double precision. `folded` holds four values for each pair.
template <class Get, class Set>
KUV_INLINE void transformOdd(ptrdiff_t length, const Kuv32f* roots, Kuv32f* folded, Get get, Set set) {
    const Complex first = get(0);
    Kuv64f totalRe = first.re, totalIm = first.im;
    for (ptrdiff_t n = 1; n <= length / 2; ++n) {
        const Complex low = get(n), high = get(length - n), sum = low + high, difference = low - high;
        Kuv32f* const at = folded + 4 * (n - 1);
        at[0] = sum.re;
        at[1] = sum.im;
        at[2] = difference.re;
        at[3] = difference.im;
        totalRe += sum.re;
        totalIm += sum.im;
    }
    set(0, {static_cast<Kuv32f>(totalRe), static_cast<Kuv32f>(totalIm)});
    for (ptrdiff_t k = 1; k <= length / 2; ++k) {
        Kuv64f evenRe = first.re, evenIm = first.im, oddRe = 0, oddIm = 0;
        const Kuv32f* at = folded;
        for (ptrdiff_t n = 0, index = k; n < length / 2; ++n, at += 4) {
            const Kuv64f cosine = roots[2 * index], sine = roots[2 * index + 1];
            evenRe += at[0] * cosine;
            evenIm += at[1] * cosine;
            oddRe += at[2] * sine;
            oddIm += at[3] * sine;
            index += k;
            if (index >= length) index -= length;
        }
        set(k, {static_cast<Kuv32f>(evenRe - oddIm), static_cast<Kuv32f>(evenIm + oddRe)});
        set(length - k, {static_cast<Kuv32f>(evenRe + oddIm), static_cast<Kuv32f>(evenIm - oddRe)});
    }
}

// A run of a mixed-radix plan. The work area holds pairs, and behind them what the odd radices fold.
template <int step>
struct MixedRadixRun {
    const void* record;
    Points<step> src, dst;
    Kuv32f* work;
    Kuv32f* folded;

    struct Stage {
        ptrdiff_t radix, remaining, stride, groupCount;
        const Kuv32f* roots;
        const Kuv32f* twiddles;
    };
    Stage stage(int k) const {
        const int at = plan::stages + stage::bytes * k;
        const auto word = [&](int field) { return planWord(record, at + field); };
        return {word(stage::radix),
                word(stage::remaining),
                word(stage::stride),
                word(stage::groupCount),
                planTable<Kuv32f>(record, at + stage::radixTable),
                planTable<Kuv32f>(record, at + stage::twiddles)};
    }
    int lastStage() const { return static_cast<int>(planWord(record, plan::lastStage)); }
    Pairs workAt(ptrdiff_t i) const { return pairsAt(work + 2 * i); }

    template <int radix, class Get, class Set>
    static KUV_INLINE void transformFixed(Get get, Set set) {
        Kuv32f re[radix], im[radix];
#pragma GCC unroll 5
        for (int i = 0; i < radix; ++i) {
            const Complex value = get(i);
            re[i] = value.re;
            im[i] = value.im;
        }
        transform<radix, 1>(re, im);
#pragma GCC unroll 5
        for (int i = 0; i < radix; ++i) set(i, {re[i], im[i]});
    }
    template <class Get, class Set>
    KUV_INLINE void transformRadix(ptrdiff_t radix, const Kuv32f* roots, Get get, Set set) const {
        switch (radix) {
            case 2: return transformFixed<2>(get, set);
            case 3: return transformFixed<3>(get, set);
            case 4: return transformFixed<4>(get, set);
            case 5: return transformFixed<5>(get, set);
            default: return transformOdd(radix, roots, folded, get, set);
        }
    }

    // Transforms of the remainder's length: each of a group's input samples once, the output contiguous.
    void firstPass(int last, ptrdiff_t in, ptrdiff_t out) const {
        const Stage at = stage(last);
        const Kuv32f* const roots = stage(last + 1).roots;
        const Kuv32s* const digits = planTable<Kuv32s>(record, plan::digitTable);
        for (ptrdiff_t j = 0; j < at.groupCount; ++j) {
            for (ptrdiff_t i = 0; i < at.radix; ++i, out += at.remaining) {
                const Points<step> from = src.from(in + digits[j] + i * at.stride);
                const Pairs to = workAt(out);
                transformRadix(
                    at.remaining, roots, [&](ptrdiff_t t) { return from[t * at.radix * at.stride]; },
                    [&](ptrdiff_t t, Complex value) { to.set(t, value); });
            }
        }
    }

    // A pass over `radix * remaining` points of the work area from `out` on; the outermost stage's goes to the destination.
    template <class Set>
    KUV_INLINE void pass(const Stage& at, ptrdiff_t out, Set set) const {
        const Pairs points = workAt(out);
        const Kuv32f* twiddles = at.twiddles;
        const bool keepsFirst = at.radix > highestOddKernel;
        for (ptrdiff_t j = 0; j < at.remaining; ++j) {
            const Kuv32f* const own = keepsFirst ? twiddles : twiddles - 2;
            transformRadix(
                at.radix, at.roots,
                [&](ptrdiff_t i) { return i == 0 ? points[j] : points[i * at.remaining + j] * complexAt(own + 2 * i); },
                [&](ptrdiff_t i, Complex value) { set(out + i * at.remaining + j, value); });
            twiddles += 2 * (keepsFirst ? at.radix : at.radix - 1);
        }
    }
    void pass(int k, ptrdiff_t out) const {
        const Stage at = stage(k);
        if (k == 0) pass(at, out, [&](ptrdiff_t i, Complex value) { dst.set(i, value); });
        else pass(at, out, [&](ptrdiff_t i, Complex value) { workAt(0).set(i, value); });
    }

    // Stages from `first` on, of inputs from `in` on. Groups that fit the cache are done pass by pass.
    void run(int first, ptrdiff_t in, ptrdiff_t out) const {
        const Stage at = stage(first);
        const int last = lastStage();
        if (at.radix * at.remaining > groupPoints && first != last) {
            for (ptrdiff_t i = 0; i < at.radix; ++i) run(first + 1, in + i * at.stride, out + i * at.remaining);
            pass(first, out);
            return;
        }
        firstPass(last, in, out);
        for (int k = last; k >= first; --k) {
            const Stage each = stage(k);
            for (ptrdiff_t j = 0; j < each.groupCount; ++j) pass(k, out + j * each.radix * each.remaining);
        }
    }
};

template <int step>
void runMixedRadixOf(const void* record, Points<step> src, Points<step> dst, Kuv32f* work) {
    const MixedRadixRun<step> run = {record, src, dst, work, work + roundedUp(2 * planWord(record, plan::length), 16)};
    run.run(0, 0, 0);
}

struct ScalarRuns {
    static KUV_INLINE void runFixed(int length, bool scales, Planes src, Planes dst, Kuv32f scale) {
        fixedOf(length, scales, src, dst, scale);
    }
    static void runFft(const void* record, Kuv32f* srcRe, Kuv32f* srcIm, Kuv32f* dstRe, Kuv32f* dstIm, bool scales,
                       Kuv32f* work) {
        runPowerOfTwo<1>(record, {srcRe, srcIm}, {dstRe, dstIm}, scales, work);
    }
    static void runMixedRadix(const void* record, Kuv32f* srcRe, Kuv32f* srcIm, Kuv32f* dstRe, Kuv32f* dstIm, Kuv32f* work) {
        runMixedRadixOf<1>(record, {srcRe, srcIm}, {dstRe, dstIm}, work);
    }

    static void runDirect(const void* record, Kuv32f* srcRe, Kuv32f* srcIm, Kuv32f* dstRe, Kuv32f* dstIm, Kuv32f* work) {
        const Planes src = {srcRe, srcIm}, dst = {dstRe, dstIm};
        transformOdd(
            planWord(record, plan::length), planTable<Kuv32f>(record, plan::directTwiddles), work,
            [&](ptrdiff_t n) { return src[n]; }, [&](ptrdiff_t k, Complex value) { dst.set(k, value); });
    }

    // The transform within a chirp's, in place, of pairs.
    static void runNested(const void* nested, Pairs points, Kuv32f* work) {
        if (planWord(nested, plan::usesFft))
            runPowerOfTwo(planTable<char>(nested, plan::fftPlan), points, points, false, work);
        else runMixedRadixOf(nested, points, points, work);
    }

    static void runChirp(const void* record, Kuv32f* srcRe, Kuv32f* srcIm, Kuv32f* dstRe, Kuv32f* dstIm, Kuv32f* buffer) {
        const Planes src = {srcRe, srcIm}, dst = {dstRe, dstIm};
        const ptrdiff_t length = planWord(record, plan::length), points = planWord(record, plan::chirpLength);
        const Kuv32f* const chirp = planTable<Kuv32f>(record, plan::chirpTable);
        const Kuv32f* const spectrum = planTable<Kuv32f>(record, plan::chirpSpectrum);
        const void* const nested = planTable<char>(record, plan::chirpPlan);
        const Pairs work = pairsAt(buffer);
        for (ptrdiff_t k = 0; k < length; ++k) work.set(k, src[k] * complexAt(chirp + 2 * k));
        for (ptrdiff_t k = length; k < points; ++k) work.set(k, {0, 0});
        runNested(nested, work, buffer + 2 * points);
        for (ptrdiff_t k = 0; k < points; ++k) work.set(k, work[k] * complexAt(spectrum + 2 * k));
        runNested(nested, work.exchanged(), buffer + 2 * points);
        for (ptrdiff_t k = 0; k < length; ++k) dst.set(k, work[k] * complexAt(chirp + 2 * k));
    }
};

}  // namespace
}  // namespace kuv::KUV_VARIANT
