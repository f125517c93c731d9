// Shows the spectrum of a picture and filters the picture by it.
#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <optional>
#include <random>

#include "../files.hpp"
#include "../program.hpp"
#include "fourier.hpp"

using namespace examples;
using namespace spectrum;

namespace {

constexpr char help[] =
    "Usage: spectrum [OPTIONS] [PICTURE]\n"
    "Takes a picture, a binary PGM or a PNG file of any size, to its frequencies, filters it there, and takes it back.\n"
    "Without PICTURE it draws one with two waves laid over: --notch auto --notch auto removes them.\n"
    "  -o FILE            the picture that comes out; filtered.png unless told\n"
    "  --spectrum FILE    its spectrum; spectrum.png unless told. The mean is in the middle, and a wave of U periods across\n"
    "                     the picture and V down it is U pixels to the right and V below, and opposite. White is the largest\n"
    "                     magnitude, black is 100 decibels less\n"
    "  --low-pass S       removes fine detail: blurs by a Gaussian with a deviation of S pixels, 0.1 to 10000\n"
    "  --notch U,V        removes the wave of U periods across the picture and V down it; may be given several times\n"
    "  --notch auto       removes the strongest wave, magnitudes weighted by frequency; may be given several times\n"
    "  --notch-width W    deviation of the Gaussians that notches are made of, in periods, 0.1 to 1000; 2 unless told\n"
    "  --help             this text\n";

// Periods across the picture and down it.
struct Wave {
    double across, down;
};

struct Options {
    std::string picture, output = "filtered.png", spectrum = "spectrum.png";
    std::optional<double> lowPass;
    std::vector<std::optional<Wave>> notches;  // without a wave: the strongest
    double notchWidth = 2;
    bool help = false;
};

bool readNumber(const char*& at, const char* end, double& value) {
    const auto [stop, error] = std::from_chars(at, end, value);
    at = stop;
    return error == std::errc() && std::isfinite(value);
}

double numberOf(const std::string& option, const std::string& text, double least, double most) {
    const char *at = text.data(), *const end = at + text.size();
    double value = 0;
    if (!readNumber(at, end, value) || at != end || value < least || value > most) {
        char range[64];
        std::snprintf(range, sizeof range, " is %g to %g, not ", least, most);
        throw UsageError(option + range + text);
    }
    return value;
}

std::optional<Wave> notchOf(const std::string& text) {
    if (text == "auto") return {};
    const char *at = text.data(), *const end = at + text.size();
    Wave wave{};
    if (!readNumber(at, end, wave.across) || at == end || *at++ != ',' || !readNumber(at, end, wave.down) || at != end)
        throw UsageError("--notch is auto or U,V, not " + text);
    if (wave.across == 0 && wave.down == 0) throw UsageError("--notch 0,0 is no wave but the mean");
    return wave;
}

Options parse(int argc, char** argv) {
    Options options;
    parseArguments(argc, argv, &options.picture, [&](const std::string& argument, const auto& value) {
        if (argument == "-o") {
            options.output = value();
        } else if (argument == "--spectrum") {
            options.spectrum = value();
        } else if (argument == "--low-pass") {
            options.lowPass = numberOf(argument, value(), 0.1, 10000);
        } else if (argument == "--notch") {
            options.notches.push_back(notchOf(value()));
        } else if (argument == "--notch-width") {
            options.notchWidth = numberOf(argument, value(), 0.1, 1000);
        } else if (argument == "--help") {
            options.help = true;
        } else {
            return false;
        }
        return true;
    });
    return options;
}

// Hills and a house under a sun, and two waves over it all.
Picture<Kuv16u> drawnPicture() {
    Picture<Kuv16u> picture(320, 240);
    picture.maximum = 255;
    const auto [width, height] = picture.size;
    std::minstd_rand random(1);
    const double turn = 2 * std::numbers::pi;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            double value = 150 + 0.3 * y;
            if (std::hypot(x - 240, y - 53) < 24) value = 225;
            if (y > 127 + 27 * std::sin(x / 47.0) + 8 * std::sin(x / 15.0)) value = 130;
            if (y > 167 + 17 * std::sin(1 + x / 37.0) + 3 * std::sin(x / 7.0)) value = 90;
            const bool window = (x - 67) % 25 > 8 && y > 156 && y < 177;
            if (x > 67 && x <= 150 && y > 143 && y < 200) value = window ? 45 : 190;
            if (y > 107 && y <= 143 && std::abs(x - 109) < 1.4 * (y - 107)) value = 60;  // the roof
            if (y > 200 + 5 * std::sin(2 + x / 27.0)) value = 60;
            value += 18 * std::sin(turn * (57.0 * x / width + 24.0 * y / height));
            value += 14 * std::sin(turn * (38.0 * x / width - 71.0 * y / height));
            picture.at(x, y) = Kuv16u(std::lround(value + double(random() % 9) - 4));
        }
    }
    return picture;
}

// Column x and row y of a transform stand for the frequencies x and y, which are the same as x - width and y - height.
double signedFrequency(int i, int length) { return i <= length / 2 ? i : i - length; }

// exp(-d^2 / (2 deviation^2)) for each frequency of a line, with d its distance from the centre around the circle that it is on.
std::vector<double> bell(int length, double centre, double deviation) {
    std::vector<double> values(length);
    for (int i = 0; i < length; ++i) {
        const double distance = std::remainder(i - centre, double(length)) / deviation;
        values[i] = std::exp(-distance * distance / 2);
    }
    return values;
}

// Multiplies all frequencies but the mean by a function of their column and row.
template <class Function>
void multiply(ComplexImage& image, Function gain) {
    for (int y = 0; y < image.size.height; ++y) {
        for (int x = 0; x < image.size.width; ++x) {
            if (x == 0 && y == 0) continue;
            const std::size_t at = std::size_t(y) * image.size.width + x;
            const double factor = gain(x, y);
            image.re[at] = Kuv32f(image.re[at] * factor);
            image.im[at] = Kuv32f(image.im[at] * factor);
        }
    }
}

// A Gaussian is the transform of a Gaussian; the product of their deviations is the length / (2 pi).
void lowPass(ComplexImage& image, double deviation) {
    const auto across = bell(image.size.width, 0, image.size.width / (2 * std::numbers::pi * deviation));
    const auto down = bell(image.size.height, 0, image.size.height / (2 * std::numbers::pi * deviation));
    multiply(image, [&](int x, int y) { return across[x] * down[y]; });
}

// A wave stands at its frequency and at the opposite one.
void notch(ComplexImage& image, const Wave& wave, double width) {
    const auto across = bell(image.size.width, wave.across, width), down = bell(image.size.height, wave.down, width);
    const auto opposite = bell(image.size.width, -wave.across, width), up = bell(image.size.height, -wave.down, width);
    multiply(image, [&](int x, int y) { return (1 - across[x] * down[y]) * (1 - opposite[x] * up[y]); });
}

std::vector<double> energies(const ComplexImage& image) {
    std::vector<double> result(image.re.size());
    for (std::size_t i = 0; i < result.size(); ++i) result[i] = double(image.re[i]) * image.re[i] + double(image.im[i]) * image.im[i];
    return result;
}

// Magnitudes of pictures fall like 1 / frequency, so the product with the frequency tells what does not belong to them.
Wave strongestWave(const ComplexImage& image) {
    const auto [width, height] = image.size;
    const std::vector<double> energy = energies(image);
    Wave strongest{};
    double largest = 0, largestWeighted = 0;
    // Half of the columns; the others hold the opposite frequencies.
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x <= width / 2; ++x) {
            const double across = x, down = signedFrequency(y, height), each = energy[std::size_t(y) * width + x];
            const double weighted = each * (across * across / (double(width) * width) + down * down / (double(height) * height));
            if (weighted > largestWeighted) {
                largestWeighted = weighted;
                largest = each;
                strongest = {across, x == 0 || 2 * x == width ? std::abs(down) : down};
            }
        }
    }
    // What is left of a picture without any wave is rounding.
    if (largest <= 1e-12 * energy[0]) throw std::runtime_error("the picture has no wave to remove");
    return strongest;
}

Kuv8u sampleOf(double value) { return Kuv8u(std::lround(255 * std::clamp(value, 0.0, 1.0))); }

Picture<Kuv8u> spectrumOf(const ComplexImage& image) {
    constexpr double decibels = 100;
    const auto [width, height] = image.size;
    const std::vector<double> energy = energies(image);
    const double largest = *std::max_element(energy.begin(), energy.end());
    Picture<Kuv8u> picture(width, height);
    if (largest == 0) return picture;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const std::size_t place = std::size_t((y + height / 2) % height) * width + (x + width / 2) % width;
            picture.samples[place] = sampleOf(1 + 10 * std::log10(energy[std::size_t(y) * width + x] / largest) / decibels);
        }
    }
    return picture;
}

Picture<Kuv8u> pictureOf(const ComplexImage& image, int maximum) {
    Picture<Kuv8u> picture(image.size.width, image.size.height);
    std::transform(image.re.begin(), image.re.end(), picture.samples.begin(),
                   [maximum](Kuv32f sample) { return sampleOf(double(sample) / maximum); });
    return picture;
}

struct Moments {
    Kuv64f mean = 0, deviation = 0;
};

Moments momentsOf(const ComplexImage& image) {
    Moments moments;
    const Kuv32s step = Kuv32s(image.size.width * sizeof(Kuv32f));
    check(kuviMean_StdDev_32f_C1R(image.re.data(), step, image.size, &moments.mean, &moments.deviation));
    return moments;
}

template <class Function>
double millisecondsOf(Function function) {
    const auto start = std::chrono::steady_clock::now();
    function();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

void run(const Options& options) {
    refuseToOverwrite(options.picture, {options.output, options.spectrum});
    const Picture<Kuv16u> picture = options.picture.empty() ? drawnPicture() : readPicture(options.picture);
    const auto [width, height] = picture.size;
    for (const auto& wave : options.notches) {
        if (wave && (std::abs(wave->across) > width / 2.0 || std::abs(wave->down) > height / 2.0))
            throw UsageError("--notch: periods have two pixels or more, and the picture is " + std::to_string(width) + " x " +
                             std::to_string(height));
    }

    ComplexImage image(picture.size);
    const Kuv32s step = Kuv32s(width * sizeof(Kuv32f));
    check(kuviConvert_16u32f_C1R(picture.samples.data(), picture.step, image.re.data(), step, picture.size));
    const Moments before = momentsOf(image);

    ImageTransform transform(picture.size);
    const double forwardTime = millisecondsOf([&] { transform.forward(image); });
    for (const auto& wanted : options.notches) {
        const Wave wave = wanted ? *wanted : strongestWave(image);
        notch(image, wave, options.notchWidth);
        std::printf("wave removed: %g,%g\n", wave.across, wave.down);
    }
    if (options.lowPass) lowPass(image, *options.lowPass);
    writePicture(options.spectrum, spectrumOf(image));
    const double inverseTime = millisecondsOf([&] { transform.inverse(image); });
    const Moments after = momentsOf(image);
    writePicture(options.output, pictureOf(image, picture.maximum));

    const double kept = before.deviation == 0 ? 1 : after.deviation * after.deviation / (before.deviation * before.deviation);
    std::printf("%d x %d, there in %.1f ms, back in %.1f ms\n", width, height, forwardTime, inverseTime);
    std::printf("mean %.3f, was %.3f; energy around it kept: %.2f %%\n", after.mean, before.mean, 100 * kept);
    std::printf("spectrum: %s, picture: %s\n", options.spectrum.c_str(), options.output.c_str());
}

}  // namespace

int main(int argc, char** argv) {
    return exitCodeOf("spectrum", [&] {
        const Options options = parse(argc, argv);
        if (options.help) std::fputs(help, stdout);
        else run(options);
    });
}
