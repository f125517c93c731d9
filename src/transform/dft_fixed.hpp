// Transforms of up to 16 values, without a table.
#pragma once

#include <utility>

#include "transform/dft_butterflies.hpp"
#include "transform/dft_plan.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// Complex values: planes of real and imaginary parts, or pairs of both. Exchanging the two turns a transform into its inverse.
template <int step>
struct Points {
    Kuv32f* re;
    Kuv32f* im;

    KUV_INLINE Root operator[](ptrdiff_t i) const { return {loadSample(re + step * i), loadSample(im + step * i)}; }
    KUV_INLINE void set(ptrdiff_t i, Root value) const {
        storeSample(re + step * i, value.re);
        storeSample(im + step * i, value.im);
    }
    KUV_INLINE Points from(ptrdiff_t i) const { return {re + step * i, im + step * i}; }
    KUV_INLINE Points exchanged() const { return {im, re}; }
};
using Planes = Points<1>;
using Pairs = Points<2>;

KUV_INLINE Pairs pairsAt(Kuv32f* values) { return {values, values + 1}; }

KUV_INLINE Root operator*(Root a, Root b) { return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re}; }
KUV_INLINE Root operator+(Root a, Root b) { return {a.re + b.re, a.im + b.im}; }
KUV_INLINE Root operator-(Root a, Root b) { return {a.re - b.re, a.im - b.im}; }

template <int length, bool scales>
void fixedTransform(Planes src, Planes dst, Kuv32f scale) {
    Kuv32f re[length], im[length];
#pragma GCC unroll 16
    for (int i = 0; i < length; ++i) {
        re[i] = loadSample(src.re + i);
        im[i] = loadSample(src.im + i);
        if (scales) {
            re[i] *= scale;
            im[i] *= scale;
        }
    }
    transform<length, 1>(re, im);
#pragma GCC unroll 16
    for (int i = 0; i < length; ++i) dst.set(i, {re[i], im[i]});
}

template <int... lengths>
KUV_INLINE void fixedOf(int length, bool scales, Planes src, Planes dst, Kuv32f scale, std::integer_sequence<int, lengths...>) {
    using Transform = void (*)(Planes, Planes, Kuv32f);
    static constexpr Transform transforms[2][longestFixed] = {{fixedTransform<lengths + 1, false>...},
                                                              {fixedTransform<lengths + 1, true>...}};
    transforms[scales][length - 1](src, dst, scale);
}
KUV_INLINE void fixedOf(int length, bool scales, Planes src, Planes dst, Kuv32f scale) {
    fixedOf(length, scales, src, dst, scale, std::make_integer_sequence<int, longestFixed>());
}

KUV_INLINE void scaleBy(Kuv32f factor, Kuv32f* values, ptrdiff_t count) {
    ptrdiff_t i = 0;
    if constexpr (hasVectors) {
        using V = Native<Kuv32f>;
        for (; i + V::lanes <= count; i += V::lanes) store(values + i, load<V>(values + i) * fill<V>(factor));
    }
    for (; i < count; ++i) storeSample(values + i, loadSample(values + i) * factor);
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
