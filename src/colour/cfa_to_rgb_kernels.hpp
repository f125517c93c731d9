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

// Lanes of green sites, the even ones if the first is green, from a, the others from b.
template <bool greenFirst, class V>
KUV_INLINE V atGreen(V a, V b) {
    if constexpr (sizeof(typename V::Lane) == 2) {
        return blend<greenFirst ? 0x55 : 0xAA>(b, a);
    } else {
        const V green = as<Kuv8u>(fill<Vector<Kuv16s, V::bytes>>(static_cast<Kuv16s>(greenFirst ? 0x00FF : 0xFF00)));
        return select(green, a, b);
    }
}

// As many columns as V has lanes, from c on.
template <bool ring, class V, bool greenFirst, class T>
KUV_INLINE void interpolateVector(const MosaicRows<T>& rows, ptrdiff_t c, T* out, RowColours colours) {
    const auto at = [&](int row, int column) { return load<V>(rows[row] + c + column); };
    const V up = at(-1, 0), down = at(1, 0), left = at(0, -1), right = at(0, 1), site = at(0, 0);
    const V vertical = average(up, down), horizontal = average(left, right);
    V first = vertical, second = horizontal;
    if constexpr (!ring) {
        // Both are the one along which less changes, where there is one. The mean of what is the same is the same.
        const V alongColumn = absoluteDifference(at(-2, 0), at(2, 0)), alongRow = absoluteDifference(at(0, -2), at(0, 2));
        const V least = minimum(alongColumn, alongRow), either = bitXor(vertical, horizontal);
        first = bitXor(horizontal, bitAnd(either, equal(least, alongColumn)));
        second = bitXor(vertical, bitAnd(either, equal(least, alongRow)));
    }
    const V around = meanOfMeans(up, down, left, right, first, second);
    const V upLeft = at(-1, -1), upRight = at(-1, 1), downLeft = at(1, -1), downRight = at(1, 1);
    const V diagonals = meanOfMeans(upLeft, upRight, downLeft, downRight, average(upLeft, upRight), average(downLeft, downRight));
    const V own = atGreen<greenFirst>(horizontal, site), other = atGreen<greenFirst>(vertical, diagonals);
    const V middle = atGreen<greenFirst>(site, around);
    if (colours.own == 0) {
        storeInterleaved3(out + 3 * c, own, middle, other);
    } else {
        storeInterleaved3(out + 3 * c, other, middle, own);
    }
}

// interpolateColumns by vectors, whose writes are aligned but for the first and the last. These may lie on others.
template <bool ring, class T>
KUV_INLINE void interpolateRow(const MosaicRows<T>& rows, ptrdiff_t first, ptrdiff_t end, ptrdiff_t greenParity, T* out, RowColours colours) {
    if constexpr (hasVectors) {
        using V = Native<T>;
        const auto vectors = [&](auto greenFirst, ptrdiff_t from, ptrdiff_t to) __attribute__((always_inline)) {
            for (ptrdiff_t c = from; c < to; c += V::lanes) interpolateVector<ring, V, greenFirst.value>(rows, c, out, colours);
        };
        const auto some = [&](ptrdiff_t from, ptrdiff_t to) __attribute__((always_inline)) {
            if (from % 2 == greenParity) vectors(std::true_type{}, from, to);
            else vectors(std::false_type{}, from, to);
        };
        if (end - first >= V::lanes) {
            const ptrdiff_t last = end - V::lanes;
            const ptrdiff_t aligned = first + pixelsToAlignment<3 * sizeof(T)>(out + 3 * first, V::bytes);
            if (aligned > first && first < last) some(first, first + 1);
            some(aligned, last);
            some(last, end);
            return;
        }
    }
    interpolateColumns<ring>(rows, first, end, greenParity, out, colours);
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
