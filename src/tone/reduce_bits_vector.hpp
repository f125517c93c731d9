// The reduction in single precision, for samples that do not depend on each other.
#pragma once

#include "simd/bytes.hpp"
#include "simd/real.hpp"
#include "tone/reduce_bits_scalar.hpp"

namespace kuv::KUV_VARIANT {
namespace {

using Reals = Native<Kuv32f>;

KUV_INLINE Reals loadReals(const Kuv16u* from) {
#if defined(__AVX__) && !defined(__AVX2__)
    const __m128i low = loadWidened<Vector<Kuv32s, 16>>(from).raw, high = loadWidened<Vector<Kuv32s, 16>>(from + 4).raw;
    return {_mm256_cvtepi32_ps(_mm256_insertf128_si256(_mm256_castsi128_si256(low), high, 1))};
#else
    return toReals(loadWidened<Vector<Kuv32s, integerBytes>>(from));
#endif
}

// Truncated and shifted, in the widest registers that compute on integers.
constexpr int integerLanes = integerBytes / 4;
template <int shift, int count>
KUV_INLINE void truncateAll(const Reals* values, Vector<Kuv32s, integerBytes>* whole) {
#pragma GCC unroll 8
    for (int i = 0; i < count; ++i) {
#if defined(__AVX__) && !defined(__AVX2__)
        const __m256i both = _mm256_cvttps_epi32(values[i].raw);
        whole[2 * i] = shiftRight<shift>(Vector<Kuv32s, 16>{_mm256_castsi256_si128(both)});
        whole[2 * i + 1] = shiftRight<shift>(Vector<Kuv32s, 16>{_mm256_extractf128_si256(both, 1)});
#else
        whole[i] = shiftRight<shift>(truncated(values[i]));
#endif
    }
}

// The samples that one register of bytes takes.
constexpr int blockSamples = integerBytes, blockReals = blockSamples / Reals::lanes;

template <int shift>
KUV_INLINE Vector<Kuv8u, integerBytes> bytesOf(const Reals (&values)[blockReals]) {
    Vector<Kuv32s, integerBytes> whole[4];
    truncateAll<shift, blockReals>(values, whole);
    return narrowed(whole[0], whole[1], whole[2], whole[3]);
}

// To the nearest level.
class NearestLevel {
public:
    explicit NearestLevel(LevelSteps steps)
        : count_(fill<Reals>(static_cast<Kuv32f>(steps.count))),
          level_(fill<Reals>(1.0f / static_cast<Kuv32f>(steps.count))),
          half_(fill<Reals>(0.5f / static_cast<Kuv32f>(steps.count))) {}

    KUV_INLINE Vector<Kuv8u, integerBytes> operator()(const Kuv16u* src, ptrdiff_t) const {
        Reals values[blockReals];
#pragma GCC unroll 8
        for (int i = 0; i < blockReals; ++i) {
            const Reals value = multiply(loadReals(src + i * Reals::lanes), fill<Reals>(1.5259022e-5f));
            const Reals below = multiply(wholePart(multiply(count_, value)), level_);
            const Reals up = greater(sub(value, below), half_);
            values[i] = multiply(add(below, bitAnd(up, level_)), fill<Reals>(255.0f));
        }
        return bytesOf<0>(values);
    }

private:
    Reals count_, level_, half_;
};

// To one of the levels beside it, by a threshold of its own.
class OrderedLevel {
public:
    explicit OrderedLevel(LevelSteps steps, const Kuv32f* thresholds)
        : step_(fill<Reals>(steps.step)), inverse_(fill<Reals>(steps.inverse)), thresholds_(thresholds) {}

    KUV_INLINE Vector<Kuv8u, integerBytes> operator()(const Kuv16u* src, ptrdiff_t place) const {
        Reals values[blockReals];
#pragma GCC unroll 8
        for (int i = 0; i < blockReals; ++i) {
            const Reals value = loadReals(src + i * Reals::lanes);
            const Reals below = multiply(wholePart(multiply(inverse_, value)), step_);
            const Reals up = greater(sub(value, below), load<Reals>(thresholds_ + place + i * Reals::lanes));
            values[i] = add(below, bitAnd(up, step_));
        }
        return bytesOf<8>(values);
    }

private:
    Reals step_, inverse_;
    const Kuv32f* thresholds_;
};

// One row; `place` turns a sample's place in the row into what the operation is told of it. The fourth sample of pixels with alpha
// is written back as it was read.
template <int pixelSamples, class Operation, class Place>
KUV_INLINE void reduceRow(const Operation& operation, const Kuv16u* src, Kuv8u* dst, ptrdiff_t count, Place place) {
    using Bytes = Vector<Kuv8u, integerBytes>;
    const auto block = [&](const Kuv16u* from, Kuv8u* to, ptrdiff_t i) {
        Bytes bytes = operation(from, place(i));
        if constexpr (pixelSamples == 4) {
            const Bytes colours = as<Kuv8u>(fill<Vector<Kuv32s, integerBytes>>(0xFFFFFF));
            bytes = bitOr(bitAnd(bytes, colours), bitAndNot(colours, load<Bytes>(to)));
        }
        store(to, bytes);
    };
    if (count < blockSamples) {
        Kuv16u from[blockSamples] = {};
        Kuv8u to[blockSamples] = {};
        __builtin_memcpy(from, src, static_cast<size_t>(count) * sizeof(Kuv16u));
        __builtin_memcpy(to, dst, static_cast<size_t>(count));
        block(from, to, 0);
        __builtin_memcpy(dst, to, static_cast<size_t>(count));
        return;
    }
    for (ptrdiff_t i = 0; i < count - blockSamples; i += blockSamples) block(src + i, dst + i, i);
    const ptrdiff_t last = count - blockSamples;
    block(src + last, dst + last, last);
}

template <int pixelSamples>
void reduceVector(Pixels<const Kuv16u> src, Pixels<Kuv8u> dst, KuviSize roi, LevelSteps steps) {
    const NearestLevel operation(steps);
    const ptrdiff_t count = ptrdiff_t{roi.width} * pixelSamples;
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        reduceRow<pixelSamples>(operation, src.row(y), dst.row(y), count, [](ptrdiff_t) { return 0; });
    }
}

// The thresholds repeat every four pixels.
template <int pixelSamples>
void orderVector(Pixels<const Kuv16u> src, Pixels<Kuv8u> dst, KuviSize roi, LevelSteps steps) {
    constexpr int period = 4 * pixelSamples;
    const ptrdiff_t count = ptrdiff_t{roi.width} * pixelSamples;
    Kuv32f thresholds[4][period + blockSamples];
    for (int y = 0; y < 4; ++y) {
        for (int i = 0; i < period + blockSamples; ++i) thresholds[y][i] = orderedThreshold(steps, i / pixelSamples, y);
    }
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        const OrderedLevel operation(steps, thresholds[y % 4]);
        reduceRow<pixelSamples>(operation, src.row(y), dst.row(y), count, [](ptrdiff_t i) { return i % period; });
    }
}

template <int pixelSamples>
void orderVector(Pixels<const Kuv16u> src, Pixels<Kuv8u> dst, KuviSize roi, LevelSteps steps, Noise noise) {
    constexpr ptrdiff_t piece = 128;  // pixels whose thresholds are formed at a time
    Kuv32f thresholds[piece * pixelSamples + blockSamples] = {};
    const OrderedLevel operation(steps, thresholds);
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        for (ptrdiff_t x = 0; x < roi.width; x += piece) {
            const ptrdiff_t pixels = smaller(roi.width - x, piece);
            for (ptrdiff_t i = 0; i < pixels; ++i) {
                const Kuv32f threshold = steps.step * (orderedThresholds[y % 4][(x + i) % 4] + noise.at(x + i, y));
                for (int c = 0; c < pixelSamples; ++c) thresholds[i * pixelSamples + c] = threshold;
            }
            const ptrdiff_t first = x * pixelSamples;
            reduceRow<pixelSamples>(operation, src.row(y) + first, dst.row(y) + first, pixels * pixelSamples,
                                    [](ptrdiff_t i) { return i; });
        }
    }
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
