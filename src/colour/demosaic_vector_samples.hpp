// What the vector demosaicing does differently for 8-bit and for 16-bit samples.
//
// Even and odd positions of a register of samples become lanes of twice the size, Wide. Two wide values pack into the halves of
// their lanes, a pair. U and V stay wide. Y goes back to the samples' own size, as Luminance, up to a constant that drops out of
// every difference.
#pragma once

#include "colour/demosaic.hpp"
#include "simd/integer.hpp"

namespace kuv::KUV_VARIANT {
namespace {

template <class V>
struct DemosaicSamples;

using WeightOf = int ColourWeights::*;

template <int bytes>
struct DemosaicSamples<Vector<Kuv8u, bytes>> {
    using V = Vector<Kuv8u, bytes>;
    using Luminance = V;
    using Wide = Vector<Kuv16s, bytes>;
    using Square = Vector<Kuv16u, bytes>;  // of a distance in chrominance; those reach 57922
    using Signed = Vector<Kuv8s, bytes>;
    static constexpr int bits = 8;

    static KUV_INLINE Wide even(V v) { return bitAnd(as<Kuv16s>(v), fill<Wide>(0xFF)); }
    static KUV_INLINE Wide odd(V v) { return as<Kuv16s>(shiftRight<8>(as<Kuv16u>(v))); }

    struct Sums {
        Wide y, u, v;  // before the shift; Y as an unsigned number
    };

    // In products of pairs the weights are signed bytes, and in U and V they fit. Green's in Y does not: there the samples are the
    // signed ones, and therefore less 128.
    class Conversion {
    public:
        Conversion(WeightOf low, WeightOf high, WeightOf single)
            : pairY_(pair(luminance.*low, luminance.*high)), pairU_(pair(chrominanceU.*low, chrominanceU.*high)),
              pairV_(pair(chrominanceV.*low, chrominanceV.*high)), singleU_(pair(chrominanceU.*single, conversionRounding / 2)),
              singleV_(pair(chrominanceV.*single, conversionRounding / 2)), singleY_(all(luminance.*single)),
              roundingY_(all(conversionRounding + 128 * (luminance.*low + luminance.*high))) {}

        // What the colour outside of the pair contributes. For U and V it is paired with 2, for the rounding.
        KUV_INLINE Sums operator()(Wide single) const {
            const V withTwo = as<Kuv8u>(bitOr(single, fill<Wide>(0x200)));
            return {add(multiplyLow(single, singleY_), roundingY_), multiplyAddPairs(withTwo, as<Kuv8s>(singleU_)),
                    multiplyAddPairs(withTwo, as<Kuv8s>(singleV_))};
        }
        KUV_INLINE Sums operator()(V pair, const Sums& rest) const {
            return {add(multiplyAddPairs(pairY_, as<Kuv8s>(bitXor(pair, fill<V>(0x80)))), rest.y),
                    add(multiplyAddPairs(pair, as<Kuv8s>(pairU_)), rest.u), add(multiplyAddPairs(pair, as<Kuv8s>(pairV_)), rest.v)};
        }

    private:
        static KUV_INLINE Wide all(int value) { return fill<Wide>(static_cast<Kuv16s>(value)); }
        static KUV_INLINE V pair(int low, int high) { return as<Kuv8u>(all((low & 0xFF) | high * 256)); }
        V pairY_, pairU_, pairV_, singleU_, singleV_;
        Wide singleY_, roundingY_;
    };

    // The upper bytes of the sums.
    static KUV_INLINE Luminance mergeLuminance(Wide evens, Wide odds) {
        return as<Kuv8u>(bitOr(as<Kuv16s>(shiftRight<8>(as<Kuv16u>(evens))), upperHalves(odds)));
    }
    static KUV_INLINE Wide upperHalves(Wide v) { return bitAnd(v, fill<Wide>(static_cast<Kuv16s>(0xFF00))); }

    static KUV_INLINE Square squaredDistance(Wide u, Wide v) {
        return as<Kuv16u>(add(multiplyLow(u, u), multiplyLow(v, v)));
    }
    // Not 0 where a > b. Differences of any size keep at least a bit when they are packed as signed ones.
    static KUV_INLINE V whereBeyond(const Square (&a)[2], const Square (&b)[2]) {
        const auto excess = [&](int i) { return as<Kuv16s>(subSaturated(a[i], b[i])); };
        return as<Kuv8u>(interleaveHalves(pack(excess(0), excess(1))));
    }
};

template <int bytes>
struct DemosaicSamples<Vector<Kuv16u, bytes>> {
    using V = Vector<Kuv16u, bytes>;
    using Luminance = Vector<Kuv16s, bytes>;
    using Wide = Vector<Kuv32s, bytes>;
    using Square = Wide;  // wraps, and compares as signed, as in the scalar code
    using Signed = Vector<Kuv16s, bytes>;
    static constexpr int bits = 16;

    static KUV_INLINE Wide even(V v) { return bitAnd(as<Kuv32s>(v), fill<Wide>(0xFFFF)); }
    static KUV_INLINE Wide odd(V v) { return as<Kuv32s>(shiftRight<16>(as<Kuv32u>(v))); }

    struct Sums {
        Wide y, u, v;  // before the shift
    };

    // Samples are multiplied as signed numbers, that is, less 32768. The weights of U and V add up to 0, so that this cancels; Y
    // comes out less 220 * 32768 / 256.
    class Conversion {
    public:
        Conversion(WeightOf low, WeightOf high, WeightOf single)
            : y_(luminance, low, high, single), u_(chrominanceU, low, high, single), v_(chrominanceV, low, high, single) {}

        // What the colour outside of the pair contributes: it is paired with 1, for the rounding.
        KUV_INLINE Sums operator()(Wide single) const {
            const Signed s = as<Kuv16s>(bitXor(single, fill<Wide>(0x18000)));
            return {multiplyAddPairs(s, y_.single), multiplyAddPairs(s, u_.single), multiplyAddPairs(s, v_.single)};
        }
        KUV_INLINE Sums operator()(V pair, const Sums& rest) const {
            const Signed s = as<Kuv16s>(bitXor(pair, fill<V>(0x8000)));
            return {add(multiplyAddPairs(s, y_.pair), rest.y), add(multiplyAddPairs(s, u_.pair), rest.u),
                    add(multiplyAddPairs(s, v_.pair), rest.v)};
        }

    private:
        struct Weights {
            Signed pair, single;
            KUV_INLINE Weights(const ColourWeights& w, WeightOf low, WeightOf high, WeightOf one)
                : pair(both(w.*low, w.*high)), single(both(w.*one, conversionRounding)) {}
            static KUV_INLINE Signed both(int low, int high) {
                return fillPairs<Signed>(static_cast<Kuv16s>(low), static_cast<Kuv16s>(high));
            }
        };
        Weights y_, u_, v_;
    };

    // The middle 16 bits of the sums.
    static KUV_INLINE Luminance mergeLuminance(Wide evens, Wide odds) {
        return as<Kuv16s>(blend<0xAA>(as<Kuv16u>(shiftRight<8>(evens)), as<Kuv16u>(shiftLeft<8>(odds))));
    }
    static KUV_INLINE Wide upperHalves(Wide v) { return bitAnd(v, fill<Wide>(-65536)); }

    static KUV_INLINE Square squaredDistance(Wide u, Wide v) { return add(multiplyLow(u, u), multiplyLow(v, v)); }
    // Not 0 where a > b.
    static KUV_INLINE V whereBeyond(const Square (&a)[2], const Square (&b)[2]) {
        return blend<0xAA>(as<Kuv16u>(greater(a[0], b[0])), as<Kuv16u>(greater(a[1], b[1])));
    }
};

}  // namespace
}  // namespace kuv::KUV_VARIANT
