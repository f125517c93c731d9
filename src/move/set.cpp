// Fills with a constant.
#include "core/checks.hpp"
#include "move/fills.hpp"
#include "simd/integer.hpp"
#include "simd/rows.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// Fills of up to so many bytes never ask for the size of the cache; 16-bit fills never stream.
constexpr Kuv64s mostUnasked8u = 0x600000, mostUnasked32s = 0x80000, neverAsked = 0x7FFFFFFFFFFFFFFF;

template <class T>
KuvStatus setImage(T value, T* dst, Kuv32s dstStep, KuviSize roi, Kuv64s mostUnasked) {
    if (anyNull(dst)) return kuvStatusNullPtr;
    if (emptyRoi(roi)) return kuvStatusBadSize;
    // A size that 32 bits cannot tell counts as a small one.
    const Kuv64s rowBytes = Kuv64s{roi.width} * static_cast<Kuv64s>(sizeof(T));
    const bool fits = rowBytes <= 0x7FFFFFFF / roi.height;
    const bool streaming = hasVectors && fits && rowBytes * roi.height > mostUnasked && exceedsCache(rowBytes, roi.height, 1);
    fillImage(value, dst, dstStep, roi.width, roi.height, streaming);
    return kuvStatusOk;
}

struct Replaced {
    KUV_INLINE Kuv8u operator()(Kuv8u a, Kuv8u kept, Kuv8u value) const { return static_cast<Kuv8u>((a & kept) | value); }
    template <int bytes>
    KUV_INLINE Vector<Kuv8u, bytes> operator()(Vector<Kuv8u, bytes> a, Vector<Kuv8u, bytes> kept, Vector<Kuv8u, bytes> value) const {
        return bitOr(bitAnd(a, kept), value);
    }
};

// Every fourth byte, the first among them. The last pixel's other bytes may not be the caller's.
void setChannelOf4(Kuv8u value, Kuv8u* dst, ptrdiff_t dstStep, ptrdiff_t width, ptrdiff_t height) {
    if constexpr (hasVectors) {
        transformInPlace(Replaced{}, dst, dstStep, 4 * width - 3, height, Periodic<Kuv8u, 4>({0, 0xFF, 0xFF, 0xFF}),
                         Periodic<Kuv8u, 4>({value, 0, 0, 0}));
    } else {
        for (ptrdiff_t row = 0; row < height; ++row) {
            Kuv8u* const to = rowAt(dst, dstStep, row);
            for (ptrdiff_t i = 0; i < width; ++i) to[4 * i] = value;
        }
    }
}

}  // namespace
}  // namespace kuv::KUV_VARIANT

KuvStatus KUV_VARIANT_FUNCTION(kuviSet_8u_C1R)(Kuv8u value, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize) {
    return kuv::KUV_VARIANT::setImage(value, dst, dstStep, roiSize, kuv::KUV_VARIANT::mostUnasked8u);
}

KuvStatus KUV_VARIANT_FUNCTION(kuviSet_16u_C1R)(Kuv16u value, Kuv16u* dst, Kuv32s dstStep, KuviSize roiSize) {
    return kuv::KUV_VARIANT::setImage(value, dst, dstStep, roiSize, kuv::KUV_VARIANT::neverAsked);
}

KuvStatus KUV_VARIANT_FUNCTION(kuviSet_32s_C1R)(Kuv32s value, Kuv32s* dst, Kuv32s dstStep, KuviSize roiSize) {
    return kuv::KUV_VARIANT::setImage(value, dst, dstStep, roiSize, kuv::KUV_VARIANT::mostUnasked32s);
}

// As integers, so that a NaN keeps its bits.
KuvStatus KUV_VARIANT_FUNCTION(kuviSet_32f_C1R)(Kuv32f value, Kuv32f* dst, Kuv32s dstStep, KuviSize roiSize) {
    using namespace kuv::KUV_VARIANT;
    return setImage(__builtin_bit_cast(Kuv32s, value), reinterpret_cast<Kuv32s*>(dst), dstStep, roiSize, mostUnasked32s);
}

KuvStatus KUV_VARIANT_FUNCTION(kuviSet_8u_C4CR)(Kuv8u value, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize) {
    using namespace kuv::KUV_VARIANT;
    if (anyNull(dst)) return kuvStatusNullPtr;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    setChannelOf4(value, dst, dstStep, roiSize.width, roiSize.height);
    return kuvStatusOk;
}

KuvStatus KUV_VARIANT_FUNCTION(kuvsZero_8u)(Kuv8u* dst, Kuv32s len) {
    using namespace kuv::KUV_VARIANT;
    if (anyNull(dst)) return kuvStatusNullPtr;
    if (len < 1) return kuvStatusBadSize;
    if constexpr (hasVectors) {
        fillRun(dst, len, FillPattern<Kuv8u>(0), false);
    } else {
        for (ptrdiff_t i = 0; i < len; ++i) dst[i] = 0;
    }
    return kuvStatusOk;
}
