// Adaptive demosaicing with vectors, for regions of any size and phase.
//
// The region is cut into tiles of some hundred columns whose working lines, on the stack, stay in the first-level cache. Rows run
// through each tile from top to bottom. A tile takes its mosaic rows from copies that are continued beyond the image's borders,
// so no kernel below knows of borders, and lines are padded, so none knows of remainders either. The one thing that a row must
// carry from tile to tile is the direction of its last pixel.
//
// Position p of a line is column x - 4 + p of the tile, so pairs of positions begin at even p. A register of samples is taken
// apart into its even and its odd positions as lanes of twice the size: one of them holds the sites of red or blue, the other the
// green sites, and no lane computes a value that its site does not need.
#pragma once

#include "colour/demosaic.hpp"
#include "colour/demosaic_vector_samples.hpp"
#include "simd/interleave.hpp"
#include "simd/mask.hpp"

namespace kuv::KUV_VARIANT {
namespace {

constexpr ptrdiff_t demosaicLineBytes = 512;
constexpr ptrdiff_t demosaicBandRows = 2048;

// Where the running direction of a row starts afresh: at the region's left edge, and in the rows beside the central block, which
// keeps off the image's border, at the edges of the block as well.
struct DemosaicRestarts {
    ptrdiff_t firstRow, endRow;
    ptrdiff_t columns[2];

    template <class T>
    DemosaicRestarts(const DemosaicSource<T>& source, const DemosaicTarget<T>& target) {
        constexpr ptrdiff_t margin = 5;
        const auto later = [](ptrdiff_t a, ptrdiff_t b) { return a > b ? a : b; };
        const auto earlier = [](ptrdiff_t a, ptrdiff_t b) { return a < b ? a : b; };
        ptrdiff_t left = later(target.x, margin), top = later(target.y, margin);
        ptrdiff_t width = earlier(source.lastColumn + 1 - margin, target.x + target.width) - left;
        ptrdiff_t height = earlier(source.lastRow + 1 - margin, target.y + target.height) - top;
        // The block begins on a red site and is of even size.
        const RedSite red = redSiteFrom(source.red, left, top);
        left += red.column;
        width = (width - red.column) & ~ptrdiff_t{1};
        top += red.row;
        height = (height - red.row) & ~ptrdiff_t{1};
        firstRow = top;
        endRow = top + height;
        columns[0] = width >= 1 ? left : target.x;
        columns[1] = later(left + width, target.x);
    }
};

template <class T>
class VectorDemosaic {
    using V = Native<T>;
    using Samples = DemosaicSamples<V>;
    using Wide = typename Samples::Wide;
    using Signed = typename Samples::Signed;
    using Value = typename Samples::Value;
    using Squares = typename Samples::Squares;
    static constexpr ptrdiff_t lanes = V::lanes;
    static constexpr ptrdiff_t positions = demosaicLineBytes / static_cast<ptrdiff_t>(sizeof(T));
    // A reach of up to 5 samples past a tile's columns goes on both sides.
    static constexpr ptrdiff_t origin = 4, tileColumns = positions - 2 * origin;

    static constexpr int rawRows = 6, differenceRows = 3, colourRows = 3, homogeneityRows = 3;

    // One padded line; position 0 is aligned.
    class Line {
    public:
        KUV_INLINE T* at(ptrdiff_t p) { return samples_ + padding + p; }
        KUV_INLINE const T* at(ptrdiff_t p) const { return samples_ + padding + p; }

    private:
        static constexpr ptrdiff_t padding = 32 / sizeof(T);
        alignas(32) T samples_[positions + 2 * padding];
    };

    // What the rows of a tile leave for the rows below.
    struct Lines {
        Line raw[rawRows];
        Line difference[differenceRows][2];  // raw - green at the sites of red or blue, widened, per direction
        Line green[colourRows];              // of both directions in the two halves of each pair of positions
        Line own[colourRows];                // the row's own colour at green sites, likewise
        Line other[colourRows][2];           // the other colour, per direction
        Line converted[2][3];                // Y, U, V per direction, of one row
        Line luminanceAbove[2];              // distances between that row and the one above
        Line chrominanceAbove[2][2];
        Line homogeneity[homogeneityRows];
    };

    template <int count>
    static int slot(ptrdiff_t q) {
        return static_cast<int>(static_cast<size_t>(q + 2 * count) % count);
    }

public:
    VectorDemosaic(const DemosaicSource<T>& source, const DemosaicTarget<T>& target)
        : source_(source), target_(target), restarts_(source, target) {}

    void run() {
        for (ptrdiff_t row = 0; row < target_.height; row += demosaicBandRows) {
            const ptrdiff_t rows = target_.height - row < demosaicBandRows ? target_.height - row : demosaicBandRows;
            runBand(target_.y + row, rows);
        }
    }

private:
    void runBand(ptrdiff_t y, ptrdiff_t rows) {
        __builtin_memset(columnsAtEdge_, 0, static_cast<size_t>(rows));
        for (ptrdiff_t column = 0; column < target_.width; column += tileColumns) {
            const ptrdiff_t columns = target_.width - column < tileColumns ? target_.width - column : tileColumns;
            runTile(target_.x + column, columns, y, rows);
        }
    }

    // Row q of the rings is image row y - 3 + q. Each turn brings in one row and completes the rows behind it.
    void runTile(ptrdiff_t x, ptrdiff_t columns, ptrdiff_t y, ptrdiff_t rows) {
        x_ = x;
        y_ = y;
        columns_ = columns;
        end_ = columns + 2 * origin;
        __builtin_memset(&lines_, 0, sizeof lines_);
        const RedSite red = redSiteFrom(source_.red, x, y - 3);
        for (ptrdiff_t q = -2; q < 2; ++q) bringIn(q);
        for (ptrdiff_t q = 0; q < rows + 6; ++q) {
            bringIn(q + 2);
            const bool redRow = (q & 1) == red.row;
            const bool colourAtEven = redRow == (red.column == 0);
            colourAtEven ? interpolateGreen<true>(q) : interpolateGreen<false>(q);
            if (q >= 2) colourAtEven ? interpolateColours<false>(q - 1, !redRow) : interpolateColours<true>(q - 1, !redRow);
            if (q >= 6) colourAtEven ? decide<false>(q - 3, !redRow) : decide<true>(q - 3, !redRow);
        }
    }

    // Copies the part of a mosaic row that the tile reaches, continued beyond the image's left and right border.
    void bringIn(ptrdiff_t q) {
        const T* const row = source_.row(y_ - 3 + q);
        T* const line = lines_.raw[slot<rawRows>(q)].at(0);
        const ptrdiff_t first = x_ - 5, end = x_ + columns_ + 5, last = source_.lastColumn;
        const ptrdiff_t inside = first < 0 ? 0 : first, insideEnd = end > last + 1 ? last + 1 : end;
        for (ptrdiff_t c = first; c < inside; ++c) line[c - x_ + origin] = loadSample(row + reflect(c, last));
        __builtin_memcpy(line + (inside - x_ + origin), row + inside, static_cast<size_t>(insideEnd - inside) * sizeof(T));
        for (ptrdiff_t c = insideEnd; c < end; ++c) line[c - x_ + origin] = loadSample(row + reflect(c, last));
    }

    template <bool even>
    static KUV_INLINE Wide part(V v) {
        if constexpr (even) {
            return Samples::even(v);
        } else {
            return Samples::odd(v);
        }
    }

    // The mean of the nearest samples a and b, corrected by the curvature of the site's own colour, and limited to their range.
    static KUV_INLINE Wide greenAt(Wide site, Wide a, Wide b, Wide p, Wide q) {
        const Wide curvature = sub(sub(add(site, site), p), q);
        const Wide estimate = add(shiftRight<1>(add(a, b)), shiftRight<2>(curvature));
        return minimum(maximum(estimate, minimum(a, b)), maximum(a, b));
    }

    // Leaves raw - green of both directions at the sites of red or blue of row q.
    template <bool colourAtEven>
    void interpolateGreen(ptrdiff_t q) {
        const auto raw = [&](ptrdiff_t row) -> const T* { return lines_.raw[slot<rawRows>(q + row)].at(0); };
        const T* const above2 = raw(-2);
        const T* const above = raw(-1);
        const T* const centre = raw(0);
        const T* const below = raw(1);
        const T* const below2 = raw(2);
        auto& difference = lines_.difference[slot<differenceRows>(q)];
        for (ptrdiff_t p = 0; p < end_; p += lanes) {
            const V here = load<V>(centre + p), left = load<V>(centre + p - 2), right = load<V>(centre + p + 2);
            const Wide site = part<colourAtEven>(here);
            const Wide green = part<!colourAtEven>(here);
            const Wide a = colourAtEven ? part<false>(left) : green, b = colourAtEven ? green : part<true>(right);
            const Wide h = greenAt(site, a, b, part<colourAtEven>(left), part<colourAtEven>(right));
            const Wide v = greenAt(site, part<colourAtEven>(load<V>(above + p)), part<colourAtEven>(load<V>(below + p)),
                                   part<colourAtEven>(load<V>(above2 + p)), part<colourAtEven>(load<V>(below2 + p)));
            putWide(difference[alongRows], p, sub(site, h));
            putWide(difference[alongColumns], p, sub(site, v));
        }
    }

    static KUV_INLINE Wide wide(const Line& line, ptrdiff_t p) { return as<typename Wide::Lane>(load<V>(line.at(p))); }
    static KUV_INLINE void putWide(Line& line, ptrdiff_t p, Wide value) { store(line.at(p), as<T>(value)); }

    struct Converted {
        Value y, u, v;
    };

    struct Distance {
        V luminance;
        Squares chrominance;
    };

    static KUV_INLINE Distance distance(const Converted& a, const Converted& b) {
        return {absoluteDifference(a.y, b.y), Samples::squaredDistance(absoluteDifference(a.u, b.u), absoluteDifference(a.v, b.v))};
    }

    static KUV_INLINE Converted converted(const Line (&lines)[3], ptrdiff_t p) {
        const auto one = [p](const Line& line) { return as<typename Value::Lane>(load<V>(line.at(p))); };
        return {one(lines[0]), one(lines[1]), one(lines[2])};
    }

    static KUV_INLINE Squares smaller(Squares a, Squares b) { return {minimum(a.low, b.low), minimum(a.high, b.high)}; }
    static KUV_INLINE Squares larger(Squares a, Squares b) { return {maximum(a.low, b.low), maximum(a.high, b.high)}; }

    // All ones where both distances are within the thresholds.
    static KUV_INLINE Signed within(const Distance& d, const Distance& threshold) {
        const Signed beyond = pack(greater(d.chrominance.low, threshold.chrominance.low),
                                   greater(d.chrominance.high, threshold.chrominance.high));
        const V none = fill<V>(0);
        return bitAndNot(beyond, as<typename Signed::Lane>(equal(subSaturated(d.luminance, threshold.luminance), none)));
    }

    struct Neighbours {
        Distance left, right, up, down;

        KUV_INLINE Signed homogeneous(const Distance& threshold) const {  // minus the count
            return add(add(within(left, threshold), within(right, threshold)), add(within(up, threshold), within(down, threshold)));
        }
    };

    // Completes red and blue of row q in both directions, converts the row, and compares the directions in row q - 1, whose
    // neighbours are all there now.
    template <bool colourAtEven>
    void interpolateColours(ptrdiff_t q, bool redRow) {
        const T* const raw = lines_.raw[slot<rawRows>(q)].at(0);
        const auto& above = lines_.difference[slot<differenceRows>(q - 1)];
        const auto& here = lines_.difference[slot<differenceRows>(q)];
        const auto& below = lines_.difference[slot<differenceRows>(q + 1)];
        const int slotHere = slot<colourRows>(q);
        T* const green = lines_.green[slotHere].at(0);
        T* const own = lines_.own[slotHere].at(0);
        auto& other = lines_.other[slotHere];
        T* const homogeneity = lines_.homogeneity[slot<homogeneityRows>(q - 1)].at(0);
        const typename Samples::Conversion conversion(redRow);
        constexpr ptrdiff_t beside = colourAtEven ? -2 : 2;  // the pair with the other diagonal neighbours
        Distance leftOf[2] = {};                             // the last register's distances to the right
        for (ptrdiff_t p = 0; p < end_; p += lanes) {
            const V mosaic = load<V>(raw + p);
            const Wide site = part<colourAtEven>(mosaic), greenSite = part<!colourAtEven>(mosaic);
            Wide greens[2], owns[2];
            Neighbours neighbours[2];
#pragma GCC unroll 2
            for (const Direction d : directions) {
                const Wide vertical = add(wide(above[d], p), wide(below[d], p));
                const Wide diagonal = add(vertical, add(wide(above[d], p + beside), wide(below[d], p + beside)));
                const Wide horizontal = add(wide(here[d], p), wide(here[d], p - beside));
                greens[d] = sub(site, wide(here[d], p));
                const Wide otherAtSite = Samples::saturated(add(greens[d], shiftRight<2>(diagonal)));
                const Wide otherAtGreen = Samples::saturated(add(greenSite, shiftRight<1>(vertical)));
                owns[d] = Samples::saturated(add(greenSite, shiftRight<1>(horizontal)));
                store(other[d].at(p), colourAtEven ? Samples::merge(otherAtSite, otherAtGreen)
                                                    : Samples::merge(otherAtGreen, otherAtSite));

                const auto atSite = conversion(site, otherAtSite, greens[d]);
                const auto atGreen = conversion(owns[d], otherAtGreen, greenSite);
                const auto& even = colourAtEven ? atSite : atGreen;
                const auto& odd = colourAtEven ? atGreen : atSite;
                const Converted now = {Samples::mergeLuminance(even.y, odd.y), Samples::mergeChrominance(even.u, odd.u),
                                       Samples::mergeChrominance(even.v, odd.v)};

                auto& lines = lines_.converted[d];
                const Converted centre = converted(lines, p);
                Neighbours& to = neighbours[d];
                to.right = distance(centre, converted(lines, p + 1));
                to.left = {moveUp(leftOf[d].luminance, to.right.luminance),
                           moveUp(leftOf[d].chrominance.high, to.right.chrominance)};
                leftOf[d] = to.right;
                to.down = distance(centre, now);
                to.up = {load<V>(lines_.luminanceAbove[d].at(p)),
                         {load<typename Samples::Square>(squares(lines_.chrominanceAbove[d][0], p)),
                          load<typename Samples::Square>(squares(lines_.chrominanceAbove[d][1], p))}};
                store(lines_.luminanceAbove[d].at(p), to.down.luminance);
                store(squares(lines_.chrominanceAbove[d][0], p), to.down.chrominance.low);
                store(squares(lines_.chrominanceAbove[d][1], p), to.down.chrominance.high);
                store(lines[0].at(p), as<T>(now.y));
                store(lines[1].at(p), as<T>(now.u));
                store(lines[2].at(p), as<T>(now.v));
            }
            store(green + p, Samples::merge(greens[alongRows], greens[alongColumns]));
            store(own + p, Samples::merge(owns[alongRows], owns[alongColumns]));

            const Neighbours& h = neighbours[alongRows];
            const Neighbours& v = neighbours[alongColumns];
            const Distance threshold = {
                minimum(maximum(h.left.luminance, h.right.luminance), maximum(v.up.luminance, v.down.luminance)),
                smaller(larger(h.left.chrominance, h.right.chrominance), larger(v.up.chrominance, v.down.chrominance))};
            store(homogeneity + p, as<T>(sub(v.homogeneous(threshold), h.homogeneous(threshold))));
        }
    }

    static KUV_INLINE typename Samples::Square::Lane* squares(Line& line, ptrdiff_t p) {
        return reinterpret_cast<typename Samples::Square::Lane*>(line.at(p));
    }

    // Writes the pixels of row q. Directions are bits here, 1 for columns: a set bit is carried through the undecided pixels that
    // follow it by an addition, whose carry runs through their run of ones and clears it.
    template <bool colourAtEven>
    void decide(ptrdiff_t q, bool redRow) {
        const ptrdiff_t row = q - 3;
        const int slotHere = slot<colourRows>(q);
        const T* const raw = lines_.raw[slot<rawRows>(q)].at(0);
        const T* const green = lines_.green[slotHere].at(0);
        const T* const own = lines_.own[slotHere].at(0);
        const auto& other = lines_.other[slotHere];
        T* const out = rowAt(target_.pixels, target_.step, y_ + row - target_.y) + 3 * (x_ - target_.x);
        Kuv32u carried = columnsAtEdge_[row];
        for (ptrdiff_t column = 0; column < columns_; column += lanes) {
            const ptrdiff_t p = origin + column;
            const Signed sum = homogeneitySum(p);
            const Signed none = as<typename Signed::Lane>(fill<V>(0));
            const Kuv32u columns = bitsOf(greater(none, sum));
            const Kuv32u undecided = bitsOf(equal(none, sum)) & ~restartBits(row, column);
            const Kuv32u starts = (columns << 1 | carried) & undecided;
            const Kuv32u taken = columns | (undecided & ~(undecided + starts));
            const ptrdiff_t count = columns_ - column < lanes ? columns_ - column : lanes;
            carried = taken >> (count - 1) & 1;

            const V mask = maskOf<V>(taken);
            const V mosaic = load<V>(raw + p);
            const V greens = choose<colourAtEven>(mask, load<V>(green + p), mosaic);
            const V owns = choose<!colourAtEven>(mask, load<V>(own + p), mosaic);
            const V others = select(mask, load<V>(other[alongColumns].at(p)), load<V>(other[alongRows].at(p)));
            const V reds = redRow ? owns : others, blues = redRow ? others : owns;
            if (count == lanes) {
                storeInterleaved3(out + 3 * column, reds, greens, blues);
            } else {
                T rest[3 * lanes];
                storeInterleaved3(rest, reds, greens, blues);
                __builtin_memcpy(out + 3 * column, rest, 3 * static_cast<size_t>(count) * sizeof(T));
            }
        }
        columnsAtEdge_[row] = static_cast<Kuv8u>(carried);
    }

    // S of the lanes from position p on; ring slots do not matter to a sum.
    KUV_INLINE Signed homogeneitySum(ptrdiff_t p) const {
        const auto columnSum = [&](ptrdiff_t at) {
            const auto one = [&](int row) { return as<typename Signed::Lane>(load<V>(lines_.homogeneity[row].at(at))); };
            return add(add(one(0), one(1)), one(2));
        };
        return add(add(columnSum(p - 1), columnSum(p)), columnSum(p + 1));
    }

    // Bits of the columns from `column` on at which the running direction starts afresh.
    Kuv32u restartBits(ptrdiff_t row, ptrdiff_t column) const {
        const ptrdiff_t r = y_ + row;
        if (r < restarts_.firstRow || r >= restarts_.endRow) return 0;
        Kuv32u bits = 0;
        for (const ptrdiff_t each : restarts_.columns) {
            const ptrdiff_t lane = each - x_ - column;
            if (lane >= 0 && lane < lanes) bits |= Kuv32u{1} << lane;
        }
        return bits;
    }

    // Even (odd) samples from a line that holds both directions in each pair of positions, the others from the mosaic.
    template <bool atEven>
    static KUV_INLINE V choose(V mask, V both, V mosaic) {
        const V paritySites = Samples::evenSites();
        if constexpr (atEven) {
            return select(paritySites, select(mask, Samples::oddToEven(both), both), mosaic);
        } else {
            return select(paritySites, mosaic, select(mask, both, Samples::evenToOdd(both)));
        }
    }

    const DemosaicSource<T> source_;
    const DemosaicTarget<T> target_;
    const DemosaicRestarts restarts_;
    ptrdiff_t x_ = 0, y_ = 0, columns_ = 0, end_ = 0;  // the tile
    Kuv8u columnsAtEdge_[demosaicBandRows];            // per row: the direction that the tile to the left ended on
    Lines lines_;
};

template <class T>
void demosaicVector(const DemosaicSource<T>& source, const DemosaicTarget<T>& target) {
    VectorDemosaic<T>(source, target).run();
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
