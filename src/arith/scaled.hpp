// Sums, differences and squares of signed 16-bit samples, shifted by a scale factor and limited to the range of a sample: an
// operation object for each kind of scale factor. v is the exact result.
#pragma once

#include "simd/integer.hpp"

namespace kuv::KUV_VARIANT {
namespace {

template <int bytes>
using Samples = Vector<Kuv16s, bytes>;

template <int bytes>
KUV_INLINE Samples<bytes> all(int value) {
    return fill<Samples<bytes>>(static_cast<Kuv16s>(value));
}

constexpr Kuv16s limited(Kuv32s v) { return static_cast<Kuv16s>(v < -32768 ? -32768 : v > 32767 ? 32767 : v); }

// Shifted right to the nearest integer, of two to the even one.
constexpr Kuv32s rounded(Kuv32s v, int places) { return (v + (1 << (places - 1)) - 1 + (v >> places & 1)) >> places; }

// `half` is v / 2, rounded down: it fits 16 bits where v does not. The bit that is lost is that of a ^ b.
struct Sum {
    static constexpr Kuv32s exact(Kuv16s a, Kuv16s b) { return a + b; }
    template <class V>
    static KUV_INLINE V limited(V a, V b) {
        return addSaturated(a, b);
    }
    template <class V>
    static KUV_INLINE V half(V a, V b) {
        return add(bitAnd(a, b), shiftRight<1>(bitXor(a, b)));
    }
};

struct Difference {
    static constexpr Kuv32s exact(Kuv16s a, Kuv16s b) { return a - b; }
    template <class V>
    static KUV_INLINE V limited(V a, V b) {
        return subSaturated(a, b);
    }
    template <class V>
    static KUV_INLINE V half(V a, V b) {
        return sub(shiftRight<1>(bitXor(a, b)), bitAndNot(a, b));
    }
};

template <class Exact>
struct Unscaled {
    KUV_INLINE Kuv16s operator()(Kuv16s a, Kuv16s b) const { return limited(Exact::exact(a, b)); }
    template <int bytes>
    KUV_INLINE Samples<bytes> operator()(Samples<bytes> a, Samples<bytes> b) const {
        return Exact::limited(a, b);
    }
};

// By 15 places nothing but the sign is left, nor is it by more.
class LeftShift {
public:
    explicit LeftShift(Kuv32s scaleFactor)
        : places_(scaleFactor < -15 ? 15 : -scaleFactor), halfFactor_(1 << (places_ - 1)), limit_(1 << (15 - places_)) {}

    KUV_INLINE Kuv16s operator()(Kuv32s v) const { return limited(v << places_); }
    // Of v limited to 16 bits: further, so that only the last doubling leaves the range.
    template <int bytes>
    KUV_INLINE Samples<bytes> operator()(Samples<bytes> v) const {
        const auto half = multiplyLow(minimum(maximum(v, all<bytes>(-limit_)), all<bytes>(limit_)), all<bytes>(halfFactor_));
        return addSaturated(half, half);
    }

private:
    int places_, halfFactor_, limit_;
};

template <class Exact>
struct ShiftedLeft {
    LeftShift shifted;

    KUV_INLINE Kuv16s operator()(Kuv16s a, Kuv16s b) const { return shifted(Exact::exact(a, b)); }
    template <int bytes>
    KUV_INLINE Samples<bytes> operator()(Samples<bytes> a, Samples<bytes> b) const {
        return shifted(Exact::limited(a, b));
    }
};

template <class Exact>
struct Halved {
    KUV_INLINE Kuv16s operator()(Kuv16s a, Kuv16s b) const { return limited(rounded(Exact::exact(a, b), 1)); }
    template <int bytes>
    KUV_INLINE Samples<bytes> operator()(Samples<bytes> a, Samples<bytes> b) const {
        const auto half = Exact::half(a, b);
        return addSaturated(half, bitAnd(bitAnd(half, bitXor(a, b)), all<bytes>(1)));
    }
};

// By 2 to 16 places. Vectors shift the half by one place less, ties up: so 1 is taken from it first unless a bit was lost or what it
// is shifted down to is odd.
template <class Exact>
class ShiftedRight {
public:
    explicit ShiftedRight(Kuv32s scaleFactor) : places_(scaleFactor), factor_(1 << (16 - scaleFactor)) {}

    KUV_INLINE Kuv16s operator()(Kuv16s a, Kuv16s b) const { return static_cast<Kuv16s>(rounded(Exact::exact(a, b), places_)); }
    template <int bytes>
    KUV_INLINE Samples<bytes> operator()(Samples<bytes> a, Samples<bytes> b) const {
        const auto half = Exact::half(a, b);
        const auto down = as<Kuv16s>(multiplyHigh(as<Kuv16u>(half), as<Kuv16u>(all<bytes>(2 * factor_))));
        return multiplyRounded(subSaturated(half, bitAndNot(bitOr(down, bitXor(a, b)), all<bytes>(1))), all<bytes>(factor_));
    }

private:
    int places_, factor_;
};

// v limited to what a sample can be.
struct SquareUnscaled {
    KUV_INLINE Kuv16s operator()(Kuv16s a) const { return limited(a * a); }
    // 182 is the least whose square is too large, and fits 16 bits without a sign.
    template <int bytes>
    KUV_INLINE Samples<bytes> operator()(Samples<bytes> a) const {
        const auto small = minimum(maximum(a, all<bytes>(-182)), all<bytes>(182));
        return as<Kuv16s>(minimum(as<Kuv16u>(multiplyLow(small, small)), as<Kuv16u>(all<bytes>(32767))));
    }
};

struct SquareShiftedLeft {
    LeftShift shifted;

    KUV_INLINE Kuv16s operator()(Kuv16s a) const { return shifted(Kuv32s{limited(a * a)}); }
    template <int bytes>
    KUV_INLINE Samples<bytes> operator()(Samples<bytes> a) const {
        const auto small = minimum(maximum(a, all<bytes>(-181)), all<bytes>(181));
        return shifted(multiplyLow(small, small));
    }
};

// By more than 14 places.
struct SquareSign {
    KUV_INLINE Kuv16s operator()(Kuv16s a) const { return a == 0 ? 0 : 32767; }
    template <int bytes>
    KUV_INLINE Samples<bytes> operator()(Samples<bytes> a) const {
        return bitAndNot(equal(a, all<bytes>(0)), all<bytes>(32767));
    }
};

// A square's half, rounded down, is twice the product of what its root's halves are rounded down and up.
struct SquareHalved {
    KUV_INLINE Kuv16s operator()(Kuv16s a) const { return limited(a * a >> 1); }
    template <int bytes>
    KUV_INLINE Samples<bytes> operator()(Samples<bytes> a) const {
        const auto small = minimum(maximum(a, all<bytes>(-256)), all<bytes>(256)), down = shiftRight<1>(small);
        const auto product = multiplyLow(down, sub(small, down));
        return addSaturated(product, product);
    }
};

// By 2 to 30 places. A square that lies in the middle of two integers lies above the even one: that of an odd number is 1
// modulo 8.
class SquareShiftedRight {
public:
    explicit SquareShiftedRight(Kuv32s scaleFactor) : places_(scaleFactor), belowHalf_(((1 << scaleFactor) - 1) >> 1) {}

    KUV_INLINE Kuv16s operator()(Kuv16s a) const { return limited((a * a + belowHalf_) >> places_); }
    template <int bytes>
    KUV_INLINE Samples<bytes> operator()(Samples<bytes> a) const {
        const auto low = as<Kuv16u>(multiplyLow(a, a)), high = as<Kuv16u>(multiplyHigh(a, a));
        const auto shifted = [this](Vector<Kuv16u, bytes> v) __attribute__((always_inline)) {
            return shiftRight(add(as<Kuv32s>(v), fill<Vector<Kuv32s, bytes>>(belowHalf_)), places_);
        };
        return pack(shifted(interleaveLow(low, high)), shifted(interleaveHigh(low, high)));
    }

private:
    int places_, belowHalf_;
};

// The same by 17 to 30 places: of the lower half only its being 0 matters.
class SquareShiftedFar {
public:
    explicit SquareShiftedFar(Kuv32s scaleFactor) : exact_(scaleFactor), factor_(1 << (31 - scaleFactor)) {}

    KUV_INLINE Kuv16s operator()(Kuv16s a) const { return exact_(a); }
    template <int bytes>
    KUV_INLINE Samples<bytes> operator()(Samples<bytes> a) const {
        return multiplyRounded(add(multiplyHigh(a, a), equal(multiplyLow(a, a), all<bytes>(0))), all<bytes>(factor_));
    }

private:
    SquareShiftedRight exact_;
    int factor_;
};

}  // namespace
}  // namespace kuv::KUV_VARIANT
