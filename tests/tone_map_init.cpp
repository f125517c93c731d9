// Tone maps from control points: their blocks, byte by byte, and what makes an Init fail.
#include <cfenv>

#include "support/statuses.hpp"
#include "support/tone_reference.hpp"

namespace {

using namespace kuvtest;

constexpr Kuv32s interpolations[] = {kuvLutStep, kuvLutLinear, kuvLutCubic};
constexpr Kuv32s selectors[] = {kuvChannelsC1, kuvChannelsC3, kuvChannelsC4, kuvChannelsAC4};

constexpr Kuv32s enough[4] = {4, 4, 4, 4}, tooFew[4][4] = {{1, 4, 4, 4}, {4, 1, 4, 4}, {4, 4, -1, 4}, {4, 4, 4, 0}};

// A block that holds a map of the same kind, so that writing the place of its tables again changes nothing.
template <class T>
struct InitArguments {
    using Pointers = const Kuv32s* const*;
    std::tuple<Kuv32s, Kuv32s, KuviSize, Pointers, Pointers, const Kuv32s*, KuviToneMapSpec*> operator()(Draw& draw) const {
        static constexpr Kuv32s points[4] = {1, 20, 30, 200};
        static constexpr const Kuv32s* pointers[4] = {points, points, points, points};
        const int bytes = 184 + 4 * (sizeof(T) << 8 * sizeof(T));
        auto* const block = draw.image<Kuv8u>(Role::inOut, bytes, 1, bytes).template row<KuviToneMapSpec>();
        const auto function = sizeof(T) == 1 ? kuviLUT_Init_8u : kuviLUT_Init_16u;
        EXPECT_EQ(function(kuvLutLinear, kuvChannelsC4, {1, 1}, pointers, pointers, enough, block), kuvStatusOk);
        return {kuvLutLinear, kuvChannelsC4, draw.size, pointers, pointers, enough, block};
    }
};
constexpr Kuv32s somePoints[4] = {1, 20, 30, 200};
constexpr const Kuv32s* without[4][4] = {{nullptr, somePoints, somePoints, somePoints},
                                         {somePoints, nullptr, somePoints, somePoints},
                                         {somePoints, somePoints, nullptr, somePoints},
                                         {somePoints, somePoints, somePoints, nullptr}};
#define CHECKS_OF_INIT(function, T)                                                                                              \
    KUV_CHECKS(function, call(InitArguments<T>{}),                                                                               \
               check(kuvStatusBadInterpolation, set<0>(0), set<0>(3), set<0>(4), set<0>(5), set<0>(7), set<0>(-1)), badSize<2>(), \
               check(kuvStatusNullPtr, null<3>(), null<4>(), null<5>(), null<6>()),                                              \
               check(kuvStatusBadChannels, set<1>(0), set<1>(2), set<1>(5), set<1>(8), set<1>(10), set<1>(-1)),                  \
               check(kuvStatusNullPtr, set<3>(without[0] + 0), set<3>(without[1] + 0), set<3>(without[3] + 0)),                  \
               check(kuvStatusNullPtr, set<4>(without[0] + 0), set<4>(without[2] + 0), set<4>(without[3] + 0)),                  \
               check(kuvStatusBadLutLevels, set<5>(tooFew[0] + 0), set<5>(tooFew[1] + 0), set<5>(tooFew[2] + 0), set<5>(tooFew[3] + 0)))
CHECKS_OF_INIT(kuviLUT_Init_8u, Kuv8u);
CHECKS_OF_INIT(kuviLUT_Init_16u, Kuv16u);

class ToneMapInit : public VariantTest {
protected:
    struct Place {
        Guard guard = Guard::end;
        int gap = 0;
    };

    static Geometry geometryOf(int bytes, Place at) {
        return {.rowBytes = bytes, .rows = 1, .step = bytes, .guard = at.guard, .gap = at.gap, .elementBytes = 1};
    }

    // Of a block of just the size that is asked for, every byte.
    void expectMap(const MapSource& source) { expectMap(source, Place()); }
    void expectMap(const MapSource& source, Place at) {
        Kuv32s bytes = 0;
        ASSERT_EQ(source.size(&bytes), kuvStatusOk);
        const Image block("block", geometryOf(bytes, at), random_());
        Bytes wanted = block.bytes();
        writeMap(source, GetParam().isH9(), block.row(), block.row(wanted, 0));
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << 8 * source.sampleBytes << " bits, interpolation " << source.interpolation
                                        << ", channels " << source.selector << ", block: " << block.geometry() << describe(source));
        EXPECT_EQ(watched(source.initOn(block.row())), kuvStatusOk);
        EXPECT_EQ(block.difference(wanted), "");
    }

    // The table of a single curve, as the map holds it.
    std::vector<int> tableOf(int sampleBytes, Kuv32s interpolation, const Curve& curve) {
        const MapSource source = {interpolation, kuvChannelsC1, sampleBytes, {curve}};
        Kuv32s bytes = 0;
        EXPECT_EQ(source.size(&bytes), kuvStatusOk);
        const Image block("block", geometryOf(bytes, Place()), random_());
        EXPECT_EQ(watched(source.initOn(block.row())), kuvStatusOk);
        const unsigned char* const table = block.row() + load<Kuv32u>(block.row(), 1);
        std::vector<int> entries;
        for (int i = 0; i < 1 << 8 * sampleBytes; ++i) entries.push_back(sampleBytes == 1 ? table[i] : load<Kuv16u>(table, i));
        return entries;
    }

    static std::string describe(const MapSource& source) {
        std::ostringstream text;
        for (const Curve& each : source.curves) {
            if (each.count() > 20) continue;
            text << "\n ";
            for (std::size_t k = 0; k < each.levels.size(); ++k) text << " " << each.levels[k] << ":" << each.values[k];
        }
        return text.str();
    }

    enum class Kind { sorted, unsorted, close, anything };

    Curve drawCurve(int sampleBytes, Kind kind, int fewest = 2) {
        const int entries = 1 << 8 * sampleBytes, n = fewest + below(random_, oneIn(random_, 4) ? 40 : 7);
        Curve curve;
        const auto any = [&] { return static_cast<Kuv32s>(random_()); };
        for (int k = 0; k < n; ++k) {
            const bool wild = kind == Kind::anything && oneIn(random_, 3);
            curve.levels.push_back(wild                   ? (oneIn(random_, 2) ? any() : oneIn(random_, 2) ? INT32_MAX : INT32_MIN)
                                   : kind == Kind::close  ? entries / 2 + below(random_, 3 * n)
                                   : kind == Kind::sorted ? below(random_, entries + 1)
                                                          : between(random_, -entries / 4, entries + entries / 4));
            curve.values.push_back(oneIn(random_, 6) && kind == Kind::anything ? any()
                                                                               : between(random_, -entries / 4, entries + entries / 4));
        }
        if (kind == Kind::sorted || kind == Kind::close) std::sort(curve.levels.begin(), curve.levels.end());
        return curve;
    }

    MapSource drawSource(int sampleBytes, Kuv32s interpolation, Kuv32s selector, Kind kind) {
        MapSource source = {interpolation, selector, sampleBytes, {}};
        const int fewest = oneIn(random_, 2) ? 4 : 2;
        for (int c = 0; c < usedChannels(selector); ++c) source.curves.push_back(drawCurve(sampleBytes, kind, fewest));
        return source;
    }

    Random random_{1};
};

KUV_FOR_EACH_VARIANT(ToneMapInit);

TEST_P(ToneMapInit, EveryCurveAndLayout) {
    for (const int sampleBytes : {1, 2}) {
        for (int round = 0; round < rounds(sampleBytes == 1 ? 400 : 20); ++round) {
            for (const Kuv32s interpolation : interpolations) {
                for (const Kuv32s selector : selectors) {
                    const Kind kind = static_cast<Kind>(below(random_, 4));
                    const Place at = {oneIn(random_, 2) ? Guard::end : Guard::begin, oneIn(random_, 2) ? 0 : below(random_, 130)};
                    expectMap(drawSource(sampleBytes, interpolation, selector, kind), at);
                    if (HasFailure()) return;
                }
            }
        }
    }
}

TEST_P(ToneMapInit, EveryAddressOfABlock) {
    for (int gap = 0; gap < 64 && !HasFailure(); ++gap) {
        for (const Guard guard : {Guard::end, Guard::begin}) {
            for (const Kuv32s selector : selectors) {
                expectMap(drawSource(1, interpolations[gap % 3], selector, Kind::sorted), {guard, gap});
                if (gap % 7 == 0) expectMap(drawSource(2, kuvLutStep, selector, Kind::sorted), {guard, gap});
            }
        }
    }
}

TEST_P(ToneMapInit, TablesBeginOn64ByteBoundaries) {
    std::vector<unsigned char> memory(1 << 20);
    for (int offset = 0; offset < 64; ++offset) {
        for (const Kuv32s selector : {kuvChannelsC1, kuvChannelsC3}) {
            const MapSource source = drawSource(2, kuvLutStep, selector, Kind::sorted);
            ASSERT_EQ(source.init(memory.data() + offset), kuvStatusOk);
            const auto start = reinterpret_cast<std::uintptr_t>(memory.data()) + static_cast<unsigned>(offset);
            EXPECT_EQ((start + load<Kuv32u>(memory.data() + offset, 1)) % 64, 0u);
        }
    }
}

// All other values are as in the caller's mode: the tables of px to g9 agree in each.
TEST_P(ToneMapInit, InEveryRoundingMode) {
    const MapSource sources[] = {drawSource(1, kuvLutLinear, kuvChannelsC3, Kind::sorted),
                                 drawSource(1, kuvLutCubic, kuvChannelsC3, Kind::close),
                                 drawSource(2, kuvLutLinear, kuvChannelsC1, Kind::sorted),
                                 drawSource(2, kuvLutCubic, kuvChannelsC1, Kind::sorted)};
    for (const int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO, FE_TONEAREST}) {
        for (const MapSource& each : sources) {
            std::fesetround(mode);
            expectMap(each);
            std::fesetround(FE_TONEAREST);
        }
    }
}

TEST_P(ToneMapInit, TheMapDoesNotNeedTheArrays) {
    for (const int sampleBytes : {1, 2}) {
        MapSource source = drawSource(sampleBytes, kuvLutStep, kuvChannelsC3, Kind::sorted);
        std::vector<unsigned char> block(1 << 19), before;
        ASSERT_EQ(source.init(block.data()), kuvStatusOk);
        before = block;
        std::vector<Kuv16u> image(300), again;
        for (std::size_t i = 0; i < image.size(); ++i) image[i] = static_cast<Kuv16u>(random_());
        again = image;
        const auto apply = [&](std::vector<Kuv16u>& samples) {
            const auto* const map = reinterpret_cast<const KuviToneMapSpec*>(block.data());
            return sampleBytes == 1 ? kuviLUT_8u_C3IR(reinterpret_cast<Kuv8u*>(samples.data()), 600, {200, 1}, map)
                                    : kuviLUT_16u_C3IR(samples.data(), 600, {100, 1}, map);
        };
        EXPECT_EQ(apply(image), kuvStatusOk);
        for (Curve& each : source.curves) {
            std::fill(each.levels.begin(), each.levels.end(), -7);
            std::fill(each.values.begin(), each.values.end(), 9);
        }
        EXPECT_EQ(apply(again), kuvStatusOk);
        EXPECT_EQ(image, again);
        EXPECT_EQ(block, before);
    }
}

TEST_P(ToneMapInit, AnotherMapOnTheSameBlock) {
    Kuv32s bytes = 0;
    const MapSource largest = {
        kuvLutStep, kuvChannelsC3, 2, {drawCurve(2, Kind::sorted, 9), drawCurve(2, Kind::sorted, 9), drawCurve(2, Kind::sorted, 9)}};
    ASSERT_EQ(largest.size(&bytes), kuvStatusOk);
    const Image block("block", geometryOf(bytes, Place()), 7);
    ASSERT_EQ(largest.init(block.row()), kuvStatusOk);
    for (const int sampleBytes : {1, 2, 1}) {
        for (const Kuv32s selector : {kuvChannelsC3, kuvChannelsC1, kuvChannelsAC4}) {
            const MapSource next = drawSource(sampleBytes, kuvLutCubic, selector, Kind::sorted);
            Bytes wanted = block.bytes();
            writeMap(next, GetParam().isH9(), block.row(), block.row(wanted, 0));
            ASSERT_EQ(next.init(block.row()), kuvStatusOk);
            EXPECT_EQ(block.difference(wanted), "");
        }
    }
}

// Rounded halves up: 0.5 is added before the sum is cut.
TEST_P(ToneMapInit, ARampOf256) {
    const std::vector<int> table = tableOf(1, kuvLutLinear, {{0, 256}, {0, 255}});
    for (int x = 0; x < 256; ++x) EXPECT_EQ(table[static_cast<std::size_t>(x)], (x * 255 + 128) / 256) << x;
}

TEST_P(ToneMapInit, TheIdentityAroundTheLevels) {
    for (const int sampleBytes : {1, 2}) {
        for (const Kuv32s interpolation : interpolations) {
            const std::vector<int> table = tableOf(sampleBytes, interpolation, {{10, 20}, {200, 100}});
            for (int x = 0; x < 1 << 8 * sampleBytes; ++x) {
                const int wanted = x < 10 || x >= 20 ? x : interpolation == kuvLutStep ? 200 : 200 - 10 * (x - 10);
                ASSERT_EQ(table[static_cast<std::size_t>(x)], wanted) << x << ", interpolation " << interpolation;
            }
        }
    }
}

TEST_P(ToneMapInit, ASpanOfOneEntryIsItsValue) {
    for (const Kuv32s interpolation : {kuvLutLinear, kuvLutCubic}) {
        const std::vector<int> table = tableOf(1, interpolation, {{10, 11, 12, 13, 14}, {7, 300, -5, 255, 80}});
        EXPECT_EQ(table[10], 7);
        EXPECT_EQ(table[11], 255);
        EXPECT_EQ(table[12], 0);
        EXPECT_EQ(table[13], 255);
        EXPECT_EQ(table[14], 14);
    }
}

// A span that limiting leaves one entry of has no arithmetic either.
TEST_P(ToneMapInit, SpansThatLimitingMakesShort) {
    for (const int sampleBytes : {1, 2}) {
        const int max = (1 << 8 * sampleBytes) - 1;
        const auto last = static_cast<std::size_t>(max);
        // Wholly above the table: only linear and cubic begin at its last entry.
        const Curve above = {{0, max + 10, max + 20, max + 30}, {0, 33, 44, 55}};
        EXPECT_EQ(tableOf(sampleBytes, kuvLutLinear, above)[last], 44);
        EXPECT_EQ(tableOf(sampleBytes, kuvLutCubic, above)[last], 44);
        EXPECT_EQ(tableOf(sampleBytes, kuvLutStep, above)[last], 0);
        // From below 0 to 1.
        const Curve before = {{-100, 1, 50, 100}, {17, 200, 60, 70}};
        for (const Kuv32s interpolation : interpolations) EXPECT_EQ(tableOf(sampleBytes, interpolation, before)[0], 17);
        // From below 0 to 2: two entries, on the line.
        EXPECT_EQ(tableOf(sampleBytes, kuvLutLinear, {{-100, 2}, {0, 102}})[0], 100);
        // Wholly below 0: nothing.
        EXPECT_EQ(tableOf(sampleBytes, kuvLutLinear, {{-100, -50, 3}, {9, 9, 9}})[0], 9);
        EXPECT_EQ(tableOf(sampleBytes, kuvLutLinear, {{-100, 0, 3}, {9, 8, 8}})[0], 8);
    }
}

TEST_P(ToneMapInit, IntervalsThatDoNotRise) {
    for (const Kuv32s interpolation : interpolations) {
        // 50 to 20 is passed over; what follows writes from 20 on; 60 to 256 is the identity.
        const std::vector<int> table = tableOf(1, interpolation, {{10, 50, 20, 60}, {100, 100, 200, 200}});
        for (int x = 0; x < 256; ++x) {
            const int wanted = x < 10 || x >= 60 ? x : x < 20 ? 100 : 200;
            if (interpolation == kuvLutCubic) continue;
            EXPECT_EQ(table[static_cast<std::size_t>(x)], wanted) << x;
        }
        EXPECT_EQ(tableOf(1, interpolation, {{30, 30, 30, 30}, {1, 2, 3, 4}})[30], 30);
    }
    // Equal after limiting: step passes over, linear has an entry.
    EXPECT_EQ(tableOf(1, kuvLutStep, {{300, 400}, {5, 6}})[255], 255);
    EXPECT_EQ(tableOf(1, kuvLutLinear, {{300, 400}, {5, 6}})[255], 5);
}

// The bounds of the identity go past the table's ends, its writes do not.
TEST_P(ToneMapInit, LevelsFarOutside) {
    for (const int sampleBytes : {1, 2}) {
        for (const Kuv32s interpolation : interpolations) {
            for (const Curve& each : {Curve{{1 << 20, 1 << 21}, {1, 2}}, Curve{{-70000, -1}, {1, 2}}, Curve{{INT32_MAX, INT32_MIN}, {1, 2}},
                                      Curve{{INT32_MIN, INT32_MAX}, {-40, 90}}, Curve{{INT32_MIN, INT32_MIN + 1}, {1, 2}},
                                      Curve{{INT32_MIN, 5, INT32_MAX, 7, 100}, {INT32_MIN, INT32_MAX, 0, INT32_MAX, INT32_MIN}}}) {
                for (const Guard guard : {Guard::end, Guard::begin}) {
                    expectMap({interpolation, kuvChannelsC1, sampleBytes, {each}}, {guard, 0});
                }
            }
        }
    }
}

TEST_P(ToneMapInit, CubicThroughEqualLevels) {
    for (const int sampleBytes : {1, 2}) {
        const std::vector<int> table = tableOf(sampleBytes, kuvLutCubic, {{10, 30, 30, 60}, {100, 50, 120, 90}});
        for (int x = 0; x < 100; ++x) EXPECT_EQ(table[static_cast<std::size_t>(x)], x < 10 || x >= 60 ? x : 0) << x;
    }
}

TEST_P(ToneMapInit, CubicOvershootIsLimited) {
    const std::vector<int> table = tableOf(1, kuvLutCubic, {{0, 20, 200, 256}, {0, 250, 250, 0}});
    EXPECT_EQ(table[20], 250);
    EXPECT_EQ(table[110], 255);
    const std::vector<int> below = tableOf(2, kuvLutCubic, {{0, 5000, 60000, 65536}, {65535, 10, 10, 65535}});
    EXPECT_EQ(below[5000], 10);
    EXPECT_EQ(below[30000], 0);
}

// A sum past 32 bits is 0 for bytes. Words limit it first.
TEST_P(ToneMapInit, CubicPast32Bits) {
    const Curve down = {{0, 100, 101, 102}, {0, 0, 1000000000, -1000000000}}, up = {{0, 100, 101, 102}, {0, 0, -1000000000, 1000000000}};
    EXPECT_EQ(tableOf(1, kuvLutCubic, down)[50], 0);
    EXPECT_EQ(tableOf(2, kuvLutCubic, down)[50], 0);
    EXPECT_EQ(tableOf(1, kuvLutCubic, up)[50], 0);
    EXPECT_EQ(tableOf(2, kuvLutCubic, up)[50], 65535);
}

// The difference of the levels wraps to -2, so that the lines leave 32 bits within the table.
TEST_P(ToneMapInit, LinearPast32Bits) {
    for (const int sampleBytes : {1, 2}) {
        for (const Kuv32s value : {2000000000, -2000000000}) {
            const std::vector<int> table = tableOf(sampleBytes, kuvLutLinear, {{INT32_MIN, INT32_MAX - 1}, {0, value}});
            EXPECT_EQ(table[0], 0);
            EXPECT_EQ(table[9], 0);
        }
        EXPECT_EQ(tableOf(sampleBytes, kuvLutLinear, {{0, 2, 6}, {0, 2000000000, 2147483647}})[1], (1 << 8 * sampleBytes) - 1);
    }
}

TEST_P(ToneMapInit, CubicOfFourPointsIsOnePolynomial) {
    const auto f = [](int x) { return (x - 40) * (x - 90) * (x - 150) / 2000.0 + 120; };
    Curve curve;
    for (const int level : {20, 60, 100, 180}) {
        curve.levels.push_back(level);
        curve.values.push_back(static_cast<Kuv32s>(f(level)));
        ASSERT_EQ(curve.values.back(), f(level));
    }
    const std::vector<int> table = tableOf(2, kuvLutCubic, curve);
    for (int x = 20; x < 180; ++x) EXPECT_NEAR(table[static_cast<std::size_t>(x)], f(x), 0.5001) << x;
}

// Inner intervals follow the points around them, the outer ones the next four.
TEST_P(ToneMapInit, CubicFollowsItsNeighbours) {
    const auto f = [](double x) { return x * x * x / 300 - x * x / 5 + 12 * x + 40; };
    const auto g = [](double x) { return x * x / 4 + 60 * x + 100; };
    Curve curve;
    for (int k = 0; k < 12; ++k) {
        curve.levels.push_back(30 * k);
        curve.values.push_back(static_cast<Kuv32s>(k < 6 ? f(30 * k) : g(30 * k)));
    }
    const std::vector<int> table = tableOf(2, kuvLutCubic, curve);
    for (int x = 0; x < 120; ++x) EXPECT_NEAR(table[static_cast<std::size_t>(x)], f(x), 0.5001) << x;
    for (int x = 210; x < 330; ++x) EXPECT_NEAR(table[static_cast<std::size_t>(x)], g(x), 0.5001) << x;
}

// One channel of fewer levels makes all of them linear; the map is cubic by name, and keeps its counts.
TEST_P(ToneMapInit, CubicOfFewLevels) {
    const Curve curved = {{0, 60, 120, 255}, {0, 100, 20, 255}}, few = {{0, 100, 200}, {0, 90, 255}};
    for (const int sampleBytes : {1, 2}) {
        for (const Kuv32s selector : {kuvChannelsC3, kuvChannelsAC4, kuvChannelsC4}) {
            for (int c = 0; c < usedChannels(selector); ++c) {
                MapSource source = {kuvLutCubic, selector, sampleBytes,
                                    std::vector<Curve>(static_cast<std::size_t>(usedChannels(selector)), curved)};
                source.curves[static_cast<std::size_t>(c)] = few;
                ASSERT_EQ(source.rule(), kuvLutLinear);
                expectMap(source);
            }
        }
        expectMap({kuvLutCubic, kuvChannelsC1, sampleBytes, {few}});
        EXPECT_EQ(tableOf(sampleBytes, kuvLutCubic, few), tableOf(sampleBytes, kuvLutLinear, few));
        EXPECT_NE(tableOf(sampleBytes, kuvLutCubic, curved), tableOf(sampleBytes, kuvLutLinear, curved));
    }
}

// The place of the tables is written before the selector and the channels are examined, and nothing else.
TEST_P(ToneMapInit, WhatAFailureWrites) {
    const Kuv32s* const pointers[4] = {somePoints, somePoints, somePoints, somePoints};
    for (const int sampleBytes : {1, 2}) {
        const auto function = sampleBytes == 1 ? kuviLUT_Init_8u : kuviLUT_Init_16u;
        for (int gap = 0; gap < 70; gap += 13) {
            const Image block("block", geometryOf(600000, {Guard::begin, gap}), 3);
            auto* const spec = block.row<KuviToneMapSpec>();
            const Bytes before = block.bytes();
            EXPECT_EQ(function(9, 1, {1, 1}, pointers, pointers, enough, spec), kuvStatusBadInterpolation);
            EXPECT_EQ(function(1, 1, {0, 1}, pointers, pointers, enough, spec), kuvStatusBadSize);
            EXPECT_EQ(function(1, 1, {1, 1}, nullptr, pointers, enough, spec), kuvStatusNullPtr);
            EXPECT_EQ(block.difference(before), "");
            Bytes wanted = before;
            store(block.row(wanted, 0), 1, static_cast<Kuv32u>(firstPosition(spec)));
            EXPECT_EQ(function(1, 2, {1, 1}, pointers, pointers, enough, spec), kuvStatusBadChannels);
            EXPECT_EQ(block.difference(wanted), "");
            EXPECT_EQ(function(2, 3, {1, 1}, without[2], pointers, enough, spec), kuvStatusNullPtr);
            EXPECT_EQ(function(6, 9, {1, 1}, pointers, pointers, tooFew[2], spec), kuvStatusBadLutLevels);
            EXPECT_EQ(function(1, 3, {1, 1}, pointers, without[2], enough, spec), kuvStatusNullPtr);
            EXPECT_EQ(function(1, 1, {1, 1}, pointers, pointers, tooFew[0], spec), kuvStatusBadLutLevels);
            EXPECT_EQ(block.difference(wanted), "");
        }
    }
}

// Step maps of words examine channel by channel, all others kind by kind.
TEST_P(ToneMapInit, TheOrderOfChannels) {
    std::vector<unsigned char> block(600000);
    auto* const spec = reinterpret_cast<KuviToneMapSpec*>(block.data());
    const Kuv32s* const pointers[4] = {somePoints, somePoints, somePoints, somePoints};
    for (const int sampleBytes : {1, 2}) {
        const auto function = sampleBytes == 1 ? kuviLUT_Init_8u : kuviLUT_Init_16u;
        for (const Kuv32s interpolation : interpolations) {
            const bool byChannel = sampleBytes == 2 && interpolation == kuvLutStep;
            for (const Kuv32s selector : selectors) {
                for (int count = 0; count < usedChannels(selector); ++count) {
                    for (int pointer = 0; pointer < usedChannels(selector); ++pointer) {
                        const KuvStatus wanted = byChannel && count < pointer ? kuvStatusBadLutLevels : kuvStatusNullPtr;
                        SCOPED_TRACE(testing::Message()
                                     << sampleBytes << " " << interpolation << " " << selector << " " << count << " " << pointer);
                        EXPECT_EQ(function(interpolation, selector, {1, 1}, without[pointer], pointers, tooFew[count], spec), wanted);
                        EXPECT_EQ(function(interpolation, selector, {1, 1}, pointers, without[pointer], tooFew[count], spec), wanted);
                    }
                }
            }
        }
    }
}

// Four channels of words in steps are built one by one.
TEST_P(ToneMapInit, TablesBeforeTheChannelThatFails) {
    const Kuv32s levels[] = {100, 60000}, values[] = {7, 8}, counts[4] = {2, 2, 2, 1};
    const Kuv32s* const levelsOf[4] = {levels, levels, levels, levels};
    const Kuv32s* const valuesOf[4] = {values, values, values, values};
    Bytes block(184 + 4 * 0x20000, 0x5A);
    auto* const spec = reinterpret_cast<KuviToneMapSpec*>(block.data());
    EXPECT_EQ(kuviLUT_Init_16u(kuvLutStep, kuvChannelsC4, {1, 1}, valuesOf, levelsOf, counts, spec), kuvStatusBadLutLevels);
    EXPECT_EQ(load<Kuv32u>(block.data()), 0x5A5A5A5Au);
    const unsigned char* const tables = block.data() + firstPosition(block.data());
    for (int c = 0; c < 4; ++c) {
        for (int x = 0; x < 65536; ++x) {
            const int wanted = c == 3 ? 0x5A5A : x < 100 || x >= 60000 ? x : 7;
            ASSERT_EQ(load<Kuv16u>(tables, c * 65536 + x), wanted) << c << " " << x;
        }
    }
}

// Neither pointers, counts and points nor what they lie in need be aligned.
TEST_P(ToneMapInit, ArraysAtAnyAddress) {
    constexpr int used = 3, n = 4, pointerBytes = used * static_cast<int>(sizeof(void*));
    for (const int sampleBytes : {1, 2}) {
        for (const Kuv32s interpolation : interpolations) {
            std::vector<unsigned char> wanted;
            for (int gap = 0; gap < 8; ++gap) {
                unsigned char points[2][4 * n + 8], counts[4 * used + 8], pointers[2][pointerBytes + 8];
                for (int k = 0; k < n; ++k) {
                    store(points[0] + gap, k, 200 - 30 * k);
                    store(points[1] + gap, k, 20 * k);
                }
                for (int c = 0; c < used; ++c) {
                    store(counts + gap, c, n);
                    for (int i = 0; i < 2; ++i) store(pointers[i] + gap, c, points[i] + gap);
                }
                const auto function = sampleBytes == 1 ? kuviLUT_Init_8u : kuviLUT_Init_16u;
                const auto listAt = [&](int i) { return reinterpret_cast<const Kuv32s* const*>(pointers[i] + gap); };
                alignas(64) static unsigned char block[500000];
                EXPECT_EQ(watched([&] {
                              return function(interpolation, kuvChannelsC3, {1, 1}, listAt(0), listAt(1),
                                              reinterpret_cast<const Kuv32s*>(counts + gap), reinterpret_cast<KuviToneMapSpec*>(block));
                          }), kuvStatusOk);
                if (gap == 0) wanted.assign(std::begin(block), std::end(block));
                EXPECT_TRUE(std::equal(wanted.begin(), wanted.end(), std::begin(block))) << GetParam() << ", gap " << gap;
            }
        }
    }
}

// Nothing of an array is read behind what its count says, nor pointers of channels that are not in use.
TEST_P(ToneMapInit, ReadsWhatItMay) {
    Bytes memory(600000);
    for (const int sampleBytes : {1, 2}) {
        for (const Kuv32s interpolation : interpolations) {
            for (const Kuv32s selector : selectors) {
                const int used = usedChannels(selector), pointerBytes = used * static_cast<int>(sizeof(void*)), n = 5;
                for (const Guard guard : {Guard::end, Guard::begin}) {
                    const auto list = [&](const char* name, int bytes) {
                        return Image(name, {.rowBytes = bytes, .rows = 1, .step = bytes, .guard = guard, .gap = 0, .elementBytes = 4}, 1);
                    };
                    const Image levels = list("levels", 4 * n), values = list("values", 4 * n), counts = list("counts", 4 * used),
                                levelPointers = list("level pointers", pointerBytes), valuePointers = list("value pointers", pointerBytes);
                    for (int k = 0; k < n; ++k) {
                        store(levels.row(), k, 20 * k);
                        store(values.row(), k, 200 - 30 * k);
                    }
                    for (int c = 0; c < used; ++c) {
                        store(counts.row(), c, n);
                        store(levelPointers.row(), c, levels.row());
                        store(valuePointers.row(), c, values.row());
                    }
                    const auto function = sampleBytes == 1 ? kuviLUT_Init_8u : kuviLUT_Init_16u;
                    EXPECT_EQ(watched([&] {
                                  return function(interpolation, selector, {1, 1}, valuePointers.row<const Kuv32s*>(),
                                                  levelPointers.row<const Kuv32s*>(), counts.row<const Kuv32s>(),
                                                  reinterpret_cast<KuviToneMapSpec*>(memory.data()));
                              }),
                              kuvStatusOk);
                }
            }
        }
    }
}

}  // namespace
