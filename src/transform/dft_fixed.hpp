// Transforms of up to 16 values, without a table.
#pragma once

#include <utility>

#include "transform/dft_butterflies.hpp"
#include "transform/dft_plan.hpp"
#include "transform/dft_points.hpp"

namespace kuv::KUV_VARIANT {
namespace {

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

}  // namespace
}  // namespace kuv::KUV_VARIANT
