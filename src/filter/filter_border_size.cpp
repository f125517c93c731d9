// The sizes of a filter's blocks.
#include "core/align.hpp"
#include "core/checks.hpp"
#include "core/rows.hpp"
#include "filter/filter_border_layout.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// In many cases an integer kernel is of no use.
constexpr bool isInteger(Kuv32s kernelType, KuviSize kernel, Kuv32s dataType, Kuv32s channels) {
    if (kernelType != kuvDataType16s || dataType == kuvDataType16u) return false;
    if (dataType != kuvDataType16s) return true;
    return channels <= 2 && kernel.width > 1 && kernel.height > 1 && (channels != 1 || kernel.width >= 3);
}

constexpr Kuv64s specBytes(Kuv64s kw, Kuv64s kh, bool integer, Kuv32s channels) {
    const Kuv64s count = boundedProduct(kw, kh);
    Kuv64s bytes = sizeof(BorderKernelHeader) + 63;
    bytes += roundedUp(boundedProduct(integer ? 2 : 4, count), 64);
    bytes += roundedUp(boundedProduct((kw + 1) / 2 * 32, kh), 64);
    if (hasVectors && !hasAVX && !integer && channels != 2) bytes += roundedUp(boundedProduct(16, count), 64);
    return bytes;
}

// What vectors may lay out coefficients in.
constexpr Kuv64s extraBytes(Kuv64s count, Kuv32s dataType, Kuv32s channels) {
    if (!hasVectors || dataType != kuvDataType32f || channels == 2) return 0;
    return roundedUp(boundedProduct(channels == 1 ? 32 : 16, count) + 128, 64);
}

}  // namespace
}  // namespace kuv::KUV_VARIANT

KuvStatus KUV_VARIANT_FUNCTION(kuviFilterBorderGetSize)(KuviSize kernelSize, KuviSize roiSize, Kuv32s dataType, Kuv32s kernelType,
                                                        Kuv32s channels, Kuv32s* specSize, Kuv32s* bufferSize) {
    using namespace kuv::KUV_VARIANT;
    if (emptyRoi(kernelSize) || emptyRoi(roiSize)) return kuvStatusBadSize;
    if (!isFilterDataType(dataType)) return kuvStatusBadDataType;
    if (kernelType != kuvDataType16s && kernelType != kuvDataType32f) return kuvStatusBadDataType;
    if (channels < 1 || channels > 4) return kuvStatusBadChannels;
    if (anyNull(specSize, bufferSize)) return kuvStatusNullPtr;

    constexpr Kuv64s largest = 0x7FFFFFFF;
    const Kuv64s kw = kernelSize.width, kh = kernelSize.height;
    const Kuv64s elementBytes = dataType == kuvDataType8u ? 1 : dataType == kuvDataType32f ? 4 : 2;
    const Kuv64s elements = borderedElements(kw, kh, roiSize.width, roiSize.height);
    const Kuv64s region = roundedUp(boundedProduct(elements, channels * elementBytes), 32) + 32;
    const Kuv64s buffer = region + 63 + extraBytes(boundedProduct(kw, kh), dataType, channels);
    const Kuv64s spec = specBytes(kw, kh, isInteger(kernelType, kernelSize, dataType, channels), channels);
    if (buffer > largest || spec > largest) {
        storeSample<Kuv32s>(bufferSize, 0);
        return kuvStatusSizeOverflow;
    }
    storeSample(specSize, static_cast<Kuv32s>(spec));
    storeSample(bufferSize, static_cast<Kuv32s>(buffer));
    return kuvStatusOk;
}
