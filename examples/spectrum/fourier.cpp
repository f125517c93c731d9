#include "fourier.hpp"

#include <algorithm>

#include "../program.hpp"

namespace spectrum {

using examples::check;

LineTransform::LineTransform(int length) {
    Kuv32s planBytes = 0, initBytes = 0, workBytes = 0;
    check(kuvsDFTGetSize_C_32f(length, kuvDftScaleBoth, 0, &planBytes, &initBytes, &workBytes));
    plan_.resize(planBytes);
    work_.resize(workBytes);
    std::vector<Kuv8u> initBuffer(initBytes);
    check(kuvsDFTInit_C_32f(length, kuvDftScaleBoth, 0, plan_.data(), initBuffer.data()));
}

void LineTransform::run(Kuv32f* re, Kuv32f* im) {
    check(kuvsDFTFwd_CToC_32f(re, im, re, im, plan_.data(), work_.data()));
}

ImageTransform::ImageTransform(KuviSize size)
    : size_(size),
      row_(size.width),
      column_(size.height),
      blockRe_(std::size_t(blockColumns) * size.height),
      blockIm_(std::size_t(blockColumns) * size.height) {}

void ImageTransform::run(std::vector<Kuv32f>& re, std::vector<Kuv32f>& im) {
    const std::size_t width = size_.width, height = size_.height;
    for (std::size_t y = 0; y < height; ++y) row_.run(&re[y * width], &im[y * width]);

    for (std::size_t left = 0; left < width; left += blockColumns) {
        const std::size_t columns = std::min<std::size_t>(blockColumns, width - left);
        for (std::size_t y = 0; y < height; ++y) {
            for (std::size_t c = 0; c < columns; ++c) {
                blockRe_[c * height + y] = re[y * width + left + c];
                blockIm_[c * height + y] = im[y * width + left + c];
            }
        }
        for (std::size_t c = 0; c < columns; ++c) column_.run(&blockRe_[c * height], &blockIm_[c * height]);
        for (std::size_t y = 0; y < height; ++y) {
            for (std::size_t c = 0; c < columns; ++c) {
                re[y * width + left + c] = blockRe_[c * height + y];
                im[y * width + left + c] = blockIm_[c * height + y];
            }
        }
    }
}

}  // namespace spectrum
