// Address ranges of gigabytes over a little memory: the same pages again and again.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <climits>
#include <cstddef>
#include <cstring>

#include "kuvcv.h"
#include "support/distant.hpp"
#include "support/images.hpp"

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
    std::size_t size() const { return size_; }

private:
    std::size_t size_;
    unsigned char* memory_ = nullptr;
};

// One run of more samples than 31 bits tell, of an image whose rows touch or that is a single row. All pages but the first and the last
// stand for hundreds: what is done in place must leave them as they are, zeros say. These two are of their own, and show that the run got
// to its end, on either side, and no further.
class LongRun {
public:
    static constexpr std::size_t most = 4310000000, pageBytes = 4096;

    LongRun(const AliasedMemory& memory, KuviSize size, int pixelBytes)
        : step_(size.height == 1 ? INT32_MAX : size.width * pixelBytes),
          bytes_(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height) * static_cast<std::size_t>(pixelBytes)),
          memory_(memory.memory()),
          pages_{0, (bytes_ - 1) / pageBytes * pageBytes} {
        EXPECT_LE(pages_[1] + pageBytes, memory.size());
        for (std::size_t which = 0; which < 2; ++which) {
            unsigned char* const page = memory_ + pages_[which];
            EXPECT_NE(mmap(page, pageBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0), MAP_FAILED);
            for (std::size_t i = 0; i < pageBytes; ++i) page[i] = static_cast<unsigned char>(i * 7 + 5);
            wanted_[which].assign(page, page + pageBytes);
        }
    }
    ~LongRun() {
        for (const std::size_t page : pages_) std::memset(memory_ + page, 0, pageBytes);
    }
    LongRun(const LongRun&) = delete;
    LongRun& operator=(const LongRun&) = delete;

    Kuv32s step() const { return step_; }

    // What each sample of the two pages is to become, by the sample and its index in the run.
    template <class T, class Operation>
    void want(Operation operation) {
        for (std::size_t which = 0; which < 2; ++which) {
            for (std::size_t i = 0; i < pageBytes && pages_[which] + i < bytes_; i += sizeof(T)) {
                unsigned char* const sample = wanted_[which].data() + i;
                store(sample, 0, static_cast<T>(operation(load<T>(sample), (pages_[which] + i) / sizeof(T))));
            }
        }
    }
    bool isAsWanted() const {
        return std::memcmp(memory_ + pages_[0], wanted_[0].data(), pageBytes) == 0 &&
               std::memcmp(memory_ + pages_[1], wanted_[1].data(), pageBytes) == 0;
    }

private:
    Kuv32s step_;
    std::size_t bytes_;
    unsigned char* memory_;
    std::size_t pages_[2];
    Bytes wanted_[2];
};

}  // namespace kuvtest
