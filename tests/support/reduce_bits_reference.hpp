// The reduction of bits as the header states it, in both arithmetics, without regard to speed.
#pragma once

#include <vector>

#include "kuvcv.h"

namespace kuvtest {

struct Reduction {
    int pixelSamples;  // 4: with alpha
    KuviSize size;
    Kuv32s noise;
    KuvDitherType ditherType;
    Kuv32s levels;

    int channels() const { return pixelSamples == 1 ? 1 : 3; }
    int rowSamples() const { return size.width * pixelSamples; }
    std::size_t samples() const { return static_cast<std::size_t>(rowSamples()) * static_cast<std::size_t>(size.height); }
};

// Of packed samples, packed bytes; those of alpha are as in `before`.
std::vector<Kuv8u> reducedInDoubles(const Reduction& reduction, const std::vector<Kuv16u>& src, const std::vector<Kuv8u>& before);
std::vector<Kuv8u> reducedInSingles(const Reduction& reduction, const std::vector<Kuv16u>& src, const std::vector<Kuv8u>& before);

// The tables of noise of a call.
struct NoiseTables {
    std::vector<Kuv32f> noises;
    std::vector<int> indices;
};
NoiseTables noiseTables(const Reduction& reduction);

}  // namespace kuvtest
