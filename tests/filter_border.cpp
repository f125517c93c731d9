// Filters: their sums, to the last bit of each variant, and the memory that they keep to.
#include <cmath>
#include <limits>

#include "support/agreement.hpp"
#include "support/distant.hpp"
#include "support/filter_calls.hpp"
#include "support/statuses.hpp"

namespace {

using namespace kuvtest;

// Whole numbers, which all variants sum up exactly, or any, in images and blocks that end where they must.
struct FilterArguments {
    Kuv32s border = 0;  // 0: any

    // How far two variants may be apart: n roundings of single precision in each, in any rounding mode.
    static double tolerance(const FilterCall& call, double most) {
        double sum = 0;
        for (const Kuv32f each : call.kernel.coefficients) sum += std::abs(each);
        const auto roundings = static_cast<double>(call.kernel.coefficients.size()) + 1;
        return most < 1e15 ? 2 * roundings * 0x1p-22 * sum * most + 1e-37 : HUGE_VAL;
    }

    std::tuple<const Kuv32f*, Kuv32s, Kuv32f*, Kuv32s, KuviSize, Kuv32s, const Kuv32f*, const KuviBorderKernel*, Kuv8u*> operator()(
        Draw& draw) const {
        const KuviSize size = {between(draw.random, 1, 12), between(draw.random, 1, 12)};
        const bool whole = oneIn(draw.random, 2);
        const FilterCall call = {anyKernel(draw.random, size, whole), draw.size, border != 0 ? border : anyBorder(draw.random)};
        const std::ptrdiff_t srcStep = drawStep(draw.random, StepClass::B, 4 * call.knownWidth());
        const std::ptrdiff_t dstStep = drawStep(draw.random, StepClass::B, 4 * call.size.width);
        const Image& src = draw.image<Kuv32f>(Role::source, call.knownWidth(), call.knownHeight(), srcStep);
        double most = 0;
        for (int y = 0; y < call.knownHeight(); ++y) {
            for (int x = 0; x < call.knownWidth(); ++x) {
                if (whole) store(src.row(y), x, wholeNumber(draw.random, 1000));
                const double sample = std::abs(load<Kuv32f>(src.row(y), x));
                most = sample > most || sample != sample ? sample : most;
            }
        }
        const Image& value = draw.image<Kuv32f>(Role::record, 1, 1, 0);
        store(value.row(), 0, wholeNumber(draw.random, 1000));
        const auto close = [limit = whole ? 0 : tolerance(call, most + 1000)](const void* got, const void* wanted) {
            return limit == HUGE_VAL || sameBits<Kuv32f>(got, wanted) ||
                   std::abs(double(load<Kuv32f>(got)) - load<Kuv32f>(wanted)) <= limit;
        };
        const Image& dst = draw.image<Kuv32f>(Role::output, call.size.width, call.size.height, dstStep, close);
        Kuv32s specBytes = 0, bufferBytes = 0;
        EXPECT_EQ(kuviFilterBorderGetSize(size, draw.size, kuvDataType32f, kuvDataType32f, 1, &specBytes, &bufferBytes), kuvStatusOk);
        KuviBorderKernel* const spec = draw.image<Kuv8u>(Role::record, specBytes, 1, 0).row<KuviBorderKernel>();
        EXPECT_EQ(kuviFilterBorderInit_32f(call.kernel.coefficients.data(), size, kuvDataType32f, 1, 0, spec), kuvStatusOk);
        Kuv8u* const buffer = draw.image<Kuv8u>(Role::scratch, bufferBytes, 1, 0).row();
        const Kuv32f* const first = reinterpret_cast<const Kuv32f*>(src.row(call.top()) + 4 * call.left());
        return {first, src.step(), dst.row<Kuv32f>(), dst.step(), call.size, call.borderType, value.row<Kuv32f>(), spec, buffer};
    }
};
KUV_AGREES(kuviFilterBorder_32f_C1R, FilterArguments{});
KUV_CHECKS(kuviFilterBorder_32f_C1R, call(FilterArguments{kuvBorderFill}),
           check(kuvStatusNullPtr, null<0>(), null<2>(), null<7>(), null<8>()),
           check(kuvStatusNullPtr, null<6>()), badSize<4>(),
           check(kuvStatusBadStep, set<1>(0), set<1>(-1), set<1>(INT32_MIN), set<3>(3), set<3>(0), set<3>(-8), set<3>(INT32_MIN)),
           check(kuvStatusBadBorder, set<5>(0x106), set<5>(0x1F6), set<5>(0x10006), set<5>(-10)));

class FilterBorder : public FilterTest {};

KUV_FOR_EACH_VARIANT(FilterBorder);

TEST_P(FilterBorder, EveryWidth) {
    for (int width = 1; width <= 140 && !HasFailure(); ++width) {
        for (const KuviSize kernel : {KuviSize{3, 3}, {5, 5}, {1, 1}, {2, 5}, {9, 2}, {1, 4}, {4, 1}, {9, 1}, {1, 17}, {11, 4}}) {
            expectFiltered(callOf(kernel, {width, between(random_, 1, 9)}, anyBorder(random_)));
        }
    }
    for (const int width : {191, 239, 240, 241, 256, 264, 300, 527, 1000, 2051}) {
        for (const KuviSize kernel : {KuviSize{5, 3}, {6, 4}, {8, 3}, {11, 5}, {17, 3}}) {
            expectFiltered(callOf(kernel, {width, 7}, anyBorder(random_)));
        }
    }
}

TEST_P(FilterBorder, EveryHeight) {
    for (int height = 1; height <= 40 && !HasFailure(); ++height) {
        for (const KuviSize kernel : {KuviSize{3, 3}, {5, 5}, {3, 2}, {2, 7}, {7, 1}, {1, 8}, {1, 9}, {17, 1}}) {
            expectFiltered(callOf(kernel, {between(random_, 1, 70), height}, anyBorder(random_)));
        }
    }
}

// Up to past two groups of eight columns, and such rows of a column; images smaller than the kernel among them.
TEST_P(FilterBorder, EveryKernelSize) {
    for (int kw = 1; kw <= 20 && !HasFailure(); ++kw) {
        for (int kh = 1; kh <= 20; ++kh) {
            if (kw > 9 && kh > 9 && !oneIn(random_, 8)) continue;
            const int width = oneIn(random_, 4) ? between(random_, 1, kw + 9) : between(random_, kw, 60);
            expectFiltered(
                callOf({kw, kh}, {width, oneIn(random_, 4) ? between(random_, 1, kh + 1) : between(random_, kh, 28)}, anyBorder(random_)));
        }
    }
    for (const KuviSize kernel : {KuviSize{41, 3}, {3, 41}, {33, 35}, {100, 1}, {1, 100}}) {
        for (const KuviSize size : {KuviSize{1, 1}, {50, 45}, {120, 7}, {7, 120}, {33, 3}}) {
            expectFiltered(callOf(kernel, size, anyBorder(random_)));
        }
    }
}

// Sizes with code of their own: images smaller than its blocks, and blocks that lie on each other.
TEST_P(FilterBorder, CommonKernelSizes) {
    for (const KuviSize kernel : {KuviSize{3, 3}, {5, 5}, {7, 7}, {11, 11}, {3, 1}, {5, 1}, {7, 1}, {9, 1}, {1, 3}, {1, 5}, {1, 7},
                                  {1, 9}}) {
        for (int width = 1; width <= 80 && !HasFailure(); ++width) {
            expectFiltered(callOf(kernel, {width, between(random_, 1, 30)}, anyBorder(random_)));
        }
    }
}

// The last width whose sums are those of short rows, and the first one beyond.
TEST_P(FilterBorder, WidthsAroundKernelWidths) {
    for (int kw = 1; kw <= 18 && !HasFailure(); ++kw) {
        for (int width = std::max(1, kw - 2); width <= kw + 11; ++width) expectFiltered(callOf({kw, 4}, {width, 6}, anyBorder(random_)));
    }
}

TEST_P(FilterBorder, EveryAlignment) {
    for (int gap = 0; gap <= 64 && !HasFailure(); ++gap) {
        for (const Guard guard : {Guard::end, Guard::begin}) {
            const FilterPlace at = {below(random_, 70), guard, gap};
            FilterCall call = callOf({between(random_, 1, 9), between(random_, 1, 9)}, {between(random_, 1, 70), between(random_, 1, 12)},
                                     anyBorder(random_));
            for (FilterPlace FilterCall::*const place :
                 {&FilterCall::srcAt, &FilterCall::dstAt, &FilterCall::specAt, &FilterCall::bufferAt}) {
                const FilterPlace before = call.*place;
                call.*place = at;
                expectFiltered(call);
                call.*place = before;
            }
        }
    }
}

// Asked for an integer kernel, too.
TEST_P(FilterBorder, SizesOfAnIntegerKernel) {
    for (int i = 0; i < rounds(200) && !HasFailure(); ++i) {
        FilterCall call = callOf({between(random_, 1, 9), between(random_, 1, 9)}, {between(random_, 1, 70), between(random_, 1, 12)},
                                 anyBorder(random_));
        call.kernelType = kuvDataType16s;
        expectFiltered(call);
    }
}

TEST_P(FilterBorder, SpecialValues) {
    constexpr Kuv32f infinity = std::numeric_limits<Kuv32f>::infinity(), nan = std::numeric_limits<Kuv32f>::quiet_NaN();
    const Kuv32f special[] = {0, -0.0f, infinity, -infinity, nan, 3e38f, -3e38f, 1e-45f, -1e-40f, 1};
    for (int i = 0; i < rounds(300) && !HasFailure(); ++i) {
        FilterCall call = callOf({between(random_, 1, 10), between(random_, 1, 6)}, {between(random_, 1, 60), between(random_, 1, 9)},
                                 anyBorder(random_));
        const int kind = below(random_, 4);
        for (Kuv32f& each : call.kernel.coefficients) {
            if (kind == 0 || oneIn(random_, 3)) each = kind == 1 ? special[below(random_, 10)] : oneIn(random_, 2) ? 0 : -0.0f;
        }
        call.value = special[below(random_, 10)];
        const int rarity = oneIn(random_, 2) ? 2 : 60;
        expectFiltered(call, [&](int, int) { return oneIn(random_, rarity) ? special[below(random_, 10)] : anyNumber(random_); });
    }
}

// A NaN reaches the pixels whose kernel covers it, by a coefficient of 0 too, and no others.
TEST_P(FilterBorder, ANaNReachesWhatCoversIt) {
    const FilterKernel kernel = {{3, 4}, std::vector<Kuv32f>(12, 0)};
    const KuviSize size = {50, 20};
    for (const int at : {0, 1, 7, 24, 31, 32, 48, 49}) {
        std::vector<Kuv32f> src(50 * 20, 1), dst(50 * 20);
        const int row = at % 20;
        src[static_cast<std::size_t>(50 * row + at)] = std::nanf("");
        const KeptKernel kept(kernel, size);
        std::vector<Kuv8u> buffer(static_cast<std::size_t>(kept.bufferBytes));
        const Kuv32f zero = 0;
        EXPECT_EQ(kuviFilterBorder_32f_C1R(src.data(), 200, dst.data(), 200, size, kuvBorderFill, &zero, kept.spec(), buffer.data()),
                  kuvStatusOk);
        for (int y = 0; y < 20; ++y) {
            for (int x = 0; x < 50; ++x) {
                const bool covered = std::abs(x - at) <= 1 && row >= y - 1 && row <= y + 2;
                EXPECT_EQ(std::isnan(dst[static_cast<std::size_t>(50 * y + x)]), covered)
                    << GetParam() << ", NaN at " << at << ", " << x << ", " << y;
            }
        }
    }
}

// By n * u / (1 - n * u) times the sum of absolute values; in px by half an ulp of the result and far less.
TEST_P(FilterBorder, ErrorsWithinTheBound) {
    const double u = std::ldexp(1, GetParam().isPx() ? -53 : -24);
    for (int i = 0; i < rounds(100) && !HasFailure(); ++i) {
        const FilterKernel kernel = anyKernel(random_, {between(random_, 1, 30), between(random_, 1, 30)});
        const KuviSize size = {between(random_, 1, 50), between(random_, 1, 10)};
        const double n = static_cast<double>(kernel.coefficients.size());
        const KeptKernel kept(kernel, size);
        std::vector<Kuv32f> src(static_cast<std::size_t>(size.width * size.height)), dst(src.size());
        for (Kuv32f& each : src) each = anyNumber(random_) * std::ldexp(1.0f, below(random_, 30) - 15);
        std::vector<Kuv8u> buffer(static_cast<std::size_t>(kept.bufferBytes));
        EXPECT_EQ(kuviFilterBorder_32f_C1R(src.data(), 4 * size.width, dst.data(), 4 * size.width, size, kuvBorderReflect, nullptr,
                                           kept.spec(), buffer.data()),
                  kuvStatusOk);
        const ContinuedImage continued(kernel, size, kuvBorderReflect, 0,
                                       [&](int x, int y) { return src[static_cast<std::size_t>(size.width * y + x)]; });
        for (int y = 0; y < size.height; ++y) {
            for (int x = 0; x < size.width; ++x) {
                long double exact = 0, absolute = 0;
                for (int b = 0; b < kernel.size.height; ++b) {
                    for (int a = 0; a < kernel.size.width; ++a) {
                        const long double term = static_cast<long double>(kernel.at(a, b)) *
                                                 static_cast<long double>(continued(x - kernel.left() + a, y - kernel.top() + b));
                        exact += term;
                        absolute += std::abs(term);
                    }
                }
                const Kuv32f got = dst[static_cast<std::size_t>(size.width * y + x)];
                const double bound = n * u / (1 - n * u) * static_cast<double>(absolute) +
                                     (GetParam().isPx() ? std::ldexp(std::abs(static_cast<double>(got)), -24) : 0) +
                                     1e-18 * static_cast<double>(absolute);
                ASSERT_LE(std::abs(static_cast<double>(static_cast<long double>(got) - exact)), bound)
                    << GetParam() << ", kernel " << kernel.size.width << " x " << kernel.size.height << ", pixel " << x << ", " << y;
            }
        }
    }
}

TEST_P(FilterBorder, BordersThatAreNone) {
    const FilterKernel kernel = {{1, 1}, {2}};
    const KeptKernel kept(kernel, {1, 1});
    std::vector<Kuv8u> buffer(static_cast<std::size_t>(kept.bufferBytes));
    const Kuv32f src = 3, value = 5;
    for (int border = -300; border < 600; ++border) {
        Kuv32f dst = 7;
        const int rule = border & 15;
        const bool valid = border >= 0 && border <= 255 && (border == 240 || rule == 1 || rule == 3 || rule == 6);
        const auto status = [&](KuviSize size, Kuv32s step) {
            return kuviFilterBorder_32f_C1R(&src, step, &dst, 4, size, border, &value, kept.spec(), buffer.data());
        };
        EXPECT_EQ(status({1, 1}, 4), valid ? kuvStatusOk : kuvStatusBadBorder) << border;
        EXPECT_EQ(dst, valid ? 6 : 7) << border;
        EXPECT_EQ(status({0, 1}, 0), kuvStatusBadSize);
        EXPECT_EQ(status({1, 1}, 0), kuvStatusBadStep);
    }
}

// The value of a fill is asked for before anything else is looked at, and by no other rule.
TEST_P(FilterBorder, TheValueOfAFill) {
    const FilterKernel kernel = {{1, 1}, {2}};
    const KeptKernel kept(kernel, {1, 1});
    std::vector<Kuv8u> buffer(static_cast<std::size_t>(kept.bufferBytes));
    const Kuv32f src = 3;
    Kuv32f dst = 7;
    for (const int border : {6, 22, 246, 0x106, -10}) {
        EXPECT_EQ(kuviFilterBorder_32f_C1R(&src, 0, &dst, 0, {0, 0}, border, nullptr, kept.spec(), buffer.data()), kuvStatusNullPtr);
    }
    EXPECT_EQ(dst, 7);
    for (const int border : {1, 3, 17, 240}) {
        EXPECT_EQ(kuviFilterBorder_32f_C1R(&src, 4, &dst, 4, {1, 1}, border, nullptr, kept.spec(), buffer.data()), kuvStatusOk);
    }
}

TEST_P(FilterBorder, SmallestSteps) {
    const FilterKernel kernel = {{1, 1}, {1}};
    const KeptKernel kept(kernel, {8, 2});
    std::vector<Kuv8u> buffer(static_cast<std::size_t>(kept.bufferBytes));
    const std::vector<Kuv32f> src = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    std::vector<Kuv32f> dst(18);
    const auto status = [&](Kuv32s srcStep, Kuv32s dstStep, KuviSize size) {
        return kuviFilterBorder_32f_C1R(src.data(), srcStep, dst.data(), dstStep, size, kuvBorderClamp, nullptr, kept.spec(),
                                        buffer.data());
    };
    EXPECT_EQ(status(4, 31, {8, 2}), kuvStatusBadStep);
    for (const Kuv32s width : {1 << 30, (1 << 30) + 8, INT32_MAX}) EXPECT_EQ(status(4, INT32_MAX, {width, 1}), kuvStatusBadStep);
    EXPECT_EQ(dst, std::vector<Kuv32f>(18));
    EXPECT_EQ(status(4, 32, {8, 2}), kuvStatusOk);  // rows of the source lie on each other
    EXPECT_EQ(dst, (std::vector<Kuv32f>{1, 2, 3, 4, 5, 6, 7, 8, 2, 3, 4, 5, 6, 7, 8, 9, 0, 0}));
}

// Steps of a source need not hold a row.
TEST_P(FilterBorder, SourceRowsThatLieOnEachOther) {
    for (int i = 0; i < rounds(100) && !HasFailure(); ++i) {
        const FilterKernel kernel = anyKernel(random_, {between(random_, 1, 6), between(random_, 1, 6)});
        const KuviSize size = {between(random_, 1, 40), between(random_, 1, 20)};
        const int step = between(random_, 1, 4 * size.width);
        Bytes src(static_cast<std::size_t>(step * (size.height - 1) + 4 * size.width));
        for (std::size_t k = 0; k + 4 <= src.size(); k += 4) store(src.data() + k, 0, anyNumber(random_));
        std::vector<Kuv32f> dst(static_cast<std::size_t>(size.width * size.height));
        const KeptKernel kept(kernel, size);
        std::vector<Kuv8u> buffer(static_cast<std::size_t>(kept.bufferBytes));
        EXPECT_EQ(kuviFilterBorder_32f_C1R(reinterpret_cast<const Kuv32f*>(src.data()), step, dst.data(), 4 * size.width, size,
                                           kuvBorderClamp, nullptr, kept.spec(), buffer.data()),
                  kuvStatusOk);
        const ContinuedImage continued(kernel, size, kuvBorderClamp, 0,
                                       [&](int x, int y) { return load<Kuv32f>(src.data() + step * y, x); });
        for (int y = 0; y < size.height; ++y) {
            for (int x = 0; x < size.width; ++x) {
                const Kuv32f wanted = filteredPixel(GetParam(), kernel, size.width, [&](int a, int b) {
                    return continued(x - kernel.left() + a, y - kernel.top() + b);
                });
                const Kuv32f got = dst[static_cast<std::size_t>(size.width * y + x)];
                ASSERT_TRUE(got == wanted || (got != got && wanted != wanted)) << GetParam() << ", step " << step << ", " << x << ", " << y;
            }
        }
    }
}

TEST_P(FilterBorder, RowsFurtherApartThan32BitsTell) {
    constexpr Kuv32s srcStep = 0x7FFFFFF1, dstStep = 0x7FFFFFF0;
    constexpr int width = 40, height = 7, above = 3;
    const FilterKernel kernel = anyKernel(random_, {3, 7}, true);
    const DistantMemory from(std::size_t{height + 2 * above + 1} * srcStep), to(std::size_t{height} * dstStep);
    KUV_NEEDS(from);
    KUV_NEEDS(to);
    char* const src = from.memory() + std::ptrdiff_t{above} * srcStep + 64;
    for (std::ptrdiff_t y = -above; y < height + above; ++y) {
        for (int x = -1; x <= width; ++x) store(src + y * srcStep, x, wholeNumber(random_, 1000));
    }
    const KuviSize size = {width, height};
    for (const Kuv32s border : {kuvBorderClamp + 0, kuvBorderReflect + 16, kuvBorderClamp + 16 + 32, 240}) {
        const KeptKernel kept(kernel, size);
        std::vector<Kuv8u> buffer(static_cast<std::size_t>(kept.bufferBytes));
        EXPECT_EQ(watched([&] {
                      return kuviFilterBorder_32f_C1R(reinterpret_cast<const Kuv32f*>(src), srcStep, reinterpret_cast<Kuv32f*>(to.memory()),
                                                      dstStep, size, border, nullptr, kept.spec(), buffer.data());
                  }),
                  kuvStatusOk);
        const ContinuedImage continued(kernel, size, border, 0,
                                       [&](int x, int y) { return load<Kuv32f>(src + std::ptrdiff_t{y} * srcStep, x); });
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                ASSERT_EQ(load<Kuv32f>(to.memory() + std::ptrdiff_t{y} * dstStep, x),
                          filteredPixel(GetParam(), kernel, width, [&](int a, int b) { return continued(x - 1 + a, y - 3 + b); }));
            }
        }
    }
}

}  // namespace
