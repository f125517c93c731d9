// Plain copies of images and signals.
#include <algorithm>

#include "support/agreement.hpp"
#include "support/aliased.hpp"
#include "support/distant.hpp"
#include "support/statuses.hpp"

namespace {

using namespace kuvtest;

#define PLAIN_COPY(function, T, samples)                                                                              \
    KUV_AGREES(function, Source<T>{.channels = samples}, Output<T>{.channels = samples}, RoiSize{});                  \
    KUV_CHECKS(function, call(Source<T>{.channels = samples}, Output<T>{.channels = samples}, RoiSize{}),             \
               check(kuvStatusNullPtr, null<0>(), null<2>()), badSize<4>())
PLAIN_COPY(kuviCopy_8u_C1R, Kuv8u, 1);
PLAIN_COPY(kuviCopy_16u_C1R, Kuv16u, 1);
PLAIN_COPY(kuviCopy_16s_C1R, Kuv16s, 1);
PLAIN_COPY(kuviCopy_32s_C1R, Kuv32s, 1);
PLAIN_COPY(kuviCopy_32f_C1R, Kuv32f, 1);
PLAIN_COPY(kuviCopy_8u_C3R, Kuv8u, 3);
PLAIN_COPY(kuviCopy_16u_C3R, Kuv16u, 3);
PLAIN_COPY(kuviCopy_8u_C4R, Kuv8u, 4);

KUV_AGREES(kuvsCopy_8u, SourceSignal<Kuv8u>{}, OutputSignal<Kuv8u>{}, Length{});
KUV_CHECKS(kuvsCopy_8u, call(SourceSignal<Kuv8u>{}, OutputSignal<Kuv8u>{}, Length{}),
           check(kuvStatusNullPtr, null<0>(), null<1>()), badLength<2>());

struct PlainCopy {
    const char* name;
    int pixelBytes;
    KuvStatus (*call)(const void* src, Kuv32s srcStep, void* dst, Kuv32s dstStep, KuviSize size);
};

#define ENTRY(function, T, samples)                                                                                   \
    {#function, samples * static_cast<int>(sizeof(T)), [](const void* src, Kuv32s srcStep, void* dst, Kuv32s dstStep, KuviSize size) { \
         return function(static_cast<const T*>(src), srcStep, static_cast<T*>(dst), dstStep, size);                   \
     }}
constexpr PlainCopy copies[] = {ENTRY(kuviCopy_8u_C1R, Kuv8u, 1),   ENTRY(kuviCopy_16u_C1R, Kuv16u, 1), ENTRY(kuviCopy_16s_C1R, Kuv16s, 1),
                                ENTRY(kuviCopy_32s_C1R, Kuv32s, 1), ENTRY(kuviCopy_32f_C1R, Kuv32f, 1), ENTRY(kuviCopy_8u_C3R, Kuv8u, 3),
                                ENTRY(kuviCopy_16u_C3R, Kuv16u, 3), ENTRY(kuviCopy_8u_C4R, Kuv8u, 4)};

class Copy : public VariantTest {
protected:
    // Copies as the library does and byte by byte, row after row.
    void expectCopy(const PlainCopy& copy, KuviSize size, std::ptrdiff_t srcStep, std::ptrdiff_t dstStep, Guard guard = Guard::end,
                    int srcGap = 0, int dstGap = 0) {
        const int rowBytes = size.width * copy.pixelBytes;
        const Image src("src", {rowBytes, size.height, srcStep, guard, srcGap, copy.pixelBytes}, ++seed_);
        const Image dst("dst", {rowBytes, size.height, dstStep, guard, dstGap, copy.pixelBytes}, ++seed_);
        const Bytes before = src.bytes();
        Bytes wanted = dst.bytes();
        for (int r = 0; r < size.height; ++r) std::copy_n(src.row(r), rowBytes, dst.row(wanted, r));
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << copy.name << ", " << size.width << " x " << size.height << "\n  src: "
                                        << src.geometry() << "\n  dst: " << dst.geometry());
        EXPECT_EQ(watched([&] { return copy.call(src.row(), src.step(), dst.row(), dst.step(), size); }), kuvStatusOk);
        EXPECT_EQ(dst.difference(wanted), "");
        EXPECT_EQ(src.difference(before), "");
    }

    void expectSignalCopy(int length, Guard srcGuard, int srcGap, int dstGap) {
        const Image src("src", {length, 1, 0, srcGuard, srcGap, 1}, ++seed_), dst("dst", {length, 1, 0, Guard::begin, dstGap, 1}, ++seed_);
        const Bytes before = src.bytes();
        Bytes wanted = dst.bytes();
        std::copy_n(src.row(), length, dst.row(wanted, 0));
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << length << " bytes\n  src: " << src.geometry() << "\n  dst: "
                                        << dst.geometry());
        EXPECT_EQ(watched([&] { return kuvsCopy_8u(src.row(), dst.row(), length); }), kuvStatusOk);
        EXPECT_EQ(dst.difference(wanted), "");
        EXPECT_EQ(src.difference(before), "");
    }

private:
    std::uint64_t seed_ = 0;
};

KUV_FOR_EACH_VARIANT(Copy);

TEST_P(Copy, EveryWidth) {
    for (const PlainCopy& copy : copies) {
        for (int width = 1; width <= 150 && !HasFailure(); ++width) {
            const int row = width * copy.pixelBytes;
            expectCopy(copy, {width, 2}, row + 1, row + 3, Guard::end);
            expectCopy(copy, {width, 2}, row + 7, row, Guard::begin);
            expectCopy(copy, {width, 3}, row, row, width % 2 == 0 ? Guard::begin : Guard::end);
        }
    }
}

TEST_P(Copy, AnyStep) {
    for (const PlainCopy& copy : copies) {
        for (const int width : {1, 2, 17, 40, 200}) {
            const int row = width * copy.pixelBytes;
            for (const std::ptrdiff_t srcStep : {row, row + 1, row + 64, 0, 1, row / 2, -row, -row - 5}) {
                for (const std::ptrdiff_t dstStep : {row, row + 1, row + 64, 0, 1, row / 2, -1, -row, -row - 5}) {
                    expectCopy(copy, {width, 5}, srcStep, dstStep);
                    if (HasFailure()) return;
                }
            }
        }
    }
}

// Kernels differ in where the images stand to 16, 32 and 64 bytes.
TEST_P(Copy, EveryAlignment) {
    for (int dstGap = 0; dstGap < 65; ++dstGap) {
        for (const int srcGap : {0, 1, 16, 31, dstGap}) {
            for (const int width : {1, 15, 31, 33, 63, 65, 100, 128, 200, 511, 513}) {
                expectCopy(copies[0], {width, 2}, width + 64, width + 64, Guard::begin, srcGap, dstGap);
                if (HasFailure()) return;
            }
        }
    }
}

// From 512 bytes on rows are planned for; the offset between the images within a page chooses the direction.
TEST_P(Copy, PlannedRows) {
    for (const int row : {480, 511, 512, 513, 544, 576, 1000, 1024, 4096, 5000}) {
        for (const int padding : {0, 32, 64, 37}) {
            for (const int offset : {-64, -1, 0, 1, 32, 64, 128, 159, 160, 161, 192, 2048}) {
                for (const int dstGap : {512, 544, 515}) {
                    expectCopy(copies[0], {row, 3}, row + padding, row + padding, Guard::begin, dstGap - offset + (offset > 128 ? 4096 : 0),
                               dstGap);
                    if (HasFailure()) return;
                }
            }
        }
    }
}

// By string moves where the cache is known, by vectors where it is not.
TEST_P(Copy, PlannedRuns) {
    for (const KuvStatus status : {kuvStatusOk, kuvStatusNoCpuid}) {
        const PresetCache cache(status, 0x7FFFFFFF);
        for (const int length : {32766, 32767, 32768, 32769, 32831, 32832, 40000, 100003}) {
            for (const int offset : {0, 1, 63, 64, 159, 160, 500}) {
                for (const int dstGap : {512, 515, 575}) expectSignalCopy(length, Guard::begin, dstGap + 4096 - offset, dstGap);
                if (HasFailure()) return;
            }
        }
    }
}

// With each answer that the cache may give: streamed, not streamed, unknown.
TEST_P(Copy, LargeImages) {
    for (const auto& [status, bytes] :
         {std::pair{kuvStatusOk, 0x100000}, {kuvStatusOk, 0x7FFFFFFF}, {kuvStatusNoCpuid, 0x100000}, {kuvStatusOk, 0}}) {
        const PresetCache cache(status, bytes);
        for (const PlainCopy& copy : {copies[0], copies[6]}) {
            const int width = 2080 / copy.pixelBytes, row = width * copy.pixelBytes, rows = 0x480000 / 2080;
            for (const int padding : {0, 32, 5}) {
                for (const int gap : {0, 3}) expectCopy(copy, {width, rows}, row + padding, row + padding, Guard::begin, 1, gap);
            }
            expectCopy(copy, {width, rows}, row, row + 64);
            expectCopy(copy, {2048 / copy.pixelBytes, rows}, 2048 + 64, 2048 + 64, Guard::begin, 0, 64);
            // Just below and above the limit of the unasked kind: 0x100000 bytes.
            for (const int width2 : {1023, 1024, 1025}) {
                const int row2 = width2 * copy.pixelBytes;
                for (const int rows2 : {0x100000 / row2, 0x100000 / row2 + 1}) expectCopy(copy, {width2, rows2}, row2 + 1, row2);
            }
            if (HasFailure()) return;
        }
        for (const int length : {0x400000, 0x400001, 0x480001}) {
            for (const int gap : {0, 5, 64}) expectSignalCopy(length, Guard::end, 0, gap);
        }
    }
}

TEST_P(Copy, OntoItself) {
    for (const int width : {1, 31, 33, 100, 600, 40000}) {
        const Image image("image", {width, 3, width + 3, Guard::end, 0, 1}, 1);
        const Bytes before = image.bytes();
        EXPECT_EQ(watched([&] { return kuviCopy_8u_C1R(image.row(), image.step(), image.row(), image.step(), {width, 3}); }), kuvStatusOk);
        EXPECT_EQ(watched([&] { return kuvsCopy_8u(image.row(), image.row(), width); }), kuvStatusOk);
        EXPECT_EQ(image.difference(before), "");
    }
}

// A signalling NaN stays one.
TEST_P(Copy, BitsOfReals) {
    const Kuv32u src[] = {0x7F800001, 0xFFBFFFFF, 0x7FC00000, 1, 0x80000000};
    Kuv32u dst[5] = {};
    EXPECT_EQ(kuviCopy_32f_C1R(reinterpret_cast<const Kuv32f*>(src), 20, reinterpret_cast<Kuv32f*>(dst), 20, {5, 1}), kuvStatusOk);
    EXPECT_TRUE(std::equal(std::begin(src), std::end(src), dst));
}

TEST_P(Copy, RowsFurtherApartThan32BitsTell) {
    constexpr std::ptrdiff_t step = 0x7FFFFFF1;
    const DistantMemory from(3 * static_cast<std::size_t>(step)), to(3 * static_cast<std::size_t>(step));
    KUV_NEEDS(from);
    KUV_NEEDS(to);
    for (const int width : {40, 700}) {
        for (const bool upward : {false, true}) {
            const std::ptrdiff_t sign = upward ? -1 : 1, start = upward ? 2 * step : 0;
            for (int r = 0; r < 3; ++r) {
                std::memset(from.memory() + start + sign * step * r, 'a' + r + width % 7, static_cast<std::size_t>(width));
            }
            EXPECT_EQ(watched([&] {
                          return kuviCopy_8u_C1R(reinterpret_cast<const Kuv8u*>(from.memory() + start), static_cast<Kuv32s>(sign * step),
                                                 reinterpret_cast<Kuv8u*>(to.memory() + start), static_cast<Kuv32s>(sign * step),
                                                 {width, 3});
                      }),
                      kuvStatusOk);
            for (int r = 0; r < 3; ++r) {
                EXPECT_EQ(std::memcmp(to.memory() + start + sign * step * r, from.memory() + start + sign * step * r,
                                      static_cast<std::size_t>(width)),
                          0);
            }
        }
    }
}

// More bytes than 31 bits tell, as one run and, from the end on, as rows.
TEST_P(Copy, MoreThan2GiB) {
    if (sanitized) GTEST_SKIP() << "the sanitizer takes minutes for it";
    constexpr KuviSize size = {46352, 46400};
    constexpr std::size_t bytes = static_cast<std::size_t>(size.width) * size.height;
    const AliasedMemory from(bytes), to(bytes);
    KUV_NEEDS(from);
    KUV_NEEDS(to);
    for (std::size_t i = 0; i < AliasedMemory::period; ++i) from.memory()[i] = static_cast<unsigned char>(i % 251);
    for (const bool upward : {false, true}) {
        LongRun run(to, size, 1);
        run.want<Kuv8u>([&](Kuv8u, std::size_t i) { return from.memory()[i]; });
        const Kuv32s step = upward ? -run.step() : run.step();
        const std::size_t start = upward ? bytes - static_cast<std::size_t>(size.width) : 0;
        EXPECT_EQ(watched([&] { return kuviCopy_8u_C1R(from.memory() + start, step, to.memory() + start, step, size); }), kuvStatusOk);
        EXPECT_TRUE(run.isAsWanted()) << (upward ? "upward" : "downward");
    }
}

}  // namespace
