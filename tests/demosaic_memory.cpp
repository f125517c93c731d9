// Adaptive demosaicing: what is read and written at any step and address, with memory of exactly the stated size.
#include "support/demosaic_calls.hpp"
#include "support/distant.hpp"
#include "support/stack.hpp"

namespace {

using namespace kuvtest;

class DemosaicMemory : public DemosaicTest {};

KUV_FOR_EACH_VARIANT(DemosaicMemory);

constexpr KuviSize sizes[] = {{5, 5}, {6, 6}, {7, 30}, {30, 7}, {31, 22}, {32, 21}, {77, 16}, {550, 13}};

TEST_P(DemosaicMemory, GuardsOnEitherSide) {
    forBothDepths([&]<class T>(T) {
        std::uint64_t seed = 0;
        for (const KuviSize size : sizes) {
            for (const Guard guard : {Guard::end, Guard::begin}) {
                for (const KuvCfaLayout layout : cfaLayouts) {
                    const Mosaic<T> mosaic(size, layout, Pattern::random, ++seed, {.guard = guard});
                    expectDemosaic(GetParam(), mosaic, mosaic.whole(), seed, {.guard = guard});
                    // The source's rows as they lie in memory are the guard's neighbours on both sides.
                    const Mosaic<T> upward(size, layout, Pattern::random, ++seed, {.upward = true, .guard = guard});
                    expectDemosaic(GetParam(), upward, upward.whole(), seed, {.tmpUpward = true, .guard = guard});
                }
            }
        }
    });
}

TEST_P(DemosaicMemory, AnySourceStepAndAddress) {
    forBothDepths([&]<class T>(T) {
        std::uint64_t seed = 0;
        for (const KuviSize size : sizes) {
            for (const int padding : {0, 1, 2, 3, 17, 64}) {
                for (const bool upward : {false, true}) {
                    for (const int gap : {0, 1, 2, 3, 8, 15, 31}) {
                        ++seed;
                        const MosaicOptions options = {padding, upward, seed % 2 ? Guard::end : Guard::begin, gap};
                        const Mosaic<T> mosaic(size, cfaLayouts[seed % 4], Pattern::random, seed, options);
                        expectDemosaic(GetParam(), mosaic, mosaic.whole(), seed);
                        if (HasFailure()) return;
                    }
                }
            }
        }
    });
}

TEST_P(DemosaicMemory, AnyOutputStepAndAddress) {
    forBothDepths([&]<class T>(T) {
        std::uint64_t seed = 0;
        for (const KuviSize size : sizes) {
            const Mosaic<T> mosaic(size, cfaLayouts[seed % 4], Pattern::random, seed);
            const std::ptrdiff_t row = size.width * 3 * static_cast<int>(sizeof(T));
            for (const std::ptrdiff_t step : {row, row + 1, row + 2, row + 7, row + 64, -row, -row - 1, -row - 6}) {
                for (const int gap : {0, 1, 2, 3, 5, 16, 31}) {
                    ++seed;
                    expectDemosaic(GetParam(), mosaic, mosaic.whole(), seed,
                                   {.dstStep = step, .guard = seed % 2 ? Guard::end : Guard::begin, .dstGap = gap});
                    if (HasFailure()) return;
                }
            }
        }
    });
}

TEST_P(DemosaicMemory, AnyWorkingStepAndAddress) {
    forBothDepths([&]<class T>(T) {
        std::uint64_t seed = 0;
        for (const KuviSize size : sizes) {
            const Mosaic<T> mosaic(size, cfaLayouts[seed % 4], Pattern::random, seed);
            for (const int padding : {0, 1, 2, 3, 33, 64}) {
                for (const bool upward : {false, true}) {
                    for (const int gap : {0, 1, 2, 3, 5, 16, 31}) {
                        ++seed;
                        expectDemosaic(
                            GetParam(), mosaic, mosaic.whole(), seed,
                            {.tmpPadding = padding, .tmpUpward = upward, .guard = seed % 2 ? Guard::end : Guard::begin, .tmpGap = gap});
                        if (HasFailure()) return;
                    }
                }
            }
        }
    });
}

// The lowest bit of a 16-bit line's step does not count, in a negative one either.
TEST_P(DemosaicMemory, OddWorkingStepOf16Bits) {
    for (const int width : {9, 24, 41}) {
        const Mosaic<Kuv16u> mosaic({width, 19}, kuvCfaRGGB, Pattern::random, 3);
        expectDemosaic(GetParam(), mosaic, mosaic.whole(), 1, {.tmpPadding = 1});
        expectDemosaic(GetParam(), mosaic, mosaic.whole(), 2, {.tmpPadding = 5});
        expectDemosaic(GetParam(), mosaic, mosaic.whole(), 3, {.tmpPadding = 7, .tmpUpward = true});
    }
}

// With a step of 0 all rows land on one, and the last stays.
TEST_P(DemosaicMemory, OutputStep0) {
    forBothDepths([&]<class T>(T) {
        std::uint64_t seed = 0;
        for (const KuviSize size : {KuviSize{9, 9}, KuviSize{40, 25}, KuviSize{41, 26}, KuviSize{600, 15}, KuviSize{1100, 14}}) {
            for (const KuvCfaLayout layout : cfaLayouts) {
                const Mosaic<T> mosaic(size, layout, Pattern::random, ++seed);
                expectDemosaic(GetParam(), mosaic, mosaic.whole(), seed, {.dstStep = 0});
                expectDemosaic(GetParam(), mosaic, {2, 1, size.width - 3, size.height - 4}, seed, {.dstStep = 0});
            }
        }
    });
}

// Source rows on top of each other: every row of the mosaic is the same one, or shares bytes with the next.
TEST_P(DemosaicMemory, SourceRowsMayOverlap) {
    forBothDepths([&]<class T>(T) {
        std::uint64_t seed = 0;
        for (const KuviSize size : {KuviSize{6, 6}, KuviSize{40, 25}, KuviSize{81, 13}}) {
            const int rowBytes = size.width * static_cast<int>(sizeof(T));
            for (const int padding : {-rowBytes, 1 - rowBytes, -rowBytes / 2}) {
                ++seed;
                const Mosaic<T> mosaic(size, cfaLayouts[seed % 4], Pattern::random, seed, {.padding = padding});
                expectDemosaic(GetParam(), mosaic, mosaic.whole(), seed);
            }
        }
    });
}

// What stands around the image must not matter, not even where a side of 5 makes reflection read one sample of it: those are read as they
// stand.
TEST_P(DemosaicMemory, SideOf5ReadsItsNeighboursAsTheyStand) {
    forBothDepths([&]<class T>(T) {
        for (const KuviSize size : {KuviSize{5, 5}, KuviSize{5, 6}, KuviSize{6, 5}, KuviSize{5, 40}, KuviSize{40, 5}}) {
            for (const KuvCfaLayout layout : cfaLayouts) {
                for (std::uint64_t seed = 1; seed < 5; ++seed) {
                    for (const Pattern pattern : {Pattern::random, Pattern::extremes, Pattern::unequalGreens}) {
                        const Mosaic<T> mosaic(size, layout, pattern, seed, {.guard = seed % 2 ? Guard::end : Guard::begin});
                        expectDemosaic(GetParam(), mosaic, mosaic.whole(), seed);
                    }
                }
            }
        }
    });
}

TEST_P(DemosaicMemory, RowsFurtherApartThan32BitsTell) {
    forBothDepths([&]<class T>(T) {
        constexpr std::ptrdiff_t step = 0x7FFFFFF1;
        constexpr KuviSize size = {20, 12};
        const std::ptrdiff_t rowBytes = size.width * 3 * static_cast<int>(sizeof(T));
        const Mosaic<T> mosaic(size, kuvCfaGBRG, Pattern::random, 1);
        const DistantMemory src(static_cast<std::size_t>(step * size.height)), dst(static_cast<std::size_t>(step * size.height)),
            tmp(static_cast<std::size_t>(step * 30));
        KUV_NEEDS(src);
        KUV_NEEDS(dst);
        KUV_NEEDS(tmp);
        Bytes wanted(static_cast<std::size_t>(rowBytes * size.height)), got(wanted.size());
        mosaic.reference->write(mosaic.whole(), !GetParam().isPx(), [&](int r) { return wanted.data() + r * rowBytes; });
        for (const bool upward : {false, true}) {
            const std::ptrdiff_t sign = upward ? -1 : 1, start = upward ? step * (size.height - 1) : 0;
            for (int r = 0; r < size.height; ++r) {
                std::memcpy(src.memory() + start + sign * step * r, mosaic.address() + r * mosaic.image.step(), size.width * sizeof(T));
            }
            const auto signedStep = static_cast<Kuv32s>(sign * step);
            EXPECT_EQ(watched([&] {
                          return demosaic(reinterpret_cast<const T*>(src.memory() + start), mosaic.whole(), size, signedStep,
                                          reinterpret_cast<T*>(dst.memory() + start), signedStep, mosaic.layout,
                                          reinterpret_cast<T*>(tmp.memory() + (upward ? step * 29 + 64 : 0)), signedStep);
                      }), kuvStatusOk);
            for (int r = 0; r < size.height; ++r) {
                std::memcpy(got.data() + r * rowBytes, dst.memory() + start + sign * step * r, static_cast<std::size_t>(rowBytes));
            }
            EXPECT_EQ(got, wanted);
        }
    });
}

// Callers run this in threads of their own, with stacks of their own size.
TEST_P(DemosaicMemory, StackUseIsBounded) {
    if (sanitized) GTEST_SKIP() << "the sanitizer spreads out the stack";
    forBothDepths([&]<class T>(T) {
        constexpr KuviSize size = {700, 30};
        std::vector<T> src(700 * 30, T{9}), dst(700 * 30 * 3), tmp(30 * 706);
        const std::size_t used = stackOf([&] {
            demosaic(src.data(), {0, 0, 700, 30}, size, 700 * sizeof(T), dst.data(), 2100 * sizeof(T), kuvCfaRGGB, tmp.data(),
                     706 * sizeof(T));
        });
        EXPECT_LE(used, 33u << 10) << "32 KiB of working space, and a frame";
        EXPECT_EQ(dst[1000], T{9});
    });
}

}  // namespace
