// The arguments of filters.
#pragma once

#include <cstring>
#include <stdexcept>
#include <vector>

#include "support/images.hpp"

namespace kuvbench {

// An image filtered by a kernel without any order in it.
template <int kernelWidth, int kernelHeight>
struct Filtered {
    static constexpr double bytesPerPixel = 8;
    static constexpr KuviSize kernelSize = {kernelWidth, kernelHeight};

    KuviSize size;
    Image<Kuv32f> src{size}, dst{size}, kernel{kernelSize};
    std::vector<Kuv8u> block, buffer;

    explicit Filtered(KuviSize wanted) : size(wanted) {
        fillWithValues(src, size, 1);
        for (int row = 0; row < size.height; ++row) std::memset(dst.row(row), 0, sizeof(Kuv32f) * size.width);
        fillWithValues(kernel, kernelSize, 2, 0.1f, 1);
        std::vector<Kuv32f> packed;
        for (int row = 0; row < kernelHeight; ++row) packed.insert(packed.end(), kernel.row(row), kernel.row(row) + kernelWidth);
        Kuv32s specBytes = 0, bufferBytes = 0;
        KuvStatus status = kuviFilterBorderGetSize(kernelSize, size, kuvDataType32f, kuvDataType32f, 1, &specBytes, &bufferBytes);
        block.resize(static_cast<std::size_t>(specBytes));
        buffer.resize(static_cast<std::size_t>(bufferBytes));
        if (status == kuvStatusOk) status = kuviFilterBorderInit_32f(packed.data(), kernelSize, kuvDataType32f, 1, 0, kept());
        if (status != kuvStatusOk) throw std::runtime_error("a kernel cannot be kept");
    }

    KuviBorderKernel* kept() { return reinterpret_cast<KuviBorderKernel*>(block.data()); }

    template <class Function>
    auto call(Function* function) {
        return function(src.row(), src.step(), dst.row(), dst.step(), size, kuvBorderClamp, nullptr, kept(), buffer.data());
    }
};

}  // namespace kuvbench
