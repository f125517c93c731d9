// Row drivers: how an operation object gets to every sample of a row. Its operator() takes vectors and single samples alike; for
// convertRow() it takes single samples, and `block` does the vectors.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/cache.hpp"
#include "core/integers.hpp"
#include "core/rows.hpp"
#include "simd/vector.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// What does not fit a first-level cache is written faster by 16 bytes than by 32.
constexpr ptrdiff_t firstLevelBytes = 32768;

// How many single samples stand before the next address that is a multiple of `bytes`; 0 if none is, at this address.
template <class T>
KUV_INLINE ptrdiff_t samplesToAlignment(const T* address, ptrdiff_t bytes) {
    const auto value = reinterpret_cast<std::intptr_t>(address);
    if (value % static_cast<std::intptr_t>(sizeof(T)) != 0) return 0;
    return (-value & (bytes - 1)) / static_cast<ptrdiff_t>(sizeof(T));
}

// How many pixels stand before the first that begins on a multiple of `bytes`, 16 or 32; 0 if none does. Pixels have three samples, or
// as many bytes as a power of two.
template <int pixelBytes>
KUV_INLINE ptrdiff_t pixelsToAlignment(const void* address, size_t bytes) {
    constexpr size_t odd = pixelBytes % 3 == 0 ? 3 : 1, even = pixelBytes / odd;
    constexpr size_t inverse = odd == 3 ? 11 : 1;  // odd * inverse is 1, modulo 32
    const size_t missing = -reinterpret_cast<size_t>(address);
    return missing % even == 0 ? static_cast<ptrdiff_t>(missing / even * inverse % (bytes / even)) : 0;
}

// What an operation takes beside the sample that it changes: `sample(i)` is the operand of sample i of a row; `vectorsFrom(i)`
// gives those of the vectors that begin at sample i and after it, and its `at(j, k)` the one of the k-th of them, which begins at
// sample j.
//
// The row of another image.
template <class T>
struct Row {
    const T* samples;

    KUV_INLINE T sample(ptrdiff_t i) const { return loadSample(samples + i); }
    KUV_INLINE Row vectorsFrom(ptrdiff_t) const { return *this; }
    KUV_INLINE Native<T> at(ptrdiff_t j, int) const { return load<Native<T>>(samples + j); }
};

// A constant for each channel, in turn.
template <class T, int channels>
class Periodic {
    using V = Native<T>;
    static constexpr int registerCount = V::lanes % channels == 0 ? 1 : channels;

public:
    struct Vectors {
        V registers[registerCount];
        KUV_INLINE V at(ptrdiff_t, int k) const { return registers[k % registerCount]; }
    };

    explicit Periodic(const T (&values)[channels]) {
        for (int i = 0; i < tableSamples; i += channels) {
            for (int c = 0; c < channels; ++c) table_[i + c] = values[c];
        }
    }
    KUV_INLINE T sample(ptrdiff_t i) const { return table_[i % channels]; }
    KUV_INLINE Vectors vectorsFrom(ptrdiff_t i) const {
        Vectors all;
        for (int k = 0; k < registerCount; ++k) all.registers[k] = load<V>(table_ + i % channels + k * V::lanes);
        return all;
    }

private:
    // From any channel on.
    static constexpr int tableSamples = (registerCount * V::lanes + 2 * (channels - 1)) / channels * channels;
    T table_[tableSamples];
};

// How vectors get to memory.
template <bool byHalves>
struct ThroughCaches {
    template <class V>
    KUV_INLINE void operator()(typename V::Lane* to, V value) const {
        if constexpr (byHalves) storeHalves(to, value);
        else store(to, value);
    }
};
struct PastCaches {
    template <class V>
    KUV_INLINE void operator()(typename V::Lane* to, V value) const {
        stream(to, value);
    }
};

// Whether so many rows of so many bytes are at least a part of the largest cache, if its size is known.
KUV_INLINE bool exceedsCache(ptrdiff_t rowBytes, ptrdiff_t rows, Kuv32s parts) {
    Kuv32s cache;
    return queryCacheBytes(&cache) == kuvStatusOk && rowBytes > (cache / parts - 1) / rows;
}

// Whether an image of so many rows, with so many bytes read and written for each sample, is too large for the caches: from a part of the
// largest one on, which many processors share. Short rows stay in the caches.
KUV_INLINE bool bypassesCaches(ptrdiff_t rows, ptrdiff_t samples, ptrdiff_t sampleBytes, ptrdiff_t dstRowBytes, Kuv32s parts = 16) {
    Kuv32s line;
    queryCacheLine(&line);
    return dstRowBytes >= 2 * ptrdiff_t{line} && exceedsCache(samples * sampleBytes, rows, parts);
}

// dst[i] = operation(operands of i ...) for i in 0 .. count - 1, where dst may be the row of an operand, but not lie on one in another
// way. In place, so no sample is computed from a result: the vectors at both ends are read before what they share with the aligned
// ones in between is written. Fewer samples than a vector's go one by one. The operation sees some samples twice and none that is not
// of the row, so it may note what it meets.
template <bool byHalves, class Operation, class T, class... Operands>
KUV_INLINE void transformRow(Operation& operation, T* dst, ptrdiff_t count, const Operands&... operands) {
    if constexpr (hasVectors) {
        using V = Native<T>;
        constexpr ptrdiff_t lanes = V::lanes;
        if (count >= lanes) {
            constexpr int unrolled = 3;  // the period of three channels
            const auto result = [&](ptrdiff_t i, int k, const auto&... vectors) __attribute__((always_inline)) {
                return operation(vectors.at(i, k)...);
            };
            const ptrdiff_t end = count - lanes;
            const V first = result(0, 0, operands.vectorsFrom(0)...);
            // Aligned rows have nothing before the second vector that is not in the first.
            const ptrdiff_t toAlignment = samplesToAlignment(dst, V::bytes), start = toAlignment == 0 ? lanes : toAlignment;
            const auto rest = [&](const auto&... vectors) __attribute__((always_inline)) {
                ptrdiff_t i = start;
                for (; i + unrolled * lanes <= end; i += unrolled * lanes) {
#pragma GCC unroll 3
                    for (int k = 0; k < unrolled; ++k) {
                        ThroughCaches<byHalves>{}(dst + i + k * lanes, result(i + k * lanes, k, vectors...));
                    }
                }
                // Not before: nothing waits for the end of a long row to be fetched.
                const V last = result(end, 0, operands.vectorsFrom(end)...);
#pragma GCC unroll 3
                for (int k = 0; k < unrolled; ++k, i += lanes) {
                    if (i >= end) break;
                    store(dst + i, result(i, k, vectors...));
                }
                store(dst, first);
                store(dst + end, last);
            };
            rest(operands.vectorsFrom(start)...);
            return;
        }
    }
    for (ptrdiff_t i = 0; i < count; ++i) storeSample(dst + i, operation(operands.sample(i)...));
}

// srcDst[i] = operation(srcDst[i], operands of i ...) on every row, from the first.
template <class Operation, class T, class... Operands>
KUV_INLINE void transformInPlace(Operation&& operation, T* srcDst, ptrdiff_t step, ptrdiff_t count, ptrdiff_t rows,
                                 const Operands&... operands) {
    const auto eachRow = [&]<bool byHalves>(std::bool_constant<byHalves>) __attribute__((always_inline)) {
        for (ptrdiff_t row = 0; row < rows; ++row) {
            T* const samples = rowAt(srcDst, step, row);
            transformRow<byHalves>(operation, samples, count, Row<T>{samples}, operands...);
        }
    };
    // Single precision in place is written faster by 32 bytes at any size.
    if constexpr (hasVectors && std::is_integral_v<T>) {
        if (Native<T>::bytes == 32 && count * static_cast<ptrdiff_t>(sizeof(T)) > firstLevelBytes / rows) {
            return eachRow(std::true_type{});
        }
    }
    eachRow(std::false_type{});
}

// dst[i] = operation(src1[i], src2[i]) for i in 0 .. count - 1, past the caches, into the row of another image, of aligned samples. Only
// whole lines, which nothing else is written to: the processor would fetch others and throw them out again.
template <class Operation, class T>
KUV_INLINE void streamRow(Operation& operation, const T* src1, const T* src2, T* dst, ptrdiff_t count) {
    using V = Native<T>;
    constexpr ptrdiff_t lineBytes = 64, line = lineBytes / sizeof(T);
    const ptrdiff_t toLine = samplesToAlignment(dst, lineBytes), start = smaller(toLine, count);
    const ptrdiff_t end = start + (count - start) / line * line;
    const ptrdiff_t ends[][2] = {{0, start}, {end, count}};
    for (const auto& [from, to] : ends) {
        transformRow<false>(operation, dst + from, to - from, Row<T>{src1 + from}, Row<T>{src2 + from});
    }
    for (ptrdiff_t i = start; i < end; i += line) {
#pragma GCC unroll 4
        for (ptrdiff_t j = i; j < i + line; j += V::lanes) stream(dst + j, operation(load<V>(src1 + j), load<V>(src2 + j)));
    }
}

// dst[i] = operation(src1[i], src2[i]) on every row, from the first. dst may be one of the sources; if not, and if its samples are
// aligned, large images are streamed past the caches.
template <class Operation, class T>
KUV_INLINE void combine(Operation&& operation, const T* src1, ptrdiff_t src1Step, const T* src2, ptrdiff_t src2Step, T* dst,
                        ptrdiff_t dstStep, ptrdiff_t count, ptrdiff_t rows) {
    constexpr ptrdiff_t sampleBytes = sizeof(T);
    joinRows(count, rows, {{src1Step, sampleBytes}, {src2Step, sampleBytes}, {dstStep, sampleBytes}});
    const auto eachRow = [&](auto combineRow) __attribute__((always_inline)) {
        for (ptrdiff_t row = 0; row < rows; ++row) {
            combineRow(rowAt(src1, src1Step, row), rowAt(src2, src2Step, row), rowAt(dst, dstStep, row));
        }
    };
    if constexpr (hasVectors) {
        const bool aligned = (reinterpret_cast<std::intptr_t>(dst) | dstStep) % sampleBytes == 0;
        if (dst != src1 && dst != src2 && aligned && bypassesCaches(rows, count, 3 * sampleBytes, count * sampleBytes)) {
            eachRow([&](const T* a, const T* b, T* to) __attribute__((always_inline)) { streamRow(operation, a, b, to, count); });
            return streamFence();
        }
    }
    // By 32 bytes in place, too: beside the rows of another image 16 are not faster.
    eachRow([&](const T* a, const T* b, T* to) __attribute__((always_inline)) {
        transformRow<false>(operation, to, count, Row<T>{a}, Row<T>{b});
    });
}

// srcDst[i] = operation(srcDst[i], src[i]) on every row, from the first.
template <class Operation, class T>
KUV_INLINE void combineInPlace(Operation&& operation, const T* src, ptrdiff_t srcStep, T* srcDst, ptrdiff_t srcDstStep,
                               ptrdiff_t count, ptrdiff_t rows) {
    combine(operation, srcDst, srcDstStep, src, srcStep, srcDst, srcDstStep, count, rows);
}

// dst[i] = operation(src[i]) for i in 0 .. count - 1, into another image, of another type. The operation does a single sample, and in
// `block` so many that whole vectors are written. Blocks may lie on each other. Streams past the caches if asked to and if the
// destination's samples are aligned; the caller closes with a fence then.
template <bool byHalves, class Operation, class S, class D>
KUV_INLINE void convertRow(const Operation& operation, const S* src, D* dst, ptrdiff_t count, bool streaming) {
    if constexpr (hasVectors) {
        constexpr ptrdiff_t block = Operation::blockSamples, line = 64 / sizeof(D), fewBlocks = 4;
        if (count < block) {
            S from[block] = {};
            D to[block];
            __builtin_memcpy(from, src, static_cast<size_t>(count) * sizeof(S));
            operation.block(from, to, ThroughCaches<byHalves>{});
            __builtin_memcpy(dst, to, static_cast<size_t>(count) * sizeof(D));
            return;
        }
        // The last block ends at `end`.
        const auto blocks = [&](ptrdiff_t first, ptrdiff_t end) {
            for (; first < end - block; first += block) operation.block(src + first, dst + first, ThroughCaches<byHalves>{});
            operation.block(src + end - block, dst + end - block, ThroughCaches<byHalves>{});
        };
        if (count < fewBlocks * block) return blocks(0, count);
        ptrdiff_t first = samplesToAlignment(dst, 64);
        if (streaming && count >= block + line && reinterpret_cast<std::uintptr_t>(dst + first) % 64 == 0) {
            // Whole lines, which nothing else is written to. The first begins before block + line.
            while (first > 0 && first < block) first += line;
            constexpr ptrdiff_t step = larger(block, line);
            ptrdiff_t end = first + (count - first) / step * step;
            while (end > first && count > end && count - end < block) end -= step;
            if (first > 0) blocks(0, first);
            for (ptrdiff_t i = first; i < end; i += block) operation.block(src + i, dst + i, PastCaches{});
            if (end < count) blocks(end, count);
            return;
        }
        first = samplesToAlignment(dst, integerBytes);
        if (first > 0) operation.block(src, dst, ThroughCaches<byHalves>{});
        blocks(first, count);
    } else {
        for (ptrdiff_t i = 0; i < count; ++i) storeSample(dst + i, operation(loadSample(src + i)));
    }
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
