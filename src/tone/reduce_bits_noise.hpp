// The distances between levels, and the noise that disturbs the thresholds between them.
#pragma once

#include "core/rows.hpp"
#include "tone/reduce_bits_layout.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// On a scale of 0 to 65535.
struct LevelSteps {
    explicit LevelSteps(Kuv32s levels)
        : count(levels - 1),
          exactStep(65535.0 / count),
          step(static_cast<Kuv32f>(exactStep)),
          inverse(static_cast<Kuv32f>(count / 65535.0)) {}

    Kuv32s count;
    Kuv64f exactStep;
    Kuv32f step, inverse;
};

// Thresholds of the ordered dither, in steps.
constexpr Kuv32f orderedThresholds[4][4] = {{0 / 15.0f, 8 / 15.0f, 2 / 15.0f, 10 / 15.0f},
                                            {12 / 15.0f, 4 / 15.0f, 14 / 15.0f, 6 / 15.0f},
                                            {3 / 15.0f, 11 / 15.0f, 1 / 15.0f, 9 / 15.0f},
                                            {15 / 15.0f, 7 / 15.0f, 13 / 15.0f, 5 / 15.0f}};

KUV_INLINE Kuv32f orderedThreshold(LevelSteps steps, ptrdiff_t x, ptrdiff_t y) {
    return static_cast<Kuv32f>(orderedThresholds[y % 4][x % 4] * steps.exactStep);
}

// Uniform numbers: a sequence of subtractions with borrow plus a congruential one.
class UniformGenerator {
public:
    enum Identity : Kuv32u { ofIntegers = 36, ofReals = 37 };

    void start(Identity identity, Kuv32f low, Kuv32f high, Kuv32u seed) {
        identity_ = identity;
        seed_ = seed;
        low_ = low;
        high_ = high;
        scale_ = (Kuv64f{high} - low) * 0x1p-32;
        offset_ = (Kuv64f{high} + low) * 0.5;
        a_ = 1131199209;
        b_ = seed;
        c_ = 69069 * seed + 1013904243;
        d_ = 69069 * c_ + 1013904243;
        borrow_ = ~0u;
    }

    Kuv64f next() {
        const Kuv32u difference = borrow_ + c_ - d_;
        const bool negative = static_cast<Kuv32s>(difference) < 0;
        const Kuv32u latest = negative ? difference - 18 : difference;
        d_ = c_;
        c_ = b_;
        b_ = latest;
        borrow_ = negative ? ~0u : 0u;
        a_ = 69069 * a_ + 1013904243;
        return static_cast<Kuv32s>(latest + a_) * scale_ + offset_;
    }

private:
    // It stands in the caller's buffer: programs read these words; those that nothing here reads are kept for them.
    Kuv32u identity_, seed_;
    Kuv32f low_, high_;
    Kuv64f scale_, offset_;
    Kuv32u a_, b_, c_, d_, borrow_;
};
static_assert(sizeof(UniformGenerator) == generatorBytes);

// Two tables in the caller's buffer: one of noise, and one that says where in it a column begins.
class Noise {
public:
    Noise() = default;
    Noise(Kuv8u* aligned, Kuv32f low, Kuv32f high)
        : noises_(reinterpret_cast<Kuv32f*>(aligned + noiseTableAt)), indices_(reinterpret_cast<Kuv16u*>(aligned + indexTableAt)) {
        auto& indexGenerator = *reinterpret_cast<UniformGenerator*>(aligned + indexGeneratorAt);
        indexGenerator.start(UniformGenerator::ofIntegers, 0, noiseEntries, 0);
        // Rounded: none of these numbers lies half-way between two integers.
        for (int i = 0; i < noiseEntries; ++i) indices_[i] = static_cast<Kuv16u>(indexGenerator.next() + 0.5);
        auto& noiseGenerator = *reinterpret_cast<UniformGenerator*>(aligned + noiseGeneratorAt);
        noiseGenerator.start(UniformGenerator::ofReals, low, high, 0);
        for (int i = 0; i < noiseEntries; ++i) noises_[i] = static_cast<Kuv32f>(noiseGenerator.next());
    }

    bool present() const { return noises_ != nullptr; }

    KUV_INLINE Kuv32f at(ptrdiff_t x, ptrdiff_t y) const {
        const auto column = static_cast<size_t>(x), row = static_cast<size_t>(y);
        return noises_[(indices_[column % noiseEntries] + 2 * row + column) % noiseEntries];
    }

private:
    Kuv32f* noises_ = nullptr;
    Kuv16u* indices_ = nullptr;
};

// Bounds of the noise, in per cent of what it disturbs.
inline Noise orderedNoise(Kuv8u* aligned, Kuv32s percent) {
    return Noise(aligned, static_cast<Kuv32f>(-percent / 100.0), static_cast<Kuv32f>(percent / 100.0));
}
inline Noise diffusionNoise(Kuv8u* aligned, LevelSteps steps, Kuv32s percent) {
    const auto bound = [&](Kuv32s part) { return static_cast<Kuv32f>(part * Kuv64f{steps.step} / 100); };
    return Noise(aligned, bound(50 - percent), bound(50 + percent));
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
