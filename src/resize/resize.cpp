// Tiles of resized images: checks, and what of the plan a tile takes.
#include "core/checks.hpp"
#include "core/integers.hpp"
#include "core/record.hpp"
#include "resize/resize_layout.hpp"
#include "resize/resize_scalar.hpp"
#include "resize/resize_vector.hpp"

namespace kuv::KUV_VARIANT {
namespace {

constexpr bool isResizeBorder(Kuv32s type) { return type == borderInMemory || borderRule(type) == kuvBorderClamp; }

TileAxis tileAxis(const Kuv8u* record, const ResizeAxis& axis, ptrdiff_t offset, ptrdiff_t length, bool hasBefore, bool hasAfter) {
    const ptrdiff_t rest = axis.dstLength - offset, used = smaller(length, rest);
    const ptrdiff_t origin = offset * axis.srcReduced / axis.dstReduced;
    return {placeIn<Kuv32s>(record, axis.positions) + offset,
            placeIn<Kuv32f>(record, axis.fractions) + offset,
            -origin,
            axis.srcLength - 1 - origin,
            used,
            hasBefore ? 0 : clamped(axis.leadCount - offset, 0, used),
            hasAfter ? 0 : clamped(axis.tailCount - (rest - used), 0, used)};
}

}  // namespace
}  // namespace kuv::KUV_VARIANT

KuvStatus KUV_VARIANT_FUNCTION(kuviResizeLinear_16s_C3R)(const Kuv16s* src, Kuv32s srcStep, Kuv16s* dst, Kuv32s dstStep,
                                                         KuviPoint dstOffset, KuviSize dstSize, Kuv32u border, const Kuv16s*,
                                                         const Kuv8u* spec, Kuv8u* buffer) {
    using namespace kuv::KUV_VARIANT;
    if (!isResizeBorder(static_cast<Kuv32s>(border))) return kuvStatusBadBorder;
    if (anyNull(src, dst, spec, buffer)) return kuvStatusNullPtr;
    if (dstSize.width == 0 || dstSize.height == 0) return kuvStatusNoOperation;
    spec = alignedUp(spec);
    const auto plan = loadSample(placeIn<ResizeHeader>(spec, 0));
    if (plan.magic != resizeMagic) return kuvStatusBadContext;
    if (emptyRoi(dstSize)) return kuvStatusBadSize;
    if (srcStep % 2 != 0 || dstStep % 2 != 0) return kuvStatusBadStep;
    if (dstOffset.x < 0 || dstOffset.x >= plan.horizontal.dstLength) return kuvStatusOutOfRange;
    if (dstOffset.y < 0 || dstOffset.y >= plan.vertical.dstLength) return kuvStatusOutOfRange;
    if (plan.antialiasing != 0) return kuvStatusInternal;
    if (plan.interpolation != kuvResizeLinear) return kuvStatusBadContext;

    const auto has = [&](Kuv32u flag) { return (border & flag) != 0; };
    const ResizeTile tile = {
        src, srcStep, dst, dstStep,
        tileAxis(spec, plan.horizontal, dstOffset.x, dstSize.width, has(kuvBorderHaveLeft), has(kuvBorderHaveRight)),
        tileAxis(spec, plan.vertical, dstOffset.y, dstSize.height, has(kuvBorderHaveTop), has(kuvBorderHaveBottom))};
    Kuv32f* const rows = alignedUp(reinterpret_cast<Kuv32f*>(buffer));
    const ptrdiff_t rowFloats = roundedUp(3 * tile.columns.length, 8);
    if constexpr (hasVectors) {
        VectorResize(tile, rows, rowFloats).run();
    } else {
        ScalarResize(tile, rows, rowFloats).run();
    }
    return tile.columns.length < dstSize.width || tile.rows.length < dstSize.height ? kuvStatusSizeWarning : kuvStatusOk;
}
