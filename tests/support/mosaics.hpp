// Mosaics as a camera delivers them: which colour a sample has, where one is read that the image lacks, and pictures to try.
#pragma once

#include <array>
#include <cmath>
#include <limits>

#include "kuvcv.h"
#include "support/random.hpp"

namespace kuvtest {

inline constexpr KuvCfaLayout cfaLayouts[] = {kuvCfaBGGR, kuvCfaRGGB, kuvCfaGBRG, kuvCfaGRBG};

enum class Colour { red, green, blue };

inline Colour colourAt(KuvCfaLayout layout, int r, int c) {
    using enum Colour;
    static constexpr Colour period[4][2][2] = {
        {{blue, green}, {green, red}}, {{red, green}, {green, blue}}, {{green, blue}, {red, green}}, {{green, red}, {blue, green}}};
    return period[layout][r & 1][c & 1];
}

// Of `count` rows or columns, the one that stands for an index up to as far outside.
inline int reflected(int index, int count) { return index < 0 ? -index : index >= count ? 2 * (count - 1) - index : index; }

// Pictures on which such a kernel tends to break.
enum class Pattern {
    random,
    faintNoise,      // differences of one: many ties
    extremes,        // each sample 0 or the maximum, so that 16-bit chrominance wraps
    flat,
    zero,
    maximum,
    rowStripes,
    columnStripes,
    checkerboard,
    diagonals,
    siteColours,     // 0 or the maximum by place in the 2 by 2 period
    saturatedBlocks, // of those
    ramp,
    smooth,
    blocks,          // straight edges
    sparseNoise,     // on flat ground
    unequalGreens,   // S is 0 while the directions differ: the running value shows
    sparseImpulses,  // on that ground: it is carried far, across every border inside a kernel
    rareImpulses,
    count
};

template <class T>
T sampleOf(Pattern pattern, Random& random, const std::array<T, 8>& drawn, int r, int c) {
    constexpr T highest = std::numeric_limits<T>::max();
    const auto any = [&] { return static_cast<T>(random()); };
    const auto site = [&] { return drawn[static_cast<std::size_t>((r & 1) * 2 + (c & 1))]; };
    switch (pattern) {
        case Pattern::faintNoise: return static_cast<T>(drawn[0] + (random() & 1));
        case Pattern::extremes: return random() & 1 ? highest : T{0};
        case Pattern::flat: return drawn[0];
        case Pattern::zero: return 0;
        case Pattern::maximum: return highest;
        case Pattern::rowStripes: return r % 2 ? highest : T{0};
        case Pattern::columnStripes: return c % 2 ? highest : T{0};
        case Pattern::checkerboard: return (r + c) % 2 ? highest : T{0};
        case Pattern::diagonals: return (r + c) % 4 < 2 ? drawn[0] : drawn[1];
        case Pattern::siteColours: return site() & 1 ? highest : T{0};
        case Pattern::saturatedBlocks:
            return drawn[static_cast<std::size_t>((r / 6 * 3 + c / 6) & 7)] >> ((r & 1) * 2 + (c & 1)) & 1 ? highest : T{0};
        case Pattern::ramp: return static_cast<T>(drawn[0] + (drawn[1] % 16) * r + (drawn[2] % 16) * c);
        case Pattern::smooth: return static_cast<T>(highest / 2 * (1 + std::sin(0.1 * r + 0.02 * drawn[0]) * std::cos(0.07 * c)));
        case Pattern::blocks: return drawn[static_cast<std::size_t>((r / 7 * 3 + c / 9) & 7)];
        case Pattern::sparseNoise: return oneIn(random, 40) ? any() : drawn[0];
        case Pattern::unequalGreens: return site();
        case Pattern::sparseImpulses: return oneIn(random, 80) ? any() : site();
        case Pattern::rareImpulses: return oneIn(random, 1500) ? any() : site();
        default: return any();
    }
}

}  // namespace kuvtest
