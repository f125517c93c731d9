// What the test program learns of the lazy stubs' calls of kuvInit (see trampled_init.S).
#pragma once

#include <atomic>

namespace kuvtest {

struct LazyEntries {
    std::atomic<int> count{0};
    std::atomic<int> misaligned{0};  // entered with the stack not at a multiple of 16
    std::atomic<bool> fail{false};   // throw LazyFailure instead
};
extern LazyEntries lazyEntries;

struct LazyFailure {};

}  // namespace kuvtest
