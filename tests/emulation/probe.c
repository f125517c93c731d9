/* What a processor runs, and what the library makes of it: a line each, for emulate.py. */
#include <setjmp.h>
#include <signal.h>
#include <stdio.h>

#include "kuvcv.h"

static sigjmp_buf refused;

static void onIllegalInstruction(int signal) {
    (void)signal;
    siglongjmp(refused, 1);
}

#define TRY(set, instruction)                      \
    if (sigsetjmp(refused, 1) == 0) {              \
        __asm__ volatile(instruction ::: "eax", "ecx", "xmm0", "cc"); \
        printf(" " set);                           \
    }

int main(void) {
    KuvCpuFeatures features = 0;
    const KuvStatus asked = kuvGetCpuFeatures(&features, NULL);
    /* The variant that the library chose as it was loaded. */
    printf("variant %s\n", kuvcvGetLibVersion()->variantCode);
    printf("features %d 0x%llx\n", asked, (unsigned long long)features);

    signal(SIGILL, onIllegalInstruction);
    printf("sets");
    TRY("SSE3", "haddps %%xmm0, %%xmm0")
    TRY("SSSE3", "pshufb %%xmm0, %%xmm0")
    TRY("SSE4.1", "pmulld %%xmm0, %%xmm0")
    TRY("SSE4.2", "pcmpgtq %%xmm0, %%xmm0")
    TRY("POPCNT", "popcnt %%eax, %%eax")
    TRY("MOVBE", "movbe (%%rsp), %%eax")
    TRY("AVX", "vxorps %%ymm0, %%ymm0, %%ymm0")
    TRY("F16C", "vcvtph2ps %%xmm0, %%xmm0")
    TRY("FMA", "vfmadd213ps %%xmm0, %%xmm0, %%xmm0")
    TRY("AVX2", "vpaddd %%ymm0, %%ymm0, %%ymm0")
    TRY("BMI1", "andn %%eax, %%eax, %%eax")
    TRY("BMI2", "rorx $1, %%eax, %%eax")
    TRY("AVX512F", "vpxord %%zmm0, %%zmm0, %%zmm0")
    {
        /* Processors without them take these for others that give something else. */
        unsigned leading, trailing = 77;
        __asm__ volatile("lzcnt %1, %0" : "=r"(leading) : "r"(1u) : "cc");
        __asm__ volatile("tzcnt %1, %0" : "+r"(trailing) : "r"(0u) : "cc");
        if (leading == 31) printf(" LZCNT");
        if (trailing == 32) printf(" TZCNT");
    }
    const KuvStatus initialised = kuvInit();
    /* A forced selection makes the set that was in force the detected one. */
    KuvCpuFeatures enabled = 0;
    kuvSetCpuFeatures(KUV_CPU_FORCE | 3);
    kuvGetCpuFeatures(&enabled, NULL);
    printf("\nenabled %d 0x%llx\n", initialised, (unsigned long long)enabled);
    return 0;
}
