// Blocks of sums for kernels of the sizes that many use, unrolled.
#pragma once

#include "core/integers.hpp"
#include "filter/filter_border_operands.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// Which columns of a row are written past the caches, by blocks of whole lines that begin where a line of the destination does: those
// between the two cuts in the middle. What is before and behind them has room for a block, or is empty.
struct Cuts {
    ptrdiff_t at[4];
};

KUV_INLINE Cuts cutRow(const Kuv32f* dst, ptrdiff_t width, ptrdiff_t blockWidth) {
    constexpr ptrdiff_t line = 64 / sizeof(Kuv32f);
    ptrdiff_t begin = samplesToAlignment(dst, 64);
    while (begin > 0 && begin < blockWidth) begin += line;
    if (begin + blockWidth > width || reinterpret_cast<std::uintptr_t>(dst + begin) % 64 != 0) return {{0, 0, 0, width}};
    ptrdiff_t end = begin + (width - begin) / blockWidth * blockWidth;
    if (end < width && width - end < blockWidth) end -= blockWidth;
    return {{0, begin, end, width}};
}

// What the kernel's columns cover, one column after the other. Many wide loads lie in two lines of the cache, which takes as long as two
// loads: of these only each third column and the last one are loaded, and those between are put together from their neighbours.
template <class V, int columns>
class ColumnSamples {
public:
    template <int column>
    KUV_INLINE V take(const Kuv32f* src) {
        constexpr int before = column / 3 * 3, behind = before + 3 < columns ? before + 3 : columns - 1;
        if constexpr (!hasAVX) {
            return load<V>(src + column);
        } else if constexpr (column == before) {
            before_ = column == 0 ? load<V>(src) : behind_;
            if constexpr (column < behind) behind_ = load<V>(src + behind);
            return before_;
        } else if constexpr (column == behind) {
            return behind_;
        } else {
            return lanePairs<column - before, column + 2 - behind>(before_, behind_);
        }
    }

private:
    V before_, behind_;
};

// The sums of a block for a kernel of a known size: with all offsets known and no loop, so that up to nine coefficients stay in registers.
template <class V, int kw, int kh, int rows, int vectors>
struct FixedBlock {
    V sums[rows][vectors];

    template <int j = 0>
    KUV_INLINE void addRows(const V* coefficients, const Kuv32f* src, ptrdiff_t srcStep) {
        if constexpr (j < rows + kh - 1) {
            ColumnSamples<V, kw> columns[vectors];
            addColumns<j, 0>(coefficients, src, columns);
            addRows<j + 1>(coefficients, rowAt(src, srcStep, 1), srcStep);
        }
    }

private:
    template <int j, int i>
    KUV_INLINE void addColumns(const V* coefficients, const Kuv32f* src, ColumnSamples<V, kw> (&columns)[vectors]) {
        if constexpr (i < kw) {
            V samples[vectors];
#pragma GCC unroll 8
            for (int v = 0; v < vectors; ++v) samples[v] = columns[v].template take<i>(src + v * V::lanes);
#pragma GCC unroll 8
            for (int r = 0; r < rows; ++r) {
                if (r > j || r <= j - kh) continue;
                const V coefficient = coefficients[(j - r) * kw + i];
                // What is left behind eight in a row or column.
                static_assert(kw <= 8 || kh == 1);
                const bool begins = r == j && i == 0, apart = i == 8 || (hasAVX && kw == 1 && j - r == 8);
#pragma GCC unroll 8
                for (int v = 0; v < vectors; ++v) {
                    V& sum = sums[r][v];
                    if (begins) sum = multiply(coefficient, samples[v]);
                    else if (apart) sum = add(sum, multiply(coefficient, samples[v]));
                    else sum = sumWithProduct(sum, coefficient, samples[v]);
                }
            }
            addColumns<j, i + 1>(coefficients, src, columns);
        }
    }
};

// A kernel of a size that many use. The last block of a row may lie on the one before it, and so may the last row of blocks. False if the
// image is smaller than a block.
template <class V, int kw, int kh, int rows, int vectors, bool streaming = false>
__attribute__((noinline)) bool filterFixed(const Kernel& kernel, const Images& images) {
    constexpr int width = vectors * V::lanes;
    static_assert(!streaming || vectors * V::bytes % 64 == 0);
    const ptrdiff_t srcStep = images.srcStep, dstStep = images.dstStep, imageWidth = images.width, lastRow = images.height - rows;
    if (imageWidth < width || lastRow < 0) return false;
    V coefficients[kh * kw];
    for (int k = 0; k < kh * kw; ++k) coefficients[k] = fill<V>(kernel.first[-k]);
    for (ptrdiff_t row = 0;; row += rows) {
        const ptrdiff_t y = smaller(row, lastRow);
        const Kuv32f* const src = rowAt(images.src, srcStep, y);
        Kuv32f* const dst = rowAt(images.dst, dstStep, y);
        const auto columns = [&](ptrdiff_t begin, ptrdiff_t end, bool past) __attribute__((always_inline)) {
            for (ptrdiff_t column = begin; column < end; column += width) {
                const ptrdiff_t x = smaller(column, end - width);
                prefetchRows<rows>(rowAt(src, srcStep, kh + rows - 1) + x, srcStep, width);
                FixedBlock<V, kw, kh, rows, vectors> block;
                block.addRows(coefficients, src + x, srcStep);
#pragma GCC unroll 8
                for (int r = 0; r < rows; ++r) {
                    Kuv32f* const to = rowAt(dst, dstStep, r) + x;
#pragma GCC unroll 8
                    for (int v = 0; v < vectors; ++v) {
                        if (past) stream(to + v * V::lanes, block.sums[r][v]);
                        else store(to + v * V::lanes, block.sums[r][v]);
                    }
                }
            }
        };
        if constexpr (streaming) {
            const Cuts cuts = cutRow(dst, imageWidth, width);
            for (int k = 0; k < 3; ++k) columns(cuts.at[k], cuts.at[k + 1], k == 1);
        } else {
            columns(0, imageWidth, false);
        }
        if (y == lastRow) break;
    }
    if constexpr (streaming) streamFence();
    return true;
}

// A size that many use, in blocks of `rows` by `vectors`, or of other rows by what covers whole lines, or by one vector where there is no
// room for more.
template <int kw, int kh, int rows, int vectors, int lineRows>
struct CommonSize {
    // Without fused products large squares lack registers.
    static constexpr bool pays = hasAVX2 || kw * kh <= 9;

    KUV_INLINE static bool is(const Kernel& kernel) { return pays && kernel.width == kw && kernel.height == kh; }

    template <class V>
    KUV_INLINE static bool filter(const Kernel& kernel, const Images& images) {
        if constexpr (!pays) {
            return false;
        } else {
            if constexpr (hasAVX) {
                if (images.streaming) return filterFixed<V, kw, kh, lineRows, 2, true>(kernel, images);
            }
            if constexpr (vectors > 1) {
                if (images.width < vectors * V::lanes) return filterFixed<V, kw, kh, lineRows, 1>(kernel, images);
            }
            return filterFixed<V, kw, kh, rows, vectors>(kernel, images);
        }
    }
};

template <class... Sizes>
struct CommonSizesOf {
    KUV_INLINE static bool have(const Kernel& kernel) { return (Sizes::is(kernel) || ...); }

    // False if the kernel has another size or the image is smaller than a block.
    template <class V>
    KUV_INLINE static bool filter(const Kernel& kernel, const Images& images) {
        return ((Sizes::is(kernel) && Sizes::template filter<V>(kernel, images)) || ...);
    }
};

constexpr int rowVectors = hasAVX ? 2 : 4;  // samples and coefficients need the registers
using CommonSizes = CommonSizesOf<
    CommonSize<3, 3, hasAVX2 ? 5 : 6, 1, 3>, CommonSize<5, 5, 6, 2, 6>, CommonSize<7, 7, 6, 2, 6>,
    CommonSize<3, 1, 1, 4, 4>, CommonSize<5, 1, 1, rowVectors, 4>, CommonSize<7, 1, 1, rowVectors, 4>, CommonSize<9, 1, 1, rowVectors, 4>,
    CommonSize<1, 3, 8, 1, 4>, CommonSize<1, 5, 8, 1, 4>, CommonSize<1, 7, 8, 1, 4>, CommonSize<1, 9, 8, 1, 4>>;

}  // namespace
}  // namespace kuv::KUV_VARIANT
