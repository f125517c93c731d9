// Adaptive homogeneity-directed demosaicing: checks, clipping, and which kernel runs.
#include "core/checks.hpp"
#include "colour/demosaic_scalar.hpp"
#include "colour/demosaic_vector.hpp"

namespace kuv::KUV_VARIANT {
namespace {

template <class T>
KuvStatus demosaic(const T* src, KuviRect roi, KuviSize imageSize, Kuv32s srcStep, T* dst, Kuv32s dstStep, KuvCfaLayout layout,
                   T* tmp, Kuv32s tmpStep) {
    if (anyNull(src, dst)) return kuvStatusNullPtr;
    if (imageSize.width < 5 || imageSize.height < 5) return kuvStatusBadSize;
    if (!isCfaLayout(layout)) return kuvStatusBadArg;

    const ptrdiff_t x = larger(roi.x, 0), y = larger(roi.y, 0);
    const ptrdiff_t width = smaller(imageSize.width - x, roi.width), height = smaller(imageSize.height - y, roi.height);
    if (width < 1 || height < 1) return kuvStatusOk;

    const DemosaicSource<T> source = {src, srcStep, imageSize.width - 1, imageSize.height - 1, redSiteOf(layout)};
    const DemosaicTarget<T> target = {x, y, width, height, dst, dstStep};
    if constexpr (hasVectors) {
        demosaicVector(source, target);
    } else {
        ScalarDemosaic<T>(source, target, tmp, tmpStep).run();
    }
    return kuvStatusOk;
}

}  // namespace
}  // namespace kuv::KUV_VARIANT

KuvStatus KUV_VARIANT_FUNCTION(kuviDemosaicAHD_8u_C1C3R)(const Kuv8u* src, KuviRect roi, KuviSize imageSize, Kuv32s srcStep,
                                                         Kuv8u* dst, Kuv32s dstStep, KuvCfaLayout layout, Kuv8u* tmp,
                                                         Kuv32s tmpStep) {
    return kuv::KUV_VARIANT::demosaic(src, roi, imageSize, srcStep, dst, dstStep, layout, tmp, tmpStep);
}

KuvStatus KUV_VARIANT_FUNCTION(kuviDemosaicAHD_16u_C1C3R)(const Kuv16u* src, KuviRect roi, KuviSize imageSize, Kuv32s srcStep,
                                                          Kuv16u* dst, Kuv32s dstStep, KuvCfaLayout layout, Kuv16u* tmp,
                                                          Kuv32s tmpStep) {
    return kuv::KUV_VARIANT::demosaic(src, roi, imageSize, srcStep, dst, dstStep, layout, tmp, tmpStep);
}
