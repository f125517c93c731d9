// Linear interpolation in double precision: the statement of the arithmetic.
#pragma once

#include <immintrin.h>

#include "core/integers.hpp"
#include "resize/resize_tile.hpp"

namespace kuv::KUV_VARIANT {
namespace {

class ScalarResize {
public:
    // Two rows of three samples a column fit at `rows`, `distance` apart.
    ScalarResize(const ResizeTile& tile, Kuv32f* rows, ptrdiff_t distance) : tile_(tile), held_(rows), next_(rows + distance) {}

    void run() {
        const TileAxis &rows = tile_.rows, &columns = tile_.columns;
        for (ptrdiff_t j = 0; j < rows.length; ++j) {
            if (j < rows.before || j >= rows.end()) {
                repeatRow(j);
            } else {
                side(j, 0, columns.before, columns.first);
                side(j, columns.end(), columns.length, columns.last);
            }
        }
        if (rows.before >= rows.end() || columns.before >= columns.end()) return;
        const bool isUpward = rows.descends();
        for (ptrdiff_t i = rows.before; i < rows.end(); ++i) interiorRow(isUpward ? rows.before + rows.end() - 1 - i : i);
    }

private:
    static KUV_INLINE Kuv64f between(Kuv64f a, Kuv64f b, Kuv32f fraction) { return a + (b - a) * static_cast<Kuv64f>(fraction); }

    static KUV_INLINE Kuv16s rounded(Kuv64f value) {
        return static_cast<Kuv16s>(clamped(_mm_cvtsd_si32(_mm_set_sd(value)), -32768, 32767));
    }

    static KUV_INLINE Kuv64f sampleAt(const Kuv16s* from, int c) { return static_cast<Kuv64f>(loadSample(from + c)); }

    // A row that repeats the source's first or last one.
    void repeatRow(ptrdiff_t j) const {
        const TileAxis& columns = tile_.columns;
        const ptrdiff_t row = tile_.repeated(j);
        for (ptrdiff_t i = 0; i < columns.length; ++i) {
            const bool isBefore = i < columns.before, isAfter = i >= columns.end();
            const ptrdiff_t column = isBefore ? columns.first : isAfter ? columns.last : columns[i];
            const Kuv16s *const left = tile_.source(row, column), *const right = isBefore || isAfter ? left : left + 3;
            for (int c = 0; c < 3; ++c) {
                storeSample(tile_.target(j, i) + c, rounded(between(sampleAt(left, c), sampleAt(right, c), columns.fractions[i])));
            }
        }
    }

    // Columns that repeat the source's first or last one.
    void side(ptrdiff_t j, ptrdiff_t i, ptrdiff_t end, ptrdiff_t column) const {
        const ptrdiff_t row = tile_.rows[j];
        for (; i < end; ++i) {
            const Kuv16s *const upper = tile_.source(row, column), *const lower = tile_.source(row + 1, column);
            for (int c = 0; c < 3; ++c) {
                storeSample(tile_.target(j, i) + c, rounded(between(sampleAt(upper, c), sampleAt(lower, c), tile_.rows.fractions[j])));
            }
        }
    }

    void interpolateRow(ptrdiff_t row, Kuv32f* out) const {
        const TileAxis& columns = tile_.columns;
        for (ptrdiff_t i = columns.before; i < columns.end(); ++i) {
            const Kuv16s* const left = tile_.source(row, columns[i]);
            for (int c = 0; c < 3; ++c) {
                out[3 * i + c] = static_cast<Kuv32f>(between(sampleAt(left, c), sampleAt(left + 3, c), columns.fractions[i]));
            }
        }
    }

    void interiorRow(ptrdiff_t j) {
        const ptrdiff_t row = tile_.rows[j];
        if (!holdsRows_ || row != heldRow_) {
            if (holdsRows_ && row == heldRow_ + 1) {
                Kuv32f* const old = held_;
                held_ = next_;
                next_ = old;
            } else {
                interpolateRow(row, held_);
            }
            interpolateRow(row + 1, next_);
            heldRow_ = row;
            holdsRows_ = true;
        }
        Kuv16s* const to = tile_.target(j, 0);
        for (ptrdiff_t i = 3 * tile_.columns.before; i < 3 * tile_.columns.end(); ++i) {
            storeSample(to + i, rounded(between(static_cast<Kuv64f>(held_[i]), static_cast<Kuv64f>(next_[i]), tile_.rows.fractions[j])));
        }
    }

    const ResizeTile& tile_;
    Kuv32f* held_;  // row heldRow_, and in next_ the one after it
    Kuv32f* next_;
    ptrdiff_t heldRow_ = 0;
    bool holdsRows_ = false;
};

}  // namespace
}  // namespace kuv::KUV_VARIANT
