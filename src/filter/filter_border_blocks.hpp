// Blocks of sums for kernels of any size.
#pragma once

#include "core/integers.hpp"
#include "filter/filter_border_operands.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// In which order products are added.
enum class Order {
    byEights,    // eight columns of the kernel after eight others
    alternating  // in each row the even and the odd columns apart
};

// The sums of a block of pixels, `rows` by `vectors`, for a part of the kernel. Each row of the source is read once, for all of the
// block's rows that it counts in.
template <class V, int rows, int vectors, Order order>
class Block {
    using Lanes = LanesOf<V>;
    static constexpr int lanes = Lanes::count;

public:
    static constexpr int width = vectors * lanes;

    KUV_INLINE void addPart(const Part& part, const Kuv32f* src, ptrdiff_t srcStep) {
#pragma GCC unroll 8
        for (int r = 0; r < rows; ++r) {
#pragma GCC unroll 8
            for (int v = 0; v < vectors; ++v) sums_[r][v] = Lanes::all(-0.0f);
        }
        // The part's first rows reach the block's first rows only, its last rows the last ones.
        static_assert(rows <= 3);
        const ptrdiff_t last = part.rows + rows - 2;
        addRow<0, 0>(part, 0, src, srcStep);
        if (rows == 3 && part.rows == 1) {
            addRow<rows / 2, rows / 2>(part, 1, src, srcStep);
        } else {
            if constexpr (rows == 3) addRow<0, 1>(part, 1, src, srcStep);
            for (ptrdiff_t row = rows == 3 ? 2 : 1; row < part.rows; ++row) addRow<0, rows - 1>(part, row, src, srcStep);
            if constexpr (rows == 3) addRow<1, 2>(part, part.rows, src, srcStep);
        }
        if constexpr (rows > 1) addRow<rows - 1, rows - 1>(part, last, src, srcStep);
    }

    // Adds the products of a single coefficient.
    KUV_INLINE void addProducts(Kuv32f coefficient, const Kuv32f* src, ptrdiff_t srcStep) {
        const V factor = Lanes::all(coefficient);
#pragma GCC unroll 8
        for (int r = 0; r < rows; ++r) {
            const Kuv32f* const from = rowAt(src, srcStep, r);
#pragma GCC unroll 8
            for (int v = 0; v < vectors; ++v) sums_[r][v] = add(sums_[r][v], multiply(factor, Lanes::from(from + v * lanes)));
        }
    }

    // Adds the sums for a part of a single row.
    KUV_INLINE void addFlat(const Part& part, const Kuv32f* src, ptrdiff_t srcStep) {
#pragma GCC unroll 8
        for (int r = 0; r < rows; ++r) {
            const Kuv32f* const from = rowAt(src, srcStep, r);
            V more[vectors];
#pragma GCC unroll 8
            for (int v = 0; v < vectors; ++v) more[v] = Lanes::all(-0.0f);
            for (ptrdiff_t i = 0; i < part.columns; ++i) {
                const V coefficient = Lanes::all(part.first[-i]);
#pragma GCC unroll 8
                for (int v = 0; v < vectors; ++v) more[v] = sumWithProduct(more[v], coefficient, Lanes::from(from + i + v * lanes));
            }
#pragma GCC unroll 8
            for (int v = 0; v < vectors; ++v) sums_[r][v] = add(sums_[r][v], more[v]);
        }
    }

    KUV_INLINE void put(Kuv32f* dst, ptrdiff_t dstStep, bool adding) const {
#pragma GCC unroll 8
        for (int r = 0; r < rows; ++r) {
#pragma GCC unroll 8
            for (int v = 0; v < vectors; ++v) {
                Kuv32f* const to = rowAt(dst, dstStep, r) + v * lanes;
                Lanes::to(to, adding ? add(Lanes::from(to), sums_[r][v]) : sums_[r][v]);
            }
        }
    }

private:
    // A row of the source, for the rows from `first` to `last` of the block: the coefficients of each belong to the row before those of
    // the block's row above it.
    template <int first, int last>
    KUV_INLINE void addRow(const Part& part, ptrdiff_t row, const Kuv32f* image, ptrdiff_t srcStep) {
        const Kuv32f* const src = rowAt(image, srcStep, row);
        const Kuv32f* const coefficients = part.first - row * part.pitch;
        const ptrdiff_t pitch = part.pitch, columns = part.columns;
        if constexpr (order == Order::byEights) {
            for (ptrdiff_t i = 0; i < columns; ++i) addColumn<first, last>(coefficients - i, pitch, src + i, sums_);
        } else {
            V even[rows][vectors], odd[rows][vectors];
#pragma GCC unroll 8
            for (int r = first; r <= last; ++r) {
#pragma GCC unroll 8
                for (int v = 0; v < vectors; ++v) even[r][v] = odd[r][v] = Lanes::all(-0.0f);
            }
            ptrdiff_t i = 0;
            for (; i + 2 <= columns; i += 2) {
                addColumn<first, last>(coefficients - i, pitch, src + i, even);
                addColumn<first, last>(coefficients - i - 1, pitch, src + i + 1, odd);
            }
            if (i < columns) addColumn<first, last>(coefficients - i, pitch, src + i, even);
#pragma GCC unroll 8
            for (int r = first; r <= last; ++r) {
#pragma GCC unroll 8
                for (int v = 0; v < vectors; ++v) sums_[r][v] = add(sums_[r][v], add(even[r][v], odd[r][v]));
            }
        }
    }

    template <int first, int last>
    KUV_INLINE static void addColumn(const Kuv32f* coefficients, ptrdiff_t pitch, const Kuv32f* src, V (&sums)[rows][vectors]) {
        V coefficient[rows];
#pragma GCC unroll 8
        for (int r = first; r <= last; ++r) coefficient[r] = Lanes::all(coefficients[r * pitch]);
#pragma GCC unroll 8
        for (int v = 0; v < vectors; ++v) {
            const V samples = Lanes::from(src + v * lanes);
#pragma GCC unroll 8
            for (int r = first; r <= last; ++r) sums[r][v] = sumWithProduct(sums[r][v], coefficient[r], samples);
        }
    }

    V sums_[rows][vectors];
};

// The columns from `begin` to `end`, at least a block's width of them, in blocks; the last one of a row may lie on the one before it, and
// so may the last row of blocks.
template <class V, int rows, int vectors, Order order>
__attribute__((noinline)) void filterBlocks(const Kernel& kernel, const Images& images, ptrdiff_t begin, ptrdiff_t end) {
    using Sums = Block<V, rows, vectors, order>;
    const ptrdiff_t kw = kernel.width, kh = kernel.height, srcStep = images.srcStep;
    const ptrdiff_t lastColumn = end - Sums::width, lastRow = images.height - rows;
    ptrdiff_t partColumns = kw, partRows = kh;
    if constexpr (order == Order::byEights) {
        // From AVX on a kernel of a single row or column has two parts: as many eights as there are, and the rest.
        const auto eights = [](ptrdiff_t extent) { return extent < 8 ? extent : extent / 8 * 8; };
        partColumns = smaller(hasAVX && kh == 1 ? eights(kw) : 8, kw);
        if (hasAVX && kw == 1) partRows = eights(kh);
    }
    // What stays of a row or a column is often a single coefficient.
    const bool endsInOne = order == Order::byEights && partColumns * partRows + 1 == kw * kh;
    for (ptrdiff_t row = 0;; row += rows) {
        const ptrdiff_t y = smaller(row, lastRow);
        const Kuv32f* const src = rowAt(images.src, srcStep, y);
        Kuv32f* const dst = rowAt(images.dst, images.dstStep, y);
        for (ptrdiff_t column = begin;; column += Sums::width) {
            const ptrdiff_t x = smaller(column, lastColumn);
            if constexpr (rows == 1 && vectors > 1) prefetchRows<rows>(rowAt(src, srcStep, kh) + x, srcStep, Sums::width);
            Part part = {kernel.first, kw, partRows, partColumns};
            const Kuv32f* from = src + x;
            for (ptrdiff_t i = 0, j = 0;;) {
                Sums sums;
                sums.addPart(part, from, srcStep);
                if (endsInOne) {
                    sums.addProducts(*kernel.at(kh - 1, kw - 1), rowAt(src, srcStep, kh - 1) + x + kw - 1, srcStep);
                    sums.put(dst + x, images.dstStep, false);
                    break;
                }
                if (order == Order::byEights && kh == 1) {
                    while ((i += partColumns) < kw) {
                        sums.addFlat({kernel.at(0, i), kw, 1, smaller(partColumns, kw - i)}, src + x + i, srcStep);
                    }
                    sums.put(dst + x, images.dstStep, false);
                    break;
                }
                sums.put(dst + x, images.dstStep, i + j > 0);
                i += partColumns;
                if (i >= kw) {
                    i = 0;
                    j += partRows;
                    if (j >= kh) break;
                }
                part = {kernel.at(j, i), kw, smaller(partRows, kh - j), smaller(partColumns, kw - i)};
                from = rowAt(src, srcStep, j) + x + i;
            }
            if (x == lastColumn) break;
        }
        if (y == lastRow) break;
    }
}

// All columns, in blocks of several vectors and, where these would mostly lie on each other, of one.
template <class V, int rows, int vectors, Order order>
KUV_INLINE void filterColumns(const Kernel& kernel, const Images& images) {
    constexpr ptrdiff_t blockWidth = vectors * V::lanes;
    const ptrdiff_t end = images.width, rest = end % blockWidth;
    const ptrdiff_t inBlocks = end < blockWidth ? 0 : rest > V::lanes ? end : end - rest;
    if (inBlocks > 0) filterBlocks<V, rows, vectors, order>(kernel, images, 0, inBlocks);
    if (inBlocks < end) filterBlocks<V, rows, 1, order>(kernel, images, inBlocks > 0 ? end - V::lanes : 0, end);
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
