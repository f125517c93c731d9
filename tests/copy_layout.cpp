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

    template <int count, class Function>
    void expectPlanes(Function function, KuviSize size, int padding, Guard guard, int gap) {
        std::vector<std::unique_ptr<Image>> planes;
        const Kuv8u* addresses[count];
        for (int c = 0; c < count; ++c) {
            planes.push_back(
                std::make_unique<Image>("plane", Geometry{size.width, size.height, size.width + padding, guard, 0, 1}, ++seed_));
            addresses[c] = planes.back()->row();
        }
        const Image dst("dst", {size.width * count, size.height, (size.width + padding) * count, guard, gap, 1}, ++seed_);
        Bytes wanted = dst.bytes();
        for (int r = 0; r < size.height; ++r) {
            for (int i = 0; i < size.width * count; ++i) {
                dst.row(wanted, r)[i] = planes[static_cast<std::size_t>(i % count)]->row(r)[i / count];
            }
        }
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << count << " planes, " << size.width << " x " << size.height
                                        << "\n  dst: " << dst.geometry());
        EXPECT_EQ(watched([&] { return function(addresses, planes[0]->step(), dst.row(), dst.step(), size); }), kuvStatusOk);
        EXPECT_EQ(dst.difference(wanted), "");
        for (int c = 0; c < count; ++c) {
            addresses[c] = nullptr;
            EXPECT_EQ(function(addresses, planes[0]->step(), dst.row(), dst.step(), {0, 0}), kuvStatusNullPtr) << "plane " << c;
            addresses[c] = planes[static_cast<std::size_t>(c)]->row();
        }
        EXPECT_EQ(dst.difference(wanted), "");
    }

    template <class T, class Function>
    void expectMasked(Function function, KuviSize size, int padding, int oneMaskIn, Guard guard) {
        const int row = size.width * static_cast<int>(sizeof(T));
        const Image src("src", {row, size.height, row + padding, guard, 0, sizeof(T)}, ++seed_),
            dst("dst", {row, size.height, row + padding, guard, 0, sizeof(T)}, ++seed_);
        const Image mask("mask", {size.width, size.height, size.width + padding, guard, 0, 1}, ++seed_);
        Random random(seed_);
        Bytes wanted = dst.bytes();
        for (int r = 0; r < size.height; ++r) {
            for (int i = 0; i < size.width; ++i) {
                // Any bit counts.
                const unsigned char element =
                    oneMaskIn > 0 && oneIn(random, oneMaskIn) ? static_cast<unsigned char>(1u << below(random, 8)) : 0;
                mask.row(r)[i] = element;
                if (element != 0) store(dst.row(wanted, r), i, load<T>(src.row(r), i));
            }
        }
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << sizeof(T) << " bytes, " << size.width << " x " << size.height);
        EXPECT_EQ(watched([&] { return function(src.row<T>(), src.step(), dst.row<T>(), dst.step(), size, mask.row(), mask.step()); }),
                  kuvStatusOk);
        EXPECT_EQ(dst.difference(wanted), "");
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
            for (const int padding : {0, 1}) {
                expectPlanes<3>(kuviCopy_8u_P3C3R, {width, 2}, padding, width % 2 == 0 ? Guard::end : Guard::begin, 0);
                expectPlanes<4>(kuviCopy_8u_P4C4R, {width, 2}, padding, width % 2 == 0 ? Guard::end : Guard::begin, 0);
            }
            if (HasFailure()) return;
        }
        for (const int width : {511, 512, 513, 1000}) {
            for (const int gap : {0, 1, 2, 4, 16, 31}) {
                expectPlanes<3>(kuviCopy_8u_P3C3R, {width, 5}, 0, Guard::begin, gap);
                expectPlanes<4>(kuviCopy_8u_P4C4R, {width, 5}, 0, Guard::begin, gap);
                expectPlanes<3>(kuviCopy_8u_P3C3R, {width, 5}, 7, Guard::end, gap);
                expectPlanes<4>(kuviCopy_8u_P4C4R, {width, 5}, 7, Guard::end, gap);
                if (HasFailure()) return;
            }
        }
    }
}

TEST_P(CopyLayout, Masks) {
    for (int width = 1; width <= 140 && !HasFailure(); ++width) {
        for (const int oneMaskIn : {0, 1, 2, 10}) {
            for (const int padding : {0, 3}) {
                const Guard guard = width % 2 == 0 ? Guard::end : Guard::begin;
                expectMasked<Kuv8u>(kuviCopy_8u_C1MR, {width, 2}, padding, oneMaskIn, guard);
                expectMasked<Kuv16u>(kuviCopy_16u_C1MR, {width, 2}, padding, oneMaskIn, guard);
            }
        }
    }
}

TEST_P(CopyLayout, RowsFurtherApartThan32BitsTell) {
    constexpr std::ptrdiff_t step = 0x7FFFFFF1;
    const DistantMemory from(3 * static_cast<std::size_t>(step)), to(3 * static_cast<std::size_t>(step));
    KUV_NEEDS(from);
    KUV_NEEDS(to);
    constexpr int width = 50;
    for (const LayoutCopy& copy : layoutCopies) {
        const auto pitch = static_cast<std::size_t>(copy.dstSamples * copy.sampleBytes);
        for (int r = 0; r < 3; ++r) {
            std::memset(from.memory() + step * r, 'a' + r, 500);
            std::memset(to.memory() + step * r, 0, 500);
        }
        EXPECT_EQ(watched([&] {
                      return copy.call(from.memory(), static_cast<Kuv32s>(step), to.memory(), static_cast<Kuv32s>(step), {width, 3});
                  }),
                  kuvStatusOk);
        for (int r = 0; r < 3; ++r) {
            EXPECT_EQ(to.memory()[step * r + static_cast<std::ptrdiff_t>((width - 1) * pitch)], 'a' + r) << copy.name;
        }
    }
}

}  // namespace
