// The sizes of tone maps.
#include <numeric>

#include "support/statuses.hpp"
#include "support/tone_reference.hpp"

namespace {

using namespace kuvtest;

constexpr Kuv32s interpolations[] = {kuvLutStep, kuvLutLinear, kuvLutCubic};
constexpr Kuv32s selectors[] = {kuvChannelsC1, kuvChannelsC3, kuvChannelsC4, kuvChannelsAC4};

constexpr Kuv32s enough[4] = {4, 4, 4, 4}, tooFew[4][4] = {{1, 4, 4, 4}, {4, 1, 4, 4}, {4, 4, -1, 4}, {4, 4, 4, 0}};

struct SizeArguments {
    std::tuple<Kuv32s, Kuv32s, Kuv32s, KuviSize, const Kuv32s*, Kuv32s*> operator()(Draw& draw) const {
        return {kuvLutStep, kuvDataType16u, kuvChannelsC4, draw.size, enough, draw.image<Kuv32s>(Role::inOut, 1, 1, 4).row<Kuv32s>()};
    }
};
KUV_AGREES(kuviLUT_GetSize, SizeArguments{});
KUV_CHECKS(kuviLUT_GetSize, call(SizeArguments{}),
           check(kuvStatusBadInterpolation, set<0>(0), set<0>(3), set<0>(4), set<0>(5), set<0>(7), set<0>(-1), set<0>(INT32_MIN)),
           check(kuvStatusNullPtr, null<4>(), null<5>()), badSize<3>(),
           check(kuvStatusBadLutLevels, set<4>(tooFew[3] + 0)),
           check(kuvStatusBadLutLevels, set<4>(tooFew[0] + 0), set<4>(tooFew[1] + 0), set<4>(tooFew[2] + 0)),
           check(kuvStatusBadDataType, set<1>(0), set<1>(2), set<1>(6), set<1>(8), set<1>(14), set<1>(-1)));

class ToneMapSize : public VariantTest {
protected:
    // -1 if the call fails.
    static Kuv32s sizeOf(Kuv32s interpolation, Kuv32s type, Kuv32s channels, const std::vector<Kuv32s>& counts) {
        Kuv32s bytes = -1;
        watched([&] { return kuviLUT_GetSize(interpolation, type, channels, {3, 2}, counts.data(), &bytes); });
        return bytes;
    }
};

KUV_FOR_EACH_VARIANT(ToneMapSize);

TEST_P(ToneMapSize, EveryCell) {
    const auto roundedUp = [](Kuv32s bytes) { return (bytes + 63) / 64 * 64; };
    const std::vector<std::vector<Kuv32s>> lists = {{2, 2, 2, 2}, {4, 4, 4, 4}, {3, 4, 5, 6},      {7, 3, 9, 8},
                                                    {5, 6, 2, 9}, {8, 8, 8, 3}, {1000, 17, 64, 5}, {65536, 65537, 8, 40}};
    for (const std::vector<Kuv32s>& n : lists) {
        for (const Kuv32s channels : selectors) {
            const int used = usedChannels(channels);
            const Kuv32s T = std::accumulate(n.begin(), n.begin() + used, 0), T8 = 8 * T, A = roundedUp(T8);
            const bool four = std::all_of(n.begin(), n.begin() + used, [](Kuv32s count) { return count >= 4; });
            for (const Kuv32s mode : interpolations) {
                SCOPED_TRACE(testing::Message() << "channels " << channels << ", interpolation " << mode << ", first count " << n[0]);
                EXPECT_EQ(sizeOf(mode, kuvDataType8u, channels, n), 184 + 256 * used);
                for (const Kuv32s type : {kuvDataType16u, kuvDataType16s}) {
                    const Kuv32s kept = mode != kuvLutStep ? 0 : channels == kuvChannelsC1 ? T8 : channels == kuvChannelsC3 ? A : 0;
                    EXPECT_EQ(sizeOf(mode, type, channels, n), 184 + 0x20000 * used + kept);
                }
                const Kuv32s real = mode == kuvLutStep              ? (channels == kuvChannelsC1 ? T8 : A)
                                    : mode == kuvLutLinear || !four ? A + T8 - 8 * used
                                                                    : A + 24 * T - 24 * used;
                EXPECT_EQ(sizeOf(mode, kuvDataType32f, channels, n), 184 + real);
            }
        }
    }
}

TEST_P(ToneMapSize, SomeSizesAsNumbers) {
    EXPECT_EQ(sizeOf(kuvLutCubic, kuvDataType8u, kuvChannelsC1, {4}), 440);
    EXPECT_EQ(sizeOf(kuvLutStep, kuvDataType8u, kuvChannelsC4, {2, 2, 2, 2}), 1208);
    EXPECT_EQ(sizeOf(kuvLutStep, kuvDataType16u, kuvChannelsC1, {9}), 131328);
    EXPECT_EQ(sizeOf(kuvLutStep, kuvDataType16u, kuvChannelsC3, {2, 3, 4}), 393528);
    EXPECT_EQ(sizeOf(kuvLutStep, kuvDataType16u, kuvChannelsAC4, {2, 3, 4}), 393400);
    EXPECT_EQ(sizeOf(kuvLutStep, kuvDataType32f, kuvChannelsC1, {9}), 256);
    EXPECT_EQ(sizeOf(kuvLutLinear, kuvDataType32f, kuvChannelsC1, {9}), 184 + 128 + 64);
    EXPECT_EQ(sizeOf(kuvLutCubic, kuvDataType32f, kuvChannelsC3, {4, 4, 4}), 184 + 128 + 216);
    EXPECT_EQ(sizeOf(kuvLutCubic, kuvDataType32f, kuvChannelsC3, {4, 4, 3}), 184 + 128 + 64);
}

// Counts that are not in use are not read: they stand behind the guard.
TEST_P(ToneMapSize, ReadsTheCountsInUse) {
    for (const Kuv32s channels : selectors) {
        const int used = usedChannels(channels);
        const Image counts("counts", {.rowBytes = 4 * used, .rows = 1, .step = 4 * used}, 1);
        for (int c = 0; c < used; ++c) store(counts.row(), c, 5);
        Kuv32s bytes = 0;
        EXPECT_EQ(watched([&] {
                      return kuviLUT_GetSize(kuvLutStep, kuvDataType8u, channels, {1, 1}, counts.row<Kuv32s>(), &bytes);
                  }),
                  kuvStatusOk);
        EXPECT_EQ(bytes, 184 + 256 * used);
    }
}

TEST_P(ToneMapSize, AnyAddress) {
    for (int gap = 1; gap < 4; ++gap) {
        unsigned char counts[4 * 3 + 4] = {}, size[8] = {};
        for (int c = 0; c < 3; ++c) store(counts + gap, c, 5);
        const Kuv32s* const at = reinterpret_cast<const Kuv32s*>(counts + gap);
        Kuv32s* const to = reinterpret_cast<Kuv32s*>(size + gap);
        EXPECT_EQ(watched([&] { return kuviLUT_GetSize(kuvLutStep, kuvDataType8u, kuvChannelsC3, {1, 1}, at, to); }), kuvStatusOk);
        EXPECT_EQ(load<Kuv32s>(size + gap), 184 + 256 * 3);
    }
}

// The selector is examined between the fourth count and the others.
TEST_P(ToneMapSize, UnknownChannels) {
    for (const Kuv32s channels : {0, 2, 5, 6, 7, 8, 10, -1, INT32_MAX, INT32_MIN}) {
        Kuv32s bytes = 77;
        for (const Kuv32s* const counts : {enough, tooFew[0], tooFew[2], tooFew[3]}) {
            EXPECT_EQ(kuviLUT_GetSize(kuvLutStep, 99, channels, {1, 1}, counts, &bytes), kuvStatusBadChannels);
        }
        EXPECT_EQ(bytes, 77);
    }
}

// The data type is examined last.
TEST_P(ToneMapSize, CountsComeBeforeTheType) {
    Kuv32s bytes = 77;
    for (const auto& counts : tooFew) {
        EXPECT_EQ(kuviLUT_GetSize(kuvLutStep, 99, kuvChannelsC4, {1, 1}, counts, &bytes), kuvStatusBadLutLevels);
    }
    constexpr Kuv32s none[] = {0, 1, 1};
    for (const Kuv32s channels : {kuvChannelsC1, kuvChannelsC3, kuvChannelsAC4}) {
        EXPECT_EQ(kuviLUT_GetSize(kuvLutStep, 99, channels, {1, 1}, none, &bytes), kuvStatusBadLutLevels);
    }
    EXPECT_EQ(bytes, 77);
}

TEST_P(ToneMapSize, WrapsPast32Bits) {
    const Kuv32s many = 0x20000001;
    EXPECT_EQ(sizeOf(kuvLutStep, kuvDataType16u, kuvChannelsC1, {many}), 184 + 8 + 0x20000);
    EXPECT_EQ(sizeOf(kuvLutStep, kuvDataType16u, kuvChannelsC1, {0x10000000}), INT32_MIN + 184 + 0x20000);
}

}  // namespace
