// Binary PGM files (P5), 8 and 16 bits.
#pragma once

#include <string>

#include "picture.hpp"

namespace develop {

// The file's maximum becomes the mosaic's white level. Throws FileError.
Mosaic readPgm(const std::string& path);

// No sample may be above the mosaic's white level.
void writePgm(const std::string& path, const Mosaic& mosaic);

}  // namespace develop
