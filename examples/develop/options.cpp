#include "options.hpp"

#include <getopt.h>

#include <charconv>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "errors.hpp"

namespace develop {

namespace {

constexpr const char* layoutNames[] = {"bggr", "rggb", "gbrg", "grbg"};  // by KuvCfaLayout

enum Key {
    keyRegion = 256, keyMethod, keyBits, keyVariant, keyLayout, keyThreads, keyLinear, keySave, keyColour, keyCompare, keyAt,
};

constexpr option longOptions[] = {
    {"help", no_argument, nullptr, 'h'},
    {"output", required_argument, nullptr, 'o'},
    {"variant", required_argument, nullptr, keyVariant},
    {"layout", required_argument, nullptr, keyLayout},
    {"region", required_argument, nullptr, keyRegion},
    {"method", required_argument, nullptr, keyMethod},
    {"bits", required_argument, nullptr, keyBits},
    {"threads", required_argument, nullptr, keyThreads},
    {"linear", no_argument, nullptr, keyLinear},
    {"save-mosaic", required_argument, nullptr, keySave},
    {"colour-mosaic", required_argument, nullptr, keyColour},
    {"compare", required_argument, nullptr, keyCompare},
    {"compare-at", required_argument, nullptr, keyAt},
    {},
};

[[noreturn]] void badValue(const char* name, std::string_view text, const char* wanted) {
    throw UsageError(std::string("--") + name + ": '" + std::string(text) + "' is not " + wanted);
}

// Exactly `count` numbers of 0 or more, separated by commas.
std::vector<int> numbers(const char* name, std::string_view text, std::size_t count, const char* wanted) {
    std::vector<int> values;
    const char* at = text.data();
    const char* const end = at + text.size();
    while (values.size() < count) {
        int value = -1;
        const auto [rest, error] = std::from_chars(at, end, value);
        if (error != std::errc() || value < 0) break;
        values.push_back(value);
        at = rest;
        if (values.size() == count || at == end || *at != ',') break;
        ++at;
    }
    if (values.size() != count || at != end) badValue(name, text, wanted);
    return values;
}

KuvCfaLayout layoutOf(const std::string& name) {
    for (KuvCfaLayout layout = kuvCfaBGGR; layout <= kuvCfaGRBG; ++layout)
        if (name == layoutNames[layout]) return layout;
    throw UsageError("--layout: '" + name + "' is none of bggr, rggb, gbrg, grbg");
}

const Method* methodOf(const std::string& name) {
    std::string known;
    for (const Method& method : methods) {
        if (name == method.name) return &method;
        known += std::string(known.empty() ? "" : ", ") + method.name;
    }
    throw UsageError("--method: '" + name + "' is not known; there is: " + known);
}

std::string fileName(const char* name, const char* text) {
    if (*text == '\0') throw UsageError(std::string(name) + ": the file name is empty");
    return text;
}

}  // namespace

const char* layoutName(KuvCfaLayout layout) { return layoutNames[layout]; }

Options parseOptions(int argc, char** argv) {
    Options options;
    opterr = 0;
    for (int key; (key = getopt_long(argc, argv, ":ho:", longOptions, nullptr)) != -1;) {
        switch (key) {
            case 'h': options.help = true; break;
            case 'o': options.output = fileName("-o", optarg); break;
            case keyVariant: options.variant = optarg; break;
            case keyLayout: options.layout = layoutOf(optarg); break;
            case keyMethod: options.method = methodOf(optarg); break;
            case keyLinear: options.linear = true; break;
            case keySave: options.saveMosaic = fileName("--save-mosaic", optarg); break;
            case keyColour: options.colourMosaic = fileName("--colour-mosaic", optarg); break;
            case keyCompare: options.compare = fileName("--compare", optarg); break;
            case keyRegion: {
                const auto v = numbers("region", optarg, 4, "X,Y,W,H");
                if (v[2] < 1 || v[3] < 1) throw UsageError("--region: width and height must be at least 1");
                options.region = KuviRect{v[0], v[1], v[2], v[3]};
                break;
            }
            case keyAt: {
                const auto v = numbers("compare-at", optarg, 2, "X,Y");
                options.compareAt = KuviPoint{v[0], v[1]};
                break;
            }
            case keyBits:
                options.bits = numbers("bits", optarg, 1, "8 or 16")[0];
                if (options.bits != 8 && options.bits != 16) badValue("bits", optarg, "8 or 16");
                break;
            case keyThreads:
                options.threads = numbers("threads", optarg, 1, "a number from 1 to 1024")[0];
                if (options.threads < 1 || options.threads > 1024) badValue("threads", optarg, "a number from 1 to 1024");
                break;
            case ':': throw UsageError("option '" + std::string(argv[optind - 1]) + "' needs a value");
            default: {
                const std::string given = argv[optind - 1];
                const std::string option = given.starts_with("--") ? given : std::string("-") + char(optopt);
                throw UsageError("bad option '" + option + "', see --help");
            }
        }
    }
    if (argc - optind > 1) throw UsageError("more than one mosaic given: '" + std::string(argv[optind + 1]) + "'");
    if (argc - optind == 1) options.input = fileName("MOSAIC", argv[optind]);
    return options;
}

void printHelp() {
    std::puts(
        "Usage: develop [OPTIONS] [MOSAIC]\n"
        "\n"
        "Turns the mosaic of a Bayer sensor into a picture.\n"
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
        "  -o, --output FILE.png      the picture (default: develop.png)\n"
        "      --layout LAYOUT        colours at the mosaic's top left: bggr, rggb, gbrg or\n"
        "                             grbg (default: rggb; of a raw file, the file's own)\n"
        "      --region X,Y,W,H       develop this part only\n"
        "      --bits 8|16            bits of a sample, for the library to work on and in\n"
        "                             the files written (default: those of MOSAIC)\n"
        "      --linear               the mosaic is proportional to light, as sensors give\n"
        "                             it: finish with a curve for the screen (always done\n"
        "                             for raw files)\n"
        "      --method METHOD        how to reconstruct, see below (default: the first)\n"
        "      --variant VARIANT      code of the library to use: px (plain), w7 (SSE2),\n"
        "                             s8 (SSSE3), p8 (SSE4.2), g9 (AVX), h9 (AVX2), or auto\n"
        "                             for the best that the processor runs (default)\n"
        "      --threads N            work in N threads (default: 1); the picture does not\n"
        "                             depend on N\n"
        "      --save-mosaic FILE.pgm   write the mosaic itself\n"
        "      --colour-mosaic FILE.png write the mosaic, each sample in its colour\n"
        "      --compare FILE.png     write an enlarged detail: the mosaic, each pixel with\n"
        "                             the nearest sample of each colour, and the picture\n"
        "      --compare-at X,Y       where the detail's centre lies\n"
        "  -h, --help                 show this help\n"
        "\n"
        "Methods:");
    for (const Method& method : methods) std::printf("  %-9s %s\n", method.name, method.text);
    std::puts(
        "\n"
        "Exit code: 0 done, 1 a file could not be read or written, 2 bad options.");
}

}  // namespace develop
