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

constexpr KuvCpuFeatures forceBit = KUV_CPU_FORCE;
constexpr Kuv32u osStateBit = 0x200;
constexpr Kuv32u undefinedBits = 0x60000000;
constexpr Kuv32u needOsState = 0x7F08100;  // AVX, AVX2 and the AVX-512 sets but VBMI

struct SelectionRow {
    Kuv32u test;
    Kuv32u closure;  // what the variant takes for granted
    Kuv32s index;
};

// The first row whose test bits a mask holds is its row; the last one takes every mask.
inline constexpr SelectionRow selectionTable[] = {
    {0x7300000, 0x73081DF, 5}, {0xF00000, 0xF081DF, 5}, {0x8000, 0x81DF, 5}, {0x100, 0x1DF, 4},
    {0x80, 0xDF, 3},           {0x40, 0x5F, 2},         {0x20, 0x3F, 2},     {0x10, 0x1F, 2},
    {0x8, 0xF, 1},             {0x4, 0x7, 1},           {0x2, 0x3, 0},       {0x0, 0x1, 0},
};

// The processor in the hardware; the tests pass processors of their own making.
extern const Processor hardware;

bool vendorIsTested(const Processor& processor);

// Gives the feature mask, from the cache after the first time. False: no CPUID, and mask is left alone.
bool detectFeatures(const Processor& processor, KuvCpuFeatures& mask);

// Stores enabledFeatures and gives the index, which the caller stores.
KuvStatus selectVariant(const Processor& processor, KuvCpuFeatures mask, Kuv32s& index);

KuvStatus initialise(const Processor& processor);
KuvStatus setCpuFeatures(const Processor& processor, KuvCpuFeatures features);
KuvStatus getCpuFeatures(const Processor& processor, KuvCpuFeatures* features, Kuv32u* cpuidInfo);

// What core/cache.hpp asks, of any processor.
KuvStatus queryCacheBytes(const Processor& processor, Kuv32s* size);
void queryCacheLine(const Processor& processor, Kuv32s* line);

}  // namespace kuv
