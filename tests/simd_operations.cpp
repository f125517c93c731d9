// Every operation of the vector layer, callable on bytes in memory. A new one is one line here and one in simd.cpp.
#include "support/simd_operations.hpp"

#include "core/rows.hpp"
#include "simd/bytes.hpp"
#include "simd/integer.hpp"
#include "simd/interleave.hpp"
#include "simd/mask.hpp"
#include "simd/real.hpp"

namespace kuv::KUV_VARIANT {
namespace {

using kuvtest::SimdOperation;

template <class V>
KUV_INLINE V get(const unsigned char* from) {
    return load<V>(reinterpret_cast<const typename V::Lane*>(from));
}
template <class T, int bytes>
KUV_INLINE void put(unsigned char* to, Vector<T, bytes> value) {
    store(reinterpret_cast<T*>(to), value);
}
KUV_INLINE void put(unsigned char* to, Kuv32u value) { storeSample(reinterpret_cast<Kuv32u*>(to), value); }

#define WITH(T, bytes, ...)                                                                                                      \
    [](const unsigned char* first, const unsigned char* second, const unsigned char* third, unsigned char* result) {             \
        using V [[maybe_unused]] = Vector<T, bytes>;                                                                             \
        [[maybe_unused]] const V a = get<V>(first), b = get<V>(second), c = get<V>(third);                                       \
        __VA_ARGS__;                                                                                                             \
    }
#define RUN(operation, T, ...)                               \
    {operation " " #T, 16, WITH(T, 16, __VA_ARGS__)},        \
    KUV_AVX2({operation " " #T, 32, WITH(T, 32, __VA_ARGS__)},)
#define OPERATION(operation, T, ...) RUN(operation, T, put(result, __VA_ARGS__))
#define BINARY(operation, T) OPERATION(#operation, T, operation(a, b))
#define SHIFT(operation, count, T) OPERATION(#operation "<" #count ">", T, operation<count>(a))

constexpr SimdOperation operations[] = {
    OPERATION("load", Kuv8u, a)
    RUN("stream", Kuv8u, alignas(32) Kuv8u block[V::bytes]; stream(block, a); streamFence(); put(result, load<V>(block)))
    OPERATION("loadParts", Kuv8u, loadParts<V>(first + 16, -16))
    OPERATION("loadParts of one", Kuv8u, loadParts<V>(first, 0))
    RUN("storeParts", Kuv8u, storeParts(result + 20, -20, a))
    RUN("storeParts3", Kuv8u, storeParts3(result, a, b, c))
#ifdef __SSSE3__
    BINARY(shuffleBytes, Kuv8u)
#endif
    OPERATION("as", Kuv8u, as<Kuv16s>(a))
    OPERATION("fill", Kuv8u, fill<V>(*first))
    OPERATION("fill", Kuv16s, fill<V>(loadSample(reinterpret_cast<const Kuv16s*>(first))))
    OPERATION("fill", Kuv32s, fill<V>(loadSample(reinterpret_cast<const Kuv32s*>(first))))

    BINARY(add, Kuv8s) BINARY(add, Kuv16s) BINARY(add, Kuv32s)
    BINARY(sub, Kuv8s) BINARY(sub, Kuv16s) BINARY(sub, Kuv32s)
    BINARY(subSaturated, Kuv8u) BINARY(subSaturated, Kuv16u)
    BINARY(multiplyLow, Kuv16s) BINARY(multiplyLow, Kuv32s)
    BINARY(multiplyAddPairs, Kuv16s)
    // Weights from -64 to 63: the sum must fit.
    OPERATION("multiplyAddPairs", Kuv8u,
              multiplyAddPairs(a, sub(as<Kuv8s>(bitAnd(b, fill<V>(0x7F))), as<Kuv8s>(fill<V>(64)))))
    BINARY(equal, Kuv8u) BINARY(equal, Kuv8s) BINARY(equal, Kuv16u) BINARY(equal, Kuv16s)
    BINARY(greater, Kuv8s) BINARY(greater, Kuv16s) BINARY(greater, Kuv32s)
    BINARY(minimum, Kuv8u) BINARY(minimum, Kuv16s) BINARY(minimum, Kuv16u) BINARY(minimum, Kuv32s)
    BINARY(maximum, Kuv8u) BINARY(maximum, Kuv16s) BINARY(maximum, Kuv16u) BINARY(maximum, Kuv32s)
    BINARY(absoluteDifference, Kuv8u) BINARY(absoluteDifference, Kuv16s)
    BINARY(bitAnd, Kuv8u) BINARY(bitOr, Kuv8u) BINARY(bitXor, Kuv8u) BINARY(bitAndNot, Kuv8u)
    OPERATION("select", Kuv8u, select(equal(a, b), b, c))
    OPERATION("select", Kuv32s, select(greater(a, b), b, c))

    SHIFT(shiftLeft, 0, Kuv16s) SHIFT(shiftLeft, 8, Kuv16s) SHIFT(shiftLeft, 15, Kuv16s)
    SHIFT(shiftLeft, 0, Kuv32s) SHIFT(shiftLeft, 8, Kuv32s) SHIFT(shiftLeft, 16, Kuv32s) SHIFT(shiftLeft, 31, Kuv32s)
    SHIFT(shiftRight, 0, Kuv16s) SHIFT(shiftRight, 1, Kuv16s) SHIFT(shiftRight, 2, Kuv16s) SHIFT(shiftRight, 8, Kuv16s)
    SHIFT(shiftRight, 15, Kuv16s)
    SHIFT(shiftRight, 0, Kuv32s) SHIFT(shiftRight, 1, Kuv32s) SHIFT(shiftRight, 2, Kuv32s) SHIFT(shiftRight, 8, Kuv32s)
    SHIFT(shiftRight, 16, Kuv32s) SHIFT(shiftRight, 31, Kuv32s)
    SHIFT(shiftRight, 0, Kuv16u) SHIFT(shiftRight, 8, Kuv16u) SHIFT(shiftRight, 15, Kuv16u)
    SHIFT(shiftRight, 0, Kuv32u) SHIFT(shiftRight, 16, Kuv32u) SHIFT(shiftRight, 31, Kuv32u)

    BINARY(interleaveLow, Kuv8u) BINARY(interleaveLow, Kuv16u) BINARY(interleaveHigh, Kuv8u) BINARY(interleaveHigh, Kuv16u)
    OPERATION("loadWidened", Kuv16u, loadWidened<V>(first))
    OPERATION("signsOf", Kuv8u, signsOf(a))
    BINARY(pack, Kuv16s)
    BINARY(packUnsigned, Kuv16s)
    // Half the range: what is outside of it must not be packed.
    OPERATION("packUnsigned", Kuv32s, packUnsigned(shiftRight<1>(a), shiftRight<1>(b)))
    OPERATION("interleaveHalves", Kuv8u, interleaveHalves(a))
    OPERATION("interleaveHalves", Kuv16u, interleaveHalves(a))
    BINARY(mergeEvenOdd, Kuv16u)

    OPERATION("bitsOf", Kuv8u, bitsOf(equal(a, b)))
    OPERATION("maskOf", Kuv8u, maskOf<V>(loadSample(reinterpret_cast<const Kuv32u*>(first))))
    RUN("storeInterleaved3", Kuv8u, storeInterleaved3(reinterpret_cast<Kuv8u*>(result), a, b, c))
    RUN("storeInterleaved3", Kuv16u, storeInterleaved3(reinterpret_cast<Kuv16u*>(result), a, b, c))

    {"add Kuv32f", 16, WITH(Kuv32f, 16, put(result, add(a, b)))},
    KUV_AVX({"add Kuv32f", 32, WITH(Kuv32f, 32, put(result, add(a, b)))},)
    {"single add Kuv32f", 4, [](const unsigned char* a, const unsigned char* b, const unsigned char*, unsigned char* result) {
        const auto one = [](const unsigned char* from) { return loadSample(reinterpret_cast<const Kuv32f*>(from)); };
        storeSample(reinterpret_cast<Kuv32f*>(result), add(one(a), one(b)));
    }},
};

constexpr int count = sizeof operations / sizeof operations[0];

}  // namespace
}  // namespace kuv::KUV_VARIANT

kuvtest::SimdOperations KUV_VARIANT_FUNCTION(simdOperations)() {
    return {kuv::KUV_VARIANT::operations, kuv::KUV_VARIANT::count};
}
