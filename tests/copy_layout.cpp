// Copies between layouts of pixels, of some samples of a pixel, and under a mask.
#include <array>
#include <memory>

#include "support/agreement.hpp"
#include "support/distant.hpp"
#include "support/statuses.hpp"

namespace {

using namespace kuvtest;

// What stands behind the last sample of a row that takes part may lie on an unmapped page.
#define LAYOUT(function, Src, Dst)                                              \
    KUV_AGREES(function, Src, Dst, RoiSize{});                                  \
    KUV_CHECKS(function, call(Src, Dst, RoiSize{}), check(kuvStatusNullPtr, null<0>(), null<2>()), badSize<4>())
constexpr auto src8uAC4 = Source<Kuv8u>{.channels = 4, .omitted = 1};
constexpr auto src16uAC4 = Source<Kuv16u>{.channels = 4, .omitted = 1};
constexpr auto dst8uAC4 = InOut<Kuv8u>{.channels = 4, .omitted = 1};
constexpr auto dst16uAC4 = InOut<Kuv16u>{.channels = 4, .omitted = 1};
constexpr auto src8uC3 = Source<Kuv8u>{.channels = 3}, src8uC1 = Source<Kuv8u>{};
constexpr auto src16uC3 = Source<Kuv16u>{.channels = 3};
constexpr auto dst8uC3 = Output<Kuv8u>{.channels = 3}, dst8uC4 = Output<Kuv8u>{.channels = 4};
constexpr auto dst16uC3 = Output<Kuv16u>{.channels = 3};
constexpr auto dst8uOneOfC3 = InOut<Kuv8u>{.channels = 3, .omitted = 2};
LAYOUT(kuviCopy_8u_AC4R, src8uAC4, dst8uAC4);
LAYOUT(kuviCopy_16u_AC4R, src16uAC4, dst16uAC4);
LAYOUT(kuviCopy_8u_C3AC4R, src8uC3, dst8uAC4);
LAYOUT(kuviCopy_16u_C3AC4R, src16uC3, dst16uAC4);
LAYOUT(kuviCopy_8u_AC4C3R, src8uAC4, dst8uC3);
LAYOUT(kuviCopy_16u_AC4C3R, src16uAC4, dst16uC3);
LAYOUT(kuviCopy_8u_C1C3R, src8uC1, dst8uOneOfC3);

#define MASKED(function, T)                                                                                                   \
    KUV_AGREES(function, Source<T>{}, InOut<T>{}, RoiSize{}, Source<Kuv8u>{});                                                \
    KUV_CHECKS(function, call(Source<T>{}, InOut<T>{}, RoiSize{}, Source<Kuv8u>{}),                                           \
               check(kuvStatusNullPtr, null<0>(), null<2>(), null<5>()), badSize<4>())
MASKED(kuviCopy_8u_C1MR, Kuv8u);
MASKED(kuviCopy_16u_C1MR, Kuv16u);

// (planes, step): images of the drawn size and of one step.
template <int count>
struct Planes {
    std::shared_ptr<std::array<const Kuv8u*, count>> planes = std::make_shared<std::array<const Kuv8u*, count>>();

    std::tuple<const Kuv8u* const*, Kuv32s> operator()(Draw& draw) const {
        const std::ptrdiff_t step = drawStep(draw.random, StepClass::C, draw.size.width);
        for (const Kuv8u*& each : *planes) {
            each = draw.image<Kuv8u>(Role::source, draw.size.width, draw.size.height, step).template row<Kuv8u>();
        }
        return {planes->data(), static_cast<Kuv32s>(step)};
    }
};

#define PLANAR(function, count, Dst)                                                                                          \
    KUV_AGREES(function, Planes<count>{}, Dst, RoiSize{});                                                                    \
    KUV_CHECKS(function, call(Planes<count>{}, Dst, RoiSize{}), check(kuvStatusNullPtr, null<0>(), null<2>()), badSize<4>())
PLANAR(kuviCopy_8u_P3C3R, 3, dst8uC3);
PLANAR(kuviCopy_8u_P4C4R, 4, dst8uC4);

struct LayoutCopy {
    const char* name;
    int sampleBytes, colours, srcSamples, dstSamples;
    KuvStatus (*call)(const void* src, Kuv32s srcStep, void* dst, Kuv32s dstStep, KuviSize size);
};

#define ENTRY(function, T, colours, srcSamples, dstSamples)                                                 \
    {#function, sizeof(T), colours, srcSamples, dstSamples,                                                 \
     [](const void* src, Kuv32s srcStep, void* dst, Kuv32s dstStep, KuviSize size) {                        \
         return function(static_cast<const T*>(src), srcStep, static_cast<T*>(dst), dstStep, size);         \
     }}
constexpr LayoutCopy layoutCopies[] = {
    ENTRY(kuviCopy_8u_AC4R, Kuv8u, 3, 4, 4),   ENTRY(kuviCopy_16u_AC4R, Kuv16u, 3, 4, 4),   ENTRY(kuviCopy_8u_C3AC4R, Kuv8u, 3, 3, 4),
    ENTRY(kuviCopy_16u_C3AC4R, Kuv16u, 3, 3, 4), ENTRY(kuviCopy_8u_AC4C3R, Kuv8u, 3, 4, 3), ENTRY(kuviCopy_16u_AC4C3R, Kuv16u, 3, 4, 3),
    ENTRY(kuviCopy_8u_C1C3R, Kuv8u, 1, 1, 3)};

class CopyLayout : public VariantTest {
protected:
    void expectLayout(const LayoutCopy& copy, KuviSize size, int srcPadding, std::ptrdiff_t dstStepOr0, Guard guard, int gap = 0) {
        const int sample = copy.sampleBytes, colourBytes = copy.colours * sample;
        const int srcPitch = copy.srcSamples * sample, dstPitch = copy.dstSamples * sample;
        const int srcRow = (size.width - 1) * srcPitch + colourBytes, dstRow = (size.width - 1) * dstPitch + colourBytes;
        const std::ptrdiff_t dstStep = dstStepOr0 == 0 ? size.width * dstPitch : dstStepOr0;
        const Image src("src", {srcRow, size.height, size.width * srcPitch + srcPadding, guard, gap, sample}, ++seed_);
        const Image dst("dst", {dstRow, size.height, dstStep, guard, gap, sample}, ++seed_);
        const Bytes before = src.bytes();
        Bytes wanted = dst.bytes();
        for (int r = 0; r < size.height; ++r) {
            for (int i = 0; i < size.width; ++i) {
                std::memcpy(dst.row(wanted, r) + i * dstPitch, src.row(r) + i * srcPitch, static_cast<std::size_t>(colourBytes));
            }
        }
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << copy.name << ", " << size.width << " x " << size.height << "\n  src: "
                                        << src.geometry() << "\n  dst: " << dst.geometry());
        EXPECT_EQ(watched([&] { return copy.call(src.row(), src.step(), dst.row(), dst.step(), size); }), kuvStatusOk);
        EXPECT_EQ(dst.difference(wanted), "");
        EXPECT_EQ(src.difference(before), "");
    }

    // Gaps set the planes apart from each other, too.
    template <int count, class Function>
    void expectPlanes(Function function, KuviSize size, std::ptrdiff_t planeStep, std::ptrdiff_t dstStep, Guard guard, int gap) {
        std::vector<std::unique_ptr<Image>> planes;
        std::vector<Bytes> before;
        const Kuv8u* addresses[count];
        for (int c = 0; c < count; ++c) {
            const Geometry geometry = {size.width, size.height, planeStep, guard, gap * (c + 1), 1};
            planes.push_back(std::make_unique<Image>("plane", geometry, ++seed_));
            before.push_back(planes.back()->bytes());
            addresses[c] = planes.back()->row();
        }
        const Image dst("dst", {size.width * count, size.height, dstStep, guard, gap, 1}, ++seed_);
        Bytes wanted = dst.bytes();
        for (int r = 0; r < size.height; ++r) {
            for (int i = 0; i < size.width * count; ++i) {
                dst.row(wanted, r)[i] = planes[static_cast<std::size_t>(i % count)]->row(r)[i / count];
            }
        }
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << count << " planes, " << size.width << " x " << size.height
                                        << "\n  planes: " << planes[0]->geometry() << "\n  dst: " << dst.geometry());
        EXPECT_EQ(watched([&] { return function(addresses, planes[0]->step(), dst.row(), dst.step(), size); }), kuvStatusOk);
        EXPECT_EQ(dst.difference(wanted), "");
        for (int c = 0; c < count; ++c) {
            addresses[c] = nullptr;
            EXPECT_EQ(function(addresses, planes[0]->step(), dst.row(), dst.step(), {0, 0}), kuvStatusNullPtr) << "plane " << c;
            addresses[c] = planes[static_cast<std::size_t>(c)]->row();
            EXPECT_EQ(planes[static_cast<std::size_t>(c)]->difference(before[static_cast<std::size_t>(c)]), "");
        }
        EXPECT_EQ(dst.difference(wanted), "");
    }
    void expectBothPlanes(KuviSize size, std::ptrdiff_t planeStep, std::ptrdiff_t threeStep, std::ptrdiff_t fourStep, Guard guard,
                          int gap = 0) {
        expectPlanes<3>(kuviCopy_8u_P3C3R, size, planeStep, threeStep, guard, gap);
        expectPlanes<4>(kuviCopy_8u_P4C4R, size, planeStep, fourStep, guard, gap);
    }
    void expectBothPlanesPadded(KuviSize size, int padding, Guard guard, int gap = 0) {
        const std::ptrdiff_t step = size.width + padding;
        expectBothPlanes(size, step, 3 * step, 4 * step, guard, gap);
    }

    struct MaskedPlaces {
        std::ptrdiff_t srcStep, dstStep, maskStep;
        Guard guard = Guard::end;
        int srcGap = 0, dstGap = 0, maskGap = 0;
    };

    template <class T, class Function>
    void expectMasked(Function function, KuviSize size, int oneMaskIn, const MaskedPlaces& places) {
        const int row = size.width * static_cast<int>(sizeof(T));
        const Image src("src", {row, size.height, places.srcStep, places.guard, places.srcGap, sizeof(T)}, ++seed_),
            dst("dst", {row, size.height, places.dstStep, places.guard, places.dstGap, sizeof(T)}, ++seed_),
            mask("mask", {size.width, size.height, places.maskStep, places.guard, places.maskGap, 1}, ++seed_);
        Random random(seed_);
        for (int r = 0; r < size.height; ++r) {
            for (int i = 0; i < size.width; ++i) {
                // Any bit counts.
                mask.row(r)[i] = oneMaskIn > 0 && oneIn(random, oneMaskIn) ? static_cast<unsigned char>(1u << below(random, 8)) : 0;
            }
        }
        const Bytes srcBefore = src.bytes(), maskBefore = mask.bytes();
        Bytes wanted = dst.bytes();
        for (int r = 0; r < size.height; ++r) {
            for (int i = 0; i < size.width; ++i) {
                if (mask.row(r)[i] != 0) store(dst.row(wanted, r), i, load<T>(src.row(r), i));
            }
        }
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << size.width << " x " << size.height << ", one mask in " << oneMaskIn
                                        << "\n  src: " << src.geometry() << "\n  dst: " << dst.geometry() << "\n  mask: "
                                        << mask.geometry());
        EXPECT_EQ(watched([&] { return function(src.row<T>(), src.step(), dst.row<T>(), dst.step(), size, mask.row(), mask.step()); }),
                  kuvStatusOk);
        EXPECT_EQ(dst.difference(wanted), "");
        EXPECT_EQ(src.difference(srcBefore), "");
        EXPECT_EQ(mask.difference(maskBefore), "");
    }

private:
    std::uint64_t seed_ = 0;
};

KUV_FOR_EACH_VARIANT(CopyLayout);

TEST_P(CopyLayout, EveryWidth) {
    for (const LayoutCopy& copy : layoutCopies) {
        for (int width = 1; width <= 140 && !HasFailure(); ++width) {
            expectLayout(copy, {width, 2}, 0, 0, Guard::end);
            expectLayout(copy, {width, 2}, 3, 0, Guard::begin);
            expectLayout(copy, {width, 1}, 0, 0, Guard::end, width % 33);
        }
        for (const int width : {511, 512, 1000}) expectLayout(copy, {width, 3}, 1, 0, Guard::end);
    }
}

TEST_P(CopyLayout, AnyStep) {
    for (const LayoutCopy& copy : layoutCopies) {
        for (const int width : {1, 7, 40, 70}) {
            const int row = width * copy.dstSamples * copy.sampleBytes;
            for (const std::ptrdiff_t step : {std::ptrdiff_t{1}, std::ptrdiff_t{-1}, std::ptrdiff_t{row + 5}, std::ptrdiff_t{-row},
                                              std::ptrdiff_t{-row - 3}, std::ptrdiff_t{row / 2 + 1}}) {
                expectLayout(copy, {width, 4}, 5, step, Guard::end);
                expectLayout(copy, {width, 4}, 0, step, Guard::begin, 3);
                if (HasFailure()) return;
            }
        }
    }
}

TEST_P(CopyLayout, ChannelByChannel) {
    for (const int width : {1, 2, 16, 17, 33, 100}) {
        std::vector<Kuv8u> dst(static_cast<std::size_t>(3 * width), 0), wanted(dst);
        for (int c = 0; c < 3; ++c) {
            std::vector<Kuv8u> src;
            for (int i = 0; i < width; ++i) src.push_back(static_cast<Kuv8u>(i * 7 + c * 50 + 1));
            for (int i = 0; i < width; ++i) wanted[static_cast<std::size_t>(3 * i + c)] = src[static_cast<std::size_t>(i)];
            EXPECT_EQ(kuviCopy_8u_C1C3R(src.data(), width, dst.data() + c, 3 * width, {width, 1}), kuvStatusOk);
        }
        EXPECT_EQ(dst, wanted);
    }
}

TEST_P(CopyLayout, ColoursOntoThemselves) {
    for (const int width : {1, 9, 100}) {
        const Image image("image", {width * 8, 3, width * 8 + 3, Guard::end, 0, 2}, 1);
        const Bytes before = image.bytes();
        EXPECT_EQ(watched([&] {
                      return kuviCopy_16u_AC4R(image.row<Kuv16u>(), image.step(), image.row<Kuv16u>(), image.step(), {width, 3});
                  }),
                  kuvStatusOk);
        EXPECT_EQ(watched([&] { return kuviCopy_8u_AC4R(image.row(), image.step(), image.row(), image.step(), {width, 3}); }), kuvStatusOk);
        EXPECT_EQ(image.difference(before), "");
    }
}

TEST_P(CopyLayout, Planes) {
    for (const auto& [status, bytes] : {std::pair{kuvStatusOk, 0x7FFFFFFF}, {kuvStatusOk, 0x1000}, {kuvStatusNoCpuid, 0x1000}}) {
        const PresetCache cache(status, bytes);
        for (int width = 1; width <= 100; ++width) {
            for (const int padding : {0, 1}) expectBothPlanesPadded({width, 2}, padding, width % 2 == 0 ? Guard::end : Guard::begin);
            if (HasFailure()) return;
        }
        for (const int width : {511, 512, 513, 1000}) {
            for (const int gap : {0, 1, 2, 4, 16, 31}) {
                expectBothPlanesPadded({width, 5}, 0, Guard::begin, gap);
                expectBothPlanesPadded({width, 5}, 7, Guard::end, gap);
                if (HasFailure()) return;
            }
        }
    }
}

TEST_P(CopyLayout, PlanesOfAnyStep) {
    for (const auto& [status, bytes] : {std::pair{kuvStatusOk, 0x7FFFFFFF}, {kuvStatusOk, 0x1000}, {kuvStatusNoCpuid, 0x1000}}) {
        const PresetCache cache(status, bytes);
        for (const int width : {1, 7, 40, 513}) {
            for (const std::ptrdiff_t planeStep : {0, 1, -1, width / 2, -width, -width - 3, width + 2}) {
                for (const std::ptrdiff_t dstStep : {0, 1, -1, width, -3 * width, -4 * width - 5, 4 * width + 1}) {
                    expectBothPlanes({width, 4}, planeStep, dstStep, dstStep, dstStep % 2 == 0 ? Guard::end : Guard::begin);
                    if (HasFailure()) return;
                }
            }
        }
    }
}

TEST_P(CopyLayout, Masks) {
    for (int width = 1; width <= 140 && !HasFailure(); ++width) {
        for (const int oneMaskIn : {0, 1, 2, 10}) {
            for (const int padding : {0, 3}) {
                const Guard guard = width % 2 == 0 ? Guard::end : Guard::begin;
                const MaskedPlaces bytes = {width + padding, width + padding, width + padding, guard};
                expectMasked<Kuv8u>(kuviCopy_8u_C1MR, {width, 2}, oneMaskIn, bytes);
                const MaskedPlaces words = {2 * width + padding, 2 * width + padding, width + padding, guard};
                expectMasked<Kuv16u>(kuviCopy_16u_C1MR, {width, 2}, oneMaskIn, words);
            }
        }
    }
}

TEST_P(CopyLayout, MasksOfAnyStep) {
    for (const int width : {1, 7, 40, 100}) {
        const auto steps = [&](int row) { return std::array<std::ptrdiff_t, 7>{0, 1, -1, row / 2, -row, -row - 3, row + 2}; };
        for (const std::ptrdiff_t maskStep : steps(width)) {
            for (const std::ptrdiff_t step : steps(width)) {
                expectMasked<Kuv8u>(kuviCopy_8u_C1MR, {width, 4}, 2, {step, width + 5, maskStep});
                expectMasked<Kuv8u>(kuviCopy_8u_C1MR, {width, 4}, 2, {width, step, maskStep, Guard::begin});
            }
            for (const std::ptrdiff_t step : steps(2 * width)) {
                expectMasked<Kuv16u>(kuviCopy_16u_C1MR, {width, 4}, 2, {step, 2 * width + 5, maskStep});
                expectMasked<Kuv16u>(kuviCopy_16u_C1MR, {width, 4}, 2, {2 * width, step, maskStep, Guard::begin});
            }
            if (HasFailure()) return;
        }
    }
}

TEST_P(CopyLayout, MasksAtAnyAddress) {
    for (int gap = 0; gap < 34 && !HasFailure(); ++gap) {
        for (const auto& [srcGap, dstGap, maskGap] : {std::array{gap, 0, 0}, {0, gap, 0}, {0, 0, gap}, {gap, gap, gap}}) {
            for (const int width : {5, 33, 70}) {
                expectMasked<Kuv8u>(kuviCopy_8u_C1MR, {width, 2}, 2, {width, width, width, Guard::begin, srcGap, dstGap, maskGap});
                expectMasked<Kuv16u>(kuviCopy_16u_C1MR, {width, 2}, 2,
                                     {2 * width, 2 * width, width, Guard::begin, srcGap, dstGap, maskGap});
            }
        }
    }
}

TEST_P(CopyLayout, RowsFurtherApartThan32BitsTell) {
    constexpr std::ptrdiff_t step = 0x7FFFFFF1;
    constexpr std::size_t bytes = 512;
    static constexpr KuviSize size = {50, 3};
    const DistantMemory from(3 * static_cast<std::size_t>(step)), to(3 * static_cast<std::size_t>(step)),
        masks(3 * static_cast<std::size_t>(step));
    KUV_NEEDS(from);
    KUV_NEEDS(to);
    KUV_NEEDS(masks);
    Random random(1);
    // `copyRow` does to a row what `call` does to the image.
    const auto expectRows = [&](const std::string& name, auto call, auto copyRow) {
        for (const bool upward : {false, true}) {
            const std::ptrdiff_t signedStep = upward ? -step : step, start = upward ? 2 * step : 0;
            const auto row = [&](const DistantMemory& memory, int r) {
                return reinterpret_cast<unsigned char*>(memory.memory()) + start + signedStep * r;
            };
            Bytes wanted[3];
            for (int r = 0; r < size.height; ++r) {
                for (std::size_t i = 0; i < bytes; ++i) {
                    row(from, r)[i] = static_cast<unsigned char>(random());
                    row(to, r)[i] = static_cast<unsigned char>(random());
                    row(masks, r)[i] = static_cast<unsigned char>(oneIn(random, 2));
                }
                wanted[r].assign(row(to, r), row(to, r) + bytes);
                copyRow(row(from, r), wanted[r].data(), row(masks, r));
            }
            EXPECT_EQ(watched([&] { return call(row(from, 0), row(to, 0), static_cast<Kuv32s>(signedStep), row(masks, 0)); }), kuvStatusOk);
            for (int r = 0; r < size.height; ++r) {
                EXPECT_EQ(std::memcmp(row(to, r), wanted[r].data(), bytes), 0) << name << ", row " << r << (upward ? ", upward" : "");
            }
        }
    };
    using In = const unsigned char*;
    using Out = unsigned char*;
    for (const LayoutCopy& copy : layoutCopies) {
        expectRows(
            copy.name, [&](In src, Out dst, Kuv32s distance, In) { return copy.call(src, distance, dst, distance, size); },
            [&](In src, Out dst, In) {
                for (int i = 0; i < size.width; ++i) {
                    std::memcpy(dst + i * copy.dstSamples * copy.sampleBytes, src + i * copy.srcSamples * copy.sampleBytes,
                                static_cast<std::size_t>(copy.colours * copy.sampleBytes));
                }
            });
    }
    // Planes side by side.
    const auto expectPlanesApart = [&](const char* name, auto function, int count) {
        const auto plane = [](In src, int c) { return src + c * size.width; };
        expectRows(
            name,
            [&](In src, Out dst, Kuv32s distance, In) {
                const Kuv8u* const planes[] = {plane(src, 0), plane(src, 1), plane(src, 2), plane(src, 3)};
                return function(planes, distance, dst, distance, size);
            },
            [&](In src, Out dst, In) {
                for (int i = 0; i < count * size.width; ++i) dst[i] = plane(src, i % count)[i / count];
            });
    };
    expectPlanesApart("kuviCopy_8u_P3C3R", kuviCopy_8u_P3C3R, 3);
    expectPlanesApart("kuviCopy_8u_P4C4R", kuviCopy_8u_P4C4R, 4);
    const auto expectMaskedApart = [&]<class T>(const char* name, T, auto function) {
        expectRows(
            name,
            [&](In src, Out dst, Kuv32s distance, In mask) {
                return function(reinterpret_cast<const T*>(src), distance, reinterpret_cast<T*>(dst), distance, size, mask, distance);
            },
            [&](In src, Out dst, In mask) {
                for (int i = 0; i < size.width; ++i) {
                    if (mask[i] != 0) store(dst, i, load<T>(src, i));
                }
            });
    };
    expectMaskedApart("kuviCopy_8u_C1MR", Kuv8u{}, kuviCopy_8u_C1MR);
    expectMaskedApart("kuviCopy_16u_C1MR", Kuv16u{}, kuviCopy_16u_C1MR);
}

}  // namespace
