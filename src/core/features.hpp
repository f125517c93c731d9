// Processor features as the library knows them, the table that maps a feature mask to a variant, and the process-wide state of
// detection and selection.
#pragma once

#include "core/cpuid.hpp"
#include "kuvcv.h"

namespace kuv {

// State of the process. All of it is written by plain aligned stores of values that any thread would compute alike; there is no
// lock. The stubs read variantIndex under its assembler name.
extern Kuv32s variantIndex asm("kuvVariantIndex");  // 0 px .. 5 h9; -1 before the first selection
extern KuvCpuFeatures enabledFeatures;              // the accepted mask, widened to its closure
extern KuvCpuFeatures detectedFeatures;
extern Kuv32u detectedValid;  // stored after detectedFeatures, so that a reader never takes an unset mask
extern Kuv32s cacheBytes;     // largest data or unified cache; negative: unknown
extern Kuv32s cacheQueryStatus;
extern Kuv32s cacheLineBytes;  // negative: unknown

constexpr Kuv32s cacheNeverQueried = 1;

// Acquire and release are plain moves on x86: what was stored before a value is seen with it.
template <class T>
inline T loadShared(const T& shared) {
    return __atomic_load_n(&shared, __ATOMIC_ACQUIRE);
}
template <class T>
inline void storeShared(T& shared, T value) {
    __atomic_store_n(&shared, value, __ATOMIC_RELEASE);
}

struct SelectionRow {
    KuvCpuFeatures test;
    KuvCpuFeatures closure;  // what the variant takes for granted
    Kuv32s index;
};

// The groups of AVX-512 that processors have.
constexpr KuvCpuFeatures serverAvx512 = KUV_CPU_AVX512F | KUV_CPU_AVX512CD | KUV_CPU_AVX512BW | KUV_CPU_AVX512DQ | KUV_CPU_AVX512VL;
constexpr KuvCpuFeatures manyCoreAvx512 = KUV_CPU_AVX512F | KUV_CPU_AVX512CD | KUV_CPU_AVX512ER | KUV_CPU_AVX512PF;

// Each set with those before it.
constexpr KuvCpuFeatures upToSse = KUV_CPU_MMX | KUV_CPU_SSE;
constexpr KuvCpuFeatures upToSse2 = upToSse | KUV_CPU_SSE2;
constexpr KuvCpuFeatures upToSse3 = upToSse2 | KUV_CPU_SSE3;
constexpr KuvCpuFeatures upToSsse3 = upToSse3 | KUV_CPU_SSSE3;
constexpr KuvCpuFeatures upToSse41 = upToSsse3 | KUV_CPU_SSE41;
constexpr KuvCpuFeatures upToSse42 = upToSse41 | KUV_CPU_SSE42;
constexpr KuvCpuFeatures upToAvx = upToSse42 | KUV_CPU_AVX;
constexpr KuvCpuFeatures upToAvx2 = upToAvx | KUV_CPU_AVX2;

// The first row whose test bits a mask holds is its row; the last one takes every mask.
inline constexpr SelectionRow selectionTable[] = {
    {serverAvx512, upToAvx2 | serverAvx512, 5},
    {manyCoreAvx512, upToAvx2 | manyCoreAvx512, 5},
    {KUV_CPU_AVX2, upToAvx2, 5},
    {KUV_CPU_AVX, upToAvx, 4},
    {KUV_CPU_SSE42, upToSse42, 3},
    {KUV_CPU_SSE41, upToSse41, 2},
    {KUV_CPU_MOVBE, upToSsse3 | KUV_CPU_MOVBE, 2},
    {KUV_CPU_SSSE3, upToSsse3, 2},
    {KUV_CPU_SSE3, upToSse3, 1},
    {KUV_CPU_SSE2, upToSse2, 1},
    {KUV_CPU_SSE, upToSse, 0},
    {0, KUV_CPU_MMX, 0},
};

// Gives the feature mask, from the cache after the first time. False: no CPUID, and mask is left alone.
bool detectFeatures(const Processor& processor, KuvCpuFeatures& mask);

KuvStatus initialise(const Processor& processor);
KuvStatus setCpuFeatures(const Processor& processor, KuvCpuFeatures features);
KuvStatus getCpuFeatures(const Processor& processor, KuvCpuFeatures* features, Kuv32u* cpuidInfo);

// What core/cache.hpp asks, of any processor.
KuvStatus queryCacheBytes(const Processor& processor, Kuv32s* size);
void queryCacheLine(const Processor& processor, Kuv32s* line);

}  // namespace kuv
