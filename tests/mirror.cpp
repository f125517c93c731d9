// Mirror images, between two images and in place.
#include <vector>

#include "support/agreement.hpp"
#include "support/distant.hpp"
#include "support/statuses.hpp"

namespace {

using namespace kuvtest;

constexpr Kuv32s plainAxes[] = {kuvAxisHorizontal, kuvAxisVertical, kuvAxisBoth}, diagonals[] = {kuvAxisDiagonal, kuvAxisSecondDiagonal};

// (axis)
struct PlainAxis {
    std::tuple<Kuv32s> operator()(Draw& draw) const { return {plainAxes[below(draw.random, 3)]}; }
};
struct Diagonal {
    std::tuple<Kuv32s> operator()(Draw& draw) const { return {diagonals[below(draw.random, 2)]}; }
};

// (src, srcStep, dst, dstStep): images for a diagonal, the first with the sides of the second exchanged. All of the destination is
// compared, with what was in it and is not written: its rows may share bytes.
template <class T>
struct DiagonalImages {
    static Image& image(Draw& draw, Role role, KuviSize size) {
        std::ptrdiff_t step = drawStep(draw.random, StepClass::A, size.width * static_cast<int>(sizeof(T)));
        if (sizeof(T) == 2) step = (step + 1) & ~std::ptrdiff_t{1};
        return draw.image<T>(role, size.width, size.height, step);
    }
    std::tuple<const T*, Kuv32s, T*, Kuv32s> operator()(Draw& draw) const {
        const Image& src = image(draw, Role::source, {draw.size.height, draw.size.width});
        const Image& dst = image(draw, Role::inOut, draw.size);
        return {src.row<T>(), src.step(), dst.row<T>(), dst.step()};
    }
};

// Argument 2 becomes argument 0.
struct OntoSource {
    template <class Tuple>
    Violation<Tuple> bind() const {
        return {2, 0, "dst = src", [](Tuple& arguments) {
                    std::get<2>(arguments) = const_cast<std::tuple_element_t<2, Tuple>>(std::get<0>(arguments));
                }};
    }
};

#define BETWEEN(T, channelCount) Source<T>{.channels = channelCount}, Output<T>{.channels = channelCount}, RoiSize{}, PlainAxis{}
#define CHECKS_BETWEEN(function, T, channelCount, ...)                                                                           \
    KUV_AGREES(function, BETWEEN(T, channelCount));                                                                              \
    KUV_CHECKS(function, call(BETWEEN(T, channelCount)), check(kuvStatusNullPtr, null<0>(), null<2>()), badSize<4>(),           \
               check(kuvStatusBadAxis, set<5>(-1), set<5>(5), set<5>(INT32_MIN), set<5>(INT32_MAX) __VA_OPT__(, ) __VA_ARGS__))
CHECKS_BETWEEN(kuviMirror_8u_C1R, Kuv8u, 1);
CHECKS_BETWEEN(kuviMirror_16u_C1R, Kuv16u, 1);
CHECKS_BETWEEN(kuviMirror_8u_C3R, Kuv8u, 3, set<5>(3), set<5>(4));
CHECKS_BETWEEN(kuviMirror_16u_C3R, Kuv16u, 3, set<5>(3), set<5>(4));

#define CHECKS_IN_PLACE(function, T, channelCount)                                                                               \
    KUV_AGREES(function, InOut<T>{.channels = channelCount}, RoiSize{}, PlainAxis{});                                            \
    KUV_CHECKS(function, call(InOut<T>{.channels = channelCount}, RoiSize{}, PlainAxis{}), check(kuvStatusNullPtr, null<0>()),   \
               badSize<2>(), check(kuvStatusBadAxis, set<3>(-1), set<3>(3), set<3>(4), set<3>(5), set<3>(INT32_MIN), set<3>(INT32_MAX)))
CHECKS_IN_PLACE(kuviMirror_8u_C1IR, Kuv8u, 1);
CHECKS_IN_PLACE(kuviMirror_8u_C3IR, Kuv8u, 3);
CHECKS_IN_PLACE(kuviMirror_16u_C1IR, Kuv16u, 1);
CHECKS_IN_PLACE(kuviMirror_16u_C3IR, Kuv16u, 3);

// The diagonals of the functions that have them are other calls with other checks.
#define CHECKS_OF_DIAGONALS(function, T, ...)                                                                                    \
    [[maybe_unused]] const bool diagonalsOf_##function[] = {                                                                     \
        registerAgreement("px", #function "_diagonals", __FILE__, __LINE__, function, DiagonalImages<T>{}, RoiSize{}, Diagonal{}), \
        registerChecks(#function "_diagonals", __FILE__, __LINE__, function, call(DiagonalImages<T>{}, RoiSize{}, Diagonal{}),   \
                       check(kuvStatusNullPtr, null<0>(), null<2>()),                                                            \
                       check(kuvStatusBadStep, set<1>(0), set<1>(-2), set<1>(INT32_MIN), set<3>(0), set<3>(-2),                  \
                             set<3>(INT32_MIN) __VA_OPT__(, ) __VA_ARGS__),                                                      \
                       badSize<4>(), check(kuvStatusInternal, OntoSource{}))}
CHECKS_OF_DIAGONALS(kuviMirror_8u_C1R, Kuv8u);
CHECKS_OF_DIAGONALS(kuviMirror_16u_C1R, Kuv16u, set<1>(1), set<1>(1001), set<1>(INT32_MAX), set<1>(-1), set<3>(1), set<3>(1001),
                    set<3>(INT32_MAX), set<3>(-1));

struct Form {
    const char* name;
    int sampleBytes, channels;
    KuvStatus (*between)(const void* src, Kuv32s srcStep, void* dst, Kuv32s dstStep, KuviSize size, Kuv32s axis);
    KuvStatus (*inPlace)(void* srcDst, Kuv32s srcDstStep, KuviSize size, Kuv32s axis);

    int pixelBytes() const { return sampleBytes * channels; }
    bool hasDiagonals() const { return channels == 1; }
};

#define FORM(name, T, channels)                                                                                        \
    {#name, sizeof(T), channels,                                                                                       \
     [](const void* src, Kuv32s srcStep, void* dst, Kuv32s dstStep, KuviSize size, Kuv32s axis) {                      \
         return kuviMirror_##name##R(static_cast<const T*>(src), srcStep, static_cast<T*>(dst), dstStep, size, axis);  \
     },                                                                                                                \
     [](void* srcDst, Kuv32s srcDstStep, KuviSize size, Kuv32s axis) {                                                 \
         return kuviMirror_##name##IR(static_cast<T*>(srcDst), srcDstStep, size, axis);                                \
     }}
constexpr Form forms[] = {FORM(8u_C1, Kuv8u, 1), FORM(8u_C3, Kuv8u, 3), FORM(16u_C1, Kuv16u, 1), FORM(16u_C3, Kuv16u, 3)};

constexpr bool isDiagonal(Kuv32s axis) { return axis == kuvAxisDiagonal || axis == kuvAxisSecondDiagonal; }
constexpr KuviSize sourceSize(KuviSize size, Kuv32s axis) { return isDiagonal(axis) ? KuviSize{size.height, size.width} : size; }

// Where the pixel in row r and column c of the source goes.
KuviPoint placeOf(int r, int c, KuviSize size, Kuv32s axis) {
    switch (axis) {
        case kuvAxisHorizontal: return {c, size.height - 1 - r};
        case kuvAxisVertical: return {size.width - 1 - c, r};
        case kuvAxisBoth: return {size.width - 1 - c, size.height - 1 - r};
        case kuvAxisDiagonal: return {r, c};
        default: return {size.width - 1 - r, size.height - 1 - c};
    }
}

// Exchanges two pixels, a sample after the other.
void exchange(const Form& form, unsigned char* a, unsigned char* b) {
    for (int c = 0; c < form.channels; ++c) {
        unsigned char kept[2];
        const auto n = static_cast<std::size_t>(form.sampleBytes);
        std::memcpy(kept, a + c * form.sampleBytes, n);
        std::memmove(a + c * form.sampleBytes, b + c * form.sampleBytes, n);
        std::memcpy(b + c * form.sampleBytes, kept, n);
    }
}

void reverseRow(const Form& form, unsigned char* row, int width) {
    for (int i = 0; i < width / 2; ++i) exchange(form, row + i * form.pixelBytes(), row + (width - 1 - i) * form.pixelBytes());
}

class Mirror : public VariantTest {
protected:
    void expectMirror(const Form& form, KuviSize size, Kuv32s axis, std::ptrdiff_t srcStep, std::ptrdiff_t dstStep,
                      Guard guard = Guard::end, int srcGap = 0, int dstGap = 0) {
        const KuviSize from = sourceSize(size, axis);
        const Image src("src", {from.width * form.pixelBytes(), from.height, srcStep, guard, srcGap, form.sampleBytes}, random_());
        const Image dst("dst", {size.width * form.pixelBytes(), size.height, dstStep, guard, dstGap, form.sampleBytes}, random_());
        const Bytes srcBefore = src.bytes();
        Bytes wanted = dst.bytes();
        for (int r = 0; r < from.height; ++r) {
            for (int c = 0; c < from.width; ++c) {
                const KuviPoint to = placeOf(r, c, size, axis);
                std::memcpy(dst.row(wanted, to.y) + to.x * form.pixelBytes(), src.row(r) + c * form.pixelBytes(),
                            static_cast<std::size_t>(form.pixelBytes()));
            }
        }
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << form.name << ", axis " << axis << ", " << size.width << " x "
                                        << size.height << "\n  src: " << src.geometry() << "\n  dst: " << dst.geometry());
        EXPECT_EQ(watched([&] { return form.between(src.row(), src.step(), dst.row(), dst.step(), size, axis); }), kuvStatusOk);
        EXPECT_EQ(dst.difference(wanted), "");
        EXPECT_EQ(src.difference(srcBefore), "");
    }

    // Through the function in place, or through the one between two images.
    void expectInPlace(const Form& form, KuviSize size, Kuv32s axis, std::ptrdiff_t step, Guard guard = Guard::end, int gap = 0) {
        const Image image("srcDst", {size.width * form.pixelBytes(), size.height, step, guard, gap, form.sampleBytes}, random_());
        Bytes wanted = image.bytes();
        for (int r = 0; r < size.height; ++r) {
            if (axis == kuvAxisVertical || (axis == kuvAxisBoth && size.height % 2 != 0 && r == size.height / 2)) {
                reverseRow(form, image.row(wanted, r), size.width);
            }
            if (axis == kuvAxisVertical || r >= size.height / 2) continue;
            for (int i = 0; i < size.width; ++i) {
                const int other = axis == kuvAxisBoth ? size.width - 1 - i : i;
                exchange(form, image.row(wanted, r) + i * form.pixelBytes(),
                         image.row(wanted, size.height - 1 - r) + other * form.pixelBytes());
            }
        }
        const bool alone = oneIn(random_, 2);
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << form.name << (alone ? " in place" : " onto itself") << ", axis " << axis
                                        << ", " << size.width << " x " << size.height << "\n  srcDst: " << image.geometry());
        EXPECT_EQ(watched([&] {
                      return alone ? form.inPlace(image.row(), image.step(), size, axis)
                                   : form.between(image.row(), image.step(), image.row(), image.step(), size, axis);
                  }), kuvStatusOk);
        EXPECT_EQ(image.difference(wanted), "");
    }

    void expectBoth(const Form& form, KuviSize size, int padding, Guard guard, int srcGap = 0, int dstGap = 0) {
        const std::ptrdiff_t row = size.width * form.pixelBytes() + padding;
        for (const Kuv32s axis : plainAxes) {
            expectMirror(form, size, axis, row, row, guard, srcGap, dstGap);
            expectInPlace(form, size, axis, row, guard, dstGap);
        }
        if (form.hasDiagonals()) expectDiagonals(form, size, padding, guard, srcGap, dstGap);
    }

    void expectDiagonals(const Form& form, KuviSize size, int padding, Guard guard, int srcGap = 0, int dstGap = 0) {
        const int even = padding * form.sampleBytes;
        for (const Kuv32s axis : diagonals) {
            expectMirror(form, size, axis, size.height * form.sampleBytes + even, size.width * form.sampleBytes + even, guard, srcGap,
                         dstGap);
        }
    }

    Random random_{1};
};

KUV_FOR_EACH_VARIANT(Mirror);

TEST_P(Mirror, EveryWidth) {
    for (const Form& form : forms) {
        for (int width = 1; width <= 110; ++width) {
            for (const Guard guard : {Guard::end, Guard::begin}) {
                expectBoth(form, {width, 1 + width % 5}, 0, guard);
                expectBoth(form, {width, 1 + (width + 2) % 5}, 3, guard);
            }
            if (HasFailure()) return;
        }
        for (int width = 111; width <= 340; width += 1 + width % 3) expectBoth(form, {width, 2 + width % 2}, width % 4, Guard::end);
        for (const int width : {400, 417, 1000, 4099}) expectBoth(form, {width, 3}, 5, Guard::end);
        if (HasFailure()) return;
    }
}

TEST_P(Mirror, EveryHeight) {
    for (const Form& form : forms) {
        for (int height = 1; height <= 40; ++height) {
            expectBoth(form, {1, height}, 0, Guard::end);
            expectBoth(form, {2 + height % 7, height}, height % 3, Guard::begin);
            if (HasFailure()) return;
        }
    }
}

TEST_P(Mirror, EveryAlignment) {
    for (const Form& form : forms) {
        for (int dstGap = 0; dstGap < 65; dstGap += sanitized ? 7 : 1) {
            for (const int srcGap : {0, 1, 16, 31, dstGap}) {
                for (const int width : {1, 9, 40, 333}) {
                    expectBoth(form, {width, 2}, 64, Guard::begin, srcGap, dstGap);
                }
            }
            if (HasFailure()) return;
        }
    }
}

// Every pair of sides around those of the blocks, so that the last blocks lie on others by any distance.
TEST_P(Mirror, EverySideAboutTheDiagonals) {
    for (const Form& form : forms) {
        if (!form.hasDiagonals()) continue;
        for (int width = 1; width <= 70; width += width < 40 ? 1 : 3) {
            for (const int height : {1, 2, 7, 8, 9, 15, 16, 17, 24, 31, 32, 33, 47, 49, 64, 65, 80}) {
                expectDiagonals(form, {width, height}, width % 3, width % 2 != 0 ? Guard::end : Guard::begin);
                if (HasFailure()) return;
            }
        }
        for (const KuviSize size : {KuviSize{200, 130}, {131, 203}, {1000, 16}, {17, 700}, {1, 500}, {500, 1}}) {
            expectDiagonals(form, size, 0, Guard::end);
            expectDiagonals(form, size, 5, Guard::begin, 1, 7);
        }
    }
}

TEST_P(Mirror, AnyStep) {
    for (const Form& form : forms) {
        for (const int width : {1, 2, 9, 17, 40, 75}) {
            const int row = width * form.pixelBytes();
            const std::ptrdiff_t steps[] = {row,         row + 1, row + 64,     0,        1,    3,       row - 1,
                                            row / 2 + 1, -1,      -row / 2 - 1, -row + 1, -row, -row - 5};
            for (const Kuv32s axis : plainAxes) {
                for (const std::ptrdiff_t srcStep : steps) {
                    for (const std::ptrdiff_t dstStep : steps) {
                        expectMirror(form, {width, 5}, axis, srcStep, dstStep, oneIn(random_, 2) ? Guard::end : Guard::begin);
                    }
                    for (const int height : {1, 2, 5, 6}) expectInPlace(form, {width, height}, axis, srcStep);
                    if (HasFailure()) return;
                }
            }
        }
    }
}

// Also steps at which rows share bytes.
TEST_P(Mirror, AnyStepAboutTheDiagonals) {
    for (const Form& form : forms) {
        if (!form.hasDiagonals()) continue;
        for (const KuviSize size : {KuviSize{1, 1}, {3, 5}, {16, 16}, {33, 18}, {40, 70}}) {
            for (const Kuv32s axis : diagonals) {
                for (const int srcStep : {1, 2, 7, size.height, size.height + 1, 3 * size.height}) {
                    for (const int dstStep : {1, 3, size.width - 1, size.width, size.width + 1, 100}) {
                        if (dstStep > 0) expectMirror(form, size, axis, srcStep * form.sampleBytes, dstStep * form.sampleBytes);
                    }
                    if (HasFailure()) return;
                }
            }
        }
    }
}

TEST_P(Mirror, InPlaceWithStep0) {
    Kuv8u row[40];
    for (const int height : {1, 2, 3, 8}) {
        for (const Kuv32s axis : plainAxes) {
            for (int i = 0; i < 40; ++i) row[i] = static_cast<Kuv8u>(i);
            EXPECT_EQ(kuviMirror_8u_C1IR(row, 0, {40, height}, axis), kuvStatusOk);
            const bool reversed = axis != kuvAxisHorizontal && height % 2 != 0;
            for (int i = 0; i < 40; ++i) {
                EXPECT_EQ(row[i], reversed ? 39 - i : i) << GetParam() << ", axis " << axis << ", height " << height;
            }
        }
    }
}

TEST_P(Mirror, BadAxes) {
    alignas(16) Kuv16u a[32] = {}, b[32] = {};
    Kuv8u* const bytes = reinterpret_cast<Kuv8u*>(a);
    Kuv8u* const others = reinterpret_cast<Kuv8u*>(b);
    for (const Kuv32s axis : {3, 4, 5, -1}) {
        EXPECT_EQ(kuviMirror_8u_C3R(bytes, 6, others, 6, {2, 2}, axis), kuvStatusBadAxis);
        EXPECT_EQ(kuviMirror_16u_C3R(a, 12, b, 12, {2, 2}, axis), kuvStatusBadAxis);
        EXPECT_EQ(kuviMirror_8u_C3R(bytes, 6, bytes, 6, {2, 2}, axis), kuvStatusBadAxis);
        EXPECT_EQ(kuviMirror_8u_C3R(nullptr, 6, others, 6, {2, 2}, axis), kuvStatusNullPtr);
        EXPECT_EQ(kuviMirror_8u_C3R(nullptr, 6, nullptr, 6, {0, 2}, axis), kuvStatusNullPtr);
        EXPECT_EQ(kuviMirror_8u_C3R(bytes, 6, bytes, 6, {2, 0}, axis), kuvStatusBadSize);
        EXPECT_EQ(kuviMirror_8u_C1IR(bytes, 6, {2, 2}, axis), kuvStatusBadAxis);
        EXPECT_EQ(kuviMirror_16u_C1IR(a, 6, {2, 2}, axis), kuvStatusBadAxis);
        if (isDiagonal(axis)) continue;
        EXPECT_EQ(kuviMirror_8u_C1R(bytes, 6, others, 6, {2, 2}, axis), kuvStatusBadAxis);
        EXPECT_EQ(kuviMirror_16u_C1R(a, 6, a, 6, {2, 2}, axis), kuvStatusBadAxis);
        EXPECT_EQ(kuviMirror_16u_C1R(nullptr, 0, nullptr, 0, {2, 2}, axis), kuvStatusNullPtr);
    }
}

TEST_P(Mirror, NoTranspositionInPlace) {
    Kuv16u image[64 * 64];
    for (const Kuv32s axis : diagonals) {
        for (const int side : {1, 2, 16, 64}) {
            EXPECT_EQ(kuviMirror_8u_C1R(reinterpret_cast<Kuv8u*>(image), 64, reinterpret_cast<Kuv8u*>(image), 64, {side, side}, axis),
                      kuvStatusInternal);
            EXPECT_EQ(kuviMirror_16u_C1R(image, 128, image, 128, {side, side}, axis), kuvStatusInternal);
        }
        EXPECT_EQ(kuviMirror_16u_C1R(nullptr, 0, nullptr, 0, {0, 0}, axis), kuvStatusNullPtr);
        EXPECT_EQ(kuviMirror_16u_C1R(image, 0, image, 0, {0, 0}, axis), kuvStatusBadStep) << "ahead of the size";
        EXPECT_EQ(kuviMirror_16u_C1R(image, 127, image, 128, {2, 2}, axis), kuvStatusBadStep);
        EXPECT_EQ(kuviMirror_16u_C1R(image, 128, image, 128, {2, 0}, axis), kuvStatusBadSize);
    }
}

// The addresses of the first and the last sample of a block's rows.
struct Rows {
    std::ptrdiff_t first, step;
    int samples, rows, sampleBytes;

    std::ptrdiff_t begin(int row) const { return first + row * step; }
    std::ptrdiff_t end(int row) const { return begin(row) + (samples - 1) * sampleBytes; }
    bool holdsCornerOf(const Rows& other) const {
        for (int row = 0; row < rows; ++row) {
            for (const int corner : {0, other.rows - 1}) {
                for (const std::ptrdiff_t address : {other.begin(corner), other.end(corner)}) {
                    if (begin(row) <= address && address <= end(row)) return true;
                }
            }
        }
        return false;
    }
};

// Corners against rows, one by one: also where rows share bytes, and where images overlap and no corner tells.
TEST_P(Mirror, OverlapIsWhatTheCornersTell) {
    std::vector<Kuv8u> memory(4096);
    int found[2] = {}, hidden = 0;
    for (int trial = 0; trial < rounds(20000); ++trial) {
        const int sampleBytes = 1 + below(random_, 2);
        const KuviSize size = {between(random_, 1, 6), between(random_, 1, 6)};
        const auto drawn = [&](int samples, int rows) {
            return Rows{1000 + below(random_, 120), between(random_, 1, 24) * sampleBytes, samples, rows, sampleBytes};
        };
        const Rows src = drawn(size.height, size.width), dst = drawn(size.width, size.height);
        const bool overlap = src.holdsCornerOf(dst) || dst.holdsCornerOf(src);
        ++found[overlap];
        for (int r = 0; !overlap && r < src.rows; ++r) {
            for (int c = 0; c < dst.rows; ++c) hidden += src.begin(r) <= dst.end(c) && dst.begin(c) <= src.end(r);
        }
        const Kuv32s axis = diagonals[trial % 2];
        const auto srcStep = static_cast<Kuv32s>(src.step), dstStep = static_cast<Kuv32s>(dst.step);
        const Bytes before = memory;
        const KuvStatus status =
            sampleBytes == 1
                ? kuviMirror_8u_C1R(&memory[static_cast<std::size_t>(src.first)], srcStep, &memory[static_cast<std::size_t>(dst.first)],
                                    dstStep, size, axis)
                : kuviMirror_16u_C1R(reinterpret_cast<const Kuv16u*>(&memory[static_cast<std::size_t>(src.first)]), srcStep,
                                     reinterpret_cast<Kuv16u*>(&memory[static_cast<std::size_t>(dst.first)]), dstStep, size, axis);
        ASSERT_EQ(status, overlap ? kuvStatusInternal : kuvStatusOk)
            << GetParam() << ", " << sampleBytes << "-byte samples, " << size.width << " x " << size.height << ", src at " << src.first
            << " by " << src.step << ", dst at " << dst.first << " by " << dst.step;
        if (overlap) {
            ASSERT_EQ(memory, before);
        }
    }
    for (const int each : {found[0], found[1], hidden}) EXPECT_GT(each, 0);
}

// With each answer that the cache may give: streamed, not streamed, unknown.
TEST_P(Mirror, LargeImages) {
    if (sanitized) GTEST_SKIP() << "the sanitizer takes too long for it";
    for (const auto& [status, bytes] : {std::pair{kuvStatusOk, 0x10000}, {kuvStatusOk, 0x7FFFFFFF}, {kuvStatusNoCpuid, 0x10000}}) {
        const PresetCache cache(status, bytes);
        for (const Form& form : forms) {
            for (const int row : {2048, 2076}) {
                for (const int gap : {0, 3}) {
                    const int width = row / form.pixelBytes(), height = 0x301000 / row;
                    for (const Kuv32s axis : {kuvAxisHorizontal, kuvAxisBoth}) {
                        expectMirror(form, {width, height}, axis, row, row + gap, Guard::begin, 1, gap);
                    }
                    if (form.hasDiagonals()) expectDiagonals(form, {width, height / 2}, gap, Guard::begin);
                    if (HasFailure()) return;
                }
            }
        }
        expectMirror(forms[0], {19, 0x30000}, kuvAxisHorizontal, 19, 20);
        expectMirror(forms[2], {33, 0xC400}, kuvAxisHorizontal, 66, -67);
    }
}

TEST_P(Mirror, RowsFurtherApartThan32BitsTell) {
    constexpr std::ptrdiff_t step = 0x7FFFFFF1;
    const DistantMemory from(3 * static_cast<std::size_t>(step)), to(3 * static_cast<std::size_t>(step));
    KUV_NEEDS(from);
    KUV_NEEDS(to);
    constexpr KuviSize size = {41, 3};
    for (const Form& form : forms) {
        for (const Kuv32s axis : plainAxes) {
            for (const bool upward : {false, true}) {
                const std::ptrdiff_t signedStep = upward ? -step : step, start = upward ? 2 * step : 0;
                const auto rowOf = [&](const DistantMemory& memory, int r) { return memory.memory() + start + signedStep * r; };
                const auto bytes = static_cast<std::size_t>(size.width * form.pixelBytes());
                Bytes wanted[3] = {Bytes(bytes), Bytes(bytes), Bytes(bytes)};
                for (int r = 0; r < 3; ++r) {
                    for (std::size_t i = 0; i < bytes; ++i) rowOf(from, r)[i] = static_cast<char>(random_());
                    for (int c = 0; c < size.width; ++c) {
                        const KuviPoint place = placeOf(r, c, size, axis);
                        std::memcpy(wanted[place.y].data() + place.x * form.pixelBytes(), rowOf(from, r) + c * form.pixelBytes(),
                                    static_cast<std::size_t>(form.pixelBytes()));
                    }
                }
                const auto step32 = static_cast<Kuv32s>(signedStep);
                EXPECT_EQ(watched([&] { return form.between(rowOf(from, 0), step32, rowOf(to, 0), step32, size, axis); }), kuvStatusOk);
                EXPECT_EQ(watched([&] { return form.inPlace(rowOf(from, 0), step32, size, axis); }), kuvStatusOk);
                for (int r = 0; r < 3; ++r) {
                    EXPECT_EQ(std::memcmp(rowOf(to, r), wanted[r].data(), bytes), 0)
                        << GetParam() << ", " << form.name << ", axis " << axis;
                    EXPECT_EQ(std::memcmp(rowOf(from, r), wanted[r].data(), bytes), 0)
                        << GetParam() << ", " << form.name << ", axis " << axis;
                }
            }
        }
    }
}

// The images stand in each other's gaps, where no corner lies in a row.
TEST_P(Mirror, DiagonalsWithRowsFurtherApartThan32BitsTell) {
    if (sanitized) GTEST_SKIP() << "the sanitizer has no room for it";
    constexpr std::ptrdiff_t step = 0x7FFFFFF0;
    constexpr KuviSize size = {35, 37};
    const DistantMemory memory(38 * static_cast<std::size_t>(step));
    KUV_NEEDS(memory);
    Kuv16u* const src = reinterpret_cast<Kuv16u*>(memory.memory() + 1);
    Kuv16u* const dst = reinterpret_cast<Kuv16u*>(memory.memory() + 513);
    const auto at = [&](const Kuv16u* image, int r, int c) { return reinterpret_cast<const char*>(image) + step * r + 2 * c; };
    for (int r = 0; r < size.width; ++r) {
        for (int c = 0; c < size.height; ++c) store(const_cast<char*>(at(src, r, c)), 0, static_cast<Kuv16u>(random_()));
    }
    for (const Kuv32s axis : diagonals) {
        EXPECT_EQ(watched([&] { return kuviMirror_16u_C1R(src, static_cast<Kuv32s>(step), dst, static_cast<Kuv32s>(step), size, axis); }),
                  kuvStatusOk);
        for (int r = 0; r < size.width; ++r) {
            for (int c = 0; c < size.height; ++c) {
                const KuviPoint to = placeOf(r, c, size, axis);
                ASSERT_EQ(load<Kuv16u>(at(dst, to.y, to.x)), load<Kuv16u>(at(src, r, c)))
                    << GetParam() << ", axis " << axis << ", row " << r << ", column " << c;
            }
        }
        EXPECT_EQ(kuviMirror_16u_C1R(src, static_cast<Kuv32s>(step), reinterpret_cast<Kuv16u*>(memory.memory() + 33 * step + 73),
                                     static_cast<Kuv32s>(step), size, axis),
                  kuvStatusInternal)
            << "the destination's first row begins within a late row of the source";
    }
}

}  // namespace
