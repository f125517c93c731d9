// Cosine transforms of 8x8 blocks.
#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <tuple>

#include "support/statuses.hpp"

namespace {

using namespace kuvtest;

// px computes otherwise.
#define CHECKS_OF_TRANSFORM(function)                            \
    KUV_AGREES_FROM(w7, function, InOutSignal<Kuv16s>{64});      \
    KUV_CHECKS(function, call(InOutSignal<Kuv16s>{64}), check(kuvStatusNullPtr, null<0>()))
CHECKS_OF_TRANSFORM(kuviDCT8x8Fwd_16s_C1I);
CHECKS_OF_TRANSFORM(kuviDCT8x8Inv_16s_C1I);

using Block = std::array<Kuv16s, 64>;
using RealBlock = std::array<double, 64>;

enum class Direction { forward, inverse };

Block transformed(Direction direction, Block block) {
    const auto function = direction == Direction::forward ? kuviDCT8x8Fwd_16s_C1I : kuviDCT8x8Inv_16s_C1I;
    EXPECT_EQ(watched([&] { return function(block.data()); }), kuvStatusOk);
    return block;
}

// The basis: row k, sample n.
double basis(int k, int n) { return (k == 0 ? std::sqrt(0.125) : 0.5) * std::cos((2 * n + 1) * k * std::numbers::pi / 16); }

RealBlock exactly(Direction direction, const Block& block) {
    static const auto table = [] {
        RealBlock all;
        for (int i = 0; i < 64; ++i) all[static_cast<std::size_t>(i)] = basis(i / 8, i % 8);
        return all;
    }();
    const auto weight = [&](int out, int in) {
        return table[static_cast<std::size_t>(direction == Direction::forward ? 8 * out + in : 8 * in + out)];
    };
    RealBlock rows{}, result{};
    for (std::size_t i = 0; i < 64; ++i) {
        const int y = static_cast<int>(i / 8), x = static_cast<int>(i % 8);
        for (int n = 0; n < 8; ++n) rows[i] += weight(x, n) * block[static_cast<std::size_t>(8 * y + n)];
    }
    for (std::size_t i = 0; i < 64; ++i) {
        const int y = static_cast<int>(i / 8), x = static_cast<int>(i % 8);
        for (int n = 0; n < 8; ++n) result[i] += weight(y, n) * rows[static_cast<std::size_t>(8 * n + x)];
    }
    return result;
}

// px, literally, with 64-bit intermediates that are wrapped to 32 bits where they are shifted.
std::int64_t shifted(std::int64_t v, int bits) {
    return static_cast<Kuv32s>(static_cast<Kuv32u>(v + (std::int64_t{1} << (bits - 1)))) >> bits;
}

// c[i] is the cosine of i sixteenths of half a turn.
struct Factors {
    std::array<double, 8> c = [] {
        std::array<double, 8> all;
        for (std::size_t i = 0; i < 8; ++i) all[i] = std::cos(static_cast<double>(i) * std::numbers::pi / 16);
        return all;
    }();

    static std::int64_t fixed(double v, int fractionBits) { return std::llround(std::ldexp(v, fractionBits)); }

    // Of the odd ones: by c7 and what is added to make it c1, by c3 and what is added to make it c5.
    struct Odd {
        std::int64_t c7, c1Less7, c1And7, c3, c3Less5, c3And5;
    };
    Odd odd(int bits) const {
        return {fixed(c[7], bits), fixed(c[1] - c[7], bits), fixed(c[1] + c[7], bits),
                fixed(c[3], bits), fixed(c[3] - c[5], bits), fixed(c[3] + c[5], bits)};
    }
    const Odd forward = odd(12), inverse = odd(15);

    const double root = std::numbers::sqrt2;
    const std::int64_t c6 = fixed(c[6] * root, 15), c2Less6 = fixed((c[2] - c[6]) * root, 15), c2And6 = fixed((c[2] + c[6]) * root, 15);
    const std::int64_t root2 = fixed(root, 12), eightRoot2 = fixed(8 * root, 12);
};

std::array<std::int64_t, 8> butterfly(Direction direction, const std::array<std::int64_t, 8>& x, int bits) {
    static const Factors f;
    const auto r12 = [](std::int64_t v) { return shifted(v, 12); };
    const auto r = [bits](std::int64_t v) { return shifted(v, bits); };
    const Factors::Odd& k = direction == Direction::forward ? f.forward : f.inverse;
    if (direction == Direction::forward) {
        const auto s07 = x[0] + x[7], s16 = x[1] + x[6], s25 = x[2] + x[5], s34 = x[3] + x[4];
        const auto e0 = s07 + s34, e1 = s07 - s34, e2 = s16 + s25, e3 = s16 - s25;
        const auto p = r12(f.eightRoot2 * (x[0] - x[7])), q = r12(f.eightRoot2 * (x[3] - x[4]));
        const auto a = 8 * (x[1] - x[6] + x[2] - x[5]), b = 8 * (x[1] - x[6] - x[2] + x[5]);
        const auto t = f.c6 * (e1 + e3), u1 = p + a, u2 = p - a, v1 = q + b, v2 = q - b;
        const auto c1 = k.c7 * (u1 + v1), c2 = k.c3 * (u2 + v2);
        const bool first = bits == 12;
        return {first ? 8 * (e0 + e2) : shifted(e0 + e2, 6), r(c1 + k.c1Less7 * u1),    r(f.c2Less6 * e1 + t),  r(c2 - k.c3And5 * v2),
                first ? 8 * (e0 - e2) : shifted(e0 - e2, 6), r(c2 - k.c3Less5 * u2),    r(t - f.c2And6 * e3),  r(c1 - k.c1And7 * v1)};
    }
    const auto A = k.c3 * (x[5] + x[3]), B = k.c7 * (x[1] + x[7]);
    const auto m = A - k.c3Less5 * x[5], n = A - k.c3And5 * x[3], o = B + k.c1Less7 * x[1], w = B - k.c1And7 * x[7];
    const auto d1 = o - m, d2 = w - n, g1 = d1 + d2, g2 = d1 - d2;
    const auto h1 = f.root2 * r12(n + w), h2 = f.root2 * r12(m + o);
    const auto z = 32768 * (x[0] + x[4]), zz = 32768 * (x[0] - x[4]);
    const auto C = f.c6 * (x[2] + x[6]), f1 = f.c2Less6 * x[2] + C, f2 = C - f.c2And6 * x[6];
    return {r(h2 + z + f1),  r(g1 + zz + f2), r(g2 + zz - f2), r(h1 + z - f1),
            r(z - f1 - h1), r(zz - f2 - g2), r(zz + f2 - g1), r(z + f1 - h2)};
}

// w7 to h9, literally: sums of exact products of 16-bit factors, rounded once and saturated.
std::array<std::int64_t, 8> productSums(Direction direction, const std::array<std::int64_t, 8>& x, int bits) {
    const auto sat = [](std::int64_t v) { return std::clamp<std::int64_t>(v, -32768, 32767); };
    std::array<std::int64_t, 8> result;
    for (int k = 0; k < 8; ++k) {
        std::int64_t sum = 0;
        for (int n = 0; n < 8; ++n) {
            const auto i = static_cast<std::size_t>(n);
            const auto factor = [](int row, int column) { return std::llround(basis(row, column) * std::sqrt(8) * 8192); };
            if (direction == Direction::inverse) {
                sum += factor(n, k) * x[i];
            } else if (n < 4) {
                sum += factor(k, n) * sat(k % 2 == 0 ? x[i] + x[7 - i] : x[i] - x[7 - i]);
            }
        }
        result[static_cast<std::size_t>(k)] = sat((sum + (std::int64_t{1} << (bits - 1))) >> bits);
    }
    return result;
}

Block literally(Direction direction, bool px, Block block) {
    for (const bool second : {false, true}) {
        const bool rows = (direction == Direction::forward) != second;
        for (std::size_t line = 0; line < 8; ++line) {
            const auto place = [&](std::size_t i) { return rows ? 8 * line + i : 8 * i + line; };
            std::array<std::int64_t, 8> x;
            for (std::size_t i = 0; i < 8; ++i) x[i] = block[place(i)];
            const int room = direction == Direction::forward;
            x = px ? butterfly(direction, x, second ? 21 : 12) : productSums(direction, x, second ? 19 - room : 10 + room);
            for (std::size_t i = 0; i < 8; ++i) block[place(i)] = static_cast<Kuv16s>(x[i]);
        }
    }
    return block;
}

Block drawn(Random& random, int lowest, int highest) {
    Block block;
    for (Kuv16s& each : block) each = static_cast<Kuv16s>(between(random, lowest, highest));
    return block;
}

// What a transform gives of such samples, as an encoder rounds and clips it.
Block coefficientsOf(const Block& samples) {
    Block result;
    const RealBlock exact = exactly(Direction::forward, samples);
    std::transform(exact.begin(), exact.end(), result.begin(),
                   [](double v) { return static_cast<Kuv16s>(std::clamp(std::nearbyint(v), -2048.0, 2047.0)); });
    return result;
}

int largestDifference(const Block& a, const Block& b) {
    int largest = 0;
    for (std::size_t i = 0; i < 64; ++i) largest = std::max(largest, std::abs(a[i] - b[i]));
    return largest;
}

class Dct8x8 : public VariantTest {};
KUV_FOR_EACH_VARIANT(Dct8x8);

constexpr Direction both[] = {Direction::forward, Direction::inverse};

TEST_P(Dct8x8, ArithmeticIsThatOfTheReference) {
    Random random(1);
    for (int round = 0; round < rounds(3000) && !HasFailure(); ++round) {
        const int range = std::array{4, 128, 256, 1000, 4096, 32768}[static_cast<std::size_t>(round % 6)];
        Block block = drawn(random, -range, range - 1);
        if (round % 5 == 0) {  // extremes alone
            for (Kuv16s& each : block) each = each < 0 ? static_cast<Kuv16s>(-range) : static_cast<Kuv16s>(range - 1);
        }
        for (const Direction direction : both) {
            EXPECT_EQ(transformed(direction, block), literally(direction, GetParam().isPx(), block)) << "range " << range;
        }
    }
}

TEST_P(Dct8x8, ForwardIsWithinOneOfTheExactTransform) {
    Random random(2);
    for (int round = 0; round < rounds(3000) && !HasFailure(); ++round) {
        const Block block = round % 3 == 0 ? drawn(random, -128, 127) : drawn(random, -256, 255);
        const Block got = transformed(Direction::forward, block), ofPx = literally(Direction::forward, true, block);
        const RealBlock exact = exactly(Direction::forward, block);
        for (std::size_t i = 0; i < 64; ++i) EXPECT_LT(std::abs(got[i] - exact[i]), 1) << i;
        EXPECT_LE(largestDifference(got, ofPx), 1);
    }
}

// The generator and the procedure of IEEE Std 1180-1990, with the limits for all coefficients together.
TEST_P(Dct8x8, InverseMeetsIeee1180) {
    for (const auto& [low, high, sign] : {std::tuple{256, 255, 1}, {5, 5, 1}, {300, 300, 1}, {256, 255, -1}, {5, 5, -1}, {300, 300, -1}}) {
        std::uint32_t state = 1;
        const auto next = [&, low = low, high = high] {
            state = state * 1103515245 + 12345;
            const double x = static_cast<double>(state & 0x7FFFFFFE) / 0x7FFFFFFF * (low + high + 1);
            return static_cast<int>(x) - low;
        };
        const int blocks = rounds(10000);
        double squares = 0, errors = 0;
        int peak = 0;
        for (int b = 0; b < blocks; ++b) {
            Block samples;
            for (Kuv16s& each : samples) each = static_cast<Kuv16s>(sign * next());
            const Block coefficients = coefficientsOf(samples);
            const RealBlock exact = exactly(Direction::inverse, coefficients);
            const Block got = transformed(Direction::inverse, coefficients);
            for (std::size_t i = 0; i < 64; ++i) {
                const int wanted = std::clamp(static_cast<int>(std::nearbyint(exact[i])), -256, 255);
                const int error = std::clamp<int>(got[i], -256, 255) - wanted;
                peak = std::max(peak, std::abs(error));
                squares += error * error;
                errors += error;
            }
            EXPECT_LE(largestDifference(got, literally(Direction::inverse, true, coefficients)), 1);
        }
        const double count = 64.0 * blocks;
        EXPECT_LE(peak, 1);
        EXPECT_LT(squares / count, 0.02);
        if (blocks >= 10000) {  // of fewer the mean scatters more
            EXPECT_LT(std::abs(errors) / count, 0.0015);
        }
    }
}

TEST_P(Dct8x8, ZerosStayZeros) {
    for (const Direction direction : both) EXPECT_EQ(transformed(direction, Block{}), Block{});
}

TEST_P(Dct8x8, ConstantBlockHasOnlyTheConstantTerm) {
    for (int c = -511; c <= 511; ++c) {
        Block block, wanted{};
        block.fill(static_cast<Kuv16s>(c));
        wanted[0] = static_cast<Kuv16s>(8 * c);
        EXPECT_EQ(transformed(Direction::forward, block), wanted) << c;
        EXPECT_EQ(transformed(Direction::inverse, wanted), block) << c;
    }
}

TEST_P(Dct8x8, InverseUndoesForward) {
    Random random(3);
    for (int round = 0; round < rounds(3000) && !HasFailure(); ++round) {
        const Block block = drawn(random, -128, 127);
        EXPECT_LE(largestDifference(transformed(Direction::inverse, transformed(Direction::forward, block)), block), 2);
    }
}

TEST_P(Dct8x8, LargeValuesWrapInPxAndSaturateElsewhere) {
    Block block;
    block.fill(32767);
    const Block high = transformed(Direction::forward, block);
    block.fill(-32768);
    const Block low = transformed(Direction::forward, block);
    Block constant{};
    constant[0] = 32767;
    const Block restored = transformed(Direction::inverse, constant);
    if (GetParam().isPx()) {
        EXPECT_EQ(high[0], -8);
        EXPECT_EQ(low[0], 0);
        EXPECT_EQ(restored[0], 0);
    } else {
        EXPECT_EQ(high[0], 4096);
        EXPECT_EQ(low[0], -4096);
        EXPECT_EQ(restored[0], 512);
    }
}

TEST_P(Dct8x8, EveryAlignmentAndNothingAround) {
    Random random(4);
    for (int gap = 0; gap < 66; ++gap) {
        for (const Guard guard : {Guard::end, Guard::begin}) {
            for (const Direction direction : both) {
                const Image image("srcDst", {128, 1, 128, guard, gap, 2}, random());
                const Block block = drawn(random, -128, 127);
                std::memcpy(image.row(), block.data(), sizeof block);
                Bytes wanted = image.bytes();
                const Block result = literally(direction, GetParam().isPx(), block);
                std::memcpy(image.row(wanted, 0), result.data(), sizeof result);
                const auto function = direction == Direction::forward ? kuviDCT8x8Fwd_16s_C1I : kuviDCT8x8Inv_16s_C1I;
                EXPECT_EQ(watched([&] { return function(image.row<Kuv16s>()); }), kuvStatusOk);
                EXPECT_EQ(image.difference(wanted), "") << "gap " << gap;
            }
        }
    }
}

}  // namespace
