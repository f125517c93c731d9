// The six variants, and which of them this processor runs.
#pragma once

#include <array>

#include "core/dispatch.hpp"

namespace kuvbench {

struct Variant {
    const char* code;
    int index;
    KuvCpuFeatures features;

    bool canRun() const;
};

inline constexpr Variant variants[] = {
#define KUV_VARIANT_ROW(code, index, set, features, flags) {#code, index, features},
#include "core/variants.def"
#undef KUV_VARIANT_ROW
};

const Variant& strongestVariant();

// The functions behind an export, weakest first.
template <class Function>
using Variants = std::array<Function*, std::size(variants)>;

#define KUV_VARIANTS_OF(name) \
    kuvbench::Variants<decltype(name)> { name##_px, name##_w7, name##_s8, name##_p8, name##_g9, name##_h9 }

}  // namespace kuvbench
