#include "variants.hpp"

#include <algorithm>
#include <iterator>

#include "../program.hpp"

using namespace examples;

namespace develop {

namespace {

struct Variant {
    const char* name;
    KuvCpuFeatures features;
};

constexpr KuvCpuFeatures forW7 = KUV_CPU_MMX | KUV_CPU_SSE | KUV_CPU_SSE2;
constexpr KuvCpuFeatures forS8 = forW7 | KUV_CPU_SSE3 | KUV_CPU_SSSE3;
constexpr KuvCpuFeatures forP8 = forS8 | KUV_CPU_SSE41 | KUV_CPU_SSE42;
constexpr KuvCpuFeatures forG9 = forP8 | KUV_CPU_AVX;
constexpr Variant variants[] = {
    {"px", KUV_CPU_MMX | KUV_CPU_SSE}, {"w7", forW7}, {"s8", forS8}, {"p8", forP8}, {"g9", forG9}, {"h9", forG9 | KUV_CPU_AVX2},
};

void selectBest() { kuvInit(); }  // its status only tells the processor's vendor

}  // namespace

void selectVariant(const std::string& name) {
    if (name == "auto") return selectBest();
    const auto variant = std::find_if(std::begin(variants), std::end(variants), [&](const Variant& v) { return name == v.name; });
    if (variant == std::end(variants)) throw UsageError("--variant: '" + name + "' is none of px, w7, s8, p8, g9, h9, auto");
    if (kuvSetCpuFeatures(variant->features) != kuvStatusOk)
        throw UsageError("--variant: this processor cannot run variant " + name);
}

std::vector<std::string> availableVariants() {
    std::vector<std::string> names;
    for (const Variant& variant : variants)
        if (kuvSetCpuFeatures(variant.features) == kuvStatusOk) names.emplace_back(variant.name);
    selectBest();
    return names;
}

}  // namespace develop
