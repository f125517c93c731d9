// Packed 4:2:2 video and grey samples to RGB.
#include "colour/to_rgb_kernels.hpp"
#include "core/checks.hpp"

KuvStatus KUV_VARIANT_FUNCTION(kuviCbYCr422ToRGB_8u_C2C3R)(const Kuv8u* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize) {
    using namespace kuv::KUV_VARIANT;
    if (anyNull(src, dst)) return kuvStatusNullPtr;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    // Row by row, also where rows touch: what computes a pixel depends on its place in the row.
    for (ptrdiff_t row = 0; row < roiSize.height; ++row) videoRow(rowAt(src, srcStep, row), rowAt(dst, dstStep, row), roiSize.width);
    return kuvStatusOk;
}

KuvStatus KUV_VARIANT_FUNCTION(kuviGrayToRGB_8u_C1C3R)(const Kuv8u* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize) {
    using namespace kuv::KUV_VARIANT;
    if (anyNull(src, dst)) return kuvStatusNullPtr;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    ptrdiff_t width = roiSize.width, rows = roiSize.height;
    joinRows(width, rows, {{srcStep, 1}, {dstStep, 3}});
    for (ptrdiff_t row = 0; row < rows; ++row) greyRow(rowAt(src, srcStep, row), rowAt(dst, dstStep, row), width);
    return kuvStatusOk;
}
