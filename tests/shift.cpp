// Logical shifts of 16-bit samples by a constant.
#include <algorithm>
#include <array>

#include "support/agreement.hpp"
#include "support/aliased.hpp"
#include "support/distant.hpp"
#include "support/statuses.hpp"

namespace {

using namespace kuvtest;

using Counts = std::array<Kuv32u, 3>;

// Most of them shift; the others look as if they did if only their low bits are taken.
Kuv32u drawCount(Random& random) {
    constexpr Kuv32u large[] = {31, 32, 33, 64, 0x100, 0x10001, 0x7FFFFFFF, 0x80000000, 0xFFFFFFF1, 0xFFFFFFFF};
    return oneIn(random, 8) ? large[below(random, std::size(large))] : static_cast<Kuv32u>(below(random, 18));
}

struct Count {
    std::tuple<Kuv32u> operator()(Draw& draw) const { return {drawCount(draw.random)}; }
};

// (count): of a signal, which has negative ones refused.
struct SignalCount {
    std::tuple<Kuv32s> operator()(Draw& draw) const { return {static_cast<Kuv32s>(drawCount(draw.random) & 0x7FFFFFFF)}; }
};
struct ShiftingCount {
    std::tuple<Kuv32s> operator()(Draw& draw) const { return {below(draw.random, 16)}; }
};

// (pointer): three counts and nothing around them.
struct ChannelCounts {
    std::tuple<const Kuv32u*> operator()(Draw& draw) const {
        const Image& table = draw.image<Kuv32s>(Role::source, 3, 1, 0);
        const Kuv32u common = drawCount(draw.random);
        const bool same = oneIn(draw.random, 6), empty = oneIn(draw.random, 10);
        for (int c = 0; c < 3; ++c) {
            const Kuv32u own = drawCount(draw.random);
            store(table.row(), c, same ? common : empty ? own | 16 : own);
        }
        return {table.row<const Kuv32u>()};
    }
};

#define SHIFT_OF_IMAGES(function, Value, nulls, ...)                                                                   \
    KUV_AGREES(function, Value{}, __VA_ARGS__, RoiSize{});                                                             \
    KUV_CHECKS(function, call(Value{}, __VA_ARGS__, RoiSize{}), nulls,                                                 \
               badStep<2>(), badSize<3>())
#define ONE_COUNT(function) SHIFT_OF_IMAGES(function, Count, check(kuvStatusNullPtr, null<1>()), InOut<Kuv16u>{.steps = StepClass::A})
ONE_COUNT(kuviLShiftC_16u_C1IR);
ONE_COUNT(kuviRShiftC_16u_C1IR);
// The last alpha may lie on an unmapped page.
#define THREE_COUNTS(function, channelCount, omittedSamples)                                                           \
    SHIFT_OF_IMAGES(function, ChannelCounts, check(kuvStatusNullPtr, null<0>(), null<1>()),                            \
                    InOut<Kuv16u>{.channels = channelCount, .omitted = omittedSamples, .steps = StepClass::A})
THREE_COUNTS(kuviLShiftC_16u_C3IR, 3, 0);
THREE_COUNTS(kuviRShiftC_16u_C3IR, 3, 0);
THREE_COUNTS(kuviLShiftC_16u_AC4IR, 4, 1);
THREE_COUNTS(kuviRShiftC_16u_AC4IR, 4, 1);

#define SHIFT_OF_SIGNALS(function)                                                                                     \
    KUV_AGREES(function, SignalCount{}, InOutSignal<Kuv16u>{}, Length{});                                              \
    KUV_CHECKS(function, call(ShiftingCount{}, InOutSignal<Kuv16u>{}, Length{}), check(kuvStatusNullPtr, null<1>()),   \
               badLength<2>(), check(kuvStatusBadShift, set<0>(-1), set<0>(-16), set<0>(INT32_MIN)))
SHIFT_OF_SIGNALS(kuvsLShiftC_16u_I);
SHIFT_OF_SIGNALS(kuvsRShiftC_16u_I);

struct Shift {
    const char* name;
    bool left;
    int samples, colours;
    KuvStatus (*call)(const Kuv32u* counts, Kuv16u* srcDst, Kuv32s step, KuviSize size);

    int pixelBytes() const { return 2 * samples; }
    // What a row of the image must have as memory: not its last alpha.
    int rowBytes(int width) const { return 2 * (width * samples - (samples - colours)); }
    // As the text says.
    Kuv16u shifted(Kuv16u value, Kuv32u count) const {
        if (count > 15) return 0;
        return static_cast<Kuv16u>(left ? Kuv32u{value} << count : Kuv32u{value} >> count);
    }
    void shiftRow(unsigned char* row, int width, const Counts& counts) const {
        for (int i = 0; i < width; ++i) {
            for (int c = 0; c < colours; ++c) {
                const int at = i * samples + c;
                store(row, at, shifted(load<Kuv16u>(row, at), counts[static_cast<std::size_t>(c)]));
            }
        }
    }
};

#define ONE_CHANNEL(function, left)                                                                                                        \
    {#function, left, 1, 1,                                                                                                                \
     [](const Kuv32u* counts, Kuv16u* srcDst, Kuv32s step, KuviSize size) { return function(counts[0], srcDst, step, size); }}
constexpr Shift shifts[] = {
    ONE_CHANNEL(kuviLShiftC_16u_C1IR, true),
    ONE_CHANNEL(kuviRShiftC_16u_C1IR, false),
    {"kuviLShiftC_16u_C3IR", true, 3, 3, kuviLShiftC_16u_C3IR},
    {"kuviRShiftC_16u_C3IR", false, 3, 3, kuviRShiftC_16u_C3IR},
    {"kuviLShiftC_16u_AC4IR", true, 4, 3, kuviLShiftC_16u_AC4IR},
    {"kuviRShiftC_16u_AC4IR", false, 4, 3, kuviRShiftC_16u_AC4IR}};

constexpr struct {
    const char* name;
    const Shift& image;
    KuvStatus (*call)(Kuv32s count, Kuv16u* srcDst, Kuv32s len);
} signalShifts[] = {{"kuvsLShiftC_16u_I", shifts[0], kuvsLShiftC_16u_I}, {"kuvsRShiftC_16u_I", shifts[1], kuvsRShiftC_16u_I}};

constexpr Kuv32u everyCount[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 31, 32, 0x80000000, 0xFFFFFFFF};

class ShiftC : public VariantTest {
protected:
    static Geometry geometry(const Shift& shift, KuviSize size, std::ptrdiff_t step, Guard guard, int gap) {
        return {shift.rowBytes(size.width), size.height, step, guard, gap, 2};
    }

    void expectShift(const Shift& shift, const Counts& counts, KuviSize size, std::ptrdiff_t step, Guard guard = Guard::end, int gap = 0) {
        expectShift(shift, counts, size, Image("srcDst", geometry(shift, size, step, guard, gap), random_()));
    }

    void expectShift(const Shift& shift, const Counts& counts, KuviSize size, const Image& srcDst) {
        const Image table("value", {12, 1, 0, oneIn(random_, 2) ? Guard::end : Guard::begin, 0, 4}, 1);
        std::memcpy(table.row(), counts.data(), 12);
        const Bytes tableBefore = table.bytes();
        Bytes wanted = srcDst.bytes();
        for (int r = 0; r < size.height; ++r) shift.shiftRow(srcDst.row(wanted, r), size.width, counts);
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << shift.name << ", " << size.width << " x " << size.height << ", by "
                                        << counts[0] << ", " << counts[1] << ", " << counts[2] << "\n  srcDst: " << srcDst.geometry());
        EXPECT_EQ(watched([&] { return shift.call(table.row<const Kuv32u>(), srcDst.row<Kuv16u>(), srcDst.step(), size); }), kuvStatusOk);
        EXPECT_EQ(srcDst.difference(wanted), "");
        EXPECT_EQ(table.difference(tableBefore), "");
    }

    void expectSignalShift(std::size_t which, Kuv32s count, int length, Guard guard, int gap) {
        const auto& signal = signalShifts[which];
        const Image srcDst("srcDst", {2 * length, 1, 0, guard, gap, 2}, random_());
        Bytes wanted = srcDst.bytes();
        signal.image.shiftRow(srcDst.row(wanted, 0), length, {static_cast<Kuv32u>(count)});
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << signal.name << ", " << length << " samples, by " << count << "\n  srcDst: "
                                        << srcDst.geometry());
        EXPECT_EQ(watched([&] { return signal.call(count, srcDst.row<Kuv16u>(), length); }), kuvStatusOk);
        EXPECT_EQ(srcDst.difference(wanted), "");
    }

    // By different counts that shift, by equal ones, by ones of all kinds.
    Counts anyCounts() {
        const auto shifting = [&] { return static_cast<Kuv32u>(between(random_, 1, 15)); };
        const Kuv32u common = drawCount(random_);
        switch (below(random_, 4)) {
            case 0: return {shifting(), shifting(), shifting()};
            case 1: return {common, common, common};
            case 2: return {common, common, shifting()};
            default: return {drawCount(random_), drawCount(random_), drawCount(random_)};
        }
    }

    Random random_{1};
};

KUV_FOR_EACH_VARIANT(ShiftC);

TEST_P(ShiftC, EveryValueByEveryCount) {
    constexpr KuviSize size = {65536, 1};
    for (const Shift& shift : shifts) {
        const Image srcDst("srcDst", geometry(shift, size, shift.rowBytes(size.width), Guard::end, 0), 1);
        for (const Kuv32u count : everyCount) {
            for (const Kuv32u others : {count, (count + 5) % 17}) {
                if (shift.samples == 1 && others != count) continue;
                for (int i = 0; i < shift.rowBytes(size.width) / 2; ++i) store(srcDst.row(), i, static_cast<Kuv16u>(i / shift.samples));
                expectShift(shift, {count, others, count}, size, srcDst);
            }
            if (HasFailure()) return;
        }
    }
}

TEST_P(ShiftC, EveryValueOfASignalByEveryCount) {
    std::vector<Kuv16u> samples(65536), wanted(65536);
    for (const auto& signal : signalShifts) {
        for (const Kuv32u count : everyCount) {
            if (count > 0x7FFFFFFF) continue;
            for (std::size_t i = 0; i < samples.size(); ++i) {
                samples[i] = static_cast<Kuv16u>(i);
                wanted[i] = signal.image.shifted(samples[i], count);
            }
            EXPECT_EQ(watched([&] { return signal.call(static_cast<Kuv32s>(count), samples.data(), 65536); }), kuvStatusOk);
            EXPECT_TRUE(samples == wanted) << signal.name << " by " << count;
        }
    }
}

TEST_P(ShiftC, EveryTripleOfCounts) {
    constexpr Kuv32u some[] = {0, 1, 2, 7, 15, 16, 0xFFFFFFFF};
    for (const Shift& shift : shifts) {
        if (shift.samples == 1) continue;
        for (const Kuv32u first : some) {
            for (const Kuv32u second : some) {
                for (const Kuv32u third : some) {
                    for (const int width : {1, 2, 7, 37, 71}) {
                        expectShift(shift, {first, second, third}, {width, 2}, width * shift.pixelBytes() + 2);
                    }
                    expectShift(shift, {first, second, third}, {19, 4}, 19 * shift.pixelBytes(), Guard::begin, 2);
                }
            }
            if (HasFailure()) return;
        }
    }
}

// To past the longest unrolled blocks, against the unmapped page on both sides, with rows that touch and with ones that do not.
TEST_P(ShiftC, EveryWidth) {
    for (const Shift& shift : shifts) {
        for (int width = 1; width <= 110; ++width) {
            const int row = shift.rowBytes(width);
            for (const Guard guard : {Guard::end, Guard::begin}) {
                for (const Counts& counts : {Counts{3, 1, 7}, Counts{16, 16, 16}, anyCounts(), anyCounts()}) {
                    expectShift(shift, counts, {width, 1}, row, guard);
                    expectShift(shift, counts, {width, 3}, row + 1, guard);
                    expectShift(shift, counts, {width, 2}, row + 2, guard);
                    expectShift(shift, counts, {width, 3}, width * shift.pixelBytes(), guard);
                }
            }
            if (HasFailure()) return;
        }
        for (const int width : {255, 256, 1000, 4099, 30001}) expectShift(shift, anyCounts(), {width, 2}, shift.rowBytes(width) + 2);
    }
}

TEST_P(ShiftC, EveryAlignment) {
    for (const Shift& shift : shifts) {
        for (int gap = 0; gap < 65; ++gap) {
            for (const int width : {1, 5, 6, 8, 16, 17, 24, 33, 40, 71, 130}) {
                expectShift(shift, {5, 2, 9}, {width, 2}, width * shift.pixelBytes() + 64, Guard::begin, gap);
                expectShift(shift, anyCounts(), {width, 2}, shift.rowBytes(width) + 3, Guard::begin, gap);
            }
            if (HasFailure()) return;
        }
    }
}

// Rows that overlap are done one after the other: what several share is shifted as often.
TEST_P(ShiftC, AnyStep) {
    for (const Shift& shift : shifts) {
        for (const int width : {1, 2, 9, 17, 40, 75}) {
            const int row = width * shift.pixelBytes();
            for (const std::ptrdiff_t step : {row, row - 2, row - 1, row + 1, row + 2, row + 64, 1, 2, 3, 6, 8, 31, row / 2, row / 2 + 1}) {
                if (step < 1) continue;
                for (const Guard guard : {Guard::end, Guard::begin}) {
                    for (const Counts& counts : {Counts{1, 1, 1}, Counts{0, 0, 0}, Counts{1, 2, 3}, Counts{0, 1, 16}, Counts{16, 17, 16}}) {
                        expectShift(shift, counts, {width, 5}, step, guard, guard == Guard::begin ? 1 : 0);
                    }
                }
                if (HasFailure()) return;
            }
        }
    }
}

TEST_P(ShiftC, EveryLengthOfASignal) {
    for (std::size_t which : {0u, 1u}) {
        for (int length = 1; length <= 150; ++length) {
            for (const Guard guard : {Guard::end, Guard::begin}) {
                for (const Kuv32s count : {0, 1, between(random_, 2, 14), 15, 16, INT32_MAX}) {
                    expectSignalShift(which, count, length, guard, 0);
                    expectSignalShift(which, count, length, guard, below(random_, 65));
                }
            }
            if (HasFailure()) return;
        }
        for (const int length : {1000, 4099, 100003}) expectSignalShift(which, 4, length, Guard::end, 0);
    }
}

// A large image that is left as it is or set to 0 is so to its end.
TEST_P(ShiftC, LargeImagesByCountsThatDoNotShift) {
    for (const Shift& shift : shifts) {
        for (const Kuv32u count : {0u, 16u}) {
            expectShift(shift, {count, count, count}, {1001, 700}, 1001 * shift.pixelBytes());
            expectShift(shift, {count, count, count}, {1001, 700}, 1001 * shift.pixelBytes() + 6);
        }
    }
}

TEST_P(ShiftC, CountsFrom16OnClearTheRegion) {
    for (const Kuv32u count : {16u, 0xFFFFFFFFu}) {
        Kuv16u image[3][7];
        std::fill_n(&image[0][0], 21, Kuv16u{0xFFFF});
        EXPECT_EQ(kuviLShiftC_16u_C1IR(count, image[0], 14, {6, 3}), kuvStatusOk);
        for (const auto& row : image) {
            EXPECT_EQ(std::count(row, row + 6, 0), 6);
            EXPECT_EQ(row[6], 0xFFFF);
        }
    }
}

TEST_P(ShiftC, ASignalsCountIsSigned) {
    Kuv16u signal[40];
    std::fill_n(signal, 40, Kuv16u{0x8001});
    EXPECT_EQ(kuvsLShiftC_16u_I(-1, signal, 40), kuvStatusBadShift);
    EXPECT_EQ(std::count(signal, signal + 40, 0x8001), 40);
    EXPECT_EQ(kuvsLShiftC_16u_I(16, signal, 39), kuvStatusOk);
    EXPECT_EQ(std::count(signal, signal + 39, 0), 39);
    EXPECT_EQ(signal[39], 0x8001);
}

TEST_P(ShiftC, EqualCountsLeaveAlpha) {
    constexpr Kuv32u counts[3] = {3, 3, 3};
    Kuv16u image[4 * 50];
    for (int i = 0; i < 200; ++i) image[i] = static_cast<Kuv16u>(0x7001 + i);
    EXPECT_EQ(kuviLShiftC_16u_AC4IR(counts, image, 400, {50, 1}), kuvStatusOk);
    for (int i = 0; i < 200; ++i) EXPECT_EQ(image[i], i % 4 == 3 ? 0x7001 + i : ((0x7001 + i) << 3 & 0xFFFF));
}

TEST_P(ShiftC, ACountOf16ClearsItsChannel) {
    constexpr Kuv32u counts[3] = {1, 2, 16};
    Kuv16u image[3 * 50];
    for (int i = 0; i < 150; ++i) image[i] = static_cast<Kuv16u>(0xF001 + i);
    EXPECT_EQ(kuviRShiftC_16u_C3IR(counts, image, 300, {50, 1}), kuvStatusOk);
    for (int i = 0; i < 150; ++i) EXPECT_EQ(image[i], i % 3 == 2 ? 0 : (0xF001 + i) >> (i % 3 + 1));
}

// Also where the samples stay as they are or become 0 without being read.
TEST_P(ShiftC, ASignalsPointerAndLengthComeBeforeItsCount) {
    Kuv16u sample = 7;
    for (const auto& signal : signalShifts) {
        for (const Kuv32s count : {0, 16}) {
            EXPECT_EQ(signal.call(count, nullptr, 0), kuvStatusNullPtr);
            EXPECT_EQ(signal.call(count, nullptr, 1), kuvStatusNullPtr);
            EXPECT_EQ(signal.call(count, &sample, 0), kuvStatusBadSize);
            EXPECT_EQ(signal.call(count, &sample, -1), kuvStatusBadSize);
        }
    }
    EXPECT_EQ(sample, 7);
}

// Not even what is no memory.
TEST_P(ShiftC, ASignalShiftedBy0IsNotAccessed) {
    Kuv16u* const nowhere = reinterpret_cast<Kuv16u*>(Kuv64u{16});
    for (const auto& signal : signalShifts) EXPECT_EQ(watched([&] { return signal.call(0, nowhere, INT32_MAX); }), kuvStatusOk);
}

// The counts may be samples of the image: they are read first.
TEST_P(ShiftC, CountsWithinTheImage) {
    for (const Shift& shift : shifts) {
        if (shift.samples == 1) continue;
        Kuv32u image[60];
        std::fill_n(image, 60, 0x00030003u);
        image[20] = 1, image[21] = 2, image[22] = 0x00010000;
        std::array<unsigned char, sizeof image> wanted;
        std::memcpy(wanted.data(), image, sizeof image);
        shift.shiftRow(wanted.data(), 120 / shift.samples, {1, 2, 0x00010000});
        EXPECT_EQ(shift.call(image + 20, reinterpret_cast<Kuv16u*>(image), 240, {120 / shift.samples, 1}), kuvStatusOk);
        EXPECT_EQ(std::memcmp(image, wanted.data(), sizeof image), 0) << shift.name;
    }
}

TEST_P(ShiftC, RowsFurtherApartThan32BitsTell) {
    constexpr std::ptrdiff_t step = 0x7FFFFFF1;
    const DistantMemory memory(3 * static_cast<std::size_t>(step));
    KUV_NEEDS(memory);
    for (const Shift& shift : shifts) {
        for (const Counts& counts : {Counts{2, 2, 2}, Counts{2, 3, 16}, Counts{16, 16, 16}, Counts{0, 0, 0}}) {
            const KuviSize size = {41, 3};
            const auto bytes = static_cast<std::size_t>(shift.rowBytes(size.width));
            Bytes wanted[3];
            for (int r = 0; r < 3; ++r) {
                char* const row = memory.memory() + step * r;
                for (std::size_t i = 0; i < bytes; ++i) row[i] = static_cast<char>(random_());
                wanted[r].assign(row, row + bytes);
                shift.shiftRow(wanted[r].data(), size.width, counts);
            }
            EXPECT_EQ(watched([&] {
                          return shift.call(counts.data(), reinterpret_cast<Kuv16u*>(memory.memory()), static_cast<Kuv32s>(step), size);
                      }),
                      kuvStatusOk);
            for (int r = 0; r < 3; ++r) EXPECT_EQ(std::memcmp(memory.memory() + step * r, wanted[r].data(), bytes), 0) << shift.name;
        }
    }
}

// Zeros may be shifted as often as one likes.
TEST_P(ShiftC, MoreThan31BitsOfSamplesInOneRun) {
    if (sanitized) GTEST_SKIP() << "the sanitizer takes minutes for it";
    constexpr KuviSize three = {27000, 26600}, four = {23300, 23100}, row = {0x2AAAAAAB, 1};
    const struct {
        const Shift& shift;
        Counts counts;
        KuviSize size;
    } cases[] = {{shifts[3], {3, 1, 16}, three},
                 {shifts[4], {3, 1, 16}, four},
                 {shifts[5], {16, 16, 16}, four},
                 {shifts[2], {3, 3, 3}, row},
                 {shifts[3], {16, 17, 18}, row}};
    const AliasedMemory image(LongRun::most);
    KUV_NEEDS(image);
    std::memset(image.memory(), 0, AliasedMemory::period);
    for (const auto& each : cases) {
        const Shift& shift = each.shift;
        LongRun run(image, each.size, shift.pixelBytes());
        run.want<Kuv16u>([&](Kuv16u sample, std::size_t i) {
            const std::size_t channel = i % static_cast<std::size_t>(shift.samples);
            return channel < 3 ? shift.shifted(sample, each.counts[channel]) : sample;
        });
        EXPECT_EQ(watched([&] {
                      return shift.call(each.counts.data(), reinterpret_cast<Kuv16u*>(image.memory()), run.step(), each.size);
                  }), kuvStatusOk);
        EXPECT_TRUE(run.isAsWanted()) << shift.name << ", " << each.size.width << " x " << each.size.height;
    }
}

}  // namespace
