// Complex values: planes of both parts, or pairs.
#pragma once

#include "core/rows.hpp"
#include "simd/real.hpp"

namespace kuv::KUV_VARIANT {
namespace {

struct Complex {
    Kuv32f re, im;
};

KUV_INLINE Complex operator*(Complex a, Complex b) { return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re}; }
KUV_INLINE Complex operator+(Complex a, Complex b) { return {a.re + b.re, a.im + b.im}; }
KUV_INLINE Complex operator-(Complex a, Complex b) { return {a.re - b.re, a.im - b.im}; }

KUV_INLINE Complex complexAt(const Kuv32f* pair) { return {pair[0], pair[1]}; }

// Values `step` samples apart. Exchanging both parts turns a transform into its inverse.
template <int step>
struct Points {
    Kuv32f* re;
    Kuv32f* im;

    KUV_INLINE Complex operator[](ptrdiff_t i) const { return {loadSample(re + step * i), loadSample(im + step * i)}; }
    KUV_INLINE void set(ptrdiff_t i, Complex value) const {
        storeSample(re + step * i, value.re);
        storeSample(im + step * i, value.im);
    }
    KUV_INLINE Points from(ptrdiff_t i) const { return {re + step * i, im + step * i}; }
    KUV_INLINE Points exchanged() const { return {im, re}; }
};
using Planes = Points<1>;
using Pairs = Points<2>;

KUV_INLINE Planes planesAt(Kuv32f* memory, ptrdiff_t count) { return {memory, memory + count}; }
KUV_INLINE Pairs pairsAt(Kuv32f* values) { return {values, values + 1}; }

KUV_INLINE void scaleBy(Kuv32f factor, Kuv32f* values, ptrdiff_t count) {
    ptrdiff_t i = 0;
    if constexpr (hasVectors) {
        using V = Native<Kuv32f>;
        for (; i + V::lanes <= count; i += V::lanes) store(values + i, multiply(load<V>(values + i), fill<V>(factor)));
    }
    for (; i < count; ++i) storeSample(values + i, loadSample(values + i) * factor);
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
