#include "stats.hpp"

#include <algorithm>
#include <cstdio>
#include <string>

#include "../program.hpp"
#include "font.hpp"

using namespace examples;

namespace develop {

namespace {

// A plan with a bin for each value that a sample can have, the same for all channels, and the scratch space for its use.
struct Histogram {
    Histogram(Kuv32s type, Kuv32s values, Kuv32s channels) {
        const Kuv32s levels[] = {values + 1, values + 1, values + 1};
        const Kuv32f lowest[] = {0, 0, 0}, end = Kuv32f(values), highest[] = {end, end, end};
        Kuv32s planBytes, bufferBytes;
        check(kuviHistogramGetBufferSize(type, {1, 1}, levels, channels, 1, &planBytes, &bufferBytes));
        memory.resize(planBytes);
        buffer.resize(bufferBytes);
        check(kuviHistogramUniformInit(type, lowest, highest, levels, channels, reinterpret_cast<KuviBinPlan*>(memory.data())));
    }

    const KuviBinPlan* plan() const { return reinterpret_cast<const KuviBinPlan*>(memory.data()); }

    std::vector<Kuv8u> memory, buffer;
};

ChannelStats statsOfPlane(const Kuv16u* samples, int step, KuviSize size) {
    constexpr int values = 65536;
    Histogram histogram(kuvDataType16u, values, 1);
    ChannelStats stats{0, 0, std::vector<Kuv32u>(values)};
    check(kuviMean_StdDev_16u_C1R(samples, step, size, &stats.mean, &stats.deviation));
    check(kuviHistogram_16u_C1R(samples, step, size, stats.counts.data(), histogram.plan(), histogram.buffer.data()));
    return stats;
}

struct Channel {
    const char* name;
    const char* title;
    Kuv8u colour[3];
};
constexpr Channel channels[] = {{"red", "RED", {205, 70, 60}}, {"green", "GREEN", {70, 150, 70}}, {"blue", "BLUE", {65, 100, 200}}};

constexpr Kuv8u paper[] = {255, 255, 255}, panel[] = {243, 243, 243}, ink[] = {60, 60, 60};
constexpr int bars = 256, barWidth = 2, barHeight = 120, margin = 16, gap = 6, dot = 2;
constexpr int textHeight = glyphHeight * dot, letterWidth = (glyphWidth + 1) * dot;
constexpr int panelHeight = textHeight + gap + barHeight + gap + textHeight;

void fillRectangle(Picture8u& picture, int x, int y, int width, int height, const Kuv8u (&colour)[3]) {
    for (int row = y; row < y + height; ++row)
        for (int column = x; column < x + width; ++column) std::copy_n(colour, 3, picture.pixel(column, row));
}

int widthOf(const std::string& text) { return int(text.size()) * letterWidth - dot; }

void drawText(Picture8u& picture, int x, int y, const std::string& text) {
    for (const char c : text) {
        for (int column = 0; column < glyphWidth; ++column)
            for (int row = 0; row < glyphHeight; ++row)
                if (glyphDot(c, column, row)) fillRectangle(picture, x + column * dot, y + row * dot, dot, dot, ink);
        x += letterWidth;
    }
}

// Clipped samples pile up in the first bar and in the last: those do not set the scale, and may be cut off.
Kuv64u fullHeightOf(const std::vector<Kuv64u>& heights) {
    const Kuv64u inner = *std::max_element(heights.begin() + 1, heights.end() - 1);
    return inner > 0 ? inner : *std::max_element(heights.begin(), heights.end());
}

void drawPanel(Picture8u& picture, int top, const Channel& channel, const std::vector<Kuv32u>& counts) {
    const std::size_t valuesPerBar = counts.size() / bars;
    std::vector<Kuv64u> heights(bars);
    for (std::size_t i = 0; i < counts.size(); ++i) heights[i / valuesPerBar] += counts[i];
    const Kuv64u fullHeight = fullHeightOf(heights);
    const int right = margin + bars * barWidth, barTop = top + textHeight + gap, bottom = barTop + barHeight;

    const std::string scale = "FULL HEIGHT " + std::to_string(fullHeight) + " PIXELS", last = std::to_string(counts.size() - 1);
    drawText(picture, margin, top, channel.title);
    drawText(picture, right - widthOf(scale), top, scale);
    fillRectangle(picture, margin, barTop, bars * barWidth, barHeight, panel);
    for (int i = 0; i < bars; ++i) {
        const int height = int((std::min(heights[i], fullHeight) * barHeight + fullHeight - 1) / fullHeight);  // any count is seen
        fillRectangle(picture, margin + i * barWidth, bottom - height, barWidth, height, channel.colour);
    }
    fillRectangle(picture, margin, bottom, bars * barWidth, 1, ink);
    drawText(picture, margin, bottom + gap, "0");
    drawText(picture, right - widthOf(last), bottom + gap, last);
}

}  // namespace

int ChannelStats::smallest() const {
    return int(std::find_if(counts.begin(), counts.end(), [](Kuv32u count) { return count > 0; }) - counts.begin());
}

int ChannelStats::largest() const {
    return int(counts.rend() - std::find_if(counts.rbegin(), counts.rend(), [](Kuv32u count) { return count > 0; })) - 1;
}

PictureStats statsOf(const Picture8u& picture) {
    constexpr int values = 256;
    const KuviSize size = {picture.width, picture.height};
    Histogram histogram(kuvDataType8u, values, 3);
    PictureStats stats;
    Kuv32u* counts[3];
    for (int c = 0; c < 3; ++c) {
        stats[c].counts.resize(values);
        counts[c] = stats[c].counts.data();
        check(kuviMean_StdDev_8u_C3CR(picture.samples.data(), picture.step(), size, c + 1, &stats[c].mean, &stats[c].deviation));
    }
    check(kuviHistogram_8u_C3R(picture.samples.data(), picture.step(), size, counts, histogram.plan(), histogram.buffer.data()));
    return stats;
}

// The library measures 16-bit samples of one channel at a time.
PictureStats statsOf(const Picture16u& picture) {
    std::vector<Kuv16u> plane(picture.samples.size() / 3);
    PictureStats stats;
    for (int c = 0; c < 3; ++c) {
        for (std::size_t i = 0; i < plane.size(); ++i) plane[i] = picture.samples[3 * i + c];
        stats[c] = statsOfPlane(plane.data(), int(picture.width * sizeof(Kuv16u)), {picture.width, picture.height});
    }
    return stats;
}

ChannelStats statsOf(const Mosaic& mosaic) { return statsOfPlane(mosaic.row(0), mosaic.step(), {mosaic.width, mosaic.height}); }

void print(const char* name, const ChannelStats& stats) {
    std::printf("%-10s mean %9.3f, deviation %9.3f, from %5d to %5d\n", name, stats.mean, stats.deviation, stats.smallest(),
                stats.largest());
}

void print(const PictureStats& stats) {
    for (int c = 0; c < 3; ++c) print(channels[c].name, stats[c]);
}

Picture8u histogramPlot(const PictureStats& stats) {
    Picture8u picture(2 * margin + bars * barWidth, 3 * (panelHeight + margin) + margin);
    fillRectangle(picture, 0, 0, picture.width, picture.height, paper);
    for (int c = 0; c < 3; ++c) drawPanel(picture, margin + c * (panelHeight + margin), channels[c], stats[c].counts);
    return picture;
}

}  // namespace develop
