// A tile of a resized image. Rows and columns of the destination count from the tile's first, those of the source from what the source's
// pointer points to.
#pragma once

#include "core/rows.hpp"

namespace kuv::KUV_VARIANT {
namespace {

struct TileAxis {
    const Kuv32s* positions;
    const Kuv32f* fractions;
    ptrdiff_t first, last;    // the source's own
    ptrdiff_t length;         // of the tile
    ptrdiff_t before, after;  // how many repeat the source's first and last

    KUV_INLINE ptrdiff_t operator[](ptrdiff_t i) const { return positions[i] + first; }
    KUV_INLINE ptrdiff_t end() const { return length - after; }
    // A program may have reordered a plan's positions.
    KUV_INLINE bool descends() const { return positions[end() - 1] < positions[before]; }
};

struct ResizeTile {
    const Kuv16s* src;
    ptrdiff_t srcStep;
    Kuv16s* dst;
    ptrdiff_t dstStep;
    TileAxis columns, rows;

    KUV_INLINE const Kuv16s* source(ptrdiff_t row, ptrdiff_t column) const { return rowAt(src, srcStep, row) + 3 * column; }
    KUV_INLINE Kuv16s* target(ptrdiff_t row, ptrdiff_t column) const { return rowAt(dst, dstStep, row) + 3 * column; }
    // The source row that a destination row before or after the others repeats.
    KUV_INLINE ptrdiff_t repeated(ptrdiff_t row) const { return row < rows.before ? rows.first : rows.last; }
};

}  // namespace
}  // namespace kuv::KUV_VARIANT
