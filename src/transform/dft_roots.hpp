// Roots of unity, to the last bits of double precision and the same on every system.
#pragma once

#include "transform/dft_points.hpp"

namespace kuv::KUV_VARIANT {
namespace {

constexpr Kuv64f twoPi = 6.283185307179586;

// Taylor series, of angles up to an eighth of a turn.
struct Series {
    Kuv64f factors[19];
};
constexpr Series makeSeries() {
    Series series = {};
    for (int n = 2; n <= 18; ++n) series.factors[n] = 1.0 / (n * (n - 1));
    return series;
}
template <int highest>
constexpr Kuv64f sumOfSeries(Kuv64f x) {
    constexpr Series series = makeSeries();
    Kuv64f sum = 1;
#pragma GCC unroll 9
    for (int n = highest; n > 1; n -= 2) sum = 1 - x * x * series.factors[n] * sum;
    return sum;
}
constexpr Kuv64f sineOf(Kuv64f x) { return x * sumOfSeries<17>(x); }
constexpr Kuv64f cosineOf(Kuv64f x) { return sumOfSeries<18>(x); }

// exp(-2 pi i k / n) for k from 0 to n - 1: the angle is folded into the first eighth of a turn while it is a whole number.
constexpr Complex rootOfUnity(Kuv64s k, Kuv64s n) {
    const bool lower = 2 * k > n;
    if (lower) k = n - k;
    const bool left = 4 * k > n;
    const Kuv64s right = left ? n - 2 * k : 2 * k;  // in halves
    const bool steep = 4 * right > n;
    const Kuv64f x = twoPi * static_cast<Kuv64f>(steep ? n - 2 * right : 2 * right) / static_cast<Kuv64f>(4 * n);
    const Kuv64f cosine = steep ? sineOf(x) : cosineOf(x), sine = steep ? cosineOf(x) : sineOf(x);
    return {static_cast<Kuv32f>(left ? -cosine : cosine), static_cast<Kuv32f>(lower ? sine : -sine)};
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
