// Detection: where each feature bit comes from, what is asked of a processor, and what is not.
#include <gtest/gtest.h>

#include <cstring>

#include "support/process_state.hpp"
#include "support/processors.hpp"

namespace {

using kuvtest::SimulatedProcessor;

constexpr Kuv32u osxsave = 1u << 27, avx = 1u << 28, fma = 1u << 12;

class Features : public testing::Test {
protected:
    void SetUp() override {
        state_.reset();
        cpu.genuine(7);
        cpu.leaf(0x80000000) = {0x80000001, 0, 0, 0};
    }

    // Detects anew, whatever was found before.
    KuvCpuFeatures detect() {
        kuv::detectedValid = 0;
        KuvCpuFeatures mask = 0;
        EXPECT_TRUE(kuv::detectFeatures(SimulatedProcessor::processor, mask));
        return mask;
    }

    KuvStatus get(KuvCpuFeatures* features, Kuv32u* info) {
        return kuv::getCpuFeatures(SimulatedProcessor::processor, features, info);
    }

    SimulatedProcessor cpu;

private:
    kuvtest::ProcessState state_;
};

enum Register { eax, ebx, ecx, edx };

Kuv32u& word(kuv::CpuidWords& words, Register which) {
    switch (which) {
        case eax: return words.eax;
        case ebx: return words.ebx;
        case ecx: return words.ecx;
        default: return words.edx;
    }
}

struct Source {
    KuvCpuFeatures feature;
    Kuv32u leaf;
    Register which;
    int bit;
};

// Every bit that comes from one CPUID bit and from nothing else.
constexpr Source sources[] = {
    {KUV_CPU_MMX, 1, edx, 23},       {KUV_CPU_SSE, 1, edx, 25},        {KUV_CPU_SSE2, 1, edx, 26},
    {KUV_CPU_SSE3, 1, ecx, 0},       {KUV_CPU_SSSE3, 1, ecx, 9},       {KUV_CPU_MOVBE, 1, ecx, 22},
    {KUV_CPU_SSE41, 1, ecx, 19},     {KUV_CPU_SSE42, 1, ecx, 20},      {KUV_CPU_AVX, 1, ecx, 28},
    {KUV_CPU_AES, 1, ecx, 25},       {KUV_CPU_PCLMULQDQ, 1, ecx, 1},   {KUV_CPU_RDRAND, 1, ecx, 30},
    {KUV_CPU_F16C, 1, ecx, 29},      {KUV_CPU_ADX, 7, ebx, 19},        {KUV_CPU_RDSEED, 7, ebx, 18},
    {KUV_CPU_SHA, 7, ebx, 29},       {KUV_CPU_AVX512F, 7, ebx, 16},    {KUV_CPU_AVX512CD, 7, ebx, 28},
    {KUV_CPU_AVX512ER, 7, ebx, 27},  {KUV_CPU_AVX512PF, 7, ebx, 26},   {KUV_CPU_AVX512BW, 7, ebx, 30},
    {KUV_CPU_AVX512DQ, 7, ebx, 17},  {KUV_CPU_AVX512VL, 7, ebx, 31},   {KUV_CPU_AVX512VBMI, 7, ecx, 1},
    {KUV_CPU_MPX, 7, ebx, 14},       {KUV_CPU_PREFETCHW, 0x80000001, ecx, 8},
};

KuvCpuFeatures featureOf(Kuv32u leaf, Register which, int bit) {
    for (const Source& each : sources) {
        if (each.leaf == leaf && each.which == which && each.bit == bit) return each.feature;
    }
    return 0;
}

// Each bit of each word alone: it sets its own feature, or none.
TEST_F(Features, EachComesFromItsOwnBitAlone) {
    for (const Kuv32u leaf : {1u, 7u, 0x80000001u}) {
        for (const Register which : {eax, ebx, ecx, edx}) {
            for (int bit = 0; bit < 32; ++bit) {
                word(cpu.leaf(leaf), which) = 1u << bit;
                EXPECT_EQ(detect(), featureOf(leaf, which, bit)) << "leaf " << leaf << " register " << which << " bit " << bit;
                word(cpu.leaf(leaf), which) = 0;
            }
        }
    }
}

TEST_F(Features, AllBitsTogetherLeaveTheUndefinedOnesClear) {
    for (const Kuv32u leaf : {1u, 7u, 0x80000001u, 0x20000001u}) cpu.leaf(leaf) = {0xFFFFF0FF, ~0u, ~0u, ~0u};
    cpu.leaf(1).eax = 0xB10;
    EXPECT_EQ(detect(), 0x9FFFFFFFu);
}

TEST_F(Features, Avx2NeedsFourBits) {
    constexpr Kuv32u avx2 = 1u << 5, bmi1 = 1u << 3, bmi2 = 1u << 8;
    cpu.leaf(1).ecx = fma;
    cpu.leaf(7).ebx = avx2 | bmi1 | bmi2;
    EXPECT_EQ(detect(), KUV_CPU_AVX2);
    for (const Kuv32u missing : {avx2, bmi1, bmi2}) {
        cpu.leaf(7).ebx = (avx2 | bmi1 | bmi2) & ~missing;
        EXPECT_EQ(detect(), 0u) << "without leaf 7 EBX " << missing;
    }
    cpu.leaf(7).ebx = avx2 | bmi1 | bmi2;
    cpu.leaf(1).ecx = ~fma & ~osxsave;
    EXPECT_EQ(detect() & KUV_CPU_AVX2, 0u);
}

TEST_F(Features, OperatingSystemMustSaveBothRegisterFiles) {
    cpu.leaf(1).ecx = osxsave | avx;
    for (Kuv32u xcr0 = 0; xcr0 < 16; ++xcr0) {
        cpu.xcr0 = xcr0;
        EXPECT_EQ(detect(), KUV_CPU_AVX | ((xcr0 & 6) == 6 ? KUV_CPU_OS_AVX : 0)) << "XCR0 " << xcr0;
    }
    EXPECT_EQ(cpu.xcr0Reads, 16);
}

// XGETBV faults where the operating system has not enabled it.
TEST_F(Features, Xcr0IsNotReadUnlessBothBitsAllowIt) {
    for (const Kuv32u bits : {Kuv32u{0}, osxsave, avx, ~osxsave, ~avx}) {
        cpu.leaf(1).ecx = bits;
        EXPECT_EQ(detect() & KUV_CPU_OS_AVX, 0u) << std::hex << bits;
        EXPECT_EQ(cpu.xcr0Reads, 0) << std::hex << bits;
    }
}

TEST_F(Features, Leaf7IsNotAskedBelowMaximumLeaf7) {
    cpu.leaf(7) = {~0u, ~0u, ~0u, ~0u};
    cpu.leaf(1).ecx = fma;
    for (const Kuv32u maximum : {1u, 2u, 6u}) {
        cpu.genuine(maximum);
        EXPECT_EQ(detect(), 0u) << "maximum leaf " << maximum;
        EXPECT_FALSE(cpu.wasAsked(7)) << "maximum leaf " << maximum;
    }
    for (const Kuv32u maximum : {7u, 8u, 0x1Fu, 0x80000000u, 0xFFFFFFFFu}) {  // unsigned
        cpu.genuine(maximum);
        EXPECT_NE(detect() & KUV_CPU_AVX2, 0u) << "maximum leaf " << maximum;
    }
}

TEST_F(Features, ExtendedLeafIsNotAskedBelowItsMaximum) {
    cpu.leaf(0x80000001) = {~0u, ~0u, ~0u, ~0u};
    for (const Kuv32u maximum : {0u, 1u, 0x7FFFFFFFu, 0x80000000u}) {
        cpu.leaf(0x80000000).eax = maximum;
        EXPECT_EQ(detect(), 0u) << "maximum extended leaf " << maximum;
        EXPECT_FALSE(cpu.wasAsked(0x80000001)) << "maximum extended leaf " << maximum;
    }
    for (const Kuv32u maximum : {0x80000001u, 0x80000008u, 0xFFFFFFFFu}) {
        cpu.leaf(0x80000000).eax = maximum;
        EXPECT_EQ(detect(), KUV_CPU_PREFETCHW) << "maximum extended leaf " << maximum;
    }
}

TEST_F(Features, FamilyBAloneIsAskedForItsOwnLeaf) {
    cpu.leaf(0x20000001).edx = 2;
    for (Kuv32u family = 0; family < 16; ++family) {
        cpu.asked.clear();
        cpu.leaf(1).eax = family << 8;
        EXPECT_EQ(detect(), family == 0xB ? 0x1000u : 0u) << "family " << family;
        EXPECT_EQ(cpu.wasAsked(0x20000001), family == 0xB) << "family " << family;
    }
    cpu.leaf(1).eax = 0xB00;
    cpu.leaf(0x20000001) = {~0u, ~0u, ~0u, ~2u};
    EXPECT_EQ(detect(), 0u);
}

TEST_F(Features, FamilyBModel1HasItsOwnBit) {
    for (Kuv32u signature = 0; signature < 0x1000; ++signature) {
        cpu.leaf(1).eax = signature | 0xFFFFF000;  // extended family and model do not count
        EXPECT_EQ(detect() >> 31, (signature & 0xFF0) == 0xB10 ? 1u : 0u) << "signature " << signature;
    }
}

TEST_F(Features, EveryLeafIsAskedWithSubleaf0) {
    cpu.leaf(1).eax = 0xB10;
    detect();
    for (const auto& each : cpu.asked) EXPECT_EQ(each.second, 0u) << "leaf " << each.first;
    for (const Kuv32u leaf : {0u, 1u, 7u, 0x80000000u, 0x80000001u, 0x20000001u}) EXPECT_TRUE(cpu.wasAsked(leaf)) << leaf;
}

TEST_F(Features, AreDetectedOnce) {
    cpu.leaf(1).edx = 1u << 26;
    EXPECT_EQ(detect(), KUV_CPU_SSE2);
    EXPECT_EQ(kuv::detectedFeatures, KUV_CPU_SSE2);
    EXPECT_EQ(kuv::detectedValid, 1u);
    cpu.asked.clear();
    cpu.leaf(1).edx = 0;
    cpu.hasCpuid = false;
    KuvCpuFeatures mask = 0;
    EXPECT_TRUE(kuv::detectFeatures(SimulatedProcessor::processor, mask));
    EXPECT_EQ(mask, KUV_CPU_SSE2);
    EXPECT_TRUE(cpu.asked.empty());
}

TEST_F(Features, WithoutCpuidNothingIsAskedOrWritten) {
    cpu.hasCpuid = false;
    KuvCpuFeatures features = 0x1234;
    Kuv32u info[4] = {1, 2, 3, 4};
    EXPECT_EQ(get(&features, info), kuvStatusNoCpuid);
    EXPECT_EQ(features, 0x1234u);
    EXPECT_EQ(info[0], 1u);
    EXPECT_EQ(info[3], 4u);
    EXPECT_EQ(kuv::detectedValid, 0u);
    EXPECT_TRUE(cpu.asked.empty());
    EXPECT_EQ(get(nullptr, nullptr), kuvStatusNoCpuid);  // ahead of the null pointer
}

TEST_F(Features, NullMaskLeavesTheWordsAlone) {
    Kuv32u info[4] = {1, 2, 3, 4};
    EXPECT_EQ(get(nullptr, info), kuvStatusNullPtr);
    EXPECT_EQ(kuvGetCpuFeatures(nullptr, info), kuvStatusNullPtr);
    for (Kuv32u i = 0; i < 4; ++i) EXPECT_EQ(info[i], i + 1);
    Kuv32u* const unmapped = reinterpret_cast<Kuv32u*>(16);  // not even read
    EXPECT_EQ(get(nullptr, unmapped), kuvStatusNullPtr);
}

TEST_F(Features, WordsOfLeaf1ComeWithTheMask) {
    cpu.leaf(1) = {0x11, 0x22, 0x33, 1u << 25};
    cpu.leaf(4, 1) = {5, 6, 7, 8};
    KuvCpuFeatures features = 0;
    Kuv32u info[4] = {4, 99, 1, 99};  // not looked at without the magic word
    EXPECT_EQ(get(&features, info), kuvStatusOk);
    EXPECT_EQ(features, detect());
    EXPECT_EQ(info[0], 0x11u);
    EXPECT_EQ(info[1], 0x22u);
    EXPECT_EQ(info[2], 0x33u);
    EXPECT_EQ(info[3], 1u << 25);
}

TEST_F(Features, GetinfoaChoosesLeafAndSubleaf) {
    cpu.leaf(1).edx = 1u << 25;
    cpu.leaf(4, 1) = {5, 6, 7, 8};
    for (const Kuv32u ignored : {0u, 1u, ~0u}) {
        KuvCpuFeatures features;
        std::memcpy(&features, "getinfoa", 8);
        Kuv32u info[4] = {4, ignored, 1, ignored};
        EXPECT_EQ(get(&features, info), kuvStatusOk);
        EXPECT_EQ(features, KUV_CPU_SSE);
        for (Kuv32u i = 0; i < 4; ++i) EXPECT_EQ(info[i], i + 5);
    }
}

TEST_F(Features, GetinfoaMustBeWhole) {
    cpu.leaf(1) = {1, 1, 1, 1};
    cpu.leaf(4, 1) = {5, 6, 7, 8};
    for (int changed = 0; changed < 8; ++changed) {
        char text[] = "getinfoa";
        ++text[changed];
        KuvCpuFeatures features;
        std::memcpy(&features, text, 8);
        Kuv32u info[4] = {4, 0, 1, 0};
        EXPECT_EQ(get(&features, info), kuvStatusOk);
        EXPECT_EQ(info[0], 1u) << text;
    }
}

TEST_F(Features, GetinfoaWithoutWordsGivesTheMask) {
    cpu.leaf(1).edx = 1u << 25;
    KuvCpuFeatures features;
    std::memcpy(&features, "getinfoa", 8);
    EXPECT_EQ(get(&features, nullptr), kuvStatusOk);
    EXPECT_EQ(features, KUV_CPU_SSE);
}

// The same through the export, on the processor at hand.
TEST_F(Features, OfThisProcessorMatchItsWords) {
    KuvCpuFeatures features = 0;
    Kuv32u leaf1[4] = {};
    ASSERT_EQ(kuvGetCpuFeatures(&features, leaf1), kuvStatusOk);
    EXPECT_EQ((features & KUV_CPU_SSE2) != 0, (leaf1[edx] >> 26 & 1) != 0);
    EXPECT_EQ((features & KUV_CPU_SSE42) != 0, (leaf1[ecx] >> 20 & 1) != 0);
    EXPECT_EQ((features & KUV_CPU_SSE2), KUV_CPU_SSE2) << "part of x86-64";
    EXPECT_EQ(features >> 32, 0u);
    EXPECT_EQ(features & 0x60000000, 0u);
    if (features & KUV_CPU_OS_AVX) {
        EXPECT_TRUE(__builtin_cpu_supports("avx"));
        EXPECT_EQ((features & KUV_CPU_AVX2) != 0, __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
                                                      __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2"));
    }

    KuvCpuFeatures magic;
    std::memcpy(&magic, "getinfoa", 8);
    Kuv32u leaf0[4] = {0, 0, 0, 0};
    ASSERT_EQ(kuvGetCpuFeatures(&magic, leaf0), kuvStatusOk);
    EXPECT_EQ(magic, features);
    const kuv::CpuidWords wanted = kuv::hardware.cpuid(0, 0);
    EXPECT_EQ(leaf0[ebx], wanted.ebx);
    EXPECT_EQ(leaf0[edx], wanted.edx);

    if (wanted.eax >= 4) {
        std::memcpy(&magic, "getinfoa", 8);
        Kuv32u cache1[4] = {4, 7, 1, 7};
        ASSERT_EQ(kuvGetCpuFeatures(&magic, cache1), kuvStatusOk);
        const kuv::CpuidWords second = kuv::hardware.cpuid(4, 1);
        EXPECT_EQ(cache1[ebx], second.ebx);
        EXPECT_EQ(cache1[ecx], second.ecx);
    }
}

}  // namespace
