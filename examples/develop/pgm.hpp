// Binary PGM files (P5), 8 and 16 bits.
#pragma once

#include <string>

#include "picture.hpp"

namespace develop {

// Scales the samples to 16 bits by the file's own maximum. Throws FileError.
Mosaic readPgm(const std::string& path);

template <class T>
void writePgm(const std::string& path, const Plane<T>& plane);

}  // namespace develop
