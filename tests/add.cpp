// kuviAdd_32f_C1IR: what docs/adding-a-primitive.md shows, and what holds of sums only. real.cpp does all else.
#include <array>
#include <bit>

#include "support/agreement.hpp"
#include "support/statuses.hpp"

namespace {

using namespace kuvtest;

KUV_AGREES(kuviAdd_32f_C1IR, Source<Kuv32f>{}, InOut<Kuv32f>{.same = sameRealOrBothNaN}, RoiSize{});

KUV_CHECKS(kuviAdd_32f_C1IR, call(Source<Kuv32f>{}, InOut<Kuv32f>{}, RoiSize{}),
           check(kuvStatusNullPtr, null<0>(), null<2>()), badSize<4>());

// The exact sum rounded once. A double holds enough digits that rounding twice is rounding once.
Kuv32f sum(Kuv32f a, Kuv32f b) { return static_cast<Kuv32f>(static_cast<double>(a) + b); }

class Add : public VariantTest {
protected:
    void expectSums(const Image& src, const Image& srcDst, KuviSize size) {
        const Bytes srcBefore = src.bytes();
        Bytes wanted = srcDst.bytes();
        for (int r = 0; r < size.height; ++r) {
            unsigned char* const row = srcDst.row(wanted, r);
            for (int i = 0; i < size.width; ++i) store(row, i, sum(load<Kuv32f>(row, i), load<Kuv32f>(src.row(r), i)));
        }
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << size.width << " x " << size.height);
        EXPECT_EQ(watched([&] { return kuviAdd_32f_C1IR(src.row<Kuv32f>(), src.step(), srcDst.row<Kuv32f>(), srcDst.step(), size); }),
                  kuvStatusOk);
        EXPECT_EQ(srcDst.difference(wanted), "");
        EXPECT_EQ(src.difference(srcBefore), "");
    }
};

KUV_FOR_EACH_VARIANT(Add);

TEST_P(Add, EveryWidth) {
    for (int width = 1; width <= 140; ++width) {
        for (const Guard guard : {Guard::end, Guard::begin}) {
            const Geometry geometry = {.rowBytes = width * 4, .rows = 2, .step = width * 4, .guard = guard, .gap = 0, .elementBytes = 4};
            const Image src("src", geometry, 1), srcDst("srcDst", geometry, 2);
            for (int r = 0; r < 2; ++r) {
                for (int i = 0; i < width; ++i) {
                    store(src.row(r), i, static_cast<Kuv32f>(i) * 0.7f);
                    store(srcDst.row(r), i, static_cast<Kuv32f>(100 * r - i));
                }
            }
            expectSums(src, srcDst, {width, 2});
        }
    }
}

TEST_P(Add, Step0AddsToTheSameRowAgainAndAgain) {
    std::array<Kuv32f, 21> src, srcDst;
    src.fill(1);
    srcDst.fill(100);
    EXPECT_EQ(kuviAdd_32f_C1IR(src.data(), 0, srcDst.data(), 0, {21, 1000}), kuvStatusOk);
    for (const Kuv32f each : srcDst) EXPECT_EQ(each, 1100);
}

constexpr Kuv32u quietNaNs[] = {0x7FC00000, 0xFFC00000, 0x7FC12345, 0xFFFFFFFF};
constexpr Kuv32u signallingNaNs[] = {0x7F800001, 0xFF800001, 0x7FBFFFFF, 0xFFA12345};

TEST_P(Add, NaNs) {
    const auto add = [&](Kuv32u a, Kuv32u b) {
        std::array<Kuv32u, 19> src, srcDst;
        src.fill(b);
        srcDst.fill(a);
        EXPECT_EQ(
            watched([&] {
                return kuviAdd_32f_C1IR(reinterpret_cast<Kuv32f*>(src.data()), 76, reinterpret_cast<Kuv32f*>(srcDst.data()), 76, {19, 1});
            }),
            kuvStatusOk);
        for (const Kuv32u each : srcDst) EXPECT_EQ(each, srcDst[0]);
        return srcDst[0];
    };
    const Kuv32u one = 0x3F800000, plus = 0x7F800000, minus = 0xFF800000;
    EXPECT_EQ(add(plus, minus), 0xFFC00000u) << "the processor's own NaN";
    EXPECT_EQ(add(minus, plus), 0xFFC00000u);
    EXPECT_EQ(add(plus, plus), plus);
    for (const Kuv32u nan : signallingNaNs) {
        EXPECT_EQ(add(nan, one), nan | 0x00400000u) << "made quiet, otherwise kept";
        EXPECT_EQ(add(plus, nan), nan | 0x00400000u);
    }
    for (const Kuv32u nan : quietNaNs) {
        EXPECT_EQ(add(nan, one), nan);
        EXPECT_EQ(add(minus, nan), nan);
    }
}

TEST_P(Add, SignsOfZero) {
    const auto add = [&](Kuv32f a, Kuv32f b) {
        Kuv32f src = b, srcDst = a;
        EXPECT_EQ(kuviAdd_32f_C1IR(&src, 4, &srcDst, 4, {1, 1}), kuvStatusOk);
        return std::bit_cast<Kuv32u>(srcDst);
    };
    EXPECT_EQ(add(-0.0f, -0.0f), 0x80000000u);
    EXPECT_EQ(add(0.0f, -0.0f), 0u);
    EXPECT_EQ(add(5.0f, -5.0f), 0u);
}

}  // namespace
