// Runs of markers in rows of bits, and which of them belong together.
//
// A band is one row, or two where neighbours may touch at a corner: columns of two rows that follow each other and are not empty
// belong together then, so that a run of such columns is one piece. Runs are numbered band by band, and in a band in the order in
// which a scan of the rows meets them: a run without a pixel in the upper row comes after all that have one.
#pragma once

#include "core/rows.hpp"

namespace kuv::KUV_VARIANT {
namespace {

using Word = Kuv64u;
constexpr ptrdiff_t wordColumns = 64;

// With at least one column to spare: no run reaches the end of a row's last word.
KUV_INLINE ptrdiff_t wordsOf(ptrdiff_t width) { return width / wordColumns + 1; }

// No two runs of a band begin in the same pair of columns.
KUV_INLINE ptrdiff_t placesOf(ptrdiff_t width) { return (width + 1) / 2; }
KUV_INLINE ptrdiff_t placeOf(ptrdiff_t start) { return start / 2; }

// Bits of a row moved by a column to the right (a higher bit), or to the left.
KUV_INLINE Word movedRight(const Word* row, ptrdiff_t k) { return row[k] << 1 | (k > 0 ? row[k - 1] >> 63 : 0); }
KUV_INLINE Word movedLeft(const Word* row, ptrdiff_t k, ptrdiff_t words) {
    return row[k] >> 1 | (k + 1 < words ? row[k + 1] << 63 : 0);
}

KUV_INLINE Word lowestOf(Word bits) { return bits & (0 - bits); }
KUV_INLINE Word withoutLowest(Word bits) { return bits & (bits - 1); }

struct Band {
    const Word* upper;
    const Word* lower;  // the same as `upper` in a band of one row
    ptrdiff_t words;

    KUV_INLINE Word all(ptrdiff_t k) const { return upper[k] | lower[k]; }
};

// The first columns of runs, from word to word.
class RunStarts {
public:
    // Of the run that a column of the present word, or the last one before it, is in: behind the last of the gaps to its left.
    KUV_INLINE ptrdiff_t behind(Word gaps) const {
        return gaps == 0 ? open_ : base_ + wordColumns - __builtin_clzll(gaps);
    }
    KUV_INLINE void leave(Word word) {
        open_ = behind(~word);
        base_ += wordColumns;
    }

private:
    ptrdiff_t base_ = 0;
    ptrdiff_t open_ = 0;  // start of the run that comes in from the word before, or the word's first column
};

// Calls visit(start) for each run, in the order of their numbers.
template <bool corners, class Visit>
KUV_INLINE void visitRuns(Band band, Visit visit) {
    Word lowerOnly = 0;
    const auto sweep = [&](auto upper) {
        RunStarts starts;
        Word before = 0, carry = 0;
        for (ptrdiff_t k = 0; k < band.words; ++k) {
            const Word all = band.all(k), first = all & ~(all << 1 | before);
            before = all >> 63;
            Word found = first;
            if constexpr (corners) {
                // From each run's start a carry passes all columns that lack an upper pixel: it ends in the first one that has one, or
                // in the gap behind the run.
                Word sum;
                const bool overflow = __builtin_add_overflow(all & ~band.upper[k], first, &sum);
                carry = overflow | __builtin_add_overflow(sum, carry, &sum);
                lowerOnly |= sum & ~all;
                found = sum & (upper ? band.upper[k] : ~all);
            }
            for (; found != 0; found = withoutLowest(found)) {
                visit(corners ? starts.behind(~all & (lowestOf(found) - 1)) : k * wordColumns + __builtin_ctzll(found));
            }
            if constexpr (corners) starts.leave(all);
        }
    };
    sweep(std::true_type{});
    if (corners && lowerOnly != 0) sweep(std::false_type{});
}

// The labels that pieces get in turn: after the last comes the first one again.
struct Labels {
    Kuv32u first, last;

    KUV_INLINE Kuv32u after(Kuv32u label) const { return label == last ? first : label + 1; }
};

// Which runs are one piece: a run's parent has a lower number, or is the run itself.
class Pieces {
public:
    explicit Pieces(Kuv32u* parents) : parents_(parents) {}

    KUV_INLINE void add(Kuv32u run) { parents_[run] = run; }

    // M. Rem's algorithm: climbs from both to the lower parent in turn and hangs what it leaves below what it came to.
    KUV_INLINE void join(Kuv32u a, Kuv32u b) {
        Kuv32u parentOfA = parents_[a], parentOfB = parents_[b];
        while (parentOfA != parentOfB) {
            if (parentOfA < parentOfB) {
                const Kuv32u from = a;
                a = b;
                b = from;
                const Kuv32u parent = parentOfA;
                parentOfA = parentOfB;
                parentOfB = parent;
            }
            parents_[a] = parentOfB;
            if (parentOfA == a) return;
            a = parentOfA;
            parentOfA = parents_[a];
        }
    }

    // Replaces so many runs by the labels of their pieces and gives the number of pieces. These are met in the order of their first
    // pixels.
    Kuv32u label(Kuv32u runs, Labels labels) {
        Kuv32u pieces = 0, next = labels.first;
        for (Kuv32u i = 0; i < runs; ++i) {
            if (parents_[i] != i) {
                parents_[i] = parents_[parents_[i]];
                continue;
            }
            parents_[i] = next;
            next = labels.after(next);
            ++pieces;
        }
        return pieces;
    }

private:
    Kuv32u* parents_;
};

// Joins the runs of a band with those of the one above. Runs' numbers stand at their starts' places.
template <bool corners>
void joinBands(Pieces& pieces, Band above, const Kuv32u* numbersAbove, Band band, const Kuv32u* numbers) {
    RunStarts startsAbove, starts;
    Word overBefore = 0, allBefore = 0;
    for (ptrdiff_t k = 0; k < band.words; ++k) {
        const Word over = above.all(k), all = band.all(k), common = over & all;
        const Word first = common & ~(common << 1);
        Word touches = first;
        if constexpr (corners) {
            const Word upper = above.lower[k], lower = band.upper[k];
            const Word upperRight = movedRight(above.lower, k), lowerRight = movedRight(band.upper, k);
            const Word nearUpper = upper | upperRight | movedLeft(above.lower, k, band.words);
            const Word nearLower = lower | lowerRight | movedLeft(band.upper, k, band.words);
            // Columns that are in both runs and where a pixel of one touches the other. Of a stretch of common columns the first of
            // them will do: a carry passes those before it.
            const Word touching = common & ((lower & nearUpper) | (upper & nearLower));
            touches = ((common & ~touching) + first) & touching;
            // Runs without a common column, of which the one ends at a corner of the other's beginning.
            touches |= lower & upperRight & ~over & ~(all << 1 | allBefore);
            touches |= upper & lowerRight & ~all & ~(over << 1 | overBefore);
            overBefore = over >> 63;
            allBefore = all >> 63;
        }
        for (; touches != 0; touches = withoutLowest(touches)) {
            // At the column, or ending before it.
            const Word left = lowestOf(touches) - 1;
            pieces.join(numbersAbove[placeOf(startsAbove.behind(~over & left))], numbers[placeOf(starts.behind(~all & left))]);
        }
        startsAbove.leave(over);
        starts.leave(all);
    }
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
