// Transforms of a few values, in registers: of single samples, or of as many side by side as a vector has lanes.
#pragma once

#include "simd/real.hpp"
#include "transform/dft_roots.hpp"

namespace kuv::KUV_VARIANT {
namespace {

template <int bytes>
KUV_INLINE Vector<Kuv32f, bytes> operator+(Vector<Kuv32f, bytes> a, Vector<Kuv32f, bytes> b) {
    return add(a, b);
}
template <int bytes>
KUV_INLINE Vector<Kuv32f, bytes> operator-(Vector<Kuv32f, bytes> a, Vector<Kuv32f, bytes> b) {
    return sub(a, b);
}
template <int bytes>
KUV_INLINE Vector<Kuv32f, bytes> operator*(Vector<Kuv32f, bytes> a, Vector<Kuv32f, bytes> b) {
    return multiply(a, b);
}

template <class T>
KUV_INLINE void multiplyBy(T& re, T& im, T factorRe, T factorIm) {
    const T product = productMinus(re, factorRe, im * factorIm);
    im = plusProduct(re, factorIm, im * factorRe);
    re = product;
}

template <class T>
KUV_INLINE void transform2(T& re0, T& im0, T& re1, T& im1) {
    const T re = re0 - re1, im = im0 - im1;
    re0 = re0 + re1;
    im0 = im0 + im1;
    re1 = re;
    im1 = im;
}

template <class T>
KUV_INLINE void transform4(T& re0, T& im0, T& re1, T& im1, T& re2, T& im2, T& re3, T& im3) {
    const T sumRe = re0 + re2, sumIm = im0 + im2, differenceRe = re0 - re2, differenceIm = im0 - im2;
    const T oddRe = re1 + re3, oddIm = im1 + im3, oddDifferenceRe = re1 - re3, oddDifferenceIm = im1 - im3;
    re0 = sumRe + oddRe;
    im0 = sumIm + oddIm;
    re2 = sumRe - oddRe;
    im2 = sumIm - oddIm;
    re1 = differenceRe + oddDifferenceIm;
    im1 = differenceIm - oddDifferenceRe;
    re3 = differenceRe - oddDifferenceIm;
    im3 = differenceIm + oddDifferenceRe;
}

// Transforms of values that stand in arrays `step` apart.
template <int step, class T>
KUV_INLINE void fourOf(T* re, T* im) {
    transform4(re[0], im[0], re[step], im[step], re[2 * step], im[2 * step], re[3 * step], im[3 * step]);
}

template <int length>
struct Roots {
    Complex of[length];
};
template <int length>
constexpr Roots<length> rootsOf() {
    Roots<length> roots = {};
    for (int k = 0; k < length; ++k) roots.of[k] = rootOfUnity(k, length);
    return roots;
}

// An odd length, by the sums and differences of each pair x[n], x[length - n].
template <int length, int step, class T>
KUV_INLINE void oddOf(T* re, T* im) {
    constexpr int pairs = (length - 1) / 2;
    static constexpr Roots<length> roots = rootsOf<length>();
    T sumRe[pairs], sumIm[pairs], differenceRe[pairs], differenceIm[pairs];
    const T firstRe = re[0], firstIm = im[0];
#pragma GCC unroll 8
    for (int n = 0; n < pairs; ++n) {
        const int low = step * (n + 1), high = step * (length - 1 - n);
        sumRe[n] = re[low] + re[high];
        sumIm[n] = im[low] + im[high];
        differenceRe[n] = re[low] - re[high];
        differenceIm[n] = im[low] - im[high];
        re[0] = re[0] + sumRe[n];
        im[0] = im[0] + sumIm[n];
    }
    using All = LanesOf<T>;
#pragma GCC unroll 8
    for (int k = 1; k <= pairs; ++k) {
        const auto root = [k](int n) { return roots.of[k * (n + 1) % length]; };
        T evenRe = plusProduct(sumRe[0], All::all(root(0).re), firstRe),
          evenIm = plusProduct(sumIm[0], All::all(root(0).re), firstIm);
        T oddRe = differenceRe[0] * All::all(root(0).im), oddIm = differenceIm[0] * All::all(root(0).im);
#pragma GCC unroll 8
        for (int n = 1; n < pairs; ++n) {
            evenRe = plusProduct(sumRe[n], All::all(root(n).re), evenRe);
            evenIm = plusProduct(sumIm[n], All::all(root(n).re), evenIm);
            oddRe = plusProduct(differenceRe[n], All::all(root(n).im), oddRe);
            oddIm = plusProduct(differenceIm[n], All::all(root(n).im), oddIm);
        }
        re[step * k] = evenRe - oddIm;
        re[step * (length - k)] = evenRe + oddIm;
        im[step * k] = evenIm + oddRe;
        im[step * (length - k)] = evenIm - oddRe;
    }
}

template <int length, int step, class T>
KUV_INLINE void transform(T* re, T* im);

// The product of `first` and `second`, without common factors: two transforms without twiddle factors between them.
template <int first, int second, class T>
KUV_INLINE void coprimeOf(T* re, T* im) {
    constexpr int length = first * second;
    T re2[length], im2[length];
#pragma GCC unroll 16
    for (int i = 0; i < length; ++i) {
        const int from = (second * (i / second) + first * (i % second)) % length;
        re2[i] = re[from];
        im2[i] = im[from];
    }
#pragma GCC unroll 4
    for (int a = 0; a < first; ++a) transform<second, 1>(re2 + a * second, im2 + a * second);
#pragma GCC unroll 8
    for (int b = 0; b < second; ++b) transform<first, second>(re2 + b, im2 + b);
#pragma GCC unroll 16
    for (int k = 0; k < length; ++k) {
        re[k] = re2[k % first * second + k % second];
        im[k] = im2[k % first * second + k % second];
    }
}

constexpr Kuv32f halfRoot = 0.70710677f;

template <class T>
KUV_INLINE void eightOf(T* re, T* im) {
    const T c = LanesOf<T>::all(halfRoot);
    fourOf<2>(re, im);
    fourOf<2>(re + 1, im + 1);
    const T sum1 = re[3] + im[3], difference1 = im[3] - re[3], sum3 = re[7] + im[7], difference3 = im[7] - re[7];
    const T re0 = re[0], im0 = im[0], re1 = re[2], im1 = im[2], re2 = re[4], im2 = im[4], re3 = re[6], im3 = im[6];
    const T odd0Re = re[1], odd0Im = im[1], odd2Re = re[5], odd2Im = im[5];
    re[0] = re0 + odd0Re;
    im[0] = im0 + odd0Im;
    re[4] = re0 - odd0Re;
    im[4] = im0 - odd0Im;
    re[1] = plusProduct(c, sum1, re1);
    im[1] = plusProduct(c, difference1, im1);
    re[5] = minusProduct(c, sum1, re1);
    im[5] = minusProduct(c, difference1, im1);
    re[2] = re2 + odd2Im;
    im[2] = im2 - odd2Re;
    re[6] = re2 - odd2Im;
    im[6] = im2 + odd2Re;
    re[3] = plusProduct(c, difference3, re3);
    im[3] = minusProduct(c, sum3, im3);
    re[7] = minusProduct(c, difference3, re3);
    im[7] = plusProduct(c, sum3, im3);
}

template <class T>
KUV_INLINE void sixteenOf(T* re, T* im) {
    static constexpr Roots<16> roots = rootsOf<16>();
    T re2[16], im2[16];
#pragma GCC unroll 4
    for (int a = 0; a < 4; ++a) {
        fourOf<4>(re + a, im + a);
#pragma GCC unroll 4
        for (int k = 1; a > 0 && k < 4; ++k) {
            multiplyBy(re[a + 4 * k], im[a + 4 * k], LanesOf<T>::all(roots.of[a * k].re), LanesOf<T>::all(roots.of[a * k].im));
        }
    }
#pragma GCC unroll 4
    for (int k = 0; k < 4; ++k) fourOf<1>(re + 4 * k, im + 4 * k);
#pragma GCC unroll 16
    for (int k = 0; k < 16; ++k) {
        re2[k] = re[k % 4 * 4 + k / 4];
        im2[k] = im[k % 4 * 4 + k / 4];
    }
#pragma GCC unroll 16
    for (int k = 0; k < 16; ++k) {
        re[k] = re2[k];
        im[k] = im2[k];
    }
}

// Of `length` values, 1 to 16, that stand `step` apart; in place, in order.
template <int length, int step, class T>
KUV_INLINE void transform(T* re, T* im) {
    static_assert(step == 1 || length <= 4, "longer ones with a kernel of their own take neighbours");
    if constexpr (length == 2) transform2(re[0], im[0], re[step], im[step]);
    else if constexpr (length == 4) fourOf<step>(re, im);
    else if constexpr (length == 6) coprimeOf<2, 3>(re, im);
    else if constexpr (length == 8) eightOf(re, im);
    else if constexpr (length == 10) coprimeOf<2, 5>(re, im);
    else if constexpr (length == 12) coprimeOf<4, 3>(re, im);
    else if constexpr (length == 14) coprimeOf<2, 7>(re, im);
    else if constexpr (length == 15) coprimeOf<3, 5>(re, im);
    else if constexpr (length == 16) sixteenOf(re, im);
    else if constexpr (length > 1) oddOf<length, step>(re, im);
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
