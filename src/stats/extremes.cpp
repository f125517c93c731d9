// Smallest and largest samples.
#include "core/checks.hpp"
#include "stats/extremes_kernels.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// The first zero of a channel, of which there is one. It has a sign.
template <int channels, class T>
T firstZeroIn(const T* src, ptrdiff_t step, KuviSize roi, int channel) {
    for (ptrdiff_t row = 0; row < roi.height; ++row) {
        const T* const samples = rowAt(src, step, row);
        for (ptrdiff_t i = channel; i < ptrdiff_t{channels} * roi.width; i += channels) {
            if (const T sample = loadSample(samples + i); sample == 0) return sample;
        }
    }
    return 0;
}

// The extreme of a channel's lanes, which stand `channels` apart. Each lane of reals keeps its first zero; only if two differ is
// `firstZero` asked which came first.
template <int channels, class T, int count, class Better, class FirstZero>
T extremeOf(const T (&lanes)[count], int channel, Better better, FirstZero firstZero) {
    T extreme = lanes[channel];
    for (int i = channel; i < count; i += channels) extreme = better(lanes[i], extreme);
    if constexpr (std::is_floating_point_v<T>) {
        for (int i = channel; extreme == 0 && i < count; i += channels) {
            if (lanes[i] == 0 && __builtin_signbit(lanes[i]) != __builtin_signbit(extreme)) return firstZero(channel);
        }
    }
    return extreme;
}

constexpr auto lower = [](auto sample, auto extreme) { return minimum(sample, extreme); };
constexpr auto higher = [](auto sample, auto extreme) { return maximum(sample, extreme); };

template <class T>
KuvStatus minMax(const T* src, ptrdiff_t step, KuviSize roi, T* minValue, T* maxValue) {
    if (anyNull(src, minValue, maxValue)) return kuvStatusNullPtr;
    if (emptyRoi(roi)) return kuvStatusBadSize;
    Range<T> range(loadSample(src));
    reduceAll<1>(range, src, step, roi);
    constexpr int lanes = Range<T>::blockSamples;
    T smallest[lanes], largest[lanes];
    range.extremes(smallest, largest);
    const auto firstZero = [&](int channel) { return firstZeroIn<1>(src, step, roi, channel); };
    storeSample(minValue, extremeOf<1>(smallest, 0, lower, firstZero));
    storeSample(maxValue, extremeOf<1>(largest, 0, higher, firstZero));
    return kuvStatusOk;
}

}  // namespace
}  // namespace kuv::KUV_VARIANT

KuvStatus KUV_VARIANT_FUNCTION(kuviMinMax_16s_C1R)(const Kuv16s* src, Kuv32s srcStep, KuviSize roiSize, Kuv16s* minValue,
                                                   Kuv16s* maxValue) {
    return kuv::KUV_VARIANT::minMax(src, srcStep, roiSize, minValue, maxValue);
}

KuvStatus KUV_VARIANT_FUNCTION(kuviMinMax_32f_C1R)(const Kuv32f* src, Kuv32s srcStep, KuviSize roiSize, Kuv32f* minValue,
                                                   Kuv32f* maxValue) {
    return kuv::KUV_VARIANT::minMax(src, srcStep, roiSize, minValue, maxValue);
}

KuvStatus KUV_VARIANT_FUNCTION(kuviMax_32f_C3R)(const Kuv32f* src, Kuv32s srcStep, KuviSize roiSize, Kuv32f maxValue[3]) {
    using namespace kuv::KUV_VARIANT;
    if (anyNull(src, maxValue)) return kuvStatusNullPtr;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    ThreeLargest accumulator(src);
    reduceAll<3>(accumulator, src, srcStep, roiSize);
    Kuv32f largest[ThreeLargest::blockSamples];
    accumulator.extremes(largest);
    const auto firstZero = [&](int channel) { return firstZeroIn<3>(src, srcStep, roiSize, channel); };
    Kuv32f results[3];
    for (int c = 0; c < 3; ++c) results[c] = extremeOf<3>(largest, c, higher, firstZero);
    for (int c = 0; c < 3; ++c) storeSample(maxValue + c, results[c]);
    return kuvStatusOk;
}
