// Resize plans: the sizes of blocks and buffers, and the tables of positions.
#include "core/checks.hpp"
#include "core/dispatch.hpp"
#include "core/integers.hpp"
#include "core/record.hpp"
#include "resize/resize_layout.hpp"

namespace {

using namespace kuv;

constexpr bool hasZero(KuviSize size) { return size.width == 0 || size.height == 0; }
constexpr bool isBelow(KuviSize size, Kuv32s least) { return size.width < least || size.height < least; }

// What a plan has for each position beside the position itself, and how many source samples the filter reaches.
struct ResizeFilter {
    Kuv32s interpolation;
    Kuv32s coefficients;
    Kuv32s reach;
    bool canAntialias;
};
constexpr ResizeFilter resizeFilters[] = {
    {1, 0, 1, false}, {kuvResizeLinear, 1, 2, true}, {6, 4, 4, true}, {8, 2, 2, false}, {16, 6, 6, true}};

constexpr const ResizeFilter* resizeFilterOf(Kuv32s interpolation) {
    for (const ResizeFilter& each : resizeFilters) {
        if (each.interpolation == interpolation) return &each;
    }
    return nullptr;
}

constexpr Kuv64u tableBytes(const ResizeFilter& filter, bool antialiased, Kuv32s srcLength, Kuv32s dstLength) {
    const Kuv64u src = static_cast<Kuv64u>(srcLength), dst = static_cast<Kuv64u>(dstLength);
    const Kuv64u reach = static_cast<Kuv64u>(filter.reach), plain = static_cast<Kuv64u>(filter.coefficients);
    const Kuv64u coefficients = antialiased ? reach * ((src + dst - 1) / dst) : plain;
    return 4 * (1 + coefficients) * roundedUp(dst, 32);
}

constexpr Kuv64u slack = sizeof(ResizeHeader) + 128;
constexpr Kuv64u sizeLimit = 0x7FFFFFFF;
constexpr Kuv32s initBytes = 64;

constexpr Kuv32s greatestCommonDivisor(Kuv32s a, Kuv32s b) {
    while (b != 0) {
        const Kuv32s rest = a % b;
        a = b;
        b = rest;
    }
    return a;
}

// Fills an axis' tables, and gives what the header says of it.
ResizeAxis makeAxis(Kuv8u* record, Kuv32s srcLength, Kuv32s dstLength, Kuv64u positions, Kuv64u fractions) {
    const Kuv32s divisor = greatestCommonDivisor(srcLength, dstLength);
    ResizeAxis axis = {srcLength, dstLength, srcLength / divisor, dstLength / divisor, static_cast<Kuv32u>(positions),
                       static_cast<Kuv32u>(fractions), 0, {0, 0}, 0, 0};
    Kuv32s* const position = placeIn<Kuv32s>(record, static_cast<std::ptrdiff_t>(positions));
    Kuv32f* const fraction = placeIn<Kuv32f>(record, static_cast<std::ptrdiff_t>(fractions));
    const Kuv64f ratio = static_cast<Kuv64f>(axis.srcReduced) / axis.dstReduced;
    for (std::ptrdiff_t i = 0; i < dstLength; ++i) {
        const Kuv64f product = (static_cast<Kuv64f>(i) + 0.5) * ratio;
        const Kuv64f exact = product - 0.5;
        const Kuv32s whole = exact < 0 ? -1 : static_cast<Kuv32s>(exact);
        position[i] = whole;
        fraction[i] = static_cast<Kuv32f>(exact - whole);
        axis.leadCount += exact < 0;
        axis.tailCount += exact >= srcLength - 1;
    }
    return axis;
}

}  // namespace

KuvStatus kuviResizeGetSize_16s_shared(KuviSize srcSize, KuviSize dstSize, Kuv32s interpolation, Kuv32u antialiasing,
                                       Kuv32s* specSize, Kuv32s* initSize) {
    if (anyNull(specSize, initSize)) return kuvStatusNullPtr;
    if (hasZero(srcSize) || hasZero(dstSize)) return kuvStatusNoOperation;
    if (emptyRoi(srcSize) || emptyRoi(dstSize)) return kuvStatusBadSize;
    const ResizeFilter* const filter = resizeFilterOf(interpolation);
    if (filter == nullptr) return interpolation == 0 ? kuvStatusInternal : kuvStatusBadInterpolation;
    if (isBelow(srcSize, filter->reach)) return kuvStatusBadSize;
    const bool antialiased = antialiasing != 0 && filter->canAntialias;
    const Kuv64u bytes = tableBytes(*filter, antialiased, srcSize.width, dstSize.width) +
                         tableBytes(*filter, antialiased, srcSize.height, dstSize.height) + slack;
    if (bytes >= sizeLimit) return kuvStatusSizeOverflow;
    storeSample(specSize, static_cast<Kuv32s>(bytes));
    storeSample(initSize, initBytes);
    return antialiasing != 0 && !filter->canAntialias ? kuvStatusAntialiasIgnored : kuvStatusOk;
}

KuvStatus kuviResizeLinearInit_16s_shared(KuviSize srcSize, KuviSize dstSize, Kuv8u* spec) {
    if (anyNull(spec)) return kuvStatusNullPtr;
    if (hasZero(srcSize) || hasZero(dstSize)) return kuvStatusNoOperation;
    if (isBelow(srcSize, 2) || emptyRoi(dstSize)) return kuvStatusBadSize;
    Kuv8u* const record = alignedUp(spec);
    const Kuv64u rows = 4 * static_cast<Kuv64u>(dstSize.height), columns = 4 * static_cast<Kuv64u>(dstSize.width);
    ResizeHeader header = {resizeMagic, resizeDataKind, kuvResizeLinear, 1, 1, 0, {1, 1, 1, 1}, {}, {}};
    const Kuv64u tables = sizeof header;
    header.vertical = makeAxis(record, srcSize.height, dstSize.height, tables, tables + rows + columns);
    header.horizontal = makeAxis(record, srcSize.width, dstSize.width, tables + rows, tables + 2 * rows + columns);
    storeSample(placeIn<ResizeHeader>(record, 0), header);
    return kuvStatusOk;
}

KuvStatus kuviResizeGetBufferSize_16s_shared(const Kuv8u* spec, KuviSize dstSize, Kuv32u numChannels, Kuv32s* bufferSize) {
    if (anyNull(spec, bufferSize)) return kuvStatusNullPtr;
    if (hasZero(dstSize)) return kuvStatusNoOperation;
    const auto header = loadSample(placeIn<ResizeHeader>(alignedUp(spec), 0));
    if (header.magic != resizeMagic) return kuvStatusBadContext;
    if (numChannels != 1 && numChannels != 3 && numChannels != 4) return kuvStatusBadChannelCount;
    if (emptyRoi(dstSize)) return kuvStatusBadSize;
    const bool isClipped = dstSize.width > header.horizontal.dstLength || dstSize.height > header.vertical.dstLength;
    const Kuv64u width = static_cast<Kuv64u>(smaller(dstSize.width, header.horizontal.dstLength));
    const Kuv64u height = static_cast<Kuv64u>(smaller(dstSize.height, header.vertical.dstLength));
    const Kuv64u rows = 2 * Kuv64u{header.rowBuffers} * roundedUp(4 * numChannels * width, 32);
    const Kuv64u bytes = roundedUp(4 * height, 32) + roundedUp(4 * width, 32) + rows + 64;
    if (bytes >= sizeLimit) return kuvStatusSizeOverflow;
    storeSample(bufferSize, static_cast<Kuv32s>(bytes));
    return isClipped ? kuvStatusSizeWarning : kuvStatusOk;
}
