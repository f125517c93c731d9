// Means, deviations, extremes and histograms, as text and as a plot.
#pragma once

#include <array>
#include <vector>

#include "picture.hpp"

namespace develop {

struct ChannelStats {
    double mean, deviation;
    std::vector<Kuv32u> counts;  // of each value that a sample can have

    int smallest() const;
    int largest() const;
};

using PictureStats = std::array<ChannelStats, 3>;

PictureStats statsOf(const Picture8u& picture);
PictureStats statsOf(const Picture16u& picture);
ChannelStats statsOf(const Mosaic& mosaic);

void print(const char* name, const ChannelStats& stats);
void print(const PictureStats& stats);

// A panel of bars for each channel.
Picture8u histogramPlot(const PictureStats& stats);

}  // namespace develop
