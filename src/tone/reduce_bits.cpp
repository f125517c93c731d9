// 16-bit samples reduced to fewer levels, with and without a dither.
#include "core/align.hpp"
#include "core/checks.hpp"
#include "tone/reduce_bits_wavefront.hpp"

namespace kuv::KUV_VARIANT {
namespace {

template <int pixelSamples>
void reduceImage(Pixels<const Kuv16u> src, Pixels<Kuv8u> dst, KuviSize roi, LevelSteps steps) {
    if constexpr (hasVectors) {
        reduceVector<pixelSamples>(src, dst, roi, steps);
    } else {
        reduceScalar<pixelSamples>(src, dst, roi, steps);
    }
}

template <int pixelSamples>
void orderImage(Pixels<const Kuv16u> src, Pixels<Kuv8u> dst, KuviSize roi, LevelSteps steps, Noise noise) {
    if constexpr (hasVectors) {
        if (noise.present()) orderVector<pixelSamples>(src, dst, roi, steps, noise);
        else orderVector<pixelSamples>(src, dst, roi, steps);
    } else {
        orderScalar<pixelSamples>(src, dst, roi, steps, noise);
    }
}

template <int pixelSamples>
void diffuseImage(Pixels<const Kuv16u> src, Pixels<Kuv8u> dst, KuviSize roi, LevelSteps steps, Noise noise, KuvDitherType ditherType,
                  Kuv32f* errors) {
    const ThreeRows& weights = ditherType == kuvDitherStucki ? stucki : jarvisJudiceNinke;
    if constexpr (hasVectors) {
        if (ditherType == kuvDitherFloydSteinberg) {
            Wavefront<pixelSamples, FloydSteinbergLanes>({}, src, dst, roi, steps, noise, errors).run();
        } else {
            Wavefront<pixelSamples, ThreeRowsLanes>(ThreeRowsLanes(weights), src, dst, roi, steps, noise, errors).run();
        }
    } else {
        if (ditherType == kuvDitherFloydSteinberg) {
            diffuseScalar<pixelSamples>(FloydSteinberg(), src, dst, roi, steps, noise, errors);
        } else {
            diffuseScalar<pixelSamples>(weights, src, dst, roi, steps, noise, errors);
        }
    }
}

template <int pixelSamples>
KuvStatus reduceBits(Pixels<const Kuv16u> src, Pixels<Kuv8u> dst, KuviSize roi, Kuv32s noise, KuvDitherType ditherType, Kuv32s levels,
                     Kuv8u* buffer) {
    if (anyNull(src.first, dst.first)) return kuvStatusNullPtr;
    if (emptyRoi(roi)) return kuvStatusBadSize;
    if (noise < 0 || noise > 100) return kuvStatusBadNoise;
    if (levels < 2 || levels > 256) return kuvStatusBadLevels;
    if (ditherType < kuvDitherOff || ditherType > kuvDitherOrdered4x4) return kuvStatusBadDitherType;
    const LevelSteps steps(levels);
    if (ditherType == kuvDitherOff) {
        reduceImage<pixelSamples>(src, dst, roi, steps);
    } else if (ditherType == kuvDitherOrdered4x4 && noise == 0) {
        orderImage<pixelSamples>(src, dst, roi, steps, Noise());
    } else {
        if (buffer == nullptr) return kuvStatusNullPtr;
        Kuv8u* const aligned = alignedUp(buffer, reduceAlignment);
        if (ditherType == kuvDitherOrdered4x4) {
            orderImage<pixelSamples>(src, dst, roi, steps, orderedNoise(aligned, noise));
        } else {
            const Noise disturbance = noise > 0 ? diffusionNoise(aligned, steps, noise) : Noise();
            auto* const errors = reinterpret_cast<Kuv32f*>(aligned + (noise > 0 ? noiseBytes : 0));
            diffuseImage<pixelSamples>(src, dst, roi, steps, disturbance, ditherType, errors);
        }
    }
    return kuvStatusOk;
}

}  // namespace
}  // namespace kuv::KUV_VARIANT

#define KUV_REDUCE_BITS(name, pixelSamples)                                                                                     \
    KuvStatus KUV_VARIANT_FUNCTION(name)(const Kuv16u* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize,       \
                                         Kuv32s noise, KuvDitherType ditherType, Kuv32s levels, Kuv8u* buffer) {                \
        using namespace kuv::KUV_VARIANT;                                                                                       \
        return reduceBits<pixelSamples>({src, srcStep}, {dst, dstStep}, roiSize, noise, ditherType, levels, buffer);            \
    }
KUV_REDUCE_BITS(kuviReduceBits_16u8u_C1R, 1)
KUV_REDUCE_BITS(kuviReduceBits_16u8u_C3R, 3)
KUV_REDUCE_BITS(kuviReduceBits_16u8u_AC4R, 4)
