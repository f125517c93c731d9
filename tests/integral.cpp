// Integral images.
#include <cstring>
#include <vector>

#include "support/agreement.hpp"
#include "support/distant.hpp"
#include "support/statuses.hpp"

namespace {

using namespace kuvtest;

// (pointer, step, pointer, step, size): an image and its table, which has one row and one column more.
struct TableArguments {
    std::tuple<const Kuv8u*, Kuv32s, Kuv32s*, Kuv32s, KuviSize> operator()(Draw& draw) const {
        const int width = draw.size.width, columns = width + 1;
        const Image& src = draw.image<Kuv8u>(Role::source, width, draw.size.height, drawStep(draw.random, StepClass::B, width));
        const Image& dst = draw.image<Kuv32s>(Role::output, columns, draw.size.height + 1, 4 * (columns + below(draw.random, 20)));
        return {src.row(), src.step(), dst.row<Kuv32s>(), dst.step(), draw.size};
    }
};

KUV_AGREES(kuviIntegral_8u32s_C1R, TableArguments{}, AnyValue<Kuv32s>{});
KUV_CHECKS(kuviIntegral_8u32s_C1R, call(TableArguments{}, AnyValue<Kuv32s>{}), check(kuvStatusNullPtr, null<0>(), null<2>()), badSize<4>(),
           check(kuvStatusBadStep, set<1>(0), set<1>(-1), set<1>(-1024), set<1>(INT32_MIN), set<3>(0), set<3>(4), set<3>(-4), set<3>(-4096),
                 set<3>(INT32_MIN)),
           check(kuvStatusStepNotMultiple, set<3>(100001), set<3>(100002), set<3>(100003), set<3>(INT32_MAX)));

// In 64 bits, with no use of the table itself: the sum of each column down to a row, and these added up from the left.
std::vector<Kuv32s> tableOf(const Image& src, KuviSize size, Kuv32s val) {
    const auto columns = static_cast<std::size_t>(size.width) + 1;
    std::vector<Kuv32s> table(columns * (static_cast<std::size_t>(size.height) + 1));
    std::vector<std::uint64_t> columnSums(static_cast<std::size_t>(size.width), 0);
    for (int y = 0; y <= size.height; ++y) {
        std::uint64_t sum = static_cast<std::uint64_t>(std::int64_t{val});
        for (int x = 0; x <= size.width; ++x) {
            table[static_cast<std::size_t>(y) * columns + static_cast<std::size_t>(x)] = static_cast<Kuv32s>(static_cast<Kuv32u>(sum));
            if (x < size.width) sum += columnSums[static_cast<std::size_t>(x)];
        }
        if (y == size.height) break;
        for (int x = 0; x < size.width; ++x) columnSums[static_cast<std::size_t>(x)] += load<Kuv8u>(src.row(y), x);
    }
    return table;
}

class Integral : public VariantTest {
protected:
    struct Place {
        std::ptrdiff_t srcPadding = 0, dstPadding = 0;
        Guard guard = Guard::end;
        int srcGap = 0, dstGap = 0;
    };

    // `constant` below 0: random samples.
    void expectTable(KuviSize size, Kuv32s val, const Place& place, int constant = -1) {
        const int rowBytes = 4 * (size.width + 1);
        const Image src("src", {size.width, size.height, size.width + place.srcPadding, place.guard, place.srcGap, 1}, ++seed_);
        const Image dst("dst", {rowBytes, size.height + 1, rowBytes + place.dstPadding, place.guard, place.dstGap, 4}, ++seed_);
        if (constant >= 0) {
            for (int y = 0; y < size.height; ++y) std::memset(src.row(y), constant, static_cast<std::size_t>(size.width));
        }
        const Bytes srcBefore = src.bytes();
        Bytes wanted = dst.bytes();
        const std::vector<Kuv32s> table = tableOf(src, size, val);
        for (int y = 0; y <= size.height; ++y) {
            std::memcpy(dst.row(wanted, y), table.data() + std::ptrdiff_t{size.width + 1} * y, static_cast<std::size_t>(rowBytes));
        }
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << size.width << " x " << size.height << ", val " << val << "\n  src: "
                                        << src.geometry() << "\n  dst: " << dst.geometry());
        const auto integral = [&] { return kuviIntegral_8u32s_C1R(src.row(), src.step(), dst.row<Kuv32s>(), dst.step(), size, val); };
        EXPECT_EQ(watched(integral), kuvStatusOk);
        EXPECT_EQ(dst.difference(wanted), "");
        EXPECT_EQ(src.difference(srcBefore), "");
    }

private:
    std::uint64_t seed_ = 0;
};

KUV_FOR_EACH_VARIANT(Integral);

TEST_P(Integral, EveryWidth) {
    for (int width = 1; width <= 140 && !HasFailure(); ++width) {
        for (const Guard guard : {Guard::end, Guard::begin}) {
            expectTable({width, 7}, 0, {.guard = guard});
            expectTable({width, 1 + width % 9}, -12345, {.srcPadding = 3, .dstPadding = 8, .guard = guard});
        }
    }
    for (const int width : {255, 256, 257, 511, 512, 513, 700, 1000, 1023, 4097}) {
        for (const Guard guard : {Guard::end, Guard::begin}) expectTable({width, 6}, 1, {.guard = guard});
    }
}

TEST_P(Integral, EveryHeight) {
    for (int height = 1; height <= 40 && !HasFailure(); ++height) {
        for (const int width : {1, 7, 8, 9, 16, 33, 64, 65, 130}) expectTable({width, height}, height, {.srcPadding = height % 3});
    }
}

// The table may stand at an odd address.
TEST_P(Integral, EveryAlignment) {
    for (int gap = 0; gap < 65 && !HasFailure(); ++gap) {
        for (const int width : {1, 7, 8, 15, 16, 17, 31, 63, 64, 65, 71, 72, 130}) {
            for (const Guard guard : {Guard::end, Guard::begin}) {
                expectTable({width, 5}, 77, {.guard = guard, .srcGap = gap, .dstGap = 64 - gap});
                expectTable({width, 5}, 77, {.srcPadding = gap, .dstPadding = 4 * (gap % 16), .guard = guard, .dstGap = gap});
            }
        }
    }
}

TEST_P(Integral, ConstantImages) {
    for (const int constant : {0, 1, 127, 128, 255}) {
        for (const int width : {1, 7, 8, 31, 64, 100, 3000}) expectTable({width, 9}, 5, {}, constant);
    }
}

TEST_P(Integral, SumsWrap) {
    for (const Kuv32s val : {INT32_MAX, INT32_MAX - 254, INT32_MAX - 30000, INT32_MIN, INT32_MIN + 1, -1, -255, -30000}) {
        for (const int width : {1, 4, 8, 13, 70, 300}) {
            expectTable({width, 6}, val, {}, 255);
            expectTable({width, 6}, val, {});
        }
    }
    if (!sanitized) expectTable({4099, 4105}, 0, {}, 255);  // past 2^32
}

TEST_P(Integral, OneSample) {
    const Kuv8u src = 5;
    Kuv32s dst[4] = {};
    EXPECT_EQ(kuviIntegral_8u32s_C1R(&src, 1, dst, 8, {1, 1}, 7), kuvStatusOk);
    const Kuv32s wanted[4] = {7, 7, 7, 12};
    EXPECT_EQ(std::memcmp(dst, wanted, sizeof wanted), 0);
}

TEST_P(Integral, ZerosGiveTheStartingValueEverywhere) {
    const std::vector<Kuv8u> src(100 * 20, 0);
    std::vector<Kuv32s> dst(101 * 21, 3);
    EXPECT_EQ(kuviIntegral_8u32s_C1R(src.data(), 100, dst.data(), 404, {100, 20}, -1), kuvStatusOk);
    for (const Kuv32s each : dst) ASSERT_EQ(each, -1);
}

TEST_P(Integral, SmallestSteps) {
    for (const int width : {1, 8, 50}) {
        const std::vector<Kuv8u> src(static_cast<std::size_t>(2 * width), 1);
        std::vector<Kuv32s> dst(static_cast<std::size_t>(3 * (width + 2)), 9);
        const std::vector<Kuv32s> before = dst;
        const int least = 4 * width + 4;
        const auto status = [&](Kuv32s srcStep, Kuv32s dstStep) {
            return kuviIntegral_8u32s_C1R(src.data(), srcStep, dst.data(), dstStep, {width, 2}, 0);
        };
        EXPECT_EQ(status(width, least - 4), kuvStatusBadStep);
        EXPECT_EQ(status(width, least - 1), kuvStatusBadStep);
        EXPECT_EQ(status(width, least + 1), kuvStatusStepNotMultiple);
        EXPECT_EQ(status(width - 1, least), kuvStatusBadStep);
        EXPECT_EQ(status(width - 1, least + 1), kuvStatusBadStep);
        EXPECT_EQ(dst, before);
        EXPECT_EQ(status(width, least), kuvStatusOk);
        EXPECT_EQ(dst[static_cast<std::size_t>(3 * (width + 1) - 1)], 2 * width);
    }
}

// A row whose bytes do not fit 32 bits is longer than any step.
TEST_P(Integral, RowBytesAreNotCutTo32Bits) {
    Kuv8u src[8] = {};
    Kuv32s dst[8] = {};
    for (const Kuv32s width : {1 << 29, 1 << 30, (1 << 30) + 7, INT32_MAX}) {
        for (const Kuv32s dstStep : {64, 0x7FFFFFFC}) {
            EXPECT_EQ(watched([&] { return kuviIntegral_8u32s_C1R(src, INT32_MAX, dst, dstStep, {width, 1}, 0); }), kuvStatusBadStep);
        }
    }
}

TEST_P(Integral, RowsFurtherApartThan32BitsTell) {
    constexpr Kuv32s srcStep = 0x7FFFFFF1, dstStep = 0x7FFFFFF0;
    constexpr int width = 50, height = 6;
    const DistantMemory from(std::size_t{height} * srcStep), to(std::size_t{height + 1} * dstStep);
    KUV_NEEDS(from);
    KUV_NEEDS(to);
    const auto src = reinterpret_cast<Kuv8u*>(from.memory());
    const auto dst = reinterpret_cast<Kuv32s*>(to.memory());
    for (std::ptrdiff_t y = 0; y < height; ++y) std::memset(src + srcStep * y, static_cast<int>(10 * (y + 1)), width);
    EXPECT_EQ(watched([&] { return kuviIntegral_8u32s_C1R(src, srcStep, dst, dstStep, {width, height}, 0); }), kuvStatusOk);
    for (std::ptrdiff_t y = 0; y <= height; ++y) {
        const char* const row = to.memory() + dstStep * y;
        for (std::ptrdiff_t x = 0; x <= width; ++x) ASSERT_EQ(load<Kuv32s>(row, x), 5 * y * (y + 1) * x);
    }
}

}  // namespace
