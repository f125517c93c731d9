// An address range of any size of which only the touched pages cost memory: for rows that lie further apart than 32 bits can tell.
#pragma once

#include <gtest/gtest.h>

#include <sys/mman.h>

#include <cstddef>

namespace kuvtest {

class DistantMemory {
public:
    explicit DistantMemory(std::size_t bytes) : bytes_(bytes) {
        void* const mapping = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (mapping != MAP_FAILED) memory_ = static_cast<char*>(mapping);
    }
    ~DistantMemory() {
        if (memory_ != nullptr) munmap(memory_, bytes_);
    }
    DistantMemory(const DistantMemory&) = delete;
    DistantMemory& operator=(const DistantMemory&) = delete;

    char* memory() const { return memory_; }  // null: the system gives no such range

private:
    std::size_t bytes_;
    char* memory_ = nullptr;
};

// Skips the test if the system gives no such address range.
#define KUV_NEEDS(range) \
    if ((range).memory() == nullptr) GTEST_SKIP() << "the system gives no such address range"

}  // namespace kuvtest
