// Complex signals that are transformed: the width of a case's size is their length.
#pragma once

#include "support/images.hpp"

namespace kuvbench {

struct ComplexSignal {
    static constexpr double bytesPerPixel = 16;

    KuviSize size;
    Image<Kuv32f> srcRe{size}, srcIm{size}, dstRe{size}, dstIm{size};

    explicit ComplexSignal(KuviSize wanted) : size(wanted) {
        fillWithValues(srcRe, size, 1);
        fillWithValues(srcIm, size, 2);
    }
    Kuv32s length() const { return size.width; }
};

}  // namespace kuvbench
