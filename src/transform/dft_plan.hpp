// The plan of a Fourier transform: the places of its words, and how a length is taken apart.
#pragma once

#include "core/record.hpp"
#include "core/rows.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// Offsets in bytes. What is described as a table or a plan is its distance from the record. Programs read these words; those that nothing
// here reads, as hint and scaleInverse, are kept for them.
namespace plan {
constexpr int id = 0, length = 4, scaleForward = 8, scaleInverse = 12, scaleValue = 16, hint = 20, workBytes = 24, usesFft = 28,
              chirpLength = 44, directTwiddles = 48, chirpTable = 60, chirpSpectrum = 64, fftPlan = 68, chirpPlan = 72,
              usesMixedRadix = 76, lastStage = 80, digitTable = 84, stages = 88, bytes = 572;
}  // namespace plan

namespace stage {
constexpr int radix = 0, remaining = 4, stride = 8, groupCount = 12, radixTable = 16, twiddles = 20, bytes = 24;
}  // namespace stage

// The plan of a power of two; its words up to workBytes stand as in the other, with the order in place of the length.
namespace fft {
constexpr int order = 4, bitReverseTable = 40, twiddles = 44, longTwiddles = 48, columnTwiddles = 64, splitTwiddles = 76, bytes = 88;
}  // namespace fft

constexpr Kuv32s splitIdentity = 14, interleavedIdentity = 13, splitFftIdentity = 5, interleavedFftIdentity = 4;
constexpr Kuv32s longestFixed = 16, longestFactored = 0x7ffffff, longestChirp = 0x3ffffff, groupPoints = 2000;

constexpr Kuv32s highestRadix = hasVectors ? 50 : 75;
constexpr Kuv32s highestRemainder(Kuv32s length) { return hasVectors && length % 4 == 0 ? 150 : highestRadix; }

constexpr bool isDftFlag(Kuv32s flag) {
    return flag == kuvDftScaleForward || flag == kuvDftScaleInverse || flag == kuvDftScaleBoth || flag == kuvDftScaleNone;
}
constexpr bool isPowerOfTwo(Kuv32s length) { return (length & (length - 1)) == 0; }
constexpr int orderOf(Kuv32s length) { return 31 - __builtin_clz(static_cast<unsigned>(length)); }

KUV_INLINE ptrdiff_t planWord(const void* record, int word) { return static_cast<Kuv32s>(wordAt(record, word)); }
KUV_INLINE Kuv32f planScale(const void* record) { return loadSample(placeIn<Kuv32f>(record, plan::scaleValue)); }
// The table whose place a word tells.
template <class T>
KUV_INLINE const T* planTable(const void* record, int word) {
    return placeIn<T>(record, planWord(record, word));
}

// ---- Powers of two

constexpr int fftOrderLimit = hasVectors ? 28 : 27;
constexpr int tableFreeOrder = hasAVX ? 6 : 5;
// px: the longest transform that is done at once. Elsewhere: up to this order sizes are those of a single level, whatever the passes
// are (see splitOrder()).
constexpr int leafOrder = !hasVectors ? 10 : hasAVX ? 18 : hasSSSE3 ? 17 : 15;
constexpr int tablesInInitOrder = 10;  // above it kuvsDFTInit_C_32f() builds a table in its buffer

// Of px and w7 the order of the columns in which a longer transform is split, 0 if it is not; from s8 on it only makes the sizes.
constexpr int columnOrder(int order) {
    if (!hasVectors) return order < 13 ? 0 : order <= 15 ? order - 8 : order <= 18 ? 8 : order <= 22 ? 10 : order <= 24 ? 8 : 10;
    if (!hasSSSE3) return order < 16 ? 0 : order <= 18 ? 4 : order <= 21 ? 6 : 8;
    if (!hasSSE41) return order < 18 ? 0 : order <= 19 ? 4 : order == 20 ? 6 : 8;
    if (!hasAVX) return order < 18 ? 0 : order <= 20 ? 4 : 8;
    return order < 19 ? 0 : order <= 22 ? 4 : 8;
}

struct BlockSizes {
    Kuv64s spec, init, work;
};
constexpr Kuv64s slack = 64;  // for aligning a block

constexpr Kuv64s tripleBytes(Kuv64s points) { return roundedUp(8 * points + 8, 64); }
constexpr Kuv64s quarterBytes(Kuv64s points) { return roundedUp(points + 4, 64); }

// px: what a transform takes beside the header and the outermost bit reversal.
constexpr BlockSizes scalarLevel(int order) {
    const Kuv64s points = Kuv64s{1} << order;
    if (order <= leafOrder) return {tripleBytes(points), 0, 0};
    const int columns = columnOrder(order);
    if (columns == 0) return {roundedUp(2 * points, 64) + tripleBytes(Kuv64s{1} << leafOrder), 0, 0};
    const Kuv64s side = Kuv64s{1} << columns;
    BlockSizes sizes = scalarLevel(order - columns);
    sizes.spec += tripleBytes(side) + 8 * points;
    sizes.init += quarterBytes(side) + 32 * side;
    if (sizes.work < 32 * side) sizes.work = 32 * side;
    return sizes;
}

constexpr int columnWorkOrder(int order) {
    if (!hasSSSE3) return order == 16 ? 9 : order <= 18 ? 10 : order <= 21 ? 13 : 14;
    if (!hasSSE41) return order <= 19 ? 10 : order == 20 ? 12 : 14;
    if (!hasAVX) return order <= 20 ? 10 : 14;
    return order <= 22 ? 10 : 14;
}

constexpr BlockSizes vectorLevel(int order) {
    const Kuv64s points = Kuv64s{1} << order;
    if (order <= leafOrder) return {tripleBytes(points), 0, roundedUp(8 * points, 64)};
    BlockSizes sizes = vectorLevel(order - columnOrder(order));
    const Kuv64s columns = Kuv64s{8} << columnWorkOrder(order);
    sizes.spec += 4 * points;
    if (sizes.work < columns) sizes.work = columns;
    return sizes;
}

constexpr BlockSizes fftSizes(int order) {
    const Kuv64s points = Kuv64s{1} << order;
    if (order <= tableFreeOrder) return {fft::bytes + slack, 0, 0};
    BlockSizes sizes = hasVectors ? vectorLevel(order) : scalarLevel(order);
    sizes.spec += roundedUp(Kuv64s{fft::bytes}, 64) + slack;
    if (order > tablesInInitOrder) sizes.init += quarterBytes(points) + slack;
    if (!hasVectors || order <= leafOrder) {
        sizes.spec += quarterBytes(points);
        if (hasVectors) sizes.work += slack;
    } else if (order < (hasSSSE3 ? 19 : 17)) {
        sizes.spec += quarterBytes(points);
    } else {
        sizes.spec += points / 1024 + 4160;
        if (sizes.work < 0x10000) sizes.work = 0x10000;
    }
    return sizes;
}
// What the record says that a run needs: a leaf's size has the slack for aligning it in.
constexpr Kuv64s fftWorkBytes(int order) {
    const Kuv64s work = fftSizes(order).work;
    return hasVectors && order > tableFreeOrder && order <= leafOrder ? work - slack : work;
}

// ---- Other lengths

struct Factors {
    int lastStage = 0;
    Kuv32s radices[24] = {};  // stages 0 to lastStage, and behind them the remainder

    constexpr Kuv32s remainder() const { return radices[lastStage + 1]; }
};

// A small even radix as the remainder, where it is done first, and the odd remainder outermost.
constexpr void arrange(Factors& factors) {
    Kuv32s* const radices = factors.radices;
    if (factors.lastStage > 0 && radices[1] == 4 && radices[0] != 6) {
        radices[0] *= 4;
        for (int i = 1; i <= factors.lastStage; ++i) radices[i] = radices[i + 1];
        radices[factors.lastStage + 1] = 0;
        --factors.lastStage;
    }
    if (radices[0] % 2 == 0) {
        const Kuv32s odd = factors.remainder();
        radices[factors.lastStage + 1] = radices[0];
        radices[0] = odd;
    }
}

// False if the length has too large a prime factor.
constexpr bool factorise(Kuv32s length, Factors& factors) {
    Kuv32s* const radices = factors.radices;
    Kuv32s rest = length;
    int count = 0;
    for (; rest % 4 == 0; rest /= 4) radices[count++] = 4;
    if (rest % 2 == 0) {
        rest /= 2;
        radices[count++] = 4;
        radices[0] = 2;
    }
    for (Kuv32s divisor = 3; rest >= 9 && divisor * divisor <= rest;) {
        if (rest % divisor != 0) {
            divisor += 2;
            if (divisor > highestRadix) return false;
            continue;
        }
        rest /= divisor;
        const bool merges = hasVectors && divisor == 3 && radices[0] == 2 && radices[1] != 4;
        if (merges) radices[0] = 6;
        else radices[count++] = divisor;
    }
    if (count == 0 || rest > highestRemainder(length)) return false;
    radices[count] = rest;
    factors.lastStage = count - 1;
    if (hasVectors) arrange(factors);
    return true;
}

enum class DftPath { fixed, powerOfTwo, tooLong, mixedRadix, direct, chirp, chirpTooLong };

constexpr DftPath pathOf(Kuv32s length, Factors& factors) {
    if (length <= longestFixed) return DftPath::fixed;
    if (isPowerOfTwo(length)) return DftPath::powerOfTwo;
    if (length > longestFactored) return DftPath::tooLong;
    if (factorise(length, factors)) return DftPath::mixedRadix;
    if (length <= highestRadix) return DftPath::direct;
    return length <= longestChirp ? DftPath::chirp : DftPath::chirpTooLong;
}

// Larger odd radices have no kernel of their own and use a table of their roots.
constexpr Kuv32s highestOddKernel = hasVectors ? 13 : 5;
constexpr bool needsRadixTable(Kuv32s radix) { return radix % 2 != 0 && radix > highestOddKernel; }

// Visits the tables of a mixed-radix plan in their order: radixTable(stage, radix, isNew), where the remainder counts as a stage
// behind the last; stageTable(stage, radix, remaining, stride, groupCount); and digitTable(entries). Gives the largest radix that
// has a table.
template <class RadixTable, class StageTable, class DigitTable>
KUV_INLINE Kuv32s walkStages(Kuv32s length, const Factors& factors, RadixTable radixTable, StageTable stageTable,
                             DigitTable digitTable) {
    Kuv32s remaining = length, stride = 1, groupCount = 1, made = 1, largestTabled = 0;
    const auto noteRadix = [&](int stage, Kuv32s radix) {
        if (!needsRadixTable(radix)) return;
        radixTable(stage, radix, radix != made);
        made = radix;
        if (largestTabled < radix) largestTabled = radix;
    };
    for (int k = 0;; ++k) {
        const Kuv32s radix = factors.radices[k];
        remaining /= radix;
        noteRadix(k, radix);
        if (k == factors.lastStage) noteRadix(k + 1, remaining);
        stageTable(k, radix, remaining, stride, groupCount);
        if (k == factors.lastStage) break;
        groupCount = radix * remaining > groupPoints ? 1 : groupCount * radix;
        stride *= radix;
    }
    digitTable(groupCount);
    return largestTabled;
}

constexpr Kuv64s mixedWorkBytes(Kuv32s length, Kuv32s largestTabled) { return (Kuv64s{length} + largestTabled) * 8 + 128; }

// The length of the transform by which a chirp convolves.
constexpr Kuv32s convolutionLength(Kuv32s length) {
    constexpr Kuv16s lengths[] = {128,  144,  160,  192,  200,  256,  288,  320,  384,  400,  512,  576,  640,  768,  800, 1024,
                                  1152, 1280, 1536, 1600, 2048, 2304, 2560, 3072, 3200, 4096, 4608, 5120, 6144, 6400, 8192};
    const Kuv32s least = 2 * length - 1;
    for (const Kuv16s each : lengths) {
        if (least <= each) return each;
    }
    return 1 << (orderOf(least - 1) + 1);
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
