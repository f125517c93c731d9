// From CPUID to the library's feature mask.
#include "core/features.hpp"

namespace kuv {

KuvCpuFeatures detectedFeatures = 0;
Kuv32u detectedValid = 0;

namespace {

struct FeatureSource {
    KuvCpuFeatures feature;
    int bit;  // of the register
};

// What the public header has no names for.
constexpr KuvCpuFeatures familyBFeature = 0x1000, modelB1 = 0x80000000;

constexpr FeatureSource leaf1Edx[] = {{KUV_CPU_MMX, 23}, {KUV_CPU_SSE, 25}, {KUV_CPU_SSE2, 26}};
constexpr FeatureSource leaf1Ecx[] = {{KUV_CPU_SSE3, 0},   {KUV_CPU_SSSE3, 9}, {KUV_CPU_MOVBE, 22}, {KUV_CPU_SSE41, 19},
                                      {KUV_CPU_SSE42, 20}, {KUV_CPU_AVX, 28},  {KUV_CPU_AES, 25},   {KUV_CPU_PCLMULQDQ, 1},
                                      {KUV_CPU_RDRAND, 30}, {KUV_CPU_F16C, 29}};
constexpr FeatureSource leaf7Ebx[] = {{KUV_CPU_ADX, 19},      {KUV_CPU_RDSEED, 18},   {KUV_CPU_SHA, 29},      {KUV_CPU_AVX512F, 16},
                                      {KUV_CPU_AVX512CD, 28}, {KUV_CPU_AVX512ER, 27}, {KUV_CPU_AVX512PF, 26}, {KUV_CPU_AVX512BW, 30},
                                      {KUV_CPU_AVX512DQ, 17}, {KUV_CPU_AVX512VL, 31}, {KUV_CPU_MPX, 14}};
constexpr FeatureSource leaf7Ecx[] = {{KUV_CPU_AVX512VBMI, 1}};
constexpr FeatureSource leafExtended1Ecx[] = {{KUV_CPU_PREFETCHW, 8}};
constexpr FeatureSource leafFamilyBEdx[] = {{familyBFeature, 1}};

constexpr bool bitOf(Kuv32u word, int bit) { return (word >> bit & 1) != 0; }

template <int count>
KuvCpuFeatures collect(const FeatureSource (&sources)[count], Kuv32u word) {
    KuvCpuFeatures mask = 0;
    for (const FeatureSource& each : sources) {
        if (bitOf(word, each.bit)) mask |= each.feature;
    }
    return mask;
}

KuvCpuFeatures maskOf(const Processor& processor) {
    const Kuv32u maximumLeaf = processor.cpuid(0, 0).eax;
    const Kuv32u maximumExtendedLeaf = processor.cpuid(0x80000000, 0).eax;
    const CpuidWords leaf1 = processor.cpuid(1, 0);
    KuvCpuFeatures mask = collect(leaf1Edx, leaf1.edx) | collect(leaf1Ecx, leaf1.ecx);

    // XGETBV faults unless the operating system has enabled it.
    const bool canReadXcr0 = bitOf(leaf1.ecx, 27) && bitOf(leaf1.ecx, 28);
    constexpr Kuv32u xmmAndYmm = 0x6;
    if (canReadXcr0 && (processor.xcr0() & xmmAndYmm) == xmmAndYmm) mask |= KUV_CPU_OS_AVX;

    if ((leaf1.eax >> 8 & 0xF) == 0xB) mask |= collect(leafFamilyBEdx, processor.cpuid(0x20000001, 0).edx);
    if (maximumLeaf >= 7) {
        const CpuidWords leaf7 = processor.cpuid(7, 0);
        mask |= collect(leaf7Ebx, leaf7.ebx) | collect(leaf7Ecx, leaf7.ecx);
        const bool fma = bitOf(leaf1.ecx, 12);
        const bool avx2 = bitOf(leaf7.ebx, 5), bmi1 = bitOf(leaf7.ebx, 3), bmi2 = bitOf(leaf7.ebx, 8);
        if (fma && avx2 && bmi1 && bmi2) mask |= KUV_CPU_AVX2;
    }
    if (maximumExtendedLeaf >= 0x80000001) mask |= collect(leafExtended1Ecx, processor.cpuid(0x80000001, 0).ecx);
    if ((leaf1.eax & 0xFF0) == 0xB10) mask |= modelB1;
    return mask;
}

}  // namespace

bool detectFeatures(const Processor& processor, KuvCpuFeatures& mask) {
    if (!loadShared(detectedValid)) {
        if (!processor.hasCpuid()) return false;
        storeShared(detectedFeatures, maskOf(processor));
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
