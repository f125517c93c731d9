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

// (a + b + c + d + 2) >> 2 of the means x of a and b and y of c and d, with their bits that differ, and bits of which the lowest tells
// whether one of them was rounded up: where it was and their own mean is as well, that is one too many.
template <class V>
KUV_INLINE V meanOfMeans(V x, V y, V difference, V rounded) {
    using T = typename V::Lane;
    using Signed = std::make_signed_t<T>;
    const V excess = bitAnd(bitAnd(rounded, difference), fill<V>(1));
    return as<T>(sub(as<Signed>(average(x, y)), as<Signed>(excess)));
}
template <class V>
KUV_INLINE V meanOfMeans(V x, V y, V rounded) { return meanOfMeans(x, y, bitXor(x, y), rounded); }

// The even and the odd ones of as many lanes in memory as two vectors have.
template <class V>
KUV_INLINE void splitLanes(const typename V::Lane* from, V& even, V& odd) {
    using T = typename V::Lane;
    const auto part = [from](int i) { return loadParts<Vector<Kuv8u, V::bytes>>(reinterpret_cast<const Kuv8u*>(from) + i * 16, 32); };
    if constexpr (sizeof(T) == 1) {
        const auto a = as<Kuv16s>(part(0)), b = as<Kuv16s>(part(1)), low = fill<Vector<Kuv16s, V::bytes>>(0xFF);
        const auto upper = [](auto v) { return as<Kuv16s>(shiftRight<8>(as<Kuv16u>(v))); };
        even = packUnsigned(bitAnd(a, low), bitAnd(b, low));
        odd = packUnsigned(upper(a), upper(b));
    } else {
        const auto a = as<Kuv32s>(part(0)), b = as<Kuv32s>(part(1));
        const auto lower = [](auto v) { return shiftRight<16>(shiftLeft<16>(v)); };
        even = as<Kuv16u>(pack(lower(a), lower(b)));
        odd = as<Kuv16u>(pack(shiftRight<16>(a), shiftRight<16>(b)));
    }
}

// Rows 0 and 1 of a mosaic with the two above and the two below them, as lines of even and of odd columns, so that neighbours of one colour
// are neighbours in memory. Columns are counted from the first one of a strip, where row 0 has red or blue. Moving down reuses the lines.
template <class T>
class SplitRows {
public:
    static constexpr ptrdiff_t columns = 4096 / sizeof(T);

    KUV_INLINE SplitRows() {
        for (int i = 0; i < 6; ++i) even_[i] = lines_[i] + margin;
    }

    // Two rows.
    KUV_INLINE void moveDown() {
        T *const first = even_[0], *const second = even_[1];
        for (int i = 0; i < 4; ++i) even_[i] = even_[i + 2];
        even_[4] = first;
        even_[5] = second;
    }

    // Row -2 to 3, `count` columns from `from` on. At either end stand two more, columnAt(-2) and columnAt(-1), columnAt(count) and so on.
    template <class V, class ColumnAt>
    KUV_INLINE void fill(int row, const T* from, ptrdiff_t count, ColumnAt columnAt) {
        T* const even = even_[2 + row];
        const auto fillAt = [&](ptrdiff_t c) __attribute__((always_inline)) {
            V a, b;
            splitLanes(from + c, a, b);
            store(even + c / 2, a);
            store(even + lineSize + c / 2, b);
        };
        const auto fillEnd = [&](ptrdiff_t c) __attribute__((always_inline)) {
            even[c / 2] = loadSample(columnAt(c));
            even[lineSize + c / 2] = loadSample(columnAt(c + 1));
        };
        fillEnd(-2);
        for (ptrdiff_t c = 0; c + 2 * V::lanes < count; c += 2 * V::lanes) fillAt(c);
        fillAt(count - 2 * V::lanes);
        fillEnd(count);
    }

    // From column 2 * i or 2 * i + 1 on.
    template <class V>
    KUV_INLINE V even(int row, ptrdiff_t i) const { return load<V>(even_[2 + row] + i); }
    template <class V>
    KUV_INLINE V odd(int row, ptrdiff_t i) const { return load<V>(even_[2 + row] + lineSize + i); }

private:
    // Lines that lie whole pages apart would share the same few places of the cache.
    static constexpr ptrdiff_t margin = 32 / sizeof(T), lineSize = columns / 2 + 10 * margin;
    T* even_[6];
    alignas(32) T lines_[6][2 * lineSize];
};

// Writes pixels in turn of even and of odd columns.
template <class V>
KUV_INLINE void storePixels(typename V::Lane* to, const V (&even)[3], const V (&odd)[3]) {
    using Pair = std::conditional_t<sizeof(typename V::Lane) == 1, Kuv16u, Kuv32u>;
    using Pairs = Vector<Pair, V::bytes>;
    const V first[3] = {even[0], even[2], odd[1]}, second[3] = {even[1], odd[0], odd[2]};
    Pairs low[3], high[3], lower[3], upper[3];
    for (int i = 0; i < 3; ++i) {
        low[i] = as<Pair>(interleaveLow(first[i], second[i]));
        high[i] = as<Pair>(interleaveHigh(first[i], second[i]));
    }
    interleave3(low, lower);
    interleave3(high, upper);
    storePartsOf(reinterpret_cast<Kuv8u*>(to), {as<Kuv8u>(lower[0]), as<Kuv8u>(lower[1]), as<Kuv8u>(lower[2]), as<Kuv8u>(upper[0]),
                                                as<Kuv8u>(upper[1]), as<Kuv8u>(upper[2])});
}

// Twice as many columns as V has lanes, from column 2 * i on. The outputs are the pixels of column 0. Either may be null.
template <bool ring, bool redFirst, class V, class T>
KUV_INLINE void interpolatePairVector(const SplitRows<T>& rows, ptrdiff_t i, T* out0, T* out1) {
    const auto even = [&](int row, int distance) { return rows.template even<V>(row, i + distance); };
    const auto odd = [&](int row, int distance) { return rows.template odd<V>(row, i + distance); };
    const auto greenAt = [](V up, V down, V left, V right, auto alongColumn, auto alongRow) __attribute__((always_inline)) {
        const V vertical = average(up, down), horizontal = average(left, right), rounded = bitOr(bitXor(up, down), bitXor(left, right));
        const V either = bitXor(vertical, horizontal);
        if constexpr (ring) {
            return meanOfMeans(vertical, horizontal, either, rounded);
        } else {
            // The mean along which less changes, and the other one where there is none. The mean of what is the same is the same.
            const V c = alongColumn(), r = alongRow();
            const V taken = bitXor(horizontal, bitAnd(either, equal(minimum(c, r), c))), both = bitAnd(either, equal(c, r));
            return meanOfMeans(taken, bitXor(taken, both), both, rounded);
        }
    };
    const auto write = [i](T* out, bool red, V own0, V green0, V other0, V own1, V green1, V other1) __attribute__((always_inline)) {
        if (red) storePixels<V>(out + 6 * i, {own0, green0, other0}, {own1, green1, other1});
        else storePixels<V>(out + 6 * i, {other0, green0, own0}, {other1, green1, own1});
    };

    const V own0 = average(even(0, 0), even(0, 1)), own1 = average(odd(1, -1), odd(1, 0));
    if (out0 != nullptr) {
        const V green = greenAt(even(-1, 0), even(1, 0), odd(0, -1), odd(0, 0), [&] { return absoluteDifference(even(-2, 0), even(2, 0)); },
                                [&] { return absoluteDifference(even(0, -1), even(0, 1)); });
        const V rounded = bitOr(bitXor(odd(-1, -1), odd(-1, 0)), bitXor(odd(1, -1), odd(1, 0)));
        const V other = meanOfMeans(average(odd(-1, -1), odd(-1, 0)), own1, rounded);
        write(out0, redFirst, even(0, 0), green, other, own0, odd(0, 0), average(odd(-1, 0), odd(1, 0)));
    }
    if (out1 != nullptr) {
        const V green = greenAt(odd(0, 0), odd(2, 0), even(1, 0), even(1, 1), [&] { return absoluteDifference(odd(-1, 0), odd(3, 0)); },
                                [&] { return absoluteDifference(odd(1, -1), odd(1, 1)); });
        const V rounded = bitOr(bitXor(even(0, 0), even(0, 1)), bitXor(even(2, 0), even(2, 1)));
        const V other = meanOfMeans(own0, average(even(2, 0), even(2, 1)), rounded);
        write(out1, !redFirst, own1, even(1, 0), average(even(0, 0), even(2, 0)), odd(1, 0), green, other);
    }
}

// `count` columns, even and at least twice as many as V has lanes. `redFirst` is said of row 0.
template <bool ring, class V, class T>
__attribute__((noinline)) void interpolatePair(const SplitRows<T>& rows, ptrdiff_t count, bool redFirst, T* out0, T* out1) {
    const auto vectors = [&](auto order) __attribute__((always_inline)) {
        const ptrdiff_t last = count / 2 - V::lanes;
        for (ptrdiff_t i = 0;; i = i + V::lanes < last ? i + V::lanes : last) {
            interpolatePairVector<ring, order.value, V>(rows, i, out0, out1);
            if (i == last) break;
        }
    };
    if (redFirst) vectors(std::true_type{});
    else vectors(std::false_type{});
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
