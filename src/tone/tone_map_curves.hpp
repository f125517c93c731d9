// Tables of tone maps from control points.
#pragma once

#include "core/integers.hpp"
#include "core/rows.hpp"
#include "simd/real.hpp"
#include "tone/tone_map_layout.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// Differences wrap.
KUV_INLINE Kuv32s difference(Kuv32s a, Kuv32s b) { return static_cast<Kuv32s>(static_cast<Kuv32u>(a) - static_cast<Kuv32u>(b)); }

// The control points of a channel.
struct TonePoints {
    const Kuv32s* values;
    const Kuv32s* levels;
    Kuv32s count;

    KUV_INLINE Kuv32s value(ptrdiff_t k) const { return loadSample(values + k); }
    KUV_INLINE Kuv32s level(ptrdiff_t k) const { return loadSample(levels + k); }
};

// NaN becomes 0.
template <int bytes>
KUV_INLINE Vector<Kuv64f, bytes> limitedToWords(Vector<Kuv64f, bytes> v) {
    return minimum(maximum(v, fill<Vector<Kuv64f, bytes>>(0)), fill<Vector<Kuv64f, bytes>>(65535));
}

// A straight line between two control points, of the sample.
class Line {
public:
    Line(const TonePoints& points, ptrdiff_t k)
        : slope_(static_cast<Kuv64f>(difference(points.value(k + 1), points.value(k))) /
                 static_cast<Kuv64f>(difference(points.level(k + 1), points.level(k)))),
          offset_((points.value(k) + 0.5) - points.level(k) * slope_) {}

    static constexpr bool limitedFirst = false;
    static constexpr Kuv32s origin() { return 0; }

    template <class D>
    KUV_INLINE D operator()(D x) const {
        return plusProduct(x, LanesOf<D>::all(slope_), LanesOf<D>::all(offset_));
    }

private:
    Kuv64f slope_, offset_;
};

// The cubic through four control points, of the distance to the second one.
template <bool limitFirst>
class Cubic {
public:
    Cubic(const TonePoints& points, ptrdiff_t s) : origin_(points.level(s + 1)), half_(points.value(s + 1) + 0.5) {
        const auto fromOrigin = [](Kuv32s a, Kuv32s b) { return static_cast<Kuv64f>(difference(a, b)); };
        const Kuv64f u = fromOrigin(points.level(s), origin_), v = fromOrigin(points.level(s + 2), origin_),
                     w = fromOrigin(points.level(s + 3), origin_);
        const Kuv32s base = points.value(s + 1);
        const Kuv64f p = fromOrigin(points.value(s), base), q = fromOrigin(points.value(s + 2), base),
                     r = fromOrigin(points.value(s + 3), base);
        const Kuv64f u2 = u * u, v2 = v * v, w2 = w * w, u3 = u2 * u, v3 = v2 * v, w3 = w2 * w;
        const Kuv64f m1 = v2 * u3 - u2 * v3, m2 = w3 * u2 - u3 * w2, m3 = v3 * w2 - v2 * w3;
        const Kuv64f d = 1 / (m1 * w + (m2 * v + m3 * u));
        a_ = (m1 * r + (m2 * q + m3 * p)) * d;
        c_ = ((v * u2 - u * v2) * r + ((-u2 * w + u * w2) * q + (v2 * w - w2 * v) * p)) * d;
        b_ = ((w * u3 - u * w3) * q + (p * (-w * v3 + v * w3) + (-u3 * v + v3 * u) * r)) * d;
    }

    static constexpr bool limitedFirst = limitFirst;
    KUV_INLINE Kuv32s origin() const { return origin_; }

    template <class D>
    KUV_INLINE D operator()(D d) const {
        const D square = multiply(d, d);
        return plusProduct(d, plusProduct(LanesOf<D>::all(c_), square, LanesOf<D>::all(a_)),
                           plusProduct(square, LanesOf<D>::all(b_), LanesOf<D>::all(half_)));
    }

private:
    Kuv32s origin_;
    Kuv64f half_, a_, b_, c_;
};

// Toward zero; what does not fit, NaN too, gives the lowest integer.
KUV_INLINE Kuv32s cut(Kuv64f value) {
    return value > -2147483649.0 && value < 2147483648.0 ? static_cast<Kuv32s>(value) : INT32_MIN;
}

// table[x] = curve(x) for x in first .. last - 1.
template <class T, class Curve>
void fillWithCurve(T* table, Kuv32s first, Kuv32s last, const Curve& curve) {
    constexpr Kuv32s max = static_cast<Kuv32s>(toneEntries<T> - 1);
    if constexpr (!hasVectors) {
        for (Kuv32s x = first; x < last; ++x) {
            Kuv64f value = curve(static_cast<Kuv64f>(difference(x, curve.origin())));
            if constexpr (Curve::limitedFirst) value = value < 0 ? 0 : value > max ? max : value;
            table[x] = static_cast<T>(clamped(cut(value), 0, max));
        }
    } else {
        using Four = Vector<Kuv32s, 16>;
        using Doubles = Native<Kuv64f>;
        const auto four = [&](Kuv32s x) {
            const Four distance = add(fill<Four>(difference(x, curve.origin())), Four{_mm_setr_epi32(0, 1, 2, 3)});
            return inDoubles(distance, [&](Doubles d) {
                Doubles value = curve(d);
                if constexpr (Curve::limitedFirst) value = limitedToWords(value);
                return truncated(value);
            });
        };
        for (Kuv32s x = first; x < last; x += 8) {
            const Four low = four(x), high = four(x + 4);
            T eight[16 / sizeof(T)];
            if constexpr (sizeof(T) == 1) {
                const Vector<Kuv16s, 16> words = pack(low, high);
                store(eight, packUnsigned(words, words));
            } else {
                const auto positive = [](Four v) { return maximum(v, fill<Four>(0)); };
                store(eight, packUnsigned(positive(low), positive(high)));
            }
            const Kuv32s count = smaller(last - x, 8);
            __builtin_memcpy(table + x, eight, static_cast<size_t>(count) * sizeof(T));
        }
    }
}

template <class T>
void fillIdentity(T* table, Kuv32s first, Kuv32s last) {
    for (Kuv32s x = first; x < last; ++x) table[x] = static_cast<T>(x);
}

template <class T>
void fillSpan(T* table, Kuv32s first, Kuv32s last, Kuv32s value) {
    constexpr Kuv32s max = static_cast<Kuv32s>(toneEntries<T> - 1);
    for (Kuv32s x = first; x < last; ++x) table[x] = static_cast<T>(clamped(value, 0, max));
}

// Intervals in their order: where levels do not rise, later ones write over earlier ones.
template <class T>
void fillTable(T* table, const TonePoints& points, Kuv32s curve) {
    constexpr Kuv32s entries = static_cast<Kuv32s>(toneEntries<T>), max = entries - 1;
    const ptrdiff_t intervals = ptrdiff_t{points.count} - 1;
    fillIdentity(table, 0, clamped(points.level(0), 0, entries));
    for (ptrdiff_t k = 0; k < intervals; ++k) {
        const Kuv32s begin = points.level(k), end = points.level(k + 1), last = clamped(end, 0, entries);
        if (curve == kuvLutStep) {
            fillSpan(table, clamped(begin, 0, entries), last, points.value(k));
            continue;
        }
        if (end <= begin) continue;
        const Kuv32s first = clamped(begin, 0, max);
        if (last - first == 1) {
            fillSpan(table, first, last, points.value(k));
        } else if (curve == kuvLutLinear) {
            fillWithCurve(table, first, last, Line(points, k));
        } else {
            const ptrdiff_t highest = intervals - 3, before = larger(k - 1, 0);
            fillWithCurve(table, first, last, Cubic<sizeof(T) == 2>(points, smaller(before, highest)));
        }
    }
    fillIdentity(table, clamped(points.level(intervals), 0, entries), entries);
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
