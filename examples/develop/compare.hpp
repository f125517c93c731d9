// Views and figures that show what a reconstruction is worth.
#pragma once

#include <array>

#include "picture.hpp"

namespace develop {

// Each sample in its own colour, at its own place.
template <class T>
Picture<T> inColours(const Plane<T>& mosaic, KuvCfaLayout layout);

// An enlarged detail three times side by side: the mosaic in grey, each pixel made of the nearest sample of each colour, and the
// picture. `region` tells where in the mosaic the picture lies.
template <class T>
Picture<T> sideBySide(const Plane<T>& mosaic, KuvCfaLayout layout, const Picture<T>& picture, KuviRect region, KuviPoint centre);

// The ratio of full scale to the mean error of each channel, in decibels.
template <class T>
std::array<double, 3> psnr(const Picture<T>& picture, const Picture<T>& reference);

}  // namespace develop
