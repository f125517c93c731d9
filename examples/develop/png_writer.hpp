// PNG files of 8 or 16 bits a sample.
#pragma once

#include <string>

#include "picture.hpp"

namespace develop {

// Throws FileError.
template <class T>
void writePng(const std::string& path, const Picture<T>& picture);

}  // namespace develop
