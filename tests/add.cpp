// kuviAdd_32f_C1IR: the reference primitive.
#include <array>
#include <bit>
#include <cfenv>
#include <limits>

#include "support/agreement.hpp"
#include "support/distant.hpp"
#include "support/statuses.hpp"

namespace {

using namespace kuvtest;

KUV_AGREES(kuviAdd_32f_C1IR, Source<Kuv32f>{}, InOut<Kuv32f>{.same = sameRealOrBothNaN}, RoiSize{});

KUV_CHECKS(kuviAdd_32f_C1IR, call(Source<Kuv32f>{}, InOut<Kuv32f>{}, RoiSize{}),
           check(kuvStatusNullPtr, null<0>(), null<2>()), badSize<4>());

// The exact sum rounded once, in the rounding mode in force. A double holds enough digits that rounding twice is rounding once.
Kuv32f sum(Kuv32f a, Kuv32f b) {
    volatile double wide = a;
    wide = wide + b;
    volatile Kuv32f narrow = static_cast<Kuv32f>(wide);
    return narrow;
}

class Add : public VariantTest {
protected:
    // Adds as the library does and as the text says, on the same bytes; rows may lie on each other.
    void expectSums(const Image& src, const Image& srcDst, KuviSize size) {
        const Bytes srcBefore = src.bytes();
        Bytes wanted = srcDst.bytes();
        for (int r = 0; r < size.height; ++r) {
            unsigned char* const row = srcDst.row(wanted, r);
            const unsigned char* const summand = &src == &srcDst ? row : src.row(r);
            for (int i = 0; i < size.width; ++i) store(row, i, sum(load<Kuv32f>(row, i), load<Kuv32f>(summand, i)));
        }
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << size.width << " x " << size.height << ", src: " << src.geometry()
                                        << ", srcDst: " << srcDst.geometry());
        EXPECT_EQ(watched([&] { return kuviAdd_32f_C1IR(src.row<Kuv32f>(), src.step(), srcDst.row<Kuv32f>(), srcDst.step(), size); }),
                  kuvStatusOk);
        EXPECT_EQ(srcDst.difference(wanted), "");
        if (&src != &srcDst) {
            EXPECT_EQ(src.difference(srcBefore), "");
        }
    }

    static Geometry geometry(KuviSize size, std::ptrdiff_t step, Guard guard, int gap) {
        return {.rowBytes = size.width * 4, .rows = size.height, .step = step, .guard = guard, .gap = gap, .elementBytes = 4};
    }

    static void fill(Random& random, const Image& image, KuviSize size) {
        for (int r = 0; r < size.height; ++r) {
            for (int i = 0; i < size.width; ++i) store(image.row(r), i, static_cast<Kuv32f>(below(random, 1 << 26)) / 1024 - 32768);
        }
    }
};

KUV_FOR_EACH_VARIANT(Add);

TEST_P(Add, EveryWidth) {
    Random random(1);
    for (int width = 1; width <= 140; ++width) {
        for (const Guard guard : {Guard::end, Guard::begin}) {
            const KuviSize size = {width, 2};
            const Image src("src", geometry(size, width * 4, guard, 0), random()), srcDst("srcDst", geometry(size, width * 4, guard, 0), random());
            fill(random, src, size);
            fill(random, srcDst, size);
            expectSums(src, srcDst, size);
            if (HasFailure()) return;
        }
    }
}

TEST_P(Add, LongRows) {
    Random random(2);
    for (const int width : {255, 256, 257, 1000, 4099, 100003}) {
        const KuviSize size = {width, 1};
        const Image src("src", geometry(size, 0, Guard::end, 0), random()), srcDst("srcDst", geometry(size, 0, Guard::end, 0), random());
        fill(random, src, size);
        fill(random, srcDst, size);
        expectSums(src, srcDst, size);
    }
}

// The paths differ in where the destination stands to 4, 16 and 32 bytes.
TEST_P(Add, EveryAlignment) {
    Random random(3);
    for (int dstAt = 0; dstAt < 33; ++dstAt) {
        for (const int srcAt : {0, 1, 4, 16, 31, dstAt}) {
            for (const int width : {1, 3, 10, 11, 15, 16, 17, 23, 24, 31, 32, 33, 47, 64, 71}) {
                const KuviSize size = {width, 2};
                const Image src("src", geometry(size, width * 4 + 5, Guard::begin, srcAt), random());
                const Image srcDst("srcDst", geometry(size, width * 4 + 3, Guard::begin, dstAt), random());
                fill(random, src, size);
                fill(random, srcDst, size);
                expectSums(src, srcDst, size);
                if (HasFailure()) return;
            }
        }
    }
}

TEST_P(Add, AnyStep) {
    Random random(4);
    for (const int width : {1, 2, 7, 17, 40}) {
        const KuviSize size = {width, 5};
        const int row = width * 4;
        const std::ptrdiff_t steps[] = {row, row + 4, row + 1, row + 60, 0, 1, 3, 4, row / 2, -1, -4, -row, -row - 4, -row - 7};
        for (const std::ptrdiff_t srcStep : steps) {
            for (const std::ptrdiff_t dstStep : steps) {
                const Guard guard = oneIn(random, 2) ? Guard::end : Guard::begin;
                const Image src("src", geometry(size, srcStep, guard, 0), random()), srcDst("srcDst", geometry(size, dstStep, guard, 0), random());
                fill(random, src, size);
                fill(random, srcDst, size);
                expectSums(src, srcDst, size);
                if (HasFailure()) return;
            }
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

TEST_P(Add, ToItself) {
    Random random(5);
    for (const int width : {1, 5, 16, 33, 70}) {
        for (const std::ptrdiff_t step : {width * 4, width * 4 + 3, 0, -width * 4}) {
            const KuviSize size = {width, 4};
            const Image image("srcDst", geometry(size, step, Guard::end, 0), random());
            fill(random, image, size);
            expectSums(image, image, size);
        }
    }
}

constexpr Kuv32f infinity = std::numeric_limits<Kuv32f>::infinity();

constexpr Kuv32f specialValues[] = {
    0.0f, -0.0f, 1.0f, -1.0f, infinity, -infinity, std::numeric_limits<Kuv32f>::max(), std::numeric_limits<Kuv32f>::lowest(),
    std::numeric_limits<Kuv32f>::min(), -std::numeric_limits<Kuv32f>::min(), std::numeric_limits<Kuv32f>::denorm_min(),
    -std::numeric_limits<Kuv32f>::denorm_min(), 1.1754942e-38f, -1.1754942e-38f, 16777216.0f, 5.9604645e-8f};
constexpr Kuv32u quietNaNs[] = {0x7FC00000, 0xFFC00000, 0x7FC12345, 0xFFFFFFFF};
constexpr Kuv32u signallingNaNs[] = {0x7F800001, 0xFF800001, 0x7FBFFFFF, 0xFFA12345};

// In every place of a row that is long enough for each part of a kernel, alone among ordinary values.
TEST_P(Add, SpecialValuesInEveryPlace) {
    std::vector<Kuv32u> values;
    for (const Kuv32f each : specialValues) values.push_back(std::bit_cast<Kuv32u>(each));
    values.insert(values.end(), std::begin(quietNaNs), std::end(quietNaNs));
    values.insert(values.end(), std::begin(signallingNaNs), std::end(signallingNaNs));
    const auto isNaN = [](Kuv32u bits) { return (bits & 0x7FFFFFFF) > 0x7F800000; };
    constexpr int width = 41;
    const KuviSize size = {width, 1};
    Random random(6);
    const Image src("src", geometry(size, 0, Guard::end, 0), 1), srcDst("srcDst", geometry(size, 0, Guard::end, 0), 2);
    int place = 0;
    for (const Kuv32u a : values) {
        for (const Kuv32u b : values) {
            if (isNaN(a) && isNaN(b)) continue;
            for (int i = 0; i < 3; ++i) {
                place = (place + 1) % width;
                fill(random, src, size);
                fill(random, srcDst, size);
                store(src.row(), place, a);
                store(srcDst.row(), place, b);
                expectSums(src, srcDst, size);
                if (HasFailure()) return;
            }
        }
    }
}

TEST_P(Add, NaNs) {
    const auto add = [&](Kuv32u a, Kuv32u b) {
        std::array<Kuv32u, 19> src, srcDst;
        src.fill(b);
        srcDst.fill(a);
        EXPECT_EQ(watched([&] {
                      return kuviAdd_32f_C1IR(reinterpret_cast<Kuv32f*>(src.data()), 76, reinterpret_cast<Kuv32f*>(srcDst.data()), 76, {19, 1});
                  }), kuvStatusOk);
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

// Each mode of the caller's is obeyed, and kept.
TEST_P(Add, RoundsAsTheCallerDoes) {
    Random random(7);
    const int before = std::fegetround();
    int differing = 0;
    for (const int mode : {FE_TONEAREST, FE_DOWNWARD, FE_UPWARD, FE_TOWARDZERO}) {
        for (int round = 0; round < 20; ++round) {
            const KuviSize size = {between(random, 1, 60), 3};
            const Image src("src", geometry(size, size.width * 4, Guard::end, 0), random());
            const Image srcDst("srcDst", geometry(size, size.width * 4, Guard::end, 0), random());
            for (int r = 0; r < size.height; ++r) {
                for (int i = 0; i < size.width; ++i) {
                    // Sums that end between two numbers, in halves of the last place among them.
                    store(src.row(r), i, static_cast<Kuv32f>(below(random, 1 << 24)) * 0x1p-24f - 0.5f);
                    store(srcDst.row(r), i, static_cast<Kuv32f>(between(random, 1 << 23, (1 << 24) - 1)));
                }
            }
            std::fesetround(mode);
            expectSums(src, srcDst, size);
            const Kuv32f upward = sum(1.0f, 0x1p-30f), downward = sum(1.0f, -0x1p-30f);
            std::fesetround(before);
            differing += upward != 1 || downward != 1;
        }
    }
    EXPECT_EQ(differing, 60) << "the reference follows the mode";
}

TEST_P(Add, RowsFurtherApartThan32BitsTell) {
    constexpr std::ptrdiff_t step = 0x7FFFFFF1;
    constexpr KuviSize size = {35, 4};
    const DistantMemory srcMemory(4 * static_cast<std::size_t>(step)), dstMemory(4 * static_cast<std::size_t>(step));
    KUV_NEEDS(srcMemory);
    KUV_NEEDS(dstMemory);
    for (const bool upward : {false, true}) {
        const std::ptrdiff_t sign = upward ? -1 : 1;
        char* const src = srcMemory.memory() + (upward ? 3 * step : 0);
        char* const srcDst = dstMemory.memory() + (upward ? 3 * step : 0);
        for (int r = 0; r < size.height; ++r) {
            for (int i = 0; i < size.width; ++i) {
                store(src + sign * step * r, i, static_cast<Kuv32f>(100 * r + i));
                store(srcDst + sign * step * r, i, static_cast<Kuv32f>(7 * i));
            }
        }
        EXPECT_EQ(watched([&] {
                      return kuviAdd_32f_C1IR(reinterpret_cast<Kuv32f*>(src), static_cast<Kuv32s>(sign * step),
                                              reinterpret_cast<Kuv32f*>(srcDst), static_cast<Kuv32s>(sign * step), size);
                  }), kuvStatusOk);
        for (int r = 0; r < size.height; ++r) {
            for (int i = 0; i < size.width; ++i) EXPECT_EQ(load<Kuv32f>(srcDst + sign * step * r, i), static_cast<Kuv32f>(100 * r + 8 * i));
        }
    }
}

// Pointers come before sizes.
TEST_P(Add, NullWithNoWidth) {
    Kuv32f value = 1;
    EXPECT_EQ(kuviAdd_32f_C1IR(nullptr, 4, &value, 4, {0, 0}), kuvStatusNullPtr);
    EXPECT_EQ(kuviAdd_32f_C1IR(&value, 4, nullptr, 4, {0, 0}), kuvStatusNullPtr);
    EXPECT_EQ(kuviAdd_32f_C1IR(&value, 4, &value, 4, {0, 1}), kuvStatusBadSize);
}

}  // namespace
