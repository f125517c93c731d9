// Parts of an image that is continued beyond what is known of it.
#pragma once

#include "core/integers.hpp"
#include "core/rows.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// The known columns, or rows, from the region's first one on.
struct Known {
    ptrdiff_t begin, end;

    KUV_INLINE bool has(ptrdiff_t i) const { return i >= begin && i < end; }
    KUV_INLINE ptrdiff_t clamped(ptrdiff_t i) const { return kuv::clamped(i, begin, end - 1); }
    KUV_INLINE ptrdiff_t reflected(ptrdiff_t i) const {
        const ptrdiff_t last = end - 1 - begin, period = 2 * last;
        ptrdiff_t distance = i < begin ? begin - i : i - begin;
        if (distance > last) {
            if (last == 0) return begin;
            if (distance >= period) distance %= period;
            if (distance > last) distance = period - distance;
        }
        return begin + distance;
    }
};

// The continued image. Beyond the known pixels it has the constant, or those that a rule finds.
struct Continued {
    const Kuv32f* src;
    ptrdiff_t srcStep;
    Known columns, rows;
    Kuv32s rule;
    Kuv32f constant;

    static constexpr ptrdiff_t narrow = 64, rowsAhead = 24;

    // Its pixels from (x, y) on, packed.
    void copy(ptrdiff_t x, ptrdiff_t y, ptrdiff_t width, ptrdiff_t height, Kuv32f* to) const {
        for (ptrdiff_t row = y; row < y + height; ++row, to += width) {
            // The processor does not foresee rows of strips.
            if (width <= narrow) prefetchRow(rowAt(src, srcStep, row + rowsAhead) + x, width);
            if (rule == kuvBorderFill && !rows.has(row)) fillRow(to, width);
            else copyRow(rowAt(src, srcStep, place(rows, row)), x, width, to);
        }
    }

private:
    KUV_INLINE ptrdiff_t place(const Known& known, ptrdiff_t i) const {
        return rule == kuvBorderReflect ? known.reflected(i) : known.clamped(i);
    }

    KUV_INLINE void fillRow(Kuv32f* to, ptrdiff_t width) const {
        for (ptrdiff_t i = 0; i < width; ++i) to[i] = constant;
    }

    KUV_INLINE void copyRow(const Kuv32f* row, ptrdiff_t x, ptrdiff_t width, Kuv32f* to) const {
        const ptrdiff_t begin = columns.clamped(x) - x, end = columns.clamped(x + width - 1) + 1 - x;
        continueRow(row, x, 0, begin, to);
        if (end - begin < 4) {
            for (ptrdiff_t i = begin; i < end; ++i) to[i] = loadSample(row + x + i);
        } else if (end - begin <= narrow) {
            // Fours, of which the last may lie on the one before it.
            constexpr size_t four = 4 * sizeof(Kuv32f);
            for (ptrdiff_t i = begin; i < end - 4; i += 4) __builtin_memcpy(to + i, row + x + i, four);
            __builtin_memcpy(to + end - 4, row + x + end - 4, four);
        } else {
            __builtin_memcpy(to + begin, row + x + begin, static_cast<size_t>(end - begin) * sizeof(Kuv32f));
        }
        continueRow(row, x, end, width, to);
    }

    // Pixels beyond one side of what is known.
    KUV_INLINE void continueRow(const Kuv32f* row, ptrdiff_t x, ptrdiff_t begin, ptrdiff_t end, Kuv32f* to) const {
        if (begin == end) return;
        if (rule == kuvBorderReflect) {
            for (ptrdiff_t i = begin; i < end; ++i) to[i] = loadSample(row + columns.reflected(x + i));
        } else {
            const Kuv32f value = rule == kuvBorderFill ? constant : loadSample(row + columns.clamped(x + begin));
            for (ptrdiff_t i = begin; i < end; ++i) to[i] = value;
        }
    }
};

}  // namespace
}  // namespace kuv::KUV_VARIANT
