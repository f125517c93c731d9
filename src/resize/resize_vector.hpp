// Linear interpolation in single precision, by blocks of columns.
#pragma once

#include "resize/resize_tile.hpp"
#include "simd/bytes.hpp"
#include "simd/real.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// Each 16 bytes of a register have lanes of eight neighbouring columns, which is a block's part. Twelve lanes are four columns in three
// registers; eight columns' samples then leave as three registers, without a lane that crosses to another part.
constexpr int partColumns = 8, partSamples = 3 * partColumns;
constexpr int blockColumns = vectorBytes / 16 * partColumns, blockSamples = 3 * blockColumns;

using Samples = Vector<Kuv16s, vectorBytes>;
using Pairs = Vector<Kuv32s, vectorBytes>;
using Reals = Vector<Kuv32f, vectorBytes>;
using FourReals = Vector<Kuv32f, 16>;

template <class V>
KUV_INLINE V between(V a, V b, V fraction) {
    return plusProduct(sub(b, a), fraction, a);
}

// How a block's columns find their pixels: anywhere, in which case 16 bytes may be read from each or only the 12 of the pixel and its right
// neighbour; or each two pixels behind the one before and half way between these, which is halved; or so, and the destination row half way
// between the source rows, which is quartered.
enum class Columns { wide, narrow, halved, quartered };
constexpr bool isHalved(Columns columns) { return columns == Columns::halved || columns == Columns::quartered; }

template <Columns columns>
KUV_INLINE Vector<Kuv16s, 16> loadNeighbours(const char* from) {
    if constexpr (columns != Columns::narrow) {
        return load<Vector<Kuv16s, 16>>(reinterpret_cast<const Kuv16s*>(from));
    } else {
        const __m128i low = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(from));
        return {_mm_unpacklo_epi64(low, _mm_cvtsi32_si128(loadSample(reinterpret_cast<const Kuv32s*>(from + 8))))};
    }
}

// Lane l of pixel p gets the pixel's sample (l + p) % 4 beside its neighbour's, and 0 if that is 3.
struct PairOrders {
    unsigned char index[4][32];
};
constexpr PairOrders pairOrders() {
    PairOrders all{};
    for (int p = 0; p < 4; ++p) {
        for (int at = 0; at < 32; ++at) {
            const int c = (at % 16 / 4 + p) % 4;
            all.index[p][at] = static_cast<unsigned char>(c == 3 ? 0x80 : 2 * c + at % 2 + at % 4 / 2 * 6);
        }
    }
    return all;
}

// Of four pixels, samples beside their neighbours'.
template <class V>
KUV_INLINE void pairSamples(const V (&pixels)[4], Vector<Kuv32s, V::bytes> (&pairs)[3]) {
    Vector<Kuv32s, V::bytes> each[4];
#ifdef __SSSE3__
    static constexpr PairOrders orders = pairOrders();
#pragma GCC unroll 4
    for (int p = 0; p < 4; ++p) {
        const auto order = load<Vector<Kuv8u, V::bytes>>(orders.index[hasSSE41 ? p : 0]);
        each[p] = as<Kuv32s>(shuffleBytes(as<Kuv8u>(pixels[p]), order));
    }
#else
#pragma GCC unroll 4
    for (int p = 0; p < 4; ++p) each[p].raw = _mm_unpacklo_epi16(pixels[p].raw, _mm_srli_si128(pixels[p].raw, 6));
#endif
    if constexpr (hasSSE41) {
        pairs[0] = blend<8>(each[0], each[1]);
        pairs[1] = blend<12>(each[1], each[2]);
        pairs[2] = blend<14>(each[2], each[3]);
    } else {
        const __m128 a = _mm_castsi128_ps(each[0].raw), b = _mm_castsi128_ps(each[1].raw);
        const __m128 c = _mm_castsi128_ps(each[2].raw), d = _mm_castsi128_ps(each[3].raw);
        pairs[0].raw = _mm_castps_si128(_mm_shuffle_ps(a, _mm_shuffle_ps(a, b, _MM_SHUFFLE(0, 0, 2, 2)), _MM_SHUFFLE(2, 0, 1, 0)));
        pairs[1].raw = _mm_castps_si128(_mm_shuffle_ps(b, c, _MM_SHUFFLE(1, 0, 2, 1)));
        pairs[2].raw = _mm_castps_si128(_mm_shuffle_ps(_mm_shuffle_ps(c, d, _MM_SHUFFLE(0, 0, 2, 2)), d, _MM_SHUFFLE(2, 1, 2, 0)));
    }
}

template <int order, int bytes>
KUV_INLINE Vector<Kuv32f, bytes> shuffledReals(Vector<Kuv32f, bytes> v) {
    if constexpr (bytes == 16) {
        return {_mm_shuffle_ps(v.raw, v.raw, order)};
    } else {
        KUV_AVX(return {_mm256_shuffle_ps(v.raw, v.raw, order)};)
    }
}

// Each part's samples to a place `partSamples` behind that of the part before.
KUV_INLINE void storeSamples(Kuv16s* to, Samples v) {
    storeParts(reinterpret_cast<Kuv8u*>(to), partSamples * static_cast<ptrdiff_t>(sizeof(Kuv16s)), as<Kuv8u>(v));
}

// Where columns have their pixels, in bytes from a place in each source row, and how much of the neighbours is in them.
struct ColumnPlan {
    const Kuv32s* offsets;
    const Kuv32f* fractions;
};

// The samples of columns `first` to `first` + 3 of each part.
template <Columns columns>
KUV_INLINE void loadColumns(const char* row, ColumnPlan plan, int first, Pairs (&pairs)[3]) {
    Samples pixels[4];
#pragma GCC unroll 4
    for (int p = 0; p < 4; ++p) {
        pixels[p] = fromHalves<Samples>([&](int part) __attribute__((always_inline)) {
            const int column = part + first + p;
            return loadNeighbours<columns>(row + (isHalved(columns) ? 12 * column : plan.offsets[column]));
        });
    }
    pairSamples(pixels, pairs);
}

KUV_INLINE Pairs sumOfPair(Pairs pair) { return multiplyAddPairs(as<Kuv16s>(pair), fill<Samples>(1)); }

template <Columns columns>
KUV_INLINE void interpolateColumns(const char* row, ColumnPlan plan, int first, Reals (&out)[3]) {
    Pairs pairs[3];
    loadColumns<columns>(row, plan, first, pairs);
    if constexpr (isHalved(columns)) {
        // Sums of two samples are exact, and so are their halves.
#pragma GCC unroll 3
        for (int i = 0; i < 3; ++i) out[i] = multiply(toReals(sumOfPair(pairs[i])), fill<Reals>(0.5f));
        return;
    }
    const Reals fractions = fromHalves<Reals>([&](int lane) __attribute__((always_inline)) {
        return load<FourReals>(plan.fractions + 2 * lane + first);
    });
    const Reals each[3] = {shuffledReals<0x40>(fractions), shuffledReals<0xA5>(fractions), shuffledReals<0xFE>(fractions)};
    const Samples ofPixel = fillPairs<Samples>(1, 0), difference = fillPairs<Samples>(-1, 1);
#pragma GCC unroll 3
    for (int i = 0; i < 3; ++i) {
        const Samples pair = as<Kuv16s>(pairs[i]);
        out[i] = plusProduct(toReals(multiplyAddPairs(pair, difference)), each[i], toReals(multiplyAddPairs(pair, ofPixel)));
    }
}

// One destination row, and how much of the lower source row is in it.
struct BlockTarget {
    Kuv16s* to;
    Kuv32f fraction;
};

// Four columns of each part of a quartered block, which are means of four samples.
template <int first>
KUV_INLINE void meansOfFour(const char* upper, const char* lower, ColumnPlan plan, Pairs* whole) {
    Pairs a[3], b[3];
    loadColumns<Columns::quartered>(upper, plan, first, a);
    loadColumns<Columns::quartered>(lower, plan, first, b);
#pragma GCC unroll 3
    for (int i = 0; i < 3; ++i) whole[i] = rounded(multiply(toReals(add(sumOfPair(a[i]), sumOfPair(b[i]))), fill<Reals>(0.25f)));
}

// A block of one or two destination rows that lie between the same two source rows. The upper one is computed from `upper` if that is not
// `held`, else it is there already; the lower one, computed from `lower`, is left at `next`, which may be `held`. Not so if quartered: such
// a block leaves no row.
template <Columns columns, bool isHeld, int targets>
KUV_INLINE void interpolateBlock(const char* upper, const char* lower, ColumnPlan plan, const Kuv32f* held, Kuv32f* next,
                                 const BlockTarget (&target)[2]) {
    Pairs whole[2][6];
    if constexpr (columns == Columns::quartered) {
        meansOfFour<0>(upper, lower, plan, whole[0]);
        meansOfFour<4>(upper, lower, plan, whole[0] + 3);
    }
#pragma GCC unroll 2
    for (int half = 0; half < 2 && columns != Columns::quartered; ++half) {
        Reals a[3], b[3];
        interpolateColumns<columns>(lower, plan, 4 * half, b);
        if constexpr (targets > 0 && !isHeld) interpolateColumns<columns>(upper, plan, 4 * half, a);
#pragma GCC unroll 3
        for (int i = 0; i < 3; ++i) {
            const ptrdiff_t at = (3 * half + i) * Reals::lanes;
            if constexpr (targets > 0 && isHeld) a[i] = load<Reals>(held + at);
            store(next + at, b[i]);
        }
#pragma GCC unroll 2
        for (int t = 0; t < targets; ++t) {
            const Reals fraction = fill<Reals>(target[t].fraction);
#pragma GCC unroll 3
            for (int i = 0; i < 3; ++i) whole[t][3 * half + i] = rounded(between(a[i], b[i], fraction));
        }
    }
#pragma GCC unroll 2
    for (int t = 0; t < targets; ++t) {
#pragma GCC unroll 3
        for (int i = 0; i < 3; ++i) storeSamples(target[t].to + 8 * i, pack(whole[t][2 * i], whole[t][2 * i + 1]));
    }
}

// A block between two source rows that are there.
KUV_INLINE void mixBlock(const Kuv32f* a, const Kuv32f* b, BlockTarget target) {
    const Reals fraction = fill<Reals>(target.fraction);
#pragma GCC unroll 3
    for (int i = 0; i < 3; ++i) {
        const auto whole = [&](int lanes) __attribute__((always_inline)) {
            return rounded(between(load<Reals>(a + lanes), load<Reals>(b + lanes), fraction));
        };
        storeSamples(target.to + 8 * i, pack(whole(2 * i * Reals::lanes), whole((2 * i + 1) * Reals::lanes)));
    }
}

// The columns of a tile that repeat nothing, as far as 32-bit offsets reach.
class VectorColumns {
public:
    // Columns `first` to `end` - 1 of the tile, whose positions reach from `low` to `high`.
    VectorColumns(const ResizeTile& tile, ptrdiff_t first, ptrdiff_t end, ptrdiff_t low, ptrdiff_t high, Kuv32f* rows, ptrdiff_t distance)
        : tile_(tile), first_(first), count_(end - first), low_(low), reach_(high - low) {
        const TileAxis& columns = tile.columns;
        Kuv32s* const offsets = reinterpret_cast<Kuv32s*>(rows + 2 * distance);
        safe_ = count_;
        for (ptrdiff_t i = count_ - 1; i >= 0; --i) {
            const ptrdiff_t column = columns[first + i];
            offsets[i] = static_cast<Kuv32s>(6 * (column - low));
            if (column == high) safe_ = i;
            if (column != low + 2 * i || columns.fractions[first + i] != 0.5f) isHalved_ = false;
        }
        plan_ = {offsets, columns.fractions + first};
        blocksEnd_ = count_ / blockColumns * blockColumns;
        for (ptrdiff_t i = 0; i < blockColumns; ++i) {
            const bool isColumn = blocksEnd_ + i < count_;
            tailOffsets_[i] = isColumn ? offsets[blocksEnd_ + i] : offsets[count_ - 1];
            tailFractions_[i] = isColumn ? plan_.fractions[blocksEnd_ + i] : 0;
        }
        held_ = {rows, tailRows_[0]};
        next_ = {rows + distance, tailRows_[1]};
    }

    void run() {
        const TileAxis& rows = tile_.rows;
        repeatRow(0, rows.before);
        repeatRow(rows.end(), rows.length);
        if (rows.before >= rows.end()) return;
        const ptrdiff_t direction = rows.descends() ? -1 : 1;
        // What is near the processor would only be slower for it.
        constexpr ptrdiff_t near = 0x100000, pixel = 3 * sizeof(Kuv16s);
        const ptrdiff_t sourceRows = direction * (rows[rows.end() - 1] - rows[rows.before]);
        const bool looksAhead = pixel * (sourceRows * reach_ + rows.length * count_) >= near;
        ptrdiff_t j = direction > 0 ? rows.before : rows.end() - 1;
        for (ptrdiff_t left = rows.end() - rows.before; left > 0;) {
            ptrdiff_t same = 1;
            while (same < left && rows.positions[j + direction * same] == rows.positions[j]) ++same;
            const bool isNextHeld = left > same && rows.positions[j + direction * same] == rows.positions[j] + 1;
            const ptrdiff_t next = j + direction * same;
            left -= same;
            ahead_ = {};
            if (looksAhead && left > 0) {
                const bool isTwin = left > 1 && rows.positions[next + direction] == rows.positions[next];
                ahead_ = {{sourceRow(rows[next] + 1), isNextHeld ? nullptr : sourceRow(rows[next])},
                          {tile_.target(next, first_), isTwin ? tile_.target(next + direction, first_) : nullptr}};
            }
            betweenRows(rows[j], j, direction, same, isNextHeld);
            j = next;
        }
    }

private:
    struct HeldRow {
        Kuv32f* blocks;
        Kuv32f* tail;
    };

    // Rows of the source and the destination that come next, or null: each page of them is new to the processor.
    struct Ahead {
        const char* src[2];
        const Kuv16s* dst[2];
    };

    // What a block will have of them. Between columns that lie far apart most lines would come for nothing.
    KUV_INLINE void prefetchBlock(ptrdiff_t i) const {
        constexpr ptrdiff_t most = 64 * blockColumns;
        const ptrdiff_t first = plan_.offsets[i], last = plan_.offsets[i + blockColumns - 1];
        const ptrdiff_t begin = smaller(first, last), bytes = larger(first, last) - begin;
        for (const char* row : ahead_.src) {
            if (row && bytes <= most) prefetchRow(row + begin, bytes);
        }
        for (const Kuv16s* row : ahead_.dst) {
            if (row) prefetchRow(row + 3 * i, blockSamples);
        }
    }

    KUV_INLINE const char* sourceRow(ptrdiff_t row) const { return reinterpret_cast<const char*>(tile_.source(row, low_)); }
    KUV_INLINE BlockTarget targetOf(ptrdiff_t j) const { return {tile_.target(j, first_), tile_.rows.fractions[j]}; }

    // `count` destination rows from j on that lie between source rows `row` and `row` + 1, the latter of which the next ones may take.
    void betweenRows(ptrdiff_t row, ptrdiff_t j, ptrdiff_t direction, ptrdiff_t count, bool isNextHeld) {
        const bool keeps = count > 2;
        bool isHeld = holdsRow_ && heldRow_ == row;
        if (keeps && !isHeld) {
            fillRow(row);
            isHeld = true;
        }
        const BlockTarget targets[2] = {targetOf(j), targetOf(count > 1 ? j + direction : j)};
        const HeldRow next = keeps ? next_ : held_;
        const char *const upper = sourceRow(row), *const lower = sourceRow(row + 1);
        const bool isQuartered = isHalved_ && !isHeld && !isNextHeld && count == 1 && tile_.rows.fractions[j] == 0.5f;
        if (isQuartered) {
            pass<false, 1, true>(upper, lower, held_, next, targets);
        } else if (count == 1) {
            if (isHeld) pass<true, 1>(upper, lower, held_, next, targets);
            else pass<false, 1>(upper, lower, held_, next, targets);
        } else {
            if (isHeld) pass<true, 2>(upper, lower, held_, next, targets);
            else pass<false, 2>(upper, lower, held_, next, targets);
        }
        if (keeps) {
            for (ptrdiff_t i = 2; i < count; ++i) mix(held_, next_, targetOf(j + direction * i));
            next_ = held_;
            held_ = next;
        }
        heldRow_ = row + 1;
        holdsRow_ = !isQuartered;
    }

    // Destination rows that repeat the source's first or last row.
    void repeatRow(ptrdiff_t j, ptrdiff_t end) {
        if (j >= end) return;
        fillRow(tile_.repeated(j));
        for (; j < end; ++j) mix(held_, held_, {tile_.target(j, first_), 0});
    }

    void fillRow(ptrdiff_t row) { pass<false, 0>(sourceRow(row), sourceRow(row), held_, held_, {}); }

    template <bool isHeld, int targets, bool isQuartered = false>
    void pass(const char* upper, const char* lower, HeldRow held, HeldRow next, const BlockTarget (&target)[2]) {
        ptrdiff_t i = 0;
        const auto blocks = [&]<Columns columns>(std::integral_constant<Columns, columns>, ptrdiff_t end) __attribute__((always_inline)) {
            // Halved columns begin at the row's place and need no offsets.
            const ptrdiff_t step = isHalved(columns) ? 12 : 0;
            for (; i + blockColumns <= end; i += blockColumns) {
                const ptrdiff_t at = targets > 0 ? 3 * i : 0;
                if (ahead_.dst[0]) prefetchBlock(i);
                const BlockTarget here[2] = {{target[0].to + at, target[0].fraction}, {target[1].to + at, target[1].fraction}};
                interpolateBlock<columns, isHeld, targets>(upper + step * i, lower + step * i, {plan_.offsets + i, plan_.fractions + i},
                                                           held.blocks + 3 * i, next.blocks + 3 * i, here);
            }
        };
        if (isHalved_) blocks(std::integral_constant<Columns, isQuartered ? Columns::quartered : Columns::halved>{}, safe_);
        blocks(std::integral_constant<Columns, Columns::wide>{}, safe_);
        blocks(std::integral_constant<Columns, Columns::narrow>{}, count_);
        if (i == count_) return;
        Kuv16s out[2][blockSamples];
        interpolateBlock<Columns::narrow, isHeld, targets>(upper, lower, {tailOffsets_, tailFractions_}, held.tail, next.tail,
                                                 {{out[0], target[0].fraction}, {out[1], target[1].fraction}});
        for (int t = 0; t < targets; ++t) storeTail(target[t].to, out[t]);
    }

    void mix(HeldRow a, HeldRow b, BlockTarget target) const {
        ptrdiff_t i = 0;
        for (; i + blockColumns <= count_; i += blockColumns) {
            mixBlock(a.blocks + 3 * i, b.blocks + 3 * i, {target.to + 3 * i, target.fraction});
        }
        if (i == count_) return;
        Kuv16s out[blockSamples];
        mixBlock(a.tail, b.tail, {out, target.fraction});
        storeTail(target.to, out);
    }

    KUV_INLINE void storeTail(Kuv16s* to, const Kuv16s* samples) const {
        __builtin_memcpy(reinterpret_cast<char*>(to + 3 * blocksEnd_), samples, static_cast<size_t>(6 * (count_ - blocksEnd_)));
    }

    const ResizeTile& tile_;
    const ptrdiff_t first_, count_, low_, reach_;
    ptrdiff_t safe_;  // columns before the first whose neighbour is the last pixel that is known
    bool isHalved_ = true;
    ptrdiff_t blocksEnd_;
    ColumnPlan plan_;
    HeldRow held_, next_;
    ptrdiff_t heldRow_ = 0;
    bool holdsRow_ = false;
    Ahead ahead_ = {};
    Kuv32s tailOffsets_[blockColumns];
    Kuv32f tailFractions_[blockColumns];
    Kuv32f tailRows_[2][blockSamples];
};

class VectorResize {
public:
    // Two rows of three samples a column fit at `rows`, `distance` apart, and after them four bytes a column.
    VectorResize(const ResizeTile& tile, Kuv32f* rows, ptrdiff_t distance) : tile_(tile), buffer_(rows), distance_(distance) {}

    void run() const {
        const TileAxis& columns = tile_.columns;
        if (columns.before > 0) side(0, columns.before, columns.first);
        if (columns.after > 0) side(columns.end(), columns.length, columns.last);
        if (columns.before < columns.end()) interior(columns.before, columns.end());
    }

private:
    // Columns that repeat the source's first or last one.
    void side(ptrdiff_t i, ptrdiff_t end, ptrdiff_t column) const {
        const TileAxis& rows = tile_.rows;
        for (ptrdiff_t j = 0; j < rows.length; ++j) {
            const bool isRepeated = j < rows.before || j >= rows.end();
            const ptrdiff_t row = isRepeated ? tile_.repeated(j) : rows[j];
            const FourReals upper = pixelAt(row, column), lower = isRepeated ? upper : pixelAt(row + 1, column);
            const auto whole = rounded(between(upper, lower, fill<FourReals>(rows.fractions[j])));
            Kuv16s samples[8];
            store(samples, pack(whole, whole));
            for (ptrdiff_t k = i; k < end; ++k) __builtin_memcpy(reinterpret_cast<char*>(tile_.target(j, k)), samples, 6);
        }
    }

    KUV_INLINE FourReals pixelAt(ptrdiff_t row, ptrdiff_t column) const {
        const Kuv16s* const from = tile_.source(row, column);
        return toReals(Vector<Kuv32s, 16>{_mm_setr_epi32(loadSample(from), loadSample(from + 1), loadSample(from + 2), 0)});
    }

    // Columns between those. Some that lie too far apart for offsets of 32 bits are done by halves.
    void interior(ptrdiff_t first, ptrdiff_t end) const {
        const TileAxis& columns = tile_.columns;
        ptrdiff_t low = columns[first], high = low;
        for (ptrdiff_t i = first; i < end; ++i) {
            const ptrdiff_t column = columns[i];
            if (column < low) low = column;
            if (column > high) high = column;
        }
        if (6 * (high - low) > INT32_MAX) {
            const ptrdiff_t middle = first + (end - first) / 2;
            interior(first, middle);
            interior(middle, end);
        } else {
            VectorColumns(tile_, first, end, low, high, buffer_, distance_).run();
        }
    }

    const ResizeTile& tile_;
    Kuv32f* const buffer_;
    const ptrdiff_t distance_;
};

}  // namespace
}  // namespace kuv::KUV_VARIANT
