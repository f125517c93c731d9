// How much stack a call takes: callers make calls in threads of their own, with stacks of their own size.
#pragma once

#include <pthread.h>

#include <cstring>
#include <functional>

#include "support/distant.hpp"

namespace kuvtest {

// Bytes of stack that a thread which runs `body` has touched.
inline std::size_t stackTouchedBy(const std::function<void()>& body) {
    constexpr std::size_t bytes = 1 << 20;
    constexpr unsigned char untouched = 0xB7;
    const DistantMemory memory(bytes);
    std::memset(memory.memory(), untouched, bytes);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    EXPECT_EQ(pthread_attr_setstack(&attributes, memory.memory(), bytes), 0);
    pthread_t thread;
    const auto entry = [](void* argument) -> void* {
        (*static_cast<const std::function<void()>*>(argument))();
        return nullptr;
    };
    EXPECT_EQ(pthread_create(&thread, &attributes, entry, const_cast<std::function<void()>*>(&body)), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    std::size_t lowest = 0;
    while (lowest < bytes && static_cast<unsigned char>(memory.memory()[lowest]) == untouched) ++lowest;
    return bytes - lowest;
}

// Those that the body takes, without the thread's own.
inline std::size_t stackOf(const std::function<void()>& body) {
    const std::size_t idle = stackTouchedBy([] {});
    return stackTouchedBy(body) - idle;
}

}  // namespace kuvtest
