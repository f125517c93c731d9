// The arguments of calls, one form for each signature: families that share a signature share the form.
#pragma once

#include <cstring>
#include <stdexcept>
#include <type_traits>
#include <vector>

#include "support/images.hpp"

namespace kuvbench {

// No arguments.
struct Nothing {
    static constexpr double bytesPerPixel = 0;

    explicit Nothing(KuviSize) {}

    template <class Function>
    auto call(Function* function) {
        return function();
    }
};

// An image and one in place, with rows on 64-byte boundaries; or each of them past its boundary by another distance.
template <class T, bool aligned = true>
struct TwoInPlace {
    static constexpr double bytesPerPixel = 3 * sizeof(T);

    KuviSize size;
    Image<T> src{size, 1, aligned ? 0 : 1}, srcDst{size, 1, aligned ? 0 : 3};

    explicit TwoInPlace(KuviSize wanted) : size(wanted) {
        fillWithValues(src, size, 1);
        fillWithValues(srcDst, size, 2);
    }

    template <class Function>
    auto call(Function* function) {
        return function(src.row(), src.step(), srcDst.row(), srcDst.step(), size);
    }
};

// An image and one that it goes to, pixel by pixel; rows on 64-byte boundaries, or each image past them by another distance.
template <class T, int srcChannels, int dstChannels = srcChannels, bool aligned = true>
struct FromTo {
    static constexpr double bytesPerPixel = (srcChannels + dstChannels) * sizeof(T);

    KuviSize size;
    Image<T> src{size, srcChannels, aligned ? 0 : 1}, dst{size, dstChannels, aligned ? 0 : 3};

    explicit FromTo(KuviSize wanted) : size(wanted) {
        std::memset(src.row(), 0x5A, static_cast<std::size_t>(src.step()) * size.height - 8);
        std::memset(dst.row(), 0xA5, static_cast<std::size_t>(dst.step()) * size.height - 16);
    }

    template <class Function>
    auto call(Function* function) {
        return function(src.row(), src.step(), dst.row(), dst.step(), size);
    }
};

// An image and one of another type that it goes to, sample by sample, times `factor` plus `offset`.
template <class S, class D, int channels, bool aligned = true>
struct Converted {
    static constexpr double bytesPerPixel = channels * (sizeof(S) + sizeof(D));
    static constexpr double factor = 1, offset = 0;

    KuviSize size;
    Image<S> src{size, channels, aligned ? 0 : 1};
    Image<D> dst{size, channels, aligned ? 0 : 3};

    explicit Converted(KuviSize wanted, float lowest = 0, float highest = 255) : size(wanted) {
        fillWithValues(src, {size.width * channels, size.height}, 1, lowest, highest);
        for (int row = 0; row < size.height; ++row) std::memset(dst.row(row), 0, sizeof(D) * channels * size.width);
    }

    template <class Function>
    auto call(Function* function) {
        return function(src.row(), src.step(), dst.row(), dst.step(), size);
    }
};

template <Kuv32s roundMode>
struct Rounded : Converted<Kuv32f, Kuv8u, 3> {
    explicit Rounded(KuviSize wanted) : Converted(wanted, -20, 280) {}

    template <class Function>
    auto call(Function* function) {
        return function(src.row(), src.step(), dst.row(), dst.step(), size, roundMode);
    }
};

// -1 to 1 stand for 0 to 255.
template <class S, class D>
struct Scaled : Converted<S, D, 3> {
    static constexpr double factor = sizeof(S) == 1 ? 2 / 255.0 : 127.5, offset = sizeof(S) == 1 ? -1 : 127.5;

    explicit Scaled(KuviSize wanted) : Converted<S, D, 3>(wanted, sizeof(S) == 1 ? 0 : -1.1f, sizeof(S) == 1 ? 255 : 1.1f) {}

    template <class Function>
    auto call(Function* function) {
        return function(this->src.row(), this->src.step(), this->dst.row(), this->dst.step(), this->size, -1.0f, 1.0f);
    }
};

// A constant and the image that it goes to.
template <class T, int channels = 1>
struct Constant {
    static constexpr double bytesPerPixel = channels * sizeof(T);

    KuviSize size;
    Image<T> dst{size, channels};

    explicit Constant(KuviSize wanted) : size(wanted) { std::memset(dst.row(), 0xA5, static_cast<std::size_t>(dst.step()) * size.height); }

    template <class Function>
    auto call(Function* function) {
        return function(T(41), dst.row(), dst.step(), size);
    }
};

// Planes and the image of as many samples a pixel that they make.
template <int channels>
struct Planar {
    static constexpr double bytesPerPixel = 2 * channels;

    KuviSize size;
    Image<Kuv8u> planes{{size.width, size.height * channels}}, dst{size, channels};
    const Kuv8u* addresses[channels];

    explicit Planar(KuviSize wanted) : size(wanted) {
        std::memset(planes.row(), 0x5A, static_cast<std::size_t>(planes.step()) * size.height * channels);
        for (int c = 0; c < channels; ++c) addresses[c] = planes.row(c * size.height);
    }

    template <class Function>
    auto call(Function* function) {
        return function(addresses, planes.step(), dst.row(), dst.step(), size);
    }
};

// Two images and a mask that is set in half of its pixels, in runs.
template <class T>
struct UnderMask {
    static constexpr double bytesPerPixel = 2 * sizeof(T) + 1;

    KuviSize size;
    Image<T> src{size}, dst{size};
    Image<Kuv8u> mask{size};

    explicit UnderMask(KuviSize wanted) : size(wanted) {
        std::memset(src.row(), 0x5A, static_cast<std::size_t>(src.step()) * size.height);
        for (int y = 0; y < size.height; ++y) {
            for (int x = 0; x < size.width; ++x) mask.row(y)[x] = (x / 37 + y / 5) % 2;
        }
    }

    template <class Function>
    auto call(Function* function) {
        return function(src.row(), src.step(), dst.row(), dst.step(), size, mask.row(), mask.step());
    }
};

// Signals of bytes, as long as an image has pixels.
struct ByteSignal {
    static constexpr double bytesPerPixel = 2;

    KuviSize size;
    Image<Kuv8u> src{size}, dst{size};

    explicit ByteSignal(KuviSize wanted) : size(wanted) {
        std::memset(src.row(), 0x5A, static_cast<std::size_t>(src.step()) * size.height);
        std::memset(dst.row(), 0xA5, static_cast<std::size_t>(dst.step()) * size.height);
    }

    auto call(decltype(kuvsCopy_8u)* function) { return function(src.row(), dst.row(), size.width * size.height); }
    auto call(decltype(kuvsZero_8u)* function) { return function(dst.row(), size.width * size.height); }
};

// An image and one that it goes to with the first three channels reversed; or one image in place.
template <class T, int channels, bool aligned = true>
struct Reversed : FromTo<T, channels, channels, aligned> {
    // Of a pixel with alpha, that sample is neither read nor written.
    static constexpr double bytesPerPixel = 6 * sizeof(T);
    static constexpr Kuv32s order[3] = {2, 1, 0};

    using FromTo<T, channels, channels, aligned>::FromTo;

    template <class Function>
    auto call(Function* function) {
        return function(this->src.row(), this->src.step(), this->dst.row(), this->dst.step(), this->size, order);
    }
};

template <int channels, bool aligned = true>
struct ReversedInPlace {
    static constexpr double bytesPerPixel = 2 * channels;
    static constexpr Kuv32s order[4] = {2, 1, 0, 3};

    KuviSize size;
    Image<Kuv8u> srcDst{size, channels, aligned ? 0 : 3};

    explicit ReversedInPlace(KuviSize wanted) : size(wanted) {
        for (int row = 0; row < size.height; ++row) std::memset(srcDst.row(row), 0x5A, std::size_t{channels} * size.width);
    }

    template <class Function>
    auto call(Function* function) {
        return function(srcDst.row(), srcDst.step(), size, order);
    }
};

// An image in place and the counts that it is shifted by, one for each colour channel; or a signal as long as the image has pixels.
template <int channels, int first = 3, int second = first, int third = first, bool aligned = true>
struct ShiftedInPlace {
    static constexpr double bytesPerPixel = 4 * (channels == 4 ? 3 : channels);
    static constexpr Kuv32u counts[3] = {first, second, third};

    KuviSize size;
    Image<Kuv16u> srcDst{size, channels, aligned ? 0 : 3};

    explicit ShiftedInPlace(KuviSize wanted) : size(wanted) {
        for (int row = 0; row < size.height; ++row) std::memset(srcDst.row(row), 0x5A, std::size_t{2 * channels} * size.width);
    }

    template <class Count>
    auto call(KuvStatus (*function)(Count, Kuv16u*, Kuv32s, KuviSize)) {
        if constexpr (std::is_pointer_v<Count>) {
            return function(counts, srcDst.row(), srcDst.step(), size);
        } else {
            return function(counts[0], srcDst.row(), srcDst.step(), size);
        }
    }
    auto call(decltype(kuvsLShiftC_16u_I)* function) { return function(first, srcDst.row(), size.width * size.height); }
};

// An image and its mirror image; about the diagonals `size` is the source's.
template <class T, int channels, Kuv32s axis, bool aligned = true>
struct Mirrored {
    static constexpr double bytesPerPixel = 2 * channels * sizeof(T);
    static constexpr bool diagonal = axis == kuvAxisDiagonal || axis == kuvAxisSecondDiagonal;

    KuviSize size, mirrored = diagonal ? KuviSize{size.height, size.width} : size;
    Image<T> src{size, channels, aligned ? 0 : 1}, dst{mirrored, channels, aligned ? 0 : 3};

    explicit Mirrored(KuviSize wanted) : size(wanted) {
        for (int row = 0; row < size.height; ++row) std::memset(src.row(row), 0x5A, sizeof(T) * channels * size.width);
        for (int row = 0; row < mirrored.height; ++row) std::memset(dst.row(row), 0xA5, sizeof(T) * channels * mirrored.width);
    }

    template <class Function>
    auto call(Function* function) {
        return function(src.row(), src.step(), dst.row(), dst.step(), mirrored, axis);
    }
};

template <class T, int channels, Kuv32s axis>
struct MirroredInPlace {
    static constexpr double bytesPerPixel = 2 * channels * sizeof(T);

    KuviSize size;
    Image<T> srcDst{size, channels};

    explicit MirroredInPlace(KuviSize wanted) : size(wanted) {
        for (int row = 0; row < size.height; ++row) std::memset(srcDst.row(row), 0x5A, sizeof(T) * channels * size.width);
    }

    template <class Function>
    auto call(Function* function) {
        return function(srcDst.row(), srcDst.step(), size, axis);
    }
};

// Indices of so many bits, evenly spread, a palette of entries with as many samples as a pixel, and the image that they make.
template <class S, class D, int channels, Kuv32s bits>
struct Indexed {
    static constexpr double bytesPerPixel = sizeof(S) + channels * sizeof(D);
    static constexpr int entries = 1 << bits;

    KuviSize size;
    Image<S> src{size};
    Image<D> dst{size, channels}, table{{entries, 1}, channels};

    explicit Indexed(KuviSize wanted) : size(wanted) {
        fillWithValues(src, size, 1, 0, entries - 0.1f);
        std::memset(table.row(), 0x5A, sizeof(D) * channels * entries);
        for (int row = 0; row < size.height; ++row) std::memset(dst.row(row), 0xA5, sizeof(D) * channels * size.width);
    }

    template <class Function>
    auto call(Function* function) {
        return function(src.row(), src.step(), dst.row(), dst.step(), size, table.row(), bits);
    }
};

// An image and its reduction to 8 bits, with a buffer that is large enough for every dither.
template <int channels, KuvDitherType ditherType, Kuv32s levels = 4, Kuv32s noise = 0>
struct Reduced {
    static constexpr double bytesPerPixel = 3 * (channels == 4 ? 3 : channels);

    KuviSize size;
    Image<Kuv16u> src{size, channels};
    Image<Kuv8u> dst{size, channels}, buffer{{12 * size.width + 6400, 1}};

    explicit Reduced(KuviSize wanted) : size(wanted) {
        fillWithValues(src, {size.width * channels, size.height}, 1, 0, 65535);
        for (int row = 0; row < size.height; ++row) std::memset(dst.row(row), 0xA5, std::size_t{channels} * size.width);
    }

    template <class Function>
    auto call(Function* function) {
        return function(src.row(), src.step(), dst.row(), dst.step(), size, noise, ditherType, levels, buffer.row());
    }
};

// A photograph in place under a tone map that gives it back when it is applied again: the first channel is inverted, the second one in
// either half of the range, the third not at all; with `alike` all are inverted. Of a step map, eight levels are exchanged.
template <class T, int channels, Kuv32s curve, bool alike = false>
struct ToneMapped {
    static constexpr double bytesPerPixel = 2 * (channels == 4 ? 3 : channels) * sizeof(T);

    KuviSize size;
    Image<T> srcDst{size, channels};
    std::vector<char> block;

    explicit ToneMapped(KuviSize wanted) : size(wanted) {
        fillWithMosaic(srcDst, {size.width * channels, size.height});
        constexpr Kuv32s end = 1 << 8 * sizeof(T), middle = end / 2, steps = 8, width = end / steps;
        std::vector<Kuv32s> levels[3] = {{0, end}, {0, middle - 1, middle, end}, {0, end}};
        std::vector<Kuv32s> values[3] = {{end - 1, -1}, {middle - 1, 0, end - 1, middle - 1}, {0, end}};
        if (curve == kuvLutStep) {
            for (int c = 0; c < 3; ++c) {
                levels[c].clear();
                values[c].clear();
                for (Kuv32s k = 0; k <= steps; ++k) {
                    levels[c].push_back(k * width);
                    values[c].push_back(width / 2 + width * (c == 2 ? k : c == 1 ? k ^ 1 : steps - 1 - k));
                }
            }
        }
        const Kuv32s* levelsOf[3];
        const Kuv32s* valuesOf[3];
        Kuv32s counts[3];
        for (int c = 0; c < 3; ++c) {
            const int from = alike ? 0 : c;
            levelsOf[c] = levels[from].data();
            valuesOf[c] = values[from].data();
            counts[c] = static_cast<Kuv32s>(levels[from].size());
        }
        constexpr Kuv32s type = sizeof(T) == 1 ? kuvDataType8u : kuvDataType16u, selector = channels == 4 ? kuvChannelsAC4 : channels;
        Kuv32s bytes = 0;
        KuvStatus status = kuviLUT_GetSize(curve, type, selector, size, counts, &bytes);
        block.resize(static_cast<std::size_t>(bytes));
        if (status == kuvStatusOk) {
            status = (sizeof(T) == 1 ? kuviLUT_Init_8u : kuviLUT_Init_16u)(curve, selector, size, valuesOf, levelsOf, counts, map());
        }
        if (status != kuvStatusOk) throw std::runtime_error("a tone map cannot be made");
    }

    KuviToneMapSpec* map() { return reinterpret_cast<KuviToneMapSpec*>(block.data()); }

    template <class Function>
    auto call(Function* function) {
        return function(srcDst.row(), srcDst.step(), size, map());
    }
};

// An image of which something is measured: samples evenly spread over half of their range, or single-precision ones from `lowest` to 100.
// `option` is the hint, or the channel of interest.
template <class T, int channels, Kuv32s option = 0, int lowest = -100>
struct Measured {
    static constexpr double bytesPerPixel = channels * sizeof(T);

    KuviSize size;
    Image<T> src{size, channels};
    Kuv64f moments[4];
    T extremes[4];

    explicit Measured(KuviSize wanted) : size(wanted) {
        const float highest = std::is_floating_point_v<T> ? 100 : sizeof(T) == 1 ? 192 : 16000;
        fillWithValues(src, {size.width * channels, size.height}, 1, std::is_unsigned_v<T> ? highest / 3 : lowest, highest);
    }

    auto call(KuvStatus (*function)(const T*, Kuv32s, KuviSize, Kuv64f*, Kuv32s)) {
        return function(src.row(), src.step(), size, moments, option);
    }
    auto call(KuvStatus (*function)(const T*, Kuv32s, KuviSize, Kuv64f*)) { return function(src.row(), src.step(), size, moments); }
    auto call(KuvStatus (*function)(const T*, Kuv32s, KuviSize, Kuv64f*, Kuv64f*)) {
        return function(src.row(), src.step(), size, moments, moments + 1);
    }
    auto call(KuvStatus (*function)(const T*, Kuv32s, KuviSize, Kuv32s, Kuv64f*, Kuv64f*)) {
        return function(src.row(), src.step(), size, option, moments, moments + 1);
    }
    auto call(KuvStatus (*function)(const T*, Kuv32s, KuviSize, T*)) { return function(src.row(), src.step(), size, extremes); }
    auto call(KuvStatus (*function)(const T*, Kuv32s, KuviSize, T*, T*)) {
        return function(src.row(), src.step(), size, extremes, extremes + 1);
    }
};

// Markers in place, which stay markers as labels, and the same with 8 bits a pixel for those who label into another image.
template <Markers kind, Kuv32s norm = kuvLabelNeighbours8>
struct Labelled {
    static constexpr double bytesPerPixel = 4;

    KuviSize size;
    Image<Kuv16u> srcDst{size};
    Image<Kuv8u> markers{size};
    std::vector<Kuv8u> buffer;
    Kuv32s count = 0;

    explicit Labelled(KuviSize wanted) : size(wanted) {
        fillWithMarkers(srcDst, size, kind);
        fillWithMarkers(markers, size, kind);
        Kuv32s bytes = 0;
        if (kuviLabelMarkersGetBufferSize_16u_C1R(size, &bytes) != kuvStatusOk) throw std::runtime_error("no size for a buffer");
        buffer.resize(static_cast<std::size_t>(bytes));
    }

    template <class Function>
    auto call(Function* function) {
        return function(srcDst.row(), srcDst.step(), size, 1, 65534, norm, &count, buffer.data());
    }
};

// An image and the table of its running sums, which has one row and one column more.
struct Integrated {
    static constexpr double bytesPerPixel = 9;  // the row above is read

    KuviSize size, tableSize = {size.width + 1, size.height + 1};
    Image<Kuv8u> src{size};
    Image<Kuv32s> dst{tableSize};

    explicit Integrated(KuviSize wanted) : size(wanted) {
        fillWithValues(src, size, 1, 0, 255);
        for (int row = 0; row < tableSize.height; ++row) std::memset(dst.row(row), 0xA5, sizeof(Kuv32s) * tableSize.width);
    }

    template <class Function>
    auto call(Function* function) {
        return function(src.row(), src.step(), dst.row(), dst.step(), size, 0);
    }
};

enum class Content { noise, flat };

// An image whose samples are counted in so many bins over all integers, or over the range from 0 to 1: bins of one width, or bins
// that widen.
template <class T, int channels, int bins, bool even = true, Content content = Content::noise>
struct Counted {
    static constexpr double bytesPerPixel = channels * sizeof(T);
    static constexpr bool isReal = std::is_floating_point_v<T>;
    static constexpr float lowest = std::is_signed_v<T> && !isReal ? -32768 : 0, range = isReal ? 1 : sizeof(T) == 1 ? 256 : 65536;

    KuviSize size;
    Image<T> src{size, channels};
    std::vector<float> levels;
    std::vector<Kuv32u> counts[channels];
    std::vector<char> block;
    std::vector<Kuv8u> buffer;
    Kuv32u* results[channels];

    explicit Counted(KuviSize wanted) : size(wanted) {
        const float highest = content == Content::flat ? lowest + 0.3f * range : lowest + range;
        fillWithValues(src, {size.width * channels, size.height}, 1, content == Content::flat ? highest : lowest, highest);
        const float* lists[4];
        Kuv32s levelCounts[4];
        float first[4], last[4];
        for (int k = 0; k <= bins; ++k) {
            const float place = static_cast<float>(k) / bins;
            levels.push_back(lowest + range * (even ? place : (place + place * place) / 2));
        }
        for (int c = 0; c < channels; ++c) {
            counts[c].resize(bins);
            results[c] = counts[c].data();
            lists[c] = levels.data();
            levelCounts[c] = bins + 1;
            first[c] = levels.front();
            last[c] = levels.back();
        }
        constexpr Kuv32s type = isReal ? kuvDataType32f : sizeof(T) == 1 ? kuvDataType8u : lowest < 0 ? kuvDataType16s : kuvDataType16u;
        Kuv32s blockBytes = 0, bufferBytes = 0;
        KuvStatus status = kuviHistogramGetBufferSize(type, size, levelCounts, channels, even, &blockBytes, &bufferBytes);
        block.resize(static_cast<std::size_t>(blockBytes));
        buffer.resize(static_cast<std::size_t>(bufferBytes));
        if (status == kuvStatusOk) {
            status = even ? kuviHistogramUniformInit(type, first, last, levelCounts, channels, plan())
                          : kuviHistogramInit(type, lists, levelCounts, channels, plan());
        }
        if (status != kuvStatusOk) throw std::runtime_error("a bin plan cannot be made");
    }

    KuviBinPlan* plan() { return reinterpret_cast<KuviBinPlan*>(block.data()); }

    template <class Function>
    auto call(Function* function) {
        if constexpr (channels == 1) return function(src.row(), src.step(), size, results[0], plan(), buffer.data());
        else return function(src.row(), src.step(), size, results, plan(), buffer.data());
    }
};

// A mosaic and the picture that it becomes.
template <class T>
struct Interpolated {
    static constexpr double bytesPerPixel = 4 * sizeof(T);

    KuviSize size;
    Image<T> src{size}, dst{size, 3};

    explicit Interpolated(KuviSize wanted) : size(wanted) { fillWithMosaic(src, size); }

    template <class Function>
    auto call(Function* function) {
        return function(src.row(), {0, 0, size.width, size.height}, size, src.step(), dst.row(), dst.step(), kuvCfaRGGB, 0);
    }
};

// A whole mosaic, or a band of its rows.
template <class T>
struct Demosaic {
    static constexpr double bytesPerPixel = 4 * sizeof(T);

    KuviSize size;
    Image<T> mosaic{size}, picture{size, 3};
    Image<T> lines[2] = {Image<T>({size.width + 8, 30}), Image<T>({size.width + 8, 30})};  // for two threads

    explicit Demosaic(KuviSize wanted) : size(wanted) { fillWithMosaic(mosaic, size); }

    template <class Function>
    auto call(Function* function) {
        return callRows(function, 0, size.height, lines[0]);
    }

    template <class Function>
    auto callBand(Function* function, int band, int bands) {
        const int rows = size.height / bands, first = band * rows;
        return callRows(function, first, band + 1 < bands ? rows : size.height - first, lines[band]);
    }

private:
    template <class Function>
    auto callRows(Function* function, int first, int rows, Image<T>& tmp) {
        return function(mosaic.row(), {0, first, size.width, rows}, size, mosaic.step(), picture.row(first), picture.step(),
                        kuvCfaRGGB, tmp.row(), tmp.step());
    }
};

}  // namespace kuvbench
