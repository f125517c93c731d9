// Zigzag scans of 8x8 blocks.
#include <array>

#include "support/statuses.hpp"

namespace {

using namespace kuvtest;

KUV_AGREES(kuviZigzagInv8x8_16s_C1, SourceSignal<Kuv16s>{64}, OutputSignal<Kuv16s>{64});
KUV_CHECKS(kuviZigzagInv8x8_16s_C1, call(SourceSignal<Kuv16s>{64}, OutputSignal<Kuv16s>{64}),
           check(kuvStatusNullPtr, null<0>(), null<1>()));

// Walks the scan: along the diagonals, up the even ones and down the odd ones.
std::array<int, 64> positions() {
    std::array<int, 64> result{};
    int position = 0;
    for (int diagonal = 0; diagonal < 15; ++diagonal) {
        for (int i = 0; i <= diagonal; ++i) {
            const int row = diagonal % 2 == 0 ? diagonal - i : i, column = diagonal - row;
            if (row < 8 && column < 8) result[static_cast<std::size_t>(8 * row + column)] = position++;
        }
    }
    return result;
}

class Zigzag8x8 : public VariantTest {};
KUV_FOR_EACH_VARIANT(Zigzag8x8);

TEST_P(Zigzag8x8, OrderOfTheScan) {
    std::array<Kuv16s, 64> src, dst{};
    for (std::size_t i = 0; i < 64; ++i) src[i] = static_cast<Kuv16s>(i);
    EXPECT_EQ(watched([&] { return kuviZigzagInv8x8_16s_C1(src.data(), dst.data()); }), kuvStatusOk);
    const auto wanted = positions();
    for (std::size_t i = 0; i < 64; ++i) EXPECT_EQ(dst[i], wanted[i]) << i;
    EXPECT_EQ(dst[7], 28);
    EXPECT_EQ(dst[56], 35);
}

TEST_P(Zigzag8x8, EveryAlignmentAndNothingAround) {
    Random random(1);
    const auto from = positions();
    for (int gap = 0; gap < 66; ++gap) {
        for (const Guard guard : {Guard::end, Guard::begin}) {
            const Image src("src", {128, 1, 128, guard, gap, 2}, random()), dst("dst", {128, 1, 128, guard, 65 - gap, 2}, random());
            const Bytes before = src.bytes();
            Bytes wanted = dst.bytes();
            for (int i = 0; i < 64; ++i) store(dst.row(wanted, 0), i, load<Kuv16s>(src.row(), from[static_cast<std::size_t>(i)]));
            EXPECT_EQ(watched([&] { return kuviZigzagInv8x8_16s_C1(src.row<Kuv16s>(), dst.row<Kuv16s>()); }), kuvStatusOk);
            EXPECT_EQ(dst.difference(wanted), "") << "gap " << gap;
            EXPECT_EQ(src.difference(before), "");
        }
    }
}

}  // namespace
