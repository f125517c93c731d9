// Quick interpolation of Bayer mosaics: checks, clipping, and what of a row is at the image's border.
#include "core/checks.hpp"
#include "colour/cfa_to_rgb_kernels.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// Of a mosaic within its image and of the output, both given by what stands at row and column 0 of the image.
template <class T>
class QuickInterpolation {
public:
    QuickInterpolation(const T* src, ptrdiff_t srcStep, KuviSize imageSize, KuvCfaLayout layout, T* dst, ptrdiff_t dstStep)
        : src_(src), dst_(dst), srcStep_(srcStep), dstStep_(dstStep), width_(imageSize.width), height_(imageSize.height), red_(redSiteOf(layout)) {}

    // Rows `top` to `bottom` - 1 and columns `left` to `right` - 1, `most` rows at once, one or two.
    KUV_INLINE void run(ptrdiff_t top, ptrdiff_t bottom, ptrdiff_t left, ptrdiff_t right, int most) const {
        const ptrdiff_t border = width_ - 2 < 2 ? 2 : width_ - 2;
        const ptrdiff_t first = left < 2 ? 2 : left, end = right < border ? right : border;
        for (ptrdiff_t r = top; r < bottom;) {
            const bool two = most == 2 && r + 1 < bottom && inRing(r) == inRing(r + 1);
            const MosaicRows<T> rows = rowsAround(r), nextRows = rowsAround(r + 1);
            T *const out = outAt(r), *const nextOut = two ? outAt(r + 1) : nullptr;
            const auto reflected = [&](ptrdiff_t from, ptrdiff_t to) __attribute__((always_inline)) {
                reflectedColumns(rows, from, to, greenParity(r), out, colours(r));
                if (two) reflectedColumns(nextRows, from, to, greenParity(r + 1), nextOut, colours(r + 1));
            };
            reflected(left, right < 2 ? right : 2);
            if (first < end) {
                if (inRing(r)) interpolateRows<true>(rows, nextRows, first, end, greenParity(r), out, nextOut, colours(r));
                else interpolateRows<false>(rows, nextRows, first, end, greenParity(r), out, nextOut, colours(r));
            }
            reflected(left < border ? border : left, right);
            r += two ? 2 : 1;
        }
    }

private:
    KUV_INLINE void reflectedColumns(const MosaicRows<T>& rows, ptrdiff_t first, ptrdiff_t end, ptrdiff_t green, T* out, RowColours colours) const {
        for (ptrdiff_t c = first; c < end; ++c) {
            const auto columnAt = [&](int distance) { return reflectInside(c + distance, width_ - 1); };
            storePixel(out + 3 * c, pixelAt<true>(rows, c % 2 == green, columnAt), colours);
        }
    }

    KUV_INLINE bool inRing(ptrdiff_t r) const { return r < 2 || r >= height_ - 2; }
    KUV_INLINE bool isRed(ptrdiff_t r) const { return r % 2 == red_.row; }
    KUV_INLINE ptrdiff_t greenParity(ptrdiff_t r) const { return isRed(r) ? 1 - red_.column : red_.column; }
    KUV_INLINE RowColours colours(ptrdiff_t r) const { return isRed(r) ? redRow : blueRow; }

    KUV_INLINE T* outAt(ptrdiff_t r) const { return rowAt(dst_, dstStep_, r); }
    KUV_INLINE const T* rowNear(ptrdiff_t r) const { return rowAt(src_, srcStep_, reflectInside(r, height_ - 1)); }
    KUV_INLINE MosaicRows<T> rowsAround(ptrdiff_t r) const {
        return {{rowNear(r - 2), rowNear(r - 1), rowNear(r), rowNear(r + 1), rowNear(r + 2)}};
    }

    // The second neighbours of border pixels are not used, but their addresses are formed: in a small image one reflection leaves it.
    static constexpr ptrdiff_t reflectInside(ptrdiff_t index, ptrdiff_t last) {
        const ptrdiff_t inside = reflect(index, last);
        return inside < 0 ? 0 : inside > last ? last : inside;
    }

    const T* const src_;
    T* const dst_;
    const ptrdiff_t srcStep_, dstStep_, width_, height_;
    const RedSite red_;
};

template <class T>
KuvStatus interpolate(const T* src, KuviRect roi, KuviSize imageSize, Kuv32s srcStep, T* dst, Kuv32s dstStep, KuvCfaLayout layout) {
    if (anyNull(src, dst)) return kuvStatusNullPtr;
    if (imageSize.width < 2 || imageSize.height < 2) return kuvStatusBadSize;
    if (!isCfaLayout(layout)) return kuvStatusBadArg;
    if (roi.width < 1 || roi.height < 1) return kuvStatusOk;

    const ptrdiff_t x = roi.x, y = roi.y, imageWidth = imageSize.width, imageHeight = imageSize.height;
    ptrdiff_t firstColumn = x < 0 ? 0 : x, firstRow = y < 0 ? 0 : y;
    ptrdiff_t endColumn = x + roi.width < imageWidth ? x + roi.width : imageWidth, endRow = y + roi.height < imageHeight ? y + roi.height : imageHeight;
    // A region past one far edge gets the image's last column or row, before its own first one.
    if (x >= imageWidth && y >= imageHeight) return kuvStatusOk;
    if (x >= imageWidth) {
        firstColumn = imageWidth - 1;
        if (firstRow < 2) firstRow = 2;
        if (endRow > imageHeight - 2) endRow = imageHeight - 2;
    } else if (y >= imageHeight) {
        firstRow = imageHeight - 1;
    }
    const QuickInterpolation<T> interpolation(src, srcStep, imageSize, layout, rowAt(dst, dstStep, -y) - 3 * x, dstStep);
    // Output rows that share memory are written one after the other.
    const ptrdiff_t distance = dstStep < 0 ? -static_cast<ptrdiff_t>(dstStep) : dstStep;
    const bool shared = distance < (endColumn - firstColumn) * 3 * static_cast<ptrdiff_t>(sizeof(T));
    interpolation.run(firstRow, endRow, firstColumn, endColumn, shared ? 1 : 2);
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
