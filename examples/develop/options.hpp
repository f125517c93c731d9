// The command line.
#pragma once

#include <optional>
#include <string>

#include "demosaic.hpp"
#include "kuvcv.h"

namespace develop {

struct Options {
    bool help = false;
    std::string input;  // empty: the test scene
    std::string output = "develop.png";
    std::string saveMosaic;     // the mosaic as PGM, where not empty
    std::string colourMosaic;   // the mosaic as PNG, each sample in its colour
    std::string compare;        // mosaic, nearest colours and result side by side
    std::optional<KuviPoint> compareAt;
    std::string variant = "auto";
    const Method* method = &methods.front();
    std::optional<KuvCfaLayout> layout;
    std::optional<KuviRect> region;
    int bits = 0;  // 0: those of the source
    bool linear = false;
    int threads = 1;
};

// Throws UsageError.
Options parseOptions(int argc, char** argv);

void printHelp();

const char* layoutName(KuvCfaLayout layout);

}  // namespace develop
