// Index images expanded through a palette.
#include <algorithm>
#include <functional>
#include <vector>

#include "support/agreement.hpp"
#include "support/distant.hpp"
#include "support/statuses.hpp"

namespace {

using namespace kuvtest;

// (pointer, bits): a table of exactly as many entries as indices have values, with nothing around it.
template <class T, int samples, int mostBits>
struct PaletteAndBits {
    std::tuple<const T*, Kuv32s> operator()(Draw& draw) const {
        const Kuv32s bits = between(draw.random, 1, mostBits);
        return {draw.image<T>(Role::source, samples << bits, 1, 0).template row<const T>(), bits};
    }
};

#define CHECKS_OF_PALETTE(function, S, T, channelCount, mostBits)                                                              \
    KUV_AGREES(function, Source<S>{.steps = StepClass::B}, Output<T>{.channels = channelCount, .steps = StepClass::B}, RoiSize{}, \
               PaletteAndBits<T, channelCount, mostBits>{});                                                                   \
    KUV_CHECKS(function,                                                                                                       \
               call(Source<S>{.steps = StepClass::B}, Output<T>{.channels = channelCount, .steps = StepClass::B}, RoiSize{},   \
                    PaletteAndBits<T, channelCount, mostBits>{}),                                                              \
               check(kuvStatusNullPtr, null<0>(), null<2>(), null<5>()), badSize<4>(),                                         \
               check(kuvStatusOutOfRange, set<6>(0), set<6>(mostBits + 1), set<6>(-1), set<6>(INT32_MIN), set<6>(INT32_MAX)),  \
               badStep<1, 3>())
CHECKS_OF_PALETTE(kuviLUTPalette_8u24u_C1R, Kuv8u, Kuv8u, 3, 8);
CHECKS_OF_PALETTE(kuviLUTPalette_8u32u_C1R, Kuv8u, Kuv32u, 1, 8);
CHECKS_OF_PALETTE(kuviLUTPalette_16u24u_C1R, Kuv16u, Kuv8u, 3, 16);
CHECKS_OF_PALETTE(kuviLUTPalette_16u32u_C1R, Kuv16u, Kuv32u, 1, 16);

struct Expansion {
    const char* name;
    int sampleBytes, pixelBytes;
    KuvStatus (*call)(const void* src, Kuv32s srcStep, void* dst, Kuv32s dstStep, KuviSize size, const void* table, Kuv32s bits);

    int mostBits() const { return 8 * sampleBytes; }
};

#define EXPANSION(function, S, T, pixelBytes)                                                                                  \
    {#function, sizeof(S), pixelBytes,                                                                                         \
     [](const void* src, Kuv32s srcStep, void* dst, Kuv32s dstStep, KuviSize size, const void* table, Kuv32s bits) {           \
         const T* const entries = static_cast<const T*>(table);                                                                \
         return function(static_cast<const S*>(src), srcStep, static_cast<T*>(dst), dstStep, size, entries, bits);             \
     }}
constexpr Expansion expansions[] = {
    EXPANSION(kuviLUTPalette_8u24u_C1R, Kuv8u, Kuv8u, 3), EXPANSION(kuviLUTPalette_8u32u_C1R, Kuv8u, Kuv32u, 4),
    EXPANSION(kuviLUTPalette_16u24u_C1R, Kuv16u, Kuv8u, 3), EXPANSION(kuviLUTPalette_16u32u_C1R, Kuv16u, Kuv32u, 4)};

class Palette : public VariantTest {
protected:
    static int indexAt(const Expansion& expansion, const unsigned char* row, int i, int bits) {
        const int sample = expansion.sampleBytes == 1 ? row[i] : load<Kuv16u>(row, i);
        return sample % (1 << bits);
    }

    static void expandRow(const Expansion& expansion, const unsigned char* src, unsigned char* dst, int width,
                          const unsigned char* table, int bits) {
        for (int i = 0; i < width; ++i) {
            for (int b = 0; b < expansion.pixelBytes; ++b) {
                dst[i * expansion.pixelBytes + b] = table[indexAt(expansion, src, i, bits) * expansion.pixelBytes + b];
            }
        }
    }

    struct Place {
        int padding = 0;  // of both steps
        Guard guard = Guard::end;
        int gap = 0;
    };

    // Random samples, or what `fillSrc` makes of the source.
    void expectExpansion(const Expansion& expansion, KuviSize size, int bits, Place srcAt, Place dstAt, Place tableAt,
                         const std::function<void(const Image&)>& fillSrc = {}) {
        const auto geometry = [](int rowBytes, int rows, const Place& at, int elementBytes) {
            return Geometry{rowBytes, rows, rowBytes + at.padding, at.guard, at.gap, elementBytes};
        };
        const Image src("src", geometry(size.width * expansion.sampleBytes, size.height, srcAt, expansion.sampleBytes), random_());
        const Image dst("dst", geometry(size.width * expansion.pixelBytes, size.height, dstAt, expansion.pixelBytes), random_());
        const Image table("table", geometry(expansion.pixelBytes << bits, 1, tableAt, expansion.pixelBytes), random_());
        if (fillSrc) fillSrc(src);
        const Bytes srcBefore = src.bytes(), tableBefore = table.bytes();
        Bytes wanted = dst.bytes();
        for (int r = 0; r < size.height; ++r) {
            expandRow(expansion, src.row(r), dst.row(wanted, r), size.width, table.row(), bits);
        }
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << expansion.name << ", " << size.width << " x " << size.height
                                        << ", " << bits << " bits\n  src: " << src.geometry() << "\n  dst: " << dst.geometry()
                                        << "\n  table: " << table.geometry());
        EXPECT_EQ(watched([&] {
                      return expansion.call(src.row(), src.step(), dst.row(), dst.step(), size, table.row(), bits);
                  }), kuvStatusOk);
        EXPECT_EQ(dst.difference(wanted), "");
        EXPECT_EQ(src.difference(srcBefore), "");
        EXPECT_EQ(table.difference(tableBefore), "");
    }

    // All three on the same side of their pages.
    void expectExpansion(const Expansion& expansion, KuviSize size, int bits, Place at) {
        expectExpansion(expansion, size, bits, at, at, at);
    }

    int anyBits(const Expansion& expansion) { return between(random_, 1, expansion.mostBits()); }

    Random random_{1};
};

KUV_FOR_EACH_VARIANT(Palette);

TEST_P(Palette, EveryWidth) {
    for (const Expansion& expansion : expansions) {
        for (int width = 1; width <= 700; width += width < 110 ? 1 : 37) {
            for (const Guard guard : {Guard::end, Guard::begin}) {
                for (const int padding : {0, 1, 64}) {
                    const int bits = oneIn(random_, 2) ? std::min(anyBits(expansion), 9) : 8;
                    expectExpansion(expansion, {width, 3}, bits, {padding, guard, 0});
                }
            }
            if (HasFailure()) return;
        }
    }
}

// Of small and of large images, which need not take the same way.
TEST_P(Palette, EveryBitCount) {
    for (const Expansion& expansion : expansions) {
        for (int bits = 1; bits <= expansion.mostBits() && !HasFailure(); ++bits) {
            for (const KuviSize size : {KuviSize{1, 1}, {7, 3}, {64, 2}, {65, 31}, {61, 40}, {3, 1000}, {1000, 3}, {3000, 1}}) {
                for (const Guard guard : {Guard::end, Guard::begin}) {
                    expectExpansion(expansion, size, bits, {oneIn(random_, 2) ? 5 : 0, guard, 0});
                }
            }
        }
    }
}

TEST_P(Palette, EveryAlignment) {
    for (const Expansion& expansion : expansions) {
        for (int gap = 0; gap <= 64 && !HasFailure(); ++gap) {
            for (const KuviSize size : {KuviSize{9, 2}, {33, 2}, {100, 25}}) {
                const int bits = std::min(anyBits(expansion), 10);
                const auto at = [&](int offset) { return Place{below(random_, 65), Guard::begin, offset}; };
                const auto any = [&] { return below(random_, 65); };
                expectExpansion(expansion, size, bits, at(gap), at(any()), at(any()));
                expectExpansion(expansion, size, bits, at(any()), at(gap), at(any()));
                expectExpansion(expansion, size, bits, at(any()), at(any()), at(gap));
            }
        }
    }
}

// In order, so that all places of a block see all of them, with tables of few entries and of as many as there are.
TEST_P(Palette, EverySample) {
    for (const Expansion& expansion : expansions) {
        const int samples = 1 << expansion.mostBits();
        for (const int bits : {1, 4, 7, 8, 12, 15, 16}) {
            if (bits > expansion.mostBits()) continue;
            for (const int first : {0, 1, 2, 3, 5}) {
                expectExpansion(expansion, {samples, 1}, bits, {}, {}, {}, [&](const Image& src) {
                    for (int i = 0; i < samples; ++i) {
                        if (expansion.sampleBytes == 1) store(src.row(), i, static_cast<Kuv8u>(i + first));
                        else store(src.row(), i, static_cast<Kuv16u>(i + first));
                    }
                });
                if (HasFailure()) return;
            }
        }
    }
}

// The table's ends are read at every place of a row, and next to each other.
TEST_P(Palette, FirstAndLastEntry) {
    for (const Expansion& expansion : expansions) {
        for (int bits = 1; bits <= expansion.mostBits() && !HasFailure(); ++bits) {
            for (const KuviSize size : {KuviSize{37, 2}, {37, 80}}) {
                for (const Guard guard : {Guard::end, Guard::begin}) {
                    for (const int share : {1, 2, 10}) {
                        const Place at = {0, guard, 0};
                        expectExpansion(expansion, size, bits, at, at, at, [&](const Image& src) {
                            const auto bytes = static_cast<std::size_t>(expansion.sampleBytes);
                            for (int r = 0; r < size.height; ++r) {
                                for (int i = 0; i < size.width; ++i) {
                                    std::memset(src.row(r) + i * expansion.sampleBytes, oneIn(random_, share) ? 0xFF : 0, bytes);
                                }
                            }
                        });
                    }
                }
            }
        }
    }
}

TEST_P(Palette, OneBitCountsTheLowestBitAlone) {
    constexpr Kuv8u src[6] = {0, 1, 0xFE, 0xFF, 0x80, 0x81}, colours[6] = {10, 11, 12, 20, 21, 22};
    constexpr Kuv16u src16[6] = {0, 1, 0xFFFE, 0xFFFF, 0x100, 0x8001};
    constexpr Kuv32u words[2] = {0xDEADBEEF, 0x01234567};
    Kuv8u dst[18];
    Kuv32u dst32[6];
    const auto expectColours = [&] {
        for (int i = 0; i < 18; ++i) EXPECT_EQ(dst[i], colours[i / 3 % 2 * 3 + i % 3]) << i;
        std::fill_n(dst, 18, Kuv8u{0});
    };
    const auto expectWords = [&] {
        for (int i = 0; i < 6; ++i) EXPECT_EQ(dst32[i], words[i % 2]) << i;
        std::fill_n(dst32, 6, 0u);
    };
    EXPECT_EQ(kuviLUTPalette_8u24u_C1R(src, 6, dst, 18, {6, 1}, colours, 1), kuvStatusOk);
    expectColours();
    EXPECT_EQ(kuviLUTPalette_16u24u_C1R(src16, 12, dst, 18, {6, 1}, colours, 1), kuvStatusOk);
    expectColours();
    EXPECT_EQ(kuviLUTPalette_8u32u_C1R(src, 6, dst32, 24, {6, 1}, words, 1), kuvStatusOk);
    expectWords();
    EXPECT_EQ(kuviLUTPalette_16u32u_C1R(src16, 12, dst32, 24, {6, 1}, words, 1), kuvStatusOk);
    expectWords();
}

TEST_P(Palette, BitCountsOutsideTheirRange) {
    std::vector<unsigned char> table(4 << 16), src(8), dst(8, 0x5A);
    for (const Expansion& expansion : expansions) {
        const auto status = [&](Kuv32s bits) { return expansion.call(src.data(), 2, dst.data(), 4, {1, 1}, table.data(), bits); };
        for (const Kuv32s bits : {0, -1, -8, 17, 32, 33, INT32_MIN, INT32_MAX}) EXPECT_EQ(status(bits), kuvStatusOutOfRange) << bits;
        EXPECT_TRUE(std::all_of(dst.begin(), dst.end(), [](unsigned char each) { return each == 0x5A; }));
        EXPECT_EQ(status(8), kuvStatusOk);
        for (const Kuv32s bits : {9, 16}) EXPECT_EQ(status(bits), expansion.sampleBytes == 1 ? kuvStatusOutOfRange : kuvStatusOk) << bits;
        std::fill(dst.begin(), dst.end(), static_cast<unsigned char>(0x5A));
    }
}

TEST_P(Palette, HigherBitsDoNotCount) {
    constexpr Kuv16u src[5] = {0x1FF, 0x100, 0xFFFF, 0x8001, 0xFF};
    constexpr int wanted[5] = {255, 0, 255, 1, 255};
    Kuv8u colours[3 * 256], dst[15];
    Kuv32u words[256], dst32[5];
    for (int i = 0; i < 3 * 256; ++i) colours[i] = static_cast<Kuv8u>(i * 7 + i / 256);
    for (Kuv32u i = 0; i < 256; ++i) words[i] = i * 0x01010101 + 5;
    EXPECT_EQ(kuviLUTPalette_16u24u_C1R(src, 10, dst, 15, {5, 1}, colours, 8), kuvStatusOk);
    EXPECT_EQ(kuviLUTPalette_16u32u_C1R(src, 10, dst32, 20, {5, 1}, words, 8), kuvStatusOk);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(dst32[i], words[wanted[i]]);
        for (int b = 0; b < 3; ++b) EXPECT_EQ(dst[3 * i + b], colours[3 * wanted[i] + b]);
    }
}

// A step may equal the row's bytes, and one less is refused, even with a single row.
TEST_P(Palette, StepsAtTheRowsBytes) {
    const std::vector<unsigned char> table(4 << 8), src(2000), before(4000, 0x5A);
    for (const Expansion& expansion : expansions) {
        for (const KuviSize size : {KuviSize{1, 1}, {2, 3}, {17, 1}, {300, 3}}) {
            const Kuv32s srcRow = size.width * expansion.sampleBytes, dstRow = size.width * expansion.pixelBytes;
            std::vector<unsigned char> dst = before;
            const auto status = [&](Kuv32s srcStep, Kuv32s dstStep) {
                return expansion.call(src.data(), srcStep, dst.data(), dstStep, size, table.data(), 8);
            };
            EXPECT_EQ(status(srcRow - 1, dstRow), kuvStatusBadStep);
            EXPECT_EQ(status(srcRow, dstRow - 1), kuvStatusBadStep);
            EXPECT_EQ(dst, before);
            EXPECT_EQ(status(srcRow, dstRow), kuvStatusOk);
            EXPECT_NE(dst, before);
        }
    }
}

// Rows whose bytes 32 bits cannot tell have more than any step.
TEST_P(Palette, WidthsWhoseBytesWrap) {
    unsigned char src[8] = {}, dst[8] = {}, table[8] = {};
    const unsigned char before[8] = {};
    for (const Expansion& expansion : expansions) {
        // Times 2, 3 or 4 they leave little or nothing of 32 bits, or a negative number.
        for (const Kuv32s width : {0x40000000, 0x40000001, 0x55555556, 0x55555555, 0x2AAAAAAB, 0x60000000, INT32_MAX}) {
            const Kuv64s srcRow = Kuv64s{width} * expansion.sampleBytes, dstRow = Kuv64s{width} * expansion.pixelBytes;
            ASSERT_TRUE(dstRow > INT32_MAX);
            const auto status = [&](Kuv32s srcStep, Kuv32s dstStep) {
                return watched([&] { return expansion.call(src, srcStep, dst, dstStep, {width, 1}, table, 1); });
            };
            for (const Kuv32s dstStep : {4, 1, INT32_MAX}) {
                EXPECT_EQ(status(INT32_MAX, dstStep), kuvStatusBadStep) << expansion.name << ", " << width;
            }
            if (srcRow > INT32_MAX) {
                EXPECT_EQ(status(2, INT32_MAX), kuvStatusBadStep) << expansion.name << ", " << width;
            }
        }
        EXPECT_EQ(std::memcmp(dst, before, sizeof dst), 0);
    }
}

TEST_P(Palette, RowsFurtherApartThan32BitsTell) {
    constexpr std::ptrdiff_t step = 0x7FFFFFF1;
    const DistantMemory from(3 * static_cast<std::size_t>(step)), to(3 * static_cast<std::size_t>(step));
    KUV_NEEDS(from);
    KUV_NEEDS(to);
    for (const Expansion& expansion : expansions) {
        for (const int width : {41, 1100}) {  // 1100: enough pixels for what large images get
            const int bits = anyBits(expansion), bytes = width * expansion.pixelBytes;
            std::vector<unsigned char> table(static_cast<std::size_t>(expansion.pixelBytes) << bits), wanted[3];
            for (unsigned char& each : table) each = static_cast<unsigned char>(random_());
            for (int r = 0; r < 3; ++r) {
                unsigned char* const src = reinterpret_cast<unsigned char*>(from.memory()) + step * r;
                for (int i = 0; i < width * expansion.sampleBytes; ++i) src[i] = static_cast<unsigned char>(random_());
                wanted[r].resize(static_cast<std::size_t>(bytes));
                expandRow(expansion, src, wanted[r].data(), width, table.data(), bits);
            }
            EXPECT_EQ(watched([&] {
                          return expansion.call(from.memory(), step, to.memory(), step, {width, 3}, table.data(), bits);
                      }), kuvStatusOk);
            for (int r = 0; r < 3; ++r) {
                EXPECT_EQ(std::memcmp(to.memory() + step * r, wanted[r].data(), wanted[r].size()), 0) << expansion.name;
            }
        }
    }
}

}  // namespace
