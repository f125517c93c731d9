// Adaptive demosaicing: regions, how they are clipped, and what a picture made of several is.
#include <climits>
#include <thread>

#include "support/demosaic_calls.hpp"

namespace {

using namespace kuvtest;

class DemosaicRegions : public DemosaicTest {};

KUV_FOR_EACH_VARIANT(DemosaicRegions);

// Every region of small images, those included that begin before the image or end beyond it, or are empty.
TEST_P(DemosaicRegions, AllOfSmallImages) {
    forBothDepths([&]<class T>(T) {
        constexpr KuviSize sizes[] = {{5, 5}, {6, 5}, {5, 6}, {6, 6}, {7, 8}, {8, 7}};
        std::uint64_t seed = 0;
        for (const KuviSize size : sizes) {
            const KuvCfaLayout layout = cfaLayouts[++seed % 4];
            const Mosaic<T> mosaic(size, layout, Pattern::random, seed);
            for (int y = -1; y <= size.height; ++y) {
                for (int x = -1; x <= size.width; ++x) {
                    for (int h = 0; h <= size.height + 1; ++h) {
                        for (int w = 0; w <= size.width + 1; ++w) {
                            expectDemosaic(GetParam(), mosaic, {x, y, w, h}, ++seed);
                            if (HasFailure()) return;
                        }
                    }
                }
            }
        }
    });
}

// Regions of a larger image at every place to its border and its parity, so that the block and each strip come and go.
TEST_P(DemosaicRegions, EveryPlaceToTheBorder) {
    forBothDepths([&]<class T>(T) {
        std::uint64_t seed = 0;
        for (const KuvCfaLayout layout : cfaLayouts) {
            const Mosaic<T> mosaic({22, 21}, layout, layout % 2 ? Pattern::random : Pattern::sparseImpulses, 5);
            for (int x = 0; x < 22; ++x) {
                for (int right = x + 1; right <= 22; ++right) {
                    ++seed;
                    const int y = static_cast<int>(seed * 5 % 21), h = 1 + static_cast<int>(seed * 11 % 21);
                    expectDemosaic(GetParam(), mosaic, {x, y, right - x, h}, seed);
                    expectDemosaic(GetParam(), mosaic, {y, x, h, right - x}, seed);
                    if (HasFailure()) return;
                }
            }
        }
    });
}

TEST_P(DemosaicRegions, AtRandom) {
    forBothDepths([&]<class T>(T) {
        Random random(11);
        const int count = rounds(150);
        for (int i = 0; i < count; ++i) {
            const KuviSize size = {between(random, 5, 90), between(random, 5, 60)};
            const auto pattern = static_cast<Pattern>(below(random, static_cast<int>(Pattern::count)));
            const Mosaic<T> mosaic(size, below(random, 4), pattern, random());
            for (int j = 0; j < 4; ++j) {
                const KuviRect roi = {between(random, -5, size.width + 2), between(random, -5, size.height + 2),
                                      between(random, -1, size.width + 5), between(random, -1, size.height + 5)};
                expectDemosaic(GetParam(), mosaic, roi, random());
            }
            if (HasFailure()) return;
        }
    });
}

TEST_P(DemosaicRegions, OnePixelAnywhere) {
    forBothDepths([&]<class T>(T) {
        const Mosaic<T> mosaic({14, 13}, kuvCfaGRBG, Pattern::random, 3);
        for (int y = 0; y < 13; ++y) {
            for (int x = 0; x < 14; ++x) expectDemosaic(GetParam(), mosaic, {x, y, 1, 1}, 1);
        }
    });
}

// A start before the image moves to 0 and keeps width and height, so that the far edges move along.
TEST_P(DemosaicRegions, NegativeStartDoesNotShorten) {
    forBothDepths([&]<class T>(T) {
        const Mosaic<T> mosaic({20, 18}, kuvCfaRGGB, Pattern::random, 4);
        std::vector<T> fromZero(10 * 9 * 3), fromBefore(fromZero.size()), tmp(30 * 16);
        const auto run = [&](std::vector<T>& dst, int x, int y) {
            EXPECT_EQ(demosaic(reinterpret_cast<const T*>(mosaic.address()), {x, y, 10, 9}, mosaic.size, mosaic.image.step(), dst.data(),
                               30 * sizeof(T), mosaic.layout, tmp.data(), 16 * sizeof(T)), kuvStatusOk);
        };
        run(fromZero, 0, 0);
        for (const int start : {-1, -7, -100, INT_MIN}) {
            run(fromBefore, start, start);
            EXPECT_EQ(fromBefore, fromZero) << start;
        }
    });
}

TEST_P(DemosaicRegions, SumsDoNotWrap) {
    forBothDepths([&]<class T>(T) {
        const Mosaic<T> mosaic({24, 20}, kuvCfaBGGR, Pattern::random, 5);
        constexpr KuviRect regions[] = {{3, 2, INT_MAX, INT_MAX}, {1, 1, INT_MAX, 5},         {7, 6, 4, INT_MAX},
                                        {-5, -5, INT_MAX, INT_MAX}, {INT_MIN, INT_MIN, INT_MAX, INT_MAX}, {23, 19, INT_MAX, INT_MAX},
                                        {3, 2, INT_MAX - 2, INT_MAX - 1}, {INT_MIN, 0, 9, 9}};
        for (const KuviRect& roi : regions) expectDemosaic(GetParam(), mosaic, roi, 1);
    });
}

// An empty region is no error, needs no working memory and writes nothing.
TEST_P(DemosaicRegions, Empty) {
    forBothDepths([&]<class T>(T) {
        const Mosaic<T> mosaic({24, 20}, kuvCfaBGGR, Pattern::random, 6);
        constexpr KuviRect regions[] = {{24, 0, 5, 5}, {0, 20, 5, 5}, {100, 100, 5, 5}, {INT_MAX, 0, INT_MAX, 5}, {0, INT_MAX, 5, INT_MAX},
                                        {INT_MAX, INT_MAX, INT_MAX, INT_MAX}, {3, 3, 0, 5}, {3, 3, 5, 0}, {3, 3, -1, 5}, {3, 3, 5, -1},
                                        {3, 3, INT_MIN, INT_MIN}, {-9, -9, 0, 0}, {-9, 3, -2, 5}, {24, 20, 1, 1}};
        for (const KuviRect& roi : regions) {
            const Image dst("dst", {.rowBytes = 64, .rows = 4, .step = 64}, 1);
            const Bytes before = dst.bytes();
            EXPECT_EQ(watched([&] {
                          return demosaic(reinterpret_cast<const T*>(mosaic.address()), roi, mosaic.size, mosaic.image.step(),
                                          dst.row<T>(), 64, mosaic.layout, static_cast<T*>(nullptr), 0);
                      }), kuvStatusOk);
            EXPECT_EQ(dst.difference(before), "") << roi.x << " " << roi.y << " " << roi.width << " " << roi.height;
        }
    });
}

// What is said of a region's surroundings holds for a huge image too, of which the caller has no more than those.
TEST_P(DemosaicRegions, ImageSizeMayBeAnything) {
    forBothDepths([&]<class T>(T) {
        const Mosaic<T> mosaic({60, 50}, kuvCfaGRBG, Pattern::random, 7);
        for (const KuviRect roi : {KuviRect{0, 0, 40, 30}, KuviRect{7, 8, 33, 22}, KuviRect{3, 1, 1, 1}}) {
            const std::size_t size = static_cast<std::size_t>(roi.width * roi.height * 3);
            std::vector<T> wanted(size), got(size), tmp(30 * 48);
            const auto run = [&](std::vector<T>& dst, KuviSize imageSize) {
                EXPECT_EQ(watched([&] {
                              return demosaic(reinterpret_cast<const T*>(mosaic.address()), roi, imageSize, mosaic.image.step(),
                                              dst.data(), roi.width * 3 * static_cast<int>(sizeof(T)), mosaic.layout, tmp.data(),
                                              48 * sizeof(T));
                          }), kuvStatusOk);
            };
            run(wanted, mosaic.size);
            run(got, {INT_MAX, INT_MAX});
            EXPECT_EQ(got, wanted);
            run(got, {INT_MAX, 50});
            EXPECT_EQ(got, wanted);
            run(got, {60, INT_MAX - 1});
            EXPECT_EQ(got, wanted);
        }
    });
}

template <class T>
std::vector<T> produce(const Mosaic<T>& mosaic, const std::vector<int>& cuts, bool inThreads) {
    const int width = mosaic.size.width;
    const std::size_t row = static_cast<std::size_t>(width) * 3;
    std::vector<T> pixels(row * static_cast<std::size_t>(mosaic.size.height));
    std::vector<std::thread> threads;
    const auto band = [&](int from, int to) {
        std::vector<T> tmp(static_cast<std::size_t>(30 * (width + 8)));
        EXPECT_EQ(demosaic(reinterpret_cast<const T*>(mosaic.address()), {0, from, width, to - from}, mosaic.size, mosaic.image.step(),
                           pixels.data() + row * static_cast<std::size_t>(from), static_cast<Kuv32s>(row * sizeof(T)), mosaic.layout,
                           tmp.data(), (width + 8) * static_cast<Kuv32s>(sizeof(T))), kuvStatusOk);
    };
    int from = 0;
    for (std::size_t i = 0; i <= cuts.size(); ++i) {
        const int to = i < cuts.size() ? cuts[i] : mosaic.size.height;
        if (inThreads) threads.emplace_back(band, from, to);
        else band(from, to);
        from = to;
    }
    for (std::thread& each : threads) each.join();
    return pixels;
}

// A picture in bands of rows is the same picture: in px for any cuts; in the others if each cut falls on a row at which a block may
// begin, since then every row lies in the same part as before.
TEST_P(DemosaicRegions, BandsOfRowsMakeThePicture) {
    forBothDepths([&]<class T>(T) {
        for (const KuvCfaLayout layout : cfaLayouts) {
            for (const Pattern pattern : {Pattern::sparseImpulses, Pattern::random}) {
                const Mosaic<T> mosaic({61, 64}, layout, pattern, 8);
                const std::vector<T> whole = produce(mosaic, {}, false);
                const bool px = GetParam().isPx();
                // Blocks begin on rows that hold red.
                const int blockRow = layout == kuvCfaBGGR || layout == kuvCfaGBRG ? 1 : 0;
                for (int cut = 1; cut < 64; ++cut) {
                    if (!px && cut % 2 != blockRow) continue;
                    EXPECT_EQ(produce(mosaic, {cut}, false), whole) << "layout " << layout << ", cut at " << cut;
                }
                EXPECT_EQ(produce(mosaic, {16 + blockRow, 30 + blockRow, 44 + blockRow}, true), whole) << "in threads";
            }
        }
    });
}

}  // namespace
