// Rows of the quick interpolation. A row of the mosaic has sites of one colour, red or blue, and of green in turn.
#pragma once

#include "colour/bayer.hpp"
#include "simd/interleave.hpp"
#include "simd/rows.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// A row with the two above and the two below it, as far as the image has them or its reflection.
template <class T>
struct MosaicRows {
    const T* row[5];

    KUV_INLINE const T* operator[](int distance) const { return row[2 + distance]; }
};

// Three samples of a pixel, by their role in the row: its own colour, green, and the colour of the rows above and below.
template <class T>
struct RowPixel {
    T own, green, other;
};

// Where a row's own colour and the other one stand in an output pixel.
struct RowColours {
    int own, other;
};
constexpr RowColours redRow = {0, 2}, blueRow = {2, 0};

// A pixel of column c, the columns around it being columnAt(-2) to columnAt(2).
template <bool ring, class T, class ColumnAt>
KUV_INLINE RowPixel<T> pixelAt(const MosaicRows<T>& rows, bool green, ColumnAt columnAt) {
    const auto sample = [&](int row, int column) -> Kuv32s { return loadSample(rows[row] + columnAt(column)); };
    const auto mean = [](Kuv32s a, Kuv32s b) { return static_cast<T>((a + b + 1) >> 1); };
    const Kuv32s up = sample(-1, 0), down = sample(1, 0), left = sample(0, -1), right = sample(0, 1);
    const T site = static_cast<T>(sample(0, 0));
    if (green) return {mean(left, right), site, mean(up, down)};
    const T diagonals = static_cast<T>((sample(-1, -1) + sample(-1, 1) + sample(1, -1) + sample(1, 1) + 2) >> 2);
    const T around = static_cast<T>((up + down + left + right + 2) >> 2);
    if constexpr (ring) return {site, around, diagonals};
    const auto distance = [](Kuv32s a, Kuv32s b) { return a < b ? b - a : a - b; };
    const Kuv32s alongColumn = distance(sample(-2, 0), sample(2, 0)), alongRow = distance(sample(0, -2), sample(0, 2));
    return {site, alongColumn < alongRow ? mean(up, down) : alongRow < alongColumn ? mean(left, right) : around, diagonals};
}

template <class T>
KUV_INLINE void storePixel(T* to, const RowPixel<T>& pixel, RowColours colours) {
    storeSample(to + colours.own, pixel.own);
    storeSample(to + 1, pixel.green);
    storeSample(to + colours.other, pixel.other);
}

// Columns `first` to `end` - 1, at which nothing is reflected. `out` is the pixel of column 0.
template <bool ring, class T>
KUV_INLINE void interpolateColumns(const MosaicRows<T>& rows, ptrdiff_t first, ptrdiff_t end, ptrdiff_t greenParity, T* out,
                                   RowColours colours) {
    const auto one = [&](ptrdiff_t c, bool green) {
        storePixel(out + 3 * c, pixelAt<ring>(rows, green, [c](int distance) { return c + distance; }), colours);
    };
    ptrdiff_t c = first;
    if (c < end && c % 2 == greenParity) one(c++, true);
    for (; c + 1 < end; c += 2) {
        one(c, false);
        one(c + 1, true);
    }
    if (c < end) one(c, false);
}

// (a + b + c + d + 2) >> 2 of the means x of a and b and y of c and d: where a mean was rounded up and their own mean is as well, that is
// one too many.
template <class V>
KUV_INLINE V meanOfMeans(V a, V b, V c, V d, V x, V y) {
    using Signed = std::make_signed_t<typename V::Lane>;
    const V excess = bitAnd(bitAnd(bitOr(bitXor(a, b), bitXor(c, d)), bitXor(x, y)), as<typename V::Lane>(fill<Vector<Signed, V::bytes>>(1)));
    return as<typename V::Lane>(sub(as<Signed>(average(x, y)), as<Signed>(excess)));
}

// A mask.
template <class V>
KUV_INLINE V evenLanes() {
    using T = typename V::Lane;
    if constexpr (sizeof(T) == 1) return as<T>(fill<Vector<Kuv16s, V::bytes>>(0xFF));
    else return as<T>(fill<Vector<Kuv32s, V::bytes>>(0xFFFF));
}

template <class V>
constexpr bool alternatesAtOnce = sizeof(typename V::Lane) == 2 && hasSSE41;

// Lanes in turn from `even` and from `odd`.
template <class V>
KUV_INLINE V alternate(V even, V odd) {
    if constexpr (alternatesAtOnce<V>) {
        return blend<0xAA>(even, odd);
    } else {
        // A selection by a mask takes three of these operations on some processors, and of two alternations both ways they share two.
        return bitXor(odd, bitAnd(bitXor(even, odd), evenLanes<V>()));
    }
}

// The even (odd) lanes of a, each followed by that of b, as one lane of twice the width.
template <class V>
using Pairs = Vector<std::conditional_t<sizeof(typename V::Lane) == 1, Kuv16u, Kuv32u>, V::bytes>;
template <class V>
KUV_INLINE Pairs<V> evenPairs(V a, V b) {
    using Wide = typename Pairs<V>::Lane;
    const auto upper = as<typename V::Lane>(shiftLeft<4 * sizeof(Wide)>(as<std::make_signed_t<Wide>>(b)));
    if constexpr (alternatesAtOnce<V>) return as<Wide>(alternate(a, upper));
    else return as<Wide>(bitOr(bitAnd(a, evenLanes<V>()), upper));
}
template <class V>
KUV_INLINE Pairs<V> oddPairs(V a, V b) {
    using Wide = typename Pairs<V>::Lane;
    const auto lower = as<typename V::Lane>(shiftRight<4 * sizeof(Wide)>(as<Wide>(a)));
    if constexpr (alternatesAtOnce<V>) return as<Wide>(alternate(lower, b));
    else return as<Wide>(bitOr(lower, bitAndNot(evenLanes<V>(), b)));
}

// Two neighbouring rows of a mosaic and the two before and behind them: row 0, with red and blue in even columns, and row 1, with red and
// blue in odd ones. They may go upward or downward.
template <class T>
struct PairRows {
    const T* row[6];

    KUV_INLINE const T* operator[](int index) const { return row[2 + index]; }
};

// Columns of such rows, each alternating with the next: from rows 0 and 1 that makes a row of red and blue only and one of green only, so
// that nothing is computed for a site that does not need it.
template <class T>
class PairStrip {
public:
    static constexpr ptrdiff_t columns = 1024 / sizeof(T);

    // `count` columns from c on, with two more to either side.
    template <class V>
    KUV_INLINE void fill(const PairRows<T>& rows, ptrdiff_t c, ptrdiff_t count) {
        const auto fillAt = [&](ptrdiff_t i) __attribute__((always_inline)) {
            const auto from = [&](int row) { return load<V>(rows[row] + c + i); };
            store(sites_ + margin + i, alternate(from(0), from(1)));
            store(beside_[0] + margin + i, alternate(from(0), from(-1)));
            store(beside_[1] + margin + i, alternate(from(1), from(0)));
            store(beside_[2] + margin + i, alternate(from(2), from(1)));
        };
        fillAt(-2);
        for (ptrdiff_t i = 0; i + V::lanes <= count && count > V::lanes; i += V::lanes) fillAt(i);
        fillAt(count + 2 - V::lanes);
    }

    // From column i of the strip on: where both rows have red or blue, or what stands `row` rows behind where they have not.
    template <class V>
    KUV_INLINE V site(ptrdiff_t i) const { return load<V>(sites_ + margin + i); }
    template <class V>
    KUV_INLINE V beside(int row, ptrdiff_t i) const { return load<V>(beside_[1 + row] + margin + i); }

private:
    static constexpr ptrdiff_t margin = 32 / sizeof(T);
    alignas(32) T sites_[columns + 2 * margin], beside_[3][columns + 2 * margin];
};

// As many columns as V has lanes, from c on, which is column i of the strip. Either output may be null.
template <bool ring, bool redFirst, class V, class T>
KUV_INLINE void interpolatePairVector(const PairRows<T>& rows, const PairStrip<T>& strip, ptrdiff_t i, ptrdiff_t c, T* out0, T* out1) {
    const auto both = [&](int row) { return alternate(load<V>(rows[row] + c), load<V>(rows[row + 1] + c)); };
    const auto site = [&](int column) { return strip.template site<V>(i + column); };
    const auto beside = [&](int row, int column) { return strip.template beside<V>(row, i + column); };
    const V up = both(-1), down = both(1), left = beside(0, -1), right = beside(0, 1);
    const V vertical = average(up, down), horizontal = average(left, right);
    V first = vertical, second = horizontal;
    if constexpr (!ring) {
        // Both are the one along which less changes, where there is one. The mean of what is the same is the same.
        const V alongColumn = absoluteDifference(both(-2), both(2)), alongRow = absoluteDifference(site(-2), site(2));
        const V least = minimum(alongColumn, alongRow), either = bitXor(vertical, horizontal);
        first = bitXor(horizontal, bitAnd(either, equal(least, alongColumn)));
        second = bitXor(vertical, bitAnd(either, equal(least, alongRow)));
    }
    const V around = meanOfMeans(up, down, left, right, first, second);
    const V upLeft = beside(-1, -1), upRight = beside(-1, 1), downLeft = beside(1, -1), downRight = beside(1, 1);
    const V diagonals = meanOfMeans(upLeft, upRight, downLeft, downRight, average(upLeft, upRight), average(downLeft, downRight));
    const V ownAtGreen = average(site(-1), site(1)), otherAtGreen = average(beside(-1, 0), beside(1, 0));

    // By place in a pixel of row 0. In row 1 it is the other way round.
    const V firstAtSite = redFirst ? site(0) : diagonals, lastAtSite = redFirst ? diagonals : site(0);
    const V firstAtGreen = redFirst ? ownAtGreen : otherAtGreen, lastAtGreen = redFirst ? otherAtGreen : ownAtGreen;
    using Wide = typename Pairs<V>::Lane;
    const auto write = [&](T* out, Pairs<V> x, V y, Pairs<V> z) __attribute__((always_inline)) {
        if (out) storeInterleaved3(reinterpret_cast<Wide*>(out + 3 * c), x, as<Wide>(y), z);
    };
    write(out0, evenPairs(firstAtSite, around), alternate(lastAtSite, firstAtGreen), oddPairs(beside(0, 0), lastAtGreen));
    write(out1, evenPairs(lastAtGreen, beside(0, 0)), alternate(firstAtGreen, lastAtSite), oddPairs(around, firstAtSite));
}

// As many vectors as there are in columns `first` to `end` - 1, at which nothing is reflected. `redFirst` is said of row 0. Either output
// may be null; they are the pixels of column 0.
template <bool ring, class V, class T>
__attribute__((noinline)) void interpolatePair(const PairRows<T>& rows, ptrdiff_t first, ptrdiff_t end, bool redFirst, T* out0, T* out1) {
    PairStrip<T> strip;
    const auto vectors = [&](auto order, ptrdiff_t count) __attribute__((always_inline)) {
        for (ptrdiff_t i = 0; i < count; i += V::lanes) interpolatePairVector<ring, order.value, V>(rows, strip, i, first + i, out0, out1);
    };
    while (end - first >= V::lanes) {
        ptrdiff_t count = end - first < strip.columns ? end - first : strip.columns;
        count -= count % V::lanes;
        strip.template fill<V>(rows, first, count);
        if (redFirst) vectors(std::true_type{}, count);
        else vectors(std::false_type{}, count);
        first += count;
    }
}

// A row and, unless `nextOut` is null, the next one, in columns at which nothing is reflected.
template <bool ring, class T>
KUV_INLINE void interpolateRows(const MosaicRows<T>& rows, const MosaicRows<T>& nextRows, ptrdiff_t first, ptrdiff_t end, ptrdiff_t greenParity,
                                T* out, T* nextOut, RowColours colours) {
    if constexpr (hasVectors) {
        using V = Native<T>;
        const PairRows<T> downward = {{rows[-2], rows[-1], rows[0], rows[1], rows[2], nextRows[2]}};
        const PairRows<T> upward = {{nextRows[2], rows[2], rows[1], rows[0], rows[-1], rows[-2]}};
        const auto some = [&](ptrdiff_t from, ptrdiff_t to) __attribute__((always_inline)) {
            const bool isRed = colours.own == 0;
            if (from % 2 != greenParity) interpolatePair<ring, V>(downward, from, to, isRed, out, nextOut);
            else interpolatePair<ring, V>(upward, from, to, !isRed, nextOut, out);
        };
        if (end - first >= V::lanes) {
            // Vectors at either end may lie on others. In long rows it pays to align those.
            const ptrdiff_t unaligned = pixelsToAlignment<3 * sizeof(T)>(out + 3 * first, V::bytes);
            const ptrdiff_t from = end - first < PairStrip<T>::columns ? first : first + unaligned;
            if (from > first) some(first, first + V::lanes);
            some(from, end);
            if ((end - from) % V::lanes) some(end - V::lanes, end);
            return;
        }
    }
    interpolateColumns<ring>(rows, first, end, greenParity, out, colours);
    if (nextOut) interpolateColumns<ring>(nextRows, first, end, 1 - greenParity, nextOut, colours.own == 0 ? blueRow : redRow);
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
