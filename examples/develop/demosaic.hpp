// From a mosaic to a picture with the library's functions.
#pragma once

#include <array>

#include "kuvcv.h"
#include "picture.hpp"

namespace develop {

// The lines that a call works on, from the library's allocator.
struct WorkingLines;

struct Method {
    const char* name;
    const char* text;
    int leastSide;  // of the mosaic
    // Produces a region of whole rows. `dst` is the region's first pixel.
    KuvStatus (*produce)(const Mosaic& mosaic, KuviRect region, Kuv16u* dst, int dstStep, const WorkingLines& lines);
};

KuvStatus produceAdaptively(const Mosaic& mosaic, KuviRect region, Kuv16u* dst, int dstStep, const WorkingLines& lines);
KuvStatus produceQuickly(const Mosaic& mosaic, KuviRect region, Kuv16u* dst, int dstStep, const WorkingLines& lines);

inline constexpr std::array methods{
    Method{"ahd", "adaptive homogeneity-directed", 5, produceAdaptively},
    Method{"quick", "bilinear, green along the smaller gradient", 2, produceQuickly},
};

// Fills a picture of the region's size, worked on by several threads in bands of rows. The picture does not depend on their
// number. Writes the mosaic's margin.
void demosaic(const Method& method, Mosaic& mosaic, KuviRect region, int threads, Picture16u& picture);

}  // namespace develop
