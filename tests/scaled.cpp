// Sums, differences and squares of 16-bit samples with a scale factor.
#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

#include "support/agreement.hpp"
#include "support/aliased.hpp"
#include "support/distant.hpp"
#include "support/statuses.hpp"

namespace {

using namespace kuvtest;

constexpr Kuv32s extremeFactors[] = {INT32_MIN, INT32_MIN + 1, INT32_MIN + 16, -65536, -257, -256, -65, -64, -33, -32, -31, -17, 17, 18,
                                     31, 32, 33, 47, 48, 63, 64, 65, 96, 255, 256, 257, 65536, INT32_MAX - 15, INT32_MAX};

Kuv32s drawFactor(Random& random) {
    return oneIn(random, 8) ? extremeFactors[below(random, std::size(extremeFactors))] : between(random, -17, oneIn(random, 2) ? 18 : 32);
}

struct ScaleFactor {
    std::tuple<Kuv32s> operator()(Draw& draw) const { return {drawFactor(draw.random)}; }
};

#define SCALED(function, arguments, ...)          \
    KUV_AGREES(function, arguments);              \
    KUV_CHECKS(function, call(arguments), __VA_ARGS__)
#define LIST(...) __VA_ARGS__
SCALED(kuviAdd_16s_C1RSfs, LIST(Source<Kuv16s>{}, Source<Kuv16s>{}, Output<Kuv16s>{}, RoiSize{}, ScaleFactor{}),
       check(kuvStatusNullPtr, null<0>(), null<2>(), null<4>()), badSize<6>());
SCALED(kuviSub_16s_C1RSfs, LIST(Source<Kuv16s>{}, Source<Kuv16s>{}, Output<Kuv16s>{}, RoiSize{}, ScaleFactor{}),
       check(kuvStatusNullPtr, null<0>(), null<2>(), null<4>()), badSize<6>());
SCALED(kuviSub_16s_C1IRSfs, LIST(Source<Kuv16s>{}, InOut<Kuv16s>{}, RoiSize{}, ScaleFactor{}),
       check(kuvStatusNullPtr, null<0>(), null<2>()), badSize<4>());
SCALED(kuviAdd_16s_C3IRSfs, LIST(Source<Kuv16s>{.channels = 3}, InOut<Kuv16s>{.channels = 3}, RoiSize{}, ScaleFactor{}),
       badWidth<4>(), check(kuvStatusNullPtr, null<0>(), null<2>()), badHeight<4>());
SCALED(kuviAddC_16s_C1IRSfs, LIST(AnyValue<Kuv16s>{}, InOut<Kuv16s>{}, RoiSize{}, ScaleFactor{}), check(kuvStatusNullPtr, null<1>()),
       badSize<3>());
SCALED(kuviSubC_16s_C1IRSfs, LIST(AnyValue<Kuv16s>{}, InOut<Kuv16s>{}, RoiSize{}, ScaleFactor{}), check(kuvStatusNullPtr, null<1>()),
       badSize<3>());
SCALED(kuviAddC_16s_C3IRSfs, LIST(SourceSignal<Kuv16s>{3}, InOut<Kuv16s>{.channels = 3}, RoiSize{}, ScaleFactor{}),
       check(kuvStatusNullPtr, null<0>(), null<1>()), badSize<3>());

// An odd step is one less.
struct Squared {
    std::tuple<Kuv16s*, Kuv32s> operator()(Draw& draw) const {
        const auto step = drawStep(draw.random, StepClass::A, 2 * draw.size.width) & ~std::ptrdiff_t{1};
        const Image& image = draw.image<Kuv16s>(Role::inOut, draw.size.width, draw.size.height, step);
        return {image.row<Kuv16s>(), image.step() | (step == 0 || oneIn(draw.random, 2))};
    }
};
SCALED(kuviSqr_16s_C1IRSfs, LIST(Squared{}, RoiSize{}, ScaleFactor{}), check(kuvStatusNullPtr, null<0>()), badSize<2>(),
       badStep<1>());

Kuv64s limited(Kuv64s v) { return std::clamp<Kuv64s>(v, -32768, 32767); }

// As the rules of the paths say.
Kuv64s scaled(Kuv64s v, Kuv32s f) {
    if (f == 0) return limited(v);
    if (f < -15) return v > 0 ? 32767 : v < 0 ? -32768 : 0;
    if (f < 0) return limited(v * (Kuv64s{1} << -f));
    if (f == 1) return limited((v + (v >> 1 & 1)) >> 1);
    if (f <= 16) return limited((v + (Kuv64s{1} << (f - 1)) - 1 + (v >> f & 1)) >> f);
    return 0;
}
Kuv64s scaledSquare(Kuv64s a, Kuv32s f) {
    const Kuv64s v = a * a;
    if (f == 0) return limited(v);
    if (f < -14) return a == 0 ? 0 : 32767;
    if (f < 0) return limited(std::min<Kuv64s>(v, 32767) << -f);
    if (f == 1) return limited(v >> 1);
    if (f <= 30) return limited((v + (Kuv64s{1} << (f - 1)) - 1 + (v >> f & 1)) >> f);
    return 0;
}

// What all of them come to.
TEST(Scaled, TheRulesGiveTheNearestIntegerAndOfTwoTheEvenOne) {
    const auto nearest = [](Kuv64s v, Kuv32s f) {
        return std::clamp(std::nearbyint(std::ldexp(static_cast<double>(v), -f)), -32768.0, 32767.0);
    };
    for (Kuv32s f = -20; f <= 35; ++f) {
        for (Kuv64s v = -65535; v <= 65535; ++v) ASSERT_EQ(static_cast<double>(scaled(v, f)), nearest(v, f)) << v << " by " << f;
        for (Kuv64s a = -32768; a <= 32767; ++a) ASSERT_EQ(static_cast<double>(scaledSquare(a, f)), nearest(a * a, f)) << a << " by " << f;
    }
}

struct Arguments {
    const Kuv16s *src1, *src2, *value;
    Kuv32s src1Step, src2Step;
    Kuv16s* dst;
    Kuv32s dstStep;
    KuviSize size;
    Kuv32s f;
};

enum class Kind { into, with, constant, square };

struct Operation {
    const char* name;
    Kind kind;
    int channels;
    bool subtracts;
    KuvStatus (*call)(const Arguments&);

    Kuv64s result(Kuv64s a, Kuv64s b, Kuv32s f) const {
        return kind == Kind::square ? scaledSquare(a, f) : scaled(subtracts ? a - b : a + b, f);
    }
};

#define OPERATION(function, kind, channels, subtracts, ...) \
    {#function, Kind::kind, channels, subtracts, [](const Arguments& a) { return function(__VA_ARGS__, a.dst, a.dstStep, a.size, a.f); }}
constexpr Operation operations[] = {
    OPERATION(kuviAdd_16s_C1RSfs, into, 1, false, a.src1, a.src1Step, a.src2, a.src2Step),
    OPERATION(kuviSub_16s_C1RSfs, into, 1, true, a.src1, a.src1Step, a.src2, a.src2Step),
    OPERATION(kuviAdd_16s_C3IRSfs, with, 3, false, a.src1, a.src1Step),
    OPERATION(kuviSub_16s_C1IRSfs, with, 1, true, a.src1, a.src1Step),
    OPERATION(kuviAddC_16s_C1IRSfs, constant, 1, false, load<Kuv16s>(a.value)),
    OPERATION(kuviSubC_16s_C1IRSfs, constant, 1, true, load<Kuv16s>(a.value)),
    OPERATION(kuviAddC_16s_C3IRSfs, constant, 3, false, a.value),
    {"kuviSqr_16s_C1IRSfs", Kind::square, 1, false, [](const Arguments& a) { return kuviSqr_16s_C1IRSfs(a.dst, a.dstStep, a.size, a.f); }}};

using Values = std::array<Kuv16s, 3>;

constexpr Kuv16s someValues[] = {-32768, -32767, -16385, -16384, -257, -182, -181, -3,    -2,    -1,    0,    1,
                                 2,      3,      5,      181,    182,  255,  256,  16383, 16384, 32766, 32767};

// Each of the paths, at both of its ends.
constexpr Kuv32s someFactors[] = {-17, -16, -15, -14, -3, -1, 0, 1, 2, 5, 15, 16, 17, 30, 31};

class ScaledArithmetic : public VariantTest {
protected:
    // `src1` and `src2` may be `dst`; what the operation does not have is not looked at.
    void expectResult(const Operation& operation, const Image& src1, const Image& src2, const Image& dst, KuviSize size, Kuv32s f,
                      const Values& values) {
        expectResult(operation, src1, src2, dst, size, f, values, dst.step());
    }
    void expectResult(const Operation& operation, const Image& src1, const Image& src2, const Image& dst, KuviSize size, Kuv32s f,
                      const Values& values, Kuv32s dstStep) {
        const Image table("value", {2 * operation.channels, 1, 0, oneIn(random_, 2) ? Guard::end : Guard::begin, below(random_, 2), 2}, 1);
        std::memcpy(table.row(), values.data(), 2 * static_cast<std::size_t>(operation.channels));
        const Bytes src1Before = src1.bytes(), src2Before = src2.bytes();
        Bytes wanted = dst.bytes();
        for (int r = 0; r < size.height; ++r) {
            const auto rowOf = [&](const Image& image) { return &image == &dst ? dst.row(wanted, r) : image.row(r); };
            const unsigned char *const first = rowOf(operation.kind == Kind::into ? src2 : dst), *const second = rowOf(src1);
            unsigned char* const to = dst.row(wanted, r);
            for (int i = 0; i < size.width * operation.channels; ++i) {
                const bool two = operation.kind == Kind::into || operation.kind == Kind::with;
                const Kuv16s b = two ? load<Kuv16s>(second, i) : values[static_cast<std::size_t>(i % operation.channels)];
                store(to, i, static_cast<Kuv16s>(operation.result(load<Kuv16s>(first, i), b, f)));
            }
        }
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << operation.name << ", " << size.width << " x " << size.height << ", by "
                                        << f << ", value " << values[0] << ", " << values[1] << ", " << values[2] << "\n  src1: "
                                        << src1.geometry() << "\n  src2: " << src2.geometry() << "\n  dst: " << dst.geometry());
        const Arguments arguments = {
            src1.row<Kuv16s>(), src2.row<Kuv16s>(), table.row<Kuv16s>(), src1.step(), src2.step(), dst.row<Kuv16s>(), dstStep, size, f};
        EXPECT_EQ(watched([&] { return operation.call(arguments); }), kuvStatusOk);
        EXPECT_EQ(dst.difference(wanted), "");
        if (&src1 != &dst) {
            EXPECT_EQ(src1.difference(src1Before), "");
        }
        if (&src2 != &dst) {
            EXPECT_EQ(src2.difference(src2Before), "");
        }
    }

    static Geometry geometry(const Operation& operation, KuviSize size, std::ptrdiff_t step, Guard guard, int gap = 0) {
        return {2 * size.width * operation.channels, size.height, step, guard, gap, 2};
    }

    // Random bytes, with limits among them.
    void fill(const Image& image, int samples) {
        for (int r = 0; r < image.geometry().rows; ++r) {
            for (int i = 0; i < samples; ++i) {
                const auto some = someValues[below(random_, std::size(someValues))];
                store(image.row(r), i, oneIn(random_, 2) ? some : static_cast<Kuv16s>(random_()));
            }
        }
    }
    Values drawValues() {
        const auto one = [&] {
            return oneIn(random_, 2) ? someValues[below(random_, std::size(someValues))] : static_cast<Kuv16s>(random_());
        };
        return {one(), one(), one()};
    }

    void expectOnFreshImages(const Operation& operation, KuviSize size, Kuv32s f, const Geometry& src1At, const Geometry& src2At,
                             const Geometry& dstAt) {
        const auto filled = [&](const char* name, const Geometry& at) {
            auto image = std::make_unique<Image>(name, at, random_());
            fill(*image, size.width * operation.channels);
            return image;
        };
        const auto dst = filled("dst", dstAt);
        const auto src1 = operation.kind == Kind::into || operation.kind == Kind::with ? filled("src1", src1At) : nullptr;
        const auto src2 = operation.kind == Kind::into ? filled("src2", src2At) : nullptr;
        expectResult(operation, src1 ? *src1 : *dst, src2 ? *src2 : *dst, *dst, size, f, drawValues());
    }
    void expectOnFreshImages(const Operation& operation, KuviSize size, Kuv32s f, std::ptrdiff_t step, Guard guard, int gap = 0) {
        const Geometry at = geometry(operation, size, step, guard, gap);
        expectOnFreshImages(operation, size, f, at, at, at);
    }

    static int rowBytes(const Operation& operation, int width) { return 2 * width * operation.channels; }

    Random random_{1};
};

KUV_FOR_EACH_VARIANT(ScaledArithmetic);

// All samples with a second operand that does not change: the two at the ends give every sum and every difference.
TEST_P(ScaledArithmetic, EveryValueByEveryScaleFactor) {
    for (const Operation& operation : operations) {
        const KuviSize size = {65536, 1};
        const Geometry at = geometry(operation, size, rowBytes(operation, size.width), Guard::end);
        const Image src1("src1", at, 1), src2("src2", at, 2), dst("dst", at, 3);
        for (const Kuv16s b : std::initializer_list<Kuv16s>{-32768, 32767, -1, 1, 12345}) {
            for (int i = 0; i < size.width * operation.channels; ++i) {
                store(src1.row(), i, b);
                store(src2.row(), i, static_cast<Kuv16s>(i / operation.channels));
            }
            for (Kuv32s f = -20; f <= 35; ++f) {
                for (int i = 0; i < size.width * operation.channels; ++i) store(dst.row(), i, static_cast<Kuv16s>(i / operation.channels));
                expectResult(operation, src1, src2, dst, size, f, {b, static_cast<Kuv16s>(-b), static_cast<Kuv16s>(b + 1)});
            }
            if (HasFailure()) return;
            if (sanitized || operation.kind == Kind::square) break;
        }
    }
}

TEST_P(ScaledArithmetic, PairsByEveryScaleFactor) {
    for (const Operation& operation : operations) {
        for (Kuv32s f = -20; f <= 35; ++f) expectOnFreshImages(operation, {20000, 2}, f, rowBytes(operation, 20000) + 2, Guard::end);
        if (HasFailure()) return;
    }
}

// No count is taken modulo anything, and the lowest scale factor has a negative.
TEST_P(ScaledArithmetic, AnyScaleFactor) {
    for (const Operation& operation : operations) {
        for (const Kuv32s f : extremeFactors) {
            for (const int width : {3, 9, 77}) expectOnFreshImages(operation, {width, 3}, f, rowBytes(operation, width), Guard::end);
        }
    }
}

// To past the longest unrolled blocks, against the unmapped page on both sides.
TEST_P(ScaledArithmetic, EveryWidth) {
    for (const Operation& operation : operations) {
        for (int width = 1; width <= 110; ++width) {
            const int row = rowBytes(operation, width);
            for (const Kuv32s f : {-16, -3, 0, 1, 5, 17, 31}) {
                expectOnFreshImages(operation, {width, 1}, f, row, Guard::end);
                expectOnFreshImages(operation, {width, between(random_, 1, 3)}, f, row + (oneIn(random_, 2) ? 0 : 2), Guard::begin);
            }
            if (HasFailure()) return;
        }
        for (const int width : {255, 256, 1000, 4099, 30001}) {
            for (const Kuv32s f : someFactors) expectOnFreshImages(operation, {width, 2}, f, rowBytes(operation, width) + 2, Guard::end);
        }
    }
}

TEST_P(ScaledArithmetic, EveryAlignment) {
    for (const Operation& operation : operations) {
        for (int dstAt = 0; dstAt < 65; ++dstAt) {
            for (const int srcAt : {0, 1, 2, 17, 32, dstAt}) {
                for (const int width : {1, 3, 8, 11, 16, 17, 24, 33, 40, 71, 130}) {
                    const KuviSize size = {width, 2};
                    // Squares have no odd steps.
                    const int row = rowBytes(operation, width), odd = operation.kind == Kind::square ? 0 : 1;
                    expectOnFreshImages(operation, size, someFactors[below(random_, std::size(someFactors))],
                                        geometry(operation, size, row + 5, Guard::begin, srcAt),
                                        geometry(operation, size, row + 64, Guard::begin, oneIn(random_, 2) ? dstAt : srcAt),
                                        geometry(operation, size, row + 2 + odd, Guard::begin, dstAt));
                }
                if (HasFailure()) return;
            }
        }
    }
}

// Rows of the destination that overlap are done one after the other.
TEST_P(ScaledArithmetic, AnyStep) {
    for (const Operation& operation : operations) {
        if (operation.kind == Kind::square) continue;
        for (const int width : {1, 2, 9, 17, 40, 75}) {
            const KuviSize size = {width, 5};
            const int row = rowBytes(operation, width);
            for (const std::ptrdiff_t dstStep :
                 {row, row - 1, row + 1, row + 60, 0, 1, 2, 3, 7, 16, 31, row / 2, -1, -2, -5, -row, -row - 3}) {
                for (const std::ptrdiff_t srcStep :
                     {std::ptrdiff_t{row}, std::ptrdiff_t{0}, std::ptrdiff_t{-row - 1}, std::ptrdiff_t{1}, dstStep}) {
                    for (const Kuv32s f : {0, 1, 2, -1, -16, 17}) {
                        const Guard guard = oneIn(random_, 2) ? Guard::end : Guard::begin;
                        expectOnFreshImages(operation, size, f, geometry(operation, size, srcStep, guard),
                                            geometry(operation, size, srcStep, guard),
                                            geometry(operation, size, dstStep, guard, below(random_, 3)));
                    }
                }
                if (HasFailure()) return;
            }
        }
    }
}

TEST_P(ScaledArithmetic, AnyStepOfSquares) {
    const Operation& square = operations[7];
    for (const int width : {1, 2, 9, 17, 40, 75}) {
        const KuviSize size = {width, 5};
        const int row = rowBytes(square, width);
        for (const Kuv32s step : {1, 2, 3, 4, 7, 16, 31, 32, row - 1, row, row + 1, row + 2, row + 63}) {
            for (const Kuv32s f : someFactors) {
                const Image dst("dst", geometry(square, size, step & ~1, oneIn(random_, 2) ? Guard::end : Guard::begin, below(random_, 3)),
                                random_());
                fill(dst, width);
                expectResult(square, dst, dst, dst, size, f, {}, step);
            }
            if (HasFailure()) return;
        }
    }
}

TEST_P(ScaledArithmetic, OperandsThatAreOneImage) {
    for (const Operation& operation : operations) {
        for (const int width : {1, 7, 16, 17, 33, 70, 3000}) {
            const KuviSize size = {width, 3};
            for (const std::ptrdiff_t step : {rowBytes(operation, width), rowBytes(operation, width) + 6}) {
                for (const Kuv32s f : someFactors) {
                    const Geometry at = geometry(operation, size, step, Guard::end);
                    for (int which = 0; which < 3; ++which) {
                        const Image other("src", at, random_()), dst("dst", at, random_());
                        fill(other, width * operation.channels);
                        fill(dst, width * operation.channels);
                        expectResult(operation, which == 1 ? other : dst, which == 0 ? other : dst, dst, size, f, drawValues());
                    }
                }
                if (HasFailure()) return;
            }
        }
    }
}

// Whether results stream past the caches is decided by the caches' size; the values must not tell.
TEST_P(ScaledArithmetic, PastTheCaches) {
    const PresetCache cache(kuvStatusOk, 0x1000);
    for (const Operation& operation : operations) {
        if (operation.kind != Kind::into) continue;
        for (const int width : {63, 64, 79, 200, 333}) {
            for (const int gap : {0, 1, 2, 30}) {
                const KuviSize size = {width, 5};
                for (const std::ptrdiff_t step : {2 * width, 2 * width + 1, 2 * width + 32}) {
                    const Image a("src1", geometry(operation, size, step, Guard::end, gap), random_());
                    const Image b("src2", geometry(operation, size, step, Guard::begin), random_());
                    const Image dst("dst", geometry(operation, size, step, Guard::end, gap), random_());
                    fill(a, width);
                    fill(b, width);
                    for (const Kuv32s f : {0, 1, 5, -3}) expectResult(operation, a, b, dst, size, f, {});
                }
                if (HasFailure()) return;
            }
        }
    }
}

// Above these scale factors, not even of what is no memory.
TEST_P(ScaledArithmetic, WhereNothingIsLeftNoSourceIsRead) {
    const Kuv16s* const nowhere = reinterpret_cast<const Kuv16s*>(Kuv64u{16});
    for (const Operation& operation : operations) {
        if (operation.kind != Kind::into && operation.kind != Kind::with) continue;
        for (const Kuv32s f : {17, 18, 31, 32, 33, INT32_MAX}) {
            std::array<Kuv16s, 3 * 3 * 37 + 1> image;
            image.fill(-1);
            const KuviSize size = {37, 3};
            const Kuv32s step = 74 * operation.channels;
            EXPECT_EQ(watched([&] {
                          return operation.call({nowhere, nowhere, nullptr, 1 << 20, 1 << 20, image.data(), step, size, f});
                      }),
                      kuvStatusOk);
            const auto end = image.begin() + 111 * operation.channels;
            EXPECT_EQ(std::count(image.begin(), end, 0), 111 * operation.channels) << operation.name << " by " << f;
            EXPECT_EQ(*end, -1);
        }
    }
}

// Results that a reader may check by hand, in vectors and in single samples.
TEST_P(ScaledArithmetic, ResultsAtTheLimits) {
    const struct {
        int a, b;
        Kuv32s f;
        int sum, difference;
    } cases[] = {{32767, 32767, 16, 1, 0},
                 {32767, 32767, 17, 0, 0},
                 {0, 1, -16, 32767, -32768},
                 {0, 0, -16, 0, 0},
                 {-1, 0, -16, -32768, -32768},
                 {1, 0, -15, 32767, 32767},
                 {0, 0, -15, 0, 0},
                 {-32768, -32768, 1, -32768, 0},
                 {32767, -32768, 1, 0, 32767},
                 {-32768, 32767, 1, 0, -32768},
                 {2, 1, 1, 2, 0},
                 {-2, -1, 1, -2, 0},
                 {32767, 32767, 0, 32767, 0},
                 {-32768, 1, 0, -32767, -32768},
                 {32767, -32768, 2, 0, 16384},
                 {32767, -32768, 16, 0, 1},
                 {-32768, -32768, 16, -1, 0},
                 {-32768, -32768, 17, 0, 0},
                 {3, 0, INT32_MIN, 32767, 32767}};
    for (const auto& each : cases) {
        for (const int width : {1, 7, 50}) {
            const auto count = static_cast<std::size_t>(width);
            const std::vector<Kuv16s> a(count, static_cast<Kuv16s>(each.a)), b(count, static_cast<Kuv16s>(each.b));
            std::vector<Kuv16s> dst(count, 99);
            SCOPED_TRACE(testing::Message() << each.a << ", " << each.b << " by " << each.f);
            EXPECT_EQ(kuviAdd_16s_C1RSfs(b.data(), 0, a.data(), 0, dst.data(), 0, {width, 1}, each.f), kuvStatusOk);
            EXPECT_EQ(std::count(dst.begin(), dst.end(), each.sum), width);
            EXPECT_EQ(kuviSub_16s_C1RSfs(b.data(), 0, a.data(), 0, dst.data(), 0, {width, 1}, each.f), kuvStatusOk);
            EXPECT_EQ(std::count(dst.begin(), dst.end(), each.difference), width);
            dst = a;
            EXPECT_EQ(kuviSubC_16s_C1IRSfs(b[0], dst.data(), 0, {width, 1}, each.f), kuvStatusOk);
            EXPECT_EQ(std::count(dst.begin(), dst.end(), each.difference), width);
        }
    }
}

TEST_P(ScaledArithmetic, Step0AddsToTheSameRowAgainAndAgain) {
    std::array<Kuv16s, 57> src, srcDst;
    src.fill(3);
    srcDst.fill(100);
    EXPECT_EQ(kuviAdd_16s_C3IRSfs(src.data(), 0, srcDst.data(), 0, {19, 1000}, 0), kuvStatusOk);
    EXPECT_EQ(std::count(srcDst.begin(), srcDst.end(), 3100), 57);
    EXPECT_EQ(kuviSubC_16s_C1IRSfs(-2, srcDst.data(), 0, {57, 50}, 0), kuvStatusOk);
    EXPECT_EQ(std::count(srcDst.begin(), srcDst.end(), 3200), 57);
    srcDst.fill(-2);
    EXPECT_EQ(kuviSqr_16s_C1IRSfs(srcDst.data(), 1, {57, 3}, 0), kuvStatusOk);
    EXPECT_EQ(std::count(srcDst.begin(), srcDst.end(), 256), 57);
}

// The constants may be samples of the image: they are read first.
TEST_P(ScaledArithmetic, ConstantsWithinTheImage) {
    Kuv16s image[90];
    std::fill_n(image, 90, Kuv16s{7});
    image[30] = 100, image[31] = 200, image[32] = 300;
    EXPECT_EQ(kuviAddC_16s_C3IRSfs(image + 30, image, 180, {30, 1}, 0), kuvStatusOk);
    for (int i = 0; i < 90; ++i) EXPECT_EQ(image[i], 100 * (i % 3 + 1) + (i / 3 == 10 ? 100 * (i % 3 + 1) : 7));
}

TEST_P(ScaledArithmetic, RowsFurtherApartThan32BitsTell) {
    constexpr std::ptrdiff_t step = 0x7FFFFFF1;
    constexpr KuviSize size = {41, 3};
    const DistantMemory src1(3 * static_cast<std::size_t>(step)), src2(3 * static_cast<std::size_t>(step)),
        dst(3 * static_cast<std::size_t>(step));
    KUV_NEEDS(src1);
    KUV_NEEDS(src2);
    KUV_NEEDS(dst);
    for (const Operation& operation : operations) {
        for (const Kuv32s f : {0, 1, 3, -2, 31}) {
            for (const bool upward : {false, true}) {
                if (upward && operation.kind == Kind::square) continue;
                // The step of squares is even.
                const std::ptrdiff_t distance = operation.kind == Kind::square ? step - 1 : step;
                const Values values = drawValues();
                const auto count = static_cast<std::size_t>(size.width * operation.channels);
                const auto at = [&](const DistantMemory& memory, int r) { return memory.memory() + distance * (upward ? 2 - r : r); };
                std::vector<Kuv16s> wanted[3];
                for (int r = 0; r < 3; ++r) {
                    for (std::size_t i = 0; i < count; ++i) {
                        const auto place = static_cast<std::ptrdiff_t>(i);
                        for (const DistantMemory* each : {&src1, &src2, &dst}) store(at(*each, r), place, static_cast<Kuv16s>(random_()));
                        const bool two = operation.kind == Kind::into || operation.kind == Kind::with;
                        const Kuv16s a = load<Kuv16s>(at(operation.kind == Kind::into ? src2 : dst, r), place);
                        const Kuv16s b = two ? load<Kuv16s>(at(src1, r), place) : values[i % static_cast<std::size_t>(operation.channels)];
                        wanted[r].push_back(static_cast<Kuv16s>(operation.result(a, b, f)));
                    }
                }
                const auto first = [&](const DistantMemory& memory) { return reinterpret_cast<Kuv16s*>(at(memory, 0)); };
                const auto signedStep = static_cast<Kuv32s>(upward ? -step : step);
                EXPECT_EQ(watched([&] {
                              return operation.call(
                                  {first(src1), first(src2), values.data(), signedStep, signedStep, first(dst), signedStep, size, f});
                          }),
                          kuvStatusOk);
                for (int r = 0; r < 3; ++r) {
                    EXPECT_EQ(std::memcmp(at(dst, r), wanted[r].data(), 2 * count), 0) << operation.name << " by " << f << ", row " << r;
                }
            }
        }
    }
}

TEST_P(ScaledArithmetic, MoreThan31BitsOfSamplesInOneRun) {
    if (sanitized) GTEST_SKIP() << "the sanitizer takes minutes for it";
    constexpr KuviSize rows = {27000, 26600}, row = {0x2AAAAAAB, 1};
    const struct {
        const Operation& operation;
        KuviSize size;
        Kuv32s f;
    } cases[] = {{operations[2], row, 5}, {operations[6], rows, 5}, {operations[6], row, 17}};
    constexpr Values values = {3, -4, 15};
    const AliasedMemory image(LongRun::most), zeros(LongRun::most);
    KUV_NEEDS(image);
    KUV_NEEDS(zeros);
    std::memset(image.memory(), 0, AliasedMemory::period);
    std::memset(zeros.memory(), 0, AliasedMemory::period);
    for (const auto& each : cases) {
        LongRun run(image, each.size, 2 * each.operation.channels);
        run.want<Kuv16s>([&](Kuv16s a, std::size_t i) {
            return each.operation.result(a, each.operation.kind == Kind::constant ? values[i % 3] : Kuv16s{0}, each.f);
        });
        Kuv16s* const dst = reinterpret_cast<Kuv16s*>(image.memory());
        const Kuv16s* const src = reinterpret_cast<const Kuv16s*>(zeros.memory());
        EXPECT_EQ(watched([&] {
                      return each.operation.call({src, src, values.data(), run.step(), run.step(), dst, run.step(), each.size, each.f});
                  }), kuvStatusOk);
        EXPECT_TRUE(run.isAsWanted()) << each.operation.name << ", " << each.size.width << " x " << each.size.height;
    }
}

}  // namespace
