// Accumulators of sums and of sums of squares.
#pragma once

#include "stats/lanes.hpp"
#include "stats/reduction.hpp"

namespace kuv::KUV_VARIANT {
namespace {

struct Moments {
    Kuv64u sum, squares;
};

// Of `channels` interleaved bytes, the samples of one channel. Registers that follow each other have its samples in different bytes, so
// that as many of them as there are channels fit one.
template <int channels>
class ChannelBytes;

template <>
class ChannelBytes<1> {
public:
    KUV_INLINE Kuv8u sample(const Kuv8u* pixel) const { return *pixel; }
    KUV_INLINE ByteVector vector(const Kuv8u* from) const { return load<ByteVector>(from); }
};

template <>
class ChannelBytes<3> {
public:
    explicit ChannelBytes(int channel) : channel_(channel) {
        if constexpr (hasVectors) {
            Kuv8u bytes[3 * vectorBytes];
            for (int i = 0; i < 3 * vectorBytes; ++i) bytes[i] = i % 3 == channel ? 0xFF : 0;
            first_ = load<ByteVector>(bytes);
            second_ = load<ByteVector>(bytes + vectorBytes);
            third_ = load<ByteVector>(bytes + 2 * vectorBytes);
        }
    }
    KUV_INLINE Kuv8u sample(const Kuv8u* pixel) const { return pixel[channel_]; }
    KUV_INLINE ByteVector vector(const Kuv8u* from) const {
        return gathered(load<ByteVector>(from), load<ByteVector>(from + vectorBytes), load<ByteVector>(from + 2 * vectorBytes));
    }
    KUV_INLINE ByteVector gathered(ByteVector a, ByteVector b, ByteVector c) const {
        return bitOr(bitOr(bitAnd(a, first_), bitAnd(b, second_)), bitAnd(c, third_));
    }

private:
    int channel_;
    ByteVector first_, second_, third_;
};

// Sum and squares of the bytes of a channel.
template <int channels>
class ByteMoments {
    static constexpr ptrdiff_t largestSquares = 4 * 255 * 255;  // that a block adds to a lane

public:
    static constexpr bool anyLane = true;
    static constexpr ptrdiff_t blockSamples = channels * (hasVectors ? vectorBytes : 1);
    static constexpr ptrdiff_t blocksToFlush = hasVectors ? 0xFFFFFFFF / largestSquares : endless;

    explicit ByteMoments(ChannelBytes<channels> samples) : samples_(samples) {}
    KUV_INLINE Kuv8u padding(ptrdiff_t) const { return 0; }
    KUV_INLINE void block(const Kuv8u* from) {
        if constexpr (hasVectors) {
            const ByteVector v = samples_.vector(from);
            sums_ = add(sums_, sumsOfEight(v));
            const auto even = bitAnd(as<Kuv16s>(v), fill<Native<Kuv16s>>(0xFF));
            const auto odd = as<Kuv16s>(shiftRight<8>(as<Kuv16u>(v)));
            squares_ = add(squares_, add(multiplyAddPairs(even, even), multiplyAddPairs(odd, odd)));
        } else {
            const Kuv32u sample = samples_.sample(from);
            total_.sum += sample;
            total_.squares += sample * sample;
        }
    }
    KUV_INLINE void flush() {
        if constexpr (hasVectors) {
            total_.squares += sumOfLanes<Kuv32u>(squares_);
            squares_ = fill<Native<Kuv32s>>(0);
        }
    }
    Moments total() const {
        Moments all = total_;
        if constexpr (hasVectors) all.sum += sumOfLanes<Kuv64u>(sums_);
        return all;
    }

private:
    ChannelBytes<channels> samples_;
    Moments total_ = {0, 0};
    Native<Kuv64u> sums_ = fill<Native<Kuv64u>>(0);
    Native<Kuv32s> squares_ = fill<Native<Kuv32s>>(0);
};

// The sums of three channels.
class ChannelSums {
public:
    static constexpr bool anyLane = true;
    static constexpr ptrdiff_t blockSamples = 3 * (hasVectors ? vectorBytes : 1);
    static constexpr ptrdiff_t blocksToFlush = endless;

    KUV_INLINE Kuv8u padding(ptrdiff_t) const { return 0; }
    KUV_INLINE void block(const Kuv8u* from) {
        if constexpr (hasVectors) {
            const auto a = load<ByteVector>(from), b = load<ByteVector>(from + vectorBytes), c = load<ByteVector>(from + 2 * vectorBytes);
            first_ = add(first_, sumsOfEight(red_.gathered(a, b, c)));
            second_ = add(second_, sumsOfEight(green_.gathered(a, b, c)));
            third_ = add(third_, sumsOfEight(blue_.gathered(a, b, c)));
        } else {
            for (int c = 0; c < 3; ++c) total_[c] += from[c];
        }
    }
    KUV_INLINE void flush() {}
    void totals(Kuv64u (&sums)[3]) const {
        for (int c = 0; c < 3; ++c) sums[c] = total_[c];
        if constexpr (hasVectors) {
            sums[0] += sumOfLanes<Kuv64u>(first_);
            sums[1] += sumOfLanes<Kuv64u>(second_);
            sums[2] += sumOfLanes<Kuv64u>(third_);
        }
    }

private:
    Kuv64u total_[3] = {0, 0, 0};
    ChannelBytes<3> red_{0}, green_{1}, blue_{2};
    Native<Kuv64u> first_ = fill<Native<Kuv64u>>(0), second_ = first_, third_ = first_;
};

// The sum of signed samples.
class SignedSum {
public:
    static constexpr bool anyLane = true;
    static constexpr ptrdiff_t blockSamples = hasVectors ? Native<Kuv16s>::lanes : 1;
    // A lane gets two samples of at most 2^15 from each block.
    static constexpr ptrdiff_t blocksToFlush = hasVectors ? 0x7FFF : endless;

    KUV_INLINE Kuv16s padding(ptrdiff_t) const { return 0; }
    KUV_INLINE void block(const Kuv16s* from) {
        if constexpr (hasVectors) {
            sums_ = add(sums_, multiplyAddPairs(load<Native<Kuv16s>>(from), fill<Native<Kuv16s>>(1)));
        } else {
            total_ += loadSample(from);
        }
    }
    KUV_INLINE void flush() {
        if constexpr (hasVectors) {
            total_ += static_cast<Kuv64s>(sumOfLanes<Kuv32s>(sums_));
            sums_ = fill<Native<Kuv32s>>(0);
        }
    }
    Kuv64s total() const { return total_; }

private:
    Kuv64s total_ = 0;
    Native<Kuv32s> sums_ = fill<Native<Kuv32s>>(0);
};

// Sum and squares of samples less 32768: so the products of pairs, of two times 2^30 at most, fit 32 bits, if unsigned ones.
class CentredMoments {
    using V = Native<Kuv16s>;

public:
    static constexpr Kuv32s centre = 32768;
    static constexpr bool anyLane = true;
    static constexpr ptrdiff_t blockSamples = hasVectors ? V::lanes : 1;
    static constexpr ptrdiff_t blocksToFlush = SignedSum::blocksToFlush;

    KUV_INLINE Kuv16u padding(ptrdiff_t) const { return centre; }
    KUV_INLINE void block(const Kuv16u* from) {
        if constexpr (hasVectors) {
            const V v = bitXor(as<Kuv16s>(load<Native<Kuv16u>>(from)), fill<V>(-centre));
            sums_ = add(sums_, multiplyAddPairs(v, fill<V>(1)));
            squares_ = add(squares_, sumsOfTwo(as<Kuv32u>(multiplyAddPairs(v, v))));
        } else {
            const Kuv32s sample = loadSample(from) - centre;
            sum_ += sample;
            squareSum_ += static_cast<Kuv64u>(sample * sample);
        }
    }
    KUV_INLINE void flush() {
        if constexpr (hasVectors) {
            sum_ += static_cast<Kuv64s>(sumOfLanes<Kuv32s>(sums_));
            sums_ = fill<Native<Kuv32s>>(0);
        }
    }
    // Of the samples themselves, of which there were so many.
    Moments total(Kuv64u count) const {
        const Kuv64u centred = squareSum_ + (hasVectors ? sumOfLanes<Kuv64u>(squares_) : 0);
        const Kuv64u sum = static_cast<Kuv64u>(sum_) + count * centre;
        return {sum, centred + 2 * centre * sum - count * centre * centre};
    }

private:
    Kuv64s sum_ = 0;
    Kuv64u squareSum_ = 0;
    Native<Kuv32s> sums_ = fill<Native<Kuv32s>>(0);
    Native<Kuv64u> squares_ = fill<Native<Kuv64u>>(0);
};

// Columns x, x + count, x + 2 * count ... each in a sum of their own, in double precision.
template <int count>
struct WideSum {
    static constexpr ptrdiff_t blockSamples = count, blocksToFlush = endless;

    KUV_INLINE Kuv32f padding(ptrdiff_t) const { return 0; }
    KUV_INLINE void block(const Kuv32f* from) {
#pragma GCC unroll 16
        for (int k = 0; k < DoubleSums<count>::registers; ++k) sums.add(k, widened(from + k * Doubles::count));
    }
    KUV_INLINE void flush() {}
    Kuv64f total() const { return sums.total(); }

    DoubleSums<count> sums;
};

// Sixteen sums added by halves.
template <class V>
KUV_INLINE Kuv32f addedByHalves(const V (&sums)[16 / V::lanes]) {
    Vector<Kuv32f, 16> four;
    if constexpr (V::bytes == 16) {
        four = add(add(sums[0], sums[2]), add(sums[1], sums[3]));
    } else {
        KUV_AVX(const V eight = add(sums[0], sums[1]);
                four = {_mm_add_ps(_mm256_castps256_ps128(eight.raw), _mm256_extractf128_ps(eight.raw, 1))};)
    }
    const auto two = add(four, upperHalf(four));
    return _mm_cvtss_f32(_mm_add_ss(two.raw, _mm_shuffle_ps(two.raw, two.raw, 1)));
}

// Like WideSum<16>, but in single precision within a row.
class NarrowSum {
    using V = Native<Kuv32f>;
    static constexpr int registers = 16 / V::lanes;

public:
    static constexpr ptrdiff_t blockSamples = 16, blocksToFlush = endless;

    NarrowSum() { clear(); }
    KUV_INLINE Kuv32f padding(ptrdiff_t) const { return 0; }
    KUV_INLINE void block(const Kuv32f* from) {
#pragma GCC unroll 4
        for (int k = 0; k < registers; ++k) sums_[k] = add(sums_[k], load<V>(from + k * V::lanes));
    }
    KUV_INLINE void flush() {
        total_ += static_cast<Kuv64f>(addedByHalves(sums_));
        clear();
    }
    Kuv64f total() const { return total_; }

private:
    KUV_INLINE void clear() {
#pragma GCC unroll 4
        for (int k = 0; k < registers; ++k) sums_[k] = fill<V>(0);
    }

    Kuv64f total_ = 0;
    V sums_[registers];
};

// The sums of samples and of their squares.
struct RealMoments {
    static constexpr ptrdiff_t blockSamples = 8, blocksToFlush = endless;

    KUV_INLINE Kuv32f padding(ptrdiff_t) const { return 0; }
    KUV_INLINE void block(const Kuv32f* from) {
#pragma GCC unroll 8
        for (int k = 0; k < DoubleSums<8>::registers; ++k) {
            const auto v = widened(from + k * Doubles::count);
            sums.add(k, v);
            squares.add(k, multiply(v, v));
        }
    }
    KUV_INLINE void flush() {}

    DoubleSums<8> sums, squares;
};

// The sum of squared distances from the mean.
class SquaredDistances {
public:
    static constexpr ptrdiff_t blockSamples = 8, blocksToFlush = endless;

    explicit SquaredDistances(Kuv64f mean) : mean_(Doubles::all(mean)) {}
    KUV_INLINE void block(const Kuv32f* from) {
#pragma GCC unroll 8
        for (int k = 0; k < DoubleSums<8>::registers; ++k) {
            const auto distance = sub(widened(from + k * Doubles::count), mean_);
            sums_.add(k, multiply(distance, distance));
        }
    }
    // No sample keeps a distance of 0 from every mean.
    KUV_INLINE void rest(const Kuv32f* from, ptrdiff_t count) {
        Kuv64f mean, squares[blockSamples] = {};
        __builtin_memcpy(&mean, &mean_, sizeof(mean));
        for (ptrdiff_t k = 0; k < count; ++k) {
            const Kuv64f distance = static_cast<Kuv64f>(loadSample(from + k)) - mean;
            squares[k] = distance * distance;
        }
#pragma GCC unroll 8
        for (int k = 0; k < DoubleSums<8>::registers; ++k) {
            typename Doubles::Type lanes;
            __builtin_memcpy(&lanes, squares + k * Doubles::count, sizeof(lanes));
            sums_.add(k, lanes);
        }
    }
    KUV_INLINE void flush() {}
    Kuv64f total() const { return sums_.total(); }

private:
    typename Doubles::Type mean_;
    DoubleSums<8> sums_;
};

}  // namespace
}  // namespace kuv::KUV_VARIANT
