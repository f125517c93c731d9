// Fills with a constant.
#include <algorithm>

#include "support/agreement.hpp"
#include "support/aliased.hpp"
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

// More bytes than 31 bits tell, and than 32. Each page stands for hundreds: what is checked is that the fill gets to the end.
TEST_P(Set, MoreThan2GiB) {
    if (sanitized) GTEST_SKIP() << "the sanitizer takes minutes for it";
    const PresetCache cache(kuvStatusOk, 0x10000);
    for (const KuviSize size : {KuviSize{46352, 46400}, KuviSize{65552, 65600}}) {
        const std::size_t bytes = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
        const AliasedMemory memory(bytes);
        KUV_NEEDS(memory);
        std::memset(memory.memory(), 0, AliasedMemory::period);
        EXPECT_EQ(kuviSet_8u_C1R(0x5A, memory.memory(), size.width, size), kuvStatusOk);
        EXPECT_EQ(memory.memory()[bytes - 1], 0x5A);
        EXPECT_EQ(std::count(memory.memory(), memory.memory() + AliasedMemory::period, 0x5A),
                  static_cast<std::ptrdiff_t>(AliasedMemory::period));
        EXPECT_EQ(kuviSet_32s_C1R(0x01010101, reinterpret_cast<Kuv32s*>(memory.memory()), size.width, {size.width / 4, size.height}),
                  kuvStatusOk);
        EXPECT_EQ(memory.memory()[bytes - 1], 1);
    }
}

}  // namespace
