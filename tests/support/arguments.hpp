// The arguments of a call, drawn at random: one descriptor for each argument or group of arguments, in the order of the
// prototype. A descriptor is anything that turns a Draw into a tuple of arguments; the common ones stand here.
#pragma once

#include <cmath>
#include <deque>
#include <functional>
#include <tuple>

#include "kuvcv.h"
#include "support/images.hpp"

namespace kuvtest {

enum class Role {
    source,  // must not change
    record,  // the same, filled by the descriptor, at a multiple of its element's size
    output,  // previous content must not matter
    inOut,
    scratch  // content means nothing after the call
};

// The step classes of the public header.
enum class StepClass { A, B, C, D };

std::ptrdiff_t drawStep(Random& random, StepClass steps, int rowBytes);

// Compares an element of an output with the wanted one.
using ElementCompare = std::function<bool(const void* got, const void* wanted)>;

template <class T>
bool sameBits(const void* got, const void* wanted) {
    return std::memcmp(got, wanted, sizeof(T)) == 0;
}

// For sums of which both operands may be NaN: which NaN comes out is not stated.
template <class T>
bool sameOrBothNaN(const void* got, const void* wanted) {
    const T a = load<T>(got), b = load<T>(wanted);
    return sameBits<T>(got, wanted) || (std::isnan(a) && std::isnan(b));
}
inline bool sameRealOrBothNaN(const void* got, const void* wanted) { return sameOrBothNaN<float>(got, wanted); }

struct DrawnImage {
    Image image;
    Role role;
    ElementCompare same;
    Bytes before;  // the call

    DrawnImage(std::string name, const Geometry& geometry, std::uint64_t seed, Role asRole, ElementCompare comparedBy)
        : image(std::move(name), geometry, seed), role(asRole), same(std::move(comparedBy)) {}

    bool mayChange() const { return role != Role::source && role != Role::record; }
};

// The random arguments of one call. Two draws of the same numbers but of different sides agree in all that must matter: they differ in
// the bytes around the images and in the previous content of outputs.
class Draw {
public:
    Draw(std::uint64_t seed, int side) : Draw(Random(seed), seed * 2 + static_cast<unsigned>(side)) {}
    Draw(const Random& numbers, std::uint64_t side);

    Random random;
    KuviSize size;

    // An image of `rows` by `elements`, sources and in-out images filled from drawn patterns.
    template <class T>
    Image& image(Role role, int elements, int rows, std::ptrdiff_t step, ElementCompare same = sameBits<T>);

    const std::deque<DrawnImage>& images() const { return images_; }
    void keep();  // remembers all images as they stand
    std::string description() const;

private:
    DrawnImage& add(Role role, Geometry geometry, ElementCompare same);

    Random irrelevant_;
    std::deque<DrawnImage> images_;
};

// Fills a row-wise image with one of the patterns on which kernels tend to break.
template <class T>
void fillSamples(Random& random, const Image& image, int elements);

extern template void fillSamples<Kuv8u>(Random&, const Image&, int);
extern template void fillSamples<Kuv16u>(Random&, const Image&, int);
extern template void fillSamples<Kuv16s>(Random&, const Image&, int);
extern template void fillSamples<Kuv32s>(Random&, const Image&, int);
extern template void fillSamples<Kuv32u>(Random&, const Image&, int);
extern template void fillSamples<Kuv64u>(Random&, const Image&, int);
extern template void fillSamples<Kuv32f>(Random&, const Image&, int);
extern template void fillSamples<Kuv64f>(Random&, const Image&, int);

template <class T>
Image& Draw::image(Role role, int elements, int rows, std::ptrdiff_t step, ElementCompare same) {
    Geometry geometry;
    geometry.rowBytes = elements * static_cast<int>(sizeof(T));
    geometry.rows = rows;
    geometry.step = step;
    geometry.elementBytes = sizeof(T);
    Image& image = add(role, geometry, std::move(same)).image;
    if (role == Role::source || role == Role::inOut) fillSamples<T>(random, image, elements);
    return image;
}

// (pointer, step): an image of the drawn size.
template <class T, Role role, class Pointer>
struct ImageArgument {
    int channels = 1;
    int omitted = 0;  // samples at the end of a row that the call must not touch
    StepClass steps = StepClass::C;
    bool (*same)(const void* got, const void* wanted) = sameBits<T>;

    std::tuple<Pointer, Kuv32s> operator()(Draw& draw) const {
        const int elements = draw.size.width * channels - omitted;
        constexpr std::ptrdiff_t bytes = sizeof(T);
        std::ptrdiff_t step = drawStep(draw.random, steps, elements * static_cast<int>(bytes));
        // Where the bits of NaNs are free, rows that lie on each other do so by whole samples: parts of a NaN are no NaN.
        if (same != sameBits<T> && step > 0 && step < elements * bytes) step = (step + bytes - 1) / bytes * bytes;
        const Image& image = draw.image<T>(role, elements, draw.size.height, step, same);
        return {image.row<T>(), image.step()};
    }
};
template <class T>
using Source = ImageArgument<T, Role::source, const T*>;
template <class T>
using Output = ImageArgument<T, Role::output, T*>;
template <class T>
using InOut = ImageArgument<T, Role::inOut, T*>;

struct RoiSize {
    std::tuple<KuviSize> operator()(Draw& draw) const { return {draw.size}; }
};

// (pointer): a signal of that length, or of the drawn width.
template <class T, Role role, class Pointer>
struct SignalArgument {
    int length = 0;

    std::tuple<Pointer> operator()(Draw& draw) const {
        return {draw.image<T>(role, length > 0 ? length : draw.size.width, 1, 0).template row<T>()};
    }
};
template <class T>
using SourceSignal = SignalArgument<T, Role::source, const T*>;
template <class T>
using OutputSignal = SignalArgument<T, Role::output, T*>;
template <class T>
using InOutSignal = SignalArgument<T, Role::inOut, T*>;

struct Length {
    std::tuple<Kuv32s> operator()(Draw& draw) const { return {draw.size.width}; }
};

// Any bits.
template <class T>
struct AnyValue {
    std::tuple<T> operator()(Draw& draw) const {
        const std::uint64_t bits = draw.random();
        return {load<T>(&bits)};
    }
};

// Evaluated from left to right.
template <class... Descriptors>
auto drawArguments(Draw& draw, const Descriptors&... descriptors) {
    return std::apply([](auto... parts) { return std::tuple_cat(parts...); },
                      std::tuple<decltype(descriptors(draw))...>{descriptors(draw)...});
}

}  // namespace kuvtest
