// Floating-point arithmetic on images: what is done with a sample, and which checks each function makes.
#include "core/checks.hpp"
#include "simd/real.hpp"
#include "simd/rows.hpp"

namespace kuv::KUV_VARIANT {
namespace {

struct Sum {
    template <class V>
    KUV_INLINE V operator()(V a, V b) const {
        return add(a, b);
    }
};
struct Difference {
    template <class V>
    KUV_INLINE V operator()(V a, V b) const {
        return sub(a, b);
    }
};
struct AbsoluteDifference {
    template <class V>
    KUV_INLINE V operator()(V a, V b) const {
        return absolute(sub(a, b));
    }
};
struct Product {
    template <class V>
    KUV_INLINE V operator()(V a, V b) const {
        return multiply(a, b);
    }
};
struct Absolute {
    template <class V>
    KUV_INLINE V operator()(V a) const {
        return absolute(a);
    }
    static KuvStatus status() { return kuvStatusOk; }
};
struct Square {
    template <class V>
    KUV_INLINE V operator()(V a) const {
        return multiply(a, a);
    }
    static KuvStatus status() { return kuvStatusOk; }
};

// What the processor makes of an invalid operation.
constexpr Kuv32f invalid = __builtin_bit_cast(Kuv32f, 0xFFC00000u);

// Notes whether a divisor was 0.
class Quotient {
    using V = Native<Kuv32f>;

public:
    KUV_INLINE Kuv32f operator()(Kuv32f a, Kuv32f b) {
        if (b != 0) return a / b;
        metZero_ = true;
        return a > 0 ? __builtin_inff() : a < 0 ? -__builtin_inff() : invalid;
    }
    // By +0 the processor's quotient has the dividend's sign, and 0 by it is the right NaN, which another NaN must not replace.
    KUV_INLINE V operator()(V a, V b) {
        const V zero = equal(b, fill<V>(0));
        zeros_ = bitOr(zeros_, zero);
        return divide(bitAndNot(bitAnd(zero, unordered(a, a)), a), bitAndNot(zero, b));
    }
    KuvStatus status() const { return metZero_ || laneBits(zeros_) != 0 ? kuvStatusDivByZeroWarning : kuvStatusOk; }

private:
    bool metZero_ = false;
    V zeros_ = fill<V>(0);
};

// Denormal operands count as what they are from here on, unless the caller wants to be told of exceptions.
void heedDenormals() {
    constexpr unsigned zeroDenormals = 0x40, allMasks = 0x1F80;
    const unsigned control = _mm_getcsr();
    if ((control & allMasks) == allMasks && (control & zeroDenormals) != 0) _mm_setcsr(control & ~zeroDenormals);
    asm volatile("" ::: "memory");  // the compiler knows nothing of the register: samples are loaded after the change
}

// Notes whether a sample had no root: below 0 or a NaN in px; with its sign bit set, but for -0, where there are vectors.
class Root {
    using V = Native<Kuv32f>;

public:
    Root() {
        if constexpr (hasVectors) heedDenormals();
    }
    KUV_INLINE Kuv32f operator()(Kuv32f x) {
        if constexpr (hasVectors) {
            metNegative_ |= __builtin_signbit(x) != 0 && x != 0;
            return squareRoot(x);
        } else {
            if (x >= 0) return squareRoot(x);
            metNegative_ = true;
            return invalid;
        }
    }
    KUV_INLINE V operator()(V x) {
        signs_ = bitOr(signs_, bitAnd(x, unequal(x, fill<V>(0))));
        return squareRoot(x);
    }
    KuvStatus status() const { return metNegative_ || laneBits(signs_) != 0 ? kuvStatusSqrtOfNegative : kuvStatusOk; }

private:
    bool metNegative_ = false;
    V signs_ = fill<V>(0);
};

template <class Operation>
KuvStatus combineImages(const Kuv32f* src, Kuv32s srcStep, Kuv32f* srcDst, Kuv32s srcDstStep, KuviSize roiSize) {
    if (anyNull(src, srcDst)) return kuvStatusNullPtr;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    combineInPlace(Operation{}, src, srcStep, srcDst, srcDstStep, roiSize.width, roiSize.height);
    return kuvStatusOk;
}

template <class Operation>
KuvStatus applyConstants(const Kuv32f* value, Kuv32f* srcDst, Kuv32s srcDstStep, KuviSize roiSize) {
    if (anyNull(value, srcDst)) return kuvStatusNullPtr;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    const Kuv32f constants[] = {loadSample(value), loadSample(value + 1), loadSample(value + 2)};
    transformInPlace(Operation{}, srcDst, srcDstStep, ptrdiff_t{3} * roiSize.width, roiSize.height, Periodic(constants));
    return kuvStatusOk;
}

template <class Operation>
KuvStatus transformImage(Kuv32f* srcDst, Kuv32s srcDstStep, KuviSize roiSize) {
    if (anyNull(srcDst)) return kuvStatusNullPtr;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    if (srcDstStep < 1) return kuvStatusBadStep;
    Operation operation;
    transformInPlace(operation, srcDst, srcDstStep & ~3, roiSize.width, roiSize.height);
    return operation.status();
}

}  // namespace
}  // namespace kuv::KUV_VARIANT

#define KUV_COMBINED(name, Operation)                                                                                         \
    KuvStatus KUV_VARIANT_FUNCTION(name)(const Kuv32f* src, Kuv32s srcStep, Kuv32f* srcDst, Kuv32s srcDstStep, KuviSize roiSize) { \
        using namespace kuv::KUV_VARIANT;                                                                                     \
        return combineImages<Operation>(src, srcStep, srcDst, srcDstStep, roiSize);                                           \
    }
KUV_COMBINED(kuviAdd_32f_C1IR, Sum)
KUV_COMBINED(kuviSub_32f_C1IR, Difference)

#define KUV_WITH_CONSTANTS(name, Operation)                                                                                    \
    KuvStatus KUV_VARIANT_FUNCTION(name)(const Kuv32f* value, Kuv32f* srcDst, Kuv32s srcDstStep, KuviSize roiSize) {           \
        using namespace kuv::KUV_VARIANT;                                                                                     \
        return applyConstants<Operation>(value, srcDst, srcDstStep, roiSize);                                                  \
    }
KUV_WITH_CONSTANTS(kuviAddC_32f_C3IR, Sum)
KUV_WITH_CONSTANTS(kuviMulC_32f_C3IR, Product)

#define KUV_TRANSFORMED(name, Operation)                                                                                      \
    KuvStatus KUV_VARIANT_FUNCTION(name)(Kuv32f* srcDst, Kuv32s srcDstStep, KuviSize roiSize) {                               \
        using namespace kuv::KUV_VARIANT;                                                                                     \
        return transformImage<Operation>(srcDst, srcDstStep, roiSize);                                                        \
    }
KUV_TRANSFORMED(kuviAbs_32f_C1IR, Absolute)
KUV_TRANSFORMED(kuviSqr_32f_C1IR, Square)
KUV_TRANSFORMED(kuviSqrt_32f_C1IR, Root)

KuvStatus KUV_VARIANT_FUNCTION(kuviSub_32f_C1R)(const Kuv32f* src1, Kuv32s src1Step, const Kuv32f* src2, Kuv32s src2Step,
                                                Kuv32f* dst, Kuv32s dstStep, KuviSize roiSize) {
    using namespace kuv::KUV_VARIANT;
    if (anyNull(src1, src2, dst)) return kuvStatusNullPtr;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    combine(Difference{}, src2, src2Step, src1, src1Step, dst, dstStep, roiSize.width, roiSize.height);
    return kuvStatusOk;
}

KuvStatus KUV_VARIANT_FUNCTION(kuviAbsDiff_32f_C1R)(const Kuv32f* src1, Kuv32s src1Step, const Kuv32f* src2, Kuv32s src2Step,
                                                    Kuv32f* dst, Kuv32s dstStep, KuviSize roiSize) {
    using namespace kuv::KUV_VARIANT;
    constexpr ptrdiff_t sampleBytes = sizeof(Kuv32f);
    if (anyNull(src1, src2, dst)) return kuvStatusNullPtr;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    const ptrdiff_t rowBytes = sampleBytes * roiSize.width;
    if (src1Step < rowBytes || src2Step < rowBytes || dstStep < rowBytes) return kuvStatusBadStep;
    if ((src1Step | src2Step | dstStep) % sampleBytes != 0) return kuvStatusStepNotMultiple;
    combine(AbsoluteDifference{}, src1, src1Step, src2, src2Step, dst, dstStep, roiSize.width, roiSize.height);
    return kuvStatusOk;
}

KuvStatus KUV_VARIANT_FUNCTION(kuviSubC_32f_C1IR)(Kuv32f value, Kuv32f* srcDst, Kuv32s srcDstStep, KuviSize roiSize) {
    using namespace kuv::KUV_VARIANT;
    if (anyNull(srcDst)) return kuvStatusNullPtr;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    transformInPlace(Difference{}, srcDst, srcDstStep, roiSize.width, roiSize.height, Periodic<Kuv32f, 1>({value}));
    return kuvStatusOk;
}

KuvStatus KUV_VARIANT_FUNCTION(kuviDivC_32f_C1IR)(Kuv32f value, Kuv32f* srcDst, Kuv32s srcDstStep, KuviSize roiSize) {
    using namespace kuv::KUV_VARIANT;
    if (anyNull(srcDst)) return kuvStatusNullPtr;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    if (srcDstStep < 1) return kuvStatusBadStep;
    if (value == 0) return kuvStatusDivByZero;
    const Kuv32f reciprocal = static_cast<Kuv32f>(1.0 / value);
    transformInPlace(Product{}, srcDst, srcDstStep, roiSize.width, roiSize.height, Periodic<Kuv32f, 1>({reciprocal}));
    return kuvStatusOk;
}

KuvStatus KUV_VARIANT_FUNCTION(kuviDiv_32f_C1IR)(const Kuv32f* src, Kuv32s srcStep, Kuv32f* srcDst, Kuv32s srcDstStep,
                                                 KuviSize roiSize) {
    using namespace kuv::KUV_VARIANT;
    if (anyNull(src, srcDst)) return kuvStatusNullPtr;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    if (srcStep < 1 || srcDstStep < 1) return kuvStatusBadStep;
    Quotient quotient;
    combineInPlace(quotient, src, srcStep, srcDst, srcDstStep, roiSize.width, roiSize.height);
    return quotient.status();
}
