// Address ranges of gigabytes over a little memory: the same pages again and again.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>

#include "support/distant.hpp"

namespace kuvtest {

class AliasedMemory {
public:
    static constexpr std::size_t period = std::size_t{3} << 22;  // whole pixels, of three channels, too

    explicit AliasedMemory(std::size_t atLeast) : size_((atLeast + period - 1) / period * period) {
        const int file = memfd_create("aliased", 0);
        if (file < 0) return;
        void* const range = mmap(nullptr, size_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (range != MAP_FAILED && ftruncate(file, period) == 0) {
            memory_ = static_cast<unsigned char*>(range);
            for (std::size_t at = 0; at < size_; at += period) {
                void* const part = mmap(memory_ + at, period, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_FIXED, file, 0);
                if (part == MAP_FAILED) {
                    munmap(memory_, size_);
                    memory_ = nullptr;
                    break;
                }
            }
        }
        close(file);
    }
    ~AliasedMemory() {
        if (memory_ != nullptr) munmap(memory_, size_);
    }
    AliasedMemory(const AliasedMemory&) = delete;
    AliasedMemory& operator=(const AliasedMemory&) = delete;

    unsigned char* memory() const { return memory_; }  // null if the system gives none

private:
    std::size_t size_;
    unsigned char* memory_ = nullptr;
};

}  // namespace kuvtest
