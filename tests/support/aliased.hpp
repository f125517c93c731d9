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

private:
    std::size_t size_;
    unsigned char* memory_ = nullptr;
};

// One run of more samples than 31 bits tell, of an image whose rows touch or that is a single row. All pages but the last stand for
// hundreds; they hold zeros, which have to stay zeros. The last one is of its own, and shows that the run got to its end and no further.
class LongRun {
public:
    static constexpr std::size_t most = 4310000000, pageBytes = 4096;

    // In `most` bytes of zeros.
    LongRun(const AliasedMemory& memory, KuviSize size, int pixelBytes)
        : step_(size.height == 1 ? INT32_MAX : size.width * pixelBytes),
          bytes_(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height) * static_cast<std::size_t>(pixelBytes)),
          last_((bytes_ - 1) / pageBytes * pageBytes),
          page_(memory.memory() + last_) {
        EXPECT_LE(last_ + pageBytes, most);
        EXPECT_NE(mmap(page_, pageBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0), MAP_FAILED);
        for (std::size_t i = 0; i < pageBytes; ++i) page_[i] = static_cast<unsigned char>(i * 7 + 5);
        wanted_.assign(page_, page_ + pageBytes);
    }
    ~LongRun() { std::memset(page_, 0, pageBytes); }
    LongRun(const LongRun&) = delete;
    LongRun& operator=(const LongRun&) = delete;

    Kuv32s step() const { return step_; }

    // What each of the last page's samples is to become, by the sample and its index in the run.
    template <class T, class Operation>
    void want(Operation operation) {
        for (std::size_t at = last_; at < bytes_; at += sizeof(T)) {
            unsigned char* const sample = wanted_.data() + (at - last_);
            store(sample, 0, static_cast<T>(operation(load<T>(sample), at / sizeof(T))));
        }
    }
    bool isAsWanted() const { return std::memcmp(page_, wanted_.data(), pageBytes) == 0; }

private:
    Kuv32s step_;
    std::size_t bytes_, last_;
    unsigned char* page_;
    Bytes wanted_;
};

}  // namespace kuvtest
