// Labels of connected groups.
#include <algorithm>
#include <numeric>
#include <queue>
#include <utility>
#include <vector>

#include "support/agreement.hpp"
#include "support/distant.hpp"
#include "support/results.hpp"
#include "support/statuses.hpp"

namespace {

using namespace kuvtest;

constexpr Kuv32s norms[] = {kuvLabelNeighbours8, kuvLabelNeighbours4};

Kuv32s bufferBytes(KuviSize size) {
    Kuv32s bytes = -1;
    EXPECT_EQ(kuviLabelMarkersGetBufferSize_16u_C1R(size, &bytes), kuvStatusOk);
    return bytes;
}

// (pointer, step, size): markers of any density.
struct MarkerImage {
    std::tuple<Kuv16u*, Kuv32s, KuviSize> operator()(Draw& draw) const {
        const Kuv32s step = 2 * (draw.size.width + (oneIn(draw.random, 2) ? below(draw.random, 40) : 0));
        const Image& image = draw.image<Kuv16u>(Role::inOut, draw.size.width, draw.size.height, step);
        const int density = below(draw.random, 101);
        for (int y = 0; y < draw.size.height; ++y) {
            for (int x = 0; x < draw.size.width; ++x) {
                const bool marked = below(draw.random, 100) < density;
                store(image.row(y), x, static_cast<Kuv16u>(marked ? 1 + below(draw.random, 65535) : 0));
            }
        }
        return {image.row<Kuv16u>(), image.step(), draw.size};
    }
};

// (first, last, norm)
struct LabelsAndNorm {
    std::tuple<Kuv32s, Kuv32s, Kuv32s> operator()(Draw& draw) const {
        const Kuv32s first = oneIn(draw.random, 2) ? 1 : between(draw.random, 1, 65534);
        const Kuv32s last = oneIn(draw.random, 2) ? 65534 : std::min(65534, first + below(draw.random, 10));
        return {first, last, below(draw.random, 2)};
    }
};

// (pointer)
struct Buffer {
    std::tuple<Kuv8u*> operator()(Draw& draw) const {
        return {draw.image<Kuv8u>(Role::scratch, bufferBytes(draw.size), 1, 0).row()};
    }
};

KUV_AGREES(kuviLabelMarkers_16u_C1IR, MarkerImage{}, LabelsAndNorm{}, Results<Kuv32s>{}, Buffer{});
KUV_CHECKS(kuviLabelMarkers_16u_C1IR, call(MarkerImage{}, LabelsAndNorm{}, Results<Kuv32s>{}, Buffer{}),
           check(kuvStatusNullPtr, null<0>(), null<6>(), null<7>()), badSize<2>(),
           check(kuvStatusBadStep, set<1>(1), set<1>(0), set<1>(-2), set<1>(INT32_MIN), width<2>(INT32_MAX), width<2>(0x40000000)),
           check(kuvStatusStepNotMultiple, set<1>(INT32_MAX), set<1>(1401)),
           check(kuvStatusBadArg, set<3>(0), set<3>(-1), set<3>(INT32_MIN), set<3>(65535), set<3>(INT32_MAX), set<4>(65535),
                 set<4>(INT32_MAX), set<4>(0), set<4>(-1), set<4>(INT32_MIN), set<5>(2), set<5>(-1), set<5>(INT32_MIN),
                 set<5>(INT32_MAX)));

KUV_AGREES(kuviLabelMarkersGetBufferSize_16u_C1R, RoiSize{}, Results<Kuv32s>{});
KUV_CHECKS(kuviLabelMarkersGetBufferSize_16u_C1R, call(RoiSize{}, Results<Kuv32s>{}), check(kuvStatusNullPtr, null<1>()), badSize<0>());

// Rows of pixels, without padding.
struct Picture {
    KuviSize size;
    std::vector<Kuv16u> pixels;

    explicit Picture(KuviSize s) : size(s), pixels(static_cast<std::size_t>(s.width) * static_cast<std::size_t>(s.height)) {}
    // A character a pixel; dots are empty.
    explicit Picture(const std::vector<std::string>& rows)
        : Picture(KuviSize{static_cast<int>(rows[0].size()), static_cast<int>(rows.size())}) {
        fill([&](int x, int y) { return rows[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] != '.'; });
    }

    std::size_t indexOf(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(size.width) + static_cast<std::size_t>(x);
    }
    Kuv16u& at(int x, int y) { return pixels[indexOf(x, y)]; }
    Kuv16u at(int x, int y) const { return pixels[indexOf(x, y)]; }
    bool has(int x, int y) const { return x >= 0 && x < size.width && y >= 0 && y < size.height; }

    template <class Marked>
    Picture& fill(Marked marked) {
        for (int y = 0; y < size.height; ++y) {
            for (int x = 0; x < size.width; ++x) {
                at(x, y) = static_cast<Kuv16u>(marked(x, y) ? 1 + (std::uint64_t{7919} * x + std::uint64_t{104729} * y) % 65535 : 0);
            }
        }
        return *this;
    }
};

struct Labelling {
    Kuv32s first = 1, last = 65534, norm = kuvLabelNeighbours8;
};

// The result of a labelling: what the pixels become, and how many groups there are.
struct Labelled {
    std::vector<Kuv16u> pixels;
    int groups = 0;
};

// By filling each group from its first pixel on.
Labelled flooded(const Picture& markers, Labelling with) {
    Picture result(markers.size);
    int groups = 0;
    for (int y = 0; y < markers.size.height; ++y) {
        for (int x = 0; x < markers.size.width; ++x) {
            if (markers.at(x, y) == 0 || result.at(x, y) != 0) continue;
            const auto label = static_cast<Kuv16u>(with.first + groups++ % (with.last - with.first + 1));
            std::queue<std::pair<int, int>> edge;
            edge.push({x, y});
            result.at(x, y) = label;
            for (; !edge.empty(); edge.pop()) {
                for (int v = -1; v <= 1; ++v) {
                    for (int u = -1; u <= 1; ++u) {
                        const int toX = edge.front().first + u, toY = edge.front().second + v;
                        if (with.norm == kuvLabelNeighbours4 && u != 0 && v != 0) continue;
                        if (!markers.has(toX, toY) || markers.at(toX, toY) == 0 || result.at(toX, toY) != 0) continue;
                        result.at(toX, toY) = label;
                        edge.push({toX, toY});
                    }
                }
            }
        }
    }
    return {result.pixels, groups};
}

// By joining pixels with those before them, each set being known by its first pixel.
Labelled joined(const Picture& markers, Labelling with) {
    std::vector<std::size_t> parent(markers.pixels.size());
    std::iota(parent.begin(), parent.end(), std::size_t{0});
    const auto rootOf = [&](std::size_t i) {
        while (parent[i] != i) i = parent[i] = parent[parent[i]];
        return i;
    };
    for (int y = 0; y < markers.size.height; ++y) {
        for (int x = 0; x < markers.size.width; ++x) {
            if (markers.at(x, y) == 0) continue;
            const auto join = [&](int u, int v) {
                if (!markers.has(x + u, y + v) || markers.at(x + u, y + v) == 0) return;
                const std::size_t a = rootOf(markers.indexOf(x, y)), b = rootOf(markers.indexOf(x + u, y + v));
                parent[std::max(a, b)] = std::min(a, b);
            };
            join(-1, 0);
            join(0, -1);
            if (with.norm == kuvLabelNeighbours8) {
                join(-1, -1);
                join(1, -1);
            }
        }
    }
    Labelled result;
    result.pixels = markers.pixels;
    for (std::size_t i = 0; i < parent.size(); ++i) {
        if (markers.pixels[i] == 0) continue;
        const std::size_t root = rootOf(i);
        if (root != i) result.pixels[i] = result.pixels[root];
        else result.pixels[i] = static_cast<Kuv16u>(with.first + result.groups++ % (with.last - with.first + 1));
    }
    return result;
}

struct Place {
    int padding = 0;  // even
    Guard guard = Guard::end;
    int gap = 0;
    Guard bufferGuard = Guard::end;
    int bufferGap = 0;
};

class LabelMarkers : public VariantTest {
protected:
    void expectLabels(const Picture& markers, Labelling with, Place place = {}) {
        const KuviSize size = markers.size;
        const Labelled result = joined(markers, with), same = flooded(markers, with);
        ASSERT_EQ(result.groups, same.groups);
        ASSERT_EQ(result.pixels, same.pixels);

        const int rowBytes = 2 * size.width, bytes = bufferBytes(size);
        const Image srcDst("srcDst", {rowBytes, size.height, rowBytes + place.padding, place.guard, place.gap, 2}, 1);
        const Image buffer("buffer", {bytes, 1, bytes, place.bufferGuard, place.bufferGap, 1}, 2);
        for (int y = 0; y < size.height; ++y) {
            for (int x = 0; x < size.width; ++x) store(srcDst.row(y), x, markers.at(x, y));
        }
        Bytes wanted = srcDst.bytes();
        for (int y = 0; y < size.height; ++y) {
            std::memcpy(srcDst.row(wanted, y), &result.pixels[markers.indexOf(0, y)], static_cast<std::size_t>(rowBytes));
        }
        const Bytes bufferBefore = buffer.bytes();
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << size.width << " x " << size.height << ", labels " << with.first << " to "
                                        << with.last << ", norm " << with.norm << "\n  srcDst: " << srcDst.geometry()
                                        << "\n  buffer: " << buffer.geometry());
        Kuv32s count = -1;
        EXPECT_EQ(watched([&] {
                      return kuviLabelMarkers_16u_C1IR(srcDst.row<Kuv16u>(), srcDst.step(), size, with.first, with.last, with.norm, &count,
                                                       buffer.row());
                  }),
                  kuvStatusOk);
        EXPECT_EQ(count, result.groups);
        EXPECT_EQ(srcDst.difference(wanted), "");
        EXPECT_EQ(buffer.strayWrite(bufferBefore), "");
    }
    void expectBothNorms(const Picture& markers, Place place = {}) {
        for (const Kuv32s norm : norms) expectLabels(markers, {.norm = norm}, place);
    }

    Picture noise(KuviSize size, int percent) {
        return Picture(size).fill([&](int, int) { return below(random_, 100) < percent; });
    }
    // Runs and gaps of up to so many columns: they pass from word to word, and rows of them hold others between them.
    Picture stripes(KuviSize size, int longestRun, int longestGap) {
        Picture picture(size);
        for (int y = 0; y < size.height; ++y) {
            bool marked = oneIn(random_, 2);
            for (int x = 0; x < size.width; marked = !marked) {
                for (int left = between(random_, 1, marked ? longestRun : longestGap); left > 0 && x < size.width; --left, ++x) {
                    picture.at(x, y) = marked ? 9 : 0;
                }
            }
        }
        return picture;
    }

    // Those that need the most runs, parents or places.
    std::vector<Picture> extremes(KuviSize size) {
        std::vector<Picture> all = {noise(size, 50), noise(size, 20)};
        all.push_back(Picture(size).fill([](int x, int y) { return (x + y) % 2 == 0; }));
        all.push_back(Picture(size).fill([](int x, int y) { return (x + y) % 2 == 1; }));
        all.push_back(Picture(size).fill([](int x, int) { return x % 2 == 0; }));
        all.push_back(Picture(size).fill([](int, int y) { return y % 2 == 0; }));
        all.push_back(Picture(size).fill([](int x, int y) { return x % 2 == 0 && y % 2 == 0; }));
        all.push_back(Picture(size).fill([](int x, int y) { return x % 2 == 0 && y % 2 == 1; }));
        all.push_back(Picture(size).fill([](int, int) { return true; }));
        all.emplace_back(size);
        return all;
    }

    Random random_{20170003};
};

KUV_FOR_EACH_VARIANT(LabelMarkers);

TEST_P(LabelMarkers, NothingMarked) {
    Kuv16u pixels[6] = {};
    std::vector<Kuv8u> buffer(6 * 6 + 32);
    Kuv32s count = -1;
    EXPECT_EQ(kuviLabelMarkers_16u_C1IR(pixels, 6, {3, 2}, 1, 5, kuvLabelNeighbours8, &count, buffer.data()), kuvStatusOk);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(std::count(std::begin(pixels), std::end(pixels), 0), 6);
    expectBothNorms(Picture({200, 30}));
}

TEST_P(LabelMarkers, AllMarked) {
    for (const KuviSize size : {KuviSize{1, 1}, {200, 30}, {64, 5}, {128, 4}, {1, 90}, {90, 1}, {2100, 3}}) {
        const Picture full = Picture(size).fill([](int, int) { return true; });
        const Labelled result = joined(full, {.first = 17});
        EXPECT_EQ(result.groups, 1);
        EXPECT_EQ(std::count(result.pixels.begin(), result.pixels.end(), 17), std::ptrdiff_t{size.width} * size.height);
        expectLabels(full, {.first = 17});
        expectBothNorms(full);
    }
}

TEST_P(LabelMarkers, TwoRunsInARow) {
    Kuv16u pixels[] = {9, 9, 0, 65535, 1, 1};
    std::vector<Kuv8u> buffer(6 * 6 + 32);
    Kuv32s count = -1;
    EXPECT_EQ(kuviLabelMarkers_16u_C1IR(pixels, 12, {6, 1}, 1, 65534, kuvLabelNeighbours4, &count, buffer.data()), kuvStatusOk);
    EXPECT_EQ(count, 2);
    const Kuv16u wanted[] = {1, 1, 0, 2, 2, 2};
    EXPECT_TRUE(std::equal(std::begin(pixels), std::end(pixels), wanted));
}

TEST_P(LabelMarkers, Diagonals) {
    for (const bool down : {false, true}) {
        for (const auto& [norm, groups] : {std::pair{kuvLabelNeighbours8, 1}, {kuvLabelNeighbours4, 2}}) {
            const Kuv16u main = down, second = !down;
            Kuv16u pixels[4] = {main, second, second, main};
            std::vector<Kuv8u> buffer(4 * 6 + 32);
            Kuv32s count = -1;
            EXPECT_EQ(kuviLabelMarkers_16u_C1IR(pixels, 4, {2, 2}, 3, 9, norm, &count, buffer.data()), kuvStatusOk);
            EXPECT_EQ(count, groups);
            EXPECT_EQ(pixels[down ? 0 : 1], 3);
            EXPECT_EQ(pixels[down ? 3 : 2], 2 + groups);
        }
    }
    for (const int slope : {1, 2, -1, -2}) {
        expectBothNorms(Picture({150, 70}).fill([&](int x, int y) { return (x * slope + y + 600) % 9 == 0; }));
        expectBothNorms(Picture({150, 70}).fill([&](int x, int y) { return (x + y * slope + 600) % 9 < 2; }));
    }
}

TEST_P(LabelMarkers, LabelsAreUsedAgain) {
    const Picture three = Picture({"##..#", "....#", "#...#"});
    Kuv16u wanted[] = {5, 5, 0, 0, 5, 0, 0, 0, 0, 5, 5, 0, 0, 0, 5};
    EXPECT_TRUE(std::equal(std::begin(wanted), std::end(wanted), joined(three, {.first = 5, .last = 5}).pixels.begin()));
    EXPECT_EQ(joined(three, {.first = 5, .last = 5}).groups, 3);
    for (const Labelling with :
         {Labelling{5, 5, 0}, {1, 2, 0}, {65533, 65534, 1}, {65534, 65534, 1}, {1, 1, 1}, {1, 3, 0}, {100, 141, 1}}) {
        expectLabels(three, with);
        expectLabels(noise({150, 40}, 20), with);
        expectLabels(noise({1, 300}, 40), with);
    }
    // More groups than there are labels at all.
    expectLabels(Picture({520, 520}).fill([](int x, int y) { return x % 2 == 0 && y % 2 == 0; }), {});
    expectLabels(Picture({370, 370}).fill([](int x, int y) { return (x + y) % 2 == 0; }), {.norm = kuvLabelNeighbours4});
}

TEST_P(LabelMarkers, BadLabels) {
    Kuv16u pixels[] = {7, 0, 7};
    std::vector<Kuv8u> buffer(3 * 6 + 32);
    Kuv32s count = -1;
    const auto status = [&](Kuv32s step, Kuv32s first, Kuv32s last) {
        return kuviLabelMarkers_16u_C1IR(pixels, step, {3, 1}, first, last, kuvLabelNeighbours8, &count, buffer.data());
    };
    EXPECT_EQ(status(6, 1, 65535), kuvStatusBadArg);
    EXPECT_EQ(status(6, 0, 9), kuvStatusBadArg);
    EXPECT_EQ(status(6, 5, 4), kuvStatusBadArg);
    EXPECT_EQ(status(5, 1, 9), kuvStatusBadStep);
    EXPECT_EQ(status(7, 1, 9), kuvStatusStepNotMultiple);
    EXPECT_EQ(count, -1);
    EXPECT_EQ(pixels[0], 7);
    EXPECT_EQ(status(6, 1, 65534), kuvStatusOk);
    EXPECT_EQ(count, 2);
}

// The first pixel decides on a group's label, and of two rows the upper one counts first wherever in the row a pixel is.
TEST_P(LabelMarkers, OrderOfFirstPixels) {
    expectBothNorms(Picture({".....#", "#.#..."}));
    expectBothNorms(Picture({"......", ".....#", "#.#..."}));
    expectBothNorms(Picture({"..........#", "#.#.#.#.#..", "#...#...#.."}));
    expectBothNorms(Picture({"......#.", "#.#...#.", "#.#.#...", "#####..."}));
    expectBothNorms(Picture({"........#", "#.......#", "#########"}));
    for (int width = 60; width < 70; ++width) {
        for (int from = 0; from < width; from += 3) {
            const auto marked = [&](int x, int y) { return y % 2 == 0 ? x == width - 1 : x >= from && x < width - 2; };
            expectBothNorms(Picture({width, 4}).fill(marked));
        }
    }
}

TEST_P(LabelMarkers, Shapes) {
    expectBothNorms(Picture({"#...#", "#...#", "#####"}));
    expectBothNorms(Picture({"#####", "#...#", "#...#"}));
    expectBothNorms(Picture({"#.#.#.#", "#.#.#.#", "###.###", "..#.#..", "..###.."}));
    expectBothNorms(Picture({"#.#", ".#.", "#.#"}));
    expectBothNorms(Picture({".#.", "#.#", ".#."}));
    for (const KuviSize size : {KuviSize{1001, 3}, {5, 3}, {6, 3}, {1000, 4}, {63, 7}, {64, 7}, {65, 7}, {130, 90}}) {
        const int middle = size.height / 2;
        // A row with teeth on either side, and combs whose teeth meet at the far end only.
        expectBothNorms(Picture(size).fill([&](int x, int y) { return y == middle || x % 2 == 0; }));
        expectBothNorms(Picture(size).fill([&](int x, int y) { return y == size.height - 1 || x % 2 == 0; }));
        expectBothNorms(Picture(size).fill([&](int x, int y) { return y == 0 || x % 2 == 1; }));
        // Frames in frames, and a path to and fro.
        const auto inFrame = [&](int x, int y) { return std::min({x, y, size.width - 1 - x, size.height - 1 - y}) % 2 == 0; };
        expectBothNorms(Picture(size).fill(inFrame));
        expectBothNorms(Picture(size).fill([&](int x, int y) { return y % 2 == 0 || x == (y % 4 == 1 ? size.width - 1 : 0); }));
        expectBothNorms(Picture(size).fill([&](int x, int y) { return x % 2 == 0 || y == (x % 4 == 1 ? size.height - 1 : 0); }));
        for (const Picture& each : extremes(size)) expectBothNorms(each);
        // A spiral: inwards until it would meet itself.
        Picture spiral(size);
        int x = 0, y = 0, u = 1, v = 0;
        spiral.at(0, 0) = 1;
        for (int turns = 0; turns < 2;) {
            const bool hits = !spiral.has(x + u, y + v) || (spiral.has(x + 2 * u, y + 2 * v) && spiral.at(x + 2 * u, y + 2 * v) != 0);
            if (hits) {
                u = std::exchange(v, u);
                u = -u;
                ++turns;
                continue;
            }
            turns = 0;
            spiral.at(x += u, y += v) = 1;
        }
        expectBothNorms(spiral);
    }
}

// All images of so few pixels.
TEST_P(LabelMarkers, EverySmallImage) {
    for (const KuviSize size : {KuviSize{4, 3}, {3, 4}, {2, 5}, {5, 2}, {1, 7}, {7, 1}}) {
        const int count = 1 << size.width * size.height;
        for (int bits = 0; bits < count && !HasFailure(); bits += sanitized ? 37 : 1) {
            expectBothNorms(Picture(size).fill([&](int x, int y) { return (bits >> (y * size.width + x) & 1) != 0; }));
        }
    }
}

TEST_P(LabelMarkers, EveryWidth) {
    for (int width = 1; width <= 140 && !HasFailure(); ++width) {
        for (const Guard guard : {Guard::end, Guard::begin}) {
            for (const int height : {1, 2, 3, 6}) {
                expectBothNorms(noise({width, height}, between(random_, 1, 99)), {.guard = guard});
                expectBothNorms(stripes({width, height}, 40, 10), {.padding = 2, .guard = guard, .gap = 1});
            }
        }
    }
}

// Runs across the words that rows are held in, and across the stretches in which labels are written.
TEST_P(LabelMarkers, LongRuns) {
    for (const int width : {63, 64, 65, 127, 128, 129, 191, 192, 193, 1023, 1024, 1025, 1100, 2048, 2113}) {
        for (int i = 0; i < rounds(20) && !HasFailure(); ++i) {
            const int height = between(random_, 1, 9);
            expectBothNorms(stripes({width, height}, 5, 90));
            expectBothNorms(stripes({width, height}, 90, 5));
            expectBothNorms(stripes({width, height}, 200, 200));
            expectBothNorms(stripes({width, height}, 3, 3));
        }
    }
}

TEST_P(LabelMarkers, EveryAlignment) {
    for (int gap = 0; gap < 34 && !HasFailure(); ++gap) {
        for (const int width : {1, 2, 7, 8, 16, 31, 33, 64, 65, 130}) {
            expectBothNorms(noise({width, 5}, 50), {.padding = 2 * gap, .guard = Guard::begin, .gap = gap});
        }
    }
}

// The buffer has the size that the query tells, at every alignment, and nothing beyond it is touched.
TEST_P(LabelMarkers, BufferBetweenGuards) {
    for (int gap = 0; gap < 16; gap += sanitized ? 5 : 1) {
        for (const Guard guard : {Guard::end, Guard::begin}) {
            for (const int width : {1, 2, 3, 4, 5, 7, 63, 64, 65, 128, 1001}) {
                for (const int height : {1, 2, 3, 5}) {
                    for (const Picture& each : extremes({width, height})) expectBothNorms(each, {.bufferGuard = guard, .bufferGap = gap});
                    if (HasFailure()) return;
                }
            }
            for (const int width : {1, 2, 3, 4}) {
                for (const Picture& each : extremes({width, 99})) expectBothNorms(each, {.bufferGuard = guard, .bufferGap = gap});
            }
        }
    }
}

TEST_P(LabelMarkers, Noise) {
    for (int i = 0; i < rounds(60) && !HasFailure(); ++i) {
        const KuviSize size = {between(random_, 1, 300), between(random_, 1, 200)};
        expectBothNorms(noise(size, between(random_, 1, 99)), {.padding = 2 * below(random_, 9), .gap = below(random_, 9)});
        expectBothNorms(stripes(size, between(random_, 1, 60), between(random_, 1, 60)));
    }
    expectBothNorms(noise({200001, 3}, 50));
    expectBothNorms(noise({3, 70001}, 50));
}

TEST_P(LabelMarkers, RowsFurtherApartThan32BitsTell) {
    constexpr Kuv32s step = 0x7FFFFFFE;
    const DistantMemory memory(4 * static_cast<std::size_t>(step));
    KUV_NEEDS(memory);
    for (const int width : {1, 70}) {
        const Picture markers = noise({width, 4}, 60);
        const auto rowBytes = static_cast<std::size_t>(2 * width);
        const auto row = [&](int y) { return memory.memory() + std::ptrdiff_t{step} * y; };
        for (const Kuv32s norm : norms) {
            for (int y = 0; y < 4; ++y) std::memcpy(row(y), &markers.pixels[markers.indexOf(0, y)], rowBytes);
            std::vector<Kuv8u> buffer(static_cast<std::size_t>(bufferBytes(markers.size)));
            auto* const pixels = reinterpret_cast<Kuv16u*>(memory.memory());
            Kuv32s count = -1;
            EXPECT_EQ(kuviLabelMarkers_16u_C1IR(pixels, step, markers.size, 1, 65534, norm, &count, buffer.data()), kuvStatusOk);
            const Labelled wanted = joined(markers, {.norm = norm});
            EXPECT_EQ(count, wanted.groups);
            for (int y = 0; y < 4; ++y) EXPECT_EQ(std::memcmp(row(y), &wanted.pixels[markers.indexOf(0, y)], rowBytes), 0);
        }
    }
}

TEST_P(LabelMarkers, BufferSizes) {
    EXPECT_EQ(bufferBytes({1, 1}), 38);
    EXPECT_EQ(bufferBytes({5, 3}), 122);
    EXPECT_EQ(bufferBytes({6, 3}), 140);
    EXPECT_EQ(bufferBytes({1001, 3}), 18050);
    EXPECT_EQ(bufferBytes({4000, 3000}), 72000032);
    // What does not fit is cut to 32 bits.
    constexpr KuviSize large[] = {{30000, 20000}, {65536, 65536}, {INT32_MAX, INT32_MAX}, {INT32_MAX, 1}, {46341, 46341}, {3, INT32_MAX}};
    for (const KuviSize size : large) {
        const auto pixels = static_cast<Kuv64u>(size.width) * static_cast<Kuv64u>(size.height);
        EXPECT_EQ(bufferBytes(size), static_cast<Kuv32s>(static_cast<Kuv32u>(6 * pixels + 32)));
    }
}

}  // namespace
