#include "resize.hpp"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <memory>
#include <new>
#include <thread>
#include <utility>
#include <vector>

#include "../program.hpp"
#include "progress.hpp"

using namespace examples;

namespace develop {

namespace {

struct Free {
    void operator()(Kuv8u* block) const { kuvFree(block); }
};
using Block = std::unique_ptr<Kuv8u, Free>;

Block allocate(Kuv32s bytes) {
    Block block(static_cast<Kuv8u*>(kuvMalloc(bytes)));
    if (!block) throw std::bad_alloc();
    return block;
}

// Samples are unsigned and the library's signed: less 32768 they fit, in the same order and at the same distances.
void shiftByHalf(Kuv16u* samples, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) samples[i] ^= 0x8000;
}

Block makePlan(KuviSize from, KuviSize to) {
    Kuv32s bytes, initBytes;
    check(kuviResizeGetSize_16s(from, to, kuvResizeLinear, 0, &bytes, &initBytes));
    Block plan = allocate(bytes);
    check(kuviResizeLinearInit_16s(from, to, plan.get()));
    return plan;
}

std::vector<KuviRect> cutIntoTiles(KuviSize size) {
    constexpr int width = 1024, height = 64;
    std::vector<KuviRect> tiles;
    for (int y = 0; y < size.height; y += height)
        for (int x = 0; x < size.width; x += width)
            tiles.push_back({x, y, std::min(width, size.width - x), std::min(height, size.height - y)});
    return tiles;
}

}  // namespace

void resize(Picture16u& picture, KuviSize size, int threads) {
    const KuviSize from = {picture.width, picture.height};
    Picture16u result(size.width, size.height);
    const Block plan = makePlan(from, size);
    const std::vector<KuviRect> tiles = cutIntoTiles(size);
    const std::size_t workerCount = std::min<std::size_t>(threads, tiles.size());

    // The first tile is as large as any.
    Kuv32s bytes;
    check(kuviResizeGetBufferSize_16s(plan.get(), {tiles[0].width, tiles[0].height}, 3, &bytes));
    std::vector<Block> buffers;
    for (std::size_t i = 0; i < workerCount; ++i) buffers.push_back(allocate(bytes));

    shiftByHalf(picture.samples.data(), picture.samples.size());
    Progress progress("resize", std::int64_t(size.width) * size.height);
    std::atomic<std::size_t> next = 0;
    std::atomic<KuvStatus> failure = kuvStatusOk;
    const auto work = [&](Kuv8u* buffer) {
        for (std::size_t i; (i = next++) < tiles.size();) {
            const auto [x, y, width, height] = tiles[i];
            const int fromX = int(std::int64_t(x) * from.width / size.width), fromY = int(std::int64_t(y) * from.height / size.height);
            const KuvStatus status = kuviResizeLinear_16s_C3R(
                reinterpret_cast<const Kuv16s*>(picture.pixel(fromX, fromY)), picture.step(), reinterpret_cast<Kuv16s*>(result.pixel(x, y)),
                result.step(), {x, y}, {width, height}, kuvBorderClamp, nullptr, plan.get(), buffer);
            if (status != kuvStatusOk) failure = status;
            for (int row = y; row < y + height; ++row) shiftByHalf(result.pixel(x, row), 3 * std::size_t(width));
            progress.advance(std::int64_t(width) * height);
        }
    };
    std::vector<std::jthread> workers;
    for (std::size_t i = 1; i < workerCount; ++i) workers.emplace_back([&, i] { work(buffers[i].get()); });
    work(buffers.front().get());
    workers.clear();  // waits for them
    check(failure);
    picture = std::move(result);
}

}  // namespace develop
