// Channels of interleaved pixels reordered.
#include <algorithm>
#include <array>

#include "support/agreement.hpp"
#include "support/aliased.hpp"
#include "support/distant.hpp"
#include "support/statuses.hpp"

namespace {

using namespace kuvtest;

// (pointer): a table of that many entries and nothing around it.
template <int entries>
struct Order {
    std::tuple<const Kuv32s*> operator()(Draw& draw) const {
        const Image& table = draw.image<Kuv32s>(Role::source, entries, 1, 0);
        for (int c = 0; c < entries; ++c) store(table.row(), c, Kuv32s{below(draw.random, entries)});
        return {table.row<const Kuv32s>()};
    }
};

constexpr Kuv32s badThree[][3] = {{3, 0, 0},  {0, 3, 1},         {2, 1, 3},   {-1, 0, 0},
                                  {0, -1, 2}, {0, 1, INT32_MIN}, {0, 256, 0}, {INT32_MAX, 0, 0}};
constexpr Kuv32s badFour[][4] = {{4, 0, 0, 0},  {0, 4, 0, 0},  {0, 0, 4, 0},         {3, 2, 1, 4},
                                 {-1, 0, 0, 0}, {0, 1, 2, -1}, {0, 0, INT32_MIN, 0}, {0, 0, 0, 256}};

template <int argument, class Table>
constexpr auto badOrders(const Table& bad) {
    return check(kuvStatusBadChannelOrder, set<argument>(&bad[0][0]), set<argument>(&bad[1][0]), set<argument>(&bad[2][0]),
                 set<argument>(&bad[3][0]), set<argument>(&bad[4][0]), set<argument>(&bad[5][0]), set<argument>(&bad[6][0]),
                 set<argument>(&bad[7][0]));
}

#define BETWEEN_IMAGES(T, Destination, channelCount, omittedSamples)                          \
    Source<T>{.channels = channelCount, .omitted = omittedSamples, .steps = StepClass::D},    \
        Destination<T>{.channels = channelCount, .omitted = omittedSamples, .steps = StepClass::D}, RoiSize{}, Order<3>{}
#define STEPS_BEFORE_SIZE(function, ...)                                                      \
    KUV_AGREES(function, __VA_ARGS__);                                                        \
    KUV_CHECKS(function, call(__VA_ARGS__), check(kuvStatusNullPtr, null<0>(), null<2>()),    \
               check(kuvStatusBadStep, set<1>(0), set<3>(0)), badSize<4>(), check(kuvStatusNullPtr, null<5>()), badOrders<5>(badThree))
STEPS_BEFORE_SIZE(kuviSwapChannels_16u_C3R, BETWEEN_IMAGES(Kuv16u, Output, 3, 0));
STEPS_BEFORE_SIZE(kuviSwapChannels_8u_AC4R, BETWEEN_IMAGES(Kuv8u, InOut, 4, 1));
STEPS_BEFORE_SIZE(kuviSwapChannels_16u_AC4R, BETWEEN_IMAGES(Kuv16u, InOut, 4, 1));

KUV_AGREES(kuviSwapChannels_8u_C3R, BETWEEN_IMAGES(Kuv8u, Output, 3, 0));
KUV_CHECKS(kuviSwapChannels_8u_C3R, call(BETWEEN_IMAGES(Kuv8u, Output, 3, 0)), check(kuvStatusNullPtr, null<0>(), null<2>(), null<5>()),
           badSize<4>(), check(kuvStatusBadStep, set<1>(0), set<3>(0)), badOrders<5>(badThree));

#define THREE_IN_PLACE InOut<Kuv8u>{.channels = 3, .steps = StepClass::D}, RoiSize{}, Order<3>{}
KUV_AGREES(kuviSwapChannels_8u_C3IR, THREE_IN_PLACE);
KUV_CHECKS(kuviSwapChannels_8u_C3IR, call(THREE_IN_PLACE), check(kuvStatusNullPtr, null<0>()), check(kuvStatusBadStep, set<1>(0)),
           badSize<2>(), check(kuvStatusNullPtr, null<3>()), badOrders<3>(badThree));

#define FOUR_IN_PLACE InOut<Kuv8u>{.channels = 4, .steps = StepClass::D}, RoiSize{}, Order<4>{}
KUV_AGREES(kuviSwapChannels_8u_C4IR, FOUR_IN_PLACE);
KUV_CHECKS(kuviSwapChannels_8u_C4IR, call(FOUR_IN_PLACE), check(kuvStatusNullPtr, null<0>(), null<3>()),
           check(kuvStatusBadStep, set<1>(0)), badSize<2>(), badOrders<3>(badFour));

struct Swap {
    const char* name;
    int sampleBytes, samples, colours;
    bool inPlace;
    KuvStatus (*call)(const void* src, Kuv32s srcStep, void* dst, Kuv32s dstStep, KuviSize size, const Kuv32s* order);

    int pixelBytes() const { return samples * sampleBytes; }
    // What a row of the image must have as memory: not its last alpha.
    int rowBytes(int width) const { return width * pixelBytes() - (samples - colours) * sampleBytes; }
    int orders() const { return colours == 3 ? 27 : 256; }
    std::array<Kuv32s, 4> order(int number) const {
        std::array<Kuv32s, 4> entries = {};
        for (int c = 0; c < colours; ++c, number /= colours) entries[static_cast<std::size_t>(c)] = number % colours;
        return entries;
    }
};

#define BETWEEN(function, T, samples)                                                                                             \
    {#function, sizeof(T), samples, 3, false,                                                                                     \
     [](const void* src, Kuv32s srcStep, void* dst, Kuv32s dstStep, KuviSize size, const Kuv32s* order) {                         \
         return function(static_cast<const T*>(src), srcStep, static_cast<T*>(dst), dstStep, size, order);                        \
     }}
#define IN_PLACE(function, samples)                                                                                               \
    {#function, 1, samples, samples, true,                                                                                        \
     [](const void*, Kuv32s, void* dst, Kuv32s dstStep, KuviSize size, const Kuv32s* order) {                                     \
         return function(static_cast<Kuv8u*>(dst), dstStep, size, order);                                                         \
     }}
constexpr Swap swaps[] = {BETWEEN(kuviSwapChannels_8u_C3R, Kuv8u, 3),   BETWEEN(kuviSwapChannels_16u_C3R, Kuv16u, 3),
                          BETWEEN(kuviSwapChannels_8u_AC4R, Kuv8u, 4),  BETWEEN(kuviSwapChannels_16u_AC4R, Kuv16u, 4),
                          IN_PLACE(kuviSwapChannels_8u_C3IR, 3),        IN_PLACE(kuviSwapChannels_8u_C4IR, 4)};

class SwapChannels : public VariantTest {
protected:
    // As the text says, pixel by pixel and row after row.
    static void swapRow(const Swap& swap, const unsigned char* src, unsigned char* dst, int width, const std::array<Kuv32s, 4>& order) {
        const auto sampleBytes = static_cast<std::size_t>(swap.sampleBytes);
        for (int i = 0; i < width; ++i, src += swap.pixelBytes(), dst += swap.pixelBytes()) {
            unsigned char pixel[8];
            std::memcpy(pixel, src, static_cast<std::size_t>(swap.colours) * sampleBytes);
            for (int c = 0; c < swap.colours; ++c) {
                std::memcpy(dst + c * swap.sampleBytes, pixel + order[static_cast<std::size_t>(c)] * swap.sampleBytes, sampleBytes);
            }
        }
    }

    void expectSwap(const Swap& swap, KuviSize size, int number, std::ptrdiff_t srcStep, std::ptrdiff_t dstStep, Guard guard = Guard::end,
                    int srcGap = 0, int dstGap = 0) {
        const Image src("src", {swap.rowBytes(size.width), size.height, srcStep, guard, srcGap, swap.sampleBytes}, random_());
        const Image dst("dst", {swap.rowBytes(size.width), size.height, dstStep, guard, dstGap, swap.sampleBytes}, random_());
        expectSwap(swap, size, number, src, srcStep, dst, swap.inPlace);
    }

    void expectSwap(const Swap& swap, KuviSize size, int number, const Image& src, std::ptrdiff_t srcStep, const Image& dst, bool inPlace) {
        const auto order = swap.order(number);
        const Image entries("dstOrder", {swap.colours * 4, 1, 0, oneIn(random_, 2) ? Guard::end : Guard::begin, 0, 4}, 1);
        std::memcpy(entries.row(), order.data(), static_cast<std::size_t>(swap.colours) * 4);
        const Bytes srcBefore = src.bytes(), entriesBefore = entries.bytes();
        Bytes wanted = dst.bytes();
        for (int r = 0; r < size.height; ++r) {
            swapRow(swap, inPlace ? dst.row(wanted, r) : src.row(r), dst.row(wanted, r), size.width, order);
        }
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << swap.name << ", " << size.width << " x " << size.height << ", order {"
                                        << order[0] << ", " << order[1] << ", " << order[2] << ", " << order[3]
                                        << "}\n  src: " << src.geometry() << "\n  dst: " << dst.geometry());
        EXPECT_EQ(watched([&] {
                      return swap.call(src.row(), static_cast<Kuv32s>(srcStep), dst.row(), dst.step(), size, entries.row<const Kuv32s>());
                  }), kuvStatusOk);
        EXPECT_EQ(dst.difference(wanted), "");
        if (&src != &dst) {
            EXPECT_EQ(src.difference(srcBefore), "");
        }
        EXPECT_EQ(entries.difference(entriesBefore), "");
    }

    int anyOrder(const Swap& swap) { return below(random_, swap.orders()); }

    Random random_{1};
};

KUV_FOR_EACH_VARIANT(SwapChannels);

// To past three of the largest blocks, each against the unmapped page on both sides, and to past the length from which on writes are
// aligned.
TEST_P(SwapChannels, EveryWidth) {
    for (const Swap& swap : swaps) {
        for (int width = 1; width <= 110; ++width) {
            const int row = swap.rowBytes(width);
            for (const Guard guard : {Guard::end, Guard::begin}) {
                expectSwap(swap, {width, 1}, anyOrder(swap), row, row, guard);
                expectSwap(swap, {width, 3}, anyOrder(swap), row + 1, row + 5, guard);
                expectSwap(swap, {width, 2}, anyOrder(swap), width * swap.pixelBytes(), width * swap.pixelBytes(), guard);
            }
            if (HasFailure()) return;
        }
        for (int width = 111; width <= 340; ++width) {
            expectSwap(swap, {width, 2}, anyOrder(swap), swap.rowBytes(width), swap.rowBytes(width) + 3);
        }
        for (const int width : {1000, 4099, 30001}) {
            expectSwap(swap, {width, 2}, anyOrder(swap), swap.rowBytes(width), swap.rowBytes(width) + 3);
        }
    }
}

TEST_P(SwapChannels, EveryOrder) {
    for (const Swap& swap : swaps) {
        for (int number = 0; number < swap.orders(); ++number) {
            for (const int width : {1, 2, 10, 21, 45, 71}) {
                expectSwap(swap, {width, 2}, number, swap.rowBytes(width) + 3, swap.rowBytes(width) + 2);
            }
            if (HasFailure()) return;
        }
    }
}

TEST_P(SwapChannels, EveryAlignment) {
    for (const Swap& swap : swaps) {
        for (int dstGap = 0; dstGap < 65; ++dstGap) {
            for (const int srcGap : {0, 1, 16, 31, dstGap}) {
                for (const int width : {1, 9, 40, 80, 333}) {
                    const int row = swap.rowBytes(width) + 64;
                    expectSwap(swap, {width, 2}, anyOrder(swap), row, row, Guard::begin, srcGap, dstGap);
                }
            }
            if (HasFailure()) return;
        }
    }
}

// Any but 0: rows that overlap are done one after the other.
TEST_P(SwapChannels, AnyStep) {
    for (const Swap& swap : swaps) {
        for (const int width : {1, 2, 9, 17, 40, 75}) {
            const int row = width * swap.pixelBytes();
            const std::ptrdiff_t steps[] = {row, row + 1, row + 64, 1, 3, row - 1, row / 2 + 1, -1, -row / 2 - 1, -row + 1, -row, -row - 5};
            for (const std::ptrdiff_t srcStep : steps) {
                for (const std::ptrdiff_t dstStep : steps) {
                    expectSwap(swap, {width, 5}, anyOrder(swap), srcStep, dstStep, oneIn(random_, 2) ? Guard::end : Guard::begin);
                    if (HasFailure()) return;
                    if (swap.inPlace) break;
                }
            }
            if (!swap.inPlace) continue;
            for (const std::ptrdiff_t step : steps) expectSwap(swap, {width, 5}, anyOrder(swap), step, step);
        }
    }
}

TEST_P(SwapChannels, OntoItself) {
    for (const Swap& swap : swaps) {
        for (int width = 1; width <= 333; width += width < 80 ? 1 : 23) {
            const int row = width * swap.pixelBytes();
            for (const std::ptrdiff_t step : {row, row + 3, -row - 3}) {
                const Image image("srcDst", {swap.rowBytes(width), 4, step, Guard::end, 0, swap.sampleBytes}, random_());
                expectSwap(swap, {width, 4}, anyOrder(swap), image, step, image, true);
            }
            if (HasFailure()) return;
        }
    }
}

// One function does not look at the source's step then, but to refuse 0.
TEST_P(SwapChannels, OntoItselfTheDestinationsStepCounts) {
    const Swap& swap = swaps[0];
    for (const int width : {1, 5, 16, 33, 70}) {
        const int row = 3 * width;
        for (const std::ptrdiff_t srcStep :
             {std::ptrdiff_t{1}, std::ptrdiff_t{-7}, std::ptrdiff_t{row}, std::ptrdiff_t{INT32_MAX}, std::ptrdiff_t{INT32_MIN}}) {
            for (const std::ptrdiff_t dstStep : {row, row + 4, -row, -row - 1}) {
                const Image image("srcDst", {row, 4, dstStep, Guard::end, 0, 1}, random_());
                expectSwap(swap, {width, 4}, anyOrder(swap), image, srcStep, image, true);
            }
        }
    }
    Kuv8u pixel[3] = {1, 2, 3};
    constexpr Kuv32s order[3] = {2, 1, 0};
    EXPECT_EQ(kuviSwapChannels_8u_C3R(pixel, 0, pixel, 3, {1, 1}, order), kuvStatusBadStep);
    EXPECT_EQ(kuviSwapChannels_8u_C3R(pixel, 3, pixel, 0, {1, 1}, order), kuvStatusBadStep);
    EXPECT_EQ(pixel[0], 1);
}

TEST_P(SwapChannels, Examples) {
    constexpr Kuv32s same[3] = {0, 1, 2}, reversed[3] = {2, 1, 0}, second[3] = {1, 1, 1}, outside[3] = {2, 1, 3};
    constexpr Kuv32s four[4] = {3, 2, 1, 0}, outsideFour[4] = {3, 2, 1, 4};
    constexpr int width = 50;
    Kuv8u rgb[3 * width], result[3 * width], rgba[4 * width], merged[4 * width];
    for (int i = 0; i < 3 * width; ++i) rgb[i] = static_cast<Kuv8u>(i);
    for (int i = 0; i < 4 * width; ++i) {
        rgba[i] = static_cast<Kuv8u>(i);
        merged[i] = static_cast<Kuv8u>(255 - i);
    }

    EXPECT_EQ(kuviSwapChannels_8u_C3R(rgb, 150, result, 150, {width, 1}, same), kuvStatusOk);
    EXPECT_TRUE(std::equal(rgb, rgb + 150, result)) << "written, though nothing changes places";
    EXPECT_EQ(kuviSwapChannels_8u_C3IR(result, 150, {width, 1}, same), kuvStatusOk);
    EXPECT_TRUE(std::equal(rgb, rgb + 150, result));
    EXPECT_EQ(kuviSwapChannels_8u_C3R(rgb, 150, result, 150, {width, 1}, outside), kuvStatusBadChannelOrder);
    EXPECT_EQ(kuviSwapChannels_8u_C3R(rgb, 150, result, 150, {width, 1}, reversed), kuvStatusOk);
    for (int i = 0; i < 150; ++i) EXPECT_EQ(result[i], rgb[i / 3 * 3 + 2 - i % 3]);
    EXPECT_EQ(kuviSwapChannels_8u_C3IR(rgb, 150, {width, 1}, second), kuvStatusOk);
    for (int i = 0; i < 150; ++i) EXPECT_EQ(rgb[i], i / 3 * 3 + 1);

    EXPECT_EQ(kuviSwapChannels_8u_AC4R(rgba, 200, merged, 200, {width, 1}, reversed), kuvStatusOk);
    for (int i = 0; i < 200; ++i) EXPECT_EQ(merged[i], i % 4 == 3 ? 255 - i : rgba[i / 4 * 4 + 2 - i % 4]);
    EXPECT_EQ(kuviSwapChannels_8u_C4IR(rgba, 200, {width, 1}, outsideFour), kuvStatusBadChannelOrder);
    EXPECT_EQ(kuviSwapChannels_8u_C4IR(rgba, 200, {width, 1}, four), kuvStatusOk);
    for (int i = 0; i < 200; ++i) EXPECT_EQ(rgba[i], i / 4 * 4 + 3 - i % 4);
}

TEST_P(SwapChannels, ANegativeStepWalksUpward) {
    Kuv8u src[3][3] = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}, dst[3][3] = {};
    constexpr Kuv32s order[3] = {2, 0, 1};
    EXPECT_EQ(kuviSwapChannels_8u_C3R(src[2], -3, dst[0], 3, {1, 3}, order), kuvStatusOk);
    constexpr Kuv8u wanted[3][3] = {{9, 7, 8}, {6, 4, 5}, {3, 1, 2}};
    EXPECT_EQ(std::memcmp(dst, wanted, sizeof wanted), 0);
    EXPECT_EQ(kuviSwapChannels_8u_C3IR(src[2], -3, {1, 3}, order), kuvStatusOk);
    constexpr Kuv8u inPlace[3][3] = {{3, 1, 2}, {6, 4, 5}, {9, 7, 8}};
    EXPECT_EQ(std::memcmp(src, inPlace, sizeof inPlace), 0);
}

TEST_P(SwapChannels, NullWithStep0) {
    Kuv8u pixel[4] = {1, 2, 3, 4};
    constexpr Kuv32s order[4] = {3, 2, 1, 0};
    EXPECT_EQ(kuviSwapChannels_8u_C3IR(nullptr, 0, {1, 1}, order), kuvStatusNullPtr);
    EXPECT_EQ(kuviSwapChannels_8u_C3IR(pixel, 0, {1, 1}, nullptr), kuvStatusBadStep) << "the order is looked at last";
    EXPECT_EQ(kuviSwapChannels_8u_C4IR(pixel, 0, {1, 1}, nullptr), kuvStatusNullPtr);
    EXPECT_EQ(kuviSwapChannels_8u_C3R(pixel, 0, pixel, 0, {0, 0}, nullptr), kuvStatusNullPtr);
    EXPECT_EQ(kuviSwapChannels_8u_C3R(pixel, 0, pixel, 0, {0, 0}, order), kuvStatusBadSize);
    EXPECT_EQ(kuviSwapChannels_8u_AC4R(pixel, 0, pixel, 0, {0, 0}, order), kuvStatusBadStep);
}

TEST_P(SwapChannels, RowsFurtherApartThan32BitsTell) {
    constexpr std::ptrdiff_t step = 0x7FFFFFF1;
    const DistantMemory from(3 * static_cast<std::size_t>(step)), to(3 * static_cast<std::size_t>(step));
    KUV_NEEDS(from);
    KUV_NEEDS(to);
    for (const Swap& swap : swaps) {
        for (const bool upward : {false, true}) {
            const int width = 41, bytes = swap.rowBytes(width);
            const std::ptrdiff_t signedStep = upward ? -step : step, start = upward ? 2 * step : 0;
            const auto order = swap.order(anyOrder(swap));
            std::vector<unsigned char> wanted[3];
            for (int r = 0; r < 3; ++r) {
                unsigned char* const src = reinterpret_cast<unsigned char*>(from.memory()) + start + signedStep * r;
                unsigned char* const dst = reinterpret_cast<unsigned char*>(to.memory()) + start + signedStep * r;
                for (int i = 0; i < bytes; ++i) {
                    src[i] = static_cast<unsigned char>(random_());
                    dst[i] = static_cast<unsigned char>(random_());
                }
                wanted[r].assign(dst, dst + bytes);
                wanted[r].resize(static_cast<std::size_t>(bytes) + 2);
                swapRow(swap, swap.inPlace ? dst : src, wanted[r].data(), width, order);
            }
            EXPECT_EQ(watched([&] {
                          return swap.call(from.memory() + start, static_cast<Kuv32s>(signedStep), to.memory() + start,
                                           static_cast<Kuv32s>(signedStep), {width, 3}, order.data());
                      }), kuvStatusOk);
            for (int r = 0; r < 3; ++r) {
                EXPECT_EQ(std::memcmp(to.memory() + start + signedStep * r, wanted[r].data(), static_cast<std::size_t>(bytes)), 0)
                    << swap.name;
            }
        }
    }
}

// The order changes nothing the second time.
TEST_P(SwapChannels, MoreThan2GiBInOneRun) {
    if (sanitized) GTEST_SKIP() << "the sanitizer takes minutes for it";
    constexpr KuviSize size = {26880, 26880};
    const AliasedMemory image(std::size_t{3} * size.width * size.height);
    KUV_NEEDS(image);
    for (std::size_t i = 0; i < AliasedMemory::period; ++i) image.memory()[i] = static_cast<unsigned char>(i % 3);
    LongRun run(image, size, 3);
    run.want<Kuv8u>([&](Kuv8u, std::size_t i) { return image.memory()[i - i % 3 + 1]; });
    constexpr Kuv32s order[3] = {1, 1, 1};
    EXPECT_EQ(watched([&] { return kuviSwapChannels_8u_C3IR(image.memory(), run.step(), size, order); }), kuvStatusOk);
    EXPECT_TRUE(run.isAsWanted());
}

}  // namespace
