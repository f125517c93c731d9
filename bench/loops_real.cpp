// The loops of floating-point arithmetic, under the rules of loops.cpp.
#include "loops.hpp"

#include <stddef.h>

#define KUV_COMBINED_LOOP(name, operation)                                                                          \
    KuvStatus KUV_LOOP(name)(const Kuv32f* src, Kuv32s srcStep, Kuv32f* srcDst, Kuv32s srcDstStep, KuviSize roiSize) { \
        for (ptrdiff_t y = 0; y < roiSize.height; ++y) {                                                             \
            const Kuv32f* from = (const Kuv32f*)((const char*)src + y * srcStep);                                    \
            Kuv32f* to = (Kuv32f*)((char*)srcDst + y * srcDstStep);                                                  \
            for (ptrdiff_t x = 0; x < roiSize.width; ++x) to[x] operation from[x];                                   \
        }                                                                                                            \
        return kuvStatusOk;                                                                                          \
    }
KUV_COMBINED_LOOP(addInPlace, +=)
KUV_COMBINED_LOOP(subInPlace, -=)
KUV_COMBINED_LOOP(divideInPlace, /=)

#define KUV_COMBINED_TO_LOOP(name, result)                                                                           \
    KuvStatus KUV_LOOP(name)(const Kuv32f* src1, Kuv32s src1Step, const Kuv32f* src2, Kuv32s src2Step, Kuv32f* dst,  \
                             Kuv32s dstStep, KuviSize roiSize) {                                                     \
        for (ptrdiff_t y = 0; y < roiSize.height; ++y) {                                                             \
            const Kuv32f* a = (const Kuv32f*)((const char*)src1 + y * src1Step);                                     \
            const Kuv32f* b = (const Kuv32f*)((const char*)src2 + y * src2Step);                                     \
            Kuv32f* to = (Kuv32f*)((char*)dst + y * dstStep);                                                        \
            for (ptrdiff_t x = 0; x < roiSize.width; ++x) to[x] = result;                                            \
        }                                                                                                            \
        return kuvStatusOk;                                                                                          \
    }
KUV_COMBINED_TO_LOOP(subTwo, b[x] - a[x])
KUV_COMBINED_TO_LOOP(absoluteDifference, __builtin_fabsf(a[x] - b[x]))

#define KUV_CONSTANTS_LOOP(name, operation)                                                                          \
    KuvStatus KUV_LOOP(name)(const Kuv32f* value, Kuv32f* srcDst, Kuv32s srcDstStep, KuviSize roiSize) {             \
        const Kuv32f first = value[0], second = value[1], third = value[2];                                          \
        for (ptrdiff_t y = 0; y < roiSize.height; ++y) {                                                             \
            Kuv32f* pixel = (Kuv32f*)((char*)srcDst + y * srcDstStep);                                               \
            for (ptrdiff_t x = 0; x < roiSize.width; ++x, pixel += 3) {                                              \
                pixel[0] operation first;                                                                            \
                pixel[1] operation second;                                                                           \
                pixel[2] operation third;                                                                            \
            }                                                                                                        \
        }                                                                                                            \
        return kuvStatusOk;                                                                                          \
    }
KUV_CONSTANTS_LOOP(addConstants, +=)
KUV_CONSTANTS_LOOP(multiplyConstants, *=)

#define KUV_CONSTANT_LOOP(name, operation, operand)                                                                  \
    KuvStatus KUV_LOOP(name)(Kuv32f value, Kuv32f* srcDst, Kuv32s srcDstStep, KuviSize roiSize) {                    \
        const Kuv32f with = operand;                                                                                 \
        for (ptrdiff_t y = 0; y < roiSize.height; ++y) {                                                             \
            Kuv32f* row = (Kuv32f*)((char*)srcDst + y * srcDstStep);                                                 \
            for (ptrdiff_t x = 0; x < roiSize.width; ++x) row[x] operation with;                                     \
        }                                                                                                            \
        return kuvStatusOk;                                                                                          \
    }
KUV_CONSTANT_LOOP(subConstant, -=, value)
KUV_CONSTANT_LOOP(divideConstant, *=, (Kuv32f)(1.0 / value))

#define KUV_EACH_LOOP(name, result)                                                                                  \
    KuvStatus KUV_LOOP(name)(Kuv32f* srcDst, Kuv32s srcDstStep, KuviSize roiSize) {                                  \
        for (ptrdiff_t y = 0; y < roiSize.height; ++y) {                                                             \
            Kuv32f* row = (Kuv32f*)((char*)srcDst + y * srcDstStep);                                                 \
            for (ptrdiff_t x = 0; x < roiSize.width; ++x) row[x] = result;                                           \
        }                                                                                                            \
        return kuvStatusOk;                                                                                          \
    }
KUV_EACH_LOOP(absoluteInPlace, __builtin_fabsf(row[x]))
KUV_EACH_LOOP(squareInPlace, row[x] * row[x])
KUV_EACH_LOOP(rootInPlace, __builtin_sqrtf(row[x]))
