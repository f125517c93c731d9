// Filters as the header states them: the continued image pixel by pixel, and the sums in each variant's order.
#pragma once

#include <cmath>
#include <vector>

#include "kuvcv.h"
#include "support/images.hpp"
#include "support/variants.hpp"

namespace kuvtest {

struct FilterKernel {
    KuviSize size;
    std::vector<Kuv32f> coefficients;

    Kuv32f at(int column, int row) const {
        return coefficients[static_cast<std::size_t>(row) * static_cast<std::size_t>(size.width) + static_cast<std::size_t>(column)];
    }
    int left() const { return (size.width - 1) / 2; }
    int right() const { return size.width - 1 - left(); }
    int top() const { return (size.height - 1) / 2; }
    int bottom() const { return size.height - 1 - top(); }
};

// E. `sample(x, y)` gives the known pixels; the region begins at (0, 0).
template <class Sample>
class ContinuedImage {
public:
    ContinuedImage(const FilterKernel& kernel, KuviSize size, Kuv32s borderType, Kuv32f value, Sample sample)
        : firstColumn_(borderType & kuvBorderHaveLeft ? -kernel.left() : 0),
          lastColumn_(size.width - 1 + (borderType & kuvBorderHaveRight ? kernel.right() : 0)),
          firstRow_(borderType & kuvBorderHaveTop ? -kernel.top() : 0),
          lastRow_(size.height - 1 + (borderType & kuvBorderHaveBottom ? kernel.bottom() : 0)), rule_(borderType & 15), value_(value),
          sample_(sample) {}

    Kuv32f operator()(int x, int y) const {
        const bool known = x >= firstColumn_ && x <= lastColumn_ && y >= firstRow_ && y <= lastRow_;
        if (!known && rule_ == kuvBorderFill) return value_;
        return sample_(place(x, firstColumn_, lastColumn_), place(y, firstRow_, lastRow_));
    }

private:
    // One step after the other, there and back between the ends.
    int place(int i, int first, int last) const {
        if (rule_ == kuvBorderReflect) {
            if (first == last) return first;
            while (i < first || i > last) i = i < first ? 2 * first - i : 2 * last - i;
        }
        return i < first ? first : i > last ? last : i;
    }

    int firstColumn_, lastColumn_, firstRow_, lastRow_;
    Kuv32s rule_;
    Kuv32f value_;
    Sample sample_;
};

// The pixel of a region of the given width that is the sum of K[j][i] * covered(i, j).
template <class Covered>
Kuv32f filteredPixel(const Variant& variant, const FilterKernel& kernel, int regionWidth, Covered covered) {
    const int kw = kernel.size.width, kh = kernel.size.height;
    if (variant.isPx()) {
        double sum = 0;
        for (int j = 0; j < kh; ++j) {
            for (int i = 0; i < kw; ++i) {
                const double product = static_cast<double>(kernel.at(i, j)) * static_cast<double>(covered(i, j));
                sum = i + j == 0 ? product : sum + product;
            }
        }
        return static_cast<Kuv32f>(sum);
    }
    const bool wide = variant.hasAVX(), fused = variant.isH9();
    // Adds to a sum that may be of nothing yet.
    struct Sum {
        bool empty = true;
        Kuv32f value = 0;
        void add(Kuv32f more) {
            value = empty ? more : value + more;
            empty = false;
        }
        void addProduct(Kuv32f a, Kuv32f b, bool inOne) {
            const Kuv32f product = a * b;
            value = empty ? product : inOne ? std::fma(a, b, value) : value + product;
            empty = false;
        }
    };
    Sum total;
    if (!wide && (variant.isW7() || regionWidth <= kw + 8)) {
        for (int j = 0; j < kh; ++j) {
            Sum even, odd;
            for (int i = 0; i < kw; ++i) (i % 2 == 0 ? even : odd).addProduct(kernel.at(i, j), covered(i, j), false);
            if (!odd.empty) even.add(odd.value);
            total.add(even.value);
        }
        return total.value;
    }
    const auto eights = [](int extent) { return extent >= 8 ? extent / 8 * 8 : extent; };
    const int columns = wide && kh == 1 ? eights(kw) : 8, rows = wide && kw == 1 ? eights(kh) : kh;
    for (int firstRow = 0; firstRow < kh; firstRow += rows) {
        for (int firstColumn = 0; firstColumn < kw; firstColumn += columns) {
            Sum part;
            for (int j = firstRow; j < firstRow + rows && j < kh; ++j) {
                for (int i = firstColumn; i < firstColumn + columns && i < kw; ++i) part.addProduct(kernel.at(i, j), covered(i, j), fused);
            }
            total.add(part.value);
        }
    }
    return total.value;
}

}  // namespace kuvtest
