#include "options.hpp"

#include <getopt.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <string_view>
#include <vector>

#include "../program.hpp"

using namespace examples;

namespace develop {

namespace {

constexpr const char* layoutNames[] = {"bggr", "rggb", "gbrg", "grbg"};  // by KuvCfaLayout

struct Form {
    const char* name;
    Kuv32s form;
};
constexpr Form forms[] = {{"step", kuvLutStep}, {"linear", kuvLutLinear}, {"cubic", kuvLutCubic}};

enum Key {
    keyVariant = 256, keyTimes, keyStats, keyVideo,
    // Those below are for mosaics only.
    keyLayout, keyRegion, keyBlack, keyWhite, keyMethod, keySharpen, keyThreads, keyCurve, keyForm, keyResize, keyBits, keyDither,
    keyLevels, keyNoise,
    keySave, keyColour, keyCompare, keyAt,
};

constexpr option longOptions[] = {
    {"help", no_argument, nullptr, 'h'},
    {"output", required_argument, nullptr, 'o'},
    {"variant", required_argument, nullptr, keyVariant},
    {"times", no_argument, nullptr, keyTimes},
    {"stats", no_argument, nullptr, keyStats},
    {"video", required_argument, nullptr, keyVideo},
    {"layout", required_argument, nullptr, keyLayout},
    {"region", required_argument, nullptr, keyRegion},
    {"black", required_argument, nullptr, keyBlack},
    {"white", required_argument, nullptr, keyWhite},
    {"method", required_argument, nullptr, keyMethod},
    {"sharpen", no_argument, nullptr, keySharpen},
    {"threads", required_argument, nullptr, keyThreads},
    {"curve", required_argument, nullptr, keyCurve},
    {"curve-form", required_argument, nullptr, keyForm},
    {"resize", required_argument, nullptr, keyResize},
    {"bits", required_argument, nullptr, keyBits},
    {"dither", required_argument, nullptr, keyDither},
    {"levels", required_argument, nullptr, keyLevels},
    {"noise", required_argument, nullptr, keyNoise},
    {"save-mosaic", required_argument, nullptr, keySave},
    {"colour-mosaic", required_argument, nullptr, keyColour},
    {"compare", required_argument, nullptr, keyCompare},
    {"compare-at", required_argument, nullptr, keyAt},
    {},
};

[[noreturn]] void badValue(const char* name, std::string_view text, const std::string& wanted) {
    throw UsageError(std::string("--") + name + ": '" + std::string(text) + "' is not " + wanted);
}

// Exactly `count` numbers of 0 or more, each but the last followed by the separator.
std::vector<int> numbers(const char* name, std::string_view text, std::size_t count, const std::string& wanted,
                         char separator = ',') {
    std::vector<int> values;
    const char* at = text.data();
    const char* const end = at + text.size();
    while (values.size() < count) {
        int value = -1;
        const auto [rest, error] = std::from_chars(at, end, value);
        if (error != std::errc() || value < 0) break;
        values.push_back(value);
        at = rest;
        if (values.size() == count || at == end || *at != separator) break;
        ++at;
    }
    if (values.size() != count || at != end) badValue(name, text, wanted);
    return values;
}

int number(const char* name, std::string_view text, int least, int most) {
    const std::string wanted = "a number from " + std::to_string(least) + " to " + std::to_string(most);
    const int value = numbers(name, text, 1, wanted)[0];
    if (value < least || value > most) badValue(name, text, wanted);
    return value;
}

// The entry of a list that has the name.
template <class List>
const auto& named(const char* option, const std::string& name, const List& list) {
    std::string known;
    for (const auto& entry : list) {
        if (name == entry.name) return entry;
        known += std::string(known.empty() ? "" : ", ") + entry.name;
    }
    throw UsageError(std::string("--") + option + ": '" + name + "' is not known; there is: " + known);
}

KuvCfaLayout layoutOf(const std::string& name) {
    for (KuvCfaLayout layout = kuvCfaBGGR; layout <= kuvCfaGRBG; ++layout)
        if (name == layoutNames[layout]) return layout;
    throw UsageError("--layout: '" + name + "' is none of bggr, rggb, gbrg, grbg");
}

KuviSize sizeOf(const char* name, std::string_view text) {
    const auto v = numbers(name, text, 2, "WxH", 'x');
    for (const int side : v)
        if (side < 1 || side > largestSide)
            throw UsageError(std::string("--") + name + ": width and height are numbers from 1 to " + std::to_string(largestSide));
    return {v[0], v[1]};
}

KuviSize videoSizeOf(std::string_view text) {
    const KuviSize size = sizeOf("video", text);
    if (size.width % 2 != 0)
        throw UsageError("--video: packed 4:2:2 has pairs of pixels, so its width is even, not " + std::to_string(size.width));
    return size;
}

// Points from 0 to 1 each way.
Curve curveOf(std::string_view text) {
    const std::string wanted = "screen, none or X:Y,X:Y,... with numbers from 0 to 1";
    Curve curve{kuvLutCubic, {}, {}};
    const char* at = text.data();
    const char* const end = at + text.size();
    const auto coordinate = [&](char separator) {
        double value;
        const auto [rest, error] = std::from_chars(at, end, value);
        if (error != std::errc() || !(value >= 0 && value <= 1)) badValue("curve", text, wanted);
        if (rest != end && *rest != separator) badValue("curve", text, wanted);
        at = rest == end ? end : rest + 1;
        return Kuv32s(std::lround(value * 65536));
    };
    do {
        const Kuv32s level = coordinate(':'), value = coordinate(',');
        if (!curve.levels.empty() && level <= curve.levels.back())
            throw UsageError("--curve: each point needs a greater X than the one before it");
        curve.levels.push_back(level);
        curve.values.push_back(value);
    } while (at != end);
    if (text.back() == ',') badValue("curve", text, wanted);
    if (curve.levels.front() != 0 || curve.levels.back() != 65536)
        throw UsageError("--curve: the first point's X must be 0, the last one's 1");
    return curve;
}

std::string fileName(const char* name, const char* text) {
    if (*text == '\0') throw UsageError(std::string(name) + ": the file name is empty");
    return text;
}

}  // namespace

const char* layoutName(KuvCfaLayout layout) { return layoutNames[layout]; }

Options parseOptions(int argc, char** argv) {
    Options options;
    std::string forMosaics, forEightBits;  // options given that are for these only
    Kuv32s form = kuvLutCubic;
    opterr = 0;
    int index = 0;
    for (int key; (key = getopt_long(argc, argv, ":ho:", longOptions, &index)) != -1;) {
        if (key >= keyLayout) forMosaics = longOptions[index].name;
        if (key == keyDither || key == keyLevels || key == keyNoise) forEightBits = longOptions[index].name;
        switch (key) {
            case 'h': options.help = true; break;
            case 'o': options.output = fileName("-o", optarg); break;
            case keyVariant: options.variant = optarg; break;
            case keyTimes: options.times = true; break;
            case keyStats: options.stats = true; break;
            case keyVideo: options.video = videoSizeOf(optarg); break;
            case keyLayout: options.layout = layoutOf(optarg); break;
            case keyRegion: {
                const auto v = numbers("region", optarg, 4, "X,Y,W,H");
                if (v[2] < 1 || v[3] < 1) throw UsageError("--region: width and height must be at least 1");
                options.region = KuviRect{v[0], v[1], v[2], v[3]};
                break;
            }
            case keyBlack: options.black = number("black", optarg, 0, 65534); break;
            case keyWhite: options.white = number("white", optarg, 1, 65535); break;
            case keyMethod: options.method = &named("method", optarg, methods); break;
            case keySharpen: options.sharpen = true; break;
            case keyThreads: options.threads = number("threads", optarg, 1, 1024); break;
            case keyCurve:
                if (optarg == std::string_view("none")) {
                    options.curve.reset();
                } else {
                    options.curve = optarg == std::string_view("screen") ? screenCurve() : curveOf(optarg);
                }
                break;
            case keyForm: form = named("curve-form", optarg, forms).form; break;
            case keyResize: options.resize = sizeOf("resize", optarg); break;
            case keyBits:
                options.bits = numbers("bits", optarg, 1, "8 or 16")[0];
                if (options.bits != 8 && options.bits != 16) badValue("bits", optarg, "8 or 16");
                break;
            case keyDither: options.reduction.dither = &named("dither", optarg, dithers); break;
            case keyLevels: options.reduction.levels = number("levels", optarg, 2, 256); break;
            case keyNoise: options.reduction.noise = number("noise", optarg, 0, 100); break;
            case keySave: options.saveMosaic = fileName("--save-mosaic", optarg); break;
            case keyColour: options.colourMosaic = fileName("--colour-mosaic", optarg); break;
            case keyCompare: options.compare = fileName("--compare", optarg); break;
            case keyAt: {
                const auto v = numbers("compare-at", optarg, 2, "X,Y");
                options.compareAt = KuviPoint{v[0], v[1]};
                break;
            }
            case ':': throw UsageError("option '" + std::string(argv[optind - 1]) + "' needs a value");
            default: {
                const std::string given = argv[optind - 1];
                const std::string option = given.starts_with("--") ? given : std::string("-") + char(optopt);
                throw UsageError("bad option '" + option + "'");
            }
        }
    }
    if (options.curve) options.curve->form = form;
    if (argc - optind > 1) throw UsageError("more than one file given: '" + std::string(argv[optind + 1]) + "'");
    if (argc - optind == 1) options.input = fileName("FILE", argv[optind]);
    if (options.help) return options;
    if (options.video && !forMosaics.empty()) throw UsageError("--" + forMosaics + " is for mosaics, not for --video");
    if (options.video && options.input.empty()) throw UsageError("--video needs a file");
    if (options.bits == 16 && !forEightBits.empty())
        throw UsageError("--" + forEightBits + " is for the reduction to 8 bits, not for 16");
    return options;
}

void printHelp() {
    std::puts(
        "Usage: develop [OPTIONS] [MOSAIC]\n"
        "       develop [OPTIONS] --video WxH FILE\n"
        "\n"
        "Turns the mosaic of a Bayer sensor into a picture: sets black and white level,\n"
        "reconstructs the colours, applies a tone curve and reduces the result to 8 bits.\n"
        "\n"
#if DEVELOP_HAS_LIBRAW
        "MOSAIC is a binary PGM file of up to 16 bits, or a camera's raw file.\n"
#else
        "MOSAIC is a binary PGM file of up to 16 bits. (This build was made without LibRaw,\n"
        "which would let it read cameras' raw files too.)\n"
#endif
        "Without it a test scene is drawn, seen through a mosaic, reconstructed and\n"
        "compared with the scene, which is written next to the picture.\n"
        "\n"
        "With --video it turns packed 4:2:2 video (Cb Y Cr Y, known as UYVY) into a picture;\n"
        "FILE holds one frame of W x H pixels and nothing else.\n"
        "\n"
        "  -o, --output FILE.png      the picture (default: develop.png)\n"
        "      --variant VARIANT      code of the library to use: px (plain), w7 (SSE2),\n"
        "                             s8 (SSSE3), p8 (SSE4.2), g9 (AVX), h9 (AVX2), or auto\n"
        "                             for the best that the processor runs (default)\n"
        "      --times                first print how long each stage takes in each variant\n"
        "      --stats                print mean, deviation, smallest and largest sample of each\n"
        "                             channel and of the mosaic as it was read, and write the\n"
        "                             channels' histograms to FILE-histogram.png\n"
        "  -h, --help                 show this help\n"
        "\n"
        "For mosaics:\n"
        "      --layout LAYOUT        colours at the mosaic's top left: bggr, rggb, gbrg or\n"
        "                             grbg (default: rggb; of a raw file, the file's own)\n"
        "      --region X,Y,W,H       develop this part only\n"
        "      --black N, --white N   samples of no light and of full scale (default: 0 and the\n"
        "                             PGM file's maximum; of a raw file, the file's own)\n"
        "      --method METHOD        how to reconstruct, see below (default: the first)\n"
        "      --sharpen              then sharpen it, by a filter of 5 x 5 pixels\n"
        "      --threads N            reconstruct and resize in N threads (default: 1); the\n"
        "                             picture does not depend on N\n"
        "      --curve CURVE          the tone curve: screen, from light to what a screen\n"
        "                             expects (default); none; or control points X:Y,X:Y,...\n"
        "                             from 0 to 1, such as 0:0,0.2:0.4,1:1\n"
        "      --curve-form FORM      between the points: step, linear or cubic (default;\n"
        "                             linear where there are fewer than four)\n"
        "      --resize WxH           make the picture W by H pixels large\n"
        "      --bits 8|16            bits of a sample in the PNG files (default: 8)\n"
        "      --dither DITHER        how 8 bits hide their steps, see below (default: the first)\n"
        "      --levels N             use only N of the 256 levels, 2 to 256\n"
        "      --noise PERCENT        disturb the dither's thresholds, 0 to 100 (default: 0)\n"
        "      --save-mosaic FILE.pgm   write the mosaic itself, as it is before all stages\n"
        "      --colour-mosaic FILE.png write the mosaic, each sample in its colour\n"
        "      --compare FILE.png     write an enlarged detail: the mosaic, each pixel with\n"
        "                             the nearest sample of each colour, and the picture\n"
        "      --compare-at X,Y       where the detail's centre lies\n"
        "\n"
        "Methods:");
    for (const Method& method : methods) std::printf("  %-9s %s\n", method.name, method.text);
    std::puts("\nDithers:");
    for (const Dither& dither : dithers) std::printf("  %-9s %s\n", dither.name, dither.text);
    std::puts(
        "\n"
        "Exit code: 0 done, 1 a file could not be read or written, 2 bad options.");
}

}  // namespace develop
