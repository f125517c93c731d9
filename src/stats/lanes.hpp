// Lanes of 64 bits, and lanes added up.
#pragma once

#include "core/rows.hpp"
#include "simd/real.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// Integers.
using Longs = Vector<Kuv64u, integerBytes>;

template <int bytes>
KUV_INLINE Vector<Kuv64u, bytes> add(Vector<Kuv64u, bytes> a, Vector<Kuv64u, bytes> b) {
    if constexpr (bytes == 16) {
        return {_mm_add_epi64(a.raw, b.raw)};
    } else {
        KUV_AVX2(return {_mm256_add_epi64(a.raw, b.raw)};)
    }
}

// The sums of eight bytes each.
template <int bytes>
KUV_INLINE Vector<Kuv64u, bytes> sumsOfEight(Vector<Kuv8u, bytes> v) {
    if constexpr (bytes == 16) {
        return {_mm_sad_epu8(v.raw, _mm_setzero_si128())};
    } else {
        KUV_AVX2(return {_mm256_sad_epu8(v.raw, _mm256_setzero_si256())};)
    }
}

// The sums of two unsigned lanes each.
template <int bytes>
KUV_INLINE Vector<Kuv64u, bytes> sumsOfTwo(Vector<Kuv32s, bytes> v) {
    if constexpr (bytes == 16) {
        return {_mm_add_epi64(_mm_and_si128(v.raw, _mm_set1_epi64x(0xFFFFFFFF)), _mm_srli_epi64(v.raw, 32))};
    } else {
        KUV_AVX2(return {_mm256_add_epi64(_mm256_and_si256(v.raw, _mm256_set1_epi64x(0xFFFFFFFF)), _mm256_srli_epi64(v.raw, 32))};)
    }
}

template <class V>
KUV_INLINE V noLanes() {
    return as<typename V::Lane>(fill<Vector<Kuv8u, V::bytes>>(0));
}

template <class T, class V>
KUV_INLINE Kuv64u sumOfLanes(V v) {
    T lanes[V::bytes / sizeof(T)];
    __builtin_memcpy(lanes, &v.raw, sizeof(lanes));
    Kuv64u sum = 0;
    for (const T each : lanes) sum += static_cast<Kuv64u>(static_cast<Kuv64s>(each));
    return sum;
}

// Doubles: px has them one by one.
KUV_INLINE Kuv64f add(Kuv64f a, Kuv64f b) { return a + b; }
KUV_INLINE Kuv64f sub(Kuv64f a, Kuv64f b) { return a - b; }
KUV_INLINE Kuv64f multiply(Kuv64f a, Kuv64f b) { return a * b; }

struct SingleDoubles {
    using Type = Kuv64f;
    static constexpr int lanes = 1;

    static KUV_INLINE Type filled(Kuv64f value) { return value; }
    static KUV_INLINE Type widened(const Kuv32f* from) { return static_cast<Kuv64f>(loadSample(from)); }
};
template <class V>
struct VectorDoubles {
    using Type = V;
    static constexpr int lanes = V::lanes;

    static KUV_INLINE V filled(Kuv64f value) { return fill<V>(value); }
    static KUV_INLINE V widened(const Kuv32f* from) {
        using Singles = Vector<Kuv32f, 16>;
        if constexpr (lanes == 4) return toDoubles<V>(load<Singles>(from));
        else return toDoubles<V>(Singles{_mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(from)))});
    }
};
using Doubles = std::conditional_t<hasVectors, VectorDoubles<Native<Kuv64f>>, SingleDoubles>;

// So many sums side by side, added by halves.
template <int count>
struct DoubleSums {
    static constexpr int registers = count / Doubles::lanes;

    typename Doubles::Type sums[registers];

    DoubleSums() {
#pragma GCC unroll 16
        for (int k = 0; k < registers; ++k) sums[k] = Doubles::filled(0);
    }
    KUV_INLINE void add(int k, typename Doubles::Type value) { sums[k] = KUV_VARIANT::add(sums[k], value); }
    Kuv64f total() const {
        Kuv64f lanes[count];
#pragma GCC unroll 16
        for (int k = 0; k < registers; ++k) __builtin_memcpy(lanes + k * Doubles::lanes, &sums[k], sizeof(sums[k]));
        for (int half = count / 2; half > 0; half /= 2) {
            for (int j = 0; j < half; ++j) lanes[j] += lanes[j + half];
        }
        return lanes[0];
    }
};

}  // namespace
}  // namespace kuv::KUV_VARIANT
