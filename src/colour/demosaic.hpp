// What the scalar and the vector kernel of the adaptive demosaicing have in common.
#pragma once

#include "colour/bayer.hpp"
#include "core/integers.hpp"

namespace kuv::KUV_VARIANT {
namespace {

template <class T>
struct DemosaicSource {
    const T* image;
    ptrdiff_t step;
    ptrdiff_t lastColumn, lastRow;
    RedSite red;

    KUV_INLINE const T* row(ptrdiff_t r) const { return rowAt(image, step, reflect(r, lastRow)); }
};

// A clipped region and where its first pixel goes.
template <class T>
struct DemosaicTarget {
    ptrdiff_t x, y, width, height;
    T* pixels;
    ptrdiff_t step;
};

enum Direction { alongRows, alongColumns };
constexpr Direction directions[] = {alongRows, alongColumns};

// Weights of red, green and blue; 1/256 of the weighted sum, rounded, is the value.
struct ColourWeights {
    int red, green, blue;
};
constexpr ColourWeights luminance = {66, 129, 25};
constexpr ColourWeights chrominanceU = {-38, -74, 112};
constexpr ColourWeights chrominanceV = {112, -94, -18};
constexpr int conversionShift = 8, conversionRounding = 128;

}  // namespace
}  // namespace kuv::KUV_VARIANT
