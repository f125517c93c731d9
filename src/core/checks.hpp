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

}  // namespace
}  // namespace kuv
