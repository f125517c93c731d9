// Floating-point operations on vectors, and the same on single samples, so that an operation object is written once for both.
#pragma once

#include "core/samples.hpp"
#include "simd/integer.hpp"

namespace kuv::KUV_VARIANT {
namespace {

KUV_INLINE Kuv32f add(Kuv32f a, Kuv32f b) { return a + b; }
KUV_INLINE Kuv32f sub(Kuv32f a, Kuv32f b) { return a - b; }
KUV_INLINE Kuv32f multiply(Kuv32f a, Kuv32f b) { return a * b; }
KUV_INLINE Kuv64f add(Kuv64f a, Kuv64f b) { return a + b; }
KUV_INLINE Kuv64f sub(Kuv64f a, Kuv64f b) { return a - b; }
KUV_INLINE Kuv64f multiply(Kuv64f a, Kuv64f b) { return a * b; }

// result = instruction(a, b) for lanes of one type, in both widths.
#define KUV_REAL_BINARY(operation, T, instruction)                                                                            \
    KUV_INLINE Vector<T, 16> operation(Vector<T, 16> a, Vector<T, 16> b) { return {_mm_##instruction(a.raw, b.raw)}; }        \
    KUV_AVX(KUV_INLINE Vector<T, 32> operation(Vector<T, 32> a, Vector<T, 32> b) { return {_mm256_##instruction(a.raw, b.raw)}; })

KUV_REAL_BINARY(add, Kuv32f, add_ps)
KUV_REAL_BINARY(add, Kuv64f, add_pd)
KUV_REAL_BINARY(sub, Kuv32f, sub_ps)
KUV_REAL_BINARY(sub, Kuv64f, sub_pd)
KUV_REAL_BINARY(multiply, Kuv32f, mul_ps)
KUV_REAL_BINARY(multiply, Kuv64f, mul_pd)
KUV_REAL_BINARY(divide, Kuv32f, div_ps)

// The smaller and the larger one; b if either is a NaN.
KUV_REAL_BINARY(minimum, Kuv32f, min_ps)
KUV_REAL_BINARY(minimum, Kuv64f, min_pd)
KUV_REAL_BINARY(maximum, Kuv32f, max_ps)
KUV_REAL_BINARY(maximum, Kuv64f, max_pd)

KUV_REAL_BINARY(bitAnd, Kuv32f, and_ps)
KUV_REAL_BINARY(bitOr, Kuv32f, or_ps)
KUV_REAL_BINARY(bitAndNot, Kuv32f, andnot_ps)  // ~a & b

#undef KUV_REAL_BINARY

// a * b + c, a * b - c and c - a * b: fused, which rounds once, where the variant has it.
#ifdef __FMA__
#define KUV_FUSED(operation, V, instruction) \
    KUV_INLINE V operation(V a, V b, V c) { return {instruction(a.raw, b.raw, c.raw)}; }
#define KUV_OF_PRODUCT(operation, instruction, unfused)                 \
    KUV_FUSED(operation, KUV_V(Kuv32f, 16), _mm_##instruction##_ps)     \
    KUV_FUSED(operation, KUV_V(Kuv32f, 32), _mm256_##instruction##_ps)  \
    KUV_FUSED(operation, KUV_V(Kuv64f, 16), _mm_##instruction##_pd)     \
    KUV_FUSED(operation, KUV_V(Kuv64f, 32), _mm256_##instruction##_pd)
#define KUV_V(...) Vector<__VA_ARGS__>
#else
#define KUV_OF_PRODUCT(operation, instruction, unfused)                                                                \
    template <class T, int bytes>                                                                                      \
    KUV_INLINE Vector<T, bytes> operation(Vector<T, bytes> a, Vector<T, bytes> b, Vector<T, bytes> c) {                \
        return unfused;                                                                                                \
    }
#endif
KUV_OF_PRODUCT(plusProduct, fmadd, add(multiply(a, b), c))
KUV_OF_PRODUCT(productMinus, fmsub, sub(multiply(a, b), c))
KUV_OF_PRODUCT(minusProduct, fnmadd, sub(c, multiply(a, b)))
#undef KUV_OF_PRODUCT
#undef KUV_FUSED
#undef KUV_V

// The same of single samples: rounded twice in every variant, h9 too.
KUV_INLINE Kuv32f plusProduct(Kuv32f a, Kuv32f b, Kuv32f c) { return a * b + c; }
KUV_INLINE Kuv64f plusProduct(Kuv64f a, Kuv64f b, Kuv64f c) { return a * b + c; }
KUV_INLINE Kuv32f productMinus(Kuv32f a, Kuv32f b, Kuv32f c) { return a * b - c; }
KUV_INLINE Kuv32f minusProduct(Kuv32f a, Kuv32f b, Kuv32f c) { return c - a * b; }

// Not the C library's, which sets errno.
KUV_INLINE Kuv32f squareRoot(Kuv32f x) { return _mm_cvtss_f32(_mm_sqrt_ss(_mm_set_ss(x))); }
KUV_INLINE Kuv64f squareRoot(Kuv64f x) { return _mm_cvtsd_f64(_mm_sqrt_sd(_mm_setzero_pd(), _mm_set_sd(x))); }
KUV_INLINE Vector<Kuv32f, 16> squareRoot(Vector<Kuv32f, 16> v) { return {_mm_sqrt_ps(v.raw)}; }
KUV_AVX(KUV_INLINE Vector<Kuv32f, 32> squareRoot(Vector<Kuv32f, 32> v) { return {_mm256_sqrt_ps(v.raw)}; })

// With the sign bit cleared, also of a NaN.
KUV_INLINE Kuv32f absolute(Kuv32f x) { return __builtin_fabsf(x); }
template <int bytes>
KUV_INLINE Vector<Kuv32f, bytes> absolute(Vector<Kuv32f, bytes> v) {
    return bitAndNot(fill<Vector<Kuv32f, bytes>>(-0.0f), v);
}

// Ones where the comparison holds, which with a NaN it does not, but for `unequal` and `unordered`: those hold.
#define KUV_COMPARISON(operation, instruction, predicate)                                                                           \
    KUV_INLINE Vector<Kuv32f, 16> operation(Vector<Kuv32f, 16> a, Vector<Kuv32f, 16> b) { return {_mm_##instruction(a.raw, b.raw)}; } \
    KUV_AVX(KUV_INLINE Vector<Kuv32f, 32> operation(Vector<Kuv32f, 32> a, Vector<Kuv32f, 32> b) {                                   \
        return {_mm256_cmp_ps(a.raw, b.raw, predicate)};                                                                            \
    })

KUV_COMPARISON(greater, cmpgt_ps, _CMP_GT_OQ)
KUV_COMPARISON(atLeast, cmpge_ps, _CMP_GE_OQ)
KUV_COMPARISON(equal, cmpeq_ps, _CMP_EQ_OQ)
KUV_COMPARISON(unequal, cmpneq_ps, _CMP_NEQ_UQ)
KUV_COMPARISON(unordered, cmpunord_ps, _CMP_UNORD_Q)

#undef KUV_COMPARISON

// The sign bits of all lanes, the first one's lowest.
KUV_INLINE unsigned laneBits(Vector<Kuv32f, 16> v) { return static_cast<unsigned>(_mm_movemask_ps(v.raw)); }
KUV_AVX(KUV_INLINE unsigned laneBits(Vector<Kuv32f, 32> v) { return static_cast<unsigned>(_mm256_movemask_ps(v.raw)); })

// Lane by lane mask ? a : b. Not by a blend, which GCC 12 takes apart into single lanes where integers have but 16 bytes.
template <int bytes>
KUV_INLINE Vector<Kuv32f, bytes> select(Vector<Kuv32f, bytes> mask, Vector<Kuv32f, bytes> a, Vector<Kuv32f, bytes> b) {
    return bitOr(bitAnd(mask, a), bitAndNot(mask, b));
}

KUV_INLINE Vector<Kuv32s, 16> asIntegers(Vector<Kuv32f, 16> v) { return {_mm_castps_si128(v.raw)}; }

// `value` where a and b are equal, else 0.
KUV_INLINE Vector<Kuv64f, 16> whereEqual(Vector<Kuv64f, 16> value, Vector<Kuv64f, 16> a, Vector<Kuv64f, 16> b) {
    return {_mm_and_pd(value.raw, _mm_cmpeq_pd(a.raw, b.raw))};
}
KUV_AVX(KUV_INLINE Vector<Kuv64f, 32> whereEqual(Vector<Kuv64f, 32> value, Vector<Kuv64f, 32> a, Vector<Kuv64f, 32> b) {
    return {_mm256_and_pd(value.raw, _mm256_cmp_pd(a.raw, b.raw, _CMP_EQ_OQ))};
})

// What a vector and a single sample, as one of one lane, have in common.
template <class T>
struct LanesOf {
    static constexpr int count = 1;
    static KUV_INLINE T all(T value) { return value; }
    static KUV_INLINE T from(const T* at) { return loadSample(at); }
    static KUV_INLINE void to(T* at, T value) { storeSample(at, value); }
};
template <class T, int bytes>
struct LanesOf<Vector<T, bytes>> {
    using V = Vector<T, bytes>;
    static constexpr int count = V::lanes;
    static KUV_INLINE V all(T value) { return fill<V>(value); }
    static KUV_INLINE V from(const T* at) { return load<V>(at); }
    static KUV_INLINE void to(T* at, V value) { store(at, value); }
};

// Integers to single precision, rounded as the processor is told to.
KUV_INLINE Vector<Kuv32f, 16> toReals(Vector<Kuv32s, 16> v) { return {_mm_cvtepi32_ps(v.raw)}; }
KUV_AVX2(KUV_INLINE Vector<Kuv32f, 32> toReals(Vector<Kuv32s, 32> v) { return {_mm256_cvtepi32_ps(v.raw)}; })

// To integers, toward zero or rounded as the processor is told to; what does not fit gives the lowest one.
KUV_INLINE Vector<Kuv32s, 16> truncated(Vector<Kuv32f, 16> v) { return {_mm_cvttps_epi32(v.raw)}; }
KUV_INLINE Vector<Kuv32s, 16> rounded(Vector<Kuv32f, 16> v) { return {_mm_cvtps_epi32(v.raw)}; }
KUV_AVX2(KUV_INLINE Vector<Kuv32s, 32> truncated(Vector<Kuv32f, 32> v) { return {_mm256_cvttps_epi32(v.raw)}; }
         KUV_INLINE Vector<Kuv32s, 32> rounded(Vector<Kuv32f, 32> v) { return {_mm256_cvtps_epi32(v.raw)}; })

// The same into memory, also from 32 bytes where integers have but 16.
KUV_INLINE void storeTruncated(Kuv32s* to, Vector<Kuv32f, 16> v) { store(to, truncated(v)); }
KUV_AVX(KUV_INLINE void storeTruncated(Kuv32s* to, Vector<Kuv32f, 32> v) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), _mm256_cvttps_epi32(v.raw));
})

// Cut toward zero; what does not fit an integer is lost.
KUV_INLINE Vector<Kuv32f, 16> wholePart(Vector<Kuv32f, 16> v) { return {_mm_cvtepi32_ps(_mm_cvttps_epi32(v.raw))}; }
KUV_AVX(KUV_INLINE Vector<Kuv32f, 32> wholePart(Vector<Kuv32f, 32> v) { return {_mm256_cvtepi32_ps(_mm256_cvttps_epi32(v.raw))}; })

// To and from double precision: as many lanes as fit a register of it.
template <class Doubles>
KUV_INLINE Doubles toDoubles(Vector<Kuv32f, 16> v) {
    if constexpr (Doubles::bytes == 16) {
        return {_mm_cvtps_pd(v.raw)};
    } else {
        KUV_AVX(return {_mm256_cvtps_pd(v.raw)};)
    }
}
template <class Doubles>
KUV_INLINE Doubles toDoubles(Vector<Kuv32s, 16> v) {
    if constexpr (Doubles::bytes == 16) {
        return {_mm_cvtepi32_pd(v.raw)};
    } else {
        KUV_AVX(return {_mm256_cvtepi32_pd(v.raw)};)
    }
}
KUV_INLINE Vector<Kuv32f, 16> toSingles(Vector<Kuv64f, 16> v) { return {_mm_cvtpd_ps(v.raw)}; }
KUV_INLINE Vector<Kuv32s, 16> truncated(Vector<Kuv64f, 16> v) { return {_mm_cvttpd_epi32(v.raw)}; }
KUV_AVX(KUV_INLINE Vector<Kuv32f, 16> toSingles(Vector<Kuv64f, 32> v) { return {_mm256_cvtpd_ps(v.raw)}; }
        KUV_INLINE Vector<Kuv32s, 16> truncated(Vector<Kuv64f, 32> v) { return {_mm256_cvttpd_epi32(v.raw)}; })

// Of each 16 bytes: two lanes of a from lane `first` on, and two of b from lane `second` on.
template <int first, int second, int bytes>
KUV_INLINE Vector<Kuv32f, bytes> lanePairs(Vector<Kuv32f, bytes> a, Vector<Kuv32f, bytes> b) {
    constexpr int order = _MM_SHUFFLE(second + 1, second, first + 1, first);
    if constexpr (bytes == 16) {
        return {_mm_shuffle_ps(a.raw, b.raw, order)};
    } else {
        KUV_AVX(return {_mm256_shuffle_ps(a.raw, b.raw, order)};)
    }
}

KUV_INLINE Vector<Kuv32f, 16> upperHalf(Vector<Kuv32f, 16> v) { return {_mm_movehl_ps(v.raw, v.raw)}; }
KUV_INLINE Vector<Kuv32s, 16> upperHalf(Vector<Kuv32s, 16> v) { return {_mm_unpackhi_epi64(v.raw, v.raw)}; }
KUV_INLINE Vector<Kuv32f, 16> lowerHalves(Vector<Kuv32f, 16> a, Vector<Kuv32f, 16> b) { return {_mm_movelh_ps(a.raw, b.raw)}; }
KUV_INLINE Vector<Kuv32s, 16> lowerHalves(Vector<Kuv32s, 16> a, Vector<Kuv32s, 16> b) { return {_mm_unpacklo_epi64(a.raw, b.raw)}; }

// A register of halves that `half` gives, called with the first lane of each.
template <class V, class Half>
KUV_INLINE V fromHalves(Half half) {
    if constexpr (V::bytes == 16) {
        return half(0);
    } else if constexpr (std::is_floating_point_v<typename V::Lane>) {
        KUV_AVX(return {_mm256_insertf128_ps(_mm256_castps128_ps256(half(0).raw), half(V::lanes / 2).raw, 1)};)
    } else {
        KUV_AVX2(return {_mm256_inserti128_si256(_mm256_castsi128_si256(half(0).raw), half(V::lanes / 2).raw, 1)};)
    }
}

// Four samples computed in double precision: `compute` gets as many of them as fit a register, widened by toDoubles, and gives what
// toSingles or truncated(doubles) made of them.
template <class V, class Compute>
KUV_INLINE auto inDoubles(V v, Compute compute) {
    using Doubles = Native<Kuv64f>;
    if constexpr (Doubles::bytes == 32) {
        return compute(toDoubles<Doubles>(v));
    } else {
        const auto low = compute(toDoubles<Doubles>(v)), high = compute(toDoubles<Doubles>(upperHalf(v)));
        return lowerHalves(low, high);
    }
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
