#include "support/images.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace kuvbench {

namespace {

struct Colour {
    float red, green, blue;
};

// All lengths are in pixels: a small image is a crop of a large one, not a reduced one.
Colour sceneAt(int column, int row) {
    const float x = static_cast<float>(column), y = static_cast<float>(row);
    constexpr int cell = 160;
    const int cellX = column / cell, cellY = row / cell;
    const float dx = static_cast<float>(column % cell - cell / 2), dy = static_cast<float>(row % cell - cell / 2);
    const float distance = std::sqrt(dx * dx + dy * dy);
    const unsigned kind = static_cast<unsigned>(cellX * 7 + cellY * 5) % 6;

    const float sky = 0.45f + 0.2f * std::sin(x / 310) * std::cos(y / 270);
    Colour colour = {sky * 0.8f, sky * 0.9f, sky * 1.1f};
    if (distance < 50 && kind < 3) {  // a disc with shading
        const float shade = 0.9f - distance / 120;
        colour = {shade * (kind == 0 ? 0.9f : 0.3f), shade * (kind == 1 ? 0.8f : 0.35f), shade * (kind == 2 ? 0.9f : 0.25f)};
    } else if (std::abs(dx) < 55 && std::abs(dy) < 30 && kind == 3) {  // stripes that grow finer to the right
        const float stripe = std::sin(dx * (0.6f + (dx + 55) / 120));
        colour = stripe > 0 ? Colour{0.85f, 0.83f, 0.8f} : Colour{0.12f, 0.12f, 0.14f};
    } else if (std::abs(dx + dy) < 25 && kind == 4) {  // a bar with slanted edges
        colour = {0.75f, 0.5f, 0.2f};
    } else if (kind == 5) {  // texture
        const float wave = std::sin(x * 0.9f + 2 * std::sin(y * 0.31f)) * std::sin(y * 0.7f + std::sin(x * 0.23f));
        const float leaf = 0.35f + 0.12f * wave;
        colour = {leaf * 0.6f, leaf, leaf * 0.4f};
    }
    return colour;
}

}  // namespace

template <class T>
void fillWithValues(Image<T>& image, KuviSize size, unsigned seed, float lowest, float highest) {
    std::minstd_rand random(seed);
    std::uniform_real_distribution<float> values(lowest, highest);
    for (int row = 0; row < size.height; ++row) {
        std::generate_n(image.row(row), size.width, [&] { return static_cast<T>(values(random)); });
    }
}

template <class T>
void fillWithMosaic(Image<T>& image, KuviSize size) {
    std::minstd_rand random(1);
    std::uniform_real_distribution<float> noise(-0.004f, 0.004f);
    constexpr float maximum = std::numeric_limits<T>::max();
    for (int row = 0; row < size.height; ++row) {
        T* samples = image.row(row);
        for (int column = 0; column < size.width; ++column) {
            const Colour colour = sceneAt(column + 20, row + 60);  // an edge in the smallest crop, too
            const float value = row % 2 != column % 2 ? colour.green : row % 2 == 0 ? colour.red : colour.blue;
            const float noisy = value + noise(random) + noise(random);
            samples[column] = static_cast<T>(std::clamp(noisy, 0.0f, 1.0f) * maximum + 0.5f);
        }
    }
}

template <class T>
void fillWithMarkers(Image<T>& image, KuviSize size, Markers kind) {
    std::minstd_rand random(1);
    std::bernoulli_distribution half(0.5);
    for (int row = 0; row < size.height; ++row) {
        for (int column = 0; column < size.width; ++column) {
            const float x = static_cast<float>(column), y = static_cast<float>(row);
            bool marked = false;
            if (kind == Markers::noise) {
                marked = half(random);
            } else if (kind == Markers::blobs) {
                marked = std::sin(x * 0.06f + std::sin(y * 0.02f)) * std::sin(y * 0.05f + std::sin(x * 0.017f)) > 0.2f;
            } else {
                const bool curve = std::abs(std::sin(x * 0.05f) + std::sin(y * 0.043f)) < 0.05f;
                marked = curve || column % 97 < 2 || (column + row) % 131 < 2;
            }
            image.row(row)[column] = marked ? 255 : 0;
        }
    }
}

template void fillWithMarkers(Image<Kuv8u>&, KuviSize, Markers);
template void fillWithMarkers(Image<Kuv16u>&, KuviSize, Markers);
template void fillWithValues(Image<Kuv8u>&, KuviSize, unsigned, float, float);
template void fillWithValues(Image<Kuv16u>&, KuviSize, unsigned, float, float);
template void fillWithValues(Image<Kuv16s>&, KuviSize, unsigned, float, float);
template void fillWithValues(Image<Kuv32f>&, KuviSize, unsigned, float, float);
template void fillWithMosaic(Image<Kuv8u>&, KuviSize);
template void fillWithMosaic(Image<Kuv16u>&, KuviSize);

}  // namespace kuvbench
