// Pictures in files, for the small examples.
#pragma once

#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "kuvcv.h"

namespace examples {

// A file that cannot be read or written as asked.
struct FileError : std::runtime_error {
    FileError(const std::string& path, const std::string& message) : std::runtime_error(path + ": " + message) {}
};

// Rows of pixels of so many samples, without padding.
template <class T>
struct Picture {
    Picture(int width, int height, int channelCount = 1)
        : size{width, height},
          channels(channelCount),
          step(int(width * channels * sizeof(T))),
          samples(std::size_t(width) * height * channels) {}

    KuviSize size;
    int channels;
    int step;                                      // from row to row, in bytes
    int maximum = std::numeric_limits<T>::max();  // the sample that stands for white
    std::vector<T> samples;
};

// Grey pictures: binary PGM of up to 16 bits as it stands, and what PNG holds, brought to 0 to 255.
Picture<Kuv16u> readPicture(const std::string& path);

// One channel, grey, or three, red, green and blue, as PNG.
void writePicture(const std::string& path, const Picture<Kuv8u>& picture);

}  // namespace examples
