// The test scene: what is hard for a mosaic (fine stripes, a zone plate, text, thin lines) beside what must stay clean (a colour
// chart, gradients).
#pragma once

#include <cstdint>

#include "picture.hpp"

namespace develop {

inline constexpr int sceneWidth = 960;
inline constexpr int sceneHeight = 640;
inline constexpr KuviPoint sceneDetail{632, 448};  // where a reconstruction shows what it is worth

// The scene behind a lens: it is blurred by a tent two pixels wide, as a real lens does for its sensor.
Picture<std::uint16_t> renderScene();

// What a sensor of the given layout sees of a picture.
Mosaic mosaicOf(const Picture<std::uint16_t>& picture, KuvCfaLayout layout);

}  // namespace develop
