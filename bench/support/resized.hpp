// The arguments of calls that resize an image.
#pragma once

#include <stdexcept>
#include <vector>

#include "support/images.hpp"

namespace kuvbench {

// A whole picture, or a band of it. Source and destination have the wanted size and so many percent of it, whichever of them is larger
// the wanted one.
template <int percent>
struct Resized {
    static constexpr double ratio = percent < 100 ? percent / 100.0 : 100.0 / percent;
    static constexpr double bytesPerPixel = 6 * (1 + ratio * ratio);

    KuviSize size, srcSize, dstSize;
    Image<Kuv16s> src{srcSize, 3}, dst{dstSize, 3};
    std::vector<Kuv8u> plan, buffers[2];

    explicit Resized(KuviSize wanted)
        : size(wanted), srcSize(percent < 100 ? wanted : smaller(wanted)), dstSize(percent < 100 ? smaller(wanted) : wanted) {
        fillWithValues(src, {3 * srcSize.width, srcSize.height}, 1, 0, 30000);
        Kuv32s planBytes = 0, initBytes = 0, bufferBytes = 0;
        KuvStatus status = kuviResizeGetSize_16s(srcSize, dstSize, kuvResizeLinear, 0, &planBytes, &initBytes);
        plan.resize(static_cast<std::size_t>(planBytes));
        if (status == kuvStatusOk) status = kuviResizeLinearInit_16s(srcSize, dstSize, plan.data());
        if (status == kuvStatusOk) status = kuviResizeGetBufferSize_16s(plan.data(), dstSize, 3, &bufferBytes);
        if (status != kuvStatusOk) throw std::runtime_error("a resize plan cannot be made");
        for (auto& each : buffers) each.resize(static_cast<std::size_t>(bufferBytes));
    }

    template <class Function>
    auto call(Function* function) {
        return callRows(function, 0, dstSize.height, buffers[0]);
    }

    template <class Function>
    auto callBand(Function* function, int band, int bands) {
        return callRows(function, dstSize.height * band / bands, dstSize.height * (band + 1) / bands, buffers[band]);
    }

private:
    static constexpr KuviSize smaller(KuviSize of) {
        const auto part = [](int extent) { return static_cast<int>(extent * ratio + 0.5); };
        return {part(of.width), part(of.height)};
    }

    template <class Function>
    auto callRows(Function* function, int first, int end, std::vector<Kuv8u>& buffer) {
        const auto from = static_cast<int>(Kuv64s{first} * srcSize.height / dstSize.height);
        return function(src.row(from), src.step(), dst.row(first), dst.step(), {0, first}, {dstSize.width, end - first}, kuvBorderClamp,
                        nullptr, plan.data(), buffer.data());
    }
};

}  // namespace kuvbench
