// The images that the program hands from stage to stage.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "kuvcv.h"

namespace develop {

template <class T>
constexpr int fullScale = std::numeric_limits<T>::max();

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

// One sample a pixel. Around it lies a margin of one sample that continues the image by reflection: the library reads it if a
// side of the image is exactly 5.
template <class T>
struct Plane {
    Plane(int w, int h) : width(w), height(h), samples(std::size_t(w + 2) * (h + 2)) {}

    T* row(int y) { return &samples[std::size_t(y + 1) * (width + 2) + 1]; }
    const T* row(int y) const { return &samples[std::size_t(y + 1) * (width + 2) + 1]; }
    int step() const { return int((width + 2) * sizeof(T)); }

    int width, height;
    std::vector<T> samples;
};

// What a sensor delivers, scaled so that 65535 is full scale whatever the source's range was.
struct Mosaic {
    Mosaic(int w, int h) : width(w), height(h), samples(std::size_t(w) * h) {}

    std::uint16_t* row(int y) { return &samples[std::size_t(y) * width]; }
    const std::uint16_t* row(int y) const { return &samples[std::size_t(y) * width]; }

    int width, height;
    KuvCfaLayout layout = kuvCfaRGGB;
    int bits = 8;         // of a sample in the source: 8 or 16
    bool linear = false;  // proportional to light; a curve for the screen is still to come
    std::vector<std::uint16_t> samples;
};

}  // namespace develop
