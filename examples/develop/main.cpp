// develop: turns the mosaic of a Bayer sensor into a picture.
#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "compare.hpp"
#include "demosaic.hpp"
#include "errors.hpp"
#include "options.hpp"
#include "pgm.hpp"
#include "png_writer.hpp"
#include "progress.hpp"
#include "raw.hpp"
#include "scene.hpp"

namespace develop {

namespace {

void tell(const char* stage, const std::string& what, const Stopwatch& watch) {
    std::printf("%-10s %9.1f ms  %s\n", stage, watch.milliseconds(), what.c_str());
    std::fflush(stdout);
}

std::string sizeText(int width, int height) { return std::to_string(width) + " x " + std::to_string(height); }

template <class T>
std::string bitsText() {
    return std::to_string(8 * sizeof(T)) + " bits";
}

Mosaic readMosaic(const Options& options) {
    const std::string& path = options.input;
    std::ifstream file(path, std::ios::binary);
    if (!file) throw FileError(path, std::string("cannot be opened: ") + std::strerror(errno));
    if (!std::filesystem::is_regular_file(path)) throw FileError(path, "is not a regular file");
    char magic[2] = {};
    file.read(magic, 2);
    if (file.gcount() == 0) throw FileError(path, "is empty");
    if (magic[0] != 'P' || magic[1] < '1' || magic[1] > '7') return readRaw(path, options.layout);
    if (magic[1] != '5') throw FileError(path, std::string("is a P") + magic[1] + " file; a mosaic is a binary PGM, P5");
    Mosaic mosaic = readPgm(path);
    mosaic.layout = options.layout.value_or(kuvCfaRGGB);
    mosaic.linear = options.linear;
    return mosaic;
}

KuviRect clippedRegion(const Options& options, const Mosaic& mosaic) {
    KuviRect region = options.region.value_or(KuviRect{0, 0, mosaic.width, mosaic.height});
    if (region.x >= mosaic.width || region.y >= mosaic.height)
        throw UsageError("--region: lies outside the mosaic of " + sizeText(mosaic.width, mosaic.height));
    region.width = std::min(region.width, mosaic.width - region.x);
    region.height = std::min(region.height, mosaic.height - region.y);
    return region;
}

// From light to what a screen expects.
template <class Samples>
void applyScreenCurve(Samples& samples) {
    std::vector<std::uint16_t> curve(65536);
    for (int i = 0; i < 65536; ++i) {
        const double light = i / 65535.0;
        const double shown = light <= 0.0031308 ? light * 12.92 : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
        curve[i] = std::uint16_t(shown * 65535 + 0.5);
    }
    for (auto& sample : samples) sample = curve[sample];
}

template <class T>
void write(const std::string& path, Picture<T> picture, bool linear) {
    const Stopwatch watch;
    if constexpr (sizeof(T) == 2)
        if (linear) applyScreenCurve(picture.samples);
    writePng(path, picture);
    tell("wrote", path + ": " + sizeText(picture.width, picture.height) + ", " + bitsText<T>(), watch);
}

// The scene in the width of the picture, and no more of it.
template <class T>
Picture<T> crop(const Picture<std::uint16_t>& scene, KuviRect region) {
    Picture<T> result(region.width, region.height);
    for (int y = 0; y < region.height; ++y)
        std::transform(scene.pixel(region.x, region.y + y), scene.pixel(region.x, region.y + y) + 3 * region.width,
                       result.pixel(0, y), [](std::uint32_t s) { return T((s * fullScale<T> + 32767u) / 65535u); });
    return result;
}

// From the mosaic onwards all work is done on samples of one width.
template <class T>
void developAs(const Options& options, const Mosaic& mosaic, const Picture<std::uint16_t>* scene) {
    const KuviRect region = clippedRegion(options, mosaic);
    const Plane<T> plane = toPlane<T>(mosaic);
    if (!options.saveMosaic.empty()) {
        const Stopwatch watch;
        writePgm(options.saveMosaic, plane);
        tell("wrote", options.saveMosaic + ": the mosaic", watch);
    }
    if (!options.colourMosaic.empty()) write(options.colourMosaic, inColours(plane, mosaic.layout), mosaic.linear);

    Picture<T> picture(region.width, region.height);
    const Stopwatch watch;
    demosaic(*options.method, plane, mosaic.layout, region, options.threads, picture);
    char rate[32];
    std::snprintf(rate, sizeof(rate), "%.1f megapixels/s", 1e-3 * region.width * region.height / watch.milliseconds());
    const std::string threads = std::to_string(options.threads) + (options.threads == 1 ? " thread" : " threads");
    tell("demosaic", std::string(options.method->name) + ", variant " + kuvcvGetLibVersion()->variantCode + ", " + bitsText<T>() +
                         ", " + sizeText(region.width, region.height) + ", " + threads + ", " + rate, watch);

    if (!options.compare.empty()) {
        const KuviPoint middle{region.x + region.width / 2, region.y + region.height / 2};
        const KuviPoint centre = options.compareAt.value_or(scene ? sceneDetail : middle);
        write(options.compare, sideBySide(plane, mosaic.layout, picture, region, centre), mosaic.linear);
    }
    if (scene) {
        const Picture<T> reference = crop<T>(*scene, region);
        std::filesystem::path path = options.output;
        path.replace_filename(path.stem().string() + "-scene.png");
        write(path.string(), reference, false);
        const auto [r, g, b] = psnr(picture, reference);
        std::printf("PSNR       R %.2f dB, G %.2f dB, B %.2f dB\n", r, g, b);
    }
    write(options.output, picture, mosaic.linear);
}

void refuseToOverwriteInput(const Options& options) {
    for (const std::string& output : {options.output, options.saveMosaic, options.colourMosaic, options.compare}) {
        std::error_code missing;
        if (std::filesystem::equivalent(options.input, output, missing))
            throw UsageError(output + ": is the mosaic itself and would be overwritten");
    }
}

void run(const Options& options) {
    refuseToOverwriteInput(options);
    selectVariant(options.variant);
    std::optional<Picture<std::uint16_t>> scene;
    const Stopwatch watch;
    if (options.input.empty()) scene = renderScene();
    Mosaic mosaic = scene ? mosaicOf(*scene, options.layout.value_or(kuvCfaRGGB)) : readMosaic(options);
    const std::string name = scene ? "test scene" : options.input;
    const std::string size = sizeText(mosaic.width, mosaic.height);
    const int least = options.method->leastSide;
    tell(scene ? "scene" : "read", name + ": " + size + ", " + layoutName(mosaic.layout), watch);
    if (std::min(mosaic.width, mosaic.height) < least)
        throw FileError(name, "is " + size + "; method " + options.method->name + " needs at least " + sizeText(least, least));

    if ((options.bits ? options.bits : mosaic.bits) == 16) return developAs<Kuv16u>(options, mosaic, scene ? &*scene : nullptr);
    // Eight bits are too few for linear light: shadows would show steps. So the curve comes first.
    if (mosaic.linear) applyScreenCurve(mosaic.samples);
    mosaic.linear = false;
    developAs<Kuv8u>(options, mosaic, scene ? &*scene : nullptr);
}

}  // namespace

}  // namespace develop

int main(int argc, char** argv) {
    int exitCode = 1;
    try {
        const develop::Options options = develop::parseOptions(argc, argv);
        if (options.help) {
            develop::printHelp();
        } else {
            develop::run(options);
        }
        return 0;
    } catch (const develop::UsageError& error) {
        std::fprintf(stderr, "develop: %s\n", error.what());
        exitCode = 2;
    } catch (const std::bad_alloc&) {
        std::fputs("develop: out of memory\n", stderr);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "develop: %s\n", error.what());
    }
    return exitCode;
}
