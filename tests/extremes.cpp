// Smallest and largest samples.
#include <cmath>
#include <limits>

#include "support/distant.hpp"
#include "support/statuses.hpp"

namespace {

using namespace kuvtest;

// Results are held to the same bits: a NaN that stays is the first sample's own.
#define CHECKS_OF_RANGE(function, T)                                                                                             \
    KUV_AGREES(function, Source<T>{}, RoiSize{}, OutputSignal<T>{1}, OutputSignal<T>{1});                                          \
    KUV_CHECKS(function, call(Source<T>{}, RoiSize{}, OutputSignal<T>{1}, OutputSignal<T>{1}),                                     \
               check(kuvStatusNullPtr, null<0>(), null<3>(), null<4>()), badSize<2>())
CHECKS_OF_RANGE(kuviMinMax_16s_C1R, Kuv16s);
CHECKS_OF_RANGE(kuviMinMax_32f_C1R, Kuv32f);
KUV_AGREES(kuviMax_32f_C3R, Source<Kuv32f>{.channels = 3}, RoiSize{}, OutputSignal<Kuv32f>{3});
KUV_CHECKS(kuviMax_32f_C3R, call(Source<Kuv32f>{.channels = 3}, RoiSize{}, OutputSignal<Kuv32f>{3}),
           check(kuvStatusNullPtr, null<0>(), null<3>()), badSize<2>());

// Smallest first where both are asked for.
struct Form {
    const char* name;
    int sampleBytes, channels, results;
    KuvStatus (*call)(const void* src, Kuv32s srcStep, KuviSize size, void* to);
};

#define RANGE(function, T)                                                                                                       \
    {#function, sizeof(T), 1, 2, [](const void* src, Kuv32s srcStep, KuviSize size, void* to) {                                  \
         return function(static_cast<const T*>(src), srcStep, size, static_cast<T*>(to), static_cast<T*>(to) + 1);               \
     }}
constexpr Form forms[] = {RANGE(kuviMinMax_16s_C1R, Kuv16s), RANGE(kuviMinMax_32f_C1R, Kuv32f),
                          {"kuviMax_32f_C3R", 4, 3, 3, [](const void* src, Kuv32s srcStep, KuviSize size, void* to) {
                               return kuviMax_32f_C3R(static_cast<const Kuv32f*>(src), srcStep, size, static_cast<Kuv32f*>(to));
                           }}};

class Extremes : public VariantTest {
protected:
    // From the first sample on, row by row: a later one must be below, or above.
    template <class T>
    static void find(const Image& src, KuviSize size, int channels, void* to) {
        for (int c = 0; c < channels; ++c) {
            T smallest = load<T>(src.row(), c), largest = smallest;
            for (int r = 0; r < size.height; ++r) {
                for (int i = 0; i < size.width; ++i) {
                    const T sample = load<T>(src.row(r), channels * i + c);
                    if (sample < smallest) smallest = sample;
                    if (sample > largest) largest = sample;
                }
            }
            if (channels == 1) store(to, 0, smallest), store(to, 1, largest);
            else store(to, c, largest);
        }
    }

    void expectExtremes(const Form& form, const Image& src, KuviSize size, Guard guard = Guard::end, int gap = 0) {
        const Image to("results", {form.results * form.sampleBytes, 1, 0, guard, gap, form.sampleBytes}, random_());
        Bytes wanted = to.bytes();
        const Bytes srcBefore = src.bytes();
        if (form.sampleBytes == 2) find<Kuv16s>(src, size, form.channels, to.row(wanted, 0));
        else find<Kuv32f>(src, size, form.channels, to.row(wanted, 0));
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << form.name << ", " << size.width << " x " << size.height << ", "
                                        << src.geometry());
        EXPECT_EQ(watched([&] { return form.call(src.row(), src.step(), size, to.row()); }), kuvStatusOk);
        EXPECT_EQ(to.difference(wanted), "");
        EXPECT_EQ(src.difference(srcBefore), "");
    }

    Geometry geometry(const Form& form, KuviSize size, std::ptrdiff_t step, Guard guard, int gap = 0) {
        return {size.width * form.sampleBytes * form.channels, size.height, step, guard, gap, form.sampleBytes};
    }
    // `fill` tells sample i of row r.
    template <class Fill>
    void fillSrc(const Form& form, const Image& src, KuviSize size, Fill fill) {
        for (int r = 0; r < size.height; ++r) {
            for (int i = 0; i < size.width * form.channels; ++i) {
                if (form.sampleBytes == 2) store(src.row(r), i, static_cast<Kuv16s>(fill(i, r)));
                else store(src.row(r), i, static_cast<Kuv32f>(fill(i, r)));
            }
        }
    }
    auto anyNumber() {
        return [this](int, int) { return between(random_, -32768, 32767); };
    }
    int tight(const Form& form, int width) { return width * form.sampleBytes * form.channels; }

    Random random_{1};
};

KUV_FOR_EACH_VARIANT(Extremes);

TEST_P(Extremes, EveryWidth) {
    for (const Form& form : forms) {
        for (int width = 1; width <= 700 && !HasFailure(); width += width < 140 ? 1 : 37) {
            for (const Guard guard : {Guard::end, Guard::begin}) {
                for (const KuviSize size : {KuviSize{width, 1}, {width, 3}}) {
                    const Image src("src", geometry(form, size, tight(form, width) + below(random_, 3), guard), random_());
                    fillSrc(form, src, size, anyNumber());
                    expectExtremes(form, src, size, guard);
                }
            }
        }
    }
}

// One sample beyond all others, in every place.
TEST_P(Extremes, EveryPlace) {
    for (const Form& form : forms) {
        for (const int width : {1, 7, 67, 90}) {
            const KuviSize size = {width, 2};
            for (int place = 0; place < 2 * width * form.channels && !HasFailure(); ++place) {
                for (const int value : {-32768, 32767}) {
                    const Image src("src", geometry(form, size, tight(form, width), Guard::end), random_());
                    fillSrc(form, src, size, [&](int i, int r) { return r * width * form.channels + i == place ? value : i % 5; });
                    expectExtremes(form, src, size);
                }
            }
        }
    }
}

TEST_P(Extremes, EveryAlignment) {
    for (const Form& form : forms) {
        for (int gap = 0; gap <= 64 && !HasFailure(); ++gap) {
            for (const int width : {5, 40, 131}) {
                for (const Guard guard : {Guard::begin, Guard::end}) {
                    const KuviSize size = {width, 2};
                    const Image src("src", geometry(form, size, tight(form, width) + below(random_, 65), guard, gap), random_());
                    fillSrc(form, src, size, anyNumber());
                    expectExtremes(form, src, size, guard, below(random_, 9));
                }
            }
        }
    }
}

// Rows on each other, too; whatever bits that makes of the samples.
TEST_P(Extremes, AnyStep) {
    for (const Form& form : forms) {
        for (const int width : {1, 5, 33, 200}) {
            const int row = tight(form, width);
            for (const int step : {0, 1, -1, row - 1, row + 1, -row, -row - 3, row / 2, 1001, -1001}) {
                for (const Guard guard : {Guard::end, Guard::begin}) {
                    const Image src("src", geometry(form, {width, 5}, step, guard), random_());
                    expectExtremes(form, src, {width, 5}, guard);
                }
            }
        }
    }
}

TEST_P(Extremes, SignedLimits) {
    const Form& form = forms[0];
    for (const int a : {-32768, -32767, -1, 0, 1, 32766, 32767}) {
        for (const int b : {-32768, -32767, -1, 0, 1, 32766, 32767}) {
            for (const int width : {1, 2, 63, 200}) {
                const Image src("src", geometry(form, {width, 2}, 2 * width, Guard::end), 1);
                fillSrc(form, src, {width, 2}, [&](int i, int r) { return (i + r) % 2 == 0 ? a : b; });
                expectExtremes(form, src, {width, 2});
            }
        }
    }
}

// In every place: the first sample's stays, a later one is passed over, at the beginning of a row, too. Signalling ones as well.
TEST_P(Extremes, NaNs) {
    for (const Form& form : forms) {
        if (form.sampleBytes != 4) continue;
        for (const Kuv32u bits : {0x7FC00000u, 0xFFC12345u, 0x7F800001u, 0xFFA00000u}) {
            for (const int width : {1, 9, 70}) {
                const KuviSize size = {width, 3};
                const int count = width * form.channels;
                for (int place = 0; place < 3 * count && !HasFailure(); ++place) {
                    const Image src("src", geometry(form, size, tight(form, width), Guard::end), 1);
                    fillSrc(form, src, size, anyNumber());
                    store(src.row(place / count), place % count, bits);
                    expectExtremes(form, src, size);
                }
            }
        }
    }
}

TEST_P(Extremes, OnlyNaNs) {
    for (const Form& form : forms) {
        if (form.sampleBytes != 4) continue;
        for (int numbers = 0; numbers < 4; ++numbers) {
            const KuviSize size = {77, 2};
            const Image src("src", geometry(form, size, tight(form, 77), Guard::end), 1);
            for (int r = 0; r < 2; ++r) {
                for (int i = 0; i < 77 * form.channels; ++i) store(src.row(r), i, 0x7FC00000u + static_cast<unsigned>(i));
            }
            for (int i = 0; i < numbers; ++i) store(src.row(i % 2), below(random_, 77 * form.channels), static_cast<Kuv32f>(i - 1));
            expectExtremes(form, src, size);
        }
    }
}

TEST_P(Extremes, InfinitiesAndDenormals) {
    const Kuv32f infinity = std::numeric_limits<Kuv32f>::infinity(), tiny = std::numeric_limits<Kuv32f>::denorm_min();
    for (const Form& form : forms) {
        if (form.sampleBytes != 4) continue;
        for (const Kuv32f a : {infinity, -infinity, tiny, -tiny, 0.0f, -0.0f, 3.4e38f, -3.4e38f}) {
            for (const Kuv32f b : {infinity, -infinity, tiny, -tiny, 0.0f, -0.0f, 1.0f, -1.0f}) {
                for (int trial = 0; trial < 20; ++trial) {
                    const KuviSize size = {between(random_, 1, 90), 2};
                    const Image src("src", geometry(form, size, tight(form, size.width), Guard::end), 1);
                    fillSrc(form, src, size, [&](int, int) { return oneIn(random_, 2) ? a : b; });
                    expectExtremes(form, src, size);
                }
            }
        }
    }
}

// Among samples of one sign, or of both: the first zero keeps its own.
TEST_P(Extremes, SignsOfZeros) {
    for (const Form& form : forms) {
        if (form.sampleBytes != 4) continue;
        for (int trial = 0; trial < 3000 && !HasFailure(); ++trial) {
            const KuviSize size = {between(random_, 1, 150), between(random_, 1, 3)};
            const Image src("src", geometry(form, size, tight(form, size.width) + 8 * below(random_, 2), Guard::end), 1);
            const int sign = between(random_, -1, 1), rarity = between(random_, 1, 60);
            fillSrc(form, src, size, [&](int, int) {
                if (oneIn(random_, rarity)) return oneIn(random_, 2) ? 0.0f : -0.0f;
                return static_cast<Kuv32f>(sign) * static_cast<Kuv32f>(between(random_, 1, 9));
            });
            expectExtremes(form, src, size);
        }
    }
}

TEST_P(Extremes, OnePixel) {
    for (const Form& form : forms) {
        for (const Guard guard : {Guard::end, Guard::begin}) {
            const Image src("src", geometry(form, {1, 1}, 0, guard), random_());
            expectExtremes(form, src, {1, 1}, guard);
        }
    }
}

TEST_P(Extremes, RowsFurtherApartThan32BitsTell) {
    constexpr std::ptrdiff_t step = 0x7FFFFFF1;
    const DistantMemory memory(3 * static_cast<std::size_t>(step));
    KUV_NEEDS(memory);
    for (const Form& form : forms) {
        constexpr KuviSize size = {41, 3};
        const int samples = size.width * form.channels, bytes = samples * form.sampleBytes;
        for (const bool upward : {false, true}) {
            const std::ptrdiff_t signedStep = upward ? -step : step, start = upward ? 2 * step : 0;
            // Each row has the smallest and the largest once.
            for (int extreme = 0; extreme < 3; ++extreme) {
                const Image rows("rows", geometry(form, size, bytes, Guard::end), 1);
                fillSrc(form, rows, size, [&](int i, int r) {
                    const int value = between(random_, -9, 9);
                    return r != extreme ? value : i < samples / 2 ? value - 100 : value + 100;
                });
                for (int r = 0; r < 3; ++r) {
                    std::memcpy(memory.memory() + start + signedStep * r, rows.row(r), static_cast<std::size_t>(bytes));
                }
                Kuv32f wanted[3] = {}, got[3] = {};
                if (form.sampleBytes == 2) find<Kuv16s>(rows, size, form.channels, wanted);
                else find<Kuv32f>(rows, size, form.channels, wanted);
                EXPECT_EQ(watched([&] { return form.call(memory.memory() + start, static_cast<Kuv32s>(signedStep), size, got); }),
                          kuvStatusOk);
                EXPECT_EQ(std::memcmp(got, wanted, sizeof got), 0) << form.name << ", row " << extreme << (upward ? ", upward" : "");
            }
        }
    }
}

// The last sample of more than 31 bits count.
TEST_P(Extremes, HugeImages) {
    if (sanitized) GTEST_SKIP() << "the sanitizer takes minutes for it";
    const std::size_t width = 40000, height = 53700, bytes = 2 * width * height;
    const DistantMemory memory(bytes);  // of zeros
    KUV_NEEDS(memory);
    const auto* const words = reinterpret_cast<const Kuv16s*>(memory.memory());
    store(memory.memory() + bytes - 2, 0, Kuv16s{-5});
    store(memory.memory() + bytes - 4, 0, Kuv16s{6});
    Kuv16s smallest, largest;
    const KuviSize size = {static_cast<Kuv32s>(width), static_cast<Kuv32s>(height)};
    EXPECT_EQ(watched([&] { return kuviMinMax_16s_C1R(words, 2 * size.width, size, &smallest, &largest); }), kuvStatusOk);
    EXPECT_EQ(smallest, -5);
    EXPECT_EQ(largest, 6);
}

}  // namespace
