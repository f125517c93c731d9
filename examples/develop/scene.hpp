// The test scene: what is hard for a mosaic (fine stripes, a zone plate, text, thin lines) beside what must stay clean (a colour
// chart, gradients).
#pragma once

#include "picture.hpp"

namespace develop {

inline constexpr int sceneWidth = 960;
inline constexpr int sceneHeight = 640;
inline constexpr KuviPoint sceneDetail{632, 448};  // where a reconstruction shows what it is worth

// The scene behind a lens: it is blurred by a tent two pixels wide, as a real lens does for its sensor.
Picture16u renderScene();

// What a sensor of 14 bits and of the given layout sees of a picture that is meant for a screen.
Mosaic mosaicOf(const Picture16u& picture, KuvCfaLayout layout);

}  // namespace develop
