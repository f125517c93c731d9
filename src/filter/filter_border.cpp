// Filters: the pixels near the border from copies with a border around them, all others straight from the source.
#include "core/checks.hpp"
#include "core/integers.hpp"
#include "core/record.hpp"
#include "filter/filter_border_extend.hpp"
#include "filter/filter_border_kernels.hpp"
#include "filter/filter_border_layout.hpp"

namespace kuv::KUV_VARIANT {
namespace {

constexpr bool isBorder(Kuv32s type) {
    const Kuv32s rule = borderRule(type);
    return type == borderInMemory || rule == kuvBorderClamp || rule == kuvBorderReflect || rule == kuvBorderFill;
}

Kernel keptKernel(const KuviBorderKernel* spec) {
    const KuviBorderKernel* const record = alignedUp(spec);
    const ptrdiff_t width = wordAt(record, offsetof(BorderKernelHeader, kernelWidth));
    const ptrdiff_t height = wordAt(record, offsetof(BorderKernelHeader, kernelHeight));
    const Kuv32f* const reversed = placeIn<Kuv32f>(record, wordAt(record, offsetof(BorderKernelHeader, reversedKernel)));
    return {reversed + width * height - 1, width, height};
}

// Large kernels take longer than the memory does.
bool streams(const Kernel& kernel, ptrdiff_t dstStep, KuviSize size) {
    constexpr ptrdiff_t sample = sizeof(Kuv32f);
    if (!hasAVX || dstStep % 64 != 0 || !CommonSizes::have(kernel)) return false;
    return bypassesCaches(size.height, size.width, 2 * sample, sample * size.width);
}

void filterWithBorder(const Images& region, Kuv32s borderType, Kuv32f constant, const Kernel& kernel, Kuv8u* buffer) {
    const ptrdiff_t width = region.width, height = region.height, kw = kernel.width, kh = kernel.height;
    const ptrdiff_t left = reachBefore(kw), right = reachBehind(kw), top = reachBefore(kh), bottom = reachBehind(kh);
    const Order order = orderOf(kernel, width);
    const auto has = [borderType](Kuv32s flag, ptrdiff_t reach) { return reach == 0 || (borderType & flag) != 0; };
    const bool hasTop = has(kuvBorderHaveTop, top), hasBottom = has(kuvBorderHaveBottom, bottom);
    const bool hasLeft = has(kuvBorderHaveLeft, left), hasRight = has(kuvBorderHaveRight, right);

    const auto fromSource = [&](ptrdiff_t x, ptrdiff_t y, ptrdiff_t columns, ptrdiff_t rows) {
        filter(kernel, order, {rowAt(region.src, region.srcStep, y - top) + x - left, region.srcStep,
                               rowAt(region.dst, region.dstStep, y) + x, region.dstStep, columns, rows, region.streaming});
    };
    if (hasTop && hasBottom && hasLeft && hasRight) return fromSource(0, 0, width, height);

    Kuv32f* const area = alignedUp(reinterpret_cast<Kuv32f*>(buffer), 32);
    const Continued continued = {region.src, region.srcStep, {hasLeft ? -left : 0, width + (hasRight ? right : 0)},
                                 {hasTop ? -top : 0, height + (hasBottom ? bottom : 0)}, borderRule(borderType), constant};
    const ptrdiff_t areaElements = static_cast<ptrdiff_t>(borderedElements(kw, kh, width, height));
    // NOLINTNEXTLINE(clang-analyzer-core.DivideZero): a kernel has a column
    const auto rowsAtOnce = [&](ptrdiff_t columns) { return areaElements / (columns + kw - 1) - (kh - 1); };
    const auto fromCopy = [&](ptrdiff_t x, ptrdiff_t firstRow, ptrdiff_t columns, ptrdiff_t rows) {
        if (columns == 0) return;
        const ptrdiff_t areaWidth = columns + kw - 1, most = rowsAtOnce(columns);
        for (ptrdiff_t done = 0; done < rows; done += most) {
            const ptrdiff_t y = firstRow + done, count = smaller(rows - done, most);
            continued.copy(x - left, y - top, areaWidth, count + kh - 1, area);
            filter(kernel, order, {area, areaWidth * static_cast<ptrdiff_t>(sizeof(Kuv32f)), rowAt(region.dst, region.dstStep, y) + x,
                                   region.dstStep, columns, count, region.streaming});
        }
    };
    if (kw >= width || kh >= height) return fromCopy(0, 0, width, height);

    // Strips at the sides are as wide as a block or a vector where there is room and as much between them, or reach up to whole lines that
    // are streamed: their other pixels get what they would get from the source.
    constexpr ptrdiff_t lanes = hasVectors ? Native<Kuv32f>::lanes : 1;
    const auto hasRoom = [&](ptrdiff_t columns) {
        constexpr ptrdiff_t fewRows = 8;
        return columns == 0 || (3 * columns <= width && rowsAtOnce(columns) >= fewRows);
    };
    const auto widened = [&](ptrdiff_t columns) {
        if (columns == 0) return columns;
        const ptrdiff_t block = hasPartBlocks(kernel) ? partVectors * lanes : lanes;
        if (columns <= block && hasRoom(block)) return block;
        return columns <= lanes && hasRoom(lanes) ? lanes : columns;
    };
    const ptrdiff_t firstRow = hasTop ? 0 : top, lastRows = hasBottom ? 0 : bottom, rows = height - firstRow - lastRows;
    const ptrdiff_t firstColumn = hasLeft ? 0 : left, lastColumns = hasRight ? 0 : right;
    fromCopy(0, 0, width, firstRow);
    fromCopy(0, height - lastRows, width, lastRows);
    ptrdiff_t leftStrip = widened(firstColumn), rightStrip = widened(lastColumns);
    if (region.streaming) {
        constexpr ptrdiff_t line = 64 / sizeof(Kuv32f);
        const ptrdiff_t leftLines = firstColumn == 0 ? 0 : firstColumn + samplesToAlignment(region.dst + firstColumn, 64);
        const ptrdiff_t beyondLine = (line - samplesToAlignment(region.dst + width - lastColumns, 64)) % line;
        const ptrdiff_t rightLines = lastColumns == 0 ? 0 : lastColumns + beyondLine;
        if (hasRoom(leftLines) && hasRoom(rightLines)) {
            leftStrip = leftLines;
            rightStrip = rightLines;
        }
    }
    // What is left begins on a vector, unless it would be less than one.
    const bool between = width - leftStrip - rightStrip >= lanes;
    const ptrdiff_t begin = between ? leftStrip : firstColumn, end = width - (between ? rightStrip : lastColumns);
    fromCopy(0, firstRow, leftStrip, rows);
    fromCopy(width - rightStrip, firstRow, rightStrip, rows);
    fromSource(begin, firstRow, end - begin, rows);
}

}  // namespace
}  // namespace kuv::KUV_VARIANT

KuvStatus KUV_VARIANT_FUNCTION(kuviFilterBorder_32f_C1R)(const Kuv32f* src, Kuv32s srcStep, Kuv32f* dst, Kuv32s dstStep, KuviSize roiSize,
                                                         Kuv32s borderType, const Kuv32f* borderValue, const KuviBorderKernel* spec,
                                                         Kuv8u* buffer) {
    using namespace kuv::KUV_VARIANT;
    const bool fills = (borderType & 15) == kuvBorderFill;
    if (anyNull(src, dst, spec, buffer)) return kuvStatusNullPtr;
    if (fills && anyNull(borderValue)) return kuvStatusNullPtr;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    if (srcStep < 1 || ptrdiff_t{4} * roiSize.width > dstStep) return kuvStatusBadStep;
    if (!isBorder(borderType)) return kuvStatusBadBorder;
    const Kernel kernel = keptKernel(spec);
    filterWithBorder({src, srcStep, dst, dstStep, roiSize.width, roiSize.height, streams(kernel, dstStep, roiSize)}, borderType,
                     fills ? loadSample(borderValue) : 0, kernel, buffer);
    return kuvStatusOk;
}
