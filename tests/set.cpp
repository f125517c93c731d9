// Fills with a constant, and zeroed signals.
#include <algorithm>

#include "support/agreement.hpp"
#include "support/aliased.hpp"
#include "support/distant.hpp"
#include "support/statuses.hpp"

namespace {

using namespace kuvtest;

#define CHECKS_OF_SET(function, T, ...)                                                                                \
    KUV_AGREES(function, AnyValue<T>{}, __VA_ARGS__, RoiSize{});                                                       \
    KUV_CHECKS(function, call(AnyValue<T>{}, __VA_ARGS__, RoiSize{}), check(kuvStatusNullPtr, null<1>()), badSize<3>())
CHECKS_OF_SET(kuviSet_8u_C1R, Kuv8u, Output<Kuv8u>{});
CHECKS_OF_SET(kuviSet_16u_C1R, Kuv16u, Output<Kuv16u>{});
CHECKS_OF_SET(kuviSet_32s_C1R, Kuv32s, Output<Kuv32s>{});
CHECKS_OF_SET(kuviSet_32f_C1R, Kuv32f, Output<Kuv32f>{});
// The last pixel's other samples may lie on an unmapped page.
CHECKS_OF_SET(kuviSet_8u_C4CR, Kuv8u, InOut<Kuv8u>{.channels = 4, .omitted = 3});

KUV_AGREES(kuvsZero_8u, OutputSignal<Kuv8u>{}, Length{});
KUV_CHECKS(kuvsZero_8u, call(OutputSignal<Kuv8u>{}, Length{}), check(kuvStatusNullPtr, null<0>()), badLength<1>());

class Set : public VariantTest {
protected:
    // Sets samples `pitch` samples apart, as the library does and one by one.
    template <class T, class Function>
    void expectSet(Function function, T value, KuviSize size, std::ptrdiff_t step, Guard guard, int gap, int pitch = 1) {
        const int rowBytes = ((size.width - 1) * pitch + 1) * static_cast<int>(sizeof(T));
        const Image dst("dst", {rowBytes, size.height, step, guard, gap, sizeof(T)}, static_cast<std::uint64_t>(size.width + gap));
        Bytes wanted = dst.bytes();
        for (int r = 0; r < size.height; ++r) {
            for (int i = 0; i < size.width; ++i) store(dst.row(wanted, r), i * pitch, value);
        }
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << sizeof(T) << "-byte samples, " << size.width << " x " << size.height
                                        << "\n  dst: " << dst.geometry());
        EXPECT_EQ(watched([&] { return function(value, dst.row<T>(), dst.step(), size); }), kuvStatusOk);
        EXPECT_EQ(dst.difference(wanted), "");
    }

    void expectSets(KuviSize size, int padding, Guard guard, int gap) {
        expectSet<Kuv8u>(kuviSet_8u_C1R, 0xA7, size, size.width + padding, guard, gap);
        expectSet<Kuv16u>(kuviSet_16u_C1R, 0xA7C3, size, size.width * 2 + padding, guard, gap);
        expectSet<Kuv32s>(kuviSet_32s_C1R, 0x12345678, size, size.width * 4 + padding, guard, gap);
        expectSet<Kuv32f>(kuviSet_32f_C1R, -1.7e-9f, size, size.width * 4 + padding, guard, gap);
        expectSet<Kuv8u>(kuviSet_8u_C4CR, 0xA7, size, size.width * 4 + padding, guard, gap, 4);
    }
};

KUV_FOR_EACH_VARIANT(Set);

TEST_P(Set, EveryWidth) {
    for (int width = 1; width <= 150 && !HasFailure(); ++width) {
        expectSets({width, 3}, 0, Guard::end, 0);
        expectSets({width, 2}, 1, Guard::begin, 0);
        expectSets({width, 2}, 40, Guard::end, 0);
    }
}

// The pattern keeps in phase with the samples wherever an aligned store begins.
TEST_P(Set, EveryAlignment) {
    for (int gap = 0; gap < 65 && !HasFailure(); ++gap) {
        for (const int width : {1, 15, 16, 17, 31, 33, 64, 65, 130}) expectSets({width, 2}, 3, Guard::begin, gap);
    }
}

TEST_P(Set, AnyStep) {
    for (const int width : {1, 5, 40, 100}) {
        for (const std::ptrdiff_t step : {0, 1, 2, 4, 13, -1, -4, -13, -width * 4, -width * 4 - 1}) {
            for (const Guard guard : {Guard::end, Guard::begin}) {
                expectSet<Kuv8u>(kuviSet_8u_C1R, 9, {width, 4}, step, guard, 0);
                expectSet<Kuv16u>(kuviSet_16u_C1R, 0x0102, {width, 4}, step, guard, 0);
                expectSet<Kuv32s>(kuviSet_32s_C1R, 0x01020304, {width, 4}, step, guard, 0);
                expectSet<Kuv8u>(kuviSet_8u_C4CR, 9, {width, 4}, step, guard, 0, 4);
                if (HasFailure()) return;
            }
        }
    }
}

// With each answer that the cache may give, around the sizes from which on it is asked.
TEST_P(Set, LargeFills) {
    for (const auto& [status, bytes] :
         {std::pair{kuvStatusOk, 0x10000}, {kuvStatusOk, 0x80004}, {kuvStatusOk, 0x7FFFFFFF}, {kuvStatusNoCpuid, 0x10000}}) {
        const PresetCache cache(status, bytes);
        for (const int gap : {0, 18}) {
            for (const int width : {0x1FFFF, 0x20000, 0x20001}) expectSets({width, 1}, 0, Guard::end, gap);
            expectSets({331, 420}, 5, Guard::end, gap);
            expectSets({331, 420}, 0, Guard::begin, gap);
            for (const int width : {0x600000, 0x600001}) expectSet<Kuv8u>(kuviSet_8u_C1R, 3, {width, 1}, 0, Guard::end, gap);
            expectSet<Kuv8u>(kuviSet_8u_C1R, 3, {2511, 2511}, 2512, Guard::end, gap);
            if (HasFailure()) return;
        }
    }
}

TEST_P(Set, SignallingNaNKeepsItsBits) {
    Kuv32u dst[7] = {};
    for (const Kuv32u bits : {0x7F800001u, 0xFFBFFFFFu}) {
        EXPECT_EQ(kuviSet_32f_C1R(load<Kuv32f>(&bits), reinterpret_cast<Kuv32f*>(dst), 28, {7, 1}), kuvStatusOk);
        EXPECT_EQ(std::count(std::begin(dst), std::end(dst), bits), 7);
    }
}

TEST_P(Set, RowsFurtherApartThan32BitsTell) {
    constexpr std::ptrdiff_t step = 0x7FFFFFF1;
    const DistantMemory memory(3 * static_cast<std::size_t>(step));
    KUV_NEEDS(memory);
    const auto expectRows = [&](auto function, auto value, int pitch) {
        using T = decltype(value);
        constexpr KuviSize size = {41, 3};
        for (const bool upward : {false, true}) {
            const std::ptrdiff_t signedStep = upward ? -step : step, start = upward ? 2 * step : 0;
            const auto bytes = static_cast<std::ptrdiff_t>(sizeof(T)) * ((size.width - 1) * pitch + 1);
            for (int r = 0; r < 3; ++r) std::memset(memory.memory() + start + signedStep * r, 'a' + r, static_cast<std::size_t>(bytes + 1));
            EXPECT_EQ(watched([&] {
                          return function(value, reinterpret_cast<T*>(memory.memory() + start), static_cast<Kuv32s>(signedStep), size);
                      }),
                      kuvStatusOk);
            for (int r = 0; r < 3; ++r) {
                Bytes wanted(static_cast<std::size_t>(bytes + 1), static_cast<unsigned char>('a' + r));
                for (int i = 0; i < size.width; ++i) store(wanted.data(), i * pitch, value);
                EXPECT_EQ(std::memcmp(memory.memory() + start + signedStep * r, wanted.data(), wanted.size()), 0)
                    << sizeof(T) << "-byte samples, row " << r << (upward ? ", upward" : "");
            }
        }
    };
    expectRows(kuviSet_8u_C1R, Kuv8u{0xA7}, 1);
    expectRows(kuviSet_16u_C1R, Kuv16u{0xA7C3}, 1);
    expectRows(kuviSet_32s_C1R, Kuv32s{0x12345678}, 1);
    expectRows(kuviSet_32f_C1R, -1.7e-9f, 1);
    expectRows(kuviSet_8u_C4CR, Kuv8u{0xA7}, 4);
}

// More bytes than 31 bits tell, and than 32.
TEST_P(Set, MoreThan2GiB) {
    if (sanitized) GTEST_SKIP() << "the sanitizer takes minutes for it";
    const PresetCache cache(kuvStatusOk, 0x10000);
    const AliasedMemory memory(LongRun::most);
    KUV_NEEDS(memory);
    for (const KuviSize size : {KuviSize{46352, 46400}, KuviSize{65552, 65600}}) {
        LongRun bytes(memory, size, 1);
        bytes.want<Kuv8u>([](Kuv8u, std::size_t) { return 0x5A; });
        EXPECT_EQ(watched([&] { return kuviSet_8u_C1R(0x5A, memory.memory(), bytes.step(), size); }), kuvStatusOk);
        EXPECT_TRUE(bytes.isAsWanted()) << size.width << " x " << size.height;
        const KuviSize quarter = {size.width / 4, size.height};
        LongRun words(memory, quarter, 4);
        words.want<Kuv32s>([](Kuv32s, std::size_t) { return 0x01020304; });
        auto* const dst = reinterpret_cast<Kuv32s*>(memory.memory());
        EXPECT_EQ(watched([&] { return kuviSet_32s_C1R(0x01020304, dst, words.step(), quarter); }), kuvStatusOk);
        EXPECT_TRUE(words.isAsWanted()) << quarter.width << " x " << quarter.height;
    }
}

TEST_P(Set, ZeroOfSignals) {
    for (const int length : {1, 2, 15, 16, 17, 31, 32, 33, 63, 64, 65, 100, 1000, 32767, 32768, 32769, 40001, 300000}) {
        for (const int gap : {0, 1, 17, 63}) {
            for (const Guard guard : {Guard::end, Guard::begin}) {
                const Image dst("dst", {length, 1, 0, guard, gap, 1}, 1);
                Bytes wanted = dst.bytes();
                std::fill_n(dst.row(wanted, 0), length, 0);
                EXPECT_EQ(watched([&] { return kuvsZero_8u(dst.row(), length); }), kuvStatusOk);
                EXPECT_EQ(dst.difference(wanted), "") << GetParam() << ", " << length;
            }
        }
    }
}

}  // namespace
