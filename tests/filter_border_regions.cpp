// Filters: what stands beyond the border, which parts of an image make the whole, and how little memory they need.
#include "support/filter_calls.hpp"
#include "support/process_state.hpp"

namespace {

using namespace kuvtest;

class FilterBorderRegions : public FilterTest {
protected:
    // Of a kernel and samples that are easily told.
    std::vector<Kuv32f> filtered(const FilterKernel& kernel, const std::vector<Kuv32f>& src, KuviSize size, Kuv32s border,
                                 Kuv32f value = 0) {
        const KeptKernel kept(kernel, size);
        std::vector<Kuv32f> dst(src.size());
        std::vector<Kuv8u> buffer(static_cast<std::size_t>(kept.bufferBytes));
        EXPECT_EQ(kuviFilterBorder_32f_C1R(src.data(), 4 * size.width, dst.data(), 4 * size.width, size, border, &value, kept.spec(),
                                           buffer.data()),
                  kuvStatusOk);
        return dst;
    }
};

KUV_FOR_EACH_VARIANT(FilterBorderRegions);

TEST_P(FilterBorderRegions, EveryBorderAndSide) {
    for (const Kuv32s rule : {kuvBorderClamp, kuvBorderReflect, kuvBorderFill}) {
        for (Kuv32s flags = 0; flags <= 240; flags += 16) {
            for (int kw = 1; kw <= 6; ++kw) {
                for (int kh = 1; kh <= 6; ++kh) {
                    expectFiltered(callOf({kw, kh}, {between(random_, 7, 40), between(random_, 7, 20)}, rule + flags));
                    expectFiltered(callOf({kw, kh}, {between(random_, 1, 8), between(random_, 1, 8)}, rule + flags));
                }
            }
            if (HasFailure()) return;
        }
    }
    for (int kw = 1; kw <= 6; ++kw) {
        for (int kh = 1; kh <= 6; ++kh) expectFiltered(callOf({kw, kh}, {between(random_, 1, 20), between(random_, 1, 8)}, 240));
    }
}

// Far beyond the border a reflection goes there and back.
TEST_P(FilterBorderRegions, ImagesSmallerThanTheKernel) {
    for (int i = 0; i < rounds(400) && !HasFailure(); ++i) {
        const KuviSize kernel = {between(random_, 1, 40), between(random_, 1, 40)};
        const bool narrow = oneIn(random_, 2);
        const KuviSize size = {between(random_, 1, narrow ? kernel.width : 60), between(random_, 1, narrow ? 30 : kernel.height)};
        expectFiltered(callOf(kernel, size, anyBorder(random_)));
    }
}

// As large as the kernel, one more, one less.
TEST_P(FilterBorderRegions, ImagesAboutAsLargeAsTheKernel) {
    for (int kw = 1; kw <= 12 && !HasFailure(); ++kw) {
        for (int kh = 1; kh <= 12; ++kh) {
            for (const int more : {-1, 0, 1}) {
                const KuviSize size = {std::max(1, kw + more), std::max(1, kh + between(random_, -1, 1))};
                expectFiltered(callOf({kw, kh}, size, anyBorder(random_)));
            }
        }
    }
}

TEST_P(FilterBorderRegions, ASinglePixelOrColumn) {
    for (const Kuv32s rule : {kuvBorderClamp, kuvBorderReflect, kuvBorderFill}) {
        for (int kw = 1; kw <= 5; ++kw) {
            for (int kh = 1; kh <= 5; ++kh) {
                for (const KuviSize size : {KuviSize{1, 1}, {1, 9}, {9, 1}, {1, 2}, {2, 1}, {2, 2}}) {
                    expectFiltered(callOf({kw, kh}, size, rule));
                }
            }
        }
    }
    EXPECT_EQ(filtered({{3, 1}, {1, 10, 100}}, {3, 4}, {1, 2}, kuvBorderReflect), (std::vector<Kuv32f>{333, 444}));
}

TEST_P(FilterBorderRegions, RulesAsNumbers) {
    const std::vector<Kuv32f> src = {1, 2, 3, 4};
    const FilterKernel kernel = {{5, 1}, {10000, 1000, 100, 10, 1}};
    EXPECT_EQ(filtered(kernel, src, {4, 1}, kuvBorderClamp), (std::vector<Kuv32f>{11123, 11234, 12344, 23444}));
    EXPECT_EQ(filtered(kernel, src, {4, 1}, kuvBorderReflect), (std::vector<Kuv32f>{32123, 21234, 12343, 23432}));
    EXPECT_EQ(filtered(kernel, src, {4, 1}, kuvBorderFill, 9), (std::vector<Kuv32f>{99123, 91234, 12349, 23499}));
}

// The kernel is not turned.
TEST_P(FilterBorderRegions, ACorrelation) {
    const std::vector<Kuv32f> src = {1, 2, 3, 4, 5, 6};
    EXPECT_EQ(filtered({{3, 1}, {1, 0, 0}}, src, {6, 1}, kuvBorderFill, 8), (std::vector<Kuv32f>{8, 1, 2, 3, 4, 5}));
    EXPECT_EQ(filtered({{1, 3}, {0, 0, 1}}, src, {1, 6}, kuvBorderFill, 8), (std::vector<Kuv32f>{2, 3, 4, 5, 6, 8}));
}

// Even kernels reach further to the right and downward: two columns read a pixel and the one after it.
TEST_P(FilterBorderRegions, EvenKernels) {
    const std::vector<Kuv32f> src = {1, 2, 3, 4, 5, 6};
    EXPECT_EQ(filtered({{2, 1}, {10, 1}}, src, {6, 1}, kuvBorderClamp), (std::vector<Kuv32f>{12, 23, 34, 45, 56, 66}));
    EXPECT_EQ(filtered({{2, 1}, {10, 1}}, src, {6, 1}, kuvBorderReflect), (std::vector<Kuv32f>{12, 23, 34, 45, 56, 65}));
    EXPECT_EQ(filtered({{1, 2}, {10, 1}}, src, {1, 6}, kuvBorderReflect), (std::vector<Kuv32f>{12, 23, 34, 45, 56, 65}));
    EXPECT_EQ(filtered({{4, 1}, {1000, 100, 10, 1}}, src, {6, 1}, kuvBorderFill), (std::vector<Kuv32f>{123, 1234, 2345, 3456, 4560, 5600}));
}

// A kernel of one coefficient has no border. A product keeps the sign of its zero.
TEST_P(FilterBorderRegions, ASingleCoefficient) {
    const std::vector<Kuv32f> src = {1, -2, 0, -0.0f, 1e30f, 7};
    for (const Kuv32s border : {1, 3, 6, 17, 240}) {
        const std::vector<Kuv32f> dst = filtered({{1, 1}, {3}}, src, {3, 2}, border, 5);
        for (std::size_t i = 0; i < src.size(); ++i) {
            EXPECT_EQ(dst[i], 3 * src[i]);
            EXPECT_EQ(std::signbit(dst[i]), std::signbit(src[i]));
        }
    }
}

// Tiles with the flags of their sides inside the image, each with a buffer of its own size.
TEST_P(FilterBorderRegions, TilesMakeTheWhole) {
    for (int i = 0; i < rounds(150) && !HasFailure(); ++i) {
        // Wide tiles are summed up like the whole, whatever the numbers.
        const bool whole = oneIn(random_, 2);
        const FilterKernel kernel = anyKernel(random_, {between(random_, 1, 9), between(random_, 1, 9)}, whole);
        const int narrowest = whole ? 1 : kernel.size.width + 9;
        const KuviSize size = {between(random_, narrowest, 150), between(random_, 1, 40)};
        const Kuv32s rule = anyBorder(random_) % 16;
        if (rule == 0) continue;
        const Kuv32f value = wholeNumber(random_, 1000);
        std::vector<Kuv32f> src(static_cast<std::size_t>(size.width * size.height)), tiled(src.size());
        for (Kuv32f& each : src) each = whole ? wholeNumber(random_, 1000) : anyNumber(random_);
        const std::vector<Kuv32f> wanted = filtered(kernel, src, size, rule, value);
        // Pixels that a tile's neighbour lacks are not in memory, and a reflection takes one more than the kernel reaches.
        const int leastWidth = std::max(narrowest, kernel.right() + 1), leastHeight = kernel.bottom() + 1;
        const auto cuts = [&](int extent, int least) {
            std::vector<int> all = {0};
            for (int at = least + below(random_, 20); at <= extent - least; at += least + below(random_, 20)) all.push_back(at);
            all.push_back(extent);
            return all;
        };
        const std::vector<int> columns = cuts(size.width, leastWidth), rows = cuts(size.height, leastHeight);
        for (std::size_t r = 0; r + 1 < rows.size(); ++r) {
            for (std::size_t c = 0; c + 1 < columns.size(); ++c) {
                const int x = columns[c], y = rows[r];
                const KuviSize tile = {columns[c + 1] - x, rows[r + 1] - y};
                const Kuv32s flags = (y > 0 ? kuvBorderHaveTop : 0) + (y + tile.height < size.height ? kuvBorderHaveBottom : 0) +
                                     (x > 0 ? kuvBorderHaveLeft : 0) + (x + tile.width < size.width ? kuvBorderHaveRight : 0);
                const KeptKernel kept(kernel, tile, anyPlace());
                const Image buffer("buffer", {kept.bufferBytes, 1, 0, Guard::end, below(random_, 65), 1}, random_());
                const std::size_t first = static_cast<std::size_t>(y * size.width + x);
                EXPECT_EQ(watched([&] {
                              return kuviFilterBorder_32f_C1R(src.data() + first, 4 * size.width, tiled.data() + first, 4 * size.width,
                                                              tile, rule + flags, &value, kept.spec(), buffer.row());
                          }),
                          kuvStatusOk);
            }
        }
        for (std::size_t k = 0; k < tiled.size(); ++k) {
            ASSERT_EQ(tiled[k], wanted[k]) << GetParam() << ", kernel " << kernel.size.width << " x " << kernel.size.height << ", image "
                                           << size.width << " x " << size.height << ", rule " << rule << ", pixel "
                                           << k % static_cast<std::size_t>(size.width) << ", " << k / static_cast<std::size_t>(size.width);
        }
    }
}

// Large images are written past the caches, in whole lines. What is large, the cache tells.
TEST_P(FilterBorderRegions, PastTheCaches) {
    const PresetCache cache(kuvStatusOk, 0x1000);
    constexpr KuviSize sizes[] = {{3, 3}, {5, 5}, {7, 7}, {3, 1}, {5, 1}, {7, 1}, {9, 1}, {1, 3}, {1, 5}, {1, 7}, {1, 9}};
    for (int i = 0; i < rounds(400) && !HasFailure(); ++i) {
        const KuviSize kernel = oneIn(random_, 4) ? KuviSize{between(random_, 1, 12), between(random_, 1, 12)} : sizes[below(random_, 11)];
        const KuviSize size = {between(random_, 1, oneIn(random_, 2) ? 60 : 200), between(random_, 1, 30)};
        FilterCall call = callOf(kernel, size, anyBorder(random_));
        const int whole = (4 * size.width + 63) / 64 * 64 + 64 * below(random_, 3);
        call.dstAt.padding = oneIn(random_, 8) ? below(random_, 70) : whole - 4 * size.width;
        call.dstAt.gap = oneIn(random_, 4) ? below(random_, 65) : 4 * below(random_, 17);
        expectFiltered(call);
    }
}

// A buffer of the size that any variant asks for will do for all; px asks for the least.
TEST_P(FilterBorderRegions, ABufferOfAnotherVariantsSize) {
    for (int i = 0; i < rounds(100) && !HasFailure(); ++i) {
        const FilterKernel kernel = anyKernel(random_, {between(random_, 1, 12), between(random_, 1, 12)});
        const KuviSize size = {between(random_, 1, 50), between(random_, 1, 30)};
        Kuv32s specBytes = 0, bufferBytes = 0;
        {
            const SelectVariant smallest(variantOf("px"));
            EXPECT_EQ(kuviFilterBorderGetSize(kernel.size, size, kuvDataType32f, kuvDataType32f, 1, &specBytes, &bufferBytes), kuvStatusOk);
        }
        const Image spec("spec", {specBytes, 1, 0, Guard::end, below(random_, 65), 1}, random_());
        const Image buffer("buffer", {bufferBytes, 1, 0, Guard::end, below(random_, 65), 1}, random_());
        const Bytes before = buffer.bytes();
        std::vector<Kuv32f> src(static_cast<std::size_t>(size.width * size.height), 1), dst(src.size());
        const Kuv32f value = 1;
        EXPECT_EQ(kuviFilterBorderInit_32f(kernel.coefficients.data(), kernel.size, kuvDataType32f, 1, 0, spec.row<KuviBorderKernel>()),
                  kuvStatusOk);
        EXPECT_EQ(watched([&] {
                      return kuviFilterBorder_32f_C1R(src.data(), 4 * size.width, dst.data(), 4 * size.width, size, kuvBorderFill, &value,
                                                      spec.row<KuviBorderKernel>(), buffer.row());
                  }), kuvStatusOk);
        EXPECT_EQ(buffer.strayWrite(before), "");
        for (const Kuv32f each : dst) {
            ASSERT_EQ(each, filteredPixel(GetParam(), kernel, size.width, [](int, int) { return 1.0f; }));
        }
    }
}

// For whatever samples and channels a kernel was kept, the filter takes it as it stands.
TEST_P(FilterBorderRegions, KernelsKeptForOtherSamples) {
    const FilterKernel kernel = anyKernel(random_, {3, 3}, true);
    const std::vector<Kuv32f> src = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20};
    const std::vector<Kuv32f> wanted = filtered(kernel, src, {5, 4}, kuvBorderReflect);
    for (const Kuv32s dataType : {kuvDataType8u, kuvDataType16u, kuvDataType16s, kuvDataType32f}) {
        for (Kuv32s channels = 1; channels <= 4; ++channels) {
            Kuv32s specBytes = 0, bufferBytes = 0;
            EXPECT_EQ(kuviFilterBorderGetSize({3, 3}, {5, 4}, dataType, kuvDataType32f, channels, &specBytes, &bufferBytes), kuvStatusOk);
            std::vector<Kuv8u> block(static_cast<std::size_t>(specBytes));
            auto* const spec = reinterpret_cast<KuviBorderKernel*>(block.data());
            EXPECT_EQ(kuviFilterBorderInit_32f(kernel.coefficients.data(), {3, 3}, dataType, channels, 17, spec), kuvStatusRoundFlagSet);
            EXPECT_EQ(kuviFilterBorderGetSize({3, 3}, {5, 4}, kuvDataType32f, kuvDataType32f, 1, &specBytes, &bufferBytes), kuvStatusOk);
            std::vector<Kuv8u> buffer(static_cast<std::size_t>(bufferBytes));
            std::vector<Kuv32f> dst(20);
            EXPECT_EQ(kuviFilterBorder_32f_C1R(src.data(), 20, dst.data(), 20, {5, 4}, kuvBorderReflect, nullptr, spec, buffer.data()),
                      kuvStatusOk);
            EXPECT_EQ(dst, wanted);
        }
    }
}

}  // namespace
