// Cameras' raw files, by LibRaw.
#pragma once

#include <optional>
#include <string>

#include "picture.hpp"

namespace develop {

// The mosaic with the file's levels and the camera's white balance; a layout given overrides the file's own. Throws FileError,
// in a build without LibRaw always.
Mosaic readRaw(const std::string& path, std::optional<KuvCfaLayout> layout);

}  // namespace develop
