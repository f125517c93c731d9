#include "stages.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdio>

#include "variants.hpp"

namespace develop {

namespace {

double median(std::vector<double> values) {
    const auto middle = values.begin() + std::ptrdiff_t(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

}  // namespace

void printTimes(double megapixels, const std::function<void(Stages&)>& work) {
    constexpr int runs = 7;
    bool first = true;
    for (const std::string& variant : availableVariants()) {
        selectVariant(variant);
        std::vector<Stages> stages(runs);
        for (Stages& run : stages) work(run);

        const std::vector<Stage>& names = stages.front().done();
        if (first) {
            std::printf("%-10s", "times");
            for (const Stage& stage : names) std::printf("  %18s", stage.name.c_str());
            std::printf("\n%-10s", "");
            for (std::size_t i = 0; i < names.size(); ++i) std::printf("  %9s %8s", "ms", "Mpx/s");
            std::puts("");
            first = false;
        }
        std::printf("%-10s", variant.c_str());
        for (std::size_t i = 0; i < names.size(); ++i) {
            std::vector<double> times;
            times.reserve(runs);
            for (const Stages& run : stages) times.push_back(run.done()[i].milliseconds);
            const double time = median(times);
            std::printf("  %9.3f %8.1f", time, 1e3 * megapixels / time);
        }
        std::puts("");
        std::fflush(stdout);
    }
    selectVariant("auto");
}

}  // namespace develop
