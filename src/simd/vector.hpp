// Vector values of 16 and 32 bytes and how they get into and out of memory.
//
// A Vector<T, bytes> holds bytes / sizeof(T) lanes of type T. Native<T> is the widest one that the variant's set computes on: 32
// bytes for integers from AVX2 on, for floating point from AVX on, else 16.
//
// Operations whose lanes would have to cross the middle of a 32-byte register (packing, interleaving) work on its two 16-byte
// halves separately, as the instructions do. Packing two registers and interleaving the halves leaves lanes in their order, so
// kernels seldom see the difference.
#pragma once

#include <immintrin.h>

#include <type_traits>

#include "core/variant.hpp"

namespace kuv::KUV_VARIANT {
namespace {

template <class T, int bytes>
struct RegisterOf;
template <class T>
struct RegisterOf<T, 16> {
    using Type = __m128i;
};
template <class T>
struct RegisterOf<T, 32> {
    using Type = __m256i;
};
template <>
struct RegisterOf<Kuv32f, 16> {
    using Type = __m128;
};
template <>
struct RegisterOf<Kuv32f, 32> {
    using Type = __m256;
};
template <>
struct RegisterOf<Kuv64f, 16> {
    using Type = __m128d;
};
template <>
struct RegisterOf<Kuv64f, 32> {
    using Type = __m256d;
};

template <class T, int byteCount>
struct Vector {
    using Lane = T;
    static constexpr int bytes = byteCount;
    static constexpr int lanes = byteCount / static_cast<int>(sizeof(T));
    typename RegisterOf<T, byteCount>::Type raw;
};

template <class T>
using Native = Vector<T, std::is_floating_point_v<T> ? realBytes : integerBytes>;

using ByteVector = Native<Kuv8u>;
constexpr int vectorBytes = ByteVector::bytes;

// Functions on 32-byte vectors exist only where the compiler may use the registers.
#ifdef __AVX__
#define KUV_AVX(...) __VA_ARGS__
#else
#define KUV_AVX(...)
#endif
#ifdef __AVX2__
#define KUV_AVX2(...) __VA_ARGS__
#else
#define KUV_AVX2(...)
#endif

template <class V>
KUV_INLINE V load(const typename V::Lane* from) {
    if constexpr (std::is_floating_point_v<typename V::Lane>) {
        if constexpr (V::bytes == 16) {
            return {_mm_loadu_ps(from)};
        } else {
            KUV_AVX(return {_mm256_loadu_ps(from)};)
        }
    } else {
        if constexpr (V::bytes == 16) {
            return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(from))};
        } else {
            KUV_AVX2(return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(from))};)
        }
    }
}

template <class V>
KUV_INLINE void store(typename V::Lane* to, V value) {
    if constexpr (std::is_floating_point_v<typename V::Lane>) {
        if constexpr (V::bytes == 16) {
            _mm_storeu_ps(to, value.raw);
        } else {
            KUV_AVX(_mm256_storeu_ps(to, value.raw);)
        }
    } else {
        if constexpr (V::bytes == 16) {
            _mm_storeu_si128(reinterpret_cast<__m128i*>(to), value.raw);
        } else {
            KUV_AVX2(_mm256_storeu_si256(reinterpret_cast<__m256i*>(to), value.raw);)
        }
    }
}

// The same by 16 bytes at a time.
template <class V>
KUV_INLINE void storeHalves(typename V::Lane* to, V value) {
    if constexpr (V::bytes == 16) {
        store(to, value);
    } else if constexpr (std::is_floating_point_v<typename V::Lane>) {
        KUV_AVX(_mm_storeu_ps(to, _mm256_castps256_ps128(value.raw)); _mm_storeu_ps(to + 4, _mm256_extractf128_ps(value.raw, 1));)
    } else {
        KUV_AVX2(__m128i* const at = reinterpret_cast<__m128i*>(to); _mm_storeu_si128(at, _mm256_castsi256_si128(value.raw));
                 _mm_storeu_si128(at + 1, _mm256_extracti128_si256(value.raw, 1));)
    }
}

// Stores past the caches, at an address that is a multiple of the register's size. Needs a fence before others may look.
template <class V>
KUV_INLINE void stream(typename V::Lane* to, V value) {
    if constexpr (std::is_floating_point_v<typename V::Lane>) {
        if constexpr (V::bytes == 16) {
            _mm_stream_ps(to, value.raw);
        } else {
            KUV_AVX(_mm256_stream_ps(to, value.raw);)
        }
    } else if constexpr (V::bytes == 16) {
        _mm_stream_si128(reinterpret_cast<__m128i*>(to), value.raw);
    } else {
        KUV_AVX2(_mm256_stream_si256(reinterpret_cast<__m256i*>(to), value.raw);)
    }
}
KUV_INLINE void streamFence() { _mm_sfence(); }

// All lanes the same.
template <class V>
KUV_INLINE V fill(typename V::Lane value) {
    using T = typename V::Lane;
    constexpr int size = sizeof(T);
    if constexpr (std::is_same_v<T, Kuv32f>) {
        if constexpr (V::bytes == 16) {
            return {_mm_set1_ps(value)};
        } else {
            KUV_AVX(return {_mm256_set1_ps(value)};)
        }
    } else if constexpr (std::is_same_v<T, Kuv64f>) {
        if constexpr (V::bytes == 16) {
            return {_mm_set1_pd(value)};
        } else {
            KUV_AVX(return {_mm256_set1_pd(value)};)
        }
    } else if constexpr (V::bytes == 16) {
        if constexpr (size == 1) return {_mm_set1_epi8(static_cast<char>(value))};
        if constexpr (size == 2) return {_mm_set1_epi16(static_cast<short>(value))};
        if constexpr (size == 4) return {_mm_set1_epi32(static_cast<int>(value))};
        if constexpr (size == 8) return {_mm_set1_epi64x(static_cast<long long>(value))};
    } else {
        KUV_AVX2(if constexpr (size == 1) return {_mm256_set1_epi8(static_cast<char>(value))};
                 if constexpr (size == 2) return {_mm256_set1_epi16(static_cast<short>(value))};
                 if constexpr (size == 4) return {_mm256_set1_epi32(static_cast<int>(value))};
                 if constexpr (size == 8) return {_mm256_set1_epi64x(static_cast<long long>(value))};)
    }
}

// The same bits as lanes of another integer type.
template <class To, class T, int bytes>
KUV_INLINE Vector<To, bytes> as(Vector<T, bytes> value) {
    return {value.raw};
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
