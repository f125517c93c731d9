#include "compare.hpp"

#include <algorithm>
#include <cmath>

namespace develop {

namespace {

constexpr int detailSide = 96, enlargement = 4, gap = 8;

// The samples of the pixel's own two by two cell; of the two greens the one in its row.
template <class T>
std::array<T, 3> nearestColours(const Plane<T>& mosaic, KuvCfaLayout layout, int x, int y) {
    std::array<T, 3> pixel{};
    for (const int cellY : {y ^ 1, y})
        for (const int cellX : {x ^ 1, x}) pixel[colourAt(layout, cellX, cellY)] = mosaic.row(cellY)[cellX];
    return pixel;
}

}  // namespace

template <class T>
Picture<T> inColours(const Plane<T>& mosaic, KuvCfaLayout layout) {
    Picture<T> picture(mosaic.width, mosaic.height);
    for (int y = 0; y < mosaic.height; ++y)
        for (int x = 0; x < mosaic.width; ++x) picture.pixel(x, y)[colourAt(layout, x, y)] = mosaic.row(y)[x];
    return picture;
}

template <class T>
Picture<T> sideBySide(const Plane<T>& mosaic, KuvCfaLayout layout, const Picture<T>& picture, KuviRect region, KuviPoint centre) {
    const int width = std::min(detailSide, region.width), height = std::min(detailSide, region.height);
    const int left = std::clamp(centre.x - region.x - width / 2, 0, region.width - width);
    const int top = std::clamp(centre.y - region.y - height / 2, 0, region.height - height);

    Picture<T> result(3 * width * enlargement + 2 * gap, height * enlargement);
    std::fill(result.samples.begin(), result.samples.end(), T(fullScale<T>));
    const auto paint = [&](int panel, int x, int y, const T* pixel) {
        const int atX = panel * (width * enlargement + gap) + x * enlargement;
        for (int i = 0; i < enlargement; ++i)
            for (int j = 0; j < enlargement; ++j) std::copy_n(pixel, 3, result.pixel(atX + j, y * enlargement + i));
    };
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int inMosaicX = region.x + left + x, inMosaicY = region.y + top + y;
            const T sample = mosaic.row(inMosaicY)[inMosaicX];
            const T grey[] = {sample, sample, sample};
            paint(0, x, y, grey);
            paint(1, x, y, nearestColours(mosaic, layout, inMosaicX, inMosaicY).data());
            paint(2, x, y, picture.pixel(left + x, top + y));
        }
    return result;
}

template <class T>
std::array<double, 3> psnr(const Picture<T>& picture, const Picture<T>& reference) {
    std::array<double, 3> sums{};
    for (std::size_t i = 0; i < picture.samples.size(); ++i) {
        const double difference = double(picture.samples[i]) - reference.samples[i];
        sums[i % 3] += difference * difference;
    }
    for (double& sum : sums)
        sum = 10 * std::log10(double(fullScale<T>) * fullScale<T> * double(picture.samples.size() / 3) / sum);
    return sums;
}

template Picture<Kuv8u> inColours(const Plane<Kuv8u>&, KuvCfaLayout);
template Picture<Kuv16u> inColours(const Plane<Kuv16u>&, KuvCfaLayout);
template Picture<Kuv8u> sideBySide(const Plane<Kuv8u>&, KuvCfaLayout, const Picture<Kuv8u>&, KuviRect, KuviPoint);
template Picture<Kuv16u> sideBySide(const Plane<Kuv16u>&, KuvCfaLayout, const Picture<Kuv16u>&, KuviRect, KuviPoint);
template std::array<double, 3> psnr(const Picture<Kuv8u>&, const Picture<Kuv8u>&);
template std::array<double, 3> psnr(const Picture<Kuv16u>&, const Picture<Kuv16u>&);

}  // namespace develop
