// The arguments of calls, one form for each signature: families that share a signature share the form.
#pragma once

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
