#include "scene.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string_view>
#include <vector>

#include "font.hpp"
#include "progress.hpp"

namespace develop {

namespace {

// Of 0 to 1, as a screen shows them.
struct Rgb {
    float r, g, b;
};

Rgb mix(Rgb from, Rgb to, float t) {
    return {from.r + (to.r - from.r) * t, from.g + (to.g - from.g) * t, from.b + (to.b - from.b) * t};
}

constexpr Rgb ink{0.08f, 0.08f, 0.10f}, paper{0.92f, 0.91f, 0.88f};

// Each part of the scene takes positions from its own top left corner, in pixels.

// Black on white and two colours on paper, along rows, along columns and both ways aslant, from coarse to fine.
Rgb stripes(float x, float y) {
    constexpr float cell = 80;
    constexpr float periods[] = {9, 6, 4, 3};
    constexpr Rgb dark[] = {ink, {0.10f, 0.25f, 0.55f}, {0.60f, 0.15f, 0.12f}, ink};
    const int column = int(x / cell), row = int(y / cell);
    const float inX = x - cell * float(column), inY = y - cell * float(row);
    if (inX < 4 || inY < 4) return paper;
    const float across[] = {x, y, x * 0.8f + y * 0.6f, y * 0.94f - x * 0.34f};
    const float phase = across[row] / periods[column];
    return phase - std::floor(phase) < 0.5f ? dark[row] : paper;
}

// Rings that get finer from the centre outwards.
Rgb zonePlate(float x, float y) {
    constexpr float centre = 160, finest = 0.38f;  // cycles a pixel at the inscribed circle
    const float squared = (x - centre) * (x - centre) + (y - centre) * (y - centre);
    return mix(ink, paper, 0.5f + 0.5f * std::cos(std::numbers::pi_v<float> * finest / centre * squared));
}

Rgb colourChart(float x, float y) {
    constexpr Rgb patches[5][4] = {
        {{0.45f, 0.32f, 0.27f}, {0.77f, 0.58f, 0.51f}, {0.38f, 0.48f, 0.61f}, {0.35f, 0.43f, 0.26f}},
        {{0.52f, 0.50f, 0.69f}, {0.39f, 0.74f, 0.67f}, {0.86f, 0.49f, 0.18f}, {0.28f, 0.36f, 0.66f}},
        {{0.77f, 0.33f, 0.38f}, {0.37f, 0.24f, 0.42f}, {0.62f, 0.74f, 0.25f}, {0.90f, 0.64f, 0.16f}},
        {{0.20f, 0.24f, 0.58f}, {0.27f, 0.58f, 0.29f}, {0.69f, 0.19f, 0.22f}, {0.94f, 0.79f, 0.11f}},
        {{0.95f, 0.95f, 0.95f}, {0.63f, 0.63f, 0.63f}, {0.33f, 0.33f, 0.33f}, {0.10f, 0.10f, 0.10f}},
    };
    constexpr float cell = 64, gap = 6;
    const int column = int(x / cell), row = int(y / cell);
    if (x - cell * float(column) < gap || y - cell * float(row) < gap) return ink;
    return patches[row][column];
}

struct Line {
    float x, y, dot;  // top left corner, and the size of one dot of the font
    Rgb colour;
    std::string_view text;
};
constexpr Line lines[] = {
    {12, 12, 4, ink, "KUVCV DEVELOPS"},
    {12, 50, 3, {0.65f, 0.10f, 0.12f}, "QUICK FOXES JUDGE BLUE"},
    {12, 80, 2, {0.10f, 0.20f, 0.60f}, "EVERY PIXEL HAS ONE COLOUR AND LACKS TWO"},
    {12, 102, 1.5f, ink, "0123456789 THE REST IS READ FROM ITS NEIGHBOURS AND"},
    {12, 120, 1.5f, {0.10f, 0.40f, 0.20f}, "TAKEN FROM THE DIRECTION THAT IS MORE EVEN 0123456789"},
    {12, 138, 1.2f, ink, "THE QUICK BROWN FOX JUMPS OVER THE LAZY DOG 31415926535897932"},
};

Rgb text(float x, float y) {
    for (const Line& line : lines) {
        const int row = int(std::floor((y - line.y) / line.dot));
        if (row < 0 || row >= glyphHeight) continue;
        const int dot = int(std::floor((x - line.x) / line.dot));
        const int letter = dot / (glyphWidth + 1), column = dot % (glyphWidth + 1);
        if (dot >= 0 && letter < int(line.text.size()) && column < glyphWidth && glyphDot(line.text[letter], column, row))
            return line.colour;
    }
    return paper;
}

// A star of wedges, with a coloured ring and a hub.
Rgb star(float x, float y) {
    constexpr float centre = 80;
    const float dx = x - centre, dy = y - centre, radius = std::hypot(dx, dy);
    if (radius < 12) return {0.80f, 0.15f, 0.12f};
    if (radius > 76) return paper;
    if (radius > 70) return {0.10f, 0.30f, 0.65f};
    return std::sin(std::atan2(dy, dx) * 36) > 0 ? ink : paper;
}

// Thin wires against the sky, above a fence.
Rgb wires(float x, float y) {
    constexpr Rgb high{0.25f, 0.47f, 0.75f}, low{0.75f, 0.85f, 0.92f};
    constexpr float slopes[] = {0.04f, 0.12f, 0.25f, 0.45f, 0.8f};
    for (int i = 0; i < 5; ++i) {
        const float n = float(i);
        const float distance = std::abs(y - 6 - 11 * n - slopes[i] * x * 0.6f) / std::hypot(1.0f, slopes[i] * 0.6f);
        if (distance < 0.5f + 0.12f * n) return {0.12f, 0.10f, 0.10f};
    }
    if (y > 108) {
        const float slat = x / 7 + 0.0035f * (x * x) / 7, inSlat = slat - std::floor(slat);
        const float top = 112 + 3 * std::abs(inSlat - 0.35f);
        if (y > top && inSlat < 0.7f) return {0.93f, 0.90f, 0.84f};
        if (y > 116) return {0.20f, 0.38f, 0.17f};
    }
    return mix(high, low, std::clamp(y / 120, 0.0f, 1.0f));
}

Rgb hue(float turn) {
    const auto channel = [turn](float offset) {
        const float at = (turn + offset - std::floor(turn + offset)) * 6;
        return std::clamp(std::abs(at - 3) - 1, 0.0f, 1.0f);
    };
    return {channel(0), channel(2.0f / 3), channel(1.0f / 3)};
}

// Grey from black to white; all hues; a field that changes slowly along and across.
Rgb gradients(float x, float y) {
    const float t = x / 928;
    if (y < 28) return {t, t, t};
    if (y < 32) return paper;
    if (y < 60) return mix({0.5f, 0.5f, 0.5f}, hue(t), 0.8f);
    if (y < 64) return paper;
    return mix(mix({0.95f, 0.75f, 0.45f}, {0.25f, 0.35f, 0.60f}, t), mix({0.55f, 0.20f, 0.30f}, {0.70f, 0.85f, 0.60f}, t),
               (y - 64) / 32);
}

struct Part {
    float x, y, width, height;
    Rgb (*at)(float x, float y);
};
constexpr Part parts[] = {
    {16, 16, 320, 320, stripes}, {352, 16, 320, 320, zonePlate}, {688, 16, 256, 320, colourChart}, {16, 352, 528, 160, text},
    {560, 352, 160, 160, star},  {736, 352, 208, 160, wires},    {16, 528, 928, 96, gradients},
};

Rgb sceneAt(float x, float y) {
    for (const Part& part : parts) {
        const float inX = x - part.x, inY = y - part.y;
        if (inX >= 0 && inY >= 0 && inX < part.width && inY < part.height) return part.at(inX, inY);
    }
    return mix({0.78f, 0.78f, 0.76f}, {0.60f, 0.62f, 0.66f}, y / sceneHeight);
}

}  // namespace

Picture16u renderScene() {
    // Points three a pixel each way; a pixel's tent is 1 2 3 2 1 of them, centred on its middle point.
    constexpr int density = 3, taps = 2 * density - 1;
    constexpr float tent[taps] = {1 / 9.0f, 2 / 9.0f, 3 / 9.0f, 2 / 9.0f, 1 / 9.0f};
    constexpr int points = sceneWidth * density + 2;
    const auto position = [](int point) { return (float(point) - 1 + 0.5f) / density; };

    Picture16u picture(sceneWidth, sceneHeight);
    std::vector<Rgb> column(points);  // the points around one row of pixels, summed up by the tent
    Progress progress("scene", sceneHeight);
    for (int y = 0; y < sceneHeight; ++y) {
        std::fill(column.begin(), column.end(), Rgb{});
        for (int j = 0; j < taps; ++j)
            for (int i = 0; i < points; ++i) {
                const Rgb point = sceneAt(position(i), position(y * density + j));
                column[i] = {column[i].r + tent[j] * point.r, column[i].g + tent[j] * point.g, column[i].b + tent[j] * point.b};
            }
        for (int x = 0; x < sceneWidth; ++x) {
            float sum[3] = {};
            for (int i = 0; i < taps; ++i) {
                const Rgb& point = column[x * density + i];
                sum[red] += tent[i] * point.r, sum[green] += tent[i] * point.g, sum[blue] += tent[i] * point.b;
            }
            for (const Colour c : {red, green, blue})
                picture.pixel(x, y)[c] = Kuv16u(std::clamp(sum[c], 0.0f, 1.0f) * 65535 + 0.5f);
        }
        progress.advance(1);
    }
    return picture;
}

Mosaic mosaicOf(const Picture16u& picture, KuvCfaLayout layout) {
    Mosaic mosaic(picture.width, picture.height);
    mosaic.layout = layout;
    mosaic.black = 1024;
    mosaic.white = 15360;
    std::vector<Kuv16u> seen(65536);  // of a sample as a screen takes it, by the light that it stands for
    for (int i = 0; i < 65536; ++i) {
        const double shown = i / 65535.0;
        const double light = shown <= 0.04045 ? shown / 12.92 : std::pow((shown + 0.055) / 1.055, 2.4);
        seen[i] = Kuv16u(mosaic.black + light * (mosaic.white - mosaic.black) + 0.5);
    }
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x) mosaic.row(y)[x] = seen[picture.pixel(x, y)[colourAt(layout, x, y)]];
    return mosaic;
}

}  // namespace develop
