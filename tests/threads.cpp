// Calls in several threads while another one switches the variant.
#include <atomic>
#include <thread>
#include <vector>

#include "support/calls.hpp"
#include "support/variants.hpp"

namespace {

TEST(Threads, CallWhileAnotherSwitchesTheVariant) {
    const kuvtest::ProcessState state;
    std::vector<KuvCpuFeatures> masks;
    for (const kuvtest::Variant& each : kuvtest::variants) {
        if (each.canRun()) masks.push_back(each.mask());
    }

    std::atomic<bool> done{false};
    std::atomic<int> wrong{0};
    std::atomic<unsigned> seen{0};  // variants, a bit each
    std::vector<std::thread> callers;
    for (int t = 0; t < 4; ++t) {
        callers.emplace_back([&, t] {
            constexpr int width = 37, height = 3;
            std::vector<float> src(width * height), srcDst(width * height);
            Kuv8u mosaic[64], pixels[8 * 8 * 3], tmp[30 * 14];
            for (Kuv8u& each : mosaic) each = static_cast<Kuv8u>(40 + t);
            while (!done) {
                for (int i = 0; i < width * height; ++i) {
                    src[static_cast<std::size_t>(i)] = static_cast<float>(i + t);
                    srcDst[static_cast<std::size_t>(i)] = static_cast<float>(2 * i);
                }
                if (kuviAdd_32f_C1IR(src.data(), width * 4, srcDst.data(), width * 4, {width, height}) != kuvStatusOk) ++wrong;
                for (int i = 0; i < width * height; ++i) {
                    if (srcDst[static_cast<std::size_t>(i)] != static_cast<float>(3 * i + t)) ++wrong;
                }
                if (kuviDemosaicAHD_8u_C1C3R(mosaic, {0, 0, 8, 8}, {8, 8}, 8, pixels, 24, t, tmp, 14) != kuvStatusOk) ++wrong;
                for (const Kuv8u each : pixels) {
                    if (each != 40 + t) ++wrong;
                }
                const KuvLibraryVersion* const record = kuvcvGetLibVersion();
                for (const kuvtest::Variant& each : kuvtest::variants) {
                    if (std::string(each.code) == record->variantCode) seen |= 1u << each.index;
                }
            }
        });
    }
    const int count = kuvtest::rounds(20000);
    for (int i = 0; i < count; ++i) {
        kuvSetCpuFeatures(masks[static_cast<std::size_t>(i) % masks.size()]);
        if (i % 7 == 0) kuvInit();
        if (i % 16 == 0) std::this_thread::yield();
    }
    done = true;
    for (std::thread& each : callers) each.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(seen & ~0x3Fu, 0u);
}

}  // namespace
