// From CPUID to the library's feature mask.
#include "core/features.hpp"

namespace kuv {

KuvCpuFeatures detectedFeatures = 0;
Kuv32u detectedValid = 0;

namespace {

struct BitSource {
    int bit;     // of the feature mask
    int source;  // bit of the register
};

constexpr BitSource leaf1Edx[] = {{0, 23}, {1, 25}, {2, 26}};
constexpr BitSource leaf1Ecx[] = {{3, 0},  {4, 9},   {5, 22}, {6, 19},  {7, 20},
                                  {8, 28}, {10, 25}, {11, 1}, {13, 30}, {14, 29}};
constexpr BitSource leaf7Ebx[] = {{16, 19}, {17, 18}, {19, 29}, {20, 16}, {21, 28}, {22, 27},
                                  {23, 26}, {24, 30}, {25, 17}, {26, 31}, {28, 14}};
constexpr BitSource leaf7Ecx[] = {{27, 1}};
constexpr BitSource leafExtended1Ecx[] = {{18, 8}};
constexpr BitSource leafFamilyBEdx[] = {{12, 1}};

constexpr bool bitOf(Kuv32u word, int bit) { return (word >> bit & 1) != 0; }

template <int count>
Kuv32u collect(const BitSource (&sources)[count], Kuv32u word) {
    Kuv32u mask = 0;
    for (const BitSource& each : sources) mask |= static_cast<Kuv32u>(bitOf(word, each.source)) << each.bit;
    return mask;
}

Kuv32u maskOf(const Processor& processor) {
    const Kuv32u maximumLeaf = processor.cpuid(0, 0).eax;
    const Kuv32u maximumExtendedLeaf = processor.cpuid(0x80000000, 0).eax;
    const CpuidWords leaf1 = processor.cpuid(1, 0);
    Kuv32u mask = collect(leaf1Edx, leaf1.edx) | collect(leaf1Ecx, leaf1.ecx);

    // XGETBV faults unless the operating system has enabled it.
    const bool canReadXcr0 = bitOf(leaf1.ecx, 27) && bitOf(leaf1.ecx, 28);
    constexpr Kuv32u xmmAndYmm = 0x6;
    if (canReadXcr0 && (processor.xcr0() & xmmAndYmm) == xmmAndYmm) mask |= osStateBit;

    if ((leaf1.eax >> 8 & 0xF) == 0xB) mask |= collect(leafFamilyBEdx, processor.cpuid(0x20000001, 0).edx);
    if (maximumLeaf >= 7) {
        const CpuidWords leaf7 = processor.cpuid(7, 0);
        mask |= collect(leaf7Ebx, leaf7.ebx) | collect(leaf7Ecx, leaf7.ecx);
        const bool fma = bitOf(leaf1.ecx, 12);
        const bool avx2 = bitOf(leaf7.ebx, 5), bmi1 = bitOf(leaf7.ebx, 3), bmi2 = bitOf(leaf7.ebx, 8);
        if (fma && avx2 && bmi1 && bmi2) mask |= 0x8000;
    }
    if (maximumExtendedLeaf >= 0x80000001) mask |= collect(leafExtended1Ecx, processor.cpuid(0x80000001, 0).ecx);
    if ((leaf1.eax & 0xFF0) == 0xB10) mask |= 0x80000000;
    return mask;
}

}  // namespace

bool detectFeatures(const Processor& processor, KuvCpuFeatures& mask) {
    if (!loadShared(detectedValid)) {
        if (!processor.hasCpuid()) return false;
        storeShared(detectedFeatures, KuvCpuFeatures{maskOf(processor)});
        storeShared(detectedValid, Kuv32u{1});
    }
    mask = loadShared(detectedFeatures);
    return true;
}

KuvStatus getCpuFeatures(const Processor& processor, KuvCpuFeatures* features, Kuv32u* cpuidInfo) {
    KuvCpuFeatures detected;
    if (!detectFeatures(processor, detected)) return kuvStatusNoCpuid;
    if (features == nullptr) return kuvStatusNullPtr;
    constexpr KuvCpuFeatures magic = 0x616F666E69746567;  // "getinfoa"
    const bool callerChoosesLeaf = *features == magic;
    *features = detected;
    if (cpuidInfo == nullptr) return kuvStatusOk;
    const CpuidWords words = callerChoosesLeaf ? processor.cpuid(cpuidInfo[0], cpuidInfo[2]) : processor.cpuid(1, 0);
    cpuidInfo[0] = words.eax;
    cpuidInfo[1] = words.ebx;
    cpuidInfo[2] = words.ecx;
    cpuidInfo[3] = words.edx;
    return kuvStatusOk;
}

}  // namespace kuv

extern "C" KuvStatus kuvGetCpuFeatures(KuvCpuFeatures* features, Kuv32u* cpuidInfo) {
    return kuv::getCpuFeatures(kuv::hardware, features, cpuidInfo);
}
