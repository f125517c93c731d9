#include "video.hpp"

#include <cstdint>
#include <filesystem>

#include "../program.hpp"
#include "files.hpp"

using namespace examples;

namespace develop {

VideoFrame readVideo(const std::string& path, KuviSize size) {
    std::ifstream file = openInput(path);
    const std::uintmax_t needed = std::uintmax_t(size.width) * size.height * 2, present = std::filesystem::file_size(path);
    if (present != needed)
        throw FileError(path, "has " + std::to_string(present) + " bytes; " + std::to_string(size.width) + " x " +
                                  std::to_string(size.height) + " pixels of packed 4:2:2 are " + std::to_string(needed));
    VideoFrame frame{size, std::vector<Kuv8u>(needed)};
    file.read(reinterpret_cast<char*>(frame.samples.data()), std::streamsize(needed));
    if (!file) throw FileError(path, "cannot be read");
    return frame;
}

void toRgb(const VideoFrame& frame, Picture8u& picture) {
    check(kuviCbYCr422ToRGB_8u_C2C3R(frame.samples.data(), 2 * frame.size.width, picture.samples.data(), picture.step(),
                                     frame.size));
}

}  // namespace develop
