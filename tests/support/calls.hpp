// Calls under watch: a fault is one failed test, and the caller's floating-point state and heap are left alone.
#pragma once

#include <climits>
#include <csetjmp>
#include <string>
#include <type_traits>

namespace kuvtest {

// Sanitizers bring their own allocator and are slow.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define KUV_TEST_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
#define KUV_TEST_SANITIZED 1
#endif
#endif
#ifndef KUV_TEST_SANITIZED
#define KUV_TEST_SANITIZED 0
#endif
inline constexpr bool sanitized = KUV_TEST_SANITIZED;

// `full` rounds; a tenth of them in a sanitizer build. The environment variable KUVCV_TEST_ROUNDS gives a factor to either.
int rounds(int full);

// The C library's allocator as the test program interposes it, for one thread.
inline constexpr bool heapIsWatched = !sanitized;
struct HeapWatch {
    bool active = false;        // count
    bool fail = false;          // give null
    int allocations = 0;        // calls of malloc, calloc, realloc and the aligned ones
    int releases = 0;           // calls of free
    std::size_t lastBytes = 0;  // the last allocation's
};
extern thread_local HeapWatch heapWatch;

namespace detail {

struct CallWatch {
    CallWatch();
    void finish();                  // compares the state
    void fault() const;             // reports a signal
    sigjmp_buf target;
    unsigned control;
    unsigned short x87Control;
    int allocations;
    CallWatch* previous;
};

}  // namespace detail

inline constexpr int faulted = INT_MIN;

// Runs a call of the library and gives its result. Adds a failure to the current test if it faults, changes the caller's
// rounding or exception masks, leaves wide registers dirty, or allocates.
template <class Call>
auto watched(Call&& call) {
    detail::CallWatch watch;
    if (sigsetjmp(watch.target, 0) != 0) {
        watch.fault();
        if constexpr (!std::is_void_v<decltype(call())>) return static_cast<decltype(call())>(faulted);
        else return;
    }
    if constexpr (std::is_void_v<decltype(call())>) {
        call();
        watch.finish();
    } else {
        const auto result = call();
        watch.finish();
        return result;
    }
}

}  // namespace kuvtest
