// Tables of roots of unity.
#pragma once

#include "transform/dft_roots.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// sin(2 pi k / 1024) for a quarter of a turn.
struct QuarterSines {
    Kuv32f of[257];
};
constexpr QuarterSines makeQuarterSines() {
    QuarterSines sines = {};
    for (int k = 0; k <= 256; ++k) sines.of[k] = -rootOfUnity(k, 1024).im;
    return sines;
}

// Roots of unity picked from a quarter of a sine.
struct SineTable {
    const Kuv32f* sines;
    int order;

    // exp(-2 pi i k / 2^n)
    KUV_INLINE Complex root(Kuv64s k, int n) const {
        const ptrdiff_t e = static_cast<ptrdiff_t>(k << (order - n)), whole = ptrdiff_t{1} << order, quarter = whole / 4;
        if (e <= quarter) return {sines[quarter - e], -sines[e]};
        if (e <= 2 * quarter) return {-sines[e - quarter], -sines[2 * quarter - e]};
        if (e > 3 * quarter) return {sines[e - 3 * quarter], sines[whole - e]};
        return {-sines[3 * quarter - e], sines[e - 2 * quarter]};
    }
};

// Longer ones. Those of px are computed from angles rounded to single precision, below an eighth of a turn.
void fillQuarterSines(int order, Kuv32f* sines) {
    const ptrdiff_t whole = ptrdiff_t{1} << order, quarter = whole / 4;
    const Kuv64f unit = twoPi / static_cast<Kuv64f>(whole);
    const auto angle = [unit](ptrdiff_t k) {
        const Kuv64f exact = static_cast<Kuv64f>(k) * unit;
        return hasVectors ? exact : static_cast<Kuv64f>(static_cast<Kuv32f>(exact));
    };
    for (ptrdiff_t k = 0; k <= whole / 8; ++k) sines[k] = static_cast<Kuv32f>(sineOf(angle(k)));
    for (ptrdiff_t k = whole / 8 + 1; k <= quarter; ++k) sines[k] = static_cast<Kuv32f>(cosineOf(angle(quarter - k)));
}

// All roots of a length: an eighth, a quarter or half of them, depending on what divides it, and the others by symmetry.
void fillRoots(ptrdiff_t length, Complex* roots) {
    const bool byFour = length % 4 == 0, byTwo = length % 2 == 0;
    const ptrdiff_t computed = length / (byFour ? 8 : byTwo ? 4 : 2);
    for (ptrdiff_t k = 0; k <= computed; ++k) roots[k] = rootOfUnity(k, length);
    if (byFour) {
        for (ptrdiff_t k = computed + 1; k <= length / 4; ++k) roots[k] = {-roots[length / 4 - k].im, -roots[length / 4 - k].re};
    }
    if (byTwo) {
        for (ptrdiff_t k = length / 4 + 1; k <= length / 2; ++k) roots[k] = {-roots[length / 2 - k].re, roots[length / 2 - k].im};
    }
    for (ptrdiff_t k = length / 2 + 1; k < length; ++k) roots[k] = {roots[length - k].re, -roots[length - k].im};
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
