// How large a buffer the reduction of bits needs.
#include "core/checks.hpp"
#include "core/dispatch.hpp"
#include "core/samples.hpp"
#include "tone/reduce_bits_layout.hpp"

namespace {

using namespace kuv;

// A width whose lines 32 bits cannot count wraps around.
constexpr Kuv32u bytesOf(ErrorLines lines, Kuv32s width) {
    return static_cast<Kuv32u>(sizeof(Kuv32f)) * static_cast<Kuv32u>(lines.count) *
           (static_cast<Kuv32u>(width) + 2 * static_cast<Kuv32u>(lines.border));
}

}  // namespace

KuvStatus kuviReduceBitsGetBufferSize_shared(Kuv32s channels, KuviSize roiSize, Kuv32s noise, KuvDitherType ditherType,
                                             Kuv32s* bufferSize) {
    if (anyNull(bufferSize)) return kuvStatusNullPtr;
    if (roiSize.width < 1) return kuvStatusBadSize;
    if (channels != kuvChannelsC1 && channels != kuvChannelsC3 && channels != kuvChannelsC4 && channels != kuvChannelsAC4) {
        return kuvStatusBadChannels;
    }
    if (noise < 0 || noise > 100) return kuvStatusBadNoise;
    if (ditherType < kuvDitherOff || ditherType > kuvDitherOrdered4x4) return kuvStatusBadDitherType;
    const bool hasNoise = noise > 0 && ditherType != kuvDitherOff;
    const bool hasLines = ditherType != kuvDitherOff && ditherType != kuvDitherOrdered4x4;
    Kuv32u bytes = 0;
    if (hasNoise) bytes += noiseBytesCounted;
    if (hasLines) bytes += bytesOf(ditherType == kuvDitherFloydSteinberg ? floydSteinbergLines : threeRowLines, roiSize.width);
    if (hasNoise || hasLines) bytes += reduceAlignment;
    storeSample(bufferSize, static_cast<Kuv32s>(bytes));
    return kuvStatusOk;
}
