// Records of set-up functions: 32-bit words at the start of the caller's block, which may stand at any address. A word that stands for a
// pointer is a distance in bytes from the record, and 0 is null: records have one layout on all systems.
#pragma once

#include <cstddef>

#include "core/align.hpp"
#include "core/samples.hpp"
#include "kuvcv.h"

namespace kuv {
namespace {

using std::ptrdiff_t;

template <class T>
KUV_INLINE T* placeIn(void* record, ptrdiff_t offset) {
    return reinterpret_cast<T*>(static_cast<char*>(record) + offset);
}
template <class T>
KUV_INLINE const T* placeIn(const void* record, ptrdiff_t offset) {
    return reinterpret_cast<const T*>(static_cast<const char*>(record) + offset);
}

KUV_INLINE Kuv32u wordAt(const void* record, ptrdiff_t offset) { return loadSample(placeIn<Kuv32u>(record, offset)); }
KUV_INLINE void setWord(void* record, ptrdiff_t offset, ptrdiff_t value) {
    storeSample(placeIn<Kuv32u>(record, offset), static_cast<Kuv32u>(value));
}

// The next offset whose address is a multiple of 64.
KUV_INLINE ptrdiff_t alignedOffset(const void* record, ptrdiff_t offset) {
    return alignedUp(placeIn<char>(record, offset)) - static_cast<const char*>(record);
}

}  // namespace
}  // namespace kuv
