// Tone maps as the header states them: tables, and the block that holds them, byte by byte.
#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

#include "kuvcv.h"
#include "support/images.hpp"

namespace kuvtest {

// Control points of a channel.
struct Curve {
    std::vector<Kuv32s> levels, values;

    int count() const { return static_cast<int>(levels.size()); }
};

inline Kuv32s wrapped(Kuv64s value) { return static_cast<Kuv32s>(static_cast<Kuv32u>(static_cast<Kuv64u>(value))); }
inline Kuv32s minus(Kuv32s a, Kuv32s b) { return wrapped(Kuv64s{a} - b); }
inline Kuv64s limit(Kuv64s value, Kuv64s most) { return std::clamp<Kuv64s>(value, 0, most); }

inline Kuv64s towardZero(double value) {
    const double whole = std::trunc(value);
    return whole >= INT32_MIN && whole <= INT32_MAX ? static_cast<Kuv64s>(whole) : INT32_MIN;
}

// Whether a product and the sum that follows it are rounded once.
inline double productPlus(bool fused, double a, double b, double c) {
    if (fused) return std::fma(a, b, c);
    const double product = a * b;
    return product + c;
}

class ToneTableReference {
public:
    ToneTableReference(int sampleBytes, bool fused) : max_(sampleBytes == 1 ? 255 : 65535), fused_(fused) {}

    // `rule` is what the channels together lead to: cubic only if each has four levels.
    std::vector<Kuv32s> table(Kuv32s rule, const Curve& curve) const {
        std::vector<Kuv32s> entries(static_cast<std::size_t>(max_) + 1, -1);
        const auto set = [&](Kuv64s x, Kuv64s value) { entries[static_cast<std::size_t>(x)] = static_cast<Kuv32s>(value); };
        const int n = curve.count();
        for (Kuv64s x = 0; x < curve.levels[0] && x <= max_; ++x) set(x, x);
        for (int k = 0; k + 1 < n; ++k) {
            const Kuv32s from = at(curve.levels, k), to = at(curve.levels, k + 1);
            const Kuv64s end = limit(to, max_ + 1);
            if (rule == kuvLutStep) {
                for (Kuv64s x = limit(from, max_ + 1); x < end; ++x) set(x, limit(at(curve.values, k), max_));
            } else if (to > from) {
                const Kuv64s begin = limit(from, max_);
                if (end - begin == 1) {
                    set(begin, limit(at(curve.values, k), max_));
                } else {
                    for (Kuv64s x = begin; x < end; ++x) set(x, rule == kuvLutLinear ? linear(curve, k, x) : cubic(curve, k, x));
                }
            }
        }
        for (Kuv64s x = std::max<Kuv64s>(curve.levels.back(), 0); x <= max_; ++x) set(x, x);
        return entries;
    }

private:
    static Kuv32s at(const std::vector<Kuv32s>& list, int k) { return list[static_cast<std::size_t>(k)]; }

    Kuv64s linear(const Curve& curve, int k, Kuv64s x) const {
        const double rise = minus(at(curve.values, k + 1), at(curve.values, k)), run = minus(at(curve.levels, k + 1), at(curve.levels, k));
        const double slope = rise / run, product = at(curve.levels, k) * slope;
        const double offset = (at(curve.values, k) + 0.5) - product;
        return limit(towardZero(productPlus(fused_, static_cast<double>(x), slope, offset)), max_);
    }

    Kuv64s cubic(const Curve& curve, int k, Kuv64s x) const {
        const int n = curve.count(), s = std::min(std::max(k - 1, 0), n - 4);
        const Kuv32s level = at(curve.levels, s + 1), value = at(curve.values, s + 1);
        const double u = minus(at(curve.levels, s), level), v = minus(at(curve.levels, s + 2), level),
                     w = minus(at(curve.levels, s + 3), level);
        const double P = minus(at(curve.values, s), value), Q = minus(at(curve.values, s + 2), value),
                     R = minus(at(curve.values, s + 3), value);
        const double uu = u * u, vv = v * v, ww = w * w, uuu = uu * u, vvv = vv * v, www = ww * w;
        const double M1 = (vv * uuu) - (uu * vvv), M2 = (www * uu) - (uuu * ww), M3 = (vvv * ww) - (vv * www);
        const double D = 1.0 / ((M1 * w) + ((M2 * v) + (M3 * u)));
        const double a = ((M1 * R) + ((M2 * Q) + (M3 * P))) * D;
        const double c = ((((v * uu) - (u * vv)) * R) + ((((-uu) * w + u * ww) * Q) + (((vv * w) - (ww * v)) * P))) * D;
        const double b = ((((w * uuu) - (u * www)) * Q) + ((P * (((-w) * vvv) + (v * www))) + ((((-uuu) * v) + (vvv * u)) * R))) * D;
        const double d = minus(static_cast<Kuv32s>(x), level), dd = d * d;
        double r = productPlus(fused_, d, productPlus(fused_, c, dd, a), productPlus(fused_, dd, b, value + 0.5));
        if (max_ == 65535) {
            if (r < 0.0) r = 0.0;
            if (r > 65535.0) r = 65535.0;
        }
        return limit(towardZero(r), max_);
    }

    Kuv64s max_;
    bool fused_;
};

// What a search among the control points gives, whatever their order.
inline int searched(const Curve& curve, int x) {
    if (x < curve.levels.front() || x >= curve.levels.back()) return x;
    int base = 0, length = curve.count() - 1;
    while (length > 1) {
        const int half = length / 2;
        if (x >= curve.levels[static_cast<std::size_t>(base + half)]) {
            base += half;
            length -= half;
        } else {
            length = half;
        }
    }
    return static_cast<int>(limit(curve.values[static_cast<std::size_t>(base)], 65535));
}

inline int usedChannels(Kuv32s selector) { return selector == kuvChannelsC1 ? 1 : selector == kuvChannelsC4 ? 4 : 3; }

// The arguments of an Init.
struct MapSource {
    Kuv32s interpolation, selector;
    int sampleBytes;
    std::vector<Curve> curves;  // one for each channel

    std::vector<const Kuv32s*> levels() const {
        std::vector<const Kuv32s*> all;
        for (const Curve& each : curves) all.push_back(each.levels.data());
        return all;
    }
    std::vector<const Kuv32s*> values() const {
        std::vector<const Kuv32s*> all;
        for (const Curve& each : curves) all.push_back(each.values.data());
        return all;
    }
    std::vector<Kuv32s> counts() const {
        std::vector<Kuv32s> all;
        for (const Curve& each : curves) all.push_back(each.count());
        return all;
    }
    Kuv32s rule() const {
        const auto few = [](const Curve& each) { return each.count() < 4; };
        return interpolation == kuvLutCubic && std::any_of(curves.begin(), curves.end(), few) ? kuvLutLinear : interpolation;
    }

    KuvStatus size(Kuv32s* bytes) const {
        return kuviLUT_GetSize(interpolation, sampleBytes == 1 ? kuvDataType8u : kuvDataType16u, selector, {1, 1}, counts().data(), bytes);
    }
    // The call, with nothing left to allocate.
    auto initOn(void* block) const {
        return [*this, block, v = values(), l = levels(), n = counts()] {
            const auto function = sampleBytes == 1 ? kuviLUT_Init_8u : kuviLUT_Init_16u;
            return function(interpolation, selector, {1, 1}, v.data(), l.data(), n.data(), static_cast<KuviToneMapSpec*>(block));
        };
    }
    KuvStatus init(void* block) const { return initOn(block)(); }
};

inline Kuv32u identityOf(Kuv32s interpolation, int sampleBytes, Kuv32s selector) {
    const Kuv32u words[3][2][4] = {{{0x1234567, 0x1234568, 0x1234569, 0x123456A}, {0x123456B, 0x123456C, 0x123456D, 0x123456E}},
                                   {{0x1234577, 0x1234578, 0x1234579, 0x123457A}, {0x123457B, 0x123457C, 0x123457D, 0x123457E}},
                                   {{0x1234587, 0x1234588, 0x1234589, 0x123458A}, {0x123458B, 0x123458C, 0x123458D, 0x123458E}}};
    const int curve = interpolation == kuvLutStep ? 0 : interpolation == kuvLutLinear ? 1 : 2;
    const int layout = selector == kuvChannelsC1 ? 0 : selector == kuvChannelsC3 ? 1 : selector == kuvChannelsC4 ? 2 : 3;
    return words[curve][sampleBytes - 1][layout];
}

// Where the data begin in a block at this address.
inline std::size_t firstPosition(const void* block) {
    const auto start = reinterpret_cast<std::uintptr_t>(block);
    return 120 + ((0 - (start + 56)) % 64);
}

// Writes into `copy` what an Init leaves of a block that stands at `block`: words are a header's, then tables or control points.
inline void writeMap(const MapSource& source, bool fused, const void* block, unsigned char* copy) {
    const int used = usedChannels(source.selector);
    const bool words = source.sampleBytes == 2, step = words && source.interpolation == kuvLutStep;
    const auto word = [&](int index, std::size_t value) { store(copy, index, static_cast<Kuv32u>(value)); };
    std::size_t next = firstPosition(block);
    const auto putPoints = [&](int c) {
        const Curve& curve = source.curves[static_cast<std::size_t>(c)];
        word(2 + c, next);
        for (const Kuv32s each : curve.values) store(copy + next, 0, each), next += 4;
        word(6 + c, next);
        for (const Kuv32s each : curve.levels) store(copy + next, 0, each), next += 4;
        word(10 + c, curve.levels.size());
    };
    if (step && source.selector == kuvChannelsC3) {
        for (int c = 0; c < used; ++c) putPoints(c);
        while ((reinterpret_cast<std::uintptr_t>(block) + next) % 64 != 0) ++next;
    }
    word(1, next);
    for (int c = 0; c < used; ++c) {
        for (const Kuv32s each :
             ToneTableReference(source.sampleBytes, fused).table(source.rule(), source.curves[static_cast<std::size_t>(c)])) {
            if (words) store(copy + next, 0, static_cast<Kuv16u>(each));
            else copy[next] = static_cast<unsigned char>(each);
            next += static_cast<std::size_t>(source.sampleBytes);
        }
        if (source.interpolation == kuvLutCubic) word(10 + c, source.curves[static_cast<std::size_t>(c)].levels.size());
    }
    if (step && source.selector == kuvChannelsC1) putPoints(0);
    word(0, identityOf(source.interpolation, source.sampleBytes, source.selector));
}

}  // namespace kuvtest
