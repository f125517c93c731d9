// Histograms of images.
#include <limits>
#include <memory>

#include "support/aliased.hpp"
#include "support/distant.hpp"
#include "support/statuses.hpp"
#include "support/histogram_reference.hpp"

namespace {

using namespace kuvtest;

struct Form {
    const char* name;
    Kuv32s type;
    int sampleBytes, channels;
    KuvStatus (*call)(const void* src, Kuv32s srcStep, KuviSize size, Kuv32u* const* hist, const KuviBinPlan* spec, Kuv8u* buffer);

    int pixelBytes() const { return sampleBytes * channels; }
    constexpr bool isReal() const { return type == kuvDataType32f; }
    int bufferBytes() const { return isReal() ? 0 : channels * (4 << 8 * sampleBytes); }
    double lowest() const { return type == kuvDataType16s ? -32768 : 0; }
    double values() const { return sampleBytes == 1 ? 256 : 65536; }
};

#define FORM(function, T, type, channels, results)                                                                           \
    {#function, type, sizeof(T), channels,                                                                                   \
     [](const void* src, Kuv32s srcStep, KuviSize size, Kuv32u* const* hist, const KuviBinPlan* spec, Kuv8u* buffer) {       \
         return function(static_cast<const T*>(src), srcStep, size, results, spec, buffer);                                  \
     }}
constexpr Form forms[] = {
    FORM(kuviHistogram_8u_C1R, Kuv8u, kuvDataType8u, 1, *hist),    FORM(kuviHistogram_8u_C3R, Kuv8u, kuvDataType8u, 3, hist),
    FORM(kuviHistogram_8u_C4R, Kuv8u, kuvDataType8u, 4, hist),     FORM(kuviHistogram_16u_C1R, Kuv16u, kuvDataType16u, 1, *hist),
    FORM(kuviHistogram_16u_C4R, Kuv16u, kuvDataType16u, 4, hist),  FORM(kuviHistogram_16s_C1R, Kuv16s, kuvDataType16s, 1, *hist),
    FORM(kuviHistogram_32f_C1R, Kuv32f, kuvDataType32f, 1, *hist)};
constexpr const Form& bytes1 = forms[0];
constexpr const Form& words1 = forms[3];
constexpr const Form& words4 = forms[4];
constexpr const Form& signed1 = forms[5];
constexpr const Form& reals = forms[6];

// One width of bins or many; over all samples, some of them, or none.
Levels drawLevels(Random& random, const Form& form, bool uniform, bool real) {
    const int most = oneIn(random, 5) ? 700 : oneIn(random, 2) ? 120 : 6;
    const int count = between(random, 2, most);
    const double lowest = real ? -1000 : form.lowest(), range = real ? 2000 : form.values();
    const auto place = [&] { return lowest + range * (below(random, 1201) - 100) / 1000.0; };
    if (uniform) {
        const double a = oneIn(random, 2) ? std::floor(place()) : place();
        const double width = oneIn(random, 2) ? between(random, 1, 40) * (count - 1) : range * between(random, 1, 1000) / 1000;
        return {static_cast<float>(a), static_cast<float>(a + width), count};
    }
    std::vector<float> list;
    for (int i = 0; i < count; ++i) list.push_back(static_cast<float>(place()) + static_cast<float>(below(random, 1000)) / 1024);
    std::sort(list.begin(), list.end());
    list.erase(std::unique(list.begin(), list.end()), list.end());
    if (list.size() < 2) list.push_back(list[0] + 5);
    return freeLevels(list);
}
PlanSource drawPlan(Random& random, const Form& form, int channels) {
    const bool uniform = oneIn(random, 2);
    PlanSource source = {form.type, {}};
    for (int c = 0; c < channels; ++c) source.channels.push_back(drawLevels(random, form, uniform, form.isReal()));
    return source;
}

// (src, srcStep), with no step for which h9 has a rule of its own.
template <class T, int channels>
struct Samples {
    std::tuple<const T*, Kuv32s> operator()(Draw& draw) const {
        const int elements = draw.size.width * channels;
        std::ptrdiff_t step = drawStep(draw.random, StepClass::B, elements * static_cast<int>(sizeof(T)));
        if (step >> 4 == draw.size.width) step += 16;
        const Image& image = draw.image<T>(Role::source, elements, draw.size.height, step);
        return {image.row<T>(), image.step()};
    }
};

// Of any size, as far apart or close together as may be.
Levels wildLevels(Random& random) {
    std::vector<float> list;
    for (int i = between(random, 2, 9); i > 0; --i) {
        const float level = random.bits<float>();
        if (std::isfinite(level)) list.push_back(level);
    }
    std::sort(list.begin(), list.end());
    list.erase(std::unique(list.begin(), list.end()), list.end());
    if (list.size() < 2) return {-1, 1, 2};
    return oneIn(random, 2) ? freeLevels(list) : Levels(list.front(), list.back(), between(random, 2, 300));
}

// (hist, spec, buffer) of any plan.
template <int form>
struct PlanAndResults {
    static constexpr int channels = forms[form].channels;

    auto operator()(Draw& draw) const {
        PlanSource source = drawPlan(draw.random, forms[form], channels);
        if (forms[form].isReal() && oneIn(draw.random, 2)) source.channels = {wildLevels(draw.random)};
        auto* const spec = draw.image<Kuv8u>(Role::record, source.bytes(), 1, 0).template row<KuviBinPlan>();
        EXPECT_EQ(source.init(spec), source.status());
        Kuv32u* results[channels];
        for (int c = 0; c < channels; ++c) results[c] = draw.image<Kuv32u>(Role::output, source.bins(c), 1, 0).template row<Kuv32u>();
        Kuv8u* buffer = nullptr;
        if constexpr (!forms[form].isReal()) {
            static const Image& scratch = *new Image("buffer", {forms[form].bufferBytes(), 1, 0, Guard::end, 0, 4}, 3);
            buffer = scratch.row<Kuv8u>();
        }
        if constexpr (channels == 1) {
            return std::tuple<Kuv32u*, const KuviBinPlan*, Kuv8u*>(results[0], spec, buffer);
        } else {
            const Image& list = draw.image<Kuv64u>(Role::record, channels, 1, 0);  // as large as a pointer
            std::memcpy(list.row(), results, sizeof(results));
            return std::tuple<Kuv32u* const*, const KuviBinPlan*, Kuv8u*>(list.row<Kuv32u*>(), spec, buffer);
        }
    }
};

const Kuv32u strangers[4][16] = {{0, 0, 0, 0}, {1, 1, 1, 0x74736967}, {0x74736968, 1, 1, 0x68697374}, {0, 0, 0, 0xFFFFFFFF}};
const KuviBinPlan* stranger(int i) { return reinterpret_cast<const KuviBinPlan*>(strangers[i]); }
Kuv32u anyCounts[4];
Kuv32u* const withoutOne[4][4] = {{nullptr, anyCounts, anyCounts, anyCounts}, {anyCounts, nullptr, anyCounts, anyCounts},
                                  {anyCounts, anyCounts, nullptr, anyCounts}, {anyCounts, anyCounts, anyCounts, nullptr}};

#define CHECKS_OF_HISTOGRAM(function, T, form, ...)                                                                            \
    KUV_AGREES(function, Samples<T, forms[form].channels>{}, RoiSize{}, PlanAndResults<form>{});                               \
    KUV_CHECKS(function, call(Samples<T, forms[form].channels>{}, RoiSize{}, PlanAndResults<form>{}),                          \
               check(kuvStatusNullPtr, null<0>(), null<3>(), null<4>() __VA_OPT__(, ) __VA_ARGS__), badSize<2>(),              \
               check(kuvStatusBadStep, set<1>(0), set<1>(-1), set<1>(-1024), set<1>(INT32_MIN), width<2>(INT32_MAX)),          \
               check(kuvStatusBadArg, set<4>(stranger(0)), set<4>(stranger(1)), set<4>(stranger(2)), set<4>(stranger(3))))
#define WITHOUT(channel) set<3>(withoutOne[channel])
CHECKS_OF_HISTOGRAM(kuviHistogram_8u_C1R, Kuv8u, 0, null<5>());
CHECKS_OF_HISTOGRAM(kuviHistogram_8u_C3R, Kuv8u, 1, null<5>(), WITHOUT(0), WITHOUT(1), WITHOUT(2));
CHECKS_OF_HISTOGRAM(kuviHistogram_8u_C4R, Kuv8u, 2, null<5>(), WITHOUT(0), WITHOUT(1), WITHOUT(2), WITHOUT(3));
CHECKS_OF_HISTOGRAM(kuviHistogram_16u_C1R, Kuv16u, 3, null<5>());
CHECKS_OF_HISTOGRAM(kuviHistogram_16u_C4R, Kuv16u, 4, null<5>(), WITHOUT(0), WITHOUT(1), WITHOUT(2), WITHOUT(3));
CHECKS_OF_HISTOGRAM(kuviHistogram_16s_C1R, Kuv16s, 5, null<5>());
CHECKS_OF_HISTOGRAM(kuviHistogram_32f_C1R, Kuv32f, 6);

struct Places {
    Guard guard = Guard::end;
    int src = 0, plan = 0, hist = 0, buffer = 0;  // bytes from the guard
};

const float nan = std::numeric_limits<float>::quiet_NaN(), infinity = std::numeric_limits<float>::infinity();

class Histogram : public VariantTest {
protected:
    bool hasRowRule() const { return GetParam().isH9(); }

    // Channels that the plan does not have keep their counts, of which there may be any number.
    void expectHistogram(const Form& form, const PlanSource& source, const Image& src, KuviSize size, Places places = {}) {
        const BinPlan plan(source, places.guard, places.plan);
        const HistogramReference reference(source, form.channels, size, src.step(), hasRowRule());
        const Counts wanted = reference.count(src.row());
        std::vector<std::unique_ptr<Image>> images;
        std::vector<Bytes> wantedBytes;
        Kuv32u* results[4];
        for (int c = 0; c < form.channels; ++c) {
            const bool used = c < static_cast<int>(wanted.size());
            const int bytes = used ? 4 * source.bins(c) : 4;
            images.push_back(std::make_unique<Image>("hist", Geometry{bytes, 1, bytes, places.guard, places.hist, 4}, random_()));
            const Image& image = *images.back();
            wantedBytes.push_back(image.bytes());
            if (used) {
                std::memcpy(image.row(wantedBytes.back(), 0), wanted[static_cast<std::size_t>(c)].data(), static_cast<std::size_t>(bytes));
            }
            results[c] = image.row<Kuv32u>();
        }
        const int bufferBytes = std::max(form.bufferBytes(), 1);
        const Image buffer("buffer", {bufferBytes, 1, bufferBytes, places.guard, places.buffer, 4}, random_());
        const Bytes srcBefore = src.bytes(), planBefore = plan.block().bytes(), bufferBefore = buffer.bytes();
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << form.name << ", " << size.width << " x " << size.height << ", "
                                        << src.geometry() << ", " << source.bins(0) << " bins from " << source.level(0, 0) << " to "
                                        << source.level(0, source.bins(0)) << (source.isUniform() ? ", uniform" : ""));
        EXPECT_EQ(watched([&] {
                      return form.call(src.row(), src.step(), size, results, plan.get(), form.isReal() ? nullptr : buffer.row());
                  }), kuvStatusOk);
        for (int c = 0; c < form.channels; ++c) {
            EXPECT_EQ(images[static_cast<std::size_t>(c)]->difference(wantedBytes[static_cast<std::size_t>(c)]), "") << "channel " << c;
        }
        EXPECT_EQ(src.difference(srcBefore), "");
        EXPECT_EQ(plan.block().difference(planBefore), "");
        EXPECT_EQ(buffer.strayWrite(bufferBefore), "");
        if (reference.divides() || form.isReal()) {
            EXPECT_EQ(buffer.difference(bufferBefore), "");
        }
    }

    Geometry geometry(const Form& form, KuviSize size, std::ptrdiff_t padding, Places places = {}) {
        const int rowBytes = size.width * form.pixelBytes();
        return {rowBytes, size.height, rowBytes + padding, places.guard, places.src, form.sampleBytes};
    }
    template <class Fill>
    void fillSrc(const Form& form, const Image& src, KuviSize size, Fill fill) {
        for (int r = 0; r < size.height; ++r) {
            for (int i = 0; i < size.width * form.channels; ++i) {
                const auto value = fill(i, r);
                if (form.isReal()) store(src.row(r), i, static_cast<float>(value));
                else if (form.sampleBytes == 1) store(src.row(r), i, static_cast<Kuv8u>(value));
                else store(src.row(r), i, static_cast<Kuv16u>(static_cast<Kuv32s>(value)));
            }
        }
    }
    // Images start with any bits; reals get numbers that plans cover.
    void fillAny(const Form& form, const Image& src, KuviSize size) {
        if (!form.isReal()) return;
        fillSrc(form, src, size, [this](int, int) { return static_cast<double>(between(random_, -1200000, 1200000)) / 1024; });
    }
    void expectAny(const Form& form, KuviSize size, std::ptrdiff_t padding, Places places = {}) {
        const Image src("src", geometry(form, size, padding, places), random_());
        fillAny(form, src, size);
        expectHistogram(form, drawPlan(random_, form, form.channels), src, size, places);
    }
    template <class Fill>
    void expectFilled(const Form& form, const PlanSource& source, KuviSize size, Fill fill, std::ptrdiff_t padding = 0) {
        const Image src("src", geometry(form, size, padding), random_());
        fillSrc(form, src, size, fill);
        expectHistogram(form, source, src, size);
    }
    Counts countsOf(const Form& form, const PlanSource& source, const Image& src, KuviSize size) {
        const BinPlan plan(source);
        Counts counts;
        Kuv32u* results[4];
        for (int c = 0; c < form.channels; ++c) counts.emplace_back(std::max(source.bins(c), 1), 99u);
        for (int c = 0; c < form.channels; ++c) results[c] = counts[static_cast<std::size_t>(c)].data();
        std::vector<Kuv8u> buffer(static_cast<std::size_t>(form.bufferBytes()));
        EXPECT_EQ(form.call(src.row(), src.step(), size, results, plan.get(), buffer.data()), kuvStatusOk);
        return counts;
    }
    float atOrBeside(double level) {
        const float at = static_cast<float>(level);
        return oneIn(random_, 3) ? at : std::nextafter(at, oneIn(random_, 2) ? infinity : -infinity);
    }

    Random random_{1};
};

KUV_FOR_EACH_VARIANT(Histogram);

TEST_P(Histogram, EveryWidth) {
    for (const Form& form : forms) {
        for (int width = 1; width <= 300 && !HasFailure(); width += width < 70 ? 1 : 37) {
            for (const Guard guard : {Guard::end, Guard::begin}) {
                expectAny(form, {width, 1}, 0, {.guard = guard});
                expectAny(form, {width, 3}, below(random_, 30), {.guard = guard});
            }
        }
    }
}

TEST_P(Histogram, EveryAlignment) {
    for (const Form& form : forms) {
        for (int gap = 0; gap < 34 && !HasFailure(); ++gap) {
            for (const Guard guard : {Guard::end, Guard::begin}) {
                const KuviSize size = {between(random_, 1, 90), between(random_, 1, 40)};
                expectAny(form, size, below(random_, 9), {guard, gap, below(random_, 9), below(random_, 9), below(random_, 9)});
            }
        }
    }
}

// Enough samples for every way of counting them.
TEST_P(Histogram, LargeImages) {
    for (const Form& form : forms) {
        for (int i = 0; i < 6 && !HasFailure(); ++i) {
            const KuviSize size = {between(random_, 200, 400), between(random_, 100, 300)};
            expectAny(form, size, i % 2 == 0 ? 0 : below(random_, 33));
        }
    }
}

TEST_P(Histogram, OddSteps) {
    for (const Form& form : forms) {
        for (const int padding : {1, 2, 3, 5, 7, 127, 1001}) {
            for (const int width : {1, 7, 8, 33}) expectAny(form, {width, 9}, padding);
        }
    }
}

// Every sample in one bin, or in two by turns.
TEST_P(Histogram, FlatImages) {
    for (const Form& form : forms) {
        for (const int width : {30, 300}) {
            const PlanSource source = drawPlan(random_, form, form.channels);
            const double a = source.level(0, 0), b = source.level(0, source.bins(0) / 2);
            expectFilled(form, source, {width, 40}, [&](int, int) { return a; });
            expectFilled(form, source, {width, 40}, [&](int i, int r) { return (i + r) % 2 == 0 ? a : b; });
        }
    }
}

// Samples below, at and above each level.
TEST_P(Histogram, AroundLevels) {
    for (const Form& form : forms) {
        for (int i = 0; i < 60 && !HasFailure(); ++i) {
            const PlanSource source = drawPlan(random_, form, form.channels);
            expectFilled(form, source, {97, 5}, [&](int x, int) {
                const double level = source.level(x % form.channels, below(random_, source.bins(x % form.channels) + 1));
                const int off = between(random_, -1, 1);
                if (!form.isReal()) return std::clamp(level + off, form.lowest(), form.lowest() + form.values() - 1);
                const float real = static_cast<float>(level);
                return static_cast<double>(off == 0 ? real : std::nextafter(real, static_cast<float>(off) * 1e38f));
            });
        }
    }
}

TEST_P(Histogram, TwoLevels) {
    for (const Form& form : forms) {
        for (const bool uniform : {false, true}) {
            PlanSource source = {form.type, {}};
            for (int c = 0; c < form.channels; ++c) source.channels.push_back(uniform ? Levels(100, 200, 2) : freeLevels({100.0f, 200.0f}));
            expectFilled(form, source, {101 * 2, 1}, [](int x, int) { return 99 + x % 103; });
            const Image src("src", geometry(form, {8, 1}, 0), 1);
            fillSrc(form, src, {8, 1}, [](int, int) { return 200; });
            EXPECT_EQ(countsOf(form, source, src, {8, 1})[0][0], 0u) << form.name;
            fillSrc(form, src, {8, 1}, [](int, int) { return 100; });
            EXPECT_EQ(countsOf(form, source, src, {8, 1})[0][0], 8u) << form.name;
        }
    }
}

TEST_P(Histogram, AllBytes) {
    const Image src("src", geometry(bytes1, {256, 9}, 0), 1);
    fillSrc(bytes1, src, {256, 9}, [](int x, int) { return x; });
    EXPECT_EQ(countsOf(bytes1, {kuvDataType8u, {freeLevels({0.0f, 128.0f, 256.0f})}}, src, {256, 9}), (Counts{{9 * 128, 9 * 128}}));
}

TEST_P(Histogram, AllWords) {
    for (const Form* form : {&words1, &signed1}) {
        for (const int bins : {2, 64, 256, 512, 1024, 65536}) {
            const float first = static_cast<float>(form->lowest());
            for (const KuviSize size : {KuviSize{65536, 1}, {32768, 1}}) {
                expectFilled(*form, {form->type, {Levels(first, first + 65536, bins + 1)}}, size,
                             [&](int x, int) { return form->lowest() + x; });
            }
        }
    }
}

TEST_P(Histogram, LevelsOutsideOfTheSamples) {
    for (const Form& form : forms) {
        if (form.isReal()) continue;
        const float low = static_cast<float>(form.lowest()), end = low + static_cast<float>(form.values());
        PlanSource source = {form.type, {}}, below = source, above = source;
        for (int c = 0; c < form.channels; ++c) {
            source.channels.push_back(freeLevels({-3e9f, -70000.0f, low - 10, low + 5, end - 7, end + 10, end + 20, 1e30f}));
            below.channels.push_back(freeLevels({-90000.0f, -80000.0f, low}));
            above.channels.push_back(freeLevels({end, end + 1, 80000.0f}));
        }
        for (const PlanSource* each : {&source, &below, &above}) {
            const KuviSize size = {300, 4};
            const Image src("src", geometry(form, size, 0), 4);
            expectHistogram(form, *each, src, size);
        }
    }
}

TEST_P(Histogram, NarrowBins) {
    const PlanSource source = {kuvDataType8u, {Levels(0, 10, 21)}};
    const Image src("src", geometry(bytes1, {256, 1}, 0), 1);
    fillSrc(bytes1, src, {256, 1}, [](int x, int) { return x; });
    const Counts counts = countsOf(bytes1, source, src, {256, 1});
    for (std::size_t k = 0; k < 20; ++k) EXPECT_EQ(counts[0][k], k % 2) << k;
    expectHistogram(bytes1, source, src, {256, 1});
}

// By division or by counts of all values.
TEST_P(Histogram, WhereThePathsPart) {
    for (const Form* form : {&words1, &words4, &signed1}) {
        const auto plan = [&](float a, float b, int n) {
            return PlanSource{form->type, std::vector<Levels>(static_cast<std::size_t>(form->channels), Levels(a, b, n))};
        };
        for (const KuviSize size : {KuviSize{255, 257}, {257, 255}, {65535, 1}, {256, 256}, {65536, 1}, {300, 300}}) {
            const Image src("src", geometry(*form, size, 4), random_());
            // Even levels: the same. No multiple: never by division. Levels cut unevenly: not the same.
            for (const PlanSource& each :
                 {plan(-100, 20000, 68), plan(0, 30000, 257), plan(-1.9f, 4.1f, 6), plan(-20.9f, 4.1f, 25), plan(0, 10000, 10001)}) {
                expectHistogram(*form, each, src, size);
            }
        }
    }
}

// Of four channels all are to divide evenly, or none does.
TEST_P(Histogram, OneUnevenChannel) {
    for (int c = 0; c < 4; ++c) {
        PlanSource source = {kuvDataType16u, std::vector<Levels>(4, Levels(-1.9f, 4.1f, 6))};
        const auto small = [](int, int) { return 3; };
        expectFilled(words4, source, {50, 3}, small);
        source.channels[static_cast<std::size_t>(c)] = Levels(0, 100, 8);
        expectFilled(words4, source, {50, 3}, small);
    }
}

// Ranges that 32 bits do not hold, and distances that single precision does not.
TEST_P(Histogram, FarEvenLevels) {
    for (const Form* form : {&words1, &words4, &signed1}) {
        for (const float first : {-65536.0f, -4128768.0f, -4128767.0f, -4194304.0f, -16777216.0f, -1073741824.0f, -2147483648.0f, -3e9f}) {
            for (const float last : {-1.0f, 40000.0f, 65536.0f, 16777216.0f, 1073741824.0f, 2147483520.0f, 3e9f}) {
                for (const int count : {2, 3, 4, 6, 18, 52, 258, 65538}) {
                    if (count > 300 && form == &words4) continue;
                    PlanSource source = {form->type,
                                         std::vector<Levels>(static_cast<std::size_t>(form->channels), Levels(first, last, count))};
                    const KuviSize size = {61, 3};
                    const Image src("src", geometry(*form, size, 1), random_());
                    expectHistogram(*form, source, src, size);
                    if (HasFailure()) return;
                }
            }
        }
    }
    // A step of 3 from a level that is far: quotients just below an integer.
    for (const float first : {-4128766.0f, -4128765.0f, -4128770.0f, -12000000.0f}) {
        const int bins = (65536 - static_cast<int>(first)) / 3;
        expectFilled(words1, {kuvDataType16u, {Levels(first, first + 3.0f * static_cast<float>(bins), bins + 1)}}, {65535, 1},
                     [](int x, int) { return x; });
    }
}

// Fewer channels than the function: those that are missing stay as they are, whatever the path.
TEST_P(Histogram, PlansOfFewerChannels) {
    for (const Form& form : forms) {
        if (form.channels == 1) continue;
        for (const int channels : {1, 3, 4}) {
            for (const KuviSize size : {KuviSize{40, 3}, {300, 250}}) {
                for (const bool even : {false, true}) {
                    PlanSource source = {form.type, {}};
                    for (int c = 0; c < channels; ++c) {
                        source.channels.push_back(even ? Levels(0, 240, 11) : freeLevels({3.0f, 50.0f, 200.0f}));
                    }
                    const Image src("src", geometry(form, size, 0), random_());
                    expectHistogram(form, source, src, size);
                }
            }
        }
    }
}
TEST_P(Histogram, PlansOfMoreChannels) {
    for (const Form& form : forms) {
        const PlanSource source = drawPlan(random_, form, 4);
        const Image src("src", geometry(form, {30, 5}, 0), random_());
        fillAny(form, src, {30, 5});
        expectHistogram(form, source, src, {30, 5});
    }
}

const float tiny = std::numeric_limits<float>::denorm_min(), huge = std::numeric_limits<float>::max();
const float specials[] = {nan,  -nan,  infinity, -infinity, 0.0f,  -0.0f,  tiny, -tiny, 1.17549435e-38f,
                          huge, -huge, 1.0f,     -1.0f,     1e30f, -1e-30f};

TEST_P(Histogram, SpecialReals) {
    std::vector<PlanSource> plans;
    for (const int count : {2, 3, 4, 5, 9, 30, 31, 32, 41, 42, 102, 103, 104, 257, 700}) {
        for (const auto& [a, b] : {std::pair{-1.0f, 1.0f}, {0.0f, 1.0f}, {0.0f, tiny}, {-tiny, 9 * tiny}, {0.0f, 1e-36f}, {-huge, huge},
                                   {0.0f, huge}, {1e30f, 2e30f}, {1.0f, std::nextafter(1.0f, 2.0f)}, {1e6f, 1000001.0f},
                                   {-1e6f, -999999.0f}, {16777216.0f, 16777300.0f}, {-infinity, 1.0f}}) {
            if (a == -infinity && count > 2) continue;
            plans.push_back({kuvDataType32f, {Levels(a, b, count)}});
        }
        std::vector<float> list = {-infinity, -huge, -1.0f, -tiny, 0.0f, tiny, 1.0f, huge, infinity};
        for (int k = 0; static_cast<int>(list.size()) < count; ++k) list.push_back(1.5f + static_cast<float>(k));
        std::sort(list.begin(), list.end());
        plans.push_back({kuvDataType32f, {freeLevels(list)}});
        list.resize(static_cast<std::size_t>(count));
        plans.push_back({kuvDataType32f, {freeLevels(list)}});
    }
    for (const PlanSource& source : plans) {
        const float a = source.channels[0].free.empty() ? source.channels[0].lower : -2,
                    b = source.channels[0].free.empty() ? source.channels[0].upper : 300;
        expectFilled(reals, source, {213, 2}, [&](int, int) {
            if (oneIn(random_, 3)) return specials[below(random_, 15)];
            if (oneIn(random_, 2)) return atOrBeside(source.level(0, below(random_, source.bins(0) + 1)));
            return a + (b / 2 - a / 2) * static_cast<float>(below(random_, 20001)) / 10000;
        });
        if (HasFailure()) return;
    }
}

// Single precision cannot tell the bins apart by itself.
TEST_P(Histogram, ManyBins) {
    for (const int bins : {500, 511, 512, 1000, 4096, 20000, 65536, 300000, 1000000}) {
        for (const auto& [a, b] : {std::pair{0.0f, 1.0f}, {100.0f, 101.0f}, {-5e5f, 5e5f}}) {
            const PlanSource source = {kuvDataType32f, {Levels(a, b, bins + 1)}};
            expectFilled(reals, source, {700, 3}, [&](int, int) { return atOrBeside(source.level(0, below(random_, bins + 1))); });
        }
    }
}

// Levels between infinite bounds are no numbers. Nothing is lost, and nothing written behind the results.
TEST_P(Histogram, InfiniteBounds) {
    for (const int count : {2, 3, 4, 30, 31, 102, 103, 600}) {
        for (const auto& [a, b] : {std::pair{-infinity, 5.0f}, {-5.0f, infinity}, {-infinity, infinity}}) {
            const PlanSource source = {kuvDataType32f, {Levels(a, b, count)}};
            const Image src("src", geometry(reals, {90, 1}, 0), 3);
            fillSrc(reals, src, {90, 1}, [&](int x, int) { return x % 2 == 0 ? nan : 1.0f; });
            const Image hist("hist", {4 * (count - 1), 1, 0, Guard::end, 0, 4}, 3);
            const BinPlan plan(source);
            EXPECT_EQ(watched([&] {
                          return kuviHistogram_32f_C1R(src.row<Kuv32f>(), src.step(), {90, 1}, hist.row<Kuv32u>(), plan.get(), nullptr);
                      }),
                      kuvStatusOk);
            const Kuv32u first = load<Kuv32u>(hist.row(), 0), last = load<Kuv32u>(hist.row(), count - 2);
            EXPECT_TRUE(first == 45 || last == 45) << count << " " << a << " " << b << " " << first << " " << last;
        }
    }
}

// h9 takes steps of sixteen times the width, cut, as rows that touch; others never do, and neither does h9 with few or free levels.
TEST_P(Histogram, StepsOfSixteenWidths) {
    for (const int width : {1, 2, 5, 7, 8, 9, 31, 100}) {
        for (const int height : {1, 2, 7, 40}) {
            for (const int extra : {-1, 0, 1, 5, 15, 16}) {
                for (const PlanSource& source : {PlanSource{kuvDataType32f, {Levels(-900, 900, 4)}},
                                                 {kuvDataType32f, {Levels(-900, 900, 3)}},
                                                 {kuvDataType32f, {Levels(-900, 900, 200)}},
                                                 {kuvDataType32f, {Levels(1e6f, 1000001.0f, 99)}},
                                                 {kuvDataType32f, {freeLevels({-900, -100, 50, 60, 1000})}}}) {
                    const KuviSize size = {width, height};
                    const Image src("src", geometry(reals, size, 12 * width + extra), random_());
                    for (int i = 0; i < width * height; ++i) store(src.row(), i, static_cast<float>(i % 800));  // also between the rows
                    fillAny(reals, src, size);
                    expectHistogram(reals, source, src, size);
                }
            }
        }
    }
}

// A plan of another type decides nothing about what may be touched.
TEST_P(Histogram, PlansOfOtherTypes) {
    for (const Form& form : forms) {
        for (const Form& other : forms) {
            for (int i = 0; i < 10; ++i) {
                const PlanSource source = drawPlan(random_, other, form.channels);
                const BinPlan plan(source);
                const KuviSize size = {67, 3};
                const Image src("src", geometry(form, size, 5), random_()),
                    buffer("buffer", {std::max(form.bufferBytes(), 1), 1, 0, Guard::end, 0, 1}, 1);
                std::vector<std::unique_ptr<Image>> images;
                Kuv32u* results[4];
                for (int c = 0; c < form.channels; ++c) {
                    images.push_back(std::make_unique<Image>(
                        "hist", Geometry{4 * source.bins(c), 1, 0, i % 2 == 0 ? Guard::end : Guard::begin, 0, 4}, 2));
                    results[c] = images.back()->row<Kuv32u>();
                }
                EXPECT_EQ(watched([&] { return form.call(src.row(), src.step(), size, results, plan.get(), buffer.row()); }), kuvStatusOk);
            }
        }
    }
}

// The product of width and height wraps to one below 65536: a division, which with these levels is not the same.
TEST_P(Histogram, HugeImages) {
    if (sanitized) GTEST_SKIP() << "the sanitizer takes minutes for it";
    if (!GetParam().isPx() && !GetParam().isH9()) GTEST_SKIP() << "seconds each, and the same source";
    const KuviSize size = {65536, 32768};
    const AliasedMemory memory(std::size_t{1} << 32);
    KUV_NEEDS(memory);
    const BinPlan plan({kuvDataType16u, {Levels(-1.9f, 4.1f, 6)}});
    std::vector<Kuv32u> counts(5);
    std::vector<Kuv8u> buffer(0x40000);
    EXPECT_EQ(kuviHistogram_16u_C1R(reinterpret_cast<const Kuv16u*>(memory.memory()), 2 * size.width, size, counts.data(), plan.get(),
                                    buffer.data()),
              kuvStatusOk);
    EXPECT_EQ(counts, (std::vector<Kuv32u>{0, 0x80000000, 0, 0, 0}));
}

// Rows further apart than 32 bits tell, and more bytes in a row than a step can.
TEST_P(Histogram, DistantRows) {
    const DistantMemory memory(std::size_t{3} << 31);
    KUV_NEEDS(memory);
    std::vector<Kuv8u> buffer(0x100000);
    for (const Form& form : forms) {
        const BinPlan plan({form.type, std::vector<Levels>(static_cast<std::size_t>(form.channels), Levels(-1, 9, 11))});
        Counts counts(4, std::vector<Kuv32u>(10));
        Kuv32u* const results[4] = {counts[0].data(), counts[1].data(), counts[2].data(), counts[3].data()};
        EXPECT_EQ(form.call(memory.memory(), INT32_MAX, {2, 3}, results, plan.get(), buffer.data()), kuvStatusOk);
        for (int c = 0; c < form.channels; ++c) {
            EXPECT_EQ(counts[static_cast<std::size_t>(c)], (std::vector<Kuv32u>{0, 6, 0, 0, 0, 0, 0, 0, 0, 0}));
        }
        if (form.pixelBytes() == 1) continue;
        const KuviSize wide = {INT32_MAX / form.pixelBytes() + 1, 1};
        EXPECT_EQ(form.call(memory.memory(), INT32_MAX, wide, results, plan.get(), buffer.data()), kuvStatusBadStep);
    }
}

}  // namespace
