// Views and figures that show what a reconstruction is worth.
#pragma once

#include <array>

#include "picture.hpp"

namespace develop {

// Each sample in its own colour, at its own place.
Picture16u inColours(const Mosaic& mosaic);

// An enlarged detail three times side by side: the mosaic in grey, each pixel made of the nearest sample of each colour, and the
// picture. `region` tells where in the mosaic the picture lies.
Picture16u sideBySide(const Mosaic& mosaic, const Picture16u& picture, KuviRect region, KuviPoint centre);

// The ratio of full scale to the mean error of each channel, in decibels.
std::array<double, 3> psnr(const Picture16u& picture, const Picture16u& reference);

}  // namespace develop
