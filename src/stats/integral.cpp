// Tables of the sums over all samples above and to the left.
#include "stats/integral_kernels.hpp"

#include "core/checks.hpp"

namespace kuv::KUV_VARIANT {
namespace {

KUV_INLINE void integrate(const Kuv8u* src, ptrdiff_t srcStep, Kuv32s* dst, ptrdiff_t dstStep, KuviSize size, Kuv32s val) {
    const ptrdiff_t width = size.width, height = size.height;
    for (ptrdiff_t i = 0; i <= width; ++i) storeSample(dst + i, val);
    ptrdiff_t row = 0;
    const auto beginRows = [&](ptrdiff_t count) {
        for (ptrdiff_t k = 1; k <= count; ++k) storeSample(rowAt(dst, dstStep, row + k), val);
    };
    if constexpr (hasVectors) {
        if (width >= stripColumns) {
            const auto sum = [&]<int rows>(std::integral_constant<int, rows>) {
                beginRows(rows);
                sumRows<rows>(rowAt(src, srcStep, row), srcStep, rowAt(dst, dstStep, row), dstStep, width);
                row += rows;
            };
            while (row + 4 <= height) sum(std::integral_constant<int, 4>{});
            if (row + 2 <= height) sum(std::integral_constant<int, 2>{});
            if (row < height) sum(std::integral_constant<int, 1>{});
            return;
        }
    }
    for (; row < height; ++row) {
        beginRows(1);
        sumRow(rowAt(src, srcStep, row), rowAt(dst, dstStep, row), dstStep, width);
    }
}

}  // namespace
}  // namespace kuv::KUV_VARIANT

KuvStatus KUV_VARIANT_FUNCTION(kuviIntegral_8u32s_C1R)(const Kuv8u* src, Kuv32s srcStep, Kuv32s* dst, Kuv32s dstStep, KuviSize roiSize,
                                                       Kuv32s val) {
    using namespace kuv::KUV_VARIANT;
    if (anyNull(src, dst)) return kuvStatusNullPtr;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    if (srcStep < roiSize.width || dstStep < 4 * (Kuv64s{roiSize.width} + 1)) return kuvStatusBadStep;
    if (dstStep % 4 != 0) return kuvStatusStepNotMultiple;
    integrate(src, srcStep, dst, dstStep, roiSize, val);
    return kuvStatusOk;
}
