// Floating-point arithmetic on images, against the formulas of the header. add.cpp has more about sums.
#include <xmmintrin.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cfenv>
#include <cmath>
#include <tuple>
#include <vector>

#include "support/arguments.hpp"
#include "support/calls.hpp"
#include "support/distant.hpp"
#include "support/images.hpp"
#include "support/variants.hpp"

namespace {

using namespace kuvtest;

using Bits = Kuv32u;

constexpr Bits invalid = 0xFFC00000, infinity = 0x7F800000, one = 0x3F800000, sign = 0x80000000;

Bits bitsOf(Kuv32f x) { return std::bit_cast<Bits>(x); }
Kuv32f real(Bits x) { return std::bit_cast<Kuv32f>(x); }
bool isNaN(Bits x) { return (x & ~sign) > infinity; }
Bits quiet(Bits x) { return x | 0x00400000; }

// The exact result rounded once, in the rounding mode in force. A double holds enough digits that rounding twice is rounding once.
template <class Exact>
Bits rounded(Bits a, Bits b, Exact exact) {
    if (isNaN(a)) return quiet(a);
    if (isNaN(b)) return quiet(b);
    volatile double x = real(a), y = real(b);
    volatile double wide = exact(x, y);
    volatile Kuv32f narrow = static_cast<Kuv32f>(wide);
    return isNaN(bitsOf(narrow)) ? invalid : bitsOf(narrow);
}
Bits sum(Bits a, Bits b) {
    return rounded(a, b, [](double x, double y) { return x + y; });
}
Bits difference(Bits a, Bits b) {
    return rounded(a, b, [](double x, double y) { return x - y; });
}
Bits product(Bits a, Bits b) {
    return rounded(a, b, [](double x, double y) { return x * y; });
}
Bits quotient(Bits a, Bits b) {
    return rounded(a, b, [](double x, double y) { return x / y; });
}

struct Operands {
    Bits dst, src1, src2, value;
};

struct Arguments {
    const Kuv32f* value;
    const Kuv32f* src1;
    Kuv32s src1Step;
    const Kuv32f* src2;
    Kuv32s src2Step;
    Kuv32f* dst;
    Kuv32s dstStep;
    KuviSize size;
};

bool isPx() { return variants[kuv::variantIndex].isPx(); }

Bits divided(const Operands& of, KuvStatus& status) {
    if ((of.src1 & ~sign) != 0) return quotient(of.dst, of.src1);
    status = kuvStatusDivByZeroWarning;
    return isNaN(of.dst) || (of.dst & ~sign) == 0 ? invalid : infinity | (of.dst & sign);
}

Bits root(const Operands& of, KuvStatus& status) {
    const bool negative = (of.dst & sign) != 0 && of.dst != sign;
    if (isPx() ? negative || isNaN(of.dst) : negative) status = kuvStatusSqrtOfNegative;
    if (isNaN(of.dst)) return isPx() ? invalid : quiet(of.dst);
    if (negative) return invalid;
    return rounded(of.dst, one, [](double x, double) { return std::sqrt(x); });
}

struct Function {
    const char* name;
    int sources;  // images beside the destination
    int channels;
    StepClass steps;
    bool clearsStep;  // of its lowest two bits
    bool commutes;    // so which of two NaNs comes out is not stated
    Bits (*wanted)(const Operands& of, KuvStatus& status);
    KuvStatus (*call)(const Arguments& with);
};

#define ONE_IMAGE(name) [](const Arguments& with) { return name(with.dst, with.dstStep, with.size); }
#define TWO_IMAGES(name) [](const Arguments& with) { return name(with.src1, with.src1Step, with.dst, with.dstStep, with.size); }
#define THREE_IMAGES(name)                                                                                               \
    [](const Arguments& with) {                                                                                          \
        return name(with.src1, with.src1Step, with.src2, with.src2Step, with.dst, with.dstStep, with.size);              \
    }
#define CONSTANT(name) [](const Arguments& with) { return name(*with.value, with.dst, with.dstStep, with.size); }
#define CONSTANTS(name) [](const Arguments& with) { return name(with.value, with.dst, with.dstStep, with.size); }
#define OF(...) [](const Operands& of, KuvStatus&) { return __VA_ARGS__; }

constexpr Function functions[] = {
    {"Add", 1, 1, StepClass::C, false, true, OF(sum(of.dst, of.src1)), TWO_IMAGES(kuviAdd_32f_C1IR)},
    {"Sub", 1, 1, StepClass::C, false, false, OF(difference(of.dst, of.src1)), TWO_IMAGES(kuviSub_32f_C1IR)},
    {"Sub_C1R", 2, 1, StepClass::C, false, false, OF(difference(of.src2, of.src1)), THREE_IMAGES(kuviSub_32f_C1R)},
    {"AddC", 0, 3, StepClass::C, false, true, OF(sum(of.dst, of.value)), CONSTANTS(kuviAddC_32f_C3IR)},
    {"MulC", 0, 3, StepClass::C, false, true, OF(product(of.dst, of.value)), CONSTANTS(kuviMulC_32f_C3IR)},
    {"SubC", 0, 1, StepClass::C, false, false, OF(difference(of.dst, of.value)), CONSTANT(kuviSubC_32f_C1IR)},
    {"DivC", 0, 1, StepClass::A, false, true, OF(product(of.dst, quotient(one, of.value))), CONSTANT(kuviDivC_32f_C1IR)},
    {"Div", 1, 1, StepClass::A, false, false, divided, TWO_IMAGES(kuviDiv_32f_C1IR)},
    {"Abs", 0, 1, StepClass::A, true, false, OF(of.dst & ~sign), ONE_IMAGE(kuviAbs_32f_C1IR)},
    {"AbsDiff", 2, 1, StepClass::B, false, false, OF(difference(of.src1, of.src2) & ~sign), THREE_IMAGES(kuviAbsDiff_32f_C1R)},
    {"Sqr", 0, 1, StepClass::A, true, false, OF(product(of.dst, of.dst)), ONE_IMAGE(kuviSqr_32f_C1IR)},
    {"Sqrt", 0, 1, StepClass::A, true, false, root, ONE_IMAGE(kuviSqrt_32f_C1IR)},
};

std::ostream& operator<<(std::ostream& stream, const Function& function) { return stream << function.name; }

bool usesConstant(const Function& function) { return std::strchr(function.name, 'C') != nullptr && function.sources == 0; }

class Real : public VariantTest {
protected:
    // Computes as the library does and as the text says, on the same bytes; rows may lie on each other, and images may be one.
    // Bits of the step that the function clears are set in what it is given. Where two NaNs meet, either may come out; where rows lie on
    // each other as well, what follows from it is not compared.
    void expectResults(const Function& function, const Image& src1, const Image& src2, const Image& dst, KuviSize size) {
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << function << ", " << size.width << " x " << size.height << ", src1: "
                                        << src1.geometry() << ", src2: " << src2.geometry() << ", dst: " << dst.geometry());
        const Bytes src1Before = src1.bytes(), src2Before = src2.bytes();
        Bytes wanted = dst.bytes();
        KuvStatus status = kuvStatusOk;
        const int samples = size.width * function.channels;
        struct Pair {
            int row, sample;
            Bits a, b;
        };
        std::vector<Pair> pairs;
        for (int r = 0; r < size.height; ++r) {
            unsigned char* const row = dst.row(wanted, r);
            const unsigned char* const first = &src1 == &dst ? row : src1.row(r);
            const unsigned char* const second = &src2 == &dst ? row : src2.row(r);
            for (int i = 0; i < samples; ++i) {
                const Operands of = {load<Bits>(row, i), load<Bits>(first, function.sources > 0 ? i : 0),
                                     load<Bits>(second, function.sources > 1 ? i : 0), constant(function, i)};
                const Bits other = function.sources > 0 ? of.src1 : of.value;
                if (function.commutes && isNaN(of.dst) && isNaN(other)) pairs.push_back({r, i, quiet(of.dst), quiet(other)});
                store(row, i, function.wanted(of, status));
            }
        }
        const Kuv32s extra = function.clearsStep ? 3 : 0;
        const auto call = [&] {
            return function.call({value_.data(), src1.row<Kuv32f>(), src1.step(), src2.row<Kuv32f>(), src2.step(), dst.row<Kuv32f>(),
                                  dst.step() + extra, size});
        };
        EXPECT_EQ(watched(call), status);
        const bool apart = size.height == 1 || std::abs(dst.geometry().step) >= dst.geometry().rowBytes;
        for (const Pair& each : pairs) {
            const Bits got = load<Bits>(dst.row(each.row), each.sample);
            EXPECT_TRUE(!apart || got == each.a || got == each.b) << "row " << each.row << " sample " << each.sample << ": " << got;
            store(dst.row(wanted, each.row), each.sample, got);
        }
        if (apart || pairs.empty()) {
            EXPECT_EQ(dst.difference(wanted), "");
        }
        if (&src1 != &dst) {
            EXPECT_EQ(src1.difference(src1Before), "");
        }
        if (&src2 != &dst) {
            EXPECT_EQ(src2.difference(src2Before), "");
        }
    }

    static Geometry geometry(const Function& function, KuviSize size, std::ptrdiff_t step, Guard guard = Guard::end, int gap = 0) {
        const int rowBytes = size.width * function.channels * 4;
        return {.rowBytes = rowBytes, .rows = size.height, .step = step, .guard = guard, .gap = gap, .elementBytes = 4};
    }

    // Positive ones now and then only, so that warnings are not in every image.
    static void fill(Random& random, const Image& image) {
        const bool positive = oneIn(random, 2);
        const int samples = image.geometry().rowBytes / 4;
        for (int r = 0; r < image.geometry().rows; ++r) {
            for (int i = 0; i < samples; ++i) {
                const Kuv32f x = static_cast<Kuv32f>(1 + below(random, 1 << 26)) / 1024;
                store(image.row(r), i, positive ? x : x - 32768);
            }
        }
    }

    struct Images {
        Image src1, src2, dst;
    };
    static Images images(Random& random, const Function& function, KuviSize size, std::array<std::ptrdiff_t, 3> steps,
                         Guard guard = Guard::end, std::array<int, 3> gaps = {}) {
        return {Image("src1", geometry(function, size, steps[0], guard, gaps[0]), random()),
                Image("src2", geometry(function, size, steps[1], guard, gaps[1]), random()),
                Image("dst", geometry(function, size, steps[2], guard, gaps[2]), random())};
    }
    void expectOnRandom(Random& random, const Function& function, const Images& on, KuviSize size) {
        for (const Image* each : {&on.src1, &on.src2, &on.dst}) fill(random, *each);
        expectResults(function, on.src1, on.src2, on.dst, size);
    }

    Bits constant(const Function& function, int sample) const {
        return bitsOf(value_[static_cast<std::size_t>(sample % function.channels)]);
    }

    std::array<Kuv32f, 3> value_ = {0.75f, -3.1f, 1e-3f};
};

KUV_FOR_EACH_VARIANT(Real);

TEST_P(Real, EveryWidth) {
    Random random(1);
    for (const Function& function : functions) {
        for (int width = 1; width <= 72; ++width) {
            for (const Guard guard : {Guard::end, Guard::begin}) {
                const KuviSize size = {width, 2};
                const std::ptrdiff_t step = width * function.channels * 4;
                expectOnRandom(random, function, images(random, function, size, {step, step, step}, guard), size);
                if (HasFailure()) return;
            }
        }
        for (const int width : {255, 1000, 4099, 100003}) {
            const KuviSize size = {width, 1};
            const std::ptrdiff_t step = width * function.channels * 4;
            expectOnRandom(random, function, images(random, function, size, {step, step, step}), size);
        }
    }
}

// Rows that exceed the first-level cache together.
TEST_P(Real, LargeImages) {
    Random random(2);
    for (const Function& function : functions) {
        const KuviSize size = {1003, 17};
        const std::ptrdiff_t step = 1008 * function.channels * 4;
        expectOnRandom(random, function, images(random, function, size, {step, step + 4, step + 8}), size);
    }
}

// The paths differ in where the destination stands to 4, 16 and 32 bytes.
TEST_P(Real, EveryAlignment) {
    Random random(3);
    for (const Function& function : functions) {
        for (int dstAt = 0; dstAt < 33; ++dstAt) {
            for (const int srcAt : {0, 1, 4, 31, dstAt}) {
                for (const int width : {1, 3, 10, 16, 17, 33, 47, 71}) {
                    const KuviSize size = {width, 2};
                    const std::ptrdiff_t step = width * function.channels * 4 + 4;
                    const std::array<int, 3> gaps = {srcAt, srcAt / 2, dstAt};
                    expectOnRandom(random, function, images(random, function, size, {step, step + 8, step + 12}, Guard::begin, gaps), size);
                    if (HasFailure()) return;
                }
            }
        }
    }
}

TEST_P(Real, AnyStep) {
    Random random(4);
    for (const Function& function : functions) {
        for (const int width : {1, 2, 7, 17, 40}) {
            const KuviSize size = {width, 5};
            const int row = width * function.channels * 4;
            std::vector<std::ptrdiff_t> steps = {row, row + 4, row + 60};
            if (function.clearsStep) steps.insert(steps.end(), {0, 4, 8, row / 8 * 4});
            else if (function.steps == StepClass::A) steps.insert(steps.end(), {row + 1, 1, 3, 4, row / 2});
            else if (function.steps == StepClass::C) steps.insert(steps.end(), {row + 1, 1, 3, 4, row / 2, 0, -1, -4, -row, -row - 7});
            for (const std::ptrdiff_t dstStep : steps) {
                for (std::size_t i = 0; i < (function.sources > 0 ? steps.size() : 1); ++i) {
                    const Guard guard = oneIn(random, 2) ? Guard::end : Guard::begin;
                    const std::array<std::ptrdiff_t, 3> all = {steps[i], steps[(i + 3) % steps.size()], dstStep};
                    expectOnRandom(random, function, images(random, function, size, all, guard), size);
                    if (HasFailure()) return;
                }
            }
        }
    }
}

TEST_P(Real, OneImageForAll) {
    Random random(5);
    for (const Function& function : functions) {
        if (function.sources == 0) continue;
        for (const int width : {1, 5, 16, 33, 70}) {
            for (const std::ptrdiff_t step : {width * 4, width * 4 + 4, 0, -width * 4}) {
                if (step <= 0 && function.steps != StepClass::C) continue;
                const KuviSize size = {width, 4};
                const Images on = images(random, function, size, {step, step, step});
                for (const Image* each : {&on.src1, &on.src2, &on.dst}) fill(random, *each);
                expectResults(function, on.dst, on.src2, on.dst, size);
                if (function.sources == 2) expectResults(function, on.src1, on.dst, on.dst, size);
                if (function.sources == 2) expectResults(function, on.dst, on.dst, on.dst, size);
            }
        }
    }
}

// Whether results stream past the caches is decided by the caches' size; the values must not tell.
TEST_P(Real, PastTheCaches) {
    Random random(8);
    for (const auto& [status, bytes, line] : {std::tuple{kuvStatusOk, 0x1000, 64},
                                              {kuvStatusOk, 0x1000, 4000},
                                              {kuvStatusOk, 0x7FFFFFFF, 64},
                                              {kuvStatusNoCpuid, 0x1000, 64}, {kuvStatusNoCpuid, -1, 0}, {kuvStatusOk, 1, 1}}) {
        const PresetCache cache(status, bytes, line);
        for (const Function& function : functions) {
            for (const int gap : {0, 4, 18, 36}) {
                for (const int width : {1, 31, 32, 47, 150, 420}) {
                    const KuviSize size = {width, 5};
                    const int row = 4 * function.channels * width, odd = function.steps == StepClass::C ? 3 : 0;
                    const std::array<int, 3> gaps = {gap, 0, gap};
                    for (const int dstStep : {row, row + 64 - row % 64, row + 4 + odd}) {
                        expectOnRandom(random, function, images(random, function, size, {row, row + 8, dstStep}, Guard::end, gaps), size);
                    }
                    if (HasFailure()) return;
                }
            }
        }
    }
}

constexpr Bits specialValues[] = {0,          sign,       one,        one | sign, infinity,   infinity | sign, 0x7F7FFFFF, 0xFF7FFFFF,
                                  0x00800000, 0x80800000, 1,          0x80000001, 0x007FFFFF, 0x807FFFFF,      0x4B800000, 0x33800000,
                                  0x7FC00000, 0xFFC00000, 0x7FC12345, 0xFFFFFFFF, 0x7F800001, 0xFF800001,      0x7FBFFFFF, 0xFFA12345};

// In every place of a row that is long enough for each part of a kernel, alone among ordinary values. What is an operand beside the
// destination's sample is a constant, too.
TEST_P(Real, SpecialValuesInEveryPlace) {
    Random random(6);
    int place = 0;
    for (const Function& function : functions) {
        const KuviSize size = {41, 1};
        const Images on = images(random, function, size, {512, 512, 512});
        for (const Bits a : specialValues) {
            for (const Bits b : specialValues) {
                const bool isDivisor = std::strcmp(function.name, "DivC") == 0;
                if (isDivisor && (b & ~sign) == 0) continue;
                if (isDivisor) value_.fill(real(b));
                else if (usesConstant(function)) value_ = {real(b), real(b), 2};
                for (int i = 0; i < 3; ++i) {
                    place = (place + 1) % (41 * function.channels);
                    for (const Image* each : {&on.src1, &on.src2, &on.dst}) fill(random, *each);
                    const bool intoSource = function.sources == 2;
                    store(on.dst.row(), place, intoSource ? one : a);
                    if (function.sources > 0) store(on.src1.row(), place, b);
                    if (intoSource) store(on.src2.row(), place, a);
                    expectResults(function, on.src1, on.src2, on.dst, size);
                    if (HasFailure()) return;
                }
            }
        }
    }
}

Bits anyMagnitude(Random& random) { return (static_cast<Bits>(random()) & 0xFEFFFFFF) | 0x00800000; }

// Each mode of the caller's is obeyed, and kept.
TEST_P(Real, RoundsAsTheCallerDoes) {
    Random random(7);
    const int before = std::fegetround();
    for (const Function& function : functions) {
        for (const int mode : {FE_TONEAREST, FE_DOWNWARD, FE_UPWARD, FE_TOWARDZERO}) {
            for (int round = 0; round < 10; ++round) {
                const KuviSize size = {between(random, 1, 60), 3};
                const std::ptrdiff_t step = size.width * function.channels * 4;
                const Images on = images(random, function, size, {step, step, step});
                // Of any magnitude, so that results become denormal and overflow as well.
                for (const Image* each : {&on.src1, &on.src2, &on.dst}) {
                    for (int i = 0; i < size.height * size.width * function.channels; ++i) store(each->row(), i, anyMagnitude(random));
                }
                for (Kuv32f& each : value_) each = real(anyMagnitude(random));
                std::fesetround(mode);
                expectResults(function, on.src1, on.src2, on.dst, size);
                EXPECT_EQ(sum(one, bitsOf(0x1p-30f)) != one, mode == FE_UPWARD) << "the reference follows the mode";
                std::fesetround(before);
                if (HasFailure()) return;
            }
        }
    }
}

TEST_P(Real, RowsFurtherApartThan32BitsTell) {
    constexpr std::ptrdiff_t step = 0x7FFFFFF0;
    constexpr KuviSize size = {35, 4};
    for (const Function& function : functions) {
        constexpr std::size_t bytes = 4 * static_cast<std::size_t>(step);
        const DistantMemory src1Memory(bytes), src2Memory(bytes), dstMemory(bytes);
        KUV_NEEDS(src1Memory);
        KUV_NEEDS(src2Memory);
        KUV_NEEDS(dstMemory);
        for (const bool upward : {false, true}) {
            if (upward && function.steps != StepClass::C) continue;
            const std::ptrdiff_t signedStep = upward ? -step : step, start = upward ? 3 * step : 0;
            char* const src1 = src1Memory.memory() + start;
            char* const src2 = src2Memory.memory() + start;
            char* const dst = dstMemory.memory() + start;
            const int samples = size.width * function.channels;
            for (int r = 0; r < size.height; ++r) {
                for (int i = 0; i < samples; ++i) {
                    store(src1 + signedStep * r, i, static_cast<Kuv32f>(100 * r + i + 1));
                    store(src2 + signedStep * r, i, static_cast<Kuv32f>(3 * i + r));
                    store(dst + signedStep * r, i, static_cast<Kuv32f>(7 * i + r));
                }
            }
            const auto given = static_cast<Kuv32s>(signedStep);
            EXPECT_EQ(watched([&] {
                          const auto reals = [](char* memory) { return reinterpret_cast<Kuv32f*>(memory); };
                          return function.call({value_.data(), reals(src1), given, reals(src2), given, reals(dst), given, size});
                      }), kuvStatusOk);
            for (int r = 0; r < size.height; ++r) {
                for (int i = 0; i < samples; ++i) {
                    const Operands of = {bitsOf(static_cast<Kuv32f>(7 * i + r)), bitsOf(static_cast<Kuv32f>(100 * r + i + 1)),
                                         bitsOf(static_cast<Kuv32f>(3 * i + r)), constant(function, i)};
                    KuvStatus status = kuvStatusOk;
                    EXPECT_EQ(load<Bits>(dst + signedStep * r, i), function.wanted(of, status))
                        << function << ", row " << r << ", sample " << i;
                }
            }
        }
    }
}

// A warning comes from any sample of any row, and from nothing else: not from what lies between and around rows.
TEST_P(Real, WarningsAreOfTheRegion) {
    constexpr int pitch = 80;
    const auto at = [](int index) { return static_cast<std::size_t>(index); };
    const auto expectStatus = [&](bool divides, int width, int offset, int place, Bits bad, KuvStatus wanted) {
        std::array<Bits, 3 * pitch> src, dst;
        // Around the region everything warns.
        src.fill(0);
        dst.fill(divides ? one : one | sign);
        for (int r = 0; r < 3; ++r) {
            for (int i = 0; i < width; ++i) src[at(r * pitch + offset + i)] = dst[at(r * pitch + offset + i)] = one;
        }
        if (place >= 0) (divides ? src : dst)[at(place / width * pitch + offset + place % width)] = bad;
        Kuv32f* const from = reinterpret_cast<Kuv32f*>(src.data()) + offset;
        Kuv32f* const to = reinterpret_cast<Kuv32f*>(dst.data()) + offset;
        EXPECT_EQ(watched([&] {
                      constexpr Kuv32s step = 4 * pitch;
                      return divides ? kuviDiv_32f_C1IR(from, step, to, step, {width, 3}) : kuviSqrt_32f_C1IR(to, step, {width, 3});
                  }), wanted)
            << GetParam() << ", width " << width << ", at " << offset << ", sample " << place;
    };
    for (int width = 1; width < 50; ++width) {
        for (const int offset : {0, 1, 5, 8, 15}) {
            for (const bool divides : {false, true}) {
                expectStatus(divides, width, offset, -1, 0, kuvStatusOk);
                for (int place = 0; place < 3 * width; ++place) {
                    if (divides) expectStatus(true, width, offset, place, sign, kuvStatusDivByZeroWarning);
                    else expectStatus(false, width, offset, place, one | sign, kuvStatusSqrtOfNegative);
                    if (HasFailure()) return;
                }
            }
        }
    }
}

TEST_P(Real, DivisorsOfZero) {
    const auto divide = [](Bits a, Bits b, KuvStatus wanted) {
        Bits row[21];
        Bits divisors[21];
        std::fill(std::begin(row), std::end(row), a);
        std::fill(std::begin(divisors), std::end(divisors), b);
        Kuv32f *const src = reinterpret_cast<Kuv32f*>(divisors), *const srcDst = reinterpret_cast<Kuv32f*>(row);
        EXPECT_EQ(watched([&] { return kuviDiv_32f_C1IR(src, 84, srcDst, 84, {21, 1}); }), wanted);
        for (const Bits each : row) EXPECT_EQ(each, row[0]);
        return row[0];
    };
    for (const Bits zero : {Bits{0}, sign}) {
        EXPECT_EQ(divide(one, zero, kuvStatusDivByZeroWarning), infinity);
        EXPECT_EQ(divide(1, zero, kuvStatusDivByZeroWarning), infinity);
        EXPECT_EQ(divide(infinity, zero, kuvStatusDivByZeroWarning), infinity);
        EXPECT_EQ(divide(one | sign, zero, kuvStatusDivByZeroWarning), infinity | sign);
        EXPECT_EQ(divide(infinity | sign, zero, kuvStatusDivByZeroWarning), infinity | sign);
        for (const Bits dividend : {Bits{0}, sign, Bits{0x7FC12345}, Bits{0xFF800001}}) {
            EXPECT_EQ(divide(dividend, zero, kuvStatusDivByZeroWarning), invalid);
        }
    }
    EXPECT_EQ(divide(0x7FC12345, one, kuvStatusOk), 0x7FC12345u);
    EXPECT_EQ(divide(0x7F812345, 0xFFC54321, kuvStatusOk), 0x7FC12345u) << "of two NaNs the dividend";
    EXPECT_EQ(divide(infinity, infinity, kuvStatusOk), invalid);
    EXPECT_EQ(divide(one, 1, kuvStatusOk), infinity) << "a denormal divisor is not 0";
}

TEST_P(Real, DivisionByAConstantIsAProduct) {
    Kuv32f row[19];
    std::fill(std::begin(row), std::end(row), 9.0f);
    for (const Kuv32f zero : {0.0f, -0.0f}) {
        EXPECT_EQ(kuviDivC_32f_C1IR(zero, row, 76, {19, 1}), kuvStatusDivByZero);
        for (const Kuv32f each : row) EXPECT_EQ(each, 9.0f);
    }
    int differing = 0;
    for (int divisor = 1; divisor < 200; ++divisor) {
        std::fill(std::begin(row), std::end(row), 77.0f);
        const auto by = static_cast<Kuv32f>(divisor);
        EXPECT_EQ(kuviDivC_32f_C1IR(by, row, 76, {19, 1}), kuvStatusOk);
        for (const Kuv32f each : row) EXPECT_EQ(each, 77.0f * static_cast<Kuv32f>(1.0 / divisor));
        differing += row[0] != 77.0f / by;
    }
    EXPECT_GT(differing, 0);
    EXPECT_EQ(kuviDivC_32f_C1IR(real(0x7FC12345), row, 76, {19, 1}), kuvStatusOk);
    for (const Kuv32f each : row) EXPECT_EQ(bitsOf(each), 0x7FC12345u);
}

TEST_P(Real, Roots) {
    const auto rootOf = [](Bits x, KuvStatus wanted) {
        Bits row[21];
        std::fill(std::begin(row), std::end(row), x);
        EXPECT_EQ(watched([&] { return kuviSqrt_32f_C1IR(reinterpret_cast<Kuv32f*>(row), 84, {21, 1}); }), wanted) << x;
        for (const Bits each : row) EXPECT_EQ(each, row[0]);
        return row[0];
    };
    EXPECT_EQ(rootOf(sign, kuvStatusOk), sign);
    EXPECT_EQ(rootOf(0, kuvStatusOk), 0u);
    EXPECT_EQ(rootOf(infinity, kuvStatusOk), infinity);
    EXPECT_EQ(rootOf(bitsOf(2), kuvStatusOk), bitsOf(1.41421354f));
    EXPECT_EQ(rootOf(1, kuvStatusOk), bitsOf(0x1.6a09e6p-75f));
    for (const Bits negative : {one | sign, sign | 1, infinity | sign}) EXPECT_EQ(rootOf(negative, kuvStatusSqrtOfNegative), invalid);
    for (const Bits nan : {0x7FC00000u, 0x7F800001u}) EXPECT_TRUE(isNaN(rootOf(nan, isPx() ? kuvStatusSqrtOfNegative : kuvStatusOk)));
    for (const Bits nan : {0xFFC00000u, 0xFF800001u}) EXPECT_TRUE(isNaN(rootOf(nan, kuvStatusSqrtOfNegative)));
}

// Vector variants clear the bit by which denormals count as zero, where no exception is asked for, and nothing else.
TEST_P(Real, RootsOfDenormals) {
    constexpr unsigned zeroDenormals = 0x40, flushToZero = 0x8000, divisionMask = 0x200, control = 0xFFC0;
    const unsigned before = _mm_getcsr();
    const auto rootsWith = [&](unsigned csr, bool clears, KuviSize size, Kuv32s step, bool null, KuvStatus wanted) {
        Bits row[21];
        std::fill(std::begin(row), std::end(row), 1);
        Kuv32f* const image = null ? nullptr : reinterpret_cast<Kuv32f*>(row);
        _mm_setcsr(csr);
        const KuvStatus got = kuviSqrt_32f_C1IR(image, step, size);
        const unsigned after = _mm_getcsr();
        _mm_setcsr(before);
        EXPECT_EQ(got, wanted);
        EXPECT_EQ(after & control, (clears ? csr & ~zeroDenormals : csr) & control);
        if (wanted == kuvStatusOk) {
            for (const Bits each : row) EXPECT_EQ(each, clears ? bitsOf(0x1.6a09e6p-75f) : 0);
        }
    };
    const unsigned masked = (before | 0x1F80 | zeroDenormals | flushToZero) & ~0x3Fu;
    rootsWith(masked, !isPx(), {21, 1}, 84, false, kuvStatusOk);
    rootsWith(masked, !isPx(), {3, 7}, 12, false, kuvStatusOk);
    rootsWith(masked & ~divisionMask, false, {21, 1}, 84, false, kuvStatusOk);
    rootsWith(masked, false, {21, 1}, 84, true, kuvStatusNullPtr);
    rootsWith(masked, false, {21, 0}, 84, false, kuvStatusBadSize);
    rootsWith(masked, false, {21, 1}, 0, false, kuvStatusBadStep);
}

// Of a step of 6 the lower two bits are cleared, of one up to 3 nothing is left.
TEST_P(Real, ClearedSteps) {
    for (const Kuv32s step : {1, 2, 3, 6, 7}) {
        std::array<Kuv32f, 40> row;
        for (const auto function : {kuviAbs_32f_C1IR, kuviSqr_32f_C1IR, kuviSqrt_32f_C1IR}) {
            const bool squares = function == kuviSqr_32f_C1IR, roots = function == kuviSqrt_32f_C1IR;
            row.fill(squares ? 1.5f : roots ? 256.0f : -1.0f);
            auto wanted = row;
            for (int r = 0; r < 3; ++r) {
                for (int i = 0; i < 17; ++i) {
                    Kuv32f& x = wanted[static_cast<std::size_t>(step / 4 * r + i)];
                    x = squares ? x * x : roots ? std::sqrt(x) : std::fabs(x);
                }
            }
            EXPECT_EQ(watched([&] { return function(row.data(), step, {17, 3}); }), kuvStatusOk);
            EXPECT_EQ(row, wanted) << "step " << step;
        }
    }
}

// Four times the width is formed in 64 bits; all steps are compared with it before any is found to be no multiple of 4.
TEST_P(Real, StepsOfAbsDiff) {
    Kuv32f x[8] = {};
    const auto status = [&](Kuv32s first, Kuv32s second, Kuv32s third, Kuv32s width) {
        return kuviAbsDiff_32f_C1R(x, first, x, second, x, third, {width, 1});
    };
    EXPECT_EQ(status(16, 16, 16, 4), kuvStatusOk);
    for (int which = 0; which < 3; ++which) {
        const auto with = [&](Kuv32s step, Kuv32s others, Kuv32s width) {
            return status(which == 0 ? step : others, which == 1 ? step : others, which == 2 ? step : others, width);
        };
        EXPECT_EQ(with(18, 16, 4), kuvStatusStepNotMultiple);
        EXPECT_EQ(with(15, 16, 4), kuvStatusBadStep);
        EXPECT_EQ(with(12, 18, 4), kuvStatusBadStep);
        EXPECT_EQ(with(-16, 16, 4), kuvStatusBadStep);
        EXPECT_EQ(with(16, 0x7FFFFFFC, 0x40000000), kuvStatusBadStep);
        EXPECT_EQ(with(0x7FFFFFFF, 0x7FFFFFFC, 0x7FFFFFFF), kuvStatusBadStep);
    }
}

// The constants are those before the call, even if they lie in the image.
TEST_P(Real, ConstantsInTheImage) {
    Kuv32f row[30];
    std::fill(std::begin(row), std::end(row), 3.0f);
    EXPECT_EQ(kuviMulC_32f_C3IR(row, row, 0, {10, 2}), kuvStatusOk);
    for (const Kuv32f each : row) EXPECT_EQ(each, 27.0f);
    EXPECT_EQ(kuviAddC_32f_C3IR(row + 3, row, 0, {10, 2}), kuvStatusOk);
    for (const Kuv32f each : row) EXPECT_EQ(each, 81.0f);
}

}  // namespace
