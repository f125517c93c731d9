// How the examples begin and end.
#pragma once

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <new>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "kuvcv.h"

namespace examples {

// A file that cannot be read or written as asked.
struct FileError : std::runtime_error {
    FileError(const std::string& path, const std::string& message) : std::runtime_error(path + ": " + message) {}
};

// A command line that the program does not take, or that this machine cannot meet.
struct UsageError : std::runtime_error {
    using runtime_error::runtime_error;
};

// For calls of the library. Their arguments are the program's own, so an error here is one of the program.
inline void check(KuvStatus status) {
    if (status < kuvStatusOk) throw std::runtime_error("the library refused a call with status " + std::to_string(status));
}

// Goes through a command line. `take(argument, value)` has a look at each argument, calls value() for the one behind it, and gives false
// for what is no option of the program's; that is the picture then, if there is to be one.
template <class Take>
void parseArguments(int argc, char** argv, std::string* picture, Take take) {
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        const auto value = [&]() -> std::string {
            if (++i == argc || *argv[i] == '\0') throw UsageError(argument + " needs a value");
            return argv[i];
        };
        if (take(argument, value)) continue;
        if (argument.starts_with('-') || picture == nullptr) throw UsageError("there is no option " + argument);
        if (!picture->empty()) throw UsageError("more than one picture");
        *picture = argument;
    }
}

// Outputs are neither the input nor one another; an empty name is none. A device takes whatever comes.
inline void refuseToOverwrite(const std::string& input, const std::vector<std::string>& outputs) {
    // What does not exist yet is told by its name.
    const auto placeOf = [](const std::string& name) {
        std::error_code missing;
        return std::filesystem::weakly_canonical(std::filesystem::absolute(name, missing), missing);
    };
    const auto same = [&](const std::string& one, const std::string& other) {
        std::error_code missing;
        return std::filesystem::equivalent(one, other, missing) || placeOf(one) == placeOf(other);
    };
    for (auto output = outputs.begin(); output != outputs.end(); ++output) {
        std::error_code missing;
        if (output->empty() || std::filesystem::is_character_file(*output, missing)) continue;
        if (same(input, *output)) throw UsageError(*output + ": is the input itself and would be overwritten");
        if (std::any_of(outputs.begin(), output, [&](const std::string& other) { return same(other, *output); }))
            throw UsageError(*output + ": is named for two outputs");
    }
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
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "%s: out of memory\n", name);
        return 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", name, error.what());
        return 1;
    }
}

}  // namespace examples
