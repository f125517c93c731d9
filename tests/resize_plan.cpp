// Resize plans: sizes and tables.
#include <numeric>

#include "support/resize_reference.hpp"
#include "support/results.hpp"

namespace {

using namespace kuvtest;

struct SourceSize {
    std::tuple<KuviSize> operator()(Draw& draw) const { return {{between(draw.random, 6, 3000), between(draw.random, 6, 3000)}}; }
};
struct Filter {
    bool known = false;  // to this library's plans

    std::tuple<Kuv32s> operator()(Draw& draw) const {
        constexpr Kuv32s all[] = {1, 2, 6, 8, 16};
        return {known ? kuvResizeLinear : all[below(draw.random, 5)]};
    }
};
struct Antialiasing {
    std::tuple<Kuv32u> operator()(Draw& draw) const { return {static_cast<Kuv32u>(below(draw.random, 2)) * 7}; }
};

KUV_AGREES(kuviResizeGetSize_16s, SourceSize{}, RoiSize{}, Filter{}, Antialiasing{}, Results<Kuv32s>{}, Results<Kuv32s>{});
KUV_CHECKS(kuviResizeGetSize_16s,
           call(SourceSize{}, RoiSize{}, Filter{.known = true}, Antialiasing{}, Results<Kuv32s>{}, Results<Kuv32s>{}),
           check(kuvStatusNullPtr, null<4>(), null<5>()), check(kuvStatusNoOperation, width<0>(0), height<0>(0), width<1>(0), height<1>(0)),
           check(kuvStatusBadSize, width<0>(-1), height<0>(-1), width<1>(-1), height<1>(-1), width<0>(INT32_MIN), height<1>(INT32_MIN)),
           check(kuvStatusBadInterpolation, set<2>(3), set<2>(-1), set<2>(4), set<2>(5), set<2>(7), set<2>(9), set<2>(17),
                 set<2>(INT32_MIN), set<2>(INT32_MAX)),
           check(kuvStatusInternal, set<2>(0)), check(kuvStatusBadSize, width<0>(1), height<0>(1)),
           check(kuvStatusSizeOverflow, width<1>(INT32_MAX), height<1>(INT32_MAX), width<1>(0x10000000), height<1>(0x10000000)));

struct PlanMemory {
    std::tuple<Kuv8u*> operator()(Draw& draw) const { return {draw.image<Kuv8u>(Role::inOut, 50000, 1, 0).row()}; }
};
KUV_CHECKS(kuviResizeLinearInit_16s, call(SourceSize{}, RoiSize{}, PlanMemory{}),
           check(kuvStatusNullPtr, null<2>()),
           check(kuvStatusNoOperation, width<0>(0), height<0>(0), width<1>(0), height<1>(0)),
           check(kuvStatusBadSize, width<0>(-1), height<0>(-1), width<1>(-1), height<1>(-1), width<0>(1), height<0>(1), width<0>(INT32_MIN),
                 height<1>(INT32_MIN)));

// Of just the size that it must have; what lies between tables is not written.
struct PlanArguments {
    std::tuple<KuviSize, KuviSize, Kuv8u*> operator()(Draw& draw) const {
        const int longest = oneIn(draw.random, 4) ? INT32_MAX - 1 : 300;
        const KuviSize src = {between(draw.random, 2, longest), between(draw.random, 2, longest)};
        Image& plan = draw.image<Kuv8u>(Role::output, PlanBlock::bytesFor(src, draw.size), 1, 0);
        std::memset(plan.row(), 0x55, static_cast<std::size_t>(plan.geometry().rowBytes));
        return {src, draw.size, plan.row()};
    }
};
KUV_AGREES(kuviResizeLinearInit_16s, PlanArguments{});

constexpr KuviSize planSrc = {90, 70}, planDst = {800, 400};
struct SharedPlan {
    std::tuple<const Kuv8u*> operator()(Draw&) const { return {sharedPlan(planSrc, planDst).get()}; }
};
struct Channels {
    std::tuple<Kuv32u> operator()(Draw& draw) const {
        constexpr Kuv32u all[] = {1, 3, 4};
        return {all[below(draw.random, 3)]};
    }
};
KUV_AGREES(kuviResizeGetBufferSize_16s, SharedPlan{}, RoiSize{}, Channels{}, Results<Kuv32s>{});
KUV_CHECKS(kuviResizeGetBufferSize_16s, call(SharedPlan{}, RoiSize{}, Channels{}, Results<Kuv32s>{}),
           check(kuvStatusNullPtr, null<0>(), null<3>()),
           check(kuvStatusNoOperation, width<1>(0), height<1>(0)),
           check(kuvStatusBadContext, PlanSetting<0>{planSrc, planDst, 0, 0x4B617388}),
           check(kuvStatusBadChannelCount, set<2>(0u), set<2>(2u), set<2>(5u), set<2>(0x80000003u)),
           check(kuvStatusBadSize, width<1>(-1), height<1>(-1), width<1>(INT32_MIN), height<1>(INT32_MIN)),
           check(kuvStatusSizeWarning, width<1>(801), height<1>(401), width<1>(INT32_MAX), height<1>(INT32_MAX)));

constexpr Kuv64s roundedUp(Kuv64s value) { return (value + 31) / 32 * 32; }

class ResizePlan : public VariantTest {
protected:
    struct Sizes {
        KuvStatus status;
        Kuv32s spec = -1, init = -1;
    };
    static Sizes sizes(KuviSize src, KuviSize dst, Kuv32s interpolation, Kuv32u antialiasing = 0) {
        Sizes all{};
        all.status = watched([&] { return kuviResizeGetSize_16s(src, dst, interpolation, antialiasing, &all.spec, &all.init); });
        return all;
    }
    Random random_{7};
};
KUV_FOR_EACH_VARIANT(ResizePlan);

TEST_P(ResizePlan, SizeIsTheFormula) {
    for (const KuviSize dst : {KuviSize{1, 1}, {32, 33}, {31, 64}, {1920, 1080}, {1, 100000000}}) {
        const Kuv64s positions = roundedUp(dst.width) + roundedUp(dst.height);
        const Sizes nearest = sizes({1, 1}, dst, 1), linear = sizes({2, 2}, dst, kuvResizeLinear);
        EXPECT_EQ(nearest.status, kuvStatusOk);
        EXPECT_EQ(nearest.spec, 4 * positions + 256);
        EXPECT_EQ(nearest.init, 64);
        EXPECT_EQ(linear.status, kuvStatusOk);
        EXPECT_EQ(linear.spec, 8 * positions + 256);
        EXPECT_EQ(linear.init, 64);
        EXPECT_EQ(sizes({6, 6}, {dst.width, 1}, 6).spec, 20 * (roundedUp(dst.width) + 32) + 256);
        EXPECT_EQ(sizes({6, 6}, {dst.width, 1}, 8).spec, 12 * (roundedUp(dst.width) + 32) + 256);
        EXPECT_EQ(sizes({6, 6}, {dst.width, 1}, 16).spec, 28 * (roundedUp(dst.width) + 32) + 256);
    }
}

TEST_P(ResizePlan, LeastSources) {
    constexpr struct {
        Kuv32s interpolation, least;
    } all[] = {{1, 1}, {2, 2}, {6, 4}, {8, 2}, {16, 6}};
    for (const auto& each : all) {
        for (const Kuv32u antialiasing : {0u, 1u}) {
            const bool ignored = antialiasing != 0 && (each.interpolation == 1 || each.interpolation == 8);
            const KuvStatus good = ignored ? kuvStatusAntialiasIgnored : kuvStatusOk;
            EXPECT_EQ(sizes({each.least, each.least}, {9, 9}, each.interpolation, antialiasing).status, good);
            if (each.least == 1) continue;
            const Sizes narrow = sizes({each.least - 1, 99}, {9, 9}, each.interpolation, antialiasing);
            EXPECT_EQ(narrow.status, kuvStatusBadSize);
            EXPECT_EQ(narrow.spec, -1);
            EXPECT_EQ(sizes({99, each.least - 1}, {9, 9}, each.interpolation, antialiasing).status, kuvStatusBadSize);
        }
    }
}

TEST_P(ResizePlan, Antialiasing) {
    for (const Kuv32s interpolation : {1, 8}) {
        const Sizes plain = sizes({100, 100}, {10, 10}, interpolation), asked = sizes({100, 100}, {10, 10}, interpolation, 0x80000000);
        EXPECT_EQ(asked.status, kuvStatusAntialiasIgnored);
        EXPECT_EQ(asked.spec, plain.spec);
        EXPECT_EQ(asked.init, plain.init);
    }
    constexpr struct {
        Kuv32s interpolation, reach;
    } all[] = {{2, 2}, {6, 4}, {16, 6}};
    for (const auto& each : all) {
        EXPECT_EQ(sizes({100, 50}, {7, 70}, each.interpolation, 1).spec, 4 * (1 + each.reach * 15) * 32 + 4 * (1 + each.reach) * 96 + 256);
        EXPECT_EQ(sizes({INT32_MAX, 50}, {1, 70}, each.interpolation, 1).status, kuvStatusSizeOverflow);
    }
}

TEST_P(ResizePlan, SizeLimit) {
    // The first size that is not below the limit, and the last that is.
    const Kuv32s most = (0x7FFFFFFE - 256) / 8 / 32 * 32 - 32;
    EXPECT_EQ(sizes({2, 2}, {most, 1}, kuvResizeLinear).status, kuvStatusOk);
    EXPECT_EQ(sizes({2, 2}, {most, 1}, kuvResizeLinear).spec, 8 * (most + 32) + 256);
    const Sizes more = sizes({2, 2}, {most + 1, 1}, kuvResizeLinear);
    EXPECT_EQ(more.status, kuvStatusSizeOverflow);
    EXPECT_EQ(more.spec, -1);
    EXPECT_EQ(more.init, -1);
    EXPECT_EQ(sizes({2, 2}, {INT32_MAX, INT32_MAX}, 1).status, kuvStatusSizeOverflow);
    EXPECT_EQ(sizes({6, 6}, {INT32_MAX, INT32_MAX}, 16, 1).status, kuvStatusSizeOverflow);
    EXPECT_EQ(sizes({2, 2}, {INT32_MAX, INT32_MAX}, 1, 1).status, kuvStatusSizeOverflow) << "ahead of the warning";
}

TEST_P(ResizePlan, ZeroComesBeforeBelowZero) {
    EXPECT_EQ(sizes({0, -1}, {-1, -1}, 3).status, kuvStatusNoOperation);
    EXPECT_EQ(sizes({-1, 5}, {5, 0}, 3).status, kuvStatusNoOperation);
    EXPECT_EQ(kuviResizeGetSize_16s({0, 0}, {0, 0}, 2, 0, nullptr, nullptr), kuvStatusNullPtr);
    EXPECT_EQ(kuviResizeLinearInit_16s({0, -1}, {1, 1}, nullptr), kuvStatusNullPtr);
    Kuv8u block[1024];
    EXPECT_EQ(kuviResizeLinearInit_16s({0, -1}, {1, 1}, block), kuvStatusNoOperation);
}

// An axis against the stated operations, and those against the exact positions.
void expectAxis(const PlanBlock& plan, const AxisWords& axis, Kuv32s src, Kuv32s dst) {
    const Kuv32s divisor = std::gcd(src, dst);
    ASSERT_EQ(axis.srcLength, src);
    ASSERT_EQ(axis.dstLength, dst);
    ASSERT_EQ(axis.srcReduced, src / divisor);
    ASSERT_EQ(axis.dstReduced, dst / divisor);
    ASSERT_EQ(axis.packed, 0u);
    ASSERT_EQ(axis.reserved[0], 0u);
    ASSERT_EQ(axis.reserved[1], 0u);
    const double ratio = static_cast<double>(src / divisor) / static_cast<double>(dst / divisor);
    int before = 0, after = 0;
    for (Kuv64s i = 0; i < dst; ++i) {
        const double product = (static_cast<double>(i) + 0.5) * ratio, position = product - 0.5;
        ASSERT_EQ(plan.position(axis, i), std::floor(position)) << src << " to " << dst << " at " << i;
        ASSERT_EQ(plan.fraction(axis, i), static_cast<float>(position - std::floor(position))) << src << " to " << dst << " at " << i;
        before += position < 0;
        after += position >= src - 1;
        // ((2i + 1) * src - dst) / (2 * dst), of which the operations may miss an integer by their rounding error.
        const Kuv64s numerator = (2 * i + 1) * src - dst, denominator = Kuv64s{2} * dst;
        const Kuv64s whole = numerator >= 0 ? numerator / denominator : -((-numerator + denominator - 1) / denominator);
        const double rest = static_cast<double>(numerator - whole * denominator) / static_cast<double>(denominator);
        const double distance = static_cast<double>(plan.position(axis, i) - whole) + static_cast<double>(plan.fraction(axis, i)) - rest;
        ASSERT_LE(std::abs(distance), 1.0 / 0x1000000 + position / 0x4000000000000) << src << " to " << dst << " at " << i;
        ASSERT_TRUE(plan.position(axis, i) == whole || (rest == 0 && plan.fraction(axis, i) > 0.999999f));
    }
    ASSERT_EQ(axis.leadCount, before);
    ASSERT_EQ(axis.tailCount, after);
}

void expectPlan(KuviSize src, KuviSize dst, Guard guard = Guard::end, int gap = 0) {
    const PlanBlock plan(src, dst, guard, gap);
    constexpr Kuv32u head[10] = {0x4B617389, 13, kuvResizeLinear, 1, 1, 0, 1, 1, 1, 1};
    for (int i = 0; i < 10; ++i) ASSERT_EQ(plan.word(i), head[i]) << i;
    const AxisWords vertical = plan.vertical(), horizontal = plan.horizontal();
    const Kuv32u rows = 4 * static_cast<Kuv32u>(dst.height), columns = 4 * static_cast<Kuv32u>(dst.width);
    ASSERT_EQ(vertical.positions, 128u);
    ASSERT_EQ(horizontal.positions, 128 + rows);
    ASSERT_EQ(vertical.fractions, 128 + rows + columns);
    ASSERT_EQ(horizontal.fractions, 128 + 2 * rows + columns);
    expectAxis(plan, vertical, src.height, dst.height);
    expectAxis(plan, horizontal, src.width, dst.width);
}

TEST_P(ResizePlan, TablesOfSmallSizes) {
    for (int src = 2; src <= 40; ++src) {
        for (int dst = 1; dst <= 40 && !HasFatalFailure(); ++dst) expectPlan({src, 42 - src}, {dst, 41 - dst});
    }
}

TEST_P(ResizePlan, TablesOfLargeSizes) {
    for (const auto& [src, dst] : {std::pair<KuviSize, KuviSize>{{1920, 1080}, {1344, 756}},
                                   {{1200, 675}, {1920, 1080}},
                                   {{4000, 3000}, {61, 7}},
                                   {{2147483647, 2147483646}, {1000, 77}},
                                   {{2, 3}, {50021, 70000}},
                                   {{65537, 65536}, {65536, 65537}}}) {
        expectPlan(src, dst);
    }
}

TEST_P(ResizePlan, AnyAddress) {
    for (int gap = 0; gap < 70 && !HasFatalFailure(); ++gap) {
        for (const Guard guard : {Guard::end, Guard::begin}) expectPlan({20, 30}, {33, 31}, guard, gap);
    }
}

// With a fused multiply-add the first position would come out below 0.
TEST_P(ResizePlan, NothingIsFused) {
    const PlanBlock plan({2, 2}, {6, 6});
    EXPECT_EQ(plan.position(plan.vertical(), 1), 0);
    EXPECT_EQ(plan.fraction(plan.vertical(), 1), 0.0f);
    EXPECT_EQ(plan.vertical().leadCount, 1);
}

TEST_P(ResizePlan, EqualExtents) {
    const PlanBlock plan({17, 5}, {17, 5});
    EXPECT_EQ(plan.horizontal().leadCount, 0);
    EXPECT_EQ(plan.horizontal().tailCount, 1);
    for (int i = 0; i < 17; ++i) {
        EXPECT_EQ(plan.position(plan.horizontal(), i), i);
        EXPECT_EQ(plan.fraction(plan.horizontal(), i), 0.0f);
    }
}

TEST_P(ResizePlan, BufferSizeIsTheFormula) {
    const PlanBlock plan({90, 70}, {800, 400});
    for (const Kuv32u channels : {1u, 3u, 4u}) {
        for (const KuviSize size : {KuviSize{1, 1}, {7, 8}, {8, 9}, {799, 3}, {800, 400}, {801, 1}, {1, 401}, {INT32_MAX, INT32_MAX}}) {
            const Kuv64s w = std::min(size.width, 800), h = std::min(size.height, 400);
            Kuv32s bytes = -1;
            EXPECT_EQ(watched([&] { return kuviResizeGetBufferSize_16s(plan.get(), size, channels, &bytes); }),
                      size.width > 800 || size.height > 400 ? kuvStatusSizeWarning : kuvStatusOk);
            EXPECT_EQ(bytes, roundedUp(4 * h) + roundedUp(4 * w) + 2 * roundedUp(4 * Kuv64s{channels} * w) + 64);
        }
    }
    // A plan of such an extent need not be there to ask for its buffer.
    AxisWords wide = plan.horizontal();
    wide.dstLength = 100000000;
    store(plan.start() + 84, 0, wide);
    Kuv32s bytes = -1;
    EXPECT_EQ(kuviResizeGetBufferSize_16s(plan.get(), {100000000, 1}, 3, &bytes), kuvStatusSizeOverflow);
    EXPECT_EQ(kuviResizeGetBufferSize_16s(plan.get(), {INT32_MAX, 1}, 3, &bytes), kuvStatusSizeOverflow) << "ahead of the warning";
    EXPECT_EQ(bytes, -1);
    EXPECT_EQ(kuviResizeGetBufferSize_16s(plan.get(), {100000000, 1}, 1, &bytes), kuvStatusOk);
    EXPECT_EQ(bytes, 32 + 3 * 400000000 + 64);
}

}  // namespace
