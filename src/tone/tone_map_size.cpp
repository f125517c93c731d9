// The size of a tone map's block.
#include "core/align.hpp"
#include "core/checks.hpp"
#include "core/dispatch.hpp"
#include "core/samples.hpp"
#include "tone/tone_map_layout.hpp"

namespace {

using namespace kuv;

// The control points, and in each interval so many coefficients of eight bytes.
constexpr Kuv64u pointBytes(Kuv64u points, Kuv64u intervals, Kuv64u coefficients) {
    return roundedUp(8 * points, 64) + 8 * coefficients * intervals;
}

template <class T>
constexpr Kuv64u tableBytes(int channels) {
    return static_cast<Kuv64u>(channels) * toneEntries<T> * sizeof(T);
}

}  // namespace

KuvStatus kuviLUT_GetSize_shared(Kuv32s interpolation, Kuv32s dataType, Kuv32s channels, KuviSize roiSize,
                                 const Kuv32s* nLevels, Kuv32s* specSize) {
    if (!isToneCurve(interpolation)) return kuvStatusBadInterpolation;
    if (anyNull(nLevels, specSize)) return kuvStatusNullPtr;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    const auto count = [nLevels](int c) { return loadSample(nLevels + c); };
    const int used = toneChannels(channels);
    if (used == 4 && count(3) < 2) return kuvStatusBadLutLevels;
    if (used == 0) return kuvStatusBadChannels;
    if (used >= 3 && (count(2) < 2 || count(1) < 2)) return kuvStatusBadLutLevels;
    if (count(0) < 2) return kuvStatusBadLutLevels;

    Kuv64u points = 0;
    bool cubic = interpolation == kuvLutCubic;
    for (int c = 0; c < used; ++c) {
        points += static_cast<Kuv64u>(count(c));
        cubic = cubic && count(c) >= 4;
    }
    const Kuv64u intervals = points - static_cast<Kuv64u>(used);

    Kuv64u bytes = toneMapSlack;
    switch (dataType) {
        case kuvDataType8u: bytes += tableBytes<Kuv8u>(used); break;
        case kuvDataType16u: case kuvDataType16s:
            bytes += tableBytes<Kuv16u>(used);
            if (interpolation == kuvLutStep && channels == kuvChannelsC1) bytes += 8 * points;
            if (interpolation == kuvLutStep && channels == kuvChannelsC3) bytes += roundedUp(8 * points, 64);
            break;
        case kuvDataType32f:
            if (interpolation == kuvLutStep) bytes += channels == kuvChannelsC1 ? 8 * points : roundedUp(8 * points, 64);
            else bytes += pointBytes(points, intervals, cubic ? 3 : 1);
            break;
        default: return kuvStatusBadDataType;
    }
    storeSample(specSize, static_cast<Kuv32s>(bytes));
    return kuvStatusOk;
}
