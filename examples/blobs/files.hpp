// Pictures in files.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "kuvcv.h"

namespace blobs {

// A file that cannot be read or written as asked.
struct FileError : std::runtime_error {
    FileError(const std::string& path, const std::string& message) : std::runtime_error(path + ": " + message) {}
};

// Rows of pixels of so many samples, without padding.
template <class T>
struct Picture {
    Picture(int width, int height, int channels = 1)
        : size{width, height}, step(int(width * channels * sizeof(T))), samples(std::size_t(width) * height * channels) {}

    KuviSize size;
    int step;  // from row to row, in bytes
    std::vector<T> samples;
};

// Grey pictures: binary PGM of up to 16 bits as it stands, and what PNG holds, brought to 0 to 255.
Picture<Kuv16u> readPicture(const std::string& path);

// Red, green and blue, as PNG.
void writePicture(const std::string& path, const Picture<Kuv8u>& picture);

}  // namespace blobs
