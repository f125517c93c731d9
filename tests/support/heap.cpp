// Interposes the C library's allocator, so that tests can tell whether a call of the library allocates.
#include <cerrno>
#include <cstddef>

#include "support/calls.hpp"

#if !KUV_TEST_SANITIZED

extern "C" {

// NOLINTBEGIN(bugprone-reserved-identifier): as the C runtime names them
void* __libc_malloc(std::size_t bytes);
void* __libc_calloc(std::size_t count, std::size_t bytes);
void* __libc_realloc(void* block, std::size_t bytes);
void* __libc_memalign(std::size_t alignment, std::size_t bytes);
void __libc_free(void* block);
// NOLINTEND(bugprone-reserved-identifier)

}

namespace {

// Whether the request is to fail.
bool seen(std::size_t bytes) {
    kuvtest::HeapWatch& watch = kuvtest::heapWatch;
    if (!watch.active) return false;
    ++watch.allocations;
    watch.lastBytes = bytes;
    return watch.fail;
}

}  // namespace

extern "C" {

void* malloc(std::size_t bytes) { return seen(bytes) ? nullptr : __libc_malloc(bytes); }
void* calloc(std::size_t count, std::size_t bytes) { return seen(count * bytes) ? nullptr : __libc_calloc(count, bytes); }
void* realloc(void* block, std::size_t bytes) { return seen(bytes) ? nullptr : __libc_realloc(block, bytes); }
void* memalign(std::size_t alignment, std::size_t bytes) { return seen(bytes) ? nullptr : __libc_memalign(alignment, bytes); }
void* aligned_alloc(std::size_t alignment, std::size_t bytes) { return memalign(alignment, bytes); }
int posix_memalign(void** block, std::size_t alignment, std::size_t bytes) {
    *block = memalign(alignment, bytes);
    return *block != nullptr ? 0 : ENOMEM;
}
void free(void* block) {
    if (kuvtest::heapWatch.active) ++kuvtest::heapWatch.releases;
    __libc_free(block);
}

}  // extern "C"

#endif
