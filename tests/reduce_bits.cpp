// The reduction of 16-bit samples to fewer levels.
#include <algorithm>
#include <vector>

#include "support/agreement.hpp"
#include "support/distant.hpp"
#include "support/reduce_bits_reference.hpp"
#include "support/stack.hpp"
#include "support/statuses.hpp"

namespace {

using namespace kuvtest;

// (noise, dither, levels, buffer): as large a buffer as it must be, on a page of its own. Where none is used, it is null or must stay
// as it is.
struct Dither {
    int channels;
    bool withBuffer = false;  // always one that is used

    std::tuple<Kuv32s, KuvDitherType, Kuv32s, Kuv8u*> operator()(Draw& draw) const {
        const KuvDitherType type = withBuffer ? between(draw.random, 1, 3) : below(draw.random, 5);
        const Kuv32s noise = oneIn(draw.random, 2) ? 0 : oneIn(draw.random, 4) ? 100 : between(draw.random, 1, 100);
        const Kuv32s levels = oneIn(draw.random, 4) ? 256 : between(draw.random, 2, oneIn(draw.random, 2) ? 8 : 256);
        Kuv32s bytes = 0;
        EXPECT_EQ(kuviReduceBitsGetBufferSize(channels, draw.size, noise, type, &bytes), kuvStatusOk);
        if (bytes > 0) return {noise, type, levels, draw.image<Kuv8u>(Role::scratch, bytes, 1, 0).row()};
        return {noise, type, levels, oneIn(draw.random, 2) ? nullptr : draw.image<Kuv8u>(Role::source, 64, 1, 0).row()};
    }
};

#define CHECKS_OF_REDUCTION(function, Out, pixelSamples)                                                                         \
    KUV_AGREES_FROM(w7, function, Source<Kuv16u>{.channels = pixelSamples}, Out<Kuv8u>{.channels = pixelSamples}, RoiSize{},      \
                    Dither{pixelSamples});                                                                                        \
    KUV_CHECKS(function,                                                                                                          \
               call(Source<Kuv16u>{.channels = pixelSamples}, Out<Kuv8u>{.channels = pixelSamples}, RoiSize{},                    \
                    Dither{pixelSamples, true}),                                                                                  \
               check(kuvStatusNullPtr, null<0>(), null<2>()), badSize<4>(),                                                       \
               check(kuvStatusBadNoise, set<5>(101), set<5>(-1), set<5>(INT32_MIN), set<5>(INT32_MAX)),                           \
               check(kuvStatusBadLevels, set<7>(1), set<7>(257), set<7>(0), set<7>(-1), set<7>(INT32_MIN), set<7>(INT32_MAX)),    \
               check(kuvStatusBadDitherType, set<6>(5), set<6>(-1), set<6>(INT32_MIN), set<6>(INT32_MAX)),                        \
               check(kuvStatusNullPtr, null<8>()))
CHECKS_OF_REDUCTION(kuviReduceBits_16u8u_C1R, Output, 1);
CHECKS_OF_REDUCTION(kuviReduceBits_16u8u_C3R, Output, 3);
CHECKS_OF_REDUCTION(kuviReduceBits_16u8u_AC4R, InOut, 4);

struct Channels {
    std::tuple<Kuv32s> operator()(Draw& draw) const {
        constexpr Kuv32s all[] = {kuvChannelsC1, kuvChannelsC3, kuvChannelsC4, kuvChannelsAC4};
        return {all[below(draw.random, 4)]};
    }
};
struct NoiseAndType {
    std::tuple<Kuv32s, KuvDitherType> operator()(Draw& draw) const { return {below(draw.random, 101), below(draw.random, 5)}; }
};
// At a multiple of its size, as a number is, in memory of which the rest must stay as it is.
struct SizeOut {
    std::tuple<Kuv32s*> operator()(Draw& draw) const {
        const auto address = reinterpret_cast<std::uintptr_t>(draw.image<Kuv8u>(Role::inOut, 7, 1, 0).row());
        return {reinterpret_cast<Kuv32s*>((address + 3) & ~std::uintptr_t{3})};
    }
};
KUV_AGREES(kuviReduceBitsGetBufferSize, Channels{}, RoiSize{}, NoiseAndType{}, SizeOut{});
KUV_CHECKS(kuviReduceBitsGetBufferSize, call(Channels{}, RoiSize{}, NoiseAndType{}, SizeOut{}),
           check(kuvStatusNullPtr, null<4>()), badWidth<1>(),
           check(kuvStatusBadChannels, set<0>(0), set<0>(2), set<0>(5), set<0>(8), set<0>(10), set<0>(-1), set<0>(INT32_MIN)),
           check(kuvStatusBadNoise, set<2>(101), set<2>(-1), set<2>(INT32_MIN), set<2>(INT32_MAX)),
           check(kuvStatusBadDitherType, set<3>(5), set<3>(-1), set<3>(INT32_MIN), set<3>(INT32_MAX)));

constexpr KuvDitherType diffusions[] = {kuvDitherFloydSteinberg, kuvDitherJarvisJudiceNinke, kuvDitherStucki};
constexpr int forms[] = {1, 3, 4};

auto functionOf(int pixelSamples) {
    return pixelSamples == 1 ? kuviReduceBits_16u8u_C1R : pixelSamples == 3 ? kuviReduceBits_16u8u_C3R : kuviReduceBits_16u8u_AC4R;
}

Kuv32s bufferBytes(const Reduction& reduction) {
    Kuv32s bytes = -1;
    EXPECT_EQ(kuviReduceBitsGetBufferSize(reduction.pixelSamples, reduction.size, reduction.noise, reduction.ditherType, &bytes),
              kuvStatusOk);
    return bytes;
}

class ReduceBits : public VariantTest {
protected:
    std::vector<Kuv8u> reference(const Reduction& reduction, const std::vector<Kuv16u>& src, const std::vector<Kuv8u>& before) {
        return GetParam().isPx() ? reducedInDoubles(reduction, src, before) : reducedInSingles(reduction, src, before);
    }

    struct Place {
        std::ptrdiff_t padding = 0;  // of the step
        Guard guard = Guard::end;
        int gap = 0;
        bool upwards = false;
    };

    // What photographs, tests and drawings are made of.
    std::vector<Kuv16u> samplesFor(const Reduction& reduction) {
        std::vector<Kuv16u> samples(reduction.samples());
        const int kind = below(random_, 7), constant = below(random_, 65536);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            int value = below(random_, 65536);
            if (kind == 1) value = constant;
            if (kind == 2) value = oneIn(random_, 2) ? 65535 : 0;
            if (kind == 3) value = 65535 - below(random_, 40);
            if (kind == 4) value = below(random_, 40);
            if (kind == 5) value = static_cast<int>(i * 97 % 65536);
            if (kind == 6) value = i % 50 < 25 ? 65535 - below(random_, 3) : below(random_, 3);
            samples[i] = static_cast<Kuv16u>(value);
        }
        return samples;
    }

    void expectReduction(const Reduction& r, Place srcAt, Place dstAt, Place bufferAt, const std::vector<Kuv16u>& samples) {
        const auto geometry = [&](int bytes, const Place& at, int elementBytes) {
            const std::ptrdiff_t step = bytes + at.padding;
            return Geometry{bytes, r.size.height, at.upwards ? -step : step, at.guard, at.gap, elementBytes};
        };
        const int rowSamples = r.rowSamples();
        const Image src("src", geometry(2 * rowSamples, srcAt, 2), random_()), dst("dst", geometry(rowSamples, dstAt, 1), random_());
        std::vector<Kuv8u> before;
        for (int y = 0; y < r.size.height; ++y) {
            for (int i = 0; i < rowSamples; ++i) {
                store(src.row(y), i, samples[static_cast<std::size_t>(y * rowSamples + i)]);
                before.push_back(dst.row(y)[i]);
            }
        }
        const int bytes = bufferBytes(r);
        const Image buffer("buffer", {std::max(bytes, 1), 1, 0, bufferAt.guard, bufferAt.gap, 1}, random_());
        const Bytes srcBefore = src.bytes(), bufferBefore = buffer.bytes();
        Bytes wanted = dst.bytes();
        const std::vector<Kuv8u> result = reference(r, samples, before);
        for (int y = 0; y < r.size.height; ++y) {
            std::memcpy(dst.row(wanted, y), result.data() + y * rowSamples, static_cast<std::size_t>(rowSamples));
        }
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << r.pixelSamples << " samples a pixel, " << r.size.width << " x "
                                        << r.size.height << ", noise " << r.noise << ", dither " << r.ditherType << ", " << r.levels
                                        << " levels\n  src: " << src.geometry() << "\n  dst: " << dst.geometry()
                                        << "\n  buffer: " << buffer.geometry());
        EXPECT_EQ(watched([&] {
                      return functionOf(r.pixelSamples)(src.row<Kuv16u>(), src.step(), dst.row(), dst.step(), r.size, r.noise,
                                                        r.ditherType, r.levels, bytes > 0 ? buffer.row() : nullptr);
                  }), kuvStatusOk);
        EXPECT_EQ(dst.difference(wanted), "");
        EXPECT_EQ(src.difference(srcBefore), "");
        if (bytes > 0) EXPECT_EQ(buffer.strayWrite(bufferBefore), "");
        else EXPECT_EQ(buffer.difference(bufferBefore), "");
    }
    void expectReduction(const Reduction& r, Place at) { expectReduction(r, at, at, at, samplesFor(r)); }
    void expectReduction(const Reduction& r) { expectReduction(r, Place{}); }

    // Packed images.
    std::vector<Kuv8u> reduced(const Reduction& r, const std::vector<Kuv16u>& samples, Kuv8u filling = 0) {
        std::vector<Kuv8u> dst(r.samples(), filling), buffer(static_cast<std::size_t>(bufferBytes(r)));
        EXPECT_EQ(functionOf(r.pixelSamples)(samples.data(), 2 * r.rowSamples(), dst.data(), r.rowSamples(), r.size, r.noise, r.ditherType,
                                             r.levels, buffer.empty() ? nullptr : buffer.data()), kuvStatusOk);
        return dst;
    }

    int anyNoise() { return oneIn(random_, 2) ? 0 : oneIn(random_, 3) ? 100 : between(random_, 1, 100); }
    int anyLevels() { return oneIn(random_, 3) ? 256 : oneIn(random_, 2) ? between(random_, 2, 6) : between(random_, 2, 256); }
    int anyType() { return below(random_, 5); }
    int anyForm() { return forms[below(random_, 3)]; }

    Random random_{1};
};

KUV_FOR_EACH_VARIANT(ReduceBits);

TEST_P(ReduceBits, EveryWidth) {
    for (int width = 1; width <= 1300; width += width < 140 ? 1 : 61) {
        for (const int form : forms) {
            for (KuvDitherType type = kuvDitherOff; type <= kuvDitherOrdered4x4; ++type) {
                const int height = width < 140 ? between(random_, 1, 20) : 3;
                const Guard guard = oneIn(random_, 2) ? Guard::end : Guard::begin;
                expectReduction({form, {width, height}, anyNoise(), type, anyLevels()}, {below(random_, 4), guard, 0});
            }
        }
        if (HasFailure()) return;
    }
}

TEST_P(ReduceBits, EveryHeight) {
    for (int height = 1; height <= 70; ++height) {
        for (const int form : forms) {
            for (const KuvDitherType type : diffusions) {
                expectReduction({form, {between(random_, 1, 40), height}, anyNoise(), type, anyLevels()});
            }
            expectReduction({form, {between(random_, 1, 40), height}, anyNoise(), kuvDitherOrdered4x4, anyLevels()});
        }
        if (HasFailure()) return;
    }
}

TEST_P(ReduceBits, EveryAlignment) {
    for (int gap = 0; gap <= 64; ++gap) {
        for (KuvDitherType type = kuvDitherOff; type <= kuvDitherOrdered4x4; ++type) {
            const Reduction r = {anyForm(), {between(random_, 30, 120), between(random_, 2, 20)}, anyNoise(), type, anyLevels()};
            const auto at = [&](int offset) { return Place{below(random_, 65), Guard::begin, offset}; };
            const auto any = [&] { return below(random_, 65); };
            expectReduction(r, at(gap), at(any()), at(any()), samplesFor(r));
            expectReduction(r, at(any()), at(gap), at(any()), samplesFor(r));
            expectReduction(r, at(any()), at(any()), at(gap), samplesFor(r));
        }
        if (HasFailure()) return;
    }
}

TEST_P(ReduceBits, AnyStep) {
    for (int i = 0; i < rounds(300) && !HasFailure(); ++i) {
        const Reduction r = {anyForm(), {between(random_, 1, 60), between(random_, 1, 40)}, anyNoise(), anyType(), anyLevels()};
        const auto place = [&] {
            return Place{below(random_, 200), oneIn(random_, 2) ? Guard::end : Guard::begin, below(random_, 3), oneIn(random_, 2)};
        };
        expectReduction(r, place(), place(), place(), samplesFor(r));
    }
}

// Steps are not examined: rows that lie on each other are read and written in their order, one channel after the other.
TEST_P(ReduceBits, RowsThatLieOnEachOther) {
    for (int i = 0; i < rounds(400) && !HasFailure(); ++i) {
        const Reduction r = {anyForm(), {between(random_, 1, 60), between(random_, 2, 40)}, anyNoise(), anyType(), anyLevels()};
        const int rowSamples = r.rowSamples(), height = r.size.height;
        const int srcStep = between(random_, -3 * rowSamples, 3 * rowSamples);
        const int step = i % 4 == 0 ? 0 : between(random_, -rowSamples, rowSamples);
        const auto bytesOf = [&](int stride, int rowBytes) { return static_cast<std::size_t>(std::abs(stride) * (height - 1) + rowBytes); };
        const auto place = [&](int stride, int y) { return std::ptrdiff_t{stride} * (stride < 0 ? y + 1 - height : y); };
        Bytes src(bytesOf(srcStep, 2 * rowSamples)), dst(bytesOf(step, rowSamples));
        for (unsigned char& each : src) each = static_cast<unsigned char>(random_());
        for (unsigned char& each : dst) each = static_cast<unsigned char>(random_());
        std::vector<Kuv16u> samples;
        for (int y = 0; y < height; ++y) {
            for (int k = 0; k < rowSamples; ++k) samples.push_back(load<Kuv16u>(src.data() + place(srcStep, y), k));
        }
        Bytes wanted = dst;
        const std::vector<Kuv8u> result = reference(r, samples, std::vector<Kuv8u>(r.samples()));
        const bool byChannels = r.ditherType != kuvDitherOff && r.ditherType != kuvDitherOrdered4x4;
        for (int pass = 0; pass < (byChannels ? r.channels() : 1); ++pass) {
            for (int y = 0; y < height; ++y) {
                for (int k = 0; k < rowSamples; ++k) {
                    const int channel = k % r.pixelSamples;
                    if (channel == 3 || (byChannels && channel != pass)) continue;
                    wanted[static_cast<std::size_t>(place(step, y) + k)] = result[static_cast<std::size_t>(y * rowSamples + k)];
                }
            }
        }
        Bytes buffer(static_cast<std::size_t>(bufferBytes(r)) + 1);
        const auto* const first = reinterpret_cast<const Kuv16u*>(src.data() + place(srcStep, 0));
        EXPECT_EQ(functionOf(r.pixelSamples)(first, srcStep, dst.data() + place(step, 0), step, r.size, r.noise, r.ditherType, r.levels,
                                             buffer.data()), kuvStatusOk);
        EXPECT_EQ(dst, wanted) << GetParam() << ", " << r.pixelSamples << " samples, " << r.size.width << " x " << height << ", step "
                               << step << ", dither " << r.ditherType;
    }
}

// All samples with each number of levels; with thresholds, all of them meet all samples.
TEST_P(ReduceBits, EverySampleWithoutDither) {
    std::vector<Kuv16u> samples(65536);
    for (int i = 0; i < 65536; ++i) samples[static_cast<std::size_t>(i)] = static_cast<Kuv16u>(i);
    for (Kuv32s levels = 2; levels <= 256 && !HasFailure(); levels += sanitized ? 23 : 1) {
        const Reduction r = {1, {65536, 1}, 0, kuvDitherOff, levels};
        EXPECT_EQ(reduced(r, samples), reference(r, samples, std::vector<Kuv8u>(65536))) << levels;
    }
}

TEST_P(ReduceBits, EverySampleOrdered) {
    std::vector<Kuv16u> samples;
    for (int i = 0; i < 16 * 65536; ++i) samples.push_back(static_cast<Kuv16u>(i / 4 + i % 4 + i / 65536 % 4));
    for (const Kuv32s levels : {2, 3, 4, 5, 7, 16, 18, 52, 64, 86, 128, 200, 253, 255, 256}) {
        if (HasFailure() || (sanitized && levels > 5)) return;
        const Reduction r = {1, {4 * 65536, 4}, 0, kuvDitherOrdered4x4, levels};
        EXPECT_EQ(reduced(r, samples), reference(r, samples, std::vector<Kuv8u>(samples.size()))) << levels;
    }
}

TEST_P(ReduceBits, EveryNumberOfLevels) {
    for (Kuv32s levels = 2; levels <= 256 && !HasFailure(); ++levels) {
        for (KuvDitherType type = kuvDitherFloydSteinberg; type <= kuvDitherOrdered4x4; ++type) {
            for (const int noise : {0, 60}) expectReduction({anyForm(), {50, 18}, noise, type, levels});
        }
    }
}

TEST_P(ReduceBits, EveryNoise) {
    for (Kuv32s noise = 0; noise <= 100 && !HasFailure(); ++noise) {
        for (KuvDitherType type = kuvDitherOff; type <= kuvDitherOrdered4x4; ++type) {
            expectReduction({anyForm(), {70, 18}, noise, type, anyLevels()});
        }
    }
}

// Large enough that columns and rows of the noise come round.
TEST_P(ReduceBits, LongRowsAndManyRows) {
    for (const KuviSize size : {KuviSize{5000, 18}, {37, 1100}, {2100, 35}}) {
        for (KuvDitherType type = kuvDitherOff; type <= kuvDitherOrdered4x4; ++type) {
            for (const int noise : {0, 80}) expectReduction({anyForm(), size, noise, type, anyLevels()});
            if (HasFailure()) return;
        }
    }
}

// White with thresholds below 0: the next level would be beyond a byte.
TEST_P(ReduceBits, WhiteStaysWhite) {
    for (const KuvDitherType type : {kuvDitherFloydSteinberg, kuvDitherStucki, kuvDitherOrdered4x4}) {
        for (const Kuv32s levels : {2, 3, 18, 253, 256}) {
            const Reduction r = {1, {1024, 40}, 100, type, levels};
            std::vector<Kuv16u> samples(r.samples());
            for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<Kuv16u>(65535 - i % 3 % 2);
            EXPECT_EQ(reduced(r, samples), reference(r, samples, std::vector<Kuv8u>(samples.size())));
        }
    }
}

TEST_P(ReduceBits, TwoLevelsSplitAtTheMiddle) {
    const std::vector<Kuv16u> samples = {0, 1, 32766, 32767, 32768, 32769, 65534, 65535};
    EXPECT_EQ(reduced({1, {8, 1}, 0, kuvDitherOff, 2}, samples), (std::vector<Kuv8u>{0, 0, 0, 0, 255, 255, 255, 255}));
}

TEST_P(ReduceBits, AllLevelsGiveTheUpperByteRounded) {
    if (!GetParam().isPx()) GTEST_SKIP() << "the single-precision arithmetic may fall one short";
    std::vector<Kuv16u> samples(65536);
    for (int i = 0; i < 65536; ++i) samples[static_cast<std::size_t>(i)] = static_cast<Kuv16u>(i);
    const std::vector<Kuv8u> result = reduced({1, {65536, 1}, 0, kuvDitherOff, 256}, samples);
    for (int i = 0; i < 65536; ++i) EXPECT_EQ(result[static_cast<std::size_t>(i)], (i + 128) / 257) << i;
}

// White takes a positive error, and black a negative one, and leaves nothing of it to the third sample, which only what the first
// one leaves there cannot bring over the middle.
TEST_P(ReduceBits, ErrorsEndAtWhiteAndBlack) {
    for (const KuvDitherType type : diffusions) {
        EXPECT_EQ(reduced({1, {3, 1}, 0, type, 2}, {25000, 65535, 30000}), (std::vector<Kuv8u>{0, 255, 0}));
        EXPECT_EQ(reduced({1, {3, 1}, 0, type, 2}, {40535, 0, 35535}), (std::vector<Kuv8u>{255, 0, 255}));
    }
}

// The last rows of a channel are before the first ones of the next.
TEST_P(ReduceBits, ChannelsFollowOneAnother) {
    const Reduction colours = {3, {1, 1}, 0, kuvDitherFloydSteinberg, 2}, column = {1, {1, 3}, 0, kuvDitherFloydSteinberg, 2};
    for (int i = 0; i < 100; ++i) {
        const std::vector<Kuv16u> samples = samplesFor(colours);
        EXPECT_EQ(reduced(colours, samples), reduced(column, samples));
    }
    EXPECT_EQ(reduced(colours, {32000, 24000, 0}), (std::vector<Kuv8u>{0, 255, 0}));
}

TEST_P(ReduceBits, OneColumn) {
    for (const KuvDitherType type : diffusions) {
        for (const int form : forms) {
            for (const int height : {1, 2, 3, 17, 40}) expectReduction({form, {1, height}, 0, type, 4});
        }
    }
}

TEST_P(ReduceBits, AlphaStays) {
    for (KuvDitherType type = kuvDitherOff; type <= kuvDitherOrdered4x4; ++type) {
        for (const int noise : {0, 30}) {
            const Reduction r = {4, {37, 5}, noise, type, 3};
            const std::vector<Kuv8u> result = reduced(r, samplesFor(r), 0x5A);
            for (std::size_t i = 3; i < result.size(); i += 4) EXPECT_EQ(result[i], 0x5A);
        }
    }
}

TEST_P(ReduceBits, BuffersThatAreNotUsed) {
    auto* const noMemory = reinterpret_cast<Kuv8u*>(64);
    const std::vector<Kuv16u> samples(400, 12345);
    std::vector<Kuv8u> dst(400);
    for (const int form : forms) {
        for (Kuv8u* const buffer : {static_cast<Kuv8u*>(nullptr), noMemory}) {
            const auto status = [&](Kuv32s noise, KuvDitherType type) {
                return watched([&] { return functionOf(form)(samples.data(), 160, dst.data(), 80, {20, 5}, noise, type, 5, buffer); });
            };
            EXPECT_EQ(status(0, kuvDitherOff), kuvStatusOk);
            EXPECT_EQ(status(100, kuvDitherOff), kuvStatusOk);
            EXPECT_EQ(status(0, kuvDitherOrdered4x4), kuvStatusOk);
            EXPECT_EQ(status(101, kuvDitherOff), kuvStatusBadNoise);
            EXPECT_EQ(status(-1, kuvDitherOrdered4x4), kuvStatusBadNoise);
            if (buffer != nullptr) continue;
            EXPECT_EQ(status(1, kuvDitherOrdered4x4), kuvStatusNullPtr);
            for (const KuvDitherType type : diffusions) {
                for (const Kuv32s noise : {0, 1}) EXPECT_EQ(status(noise, type), kuvStatusNullPtr);
            }
        }
    }
}

TEST_P(ReduceBits, TheFirstFailureCounts) {
    Kuv16u src[4] = {};
    Kuv8u dst[4] = {9, 9, 9, 9};
    for (const int form : forms) {
        const auto function = functionOf(form);
        EXPECT_EQ(function(src, 8, dst, 4, {1, 1}, 0, 9, 257, nullptr), kuvStatusBadLevels);
        EXPECT_EQ(function(src, 8, dst, 4, {1, 1}, 101, 9, 257, nullptr), kuvStatusBadNoise);
        EXPECT_EQ(function(src, 8, dst, 4, {1, 1}, 100, 9, 256, nullptr), kuvStatusBadDitherType);
        EXPECT_EQ(function(src, 8, dst, 4, {1, 1}, 100, 1, 256, nullptr), kuvStatusNullPtr);
        for (const Kuv8u each : dst) EXPECT_EQ(each, 9);
    }
}

// Equal calls have equal results, whatever the buffer held.
TEST_P(ReduceBits, NothingSurvivesACall) {
    for (KuvDitherType type = kuvDitherFloydSteinberg; type <= kuvDitherOrdered4x4; ++type) {
        const Reduction r = {3, {100, 30}, 90, type, 5};
        const std::vector<Kuv16u> samples = samplesFor(r);
        std::vector<Kuv8u> buffer(static_cast<std::size_t>(bufferBytes(r))), first(r.samples()), second = first;
        std::fill(buffer.begin(), buffer.end(), Kuv8u{0xFF});
        for (std::vector<Kuv8u>* const dst : {&first, &second}) {
            EXPECT_EQ(kuviReduceBits_16u8u_C3R(samples.data(), 600, dst->data(), 300, r.size, r.noise, type, r.levels, buffer.data()),
                      kuvStatusOk);
        }
        EXPECT_EQ(first, second);
    }
}

// What the buffer holds after a call, where its contents are told.
TEST_P(ReduceBits, TablesInTheBuffer) {
    for (KuvDitherType type = kuvDitherFloydSteinberg; type <= kuvDitherOrdered4x4; ++type) {
        const Reduction r = {1, {7, 2}, 35, type, 9};
        alignas(64) Kuv8u buffer[6700];
        Kuv8u dst[14];
        ASSERT_EQ(kuviReduceBits_16u8u_C1R(samplesFor(r).data(), 14, dst, 7, r.size, r.noise, type, r.levels, buffer), kuvStatusOk);
        const NoiseTables tables = noiseTables(r);
        for (int i = 0; i < 1024; ++i) {
            EXPECT_EQ(load<Kuv32f>(buffer, i), tables.noises[static_cast<std::size_t>(i)]);
            EXPECT_EQ(load<Kuv16u>(buffer + 4096, i), tables.indices[static_cast<std::size_t>(i)]);
        }
        EXPECT_EQ(load<Kuv32u>(buffer + 6144), 36u);
        EXPECT_EQ(load<Kuv32u>(buffer + 6200), 37u);
    }
}

TEST_P(ReduceBits, BufferSizes) {
    for (const Kuv32s channels : {1, 3, 4, 9}) {
        for (const Kuv32s width : {1, 2, 7, 64, 1920, 100000000}) {
            for (const Kuv32s height : {1, 5, 0, -7, INT32_MIN, INT32_MAX}) {
                const auto bytes = [&](Kuv32s noise, KuvDitherType type) {
                    Kuv32s size = -1;
                    EXPECT_EQ(kuviReduceBitsGetBufferSize(channels, {width, height}, noise, type, &size), kuvStatusOk);
                    return size;
                };
                for (const Kuv32s noise : {0, 1, 50, 100}) {
                    EXPECT_EQ(bytes(noise, kuvDitherOff), 0);
                    EXPECT_EQ(bytes(noise, kuvDitherFloydSteinberg), 8 * width + (noise > 0 ? 6352 : 80));
                    EXPECT_EQ(bytes(noise, kuvDitherJarvisJudiceNinke), 12 * width + (noise > 0 ? 6384 : 112));
                    EXPECT_EQ(bytes(noise, kuvDitherStucki), 12 * width + (noise > 0 ? 6384 : 112));
                    EXPECT_EQ(bytes(noise, kuvDitherOrdered4x4), noise > 0 ? 6336 : 0);
                }
            }
        }
    }
}

// A size beyond 32 bits wraps around.
TEST_P(ReduceBits, BufferSizesBeyond32Bits) {
    for (const Kuv32u width : {0x20000000u, 0x7FFFFFFFu}) {
        const auto bytes = [&](KuvDitherType type) {
            Kuv32s size = -1;
            EXPECT_EQ(kuviReduceBitsGetBufferSize(1, {static_cast<Kuv32s>(width), 1}, 0, type, &size), kuvStatusOk);
            return size;
        };
        EXPECT_EQ(bytes(kuvDitherFloydSteinberg), static_cast<Kuv32s>(8 * width + 80));
        EXPECT_EQ(bytes(kuvDitherStucki), static_cast<Kuv32s>(12 * width + 112));
    }
}

TEST_P(ReduceBits, BufferSizeAtAnyAddress) {
    for (int gap = 1; gap < 4; ++gap) {
        unsigned char size[8] = {};
        EXPECT_EQ(kuviReduceBitsGetBufferSize(3, {7, 5}, 0, kuvDitherStucki, reinterpret_cast<Kuv32s*>(size + gap)), kuvStatusOk);
        EXPECT_EQ(load<Kuv32s>(size + gap), 12 * 7 + 112);
    }
}

TEST_P(ReduceBits, StackUseIsBounded) {
    if (sanitized) GTEST_SKIP() << "the sanitizer spreads out the stack";
    for (const int form : forms) {
        for (KuvDitherType type = kuvDitherOff; type <= kuvDitherOrdered4x4; ++type) {
            for (const Kuv32s noise : {0, 20}) {
                const Reduction r = {form, {1000, 40}, noise, type, 5};
                const std::vector<Kuv16u> src(r.samples(), Kuv16u{65535});
                std::vector<Kuv8u> dst(r.samples()), buffer(static_cast<std::size_t>(bufferBytes(r)) + 1);
                const std::size_t used = stackOf([&] {
                    functionOf(form)(src.data(), 2 * r.rowSamples(), dst.data(), r.rowSamples(), r.size, noise, type, r.levels,
                                     buffer.data());
                });
                EXPECT_LE(used, 41u << 10) << "40 KiB, and a frame: type " << type << ", noise " << noise << ", " << form << " samples";
                EXPECT_NE(dst[0], 0);
            }
        }
    }
}

TEST_P(ReduceBits, RowsFurtherApartThan32BitsTell) {
    constexpr std::ptrdiff_t step = 0x7FFFFFF1;
    const DistantMemory from(3 * static_cast<std::size_t>(step)), to(3 * static_cast<std::size_t>(step));
    KUV_NEEDS(from);
    KUV_NEEDS(to);
    for (const int form : forms) {
        for (KuvDitherType type = kuvDitherOff; type <= kuvDitherOrdered4x4; ++type) {
            const Reduction r = {form, {41, 3}, 20, type, 5};
            const std::vector<Kuv16u> samples = samplesFor(r);
            const int rowSamples = 41 * form;
            std::vector<Kuv8u> before;
            for (int y = 0; y < 3; ++y) {
                std::memcpy(from.memory() + step * y, samples.data() + y * rowSamples, static_cast<std::size_t>(2 * rowSamples));
                for (int i = 0; i < rowSamples; ++i) before.push_back(static_cast<Kuv8u>(to.memory()[step * y + i]));
            }
            const std::vector<Kuv8u> wanted = reference(r, samples, before);
            std::vector<Kuv8u> buffer(static_cast<std::size_t>(bufferBytes(r)) + 1);
            const auto* const src = reinterpret_cast<const Kuv16u*>(from.memory());
            auto* const dst = reinterpret_cast<Kuv8u*>(to.memory());
            EXPECT_EQ(watched([&] {
                          return functionOf(form)(src, step, dst, step, r.size, r.noise, type, r.levels, buffer.data());
                      }), kuvStatusOk);
            for (int y = 0; y < 3; ++y) {
                EXPECT_EQ(std::memcmp(to.memory() + step * y, wanted.data() + y * rowSamples, static_cast<std::size_t>(rowSamples)), 0);
            }
        }
    }
}

}  // namespace
