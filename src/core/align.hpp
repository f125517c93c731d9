// Addresses and sizes rounded up.
#pragma once

#include <cstdint>

#include "core/inline.hpp"

namespace kuv {
namespace {

// The first address from `memory` on that is a multiple of `bytes`, a power of two. Null stays null.
template <class T>
KUV_INLINE T* alignedUp(T* memory, std::uintptr_t bytes = 64) {
    return reinterpret_cast<T*>((reinterpret_cast<std::uintptr_t>(memory) + (bytes - 1)) & ~(bytes - 1));
}

template <class Integer>
constexpr Integer roundedUp(Integer value, int multiple) {
    const auto each = static_cast<Integer>(multiple);
    return (value + each - 1) / each * each;
}

}  // namespace
}  // namespace kuv
