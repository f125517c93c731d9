// Values at addresses that need not be aligned. Like all that units with one body share with units of a variant, these have internal
// linkage, so that each unit has its own.
#pragma once

#include "core/inline.hpp"

namespace kuv {
namespace {

template <class T>
KUV_INLINE T loadSample(const T* address) {
    T value;
    __builtin_memcpy(&value, address, sizeof(T));
    return value;
}

template <class T>
KUV_INLINE void storeSample(T* address, T value) {
    __builtin_memcpy(address, &value, sizeof(T));
}

}  // namespace
}  // namespace kuv
