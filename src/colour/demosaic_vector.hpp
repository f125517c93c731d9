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

constexpr ptrdiff_t demosaicLineBytes = 480;
// Few enough that the pages of a band's rows stay known to the processor from tile to tile.
constexpr ptrdiff_t demosaicBandRows = 256;

// Where the running direction of a row starts afresh: at the region's left edge, and in the rows beside the central block, which
// keeps off the image's border, at the edges of the block as well.
struct DemosaicRestarts {
    ptrdiff_t firstRow, endRow;
    ptrdiff_t columns[2];

    template <class T>
    DemosaicRestarts(const DemosaicSource<T>& source, const DemosaicTarget<T>& target) {
        constexpr ptrdiff_t margin = 5;
        ptrdiff_t left = larger(target.x, margin), top = larger(target.y, margin);
        ptrdiff_t width = smaller(source.lastColumn + 1 - margin, target.x + target.width) - left;
        ptrdiff_t height = smaller(source.lastRow + 1 - margin, target.y + target.height) - top;
        // The block begins on a red site and is of even size.
        const RedSite red = redSiteFrom(source.red, left, top);
        left += red.column;
        width = (width - red.column) & ~ptrdiff_t{1};
        top += red.row;
        height = (height - red.row) & ~ptrdiff_t{1};
        firstRow = top;
        endRow = top + height;
        columns[0] = width >= 1 ? left : target.x;
        columns[1] = larger(left + width, target.x);
    }
};

template <class T>
class VectorDemosaic {
    using V = Native<T>;
    using Samples = DemosaicSamples<V>;
    using Wide = typename Samples::Wide;
    using Signed = typename Samples::Signed;
    using Luminance = typename Samples::Luminance;
    using Square = typename Samples::Square;
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

    enum Parity { even, odd };

    // Interpolated colours as pairs: green and the other colour at the sites of red or blue, the row's own colour and the other at
    // green sites.
    struct Colours {
        Line atSite, atGreen;
    };

    // A line of Wide values has one register for each register of samples: of the even or of the odd positions, where there are two of
    // them.
    struct ConvertedLines {
        Line y, u[2], v[2];
    };

    struct DistanceLines {
        Line luminance, chrominance[2];
    };

    // What the rows of a tile leave for the rows below.
    struct Lines {
        Line raw[rawRows];
        Line difference[differenceRows][2];  // raw - green at the sites of red or blue, per direction
        Colours colours[colourRows][2];      // per direction
        ConvertedLines converted[2];         // of one row, per direction
        DistanceLines right[2];              // between neighbours in the row above that one
        DistanceLines below[2][2];           // between rows q and q + 1, per parity of q
        Line homogeneity[homogeneityRows];
        Line homogeneitySum;                 // of those rows
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
        findRestarts();
        const RedSite red = redSiteFrom(source_.red, x, y - 3);
        for (ptrdiff_t q = -2; q < 2; ++q) bringIn(q);
        for (ptrdiff_t q = 0; q < rows + 6; ++q) {
            bringIn(q + 2);
            prefetchRow(source_.row(y - 3 + q + 3) + x, columns);
            const bool redRow = (q & 1) == red.row;
            const bool colourAtEven = redRow == (red.column == 0);
            colourAtEven ? interpolateGreen<true>(q) : interpolateGreen<false>(q);
            if (q >= 2) colourAtEven ? interpolateColours<false>(q - 1, !redRow) : interpolateColours<true>(q - 1, !redRow);
            if (q >= 2) compare(q - 2);
            if (q < 6) continue;
            decide(q - 3);
            if (colourAtEven) {
                redRow ? write<false, false>(q - 3) : write<false, true>(q - 3);
            } else {
                redRow ? write<true, false>(q - 3) : write<true, true>(q - 3);
            }
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

    template <bool evenOnes>
    static KUV_INLINE Wide part(V v) {
        if constexpr (evenOnes) {
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
        Luminance y;
        Wide u[2], v[2];
    };

    struct Distance {
        V luminance;
        Square chrominance[2];
    };

    static KUV_INLINE Luminance luminanceAt(const Line& line, ptrdiff_t p) { return as<typename Luminance::Lane>(load<V>(line.at(p))); }
    static KUV_INLINE Square squareAt(const Line& line, ptrdiff_t p) { return as<typename Square::Lane>(load<V>(line.at(p))); }

    static KUV_INLINE Converted get(const ConvertedLines& lines, ptrdiff_t p) {
        return {luminanceAt(lines.y, p), {wide(lines.u[even], p), wide(lines.u[odd], p)}, {wide(lines.v[even], p), wide(lines.v[odd], p)}};
    }
    static KUV_INLINE void put(ConvertedLines& lines, ptrdiff_t p, const Converted& c) {
        store(lines.y.at(p), as<T>(c.y));
        putWide(lines.u[even], p, c.u[even]);
        putWide(lines.u[odd], p, c.u[odd]);
        putWide(lines.v[even], p, c.v[even]);
        putWide(lines.v[odd], p, c.v[odd]);
    }
    static KUV_INLINE Distance get(const DistanceLines& lines, ptrdiff_t p) {
        return {load<V>(lines.luminance.at(p)), {squareAt(lines.chrominance[even], p), squareAt(lines.chrominance[odd], p)}};
    }
    static KUV_INLINE void put(DistanceLines& lines, ptrdiff_t p, const Distance& d) {
        store(lines.luminance.at(p), d.luminance);
        store(lines.chrominance[even].at(p), as<T>(d.chrominance[even]));
        store(lines.chrominance[odd].at(p), as<T>(d.chrominance[odd]));
    }

    static KUV_INLINE Distance distance(const Converted& a, const Converted& b) {
        const auto square = [&](Parity i) { return Samples::squaredDistance(sub(a.u[i], b.u[i]), sub(a.v[i], b.v[i])); };
        return {absoluteDifference(a.y, b.y), {square(even), square(odd)}};
    }
    static KUV_INLINE Distance smaller(const Distance& a, const Distance& b) {
        return {minimum(a.luminance, b.luminance),
                {minimum(a.chrominance[even], b.chrominance[even]), minimum(a.chrominance[odd], b.chrominance[odd])}};
    }
    static KUV_INLINE Distance larger(const Distance& a, const Distance& b) {
        return {maximum(a.luminance, b.luminance),
                {maximum(a.chrominance[even], b.chrominance[even]), maximum(a.chrominance[odd], b.chrominance[odd])}};
    }

    // All ones where both distances are within the thresholds.
    static KUV_INLINE Signed within(const Distance& d, const Distance& threshold) {
        const V chrominance = Samples::whereBeyond(d.chrominance, threshold.chrominance);
        const V beyond = bitOr(chrominance, subSaturated(d.luminance, threshold.luminance));  // where not 0
        return as<typename Signed::Lane>(equal(beyond, fill<V>(0)));
    }

    struct Neighbours {
        Distance left, right, up, down;

        KUV_INLINE Signed homogeneous(const Distance& threshold) const {  // minus the count
            return add(add(within(left, threshold), within(right, threshold)), add(within(up, threshold), within(down, threshold)));
        }
    };

    static KUV_INLINE V pair(Wide low, Wide high) { return interleaveHalves(packUnsigned(low, high)); }

    // Completes red and blue of row q in both directions and converts the row. Leaves the distances of row q - 1 to the right and
    // to row q.
    template <bool colourAtEven>
    void interpolateColours(ptrdiff_t q, bool redRow) {
        constexpr Parity site = colourAtEven ? even : odd, greenSite = colourAtEven ? odd : even;
        constexpr ptrdiff_t beside = colourAtEven ? -2 : 2;  // the pair with the other diagonal neighbours
        const T* const raw = lines_.raw[slot<rawRows>(q)].at(0);
        const auto& above = lines_.difference[slot<differenceRows>(q - 1)];
        const auto& here = lines_.difference[slot<differenceRows>(q)];
        const auto& below = lines_.difference[slot<differenceRows>(q + 1)];
        auto& colours = lines_.colours[slot<colourRows>(q)];
        auto& down = lines_.below[slot<2>(q - 1)];
        const WeightOf own = redRow ? &ColourWeights::red : &ColourWeights::blue;
        const WeightOf other = redRow ? &ColourWeights::blue : &ColourWeights::red;
        const typename Samples::Conversion convertSite(&ColourWeights::green, other, own);
        const typename Samples::Conversion convertGreen(own, other, &ColourWeights::green);
        for (ptrdiff_t p = 0; p < end_; p += lanes) {
            const V mosaic = load<V>(raw + p);
            const Wide sites = part<colourAtEven>(mosaic), greens = part<!colourAtEven>(mosaic);
            const auto siteSums = convertSite(sites), greenSums = convertGreen(greens);
#pragma GCC unroll 2
            for (const Direction d : directions) {
                const Wide vertical = add(wide(above[d], p), wide(below[d], p));
                const Wide diagonal = add(vertical, add(wide(above[d], p + beside), wide(below[d], p + beside)));
                const Wide horizontal = add(wide(here[d], p), wide(here[d], p - beside));
                const Wide green = sub(sites, wide(here[d], p));
                const V atSite = pair(green, add(green, shiftRight<2>(diagonal)));
                const V atGreen = pair(add(greens, shiftRight<1>(horizontal)), add(greens, shiftRight<1>(vertical)));
                store(colours[d].atSite.at(p), atSite);
                store(colours[d].atGreen.at(p), atGreen);

                const auto atSiteSums = convertSite(atSite, siteSums), atGreenSums = convertGreen(atGreen, greenSums);
                Converted now;
                now.y = colourAtEven ? Samples::mergeLuminance(atSiteSums.y, atGreenSums.y)
                                     : Samples::mergeLuminance(atGreenSums.y, atSiteSums.y);
                now.u[site] = shiftRight<conversionShift>(atSiteSums.u);
                now.v[site] = shiftRight<conversionShift>(atSiteSums.v);
                now.u[greenSite] = shiftRight<conversionShift>(atGreenSums.u);
                now.v[greenSite] = shiftRight<conversionShift>(atGreenSums.v);

                ConvertedLines& lines = lines_.converted[d];
                const Converted last = get(lines, p);
                const Converted next = {luminanceAt(lines.y, p + 1),
                                        {last.u[odd], wide(lines.u[even], p + 2)},
                                        {last.v[odd], wide(lines.v[even], p + 2)}};
                put(lines_.right[d], p, distance(last, next));
                put(down[d], p, distance(last, now));
                put(lines, p, now);
            }
        }
    }

    KUV_INLINE void findNeighbours(Neighbours& to, Direction d, ptrdiff_t q, ptrdiff_t p) const {
        const DistanceLines& rights = lines_.right[d];
        to.right = get(rights, p);
        to.left = {load<V>(rights.luminance.at(p - 1)), {squareAt(rights.chrominance[odd], p - 2), to.right.chrominance[even]}};
        to.up = get(lines_.below[slot<2>(q - 1)][d], p);
        to.down = get(lines_.below[slot<2>(q)][d], p);
    }

    // Compares the directions in row q.
    void compare(ptrdiff_t q) {
        Line& homogeneity = lines_.homogeneity[slot<homogeneityRows>(q)];
        const Line& homogeneityAbove = lines_.homogeneity[slot<homogeneityRows>(q - 1)];
        const Line& homogeneityAbove2 = lines_.homogeneity[slot<homogeneityRows>(q - 2)];
        for (ptrdiff_t p = 0; p < end_; p += lanes) {
            Neighbours h, v;
            findNeighbours(h, alongRows, q, p);
            findNeighbours(v, alongColumns, q, p);
            const Distance threshold = smaller(larger(h.left, h.right), larger(v.up, v.down));
            const Signed difference = sub(v.homogeneous(threshold), h.homogeneous(threshold));
            store(homogeneity.at(p), as<T>(difference));
            const auto one = [&](const Line& line) { return as<typename Signed::Lane>(load<V>(line.at(p))); };
            store(lines_.homogeneitySum.at(p), as<T>(add(add(one(homogeneityAbove), one(homogeneityAbove2)), difference)));
        }
    }

    // Bit b of these words stands for byte b of a register.
    using Bits = Kuv32u;
    using Bytes = Vector<Kuv8u, V::bytes>;

    // Finds the directions of row q, 1 for columns. A set bit is carried through the undecided pixels that follow it by an addition,
    // whose carry runs through their run of ones and clears it.
    void decide(ptrdiff_t q) {
        const ptrdiff_t row = q - 3;
        const bool inBlock = y_ + row >= restarts_.firstRow && y_ + row < restarts_.endRow;
        const auto sumAt = [&](ptrdiff_t p) { return as<typename Signed::Lane>(load<V>(lines_.homogeneitySum.at(p))); };
        const Signed none = as<typename Signed::Lane>(fill<V>(0));
        const Bits restarts = inBlock ? ~Bits{0} : 0;
        Bits carried = columnsAtEdge_[row], taken = 0;
        ptrdiff_t column = 0;
        for (; column < columns_; column += lanes) {
            const ptrdiff_t p = origin + column;
            const Signed sum = add(add(sumAt(p - 1), sumAt(p)), sumAt(p + 1));
            const Bits columns = bitsOf(as<Kuv8u>(greater(none, sum)));
            const Bits undecided = bitsOf(as<Kuv8u>(equal(none, sum))) & ~(restarts & restartBits_[column / lanes]);
            const Bits starts = (columns << 1 | carried) & undecided;
            taken = columns | (undecided & ~(undecided + starts));
            carried = taken >> (V::bytes - 1) & 1;
            takenBits_[column / lanes] = taken;
        }
        const ptrdiff_t lastLane = lanes - 1 - (column - columns_);
        columnsAtEdge_[row] = taken >> (lastLane * static_cast<ptrdiff_t>(sizeof(T))) & 1;
    }

    template <bool colourAtEven, bool redRow>
    void write(ptrdiff_t q) {
        const auto output = [&](ptrdiff_t r) { return rowAt(target_.pixels, target_.step, y_ + r - target_.y) + 3 * (x_ - target_.x); };
        T* const out = output(q - 3);
        prefetchRow(output(q - 2), 3 * columns_);
        ptrdiff_t column = 0;
        for (; column <= columns_ - lanes; column += lanes) writePixels<colourAtEven, redRow>(out + 3 * column, q, column);
        if (const ptrdiff_t rest = columns_ - column; rest > 0) {
            T pixels[3 * lanes];
            writePixels<colourAtEven, redRow>(pixels, q, column);
            __builtin_memcpy(out + 3 * column, pixels, 3 * static_cast<size_t>(rest) * sizeof(T));
        }
    }

    template <bool colourAtEven, bool redRow>
    KUV_INLINE void writePixels(T* to, ptrdiff_t q, ptrdiff_t column) const {
        const ptrdiff_t p = origin + column;
        const auto& colours = lines_.colours[slot<colourRows>(q)];
        const auto lower = [](Wide v) { return part<true>(as<T>(v)); };
        const auto lowerMovedUp = [](Wide v) { return shiftLeft<Samples::bits>(v); };
        const auto upper = [](Wide v) { return Samples::upperHalves(v); };
        const auto upperMovedDown = [](Wide v) { return part<false>(as<T>(v)); };
        const auto merge = [](Wide evens, Wide odds) { return as<T>(bitOr(evens, odds)); };

        const Wide byColumns = as<typename Wide::Lane>(maskOf<Bytes>(takenBits_[column / lanes]));
        const Wide evenByColumns = shiftRight<Samples::bits>(lowerMovedUp(byColumns)), oddByColumns = shiftRight<Samples::bits>(byColumns);
        const Wide site = select(colourAtEven ? evenByColumns : oddByColumns, wide(colours[alongColumns].atSite, p),
                                 wide(colours[alongRows].atSite, p));
        const Wide greenSite = select(colourAtEven ? oddByColumns : evenByColumns, wide(colours[alongColumns].atGreen, p),
                                      wide(colours[alongRows].atGreen, p));
        const Wide mosaic = wide(lines_.raw[slot<rawRows>(q)], p);
        const V own = colourAtEven ? merge(lower(mosaic), lowerMovedUp(greenSite)) : merge(lower(greenSite), upper(mosaic));
        const V green = colourAtEven ? merge(lower(site), upper(mosaic)) : merge(lower(mosaic), lowerMovedUp(site));
        const V other = colourAtEven ? merge(upperMovedDown(site), upper(greenSite)) : merge(upperMovedDown(greenSite), upper(site));
        storeInterleaved3(to, redRow ? own : other, green, redRow ? other : own);
    }

    // Of each register of the tile, the lanes at which the running direction starts afresh in the rows of the block.
    void findRestarts() {
        constexpr Bits lane = sizeof(T) == 1 ? 1 : 3;
        for (ptrdiff_t column = 0; column < columns_; column += lanes) {
            Bits bits = 0;
            for (const ptrdiff_t each : restarts_.columns) {
                const ptrdiff_t at = each - x_ - column;
                if (at >= 0 && at < lanes) bits |= lane << at * static_cast<ptrdiff_t>(sizeof(T));
            }
            restartBits_[column / lanes] = bits;
        }
    }

    const DemosaicSource<T> source_;
    const DemosaicTarget<T> target_;
    const DemosaicRestarts restarts_;
    ptrdiff_t x_ = 0, y_ = 0, columns_ = 0, end_ = 0;  // the tile
    Kuv8u columnsAtEdge_[demosaicBandRows];            // per row: the direction that the tile to the left ended on
    Bits restartBits_[positions / lanes], takenBits_[positions / lanes];
    Lines lines_ = {};
};

template <class T>
void demosaicVector(const DemosaicSource<T>& source, const DemosaicTarget<T>& target) {
    VectorDemosaic<T>(source, target).run();
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
