// The fixture of tests on resized tiles: a call with every image on pages of its own, against the reference.
#pragma once

#include "support/resize_reference.hpp"

namespace kuvtest {

// Where the images of a call are.
struct TilePlaces {
    Guard src = Guard::end, dst = Guard::end, buffer = Guard::end;
    int srcGap = 0, dstGap = 0, bufferGap = 0;
    int srcPadding = 0, dstPadding = 0;  // of the steps
    bool srcUpward = false, dstUpward = false;
};

inline Geometry pixelRows(std::int64_t width, std::int64_t height, int padding = 0, bool upward = false, Guard guard = Guard::end,
                          int gap = 0) {
    const int bytes = static_cast<int>(6 * width), step = bytes + padding;
    return {bytes, static_cast<int>(height), upward ? -step : step, guard, gap, 2};
}

// The part of a scene from that pixel on.
inline void paint(const Image& image, const Scene& scene, std::int64_t left = 0, std::int64_t top = 0) {
    for (int y = 0; y < image.geometry().rows; ++y) {
        for (int i = 0; i < image.geometry().rowBytes / 2; ++i) store(image.row(y), i, scene(left + i / 3, top + y, i % 3));
    }
}

class Resize : public VariantTest {
protected:
    Scene anyScene() { return {random_(), static_cast<Scene::Kind>(below(random_, 3))}; }

    TilePlaces anyPlaces() {
        const auto guard = [&] { return oneIn(random_, 2) ? Guard::end : Guard::begin; };
        const auto gap = [&] { return oneIn(random_, 2) ? 0 : below(random_, 70); };
        const auto padding = [&] { return oneIn(random_, 2) ? 0 : 2 * below(random_, 30); };
        const auto upward = [&] { return oneIn(random_, 2); };
        return {guard(), guard(), guard(), gap(), gap(), gap(), padding(), padding(), upward(), upward()};
    }

    // The source is what the reference takes of the scene, no pixel more.
    void expectTile(const PlanBlock& plan, const Scene& scene, const TileOf& tile, const TilePlaces& places = {}) {
        const ResizeReference reference(plan, scene, tile, arithmeticOf(GetParam()));
        const KuviSize size = reference.size();
        const std::int64_t left = reference.left(), top = reference.top();
        const Image src("src", pixelRows(reference.right() - left + 1, reference.bottom() - top + 1, places.srcPadding, places.srcUpward,
                                         places.src, places.srcGap), random_());
        const Image dst("dst", pixelRows(size.width, size.height, places.dstPadding, places.dstUpward, places.dst, places.dstGap),
                        random_());
        const Image buffer("buffer", {plan.bufferBytes(tile.size), 1, 0, places.buffer, places.bufferGap, 1}, random_());
        paint(src, scene, left, top);
        const Bytes srcBefore = src.bytes(), planBefore = plan.block().bytes(), bufferBefore = buffer.bytes();
        Bytes wanted = dst.bytes();
        for (int y = 0; y < size.height; ++y) {
            for (int i = 0; i < 3 * size.width; ++i) store(dst.row(wanted, y), i, reference.sample(i / 3, y, i % 3));
        }
        const KuviPoint origin = reference.origin();
        const Kuv16s* const from = src.row<Kuv16s>(static_cast<int>(origin.y - top)) + 3 * (origin.x - left);
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << plan.src().width << " x " << plan.src().height << " to "
                                        << plan.dst().width << " x " << plan.dst().height << ", " << tile << "\n  src: " << src.geometry()
                                        << "\n  dst: " << dst.geometry() << "\n  buffer: " << buffer.geometry());
        EXPECT_EQ(watched([&] {
                      return kuviResizeLinear_16s_C3R(from, src.step(), dst.row<Kuv16s>(), dst.step(), tile.offset, tile.size, tile.border,
                                                      nullptr, plan.get(), buffer.row());
                  }),
                  reference.isClipped(tile) ? kuvStatusSizeWarning : kuvStatusOk);
        EXPECT_EQ(dst.difference(wanted), "");
        EXPECT_EQ(src.difference(srcBefore), "");
        EXPECT_EQ(plan.block().difference(planBefore), "");
        EXPECT_EQ(buffer.strayWrite(bufferBefore), "");
    }

    Random random_{20};
};

}  // namespace kuvtest
