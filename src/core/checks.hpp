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

}  // namespace
}  // namespace kuv
