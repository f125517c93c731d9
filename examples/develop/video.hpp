// Raw files of packed 4:2:2 video: Cb, Y, Cr, Y for each pair of pixels (known as UYVY), and nothing else.
#pragma once

#include <string>
#include <vector>

#include "kuvcv.h"
#include "picture.hpp"

namespace develop {

struct VideoFrame {
    KuviSize size;
    std::vector<Kuv8u> samples;  // two a pixel
};

// The file must hold exactly one frame of the size. Throws FileError.
VideoFrame readVideo(const std::string& path, KuviSize size);

void toRgb(const VideoFrame& frame, Picture8u& picture);

}  // namespace develop
