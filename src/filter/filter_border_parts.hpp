// Blocks of sums for large kernels, with fused products.
#pragma once

#include <utility>

#include "core/integers.hpp"
#include "filter/filter_border_operands.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// What is taken for new here the compiler loads once and keeps no longer than it is told to. Left to itself it loads samples again for each
// use, and keeps coefficients of one row for the next, until sums have no registers.
template <class V>
KUV_INLINE V inRegister(V value) {
    asm("" : "+x"(value.raw));
    return value;
}
KUV_INLINE const Kuv32f* anew(const Kuv32f* address) {
    asm("" : "+r"(address));
    return address;
}

// The sums of a row of blocks for a part of so many columns, and of at least rows - 1 rows. The part's first rows reach a block's first
// rows only, its last rows the last ones: as a block's sums are complete, row by row, those of the next block take their place.
template <class V, int columns, int rows, int vectors>
class PartBlocks {
public:
    static constexpr ptrdiff_t width = vectors * V::lanes;

    KUV_INLINE PartBlocks(const Part& part, const Images& images, bool adding)
        : part_(part), src_(images.src), srcStep_(images.srcStep), dst_(images.dst), dstStep_(images.dstStep), adding_(adding) {}

    KUV_INLINE void run(ptrdiff_t blocks) {
        const Row first = {src_, part_.first};
        turn<false, true>(first, first);
        for (; blocks > 1; --blocks, dst_ += width) {
            prefetchRows<rows>(rowAt(src_, srcStep_, part_.rows + rows - 1), srcStep_, width);
            prefetchRows<rows>(rowAt(dst_, dstStep_, rows), dstStep_, width);
            const Row last = addRows();
            src_ += width;
            turn<true, true>(last, {anew(src_), part_.first});
        }
        const Row last = addRows();
        turn<true, false>(last, last);
    }

private:
    // A row of the source and the part's coefficients for it.
    struct Row {
        const Kuv32f* src;
        const Kuv32f* coefficients;
    };
    KUV_INLINE Row below(const Row& row) const { return {anew(rowAt(row.src, srcStep_, 1)), anew(row.coefficients - part_.pitch)}; }

    // The rows that all of a block's sums have a part in. Returns the one below them.
    KUV_INLINE Row addRows() {
#pragma GCC unroll 8
        for (int v = 0; v < vectors; ++v) sums_[rows - 1][v] = fill<V>(-0.0f);
        Row row = {rowAt(src_, srcStep_, rows - 1), part_.first - (rows - 1) * part_.pitch};
        for (ptrdiff_t k = rows - 1; k < part_.rows; ++k, row = below(row)) {
#pragma GCC unroll 8
            for (int i = 0; i < columns; ++i) addColumn<0, rows - 1>(row, i, false);
        }
        return row;
    }

    // From a block's last rows to the next block's first ones.
    template <bool ends, bool begins>
    KUV_INLINE void turn(const Row& last, const Row& first) {
        turnFrom<ends, begins, 1>(last, first);
        if constexpr (ends) putRow(rows - 1);
    }
    template <bool ends, bool begins, int row>
    KUV_INLINE void turnFrom(const Row& last, const Row& first) {
        if constexpr (row < rows) {
            if constexpr (ends) putRow(row - 1);
#pragma GCC unroll 8
            for (int i = 0; i < columns; ++i) {
                if constexpr (ends) addColumn<row, rows - 1>(last, i, false);
                if constexpr (begins) addColumn<0, row - 1>(first, i, i == 0);
            }
            turnFrom<ends, begins, row + 1>(ends ? below(last) : last, begins ? below(first) : first);
        }
    }

    // A column of a row, for the block's rows from `first` to `last`, the sums of which it may begin.
    template <int first, int last>
    KUV_INLINE void addColumn(const Row& row, int column, bool beginsLast) {
        V samples[vectors];
#pragma GCC unroll 8
        for (int v = 0; v < vectors; ++v) samples[v] = inRegister(load<V>(row.src + column + v * V::lanes));
#pragma GCC unroll 8
        for (int r = first; r <= last; ++r) {
            const V coefficient = inRegister(fill<V>(row.coefficients[r * part_.pitch - column]));
#pragma GCC unroll 8
            for (int v = 0; v < vectors; ++v) {
                V& sum = sums_[r][v];
                sum = beginsLast && r == last ? multiply(coefficient, samples[v]) : plusProduct(coefficient, samples[v], sum);
            }
        }
    }

    KUV_INLINE void putRow(int row) const {
#pragma GCC unroll 8
        for (int v = 0; v < vectors; ++v) {
            Kuv32f* const to = rowAt(dst_, dstStep_, row) + v * V::lanes;
            store(to, adding_ ? add(load<V>(to), sums_[row][v]) : sums_[row][v]);
        }
    }

    const Part part_;
    const Kuv32f* src_;
    const ptrdiff_t srcStep_;
    Kuv32f* dst_;
    const ptrdiff_t dstStep_;
    const bool adding_;
    V sums_[rows][vectors];
};

// A row of blocks.
template <class V, int rows, int vectors, int columns>
__attribute__((noinline)) void filterPartOf(const Part& part, const Images& images, bool adding) {
    PartBlocks<V, columns, rows, vectors> blocks(part, images, adding);
    blocks.run(images.width / blocks.width);
}

template <class V, int rows, int vectors, int... fewer>
KUV_INLINE void filterPart(std::integer_sequence<int, fewer...>, const Part& part, const Images& images, bool adding) {
    ((part.columns == fewer + 1 ? filterPartOf<V, rows, vectors, fewer + 1>(part, images, adding) : void()), ...);
}

// An image that is no smaller than a block. The last block of a row may lie on the one before it, once that is complete, and so may the
// last row of blocks.
template <class V, int rows, int vectors>
void filterRows(const Kernel& kernel, const Images& images) {
    constexpr ptrdiff_t width = vectors * V::lanes;
    const ptrdiff_t kw = kernel.width, lastRow = images.height - rows, end = images.width, inBlocks = end / width * width;
    const auto columns = [&](ptrdiff_t x, ptrdiff_t y, ptrdiff_t count) {
        const Kuv32f* const src = rowAt(images.src, images.srcStep, y) + x;
        Kuv32f* const dst = rowAt(images.dst, images.dstStep, y) + x;
        for (ptrdiff_t i = 0; i < kw; i += 8) {
            const Part part = {kernel.at(0, i), kw, kernel.height, smaller(ptrdiff_t{8}, kw - i)};
            filterPart<V, rows, vectors>(std::make_integer_sequence<int, 8>(), part,
                                         {src + i, images.srcStep, dst, images.dstStep, count, rows, false}, i > 0);
        }
    };
    for (ptrdiff_t row = 0;; row += rows) {
        const ptrdiff_t y = smaller(row, lastRow);
        columns(0, y, inBlocks);
        if (inBlocks < end) columns(end - width, y, width);
        if (y == lastRow) break;
    }
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
