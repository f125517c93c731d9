// Pictures in files, for the small examples.
#pragma once

#include <limits>
#include <string>
#include <vector>

#include "kuvcv.h"

namespace examples {

// Rows of pixels of so many samples, without padding.
template <class T>
struct Picture {
    Picture(int width, int height, int channelCount = 1)
        : size{width, height},
          channels(channelCount),
          step(int(width * channels * sizeof(T))),
          samples(std::size_t(width) * height * channels) {}

    // The first sample of a pixel.
    T& at(int x, int y) { return samples[(std::size_t(y) * size.width + x) * channels]; }

    KuviSize size;
    int channels;
    int step;                                    // from row to row, in bytes
    T maximum = std::numeric_limits<T>::max();  // the sample that stands for white
    std::vector<T> samples;
};

// Grey pictures: binary PGM of up to 16 bits as it stands, and what PNG holds, brought to 0 to 255. Throws FileError.
Picture<Kuv16u> readPicture(const std::string& path);

// One channel, grey, or three, red, green and blue, as PNG. Throws FileError.
void writePicture(const std::string& path, const Picture<Kuv8u>& picture);

}  // namespace examples
