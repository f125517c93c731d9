// Logical shifts of 16-bit samples by a constant.
#include "core/checks.hpp"
#include "core/integers.hpp"
#include "move/fills.hpp"
#include "simd/integer.hpp"
#include "simd/rows.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// Any count from 16 on empties a sample. As 16 it can be given to the operations below.
constexpr Kuv32u emptying = 16;

// A sample shifted left by k is the lower half of its product with 2^k, one shifted right by k the upper half of its product with
// 2^(16 - k): so each lane of a vector is shifted by its own count. 2^16 is too large for a lane; what is shifted right by 0 is
// kept.
struct LeftShift {
    static constexpr Kuv16u shifted(Kuv16u a, Kuv32u count) { return static_cast<Kuv16u>(Kuv32u{a} << count); }
    static constexpr Kuv16u factor(Kuv32u count) { return static_cast<Kuv16u>(1u << count); }
    static constexpr bool keeps(Kuv32u) { return false; }
    static constexpr Kuv16u product(Kuv16u a, Kuv16u factor) { return static_cast<Kuv16u>(Kuv32u{a} * factor); }
    template <int bytes>
    static KUV_INLINE Vector<Kuv16u, bytes> product(Vector<Kuv16u, bytes> a, Vector<Kuv16u, bytes> factors) {
        return multiplyLow(a, factors);
    }
};

struct RightShift {
    static constexpr Kuv16u shifted(Kuv16u a, Kuv32u count) { return static_cast<Kuv16u>(Kuv32u{a} >> count); }
    static constexpr Kuv16u factor(Kuv32u count) { return static_cast<Kuv16u>(0x10000u >> count); }
    static constexpr bool keeps(Kuv32u count) { return count == 0; }
    static constexpr Kuv16u product(Kuv16u a, Kuv16u factor) { return static_cast<Kuv16u>(Kuv32u{a} * factor >> 16); }
    template <int bytes>
    static KUV_INLINE Vector<Kuv16u, bytes> product(Vector<Kuv16u, bytes> a, Vector<Kuv16u, bytes> factors) {
        return multiplyHigh(a, factors);
    }
};

template <class Shift>
struct ShiftEach {
    template <class V>
    KUV_INLINE V operator()(V a, V factor) const {
        return Shift::product(a, factor);
    }
};

// Lanes of `kept` are all ones where the sample is to stay.
template <class Shift>
struct ShiftOrKeepEach {
    KUV_INLINE Kuv16u operator()(Kuv16u a, Kuv16u factor, Kuv16u kept) const { return Shift::product(a, factor) | (a & kept); }
    template <int bytes>
    KUV_INLINE Vector<Kuv16u, bytes> operator()(Vector<Kuv16u, bytes> a, Vector<Kuv16u, bytes> factors,
                                                Vector<Kuv16u, bytes> kept) const {
        return bitOr(Shift::product(a, factors), bitAnd(a, kept));
    }
};

// Pixels of so many samples, of which the colours are shifted, each by its own count of up to 16. Vectors write alpha back as it
// was; what lies behind a row's last colour sample is not touched.
template <class Shift, int samples, int colours>
void shiftPixels(const Kuv32u (&counts)[colours], Kuv16u* srcDst, ptrdiff_t step, ptrdiff_t width, ptrdiff_t height) {
    joinRows(width, height, step, samples * static_cast<ptrdiff_t>(sizeof(Kuv16u)));
    if constexpr (hasVectors) {
        Kuv16u factors[samples], kept[samples];
        bool anyKept = false;
        for (int c = 0; c < samples; ++c) {
            const Kuv32u count = c < colours ? counts[c] : 0;
            factors[c] = Shift::factor(count);
            kept[c] = Shift::keeps(count) ? 0xFFFF : 0;
            anyKept |= Shift::keeps(count);
        }
        const ptrdiff_t count = samples * width - (samples - colours);
        if (!anyKept) return transformInPlace(ShiftEach<Shift>{}, srcDst, step, count, height, Periodic(factors));
        transformInPlace(ShiftOrKeepEach<Shift>{}, srcDst, step, count, height, Periodic(factors), Periodic(kept));
    } else {
        for (ptrdiff_t row = 0; row < height; ++row) {
            Kuv16u* pixel = rowAt(srcDst, step, row);
#pragma GCC unroll 2
            for (ptrdiff_t i = 0; i < width; ++i, pixel += samples) {
                for (int c = 0; c < colours; ++c) storeSample(pixel + c, Shift::shifted(loadSample(pixel + c), counts[c]));
            }
        }
    }
}

// All samples by the same count, from 1 on.
template <class Shift>
void shiftSamples(Kuv32u count, Kuv16u* srcDst, ptrdiff_t step, ptrdiff_t width, ptrdiff_t height) {
    if (count >= emptying) return fillImage<Kuv16u>(0, srcDst, step, width, height);
    shiftPixels<Shift, 1>({count}, srcDst, step, width, height);
}

template <class Shift>
KuvStatus shiftC1(Kuv32u value, Kuv16u* srcDst, Kuv32s srcDstStep, KuviSize roiSize) {
    if (anyNull(srcDst)) return kuvStatusNullPtr;
    if (srcDstStep < 1) return kuvStatusBadStep;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    if (value == 0) return kuvStatusOk;
    shiftSamples<Shift>(value, srcDst, srcDstStep, roiSize.width, roiSize.height);
    return kuvStatusOk;
}

// The counts of three channels, up to 16, as they were when the call began.
struct ThreeCounts {
    Kuv32u of[3];

    explicit ThreeCounts(const Kuv32u* values) {
        for (int c = 0; c < 3; ++c) of[c] = smaller(loadSample(values + c), emptying);
    }
    bool allZero() const { return of[0] == 0 && equal(); }
    bool equal() const { return of[0] == of[1] && of[0] == of[2]; }
};

// Three colours, in pixels of so many samples.
template <class Shift, int samples>
KuvStatus shiftColours(const Kuv32u* value, Kuv16u* srcDst, Kuv32s srcDstStep, KuviSize roiSize) {
    if (anyNull(value, srcDst)) return kuvStatusNullPtr;
    if (srcDstStep < 1) return kuvStatusBadStep;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    const ThreeCounts counts(value);
    if (counts.allZero()) return kuvStatusOk;
    if (samples == 3 && counts.equal()) {
        shiftSamples<Shift>(counts.of[0], srcDst, srcDstStep, ptrdiff_t{3} * roiSize.width, roiSize.height);
    } else {
        shiftPixels<Shift, samples>(counts.of, srcDst, srcDstStep, roiSize.width, roiSize.height);
    }
    return kuvStatusOk;
}

template <class Shift>
KuvStatus shiftSignal(Kuv32s value, Kuv16u* srcDst, Kuv32s len) {
    if (anyNull(srcDst)) return kuvStatusNullPtr;
    if (len < 1) return kuvStatusBadSize;
    if (value < 0) return kuvStatusBadShift;
    if (value == 0) return kuvStatusOk;
    shiftSamples<Shift>(static_cast<Kuv32u>(value), srcDst, 0, len, 1);
    return kuvStatusOk;
}

}  // namespace
}  // namespace kuv::KUV_VARIANT

#define KUV_SHIFT_IMAGE(name, Count, ...)                                                                           \
    KuvStatus KUV_VARIANT_FUNCTION(name)(Count value, Kuv16u* srcDst, Kuv32s srcDstStep, KuviSize roiSize) {        \
        using namespace kuv::KUV_VARIANT;                                                                           \
        return __VA_ARGS__(value, srcDst, srcDstStep, roiSize);                                                     \
    }
KUV_SHIFT_IMAGE(kuviLShiftC_16u_C1IR, Kuv32u, shiftC1<LeftShift>)
KUV_SHIFT_IMAGE(kuviRShiftC_16u_C1IR, Kuv32u, shiftC1<RightShift>)
KUV_SHIFT_IMAGE(kuviLShiftC_16u_C3IR, const Kuv32u*, shiftColours<LeftShift, 3>)
KUV_SHIFT_IMAGE(kuviRShiftC_16u_C3IR, const Kuv32u*, shiftColours<RightShift, 3>)
KUV_SHIFT_IMAGE(kuviLShiftC_16u_AC4IR, const Kuv32u*, shiftColours<LeftShift, 4>)
KUV_SHIFT_IMAGE(kuviRShiftC_16u_AC4IR, const Kuv32u*, shiftColours<RightShift, 4>)

KuvStatus KUV_VARIANT_FUNCTION(kuvsLShiftC_16u_I)(Kuv32s value, Kuv16u* srcDst, Kuv32s len) {
    return kuv::KUV_VARIANT::shiftSignal<kuv::KUV_VARIANT::LeftShift>(value, srcDst, len);
}

KuvStatus KUV_VARIANT_FUNCTION(kuvsRShiftC_16u_I)(Kuv32s value, Kuv16u* srcDst, Kuv32s len) {
    return kuv::KUV_VARIANT::shiftSignal<kuv::KUV_VARIANT::RightShift>(value, srcDst, len);
}
