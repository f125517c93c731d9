// Which passes a transform consists of, and their twiddle factors in the order in which they are read.
#pragma once

#include "transform/dft_plan.hpp"
#include "transform/dft_vector_passes.hpp"

namespace kuv::KUV_VARIANT {
namespace {

using Wide = Native<Kuv32f>;
using Narrow = Vector<Kuv32f, 16>;

// A long transform is one of rows and one of columns, of which a tile's width is done at a time. Rows and what they are done with
// fit the second-level cache, and the work area, which is smallest in w7: that splits as its plan has it.
constexpr int longestRowOrder = 16;
constexpr int splitOrder(int order) {
    if (!hasSSSE3) return columnOrder(order);
    return order <= longestRowOrder ? 0 : order <= 18 ? 4 : order <= 20 ? order - 14 : 8;
}

constexpr int mostPasses = 31, mostRadix = 2 * mostPairs + 1;
// The radices of passes, the first one first, and 0 behind them.
struct Schedule {
    Kuv8u radices[mostPasses + 1] = {};
    int count = 0;

    constexpr void add(int radix) { radices[count++] = static_cast<Kuv8u>(radix); }
    constexpr void addPowerOfTwo(int order) {
        for (; order >= 5 || order == 3; order -= 3) add(8);
        for (; order >= 2; order -= 2) add(4);
        if (order > 0) add(2);
    }
};

constexpr Schedule scheduleOf(int order) {
    Schedule schedule;
    if (order == 7) {  // never one of columns
        schedule.add(16);
        order = 3;
    }
    schedule.addPowerOfTwo(order);
    return schedule;
}

struct Schedules {
    Schedule of[longestRowOrder + 1];
};
constexpr Schedules makeSchedules() {
    Schedules schedules;
    for (int order = 0; order <= longestRowOrder; ++order) schedules.of[order] = scheduleOf(order);
    return schedules;
}
KUV_INLINE const Kuv8u* radicesOf(int order) {
    static constexpr Schedules schedules = makeSchedules();
    return schedules.of[order].radices;
}

// The first pass leaves transforms side by side, as many as its radix: the more of them, the wider the vectors of the second.
constexpr Schedule scheduleOf(Kuv32s length, const Factors& factors) {
    Schedule schedule;
    int twos = 0, odd[24] = {}, count = 0;
    for (int i = 0; i <= factors.lastStage + 1; ++i) {
        int radix = factors.radices[i];
        for (; radix % 2 == 0; radix /= 2) ++twos;
        if (radix > 1) odd[count++] = radix;
    }
    const auto take = [&](int radix) {
        for (int i = 0; i < count; ++i) {
            if (odd[i] != radix) continue;
            odd[i] = odd[--count];
            return true;
        }
        return false;
    };
    if (twos == 4) {
        schedule.add(8);
        twos = 1;
    }
    if (twos == 2 && take(3)) schedule.add(12);
    else if (twos == 1) schedule.add(take(7) ? 14 : take(5) ? 10 : take(3) ? 6 : 2);
    else schedule.addPowerOfTwo(twos);
    // The rest by size, but where there is no even radix the largest that has a kernel of its own goes first.
    const bool even = length % 2 == 0;
    for (int radix = highestOddKernel; !even && radix > 1; radix -= 2) {
        if (!take(radix)) continue;
        schedule.add(radix);
        break;
    }
    for (int radix = 3; radix < mostRadix; radix += 2) {
        while (take(radix)) schedule.add(radix);
    }
    return schedule;
}

// The lanes of a first pass across; 0: it goes along, as all others do.
constexpr ptrdiff_t lanesAcross(int radix, ptrdiff_t count) {
    if (radix > 16) return 0;
    return count >= Wide::lanes ? Wide::lanes : count >= Narrow::lanes ? Narrow::lanes : 0;
}

// All twiddle factors of the passes of `length` values, `stride` transforms side by side; root(k) is exp(-2 pi i k / length). A last pass
// has none.
template <class GetRoot>
constexpr void fillTwiddles(const Schedule& schedule, ptrdiff_t length, ptrdiff_t stride, Kuv32f* table, GetRoot root) {
    ptrdiff_t count = length, step = 1;
    for (int i = 0; i < schedule.count; ++i) {
        const ptrdiff_t radix = schedule.radices[i];
        count /= radix;
        if (count == 1) break;
        const ptrdiff_t lanes = step * stride == 1 ? lanesAcross(static_cast<int>(radix), count) : 0;
        const ptrdiff_t block = lanes == 0 ? 1 : lanes == Wide::lanes && count % lanes == 0 ? lanes : count;
        for (ptrdiff_t first = 0; first < count; first += block) {
            for (ptrdiff_t j = 1; j < radix; ++j) {
                for (ptrdiff_t p = first; p < first + block; ++p) {
                    const Complex twiddle = root(p * j * step);
                    table[p - first] = twiddle.re;
                    table[p - first + block] = twiddle.im;
                }
                table += 2 * block;
            }
        }
        step *= radix;
    }
}

// Not where two vectors would overlap by half.
constexpr bool suitsWide(ptrdiff_t stride) { return stride % Wide::lanes == 0 || stride >= 3 * Wide::lanes; }

template <int radix>
KUV_INLINE void passOf(Planes src, Planes dst, ptrdiff_t count, ptrdiff_t stride, const Kuv32f* twiddles) {
    if (count == 1) {
        if (suitsWide(stride)) passAlong<radix, Wide, false>(src, dst, 1, stride, twiddles);
        else if (stride >= Narrow::lanes) passAlong<radix, Narrow, false>(src, dst, 1, stride, twiddles);
        else passAlong<radix, Kuv32f, false>(src, dst, 1, stride, twiddles);
    } else if (stride == 1 && count >= Narrow::lanes) {
        if (count < Wide::lanes) passAcross<radix, Narrow, false>(src, dst, count, twiddles);
        else if (count % Wide::lanes == 0) passAcross<radix, Wide, true>(src, dst, count, twiddles);
        else passAcross<radix, Wide, false>(src, dst, count, twiddles);
    } else {
        if (suitsWide(stride)) passAlong<radix, Wide, true>(src, dst, count, stride, twiddles);
        else if (stride >= Narrow::lanes) passAlong<radix, Narrow, true>(src, dst, count, stride, twiddles);
        else passAlong<radix, Kuv32f, true>(src, dst, count, stride, twiddles);
    }
}

// Functions that are not inlined take pointers: GCC copies a structure that it was passed by a wide load right after narrow
// stores, which waits until these have reached the cache. Of the passes each has its own, as have short transforms: they share no
// registers.
template <int radix>
__attribute__((noinline)) void runPassApart(Kuv32f* srcRe, Kuv32f* srcIm, Kuv32f* dstRe, Kuv32f* dstIm, ptrdiff_t count,
                                            ptrdiff_t stride, const Kuv32f* twiddles) {
    passOf<radix>({srcRe, srcIm}, {dstRe, dstIm}, count, stride, twiddles);
}
template <int radix>
KUV_INLINE void runPass(Planes src, Planes dst, ptrdiff_t count, ptrdiff_t stride, const Kuv32f* twiddles) {
    runPassApart<radix>(src.re, src.im, dst.re, dst.im, count, stride, twiddles);
}

KUV_INLINE void runPass(int radix, Planes src, Planes dst, ptrdiff_t count, ptrdiff_t stride, const Kuv32f* twiddles,
                        const Kuv32f* roots) {
    switch (radix) {
        case 2: return runPass<2>(src, dst, count, stride, twiddles);
        case 3: return runPass<3>(src, dst, count, stride, twiddles);
        case 4: return runPass<4>(src, dst, count, stride, twiddles);
        case 5: return runPass<5>(src, dst, count, stride, twiddles);
        case 6: return runPass<6>(src, dst, count, stride, twiddles);
        case 7: return runPass<7>(src, dst, count, stride, twiddles);
        case 8: return runPass<8>(src, dst, count, stride, twiddles);
        case 10: return runPass<10>(src, dst, count, stride, twiddles);
        case 11: return runPass<11>(src, dst, count, stride, twiddles);
        case 12: return runPass<12>(src, dst, count, stride, twiddles);
        case 13: return runPass<13>(src, dst, count, stride, twiddles);
        case 14: return runPass<14>(src, dst, count, stride, twiddles);
        default: break;
    }
    if (stride >= Wide::lanes) passOdd<Wide>(src.re, src.im, dst.re, dst.im, radix, count, stride, twiddles, roots);
    else if (stride >= Narrow::lanes) passOdd<Narrow>(src.re, src.im, dst.re, dst.im, radix, count, stride, twiddles, roots);
    else passOdd<Kuv32f>(src.re, src.im, dst.re, dst.im, radix, count, stride, twiddles, roots);
}

// Passes of long powers of two go in pairs, where both have one of the usual radices.
constexpr ptrdiff_t leastPaired = 2048;
KUV_INLINE bool goInPairs(const Kuv8u* radices, ptrdiff_t length) {
    return length >= leastPaired && isPowerOfTwo(static_cast<Kuv32s>(length)) && radices[1] != 0;
}

template <int radix, int second>
__attribute__((noinline)) void runPair(Kuv32f* srcRe, Kuv32f* srcIm, Kuv32f* dstRe, Kuv32f* dstIm, ptrdiff_t count,
                                       ptrdiff_t stride, const Kuv32f* twiddles, const Kuv32f* secondTwiddles) {
    const Planes src = {srcRe, srcIm}, dst = {dstRe, dstIm};
    if (stride == 1) passPairAcross<radix, second, Wide>(src, dst, count, twiddles, secondTwiddles);
    else if (count > 1) passPairAlong<radix, second, Wide, true>(src, dst, count, stride, twiddles, secondTwiddles);
    else passPairAlong<radix, second, Wide, false>(src, dst, 1, stride, twiddles, secondTwiddles);
}

KUV_INLINE bool sharePlane(Planes a, Planes b) { return a.re == b.re || a.im == b.im || a.re == b.im || a.im == b.re; }

KUV_INLINE void copyPlanes(Planes src, Planes dst, ptrdiff_t count) {
    __builtin_memcpy(dst.re, src.re, static_cast<size_t>(count) * sizeof(Kuv32f));
    __builtin_memcpy(dst.im, src.im, static_cast<size_t>(count) * sizeof(Kuv32f));
}

// Passes from `src`, which may be `dst`, to `dst`. `work` may be `src` if that is not `dst`. Of powers of two the last pass can
// be in place: it takes values from where it puts them. rootsOf(radix) gives the table of a radix that needs one.
template <class RootsOf>
KUV_INLINE void runPasses(const Kuv8u* radices, ptrdiff_t length, ptrdiff_t stride, const Kuv32f* twiddles, Planes src, Planes dst,
                          Planes work, RootsOf rootsOf) {
    const bool endsInPlace = isPowerOfTwo(static_cast<Kuv32s>(length));
    const bool shared = sharePlane(src, dst);
    bool toDst = !shared;
    if (!endsInPlace) {
        toDst = false;
        for (const Kuv8u* each = radices; *each != 0; ++each) toDst = !toDst;
        if (toDst && shared) {
            copyPlanes(src, work, length * stride);
            src = work;
        }
    }
    for (ptrdiff_t count = length; *radices != 0; toDst = !toDst) {
        const int radix = *radices;
        const bool paired = goInPairs(radices, length);
        toDst = toDst || radices[paired ? 2 : 1] == 0;
        const Planes to = {toDst ? dst.re : work.re, toDst ? dst.im : work.im};
        count = static_cast<Kuv32u>(count) / static_cast<Kuv32u>(radix);
        const Kuv32f* const next = twiddles + 2 * (radix - 1) * count;
        if (paired) {
            const int second = radices[1];
            count /= second == 4 ? 4 : 8;
            (radix == 4    ? runPair<4, 4>
             : second == 4 ? runPair<8, 4>
                           : runPair<8, 8>)(src.re, src.im, to.re, to.im, count, stride, twiddles, next);
            twiddles = next + 2 * (second - 1) * count;
            stride *= radix * second;
            radices += 2;
        } else {
            runPass(radix, src, to, count, stride, twiddles, rootsOf(radix));
            twiddles = next;
            stride *= radix;
            ++radices;
        }
        src = to;
    }
}

// Passes of a power of two that are known when the code is compiled: for what takes but a few of them. The first goes to `to`.
template <int length, int stride, int radix, int... others>
KUV_INLINE void passesOf(Planes src, Planes dst, Planes to, Planes next, const Kuv32f* twiddles) {
    constexpr int count = length / stride / radix;
    if constexpr (sizeof...(others) == 0) {
        passOf<radix>(src, dst, 1, stride, twiddles);
    } else {
        passOf<radix>(src, to, count, stride, twiddles);
        passesOf<length, stride * radix, others...>(to, dst, next, to, twiddles + 2 * (radix - 1) * count);
    }
}
template <int... radices>
__attribute__((noinline)) void runShort(const Kuv32f* twiddles, Kuv32f* srcRe, Kuv32f* srcIm, Kuv32f* dstRe, Kuv32f* dstIm,
                                        Kuv32f* workRe, Kuv32f* workIm) {
    const Planes src = {srcRe, srcIm}, dst = {dstRe, dstIm};
    const bool shared = sharePlane(src, dst);
    const Planes to = {shared ? workRe : dstRe, shared ? workIm : dstIm},
                 next = {shared ? dstRe : workRe, shared ? dstIm : workIm};
    passesOf<(radices * ...), 1, radices...>(src, dst, to, next, twiddles);
}

constexpr auto noRoots = [](int) -> const Kuv32f* { return nullptr; };

}  // namespace
}  // namespace kuv::KUV_VARIANT
