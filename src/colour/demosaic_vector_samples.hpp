// What the vector demosaicing does differently for 8-bit and for 16-bit samples.
//
// Even and odd positions of a register of samples become lanes of twice the size, Wide. Y, U and V are stored in the samples' own
// size, as Value, up to a constant that drops out of every difference. Squared distances of chrominance have twice the size:
// those of 8-bit data reach 57922 and are kept less 32768, so that signed comparisons order them; those of 16-bit data wrap and
// compare as signed, as the scalar code does.
#pragma once

#include "colour/demosaic.hpp"
#include "simd/integer.hpp"

namespace kuv::KUV_VARIANT {
namespace {

template <class V>
struct DemosaicSamples;

template <int bytes>
struct DemosaicSamples<Vector<Kuv8u, bytes>> {
    using V = Vector<Kuv8u, bytes>;
    using Value = V;  // Y; U + 128; V + 128
    using Wide = Vector<Kuv16s, bytes>;
    using Signed = Vector<Kuv8s, bytes>;
    using Square = Vector<Kuv16s, bytes>;
    using Squares = Widened<Square>;

    static KUV_INLINE Wide even(V v) { return bitAnd(as<Kuv16s>(v), fill<Wide>(0xFF)); }
    static KUV_INLINE Wide odd(V v) { return as<Kuv16s>(shiftRight<8>(as<Kuv16u>(v))); }
    static KUV_INLINE V merge(Wide evens, Wide odds) { return as<Kuv8u>(bitOr(evens, shiftLeft<8>(odds))); }
    static KUV_INLINE V evenSites() { return as<Kuv8u>(fill<Wide>(0xFF)); }
    static KUV_INLINE V oddToEven(V v) { return as<Kuv8u>(shiftRight<8>(as<Kuv16u>(v))); }
    static KUV_INLINE V evenToOdd(V v) { return as<Kuv8u>(shiftLeft<8>(as<Kuv16s>(v))); }
    static KUV_INLINE Wide saturated(Wide v) { return minimum(maximum(v, fill<Wide>(0)), fill<Wide>(0xFF)); }

    struct WideConverted {
        Wide y, u, v;  // before the shift
    };

    // The weighted sums fit 16 bits: Y as an unsigned number, U and V as signed ones.
    class Conversion {
    public:
        explicit Conversion(bool redRow) {
            const auto pair = [&](ColourWeights w) {
                const int own = redRow ? w.red : w.blue, other = redRow ? w.blue : w.red;
                return as<Kuv8s>(fill<Wide>(static_cast<Kuv16s>((own & 0xFF) | other * 256)));
            };
            y_ = pair(luminance);
            u_ = pair(chrominanceU);
            v_ = pair(chrominanceV);
        }

        KUV_INLINE WideConverted operator()(Wide own, Wide other, Wide green) const {
            const V pair = merge(own, other);
            const auto weigh = [&](Signed weights, int greenWeight) {
                const Wide greenPart = add(multiplyLow(green, fill<Wide>(static_cast<Kuv16s>(greenWeight))),
                                           fill<Wide>(conversionRounding));
                return add(multiplyAddPairs(pair, weights), greenPart);
            };
            return {weigh(y_, luminance.green), weigh(u_, chrominanceU.green), weigh(v_, chrominanceV.green)};
        }

    private:
        Signed y_, u_, v_;
    };

    // The upper bytes of the sums.
    static KUV_INLINE V mergeLuminance(Wide evens, Wide odds) {
        const Wide upper = fill<Wide>(static_cast<Kuv16s>(0xFF00));
        return as<Kuv8u>(bitOr(as<Kuv16s>(shiftRight<8>(as<Kuv16u>(evens))), bitAnd(odds, upper)));
    }
    static KUV_INLINE V mergeChrominance(Wide evens, Wide odds) { return bitXor(mergeLuminance(evens, odds), fill<V>(0x80)); }

    static KUV_INLINE Squares squaredDistance(V u, V v) {
        const V zero = fill<V>(0);
        const auto square = [](V x) { return multiplyLow(as<Kuv16s>(x), as<Kuv16s>(x)); };
        const auto sum = [&](V a, V b) { return bitXor(add(square(a), square(b)), fill<Square>(-32768)); };
        return {sum(interleaveLow(u, zero), interleaveLow(v, zero)), sum(interleaveHigh(u, zero), interleaveHigh(v, zero))};
    }
};

template <int bytes>
struct DemosaicSamples<Vector<Kuv16u, bytes>> {
    using V = Vector<Kuv16u, bytes>;
    using Value = Vector<Kuv16s, bytes>;  // Y - 28160; U; V
    using Wide = Vector<Kuv32s, bytes>;
    using Signed = Vector<Kuv16s, bytes>;
    using Square = Vector<Kuv32s, bytes>;
    using Squares = Widened<Square>;

    static KUV_INLINE Wide even(V v) { return bitAnd(as<Kuv32s>(v), fill<Wide>(0xFFFF)); }
    static KUV_INLINE Wide odd(V v) { return as<Kuv32s>(shiftRight<16>(as<Kuv32u>(v))); }
    static KUV_INLINE V merge(Wide evens, Wide odds) { return as<Kuv16u>(bitOr(evens, shiftLeft<16>(odds))); }
    static KUV_INLINE V evenSites() { return as<Kuv16u>(fill<Wide>(0xFFFF)); }
    static KUV_INLINE V oddToEven(V v) { return as<Kuv16u>(shiftRight<16>(as<Kuv32u>(v))); }
    static KUV_INLINE V evenToOdd(V v) { return as<Kuv16u>(shiftLeft<16>(as<Kuv32s>(v))); }
    static KUV_INLINE Wide saturated(Wide v) { return minimum(maximum(v, fill<Wide>(0)), fill<Wide>(0xFFFF)); }

    struct WideConverted {
        Wide y, u, v;  // before the shift
    };

    // Sample pairs are multiplied as signed numbers, that is, less 32768. The weights of U and V add up to 0, so that this cancels;
    // Y comes out less 220 * 32768 / 256.
    class Conversion {
    public:
        explicit Conversion(bool redRow) {
            const auto pair = [&](ColourWeights w) {
                return pairOf(redRow ? w.red : w.blue, redRow ? w.blue : w.red);
            };
            y_ = pair(luminance);
            u_ = pair(chrominanceU);
            v_ = pair(chrominanceV);
        }

        KUV_INLINE WideConverted operator()(Wide own, Wide other, Wide green) const {
            const Signed colours = as<Kuv16s>(bitXor(merge(own, other), fill<V>(0x8000)));
            const Signed greenAndOne = as<Kuv16s>(bitXor(green, fill<Wide>(0x18000)));
            const auto weigh = [&](Signed weights, int greenWeight) {
                return add(multiplyAddPairs(colours, weights), multiplyAddPairs(greenAndOne, pairOf(greenWeight, conversionRounding)));
            };
            return {weigh(y_, luminance.green), weigh(u_, chrominanceU.green), weigh(v_, chrominanceV.green)};
        }

    private:
        static KUV_INLINE Signed pairOf(int low, int high) { return as<Kuv16s>(fill<Wide>((low & 0xFFFF) | high * 65536)); }
        Signed y_, u_, v_;
    };

    // The middle 16 bits of the sums.
    static KUV_INLINE Value mergeLuminance(Wide evens, Wide odds) {
        return as<Kuv16s>(mergeEvenOdd(as<Kuv16u>(shiftRight<8>(evens)), as<Kuv16u>(shiftLeft<8>(odds))));
    }
    static KUV_INLINE Value mergeChrominance(Wide evens, Wide odds) { return mergeLuminance(evens, odds); }

    static KUV_INLINE Squares squaredDistance(V u, V v) {
        const V uLow = multiplyLow(u, u), uHigh = multiplyHigh(u, u), vLow = multiplyLow(v, v), vHigh = multiplyHigh(v, v);
        return {add(as<Kuv32s>(interleaveLow(uLow, uHigh)), as<Kuv32s>(interleaveLow(vLow, vHigh))),
                add(as<Kuv32s>(interleaveHigh(uLow, uHigh)), as<Kuv32s>(interleaveHigh(vLow, vHigh)))};
    }
};

}  // namespace
}  // namespace kuv::KUV_VARIANT
