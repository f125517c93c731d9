// Shows a picture under some kernels, a row each, and under the three border rules, a column each.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <string>
#include <vector>

#include "../files.hpp"
#include "../program.hpp"

using namespace examples;

namespace {

constexpr char help[] =
    "Usage: filters [OPTIONS]\n"
    "Draws a picture, filters it and writes the results side by side: a row for each kernel, a column for each border rule.\n"
    "  -o FILE          the picture; filters.png unless told\n"
    "  --kernel KERNEL  one row only: shift, blur, streak, sharpen or edges\n"
    "  --border RULE    one column only: clamp, reflect or fill\n"
    "  --help           this text\n";

using RealPicture = Picture<Kuv32f>;
using Kernel = Picture<Kuv32f>;

// A kernel of a function of the distances from its centre; `sum` is what its coefficients are brought to, or 0 for as they are.
template <class Function>
Kernel kernelOf(KuviSize size, Kuv32f sum, Function function) {
    Kernel kernel(size.width, size.height);
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
constexpr NamedKernel kernels[] = {
    {"shift", shift, 0}, {"blur", blur, 0}, {"streak", streak, 0}, {"sharpen", sharpen, 0}, {"edges", edges, 0.5f}};

struct Border {
    const char* name;
    Kuv32s type;
};
constexpr Border borders[] = {{"clamp", kuvBorderClamp}, {"reflect", kuvBorderReflect}, {"fill", kuvBorderFill}};

// From 0 to 1: a disc and rays on a gradient, and stripes that grow finer.
RealPicture drawnPicture() {
    RealPicture picture(180, 140);
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
    RealPicture result(picture.size.width, picture.size.height);
    const Kuv32f black = 0;
    check(kuviFilterBorder_32f_C1R(picture.samples.data(), picture.step, result.samples.data(), result.step, picture.size, borderType,
                                   &black, spec, buffer.data()));
    return result;
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

struct Options {
    std::string output = "filters.png", kernel, border;  // no name: all
    bool help = false;
};

Options parse(int argc, char** argv) {
    Options options;
    parseArguments(argc, argv, nullptr, [&](const std::string& argument, const auto& value) {
        if (argument == "-o") {
            options.output = value();
        } else if (argument == "--kernel") {
            options.kernel = value();
        } else if (argument == "--border") {
            options.border = value();
        } else if (argument == "--help") {
            options.help = true;
        } else {
            return false;
        }
        return true;
    });
    return options;
}

void run(const Options& options) {
    const auto rows = chosen("--kernel", options.kernel, kernels);
    const auto columns = chosen("--border", options.border, borders);
    const RealPicture picture = drawnPicture();
    constexpr int gap = 6;
    const int tileWidth = picture.size.width + gap, tileHeight = picture.size.height + gap;
    Picture<Kuv8u> sheet(tileWidth * int(columns.size()) - gap, tileHeight * int(rows.size()) - gap);
    std::fill(sheet.samples.begin(), sheet.samples.end(), sheet.maximum);
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
    writePicture(options.output, sheet);
    std::printf("%zu kernels, %zu border rules: %s, %d x %d\n", rows.size(), columns.size(), options.output.c_str(), sheet.size.width,
                sheet.size.height);
}

}  // namespace

int main(int argc, char** argv) {
    return exitCodeOf("filters", [&] {
        const Options options = parse(argc, argv);
        if (options.help) std::fputs(help, stdout);
        else run(options);
    });
}
