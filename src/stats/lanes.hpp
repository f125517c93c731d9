// Lanes, and lanes added up.
#pragma once

#include "core/rows.hpp"
#include "simd/real.hpp"

namespace kuv::KUV_VARIANT {
namespace {

template <class T, class V>
KUV_INLINE Kuv64u sumOfLanes(V v) {
    T lanes[V::bytes / sizeof(T)];
    __builtin_memcpy(lanes, &v.raw, sizeof(lanes));
    Kuv64u sum = 0;
    for (const T each : lanes) sum += static_cast<Kuv64u>(static_cast<Kuv64s>(each));
    return sum;
}

// What is computed side by side: the lanes of the widest vector, or a single sample where there are no vectors.
template <class T, class V = std::conditional_t<hasVectors, Native<T>, T>>
struct Lanes : LanesOf<V> {
    using Type = V;
};

using Doubles = Lanes<Kuv64f>;

template <class To = Doubles>
KUV_INLINE typename To::Type widened(const Kuv32f* from) {
    using V = typename To::Type;
    using Singles = Vector<Kuv32f, 16>;
    if constexpr (To::count == 1) return static_cast<Kuv64f>(loadSample(from));
    else if constexpr (To::count == 4) return toDoubles<V>(load<Singles>(from));
    else return toDoubles<V>(Singles{_mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(from)))});
}

// So many sums side by side, added by halves.
template <int count>
struct DoubleSums {
    static constexpr int registers = count / Doubles::count;

    typename Doubles::Type sums[registers];

    DoubleSums() {
#pragma GCC unroll 16
        for (int k = 0; k < registers; ++k) sums[k] = Doubles::all(0);
    }
    KUV_INLINE void add(int k, typename Doubles::Type value) { sums[k] = KUV_VARIANT::add(sums[k], value); }
    Kuv64f total() const {
        Kuv64f lanes[count];
#pragma GCC unroll 16
        for (int k = 0; k < registers; ++k) __builtin_memcpy(lanes + k * Doubles::count, &sums[k], sizeof(sums[k]));
        for (int half = count / 2; half > 0; half /= 2) {
            for (int j = 0; j < half; ++j) lanes[j] += lanes[j + half];
        }
        return lanes[0];
    }
};

}  // namespace
}  // namespace kuv::KUV_VARIANT
