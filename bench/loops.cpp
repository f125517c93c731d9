// Compiled for each instruction set, so nothing of the standard library stands here: its inline functions would be emitted with
// AVX2 instructions, and the linker might keep those for everyone.
#include "loops.hpp"

#include <stddef.h>

#define KUV_LOOP_JOIN(name, set) name##_##set
#define KUV_LOOP_EXPAND(name, set) KUV_LOOP_JOIN(name, set)
#define KUV_LOOP(name) KUV_LOOP_EXPAND(name, KUV_LOOP_SET)

KuvStatus KUV_LOOP(addInPlace)(const Kuv32f* src, Kuv32s srcStep, Kuv32f* srcDst, Kuv32s srcDstStep, KuviSize roiSize) {
    for (ptrdiff_t y = 0; y < roiSize.height; ++y) {
        const Kuv32f* from = (const Kuv32f*)((const char*)src + y * srcStep);
        Kuv32f* to = (Kuv32f*)((char*)srcDst + y * srcDstStep);
        for (ptrdiff_t x = 0; x < roiSize.width; ++x) to[x] += from[x];
    }
    return kuvStatusOk;
}
