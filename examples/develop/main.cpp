// develop: turns what a camera delivers into a picture.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "../program.hpp"
#include "compare.hpp"
#include "demosaic.hpp"
#include "files.hpp"
#include "options.hpp"
#include "pgm.hpp"
#include "png_writer.hpp"
#include "progress.hpp"
#include "raw.hpp"
#include "reduce.hpp"
#include "resize.hpp"
#include "scene.hpp"
#include "sharpen.hpp"
#include "stages.hpp"
#include "stats.hpp"
#include "tone.hpp"
#include "variants.hpp"
#include "video.hpp"

using namespace examples;

namespace develop {

namespace {

void tell(const std::string& stage, double milliseconds, const std::string& what) {
    std::printf("%-10s %9.1f ms  %s\n", stage.c_str(), milliseconds, what.c_str());
    std::fflush(stdout);
}

void tell(const Stages& stages) {
    for (const Stage& stage : stages.done())
        tell(stage.name, stage.milliseconds, std::string("variant ") + kuvcvGetLibVersion()->variantCode);
}

std::string sizeText(int width, int height) { return std::to_string(width) + " x " + std::to_string(height); }

double megapixels(int width, int height) { return 1e-6 * width * height; }

template <class T>
void write(const std::string& path, const Picture<T>& picture) {
    const Stopwatch watch;
    writePng(path, picture);
    tell("wrote", watch.milliseconds(),
         path + ": " + sizeText(picture.width, picture.height) + ", " + std::to_string(8 * sizeof(T)) + " bits");
}

// The name of the output with a suffix, as PNG.
std::string besideOutput(const Options& options, const char* suffix) {
    std::filesystem::path path = options.output;
    path.replace_filename(path.stem().string() + suffix + ".png");
    return path.string();
}

template <class T>
void writeResult(const Options& options, const Picture<T>& picture) {
    write(options.output, picture);
    if (!options.stats) return;
    const PictureStats stats = statsOf(picture);
    print(stats);
    write(besideOutput(options, "-histogram"), histogramPlot(stats));
}

// The stages that a mosaic goes through. Those of the library work on 16-bit samples until the last one.
class Developer {
  public:
    Developer(const Options& options, const Mosaic& mosaic)
        : options_(options), black_(options.black.value_or(mosaic.black)), white_(options.white.value_or(mosaic.white)),
          balance_(mosaic.balance), region_(options.region.value_or(KuviRect{0, 0, mosaic.width, mosaic.height})) {
        if (black_ >= white_)
            throw UsageError("black level " + std::to_string(black_) + " is not below white level " + std::to_string(white_));
        if (region_.x >= mosaic.width || region_.y >= mosaic.height)
            throw UsageError("--region: lies outside the mosaic of " + sizeText(mosaic.width, mosaic.height));
        region_.width = std::min(region_.width, mosaic.width - region_.x);
        region_.height = std::min(region_.height, mosaic.height - region_.y);
        if (options.resize && std::min(region_.width, region_.height) < leastResizableSide)
            throw UsageError("--resize: needs at least " + sizeText(leastResizableSide, leastResizableSide) + ", not " +
                             sizeText(region_.width, region_.height));
    }

    KuviRect region() const { return region_; }

    // The mosaic comes back with its levels set.
    Picture16u reconstruct(Mosaic& mosaic, Stages& stages) const {
        const ToneMap levels(std::array{stretch(black_, white_)});
        stages.run("levels", [&] { levels.apply(mosaic); });
        Picture16u picture(region_.width, region_.height);
        stages.run("demosaic", [&] { demosaic(*options_.method, mosaic, region_, options_.threads, picture); });
        if (options_.sharpen) stages.run("sharpen", [&] { sharpen(picture); });
        return picture;
    }

    // From light to tones. A colour whose factor is above 1 is white before its samples are at full scale.
    void finish(Picture16u& picture, Stages& stages) const {
        if (*std::max_element(balance_.begin(), balance_.end()) > 1) {
            const auto white = [&](Colour c) { return std::max(1, int(65535 / balance_[c])); };
            const ToneMap balance(std::array{stretch(0, white(red)), stretch(0, white(green)), stretch(0, white(blue))});
            stages.run("balance", [&] { balance.apply(picture); });
        }
        if (options_.curve) {
            const ToneMap curve(std::array{*options_.curve, *options_.curve, *options_.curve});
            stages.run("curve", [&] { curve.apply(picture); });
        }
    }

    // Where wanted.
    void resizePicture(Picture16u& picture, Stages& stages) const {
        if (options_.resize) stages.run("resize", [&] { resize(picture, *options_.resize, options_.threads); });
    }

    Picture8u reduce(const Picture16u& picture, Stages& stages) const {
        Picture8u result(picture.width, picture.height);
        stages.run("reduce", [&] { reduceBits(picture, options_.reduction, result); });
        return result;
    }

    // In as many bits as the options want.
    void writePicture(const std::string& path, const Picture16u& picture) const {
        if (options_.bits == 16) return write(path, picture);
        Stages untold;
        write(path, reduce(picture, untold));
    }

    void finishAndWrite(const std::string& path, Picture16u picture) const {
        Stages untold;
        finish(picture, untold);
        writePicture(path, picture);
    }

  private:
    const Options& options_;
    int black_, white_;
    std::array<double, 3> balance_;
    KuviRect region_;
};

Mosaic readMosaic(const Options& options) {
    const std::string& path = options.input;
    std::ifstream file = openInput(path);
    char magic[2] = {};
    file.read(magic, 2);
    if (file.gcount() == 0) throw FileError(path, "is empty");
    if (magic[0] != 'P' || magic[1] < '1' || magic[1] > '7') return readRaw(path, options.layout);
    if (magic[1] != '5') throw FileError(path, std::string("is a P") + magic[1] + " file; a mosaic is a binary PGM, P5");
    Mosaic mosaic = readPgm(path);
    mosaic.layout = options.layout.value_or(kuvCfaRGGB);
    return mosaic;
}

Picture16u crop(const Picture16u& picture, KuviRect region) {
    Picture16u result(region.width, region.height);
    for (int y = 0; y < region.height; ++y)
        std::copy_n(picture.pixel(region.x, region.y + y), 3 * region.width, result.pixel(0, y));
    return result;
}

// With the scene that the mosaic was made of, if any.
void developMosaic(const Options& options, Mosaic& mosaic, const std::optional<Picture16u>& scene) {
    const Developer developer(options, mosaic);
    const KuviRect region = developer.region();
    if (options.times) {
        printTimes(megapixels(region.width, region.height), [&](Stages& stages) {
            Mosaic copy = mosaic;
            Picture16u picture = developer.reconstruct(copy, stages);
            developer.finish(picture, stages);
            developer.resizePicture(picture, stages);
            if (options.bits == 8) developer.reduce(picture, stages);
        });
        selectVariant(options.variant);
    }
    if (!options.saveMosaic.empty()) {
        const Stopwatch watch;
        writePgm(options.saveMosaic, mosaic);
        tell("wrote", watch.milliseconds(), options.saveMosaic + ": the mosaic");
    }

    if (options.stats) print("mosaic", statsOf(mosaic));
    Stages stages;
    Picture16u picture = developer.reconstruct(mosaic, stages);
    if (!options.colourMosaic.empty()) developer.finishAndWrite(options.colourMosaic, inColours(mosaic));
    if (!options.compare.empty()) {
        const KuviPoint middle{region.x + region.width / 2, region.y + region.height / 2};
        const KuviPoint centre = options.compareAt.value_or(scene ? sceneDetail : middle);
        developer.finishAndWrite(options.compare, sideBySide(mosaic, picture, region, centre));
    }
    developer.finish(picture, stages);
    developer.resizePicture(picture, stages);
    std::optional<Picture8u> reduced;
    if (options.bits == 8) reduced = developer.reduce(picture, stages);
    tell(stages);

    if (scene) {
        Picture16u reference = crop(*scene, region);
        Stages untold;
        developer.resizePicture(reference, untold);
        developer.writePicture(besideOutput(options, "-scene"), reference);
        const auto [r, g, b] = psnr(picture, reference);
        std::printf("PSNR       R %.2f dB, G %.2f dB, B %.2f dB\n", r, g, b);
    }
    if (reduced) {
        writeResult(options, *reduced);
    } else {
        writeResult(options, picture);
    }
}

void runMosaic(const Options& options) {
    std::optional<Picture16u> scene;
    const Stopwatch watch;
    if (options.input.empty()) scene = renderScene();
    Mosaic mosaic = scene ? mosaicOf(*scene, options.layout.value_or(kuvCfaRGGB)) : readMosaic(options);
    const std::string name = scene ? "test scene" : options.input;
    const std::string size = sizeText(mosaic.width, mosaic.height);
    const int least = options.method->leastSide;
    tell(scene ? "scene" : "read", watch.milliseconds(),
         name + ": " + size + ", " + layoutName(mosaic.layout) + ", black " + std::to_string(mosaic.black) + ", white " +
             std::to_string(mosaic.white));
    if (std::min(mosaic.width, mosaic.height) < least)
        throw FileError(name, "is " + size + "; method " + options.method->name + " needs at least " + sizeText(least, least));
    developMosaic(options, mosaic, scene);
}

void runVideo(const Options& options) {
    const auto [width, height] = *options.video;
    const Stopwatch watch;
    const VideoFrame frame = readVideo(options.input, *options.video);
    tell("read", watch.milliseconds(), options.input + ": " + sizeText(width, height) + ", packed 4:2:2");

    Picture8u picture(width, height);
    const auto work = [&](Stages& stages) { stages.run("colours", [&] { toRgb(frame, picture); }); };
    if (options.times) {
        printTimes(megapixels(width, height), work);
        selectVariant(options.variant);
    }
    Stages stages;
    work(stages);
    tell(stages);
    writeResult(options, picture);
}

std::vector<std::string> outputsOf(const Options& options) {
    std::vector<std::string> outputs = {options.output, options.saveMosaic, options.colourMosaic, options.compare};
    if (options.stats) outputs.push_back(besideOutput(options, "-histogram"));
    if (options.input.empty()) outputs.push_back(besideOutput(options, "-scene"));
    return outputs;
}

void run(const Options& options) {
    refuseToOverwrite(options.input, outputsOf(options));
    selectVariant(options.variant);
    if (options.video) return runVideo(options);
    runMosaic(options);
}

}  // namespace

}  // namespace develop

int main(int argc, char** argv) {
    return exitCodeOf("develop", [&] {
        const develop::Options options = develop::parseOptions(argc, argv);
        if (options.help) develop::printHelp();
        else develop::run(options);
    });
}
