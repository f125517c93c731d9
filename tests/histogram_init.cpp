// How bin plans are sized, made and read.
#include <limits>

#include "support/agreement.hpp"
#include "support/results.hpp"
#include "support/statuses.hpp"
#include "support/histogram_reference.hpp"

namespace {

using namespace kuvtest;

constexpr Kuv32s dataTypes[] = {kuvDataType8u, kuvDataType16u, kuvDataType16s, kuvDataType32f};

template <class T>
struct OneOf {
    std::vector<T> values;

    std::tuple<T> operator()(Draw& draw) const {
        return {values[static_cast<std::size_t>(below(draw.random, static_cast<int>(values.size())))]};
    }
};
template <class T>
struct Fixed {
    T value;

    std::tuple<T> operator()(Draw&) const { return {value}; }
};
const OneOf<Kuv32s> anyType = {{dataTypes, dataTypes + 4}};
constexpr Fixed<Kuv32s> four = {4};

const Kuv32s enough[4] = {2, 3, 4, 4};
const Kuv32s tooFew[4][4] = {{1, 3, 4, 4}, {2, -1, 4, 4}, {2, 3, 0, 4}, {2, 3, 4, INT32_MIN}};
const float nan = std::numeric_limits<float>::quiet_NaN(), infinity = std::numeric_limits<float>::infinity();
const float rising[] = {1, 2, 3, 4}, equal[] = {1, 1, 3, 4}, falling[] = {2, 1, 3, 4}, withNaN[] = {nan, 1, 2, 3}, toNaN[] = {1, nan, 2, 3};
const float* const lists[4] = {rising, rising, rising, rising};
const float* const without[4][4] = {{nullptr, rising, rising, rising}, {rising, nullptr, rising, rising},
                                    {rising, rising, nullptr, rising}, {rising, rising, rising, nullptr}};
const float* const unsorted[4][4] = {{equal, rising, rising, rising}, {rising, falling, rising, rising},
                                     {rising, rising, withNaN, rising}, {rising, rising, rising, toNaN}};
const float lower[4] = {1, 2, 3, 4}, upper[4] = {101, 102, 103, 104};
const float notAbove[4][4] = {{1, 102, 103, 104}, {101, 1, 103, 104}, {101, 102, nan, 104}, {101, 102, 103, -infinity}};

struct PlanBlock {
    std::tuple<KuviBinPlan*> operator()(Draw& draw) const {
        return {draw.image<Kuv8u>(Role::output, 64 + 4 * 13, 1, 0).row<KuviBinPlan>()};
    }
};

KUV_AGREES(kuviHistogramGetBufferSize, anyType, Fixed<KuviSize>{{3, 3}}, Fixed<const Kuv32s*>{enough}, four, OneOf<Kuv32s>{{0, 1, 7}},
           Results<Kuv32s>{}, Results<Kuv32s>{});
KUV_CHECKS(kuviHistogramGetBufferSize,
           call(anyType, Fixed<KuviSize>{{3, 3}}, Fixed<const Kuv32s*>{enough}, four, OneOf<Kuv32s>{{0, 1, 7}}, Results<Kuv32s>{},
                Results<Kuv32s>{}),
           check(kuvStatusNullPtr, null<2>(), null<5>(), null<6>()), badSize<1>(),
           check(kuvStatusBadChannelCount, set<3>(0), set<3>(2), set<3>(5), set<3>(9), set<3>(-1), set<3>(INT32_MIN)),
           check(kuvStatusBadHistLevels, set<2>(tooFew[0]), set<2>(tooFew[1]), set<2>(tooFew[2]), set<2>(tooFew[3])));

KUV_AGREES(kuviHistogramInit, anyType, Fixed<const float* const*>{lists}, Fixed<const Kuv32s*>{enough}, four, PlanBlock{});
KUV_CHECKS(kuviHistogramInit, call(anyType, Fixed<const float* const*>{lists}, Fixed<const Kuv32s*>{enough}, four, PlanBlock{}),
           check(kuvStatusBadDataType, set<0>(0), set<0>(2), set<0>(9), set<0>(14), set<0>(-1), set<0>(INT32_MIN)),
           check(kuvStatusNullPtr, null<1>(), null<2>(), null<4>()),
           check(kuvStatusBadChannelCount, set<3>(0), set<3>(2), set<3>(5), set<3>(9), set<3>(-1)),
           check(kuvStatusNullPtr, set<1>(without[0])), check(kuvStatusBadHistLevels, set<2>(tooFew[0])),
           check(kuvStatusRangeOrder, set<1>(unsorted[0])), check(kuvStatusNullPtr, set<1>(without[1])),
           check(kuvStatusBadHistLevels, set<2>(tooFew[1])), check(kuvStatusRangeOrder, set<1>(unsorted[1])),
           check(kuvStatusNullPtr, set<1>(without[2])), check(kuvStatusBadHistLevels, set<2>(tooFew[2])),
           check(kuvStatusRangeOrder, set<1>(unsorted[2])), check(kuvStatusNullPtr, set<1>(without[3])),
           check(kuvStatusBadHistLevels, set<2>(tooFew[3])), check(kuvStatusRangeOrder, set<1>(unsorted[3])));

KUV_AGREES(kuviHistogramUniformInit, anyType, Fixed<const float*>{lower}, Fixed<const float*>{upper}, Fixed<const Kuv32s*>{enough}, four,
           PlanBlock{});
KUV_CHECKS(kuviHistogramUniformInit,
           call(anyType, Fixed<const float*>{lower}, Fixed<const float*>{upper}, Fixed<const Kuv32s*>{enough}, four, PlanBlock{}),
           check(kuvStatusBadDataType, set<0>(0), set<0>(3), set<0>(6), set<0>(12), set<0>(INT32_MAX)),
           check(kuvStatusNullPtr, null<1>(), null<2>(), null<3>(), null<5>()),
           check(kuvStatusBadChannelCount, set<4>(0), set<4>(2), set<4>(5), set<4>(9), set<4>(-1)),
           check(kuvStatusBadHistLevels, set<3>(tooFew[0])), check(kuvStatusRangeOrder, set<2>(notAbove[0])),
           check(kuvStatusBadHistLevels, set<3>(tooFew[1])), check(kuvStatusRangeOrder, set<2>(notAbove[1])),
           check(kuvStatusBadHistLevels, set<3>(tooFew[2])), check(kuvStatusRangeOrder, set<2>(notAbove[2])),
           check(kuvStatusBadHistLevels, set<3>(tooFew[3])), check(kuvStatusRangeOrder, set<2>(notAbove[3])));

// (plan, levels)
struct PlanAndLevels {
    std::tuple<const KuviBinPlan*, Kuv32f* const*> operator()(Draw& draw) const {
        PlanSource source = {dataTypes[below(draw.random, 4)], {}};
        constexpr int counts[] = {1, 3, 4};
        std::vector<Kuv32f*> results;
        for (int c = counts[below(draw.random, 3)]; c > 0; --c) {
            const float from = static_cast<float>(between(draw.random, -70000, 70000)) / 3;
            source.channels.emplace_back(from, from + static_cast<float>(between(draw.random, 1, 1000)), between(draw.random, 2, 70));
            results.push_back(draw.image<Kuv32f>(Role::output, source.channels.back().count, 1, 0).row<Kuv32f>());
        }
        auto* const spec = draw.image<Kuv8u>(Role::record, source.bytes(), 1, 0).row<KuviBinPlan>();
        EXPECT_GE(source.init(spec), kuvStatusOk);
        const Image& list = draw.image<Kuv64u>(Role::record, static_cast<int>(results.size()), 1, 0);  // as large as a pointer
        std::memcpy(list.row(), results.data(), sizeof(results[0]) * results.size());
        return {spec, list.row<Kuv32f* const>()};
    }
};
const KuviBinPlan* stranger(int i) {
    static constexpr Kuv32u words[2][16] = {{1, 1, 1, 0x74736967}, {1, 1, 1, 0}};
    return reinterpret_cast<const KuviBinPlan*>(words[i]);
}
KUV_AGREES(kuviHistogramGetLevels, PlanAndLevels{});
KUV_CHECKS(kuviHistogramGetLevels, call(PlanAndLevels{}), check(kuvStatusNullPtr, null<0>(), null<1>()),
           check(kuvStatusBadArg, set<0>(stranger(0)), set<0>(stranger(1))));

class HistogramInit : public VariantTest {
protected:
    void expectPlan(const PlanSource& source, Guard guard = Guard::end, int gap = 0) {
        const Image block("plan", {source.bytes(), 1, source.bytes(), guard, gap, 4}, 3);
        Bytes wanted = block.bytes();
        source.write(block.row(wanted, 0));
        EXPECT_EQ(watched(source.initOn(block.row())), source.status());
        EXPECT_EQ(block.difference(wanted), "");
        expectLevels(source, block);
    }
    void expectLevels(const PlanSource& source, const Image& block) {
        std::vector<std::unique_ptr<Image>> arrays;
        float* pointers[4] = {};
        for (int c = 0; c < source.channelCount(); ++c) {
            const int bytes = 4 * (source.bins(c) + 1);
            arrays.push_back(std::make_unique<Image>("levels", Geometry{bytes, 1, bytes, Guard::end, c, 4}, 5));
            pointers[c] = arrays.back()->row<float>();
        }
        const Bytes before = block.bytes();
        EXPECT_EQ(watched([&] { return kuviHistogramGetLevels(block.row<KuviBinPlan>(), pointers); }), kuvStatusOk);
        EXPECT_EQ(block.difference(before), "");
        for (int c = 0; c < source.channelCount(); ++c) {
            const Image& array = *arrays[static_cast<std::size_t>(c)];
            for (int k = 0; k <= source.bins(c); ++k) {
                const float wanted = static_cast<float>(source.level(c, k));
                EXPECT_TRUE(sameOrBothNaN<float>(array.row<float>() + k, &wanted))
                    << c << " " << k << " " << load<float>(array.row(), k) << " " << wanted;
            }
        }
    }
    std::vector<float> levelsOf(const PlanSource& source) {
        const BinPlan plan(source);
        std::vector<float> levels(static_cast<std::size_t>(source.bins(0)) + 1);
        float* const list = levels.data();
        EXPECT_EQ(kuviHistogramGetLevels(plan.get(), &list), kuvStatusOk);
        return levels;
    }
    Levels drawLevels(bool uniform) {
        const int count = oneIn(random_, 4) ? between(random_, 2, 400) : between(random_, 2, 9);
        const int scale = oneIn(random_, 3) ? 1 : 1 << below(random_, 8);
        const auto any = [&] { return static_cast<float>(between(random_, -100000, 100000)) / static_cast<float>(scale); };
        if (uniform) {
            const float a = any();
            return {a, a + 0.01f + static_cast<float>(below(random_, 70000)) / static_cast<float>(scale), count};
        }
        std::vector<float> list = {any()};
        while (static_cast<int>(list.size()) < count) {
            list.push_back(list.back() + 0.1f + static_cast<float>(below(random_, 5000)) / static_cast<float>(scale));
        }
        return freeLevels(list);
    }

    Random random_{1};
};

KUV_FOR_EACH_VARIANT(HistogramInit);

TEST_P(HistogramInit, Sizes) {
    const Kuv32s counts[4] = {2, 300, 7, 65537};
    for (const Kuv32s uniform : {0, 1, -5}) {
        for (const int channels : {1, 3, 4}) {
            const int levels = channels == 1 ? 2 : channels == 3 ? 309 : 65846;
            for (const Kuv32s type : {1, 5, 7, 13, 0, 2, 14, -1, INT32_MAX}) {
                const Image counted("level counts", {4 * channels, 1, 0, Guard::end, 0, 4}, 1);
                std::memcpy(counted.row(), counts, sizeof(Kuv32s) * static_cast<std::size_t>(channels));
                Kuv32s plan = -1, buffer = -1;
                const bool known = type == 1 || type == 5 || type == 7 || type == 13;
                EXPECT_EQ(watched([&] {
                              return kuviHistogramGetBufferSize(type, {5, 5}, counted.row<Kuv32s>(), channels, uniform, &plan, &buffer);
                          }), known ? kuvStatusOk : kuvStatusBadDataType);
                EXPECT_EQ(plan, 64 + 4 * levels);
                EXPECT_EQ(buffer, type == 1 ? 1024 * channels : type == 5 || type == 7 ? 0x40000 * channels : 0) << type;
            }
        }
    }
}

// The data type is examined last.
TEST_P(HistogramInit, LevelsComeBeforeTheType) {
    Kuv32s plan = -1, buffer = -1;
    for (const auto& counts : tooFew) {
        EXPECT_EQ(kuviHistogramGetBufferSize(0, {5, 5}, counts, 4, 0, &plan, &buffer), kuvStatusBadHistLevels);
    }
    EXPECT_EQ(plan, -1);
    EXPECT_EQ(buffer, -1);
}

TEST_P(HistogramInit, SizesPast32Bits) {
    const Kuv32s counts[4] = {INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX};
    Kuv32s plan, buffer;
    EXPECT_EQ(kuviHistogramGetBufferSize(kuvDataType8u, {1, 1}, counts, 4, 0, &plan, &buffer), kuvStatusOk);
    EXPECT_EQ(plan, 48);
}

TEST_P(HistogramInit, Records) {
    for (int i = 0; i < rounds(400) && !HasFailure(); ++i) {
        const bool uniform = oneIn(random_, 2);
        PlanSource source = {dataTypes[below(random_, 4)], {}};
        const int channels[] = {1, 3, 4};
        for (int c = channels[below(random_, 3)]; c > 0; --c) source.channels.push_back(drawLevels(uniform));
        expectPlan(source, oneIn(random_, 2) ? Guard::end : Guard::begin, below(random_, 9));
    }
}

TEST_P(HistogramInit, LevelsBetweenIntegers) {
    for (const Kuv32s type : {kuvDataType8u, kuvDataType16u, kuvDataType16s}) {
        EXPECT_EQ(levelsOf({type, {freeLevels({0.5f, 1.5f})}}), (std::vector<float>{1, 2}));
        EXPECT_EQ(levelsOf({type, {Levels(0.5f, 1.5f, 2)}}), (std::vector<float>{0, 1}));
        EXPECT_EQ(levelsOf({type, {freeLevels({-2.0f, -1.5f, -0.5f, 0.0f, 1.5f, 3.0f})}}), (std::vector<float>{-2, -1, 0, 0, 2, 3}));
        EXPECT_EQ(levelsOf({type, {Levels(-1.9f, 4.1f, 6)}}), (std::vector<float>{-1, 0, 0, 1, 2, 4}));
    }
}

TEST_P(HistogramInit, NarrowBins) {
    const PlanSource narrow = {kuvDataType8u, {Levels(0, 10, 21)}};
    EXPECT_EQ(narrow.status(), kuvStatusSizeWarning);
    expectPlan(narrow);
    std::vector<float> twice;
    for (int k = 0; k <= 20; ++k) twice.push_back(static_cast<float>(k / 2));
    EXPECT_EQ(levelsOf(narrow), twice);
    // Judged in double precision, and for all channels.
    for (const Kuv32s type : dataTypes) {
        for (const float first : {0.0f, 1e-9f, -1e-9f}) expectPlan({type, {Levels(first, 2, 3)}});
        expectPlan({type, {Levels(0, 10, 3), Levels(0, 10, 3), Levels(0, 10, 12)}});
    }
}

TEST_P(HistogramInit, LevelsFarOutside) {
    const float huge = std::numeric_limits<float>::max();
    const float past = 2147483648.0f, last = 2147483520.0f;
    for (const Kuv32s type : dataTypes) {
        expectPlan({type, {freeLevels({-infinity, -huge, -past, -last, 0.5f, last, past, huge, infinity})}});
        for (const float a : {-infinity, -huge, -past, -last, 0.0f}) {
            for (const float b : {last, past, huge, infinity}) {
                for (const int count : {2, 3, 8}) expectPlan({type, {Levels(a, b, count)}});
            }
        }
    }
}

// Of single precision, denormals and the neighbours of zero too.
TEST_P(HistogramInit, RealLevels) {
    const float tiny = std::numeric_limits<float>::denorm_min();
    expectPlan({kuvDataType32f, {freeLevels({-1.0f, -tiny, 0.0f, tiny, 1.0f})}});
    expectPlan({kuvDataType32f, {Levels(0, tiny, 9)}});
    expectPlan({kuvDataType32f, {Levels(1, std::nextafter(1.0f, 2.0f), 100)}});
}

// An error leaves what was there, which is still a plan; another plan may follow.
TEST_P(HistogramInit, Again) {
    const PlanSource first = {kuvDataType16u, {freeLevels({1, 2, 3}), freeLevels({1, 2}), freeLevels({4, 5, 6})}};
    const PlanSource second = {kuvDataType32f, {Levels(0, 1, 9)}};
    const Image block("plan", {first.bytes() + 100, 1, 0, Guard::begin, 0, 4}, 3);
    Bytes wanted = block.bytes();
    for (const PlanSource* each : {&first, &second, &first}) {
        each->write(block.row(wanted, 0));
        EXPECT_EQ(each->init(block.row()), kuvStatusOk);
        EXPECT_EQ(block.difference(wanted), "");
        PlanSource wrong = first;
        wrong.channels[2] = freeLevels({3, 2});
        EXPECT_EQ(wrong.init(block.row()), kuvStatusRangeOrder);
        EXPECT_EQ(block.difference(wanted), "");
    }
}

TEST_P(HistogramInit, GetLevelsChecks) {
    const PlanSource source = {kuvDataType8u, {freeLevels({1, 2})}};
    const BinPlan plan(source);
    float levels[2] = {7, 8};
    float* list = levels;
    EXPECT_EQ(kuviHistogramGetLevels(nullptr, &list), kuvStatusNullPtr);
    EXPECT_EQ(kuviHistogramGetLevels(plan.get(), nullptr), kuvStatusNullPtr);
    store(plan.block().row(), 3, 0x74736967);
    EXPECT_EQ(kuviHistogramGetLevels(plan.get(), nullptr), kuvStatusNullPtr);
    EXPECT_EQ(kuviHistogramGetLevels(plan.get(), &list), kuvStatusBadArg);
    EXPECT_EQ(levels[0], 7);
}

}  // namespace
