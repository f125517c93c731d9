// Cosine transforms of 8x8 blocks in 32-bit arithmetic that wraps around, as px states it. Factors have 12 fractional bits.
//
// The first pass leaves its results 8 sqrt(8) times too large, which the second one takes out again. Between the passes they are cut
// to 16 bits.
#pragma once

#include "core/rows.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// In unsigned arithmetic, which may wrap.
template <int bits>
KUV_INLINE Kuv32u divided(Kuv32u v) {
    return static_cast<Kuv32u>(static_cast<Kuv32s>(v + (1u << (bits - 1))) >> bits);
}

// Eight samples, `distance` apart.
class Line {
public:
    KUV_INLINE Line(Kuv16s* first, int distance) : first_(first), distance_(distance) {}

    KUV_INLINE Kuv32u operator[](int i) const { return static_cast<Kuv32u>(loadSample(first_ + i * distance_)); }
    KUV_INLINE void set(int i, Kuv32u value) const { storeSample(first_ + i * distance_, static_cast<Kuv16s>(value)); }

private:
    Kuv16s* first_;
    int distance_;
};

template <int bits>
void transformLine(const Line& x) {
    const Kuv32u s07 = x[0] + x[7], s16 = x[1] + x[6], s25 = x[2] + x[5], s34 = x[3] + x[4];
    const Kuv32u e0 = s07 + s34, e1 = s07 - s34, e2 = s16 + s25, e3 = s16 - s25;
    const Kuv32u p = divided<12>(46341 * (x[0] - x[7])), q = divided<12>(46341 * (x[3] - x[4]));
    const Kuv32u a = 8 * ((x[1] - x[6]) + (x[2] - x[5])), b = 8 * ((x[1] - x[6]) + (x[5] - x[2]));
    const Kuv32u t = 17734 * (e1 + e3);
    const Kuv32u u1 = p + a, u2 = p - a, v1 = q + b, v2 = q - b;
    const Kuv32u c1 = 799 * (u1 + v1), c2 = 3406 * (u2 + v2);
    x.set(0, bits == 12 ? 8 * (e0 + e2) : divided<6>(e0 + e2));
    x.set(4, bits == 12 ? 8 * (e0 - e2) : divided<6>(e0 - e2));
    x.set(2, divided<bits>(25080 * e1 + t));
    x.set(6, divided<bits>(t - 60547 * e3));
    x.set(1, divided<bits>(c1 + 3218 * u1));
    x.set(7, divided<bits>(c1 - 4816 * v1));
    x.set(3, divided<bits>(c2 - 5681 * v2));
    x.set(5, divided<bits>(c2 - 1130 * u2));
}

template <int bits>
void restoreLine(const Line& x) {
    const Kuv32u odd = 27246 * (x[5] + x[3]), outer = 6393 * (x[1] + x[7]);
    const Kuv32u m = odd - 9041 * x[5], n = odd - 45451 * x[3], o = outer + 25746 * x[1], w = outer - 38531 * x[7];
    const Kuv32u d1 = o - m, d2 = w - n, g1 = d1 + d2, g2 = d1 - d2;
    const Kuv32u h1 = 5793 * divided<12>(n + w), h2 = 5793 * divided<12>(m + o);
    const Kuv32u z = 32768 * (x[0] + x[4]), zz = 32768 * (x[0] - x[4]);
    const Kuv32u even = 17734 * (x[2] + x[6]), f1 = 25080 * x[2] + even, f2 = even - 60547 * x[6];
    const Kuv32u k1 = z + f1, k2 = z - f1, k3 = zz + f2, k4 = zz - f2;
    x.set(0, divided<bits>(h2 + k1));
    x.set(7, divided<bits>(k1 - h2));
    x.set(1, divided<bits>(g1 + k3));
    x.set(6, divided<bits>(k3 - g1));
    x.set(2, divided<bits>(g2 + k4));
    x.set(5, divided<bits>(k4 - g2));
    x.set(3, divided<bits>(h1 + k2));
    x.set(4, divided<bits>(k2 - h1));
}

KUV_INLINE void transformScalarBlock(Kuv16s* block) {
    for (int i = 0; i < 8; ++i) transformLine<12>({block + 8 * i, 1});
    for (int i = 0; i < 8; ++i) transformLine<21>({block + i, 8});
}

KUV_INLINE void restoreScalarBlock(Kuv16s* block) {
    for (int i = 0; i < 8; ++i) restoreLine<12>({block + i, 8});
    for (int i = 0; i < 8; ++i) restoreLine<21>({block + 8 * i, 1});
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
