// Adaptive demosaicing: statuses, and whole pictures against the reference.
#include "support/demosaic_calls.hpp"
#include "support/statuses.hpp"

namespace {

using namespace kuvtest;

// All nine arguments, with a region that may lie partly or wholly outside the image.
template <class T>
struct DemosaicArguments {
    std::tuple<const T*, KuviRect, KuviSize, Kuv32s, T*, Kuv32s, KuvCfaLayout, T*, Kuv32s> operator()(Draw& draw) const {
        Random& random = draw.random;
        const KuviSize image = {std::max(draw.size.width, 6), std::max(draw.size.height, 6)};
        const KuviRect roi = {between(random, -3, image.width), between(random, -3, image.height), between(random, 1, image.width + 3),
                              between(random, 1, image.height + 3)};
        KuviRect region = AhdReference<T>::clipped(roi, image);
        if (region.width < 1 || region.height < 1) region = {0, 0, 0, 0};  // no room: nothing may be written
        const int bytes = sizeof(T), rowBytes = region.width * 3 * bytes;
        const int line = workingLineBytes<T>(region.width) / bytes;
        const std::ptrdiff_t dstStep = region.width > 0 ? drawStep(random, StepClass::C, rowBytes) : 0;

        const Image& src = draw.image<T>(Role::source, image.width, image.height, drawStep(random, StepClass::D, image.width * bytes));
        const Image& dst = draw.image<T>(Role::output, region.width * 3, region.height, dstStep);
        const Image& tmp = draw.image<T>(Role::scratch, line, region.width > 0 ? 30 : 0, (line + below(random, 5)) * bytes);
        return {src.row<T>(), roi, image, src.step(), dst.row<T>(), dst.step(), below(random, 4), tmp.row<T>(), tmp.step()};
    }
};

// px decides otherwise where S is 0 right of the edges of its one region, so the variants that split agree among themselves. All are
// held against the reference below.
KUV_AGREES_FROM(w7, kuviDemosaicAHD_8u_C1C3R, DemosaicArguments<Kuv8u>{});
KUV_AGREES_FROM(w7, kuviDemosaicAHD_16u_C1C3R, DemosaicArguments<Kuv16u>{});

#define KUV_DEMOSAIC_CHECKS(depth)                                                                                                   \
    KUV_CHECKS(kuviDemosaicAHD_##depth##_C1C3R, call(DemosaicArguments<Kuv##depth>{}), check(kuvStatusNullPtr, null<0>(), null<4>()), \
               check(kuvStatusBadSize, width<2>(4), width<2>(0), width<2>(-1), width<2>(INT32_MIN)),                                 \
               check(kuvStatusBadSize, height<2>(4), height<2>(0), height<2>(-1), height<2>(INT32_MIN)),                             \
               check(kuvStatusBadArg, set<6>(-1), set<6>(4), set<6>(INT32_MIN), set<6>(INT32_MAX)))
KUV_DEMOSAIC_CHECKS(8u);
KUV_DEMOSAIC_CHECKS(16u);

class Demosaic : public DemosaicTest {
protected:
    template <class T>
    void expectWhole(KuviSize size, KuvCfaLayout layout, Pattern pattern, std::uint64_t seed) {
        const Mosaic<T> mosaic(size, layout, pattern, seed);
        expectDemosaic(GetParam(), mosaic, mosaic.whole(), seed);
    }
};

KUV_FOR_EACH_VARIANT(Demosaic);

TEST_P(Demosaic, EveryPatternInEveryLayout) {
    forBothDepths([&]<class T>(T) {
        for (int pattern = 0; pattern < static_cast<int>(Pattern::count); ++pattern) {
            for (const KuvCfaLayout layout : cfaLayouts) {
                for (const KuviSize size : {KuviSize{64, 20}, KuviSize{75, 33}, KuviSize{18, 17}}) {
                    for (std::uint64_t seed = 1; seed <= 2; ++seed) expectWhole<T>(size, layout, static_cast<Pattern>(pattern), seed);
                    if (HasFailure()) return;
                }
            }
        }
    });
}

TEST_P(Demosaic, EverySmallSize) {
    forBothDepths([&]<class T>(T) {
        std::uint64_t seed = 0;
        for (int height = 5; height <= 40; ++height) {
            for (int width = 5; width <= 40; ++width) {
                ++seed;
                const Pattern pattern = seed % 3 == 0   ? Pattern::random
                                        : seed % 3 == 1 ? Pattern::sparseImpulses
                                                        : static_cast<Pattern>(seed / 3 % static_cast<int>(Pattern::count));
                expectWhole<T>({width, height}, cfaLayouts[(seed * 7 + seed / 31) % 4], pattern, seed);
                if (HasFailure()) return;
            }
        }
    });
}

TEST_P(Demosaic, LongAndWide) {
    forBothDepths([&]<class T>(T) {
        constexpr KuviSize sizes[] = {{5, 5},    {5, 200},  {200, 5},  {6, 6},    {6, 300},  {300, 6},  {300, 41},
                                      {41, 300}, {1000, 23}, {1030, 19}, {1600, 17}, {2063, 15}, {15, 2063}, {18, 2100}};
        std::uint64_t seed = 100;
        for (const KuviSize size : sizes) {
            for (const Pattern pattern : {Pattern::random, Pattern::faintNoise, Pattern::sparseImpulses, Pattern::rareImpulses}) {
                ++seed;
                expectWhole<T>(size, cfaLayouts[seed % 4], pattern, seed);
                if (HasFailure()) return;
            }
        }
    });
}

// Kernels work in tiles of columns and in bands of rows; some of these sides lie around a multiple of theirs.
TEST_P(Demosaic, SidesAroundTilesAndBands) {
    forBothDepths([&]<class T>(T) {
        std::uint64_t seed = 200;
        const auto expect = [&](KuviSize size) {
            ++seed;
            expectWhole<T>(size, cfaLayouts[seed % 4], seed % 2 ? Pattern::rareImpulses : Pattern::random, seed);
        };
        for (int width = 50; width <= 560 && !HasFailure(); ++width) expect({width, 9});
        for (int width = 930; width <= 1040 && !HasFailure(); ++width) expect({width, 7});
        for (int height = 245; height <= 275 && !HasFailure(); ++height) expect({21, height});
    });
}

// The running value is carried from the left edge of the block to its right edge.
TEST_P(Demosaic, RunningValueCrossesTheWholeBlock) {
    forBothDepths([&]<class T>(T) {
        int visible = 0;
        for (const int width : {40, 601, 1500}) {
            for (const KuvCfaLayout layout : cfaLayouts) {
                const Mosaic<T> mosaic({width, 24}, layout, Pattern::rareImpulses, static_cast<std::uint64_t>(width + layout));
                expectDemosaic(GetParam(), mosaic, mosaic.whole(), 1);
                // The picture must show it: with and without the restarts it is another.
                const std::size_t size = static_cast<std::size_t>(width) * 24 * 3 * sizeof(T);
                Bytes split(size), unsplit(size);
                const auto rowOf = [&](Bytes& bytes) {
                    return [&bytes, width](int r) { return bytes.data() + static_cast<std::size_t>(r * width) * 3 * sizeof(T); };
                };
                mosaic.reference->write(mosaic.whole(), true, rowOf(split));
                mosaic.reference->write(mosaic.whole(), false, rowOf(unsplit));
                visible += split != unsplit;
            }
        }
        EXPECT_GE(visible, 8);
    });
}

TEST_P(Demosaic, FlatImageStaysFlat) {
    forBothDepths([&]<class T>(T) {
        for (const T value : {T{0}, T{1}, T{77}, std::numeric_limits<T>::max()}) {
            constexpr int width = 31, height = 23;
            std::vector<T> src(width * height, value), dst(width * height * 3), tmp(30 * (width + 8));
            EXPECT_EQ(demosaic(src.data(), {0, 0, width, height}, {width, height}, width * sizeof(T), dst.data(),
                               3 * width * static_cast<int>(sizeof(T)), kuvCfaGBRG, tmp.data(), (width + 8) * sizeof(T)),
                      kuvStatusOk);
            for (const T each : dst) ASSERT_EQ(each, value);
        }
    });
}

// A flat picture whose two kinds of green differ: both directions are equally smooth, so all of it comes from the rows.
TEST_P(Demosaic, TiesTakeTheRows) {
    forBothDepths([&]<class T>(T) {
        constexpr int width = 26, height = 22;
        std::vector<T> src(width * height), dst(width * height * 3), tmp(30 * (width + 6));
        for (int r = 0; r < height; ++r) {
            for (int c = 0; c < width; ++c) src[static_cast<std::size_t>(r * width + c)] = static_cast<T>(r % 2 == 0 ? 100 : 110);
        }
        EXPECT_EQ(demosaic(src.data(), {0, 0, width, height}, {width, height}, width * sizeof(T), dst.data(),
                           3 * width * static_cast<int>(sizeof(T)), kuvCfaRGGB, tmp.data(), (width + 6) * sizeof(T)),
                  kuvStatusOk);
        for (int r = 0; r < height; ++r) {
            for (int c = 0; c < width; ++c) EXPECT_EQ(dst[static_cast<std::size_t>((r * width + c) * 3 + 1)], r % 2 == 0 ? 100 : 110);
        }
    });
}

// 16-bit chrominance distances leave 32 bits, wrap, and compare with their sign.
TEST_P(Demosaic, ChrominanceWraps) {
    int wrapped = 0;
    for (const Pattern pattern : {Pattern::extremes, Pattern::saturatedBlocks}) {
        for (std::uint64_t seed = 1; seed < 6; ++seed) {
            const Mosaic<Kuv16u> mosaic({301, 61}, cfaLayouts[seed % 4], pattern, seed);
            wrapped += mosaic.reference->chrominanceWrapped();
            expectDemosaic(GetParam(), mosaic, mosaic.whole(), seed);
        }
    }
    EXPECT_GE(wrapped, 4) << "the pictures must bring it about";
}

// A small picture in which every sample was worked out by hand: a single bright red site.
TEST_P(Demosaic, OneBrightSite) {
    constexpr int side = 12;
    Kuv8u src[side * side] = {}, dst[side * side * 3] = {}, tmp[30 * (side + 6)];
    src[6 * side + 6] = 200;
    EXPECT_EQ(kuviDemosaicAHD_8u_C1C3R(src, {0, 0, side, side}, {side, side}, side, dst, 3 * side, kuvCfaRGGB, tmp, side + 6), kuvStatusOk);
    const auto pixel = [&](int r, int c) {
        return std::array<int, 3>{dst[(r * side + c) * 3], dst[(r * side + c) * 3 + 1], dst[(r * side + c) * 3 + 2]};
    };
    // Green between two zeros stays zero; red spreads by halves along its row and column and by quarters over the diagonals.
    EXPECT_EQ(pixel(6, 6), (std::array{200, 0, 0}));
    for (const int d : {-1, 1}) {
        EXPECT_EQ(pixel(6, 6 + d), (std::array{100, 0, 0}));
        EXPECT_EQ(pixel(6 + d, 6), (std::array{100, 0, 0}));
        EXPECT_EQ(pixel(6 + d, 6 - d), (std::array{50, 0, 0}));
        EXPECT_EQ(pixel(6 + d, 6 + d), (std::array{50, 0, 0}));
    }
    EXPECT_EQ(pixel(6, 4), (std::array{0, 0, 0}));
    EXPECT_EQ(pixel(4, 6), (std::array{0, 0, 0}));
    EXPECT_EQ(pixel(2, 2), (std::array{0, 0, 0}));
}

// The layout is that of the image's origin, so a region that starts one column on sees another phase of the same mosaic.
TEST_P(Demosaic, LayoutIsTheImages) {
    forBothDepths([&]<class T>(T) {
        for (const KuvCfaLayout layout : cfaLayouts) {
            const Mosaic<T> mosaic({30, 28}, layout, Pattern::random, 9);
            for (int y = 0; y < 3; ++y) {
                for (int x = 0; x < 3; ++x) expectDemosaic(GetParam(), mosaic, {x, y, 20, 20}, 1);
            }
        }
    });
}

}  // namespace
