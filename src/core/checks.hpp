// The checks that families share. A public function calls them one a line, in the order of its documentation.
#pragma once

#include "kuvcv.h"

namespace kuv {
namespace {

template <class... Pointers>
constexpr bool anyNull(const Pointers*... pointers) {
    return ((pointers == nullptr) || ...);
}

constexpr bool emptyRoi(KuviSize size) { return size.width < 1 || size.height < 1; }

// The number of pixels in 32 bits; beyond, it wraps.
constexpr Kuv32u wrappedPixels(KuviSize size) { return static_cast<Kuv32u>(size.width) * static_cast<Kuv32u>(size.height); }

// A border type without the flags of its sides; no rule at all if it is above 255.
constexpr Kuv32s borderInMemory = kuvBorderHaveTop | kuvBorderHaveBottom | kuvBorderHaveLeft | kuvBorderHaveRight;
constexpr Kuv32s borderRule(Kuv32s type) { return type & ~borderInMemory; }

}  // namespace
}  // namespace kuv
