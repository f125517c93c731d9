// Packed 4:2:2 video and grey samples to RGB.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <vector>

#include "support/agreement.hpp"
#include "support/distant.hpp"
#include "support/statuses.hpp"

namespace {

using namespace kuvtest;

using Pixel = std::array<Kuv8u, 3>;

Kuv8u saturated(int v) { return static_cast<Kuv8u>(std::clamp(v, 0, 255)); }

// The exact formulae of the header.
Pixel exactly(int luma, int cb, int cr) {
    const int b = cb - 128, r = cr - 128;
    return {saturated((76282 * luma + 104593 * r - 1187744) >> 16),
            saturated((76282 * luma - 25689 * b - 53279 * r - 1187744) >> 16),
            saturated((76282 * luma + 132184 * b - 1187744) >> 16)};
}

// Its quick ones.
Pixel quickly(int luma, int cb, int cr) {
    const auto m = [](int a, int k) { return (a * k) >> 16; };
    const int b = (cb - 128) * 128, r = (cr - 128) * 128, y = m((luma - 16) * 128, 4769);
    return {saturated((y + m(r, 6537) + 4) >> 3),
            saturated((y - (m(b, 1605) + m(r, 3330)) + 4) >> 3),
            saturated((y + m(b, 8263) + 4) >> 3)};
}

bool isQuick(const Variant& variant) { return variant.index >= 2; }

// How many pixels of a row, from the first on, the quick formulae are for.
int quickPixels(const Variant& variant, int width) {
    if (!isQuick(variant)) return 0;
    return width - width % (variant.isH9() ? 16 : 8);
}

// The pixels of a row. What stands before the row may count.
void convertRow(const Variant& variant, const Kuv8u* src, int width, Kuv8u* dst) {
    const int quick = quickPixels(variant, width);
    for (int i = 0; i < width; ++i) {
        const Kuv8u* const pair = src + 4 * (i / 2);
        int cr = 0;
        if (i % 2 == 1 || i + 1 < width) {
            cr = pair[2];
        } else {
            const bool fromCb = isQuick(variant) ? width / 2 == 1 : width == 1;
            cr = fromCb ? pair[0] : pair[-2];
        }
        const Pixel pixel = i < quick ? quickly(src[2 * i + 1], pair[0], cr) : exactly(src[2 * i + 1], pair[0], cr);
        std::copy(pixel.begin(), pixel.end(), dst + 3 * i);
    }
}

// (pointer, step, pointer, step, size): packed video and its pixels. A row of one pixel has two readable bytes before it. Among
// variants that take blocks of 16 pixels and of 32, widths that leave no 8 between.
struct VideoArguments {
    std::tuple<const Kuv8u*, Kuv32s, Kuv8u*, Kuv32s, KuviSize> operator()(Draw& draw) const {
        draw.size.width &= ~8;
        if (draw.size.width == 0) draw.size.width = 17;
        const int before = draw.size.width == 1 ? 2 : 0, srcBytes = 2 * draw.size.width + before, dstBytes = 3 * draw.size.width;
        const Image& src = draw.image<Kuv8u>(Role::source, srcBytes, draw.size.height, drawStep(draw.random, StepClass::C, srcBytes));
        const Image& dst = draw.image<Kuv8u>(Role::output, dstBytes, draw.size.height, drawStep(draw.random, StepClass::C, dstBytes));
        return {src.row() + before, src.step(), dst.row(), dst.step(), draw.size};
    }
};

// px and w7 use other arithmetic. All are held against the reference below.
KUV_AGREES_FROM(s8, kuviCbYCr422ToRGB_8u_C2C3R, VideoArguments{});
KUV_AGREES(kuviGrayToRGB_8u_C1C3R, Source<Kuv8u>{}, Output<Kuv8u>{.channels = 3}, RoiSize{});

#define CHECKS_OF_RGB(function, ...)                                                                                     \
    KUV_CHECKS(function, call(__VA_ARGS__), check(kuvStatusNullPtr, null<0>(), null<2>()), badSize<4>())
CHECKS_OF_RGB(kuviCbYCr422ToRGB_8u_C2C3R, VideoArguments{});
CHECKS_OF_RGB(kuviGrayToRGB_8u_C1C3R, Source<Kuv8u>{}, Output<Kuv8u>{.channels = 3}, RoiSize{});

class ToRGB : public VariantTest {
protected:
    struct Steps {
        std::ptrdiff_t src, dst;
    };

    template <class Function, class Reference>
    void expectRows(Function function, Reference reference, int srcBytes, int before, KuviSize size, Steps steps, Guard guard, int gap) {
        const Image src("src", {srcBytes + before, size.height, steps.src, guard, gap, 1}, ++seed_);
        const Image dst("dst", {3 * size.width, size.height, steps.dst, guard, gap, 1}, ++seed_);
        const Bytes srcBefore = src.bytes();
        Bytes wanted = dst.bytes();
        for (int r = 0; r < size.height; ++r) reference(src.row(r) + before, dst.row(wanted, r));
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << size.width << " x " << size.height << "\n  src: " << src.geometry()
                                        << "\n  dst: " << dst.geometry());
        EXPECT_EQ(watched([&] { return function(src.row() + before, src.step(), dst.row(), dst.step(), size); }), kuvStatusOk);
        EXPECT_EQ(dst.difference(wanted), "");
        EXPECT_EQ(src.difference(srcBefore), "");
    }

    void expectVideo(KuviSize size, Steps steps, Guard guard, int gap = 0) {
        const auto reference = [&](const Kuv8u* src, Kuv8u* dst) { convertRow(GetParam(), src, size.width, dst); };
        expectRows(kuviCbYCr422ToRGB_8u_C2C3R, reference, 2 * size.width, size.width == 1 ? 2 : 0, size, steps, guard, gap);
    }
    void expectGrey(KuviSize size, Steps steps, Guard guard, int gap = 0) {
        const auto reference = [&](const Kuv8u* src, Kuv8u* dst) {
            for (int i = 0; i < 3 * size.width; ++i) dst[i] = src[i / 3];
        };
        expectRows(kuviGrayToRGB_8u_C1C3R, reference, size.width, 0, size, steps, guard, gap);
    }
    void expectBoth(KuviSize size, int srcPadding, int dstPadding, Guard guard, int gap = 0) {
        const std::ptrdiff_t dstStep = 3 * size.width + dstPadding;
        expectVideo(size, {2 * size.width + srcPadding, dstStep}, guard, gap);
        expectGrey(size, {size.width + srcPadding, dstStep}, guard, gap);
    }

    std::vector<Kuv8u> video(std::vector<Kuv8u> src) {
        const int width = static_cast<int>(src.size()) / 2;
        std::vector<Kuv8u> dst(static_cast<std::size_t>(3 * width));
        EXPECT_EQ(kuviCbYCr422ToRGB_8u_C2C3R(src.data(), 2 * width, dst.data(), 3 * width, {width, 1}), kuvStatusOk);
        return dst;
    }

    // A row of pixels of one colour gives pixels of one colour, at whatever place and by whichever formulae.
    void expectColour(Kuv8u luma, Kuv8u cb, Kuv8u cr, Pixel wanted) {
        for (const int width : {2, 8, 16, 22, 32, 46, 62}) {
            std::vector<Kuv8u> src;
            for (int i = 0; i < width; ++i) src.insert(src.end(), {i % 2 == 0 ? cb : cr, luma});
            const std::vector<Kuv8u> dst = video(src);
            for (std::size_t i = 0; i < dst.size(); ++i) EXPECT_EQ(dst[i], wanted[i % 3]) << "width " << width << ", byte " << i;
        }
    }

    // All samples Y at all Cb and Cr, a row for each `stride` values of Y, behind `before` pixels that do not count.
    void expectAllColours(int before, int stride) {
        const int width = before + stride, rowsPerColour = (255 + stride) / stride, rows = 256 * rowsPerColour;
        const std::size_t srcStep = static_cast<std::size_t>(2 * width), dstStep = static_cast<std::size_t>(3 * width);
        std::vector<Kuv8u> src(srcStep * static_cast<std::size_t>(rows)), dst(dstStep * static_cast<std::size_t>(rows)), wanted(dstStep);
        for (int cb = 0; cb < 256; cb += sanitized ? 85 : 1) {
            for (int row = 0; row < rows; ++row) {
                for (int i = 0; i < width; ++i) {
                    Kuv8u* const at = &src[srcStep * static_cast<std::size_t>(row) + static_cast<std::size_t>(2 * i)];
                    at[0] = static_cast<Kuv8u>(i % 2 == 0 ? cb : row / rowsPerColour);
                    at[1] = static_cast<Kuv8u>(row % rowsPerColour * stride + i - before);
                }
            }
            EXPECT_EQ(kuviCbYCr422ToRGB_8u_C2C3R(src.data(), 2 * width, dst.data(), 3 * width, {width, rows}), kuvStatusOk);
            for (int row = 0; row < rows; ++row) {
                convertRow(GetParam(), &src[srcStep * static_cast<std::size_t>(row)], width, wanted.data());
                const auto first = dst.begin() + static_cast<std::ptrdiff_t>(dstStep) * row;
                const auto [got, expected] = std::mismatch(first, first + 3 * width, wanted.begin());
                ASSERT_TRUE(expected == wanted.end())
                    << "Cb " << cb << ", row " << row << " of width " << width << ", byte " << expected - wanted.begin() << ": got "
                    << int{*got} << ", wanted " << int{*expected};
            }
        }
    }

private:
    std::uint64_t seed_ = 0;
};

KUV_FOR_EACH_VARIANT(ToRGB);

TEST_P(ToRGB, EveryWidth) {
    for (int width = 1; width <= 140 && !HasFailure(); ++width) {
        expectBoth({width, 3}, 0, 0, Guard::end);
        expectBoth({width, 2}, 3, 1, Guard::begin);
        expectBoth({width, 1}, 0, 0, Guard::end, width % 67);
    }
    for (const int width : {255, 256, 257, 511, 512, 513, 519, 520, 521, 1000, 1007}) {
        expectBoth({width, 3}, 1, 2, Guard::end);
        expectBoth({width, 3}, 0, 0, Guard::begin);
    }
}

TEST_P(ToRGB, EveryAlignment) {
    for (int gap = 0; gap < 65 && !HasFailure(); ++gap) {
        for (const int width : {1, 7, 15, 16, 17, 31, 33, 47, 64, 65, 130}) {
            for (const int padding : {0, 5}) expectBoth({width, 2}, padding, padding, gap % 2 == 0 ? Guard::end : Guard::begin, gap);
        }
    }
}

TEST_P(ToRGB, AnyStep) {
    for (const int width : {1, 2, 3, 7, 24, 40, 71}) {
        const int row = 3 * width;
        for (const std::ptrdiff_t dstStep : {0, 1, -1, row / 2 + 1, -row, -row - 3, row + 5}) {
            for (const std::ptrdiff_t srcStep : {0, 1, -1, -2 * width - 2, 2 * width + 7}) {
                for (const Guard guard : {Guard::end, Guard::begin}) {
                    expectVideo({width, 4}, {srcStep, dstStep}, guard);
                    expectGrey({width, 4}, {srcStep, dstStep}, guard, 3);
                    if (HasFailure()) return;
                }
            }
        }
    }
}

// Rows that touch in one image but not in the other, or in both.
TEST_P(ToRGB, RowsThatTouch) {
    for (const int width : {1, 5, 16, 40, 63}) {
        for (const int srcPadding : {0, 2}) {
            for (const int dstPadding : {0, 3}) expectBoth({width, 7}, srcPadding, dstPadding, Guard::end);
        }
    }
}

TEST_P(ToRGB, BlackOfVideoRange) { expectColour(16, 128, 128, {0, 0, 0}); }

TEST_P(ToRGB, WhiteOfVideoRange) { expectColour(235, 128, 128, {255, 255, 255}); }

TEST_P(ToRGB, LumaBeyondVideoRangeSaturates) {
    expectColour(255, 128, 128, {255, 255, 255});
    expectColour(0, 128, 128, {0, 0, 0});
}

TEST_P(ToRGB, StrongChromaSaturates) {
    expectColour(235, 255, 255, {255, 102, 255});
    expectColour(16, 0, 0, {0, 154, 0});
    expectColour(100, 255, 0, {0, 152, 255});
    expectColour(100, 0, 255, {255, 45, 0});
}

TEST_P(ToRGB, AllColoursInBlocks) { expectAllColours(0, 256); }

// What is left behind the blocks, and rows too short for any.
TEST_P(ToRGB, AllColoursBehindBlocks) {
    expectAllColours(GetParam().isH9() ? 32 : 16, 6);
}
TEST_P(ToRGB, AllColoursInShortRows) { expectAllColours(0, 6); }

TEST(ToRGBFormulae, DifferBy1AtMost) {
    int differing = 0;
    for (int colour = 0; colour < 1 << 24; colour += sanitized ? 7 : 1) {
        const Pixel exact = exactly(colour & 0xFF, colour >> 8 & 0xFF, colour >> 16),
                    quick = quickly(colour & 0xFF, colour >> 8 & 0xFF, colour >> 16);
        for (std::size_t c = 0; c < 3; ++c) {
            ASSERT_LE(std::abs(exact[c] - quick[c]), 1) << std::hex << colour;
            differing += exact[c] != quick[c];
        }
    }
    EXPECT_GT(differing, 0);
}

TEST_P(ToRGB, BothArithmeticsAreSeen) {
    EXPECT_NE(exactly(73, 200, 135), quickly(73, 200, 135));
    const std::vector<Kuv8u> pair = {200, 73, 135, 73};
    std::vector<Kuv8u> src;
    for (int i = 0; i < 15; ++i) src.insert(src.end(), pair.begin(), pair.end());
    const std::vector<Kuv8u> dst = video(src);
    // Of 30 pixels, from which on they are exact.
    const std::ptrdiff_t quick = isQuick(GetParam()) ? GetParam().isH9() ? 16 : 24 : 0;
    for (std::ptrdiff_t i = 0; i < 30; ++i) {
        const Pixel pixel = i < quick ? quickly(73, 200, 135) : exactly(73, 200, 135);
        EXPECT_TRUE(std::equal(pixel.begin(), pixel.end(), dst.begin() + 3 * i)) << i;
    }
}

TEST_P(ToRGB, OddWidth5TakesTheCrBefore) {
    const std::vector<Kuv8u> dst = video({10, 100, 20, 110, 30, 120, 200, 130, 50, 140});
    const Pixel wanted = exactly(140, 50, 200);
    EXPECT_TRUE(std::equal(wanted.begin(), wanted.end(), dst.begin() + 12));
}

TEST_P(ToRGB, Width3) {
    const std::vector<Kuv8u> dst = video({10, 100, 200, 110, 50, 140});
    const Pixel wanted = isQuick(GetParam()) ? exactly(140, 50, 50) : exactly(140, 50, 200);
    EXPECT_TRUE(std::equal(wanted.begin(), wanted.end(), dst.begin() + 6));
}

TEST_P(ToRGB, Width1) {
    const Kuv8u memory[] = {200, 7, 50, 140};
    Kuv8u dst[3] = {};
    EXPECT_EQ(kuviCbYCr422ToRGB_8u_C2C3R(memory + 2, 2, dst, 3, {1, 1}), kuvStatusOk);
    const Pixel wanted = isQuick(GetParam()) ? exactly(140, 50, 200) : exactly(140, 50, 50);
    EXPECT_TRUE(std::equal(wanted.begin(), wanted.end(), dst));
}

TEST_P(ToRGB, RowsFurtherApartThan32BitsTell) {
    constexpr std::ptrdiff_t step = 0x7FFFFFF1;
    const DistantMemory from(3 * static_cast<std::size_t>(step)), to(3 * static_cast<std::size_t>(step));
    KUV_NEEDS(from);
    KUV_NEEDS(to);
    constexpr int width = 50;
    const auto src = reinterpret_cast<Kuv8u*>(from.memory()), dst = reinterpret_cast<Kuv8u*>(to.memory());
    for (int r = 0; r < 3; ++r) {
        for (int i = 0; i < 2 * width; ++i) src[step * r + i] = static_cast<Kuv8u>(i % 2 == 0 ? 128 : 60 + 60 * r);
    }
    EXPECT_EQ(watched([&] {
                  return kuviCbYCr422ToRGB_8u_C2C3R(src, static_cast<Kuv32s>(step), dst, static_cast<Kuv32s>(step), {width, 3});
              }),
              kuvStatusOk);
    for (int r = 0; r < 3; ++r) {
        Kuv8u wanted[3 * width];
        convertRow(GetParam(), src + step * r, width, wanted);
        EXPECT_EQ(std::memcmp(dst + step * r, wanted, sizeof wanted), 0);
    }
    EXPECT_EQ(watched([&] {
                  return kuviGrayToRGB_8u_C1C3R(src, static_cast<Kuv32s>(step), dst, static_cast<Kuv32s>(step), {width, 3});
              }),
              kuvStatusOk);
    for (int r = 0; r < 3; ++r) {
        for (int i = 0; i < 3 * width; ++i) ASSERT_EQ(dst[step * r + i], src[step * r + i / 3]);
    }
}

}  // namespace
