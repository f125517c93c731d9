// Calls of filters on images that end where their known pixels end.
#pragma once

#include <algorithm>
#include <memory>
#include <vector>

#include "support/calls.hpp"
#include "support/filter_reference.hpp"

namespace kuvtest {

// Where an image's samples, or a block, stand.
struct FilterPlace {
    int padding = 0;  // of the step
    Guard guard = Guard::end;
    int gap = 0;
};

// A kernel as it is kept in a block of just the size that is asked for.
class KeptKernel {
public:
    KeptKernel(const FilterKernel& kernel, KuviSize region, FilterPlace at = {}, Kuv32s kernelType = kuvDataType32f) {
        Kuv32s bytes = 0;
        EXPECT_EQ(kuviFilterBorderGetSize(kernel.size, region, kuvDataType32f, kernelType, 1, &bytes, &bufferBytes), kuvStatusOk);
        block = std::make_unique<Image>("spec", Geometry{bytes, 1, 0, at.guard, at.gap, 1}, 5);
        EXPECT_EQ(kuviFilterBorderInit_32f(kernel.coefficients.data(), kernel.size, kuvDataType32f, 1, 0, spec()), kuvStatusOk);
    }

    KuviBorderKernel* spec() const { return block->row<KuviBorderKernel>(); }

    std::unique_ptr<Image> block;
    Kuv32s bufferBytes = 0;
};

struct FilterCall {
    FilterKernel kernel;
    KuviSize size;
    Kuv32s borderType;
    Kuv32f value = 0;
    FilterPlace srcAt = {}, dstAt = {}, specAt = {}, bufferAt = {};
    Kuv32s kernelType = kuvDataType32f;  // that the sizes are asked for

    int left() const { return borderType & kuvBorderHaveLeft ? kernel.left() : 0; }
    int top() const { return borderType & kuvBorderHaveTop ? kernel.top() : 0; }
    int knownWidth() const { return size.width + left() + (borderType & kuvBorderHaveRight ? kernel.right() : 0); }
    int knownHeight() const { return size.height + top() + (borderType & kuvBorderHaveBottom ? kernel.bottom() : 0); }
};

inline std::ostream& operator<<(std::ostream& stream, const FilterCall& call) {
    return stream << "kernel " << call.kernel.size.width << " x " << call.kernel.size.height << ", region " << call.size.width << " x "
                  << call.size.height << ", border " << call.borderType;
}

// Values that all variants sum up exactly, or any.
inline Kuv32f wholeNumber(Random& random, int most) { return static_cast<Kuv32f>(between(random, -most, most)); }
inline Kuv32f anyNumber(Random& random) { return static_cast<Kuv32f>(below(random, 2000001) - 1000000) / 977.0f; }

inline FilterKernel anyKernel(Random& random, KuviSize size, bool whole = false) {
    FilterKernel kernel = {size, {}};
    for (int i = 0; i < size.width * size.height; ++i) {
        kernel.coefficients.push_back(whole ? wholeNumber(random, 8) : anyNumber(random) / 100);
    }
    return kernel;
}

// The rules with all flags, and all flags alone.
inline Kuv32s anyBorder(Random& random) {
    constexpr Kuv32s rules[] = {kuvBorderClamp, kuvBorderReflect, kuvBorderFill};
    return oneIn(random, 16) ? 240 : rules[below(random, 3)] + 16 * below(random, 16);
}

class FilterTest : public VariantTest {
protected:
    // Compares a call's result, to the last bit, and everything around it. `sample(x, y)` gives the known pixels, from the first one on.
    template <class Sample>
    void expectFiltered(const FilterCall& call, Sample sample) {
        const auto geometry = [](int width, int height, const FilterPlace& at) {
            return Geometry{4 * width, height, 4 * width + at.padding, at.guard, at.gap, 4};
        };
        const Image src("src", geometry(call.knownWidth(), call.knownHeight(), call.srcAt), random_());
        const Image dst("dst", geometry(call.size.width, call.size.height, call.dstAt), random_());
        for (int y = 0; y < call.knownHeight(); ++y) {
            for (int x = 0; x < call.knownWidth(); ++x) store(src.row(y), x, sample(x, y));
        }
        const KeptKernel kept(call.kernel, call.size, call.specAt, call.kernelType);
        const Image buffer("buffer", {kept.bufferBytes, 1, 0, call.bufferAt.guard, call.bufferAt.gap, 1}, random_());
        const Bytes srcBefore = src.bytes(), dstBefore = dst.bytes(), specBefore = kept.block->bytes(), bufferBefore = buffer.bytes();
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << call << "\n  src: " << src.geometry() << "\n  dst: " << dst.geometry()
                                        << "\n  spec: " << kept.block->geometry() << "\n  buffer: " << buffer.geometry());
        const Kuv32f* const first = reinterpret_cast<const Kuv32f*>(src.row(call.top()) + 4 * call.left());
        EXPECT_EQ(watched([&] {
                      return kuviFilterBorder_32f_C1R(first, src.step(), dst.row<Kuv32f>(), dst.step(), call.size, call.borderType,
                                                      call.borderType % 16 == kuvBorderFill ? &call.value : nullptr, kept.spec(),
                                                      buffer.row());
                  }), kuvStatusOk);
        EXPECT_EQ(src.difference(srcBefore), "");
        EXPECT_EQ(dst.strayWrite(dstBefore), "");
        EXPECT_EQ(kept.block->difference(specBefore), "");
        EXPECT_EQ(buffer.strayWrite(bufferBefore), "");

        const ContinuedImage continued(call.kernel, call.size, call.borderType, call.value,
                                       [&](int x, int y) { return load<Kuv32f>(src.row(y + call.top()), x + call.left()); });
        for (int y = 0; y < call.size.height; ++y) {
            for (int x = 0; x < call.size.width; ++x) {
                const Kuv32f wanted = filteredPixel(GetParam(), call.kernel, call.size.width, [&](int i, int j) {
                    return continued(x - call.kernel.left() + i, y - call.kernel.top() + j);
                });
                const Kuv32f got = load<Kuv32f>(dst.row(y), x);
                if (std::memcmp(&got, &wanted, 4) == 0 || (got != got && wanted != wanted)) continue;
                ADD_FAILURE() << "pixel " << x << ", " << y << ": got " << got << ", wanted " << wanted;
                return;
            }
        }
    }
    void expectFiltered(const FilterCall& call) {
        expectFiltered(call, [&](int, int) { return anyNumber(random_); });
    }

    FilterPlace anyPlace() {
        return {oneIn(random_, 2) ? 0 : below(random_, 70), oneIn(random_, 2) ? Guard::end : Guard::begin,
                oneIn(random_, 2) ? 0 : below(random_, 65)};
    }
    FilterCall callOf(KuviSize kernel, KuviSize size, Kuv32s borderType) {
        return {anyKernel(random_, kernel), size, borderType, anyNumber(random_), anyPlace(), anyPlace(), anyPlace(), anyPlace()};
    }

    Random random_{1};
};

}  // namespace kuvtest
