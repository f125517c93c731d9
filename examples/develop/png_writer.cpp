#include "png_writer.hpp"

#include <png.h>

#include <bit>
#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <memory>

#include "../program.hpp"
#include "progress.hpp"

using namespace examples;

namespace develop {

namespace {

void keepMessage(png_structp png, png_const_charp message) {
    *static_cast<std::string*>(png_get_error_ptr(png)) = message;
    png_longjmp(png, 1);
}

void ignoreWarning(png_structp, png_const_charp) {}

// libpng reports an error by a jump back into this function, so it holds nothing that needs a destructor.
bool encode(png_structp png, png_infop info, std::FILE* file, const void* samples, int width, int height, int bits,
            Progress& progress) {
    if (setjmp(png_jmpbuf(png))) return false;
    png_init_io(png, file);
    png_set_IHDR(png, info, png_uint_32(width), png_uint_32(height), bits, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_sRGB(png, info, PNG_sRGB_INTENT_PERCEPTUAL);
    png_write_info(png, info);
    if (bits == 16 && std::endian::native == std::endian::little) png_set_swap(png);
    const std::size_t rowBytes = std::size_t(width) * 3 * (bits / 8);
    for (int y = 0; y < height; ++y) {
        png_write_row(png, static_cast<png_const_bytep>(samples) + rowBytes * y);
        progress.advance(1);
    }
    png_write_end(png, info);
    return true;
}

}  // namespace

template <class T>
void writePng(const std::string& path, const Picture<T>& picture) {
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "wb"), &std::fclose);
    if (!file) throw FileError(path, std::string("cannot be written: ") + std::strerror(errno));

    std::string message = "out of memory";
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &message, keepMessage, ignoreWarning);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    Progress progress("write", picture.height);
    const bool encoded = info && encode(png, info, file.get(), picture.samples.data(), picture.width, picture.height,
                                        int(sizeof(T) * 8), progress);
    png_destroy_write_struct(&png, &info);
    if (!encoded) throw FileError(path, "cannot be written: " + message);
    if (std::fclose(file.release()) != 0) throw FileError(path, std::string("cannot be written: ") + std::strerror(errno));
}

template void writePng(const std::string&, const Picture<Kuv8u>&);
template void writePng(const std::string&, const Picture<Kuv16u>&);

}  // namespace develop
