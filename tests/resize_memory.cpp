// Where resized tiles read and write: every address and every step.

#include "support/distant.hpp"
#include "support/resize_tiles.hpp"

namespace {

using namespace kuvtest;

using ResizeMemory = Resize;
KUV_FOR_EACH_VARIANT(ResizeMemory);

TEST_P(ResizeMemory, EveryAlignment) {
    for (int gap = 0; gap < 70 && !HasFailure(); ++gap) {
        for (const Guard guard : {Guard::end, Guard::begin}) {
            for (const auto& [src, dst] : {std::pair<KuviSize, KuviSize>{{23, 9}, {37, 17}}, {{37, 17}, {23, 9}}, {{34, 9}, {17, 5}}}) {
                const PlanBlock plan(src, dst, guard, gap);
                expectTile(plan, anyScene(), {{0, 0}, dst}, {.src = guard, .srcGap = gap});
                expectTile(plan, anyScene(), {{0, 0}, dst}, {.dst = guard, .dstGap = gap});
                expectTile(plan, anyScene(), {{0, 0}, dst}, {.buffer = guard, .bufferGap = gap});
            }
        }
    }
}

TEST_P(ResizeMemory, AnyStep) {
    const int count = rounds(300);
    for (int i = 0; i < count && !HasFailure(); ++i) {
        const KuviSize src = {between(random_, 2, 60), between(random_, 2, 9)}, dst = {between(random_, 1, 60), between(random_, 1, 9)};
        expectTile(PlanBlock(src, dst), anyScene(), {{0, 0}, dst}, anyPlaces());
    }
}

// All source rows are one, and so are all destination rows then.
TEST_P(ResizeMemory, StepsOfZero) {
    const KuviSize srcSize = {31, 9}, dstSize = {45, 14};
    const PlanBlock plan(srcSize, dstSize);
    const Scene scene;
    const Image row("row", pixelRows(srcSize.width, 1), 1), image("image", pixelRows(srcSize.width, srcSize.height), 1);
    paint(row, scene);
    for (int y = 0; y < srcSize.height; ++y) std::memcpy(image.row(y), row.row(), static_cast<std::size_t>(6 * srcSize.width));
    const Image whole("whole", pixelRows(dstSize.width, dstSize.height), 2), same("same", pixelRows(dstSize.width, dstSize.height), 2);
    const Image last("last", pixelRows(dstSize.width, 1), 3);
    std::vector<Kuv8u> buffer(static_cast<std::size_t>(plan.bufferBytes(dstSize)));
    const auto run = [&](const Image& src, Kuv32s srcStep, const Image& dst, Kuv32s dstStep) {
        EXPECT_EQ(watched([&] {
                      return kuviResizeLinear_16s_C3R(src.row<Kuv16s>(), srcStep, dst.row<Kuv16s>(), dstStep, {0, 0}, dstSize, 1, nullptr,
                                                      plan.get(), buffer.data());
                  }),
                  kuvStatusOk);
    };
    run(image, image.step(), whole, whole.step());
    run(row, 0, same, same.step());
    EXPECT_EQ(same.difference(whole.bytes()), "");
    run(row, 0, last, 0);
    Bytes wanted = last.bytes();
    std::memcpy(last.row(wanted, 0), whole.row(dstSize.height - 1), static_cast<std::size_t>(6 * dstSize.width));
    EXPECT_EQ(last.difference(wanted), "");
}

// Rows that lie further apart than 32 bits tell, upward too, of the source and of the destination.
TEST_P(ResizeMemory, DistantRows) {
    if (sanitized) GTEST_SKIP() << "needs too much address space";
    const KuviSize srcSize = {19, 4}, dstSize = {27, 6};
    const PlanBlock plan(srcSize, dstSize);
    const Scene scene;
    const ResizeReference reference(plan, scene, {{0, 0}, dstSize}, arithmeticOf(GetParam()));
    constexpr std::ptrdiff_t step = 0x7FFFFF00;
    const DistantMemory srcMemory(static_cast<std::size_t>(step) * 4), dstMemory(static_cast<std::size_t>(step) * 6);
    KUV_NEEDS(srcMemory);
    KUV_NEEDS(dstMemory);
    std::vector<Kuv8u> buffer(static_cast<std::size_t>(plan.bufferBytes(dstSize)));
    for (const bool upward : {false, true}) {
        const std::ptrdiff_t signedStep = upward ? -step : step;
        char* const src = srcMemory.memory() + (upward ? 3 * step : 0);
        char* const dst = dstMemory.memory() + (upward ? 5 * step : 0);
        for (int y = 0; y < srcSize.height; ++y) {
            for (int i = 0; i < 3 * srcSize.width; ++i) store(src + y * signedStep, i, scene(i / 3, y, i % 3));
        }
        EXPECT_EQ(watched([&] {
                      return kuviResizeLinear_16s_C3R(reinterpret_cast<const Kuv16s*>(src), static_cast<Kuv32s>(signedStep),
                                                      reinterpret_cast<Kuv16s*>(dst), static_cast<Kuv32s>(signedStep), {0, 0}, dstSize, 1,
                                                      nullptr, plan.get(), buffer.data());
                  }),
                  kuvStatusOk);
        for (int y = 0; y < dstSize.height; ++y) {
            for (int i = 0; i < 3 * dstSize.width; ++i) {
                ASSERT_EQ(load<Kuv16s>(dst + y * signedStep, i), reference.sample(i / 3, y, i % 3)) << GetParam() << ", row " << y;
            }
        }
    }
}

// Columns that lie further apart than 32 bits tell: of a row of gigabytes some pixels are looked at.
TEST_P(ResizeMemory, DistantColumns) {
    if (sanitized) GTEST_SKIP() << "needs too much address space";
    for (const Kuv32s srcWidth : {400000000, 2147483647}) {
        for (const Kuv32s dstWidth : {1, 2, 5, 40}) {
            const KuviSize srcSize = {srcWidth, 2}, dstSize = {dstWidth, 1};
            const PlanBlock plan(srcSize, dstSize);
            const DistantMemory row(static_cast<std::size_t>(srcWidth) * 6);
            KUV_NEEDS(row);
            const Scene scene;
            const AxisWords columns = plan.horizontal();
            for (int i = 0; i < dstWidth; ++i) {
                for (int k = 0; k < 6; ++k) {
                    const std::int64_t x = plan.position(columns, i);
                    store(row.memory(), 3 * x + k, scene(x + k / 3, 0, k % 3));
                }
            }
            const Image dst("dst", pixelRows(dstWidth, 1), 1);
            std::vector<Kuv8u> buffer(static_cast<std::size_t>(plan.bufferBytes(dstSize)));
            EXPECT_EQ(watched([&] {
                          return kuviResizeLinear_16s_C3R(reinterpret_cast<const Kuv16s*>(row.memory()), 0, dst.row<Kuv16s>(), dst.step(),
                                                          {0, 0}, dstSize, 1, nullptr, plan.get(), buffer.data());
                      }),
                      kuvStatusOk);
            for (int i = 0; i < dstWidth; ++i) {
                for (int c = 0; c < 3; ++c) {
                    const std::int64_t x = plan.position(columns, i);
                    const float a = scene(x, 0, c), b = scene(x + 1, 0, c);
                    const double between = a + (static_cast<double>(b) - a) * plan.fraction(columns, i);
                    ASSERT_NEAR(load<Kuv16s>(dst.row(), 3 * i + c), between, 0.51) << GetParam() << ", " << srcWidth << " to " << dstWidth;
                }
            }
        }
    }
}

// A tile far inside of an image that never was in memory as a whole.
TEST_P(ResizeMemory, TileOfAGiant) {
    if (sanitized) GTEST_SKIP() << "takes long";
    const KuviSize src = {70000, 2000000}, dst = {90000, 3000000};
    const PlanBlock plan(src, dst);
    for (const KuviPoint offset : {KuviPoint{0, 0}, {88888, 2999990}, {77777, 1234567}, {89990, 5}}) {
        expectTile(plan, Scene{9, Scene::noise}, {offset, {10, 10}});
        expectTile(plan, Scene{9, Scene::noise}, {offset, {10, 10}, 240});
    }
}

}  // namespace
