// From a mosaic to a picture with the library's functions.
#pragma once

#include <array>
#include <string>

#include "kuvcv.h"
#include "picture.hpp"

namespace develop {

template <class T>
using DemosaicFunction = KuvStatus (*)(const T* src, KuviRect roi, KuviSize imageSize, Kuv32s srcStep, T* dst, Kuv32s dstStep,
                                       KuvCfaLayout layout, T* tmp, Kuv32s tmpStep);

struct Method {
    const char* name;
    const char* text;
    int leastSide;  // of the mosaic
    DemosaicFunction<Kuv8u> demosaic8u;
    DemosaicFunction<Kuv16u> demosaic16u;

    template <class T>
    DemosaicFunction<T> function() const {
        if constexpr (sizeof(T) == 1) {
            return demosaic8u;
        } else {
            return demosaic16u;
        }
    }
};

inline constexpr std::array methods{
    Method{"ahd", "adaptive homogeneity-directed", 5, kuviDemosaicAHD_8u_C1C3R, kuviDemosaicAHD_16u_C1C3R},
};

// Switches the whole library to a variant ("px" .. "h9"), or to the best one that the processor runs ("auto"). Throws
// UsageError, and then no other function of the library may be called.
void selectVariant(const std::string& name);

// The mosaic's samples in the width that the library works on, with the margin that Plane promises.
template <class T>
Plane<T> toPlane(const Mosaic& mosaic);

// Fills a picture of the region's size, worked on by several threads in bands of rows. The picture does not depend on their
// number.
template <class T>
void demosaic(const Method& method, const Plane<T>& plane, KuvCfaLayout layout, KuviRect region, int threads,
              Picture<T>& picture);

}  // namespace develop
