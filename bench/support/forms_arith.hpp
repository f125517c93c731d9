// The arguments of arithmetic.
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
    auto call(KuvStatus (*function)(const Kuv32f*, Kuv32f*, Kuv32s, KuviSize)) {
        return function(value, srcDst.row(), srcDst.step(), size);
    }
};

// One, two or three images of signed samples with a scale factor: the last one is changed, or written.
template <int images, Kuv32s scaleFactor, int channels = 1, bool aligned = true>
struct ScaledSamples {
    static constexpr double bytesPerPixel = (images == 1 ? 4 : 6) * channels;
    static constexpr Kuv16s values[3] = {100, -200, 300};

    KuviSize size;
    Image<Kuv16s> src1{size, channels, aligned ? 0 : 1}, src2{size, channels, aligned ? 0 : 2}, srcDst{size, channels, aligned ? 0 : 3};

    explicit ScaledSamples(KuviSize wanted) : size(wanted) {
        unsigned seed = 0;
        for (Image<Kuv16s>* each : {&src1, &src2, &srcDst}) {
            fillWithValues(*each, {size.width * channels, size.height}, ++seed, -20000, 20000);
        }
    }

    auto call(decltype(kuviAdd_16s_C1RSfs)* function) {
        return function(src1.row(), src1.step(), src2.row(), src2.step(), srcDst.row(), srcDst.step(), size, scaleFactor);
    }
    auto call(decltype(kuviSub_16s_C1IRSfs)* function) {
        return function(src1.row(), src1.step(), srcDst.row(), srcDst.step(), size, scaleFactor);
    }
    auto call(decltype(kuviAddC_16s_C1IRSfs)* function) { return function(values[0], srcDst.row(), srcDst.step(), size, scaleFactor); }
    auto call(decltype(kuviAddC_16s_C3IRSfs)* function) { return function(values, srcDst.row(), srcDst.step(), size, scaleFactor); }
    auto call(decltype(kuviSqr_16s_C1IRSfs)* function) { return function(srcDst.row(), srcDst.step(), size, scaleFactor); }
};

}  // namespace kuvbench
