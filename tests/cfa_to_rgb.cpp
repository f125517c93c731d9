// Quick interpolation of mosaics.
#include <algorithm>

#include "support/agreement.hpp"
#include "support/distant.hpp"
#include "support/mosaics.hpp"
#include "support/stack.hpp"
#include "support/statuses.hpp"

namespace {

using namespace kuvtest;

KuvStatus interpolate(const Kuv8u* src, KuviRect roi, KuviSize size, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuvCfaLayout layout,
                      Kuv32s kind = 0) {
    return kuviCFAToRGB_8u_C1C3R(src, roi, size, srcStep, dst, dstStep, layout, kind);
}
KuvStatus interpolate(const Kuv16u* src, KuviRect roi, KuviSize size, Kuv32s srcStep, Kuv16u* dst, Kuv32s dstStep, KuvCfaLayout layout,
                      Kuv32s kind = 0) {
    return kuviCFAToRGB_16u_C1C3R(src, roi, size, srcStep, dst, dstStep, layout, kind);
}

// Cut off at the far edges only.
KuviRect clipped(KuviRect roi, KuviSize image) {
    const auto side = [](int first, int count, int all) {
        return static_cast<int>(std::min<std::int64_t>(count, std::int64_t{all} - first));
    };
    return {roi.x, roi.y, side(roi.x, roi.width, image.width), side(roi.y, roi.height, image.height)};
}

// The text, pixel by pixel.
template <class T>
struct Reference {
    const Image& src;
    KuviSize size;
    KuvCfaLayout layout;

    int at(int r, int c) const { return load<T>(src.row(reflected(r, size.height)), reflected(c, size.width)); }

    bool inRing(int r, int c) const { return r < 2 || c < 2 || r >= size.height - 2 || c >= size.width - 2; }

    std::array<int, 3> pixel(int r, int c) const {
        const int horizontal = (at(r, c - 1) + at(r, c + 1) + 1) >> 1, vertical = (at(r - 1, c) + at(r + 1, c) + 1) >> 1;
        const int around = (at(r - 1, c) + at(r + 1, c) + at(r, c - 1) + at(r, c + 1) + 2) >> 2;
        const int diagonals = (at(r - 1, c - 1) + at(r - 1, c + 1) + at(r + 1, c - 1) + at(r + 1, c + 1) + 2) >> 2;
        const Colour site = colourAt(layout, r, c);
        if (site == Colour::green) {
            const bool redInRow = colourAt(layout, r, c + 1) == Colour::red;
            return {redInRow ? horizontal : vertical, at(r, c), redInRow ? vertical : horizontal};
        }
        int green = around;
        if (!inRing(r, c)) {
            const int dv = std::abs(at(r - 2, c) - at(r + 2, c)), dh = std::abs(at(r, c - 2) - at(r, c + 2));
            if (dv < dh) green = vertical;
            if (dh < dv) green = horizontal;
        }
        return site == Colour::red ? std::array{at(r, c), green, diagonals} : std::array{diagonals, green, at(r, c)};
    }
};

// All eight arguments; regions that begin within the image.
template <class T>
struct InterpolationArguments {
    std::tuple<const T*, KuviRect, KuviSize, Kuv32s, T*, Kuv32s, KuvCfaLayout, Kuv32s> operator()(Draw& draw) const {
        Random& random = draw.random;
        const KuviSize image = {std::max(draw.size.width, 2), std::max(draw.size.height, 2)};
        const int x = below(random, image.width), y = below(random, image.height);
        const KuviRect roi = {oneIn(random, 2) ? 0 : x, oneIn(random, 2) ? 0 : y, between(random, 1, image.width + 3),
                              between(random, 1, image.height + 3)};
        const KuviRect region = clipped(roi, image);
        const int bytes = sizeof(T);
        const Image& src = draw.image<T>(Role::source, image.width, image.height, drawStep(random, StepClass::D, image.width * bytes));
        const Image& dst =
            draw.image<T>(Role::output, region.width * 3, region.height, drawStep(random, StepClass::C, region.width * 3 * bytes));
        return {src.row<T>(), roi, image, src.step(), dst.row<T>(), dst.step(), below(random, 4), static_cast<Kuv32s>(random())};
    }
};

#define KUV_INTERPOLATION(depth)                                                                                                          \
    KUV_AGREES(kuviCFAToRGB_##depth##_C1C3R, InterpolationArguments<Kuv##depth>{});                                                       \
    KUV_CHECKS(kuviCFAToRGB_##depth##_C1C3R, call(InterpolationArguments<Kuv##depth>{}), check(kuvStatusNullPtr, null<0>(), null<4>()),   \
               check(kuvStatusBadSize, width<2>(1), width<2>(0), width<2>(-1), width<2>(INT32_MIN)),                                      \
               check(kuvStatusBadSize, height<2>(1), height<2>(0), height<2>(-1), height<2>(INT32_MIN)),                                  \
               check(kuvStatusBadArg, set<6>(-1), set<6>(4), set<6>(INT32_MIN), set<6>(INT32_MAX)))
KUV_INTERPOLATION(8u);
KUV_INTERPOLATION(16u);

class CfaToRgb : public VariantTest {
protected:
    struct Options {
        std::ptrdiff_t srcPadding = 0, dstPadding = 0;  // bytes
        bool upward = false;
        Guard guard = Guard::end;
        int gap = 0;
    };

    template <class T>
    void expectRegion(KuviSize size, KuviRect roi, KuvCfaLayout layout, Pattern pattern, const Options& options) {
        const int bytes = sizeof(T);
        const KuviRect region = clipped(roi, size);
        const std::ptrdiff_t srcStep = size.width * bytes + options.srcPadding, dstStep = region.width * 3 * bytes + options.dstPadding;
        const Image src("src", {size.width * bytes, size.height, options.upward ? -srcStep : srcStep, options.guard, options.gap, bytes},
                        random_());
        std::array<T, 8> drawn;
        for (T& each : drawn) each = random_.bits<T>();
        for (int r = 0; r < size.height; ++r) {
            for (int c = 0; c < size.width; ++c) store(src.row(r), c, sampleOf<T>(pattern, random_, drawn, r, c));
        }
        const Image dst("dst",
                        {region.width * 3 * bytes, region.height, options.upward ? -dstStep : dstStep, options.guard, options.gap, bytes},
                        random_());
        const Bytes before = src.bytes();
        Bytes wanted = dst.bytes();
        const Reference<T> reference = {src, size, layout};
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << 8 * bytes << " bits, image " << size.width << " x " << size.height
                                        << ", region " << roi.x << " " << roi.y << " " << roi.width << " " << roi.height << ", layout "
                                        << layout << ", pattern " << static_cast<int>(pattern) << "\n  src: " << src.geometry()
                                        << "\n  dst: " << dst.geometry());
        const auto kind = static_cast<Kuv32s>(random_());
        EXPECT_EQ(watched([&] { return interpolate(src.row<T>(), roi, size, src.step(), dst.row<T>(), dst.step(), layout, kind); }),
                  kuvStatusOk);
        for (int r = 0; r < region.height; ++r) {
            for (int c = 0; c < region.width; ++c) {
                const bool inside = roi.y + r >= 0 && roi.x + c >= 0;  // what stands outside of the image is not stated
                const auto pixel = inside ? reference.pixel(roi.y + r, roi.x + c) : std::array<int, 3>{};
                for (int channel = 0; channel < 3; ++channel) {
                    const int i = 3 * c + channel;
                    store(dst.row(wanted, r), i,
                          inside ? static_cast<T>(pixel[static_cast<std::size_t>(channel)]) : load<T>(dst.row(r), i));
                }
            }
        }
        EXPECT_EQ(dst.difference(wanted), "");
        EXPECT_EQ(src.difference(before), "");
    }

    void expectBoth(KuviSize size, KuviRect roi, KuvCfaLayout layout, Pattern pattern, const Options& options) {
        expectRegion<Kuv8u>(size, roi, layout, pattern, options);
        expectRegion<Kuv16u>(size, roi, layout, pattern, options);
    }
    void expectWhole(KuviSize size, KuvCfaLayout layout, Pattern pattern, const Options& options) {
        expectBoth(size, {0, 0, size.width, size.height}, layout, pattern, options);
    }

    KuvCfaLayout anyLayout() { return cfaLayouts[below(random_, 4)]; }
    Pattern anyPattern() { return static_cast<Pattern>(below(random_, static_cast<int>(Pattern::count))); }

    Random random_{1};
};

KUV_FOR_EACH_VARIANT(CfaToRgb);

// An image of at most four samples a side is ring only.
TEST_P(CfaToRgb, EverySmallSize) {
    for (int height = 2; height <= 12; ++height) {
        for (int width = 2; width <= 80; ++width) {
            expectWhole({width, height}, cfaLayouts[(width + height) % 4], Pattern::random, {});
            expectWhole({width, height}, anyLayout(), anyPattern(),
                        {.srcPadding = 1, .dstPadding = 3, .upward = oneIn(random_, 2), .guard = Guard::begin});
            if (HasFailure()) return;
        }
    }
    for (const KuviSize size : {KuviSize{333, 7}, {1001, 6}, {7, 333}, {128, 30}, {2049, 5}, {4096, 5}, {4097, 6}, {8300, 5}}) {
        for (const KuvCfaLayout layout : cfaLayouts) expectWhole(size, layout, Pattern::random, {.dstPadding = 5});
    }
}

TEST_P(CfaToRgb, EveryPatternInEveryLayout) {
    for (int pattern = 0; pattern < static_cast<int>(Pattern::count); ++pattern) {
        for (const KuvCfaLayout layout : cfaLayouts) {
            for (const KuviSize size : {KuviSize{64, 20}, KuviSize{75, 21}}) expectWhole(size, layout, static_cast<Pattern>(pattern), {});
        }
    }
}

// From any pixel on: the layout is that of the image, not of the region.
TEST_P(CfaToRgb, AnyRegion) {
    for (int i = 0; i < rounds(600) && !HasFailure(); ++i) {
        const KuviSize size = {between(random_, 2, 90), between(random_, 2, 24)};
        const KuviRect roi = {between(random_, -5, size.width - 1), between(random_, -5, size.height - 1), between(random_, 6, 100),
                              between(random_, 6, 30)};
        expectBoth(
            size, roi, anyLayout(), anyPattern(),
            {.srcPadding = below(random_, 4), .dstPadding = below(random_, 4), .guard = oneIn(random_, 2) ? Guard::end : Guard::begin});
    }
    const KuviSize size = {40, 20};
    for (int y = 0; y < 6; ++y) {
        for (int x = 0; x < 6; ++x) {
            for (const int side : {1, 2, 3}) expectBoth(size, {x, y, side, side}, kuvCfaGBRG, Pattern::random, {});
            expectBoth(size, {size.width - 1 - x, size.height - 1 - y, 100, 100}, kuvCfaBGGR, Pattern::random, {});
            expectBoth(size, {x, y, INT32_MAX, INT32_MAX}, kuvCfaRGGB, Pattern::random, {});
        }
    }
}

TEST_P(CfaToRgb, EveryAlignment) {
    for (int gap = 0; gap < 65 && !HasFailure(); ++gap) {
        expectWhole({70, 6}, anyLayout(), Pattern::random, {.srcPadding = 7, .dstPadding = 9, .guard = Guard::begin, .gap = gap});
    }
}

// Rows that lie on each other are written one after the other.
TEST_P(CfaToRgb, AnyStep) {
    for (const int rows : {5, 9}) {
        const KuviSize size = {50, rows};
        for (const std::ptrdiff_t padding : {-150, -151, -149, -300, -1}) {
            expectWhole(size, anyLayout(), Pattern::random, {.dstPadding = padding});
            expectRegion<Kuv8u>(size, {3, 1, 40, 3}, anyLayout(), Pattern::random, {.dstPadding = padding});
        }
    }
}

TEST_P(CfaToRgb, AnEmptyRegionWritesNothing) {
    Kuv8u src[36] = {}, dst[3] = {1, 2, 3};
    for (const KuviRect roi : {KuviRect{0, 0, 0, 5}, {0, 0, 5, 0}, {2, 2, -1, 5}, {2, 2, 5, INT32_MIN}, {6, 6, 2, 2}, {100, 7, 5, 5}}) {
        EXPECT_EQ(interpolate(src, roi, {6, 6}, 6, dst, 3, kuvCfaRGGB), kuvStatusOk);
        EXPECT_EQ(dst[0], 1);
    }
}

// Before its own first pixel a region past one far edge gets pixels of the image's last column, or row.
TEST_P(CfaToRgb, PastAFarEdge) {
    const KuviSize size = {20, 12};
    const Image src("src", {20, 12, 20}, 5);
    const Reference<Kuv8u> reference = {src, size, kuvCfaRGGB};
    const int x = 23, y = 1, height = 30, above = 14, step = 200;
    std::vector<Kuv8u> memory(40 * step, 0xEE), wanted = memory;
    EXPECT_EQ(interpolate(src.row<Kuv8u>(), {x, y, 5, height}, size, 20, memory.data() + 100, step, kuvCfaRGGB), kuvStatusOk);
    for (int r = 2; r <= size.height - 3; ++r) {
        const auto pixel = reference.pixel(r, size.width - 1);
        for (int c = 0; c < 3; ++c) {
            wanted[static_cast<std::size_t>((r - y) * step + 100 + 3 * (size.width - 1 - x) + c)] =
                static_cast<Kuv8u>(pixel[static_cast<std::size_t>(c)]);
        }
    }
    EXPECT_EQ(memory, wanted);

    memory.assign(memory.size(), 0xEE);
    wanted = memory;
    EXPECT_EQ(interpolate(src.row<Kuv8u>(), {4, 15, 40, 3}, size, 20, memory.data() + above * step, step, kuvCfaRGGB), kuvStatusOk);
    for (int c = 4; c < size.width; ++c) {
        const auto pixel = reference.pixel(size.height - 1, c);
        for (int i = 0; i < 3; ++i) {
            wanted[static_cast<std::size_t>((above + size.height - 1 - 15) * step + 3 * (c - 4) + i)] =
                static_cast<Kuv8u>(pixel[static_cast<std::size_t>(i)]);
        }
    }
    EXPECT_EQ(memory, wanted);
}

TEST_P(CfaToRgb, AFlatImageStaysFlat) {
    for (const KuvCfaLayout layout : cfaLayouts) {
        std::vector<Kuv16u> src(31 * 23, 65535), dst(src.size() * 3);
        EXPECT_EQ(interpolate(src.data(), {0, 0, 31, 23}, {31, 23}, 62, dst.data(), 186, layout), kuvStatusOk);
        EXPECT_EQ(std::count(dst.begin(), dst.end(), 65535), static_cast<std::ptrdiff_t>(dst.size()));
    }
}

TEST_P(CfaToRgb, TheKindOfInterpolationIsIgnored) {
    const Image src("src", {60, 9, 60}, 5);
    std::vector<Kuv8u> first(60 * 9 * 3), other(first.size());
    EXPECT_EQ(interpolate(src.row<Kuv8u>(), {0, 0, 60, 9}, {60, 9}, 60, first.data(), 180, kuvCfaGRBG, 0), kuvStatusOk);
    for (const Kuv32s kind : {1, -1, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(interpolate(src.row<Kuv8u>(), {0, 0, 60, 9}, {60, 9}, 60, other.data(), 180, kuvCfaGRBG, kind), kuvStatusOk);
        EXPECT_EQ(first, other);
    }
}

TEST_P(CfaToRgb, RowsFurtherApartThan32BitsTell) {
    constexpr std::ptrdiff_t step = 0x7FFFFFF1;
    constexpr KuviSize size = {70, 6};
    const DistantMemory from(6 * static_cast<std::size_t>(step)), to(6 * static_cast<std::size_t>(step));
    KUV_NEEDS(from);
    KUV_NEEDS(to);
    const Image near("src", {size.width, size.height, size.width}, 8);
    std::vector<Kuv8u> wanted(70 * 6 * 3);
    for (int r = 0; r < size.height; ++r) std::copy_n(near.row(r), size.width, reinterpret_cast<unsigned char*>(from.memory()) + step * r);
    EXPECT_EQ(interpolate(near.row<Kuv8u>(), {0, 0, 70, 6}, size, size.width, wanted.data(), 210, kuvCfaRGGB), kuvStatusOk);
    EXPECT_EQ(watched([&] {
                  return interpolate(reinterpret_cast<const Kuv8u*>(from.memory()), {0, 0, 70, 6}, size, step,
                                     reinterpret_cast<Kuv8u*>(to.memory()), step, kuvCfaRGGB);
              }),
              kuvStatusOk);
    for (int r = 0; r < size.height; ++r) EXPECT_EQ(std::memcmp(to.memory() + step * r, wanted.data() + 210 * r, 210), 0);
}

TEST_P(CfaToRgb, StackUseIsBounded) {
    if (sanitized) GTEST_SKIP() << "the sanitizer spreads out the stack";
    const auto expectBound = []<class T>(T value) {
        constexpr KuviSize size = {3000, 30};
        const std::vector<T> src(3000 * 30, value);
        std::vector<T> dst(src.size() * 3);
        const std::size_t used = stackOf([&] {
            interpolate(src.data(), {0, 0, 3000, 30}, size, 3000 * sizeof(T), dst.data(), 9000 * sizeof(T), kuvCfaRGGB);
        });
        EXPECT_LE(used, 33u << 10) << "32 KiB, and a frame";
        EXPECT_EQ(dst.back(), value);
    };
    expectBound(Kuv8u{9});
    expectBound(Kuv16u{9});
}

}  // namespace
