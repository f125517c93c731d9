#include "core/cpuid.hpp"

namespace kuv {
namespace {

bool hardwareHasCpuid() {
    // CPUID exists if bit 21 of the flags can be flipped. The pushes must not land in the red zone below the stack pointer, where
    // the compiler may keep variables of this function.
    Kuv64u flipped;
    asm volatile(
        "leaq -128(%%rsp), %%rsp\n\t"
        "pushfq\n\t"
        "pushfq\n\t"
        "btcq $21, (%%rsp)\n\t"
        "popfq\n\t"
        "pushfq\n\t"
        "popq %0\n\t"
        "xorq (%%rsp), %0\n\t"
        "popfq\n\t"
        "leaq 128(%%rsp), %%rsp"
        : "=&r"(flipped)
        :
        : "cc", "memory");
    return (flipped >> 21 & 1) != 0;
}

CpuidWords hardwareCpuid(Kuv32u leaf, Kuv32u subleaf) {
    CpuidWords words;
    asm volatile("cpuid" : "=a"(words.eax), "=b"(words.ebx), "=c"(words.ecx), "=d"(words.edx) : "a"(leaf), "c"(subleaf));
    return words;
}

Kuv32u hardwareXcr0() {
    Kuv32u low, high;
    asm volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return low;
}

}  // namespace

const Processor hardware = {hardwareHasCpuid, hardwareCpuid, hardwareXcr0};

bool vendorIsTested(const Processor& processor) {
    if (!processor.hasCpuid()) return false;
    const CpuidWords words = processor.cpuid(0, 0);
    return words.ebx == 0x756E6547 && words.edx == 0x49656E69 && words.ecx == 0x6C65746E;  // "GenuineIntel"
}

}  // namespace kuv
