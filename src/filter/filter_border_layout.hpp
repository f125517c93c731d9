// The layout of a kept kernel: a header of 32-bit words at the block's first 64-byte boundary, and the coefficients behind it. Words that
// stand for pointers are distances from the header; what is reserved is not written. Programs read these words; those that nothing here
// reads are kept for them.
#pragma once

#include "kuvcv.h"

namespace kuv {
namespace {

struct BorderKernelHeader {
    Kuv32s typeTag;
    Kuv32s kernelWidth;
    Kuv32s kernelHeight;
    Kuv32u reservedAfterSize[11];
    Kuv32s roundMode;
    Kuv32u zeros[2];
    Kuv32u reservedAfterZeros[2];
    Kuv32u reversedKernel;
    Kuv32u reservedAfterReversed;
    Kuv32u laneKernel;
    Kuv32u reservedAfterLanes;
    Kuv32s channels;
    Kuv32u reservedAfterChannels[8];
};
static_assert(sizeof(BorderKernelHeader) == 128);

constexpr bool isFilterDataType(Kuv32s dataType) {
    return dataType == kuvDataType8u || dataType == kuvDataType16u || dataType == kuvDataType16s || dataType == kuvDataType32f;
}

// How far a kernel reaches before a pixel, in either direction; and behind it.
template <class Extent>
constexpr Extent reachBefore(Extent kernelExtent) {
    return (kernelExtent - 1) / 2;
}
template <class Extent>
constexpr Extent reachBehind(Extent kernelExtent) {
    return kernelExtent - 1 - reachBefore(kernelExtent);
}

// Sums and products of what no 32-bit integer holds stay so.
constexpr Kuv64s sizeBound = Kuv64s{1} << 40;
constexpr Kuv64s boundedProduct(Kuv64s a, Kuv64s b) { return a > 0 && b > sizeBound / a ? sizeBound : a * b; }

// Of the strip above or below the region or of that at its side, whichever is larger, or of the whole region, with what the kernel covers.
constexpr Kuv64s borderedElements(Kuv64s kw, Kuv64s kh, Kuv64s rw, Kuv64s rh) {
    if (kw >= rw || kh >= rh) return boundedProduct(kw + rw - 1, kh + rh - 1);
    // A strip of one column or row has no second one to reflect about.
    const Kuv64s right = kw == 2 ? 2 : reachBehind(kw), below = kh == 2 ? 2 : reachBehind(kh);
    const Kuv64s strip = below < 1 ? 0 : boundedProduct(kw + rw - 1, kh + below - 1), side = boundedProduct(kh + rh - 1, kw + right - 1);
    return right > 0 && strip <= side ? side : strip;
}

}  // namespace
}  // namespace kuv
