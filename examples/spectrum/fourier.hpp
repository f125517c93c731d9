// The Fourier transform of an image: of its rows, then of its columns.
#pragma once

#include <vector>

#include "kuvcv.h"

namespace spectrum {

// Of lines of one length. The factor of 1 / sqrt(length) makes forward and inverse transform one, but for the sign of the exponent.
class LineTransform {
  public:
    explicit LineTransform(int length);

    // In place.
    void run(Kuv32f* re, Kuv32f* im);

  private:
    std::vector<Kuv8u> plan_, work_;
};

// Complex values of an image in two planes, whose rows have no padding.
struct ComplexImage {
    explicit ComplexImage(KuviSize wanted)
        : size(wanted), re(std::size_t(size.width) * size.height), im(std::size_t(size.width) * size.height) {}

    KuviSize size;
    std::vector<Kuv32f> re, im;
};

// Of images of one size. Both directions keep the sum of the squares.
class ImageTransform {
  public:
    explicit ImageTransform(KuviSize size);

    void forward(ComplexImage& image) { run(image.re, image.im); }
    // Exchanged, the planes turn the other way.
    void inverse(ComplexImage& image) { run(image.im, image.re); }

  private:
    // Columns are transformed as rows of a block that holds so many of them, which is 64 bytes of each row of the image.
    static constexpr int blockColumns = 16;

    void run(std::vector<Kuv32f>& re, std::vector<Kuv32f>& im);

    KuviSize size_;
    LineTransform row_, column_;
    std::vector<Kuv32f> blockRe_, blockIm_;
};

}  // namespace spectrum
