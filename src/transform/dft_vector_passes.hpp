// Passes of a transform in order (T. G. Stockham): what a pass reads `count * stride` values apart, it writes `stride` apart, out
// of place. A pass of radix r takes transforms of `count * r` values, `stride` of them side by side, to r times as many of
// `count` values.
#pragma once

#include "simd/transpose.hpp"
#include "transform/dft_butterflies.hpp"

namespace kuv::KUV_VARIANT {
namespace {

template <int radix, class T>
KUV_INLINE void loadValues(Planes src, ptrdiff_t distance, T* re, T* im) {
#pragma GCC unroll 16
    for (int j = 0; j < radix; ++j) {
        re[j] = LanesOf<T>::from(src.re + j * distance);
        im[j] = LanesOf<T>::from(src.im + j * distance);
    }
}

// If `twiddled`, all but the first times a twiddle factor.
template <int radix, bool twiddled, class T>
KUV_INLINE void storeValues(Planes dst, ptrdiff_t distance, T* re, T* im, [[maybe_unused]] const Kuv32f* twiddles) {
    using All = LanesOf<T>;
#pragma GCC unroll 16
    for (int j = 0; j < radix; ++j) {
        if (twiddled && j > 0) multiplyBy(re[j], im[j], All::all(twiddles[2 * j - 2]), All::all(twiddles[2 * j - 1]));
        All::to(dst.re + j * distance, re[j]);
        All::to(dst.im + j * distance, im[j]);
    }
}

// All but the first times a twiddle factor in each lane; those are `distance` apart.
template <int radix, class T>
KUV_INLINE void multiplyValues(T* re, T* im, const Kuv32f* twiddles, ptrdiff_t distance) {
#pragma GCC unroll 16
    for (int j = 1; j < radix; ++j) {
        multiplyBy(re[j], im[j], LanesOf<T>::from(twiddles + (2 * j - 2) * distance), LanesOf<T>::from(twiddles + (2 * j - 1) * distance));
    }
}

// Transforms that lie side by side: `stride` is at least the number of T's lanes. A last vector may overlap the one before it.
template <int radix, class T, bool twiddled>
KUV_INLINE void passAlong(Planes src, Planes dst, ptrdiff_t count, ptrdiff_t stride, const Kuv32f* twiddles) {
    constexpr ptrdiff_t lanes = LanesOf<T>::count;
    for (ptrdiff_t p = 0; p < count; ++p, twiddles += 2 * (radix - 1)) {
        const Planes from = src.from(p * stride), to = dst.from(p * radix * stride);
        for (ptrdiff_t q = 0;;) {
            T re[radix], im[radix];
            loadValues<radix>(from.from(q), count * stride, re, im);
            transform<radix, 1>(re, im);
            storeValues<radix, twiddled>(to.from(q), stride, re, im, twiddles);
            if (q + lanes >= stride) break;
            q = q + 2 * lanes <= stride ? q + lanes : stride - lanes;
        }
    }
}

// Lanes of `values` go to places `radix` samples apart. Wide stores where there is a whole register to be stored: they are soon
// read again.
template <int radix>
KUV_INLINE void storeAcross(Kuv32f* to, Vector<Kuv32f, 16>* values) {
#pragma GCC unroll 4
    for (int j = 0; j < radix; j += 4) {
        transposeFours(values + j);
#pragma GCC unroll 4
        for (int k = 0; k < 4; ++k) store(to + k * radix + j, values[j + k]);
    }
}
#ifdef __AVX__
template <int radix>
KUV_INLINE void storeAcross(Kuv32f* to, Vector<Kuv32f, 32>* values) {
    constexpr int lowHalves = 0x20, highHalves = 0x31;
#pragma GCC unroll 4
    for (int j = 0; j < radix; j += 4) transposeFours(values + j);
    if constexpr (radix == 4) {
#pragma GCC unroll 2
        for (int k = 0; k < 4; k += 2) {
            _mm256_storeu_ps(to + 4 * k, _mm256_permute2f128_ps(values[k].raw, values[k + 1].raw, lowHalves));
            _mm256_storeu_ps(to + 4 * k + 16, _mm256_permute2f128_ps(values[k].raw, values[k + 1].raw, highHalves));
        }
        return;
    }
#pragma GCC unroll 4
    for (int k = 0; k < 4; ++k) {
#pragma GCC unroll 2
        for (int j = 0; j + 8 <= radix; j += 8) {
            _mm256_storeu_ps(to + k * radix + j, _mm256_permute2f128_ps(values[j + k].raw, values[j + 4 + k].raw, lowHalves));
            _mm256_storeu_ps(to + (k + 4) * radix + j,
                             _mm256_permute2f128_ps(values[j + k].raw, values[j + 4 + k].raw, highHalves));
        }
        if constexpr (radix % 8 == 4) {
            _mm_storeu_ps(to + k * radix + radix - 4, _mm256_castps256_ps128(values[radix - 4 + k].raw));
            _mm_storeu_ps(to + (k + 4) * radix + radix - 4, _mm256_extractf128_ps(values[radix - 4 + k].raw, 1));
        }
    }
}
#endif

template <int radix, class T>
KUV_INLINE void storeLanes(Kuv32f* to, T* values) {
    if constexpr (radix % 4 == 0) {
        storeAcross<radix>(to, values);
    } else {
        constexpr int lanes = LanesOf<T>::count;
        Kuv32f samples[radix][lanes];
#pragma GCC unroll 16
        for (int j = 0; j < radix; ++j) LanesOf<T>::to(samples[j], values[j]);
        for (int lane = 0; lane < lanes; ++lane) {
#pragma GCC unroll 16
            for (int j = 0; j < radix; ++j) storeSample(to + lane * radix + j, samples[j][lane]);
        }
    }
}

// The first pass, whose stride is 1. `count` is at least the number of lanes. The twiddle factors of a vector stand together if all
// vectors are full, else in planes.
template <int radix, class T, bool full>
KUV_INLINE void passAcross(Planes src, Planes dst, ptrdiff_t count, const Kuv32f* twiddles) {
    constexpr ptrdiff_t lanes = LanesOf<T>::count;
    for (ptrdiff_t p = 0;;) {
        T re[radix], im[radix];
        loadValues<radix>(src.from(p), count, re, im);
        transform<radix, 1>(re, im);
        const Kuv32f* const own = twiddles + (full ? 2 * (radix - 1) * p : p);
        const ptrdiff_t plane = full ? lanes : count;
        multiplyValues<radix>(re, im, own, plane);
        storeLanes<radix>(dst.re + radix * p, re);
        storeLanes<radix>(dst.im + radix * p, im);
        if (p + lanes >= count) break;
        p = full || p + 2 * lanes <= count ? p + lanes : count - lanes;
    }
}

constexpr ptrdiff_t tile = 16;

// Two passes at once, tile by tile, so that what is between them stays in the first-level cache. `count` is that of the second,
// the twiddle factors are those of single passes. Transforms lie side by side, and their number is a multiple of the tile.
template <int radix, int second, class T, bool twiddled>
void passPairAlong(Planes src, Planes dst, ptrdiff_t count, ptrdiff_t stride, const Kuv32f* twiddles,
                   const Kuv32f* secondTwiddles) {
    constexpr int lanes = LanesOf<T>::count;
    alignas(64) Kuv32f between[2][radix * second * tile];
    const auto at = [&](ptrdiff_t i) { return Planes{between[0] + i * tile, between[1] + i * tile}; };
    for (ptrdiff_t p = 0; p < count; ++p, secondTwiddles += 2 * (second - 1)) {
        for (ptrdiff_t q = 0; q < stride; q += tile) {
            for (int j = 0; j < second; ++j) {
                const ptrdiff_t from = p + count * j;
                const Kuv32f* const own = twiddles + 2 * (radix - 1) * from;
                for (ptrdiff_t h = 0; h < tile; h += lanes) {
                    T re[radix], im[radix];
                    loadValues<radix>(src.from(q + h + stride * from), count * second * stride, re, im);
                    transform<radix, 1>(re, im);
                    storeValues<radix, true>(at(j).from(h), second * tile, re, im, own);
                }
            }
            for (int k = 0; k < radix; ++k) {
                const Planes to = dst.from(q + stride * (k + radix * second * p));
                for (ptrdiff_t h = 0; h < tile; h += lanes) {
                    T re[second], im[second];
                    loadValues<second>(at(k * second).from(h), tile, re, im);
                    transform<second, 1>(re, im);
                    storeValues<second, twiddled>(to.from(h), stride * radix, re, im, secondTwiddles);
                }
            }
        }
    }
}

// The same of the first two passes; `count` is a multiple of the tile, the first radix of the lanes.
template <int radix, int second, class T>
void passPairAcross(Planes src, Planes dst, ptrdiff_t count, const Kuv32f* twiddles, const Kuv32f* secondTwiddles) {
    constexpr int lanes = LanesOf<T>::count;
    alignas(64) Kuv32f between[2][radix * second * tile];
    for (ptrdiff_t p = 0; p < count; p += tile) {
        for (ptrdiff_t j = 0; j < second; ++j) {
            for (ptrdiff_t h = 0; h < tile; h += lanes) {
                const ptrdiff_t from = p + h + count * j;
                const Kuv32f* const own = twiddles + 2 * (radix - 1) * from;
                T re[radix], im[radix];
                loadValues<radix>(src.from(from), count * second, re, im);
                transform<radix, 1>(re, im);
                multiplyValues<radix>(re, im, own, lanes);
                storeLanes<radix>(between[0] + (j * tile + h) * radix, re);
                storeLanes<radix>(between[1] + (j * tile + h) * radix, im);
            }
        }
        for (ptrdiff_t lane = 0; lane < tile; ++lane, secondTwiddles += 2 * (second - 1)) {
            const Planes to = dst.from(radix * second * (p + lane));
            for (ptrdiff_t h = 0; h < radix; h += lanes) {
                T re[second], im[second];
                loadValues<second>({between[0] + lane * radix + h, between[1] + lane * radix + h}, tile * radix, re, im);
                transform<second, 1>(re, im);
                storeValues<second, true>(to.from(h), radix, re, im, secondTwiddles);
            }
        }
    }
}

// An odd radix of any size, by the sums and differences of each pair; `roots` are those of the radix.
constexpr int mostPairs = 75;
template <class T>
__attribute__((noinline)) void passOdd(Kuv32f* srcRe, Kuv32f* srcIm, Kuv32f* dstRe, Kuv32f* dstIm, ptrdiff_t radix,
                                       ptrdiff_t count, ptrdiff_t stride, const Kuv32f* twiddles, const Kuv32f* roots) {
    const Planes src = {srcRe, srcIm}, dst = {dstRe, dstIm};
    constexpr ptrdiff_t lanes = LanesOf<T>::count;
    using All = LanesOf<T>;
    const ptrdiff_t distance = count * stride;
    T folded[4 * mostPairs];
    for (ptrdiff_t p = 0; p < count; ++p, twiddles += 2 * (radix - 1)) {
        for (ptrdiff_t q = 0;;) {
            const Planes from = src.from(p * stride + q), to = dst.from(p * radix * stride + q);
            const T firstRe = All::from(from.re), firstIm = All::from(from.im);
            T totalRe = firstRe, totalIm = firstIm;
            for (ptrdiff_t n = 1; n <= radix / 2; ++n) {
                const ptrdiff_t low = n * distance, high = (radix - n) * distance;
                const T lowRe = All::from(from.re + low), lowIm = All::from(from.im + low);
                const T highRe = All::from(from.re + high), highIm = All::from(from.im + high);
                T* const pair = folded + 4 * (n - 1);
                pair[0] = lowRe + highRe;
                pair[1] = lowIm + highIm;
                pair[2] = lowRe - highRe;
                pair[3] = lowIm - highIm;
                totalRe = totalRe + pair[0];
                totalIm = totalIm + pair[1];
            }
            All::to(to.re, totalRe);
            All::to(to.im, totalIm);
            for (ptrdiff_t k = 1; k <= radix / 2; ++k) {
                T evenRe = firstRe, evenIm = firstIm, oddRe = All::all(0), oddIm = oddRe;
                const T* pair = folded;
                for (ptrdiff_t n = 0, index = k; n < radix / 2; ++n, pair += 4) {
                    const T cosine = All::all(roots[2 * index]), sine = All::all(roots[2 * index + 1]);
                    evenRe = plusProduct(pair[0], cosine, evenRe);
                    evenIm = plusProduct(pair[1], cosine, evenIm);
                    oddRe = plusProduct(pair[2], sine, oddRe);
                    oddIm = plusProduct(pair[3], sine, oddIm);
                    index += k;
                    if (index >= radix) index -= radix;
                }
                const auto finish = [&](ptrdiff_t j, T re, T im) {
                    if (count > 1) multiplyBy(re, im, All::all(twiddles[2 * j - 2]), All::all(twiddles[2 * j - 1]));
                    All::to(to.re + j * stride, re);
                    All::to(to.im + j * stride, im);
                };
                finish(k, evenRe - oddIm, evenIm + oddRe);
                finish(radix - k, evenRe + oddIm, evenIm - oddRe);
            }
            if (q + lanes >= stride) break;
            q = q + 2 * lanes <= stride ? q + lanes : stride - lanes;
        }
    }
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
