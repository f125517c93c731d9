// The command line.
#pragma once

#include <optional>
#include <string>

#include "demosaic.hpp"
#include "kuvcv.h"
#include "reduce.hpp"
#include "tone.hpp"

namespace develop {

struct Options {
    bool help = false;
    bool times = false;
    bool stats = false;
    std::string input;  // empty: the test scene
    std::string output = "develop.png";
    std::string variant = "auto";
    std::optional<KuviSize> video;  // the input is a frame of this size, and the options below are not used

    std::string saveMosaic;    // the mosaic as PGM, where not empty
    std::string colourMosaic;  // the mosaic as PNG, each sample in its colour
    std::string compare;       // mosaic, nearest colours and result side by side
    std::optional<KuviPoint> compareAt;
    std::optional<KuvCfaLayout> layout;
    std::optional<KuviRect> region;
    std::optional<int> black, white;  // levels in the mosaic's samples
    const Method* method = &methods.front();
    bool sharpen = false;
    std::optional<Curve> curve = screenCurve();
    std::optional<KuviSize> resize;
    int bits = 8;
    Reduction reduction;
    int threads = 1;
};

// Throws UsageError.
Options parseOptions(int argc, char** argv);

void printHelp();

const char* layoutName(KuvCfaLayout layout);

}  // namespace develop
