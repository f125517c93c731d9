// Adaptive demosaicing, one sample at a time: the statement of the arithmetic, for any region of any image.
//
// Rows run through rings of working lines. Position p of a line is column x - 3 + p, row q of the rings is image row y - 3 + q.
// A colour line first receives the raw samples of its colour; what stands between them is interpolated when the green lines of
// the rows around are there.
#pragma once

#include "colour/demosaic.hpp"

namespace kuv::KUV_VARIANT {
namespace {

template <class T>
class ScalarDemosaic {
public:
    ScalarDemosaic(const DemosaicSource<T>& source, const DemosaicTarget<T>& target, T* tmp, ptrdiff_t tmpStep)
        : source_(source),
          target_(target),
          red_(redSiteFrom(source.red, target.x - 3, target.y - 3)),
          tmp_(tmp),
          tmpStep_(sizeof(T) == 1 ? tmpStep : tmpStep & ~ptrdiff_t{1}) {}

    void run() {
        const ptrdiff_t rows = target_.height + 6;
        for (ptrdiff_t q = 0; q < rows; ++q) {
            interpolateGreen(q);
            if (q >= 2) interpolateColours(q - 1);
            if (q >= 4) compareDirections(q - 2);
            if (q >= 6) decide(q - 3);
        }
    }

private:
    static constexpr Kuv32s maximum = static_cast<T>(~T{0});
    enum Colour { red, blue };

    // Which of them has sites in row q, and the parity of their positions.
    Colour colourOf(ptrdiff_t q) const { return q % 2 == red_.row ? red : blue; }
    ptrdiff_t colourColumn(ptrdiff_t q) const { return colourOf(q) == red ? red_.column : 1 - red_.column; }

    struct Converted {
        Kuv32s y, u, v;
    };

    T* line(ptrdiff_t index) const { return rowAt(tmp_, tmpStep_, index); }
    T* greenLine(ptrdiff_t q, Direction d) const { return line(2 * (q % 5) + (d == alongRows)); }
    T* colourLine(ptrdiff_t q, Colour c, Direction d) const { return line(10 + 5 * (q % 4) + 2 * (c == blue) + (d == alongRows)); }
    T* differenceLine(ptrdiff_t q) const { return line(14 + 5 * (q % 4)); }

    static Kuv32s saturated(Kuv32s value) { return clamped(value, 0, maximum); }

    // The mean of the nearest samples a and b, corrected by the curvature of the site's own colour, and limited to their range.
    static Kuv32s greenAt(Kuv32s site, Kuv32s a, Kuv32s b, Kuv32s p, Kuv32s q) {
        const Kuv32s estimate = ((a + b) >> 1) + ((2 * site - p - q) >> 2);
        return clamped(estimate, smaller(a, b), larger(a, b));
    }

    void interpolateGreen(ptrdiff_t q) {
        const Colour own = colourOf(q);
        const ptrdiff_t r = target_.y - 3 + q, firstSite = colourColumn(q), end = target_.width + 6;
        const T* const rows[5] = {source_.row(r - 2), source_.row(r - 1), source_.row(r), source_.row(r + 1), source_.row(r + 2)};
        const auto sample = [&](int row, ptrdiff_t p) -> Kuv32s {
            return loadSample(rows[2 + row] + reflect(target_.x - 3 + p, source_.lastColumn));
        };
        T* const greenH = greenLine(q, alongRows);
        T* const greenV = greenLine(q, alongColumns);
        T* const colourH = colourLine(q, own, alongRows);
        T* const colourV = colourLine(q, own, alongColumns);
        for (ptrdiff_t p = firstSite; p < end; p += 2) {
            const Kuv32s site = sample(0, p);
            storeSample(colourH + p, static_cast<T>(site));
            storeSample(colourV + p, static_cast<T>(site));
            const Kuv32s h = greenAt(site, sample(0, p - 1), sample(0, p + 1), sample(0, p - 2), sample(0, p + 2));
            const Kuv32s v = greenAt(site, sample(-1, p), sample(1, p), sample(-2, p), sample(2, p));
            storeSample(greenH + p, static_cast<T>(h));
            storeSample(greenV + p, static_cast<T>(v));
        }
        for (ptrdiff_t p = 1 - firstSite; p < end; p += 2) {
            const T site = static_cast<T>(sample(0, p));
            storeSample(greenH + p, site);
            storeSample(greenV + p, site);
        }
    }

    void interpolateColours(ptrdiff_t q) {
        const Colour own = colourOf(q), other = own == red ? blue : red;
        const ptrdiff_t firstSite = colourColumn(q), end = target_.width + 5;
        for (const Direction d : directions) {
            const T* const green[3] = {greenLine(q - 1, d), greenLine(q, d), greenLine(q + 1, d)};
            const T* const raw[3] = {colourLine(q - 1, other, d), colourLine(q, own, d), colourLine(q + 1, other, d)};
            const auto difference = [&](int row, ptrdiff_t p) {
                return static_cast<Kuv32s>(loadSample(raw[row] + p)) - static_cast<Kuv32s>(loadSample(green[row] + p));
            };
            const auto put = [](T* to, Kuv32s value) { storeSample(to, static_cast<T>(saturated(value))); };
            T* const ownLine = colourLine(q, own, d);
            T* const otherLine = colourLine(q, other, d);
            for (ptrdiff_t p = 2 - firstSite; p < end; p += 2) {
                const Kuv32s g = loadSample(green[1] + p);
                put(otherLine + p, g + ((difference(0, p - 1) + difference(0, p + 1) + difference(2, p - 1) + difference(2, p + 1)) >> 2));
            }
            for (ptrdiff_t p = 1 + firstSite; p < end; p += 2) {
                const Kuv32s g = loadSample(green[1] + p);
                put(ownLine + p, g + ((difference(1, p - 1) + difference(1, p + 1)) >> 1));
                put(otherLine + p, g + ((difference(0, p) + difference(2, p)) >> 1));
            }
        }
    }

    static Kuv32s weigh(ColourWeights weights, Kuv32s r, Kuv32s g, Kuv32s b) {
        return (weights.red * r + weights.green * g + weights.blue * b + conversionRounding) >> conversionShift;
    }

    Converted convert(ptrdiff_t q, Direction d, ptrdiff_t p) const {
        const Kuv32s r = loadSample(colourLine(q, red, d) + p);
        const Kuv32s g = loadSample(greenLine(q, d) + p);
        const Kuv32s b = loadSample(colourLine(q, blue, d) + p);
        return {weigh(luminance, r, g, b), weigh(chrominanceU, r, g, b), weigh(chrominanceV, r, g, b)};
    }

    struct Distance {
        Kuv32s luminance, chrominance;
    };

    static Distance distance(const Converted& a, const Converted& b) {
        const Kuv32s y = a.y - b.y;
        const Kuv32u u = static_cast<Kuv32u>(a.u - b.u), v = static_cast<Kuv32u>(a.v - b.v);
        return {y < 0 ? -y : y, static_cast<Kuv32s>(u * u + v * v)};  // 16-bit data wrap here and compare as signed
    }

    // The homogeneity difference of row q, from a window of three by three converted pixels in both directions.
    void compareDirections(ptrdiff_t q) {
        Converted window[2][3][3];  // direction, row, column
        const auto enter = [&](int column, ptrdiff_t p) {
            for (const Direction d : directions) {
                for (int row = 0; row < 3; ++row) window[d][row][column] = convert(q - 1 + row, d, p);
            }
        };
        enter(1, 1);
        enter(2, 2);
        T* const difference = differenceLine(q);
        for (ptrdiff_t p = 2; p < target_.width + 4; ++p) {
            for (auto& direction : window) {
                for (auto& row : direction) {
                    row[0] = row[1];
                    row[1] = row[2];
                }
            }
            enter(2, p + 1);
            enum { left, right, up, down };
            Distance to[2][4];
            for (const Direction d : directions) {
                const auto& w = window[d];
                to[d][left] = distance(w[1][1], w[1][0]);
                to[d][right] = distance(w[1][1], w[1][2]);
                to[d][up] = distance(w[1][1], w[0][1]);
                to[d][down] = distance(w[1][1], w[2][1]);
            }
            const auto& h = to[alongRows];
            const auto& v = to[alongColumns];
            const Distance threshold = {
                smaller(larger(h[left].luminance, h[right].luminance), larger(v[up].luminance, v[down].luminance)),
                smaller(larger(h[left].chrominance, h[right].chrominance), larger(v[up].chrominance, v[down].chrominance))};
            int homogeneous[2] = {0, 0};
            for (const Direction d : directions) {
                for (const Distance& each : to[d]) {
                    homogeneous[d] += (each.luminance <= threshold.luminance) & (each.chrominance <= threshold.chrominance);
                }
            }
            storeSample(difference + p, static_cast<T>(homogeneous[alongRows] - homogeneous[alongColumns]));
        }
    }

    void decide(ptrdiff_t q) {
        const T* const differences[3] = {differenceLine(q - 1), differenceLine(q), differenceLine(q + 1)};
        const auto columnSum = [&](ptrdiff_t p) {
            int sum = 0;
            for (const T* each : differences) sum += static_cast<Kuv8s>(loadSample(each + p));
            return sum;
        };
        T* out = rowAt(target_.pixels, target_.step, q - 3);
        int running = 1;
        for (ptrdiff_t p = 3; p < target_.width + 3; ++p, out += 3) {
            const int sum = columnSum(p - 1) + columnSum(p) + columnSum(p + 1);
            if (sum != 0) running = sum;
            const Direction d = running >= 0 ? alongRows : alongColumns;
            storeSample(out, loadSample(colourLine(q, red, d) + p));
            storeSample(out + 1, loadSample(greenLine(q, d) + p));
            storeSample(out + 2, loadSample(colourLine(q, blue, d) + p));
        }
    }

    const DemosaicSource<T> source_;
    const DemosaicTarget<T> target_;
    const RedSite red_;  // in terms of q and p
    T* const tmp_;
    const ptrdiff_t tmpStep_;
};

}  // namespace
}  // namespace kuv::KUV_VARIANT
