// How plans are made.
#pragma once

#include "transform/dft_scalar.hpp"
#include "transform/dft_vector.hpp"

namespace kuv::KUV_VARIANT {
namespace {

using Runs = std::conditional_t<hasVectors, VectorRuns, ScalarRuns>;

// What of a block has been given away; all places begin on 64-byte boundaries.
struct Places {
    void* record;
    ptrdiff_t end;

    ptrdiff_t take(ptrdiff_t bytes) {
        const ptrdiff_t place = alignedOffset(record, end);
        end = place + bytes;
        return place;
    }
    template <class T>
    T* takeTable(ptrdiff_t bytes, int word) {
        const ptrdiff_t place = take(bytes);
        setWord(record, word, place);
        return placeIn<T>(record, place);
    }
};

// `values` is how many values the transform divides by.
void setScale(void* record, Kuv32s flag, Kuv32s values) {
    if (flag == kuvDftScaleForward || flag == kuvDftScaleBoth) setWord(record, plan::scaleForward, 1);
    if (flag == kuvDftScaleInverse || flag == kuvDftScaleBoth) setWord(record, plan::scaleInverse, 1);
    if (flag == kuvDftScaleNone) return;
    Kuv32f scale = hasVectors ? 1 / static_cast<Kuv32f>(values) : static_cast<Kuv32f>(1 / static_cast<Kuv64f>(values));
    if (flag == kuvDftScaleBoth) scale = static_cast<Kuv32f>(1 / squareRoot(static_cast<Kuv64f>(values)));
    storeSample(placeIn<Kuv32f>(record, plan::scaleValue), scale);
}

// ---- Powers of two

void fillSplitTwiddles(const SineTable& sines, int columns, int rows, Kuv32f* table) {
    const Kuv64s side = Kuv64s{1} << columns, row = Kuv64s{1} << rows;
    for (Kuv64s c = 0; c < row; c += 4) {
        for (Kuv64s j = 0, reversed = 0; j < side; ++j) {
            for (Kuv64s t = 0; t < 4; ++t, table += 2) {
                const Complex root = sines.root((c + t) * reversed, columns + rows);
                table[0] = root.re;
                table[1] = root.im;
            }
            reversed = nextReversed(reversed, side);
        }
    }
}

// Of px, innermost level first.
void makeScalarLevel(Places& places, const SineTable& sines, int order, int level) {
    const int columns = columnOrder(order), rows = order - columns;
    const Kuv64s count = Kuv64s{1} << order;
    if (columns == 0) {
        const int leaf = order <= leafOrder ? order : leafOrder;
        fillTriples(sines, leaf, places.takeTable<Kuv32f>(tripleBytes(Kuv64s{1} << leaf), fft::twiddles));
        if (order == leaf) return;
        Kuv32f* const roots = places.takeTable<Kuv32f>(2 * count, fft::longTwiddles);
        for (Kuv64s i = 0; i < count / 4; ++i) {
            const Complex root = sines.root(i, order);
            roots[2 * i] = root.re;
            roots[2 * i + 1] = root.im;
        }
        return;
    }
    makeScalarLevel(places, sines, rows, level + 1);
    fillTriples(sines, columns, places.takeTable<Kuv32f>(tripleBytes(Kuv64s{1} << columns), fft::columnTwiddles + 4 * level));
    fillSplitTwiddles(sines, columns, rows, places.takeTable<Kuv32f>(8 * count, fft::splitTwiddles + 4 * level));
}

void fillOrderTwiddles(const SineTable& sines, int order, ptrdiff_t stride, Kuv32f* table) {
    fillTwiddles(scheduleOf(order), ptrdiff_t{1} << order, stride, table, [&](ptrdiff_t k) { return sines.root(k, order); });
}

void makeVectorLevel(Places& places, const SineTable& sines, int order, int level) {
    if (splitOrder(order) == 0) {
        fillOrderTwiddles(sines, order, 1, places.takeTable<Kuv32f>(8 << order, fft::twiddles));
        return;
    }
    const Split split(order);
    makeVectorLevel(places, sines, split.rows, level + 1);
    fillOrderTwiddles(sines, split.columns, tile, places.takeTable<Kuv32f>(8 * split.side, fft::columnTwiddles + 4 * level));
    const ptrdiff_t blocks = split.row / split.blockSize;
    Kuv32f* const fine = places.takeTable<Kuv32f>(8 * split.side * (split.blockSize + blocks), fft::splitTwiddles + 4 * level);
    Kuv32f* const coarse = fine + 2 * split.side * split.blockSize;
    for (ptrdiff_t j = 0; j < split.side; ++j) {
        for (ptrdiff_t c = 0; c < split.blockSize; ++c) {
            const Complex root = sines.root(c * j, order);
            fine[2 * split.blockSize * j + c] = root.re;
            fine[2 * split.blockSize * j + split.blockSize + c] = root.im;
        }
        for (ptrdiff_t b = 0; b < blocks; ++b) {
            const Complex root = sines.root(b * split.blockSize * j, order);
            coarse[2 * (split.side * b + j)] = root.re;
            coarse[2 * (split.side * b + j) + 1] = root.im;
        }
    }
}

KuvStatus makeFftPlan(void* record, Kuv32s identity, Kuv32s length, Kuv32s flag, Kuv32s hint, Kuv8u* initBuffer) {
    const int order = orderOf(length);
    if (order >= fftOrderLimit) return kuvStatusBadOrder;
    __builtin_memset(record, 0, fft::bytes);
    setWord(record, plan::id, identity);
    setWord(record, fft::order, order);
    setWord(record, plan::hint, hint);
    setScale(record, flag, length);
    setWord(record, plan::workBytes, fftWorkBytes(order));
    if (order > tablesInInitOrder && initBuffer == nullptr) return kuvStatusNullPtr;
    if (order <= tableFreeOrder) return kuvStatusOk;

    static constexpr QuarterSines shortSines = makeQuarterSines();
    SineTable sines = {shortSines.of, tablesInInitOrder};
    if (order > tablesInInitOrder) {
        Kuv32f* const longSines = alignedUp(reinterpret_cast<Kuv32f*>(initBuffer));
        fillQuarterSines(order, longSines);
        sines = {longSines, order};
    }
    Places places = {record, fft::bytes};
    if constexpr (hasVectors) {
        makeVectorLevel(places, sines, order, 0);
    } else {
        fillBitReversal(order, places.takeTable<Kuv32s>(quarterBytes(length), fft::bitReverseTable));
        makeScalarLevel(places, sines, order, 0);
    }
    return kuvStatusOk;
}

// ---- Other lengths

void fillStageTable(const Complex* roots, Kuv32s radix, Kuv32s remaining, Kuv32s stride, Complex* table) {
    for (ptrdiff_t j = 0; j < remaining; ++j) {
        for (ptrdiff_t i = radix > highestOddKernel ? 0 : 1; i < radix; ++i) *table++ = roots[i * j * stride];
    }
}

void fillDigits(const Factors& factors, ptrdiff_t entries, Kuv32s* table) {
    table[0] = 0;
    ptrdiff_t count = 1;
    for (int k = factors.lastStage - 1; k >= 0; --k) {
        const Kuv32s radix = factors.radices[k];
        if (count < entries) {
            for (Kuv32s b = radix - 1; b >= 0; --b) {
                for (ptrdiff_t u = 0; u < count; ++u) table[b * count + u] = table[u] * radix + b;
            }
            count *= radix;
        } else {
            for (ptrdiff_t u = 0; u < count; ++u) table[u] *= radix;
        }
    }
}

// In the vector variants the first stage's table holds the twiddle factors of all passes, and the digit table their radices.
void makeMixedRadix(Places& places, Kuv32s length, const Factors& factors, const Complex* roots) {
    void* const record = places.record;
    const auto wordOf = [](int k, int field) { return plan::stages + stage::bytes * k + field; };
    setWord(record, plan::usesMixedRadix, 1);
    setWord(record, plan::lastStage, factors.lastStage);
    ptrdiff_t radixTable = 0;
    const Kuv32s largestTabled = walkStages(
        length, factors,
        [&](int k, Kuv32s radix, bool isNew) {
            if (isNew) {
                radixTable = places.take(8 * ptrdiff_t{radix});
                Complex* const table = placeIn<Complex>(record, radixTable);
                for (ptrdiff_t i = 0; i < radix; ++i) table[i] = roots[i * (length / radix)];
            }
            setWord(record, wordOf(k, stage::radixTable), radixTable);
        },
        [&](int k, Kuv32s radix, Kuv32s remaining, Kuv32s stride, Kuv32s groupCount) {
            setWord(record, wordOf(k, stage::radix), radix);
            setWord(record, wordOf(k, stage::remaining), remaining);
            setWord(record, wordOf(k, stage::stride), stride);
            setWord(record, wordOf(k, stage::groupCount), groupCount);
            Complex* const table = places.takeTable<Complex>(8 * ptrdiff_t{radix} * remaining, wordOf(k, stage::twiddles));
            if (!hasVectors) fillStageTable(roots, radix, remaining, stride, table);
        },
        [&](Kuv32s entries) {
            Kuv32s* const table = places.takeTable<Kuv32s>(roundedUp(4 * ptrdiff_t{entries}, 64), plan::digitTable);
            if (!hasVectors) fillDigits(factors, entries, table);
        });
    if constexpr (hasVectors) {
        const Schedule schedule = scheduleOf(length, factors);
        Kuv8u* const radices = placeIn<Kuv8u>(record, planWord(record, plan::digitTable));
        for (int i = 0; i <= schedule.count; ++i) radices[i] = schedule.radices[i];
        fillTwiddles(schedule, length, 1, placeIn<Kuv32f>(record, planWord(record, wordOf(0, stage::twiddles))),
                    [&](ptrdiff_t k) { return roots[k]; });
    }
    setWord(record, plan::workBytes, mixedWorkBytes(length, largestTabled));
}

void makeDirect(Places& places, Kuv32s length, const Complex* roots) {
    Complex* const table = places.takeTable<Complex>(8 * ptrdiff_t{length}, plan::directTwiddles);
    if constexpr (hasVectors) {
        fillDirectTwiddles(length, roots, reinterpret_cast<Kuv32f*>(table));
    } else {
        for (ptrdiff_t i = 0; i < length; ++i) table[i] = roots[i];
    }
    setWord(places.record, plan::workBytes, 8 * ptrdiff_t{length} + 64);
}

KuvStatus makePlan(void* record, Kuv32s identity, Kuv32s length, Kuv32s flag, Kuv32s hint, Kuv8u* initBuffer);

// How a chirp's tables have their values.
using Stored = std::conditional_t<hasVectors, Planes, Pairs>;
Stored storedAt(Kuv32f* values, ptrdiff_t count) { return {values, values + (hasVectors ? count : 1)}; }

// The chirp's conjugate, in both directions of time, transformed and divided by the length. `work` is the nested run's.
void fillChirpSpectrum(const void* nested, Stored chirp, ptrdiff_t length, Kuv32f* spectrum, ptrdiff_t points, Kuv32f* work) {
    const Stored filter = storedAt(spectrum, points);
    __builtin_memset(spectrum, 0, static_cast<size_t>(2 * points) * sizeof(Kuv32f));
    for (ptrdiff_t k = 0; k < length; ++k) {
        const Complex value = {chirp[k].re, -chirp[k].im};
        filter.set(k, value);
        if (k > 0) filter.set(points - k, value);
    }
    Runs::runNested(nested, filter, work);
    scaleBy(static_cast<Kuv32f>(1 / static_cast<Kuv64f>(points)), spectrum, 2 * points);
}

// `init` is the part of the buffer that is still free.
KuvStatus makeChirp(Places& places, Kuv32s length, char* init) {
    void* const record = places.record;
    const Kuv32s points = convolutionLength(length);
    if (orderOf(points) >= fftOrderLimit) return kuvStatusBadOrder;  // before gigabytes are written
    setWord(record, plan::chirpLength, points);
    const Stored chirp = storedAt(places.takeTable<Kuv32f>(8 * ptrdiff_t{length}, plan::chirpTable), length);
    Kuv32f* const spectrum = places.takeTable<Kuv32f>(8 * ptrdiff_t{points}, plan::chirpSpectrum);

    const ptrdiff_t turn = 2 * ptrdiff_t{length};
    Complex* const roots = reinterpret_cast<Complex*>(alignedUp(init));
    fillRoots(turn, roots);
    for (ptrdiff_t k = 0, square = 0; k < length; ++k) {
        chirp.set(k, roots[square]);
        square += 2 * k + 1;
        if (square >= turn) square -= turn;
    }

    char* const nested = places.takeTable<char>(0, plan::chirpPlan);
    char* const nestedInit = reinterpret_cast<char*>(roots + turn);
    const KuvStatus status = makePlan(nested, interleavedIdentity, points, kuvDftScaleNone, 0, reinterpret_cast<Kuv8u*>(nestedInit));
    if (status != kuvStatusOk) return status;
    // Nothing that Init made in its buffer is needed any more.
    fillChirpSpectrum(nested, chirp, length, spectrum, points, reinterpret_cast<Kuv32f*>(roots));
    setWord(record, plan::workBytes, planWord(nested, plan::workBytes) + 8 * ptrdiff_t{points} + 64);
    return kuvStatusOk;
}

KuvStatus makePlan(void* record, Kuv32s identity, Kuv32s length, Kuv32s flag, Kuv32s hint, Kuv8u* initBuffer) {
    __builtin_memset(record, 0, plan::bytes);
    setWord(record, plan::id, identity);
    setWord(record, plan::length, length);
    setWord(record, plan::hint, hint);
    if (!isDftFlag(flag)) return kuvStatusBadFlag;
    setScale(record, flag, length);

    Factors factors;
    Places places = {record, plan::bytes};
    const DftPath path = pathOf(length, factors);
    if (path == DftPath::fixed) return kuvStatusOk;
    if (path == DftPath::powerOfTwo) {
        setWord(record, plan::usesFft, 1);
        char* const nested = places.takeTable<char>(0, plan::fftPlan);
        const Kuv32s nestedIdentity = identity == splitIdentity ? splitFftIdentity : interleavedFftIdentity;
        const KuvStatus status = makeFftPlan(nested, nestedIdentity, length, flag, hint, initBuffer);
        if (status != kuvStatusOk) return status;
        const ptrdiff_t work = planWord(nested, plan::workBytes);
        setWord(record, plan::workBytes, work > 0 ? work + 64 : 0);
        return kuvStatusOk;
    }
    if (path == DftPath::tooLong) return kuvStatusBadSize;
    if (initBuffer == nullptr) return kuvStatusNullPtr;
    if (path == DftPath::chirpTooLong) return kuvStatusBadSize;
    Complex* const roots = alignedUp(reinterpret_cast<Complex*>(initBuffer));
    if (path == DftPath::chirp) return makeChirp(places, length, reinterpret_cast<char*>(roots));
    fillRoots(length, roots);
    if (path == DftPath::direct) makeDirect(places, length, roots);
    else makeMixedRadix(places, length, factors, roots);
    return kuvStatusOk;
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
