// Zigzag scans of 8x8 blocks put back into rows.
#include <utility>

#include "core/checks.hpp"
#include "simd/bytes.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// Where each sample of a block stands in its scan.
constexpr Kuv8u zigzag[64] = {0,  1,  5,  6,  14, 15, 27, 28, 2,  4,  7,  13, 16, 26, 29, 42, 3,  8,  12, 17, 25, 30,
                              41, 43, 9,  11, 18, 24, 31, 40, 44, 53, 10, 19, 23, 32, 39, 45, 52, 54, 20, 22, 33, 38,
                              46, 51, 55, 60, 21, 34, 37, 47, 50, 56, 59, 61, 35, 36, 48, 49, 57, 58, 62, 63};

#ifdef __SSSE3__
constexpr int rowWords = 8, lastRow = 7;

constexpr bool rowTakesFrom(int row, int chunk) {
    for (int i = 0; i < rowWords; ++i) {
        if (zigzag[rowWords * row + i] / rowWords == chunk) return true;
    }
    return false;
}

// The bytes that a row takes from a chunk of the scan, as shuffleBytes wants them, and after them the same for the opposite row and
// chunk: the second half of the scan is the first one backward.
struct Shuffle {
    Kuv8u index[32];
};
constexpr Shuffle shuffleOf(int row, int chunk) {
    Shuffle shuffle{};
    for (int i = 0; i < 2 * rowWords; ++i) {
        const int half = i / rowWords, from = zigzag[rowWords * (half ? lastRow - row : row) + i % rowWords];
        const bool taken = from / rowWords == (half ? lastRow - chunk : chunk);
        for (int byte = 0; byte < 2; ++byte) {
            shuffle.index[2 * i + byte] = static_cast<Kuv8u>(taken ? from % rowWords * 2 + byte : 0x80);
        }
    }
    return shuffle;
}

// As many rows from the front as fit a register's first 16 bytes, and their opposites in the others.
template <int row, int... chunk>
KUV_INLINE ByteVector gatherRow(const ByteVector (&chunks)[rowWords], std::integer_sequence<int, chunk...>) {
    ByteVector result = fill<ByteVector>(0);
    const auto take = [&]<int from>(std::integral_constant<int, from>) {
        if constexpr (rowTakesFrom(row, from)) {
            alignas(32) static constexpr Shuffle shuffle = shuffleOf(row, from);
            result = bitOr(result, shuffleBytes(chunks[from], load<ByteVector>(shuffle.index)));
        }
    };
    (take(std::integral_constant<int, chunk>{}), ...);
    return result;
}

template <int... row>
KUV_INLINE void gatherRows(const Kuv8u* src, Kuv8u* dst, std::integer_sequence<int, row...> all) {
    const ByteVector chunks[rowWords] = {loadParts<ByteVector>(src + 16 * row, 16 * (lastRow - 2 * row))...};
    const auto put = [&]<int to>(std::integral_constant<int, to>) {
        if constexpr (to < rowWords * 16 / vectorBytes) storeParts(dst + 16 * to, 16 * (lastRow - 2 * to), gatherRow<to>(chunks, all));
    };
    (put(std::integral_constant<int, row>{}), ...);
}
#else
// Straight on, four samples a store: without a shuffle of bytes, vectors would take their lanes one by one.
[[maybe_unused]] KUV_INLINE void gatherWords(const Kuv16s* src, Kuv16s* dst) {
#pragma GCC unroll 16
    for (int i = 0; i < 64; i += 4) {
        Kuv64u four = 0;
#pragma GCC unroll 4
        for (int j = 0; j < 4; ++j) four |= static_cast<Kuv64u>(static_cast<Kuv16u>(loadSample(src + zigzag[i + j]))) << 16 * j;
        storeSample(reinterpret_cast<Kuv64u*>(dst + i), four);
    }
}
#endif

}  // namespace
}  // namespace kuv::KUV_VARIANT

KuvStatus KUV_VARIANT_FUNCTION(kuviZigzagInv8x8_16s_C1)(const Kuv16s* src, Kuv16s* dst) {
    using namespace kuv::KUV_VARIANT;
    if (anyNull(src, dst)) return kuvStatusNullPtr;
#ifdef __SSSE3__
    gatherRows(reinterpret_cast<const Kuv8u*>(src), reinterpret_cast<Kuv8u*>(dst), std::make_integer_sequence<int, rowWords>{});
#else
    if constexpr (hasVectors) {
        gatherWords(src, dst);
    } else {
        for (int i = 0; i < 64; ++i) storeSample(dst + i, loadSample(src + zigzag[i]));
    }
#endif
    return kuvStatusOk;
}
