#include "support/fuzzing.hpp"

#include <gtest/gtest-spi.h>

#include <algorithm>
#include <cfenv>
#include <filesystem>

namespace kuvtest {

const std::vector<FuzzFamily> fuzzFamilies = {
    {"arith", {"add", "real_checks", "scaled", "shift"}},
    {"move", {"convert", "copy", "copy_layout", "mirror", "set", "swap_channels"}},
    {"stats", {"extremes", "histogram", "histogram_init", "integral", "moments"}},
    {"tone", {"palette", "reduce_bits", "tone_map", "tone_map_curves", "tone_map_init", "tone_map_size"}},
    {"colour", {"cfa_to_rgb", "demosaic", "to_rgb"}},
    {"filter", {"filter_border", "filter_border_init"}},
    {"resize", {"resize", "resize_plan"}},
    {"segment", {"label_markers"}},
    {"transform", {"dct8x8", "dft", "dft_size", "zigzag8x8"}}};

std::vector<const TabledCall*> callsOf(const FuzzFamily& family) {
    std::vector<const TabledCall*> calls;
    for (const TabledCall& each : tabledCalls()) {
        const std::string file = std::filesystem::path(each.file).stem();
        if (std::find(family.files.begin(), family.files.end(), file) != family.files.end()) calls.push_back(&each);
    }
    std::sort(calls.begin(), calls.end(), [](const TabledCall* a, const TabledCall* b) { return a->name < b->name; });
    return calls;
}

std::string troubleWith(const std::vector<const TabledCall*>& calls, std::span<const unsigned char> input, std::ostream* to) {
    // What the input is too short for comes from an engine that its first bytes seed.
    Kuv32u seed = 0;
    const std::size_t seedBytes = std::min(input.size(), sizeof(seed));
    std::copy_n(input.begin(), seedBytes, reinterpret_cast<unsigned char*>(&seed));
    Random numbers(seed, input.subspan(seedBytes));

    const TabledCall& call = *calls[static_cast<std::size_t>(below(numbers, static_cast<int>(calls.size())))];
    constexpr int modes[] = {FE_TONEAREST, FE_TONEAREST, FE_TONEAREST, FE_TONEAREST, FE_TONEAREST, FE_DOWNWARD, FE_UPWARD, FE_TOWARDZERO};
    const int mode = modes[below(numbers, 8)];
    constexpr Kuv32s caches[] = {0, 1, 0x400, 0x1000, 0x10000, 0x100000, INT32_MAX};
    const KuvStatus asked = oneIn(numbers, 8) ? kuvStatusNoCpuid : kuvStatusOk;
    const PresetCache cache(asked, caches[below(numbers, 7)]);

    testing::TestPartResultArray results;
    {
        const testing::ScopedFakeTestPartResultReporter reporter(testing::ScopedFakeTestPartResultReporter::INTERCEPT_ALL_THREADS,
                                                                 &results);
        callPrinter = to;
        call.make(numbers, mode);
        callPrinter = nullptr;
    }
    std::string trouble;
    for (int i = 0; i < results.size(); ++i) trouble += std::string(results.GetTestPartResult(i).message()) + "\n";
    return trouble.empty() ? trouble : call.name + ", rounding mode " + std::to_string(mode) + "\n" + trouble;
}

}  // namespace kuvtest
