// How the small examples begin and end.
#pragma once

#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>

#include "kuvcv.h"

namespace examples {

// A command line that the program does not take.
struct UsageError : std::runtime_error {
    using runtime_error::runtime_error;
};

// For calls of the library. Their arguments are the program's own, so an error here is one of the program.
inline void check(KuvStatus status) {
    if (status < kuvStatusOk) throw std::runtime_error("the library refused a call with status " + std::to_string(status));
}

// Runs the program and returns its exit code; what went wrong is told after the program's name.
template <class Run>
int exitCodeOf(const char* name, Run run) {
    try {
        run();
        return 0;
    } catch (const UsageError& error) {
        std::fprintf(stderr, "%s: %s (--help lists the options)\n", name, error.what());
        return 2;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", name, error.what());
        return 1;
    }
}

}  // namespace examples
