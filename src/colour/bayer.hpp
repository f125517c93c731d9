// Facts of a Bayer mosaic.
#pragma once

#include "core/rows.hpp"

namespace kuv::KUV_VARIANT {
namespace {

constexpr bool isCfaLayout(KuvCfaLayout layout) { return layout >= kuvCfaBGGR && layout <= kuvCfaGRBG; }

// Where red stands in each two by two period, as the parities of its row and column. Blue stands diagonally opposite.
struct RedSite {
    int row, column;
};

constexpr RedSite redSiteOf(KuvCfaLayout layout) {
    return {layout == kuvCfaBGGR || layout == kuvCfaGBRG, layout == kuvCfaBGGR || layout == kuvCfaGRBG};
}

// The layout as seen from another origin.
constexpr RedSite redSiteFrom(RedSite red, ptrdiff_t x, ptrdiff_t y) {
    return {(red.row ^ static_cast<int>(y)) & 1, (red.column ^ static_cast<int>(x)) & 1};
}

// Continues an image beyond its borders: one reflection that does not repeat the border, and no second one. Parity is kept.
constexpr ptrdiff_t reflect(ptrdiff_t index, ptrdiff_t last) {
    if (index < 0) return -index;
    return index > last ? 2 * last - index : index;
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
