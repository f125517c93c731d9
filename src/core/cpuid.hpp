// What the library asks a processor, as three functions, so that a test can answer in its place.
#pragma once

#include "kuvcv.h"

namespace kuv {

struct CpuidWords {
    Kuv32u eax, ebx, ecx, edx;
};

struct Processor {
    bool (*hasCpuid)();
    CpuidWords (*cpuid)(Kuv32u leaf, Kuv32u subleaf);
    Kuv32u (*xcr0)();  // low half
};

// The one in the hardware; the tests pass processors of their own making.
extern const Processor hardware;

bool vendorIsTested(const Processor& processor);

}  // namespace kuv
