// Quick interpolation of Bayer mosaics: checks, clipping, and what of a row is at the image's border.
#include "colour/cfa_to_rgb_kernels.hpp"
#include "core/checks.hpp"
#include "core/integers.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// Of a mosaic within its image and of the output, both given by what stands at row and column 0 of the image.
template <class T>
class QuickInterpolation {
public:
    QuickInterpolation(const T* src, ptrdiff_t srcStep, KuviSize imageSize, KuvCfaLayout layout, T* dst, ptrdiff_t dstStep)
        : src_(src),
          dst_(dst),
          srcStep_(srcStep),
          dstStep_(dstStep),
          width_(imageSize.width),
          height_(imageSize.height),
          red_(redSiteOf(layout)) {}

    // Rows `top` to `bottom` - 1 and columns `left` to `right` - 1.
    KUV_INLINE void run(ptrdiff_t top, ptrdiff_t bottom, ptrdiff_t left, ptrdiff_t right) const {
        if constexpr (hasVectors) {
            if (right - left >= 2 * Native<T>::lanes) return runStrips<Native<T>>(top, bottom, left, right);
            if (Native<T>::bytes > 16 && right - left >= Native<T>::lanes) return runStrips<Vector<T, 16>>(top, bottom, left, right);
        }
        for (ptrdiff_t r = top; r < bottom; ++r) runColumns(r, left, right);
    }

private:
    template <class V>
    __attribute__((noinline)) void runStrips(ptrdiff_t top, ptrdiff_t bottom, ptrdiff_t left, ptrdiff_t right) const {
        SplitRows<T> rows;
        while (left < right) {
            const bool last = right - left <= rows.columns;
            // What is left for the last one has a vector's width.
            const ptrdiff_t count = last ? (right - left) & -2 : rows.columns - 2 * V::lanes, end = last ? right : left + count;
            runStrip<V>(rows, top, bottom, left, count, end);
            left = end;
        }
    }

    // Columns `left` to `end` - 1, the first `count` of them by pairs of rows.
    template <class V>
    KUV_INLINE void runStrip(SplitRows<T>& rows, ptrdiff_t top, ptrdiff_t bottom, ptrdiff_t left, ptrdiff_t count, ptrdiff_t end) const {
        // The first row of each pair begins with red or blue.
        const ptrdiff_t first = top - (left % 2 == greenParity(top));
        for (ptrdiff_t r = first; r < bottom; r += 2) {
            for (int i = r == first ? -2 : 2; i < 4; ++i) {
                const T* const row = rowNear(r + i);
                rows.template fill<V>(i, row + left, count, [&](ptrdiff_t c) { return row + reflectInside(left + c, width_ - 1); });
            }
            const auto pair = [&](auto ring) __attribute__((always_inline)) {
                const auto out = [&](ptrdiff_t row) {
                    return row >= top && row < bottom && inRing(row) == ring ? outAt(row) + 3 * left : nullptr;
                };
                T *const out0 = out(r), *const out1 = out(r + 1);
                if (out0 != nullptr || out1 != nullptr) interpolatePair<ring.value, V>(rows, count, isRed(r), out0, out1);
            };
            pair(std::true_type{});
            pair(std::false_type{});
            rows.moveDown();
            for (ptrdiff_t row = larger(r, top); row < r + 2 && row < bottom; ++row) finishRow(row, left, left + count, end);
        }
    }

    // What pairs of rows leave: the columns from `done` on, and the green beside the image's sides, which has the ring's rule.
    KUV_INLINE void finishRow(ptrdiff_t r, ptrdiff_t left, ptrdiff_t done, ptrdiff_t end) const {
        runColumns(r, done, end);
        if (inRing(r)) return;
        const ptrdiff_t site = 1 - greenParity(r), lastSite = width_ - 1 - (width_ - 1 - site) % 2;
        if (site >= left && site < end) greenInRing(r, site);
        if (lastSite >= left && lastSite < end) greenInRing(r, lastSite);
    }

    // Of a red or blue pixel.
    KUV_INLINE void greenInRing(ptrdiff_t r, ptrdiff_t c) const {
        const auto sample = [&](ptrdiff_t row, ptrdiff_t column) -> Kuv32s {
            return loadSample(rowNear(row) + reflect(column, width_ - 1));
        };
        const Kuv32s sum = sample(r - 1, c) + sample(r + 1, c) + sample(r, c - 1) + sample(r, c + 1);
        storeSample(outAt(r) + 3 * c + 1, static_cast<T>((sum + 2) >> 2));
    }

    KUV_INLINE void runColumns(ptrdiff_t r, ptrdiff_t first, ptrdiff_t end) const {
        if (first >= end) return;
        const MosaicRows<T> rows = rowsAround(r);
        T* const out = outAt(r);
        const auto reflected = [&](ptrdiff_t from, ptrdiff_t to) { reflectedColumns(rows, from, to, greenParity(r), out, colours(r)); };
        const ptrdiff_t border = larger(width_ - 2, 2), firstInside = larger(first, 2), endInside = smaller(end, border);
        reflected(first, smaller(end, 2));
        if (inRing(r)) interpolateColumns<true>(rows, firstInside, endInside, greenParity(r), out, colours(r));
        else interpolateColumns<false>(rows, firstInside, endInside, greenParity(r), out, colours(r));
        reflected(larger(first, border), end);
    }

    KUV_INLINE void reflectedColumns(const MosaicRows<T>& rows, ptrdiff_t first, ptrdiff_t end, ptrdiff_t green, T* out,
                                     RowColours colours) const {
        for (ptrdiff_t c = first; c < end; ++c) {
            const auto columnAt = [&](int distance) { return reflectInside(c + distance, width_ - 1); };
            storePixel(out + 3 * c, pixelAt<true>(rows, c % 2 == green, columnAt), colours);
        }
    }

    KUV_INLINE bool inRing(ptrdiff_t r) const { return r < 2 || r >= height_ - 2; }
    KUV_INLINE bool isRed(ptrdiff_t r) const { return (r & 1) == red_.row; }
    KUV_INLINE ptrdiff_t greenParity(ptrdiff_t r) const { return isRed(r) ? 1 - red_.column : red_.column; }
    KUV_INLINE RowColours colours(ptrdiff_t r) const { return isRed(r) ? redRow : blueRow; }

    KUV_INLINE T* outAt(ptrdiff_t r) const { return rowAt(dst_, dstStep_, r); }
    KUV_INLINE const T* rowNear(ptrdiff_t r) const { return rowAt(src_, srcStep_, reflectInside(r, height_ - 1)); }
    KUV_INLINE MosaicRows<T> rowsAround(ptrdiff_t r) const {
        return {{rowNear(r - 2), rowNear(r - 1), rowNear(r), rowNear(r + 1), rowNear(r + 2)}};
    }

    // The second neighbours of border pixels are not used, but their addresses are formed: in a small image one reflection leaves it.
    static constexpr ptrdiff_t reflectInside(ptrdiff_t index, ptrdiff_t last) {
        return clamped(reflect(index, last), 0, last);
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
    ptrdiff_t firstColumn = larger(x, 0), firstRow = larger(y, 0);
    ptrdiff_t endColumn = smaller(x + roi.width, imageWidth), endRow = smaller(y + roi.height, imageHeight);
    // A region past one far edge gets the image's last column or row, before its own first one.
    if (x >= imageWidth && y >= imageHeight) return kuvStatusOk;
    if (x >= imageWidth) {
        firstColumn = imageWidth - 1;
        firstRow = larger(firstRow, 2);
        endRow = smaller(endRow, imageHeight - 2);
    } else if (y >= imageHeight) {
        firstRow = imageHeight - 1;
    }
    const QuickInterpolation<T> interpolation(src, srcStep, imageSize, layout, rowAt(dst, dstStep, -y) - 3 * x, dstStep);
    // Output rows that share memory are written one after the other.
    const ptrdiff_t distance = dstStep < 0 ? -static_cast<ptrdiff_t>(dstStep) : dstStep;
    const bool shared = distance < (endColumn - firstColumn) * 3 * static_cast<ptrdiff_t>(sizeof(T));
    const ptrdiff_t rowsAtOnce = shared ? 1 : endRow - firstRow;
    for (ptrdiff_t r = firstRow; r < endRow; r += rowsAtOnce) interpolation.run(r, r + rowsAtOnce, firstColumn, endColumn);
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
