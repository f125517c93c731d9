// Sums of images.
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

}  // namespace
}  // namespace kuv::KUV_VARIANT

KuvStatus KUV_VARIANT_FUNCTION(kuviAdd_32f_C1IR)(const Kuv32f* src, Kuv32s srcStep, Kuv32f* srcDst, Kuv32s srcDstStep,
                                                 KuviSize roiSize) {
    using namespace kuv::KUV_VARIANT;
    if (anyNull(src, srcDst)) return kuvStatusNullPtr;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    combineInPlace(Sum{}, src, srcStep, srcDst, srcDstStep, roiSize);
    return kuvStatusOk;
}
