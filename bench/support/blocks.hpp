// Calls on 8x8 blocks.
#pragma once

#include <cstring>

#include "support/images.hpp"

namespace kuvbench {

// An image's worth of blocks one after the other, of samples from -range / 2 on. Each is copied to where it is then transformed, as a
// codec would decode it there.
template <int range>
struct Blocks {
    static constexpr double bytesPerPixel = 4;

    KuviSize size;
    int count = (size.width * size.height + 63) / 64;
    Image<Kuv16s> src{{64, count}}, dst{{64, count}};

    explicit Blocks(KuviSize wanted) : size(wanted) { fillWithValues(src, {64, count}, 1, -range / 2, range / 2 - 1); }

    template <class Work>
    void eachBlock(Work work) {
        for (int i = 0; i < count; ++i) work(src.row(i), dst.row(i));
    }

    auto call(decltype(kuviDCT8x8Fwd_16s_C1I)* function) {
        KuvStatus status = kuvStatusOk;
        eachBlock([&](const Kuv16s* from, Kuv16s* to) {
            std::memcpy(to, from, 128);
            status = function(to);
        });
        return status;
    }
    auto call(decltype(kuviZigzagInv8x8_16s_C1)* function) {
        KuvStatus status = kuvStatusOk;
        eachBlock([&](const Kuv16s* from, Kuv16s* to) { status = function(from, to); });
        return status;
    }
};

}  // namespace kuvbench
