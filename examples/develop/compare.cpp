#include "compare.hpp"

#include <algorithm>
#include <cmath>

namespace develop {

namespace {

constexpr double fullScale = 65535;
constexpr int detailSide = 96, enlargement = 4, gap = 8;

// The samples of the pixel's own two by two cell; of the two greens the one in its row.
std::array<Kuv16u, 3> nearestColours(const Mosaic& mosaic, int x, int y) {
    std::array<Kuv16u, 3> pixel{};
    for (const int cellY : {y ^ 1, y})
        for (const int cellX : {x ^ 1, x}) pixel[colourAt(mosaic.layout, cellX, cellY)] = mosaic.row(cellY)[cellX];
    return pixel;
}

}  // namespace

Picture16u inColours(const Mosaic& mosaic) {
    Picture16u picture(mosaic.width, mosaic.height);
    for (int y = 0; y < mosaic.height; ++y)
        for (int x = 0; x < mosaic.width; ++x) picture.pixel(x, y)[colourAt(mosaic.layout, x, y)] = mosaic.row(y)[x];
    return picture;
}

Picture16u sideBySide(const Mosaic& mosaic, const Picture16u& picture, KuviRect region, KuviPoint centre) {
    const int width = std::min(detailSide, region.width), height = std::min(detailSide, region.height);
    const int left = std::clamp(centre.x - region.x - width / 2, 0, region.width - width);
    const int top = std::clamp(centre.y - region.y - height / 2, 0, region.height - height);

    Picture16u result(3 * width * enlargement + 2 * gap, height * enlargement);
    std::fill(result.samples.begin(), result.samples.end(), fullScale);
    const auto paint = [&](int panel, int x, int y, const Kuv16u* pixel) {
        const int atX = panel * (width * enlargement + gap) + x * enlargement;
        for (int i = 0; i < enlargement; ++i)
            for (int j = 0; j < enlargement; ++j) std::copy_n(pixel, 3, result.pixel(atX + j, y * enlargement + i));
    };
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int inMosaicX = region.x + left + x, inMosaicY = region.y + top + y;
            const Kuv16u sample = mosaic.row(inMosaicY)[inMosaicX];
            const Kuv16u grey[] = {sample, sample, sample};
            paint(0, x, y, grey);
            paint(1, x, y, nearestColours(mosaic, inMosaicX, inMosaicY).data());
            paint(2, x, y, picture.pixel(left + x, top + y));
        }
    return result;
}

std::array<double, 3> psnr(const Picture16u& picture, const Picture16u& reference) {
    std::array<double, 3> sums{};
    for (std::size_t i = 0; i < picture.samples.size(); ++i) {
        const double difference = double(picture.samples[i]) - reference.samples[i];
        sums[i % 3] += difference * difference;
    }
    for (double& sum : sums)
        sum = 10 * std::log10(fullScale * fullScale * double(picture.samples.size() / 3) / sum);
    return sums;
}

}  // namespace develop
