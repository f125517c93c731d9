// Sums, means and standard deviations.
#include <algorithm>
#include <cfenv>
#include <cmath>
#include <functional>
#include <limits>
#include <vector>

#include "support/aliased.hpp"
#include "support/distant.hpp"
#include "support/results.hpp"
#include "support/statuses.hpp"

namespace {

using namespace kuvtest;

// (step class B, in whole elements)
template <class T, int channelCount>
struct WholeSteps {
    std::tuple<const T*, Kuv32s> operator()(Draw& draw) const {
        const int elements = draw.size.width * channelCount;
        const std::ptrdiff_t step = (elements + below(draw.random, 20)) * static_cast<std::ptrdiff_t>(sizeof(T));
        const Image& image = draw.image<T>(Role::source, elements, draw.size.height, step);
        return {image.row<T>(), image.step()};
    }
};
struct Hint {
    std::tuple<Kuv32s> operator()(Draw& draw) const { return {between(draw.random, -1, 4)}; }
};
struct ChannelOfInterest {
    std::tuple<Kuv32s> operator()(Draw& draw) const { return {between(draw.random, 1, 3)}; }
};

KUV_AGREES_FROM(w7, kuviSum_32f_C1R, Source<Kuv32f>{}, RoiSize{}, Results<Kuv64f>{}, Hint{});
KUV_CHECKS(kuviSum_32f_C1R, call(Source<Kuv32f>{}, RoiSize{}, Results<Kuv64f>{}, Hint{}), check(kuvStatusNullPtr, null<0>(), null<3>()),
           badSize<2>());
KUV_AGREES_FROM(w7, kuviMean_32f_C1R, Source<Kuv32f>{}, RoiSize{}, Results<Kuv64f>{}, Hint{});
KUV_CHECKS(kuviMean_32f_C1R, call(Source<Kuv32f>{}, RoiSize{}, Results<Kuv64f>{}, Hint{}), check(kuvStatusNullPtr, null<0>(), null<3>()),
           badSize<2>());

#define CHECKS_OF_MEAN(function, T, channelCount)                                                                           \
    KUV_AGREES(function, Source<T>{.channels = channelCount}, RoiSize{}, Results<Kuv64f, channelCount>{});                  \
    KUV_CHECKS(function, call(Source<T>{.channels = channelCount}, RoiSize{}, Results<Kuv64f, channelCount>{}),             \
               check(kuvStatusNullPtr, null<0>(), null<3>()), badSize<2>())
CHECKS_OF_MEAN(kuviMean_16s_C1R, Kuv16s, 1);
CHECKS_OF_MEAN(kuviMean_8u_C3R, Kuv8u, 3);

#define CHECKS_OF_DEVIATION(function, T, ...)                                                                               \
    KUV_AGREES(function, WholeSteps<T, 1>{}, RoiSize{}, OptionalResult<Kuv64f>{}, OptionalResult<Kuv64f>{});                \
    KUV_CHECKS(function, call(WholeSteps<T, 1>{}, RoiSize{}, OptionalResult<Kuv64f>{}, OptionalResult<Kuv64f>{}),           \
               check(kuvStatusNullPtr, null<0>()), badSize<2>(), badStep<1>() __VA_OPT__(, ) __VA_ARGS__)
CHECKS_OF_DEVIATION(kuviMean_StdDev_8u_C1R, Kuv8u);
CHECKS_OF_DEVIATION(kuviMean_StdDev_16u_C1R, Kuv16u, check(kuvStatusStepNotMultiple, set<1>(100001), set<1>(INT32_MAX)));
CHECKS_OF_DEVIATION(kuviMean_StdDev_32f_C1R, Kuv32f,
                    check(kuvStatusStepNotMultiple, set<1>(100001), set<1>(100002), set<1>(100003), set<1>(INT32_MAX)));
KUV_AGREES(kuviMean_StdDev_8u_C3CR, WholeSteps<Kuv8u, 3>{}, RoiSize{}, ChannelOfInterest{}, OptionalResult<Kuv64f>{},
           OptionalResult<Kuv64f>{});
KUV_CHECKS(kuviMean_StdDev_8u_C3CR,
           call(WholeSteps<Kuv8u, 3>{}, RoiSize{}, ChannelOfInterest{}, OptionalResult<Kuv64f>{}, OptionalResult<Kuv64f>{}),
           check(kuvStatusNullPtr, null<0>()), badSize<2>(), badStep<1>(),
           check(kuvStatusBadChannelOfInterest, set<3>(0), set<3>(4), set<3>(-1), set<3>(INT32_MIN), set<3>(INT32_MAX)));

// The formulae of the header, one sample after the other.
struct Region {
    const unsigned char* first;
    std::ptrdiff_t step;
    KuviSize size;

    template <class T>
    T at(int x, int y) const {
        return load<T>(first + y * step, x);
    }
    std::int64_t count() const { return std::int64_t{size.width} * size.height; }
};

// Column x goes to sum x mod `count`; these are added by halves.
template <class T>
T lanesAdded(std::vector<T> sums) {
    for (std::size_t half = sums.size() / 2; half > 0; half /= 2) {
        for (std::size_t j = 0; j < half; ++j) sums[j] += sums[j + half];
    }
    return sums[0];
}
Kuv64f laneSum(const Region& region, int count, const std::function<Kuv64f(Kuv64f)>& term) {
    std::vector<Kuv64f> sums(static_cast<std::size_t>(count), 0.0);
    for (int y = 0; y < region.size.height; ++y) {
        for (int x = 0; x < region.size.width; ++x) sums[static_cast<std::size_t>(x % count)] += term(region.at<Kuv32f>(x, y));
    }
    return lanesAdded(sums);
}
Kuv64f itself(Kuv64f x) { return x; }

Kuv64f realSum(const Region& region, const Variant& variant, Kuv32s hint) {
    if (variant.isPx()) return laneSum(region, 2, itself);
    if (hint == 2) return laneSum(region, 16, itself);
    Kuv64f all = 0;
    for (int y = 0; y < region.size.height; ++y) {
        std::vector<Kuv32f> sums(16, 0.0f);
        for (int x = 0; x < region.size.width; ++x) sums[static_cast<std::size_t>(x % 16)] += region.at<Kuv32f>(x, y);
        all += lanesAdded(sums);
    }
    return all;
}

using Wanted = Kuv64f[3];

template <Kuv32s hint>
void wantSum(const Region& region, const Variant& variant, Wanted& wanted) {
    wanted[0] = realSum(region, variant, hint);
}
template <Kuv32s hint>
void wantMean(const Region& region, const Variant& variant, Wanted& wanted) {
    wanted[0] = realSum(region, variant, hint) / static_cast<Kuv32s>(static_cast<Kuv32u>(region.count()));
}
void wantSignedMean(const Region& region, const Variant&, Wanted& wanted) {
    Kuv64s sum = 0;
    for (int y = 0; y < region.size.height; ++y) {
        for (int x = 0; x < region.size.width; ++x) sum += region.at<Kuv16s>(x, y);
    }
    wanted[0] = static_cast<Kuv64f>(sum) / static_cast<Kuv64f>(region.count());
}
void wantThreeMeans(const Region& region, const Variant&, Wanted& wanted) {
    Kuv64u sums[3] = {0, 0, 0};
    for (int y = 0; y < region.size.height; ++y) {
        for (int x = 0; x < 3 * region.size.width; ++x) sums[x % 3] += region.at<Kuv8u>(x, y);
    }
    const Kuv64f reciprocal = 1.0 / static_cast<Kuv64f>(region.count());
    for (int c = 0; c < 3; ++c) wanted[c] = static_cast<Kuv64f>(sums[c]) * reciprocal;
}
void fromMoments(Kuv64f sum, Kuv64f squares, Kuv64f n, Wanted& wanted) {
    wanted[0] = sum / n;
    const Kuv64f square = wanted[0] * wanted[0];
    wanted[1] = std::sqrt(std::fabs(squares / n - square));
}
template <class T, int channels = 1, int channel = 0>
void wantDeviation(const Region& region, const Variant&, Wanted& wanted) {
    Kuv64u sum = 0, squares = 0;
    for (int y = 0; y < region.size.height; ++y) {
        for (int x = 0; x < region.size.width; ++x) {
            const Kuv64u sample = region.at<T>(channels * x + channel, y);
            sum += sample;
            squares += sample * sample;
        }
    }
    fromMoments(static_cast<Kuv64f>(sum), static_cast<Kuv64f>(squares), static_cast<Kuv64f>(region.count()), wanted);
}
void firstPass(const Region& region, Wanted& wanted) {
    const auto square = [](Kuv64f x) { return x * x; };
    fromMoments(laneSum(region, 8, itself), laneSum(region, 8, square), static_cast<Kuv64f>(region.count()), wanted);
}
void wantRealDeviation(const Region& region, const Variant&, Wanted& wanted) {
    firstPass(region, wanted);
    const Kuv64f mean = wanted[0], square = wanted[1] * wanted[1], limit = 0.05 * mean;
    if (!(square < limit * mean)) return;
    const auto distance = [mean](Kuv64f x) { return (x - mean) * (x - mean); };
    wanted[1] = std::sqrt(laneSum(region, 8, distance) / static_cast<Kuv64f>(region.count()));
}

struct Form {
    const char* name;
    int sampleBytes, channels, results;
    bool checksSteps;
    KuvStatus (*call)(const void* src, Kuv32s srcStep, KuviSize size, Kuv64f* to);
    void (*want)(const Region& region, const Variant& variant, Wanted& wanted);

    int pixelBytes() const { return sampleBytes * channels; }
    bool isReal() const { return sampleBytes == 4; }
};

#define FORM(name, T, channels, results, checksSteps, want, ...)                                               \
    {name, sizeof(T), channels, results, checksSteps,                                                          \
     [](const void* src, Kuv32s srcStep, KuviSize size, Kuv64f* to) {                                          \
         const T* const samples = static_cast<const T*>(src);                                                  \
         return __VA_ARGS__;                                                                                   \
     },                                                                                                        \
     want}
const Form forms[] = {
    FORM("sum, fast", Kuv32f, 1, 1, false, wantSum<0>, kuviSum_32f_C1R(samples, srcStep, size, to, 0)),
    FORM("sum, accurate", Kuv32f, 1, 1, false, wantSum<2>, kuviSum_32f_C1R(samples, srcStep, size, to, 2)),
    FORM("mean, fast", Kuv32f, 1, 1, false, wantMean<1>, kuviMean_32f_C1R(samples, srcStep, size, to, 1)),
    FORM("mean, accurate", Kuv32f, 1, 1, false, wantMean<2>, kuviMean_32f_C1R(samples, srcStep, size, to, 2)),
    FORM("mean, 16s", Kuv16s, 1, 1, false, wantSignedMean, kuviMean_16s_C1R(samples, srcStep, size, to)),
    FORM("means, 8u C3", Kuv8u, 3, 3, false, wantThreeMeans, kuviMean_8u_C3R(samples, srcStep, size, to)),
    FORM("deviation, 8u", Kuv8u, 1, 2, true, wantDeviation<Kuv8u>, kuviMean_StdDev_8u_C1R(samples, srcStep, size, to, to + 1)),
    FORM("deviation, 16u", Kuv16u, 1, 2, true, wantDeviation<Kuv16u>, kuviMean_StdDev_16u_C1R(samples, srcStep, size, to, to + 1)),
    FORM("deviation, 32f", Kuv32f, 1, 2, true, wantRealDeviation, kuviMean_StdDev_32f_C1R(samples, srcStep, size, to, to + 1)),
    FORM("deviation, 8u C3, 1", Kuv8u, 3, 2, true, (wantDeviation<Kuv8u, 3, 0>),
         kuviMean_StdDev_8u_C3CR(samples, srcStep, size, 1, to, to + 1)),
    FORM("deviation, 8u C3, 2", Kuv8u, 3, 2, true, (wantDeviation<Kuv8u, 3, 1>),
         kuviMean_StdDev_8u_C3CR(samples, srcStep, size, 2, to, to + 1)),
    FORM("deviation, 8u C3, 3", Kuv8u, 3, 2, true, (wantDeviation<Kuv8u, 3, 2>),
         kuviMean_StdDev_8u_C3CR(samples, srcStep, size, 3, to, to + 1))};

class Moments : public VariantTest {
protected:
    // The results stand against the same side of a page as the samples, which are random ones unless `fill` tells sample i of row r.
    template <class Fill>
    void expectMoments(const Form& form, KuviSize size, std::ptrdiff_t step, Guard guard, int gap, Fill fill) {
        const Image src("src", {size.width * form.pixelBytes(), size.height, step, guard, gap, form.sampleBytes}, random_());
        for (int r = 0; r < size.height; ++r) {
            for (int i = 0; i < size.width * form.channels; ++i) {
                const auto value = fill(i, r);
                if (form.isReal()) store(src.row(r), i, static_cast<Kuv32f>(value));
                else if (form.sampleBytes == 2) store(src.row(r), i, static_cast<Kuv16u>(static_cast<Kuv64s>(value)));
                else store(src.row(r), i, static_cast<Kuv8u>(static_cast<Kuv64s>(value)));
            }
        }
        expectMoments(form, src, size, guard);
    }
    void expectMoments(const Form& form, const Image& src, KuviSize size, Guard guard) {
        const Image to("results", {8 * form.results, 1, 0, guard, 0, 8}, random_());
        const Bytes srcBefore = src.bytes(), toBefore = to.bytes();
        Wanted wanted;
        form.want({src.row(), src.step(), size}, GetParam(), wanted);
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << form.name << ", " << size.width << " x " << size.height << ", "
                                        << src.geometry());
        EXPECT_EQ(watched([&] { return form.call(src.row(), src.step(), size, to.row<Kuv64f>()); }), kuvStatusOk);
        for (int i = 0; i < form.results; ++i) {
            EXPECT_TRUE(sameOrBothNaN<Kuv64f>(to.row<Kuv64f>() + i, wanted + i))
                << "result " << i << ": got " << load<Kuv64f>(to.row(), i) << ", wanted " << wanted[i];
        }
        EXPECT_EQ(src.difference(srcBefore), "");
        EXPECT_EQ(to.strayWrite(toBefore), "");
    }
    // Of integers any bits, of single precision numbers of some size.
    auto anySample(const Form& form) {
        return [this, real = form.isReal()](int, int) {
            return real ? static_cast<Kuv64f>(between(random_, -1000000, 1000000)) / 1024 : static_cast<Kuv64f>(random_() % 65536);
        };
    }
    int tight(const Form& form, int width) { return width * form.pixelBytes(); }

    Random random_{1};
};

KUV_FOR_EACH_VARIANT(Moments);

TEST_P(Moments, EveryWidth) {
    for (const Form& form : forms) {
        for (int width = 1; width <= 700 && !HasFailure(); width += width < 140 ? 1 : 37) {
            for (const Guard guard : {Guard::end, Guard::begin}) {
                expectMoments(form, {width, 1}, tight(form, width), guard, 0, anySample(form));
                expectMoments(form, {width, 3}, tight(form, width) + 4 * below(random_, 3), guard, 0, anySample(form));
            }
        }
    }
}

TEST_P(Moments, EveryAlignment) {
    for (const Form& form : forms) {
        for (int gap = 0; gap <= 64 && !HasFailure(); ++gap) {
            for (const int width : {7, 40, 131}) {
                expectMoments(form, {width, 2}, tight(form, width) + 8, Guard::begin, gap, anySample(form));
                expectMoments(form, {width, 2}, tight(form, width) + 8, Guard::end, gap, anySample(form));
            }
        }
    }
}

TEST_P(Moments, AnyStep) {
    for (const Form& form : forms) {
        for (const int width : {1, 5, 33, 200}) {
            const int row = tight(form, width);
            for (const int step : {0, 1, -1, row - 1, row + 1, -row, -row - 3, row / 2, 1001, -1001, 4 * row, row + 4}) {
                if (form.checksSteps && (step < row || step % form.sampleBytes != 0)) continue;
                for (const Guard guard : {Guard::end, Guard::begin}) {
                    const Image src("src", {row, 5, step, guard, 0, form.sampleBytes}, random_());
                    expectMoments(form, src, {width, 5}, guard);
                }
            }
        }
    }
}

TEST_P(Moments, ExtremePatterns) {
    const Kuv64f values[] = {0, 1, 127, 128, 255, 32767, 32768, 65535};
    for (const Form& form : forms) {
        for (const Kuv64f a : values) {
            for (const Kuv64f b : values) {
                for (const int width : {1, 2, 31, 300}) {
                    const auto alternating = [&](int i, int r) { return (i + r) % 2 == 0 ? a : b; };
                    const auto steep = [&](int i, int r) { return i + 2 < 3 * width / 2 + r ? a : b; };
                    expectMoments(form, {width, 2}, tight(form, width), Guard::end, 0, alternating);
                    expectMoments(form, {width, 2}, tight(form, width), Guard::begin, 0, steep);
                }
            }
        }
        if (HasFailure()) return;
    }
}

// Rows in which each accumulator of 32 bits would overflow many times, sums beyond them, and blocks flushed at their limits.
TEST_P(Moments, LongRows) {
    for (const Form& form : forms) {
        if (form.isReal()) continue;
        for (const int width : {65535, 65536, 65537, 262143, 264192, 524272, 524273, 524288, 1048545, 1200007}) {
            for (const Kuv64f value : {0.0, 255.0, 32768.0, 65535.0}) {
                if (form.sampleBytes == 1 && value > 255) continue;
                expectMoments(form, {width, 1}, tight(form, width), Guard::end, 0, [value](int, int) { return value; });
            }
            if (HasFailure()) return;
        }
    }
}

TEST_P(Moments, RowsOfMoreThan31Bits) {
    const Form& form = *std::find_if(std::begin(forms), std::end(forms), [](const Form& each) { return each.results == 3; });
    const int width = 8500000;  // times 255
    expectMoments(form, {width, 2}, 3 * width + 1, Guard::end, 0, [](int i, int) { return i % 3 == 1 ? 254 : 255; });
}

TEST_P(Moments, SpecialValues) {
    const Kuv32f infinity = std::numeric_limits<Kuv32f>::infinity(), largest = std::numeric_limits<Kuv32f>::max();
    const Kuv32f values[] = {std::numeric_limits<Kuv32f>::quiet_NaN(), infinity, -infinity, largest, -largest,
                             std::numeric_limits<Kuv32f>::denorm_min(), -0.0f};
    for (const Form& form : forms) {
        if (!form.isReal()) continue;
        for (const Kuv32f value : values) {
            for (int place = 0; place < 45; ++place) {
                const auto one = [&](int i, int r) { return i == place && r == 1 ? value : 0.5f; };
                const auto others = [&](int i, int r) { return i == place && r == 0 ? -1.0f : value; };
                expectMoments(form, {45, 2}, 45 * 4, Guard::end, 0, one);
                expectMoments(form, {45, 2}, 45 * 4, Guard::end, 0, others);
            }
        }
    }
}

TEST_P(Moments, RoundingModes) {
    const int callers = std::fegetround();
    for (const int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        for (const Form& form : forms) {
            for (const int width : {1, 19, 64, 203}) {
                std::fesetround(mode);
                expectMoments(form, {width, 3}, tight(form, width), Guard::end, 0, anySample(form));
                std::fesetround(callers);
            }
        }
    }
}

TEST_P(Moments, OnePixel) {
    for (const Form& form : forms) {
        if (form.results != 2) continue;
        const Image src("src", {form.pixelBytes(), 1, 4, Guard::end, 0, form.sampleBytes}, 1);
        for (int c = 0; c < form.channels; ++c) {
            if (form.isReal()) store(src.row(), c, 1234567.5f);
            else if (form.sampleBytes == 2) store(src.row(), c, Kuv16u{51234});
            else src.row()[c] = 201;
        }
        Kuv64f results[2] = {-1, -1};
        EXPECT_EQ(form.call(src.row(), 4, {1, 1}, results), kuvStatusOk);
        EXPECT_EQ(results[0], form.isReal() ? 1234567.5 : form.sampleBytes == 2 ? 51234 : 201) << form.name;
        EXPECT_EQ(results[1], 0) << form.name;
    }
}

// The difference of the first pass is all rounding here.
TEST_P(Moments, ConstantRealsHaveNoDeviation) {
    int lost = 0;
    for (const Kuv32f value : {1e6f / 3, 16777213.0f, 1e10f, -7.7777f, 1.1e-20f, 3e30f}) {
        for (const KuviSize size : {KuviSize{100, 30}, {333, 7}, {3, 1}, {77, 13}}) {
            std::vector<Kuv32f> samples(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height), value);
            Wanted cheap;
            firstPass({reinterpret_cast<const unsigned char*>(samples.data()), size.width * 4, size}, cheap);
            lost += cheap[1] != 0;
            Kuv64f mean, deviation;
            EXPECT_EQ(kuviMean_StdDev_32f_C1R(samples.data(), size.width * 4, size, &mean, &deviation), kuvStatusOk);
            EXPECT_EQ(mean, value);
            EXPECT_EQ(deviation, 0);
        }
    }
    EXPECT_GT(lost, 0);
}

// Both sides of the test for the second pass.
TEST_P(Moments, SecondPass) {
    const Form& form =
        *std::find_if(std::begin(forms), std::end(forms), [](const Form& each) { return each.isReal() && each.results == 2; });
    int second = 0, cases = 0;
    for (Kuv32f amplitude = 0.05f; amplitude < 0.6f; amplitude += 0.001f, ++cases) {
        const auto wave = [&](int i, int r) {
            return 1 + ((i + r) % 2 == 0 ? amplitude : -amplitude) + static_cast<Kuv32f>(i % 7) * 1e-5f;
        };
        const Image src("src", {64 * 4, 2, 64 * 4, Guard::end, 0, 4}, 1);
        for (int r = 0; r < 2; ++r) {
            for (int i = 0; i < 64; ++i) store(src.row(r), i, wave(i, r));
        }
        Wanted cheap;
        firstPass({src.row(), src.step(), {64, 2}}, cheap);
        second += cheap[1] * cheap[1] < 0.05 * cheap[0] * cheap[0];
        expectMoments(form, src, {64, 2}, Guard::end);
    }
    EXPECT_GT(second, 0);
    EXPECT_LT(second, cases);
}

TEST_P(Moments, OptionalResults) {
    for (const Form& form : forms) {
        if (form.results != 2) continue;
        const Image src("src", {64 * form.pixelBytes(), 2, 64 * form.pixelBytes(), Guard::end, 0, form.sampleBytes}, 1);
        const auto call = [&](Kuv64f* mean, Kuv64f* deviation) {
            const KuviSize size = {64, 2};
            const auto* const words = src.row<const Kuv16u>();
            if (form.isReal()) return kuviMean_StdDev_32f_C1R(src.row<const Kuv32f>(), src.step(), size, mean, deviation);
            if (form.sampleBytes == 2) return kuviMean_StdDev_16u_C1R(words, src.step(), size, mean, deviation);
            if (form.channels == 3) return kuviMean_StdDev_8u_C3CR(src.row(), src.step(), size, 2, mean, deviation);
            return kuviMean_StdDev_8u_C1R(src.row(), src.step(), size, mean, deviation);
        };
        Kuv64f both[2], mean = -1, deviation = -1;
        EXPECT_EQ(watched([&] { return call(both, both + 1); }), kuvStatusOk);
        EXPECT_EQ(watched([&] { return call(&mean, nullptr); }), kuvStatusOk);
        EXPECT_EQ(watched([&] { return call(nullptr, &deviation); }), kuvStatusOk);
        EXPECT_EQ(watched([&] { return call(nullptr, nullptr); }), kuvStatusOk);
        EXPECT_TRUE(sameOrBothNaN<Kuv64f>(&mean, both)) << form.name;
        EXPECT_TRUE(sameOrBothNaN<Kuv64f>(&deviation, both + 1)) << form.name;
    }
}

// The exact limit of the steps, and a row whose bytes need more than 32 bits.
TEST_P(Moments, StepLimits) {
    for (const Form& form : forms) {
        if (!form.checksSteps) continue;
        alignas(8) unsigned char samples[64] = {};
        Kuv64f to[2] = {-1, -1};
        const int row = 3 * form.pixelBytes();
        EXPECT_EQ(form.call(samples, row, {3, 1}, to), kuvStatusOk) << form.name;
        to[0] = to[1] = -1;
        EXPECT_EQ(form.call(samples, row - 1, {3, 1}, to), kuvStatusBadStep) << form.name;
        // A row of 2^32 + 4 bytes, where a pixel has 4.
        for (const Kuv32s width : {INT32_MAX, (1 << 30) + 1}) {
            EXPECT_EQ(form.call(samples, row, {width, 1}, to), kuvStatusBadStep) << form.name;
        }
        for (int odd = 1; odd < form.sampleBytes; ++odd) {
            EXPECT_EQ(form.call(samples, row + odd, {3, 1}, to), kuvStatusStepNotMultiple) << form.name;
        }
        EXPECT_EQ(to[0], -1);
        EXPECT_EQ(to[1], -1);
    }
}

// One row again and again, more samples than signed 32 bits count. px takes seconds for each, and its divisions are the others'.
TEST_P(Moments, MoreSamplesThan32BitsCount) {
    if (sanitized) GTEST_SKIP() << "the sanitizer takes minutes for it";
    std::vector<Kuv16s> words(65536, Kuv16s{-32768});
    words[5] = -32767;
    Kuv64f mean;
    EXPECT_EQ(kuviMean_16s_C1R(words.data(), 0, {65536, 32769}, &mean), kuvStatusOk);
    EXPECT_EQ(mean, -32768 + 1.0 / 65536);
    if (GetParam().isPx()) return;
    std::vector<Kuv8u> pixels(3 * 65536, Kuv8u{255});
    Kuv64f means[3];
    EXPECT_EQ(kuviMean_8u_C3R(pixels.data(), 0, {65536, 32768}, means), kuvStatusOk);
    for (const Kuv64f each : means) EXPECT_EQ(each, 255);
    const std::vector<Kuv32f> reals(65536, 0.5f);
    EXPECT_EQ(kuviMean_32f_C1R(reals.data(), 0, {65536, 32768}, &mean, 0), kuvStatusOk);
    EXPECT_EQ(mean, -0.5);
}

TEST_P(Moments, RowsFurtherApartThan32BitsTell) {
    constexpr std::ptrdiff_t step = 0x7FFFFFF0;
    const DistantMemory memory(3 * static_cast<std::size_t>(step));
    KUV_NEEDS(memory);
    for (const Form& form : forms) {
        constexpr KuviSize size = {41, 3};
        for (const bool upward : {false, true}) {
            if (upward && form.checksSteps) continue;
            const std::ptrdiff_t signedStep = upward ? -step : step;
            unsigned char* const first = reinterpret_cast<unsigned char*>(memory.memory()) + (upward ? 2 * step : 0);
            const auto sample = anySample(form);
            for (int r = 0; r < size.height; ++r) {
                for (int i = 0; i < size.width * form.channels; ++i) {
                    unsigned char* const row = first + signedStep * r;
                    if (form.isReal()) store(row, i, static_cast<Kuv32f>(sample(i, r)));
                    else if (form.sampleBytes == 2) store(row, i, static_cast<Kuv16u>(sample(i, r)));
                    else store(row, i, static_cast<Kuv8u>(static_cast<int>(sample(i, r))));
                }
            }
            Wanted wanted;
            form.want({first, signedStep, size}, GetParam(), wanted);
            Kuv64f got[3];
            EXPECT_EQ(watched([&] { return form.call(first, static_cast<Kuv32s>(signedStep), size, got); }), kuvStatusOk);
            for (int i = 0; i < form.results; ++i) {
                EXPECT_EQ(got[i], wanted[i]) << form.name << ", result " << i << (upward ? ", upward" : "");
            }
        }
    }
}

TEST_P(Moments, HugeImages) {
    if (sanitized) GTEST_SKIP() << "the sanitizer takes minutes for it";
    const AliasedMemory memory(std::size_t{1} << 32);
    KUV_NEEDS(memory);
    std::fill(memory.memory(), memory.memory() + AliasedMemory::period, Kuv8u{3});
    Kuv64f mean, deviation;
    EXPECT_EQ(kuviMean_StdDev_8u_C1R(memory.memory(), 65536, {65536, 32769}, &mean, &deviation), kuvStatusOk);
    EXPECT_EQ(mean, 3);
    EXPECT_EQ(deviation, 0);
    if (GetParam().isPx()) return;  // seconds for each
    // Their number is 0 in 32 bits.
    EXPECT_EQ(kuviMean_StdDev_8u_C1R(memory.memory(), 65536, {65536, 65536}, &mean, &deviation), kuvStatusOk);
    EXPECT_EQ(mean, 0);
    EXPECT_EQ(deviation, 0);
    const auto* const words = reinterpret_cast<const Kuv16u*>(memory.memory());
    EXPECT_EQ(kuviMean_StdDev_16u_C1R(words, 65536, {32768, 65536}, &mean, nullptr), kuvStatusOk);
    EXPECT_EQ(mean, 0x303);
}

}  // namespace
