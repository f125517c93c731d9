// Sharper pictures, by a filter of the library.
#pragma once

#include "picture.hpp"

namespace develop {

// Each colour by itself: what a pixel differs by from its surroundings, within two pixels, is added to it.
void sharpen(Picture16u& picture);

}  // namespace develop
