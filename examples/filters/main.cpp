// Shows a picture under some kernels, a row each, and under the three border rules, a column each.
#include <png.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <stdexcept>
#include <string>
#include <vector>

#include "../program.hpp"
#include "kuvcv.h"

using namespace examples;

namespace {

constexpr char help[] =
    "Usage: filters [OPTIONS]\n"
    "Draws a picture, filters it and writes the results side by side: a row for each kernel, a column for each border rule.\n"
    "  -o FILE          the picture; filters.png unless told\n"
    "  --kernel KERNEL  one row only: shift, blur, streak, sharpen or edges\n"
    "  --border RULE    one column only: clamp, reflect or fill\n"
    "  --help           this text\n";

// Rows without padding.
template <class T>
struct Picture {
    explicit Picture(KuviSize wanted, T value = T()) : size(wanted), samples(std::size_t(wanted.width) * wanted.height, value) {}

    T& at(int x, int y) { return samples[std::size_t(y) * size.width + x]; }
    Kuv32s step() const { return Kuv32s(size.width * sizeof(T)); }

    KuviSize size;
    std::vector<T> samples;
};

using RealPicture = Picture<Kuv32f>;
using Kernel = Picture<Kuv32f>;

// A kernel of a function of the distances from its centre; `sum` is what its coefficients are brought to, or 0 for as they are.
template <class Function>
Kernel kernelOf(KuviSize size, Kuv32f sum, Function function) {
    Kernel kernel(size);
    Kuv32f total = 0;
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) total += kernel.at(x, y) = Kuv32f(function(x - size.width / 2, y - size.height / 2));
    }
    if (sum != 0) {
        for (Kuv32f& each : kernel.samples) each *= sum / total;
    }
    return kernel;
}

// A single coefficient in the corner: what stands beyond the border comes into view.
Kernel shift() {
    return kernelOf({81, 81}, 1, [](int x, int y) { return x == -40 && y == -40; });
}
Kernel blur() {
    return kernelOf({25, 25}, 1, [](int x, int y) { return std::exp(-(x * x + y * y) / 72.0); });
}
// Along the diagonal.
Kernel streak() {
    return kernelOf({41, 41}, 1, [](int x, int y) { return x == y; });
}
Kernel sharpen() {
    return kernelOf({5, 5}, 1, [](int x, int y) { return (x == 0 && y == 0 ? 5 : 0) - 4 * std::exp(-(x * x + y * y) / 2.0) / 6.2; });
}
// The slope from left to right.
Kernel edges() {
    return kernelOf({3, 3}, 0, [](int x, int y) { return x * (y == 0 ? 2 : 1) * 0.25; });
}

struct NamedKernel {
    const char* name;
    Kernel (*make)();
    Kuv32f offset;  // to the results
};
constexpr NamedKernel kernels[] = {{"shift", shift, 0}, {"blur", blur, 0}, {"streak", streak, 0}, {"sharpen", sharpen, 0}, {"edges", edges, 0.5f}};

struct Border {
    const char* name;
    Kuv32s type;
};
constexpr Border borders[] = {{"clamp", kuvBorderClamp}, {"reflect", kuvBorderReflect}, {"fill", kuvBorderFill}};

// From 0 to 1: a disc and rays on a gradient, and stripes that grow finer.
RealPicture drawnPicture() {
    RealPicture picture({180, 140});
    for (int y = 0; y < picture.size.height; ++y) {
        for (int x = 0; x < picture.size.width; ++x) {
            const double u = x - 66, v = y - 54, angle = std::atan2(v, u), radius = std::hypot(u, v);
            double value = 0.15 + 0.5 * y / picture.size.height;
            if (radius < 54) value = radius < 22 ? 0.95 : std::cos(8 * angle) > 0 ? 0.85 : 0.3;
            if (y >= 112) value = 0.5 + 0.45 * std::sin(2 * std::numbers::pi * x * x / 1200.0);
            if (x >= 138 && y < 112) value = (x / 14 + y / 14) % 2 != 0 ? 0.9 : 0.1;
            picture.at(x, y) = Kuv32f(value);
        }
    }
    return picture;
}

RealPicture filtered(const RealPicture& picture, const Kernel& kernel, Kuv32s borderType) {
    Kuv32s specBytes = 0, bufferBytes = 0;
    check(kuviFilterBorderGetSize(kernel.size, picture.size, kuvDataType32f, kuvDataType32f, 1, &specBytes, &bufferBytes));
    std::vector<Kuv8u> block(specBytes), buffer(bufferBytes);
    auto* const spec = reinterpret_cast<KuviBorderKernel*>(block.data());
    check(kuviFilterBorderInit_32f(kernel.samples.data(), kernel.size, kuvDataType32f, 1, 0, spec));
    RealPicture result(picture.size);
    const Kuv32f black = 0;
    check(kuviFilterBorder_32f_C1R(picture.samples.data(), picture.step(), result.samples.data(), result.step(), picture.size, borderType, &black,
                                   spec, buffer.data()));
    return result;
}

void writePng(const std::string& path, const Picture<Kuv8u>& picture) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.width = png_uint_32(picture.size.width);
    image.height = png_uint_32(picture.size.height);
    image.format = PNG_FORMAT_GRAY;
    if (!png_image_write_to_file(&image, path.c_str(), 0, picture.samples.data(), 0, nullptr)) throw std::runtime_error(path + ": " + image.message);
}

// Those of a list that have the name; all of them if it is empty.
template <class List>
auto chosen(const char* option, const std::string& name, const List& list) {
    std::vector<std::decay_t<decltype(list[0])>> result;
    for (const auto& each : list) {
        if (name.empty() || name == each.name) result.push_back(each);
    }
    if (result.empty()) throw UsageError(std::string(option) + ": there is no " + name);
    return result;
}

void run(const std::string& output, const std::string& kernelName, const std::string& borderName) {
    const auto rows = chosen("--kernel", kernelName, kernels);
    const auto columns = chosen("--border", borderName, borders);
    const RealPicture picture = drawnPicture();
    constexpr int gap = 6;
    const int tileWidth = picture.size.width + gap, tileHeight = picture.size.height + gap;
    Picture<Kuv8u> sheet({tileWidth * int(columns.size()) - gap, tileHeight * int(rows.size()) - gap}, 255);
    for (std::size_t r = 0; r < rows.size(); ++r) {
        const Kernel kernel = rows[r].make();
        for (std::size_t c = 0; c < columns.size(); ++c) {
            RealPicture result = filtered(picture, kernel, columns[c].type);
            for (int y = 0; y < picture.size.height; ++y) {
                for (int x = 0; x < picture.size.width; ++x) {
                    const Kuv32f shown = std::clamp(result.at(x, y) + rows[r].offset, 0.0f, 1.0f);
                    sheet.at(int(c) * tileWidth + x, int(r) * tileHeight + y) = Kuv8u(std::lround(255 * shown));
                }
            }
        }
    }
    writePng(output, sheet);
    std::printf("%zu kernels, %zu border rules: %s, %d x %d\n", rows.size(), columns.size(), output.c_str(), sheet.size.width, sheet.size.height);
}

}  // namespace

int main(int argc, char** argv) {
    return exitCodeOf("filters", [&] {
        std::string output = "filters.png", kernelName, borderName;
        for (int i = 1; i < argc; ++i) {
            const std::string argument = argv[i];
            if (argument == "--help") {
                std::fputs(help, stdout);
                return;
            }
            std::string* const value = argument == "-o" ? &output : argument == "--kernel" ? &kernelName : argument == "--border" ? &borderName : nullptr;
            if (value == nullptr) throw UsageError("there is no option " + argument);
            if (++i == argc || *argv[i] == '\0') throw UsageError(argument + " needs a value");
            *value = argv[i];
        }
        run(output, kernelName, borderName);
    });
}
