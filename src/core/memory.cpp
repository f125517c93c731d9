// Aligned memory: kuvMalloc, kuvFree, kuvAlignPtr, and the image and signal allocators on them.
#include <cstdint>
#include <cstdlib>

#include "core/align.hpp"
#include "core/dispatch.hpp"

namespace {

using namespace kuv;

constexpr int alignment = 64;
constexpr Kuv64s largest = 0x7FFFFFFF;
constexpr Kuv64s overhead = alignment + sizeof(void*);

// Rows of whole 64-byte units, step times height bytes in all. When only the product is too large the step stays as computed, 0x80000000 as
// the lowest integer.
template <class T>
T* mallocImage(Kuv32s width, Kuv32s height, Kuv32s* stepBytes, Kuv64s pixelBytes) {
    if (stepBytes == nullptr) return nullptr;
    *stepBytes = 0;
    if (width < 1 || height < 1) return nullptr;
    const Kuv64s rowBytes = width * pixelBytes;
    if (rowBytes > largest) return nullptr;
    const Kuv64s step = roundedUp(rowBytes, alignment);
    *stepBytes = static_cast<Kuv32s>(step);
    const Kuv64s total = step * height;
    if (total > largest) return nullptr;
    return static_cast<T*>(kuvMalloc(static_cast<Kuv32s>(total)));
}

}  // namespace

extern "C" {

void* kuvMalloc(Kuv32s length) {
    if (length < 1 || length > largest - overhead) return nullptr;
    void* const raw = std::malloc(static_cast<std::size_t>(length + overhead));
    if (raw == nullptr) return nullptr;
    void** const user = alignedUp(static_cast<void**>(raw) + 1, alignment);
    user[-1] = raw;
    return user;
}

void kuvFree(void* ptr) {
    if (ptr != nullptr) std::free(static_cast<void**>(ptr)[-1]);
}

void* kuvAlignPtr(void* ptr, Kuv32s alignBytes) {
    const std::uintptr_t address = reinterpret_cast<std::uintptr_t>(ptr);
    const std::uintptr_t mask = static_cast<std::uintptr_t>(static_cast<std::intptr_t>(alignBytes)) - 1;
    return reinterpret_cast<void*>(address + ((0 - (address & mask)) & mask));
}

#define KUV_IMAGE_MALLOC(suffix, type, pixelBytes)                                                   \
    type* kuviMalloc_##suffix##_shared(Kuv32s width, Kuv32s height, Kuv32s* stepBytes) {             \
        return mallocImage<type>(width, height, stepBytes, pixelBytes);                              \
    }
KUV_IMAGE_MALLOC(8u_C1, Kuv8u, 1)
KUV_IMAGE_MALLOC(8u_C3, Kuv8u, 3)
KUV_IMAGE_MALLOC(8u_AC4, Kuv8u, 4)
KUV_IMAGE_MALLOC(16u_C1, Kuv16u, 2)
KUV_IMAGE_MALLOC(16u_C3, Kuv16u, 6)
KUV_IMAGE_MALLOC(16u_C4, Kuv16u, 8)
KUV_IMAGE_MALLOC(16u_AC4, Kuv16u, 8)
KUV_IMAGE_MALLOC(16s_C1, Kuv16s, 2)
KUV_IMAGE_MALLOC(16s_C3, Kuv16s, 6)
KUV_IMAGE_MALLOC(32s_C1, Kuv32s, 4)
KUV_IMAGE_MALLOC(32f_C1, Kuv32f, 4)
KUV_IMAGE_MALLOC(32f_C3, Kuv32f, 12)
#undef KUV_IMAGE_MALLOC

void kuviFree_shared(void* ptr) { kuvFree(ptr); }
void kuvsFree_shared(void* ptr) { kuvFree(ptr); }

Kuv8u* kuvsMalloc_8u_shared(Kuv32s length) { return static_cast<Kuv8u*>(kuvMalloc(length)); }

Kuv32f* kuvsMalloc_32f_shared(Kuv32s length) {
    const Kuv64s bytes = Kuv64s{length} * 4;
    return bytes < 1 || bytes > largest ? nullptr : static_cast<Kuv32f*>(kuvMalloc(static_cast<Kuv32s>(bytes)));
}

}  // extern "C"
