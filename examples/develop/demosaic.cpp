#include "demosaic.hpp"

#include <algorithm>
#include <atomic>
#include <memory>
#include <new>
#include <thread>
#include <vector>

#include "../program.hpp"
#include "progress.hpp"

using namespace examples;

namespace develop {

// Every row begins on a 64-byte boundary.
struct WorkingLines {
    explicit WorkingLines(int regionWidth) : memory(kuviMalloc_16u_C1(regionWidth + 8, 30, &step)) {
        if (!memory) throw std::bad_alloc();
    }

    struct Free {
        void operator()(Kuv16u* block) const { kuviFree(block); }
    };
    Kuv32s step = 0;
    std::unique_ptr<Kuv16u, Free> memory;
};

namespace {

// Cuts a region into bands of whole rows. A band's result depends on nothing but its place as long as it begins on a row with
// red samples: there the library's central block may begin, so no row near a cut is treated as one at the image's border. For the
// same reason the cuts keep away from the region's own ends.
std::vector<KuviRect> cutIntoBands(KuviRect region, KuvCfaLayout layout, int threads) {
    constexpr int least = 64, most = 256;  // each band computes a few rows of its neighbours anew
    const int rows = std::clamp((region.height + threads - 1) / threads, least, most);
    const int end = region.y + region.height;
    std::vector<KuviRect> bands;
    for (int y = region.y; y < end;) {
        int next = y + rows;
        if ((next & 1) != redRow(layout)) ++next;
        if (next > end - least / 2) next = end;
        bands.push_back({region.x, y, region.width, next - y});
        y = next;
    }
    return bands;
}

// Continues the image by reflection, which the adaptive method reads if a side of the image is exactly 5.
void reflectIntoMargin(Mosaic& mosaic) {
    const int last = mosaic.width - 1;
    for (int y = 0; y < mosaic.height; ++y) {
        Kuv16u* const row = mosaic.row(y);
        row[-1] = row[1];
        row[last + 1] = row[last - 1];
    }
    const auto copyRow = [&](int from, int to) { std::copy_n(mosaic.row(from) - 1, mosaic.width + 2, mosaic.row(to) - 1); };
    copyRow(1, -1);
    copyRow(mosaic.height - 2, mosaic.height);
}

}  // namespace

KuvStatus produceAdaptively(const Mosaic& mosaic, KuviRect region, Kuv16u* dst, int dstStep, const WorkingLines& lines) {
    return kuviDemosaicAHD_16u_C1C3R(mosaic.row(0), region, {mosaic.width, mosaic.height}, mosaic.step(), dst, dstStep,
                                     mosaic.layout, lines.memory.get(), lines.step);
}

KuvStatus produceQuickly(const Mosaic& mosaic, KuviRect region, Kuv16u* dst, int dstStep, const WorkingLines&) {
    return kuviCFAToRGB_16u_C1C3R(mosaic.row(0), region, {mosaic.width, mosaic.height}, mosaic.step(), dst, dstStep,
                                  mosaic.layout, 0);
}

void demosaic(const Method& method, Mosaic& mosaic, KuviRect region, int threads, Picture16u& picture) {
    reflectIntoMargin(mosaic);
    const std::vector<KuviRect> bands = cutIntoBands(region, mosaic.layout, threads);
    const std::size_t workerCount = std::min<std::size_t>(threads, bands.size());

    std::vector<WorkingLines> memory;
    for (std::size_t i = 0; i < workerCount; ++i) memory.emplace_back(region.width);

    Progress progress("demosaic", region.height);
    std::atomic<std::size_t> next = 0;
    std::atomic<KuvStatus> failure = kuvStatusOk;
    const auto work = [&](const WorkingLines& own) {
        for (std::size_t i; (i = next++) < bands.size();) {
            const KuviRect band = bands[i];
            const KuvStatus status = method.produce(mosaic, band, picture.pixel(0, band.y - region.y), picture.step(), own);
            if (status != kuvStatusOk) failure = status;
            progress.advance(band.height);
        }
    };
    std::vector<std::jthread> workers;
    for (std::size_t i = 1; i < workerCount; ++i) workers.emplace_back([&, i] { work(memory[i]); });
    work(memory.front());
    workers.clear();  // waits for them
    check(failure);
}

}  // namespace develop
