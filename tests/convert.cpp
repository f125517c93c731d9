// Conversions between sample types, and ranges laid on 8 bits and back.
#include <algorithm>
#include <cfenv>
#include <cmath>
#include <limits>

#include "support/agreement.hpp"
#include "support/aliased.hpp"
#include "support/distant.hpp"
#include "support/statuses.hpp"

namespace {

using namespace kuvtest;

struct RoundMode {
    std::tuple<Kuv32s> operator()(Draw& draw) const {
        constexpr Kuv32s modes[] = {0, 1, 2, -1, 3, INT32_MIN, INT32_MAX};
        return {modes[below(draw.random, 7)]};
    }
};

// (vMin, vMax)
struct ValueRange {
    std::tuple<Kuv32f, Kuv32f> operator()(Draw& draw) const {
        constexpr Kuv32f huge = std::numeric_limits<Kuv32f>::max(), infinite = std::numeric_limits<Kuv32f>::infinity(), none = NAN;
        constexpr Kuv32f tiny = 1e-45f;
        constexpr std::tuple<Kuv32f, Kuv32f> ranges[] = {{0.0f, 1.0f},       {0.0f, 255.0f},      {-1.0f, 1.0f},         {-300.0f, 900.0f},
                                                         {0.0f, 65535.0f},   {16.0f, 235.0f},     {-huge, huge},         {0.0f, tiny},
                                                         {-tiny, tiny},      {1e6f, 1e6f + 1.0f}, {-700.0f, -100.0f},    {1e-30f, 3e-30f},
                                                         {0.0f, infinite},   {-infinite, 0.0f},   {-infinite, infinite}, {none, 1.0f},
                                                         {0.0f, none},       {none, none},        {infinite, infinite},  {-1e20f, 1e19f},
                                                         {99.99999f, 100.0f}};
        return ranges[below(draw.random, std::size(ranges))];
    }
};

auto nullImages() { return check(kuvStatusNullPtr, null<0>(), null<2>()); }

#define IMAGES(S, D, channelCount) \
    Source<S>{.channels = channelCount, .steps = StepClass::A}, Output<D>{.channels = channelCount, .steps = StepClass::A}, RoiSize{}
#define CONVERSION(function, ...)         \
    KUV_AGREES(function, __VA_ARGS__);    \
    KUV_CHECKS(function, call(__VA_ARGS__), nullImages(), badSize<4>(), badStep<1, 3>())
CONVERSION(kuviConvert_8u32f_C1R, IMAGES(Kuv8u, Kuv32f, 1));
CONVERSION(kuviConvert_16u32f_C1R, IMAGES(Kuv16u, Kuv32f, 1));
CONVERSION(kuviConvert_16u8u_C1R, IMAGES(Kuv16u, Kuv8u, 1));
CONVERSION(kuviConvert_16u8u_C3R, IMAGES(Kuv16u, Kuv8u, 3));
CONVERSION(kuviConvert_32f8u_C3R, IMAGES(Kuv32f, Kuv8u, 3), RoundMode{});

KUV_AGREES(kuviConvert_8u32f_C3R, IMAGES(Kuv8u, Kuv32f, 3));
KUV_CHECKS(kuviConvert_8u32f_C3R, call(IMAGES(Kuv8u, Kuv32f, 3)), badWidth<4>(), nullImages(), badHeight<4>(), badStep<1, 3>());

#define SCALE(function, ...)              \
    KUV_AGREES(function, __VA_ARGS__);    \
    KUV_CHECKS(function, call(__VA_ARGS__), check(kuvStatusEmptyRange, emptyRange()), nullImages(), badSize<4>(), badStep<1, 3>())

// Both ends at once.
struct EmptyRange {
    template <class Tuple>
    Violation<Tuple> bind() const {
        return {5, 0, "vMin = vMax = 7", [](Tuple& arguments) { std::get<5>(arguments) = std::get<6>(arguments) = 7.0f; }};
    }
};
constexpr EmptyRange emptyRange() { return {}; }
SCALE(kuviScale_8u32f_C3R, IMAGES(Kuv8u, Kuv32f, 3), ValueRange{});
SCALE(kuviScale_32f8u_C3R, IMAGES(Kuv32f, Kuv8u, 3), ValueRange{});

using Function = std::function<KuvStatus(const void* src, Kuv32s srcStep, void* dst, Kuv32s dstStep, KuviSize size)>;
// The sample at src to the one at dst.
using Single = std::function<void(const void* src, void* dst)>;

// Samples of single precision: mostly in [-20, 280), in [-4, 2) or in steps of 1/800 around 1e6.
enum class Reals { bytes, fractions, far };

struct Conversion {
    std::string name;
    int srcBytes, dstBytes, channels;
    Function call;
    Single single;
    Reals reals = Reals::bytes;  // where results are neither 0 nor 255
};

Kuv8u toByte(Kuv32f x, int roundMode) {
    if (std::isnan(x)) return 0;
    const double limited = std::clamp(double{x}, 0.0, 255.0), whole = std::floor(limited), rest = limited - whole;
    if (roundMode == 0) return static_cast<Kuv8u>(whole);
    if (roundMode == 1) return static_cast<Kuv8u>(rest == 0.5 ? 2 * std::ceil(whole / 2) : rest > 0.5 ? whole + 1 : whole);
    return static_cast<Kuv8u>(rest >= 0.5 ? whole + 1 : whole);
}

// One operation after the other, which volatile keeps apart.
Kuv32f byteToRange(Kuv8u x, Kuv32f vMin, Kuv32f vMax) {
    volatile double step = double{vMax} - double{vMin};
    step = step / 255.0;
    volatile double product = step * x;
    volatile double sum = product + vMin;
    volatile float result = static_cast<float>(sum);
    return result;
}

Kuv8u rangeToByte(Kuv32f x, Kuv32f vMin, Kuv32f vMax) {
    if (x >= vMax) return 255;
    if (x <= vMin) return 0;
    volatile double range = double{vMax} - double{vMin};
    volatile double k = 255.0 / range;
    volatile double b = vMin * k;
    b = -b;
    volatile double start = 0.5 + b;
    volatile double product = x * k;
    volatile double y = start + product;
    if (std::isnan(y)) return 0;
    const auto i = static_cast<Kuv32s>(y);
    return static_cast<Kuv8u>(i % 2 != 0 && i == y ? i - 1 : i);
}

#define PLAIN(function, S, D, channels, value)                                                                                        \
    {#function, sizeof(S), sizeof(D), channels,                                                                                       \
     [](const void* src, Kuv32s srcStep, void* dst, Kuv32s dstStep, KuviSize size) {                                                  \
         return function(static_cast<const S*>(src), srcStep, static_cast<D*>(dst), dstStep, size);                                   \
     },                                                                                                                               \
     [](const void* src, void* dst) {                                                                                                 \
         const S x = load<S>(src);                                                                                                    \
         store(dst, 0, static_cast<D>(value));                                                                                        \
     }}

Conversion rounding(int roundMode) {
    return {"kuviConvert_32f8u_C3R, roundMode " + std::to_string(roundMode), 4, 1, 3,
            [=](const void* src, Kuv32s srcStep, void* dst, Kuv32s dstStep, KuviSize size) {
                return kuviConvert_32f8u_C3R(static_cast<const Kuv32f*>(src), srcStep, static_cast<Kuv8u*>(dst), dstStep, size, roundMode);
            },
            [=](const void* src, void* dst) { store(dst, 0, toByte(load<Kuv32f>(src), roundMode)); }};
}

Conversion fromBytes(Kuv32f vMin, Kuv32f vMax) {
    return {"kuviScale_8u32f_C3R, " + std::to_string(vMin) + " .. " + std::to_string(vMax), 1, 4, 3,
            [=](const void* src, Kuv32s srcStep, void* dst, Kuv32s dstStep, KuviSize size) {
                return kuviScale_8u32f_C3R(static_cast<const Kuv8u*>(src), srcStep, static_cast<Kuv32f*>(dst), dstStep, size, vMin, vMax);
            },
            [=](const void* src, void* dst) { store(dst, 0, byteToRange(load<Kuv8u>(src), vMin, vMax)); }};
}

Conversion toBytes(Kuv32f vMin, Kuv32f vMax, Reals reals = Reals::fractions) {
    return {"kuviScale_32f8u_C3R, " + std::to_string(vMin) + " .. " + std::to_string(vMax), 4, 1, 3,
            [=](const void* src, Kuv32s srcStep, void* dst, Kuv32s dstStep, KuviSize size) {
                return kuviScale_32f8u_C3R(static_cast<const Kuv32f*>(src), srcStep, static_cast<Kuv8u*>(dst), dstStep, size, vMin, vMax);
            },
            [=](const void* src, void* dst) { store(dst, 0, rangeToByte(load<Kuv32f>(src), vMin, vMax)); }, reals};
}

const std::vector<Conversion>& conversions() {
    static const std::vector<Conversion> all = {PLAIN(kuviConvert_8u32f_C1R, Kuv8u, Kuv32f, 1, x),
                                                PLAIN(kuviConvert_8u32f_C3R, Kuv8u, Kuv32f, 3, x),
                                                PLAIN(kuviConvert_16u32f_C1R, Kuv16u, Kuv32f, 1, x),
                                                PLAIN(kuviConvert_16u8u_C1R, Kuv16u, Kuv8u, 1, std::min<Kuv16u>(x, 255)),
                                                PLAIN(kuviConvert_16u8u_C3R, Kuv16u, Kuv8u, 3, std::min<Kuv16u>(x, 255)),
                                                rounding(0),
                                                rounding(1),
                                                rounding(2),
                                                fromBytes(-3.5f, 1.25f),
                                                toBytes(-3.5f, 1.25f),
                                                toBytes(1e6f, 1e6f + 3.0f, Reals::far)};
    return all;
}

class Convert : public VariantTest {
protected:
    // Random samples, those of single precision mostly where results are neither 0 nor 255.
    void expectConversion(const Conversion& conversion, KuviSize size, std::ptrdiff_t srcStep, std::ptrdiff_t dstStep,
                          Guard guard = Guard::end, int srcGap = 0, int dstGap = 0) {
        const int samples = size.width * conversion.channels;
        const Image src("src", {samples * conversion.srcBytes, size.height, srcStep, guard, srcGap, conversion.srcBytes}, random_());
        const Image dst("dst", {samples * conversion.dstBytes, size.height, dstStep, guard, dstGap, conversion.dstBytes}, random_());
        for (int r = 0; r < size.height && conversion.srcBytes == 4; ++r) {
            for (int i = 0; i < samples; ++i) {
                if (oneIn(random_, 16)) continue;
                const auto tenths = static_cast<Kuv32f>(below(random_, 3000) - 200);
                const Kuv32f each = conversion.reals == Reals::bytes       ? tenths / 10.0f
                                    : conversion.reals == Reals::fractions ? tenths / 500.0f - 3.6f
                                                                           : 1e6f + tenths / 800.0f;
                store(src.row(r), i, each);
            }
        }
        const Bytes before = src.bytes();
        Bytes wanted = dst.bytes();
        for (int r = 0; r < size.height; ++r) {
            for (int i = 0; i < samples; ++i) {
                conversion.single(src.row(r) + i * conversion.srcBytes, dst.row(wanted, r) + i * conversion.dstBytes);
            }
        }
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << conversion.name << ", " << size.width << " x " << size.height
                                        << "\n  src: " << src.geometry() << "\n  dst: " << dst.geometry());
        EXPECT_EQ(watched([&] { return conversion.call(src.row(), src.step(), dst.row(), dst.step(), size); }), kuvStatusOk);
        EXPECT_EQ(dst.difference(wanted), "");
        EXPECT_EQ(src.difference(before), "");
    }

    // Given samples, in a call of their own.
    template <class S, class D>
    void expectValues(const Conversion& conversion, std::vector<S> samples) {
        while (samples.size() % 3 != 0) samples.push_back(samples.back());
        std::vector<D> got(samples.size());
        const KuviSize size = {static_cast<Kuv32s>(samples.size()) / conversion.channels, 1};
        EXPECT_EQ(watched([&] { return conversion.call(samples.data(), 1, got.data(), 1, size); }), kuvStatusOk);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            D wanted;
            conversion.single(&samples[i], &wanted);
            if (std::memcmp(&got[i], &wanted, sizeof(D)) == 0) continue;
            ADD_FAILURE() << GetParam() << ", " << conversion.name << ", sample " << i << " = " << std::hexfloat << +samples[i] << ": got "
                          << +got[i] << ", wanted " << +wanted;
            return;
        }
    }

    Random random_{1};
};

KUV_FOR_EACH_VARIANT(Convert);

TEST_P(Convert, EveryWidth) {
    for (const Conversion& each : conversions()) {
        for (int width = 1; width <= 110 && !HasFailure(); ++width) {
            const int src = width * each.channels * each.srcBytes, dst = width * each.channels * each.dstBytes;
            for (const Guard guard : {Guard::end, Guard::begin}) {
                expectConversion(each, {width, 1}, 1, 1, guard);
                expectConversion(each, {width, 3}, src, dst, guard);
                expectConversion(each, {width, 3}, src + 1, dst + 3, guard);
            }
        }
        for (const int width : {333, 1000, 4099}) expectConversion(each, {width, 2}, width * 12 + 5, width * 12 + 3);
    }
}

TEST_P(Convert, EveryAlignment) {
    for (const Conversion& each : conversions()) {
        for (int dstGap = 0; dstGap < 65 && !HasFailure(); ++dstGap) {
            for (const int srcGap : {0, 1, 7, dstGap}) {
                for (const int width : {5, 40, 133}) {
                    expectConversion(each, {width, 2}, width * 12, width * 12 + 32, Guard::begin, srcGap, dstGap);
                }
            }
        }
    }
}

// Any above 0: rows that overlap are done one after the other, the last one last.
TEST_P(Convert, AnyStep) {
    for (const Conversion& each : conversions()) {
        for (const int width : {1, 5, 40, 100}) {
            const int src = width * each.channels * each.srcBytes, dst = width * each.channels * each.dstBytes;
            for (const int srcStep : {1, 2, 13, src - 1, src, src + 1}) {
                for (const int dstStep : {1, 3, 4, 17, dst - 1, dst, dst + 1}) {
                    if (srcStep < 1 || dstStep < 1) continue;
                    expectConversion(each, {width, 4}, srcStep, dstStep, oneIn(random_, 2) ? Guard::end : Guard::begin);
                    if (HasFailure()) return;
                }
            }
        }
    }
}

// Past the caches or not, with each answer to the questions about them.
TEST_P(Convert, LargeImages) {
    for (const auto& [status, bytes, line] : {std::tuple{kuvStatusOk, 0x1000, 64},
                                              {kuvStatusOk, 0x1000, 4000},
                                              {kuvStatusOk, 0x7FFFFFFF, 64},
                                              {kuvStatusNoCpuid, 0x1000, 64},
                                              {kuvStatusNoCpuid, -1, 0},
                                              {kuvStatusOk, 1, 1}}) {
        const PresetCache cache(status, bytes, line);
        for (const Conversion& each : conversions()) {
            for (const int gap : {0, 4, 18, 33}) {
                for (const int width : {1, 24, 31, 32, 70, 150, 420}) {
                    const int src = width * each.channels * each.srcBytes, dst = width * each.channels * each.dstBytes;
                    expectConversion(each, {width, 7}, src, dst, Guard::end, gap, gap);
                    expectConversion(each, {width, 7}, src + 3, dst + 64 - dst % 64, Guard::end, gap, gap);
                    expectConversion(each, {width, 7}, src, dst / 2 + 1, Guard::begin, gap, gap);
                }
            }
            if (HasFailure()) return;
        }
    }
}

TEST_P(Convert, EveryInteger) {
    std::vector<Kuv8u> bytes;
    std::vector<Kuv16u> words;
    for (int i = 0; i < 65536; ++i) words.push_back(static_cast<Kuv16u>(i));
    for (int i = 0; i < 768; ++i) bytes.push_back(static_cast<Kuv8u>(i));
    for (const Conversion& each : conversions()) {
        if (each.srcBytes == 1) expectValues<Kuv8u, Kuv32f>(each, bytes);
        if (each.srcBytes == 2 && each.dstBytes == 4) expectValues<Kuv16u, Kuv32f>(each, words);
        if (each.srcBytes == 2 && each.dstBytes == 1) expectValues<Kuv16u, Kuv8u>(each, words);
    }
}

std::vector<Kuv32f> neighbours(double around, int count) {
    const auto nearest = static_cast<Kuv32f>(around);
    std::vector<Kuv32f> all = {nearest};
    for (Kuv32f up = nearest, down = nearest; count > 0; --count) {
        all.push_back(up = std::nextafter(up, INFINITY));
        all.push_back(down = std::nextafter(down, -INFINITY));
    }
    return all;
}

void append(std::vector<Kuv32f>& to, const std::vector<Kuv32f>& values) { to.insert(to.end(), values.begin(), values.end()); }

// Every exponent, all special values, and what lies around each boundary.
TEST_P(Convert, SinglesToBytes) {
    std::vector<Kuv32f> values;
    for (Kuv32u high = 0; high < 0x10000; ++high) {
        for (const Kuv32u low : {0u, 1u, 0x8000u, 0xFFFFu}) {
            const Kuv32u bits = high << 16 | low;
            values.push_back(load<Kuv32f>(&bits));
        }
    }
    for (int i = -4; i < 520; ++i) append(values, neighbours(i / 2.0, 4));
    const int callers = std::fegetround();
    for (const int mode : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        std::fesetround(mode);
        for (const int roundMode : {0, 1, 2, 3, -1, INT32_MIN}) {
            SCOPED_TRACE(testing::Message() << "the caller's rounding mode " << mode);
            expectValues<Kuv32f, Kuv8u>(rounding(roundMode), values);
        }
    }
    std::fesetround(callers);
}

// For blocks that hold one sample near a boundary, many, and none; in all of the caller's rounding modes.
TEST_P(Convert, RangesToBytes) {
    constexpr Kuv32f infinite = std::numeric_limits<Kuv32f>::infinity(), huge = std::numeric_limits<Kuv32f>::max();
    constexpr std::pair<Kuv32f, Kuv32f> ranges[] = {
        {0.0f, 255.0f}, {0.0f, 1.0f}, {-1.0f, 1.0f}, {0.0f, 65535.0f}, {0.0f, 1023.0f}, {16.0f, 235.0f}, {-0.1f, 0.7f}, {1000.0f, 1001.0f},
        {1e6f, 1e6f + 1.0f}, {99.99999f, 100.0f}, {-huge, huge}, {-1e-20f, 1e-20f}, {0.0f, 1e-45f}, {-1e-45f, 1e-45f}, {0.0f, 1e-37f},
        {0.0f, infinite}, {-infinite, 0.0f}, {-infinite, infinite}, {NAN, 1.0f}, {0.0f, NAN}, {3.0f, 1e30f}, {-5e4f, -2e4f}};
    const int callers = std::fegetround();
    for (const auto& [vMin, vMax] : ranges) {
        std::vector<Kuv32f> values;
        const double width = double{vMax} - double{vMin};
        for (int i = -3; i < 515; ++i) append(values, neighbours(vMin + width * i / 510.0, 3));
        for (int i = 0; i < 4000; ++i) {
            const double place = static_cast<double>(random_()) * 0x1p-64;
            values.push_back(static_cast<Kuv32f>(vMin + width * place));
            if (oneIn(random_, 50)) append(values, neighbours(vMin + width * (below(random_, 255) + 0.5) / 255.0, 1));
        }
        for (const Kuv32f special :
             {0.0f, -0.0f, infinite, -infinite, NAN, -NAN, huge, -huge, 1e-45f, -1e-45f, 3e9f, -3e9f, 1e20f, -1e20f}) {
            values.push_back(special);
            append(values, {vMin, vMax, vMin, vMax, vMin, vMax, vMin});
        }
        for (const int mode : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
            SCOPED_TRACE(testing::Message() << "the caller's rounding mode " << mode);
            std::fesetround(mode);
            expectValues<Kuv32f, Kuv8u>(toBytes(vMin, vMax), values);
            std::vector<Kuv8u> bytes(256);
            for (int i = 0; i < 256; ++i) bytes[static_cast<std::size_t>(i)] = static_cast<Kuv8u>(i);
            if (!std::isnan(width) && std::isfinite(width)) expectValues<Kuv8u, Kuv32f>(fromBytes(vMin, vMax), bytes);
        }
    }
    std::fesetround(callers);
}

TEST_P(Convert, Examples) {
    const auto converted = [](std::vector<Kuv32f> x, Kuv32s roundMode) {
        while (x.size() % 3 != 0) x.push_back(0.0f);
        std::vector<Kuv8u> result(x.size());
        EXPECT_EQ(kuviConvert_32f8u_C3R(x.data(), 1, result.data(), 1, {static_cast<Kuv32s>(x.size() / 3), 1}, roundMode), kuvStatusOk);
        return result;
    };
    using B = std::vector<Kuv8u>;
    constexpr Kuv32u aboveHalf = 0x3F000001, belowHalf = 0x3EFFFFFF;
    const Kuv32f above = load<Kuv32f>(&aboveHalf), below = load<Kuv32f>(&belowHalf);
    EXPECT_EQ(converted({0.5f, 1.5f, 2.5f, above, below, NAN}, 1), (B{0, 2, 2, 1, 0, 0}));
    EXPECT_EQ(converted({254.9f, 255.0f, -7.0f}, 0), (B{254, 255, 0}));
    EXPECT_EQ(converted({0.5f, 2.5f, below}, 2), (B{1, 3, 0}));
    for (const Kuv32s mode : {0, 1, 2}) {
        EXPECT_EQ(converted({-0.0f, -1.0f, -1e30f, INFINITY, -INFINITY, NAN}, mode), (B{0, 0, 0, 255, 0, 0}));
    }

    const Kuv32f halves[] = {128.5f, 129.5f, 255.5f};
    Kuv8u scaled[3];
    EXPECT_EQ(kuviScale_32f8u_C3R(halves, 1, scaled, 1, {1, 1}, 0.0f, 255.0f), kuvStatusOk);
    EXPECT_EQ((B{scaled, scaled + 3}), (B{128, 130, 255}));

    const Kuv16u words[] = {254, 255, 65535};
    Kuv8u bytes[3];
    EXPECT_EQ(kuviConvert_16u8u_C1R(words, 1, bytes, 1, {3, 1}), kuvStatusOk);
    EXPECT_EQ((B{bytes, bytes + 3}), (B{254, 255, 255}));

    const Kuv8u ends[] = {0, 255, 51};
    Kuv32f range[3];
    EXPECT_EQ(kuviScale_8u32f_C3R(ends, 1, range, 1, {1, 1}, -2.0f, 3.0f), kuvStatusOk);
    EXPECT_EQ(range[0], -2.0f);
    EXPECT_EQ(range[1], 3.0f);
    EXPECT_EQ(range[2], -1.0f);
}

// What is vMax and more comes before what is vMin and less.
TEST_P(Convert, RangeFromAnInfinityToItself) {
    for (const Kuv32f bound : {INFINITY, -INFINITY}) {
        for (const Kuv32f x : {INFINITY, 7.0f, -INFINITY}) {
            const std::vector<Kuv32f> src(3 * 40, x);
            std::vector<Kuv8u> dst(src.size(), 99);
            EXPECT_EQ(kuviScale_32f8u_C3R(src.data(), 480, dst.data(), 120, {40, 1}, bound, bound), kuvStatusOk);
            EXPECT_EQ(dst, std::vector<Kuv8u>(src.size(), x >= bound ? 255 : 0)) << bound << ", " << x;
        }
    }
}

TEST_P(Convert, EmptyRangeComesFirst) {
    for (const auto& [vMin, vMax] : {std::pair{1.0f, 1.0f}, {1.0f, 0.5f}, {0.0f, -0.0f}, {INFINITY, -INFINITY}, {1.0f, -INFINITY}}) {
        EXPECT_EQ(kuviScale_8u32f_C3R(nullptr, 0, nullptr, 0, {0, 0}, vMin, vMax), kuvStatusEmptyRange);
        EXPECT_EQ(kuviScale_32f8u_C3R(nullptr, 0, nullptr, 0, {0, 0}, vMin, vMax), kuvStatusEmptyRange);
    }
    for (const auto& [vMin, vMax] : {std::pair{NAN, 1.0f}, {1.0f, NAN}, {INFINITY, INFINITY}, {0.0f, 1e-45f}}) {
        EXPECT_EQ(kuviScale_8u32f_C3R(nullptr, 1, nullptr, 1, {1, 1}, vMin, vMax), kuvStatusNullPtr);
        EXPECT_EQ(kuviScale_32f8u_C3R(nullptr, 1, nullptr, 1, {1, 1}, vMin, vMax), kuvStatusNullPtr);
    }
}

TEST_P(Convert, WidthComesFirstInOneFunction) {
    EXPECT_EQ(kuviConvert_8u32f_C3R(nullptr, 0, nullptr, 0, {0, 1}), kuvStatusBadSize);
    EXPECT_EQ(kuviConvert_8u32f_C3R(nullptr, 0, nullptr, 0, {1, 0}), kuvStatusNullPtr);
    EXPECT_EQ(kuviConvert_8u32f_C1R(nullptr, 0, nullptr, 0, {0, 1}), kuvStatusNullPtr);
}

TEST_P(Convert, RowsFurtherApartThan32BitsTell) {
    constexpr std::ptrdiff_t step = 0x7FFFFFF1;
    const DistantMemory from(3 * static_cast<std::size_t>(step)), to(3 * static_cast<std::size_t>(step));
    KUV_NEEDS(from);
    KUV_NEEDS(to);
    for (const Conversion& each : conversions()) {
        constexpr int width = 41;
        const int samples = width * each.channels;
        for (int r = 0; r < 3; ++r) {
            for (int i = 0; i < samples * each.srcBytes; ++i) from.memory()[step * r + i] = static_cast<char>(random_());
        }
        EXPECT_EQ(watched([&] { return each.call(from.memory(), step, to.memory(), step, {width, 3}); }), kuvStatusOk);
        for (int r = 0; r < 3; ++r) {
            for (int i = 0; i < samples; ++i) {
                char wanted[4] = {};
                each.single(from.memory() + step * r + i * each.srcBytes, wanted);
                EXPECT_EQ(std::memcmp(to.memory() + step * r + i * each.dstBytes, wanted, static_cast<std::size_t>(each.dstBytes)), 0)
                    << each.name;
            }
        }
    }
}

// One run of more samples than 31 bits tell, streamed and not.
TEST_P(Convert, MoreThan2G) {
    if (sanitized) GTEST_SKIP() << "the sanitizer takes minutes for it";
    constexpr KuviSize size = {26880, 26880};
    constexpr std::size_t samples = std::size_t{3} * size.width * size.height, few = LongRun::pageBytes;
    const AliasedMemory bytes(samples), singles(4 * samples);
    KUV_NEEDS(bytes);
    KUV_NEEDS(singles);
    auto* const reals = reinterpret_cast<Kuv32f*>(singles.memory());
    for (const KuvStatus status : {kuvStatusOk, kuvStatusNoCpuid}) {
        const PresetCache cache(status, 0x1000);
        {
            for (const std::size_t from : {std::size_t{0}, samples - few}) {
                for (std::size_t i = from; i < from + few; ++i) bytes.memory()[i] = static_cast<unsigned char>(i % 251);
            }
            LongRun run(singles, size, 12);
            run.want<Kuv32f>([&](Kuv32f, std::size_t i) { return static_cast<Kuv32f>(bytes.memory()[i]); });
            EXPECT_EQ(watched([&] { return kuviConvert_8u32f_C3R(bytes.memory(), 3 * size.width, reals, run.step(), size); }), kuvStatusOk);
            EXPECT_TRUE(run.isAsWanted());
        }
        for (const std::size_t from : {std::size_t{0}, samples - few}) {
            for (std::size_t i = from; i < from + few; ++i) reals[i] = static_cast<Kuv32f>(i % 241);
        }
        LongRun run(bytes, size, 3);
        run.want<Kuv8u>([&](Kuv8u, std::size_t i) { return reals[i]; });
        EXPECT_EQ(watched([&] { return kuviConvert_32f8u_C3R(reals, 12 * size.width, bytes.memory(), run.step(), size, 1); }), kuvStatusOk);
        EXPECT_TRUE(run.isAsWanted());
    }
}

}  // namespace
