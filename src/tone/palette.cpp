// Index images expanded to colours through the caller's palette.
#include "core/checks.hpp"
#include "tone/palette_kernels.hpp"

namespace kuv::KUV_VARIANT {
namespace {

template <class S, class Entry>
void expandImage(Palette<Entry> palette, const S* src, ptrdiff_t srcStep, Entry* dst, ptrdiff_t dstStep, KuviSize roi) {
    if constexpr (!hasVectors) {
        for (ptrdiff_t row = 0; row < roi.height; ++row) {
            expandPixels(palette, rowAt(src, srcStep, row), rowAt(dst, dstStep, row), 0, roi.width);
        }
    } else {
#ifdef __SSSE3__
        using Shuffled = ShuffledBlocks<S, Entry>;
        if (Shuffled::suits(palette, roi)) return expandRows(Shuffled(palette), palette, src, srcStep, dst, dstStep, roi);
#endif
        if constexpr (sizeof(Entry) == 3 && !hasAVX2) {
            using Widened = WidenedBlocks<S>;
            if (Widened::suits(palette, roi)) return expandRows(Widened(palette), palette, src, srcStep, dst, dstStep, roi);
        }
        expandRows(Blocks<S, Entry>(palette), palette, src, srcStep, dst, dstStep, roi);
    }
}

template <class S, class Entry>
KuvStatus expand(const S* src, Kuv32s srcStep, Entry* dst, Kuv32s dstStep, KuviSize roi, const Entry* table, Kuv32s nBitSize) {
    constexpr Kuv64s sampleBytes = sizeof(S), pixelBytes = sizeof(Entry);
    if (anyNull(src, dst, table)) return kuvStatusNullPtr;
    if (emptyRoi(roi)) return kuvStatusBadSize;
    if (nBitSize < 1 || nBitSize > 8 * sampleBytes) return kuvStatusOutOfRange;
    if (sampleBytes * roi.width > srcStep || pixelBytes * roi.width > dstStep) return kuvStatusBadStep;
    expandImage(Palette<Entry>{table, (1u << nBitSize) - 1}, src, srcStep, dst, dstStep, roi);
    return kuvStatusOk;
}

}  // namespace
}  // namespace kuv::KUV_VARIANT

#define KUV_PALETTE(name, S, Pixel, Entry)                                                                              \
    KuvStatus KUV_VARIANT_FUNCTION(name)(const S* src, Kuv32s srcStep, Pixel* dst, Kuv32s dstStep, KuviSize roiSize,    \
                                         const Pixel* table, Kuv32s nBitSize) {                                         \
        using namespace kuv::KUV_VARIANT;                                                                               \
        auto* const pixels = reinterpret_cast<Entry*>(dst);                                                             \
        const auto* const entries = reinterpret_cast<const Entry*>(table);                                              \
        return expand(src, srcStep, pixels, dstStep, roiSize, entries, nBitSize);                                       \
    }
KUV_PALETTE(kuviLUTPalette_8u24u_C1R, Kuv8u, Kuv8u, Colour)
KUV_PALETTE(kuviLUTPalette_8u32u_C1R, Kuv8u, Kuv32u, Kuv32u)
KUV_PALETTE(kuviLUTPalette_16u24u_C1R, Kuv16u, Kuv8u, Colour)
KUV_PALETTE(kuviLUTPalette_16u32u_C1R, Kuv16u, Kuv32u, Kuv32u)
