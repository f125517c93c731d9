// From a mask to a variant: the table, the statuses and which of them wins, the force flag, and kuvInit.
#include <gtest/gtest.h>

#include "support/processors.hpp"
#include "support/variants.hpp"

namespace {

using kuvtest::SimulatedProcessor;

constexpr KuvCpuFeatures everything = 0x9FFFFFFF;

class Selection : public testing::Test {
protected:
    void SetUp() override {
        state_.reset();
        cpu.genuine(7);
        detected(everything);
    }

    void detected(KuvCpuFeatures mask) {
        kuv::detectedFeatures = mask;
        kuv::detectedValid = 1;
    }

    KuvStatus select(KuvCpuFeatures mask) { return kuv::setCpuFeatures(SimulatedProcessor::processor, mask); }
    KuvStatus init() { return kuv::initialise(SimulatedProcessor::processor); }

    void expect(KuvCpuFeatures mask, KuvStatus status, Kuv32s index, KuvCpuFeatures enabled) {
        EXPECT_EQ(select(mask), status) << "mask " << std::hex << mask;
        EXPECT_EQ(kuv::variantIndex, index) << "mask " << std::hex << mask;
        EXPECT_EQ(kuv::enabledFeatures, enabled) << "mask " << std::hex << mask;
    }

    SimulatedProcessor cpu;

private:
    kuvtest::ProcessState state_;
};

struct Row {
    KuvCpuFeatures test, closure;
    Kuv32s index;
};

// Written out a second time, so that a slip in the library's table shows.
constexpr Row rows[] = {{0x7300000, 0x73081DF, 5}, {0xF00000, 0xF081DF, 5}, {0x8000, 0x81DF, 5}, {0x100, 0x1DF, 4},
                        {0x80, 0xDF, 3},           {0x40, 0x5F, 2},         {0x20, 0x3F, 2},     {0x10, 0x1F, 2},
                        {0x8, 0xF, 1},             {0x4, 0x7, 1},           {0x2, 0x3, 0}};

TEST_F(Selection, TestBitsAloneSelectTheRow) {
    for (const Row& row : rows) {
        expect(row.test, row.test == row.closure ? kuvStatusOk : kuvStatusFeatureIncomplete, row.index, row.closure);
    }
}

TEST_F(Selection, WholeClosureIsAccepted) {
    for (const Row& row : rows) expect(row.closure, kuvStatusOk, row.index, row.closure);
}

TEST_F(Selection, AnyMissingClosureBitIsSupplied) {
    for (const Row& row : rows) {
        for (int bit = 0; bit < 32; ++bit) {
            const KuvCpuFeatures missing = KuvCpuFeatures{1} << bit;
            if ((row.closure & missing) == 0 || (row.test & missing) != 0) continue;
            expect(row.closure & ~missing, kuvStatusFeatureIncomplete, row.index, row.closure);
        }
    }
}

// Every mask of the bits that rows test, with all others set or clear, against a walk from the top.
TEST_F(Selection, FirstRowFromTheTopWins) {
    constexpr int tested[] = {1, 2, 3, 4, 5, 6, 7, 8, 15, 20, 21, 22, 23, 24, 25, 26};
    for (KuvCpuFeatures others : {KuvCpuFeatures{0}, KuvCpuFeatures{0x98080601}}) {
        for (unsigned choice = 0; choice < 1u << std::size(tested); ++choice) {
            KuvCpuFeatures mask = others;
            for (std::size_t i = 0; i < std::size(tested); ++i) {
                if (choice >> i & 1) mask |= KuvCpuFeatures{1} << tested[i];
            }
            Row wanted = {0, 1, 0};
            for (const Row& row : rows) {
                if ((mask & row.test) == row.test) {
                    wanted = row;
                    break;
                }
            }
            KuvStatus status = (mask & wanted.closure) == wanted.closure ? kuvStatusOk : kuvStatusFeatureIncomplete;
            if (wanted.test == 0) status = kuvStatusNoCpuid;
            expect(mask, status, wanted.index, mask | wanted.closure);
            if (HasFailure()) return;
        }
    }
}

TEST_F(Selection, SmallMasks) {
    expect(0, kuvStatusNoCpuid, 0, 1);
    expect(1, kuvStatusNoCpuid, 0, 1);
    expect(2, kuvStatusFeatureIncomplete, 0, 3);
    expect(3, kuvStatusOk, 0, 3);
    expect(4, kuvStatusFeatureIncomplete, 1, 7);
    expect(7, kuvStatusOk, 1, 7);
    expect(KUV_CPU_SSE3, kuvStatusFeatureIncomplete, 1, 0xF);
    expect(KUV_CPU_AES, kuvStatusNoCpuid, 0, 0x401);
}

// A partial group of AVX-512 bits selects nothing by itself.
TEST_F(Selection, PartOfAnAvx512GroupIsNoRow) {
    expect(0x6300000, kuvStatusNoCpuid, 0, 0x6300001);
    expect(0x700000, kuvStatusNoCpuid, 0, 0x700001);
    expect(0x6300000 | 0x1DF, kuvStatusOk, 4, 0x6300000 | 0x1DF);
}

TEST_F(Selection, ThroughTheExports) {
    kuv::detectedValid = 0;
    const KuvStatus status = kuvInit();
    EXPECT_GE(kuv::variantIndex, 1);
    KuvCpuFeatures features = 0;
    EXPECT_EQ(kuvGetCpuFeatures(&features, nullptr), kuvStatusOk);
    EXPECT_EQ(status, kuv::vendorIsTested(kuv::hardware) ? kuvSetCpuFeatures(features) : kuvStatusNotVendorCpu);
    EXPECT_EQ(kuvSetCpuFeatures(0), kuvStatusNoCpuid);
    EXPECT_EQ(kuv::variantIndex, 0);
    EXPECT_EQ(kuv::enabledFeatures, 1u);
    EXPECT_EQ(kuvSetCpuFeatures(3), kuvStatusOk);
    EXPECT_EQ(kuv::variantIndex, 0);
    EXPECT_EQ(kuvSetCpuFeatures(2), kuvStatusFeatureIncomplete);
    EXPECT_EQ(kuv::enabledFeatures, 3u);
    EXPECT_EQ(kuvSetCpuFeatures(4), kuvStatusFeatureIncomplete);
    EXPECT_EQ(kuv::variantIndex, 1);
    EXPECT_EQ(kuv::enabledFeatures, 7u);
}

TEST_F(Selection, MissingFeatureIsReportedAndStillSelects) {
    detected(0x3);
    expect(0xDF, kuvStatusFeatureMissing, 3, 0xDF);
    expect(0x80, kuvStatusFeatureMissing, 3, 0xDF);  // a missing feature goes before an incomplete mask
    detected(0xDF & ~1u);
    expect(0xDF, kuvStatusFeatureMissing, 3, 0xDF);
    detected(0);
    expect(KUV_CPU_AES, kuvStatusFeatureMissing, 0, 0x401);  // and before a mask that selects nothing
}

TEST_F(Selection, EachUndetectedBitIsMissing) {
    for (int bit = 0; bit < 32; ++bit) {
        const KuvCpuFeatures asked = KuvCpuFeatures{1} << bit;
        detected(everything & ~asked);
        EXPECT_EQ(select(asked | 3), kuvStatusFeatureMissing) << "bit " << bit;
        detected(everything);
        if (bit == 29 || bit == 30) continue;  // undefined
        EXPECT_NE(select(asked | 3), kuvStatusFeatureMissing) << "bit " << bit;
    }
}

TEST_F(Selection, WithoutOperatingSystemStateTheWideBitsAreTakenAway) {
    detected(everything & ~KUV_CPU_OS_AVX);
    expect(0x1DF, kuvStatusFeatureMissing, 3, 0xDF);
    expect(0x81DF, kuvStatusFeatureMissing, 3, 0xDF);
    expect(0x73081DF, kuvStatusFeatureMissing, 3, 0xDF);
    expect(0xF081DF, kuvStatusFeatureMissing, 3, 0xDF);
    expect(KUV_CPU_AVX, kuvStatusFeatureMissing, 0, 1);
    expect(KUV_CPU_AVX | KUV_CPU_SSSE3, kuvStatusFeatureMissing, 2, 0x1F);
    expect(0xDF, kuvStatusOk, 3, 0xDF);
    // AVX-512 VBMI is not among them.
    expect(0xDF | KUV_CPU_AVX512VBMI, kuvStatusOk, 3, 0xDF | KUV_CPU_AVX512VBMI);
    for (int bit = 0; bit < 32; ++bit) {
        const KuvCpuFeatures asked = KuvCpuFeatures{1} << bit;
        select(asked | 3);
        EXPECT_EQ((kuv::enabledFeatures & asked) == 0, (0x7F08100 >> bit & 1) != 0) << "bit " << bit;
    }
}

TEST_F(Selection, UndefinedBitsEndAsMissing) {
    for (const int bit : {29, 30, 32, 40, 62}) {
        const KuvCpuFeatures asked = KuvCpuFeatures{1} << bit;
        expect(asked | 3, kuvStatusFeatureMissing, 0, asked | 3);
    }
    expect(0x60000000, kuvStatusFeatureMissing, 0, 0x60000001);
}

// Once a force has put undefined bits among the detected ones, asking for them is another thing.
TEST_F(Selection, UndefinedBitsAreUnknownOnlyIfDetected) {
    for (const int bit : {29, 30, 32, 40, 62}) {
        const KuvCpuFeatures asked = KuvCpuFeatures{1} << bit;
        detected(everything);
        EXPECT_EQ(select(KUV_CPU_FORCE | asked | 0xDF), kuvStatusOk);
        EXPECT_EQ(select(KUV_CPU_FORCE | 0xDF), kuvStatusOk);  // now the undefined bit counts as detected
        expect(asked | 0xDF, kuvStatusFeatureUnknown, 3, asked | 0xDF);
        expect(asked | 0x80, kuvStatusFeatureUnknown, 3, asked | 0xDF);         // an unknown feature goes before an incomplete mask
        expect(asked | 1, kuvStatusFeatureUnknown, 0, asked | 1);               // and before a mask that selects nothing
        expect(asked | 0x1DF, kuvStatusFeatureMissing, 3, asked | 0xDF);        // a missing one goes before it, by a missing state
        expect(asked | 0xDF | KUV_CPU_AES, kuvStatusFeatureMissing, 3, asked | 0xDF | KUV_CPU_AES);  // or a missing bit
    }
}

TEST_F(Selection, ForceObeysAnyMask) {
    detected(0);
    for (const Row& row : rows) {
        expect(KUV_CPU_FORCE | row.closure, kuvStatusOk, row.index, row.closure);
        expect(KUV_CPU_FORCE | row.test, row.test == row.closure ? kuvStatusOk : kuvStatusFeatureIncomplete, row.index, row.closure);
    }
    expect(KUV_CPU_FORCE, kuvStatusNoCpuid, 0, 1);
    expect(KUV_CPU_FORCE | 0x60000003, kuvStatusOk, 0, 0x60000003);
    expect(KUV_CPU_FORCE | KuvCpuFeatures{5} << 32 | 3, kuvStatusOk, 0, KuvCpuFeatures{5} << 32 | 3);
    EXPECT_TRUE(cpu.asked.empty()) << "the processor is not asked";
    EXPECT_EQ(cpu.xcr0Reads, 0);
}

TEST_F(Selection, ForceMakesTheMaskInForceTheDetectedOne) {
    detected(everything);
    EXPECT_EQ(select(0xDF), kuvStatusOk);
    EXPECT_EQ(select(KUV_CPU_FORCE | 0x81DF), kuvStatusOk);
    KuvCpuFeatures features = 0;
    EXPECT_EQ(kuvGetCpuFeatures(&features, nullptr), kuvStatusOk);
    EXPECT_EQ(features, 0xDFu);
    EXPECT_EQ(kuv::variantIndex, 5);
}

TEST_F(Selection, InitAfterAForceSelectsFromTheMaskBeforeIt) {
    EXPECT_EQ(select(0xDF), kuvStatusOk);
    EXPECT_EQ(select(KUV_CPU_FORCE | 0x3), kuvStatusOk);
    EXPECT_EQ(init(), kuvStatusOk);
    EXPECT_EQ(kuv::variantIndex, 3);
    EXPECT_EQ(kuv::enabledFeatures, 0xDFu);
}

TEST_F(Selection, TwoMoreForcesUndoAForce) {
    detected(everything);
    EXPECT_EQ(init(), kuvStatusOk);
    EXPECT_EQ(select(KUV_CPU_FORCE | 0x3), kuvStatusOk);
    EXPECT_EQ(select(KUV_CPU_FORCE | everything), kuvStatusOk);
    EXPECT_EQ(kuv::detectedFeatures, 3u);
    EXPECT_EQ(select(KUV_CPU_FORCE | 0x3), kuvStatusOk);
    EXPECT_EQ(kuv::detectedFeatures, everything);
    EXPECT_EQ(init(), kuvStatusOk);
    EXPECT_EQ(kuv::variantIndex, 5);
}

// Forced before anything was detected: the initial mask is what counts as detected then.
TEST_F(Selection, ForceBeforeDetectionSkipsIt) {
    kuv::detectedValid = 0;
    EXPECT_EQ(select(KUV_CPU_FORCE | 0x7), kuvStatusOk);
    EXPECT_EQ(kuv::detectedValid, 1u);
    EXPECT_EQ(kuv::detectedFeatures, 3u);
    EXPECT_TRUE(cpu.asked.empty());
}

TEST_F(Selection, DetectsIfNothingDidBefore) {
    kuv::detectedValid = 0;
    cpu.leaf(1) = {0, 0, 0, 1u << 23 | 1u << 25 | 1u << 26};
    expect(7, kuvStatusOk, 1, 7);
    EXPECT_EQ(kuv::detectedFeatures, 7u);
    expect(0xF, kuvStatusFeatureMissing, 1, 0xF);
}

TEST_F(Selection, WithoutCpuidEverythingIsMissing) {
    kuv::detectedValid = 0;
    cpu.hasCpuid = false;
    expect(7, kuvStatusFeatureMissing, 1, 7);
    expect(0, kuvStatusNoCpuid, 0, 1);
}

TEST_F(Selection, InitTakesTheBestVariant) {
    for (const Row& row : rows) {
        const KuvCpuFeatures mask = row.closure | KUV_CPU_OS_AVX;
        detected(mask);
        EXPECT_EQ(init(), kuvStatusOk) << std::hex << mask;
        EXPECT_EQ(kuv::variantIndex, row.index) << std::hex << mask;
        EXPECT_EQ(kuv::enabledFeatures, mask);
    }
}

TEST_F(Selection, InitReplacesAnEarlierSelection) {
    EXPECT_EQ(select(3), kuvStatusOk);
    EXPECT_EQ(init(), kuvStatusOk);
    EXPECT_EQ(kuv::variantIndex, 5);
}

TEST_F(Selection, InitReportsWhatSelectionReports) {
    detected(KUV_CPU_SSE2);
    EXPECT_EQ(init(), kuvStatusFeatureIncomplete);
    EXPECT_EQ(kuv::variantIndex, 1);
    detected(0x1DF);  // the operating system does not save the registers of AVX
    EXPECT_EQ(init(), kuvStatusFeatureMissing);
    EXPECT_EQ(kuv::variantIndex, 3);
    detected(0);
    EXPECT_EQ(init(), kuvStatusNoCpuid);
    EXPECT_EQ(kuv::variantIndex, 0);
}

TEST_F(Selection, AnotherVendorGetsTheSameVariantAndAWarning) {
    for (const KuvCpuFeatures mask : {everything, KuvCpuFeatures{KUV_CPU_SSE2}, KuvCpuFeatures{0x1DF}, KuvCpuFeatures{0}}) {
        detected(mask);
        cpu.genuine(7);
        init();
        const Kuv32s index = kuv::variantIndex;
        const KuvCpuFeatures enabled = kuv::enabledFeatures;
        cpu.otherVendor(7);
        EXPECT_EQ(init(), kuvStatusNotVendorCpu) << std::hex << mask;  // whatever selection reports
        EXPECT_EQ(kuv::variantIndex, index);
        EXPECT_EQ(kuv::enabledFeatures, enabled);
    }
}

TEST_F(Selection, EachWordOfTheVendorCounts) {
    for (int changed = 0; changed < 3; ++changed) {
        cpu.genuine(7);
        Kuv32u* const words[] = {&cpu.leaf(0).ebx, &cpu.leaf(0).ecx, &cpu.leaf(0).edx};
        *words[changed] ^= 0x20;
        EXPECT_EQ(init(), kuvStatusNotVendorCpu) << "word " << changed;
    }
    cpu.genuine(7);
    EXPECT_EQ(init(), kuvStatusOk);
}

TEST_F(Selection, InitWithoutCpuidSelectsPx) {
    kuv::detectedValid = 0;
    cpu.hasCpuid = false;
    kuv::variantIndex = 4;
    EXPECT_EQ(init(), kuvStatusNotVendorCpu);
    EXPECT_EQ(kuv::variantIndex, 0);
    EXPECT_TRUE(cpu.asked.empty());
}

TEST_F(Selection, SetIgnoresTheVendor) {
    cpu.otherVendor(7);
    expect(0xDF, kuvStatusOk, 3, 0xDF);
}

// What the variants are compiled with against what selecting them guarantees: a variant may use no feature that some mask which
// selects it lacks, and should use all that every such mask has.
TEST_F(Selection, VariantsAreCompiledForWhatTheirRowsGuarantee) {
    for (const kuvtest::Variant& variant : kuvtest::variants) {
        KuvCpuFeatures guaranteed = ~KuvCpuFeatures{0};
        for (const kuv::SelectionRow& row : kuv::selectionTable) {
            if (row.index != variant.index || row.test == 0) continue;  // a mask that selects nothing promises nothing
            EXPECT_EQ(variant.features & ~KuvCpuFeatures{row.closure}, 0u) << variant << " in row of " << std::hex << row.test;
            guaranteed &= row.closure;
        }
        EXPECT_EQ(variant.features, guaranteed) << variant;
    }
}

TEST_F(Selection, TableIsTheDocumentedOne) {
    ASSERT_EQ(std::size(kuv::selectionTable), std::size(rows) + 1);
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        EXPECT_EQ(kuv::selectionTable[i].test, rows[i].test);
        EXPECT_EQ(kuv::selectionTable[i].closure, rows[i].closure);
        EXPECT_EQ(kuv::selectionTable[i].index, rows[i].index);
    }
    EXPECT_EQ(kuv::selectionTable[std::size(rows)].test, 0u);
    EXPECT_EQ(kuv::selectionTable[std::size(rows)].closure, 1u);
    EXPECT_EQ(kuv::selectionTable[std::size(rows)].index, 0);
}

}  // namespace
