// Random numbers, or given ones.
#pragma once

#include <cstdint>
#include <cstring>
#include <random>
#include <span>

namespace kuvtest {

// An engine's numbers. Where bytes are given these come first: choices from the front, samples from the end, so that the first bytes of
// a fuzzer's input say which call it is and the last ones what it computes.
class Random {
public:
    using result_type = std::uint64_t;
    static constexpr result_type min() { return 0; }
    static constexpr result_type max() { return UINT64_MAX; }

    explicit Random(std::uint64_t seed, std::span<const unsigned char> given = {}) : engine_(seed), given_(given) {}

    result_type operator()() { return bits<result_type>(); }

    template <class T>
    T bits() {
        const unsigned char* const given = take(sizeof(T), given_.size() - sizeof(T));
        const result_type drawn = given == nullptr ? engine_() : 0;
        T value;
        std::memcpy(&value, given != nullptr ? static_cast<const void*>(given) : &drawn, sizeof(T));
        return value;
    }

    int below(int limit) {
        const auto count = static_cast<unsigned>(limit);
        const std::size_t bytes = count <= 0x100 ? 1 : count <= 0x10000 ? 2 : 4;
        const unsigned char* const given = take(bytes, 0);
        if (given == nullptr) return static_cast<int>(engine_() % count);
        unsigned value = 0;
        std::memcpy(&value, given, bytes);
        return static_cast<int>(value % count);
    }

private:
    // Null once there are too few left.
    const unsigned char* take(std::size_t bytes, std::size_t at) {
        if (given_.size() < bytes) {
            given_ = {};
            return nullptr;
        }
        const unsigned char* const taken = given_.data() + at;
        given_ = at == 0 ? given_.subspan(bytes) : given_.first(at);
        return taken;
    }

    std::mt19937_64 engine_;
    std::span<const unsigned char> given_;
};

inline int below(Random& random, int limit) { return random.below(limit); }
inline int between(Random& random, int first, int last) { return first + below(random, last - first + 1); }
inline bool oneIn(Random& random, int count) { return below(random, count) == 0; }

}  // namespace kuvtest
