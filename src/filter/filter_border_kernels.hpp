// Sums of products of a kernel's coefficients and what it covers. Sources have all that kernels reach for.
#pragma once

#include <utility>

#include "core/integers.hpp"
#include "simd/real.hpp"
#include "simd/rows.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// A kernel as it is kept: from its first coefficient downward in memory.
struct Kernel {
    const Kuv32f* first;
    ptrdiff_t width, height;

    KUV_INLINE const Kuv32f* at(ptrdiff_t row, ptrdiff_t column) const { return first - (row * width + column); }
};

// Source and destination, from their first pixels on. filter() takes as the source's what the kernel's first coefficient covers of the
// first sum.
struct Images {
    const Kuv32f* src;
    ptrdiff_t srcStep;
    Kuv32f* dst;
    ptrdiff_t dstStep;
    ptrdiff_t width, height;
    bool streaming;  // past the caches, where whole lines are written
};

// The statement of the arithmetic.
KUV_INLINE Kuv32f exactSum(const Kernel& kernel, const Kuv32f* src, ptrdiff_t srcStep) {
    Kuv64f sum = -0.0;  // which adds nothing to what follows, not even a sign
    for (ptrdiff_t j = 0; j < kernel.height; ++j) {
        const Kuv32f* const row = rowAt(src, srcStep, j);
        const Kuv32f* const coefficients = kernel.at(j, 0);
        for (ptrdiff_t i = 0; i < kernel.width; ++i) sum += Kuv64f{coefficients[-i]} * Kuv64f{loadSample(row + i)};
    }
    return static_cast<Kuv32f>(sum);
}

void filterInDoubles(const Kernel& kernel, const Images& images) {
    for (ptrdiff_t y = 0; y < images.height; ++y) {
        const Kuv32f* const src = rowAt(images.src, images.srcStep, y);
        Kuv32f* const dst = rowAt(images.dst, images.dstStep, y);
        for (ptrdiff_t x = 0; x < images.width; ++x) storeSample(dst + x, exactSum(kernel, src + x, images.srcStep));
    }
}

// sum + a * b, of a single sample rounded as of all others.
template <int bytes>
KUV_INLINE Vector<Kuv32f, bytes> sumWithProduct(Vector<Kuv32f, bytes> sum, Vector<Kuv32f, bytes> a, Vector<Kuv32f, bytes> b) {
    return plusProduct(a, b, sum);
}
KUV_INLINE Kuv32f sumWithProduct(Kuv32f sum, Kuv32f a, Kuv32f b) {
#ifdef __FMA__
    return __builtin_fmaf(a, b, sum);
#else
    return sum + a * b;
#endif
}

// A part of a kernel that is summed up by itself.
struct Part {
    const Kuv32f* first;
    ptrdiff_t pitch;  // to the row above it
    ptrdiff_t rows, columns;
};

// In which order products are added.
enum class Order {
    byEights,    // eight columns of the kernel after eight others
    alternating  // in each row the even and the odd columns apart
};

// For what the next row of blocks begins with: each page of it is new to the processor.
template <int rows>
KUV_INLINE void prefetchRows(const Kuv32f* first, ptrdiff_t step, ptrdiff_t samples) {
#pragma GCC unroll 8
    for (int r = 0; r < rows; ++r) prefetchRow(rowAt(first, step, r), samples);
}

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

// The sums of a block for a kernel of a known size: with all offsets known and no loop, so that up to nine coefficients stay in registers.
template <class V, int kw, int kh, int rows, int vectors>
struct FixedBlock {
    V sums[rows][vectors];

    template <int j = 0>
    KUV_INLINE void addRows(const V* coefficients, const Kuv32f* src, ptrdiff_t srcStep) {
        if constexpr (j < rows + kh - 1) {
            addColumns<j, 0>(coefficients, src);
            addRows<j + 1>(coefficients, rowAt(src, srcStep, 1), srcStep);
        }
    }

private:
    template <int j, int i>
    KUV_INLINE void addColumns(const V* coefficients, const Kuv32f* src) {
        if constexpr (i < kw) {
            V samples[vectors];
#pragma GCC unroll 8
            for (int v = 0; v < vectors; ++v) samples[v] = load<V>(src + i + v * V::lanes);
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
            addColumns<j, i + 1>(coefficients, src);
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

// In blocks of `rows` by `vectors`, or of other rows by what covers whole lines, or by one vector where there is no room for more.
template <int kw, int kh, int rows, int vectors, int otherRows, class V>
KUV_INLINE bool filterSize(const Kernel& kernel, const Images& images) {
    if constexpr (hasAVX) {
        if (images.streaming) return filterFixed<V, kw, kh, otherRows, 2, true>(kernel, images);
    }
    if constexpr (vectors > 1) {
        if (images.width < vectors * V::lanes) return filterFixed<V, kw, kh, otherRows, 1>(kernel, images);
    }
    return filterFixed<V, kw, kh, rows, vectors>(kernel, images);
}

// Sizes that have blocks of their own.
KUV_INLINE bool isCommon(const Kernel& kernel) {
    const ptrdiff_t longer = larger(kernel.width, kernel.height);
    // Without fused products large squares lack registers.
    if (kernel.width == kernel.height) return longer == 3 || (hasAVX2 && (longer == 5 || longer == 7));
    return smaller(kernel.width, kernel.height) == 1 && longer % 2 == 1 && longer <= 9;
}

template <class V>
KUV_INLINE bool filterCommon(const Kernel& kernel, const Images& images) {
    if (kernel.width == 3 && kernel.height == 3) return filterSize<3, 3, 6, 1, 3, V>(kernel, images);
    if (hasAVX2 && kernel.width == 5 && kernel.height == 5) return filterSize<5, 5, 6, 2, 6, V>(kernel, images);
    if (hasAVX2 && kernel.width == 7 && kernel.height == 7) return filterSize<7, 7, 6, 2, 6, V>(kernel, images);
    switch (kernel.width) {
        case 3: return filterSize<3, 1, 1, 4, 4, V>(kernel, images);
        case 5: return filterSize<5, 1, 1, 4, 4, V>(kernel, images);
        case 7: return filterSize<7, 1, 1, 4, 4, V>(kernel, images);
        case 9: return filterSize<9, 1, 1, 4, 4, V>(kernel, images);
    }
    switch (kernel.height) {
        case 3: return filterSize<1, 3, 8, 1, 4, V>(kernel, images);
        case 5: return filterSize<1, 5, 8, 1, 4, V>(kernel, images);
        case 7: return filterSize<1, 7, 8, 1, 4, V>(kernel, images);
        default: return filterSize<1, 9, 8, 1, 4, V>(kernel, images);
    }
}

// Blocks for other kernels, if these are large and there are fused products: twelve sums at work then leave registers for what they are
// made of.
constexpr int partRows = 4, partVectors = 3;
KUV_INLINE bool hasPartBlocks(const Kernel& kernel) {
    return hasAVX2 && kernel.width > 1 && kernel.height >= partRows - 1 && !isCommon(kernel);
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

// Blocks' shapes keep as many sums at work as the registers hold, and load few operands for each of them.
template <Order order>
void filterInVectors(const Kernel& kernel, const Images& images) {
    using V = Native<Kuv32f>;
    constexpr int rows = order == Order::alternating ? 2 : 3;
    constexpr int vectors = order == Order::alternating ? 2 : hasAVX2 ? 4 : 2;
    constexpr int flatVectors = order == Order::alternating ? 4 : 8;
    const bool tall = images.height >= rows;
    if (images.width >= V::lanes) {
        if (order == Order::byEights && isCommon(kernel) && filterCommon<V>(kernel, images)) return;
        if constexpr (hasAVX2) {
            if (images.width >= partVectors * V::lanes && images.height >= partRows && hasPartBlocks(kernel)) {
                return filterRows<V, partRows, partVectors>(kernel, images);
            }
        }
        if (tall && kernel.height > 1) filterColumns<V, rows, vectors, order>(kernel, images);
        else if (images.width >= flatVectors * V::lanes) filterColumns<V, 1, flatVectors, order>(kernel, images);
        else filterColumns<V, 1, 4, order>(kernel, images);
        return;
    }
    if constexpr (V::lanes > 4) {
        if (images.width >= 4) {
            if (tall) filterBlocks<Vector<Kuv32f, 16>, rows, 1, order>(kernel, images, 0, images.width);
            else filterBlocks<Vector<Kuv32f, 16>, 1, 1, order>(kernel, images, 0, images.width);
            return;
        }
    }
    if (tall) filterBlocks<Kuv32f, rows, 1, order>(kernel, images, 0, images.width);
    else filterBlocks<Kuv32f, 1, 1, order>(kernel, images, 0, images.width);
}

// What order a region's sums have, in all of its parts.
KUV_INLINE Order orderOf(const Kernel& kernel, ptrdiff_t regionWidth) {
    return hasAVX || (hasSSSE3 && regionWidth > kernel.width + 8) ? Order::byEights : Order::alternating;
}

KUV_INLINE void filter(const Kernel& kernel, [[maybe_unused]] Order order, const Images& images) {
    if constexpr (!hasVectors) {
        filterInDoubles(kernel, images);
    } else if constexpr (hasAVX) {
        filterInVectors<Order::byEights>(kernel, images);
    } else {
        if (hasSSSE3 && order == Order::byEights) filterInVectors<Order::byEights>(kernel, images);
        else filterInVectors<Order::alternating>(kernel, images);
    }
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
