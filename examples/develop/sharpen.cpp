#include "sharpen.hpp"

#include <algorithm>
#include <vector>

#include "../program.hpp"

using namespace examples;

namespace develop {

namespace {

constexpr KuviSize kernelSize = {5, 5};

// In parts of 32, so that sums of 16-bit samples are exact in single precision, whatever their order.
constexpr int parts[5][5] = {
    {0, 0, -1, 0, 0}, {0, -1, -2, -1, 0}, {-1, -2, 48, -2, -1}, {0, -1, -2, -1, 0}, {0, 0, -1, 0, 0}};

// The kernel and the memory for images of one size.
class Sharpening {
  public:
    explicit Sharpening(KuviSize size) : size_(size) {
        Kuv32s specBytes, bufferBytes;
        check(kuviFilterBorderGetSize(kernelSize, size, kuvDataType32f, kuvDataType32f, 1, &specBytes, &bufferBytes));
        block_.resize(specBytes);
        buffer_.resize(bufferBytes);
        std::vector<Kuv32f> kernel;
        for (const auto& row : parts)
            for (const int each : row) kernel.push_back(Kuv32f(each) / 32);
        check(kuviFilterBorderInit_32f(kernel.data(), kernelSize, kuvDataType32f, 1, 0, spec()));
    }

    void apply(const std::vector<Kuv32f>& src, std::vector<Kuv32f>& dst) {
        const Kuv32s step = size_.width * Kuv32s(sizeof(Kuv32f));
        check(kuviFilterBorder_32f_C1R(src.data(), step, dst.data(), step, size_, kuvBorderReflect, nullptr, spec(), buffer_.data()));
    }

  private:
    KuviBorderKernel* spec() { return reinterpret_cast<KuviBorderKernel*>(block_.data()); }

    KuviSize size_;
    std::vector<char> block_;
    std::vector<Kuv8u> buffer_;
};

}  // namespace

void sharpen(Picture16u& picture) {
    const KuviSize size = {picture.width, picture.height};
    const std::size_t pixels = std::size_t(size.width) * size.height;
    Sharpening sharpening(size);
    std::vector<Kuv16u> plane(pixels);
    std::vector<Kuv32f> src(pixels), dst(pixels);
    for (const Colour colour : {red, green, blue}) {
        for (std::size_t i = 0; i < pixels; ++i) plane[i] = picture.samples[3 * i + colour];
        check(kuviConvert_16u32f_C1R(plane.data(), size.width * Kuv32s(sizeof(Kuv16u)), src.data(), size.width * Kuv32s(sizeof(Kuv32f)),
                                     size));
        sharpening.apply(src, dst);
        for (std::size_t i = 0; i < pixels; ++i) picture.samples[3 * i + colour] = Kuv16u(std::clamp(dst[i], 0.0f, 65535.0f) + 0.5f);
    }
}

}  // namespace develop
