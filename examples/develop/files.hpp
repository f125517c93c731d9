// What all readers of files need.
#pragma once

#include <fstream>
#include <string>

namespace develop {

// Throws FileError.
std::ifstream openInput(const std::string& path);

}  // namespace develop
