// What a fuzzer calls. The program's name says which family is fuzzed: kuvcv_fuzz_stats, say.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>

#include "support/fuzzing.hpp"

namespace {

std::vector<const kuvtest::TabledCall*> calls;

// A finding is printed with all calls that led to it; so is every input if this variable is set, for those that end the process.
const bool printsAll = std::getenv("KUVCV_FUZZ_PRINT") != nullptr;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char*** arguments) {
    const std::string program = std::filesystem::path((*arguments)[0]).filename();
    for (const kuvtest::FuzzFamily& each : kuvtest::fuzzFamilies) {
        if (program == std::string("kuvcv_fuzz_") + each.name) calls = callsOf(each);
    }
    if (calls.empty()) {
        std::cerr << program << " names no family" << std::endl;
        std::exit(2);
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::span input(data, size);
    const std::string trouble = troubleWith(calls, input, printsAll ? &std::cerr : nullptr);
    if (trouble.empty()) return 0;
    if (!printsAll) troubleWith(calls, input, &std::cerr);
    std::cerr << trouble << std::endl;
    std::abort();
}
