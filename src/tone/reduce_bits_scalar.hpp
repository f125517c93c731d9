// The arithmetic of the reduction in double precision, sample by sample.
#pragma once

#include "core/integers.hpp"
#include "tone/reduce_bits_noise.hpp"

namespace kuv::KUV_VARIANT {
namespace {

template <class D>
struct Pixels {
    D* first;
    ptrdiff_t step;

    KUV_INLINE D* row(ptrdiff_t y) const { return rowAt(first, step, y); }
};

// Alpha is not reduced.
template <int pixelSamples>
constexpr int reducedChannels = pixelSamples == 1 ? 1 : 3;

KUV_INLINE Kuv8u limitedToByte(Kuv32s value) { return static_cast<Kuv8u>(smaller(value, 255)); }

template <int pixelSamples>
void reduceScalar(Pixels<const Kuv16u> src, Pixels<Kuv8u> dst, KuviSize roi, LevelSteps steps) {
    const Kuv64f count = steps.count, inverse = 1.0 / count, half = 0.5 / count;
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        const Kuv16u* from = src.row(y);
        Kuv8u* to = dst.row(y);
        for (ptrdiff_t x = 0; x < roi.width; ++x, from += pixelSamples, to += pixelSamples) {
            for (int c = 0; c < reducedChannels<pixelSamples>; ++c) {
                const Kuv64f value = loadSample(from + c) / 65535.0;
                Kuv64f level = static_cast<Kuv32s>(count * value) * inverse;
                if (value - level > half) level += inverse;
                to[c] = limitedToByte(static_cast<Kuv32s>(level * 255 + 0.5));
            }
        }
    }
}

struct Quantised {
    Kuv64f base;

    KUV_INLINE Quantised(Kuv64f value, Kuv64f threshold, LevelSteps steps) {
        const Kuv32s level = static_cast<Kuv32s>(steps.inverse * value);
        base = level * Kuv64f{steps.step};
        if (value - base > threshold) base = level * Kuv64f{steps.step} + steps.step;
    }

    KUV_INLINE Kuv8u byte() const { return limitedToByte(static_cast<Kuv32s>(base + 0.5) >> 8); }
};

template <int pixelSamples>
void orderScalar(Pixels<const Kuv16u> src, Pixels<Kuv8u> dst, KuviSize roi, LevelSteps steps, Noise noise) {
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        const Kuv16u* from = src.row(y);
        Kuv8u* to = dst.row(y);
        for (ptrdiff_t x = 0; x < roi.width; ++x, from += pixelSamples, to += pixelSamples) {
            const Kuv64f threshold = noise.present() ? steps.step * (Kuv64f{orderedThresholds[y % 4][x % 4]} + noise.at(x, y))
                                                     : Kuv64f{orderedThreshold(steps, x, y)};
            for (int c = 0; c < reducedChannels<pixelSamples>; ++c) to[c] = Quantised(loadSample(from + c), threshold, steps).byte();
        }
    }
}

// What reaches pixel x from the rows before and from the pixels before it. `line[0]` has the errors of its own row, `line[1]` those of
// the row before, `line[2]` of the one before that.
struct FloydSteinberg {
    static constexpr ErrorLines lines = floydSteinbergLines;

    KUV_INLINE Kuv64f operator()(Kuv32f* const* line, ptrdiff_t x) const {
        // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult): a diffusion has its lines, and they are set
        const Kuv32f *const c = line[0] + x, *const p = line[1] + x;
        return (5.0 * p[0] + 3.0 * p[1] + p[-1] + 7.0 * c[-1]) * 0.0625;
    }
};

struct ThreeRows {
    static constexpr ErrorLines lines = threeRowLines;
    Kuv64f near, middle, far, part;

    KUV_INLINE Kuv64f operator()(Kuv32f* const* line, ptrdiff_t x) const {
        // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult): a diffusion has its lines, and they are set
        const Kuv32f *const c = line[0] + x, *const p = line[1] + x, *const q = line[2] + x;
        const auto in = [](Kuv32f error) { return Kuv64f{error}; };
        return (in(q[-2]) + q[2] + near * (in(p[0]) + c[-1]) + middle * (in(q[0]) + p[-1] + p[1] + c[-2]) +
                far * (in(q[-1]) + q[1] + p[-2] + p[2])) * part;
    }
};
constexpr ThreeRows jarvisJudiceNinke = {7, 5, 3, 0.020833334f}, stucki = {8, 4, 2, 0.023809524f};

// The last row of a channel is the one before the first of the next.
template <int pixelSamples, class Diffusion>
void diffuseScalar(Diffusion diffusion, Pixels<const Kuv16u> src, Pixels<Kuv8u> dst, KuviSize roi, LevelSteps steps, Noise noise,
                   Kuv32f* errors) {
    constexpr int lineCount = Diffusion::lines.count, border = Diffusion::lines.border;
    const ptrdiff_t pitch = ptrdiff_t{roi.width} + 2 * border;
    for (ptrdiff_t i = 0; i < lineCount * pitch; ++i) errors[i] = 0;
    Kuv32f* line[lineCount];
    for (int i = 0; i < lineCount; ++i) line[i] = errors + border + i * pitch;
    const Kuv32f half = steps.step / 2;
    for (int c = 0; c < reducedChannels<pixelSamples>; ++c) {
        for (ptrdiff_t y = 0; y < roi.height; ++y) {
            const Kuv16u* const from = src.row(y) + c;
            Kuv8u* const to = dst.row(y) + c;
            for (ptrdiff_t x = 0; x < roi.width; ++x) {
                const Kuv64f value = loadSample(from + x * pixelSamples) + diffusion(line, x);
                Kuv8u byte = 0;
                Kuv32f error = 0;
                if (value >= 65535) {
                    byte = 255;
                } else if (!(value < 0)) {
                    const Quantised level(value, noise.present() ? noise.at(x, y) : half, steps);
                    byte = level.byte();
                    error = static_cast<Kuv32f>(value - level.base);
                }
                to[x * pixelSamples] = byte;
                line[0][x] = error;
            }
            Kuv32f* const oldest = line[lineCount - 1];
            for (int i = lineCount - 1; i > 0; --i) line[i] = line[i - 1];
            line[0] = oldest;
        }
    }
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
