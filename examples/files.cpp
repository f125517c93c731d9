#include "files.hpp"

#include <png.h>

#include <algorithm>
#include <cstdint>
#include <fstream>

#include "pgm_header.hpp"
#include "program.hpp"

namespace examples {

namespace {

// Sizes of buffers are counted in 31 bits. Labelling takes the largest ones, of 6 bytes a pixel.
void checkSize(const std::string& path, std::int64_t width, std::int64_t height) {
    if (width > 1'000'000 || height > 1'000'000 || width * height > 300'000'000)
        throw FileError(path, "is too large: " + std::to_string(width) + " x " + std::to_string(height));
}

Picture<Kuv16u> readPgm(std::ifstream& file, const std::string& path) {
    const PgmHeader header = readPgmHeader(file, path);
    const auto [width, height, maximum] = header;
    checkSize(path, width, height);
    checkPgmSamples(file, path, header);
    Picture<Kuv16u> picture(width, height);
    picture.maximum = Kuv16u(maximum);
    const int sampleBytes = header.sampleBytes();
    std::vector<unsigned char> row(std::size_t(width) * sampleBytes);
    for (int y = 0; y < height; ++y) {
        if (!file.read(reinterpret_cast<char*>(row.data()), std::streamsize(row.size()))) throw FileError(path, "is truncated");
        Kuv16u* const samples = &picture.at(0, y);
        for (int x = 0; x < width; ++x) samples[x] = Kuv16u(sampleBytes == 1 ? row[x] : row[2 * x] << 8 | row[2 * x + 1]);
    }
    return picture;
}

Picture<Kuv16u> readPng(const std::string& path) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    struct Release {
        png_image* image;
        ~Release() { png_image_free(image); }
    } const release{&image};
    if (!png_image_begin_read_from_file(&image, path.c_str())) throw FileError(path, image.message);
    checkSize(path, image.width, image.height);
    image.format = PNG_FORMAT_GRAY;
    const png_color black = {};
    std::vector<Kuv8u> grey(PNG_IMAGE_SIZE(image));
    if (!png_image_finish_read(&image, &black, grey.data(), 0, nullptr)) throw FileError(path, image.message);
    Picture<Kuv16u> picture(int(image.width), int(image.height));
    picture.maximum = 255;
    std::copy(grey.begin(), grey.end(), picture.samples.begin());
    return picture;
}

}  // namespace

Picture<Kuv16u> readPicture(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    char magic[2] = {};
    if (!file || !file.read(magic, 2)) throw FileError(path, "cannot be read");
    if (magic[0] == 'P' && magic[1] == '5') return readPgm(file, path);
    if (magic[0] == '\x89' && magic[1] == 'P') return readPng(path);
    throw FileError(path, "is neither a binary PGM file nor a PNG file");
}

void writePicture(const std::string& path, const Picture<Kuv8u>& picture) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.width = png_uint_32(picture.size.width);
    image.height = png_uint_32(picture.size.height);
    image.format = picture.channels == 1 ? PNG_FORMAT_GRAY : PNG_FORMAT_RGB;
    if (!png_image_write_to_file(&image, path.c_str(), 0, picture.samples.data(), 0, nullptr))
        throw FileError(path, image.message);
}

}  // namespace examples
