// Accumulators of smallest and largest samples.
#pragma once

#include "stats/lanes.hpp"
#include "stats/reduction.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// `extreme` stays where the sample is its equal, or either is a NaN. As the vectors' minimum and maximum give their second operand then.
template <class T>
KUV_INLINE std::enable_if_t<std::is_arithmetic_v<T>, T> minimum(T sample, T extreme) {
    return extreme > sample ? sample : extreme;
}
template <class T>
KUV_INLINE std::enable_if_t<std::is_arithmetic_v<T>, T> maximum(T sample, T extreme) {
    return extreme < sample ? sample : extreme;
}

// Extremes of one channel, in as many lanes as a block has samples, which all begin with the first sample.
template <class T>
class Range {
    using V = typename Lanes<T>::Type;
    // Comparisons of floating point take four cycles until the next one may begin, those of integers one.
    static constexpr int registers = !hasVectors ? 1 : std::is_integral_v<T> ? 2 : 4, lanes = registers * Lanes<T>::count;

public:
    static constexpr bool anyLane = true;
    static constexpr ptrdiff_t blockSamples = lanes, blocksToFlush = endless;

    explicit Range(T first) : first_(first) {
#pragma GCC unroll 4
        for (int k = 0; k < registers; ++k) smallest_[k] = largest_[k] = Lanes<T>::all(first);
    }
    KUV_INLINE T padding(ptrdiff_t) const { return first_; }
    KUV_INLINE void block(const T* from) {
#pragma GCC unroll 4
        for (int k = 0; k < registers; ++k) {
            const V v = Lanes<T>::from(from + k * Lanes<T>::count);
            smallest_[k] = minimum(v, smallest_[k]);
            largest_[k] = maximum(v, largest_[k]);
        }
    }
    KUV_INLINE void flush() {}
    void extremes(T (&smallest)[lanes], T (&largest)[lanes]) const {
        static_assert(sizeof(smallest) == sizeof(smallest_));
        __builtin_memcpy(smallest, smallest_, sizeof(smallest));
        __builtin_memcpy(largest, largest_, sizeof(largest));
    }

private:
    T first_;
    V smallest_[registers], largest_[registers];
};

// The largest samples of three channels, likewise from the first pixel on.
class ThreeLargest {
    using T = Kuv32f;
    using V = Lanes<T>::Type;
    static constexpr int lanes = 3 * Lanes<T>::count;

public:
    static constexpr ptrdiff_t blockSamples = lanes, blocksToFlush = endless;

    explicit ThreeLargest(const T* first) {
        for (int i = 0; i < lanes; ++i) first_[i] = loadSample(first + i % 3);
#pragma GCC unroll 3
        for (int k = 0; k < 3; ++k) largest_[k] = Lanes<T>::from(first_ + k * Lanes<T>::count);
    }
    KUV_INLINE T padding(ptrdiff_t k) const { return first_[k]; }
    KUV_INLINE void block(const T* from) {
#pragma GCC unroll 3
        for (int k = 0; k < 3; ++k) largest_[k] = maximum(Lanes<T>::from(from + k * Lanes<T>::count), largest_[k]);
    }
    KUV_INLINE void flush() {}
    // Lane i is of channel i % 3.
    void extremes(T (&largest)[lanes]) const { __builtin_memcpy(largest, largest_, sizeof(largest)); }

private:
    T first_[lanes];
    V largest_[3];
};

}  // namespace
}  // namespace kuv::KUV_VARIANT
