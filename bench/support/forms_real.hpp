// The arguments of floating-point arithmetic.
#pragma once

#include "support/forms.hpp"

namespace kuvbench {

// Two images, the divisors 1, so that what is divided again and again stays as it is.
template <bool aligned = true>
struct DividedInPlace : TwoInPlace<Kuv32f, aligned> {
    explicit DividedInPlace(KuviSize wanted) : TwoInPlace<Kuv32f, aligned>(wanted) { fillWithValues(this->src, wanted, 1, 1, 1); }
};

// Two images and one that they go to, sample by sample.
template <class T, bool aligned = true>
struct TwoTo {
    static constexpr double bytesPerPixel = 3 * sizeof(T);

    KuviSize size;
    Image<T> src1{size, 1, aligned ? 0 : 1}, src2{size, 1, aligned ? 0 : 2}, dst{size, 1, aligned ? 0 : 3};

    explicit TwoTo(KuviSize wanted) : size(wanted) {
        fillWithValues(src1, size, 1);
        fillWithValues(src2, size, 2);
        fillWithValues(dst, size, 3);
    }

    template <class Function>
    auto call(Function* function) {
        return function(src1.row(), src1.step(), src2.row(), src2.step(), dst.row(), dst.step(), size);
    }
};

// An image of ones in place, alone or with ones as the constants of its channels: what is squared or scaled again and again neither
// grows nor vanishes.
template <int channels, bool aligned = true>
struct RealInPlace {
    static constexpr double bytesPerPixel = 2 * channels * sizeof(Kuv32f);
    static constexpr Kuv32f value[3] = {1, 1, 1};

    KuviSize size;
    Image<Kuv32f> srcDst{size, channels, aligned ? 0 : 3};

    explicit RealInPlace(KuviSize wanted) : size(wanted) { fillWithValues(srcDst, {size.width * channels, size.height}, 1, 1, 1); }

    auto call(KuvStatus (*function)(Kuv32f*, Kuv32s, KuviSize)) { return function(srcDst.row(), srcDst.step(), size); }
    auto call(KuvStatus (*function)(Kuv32f, Kuv32f*, Kuv32s, KuviSize)) { return function(value[0], srcDst.row(), srcDst.step(), size); }
    auto call(KuvStatus (*function)(const Kuv32f*, Kuv32f*, Kuv32s, KuviSize)) { return function(value, srcDst.row(), srcDst.step(), size); }
};

}  // namespace kuvbench
