// Quick interpolation of Bayer mosaics: checks, clipping, and what of a row is at the image's border.
#include "core/checks.hpp"
#include "colour/cfa_to_rgb_kernels.hpp"

namespace kuv::KUV_VARIANT {
namespace {

template <class T>
class QuickInterpolation {
public:
    QuickInterpolation(const T* src, ptrdiff_t srcStep, KuviSize imageSize, KuvCfaLayout layout)
        : src_(src), step_(srcStep), width_(imageSize.width), height_(imageSize.height), red_(redSiteOf(layout)) {}

    // Pixels of row r in columns `first` to `end` - 1 of the image. `out` is the pixel of column 0.
    KUV_INLINE void run(ptrdiff_t r, ptrdiff_t first, ptrdiff_t end, T* out) const {
        const auto row = [&](int distance) { return rowAt(src_, step_, reflectInside(r + distance, height_ - 1)); };
        const MosaicRows<T> rows = {{row(-2), row(-1), row(0), row(1), row(2)}};
        const bool isRed = r % 2 == red_.row;
        const RowColours colours = isRed ? redRow : blueRow;
        const ptrdiff_t greenParity = isRed ? 1 - red_.column : red_.column;
        // Inlined in any case: GCC 12 fills a lambda's record by a wide register and forgets to clear its upper half.
        const auto border = [&](ptrdiff_t from, ptrdiff_t to) __attribute__((always_inline)) {
            for (ptrdiff_t c = from < first ? first : from; c < to && c < end; ++c) {
                const auto columnAt = [&](int distance) { return reflectInside(c + distance, width_ - 1); };
                storePixel(out + 3 * c, pixelAt<true>(rows, c % 2 == greenParity, columnAt), colours);
            }
        };
        border(0, 2);
        const ptrdiff_t innerFirst = first < 2 ? 2 : first, innerEnd = end < width_ - 2 ? end : width_ - 2;
        if (innerFirst < innerEnd) {
            if (r < 2 || r >= height_ - 2) {
                interpolateRow<true>(rows, innerFirst, innerEnd, greenParity, out, colours);
            } else {
                interpolateRow<false>(rows, innerFirst, innerEnd, greenParity, out, colours);
            }
        }
        border(width_ - 2 < 2 ? 2 : width_ - 2, width_);
    }

private:
    // The second neighbours of border pixels are not used, but their addresses are formed: in a small image one reflection leaves it.
    static constexpr ptrdiff_t reflectInside(ptrdiff_t index, ptrdiff_t last) {
        const ptrdiff_t inside = reflect(index, last);
        return inside < 0 ? 0 : inside > last ? last : inside;
    }

    const T* const src_;
    const ptrdiff_t step_, width_, height_;
    const RedSite red_;
};

template <class T>
KuvStatus interpolate(const T* src, KuviRect roi, KuviSize imageSize, Kuv32s srcStep, T* dst, Kuv32s dstStep, KuvCfaLayout layout) {
    if (anyNull(src, dst)) return kuvStatusNullPtr;
    if (imageSize.width < 2 || imageSize.height < 2) return kuvStatusBadSize;
    if (!isCfaLayout(layout)) return kuvStatusBadArg;
    if (roi.width < 1 || roi.height < 1) return kuvStatusOk;

    const QuickInterpolation<T> rows(src, srcStep, imageSize, layout);
    const ptrdiff_t x = roi.x, y = roi.y, width = imageSize.width, height = imageSize.height;
    ptrdiff_t firstColumn = x < 0 ? 0 : x, firstRow = y < 0 ? 0 : y;
    ptrdiff_t endColumn = x + roi.width < width ? x + roi.width : width, endRow = y + roi.height < height ? y + roi.height : height;
    // A region past one far edge gets the image's last column or row, before its own first one.
    if (x >= width && y >= height) return kuvStatusOk;
    if (x >= width) {
        firstColumn = width - 1;
        if (firstRow < 2) firstRow = 2;
        if (endRow > height - 2) endRow = height - 2;
    } else if (y >= height) {
        firstRow = height - 1;
    }
    for (ptrdiff_t r = firstRow; r < endRow; ++r) rows.run(r, firstColumn, endColumn, rowAt(dst, dstStep, r - y) - 3 * x);
    return kuvStatusOk;
}

}  // namespace
}  // namespace kuv::KUV_VARIANT

// The last argument is for kinds of interpolation that there are not.
KuvStatus KUV_VARIANT_FUNCTION(kuviCFAToRGB_8u_C1C3R)(const Kuv8u* src, KuviRect roi, KuviSize imageSize, Kuv32s srcStep, Kuv8u* dst,
                                                      Kuv32s dstStep, KuvCfaLayout layout, Kuv32s) {
    return kuv::KUV_VARIANT::interpolate(src, roi, imageSize, srcStep, dst, dstStep, layout);
}

KuvStatus KUV_VARIANT_FUNCTION(kuviCFAToRGB_16u_C1C3R)(const Kuv16u* src, KuviRect roi, KuviSize imageSize, Kuv32s srcStep, Kuv16u* dst,
                                                       Kuv32s dstStep, KuvCfaLayout layout, Kuv32s) {
    return kuv::KUV_VARIANT::interpolate(src, roi, imageSize, srcStep, dst, dstStep, layout);
}
