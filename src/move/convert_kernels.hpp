// Conversions of samples. Each is an operation on a single sample, which states the arithmetic, and one on a block of them.
#pragma once

#include "simd/bytes.hpp"
#include "simd/mask.hpp"
#include "simd/real.hpp"
#include "simd/rows.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// Four registers of 32 bits make one of bytes.
using Integers = Native<Kuv32s>;
using Singles = Vector<Kuv32f, Integers::bytes>;
constexpr ptrdiff_t fourRegisters = 4 * Integers::lanes;

template <class S>
struct ToSingles {
    static constexpr ptrdiff_t blockSamples = fourRegisters;

    KUV_INLINE Kuv32f operator()(S x) const { return static_cast<Kuv32f>(x); }

    template <class Write>
    KUV_INLINE void block(const S* src, Kuv32f* dst, Write write) const {
        for (ptrdiff_t i = 0; i < blockSamples; i += Integers::lanes) write(dst + i, toReals(loadWidened<Integers>(src + i)));
    }
};

struct WordsToBytes {
    using Lanes = Native<Kuv16u>;
    static constexpr ptrdiff_t blockSamples = 2 * Lanes::lanes;

    KUV_INLINE Kuv8u operator()(Kuv16u x) const { return static_cast<Kuv8u>(x < 255 ? x : 255); }

    template <class Write>
    KUV_INLINE void block(const Kuv16u* src, Kuv8u* dst, Write write) const {
        const auto limited = [](const Kuv16u* from) {
            return as<Kuv16s>(minimum(load<Lanes>(from), as<Kuv16u>(fill<Native<Kuv16s>>(255))));
        };
        write(dst, narrowed(limited(src), limited(src + Lanes::lanes)));
    }
};

enum class Cut { towardZero, nearestEven, nearestAway };

// Vectors round as the processor is told to: towardZero and nearestAway want it to be toward zero, nearestEven to the nearest.
template <Cut cut>
struct SinglesToBytes {
    static constexpr ptrdiff_t blockSamples = fourRegisters;

    KUV_INLINE Kuv8u operator()(Kuv32f x) const {
        if (x >= 255.0f) return 255;
        if (!(x > 0.0f)) return 0;  // a NaN, too
        const int whole = static_cast<int>(x);
        const Kuv32f rest = x - static_cast<Kuv32f>(whole);  // exact
        const bool up = cut == Cut::nearestAway   ? rest >= 0.5f
                        : cut == Cut::nearestEven ? rest > 0.5f || (rest == 0.5f && whole % 2 != 0)
                                                  : false;
        return static_cast<Kuv8u>(whole + up);
    }

    // A NaN becomes the lowest integer, and what is below 0 saturates when it is narrowed.
    static KUV_INLINE Integers integersOf(const Kuv32f* from) {
        const Singles x = minimum(fill<Singles>(255.0f), load<Singles>(from));
        if constexpr (cut == Cut::nearestEven) return rounded(x);
        if constexpr (cut == Cut::nearestAway) return truncated(add(x, fill<Singles>(0.5f)));
        return truncated(x);
    }

    template <class Write>
    KUV_INLINE void block(const Kuv32f* src, Kuv8u* dst, Write write) const {
        constexpr ptrdiff_t lanes = Integers::lanes;
        write(dst, narrowed(integersOf(src), integersOf(src + lanes), integersOf(src + 2 * lanes), integersOf(src + 3 * lanes)));
    }
};

struct BytesToRange {
    static constexpr ptrdiff_t blockSamples = fourRegisters;

    Kuv64f step, lowest;

    BytesToRange(Kuv32f vMin, Kuv32f vMax) : step((Kuv64f{vMax} - Kuv64f{vMin}) / 255.0), lowest(vMin) {}

    KUV_INLINE Kuv32f operator()(Kuv8u x) const { return static_cast<Kuv32f>(step * x + lowest); }

    template <class Write>
    KUV_INLINE void block(const Kuv8u* src, Kuv32f* dst, Write write) const {
        using Doubles = Native<Kuv64f>;
        for (ptrdiff_t i = 0; i < blockSamples; i += 4) {
            write(dst + i, inDoubles(loadWidened<Vector<Kuv32s, 16>>(src + i), [this](Doubles x) {
                return toSingles(add(multiply(fill<Doubles>(step), x), fill<Doubles>(lowest)));
            }));
        }
    }
};

// Blocks are estimated in single precision, from below and from above. Where both estimates come to the same, so does what lies
// between them; else the block is computed as stated.
class RangeToBytes {
public:
    static constexpr ptrdiff_t blockSamples = fourRegisters;

    RangeToBytes(Kuv32f vMin, Kuv32f vMax) : vMin_(vMin), vMax_(vMax) {
        const Kuv64f range = Kuv64f{vMax} - Kuv64f{vMin};
        factor_ = 255.0 / range;
        const Kuv64f offset = -(vMin * factor_);
        start_ = 0.5 + offset;
        if constexpr (hasVectors) {
            // In units of 2^-24, and twice that if the processor does not round to the nearest: the factor, the product, the constant and
            // the sum are each off by half a unit of their size, and the largest counts.
            const Kuv64f largest = 255.0 + __builtin_fabs(offset);
            const Kuv64f off = 1.01 * 0x1p-24 * (4.0 * largest + 2.0 * (__builtin_fabs(offset) + 1.0) + 2.0 * 256.0);
            estimates_ = off < 0x1p-6 && range > 0x1p-64 && range < 0x1p64;
            estimatedFactor_ = estimates_ ? static_cast<Kuv32f>(factor_) : 0.0f;
            below_ = estimates_ ? static_cast<Kuv32f>(start_ - off) : 0.0f;
            above_ = estimates_ ? static_cast<Kuv32f>(start_ + off) : 0.0f;
        }
    }

    KUV_INLINE Kuv8u operator()(Kuv32f x) const {
        if (x >= vMax_) return 255;
        if (x <= vMin_) return 0;
        const Kuv64f y = start_ + x * factor_;
        if (!(y >= 0.0 && y < 256.0)) return 0;  // a NaN
        const int whole = static_cast<int>(y);
        return static_cast<Kuv8u>(whole % 2 != 0 && whole == y ? whole - 1 : whole);
    }

    template <class Write>
    KUV_INLINE void block(const Kuv32f* src, Kuv8u* dst, Write write) const {
        if (!estimates_) return computed(src, dst, write);
        const Singles top = fill<Singles>(vMax_), factor = fill<Singles>(estimatedFactor_);
        const Singles below = fill<Singles>(below_), above = fill<Singles>(above_);
        Integers low[4], high[4];
#pragma GCC unroll 4
        for (int i = 0; i < 4; ++i) {
            const Singles product = multiply(minimum(top, load<Singles>(src + i * Integers::lanes)), factor);
            low[i] = truncated(add(product, below));
            high[i] = truncated(add(product, above));
        }
        const auto lows = narrowed(low[0], low[1], low[2], low[3]), highs = narrowed(high[0], high[1], high[2], high[3]);
        constexpr Kuv32u all = Integers::bytes == 32 ? 0xFFFFFFFF : 0xFFFF;
        if (bitsOf(equal(lows, highs)) != all) return computed(src, dst, write);
        write(dst, lows);
    }

private:
    using Four = Vector<Kuv32f, 16>;

    KUV_INLINE Vector<Kuv32s, 16> computedFour(const Kuv32f* from) const {
        using Doubles = Native<Kuv64f>;
        const Four x = load<Four>(from);
        const auto whole = inDoubles(x, [this](Doubles v) {
            const Doubles y = add(fill<Doubles>(start_), multiply(v, fill<Doubles>(factor_)));
            // Of an integer y also the next lower integer, whose bits choose the even one of the two.
            const auto cut = truncated(y);
            const Doubles slightly = whereEqual(fill<Doubles>(0x1p-20), y, toDoubles<Doubles>(cut));
            const auto lower = truncated(sub(y, slightly));
            return bitAnd(cut, bitOr(lower, fill<Vector<Kuv32s, 16>>(~1)));
        });
        const auto above = asIntegers(atLeast(x, fill<Four>(vMax_))), below = asIntegers(atLeast(fill<Four>(vMin_), x));
        return bitAnd(bitOr(bitAndNot(below, whole), above), fill<Vector<Kuv32s, 16>>(0xFF));
    }

    template <class Write>
    __attribute__((noinline)) void computed(const Kuv32f* src, Kuv8u* dst, Write write) const {
        const auto integers = [&](int i) {
            return fromHalves<Integers>([&](int lane) { return computedFour(src + i * Integers::lanes + lane); });
        };
        write(dst, narrowed(integers(0), integers(1), integers(2), integers(3)));
    }

    Kuv64f factor_, start_;
    Kuv32f vMin_, vMax_;
    bool estimates_ = false;
    Kuv32f estimatedFactor_ = 0, below_ = 0, above_ = 0;
};

}  // namespace
}  // namespace kuv::KUV_VARIANT
