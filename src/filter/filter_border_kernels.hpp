// Sums of products of a kernel's coefficients and what it covers. Sources have all that kernels reach for.
#pragma once

#include "filter/filter_border_blocks.hpp"
#include "filter/filter_border_fixed.hpp"
#include "filter/filter_border_parts.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// The statement of the arithmetic.
KUV_INLINE Kuv32f exactSum(const Kernel& kernel, const Kuv32f* src, ptrdiff_t srcStep) {
    Kuv64f sum = -0.0;  // which adds nothing to what follows, not even a sign
    for (ptrdiff_t j = 0; j < kernel.height; ++j) {
        const Kuv32f* const row = rowAt(src, srcStep, j);
        const Kuv32f* const coefficients = kernel.at(j, 0);
        for (ptrdiff_t i = 0; i < kernel.width; ++i) sum += Kuv64f{coefficients[-i]} * Kuv64f{loadSample(row + i)};
    }
    return static_cast<Kuv32f>(sum);
}

void filterInDoubles(const Kernel& kernel, const Images& images) {
    for (ptrdiff_t y = 0; y < images.height; ++y) {
        const Kuv32f* const src = rowAt(images.src, images.srcStep, y);
        Kuv32f* const dst = rowAt(images.dst, images.dstStep, y);
        for (ptrdiff_t x = 0; x < images.width; ++x) storeSample(dst + x, exactSum(kernel, src + x, images.srcStep));
    }
}

// Blocks for other kernels, if these are large and there are fused products: twelve sums at work then leave registers for what they are
// made of.
constexpr int partRows = 4, partVectors = 3;
KUV_INLINE bool hasPartBlocks(const Kernel& kernel) {
    return hasAVX2 && kernel.width > 1 && kernel.height >= partRows - 1 && !CommonSizes::have(kernel);
}

// Blocks' shapes keep as many sums at work as the registers hold, and load few operands for each of them.
template <Order order>
void filterInVectors(const Kernel& kernel, const Images& images) {
    using V = Native<Kuv32f>;
    constexpr int rows = order == Order::alternating ? 2 : 3;
    constexpr int vectors = order == Order::alternating ? 2 : hasAVX2 ? 4 : 2;
    constexpr int flatVectors = order == Order::alternating ? 4 : 8;
    const bool tall = images.height >= rows;
    if (images.width >= V::lanes) {
        if (order == Order::byEights && CommonSizes::filter<V>(kernel, images)) return;
        if constexpr (hasAVX2) {
            if (images.width >= partVectors * V::lanes && images.height >= partRows && hasPartBlocks(kernel)) {
                return filterRows<V, partRows, partVectors>(kernel, images);
            }
        }
        if (tall && kernel.height > 1) filterColumns<V, rows, vectors, order>(kernel, images);
        else if (images.width >= flatVectors * V::lanes) filterColumns<V, 1, flatVectors, order>(kernel, images);
        else filterColumns<V, 1, 4, order>(kernel, images);
        return;
    }
    if constexpr (V::lanes > 4) {
        if (images.width >= 4) {
            if (tall) filterBlocks<Vector<Kuv32f, 16>, rows, 1, order>(kernel, images, 0, images.width);
            else filterBlocks<Vector<Kuv32f, 16>, 1, 1, order>(kernel, images, 0, images.width);
            return;
        }
    }
    if (tall) filterBlocks<Kuv32f, rows, 1, order>(kernel, images, 0, images.width);
    else filterBlocks<Kuv32f, 1, 1, order>(kernel, images, 0, images.width);
}

// What order a region's sums have, in all of its parts.
KUV_INLINE Order orderOf(const Kernel& kernel, ptrdiff_t regionWidth) {
    return hasAVX || (hasSSSE3 && regionWidth > kernel.width + 8) ? Order::byEights : Order::alternating;
}

KUV_INLINE void filter(const Kernel& kernel, [[maybe_unused]] Order order, const Images& images) {
    if constexpr (!hasVectors) {
        filterInDoubles(kernel, images);
    } else if constexpr (hasAVX) {
        filterInVectors<Order::byEights>(kernel, images);
    } else {
        if (hasSSSE3 && order == Order::byEights) filterInVectors<Order::byEights>(kernel, images);
        else filterInVectors<Order::alternating>(kernel, images);
    }
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
