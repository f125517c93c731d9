// The size of a tone map's block.
#include "core/dispatch.hpp"
#include "tone/tone_map_layout.hpp"

namespace {

using namespace kuv;

constexpr Kuv64u roundUp(Kuv64u value) { return (value + 63) / 64 * 64; }

// The control points, and in each interval so many coefficients of eight bytes.
constexpr Kuv64u pointBytes(Kuv64u points, Kuv64u intervals, Kuv64u coefficients) {
    return roundUp(8 * points) + 8 * coefficients * intervals;
}

template <class T>
constexpr Kuv64u tableBytes(int channels) {
    return static_cast<Kuv64u>(channels) * toneEntries<T> * sizeof(T);
}

}  // namespace

extern "C" KuvStatus kuviLUT_GetSize_shared(Kuv32s interpolation, Kuv32s dataType, Kuv32s channels, KuviSize roiSize,
                                            const Kuv32s* nLevels, Kuv32s* specSize) {
    if (!isToneCurve(interpolation)) return kuvStatusBadInterpolation;
    if (nLevels == nullptr || specSize == nullptr) return kuvStatusNullPtr;
    if (roiSize.width < 1 || roiSize.height < 1) return kuvStatusBadSize;
    const int used = toneChannels(channels);
    if (used == 4 && nLevels[3] < 2) return kuvStatusBadLutLevels;
    if (used == 0) return kuvStatusBadChannels;
    if (used >= 3 && (nLevels[2] < 2 || nLevels[1] < 2)) return kuvStatusBadLutLevels;
    if (nLevels[0] < 2) return kuvStatusBadLutLevels;

    Kuv64u points = 0;
    bool cubic = interpolation == kuvLutCubic;
    for (int c = 0; c < used; ++c) {
        points += static_cast<Kuv64u>(nLevels[c]);
        cubic = cubic && nLevels[c] >= 4;
    }
    const Kuv64u intervals = points - static_cast<Kuv64u>(used);

    Kuv64u bytes = toneMapSlack;
    switch (dataType) {
        case kuvDataType8u: bytes += tableBytes<Kuv8u>(used); break;
        case kuvDataType16u: case kuvDataType16s:
            bytes += tableBytes<Kuv16u>(used);
            if (interpolation == kuvLutStep && channels == kuvChannelsC1) bytes += 8 * points;
            if (interpolation == kuvLutStep && channels == kuvChannelsC3) bytes += roundUp(8 * points);
            break;
        case kuvDataType32f:
            if (interpolation == kuvLutStep) bytes += channels == kuvChannelsC1 ? 8 * points : roundUp(8 * points);
            else bytes += pointBytes(points, intervals, cubic ? 3 : 1);
            break;
        default: return kuvStatusBadDataType;
    }
    const Kuv32u size = static_cast<Kuv32u>(bytes);
    __builtin_memcpy(specSize, &size, sizeof size);
    return kuvStatusOk;
}
