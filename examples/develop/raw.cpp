#include "raw.hpp"

#include "../program.hpp"

#if DEVELOP_HAS_LIBRAW

#include <libraw/libraw.h>

#include <algorithm>
#include <memory>

using namespace examples;

namespace develop {

namespace {

// The layout of the visible area, if the file's mosaic has the two by two period at all.
std::optional<KuvCfaLayout> layoutOf(LibRaw& raw) {
    constexpr Colour colours[] = {red, green, blue, green};  // of LibRaw's colour numbers
    for (const KuvCfaLayout layout : {kuvCfaBGGR, kuvCfaRGGB, kuvCfaGBRG, kuvCfaGRBG}) {
        bool fits = true;
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 16; ++x) fits &= colours[raw.COLOR(y, x) & 3] == colourAt(layout, x, y);
        if (fits) return layout;
    }
    return std::nullopt;
}

}  // namespace

Mosaic readRaw(const std::string& path, std::optional<KuvCfaLayout> layout) {
    const auto raw = std::make_unique<LibRaw>();
    bool damaged = false;
    raw->set_dataerror_handler([](void* noted, const char*, auto) { *static_cast<bool*>(noted) = true; }, &damaged);
    if (const int error = raw->open_file(path.c_str()); error != LIBRAW_SUCCESS)
        throw FileError(path, std::string("is neither a binary PGM nor a raw file known to LibRaw: ") + LibRaw::strerror(error));
    if (const int error = raw->unpack(); error != LIBRAW_SUCCESS)
        throw FileError(path, std::string("cannot be unpacked by LibRaw: ") + LibRaw::strerror(error));
    const std::uint16_t* const samples = raw->imgdata.rawdata.raw_image;
    const std::optional<KuvCfaLayout> own = layoutOf(*raw);
    if (!samples || raw->imgdata.idata.colors != 3 || !own) throw FileError(path, "holds no Bayer mosaic");
    const auto& sizes = raw->imgdata.sizes;
    if (damaged || sizes.top_margin + sizes.height > sizes.raw_height ||
        unsigned(sizes.left_margin + sizes.width) * 2 > sizes.raw_pitch)
        throw FileError(path, "is truncated or damaged");

    Mosaic mosaic(sizes.width, sizes.height);
    mosaic.layout = layout.value_or(*own);

    // The smallest factor of the white balance becomes 1, so that what is white on the sensor is white in the picture.
    const auto& colour = raw->imgdata.color;
    const float* const balance = colour.cam_mul[red] > 0 && colour.cam_mul[blue] > 0 ? colour.cam_mul : colour.pre_mul;
    if (const float least = std::min({balance[red], balance[green], balance[blue]}); least > 0)
        for (const Colour c : {red, green, blue}) mosaic.balance[c] = balance[c] / least;

    // A file may tell a black level for every place of a pattern. What one of them has above the least is taken off here.
    const auto blackAt = [&](int x, int y) {
        unsigned black = colour.black + colour.cblack[raw->COLOR(y, x)];
        if (const unsigned rows = colour.cblack[4], columns = colour.cblack[5]; rows && columns)
            black += colour.cblack[6 + y % rows * columns + x % columns];
        return int(std::min(black, 65535u));
    };
    mosaic.black = 65535;
    for (int y = 0; y < mosaic.height; ++y)
        for (int x = 0; x < mosaic.width; ++x) mosaic.black = std::min(mosaic.black, blackAt(x, y));
    mosaic.white = int(std::min(colour.maximum, 65535u));
    for (int y = 0; y < mosaic.height; ++y) {
        const std::uint16_t* const from = samples + std::size_t(y + sizes.top_margin) * (sizes.raw_pitch / 2) + sizes.left_margin;
        for (int x = 0; x < mosaic.width; ++x)
            mosaic.row(y)[x] = Kuv16u(std::clamp(from[x] - (blackAt(x, y) - mosaic.black), 0, mosaic.white));
    }
    return mosaic;
}

}  // namespace develop

#else

using namespace examples;

namespace develop {

Mosaic readRaw(const std::string& path, std::optional<KuvCfaLayout>) {
    throw FileError(path, "is not a binary PGM file (P5); this build reads no raw files, as LibRaw was not found");
}

}  // namespace develop

#endif
