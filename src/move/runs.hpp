// Copies and fills of runs of bytes, at any address and of any length.
#pragma once

#include "core/cache.hpp"
#include "simd/rows.hpp"
#include "simd/vector.hpp"

namespace kuv::KUV_VARIANT {
namespace {

constexpr ptrdiff_t blockBytes = 64, pairBytes = 2 * vectorBytes;
constexpr ptrdiff_t pageBytes = 4096;

KUV_INLINE Kuv8u* bytesOf(void* address) { return static_cast<Kuv8u*>(address); }
KUV_INLINE const Kuv8u* bytesOf(const void* address) { return static_cast<const Kuv8u*>(address); }

// How far the address stands past a multiple of a power of two.
KUV_INLINE ptrdiff_t offsetIn(const void* address, ptrdiff_t alignment) {
    return static_cast<ptrdiff_t>(reinterpret_cast<size_t>(address) & static_cast<size_t>(alignment - 1));
}
KUV_INLINE ptrdiff_t bytesToBoundary(const void* address, ptrdiff_t alignment) { return -offsetIn(address, alignment) & (alignment - 1); }

// Whether the copy of an image is to bypass the caches. Small ones never ask for the size of the cache.
KUV_INLINE bool copyBypassesCaches(ptrdiff_t rowBytes, ptrdiff_t rows) {
    constexpr ptrdiff_t leastStreamed = 0x300000;
    return rowBytes > leastStreamed / rows && exceedsCache(rowBytes, rows, 2);
}

// Whether the processor is of those that tell their cache. Their string moves are fast.
KUV_INLINE bool movesStringsFast() {
    Kuv32s cache;
    return hasAVX2 && queryCacheBytes(&cache) == kuvStatusOk;
}

// Whether the rows of an image are to be copied by string moves: if the second-level cache does not hold it.
KUV_INLINE bool copyByStrings(ptrdiff_t rowBytes, ptrdiff_t rows) {
    constexpr ptrdiff_t leastRow = 1024, leastImage = 0x100000;
    return rowBytes >= leastRow && rowBytes > leastImage / rows && movesStringsFast();
}

// Of shorter rows it does not pay to align what is written.
constexpr ptrdiff_t leastAlignedRow = 512;

// Samples one after the other.
template <class T>
KUV_INLINE void copySamples(T* dst, const T* src, ptrdiff_t n) {
    for (ptrdiff_t i = 0; i < n; ++i) storeSample(dst + i, loadSample(src + i));
}

// The first and the last sizeof(T) of n bytes, which may overlap: sizeof(T) <= n <= 2 * sizeof(T).
template <class T>
KUV_INLINE void copyEnds(Kuv8u* dst, const Kuv8u* src, ptrdiff_t n) {
    constexpr ptrdiff_t size = sizeof(T);
    T first, last;
    __builtin_memcpy(&first, src, size);
    __builtin_memcpy(&last, src + n - size, size);
    __builtin_memcpy(dst, &first, size);
    __builtin_memcpy(dst + n - size, &last, size);
}

// Fewer bytes than two vectors of 16.
KUV_INLINE void copyFew(Kuv8u* dst, const Kuv8u* src, ptrdiff_t n) {
    struct Sixteen {
        Kuv64u halves[2];
    };
    if (n >= 16) return copyEnds<Sixteen>(dst, src, n);
    if (n >= 8) return copyEnds<Kuv64u>(dst, src, n);
    if (n >= 4) return copyEnds<Kuv32u>(dst, src, n);
    if (n >= 2) return copyEnds<Kuv16u>(dst, src, n);
    if (n == 1) *dst = *src;
}

// count vectors, all read before the first is written.
template <int count, bool byHalves = false>
KUV_INLINE void copyVectors(Kuv8u* dst, const Kuv8u* src) {
    ByteVector v[count];
#pragma GCC unroll 8
    for (int i = 0; i < count; ++i) v[i] = load<ByteVector>(src + i * vectorBytes);
#pragma GCC unroll 8
    for (int i = 0; i < count; ++i) {
        if constexpr (byHalves) storeHalves(dst + i * vectorBytes, v[i]);
        else store(dst + i * vectorBytes, v[i]);
    }
}

// For lengths at which looking at alignment does not pay: pairs of vectors, of which the last ends with the run.
template <bool byHalves = false>
void copyShort(Kuv8u* dst, const Kuv8u* src, ptrdiff_t n) {
    if (n < vectorBytes) return copyFew(dst, src, n);
    if (n < pairBytes) {
        copyVectors<1, byHalves>(dst, src);
        return copyVectors<1, byHalves>(dst + n - vectorBytes, src + n - vectorBytes);
    }
    for (ptrdiff_t i = 0; i < n - pairBytes; i += pairBytes) {
        copyVectors<1, byHalves>(dst + i, src + i);
        copyVectors<1, byHalves>(dst + i + vectorBytes, src + i + vectorBytes);
    }
    copyVectors<2, byHalves>(dst + n - pairBytes, src + n - pairBytes);
}

// From the first byte to the last, on aligned vectors of the destination.
void copyForward(Kuv8u* dst, const Kuv8u* src, ptrdiff_t n) {
    const ptrdiff_t head = bytesToBoundary(dst, blockBytes);
    if (n < head + 2 * blockBytes) return copyShort(dst, src, n);
    copyShort(dst, src, head);
    copyShort(dst + head, src + head, n - head);
}

// From the last block to the first. Where the destination stands shortly behind the source within a page, reads of a forward copy
// would seem to depend on the writes before them.
void copyBackward(Kuv8u* dst, const Kuv8u* src, ptrdiff_t n) {
    ptrdiff_t end = n - offsetIn(dst + n, blockBytes);
    if (end < blockBytes) return copyShort(dst, src, n);
    copyShort(dst + end, src + end, n - end);
    for (; end >= blockBytes; end -= blockBytes) copyVectors<blockBytes / vectorBytes>(dst + end - blockBytes, src + end - blockBytes);
    copyShort(dst, src, end);
}

// By a string move, which the processor does at its own best width and without reading what it overwrites, into aligned blocks. For runs
// of at least a block.
void copyString(Kuv8u* dst, const Kuv8u* src, ptrdiff_t n) {
    const ptrdiff_t head = bytesToBoundary(dst, blockBytes);
    copyShort(dst, src, head);
    dst += head;
    src += head;
    n -= head;
    asm volatile("rep movsb" : "+D"(dst), "+S"(src), "+c"(n) : : "memory");
}

// Past the caches. The caller closes with a fence.
void copyStreaming(Kuv8u* dst, const Kuv8u* src, ptrdiff_t n) {
    ptrdiff_t i = bytesToBoundary(dst, blockBytes);
    if (n < i + blockBytes) return copyShort(dst, src, n);
    copyShort(dst, src, i);
    for (; n - i >= blockBytes; i += blockBytes) {
        ByteVector v[blockBytes / vectorBytes];
#pragma GCC unroll 4
        for (int k = 0; k < blockBytes / vectorBytes; ++k) v[k] = load<ByteVector>(src + i + k * vectorBytes);
#pragma GCC unroll 4
        for (int k = 0; k < blockBytes / vectorBytes; ++k) stream(dst + i + k * vectorBytes, v[k]);
    }
    copyShort(dst + i, src + i, n - i);
}

// A constant, repeated: two vectors of it, so that one can be read from any phase.
template <class T>
class FillPattern {
public:
    explicit FillPattern(T value) : lanes_(as<Kuv8u>(fill<Vector<T, vectorBytes>>(value))) {
        store(bytes_, lanes_);
        store(bytes_ + vectorBytes, lanes_);
    }
    KUV_INLINE ByteVector lanes() const { return lanes_; }
    KUV_INLINE ByteVector lanesFrom(ptrdiff_t phase) const {
        constexpr ptrdiff_t period = sizeof(T);
        return phase % period == 0 ? lanes_ : load<ByteVector>(bytes_ + phase % period);
    }
    const Kuv8u* bytes() const { return bytes_; }

private:
    ByteVector lanes_;
    Kuv8u bytes_[2 * vectorBytes];
};

// Fills n bytes by a string move, which the processor does at its own best width and without reading what it overwrites.
template <class T>
void fillString(Kuv8u* dst, ptrdiff_t n, const FillPattern<T>& pattern) {
    const Kuv64u eight = loadSample(reinterpret_cast<const Kuv64u*>(pattern.bytes()));
    ptrdiff_t count = n / 8;
    asm volatile("rep stosq" : "+D"(dst), "+c"(count) : "a"(eight) : "memory");
    copyFew(dst, pattern.bytes(), n % 8);
}

// Beyond so many bytes processors with AVX2 do no better with vectors.
constexpr ptrdiff_t mostVectorFill = 32768;

// Fills n bytes, whole samples. Streams past the caches if asked to; the caller closes with a fence then.
template <class T>
void fillRun(Kuv8u* dst, ptrdiff_t n, const FillPattern<T>& pattern, bool streaming) {
    if (n < vectorBytes) return copyFew(dst, pattern.bytes(), n);
    if (hasAVX2 && n > mostVectorFill && !streaming) return fillString(dst, n, pattern);
    store(dst, pattern.lanes());
    // Aligned vectors may begin within a sample.
    ptrdiff_t i = bytesToBoundary(dst, vectorBytes);
    const ByteVector v = pattern.lanesFrom(i);
    if (streaming) {
        for (; n - i >= vectorBytes; i += vectorBytes) stream(dst + i, v);
    } else {
        constexpr ptrdiff_t unrolled = 4 * vectorBytes;
        for (; n - i >= unrolled; i += unrolled) {
#pragma GCC unroll 4
            for (ptrdiff_t k = 0; k < unrolled; k += vectorBytes) store(dst + i + k, v);
        }
        for (; n - i >= vectorBytes; i += vectorBytes) store(dst + i, v);
    }
    store(dst + n - vectorBytes, pattern.lanes());
}

}  // namespace
}  // namespace kuv::KUV_VARIANT
