// Tiles of resized images: statuses, results and agreement.
#include <cfenv>
#include <utility>

#include "support/resize_tiles.hpp"

namespace {

using namespace kuvtest;

constexpr KuviSize planSrc = {90, 70}, planDst = {53, 81};

constexpr PlanSetting<8> planWith(int word, Kuv32u value) { return {planSrc, planDst, word, value}; }

bool withinOne(const void* got, const void* wanted) { return std::abs(load<Kuv16s>(got) - load<Kuv16s>(wanted)) <= 1; }

// All arguments: a tile within the destination of a plan of its own or the shared one.
struct Tile {
    bool ownPlan = true;
    ElementCompare same = sameBits<Kuv16s>;

    using Arguments = std::tuple<const Kuv16s*, Kuv32s, Kuv16s*, Kuv32s, KuviPoint, KuviSize, Kuv32u, const Kuv16s*, const Kuv8u*, Kuv8u*>;

    Arguments operator()(Draw& draw) const {
        Random& random = draw.random;
        const Kuv8u* spec = sharedPlan(planSrc, planDst).get();
        KuviSize srcSize = planSrc, dstSize = planDst;
        if (ownPlan) {
            const int widest = oneIn(random, 8) ? 300 : 60;
            srcSize = {between(random, 2, widest), between(random, 2, 20)};
            dstSize = {between(random, 1, widest), between(random, 1, 20)};
            Kuv8u* const block = draw.image<Kuv8u>(Role::record, PlanBlock::bytesFor(srcSize, dstSize), 1, 0).row();
            EXPECT_EQ(kuviResizeLinearInit_16s(srcSize, dstSize, block), kuvStatusOk);
            spec = block;
        }
        const KuviPoint offset = {below(random, dstSize.width), below(random, dstSize.height)};
        const KuviSize size = {between(random, 1, dstSize.width - offset.x), between(random, 1, dstSize.height - offset.y)};
        // All of the source is there, so flags of sides make no difference beyond which the tile takes nothing but source. The plan says
        // so: its positions are rounded.
        const Kuv8u* const record = spec + (0 - reinterpret_cast<std::uintptr_t>(spec)) % 64;
        const auto rows = load<AxisWords>(record + 40), columns = load<AxisWords>(record + 84);
        const KuviPoint last = {offset.x + size.width - 1, offset.y + size.height - 1};
        Kuv32u border = kuvBorderClamp;
        if (offset.x >= columns.leadCount && oneIn(random, 2)) border |= kuvBorderHaveLeft;
        if (offset.y >= rows.leadCount && oneIn(random, 2)) border |= kuvBorderHaveTop;
        if (last.x < columns.dstLength - columns.tailCount && oneIn(random, 2)) border |= kuvBorderHaveRight;
        if (last.y < rows.dstLength - rows.tailCount && oneIn(random, 2)) border |= kuvBorderHaveBottom;
        const auto steps = [&](int width) {
            const int bytes = 6 * width + 2 * (oneIn(random, 2) ? below(random, 20) : 0);
            return oneIn(random, 4) ? -bytes : bytes;
        };
        const Image& src = draw.image<Kuv16s>(Role::source, 3 * srcSize.width, srcSize.height, steps(srcSize.width));
        const Image& dst = draw.image<Kuv16s>(Role::output, 3 * size.width, size.height, steps(size.width), same);
        Kuv32s bytes = 0;
        EXPECT_EQ(kuviResizeGetBufferSize_16s(spec, size, 3, &bytes), kuvStatusOk);
        const auto originOf = [](std::int64_t at, int from, int to) { return static_cast<int>(at * from / to); };
        const Kuv16s* const from = src.row<Kuv16s>(originOf(offset.y, srcSize.height, dstSize.height)) +
                                   3 * originOf(offset.x, srcSize.width, dstSize.width);
        return {from, src.step(), dst.row<Kuv16s>(), dst.step(), offset, size, border, nullptr, spec,
                draw.image<Kuv8u>(Role::scratch, bytes, 1, 0).row()};
    }
};

constexpr FieldSetting<4, KuviPoint, Kuv32s> offsetX(Kuv32s value) { return {&KuviPoint::x, value, 1, "x"}; }
constexpr FieldSetting<4, KuviPoint, Kuv32s> offsetY(Kuv32s value) { return {&KuviPoint::y, value, 2, "y"}; }

KUV_AGREES(kuviResizeLinear_16s_C3R, Tile{.same = withinOne});
KUV_CHECKS(kuviResizeLinear_16s_C3R, call(Tile{.ownPlan = false}),
           check(kuvStatusBadBorder, set<6>(256u), set<6>(257u), set<6>(0xFFFFFFF1u), set<6>(0u), set<6>(2u), set<6>(3u), set<6>(6u),
                 set<6>(15u), set<6>(16u), set<6>(224u), set<6>(242u), set<6>(255u), set<6>(496u)),
           check(kuvStatusNullPtr, null<0>(), null<2>(), null<8>(), null<9>()), check(kuvStatusNoOperation, width<5>(0), height<5>(0)),
           check(kuvStatusBadContext, planWith(0, 0x4B617388), planWith(0, 0)),
           check(kuvStatusBadSize, width<5>(-1), width<5>(INT32_MIN), height<5>(-1), height<5>(INT32_MIN)),
           check(kuvStatusBadStep, set<1>(541), set<1>(-541), set<1>(1), set<3>(541), set<3>(-1), set<3>(INT32_MAX)),
           check(kuvStatusOutOfRange, offsetX(-1), offsetX(INT32_MIN), offsetX(53), offsetX(INT32_MAX), offsetY(-1), offsetY(INT32_MIN),
                 offsetY(81), offsetY(INT32_MAX)),
           check(kuvStatusInternal, planWith(5, 1), planWith(5, 0x80000000)),
           check(kuvStatusBadContext, planWith(2, 6), planWith(2, 1), planWith(2, 0)));

KUV_FOR_EACH_VARIANT(Resize);

TEST_P(Resize, SmallSizes) {
    const int count = rounds(1500);
    for (int i = 0; i < count && !HasFailure(); ++i) {
        const KuviSize src = {between(random_, 2, 40), between(random_, 2, 40)}, dst = {between(random_, 1, 40), between(random_, 1, 40)};
        expectTile(PlanBlock(src, dst), anyScene(), {{0, 0}, dst});
    }
}

TEST_P(Resize, EveryWidth) {
    for (int width = 1; width <= 150 && !HasFailure(); ++width) {
        for (const int srcWidth : {2, width / 3, width / 2, width * 5 / 8, width, width * 10 / 7, 2 * width, 3 * width}) {
            if (srcWidth < 2) continue;
            expectTile(PlanBlock({srcWidth, 7}, {width, 5}), anyScene(), {{0, 0}, {width, 5}});
        }
    }
}

// Many destination rows and columns between two of the source.
TEST_P(Resize, Enlarges) {
    for (const KuviSize src : {KuviSize{2, 2}, {3, 2}, {2, 3}, {5, 4}}) {
        for (const KuviSize dst : {KuviSize{200, 3}, {3, 200}, {130, 90}, {61, 61}}) {
            expectTile(PlanBlock(src, dst), anyScene(), {{0, 0}, dst});
        }
    }
}

TEST_P(Resize, Halves) {
    // To 9 rows, one half way between two source rows comes before one that begins with the lower of these.
    for (int width = 1; width <= 70 && !HasFailure(); ++width) {
        for (const int height : {6, 9}) expectTile(PlanBlock({2 * width, 12}, {width, height}), anyScene(), {{0, 0}, {width, height}});
    }
    expectTile(PlanBlock({400, 12}, {200, 12}), anyScene(), {{0, 0}, {200, 12}});
    expectTile(PlanBlock({400, 12}, {200, 6}), anyScene(), {{33, 2}, {111, 3}, 240});
}

// More than the nearest caches hold: rows are asked for ahead.
TEST_P(Resize, LargeImages) {
    for (const KuviSize dst : {KuviSize{301, 430}, {320, 240}, {640, 200}, {900, 480}, {30, 20}}) {
        expectTile(PlanBlock({640, 480}, dst), anyScene(), {{0, 0}, dst});
    }
}

TEST_P(Resize, OnePixel) {
    for (const KuviSize src : {KuviSize{2, 2}, {3, 3}, {2, 3}, {101, 77}}) {
        expectTile(PlanBlock(src, {1, 1}), anyScene(), {{0, 0}, {1, 1}});
    }
    const Scene scene;
    const PlanBlock plan({2, 2}, {1, 1});
    EXPECT_EQ(plan.position(plan.vertical(), 0), 0);
    EXPECT_EQ(plan.fraction(plan.vertical(), 0), 0.5f);
    expectTile(plan, scene, {{0, 0}, {1, 1}});
}

TEST_P(Resize, EqualExtentsCopy) {
    const KuviSize size = {45, 13};
    const PlanBlock plan(size, size);
    const Scene scene;
    expectTile(plan, scene, {{0, 0}, size});
    const ResizeReference reference(plan, scene, {{0, 0}, size}, ResizeArithmetic::doubles);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            for (int c = 0; c < 3; ++c) ASSERT_EQ(reference.sample(x, y, c), scene(x, y, c));
        }
    }
}

// With any flags: what the reference takes beyond the image is there, and nothing else.
TEST_P(Resize, TilesAndFlags) {
    const int count = rounds(1500);
    for (int i = 0; i < count && !HasFailure(); ++i) {
        const KuviSize src = {between(random_, 2, 90), between(random_, 2, 30)}, dst = {between(random_, 1, 90), between(random_, 1, 30)};
        const KuviPoint offset = {below(random_, dst.width), below(random_, dst.height)};
        const KuviSize size = {between(random_, 1, dst.width - offset.x), between(random_, 1, dst.height - offset.y)};
        const Kuv32u border = oneIn(random_, 4) ? 240u : 1u + 16u * static_cast<Kuv32u>(below(random_, 16));
        const PlanBlock plan(src, dst, oneIn(random_, 2) ? Guard::end : Guard::begin, below(random_, 130));
        expectTile(plan, anyScene(), {offset, size, border}, anyPlaces());
    }
}

TEST_P(Resize, EveryCombinationOfFlags) {
    for (const auto& [src, dst] :
         {std::pair<KuviSize, KuviSize>{{9, 8}, {31, 29}}, {{31, 29}, {9, 8}}, {{20, 20}, {20, 20}}, {{2, 2}, {37, 9}}}) {
        const PlanBlock plan(src, dst);
        for (Kuv32u flags = 0; flags < 16; ++flags) expectTile(plan, anyScene(), {{0, 0}, dst, 16 * flags + kuvBorderClamp});
        expectTile(plan, anyScene(), {{0, 0}, dst, 240});
        expectTile(plan, anyScene(), {{dst.width - 1, dst.height - 1}, {1, 1}, 240});
    }
}

// Tiles of one picture, side by side.
TEST_P(Resize, TilesMakeThePicture) {
    constexpr KuviSize sizes[][2] = {{{97, 41}, {155, 77}}, {{97, 41}, {61, 29}}, {{50, 30}, {100, 60}}, {{100, 60}, {50, 30}}};
    for (const KuviSize(&each)[2] : sizes) {
        const KuviSize srcSize = each[0], dstSize = each[1];
        const PlanBlock plan(srcSize, dstSize);
        const Scene scene = anyScene();
        const Image src("src", pixelRows(srcSize.width, srcSize.height), 1);
        paint(src, scene);
        const auto draw = [&](const Image& dst, const TileOf& tile) {
            const KuviPoint from = {static_cast<Kuv32s>(std::int64_t{tile.offset.x} * srcSize.width / dstSize.width),
                                    static_cast<Kuv32s>(std::int64_t{tile.offset.y} * srcSize.height / dstSize.height)};
            const Image buffer("buffer", {plan.bufferBytes(tile.size), 1, 0, Guard::end, 0, 1}, random_());
            EXPECT_EQ(watched([&] {
                          return kuviResizeLinear_16s_C3R(src.row<Kuv16s>(from.y) + 3 * from.x, src.step(),
                                                          dst.row<Kuv16s>(tile.offset.y) + 3 * tile.offset.x, dst.step(), tile.offset,
                                                          tile.size, tile.border, nullptr, plan.get(), buffer.row());
                      }),
                      kuvStatusOk);
        };
        const Geometry geometry = pixelRows(dstSize.width, dstSize.height);
        const Image whole("whole", geometry, 5);
        draw(whole, {{0, 0}, dstSize});
        const int count = rounds(40);
        for (int i = 0; i < count && !HasFailure(); ++i) {
            const Image tiled("tiled", geometry, 5);
            for (int y = 0; y < dstSize.height;) {
                const int height = std::min(dstSize.height - y, between(random_, 1, 30));
                for (int x = 0; x < dstSize.width;) {
                    const int width = std::min(dstSize.width - x, between(random_, 1, 60));
                    // Flags at inner sides make no difference.
                    Kuv32u border = 1;
                    if (y > 0 && oneIn(random_, 2)) border |= kuvBorderHaveTop;
                    if (y + height < dstSize.height && oneIn(random_, 2)) border |= kuvBorderHaveBottom;
                    if (x > 0 && oneIn(random_, 2)) border |= kuvBorderHaveLeft;
                    if (x + width < dstSize.width && oneIn(random_, 2)) border |= kuvBorderHaveRight;
                    draw(tiled, {{x, y}, {width, height}, border});
                    x += width;
                }
                y += height;
            }
            EXPECT_EQ(tiled.difference(whole.bytes()), "");
        }
    }
}

TEST_P(Resize, LargerThanWhatRemains) {
    const PlanBlock plan({40, 30}, {70, 20});
    for (const TileOf& tile : {TileOf{{0, 0}, {71, 20}}, {{0, 0}, {70, 21}}, {{50, 0}, {21, 3}}, {{3, 15}, {5, 6}}, {{69, 19}, {2, 2}},
                               {{10, 10}, {INT32_MAX, INT32_MAX}}}) {
        expectTile(plan, anyScene(), tile);
    }
    expectTile(plan, anyScene(), {{50, 0}, {20, 3}});
}

TEST_P(Resize, DescendingPositions) {
    for (const auto& [src, dst] : {std::pair<KuviSize, KuviSize>{{50, 40}, {80, 60}}, {{50, 40}, {31, 23}}, {{40, 12}, {40, 60}}}) {
        for (int which = 1; which < 4; ++which) {
            const PlanBlock plan(src, dst);
            if (which % 2 != 0) plan.reverse(plan.vertical());
            if (which / 2 != 0) plan.reverse(plan.horizontal());
            expectTile(plan, anyScene(), {{0, 0}, dst, 240});
            expectTile(plan, anyScene(), {{3, 5}, {dst.width - 8, dst.height - 7}, 240});
        }
    }
}

// Positions in no order at all.
TEST_P(Resize, ShuffledPositions) {
    const PlanBlock plan({60, 60}, {75, 45});
    for (const AxisWords& axis : {plan.vertical(), plan.horizontal()}) {
        for (int i = 0; i < axis.dstLength; ++i) store(plan.start() + axis.positions, i, between(random_, 0, 58));
    }
    expectTile(plan, anyScene(), {{0, 0}, {75, 45}, 240});
    expectTile(plan, anyScene(), {{10, 10}, {40, 20}, 240});
}

// Everything but positions follows the processor's rounding mode.
TEST_P(Resize, RoundingModes) {
    for (const auto& [src, dst] : {std::pair<KuviSize, KuviSize>{{41, 30}, {67, 23}}, {{60, 40}, {30, 20}}}) {
        const PlanBlock plan(src, dst);
        for (const int mode : {FE_DOWNWARD, FE_UPWARD, FE_TOWARDZERO}) {
            std::fesetround(mode);
            expectTile(plan, anyScene(), {{0, 0}, dst});
            std::fesetround(FE_TONEAREST);
        }
    }
}

}  // namespace
