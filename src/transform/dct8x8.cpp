// Cosine transforms of 8x8 blocks.
#include "core/checks.hpp"
#include "transform/dct8x8_scalar.hpp"
#include "transform/dct8x8_vector.hpp"

KuvStatus KUV_VARIANT_FUNCTION(kuviDCT8x8Fwd_16s_C1I)(Kuv16s* srcDst) {
    using namespace kuv::KUV_VARIANT;
    if (anyNull(srcDst)) return kuvStatusNullPtr;
    if constexpr (hasVectors) {
        transformBlock(srcDst);
    } else {
        transformScalarBlock(srcDst);
    }
    return kuvStatusOk;
}

KuvStatus KUV_VARIANT_FUNCTION(kuviDCT8x8Inv_16s_C1I)(Kuv16s* srcDst) {
    using namespace kuv::KUV_VARIANT;
    if (anyNull(srcDst)) return kuvStatusNullPtr;
    if constexpr (hasVectors) {
        restoreBlock(srcDst);
    } else {
        restoreScalarBlock(srcDst);
    }
    return kuvStatusOk;
}
