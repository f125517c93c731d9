// Pictures of another size.
#pragma once

#include "kuvcv.h"
#include "picture.hpp"

namespace develop {

constexpr int leastResizableSide = 2;

// Replaces a picture by one of that size, rendered by several threads in tiles. The picture does not depend on their number.
void resize(Picture16u& picture, KuviSize size, int threads);

}  // namespace develop
