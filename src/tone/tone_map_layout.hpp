// The layout of a tone map's block: a header, one to four tables behind it, and of 16-bit step maps the control points. Programs read the
// header's words; the counts of cubic maps, which nothing here reads, are kept for them.
#pragma once

#include <cstddef>

#include "kuvcv.h"

namespace kuv {
namespace {

struct ToneMapHeader {
    Kuv32u identity;
    Kuv32u table;  // this and the next two: offsets in the block
    Kuv32u values[4];
    Kuv32u levels[4];
    Kuv32s levelCounts[4];
};
static_assert(sizeof(ToneMapHeader) == 56);

// The data begin on a 64-byte boundary, at least so far behind the header; the padding of both may add up to toneMapSlack.
constexpr std::ptrdiff_t toneMapGap = 64;
constexpr Kuv64s toneMapSlack = sizeof(ToneMapHeader) + toneMapGap + 64;

template <class T>
constexpr std::ptrdiff_t toneEntries = std::ptrdiff_t{1} << 8 * sizeof(T);

constexpr bool isToneCurve(Kuv32s interpolation) {
    return interpolation == kuvLutStep || interpolation == kuvLutLinear || interpolation == kuvLutCubic;
}

// 0 if the selector is none.
constexpr int toneChannels(Kuv32s channels) {
    switch (channels) {
        case kuvChannelsC1: return 1;
        case kuvChannelsC3: case kuvChannelsAC4: return 3;
        case kuvChannelsC4: return 4;
        default: return 0;
    }
}

template <class T>
constexpr Kuv32u toneMapIdentity(Kuv32s interpolation, Kuv32s channels) {
    const Kuv32u curve = interpolation == kuvLutStep ? 0x1234567 : interpolation == kuvLutLinear ? 0x1234577 : 0x1234587;
    const Kuv32u layout = channels == kuvChannelsC1 ? 0 : channels == kuvChannelsC3 ? 1 : channels == kuvChannelsC4 ? 2 : 3;
    return curve + (sizeof(T) == 2 ? 4 : 0) + layout;
}

}  // namespace
}  // namespace kuv
