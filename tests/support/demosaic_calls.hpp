// Calls of the two demosaicing exports on guarded memory, held against the reference.
#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "support/ahd_reference.hpp"
#include "support/calls.hpp"
#include "support/mosaics.hpp"
#include "support/variants.hpp"

namespace kuvtest {

inline KuvStatus demosaic(const Kuv8u* src, KuviRect roi, KuviSize size, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep,
                          KuvCfaLayout layout, Kuv8u* tmp, Kuv32s tmpStep) {
    return kuviDemosaicAHD_8u_C1C3R(src, roi, size, srcStep, dst, dstStep, layout, tmp, tmpStep);
}
inline KuvStatus demosaic(const Kuv16u* src, KuviRect roi, KuviSize size, Kuv32s srcStep, Kuv16u* dst, Kuv32s dstStep,
                          KuvCfaLayout layout, Kuv16u* tmp, Kuv32s tmpStep) {
    return kuviDemosaicAHD_16u_C1C3R(src, roi, size, srcStep, dst, dstStep, layout, tmp, tmpStep);
}

struct MosaicOptions {
    int padding = 0;  // bytes between rows, so the step may be odd
    bool upward = false;
    Guard guard = Guard::end;
    int gap = 0;
};

// A mosaic on guarded memory, and all that the reference knows of it. A side of 5 samples gets one more on both ends, since reflection
// reaches there.
template <class T>
class Mosaic {
public:
    Mosaic(KuviSize imageSize, KuvCfaLayout cfa, Pattern pattern, std::uint64_t seed, const MosaicOptions& options = {})
        : size(imageSize), layout(cfa), image("src", geometryOf(imageSize, options), seed) {
        Random random(seed ^ 0x9E3779B97F4A7C15);
        std::array<T, 8> drawn;
        for (T& each : drawn) each = static_cast<T>(random());
        for (int r = -marginOf(size.height); r < size.height + marginOf(size.height); ++r) {
            for (int c = -marginOf(size.width); c < size.width + marginOf(size.width); ++c) {
                store(address() + r * image.geometry().step, c, sampleOf<T>(pattern, random, drawn, r + 2, c + 2));
            }
        }
        reference = std::make_unique<AhdReference<T>>(address(), image.geometry().step, size, layout);
        before = image.bytes();
        name = testing::PrintToString(size.width) + " x " + testing::PrintToString(size.height) + ", layout " +
               testing::PrintToString(layout) + ", pattern " + testing::PrintToString(static_cast<int>(pattern)) + ", seed " +
               testing::PrintToString(seed);
    }

    char* address() const { return image.row<char>(marginOf(size.height)) + marginOf(size.width) * static_cast<int>(sizeof(T)); }
    KuviRect whole() const { return {0, 0, size.width, size.height}; }

    const KuviSize size;
    const KuvCfaLayout layout;
    const Image image;
    std::unique_ptr<const AhdReference<T>> reference;
    Bytes before;
    std::string name;

private:
    static int marginOf(int side) { return side == 5 ? 1 : 0; }
    static Geometry geometryOf(KuviSize size, const MosaicOptions& options) {
        const int rowBytes = (size.width + 2 * marginOf(size.width)) * static_cast<int>(sizeof(T));
        const std::ptrdiff_t step = rowBytes + options.padding;
        return {rowBytes, size.height + 2 * marginOf(size.height), options.upward ? -step : step, options.guard, options.gap, sizeof(T)};
    }
};

struct TargetOptions {
    std::ptrdiff_t dstStep = tight;
    int tmpPadding = 0;  // bytes
    bool tmpUpward = false;
    Guard guard = Guard::end;
    int dstGap = 0;
    int tmpGap = 0;

    static constexpr std::ptrdiff_t tight = PTRDIFF_MAX;
};

// Bytes of a working line.
template <class T>
int workingLineBytes(int width) {
    return (width + (width % 2 == 0 ? 6 : 8)) * static_cast<int>(sizeof(T));
}

// Runs the export under the variant in force and expects the reference's pixels, and nothing else written anywhere. Output and working
// lines have exactly the stated size.
template <class T>
void expectDemosaic(const Variant& variant, const Mosaic<T>& mosaic, KuviRect roi, std::uint64_t seed, const TargetOptions& options = {}) {
    const KuviRect region = AhdReference<T>::clipped(roi, mosaic.size);
    const bool empty = region.width < 1 || region.height < 1;
    const int rowBytes = empty ? 0 : region.width * 3 * static_cast<int>(sizeof(T));
    const int lineBytes = empty ? 0 : workingLineBytes<T>(region.width);
    const std::ptrdiff_t dstStep = options.dstStep == TargetOptions::tight ? rowBytes : options.dstStep;
    // 16-bit lines lie the step with its lowest bit cleared apart.
    const std::ptrdiff_t tmpStep = (options.tmpUpward ? -1 : 1) * (lineBytes + options.tmpPadding);
    const std::ptrdiff_t linePitch = sizeof(T) == 1 ? tmpStep : tmpStep & ~std::ptrdiff_t{1};

    const Image dst("dst", {rowBytes, empty ? 0 : region.height, dstStep, options.guard, options.dstGap, sizeof(T)}, seed);
    const Image tmp("tmp", {lineBytes, empty ? 0 : 30, linePitch, options.guard, options.tmpGap, sizeof(T)}, seed + 1);
    Bytes wanted = dst.bytes();
    mosaic.reference->write(roi, !variant.isPx(), [&](int r) { return dst.row(wanted, r); });
    const Bytes tmpBefore = tmp.bytes();

    SCOPED_TRACE(testing::Message() << variant << ", " << 8 * sizeof(T) << " bits, image " << mosaic.name << ", region " << roi.x << " "
                                    << roi.y << " " << roi.width << " " << roi.height << "\n  src: " << mosaic.image.geometry()
                                    << "\n  dst: " << dst.geometry() << "\n  tmp: " << tmp.geometry());
    EXPECT_EQ(watched([&] {
                  return demosaic(reinterpret_cast<const T*>(mosaic.address()), roi, mosaic.size, mosaic.image.step(), dst.row<T>(),
                                  dst.step(), mosaic.layout, empty ? nullptr : tmp.row<T>(), static_cast<Kuv32s>(tmpStep));
              }),
              kuvStatusOk);
    EXPECT_EQ(dst.difference(wanted), "");
    EXPECT_EQ(tmp.strayWrite(tmpBefore), "");
    EXPECT_EQ(mosaic.image.difference(mosaic.before), "");
}

// Both sample types of a test that is told once.
class DemosaicTest : public VariantTest {
protected:
    template <class Body>
    void forBothDepths(Body&& body) {
        body(Kuv8u{});
        if (!HasFailure()) body(Kuv16u{});
    }
};

}  // namespace kuvtest
