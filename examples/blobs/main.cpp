// Counts the blobs of a picture and writes them in colours.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <random>

#include "../files.hpp"
#include "../program.hpp"

using namespace examples;

namespace {

constexpr char help[] =
    "Usage: blobs [OPTIONS] [PICTURE]\n"
    "Counts the bright blobs of a picture, a binary PGM or a PNG file, and writes each in a colour of its own.\n"
    "Without PICTURE it draws one.\n"
    "  -o FILE          the picture in colours; blobs.png unless told\n"
    "  --threshold N    samples from N on belong to blobs, 1 to 65535; unless told, the mean and half the deviation\n"
    "  --dark           samples below the threshold belong to blobs; unless told, it is the mean less half the deviation\n"
    "  --four           pixels that share a corner only are not connected\n"
    "  --help           this text\n";

struct Options {
    std::string picture, output = "blobs.png";
    Kuv32s threshold = 0;  // 0: not told
    bool dark = false, four = false, help = false;
};

Options parse(int argc, char** argv) {
    Options options;
    parseArguments(argc, argv, &options.picture, [&](const std::string& argument, const auto& value) {
        if (argument == "-o") {
            options.output = value();
        } else if (argument == "--threshold") {
            const std::string text = value();
            const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), options.threshold);
            if (error != std::errc() || *end != '\0' || options.threshold < 1 || options.threshold > 65535)
                throw UsageError("--threshold is 1 to 65535, not " + text);
        } else if (argument == "--dark") {
            options.dark = true;
        } else if (argument == "--four") {
            options.four = true;
        } else if (argument == "--help") {
            options.help = true;
        } else {
            return false;
        }
        return true;
    });
    return options;
}

// Bright bodies of several shapes, none of which touches another, on a ground with a gradient and some noise.
Picture<Kuv16u> drawnPicture() {
    constexpr int cell = 80;
    Picture<Kuv16u> picture(8 * cell, 6 * cell);
    std::minstd_rand random(1);
    for (int y = 0; y < picture.size.height; ++y) {
        for (int x = 0; x < picture.size.width; ++x) {
            const double u = x % cell - cell / 2, v = y % cell - cell / 2, radius = std::hypot(u, v);
            const int shape = (x / cell + 3 * (y / cell)) % 4;
            const bool body = shape == 0   ? radius < 25                                                // a disc
                              : shape == 1 ? radius < 30 && radius > 18                                 // a ring
                              : shape == 2 ? std::abs(u) + std::abs(v) < 28                             // a diamond
                                           : radius < 22 + 8 * std::cos(5 * std::atan2(v, u));          // a flower
            picture.at(x, y) = Kuv16u((body ? 180 : 40) + x / 16 + random() % 20);
        }
    }
    return picture;
}

Kuv32s thresholdOf(const Picture<Kuv16u>& picture, bool dark) {
    Kuv64f mean = 0, deviation = 0;
    check(kuviMean_StdDev_16u_C1R(picture.samples.data(), picture.step, picture.size, &mean, &deviation));
    return std::clamp(Kuv32s(std::lround(mean + (dark ? -deviation : deviation) / 2)), 1, 65535);
}

// What belongs to blobs becomes 65535, all else 0: a tone map of two steps.
void mark(Picture<Kuv16u>& picture, Kuv32s threshold, bool dark) {
    const Kuv32s levels[] = {0, threshold, 65536}, values[] = {dark ? 65535 : 0, dark ? 0 : 65535, 0};
    const Kuv32s *levelsOf[] = {levels}, *valuesOf[] = {values};
    const Kuv32s levelCounts[] = {3};
    Kuv32s bytes = 0;
    check(kuviLUT_GetSize(kuvLutStep, kuvDataType16u, kuvChannelsC1, picture.size, levelCounts, &bytes));
    std::vector<char> block(bytes);
    auto* const map = reinterpret_cast<KuviToneMapSpec*>(block.data());
    check(kuviLUT_Init_16u(kuvLutStep, kuvChannelsC1, picture.size, valuesOf, levelsOf, levelCounts, map));
    check(kuviLUT_16u_C1IR(picture.samples.data(), picture.step, picture.size, map));
}

// Turns marked pixels into labels from 1 on, and gives the number of blobs. Above 65534 blobs, labels are used again.
int label(Picture<Kuv16u>& picture, Kuv32s norm) {
    Kuv32s bytes = 0, count = 0;
    check(kuviLabelMarkersGetBufferSize_16u_C1R(picture.size, &bytes));
    std::vector<Kuv8u> buffer(bytes);
    check(kuviLabelMarkers_16u_C1IR(picture.samples.data(), picture.step, picture.size, 1, 65534, norm, &count, buffer.data()));
    return count;
}

// Black, and bright colours that differ much from one label to the next.
std::vector<Kuv8u> palette() {
    std::vector<Kuv8u> colours(65536 * 3);
    for (int i = 1; i < 65536; ++i) {
        const double hue = std::fmod(i * 0.618033988749895, 1.0);
        for (int c = 0; c < 3; ++c) {
            const double distance = std::abs(std::fmod(hue + c / 3.0, 1.0) * 6 - 3);  // 3 where the channel is strongest
            colours[3 * i + c] = Kuv8u(70 + 185 * std::clamp(distance - 1, 0.0, 1.0));
        }
    }
    return colours;
}

void run(const Options& options) {
    refuseToOverwrite(options.picture, {options.output});
    Picture<Kuv16u> picture = options.picture.empty() ? drawnPicture() : readPicture(options.picture);
    const Kuv32s threshold = options.threshold != 0 ? options.threshold : thresholdOf(picture, options.dark);
    mark(picture, threshold, options.dark);
    const int count = label(picture, options.four ? kuvLabelNeighbours4 : kuvLabelNeighbours8);

    Picture<Kuv8u> coloured(picture.size.width, picture.size.height, 3);
    check(kuviLUTPalette_16u24u_C1R(picture.samples.data(), picture.step, coloured.samples.data(), coloured.step, picture.size,
                                    palette().data(), 16));
    writePicture(options.output, coloured);
    std::printf("%d blobs, threshold %d, in colours: %s\n", count, threshold, options.output.c_str());
}

}  // namespace

int main(int argc, char** argv) {
    return exitCodeOf("blobs", [&] {
        const Options options = parse(argc, argv);
        if (options.help) std::fputs(help, stdout);
        else run(options);
    });
}
