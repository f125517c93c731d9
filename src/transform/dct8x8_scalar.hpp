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

// c_i is cos(i pi / 16). A rotation takes three products: c_a p + c_b q is c_b (p + q) + (c_a - c_b) p, and c_b p - c_a q is
// c_b (p + q) - (c_a + c_b) q.
struct Rotation {
    Kuv32u ofBoth, difference, sum;
};
constexpr Rotation evenRotation = {17734, 25080, 60547};  // c_6, c_2 - c_6 and c_2 + c_6, times 2^15 sqrt(2)
constexpr Rotation outerRotation = {799, 3218, 4816};     // c_7, c_1 - c_7 and c_1 + c_7, times 2^12
constexpr Rotation innerRotation = {3406, 1130, 5681};    // c_3, c_3 - c_5 and c_3 + c_5, times 2^12
constexpr Rotation inverseOuter = {6393, 25746, 38531}, inverseInner = {27246, 9041, 45451};  // the same times 2^15
constexpr Kuv32u rootOfTwo = 5793, eightRoots = 46341;  // sqrt(2) and 8 sqrt(2), times 2^12

template <int bits>
void transformLine(const Line& x) {
    const Kuv32u s07 = x[0] + x[7], s16 = x[1] + x[6], s25 = x[2] + x[5], s34 = x[3] + x[4];
    const Kuv32u e0 = s07 + s34, e1 = s07 - s34, e2 = s16 + s25, e3 = s16 - s25;
    const Kuv32u p = divided<12>(eightRoots * (x[0] - x[7])), q = divided<12>(eightRoots * (x[3] - x[4]));
    const Kuv32u a = 8 * ((x[1] - x[6]) + (x[2] - x[5])), b = 8 * ((x[1] - x[6]) + (x[5] - x[2]));
    const Kuv32u t = evenRotation.ofBoth * (e1 + e3);
    const Kuv32u u1 = p + a, u2 = p - a, v1 = q + b, v2 = q - b;
    const Kuv32u c1 = outerRotation.ofBoth * (u1 + v1), c2 = innerRotation.ofBoth * (u2 + v2);
    x.set(0, bits == 12 ? 8 * (e0 + e2) : divided<6>(e0 + e2));
    x.set(4, bits == 12 ? 8 * (e0 - e2) : divided<6>(e0 - e2));
    x.set(2, divided<bits>(evenRotation.difference * e1 + t));
    x.set(6, divided<bits>(t - evenRotation.sum * e3));
    x.set(1, divided<bits>(c1 + outerRotation.difference * u1));
    x.set(7, divided<bits>(c1 - outerRotation.sum * v1));
    x.set(3, divided<bits>(c2 - innerRotation.sum * v2));
    x.set(5, divided<bits>(c2 - innerRotation.difference * u2));
}

template <int bits>
void restoreLine(const Line& x) {
    const Kuv32u x53 = inverseInner.ofBoth * (x[5] + x[3]), x17 = inverseOuter.ofBoth * (x[1] + x[7]);
    const Kuv32u m = x53 - inverseInner.difference * x[5], n = x53 - inverseInner.sum * x[3];
    const Kuv32u o = x17 + inverseOuter.difference * x[1], w = x17 - inverseOuter.sum * x[7];
    const Kuv32u d1 = o - m, d2 = w - n, g1 = d1 + d2, g2 = d1 - d2;
    const Kuv32u h1 = rootOfTwo * divided<12>(n + w), h2 = rootOfTwo * divided<12>(m + o);
    const Kuv32u z = 32768 * (x[0] + x[4]), zz = 32768 * (x[0] - x[4]);
    const Kuv32u x26 = evenRotation.ofBoth * (x[2] + x[6]), f1 = evenRotation.difference * x[2] + x26, f2 = x26 - evenRotation.sum * x[6];
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
