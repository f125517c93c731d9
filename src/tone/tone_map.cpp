// Tone maps applied to images.
#include "core/checks.hpp"
#include "core/record.hpp"
#include "tone/tone_map_kernels.hpp"

namespace kuv::KUV_VARIANT {
namespace {

template <int channels, class T>
void mapRows(const T* tables, T* srcDst, ptrdiff_t step, ptrdiff_t width, ptrdiff_t rows) {
    for (ptrdiff_t row = 0; row < rows; ++row) mapPixels<channels>(tables, rowAt(srcDst, step, row), width);
}

#ifdef __AVX2__
// Filling the registers costs as much as it gains on some hundred samples; those of three tables, which gain less, on more.
constexpr ptrdiff_t fewSamples = 256, fewPixels = 2048;

template <int channels>
void mapImage(const Kuv8u* tables, Kuv8u* srcDst, ptrdiff_t step, ptrdiff_t width, ptrdiff_t rows) {
    if constexpr (channels < 4) {
        constexpr ptrdiff_t tableBytes = toneEntries<Kuv8u>;
        const bool alike = channels == 1 || __builtin_memcmp(tables, tables + tableBytes, 2 * tableBytes) == 0;
        if (alike && width * channels * rows >= fewSamples) {
            const ShuffledTable shuffled(tables);
            return transformInPlace(ByteMap{tables, shuffled}, srcDst, step, width * channels, rows);
        }
        if (channels == 3 && width >= ThreeChannelBlocks::pixels && width * rows >= fewPixels) {
            const ThreeChannelBlocks blocks(tables);
            for (ptrdiff_t row = 0; row < rows; ++row) mapRowByBlocks(blocks, rowAt(srcDst, step, row), width);
            return;
        }
    }
    mapRows<channels>(tables, srcDst, step, width, rows);
}

template <int channels>
void mapImage(const Kuv16u* tables, Kuv16u* srcDst, ptrdiff_t step, ptrdiff_t width, ptrdiff_t rows) {
    const WordMap map = {tables};
    if constexpr (channels == 1) transformInPlace(map, srcDst, step, width, rows);
    else if constexpr (channels == 3) transformInPlace(map, srcDst, step, 3 * width, rows, Periodic<Kuv16u, 3>({0, 1, 2}));
    else mapRows<channels>(tables, srcDst, step, width, rows);
}
#else
template <int channels, class T>
void mapImage(const T* tables, T* srcDst, ptrdiff_t step, ptrdiff_t width, ptrdiff_t rows) {
    mapRows<channels>(tables, srcDst, step, width, rows);
}
#endif

// Writing the rules down costs more than a few searches.
constexpr ptrdiff_t fewSearched = 32;

template <int channels>
void searchImage(const KuviToneMapSpec* spec, Kuv16u* srcDst, ptrdiff_t step, ptrdiff_t width, ptrdiff_t rows) {
    StoredPoints points[channels];
    for (int c = 0; c < channels; ++c) {
        points[c].values = placeIn<Kuv32s>(spec, wordAt(spec, offsetof(ToneMapHeader, values) + 4 * c));
        points[c].levels = placeIn<Kuv32s>(spec, wordAt(spec, offsetof(ToneMapHeader, levels) + 4 * c));
        points[c].count = static_cast<Kuv32s>(wordAt(spec, offsetof(ToneMapHeader, levelCounts) + 4 * c));
    }
    if constexpr (hasVectors) {
        using Rules = StepRules<channels>;
        if (width * rows >= fewSearched && Rules::suits(points)) {
            return transformInPlace(Rules(points), srcDst, step, width * channels, rows, ChannelOfSample<channels>{});
        }
    }
    for (ptrdiff_t row = 0; row < rows; ++row) searchPixels<channels>(points, rowAt(srcDst, step, row), width);
}

// A small image must not pull whole tables of 128 KiB through the caches. The product wraps.
constexpr bool isSmall(KuviSize roi) { return static_cast<Kuv32s>(wrappedPixels(roi)) <= 4096; }

template <Kuv32s selector, class T>
KuvStatus apply(T* srcDst, Kuv32s srcDstStep, KuviSize roi, const KuviToneMapSpec* spec) {
    constexpr int channels = selector == kuvChannelsAC4 ? 4 : selector;
    constexpr Kuv32u stepIdentity = toneMapIdentity<T>(kuvLutStep, selector);
    if (anyNull(srcDst, spec)) return kuvStatusNullPtr;
    if (srcDstStep < 1) return kuvStatusBadStep;
    if (emptyRoi(roi)) return kuvStatusBadSize;
    const Kuv32u identity = wordAt(spec, offsetof(ToneMapHeader, identity));
    if (identity != stepIdentity && identity != toneMapIdentity<T>(kuvLutLinear, selector) &&
        identity != toneMapIdentity<T>(kuvLutCubic, selector)) {
        return kuvStatusBadArg;
    }

    ptrdiff_t width = roi.width, rows = roi.height;
    joinRows(width, rows, srcDstStep, channels * static_cast<ptrdiff_t>(sizeof(T)));
    if constexpr (sizeof(T) == 2 && channels != 4) {
        if (identity == stepIdentity && isSmall(roi)) {
            searchImage<channels>(spec, srcDst, srcDstStep, width, rows);
            return kuvStatusOk;
        }
    }
    mapImage<channels>(placeIn<T>(spec, wordAt(spec, offsetof(ToneMapHeader, table))), srcDst, srcDstStep, width, rows);
    return kuvStatusOk;
}

}  // namespace
}  // namespace kuv::KUV_VARIANT

#define KUV_TONE_MAP(name, T, channels)                                                                                            \
    KuvStatus KUV_VARIANT_FUNCTION(name)(T* srcDst, Kuv32s srcDstStep, KuviSize roiSize, const KuviToneMapSpec* spec) {            \
        return kuv::KUV_VARIANT::apply<channels>(srcDst, srcDstStep, roiSize, spec);                                               \
    }
KUV_TONE_MAP(kuviLUT_8u_C1IR, Kuv8u, kuvChannelsC1)
KUV_TONE_MAP(kuviLUT_8u_C3IR, Kuv8u, kuvChannelsC3)
KUV_TONE_MAP(kuviLUT_8u_AC4IR, Kuv8u, kuvChannelsAC4)
KUV_TONE_MAP(kuviLUT_16u_C1IR, Kuv16u, kuvChannelsC1)
KUV_TONE_MAP(kuviLUT_16u_C3IR, Kuv16u, kuvChannelsC3)
KUV_TONE_MAP(kuviLUT_16u_AC4IR, Kuv16u, kuvChannelsAC4)
