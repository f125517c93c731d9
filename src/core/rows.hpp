// Row addresses without assumptions on alignment: a step may be odd, negative or zero.
#pragma once

#include <cstddef>
#include <type_traits>

#include "core/samples.hpp"
#include "core/variant.hpp"

namespace kuv::KUV_VARIANT {
namespace {

using std::ptrdiff_t;

template <class T>
using ByteOf = std::conditional_t<std::is_const_v<T>, const char, char>;

// The product is formed in ptrdiff_t: rows may lie further apart than 32 bits can tell.
template <class T>
KUV_INLINE T* rowAt(T* image, ptrdiff_t step, ptrdiff_t row) {
    return reinterpret_cast<T*>(reinterpret_cast<ByteOf<T>*>(image) + step * row);
}

struct RowLayout {
    ptrdiff_t step, pixelBytes;
};

// Rows that touch are one long row, if those of all images do.
template <int images>
KUV_INLINE void joinRows(ptrdiff_t& width, ptrdiff_t& height, const RowLayout (&layouts)[images]) {
    for (const RowLayout& each : layouts) {
        if (each.step != width * each.pixelBytes) return;
    }
    width *= height;
    height = 1;
}
KUV_INLINE void joinRows(ptrdiff_t& width, ptrdiff_t& height, ptrdiff_t step, ptrdiff_t pixelBytes) {
    joinRows(width, height, {{step, pixelBytes}});
}

// Asks for memory that is needed in about a microsecond: rows of a tile lie too far apart for the processor to foresee them.
template <class T>
KUV_INLINE void prefetchRow(const T* row, ptrdiff_t samples) {
    const char* const bytes = reinterpret_cast<const char*>(row);
    constexpr int toRead = 0, secondLevelCache = 2;
    for (ptrdiff_t i = 0; i < samples * static_cast<ptrdiff_t>(sizeof(T)); i += 64) __builtin_prefetch(bytes + i, toRead, secondLevelCache);
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
