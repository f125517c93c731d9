// Channels of interleaved pixels reordered.
#include "core/checks.hpp"
#include "move/swap_channels_kernels.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// A copy that nobody changes between the check and the work.
template <class P>
KUV_INLINE ChannelOrder<P> orderOf(const Kuv32s* entries) {
    ChannelOrder<P> order;
    for (int c = 0; c < P::colours; ++c) order.from[c] = loadSample(entries + c);
    return order;
}

template <class P>
constexpr bool namesChannels(const ChannelOrder<P>& order) {
    for (const Kuv32s each : order.from) {
        if (each < 0 || each >= P::colours) return false;
    }
    return true;
}

template <class P, class T = typename P::Sample>
KuvStatus swapChannels(const T* src, Kuv32s srcStep, T* dst, Kuv32s dstStep, KuviSize roiSize, const Kuv32s* dstOrder) {
    if (anyNull(src, dst)) return kuvStatusNullPtr;
    if (srcStep == 0 || dstStep == 0) return kuvStatusBadStep;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    if (anyNull(dstOrder)) return kuvStatusNullPtr;
    const auto order = orderOf<P>(dstOrder);
    if (!namesChannels(order)) return kuvStatusBadChannelOrder;
    swapImage(order, src, srcStep, dst, dstStep, roiSize.width, roiSize.height);
    return kuvStatusOk;
}

}  // namespace
}  // namespace kuv::KUV_VARIANT

KuvStatus KUV_VARIANT_FUNCTION(kuviSwapChannels_8u_C3R)(const Kuv8u* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep,
                                                        KuviSize roiSize, const Kuv32s* dstOrder) {
    using namespace kuv::KUV_VARIANT;
    using Rgb = Pixel<Kuv8u, 3, 3>;
    if (anyNull(src, dst, dstOrder)) return kuvStatusNullPtr;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    if (srcStep == 0 || dstStep == 0) return kuvStatusBadStep;
    const auto order = orderOf<Rgb>(dstOrder);
    if (!namesChannels(order)) return kuvStatusBadChannelOrder;
    swapImage(order, src, src == dst ? dstStep : srcStep, dst, dstStep, roiSize.width, roiSize.height);
    return kuvStatusOk;
}

KuvStatus KUV_VARIANT_FUNCTION(kuviSwapChannels_16u_C3R)(const Kuv16u* src, Kuv32s srcStep, Kuv16u* dst, Kuv32s dstStep,
                                                         KuviSize roiSize, const Kuv32s* dstOrder) {
    using namespace kuv::KUV_VARIANT;
    return swapChannels<Pixel<Kuv16u, 3, 3>>(src, srcStep, dst, dstStep, roiSize, dstOrder);
}

KuvStatus KUV_VARIANT_FUNCTION(kuviSwapChannels_8u_AC4R)(const Kuv8u* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep,
                                                         KuviSize roiSize, const Kuv32s* dstOrder) {
    using namespace kuv::KUV_VARIANT;
    return swapChannels<Pixel<Kuv8u, 4, 3>>(src, srcStep, dst, dstStep, roiSize, dstOrder);
}

KuvStatus KUV_VARIANT_FUNCTION(kuviSwapChannels_16u_AC4R)(const Kuv16u* src, Kuv32s srcStep, Kuv16u* dst, Kuv32s dstStep,
                                                          KuviSize roiSize, const Kuv32s* dstOrder) {
    using namespace kuv::KUV_VARIANT;
    return swapChannels<Pixel<Kuv16u, 4, 3>>(src, srcStep, dst, dstStep, roiSize, dstOrder);
}

KuvStatus KUV_VARIANT_FUNCTION(kuviSwapChannels_8u_C3IR)(Kuv8u* srcDst, Kuv32s srcDstStep, KuviSize roiSize,
                                                         const Kuv32s* dstOrder) {
    using namespace kuv::KUV_VARIANT;
    return swapChannels<Pixel<Kuv8u, 3, 3>>(srcDst, srcDstStep, srcDst, srcDstStep, roiSize, dstOrder);
}

KuvStatus KUV_VARIANT_FUNCTION(kuviSwapChannels_8u_C4IR)(Kuv8u* srcDst, Kuv32s srcDstStep, KuviSize roiSize,
                                                         const Kuv32s* dstOrder) {
    using namespace kuv::KUV_VARIANT;
    if (anyNull(srcDst, dstOrder)) return kuvStatusNullPtr;
    return swapChannels<Pixel<Kuv8u, 4, 4>>(srcDst, srcDstStep, srcDst, srcDstStep, roiSize, dstOrder);
}
