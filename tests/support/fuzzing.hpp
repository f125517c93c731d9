// The tables' calls with arguments from bytes. tests/fuzz hands them to a fuzzer, family by family.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "support/agreement.hpp"

namespace kuvtest {

// A family's files of tests.
struct FuzzFamily {
    const char* name;
    std::vector<std::string> files;
};
extern const std::vector<FuzzFamily> fuzzFamilies;

// The calls of a family's lines, in an order that does not depend on the linker.
std::vector<const TabledCall*> callsOf(const FuzzFamily& family);

// Makes the call that an input stands for, in every variant, in the rounding mode and with the size of the largest cache that the input
// says. Gives all that is wrong, or an empty string. `to`: where the calls are printed before they are made.
std::string troubleWith(const std::vector<const TabledCall*>& calls, std::span<const unsigned char> input, std::ostream* to = nullptr);

// A line for what is fuzzed only: other tests say more about its results, or it takes long.
#define KUV_FUZZED(base, function, ...)                          \
    [[maybe_unused]] static const bool fuzzed_##function = \
        (kuvtest::tabledCalls().push_back(kuvtest::tabledAgreement(#base, #function, __FILE__, function, __VA_ARGS__)), true)

}  // namespace kuvtest
