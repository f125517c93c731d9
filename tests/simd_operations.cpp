// The operations of the vector layer, callable on bytes in memory. A new one is one line here and one in simd.cpp; nothing tells of one
// that has neither.
#include "support/simd_operations.hpp"

#include "core/rows.hpp"
#include "simd/bytes.hpp"
#include "simd/integer.hpp"
#include "simd/interleave.hpp"
#include "simd/mask.hpp"
#include "simd/real.hpp"
#include "simd/transpose.hpp"

namespace kuv::KUV_VARIANT {
namespace {

using kuvtest::SimdOperation;

template <class V>
KUV_INLINE V get(const unsigned char* from) {
    if constexpr (sizeof(typename V::Lane) == 8 && std::is_floating_point_v<typename V::Lane>) {
        V value;  // of which kernels have no rows
        __builtin_memcpy(&value.raw, from, V::bytes);
        return value;
    } else {
        return load<V>(reinterpret_cast<const typename V::Lane*>(from));
    }
}
template <class T, int bytes>
KUV_INLINE void put(unsigned char* to, Vector<T, bytes> value) {
    if constexpr (sizeof(T) == 8 && std::is_floating_point_v<T>) __builtin_memcpy(to, &value.raw, bytes);
    else store(reinterpret_cast<T*>(to), value);
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

#define REAL(operation, T, ...) {operation, 16, WITH(T, 16, __VA_ARGS__)}, KUV_AVX({operation, 32, WITH(T, 32, __VA_ARGS__)},)
#define REAL_BINARY(operation, T) REAL(#operation " " #T, T, put(result, operation(a, b)))

// With 0 for what is no number: of several NaNs it is not stated which one stays.
#ifdef __FMA__
#define OF_PRODUCT(operation) OF_PRODUCT_NAMED("fused " #operation, operation)
#else
#define OF_PRODUCT(operation) OF_PRODUCT_NAMED("unfused " #operation, operation)
#endif
#define OF_PRODUCT_NAMED(name, operation)                                                                              \
    REAL(name " Kuv32f", Kuv32f, const V r = operation(a, b, c); put(result, select(equal(r, r), r, fill<V>(0))))      \
    REAL(name " Kuv64f", Kuv64f, const V r = operation(a, b, c); put(result, whereEqual(r, r, r)))

#define SINGLE_RUN(operation, T, ...)                                                                                             \
    {"single " #operation " " #T, sizeof(T),                                                                                      \
     [](const unsigned char* first, const unsigned char* second, const unsigned char* third, unsigned char* result) {             \
         [[maybe_unused]] const T a = single<T>(first), b = single<T>(second), c = single<T>(third);                              \
         const T value = __VA_ARGS__;                                                                                             \
         storeSample(reinterpret_cast<T*>(result), value);                                                                        \
     }},
#define SINGLE(operation, T, ...) SINGLE_RUN(operation, T, operation(__VA_ARGS__))
#define SINGLE_OF_PRODUCT(operation, T) SINGLE_RUN(operation, T, numberOr0(operation(a, b, c)))

template <class T>
KUV_INLINE T single(const unsigned char* from) { return loadSample(reinterpret_cast<const T*>(from)); }
template <class T>
KUV_INLINE T numberOr0(T value) { return __builtin_isnan(value) ? T{0} : value; }

using Doubles = Native<Kuv64f>;

template <class T>
KUV_INLINE Vector<T, 16> four(const unsigned char* from, int lane) {
    return get<Vector<T, 16>>(from + 4 * lane);
}
template <int bytes, class Half>
KUV_INLINE void putReals(unsigned char* to, Half half) {
    put(to, fromHalves<Vector<Kuv32f, bytes>>(half));
}

// Of a block of rows that differ, made of one register's bytes.
template <class V>
KUV_INLINE void transposed(const unsigned char* from, unsigned char* to) {
    using T = typename V::Lane;
    Kuv8u block[16 * V::lanes];
    for (int i = 0; i < 16 * V::lanes; ++i) block[i] = static_cast<Kuv8u>(from[i % V::bytes] + i / V::bytes * 37);
    transposeBlock<V>(reinterpret_cast<const T*>(block), 16, reinterpret_cast<T*>(to), V::bytes);
}

constexpr SimdOperation operations[] = {
    OPERATION("load", Kuv8u, a)
    RUN("stream", Kuv8u, alignas(32) Kuv8u block[V::bytes]; stream(block, a); streamFence(); put(result, load<V>(block)))
    OPERATION("loadParts", Kuv8u, loadParts<V>(first + 16, -16))
    OPERATION("loadParts of one", Kuv8u, loadParts<V>(first, 0))
    OPERATION("loadWords of 4", Kuv8u, loadWords<Kuv32s>(first, 3))
    OPERATION("loadWords of 8", Kuv8u, loadWords<Kuv64s>(first, 6))
    OPERATION("loadReversed", Kuv8u, loadReversed<V>(first))
    OPERATION("loadReversed", Kuv16u, loadReversed<V>(reinterpret_cast<const Kuv16u*>(first)))
    OPERATION("reverseLanes", Kuv8u, reverseLanes(a))
    OPERATION("reverseLanes", Kuv16u, reverseLanes(a))
    RUN("storeParts", Kuv8u, storeParts(result + 16, -16, a))
    RUN("storeHalves", Kuv8u, storeHalves(reinterpret_cast<Kuv8u*>(result), a))
    RUN("storeParts3", Kuv8u, storeParts3(result, a, b, c))
    OPERATION("joinTwelves", Kuv8u, joinTwelves(a))
    RUN("storePartsOf four", Kuv8u, storePartsOf(result, {a, b, c, a}))
    RUN("storePartsOf six", Kuv8u, storePartsOf(result, {a, b, c, b, a, c}))
#ifdef __SSSE3__
    BINARY(shuffleBytes, Kuv8u)
#endif
    OPERATION("as", Kuv8u, as<Kuv16s>(a))
    OPERATION("fill", Kuv8u, fill<V>(*first))
    OPERATION("fill", Kuv16s, fill<V>(loadSample(reinterpret_cast<const Kuv16s*>(first))))
    OPERATION("fill", Kuv32s, fill<V>(loadSample(reinterpret_cast<const Kuv32s*>(first))))
    OPERATION("fill", Kuv64u, fill<V>(loadSample(reinterpret_cast<const Kuv64u*>(first))))

    BINARY(add, Kuv8s) BINARY(add, Kuv16s) BINARY(add, Kuv32s) BINARY(add, Kuv64u)
    BINARY(sub, Kuv8s) BINARY(sub, Kuv16s) BINARY(sub, Kuv32s)
    BINARY(addSaturated, Kuv16s) BINARY(subSaturated, Kuv16s) BINARY(subSaturated, Kuv8u) BINARY(subSaturated, Kuv16u)
    BINARY(average, Kuv8u) BINARY(average, Kuv16u)
    BINARY(multiplyLow, Kuv16s) BINARY(multiplyLow, Kuv16u) BINARY(multiplyLow, Kuv32s)
    BINARY(multiplyHigh, Kuv16s) BINARY(multiplyHigh, Kuv16u) BINARY(multiplyRounded, Kuv16s)
    BINARY(multiplyAddPairs, Kuv16s)
    OPERATION("fillPairs", Kuv16s,
              fillPairs<V>(loadSample(reinterpret_cast<const Kuv16s*>(first)), loadSample(reinterpret_cast<const Kuv16s*>(first) + 1)))
    // Weights from -64 to 63: the sum must fit.
    OPERATION("multiplyAddPairs", Kuv8u,
              multiplyAddPairs(a, sub(as<Kuv8s>(bitAnd(b, fill<V>(0x7F))), as<Kuv8s>(fill<V>(64)))))
    OPERATION("sumsOfEight", Kuv8u, sumsOfEight(a))
    OPERATION("sumsOfTwo", Kuv32u, sumsOfTwo(a))
    BINARY(equal, Kuv8u) BINARY(equal, Kuv8s) BINARY(equal, Kuv16u) BINARY(equal, Kuv16s)
    BINARY(greater, Kuv8s) BINARY(greater, Kuv16s) BINARY(greater, Kuv32s)
    BINARY(minimum, Kuv8u) BINARY(minimum, Kuv16s) BINARY(minimum, Kuv16u) BINARY(minimum, Kuv32s)
    BINARY(maximum, Kuv8u) BINARY(maximum, Kuv16s) BINARY(maximum, Kuv16u) BINARY(maximum, Kuv32s)
    BINARY(absoluteDifference, Kuv8u) BINARY(absoluteDifference, Kuv16u) BINARY(absoluteDifference, Kuv16s)
    BINARY(bitAnd, Kuv8u) BINARY(bitOr, Kuv8u) BINARY(bitXor, Kuv8u) BINARY(bitAndNot, Kuv8u)
    OPERATION("select", Kuv8u, select(equal(a, b), b, c))
    OPERATION("select", Kuv32s, select(greater(a, b), b, c))

    SHIFT(shiftLeft, 0, Kuv16s) SHIFT(shiftLeft, 8, Kuv16s) SHIFT(shiftLeft, 15, Kuv16s)
    SHIFT(shiftLeft, 0, Kuv32s) SHIFT(shiftLeft, 8, Kuv32s) SHIFT(shiftLeft, 16, Kuv32s) SHIFT(shiftLeft, 31, Kuv32s)
    SHIFT(shiftLeft, 32, Kuv64u)
    SHIFT(shiftRight, 0, Kuv16s) SHIFT(shiftRight, 1, Kuv16s) SHIFT(shiftRight, 2, Kuv16s) SHIFT(shiftRight, 8, Kuv16s)
    SHIFT(shiftRight, 15, Kuv16s)
    SHIFT(shiftRight, 0, Kuv32s) SHIFT(shiftRight, 1, Kuv32s) SHIFT(shiftRight, 2, Kuv32s) SHIFT(shiftRight, 8, Kuv32s)
    SHIFT(shiftRight, 16, Kuv32s) SHIFT(shiftRight, 31, Kuv32s)
    OPERATION("shiftRight by 0", Kuv32s, shiftRight(a, 0)) OPERATION("shiftRight by 31", Kuv32s, shiftRight(a, 31))
    SHIFT(shiftRight, 0, Kuv16u) SHIFT(shiftRight, 8, Kuv16u) SHIFT(shiftRight, 15, Kuv16u)
    SHIFT(shiftRight, 0, Kuv32u) SHIFT(shiftRight, 16, Kuv32u) SHIFT(shiftRight, 31, Kuv32u)
    SHIFT(shiftRight, 32, Kuv64u)

    BINARY(interleaveLow, Kuv8u) BINARY(interleaveLow, Kuv16u) BINARY(interleaveHigh, Kuv8u) BINARY(interleaveHigh, Kuv16u)
    OPERATION("loadWidened", Kuv16u, loadWidened<V>(first))
    OPERATION("loadWidened", Kuv32s, loadWidened<V>(first))
    OPERATION("loadWidened of words", Kuv32s, loadWidened<V>(reinterpret_cast<const Kuv16u*>(first)))
    OPERATION("loadWidened of signed words", Kuv32s, loadWidened<V>(reinterpret_cast<const Kuv16s*>(first)))
    BINARY(pack, Kuv16s) BINARY(pack, Kuv32s)
    BINARY(packUnsigned, Kuv16s)
    // Half the range: what is outside of it must not be packed.
    OPERATION("packUnsigned", Kuv32s, packUnsigned(shiftRight<1>(a), shiftRight<1>(b)))
    BINARY(narrowed, Kuv16s)
    OPERATION("narrowed", Kuv32s, narrowed(a, b, c, a))
    OPERATION("narrowed to words", Kuv32s, narrowed(a, b))
    OPERATION("interleaveHalves", Kuv8u, interleaveHalves(a))
    OPERATION("interleaveHalves", Kuv16u, interleaveHalves(a))
    OPERATION("fillFrom<2>", Kuv32s, fillFrom<2>(a))
    OPERATION("exchangeMiddle", Kuv16s, exchangeMiddle(a))
    OPERATION("reverseUpperHalf", Kuv16s, reverseUpperHalf(a))
    OPERATION("interleaveAcross", Kuv16s, interleaveAcross(a))
    OPERATION("blend<0xAA>", Kuv16u, blend<0xAA>(a, b))
    OPERATION("blend<0x49>", Kuv16u, blend<0x49>(a, b))
    OPERATION("blend<0x6>", Kuv32u, blend<0x6>(a, b))

    OPERATION("bitsOf", Kuv8u, bitsOf(equal(a, b)))
    OPERATION("maskOf", Kuv8u, maskOf<V>(loadSample(reinterpret_cast<const Kuv32u*>(first))))
    RUN("storeInterleaved3", Kuv8u, storeInterleaved3(reinterpret_cast<Kuv8u*>(result), a, b, c))
    RUN("storeInterleaved3", Kuv16u, storeInterleaved3(reinterpret_cast<Kuv16u*>(result), a, b, c))
    RUN("storeInterleaved3", Kuv32u, storeInterleaved3(reinterpret_cast<Kuv32u*>(result), a, b, c))
    RUN("storeInterleaved4", Kuv8u, storeInterleaved4(reinterpret_cast<Kuv8u*>(result), a, b, c, bitXor(a, c)))
    RUN("transposeBlock", Kuv8u, transposed<V>(first, result)) RUN("transposeBlock", Kuv16u, transposed<V>(first, result))

    REAL_BINARY(add, Kuv32f) REAL_BINARY(multiply, Kuv32f) REAL_BINARY(sub, Kuv32f)
    REAL_BINARY(minimum, Kuv32f) REAL_BINARY(maximum, Kuv32f) REAL_BINARY(minimum, Kuv64f) REAL_BINARY(maximum, Kuv64f)
    REAL_BINARY(bitAnd, Kuv32f) REAL_BINARY(bitOr, Kuv32f) REAL_BINARY(bitAndNot, Kuv32f)
    REAL_BINARY(divide, Kuv32f)
    REAL_BINARY(greater, Kuv32f) REAL_BINARY(atLeast, Kuv32f)
    REAL_BINARY(equal, Kuv32f) REAL_BINARY(unequal, Kuv32f) REAL_BINARY(unordered, Kuv32f)
    OF_PRODUCT(plusProduct) OF_PRODUCT(productMinus) OF_PRODUCT(minusProduct)
    REAL("lanePairs<1, 2> Kuv32f", Kuv32f, put(result, lanePairs<1, 2>(a, b)))
    REAL("lanePairs<2, 0> Kuv32f", Kuv32f, put(result, lanePairs<2, 0>(a, b)))
    REAL("transposeFours Kuv32f", Kuv32f, V rows[] = {a, b, c, a}; transposeFours(rows);
         for (int i = 0; i < 4; ++i) put(result + static_cast<int>(sizeof(V)) * i, rows[i]))
    REAL("squareRoot Kuv32f", Kuv32f, put(result, squareRoot(a)))
    REAL("absolute Kuv32f", Kuv32f, put(result, absolute(a)))
    REAL("laneBits Kuv32f", Kuv32f, put(result, Kuv32u{laneBits(a)}))
    REAL("storeTruncated Kuv32f", Kuv32f, storeTruncated(reinterpret_cast<Kuv32s*>(result), a))
    REAL("select Kuv32f", Kuv32f, put(result, select(greater(a, b), b, c)))
    REAL("wholePart Kuv32f", Kuv32f, put(result, wholePart(a)))
    REAL("fill Kuv32f", Kuv32f, put(result, fill<V>(a.raw[0])))
    REAL("storeHalves Kuv32f", Kuv32f, storeHalves(reinterpret_cast<Kuv32f*>(result), a))
    REAL("stream Kuv32f", Kuv32f, alignas(32) Kuv32f block[V::lanes]; stream(block, a); streamFence(); put(result, load<V>(block)))
    OPERATION("toReals", Kuv32s, toReals(a))
    OPERATION("truncated", Kuv32s, truncated(get<Vector<Kuv32f, V::bytes>>(first)))
    OPERATION("rounded", Kuv32s, rounded(get<Vector<Kuv32f, V::bytes>>(first)))
    RUN("asIntegers of atLeast", Kuv32s, put(result, fromHalves<V>([&](int lane) {
            return asIntegers(atLeast(four<Kuv32f>(first, lane), four<Kuv32f>(second, lane)));
        })))
    RUN("inDoubles from integers", Kuv32s, putReals<V::bytes>(result, [&](int lane) {
            return inDoubles(four<Kuv32s>(first, lane), [](Doubles x) {
                return toSingles(add(multiply(x, fill<Doubles>(0.1)), fill<Doubles>(-7)));
            });
        }))
    RUN("inDoubles to integers", Kuv32s, put(result, fromHalves<V>([&](int lane) {
            return inDoubles(four<Kuv32f>(first, lane), [](Doubles x) {
                return truncated(sub(x, whereEqual(fill<Doubles>(0.5), x, toDoubles<Doubles>(truncated(x)))));
            });
        })))
    SINGLE(add, Kuv32f, a, b) SINGLE(sub, Kuv32f, a, b) SINGLE(multiply, Kuv32f, a, b) SINGLE(absolute, Kuv32f, a)
    SINGLE(squareRoot, Kuv32f, a) SINGLE(squareRoot, Kuv64f, a)
    SINGLE_OF_PRODUCT(plusProduct, Kuv32f) SINGLE_OF_PRODUCT(plusProduct, Kuv64f)
    SINGLE_OF_PRODUCT(productMinus, Kuv32f) SINGLE_OF_PRODUCT(minusProduct, Kuv32f)
};

constexpr int count = sizeof operations / sizeof operations[0];

}  // namespace
}  // namespace kuv::KUV_VARIANT

kuvtest::SimdOperations KUV_VARIANT_FUNCTION(simdOperations)() {
    return {kuv::KUV_VARIANT::operations, kuv::KUV_VARIANT::count};
}
