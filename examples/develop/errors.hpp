// The ways in which the program ends early; main() turns each into one line on stderr and an exit code.
#pragma once

#include <stdexcept>
#include <string>

#include "kuvcv.h"

namespace develop {

// A file that cannot be read or written as asked: exit code 1.
struct FileError : std::runtime_error {
    FileError(const std::string& path, const std::string& message) : std::runtime_error(path + ": " + message) {}
};

// A request that makes no sense or that this machine cannot meet: exit code 2.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// For calls of the library. Their arguments have been checked before, so an error here is one of the program: exit code 1.
inline void check(KuvStatus status) {
    if (status < kuvStatusOk) throw std::runtime_error("the library refused a call with status " + std::to_string(status));
}

}  // namespace develop
