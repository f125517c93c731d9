// Loops of 16-bit samples with a scale factor: the rules in 32 bits. See loops.cpp.
#include "loops.hpp"

#include <stddef.h>

static inline Kuv32s belowHalf(Kuv32s places) { return places > 1 && places < 32 ? (1 << (places - 1)) - 1 : 0; }
static inline Kuv32s limited(Kuv32s v) { return v < -32768 ? -32768 : v > 32767 ? 32767 : v; }

// EACH sets every sample of the destination to its argument, which is told in v, the exact result.
#define KUV_SCALED(EACH)                                                                                             \
    const Kuv32s places = scaleFactor < 0 ? -scaleFactor : scaleFactor, half = belowHalf(places);           \
    if (scaleFactor == 0) EACH(limited(v))                                                                           \
    else if (scaleFactor < -15) EACH(v > 0 ? 32767 : v < 0 ? -32768 : 0)                                             \
    else if (scaleFactor < 0) EACH(limited(v << places))                                                             \
    else if (scaleFactor == 1) EACH(limited((v + (v >> 1 & 1)) >> 1))                                                \
    else EACH((v + half + (v >> places & 1)) >> places)                                                              \
    return kuvStatusOk;

// v may use a of one image and b of another.
#define KUV_OF_TWO(result)                                                                                           \
    for (ptrdiff_t y = 0; y < roiSize.height; ++y) {                                                                 \
        const Kuv16s* first = (const Kuv16s*)((const char*)src1 + y * src1Step);                                     \
        const Kuv16s* second = (const Kuv16s*)((const char*)src2 + y * src2Step);                                    \
        Kuv16s* to = (Kuv16s*)((char*)dst + y * dstStep);                                                            \
        for (ptrdiff_t x = 0; x < roiSize.width; ++x) {                                                              \
            const Kuv32s v = KUV_EXACT(second[x], first[x]);                                                         \
            to[x] = (Kuv16s)(result);                                                                                \
        }                                                                                                            \
    }
#define KUV_SCALE_TWO(name)                                                                                          \
    KuvStatus KUV_LOOP(name)(const Kuv16s* src1, Kuv32s src1Step, const Kuv16s* src2, Kuv32s src2Step, Kuv16s* dst,  \
                             Kuv32s dstStep, KuviSize roiSize, Kuv32s scaleFactor) {                                 \
        KUV_SCALED(KUV_OF_TWO)                                                                                       \
    }

#define KUV_IN_PLACE(result)                                                                                         \
    for (ptrdiff_t y = 0; y < roiSize.height; ++y) {                                                                 \
        const Kuv16s* from = (const Kuv16s*)((const char*)src + y * srcStep);                                        \
        Kuv16s* to = (Kuv16s*)((char*)srcDst + y * srcDstStep);                                                      \
        for (ptrdiff_t x = 0; x < KUV_CHANNELS * (ptrdiff_t)roiSize.width; ++x) {                                    \
            const Kuv32s v = KUV_EXACT(to[x], from[x]);                                                              \
            to[x] = (Kuv16s)(result);                                                                                \
        }                                                                                                            \
    }
#define KUV_SCALE_IN_PLACE(name)                                                                                     \
    KuvStatus KUV_LOOP(name)(const Kuv16s* src, Kuv32s srcStep, Kuv16s* srcDst, Kuv32s srcDstStep, KuviSize roiSize, \
                             Kuv32s scaleFactor) {                                                                   \
        KUV_SCALED(KUV_IN_PLACE)                                                                                     \
    }

#define KUV_OF_CONSTANT(result)                                                                                      \
    for (ptrdiff_t y = 0; y < roiSize.height; ++y) {                                                                 \
        Kuv16s* to = (Kuv16s*)((char*)srcDst + y * srcDstStep);                                                      \
        for (ptrdiff_t x = 0; x < roiSize.width; ++x) {                                                              \
            const Kuv32s v = KUV_EXACT(to[x], value);                                                                \
            to[x] = (Kuv16s)(result);                                                                                \
        }                                                                                                            \
    }
#define KUV_SCALE_CONSTANT(name)                                                                                     \
    KuvStatus KUV_LOOP(name)(Kuv16s value, Kuv16s* srcDst, Kuv32s srcDstStep, KuviSize roiSize, Kuv32s scaleFactor) { \
        KUV_SCALED(KUV_OF_CONSTANT)                                                                                  \
    }

#define KUV_OF_CONSTANTS(result)                                                                                     \
    for (ptrdiff_t y = 0; y < roiSize.height; ++y) {                                                                 \
        Kuv16s* to = (Kuv16s*)((char*)srcDst + y * srcDstStep);                                                      \
        for (ptrdiff_t x = 0; x < roiSize.width; ++x, to += 3) {                                                     \
            for (int c = 0; c < 3; ++c) {                                                                            \
                const Kuv32s v = to[c] + values[c];                                                                  \
                to[c] = (Kuv16s)(result);                                                                            \
            }                                                                                                        \
        }                                                                                                            \
    }
KuvStatus KUV_LOOP(addConstantsScaled)(const Kuv16s value[3], Kuv16s* srcDst, Kuv32s srcDstStep, KuviSize roiSize,
                                       Kuv32s scaleFactor) {
    const Kuv32s values[3] = {value[0], value[1], value[2]};
    KUV_SCALED(KUV_OF_CONSTANTS)
}

#define KUV_EXACT(a, b) ((a) + (b))
#define KUV_CHANNELS 3
KUV_SCALE_TWO(addScaled)
KUV_SCALE_IN_PLACE(addThreeScaled)
KUV_SCALE_CONSTANT(addConstantScaled)
#undef KUV_EXACT
#undef KUV_CHANNELS

#define KUV_EXACT(a, b) ((a) - (b))
#define KUV_CHANNELS 1
KUV_SCALE_TWO(subScaled)
KUV_SCALE_IN_PLACE(subScaledInPlace)
KUV_SCALE_CONSTANT(subConstantScaled)

#define KUV_OF_SQUARE(result)                                                                                        \
    for (ptrdiff_t y = 0; y < roiSize.height; ++y) {                                                                 \
        Kuv16s* to = (Kuv16s*)((char*)srcDst + y * srcDstStep);                                                      \
        for (ptrdiff_t x = 0; x < roiSize.width; ++x) {                                                              \
            const Kuv32s v = to[x] * to[x];                                                                          \
            to[x] = (Kuv16s)(result);                                                                                \
        }                                                                                                            \
    }
KuvStatus KUV_LOOP(squareScaled)(Kuv16s* srcDst, Kuv32s srcDstStep, KuviSize roiSize, Kuv32s scaleFactor) {
    const Kuv32s places = scaleFactor < 0 ? -scaleFactor : scaleFactor, half = belowHalf(places);
    if (scaleFactor == 0) KUV_OF_SQUARE(v < 32767 ? v : 32767)
    else if (scaleFactor < -14) KUV_OF_SQUARE(v == 0 ? 0 : 32767)
    else if (scaleFactor < 0) KUV_OF_SQUARE(limited((v < 32767 ? v : 32767) << places))
    else if (scaleFactor == 1) KUV_OF_SQUARE(limited(v >> 1))
    else KUV_OF_SQUARE(limited((v + half + (v >> places & 1)) >> places))
    return kuvStatusOk;
}
