// From 16 bits a sample to 8.
#pragma once

#include <array>

#include "kuvcv.h"
#include "picture.hpp"

namespace develop {

struct Dither {
    const char* name;
    const char* text;
    KuvDitherType type;
};

inline constexpr std::array dithers{
    Dither{"none", "the nearest level", kuvDitherOff},
    Dither{"floyd", "error diffusion to 4 neighbours, Floyd and Steinberg", kuvDitherFloydSteinberg},
    Dither{"jarvis", "error diffusion to 12 neighbours, Jarvis, Judice, Ninke", kuvDitherJarvisJudiceNinke},
    Dither{"stucki", "error diffusion to 12 neighbours, Stucki", kuvDitherStucki},
    Dither{"ordered", "a matrix of 4 x 4 thresholds", kuvDitherOrdered4x4},
};

struct Reduction {
    const Dither* dither = &dithers.front();
    int levels = 256;
    int noise = 0;  // percent
};

void reduceBits(const Picture16u& picture, const Reduction& reduction, Picture8u& result);

}  // namespace develop
