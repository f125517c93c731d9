// Sums of products of a kernel's coefficients and what it covers. Sources have all that kernels reach for.
#pragma once

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

// Images from their first pixels on; the source's is what the kernel's first coefficient covers of the first sum.
struct Images {
    const Kuv32f* src;
    ptrdiff_t srcStep;
    Kuv32f* dst;
    ptrdiff_t dstStep;
    ptrdiff_t width, height;
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

// A single sample, where there is no room for vectors.
struct Single {
    using Lane = Kuv32f;
    static constexpr int lanes = 1;
    Kuv32f raw;
};

template <class V>
KUV_INLINE V loadLanes(const Kuv32f* from) {
    if constexpr (V::lanes == 1) return {loadSample(from)};
    else return load<V>(from);
}
template <class V>
KUV_INLINE void storeLanes(Kuv32f* to, V value) {
    if constexpr (V::lanes == 1) storeSample(to, value.raw);
    else store(to, value);
}
template <class V>
KUV_INLINE V fillLanes(Kuv32f value) {
    if constexpr (V::lanes == 1) return {value};
    else return fill<V>(value);
}
template <class V>
KUV_INLINE V sumOf(V a, V b) {
    if constexpr (V::lanes == 1) return {a.raw + b.raw};
    else return add(a, b);
}

// sum + a * b, rounded once from AVX2 on.
template <class V>
KUV_INLINE V sumWithProduct(V sum, V a, V b) {
#ifdef __FMA__
    if constexpr (V::lanes == 1) return {__builtin_fmaf(a.raw, b.raw, sum.raw)};
    else if constexpr (V::lanes == 4) return {_mm_fmadd_ps(a.raw, b.raw, sum.raw)};
    else return {_mm256_fmadd_ps(a.raw, b.raw, sum.raw)};
#else
    if constexpr (V::lanes == 1) return {sum.raw + a.raw * b.raw};
    else return add(sum, multiply(a, b));
#endif
}

// A part of a kernel that is summed up by itself.
struct Part {
    const Kuv32f* first;
    ptrdiff_t pitch;  // to the row above it
    ptrdiff_t rows, columns;
};

constexpr ptrdiff_t lesser(ptrdiff_t a, ptrdiff_t b) { return a < b ? a : b; }

// In which order products are added.
enum class Order {
    byEights,    // eight columns of the kernel after eight others
    alternating  // in each row the even and the odd columns apart
};

// The sums of a block of pixels, `rows` by `vectors`, for a part of the kernel. Each row of the source is read once, for all of the
// block's rows that it counts in.
template <class V, int rows, int vectors, Order order>
class Block {
public:
    static constexpr int width = vectors * V::lanes;

    KUV_INLINE void add(const Part& part, const Kuv32f* src, ptrdiff_t srcStep) {
#pragma GCC unroll 8
        for (int r = 0; r < rows; ++r) {
#pragma GCC unroll 8
            for (int v = 0; v < vectors; ++v) sums_[r][v] = fillLanes<V>(-0.0f);
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

    // Adds the sums for a part of a single row.
    KUV_INLINE void addFlat(const Part& part, const Kuv32f* src, ptrdiff_t srcStep) {
#pragma GCC unroll 8
        for (int r = 0; r < rows; ++r) {
            const Kuv32f* const from = rowAt(src, srcStep, r);
            V more[vectors];
#pragma GCC unroll 8
            for (int v = 0; v < vectors; ++v) more[v] = fillLanes<V>(-0.0f);
            for (ptrdiff_t i = 0; i < part.columns; ++i) {
                const V coefficient = fillLanes<V>(part.first[-i]);
#pragma GCC unroll 8
                for (int v = 0; v < vectors; ++v) more[v] = sumWithProduct(more[v], coefficient, loadLanes<V>(from + i + v * V::lanes));
            }
#pragma GCC unroll 8
            for (int v = 0; v < vectors; ++v) sums_[r][v] = sumOf(sums_[r][v], more[v]);
        }
    }

    KUV_INLINE void put(Kuv32f* dst, ptrdiff_t dstStep, bool adding) const {
#pragma GCC unroll 8
        for (int r = 0; r < rows; ++r) {
            Kuv32f* const to = rowAt(dst, dstStep, r);
#pragma GCC unroll 8
            for (int v = 0; v < vectors; ++v) {
                Kuv32f* const at = to + v * V::lanes;
                storeLanes(at, adding ? sumOf(loadLanes<V>(at), sums_[r][v]) : sums_[r][v]);
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
                for (int v = 0; v < vectors; ++v) even[r][v] = odd[r][v] = fillLanes<V>(-0.0f);
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
                for (int v = 0; v < vectors; ++v) sums_[r][v] = sumOf(sums_[r][v], sumOf(even[r][v], odd[r][v]));
            }
        }
    }

    template <int first, int last>
    KUV_INLINE static void addColumn(const Kuv32f* coefficients, ptrdiff_t pitch, const Kuv32f* src, V (&sums)[rows][vectors]) {
        V coefficient[rows];
#pragma GCC unroll 8
        for (int r = first; r <= last; ++r) coefficient[r] = fillLanes<V>(coefficients[r * pitch]);
#pragma GCC unroll 8
        for (int v = 0; v < vectors; ++v) {
            const V samples = loadLanes<V>(src + v * V::lanes);
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
        partColumns = lesser(hasAVX && kh == 1 ? eights(kw) : 8, kw);
        if (hasAVX && kw == 1) partRows = eights(kh);
    }
    for (ptrdiff_t row = 0;; row += rows) {
        const ptrdiff_t y = lesser(row, lastRow);
        const Kuv32f* const src = rowAt(images.src, srcStep, y);
        Kuv32f* const dst = rowAt(images.dst, images.dstStep, y);
        for (ptrdiff_t column = begin;; column += Sums::width) {
            const ptrdiff_t x = lesser(column, lastColumn);
            if constexpr (vectors > 1) {
                // What the next row of blocks begins with, in the order in which it is needed.
                for (int r = 0; r < rows; ++r) prefetchRow(rowAt(src, srcStep, rows + kh - 1 + r) + x, Sums::width);
            }
            Part part = {kernel.first, kw, partRows, partColumns};
            const Kuv32f* from = src + x;
            for (ptrdiff_t i = 0, j = 0;;) {
                Sums sums;
                sums.add(part, from, srcStep);
                if (order == Order::byEights && kh == 1) {
                    while ((i += partColumns) < kw) {
                        sums.addFlat({kernel.at(0, i), kw, 1, lesser(partColumns, kw - i)}, src + x + i, srcStep);
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
                part = {kernel.at(j, i), kw, lesser(partRows, kh - j), lesser(partColumns, kw - i)};
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
    const ptrdiff_t width = images.width, rest = width % blockWidth;
    const ptrdiff_t inBlocks = width < blockWidth ? 0 : rest > V::lanes ? width : width - rest;
    if (inBlocks > 0) filterBlocks<V, rows, vectors, order>(kernel, images, 0, inBlocks);
    if (inBlocks < width) filterBlocks<V, rows, 1, order>(kernel, images, inBlocks > 0 ? width - V::lanes : 0, width);
}

// Blocks' shapes keep as many sums at work as the registers hold, and load few operands for each of them.
template <Order order>
void filterInVectors(const Kernel& kernel, const Images& images) {
    using V = Native<Kuv32f>;
    constexpr int rows = order == Order::alternating ? 2 : 3;
    constexpr int vectors = order == Order::alternating ? 2 : hasAVX2 ? 4 : 2;
    constexpr int flatVectors = order == Order::alternating || hasAVX ? 4 : 8;
    const bool tall = images.height >= rows;
    if (images.width >= V::lanes) {
        if (tall) filterColumns<V, rows, vectors, order>(kernel, images);
        else filterColumns<V, 1, flatVectors, order>(kernel, images);
        return;
    }
    if constexpr (V::lanes > 4) {
        if (images.width >= 4) {
            if (tall) filterBlocks<Vector<Kuv32f, 16>, rows, 1, order>(kernel, images, 0, images.width);
            else filterBlocks<Vector<Kuv32f, 16>, 1, 1, order>(kernel, images, 0, images.width);
            return;
        }
    }
    if (tall) filterBlocks<Single, rows, 1, order>(kernel, images, 0, images.width);
    else filterBlocks<Single, 1, 1, order>(kernel, images, 0, images.width);
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
