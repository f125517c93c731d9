// The images that the program hands from stage to stage.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "kuvcv.h"

namespace develop {

// Both sides of any image. The library's row steps are 32-bit numbers, and PNG readers commonly stop here.
constexpr int largestSide = 1'000'000;

enum Colour { red, green, blue };

// The colour of the sample at (x, y). Red stands in one row and one column of the two by two period, blue in the others.
constexpr int redColumn(KuvCfaLayout layout) { return layout == kuvCfaBGGR || layout == kuvCfaGRBG; }
constexpr int redRow(KuvCfaLayout layout) { return layout == kuvCfaBGGR || layout == kuvCfaGBRG; }
constexpr Colour colourAt(KuvCfaLayout layout, int x, int y) {
    const bool inRedColumn = (x & 1) == redColumn(layout);
    const bool inRedRow = (y & 1) == redRow(layout);
    if (inRedColumn != inRedRow) return green;
    return inRedRow ? red : blue;
}

// Three samples a pixel: red, green, blue.
template <class T>
struct Picture {
    Picture(int w, int h) : width(w), height(h), samples(std::size_t(w) * h * 3) {}

    T* pixel(int x, int y) { return &samples[(std::size_t(y) * width + x) * 3]; }
    const T* pixel(int x, int y) const { return &samples[(std::size_t(y) * width + x) * 3]; }
    int step() const { return int(width * 3 * sizeof(T)); }

    int width, height;
    std::vector<T> samples;
};

using Picture8u = Picture<Kuv8u>;
using Picture16u = Picture<Kuv16u>;

// What a sensor delivers: one sample a pixel, in proportion to light between two levels. Around it lies a margin of one sample.
struct Mosaic {
    Mosaic(int w, int h) : width(w), height(h), samples(std::size_t(w + 2) * (h + 2)) {}

    Kuv16u* row(int y) { return &samples[std::size_t(y + 1) * (width + 2) + 1]; }
    const Kuv16u* row(int y) const { return &samples[std::size_t(y + 1) * (width + 2) + 1]; }
    int step() const { return int((width + 2) * sizeof(Kuv16u)); }

    int width, height;
    KuvCfaLayout layout = kuvCfaRGGB;
    int black = 0, white = 65535;                 // the samples without light, and of all light that fits
    std::array<double, 3> balance{1.0, 1.0, 1.0};  // factors of the colours that make white things white, at least 1
    std::vector<Kuv16u> samples;
};

}  // namespace develop
