// Tone maps made from control points.
#include "core/checks.hpp"
#include "core/record.hpp"
#include "tone/tone_map_curves.hpp"

namespace kuv::KUV_VARIANT {
namespace {

struct ToneChannels {
    const Kuv32s* const* values;
    const Kuv32s* const* levels;
    const Kuv32s* counts;

    KUV_INLINE TonePoints operator[](int c) const {
        return {loadSample(values + c), loadSample(levels + c), loadSample(counts + c)};
    }
};

KuvStatus checkByKind(const ToneChannels& source, int used) {
    for (int c = 0; c < used; ++c) {
        if (anyNull(source[c].values, source[c].levels)) return kuvStatusNullPtr;
    }
    for (int c = 0; c < used; ++c) {
        if (source[c].count < 2) return kuvStatusBadLutLevels;
    }
    return kuvStatusOk;
}

KuvStatus checkChannel(const ToneChannels& source, int c) {
    const TonePoints points = source[c];
    if (anyNull(points.values, points.levels)) return kuvStatusNullPtr;
    if (points.count < 2) return kuvStatusBadLutLevels;
    return kuvStatusOk;
}

void keepCount(KuviToneMapSpec* spec, int c, Kuv32s count) { setWord(spec, offsetof(ToneMapHeader, levelCounts) + 4 * c, count); }

// Copies of a channel's control points, at `offset`; gives what lies behind them.
ptrdiff_t keepPoints(KuviToneMapSpec* spec, int c, const TonePoints& points, ptrdiff_t offset) {
    const ptrdiff_t bytes = points.count * static_cast<ptrdiff_t>(sizeof(Kuv32s));
    __builtin_memcpy(placeIn<char>(spec, offset), points.values, static_cast<size_t>(bytes));
    __builtin_memcpy(placeIn<char>(spec, offset + bytes), points.levels, static_cast<size_t>(bytes));
    setWord(spec, offsetof(ToneMapHeader, values) + 4 * c, offset);
    setWord(spec, offsetof(ToneMapHeader, levels) + 4 * c, offset + bytes);
    keepCount(spec, c, points.count);
    return offset + 2 * bytes;
}

template <class T>
KuvStatus makeMap(Kuv32s interpolation, Kuv32s channels, KuviSize roi, const ToneChannels& source, KuviToneMapSpec* spec) {
    constexpr ptrdiff_t tableBytes = toneEntries<T> * sizeof(T);
    const bool isWordStep = sizeof(T) == 2 && interpolation == kuvLutStep;

    if (!isToneCurve(interpolation)) return kuvStatusBadInterpolation;
    if (emptyRoi(roi)) return kuvStatusBadSize;
    if (anyNull(source.values, source.levels, source.counts, spec)) return kuvStatusNullPtr;
    ptrdiff_t tables = alignedOffset(spec, sizeof(ToneMapHeader) + toneMapGap);
    setWord(spec, offsetof(ToneMapHeader, table), tables);

    Kuv32s curve = interpolation;
    const auto fill = [&](int c) { fillTable(placeIn<T>(spec, tables + tableBytes * c), source[c], curve); };
    const int used = toneChannels(channels);
    if (used == 0) return kuvStatusBadChannels;
    if (!isWordStep) {
        const KuvStatus status = checkByKind(source, used);
        if (status != kuvStatusOk) return status;
    } else {
        for (int c = 0; c < used; ++c) {
            const KuvStatus status = checkChannel(source, c);
            if (status != kuvStatusOk) return status;
            if (channels == kuvChannelsC4) fill(c);
        }
    }

    if (interpolation == kuvLutCubic) {
        for (int c = 0; c < used; ++c) {
            keepCount(spec, c, source[c].count);
            if (source[c].count < 4) curve = kuvLutLinear;
        }
    }
    if (isWordStep && channels == kuvChannelsC1) keepPoints(spec, 0, source[0], tables + tableBytes);
    if (isWordStep && channels == kuvChannelsC3) {
        for (int c = 0; c < used; ++c) tables = keepPoints(spec, c, source[c], tables);
        tables = alignedOffset(spec, tables);
        setWord(spec, offsetof(ToneMapHeader, table), tables);
    }
    if (!isWordStep || channels != kuvChannelsC4) {
        for (int c = 0; c < used; ++c) fill(c);
    }
    setWord(spec, offsetof(ToneMapHeader, identity), toneMapIdentity<T>(interpolation, channels));
    return kuvStatusOk;
}

}  // namespace
}  // namespace kuv::KUV_VARIANT

#define KUV_TONE_MAP_INIT(name, T)                                                                                              \
    KuvStatus KUV_VARIANT_FUNCTION(name)(Kuv32s interpolation, Kuv32s channels, KuviSize roiSize, const Kuv32s* const* values,  \
                                         const Kuv32s* const* levels, const Kuv32s* nLevels, KuviToneMapSpec* spec) {           \
        using namespace kuv::KUV_VARIANT;                                                                                       \
        return makeMap<T>(interpolation, channels, roiSize, {values, levels, nLevels}, spec);                                   \
    }
KUV_TONE_MAP_INIT(kuviLUT_Init_8u, Kuv8u)
KUV_TONE_MAP_INIT(kuviLUT_Init_16u, Kuv16u)
