#include "demosaic.hpp"

#include <algorithm>
#include <atomic>
#include <memory>
#include <new>
#include <thread>
#include <vector>

#include "errors.hpp"
#include "progress.hpp"

namespace develop {

namespace {

struct Variant {
    const char* name;
    KuvCpuFeatures features;
};

constexpr KuvCpuFeatures forW7 = KUV_CPU_MMX | KUV_CPU_SSE | KUV_CPU_SSE2;
constexpr KuvCpuFeatures forS8 = forW7 | KUV_CPU_SSE3 | KUV_CPU_SSSE3;
constexpr KuvCpuFeatures forP8 = forS8 | KUV_CPU_SSE41 | KUV_CPU_SSE42;
constexpr KuvCpuFeatures forG9 = forP8 | KUV_CPU_AVX;
constexpr Variant variants[] = {
    {"px", KUV_CPU_MMX | KUV_CPU_SSE}, {"w7", forW7}, {"s8", forS8}, {"p8", forP8}, {"g9", forG9}, {"h9", forG9 | KUV_CPU_AVX2},
};

// The lines that a call works on, from the library's allocator, which begins every row on a 64-byte boundary.
template <class T>
struct WorkingLines {
    explicit WorkingLines(int regionWidth) {
        if constexpr (sizeof(T) == 1) {
            lines.reset(kuviMalloc_8u_C1(regionWidth + 8, 30, &step));
        } else {
            lines.reset(kuviMalloc_16u_C1(regionWidth + 8, 30, &step));
        }
        if (!lines) throw std::bad_alloc();
    }

    struct Free {
        void operator()(void* block) const { kuviFree(block); }
    };
    std::unique_ptr<T, Free> lines;
    Kuv32s step = 0;
};

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

}  // namespace

void selectVariant(const std::string& name) {
    if (name == "auto") {
        kuvInit();  // its status only tells the processor's vendor
        return;
    }
    const auto variant = std::find_if(std::begin(variants), std::end(variants), [&](const Variant& v) { return name == v.name; });
    if (variant == std::end(variants)) throw UsageError("--variant: '" + name + "' is none of px, w7, s8, p8, g9, h9, auto");
    if (kuvSetCpuFeatures(variant->features) != kuvStatusOk)
        throw UsageError("--variant: this processor cannot run variant " + name);
}

template <class T>
Plane<T> toPlane(const Mosaic& mosaic) {
    Plane<T> plane(mosaic.width, mosaic.height);
    const int last = mosaic.width - 1;
    for (int y = 0; y < mosaic.height; ++y) {
        T* const row = plane.row(y);
        std::transform(mosaic.row(y), mosaic.row(y) + mosaic.width, row,
                       [](std::uint32_t sample) { return T((sample * fullScale<T> + 32767u) / 65535u); });
        row[-1] = row[1];
        row[last + 1] = row[last - 1];
    }
    const auto copyRow = [&](int from, int to) { std::copy_n(plane.row(from) - 1, mosaic.width + 2, plane.row(to) - 1); };
    copyRow(1, -1);
    copyRow(mosaic.height - 2, mosaic.height);
    return plane;
}

template <class T>
void demosaic(const Method& method, const Plane<T>& plane, KuvCfaLayout layout, KuviRect region, int threads,
              Picture<T>& picture) {
    const std::vector<KuviRect> bands = cutIntoBands(region, layout, threads);
    const std::size_t workerCount = std::min<std::size_t>(threads, bands.size());

    std::vector<WorkingLines<T>> memory;
    for (std::size_t i = 0; i < workerCount; ++i) memory.emplace_back(region.width);

    const DemosaicFunction<T> call = method.function<T>();
    Progress progress("demosaic", region.height);
    std::atomic<std::size_t> next = 0;
    std::atomic<KuvStatus> failure = kuvStatusOk;
    const auto work = [&](WorkingLines<T>& own) {
        for (std::size_t i; (i = next++) < bands.size();) {
            const KuviRect band = bands[i];
            const KuvStatus status = call(plane.row(0), band, {plane.width, plane.height}, plane.step(),
                                          picture.pixel(0, band.y - region.y), picture.step(), layout, own.lines.get(), own.step);
            if (status != kuvStatusOk) failure = status;
            progress.advance(band.height);
        }
    };
    std::vector<std::jthread> workers;
    for (std::size_t i = 1; i < workerCount; ++i) workers.emplace_back([&, i] { work(memory[i]); });
    work(memory.front());
    workers.clear();  // waits for them

    if (failure != kuvStatusOk) throw std::runtime_error("the library refused the mosaic with status " + std::to_string(failure));
}

template Plane<Kuv8u> toPlane(const Mosaic&);
template Plane<Kuv16u> toPlane(const Mosaic&);
template void demosaic(const Method&, const Plane<Kuv8u>&, KuvCfaLayout, KuviRect, int, Picture<Kuv8u>&);
template void demosaic(const Method&, const Plane<Kuv16u>&, KuvCfaLayout, KuviRect, int, Picture<Kuv16u>&);

}  // namespace develop
