#include "files.hpp"

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "../program.hpp"

using namespace examples;

namespace develop {

std::ifstream openInput(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw FileError(path, std::string("cannot be opened: ") + std::strerror(errno));
    if (!std::filesystem::is_regular_file(path)) throw FileError(path, "is not a regular file");
    return file;
}

}  // namespace develop
