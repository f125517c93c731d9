// The questions about the largest cache: leaf 4, leaf 2, failures, and that each is asked once.
#include <gtest/gtest.h>

#include "core/cache.hpp"
#include "support/process_state.hpp"
#include "support/processors.hpp"

namespace {

using kuvtest::SimulatedProcessor;

constexpr Kuv32u data = 1, instruction = 2, unified = 3;

class Cache : public testing::Test {
protected:
    void SetUp() override {
        state_.reset();
        cpu.genuine(4);
    }

    void describe(Kuv32u subleaf, Kuv32u kind, Kuv32u ways, Kuv32u partitions, Kuv32u line, Kuv32u sets) {
        cpu.leaf(4, subleaf) = {kind, (ways - 1) << 22 | (partitions - 1) << 12 | (line - 1), sets - 1, 0};
    }

    KuvStatus queryBytes(Kuv32s* size) { return kuv::queryCacheBytes(SimulatedProcessor::processor, size); }
    Kuv32s queryLine() {
        Kuv32s line = 12345;
        kuv::queryCacheLine(SimulatedProcessor::processor, &line);
        return line;
    }

    void expect(KuvStatus status, Kuv32s bytes, Kuv32s line) {
        Kuv32s size = 12345;
        EXPECT_EQ(queryBytes(&size), status);
        EXPECT_EQ(size, bytes);
        EXPECT_EQ(kuv::cacheBytes, bytes);
        EXPECT_EQ(kuv::cacheQueryStatus, status);
        EXPECT_EQ(kuv::cacheLineBytes, line);
        EXPECT_EQ(queryLine(), line);
    }

    // The answer of leaf 2 with its descriptors in the four registers.
    void expectLeaf2(kuv::CpuidWords words, KuvStatus status, Kuv32s bytes) {
        kuvtest::ProcessState::reset();
        cpu.genuine(2);
        cpu.leaf(2) = words;
        expect(status, bytes, 0);
    }

    SimulatedProcessor cpu;

private:
    kuvtest::ProcessState state_;
};

TEST_F(Cache, LargestOfLeaf4) {
    describe(0, data, 12, 1, 64, 64);          // 48 KiB
    describe(1, instruction, 8, 1, 64, 64);    // 32 KiB
    describe(2, unified, 16, 1, 64, 2048);     // 2 MiB
    describe(3, unified, 15, 1, 128, 65536);   // 120 MiB
    expect(kuvStatusOk, 15 * 128 * 65536, 128);
}

TEST_F(Cache, AllFourFactorsCount) {
    describe(0, data, 3, 5, 32, 7);
    expect(kuvStatusOk, 3 * 5 * 32 * 7, 32);
}

TEST_F(Cache, WidestFields) {
    describe(0, data, 1024, 1, 1, 1);
    expect(kuvStatusOk, 1024, 1);
    kuvtest::ProcessState::reset();
    describe(0, data, 1, 1024, 1, 1);
    expect(kuvStatusOk, 1024, 1);
    kuvtest::ProcessState::reset();
    describe(0, data, 1, 1, 4096, 1);
    expect(kuvStatusOk, 4096, 4096);
    kuvtest::ProcessState::reset();
    describe(0, data, 1, 1, 1, 0x40000000);
    expect(kuvStatusOk, 0x40000000, 1);
}

TEST_F(Cache, UpperBitsOfTheKindDoNotCount) {
    describe(0, 0xFFFFFFE0 | data, 4, 1, 64, 64);
    expect(kuvStatusOk, 4 * 64 * 64, 64);
}

TEST_F(Cache, EqualSizesKeepTheEarlier) {
    describe(0, data, 4, 1, 32, 64);
    describe(1, unified, 2, 1, 64, 64);
    expect(kuvStatusOk, 4 * 32 * 64, 32);
}

TEST_F(Cache, InstructionCachesAreSkippedHoweverLarge) {
    describe(0, instruction, 16, 1, 64, 65536);
    describe(1, data, 4, 1, 32, 64);
    expect(kuvStatusOk, 4 * 32 * 64, 32);
}

TEST_F(Cache, EnumerationEndsAtTheFirstEmptySubleaf) {
    describe(0, data, 4, 1, 32, 64);
    describe(2, unified, 16, 1, 64, 65536);
    expect(kuvStatusOk, 4 * 32 * 64, 32);
    EXPECT_EQ(cpu.asked.back(), (std::pair<Kuv32u, Kuv32u>{4, 1}));
}

TEST_F(Cache, EnumerationEndsAfter32Subleaves) {
    for (Kuv32u i = 0; i < 40; ++i) describe(i, data, 1, 1, 64, i + 1);
    expect(kuvStatusOk, 64 * 32, 64);
    EXPECT_EQ(cpu.asked.back(), (std::pair<Kuv32u, Kuv32u>{4, 31}));
}

TEST_F(Cache, MoreThanLeaf4IsLeaf4) {
    cpu.genuine(0x1F);
    describe(0, data, 4, 1, 32, 64);
    cpu.leaf(2) = {0x01, 0, 0, 0xEC};
    expect(kuvStatusOk, 4 * 32 * 64, 32);
    EXPECT_FALSE(cpu.wasAsked(2));
}

TEST_F(Cache, NothingInLeaf4IsNoInformation) { expect(kuvStatusNoCacheInfo, 0, 0); }

TEST_F(Cache, InstructionCachesAloneAreNoInformation) {
    describe(0, instruction, 8, 1, 64, 64);
    expect(kuvStatusNoCacheInfo, 0, 0);
}

struct Descriptor {
    Kuv32u code;
    Kuv32s bytes;
};

constexpr Kuv32s KiB = 1024, MiB = 1024 * KiB;

// In order of precedence.
constexpr Descriptor descriptors[] = {
    {0xEC, 24 * MiB}, {0xEB, 18 * MiB}, {0x4D, 16 * MiB}, {0xEA, 12 * MiB}, {0x4C, 12 * MiB}, {0xE4, 8 * MiB},
    {0xDE, 8 * MiB},  {0x4B, 8 * MiB},  {0x47, 8 * MiB},  {0x4E, 6 * MiB},  {0x4A, 6 * MiB},  {0xE3, 4 * MiB},
    {0xDD, 4 * MiB},  {0xD8, 4 * MiB},  {0x49, 4 * MiB},  {0x29, 4 * MiB},  {0x46, 4 * MiB},  {0x48, 3 * MiB},
    {0xE2, 2 * MiB},  {0xDC, 2 * MiB},  {0xD7, 2 * MiB},  {0xD2, 2 * MiB},  {0x25, 2 * MiB},  {0x7D, 2 * MiB},
    {0x85, 2 * MiB},  {0x45, 2 * MiB},  {0xD6, MiB},      {0xD1, MiB},      {0x23, MiB},      {0x87, MiB},
    {0x7C, MiB},      {0x78, MiB},      {0x84, MiB},      {0x44, MiB},      {0xD0, 512 * KiB}, {0x22, 512 * KiB},
    {0x7B, 512 * KiB}, {0x80, 512 * KiB}, {0x86, 512 * KiB}, {0x3E, 512 * KiB}, {0x7F, 512 * KiB}, {0x83, 512 * KiB},
    {0x43, 512 * KiB}, {0x3D, 384 * KiB}, {0x21, 256 * KiB}, {0x7A, 256 * KiB}, {0x82, 256 * KiB}, {0x3C, 256 * KiB},
    {0x3F, 256 * KiB}, {0x42, 256 * KiB}, {0x3A, 192 * KiB}, {0x79, 128 * KiB}, {0x39, 128 * KiB}, {0x3B, 128 * KiB},
    {0x41, 128 * KiB},
};

Kuv32s bytesOf(Kuv32u code) {
    for (const Descriptor& each : descriptors) {
        if (each.code == code) return each.bytes;
    }
    return 0;
}

TEST_F(Cache, EveryDescriptorOfLeaf2) {
    for (Kuv32u code = 0; code < 256; ++code) {
        const Kuv32s bytes = bytesOf(code);
        const KuvStatus status = bytes != 0 ? kuvStatusOk : kuvStatusNoCacheInfo;
        SCOPED_TRACE(code);
        expectLeaf2({code << 8 | 1, 0, 0, 0}, status, bytes);
    }
}

TEST_F(Cache, EveryPlaceOfADescriptor) {
    for (int place = 1; place < 16; ++place) {  // all but AL
        Kuv32u words[4] = {1, 0, 0, 0};
        words[place / 4] |= Kuv32u{0x44} << (8 * (place % 4));
        SCOPED_TRACE(place);
        expectLeaf2({words[0], words[1], words[2], words[3]}, kuvStatusOk, MiB);
    }
}

TEST_F(Cache, LargestDescriptorWinsWhereverItStands) {
    for (std::size_t i = 0; i + 1 < std::size(descriptors); ++i) {
        const Kuv32u larger = descriptors[i].code, smaller = descriptors[i + 1].code;
        SCOPED_TRACE(larger);
        expectLeaf2({smaller << 8 | 1, smaller, larger, smaller}, kuvStatusOk, descriptors[i].bytes);
    }
}

TEST_F(Cache, RegisterWithItsTopBitSetHoldsNothing) {
    const Kuv32u top = 0x80000000;
    expectLeaf2({top | 0xEC0001, 0, 0, 0}, kuvStatusNoCacheInfo, 0);
    expectLeaf2({1, top | 0xEC, 0, 0x41}, kuvStatusOk, 128 * KiB);
    expectLeaf2({1, 0x41, top | 0xEC, 0}, kuvStatusOk, 128 * KiB);
    expectLeaf2({1, 0x41, 0, top | 0xEC}, kuvStatusOk, 128 * KiB);
    expectLeaf2({top | 1, 0x41, 0, 0}, kuvStatusOk, 128 * KiB);
    expectLeaf2({1, 0xEC000000, 0, 0x41}, kuvStatusOk, 128 * KiB);  // a code of 0x80 or more in the top byte is that bit
}

TEST_F(Cache, OtherCountsOfLeaf2Fail) {
    for (const Kuv32u count : {0u, 2u, 3u, 0x41u, 0xFFu}) expectLeaf2({0x4400 | count, 0x44, 0x44, 0x44}, kuvStatusNoCacheInfo, 0);
}

TEST_F(Cache, LowByteOfLeaf2IsNoDescriptor) { expectLeaf2({1, 0, 0, 0}, kuvStatusNoCacheInfo, 0); }

TEST_F(Cache, MaximumLeaf3IsLeaf2) {
    cpu.genuine(3);
    describe(0, data, 4, 1, 32, 64);
    cpu.leaf(2) = {1, 0, 0, 0x45};
    expect(kuvStatusOk, 2 * MiB, 0);
    EXPECT_FALSE(cpu.wasAsked(4));
}

TEST_F(Cache, WhoCannotBeAsked) {
    const auto expectFailure = [&] {
        Kuv32s size = 12345;
        EXPECT_EQ(queryBytes(&size), kuvStatusNoCpuid);
        EXPECT_EQ(size, -1);
        EXPECT_EQ(kuv::cacheBytes, -1);
        EXPECT_EQ(kuv::cacheQueryStatus, kuvStatusNoCpuid);
        EXPECT_EQ(kuv::cacheLineBytes, 0);
        EXPECT_EQ(queryLine(), 0);
        EXPECT_EQ(queryBytes(&size), kuvStatusNoCpuid) << "again";
        EXPECT_EQ(size, -1);
    };
    describe(0, data, 4, 1, 32, 64);
    cpu.leaf(2) = {1, 0, 0, 0x45};

    cpu.otherVendor(4);
    expectFailure();

    kuvtest::ProcessState::reset();
    for (const Kuv32u maximum : {0u, 1u}) {
        kuvtest::ProcessState::reset();
        cpu.genuine(maximum);
        expectFailure();
    }

    kuvtest::ProcessState::reset();
    cpu.genuine(4);
    cpu.hasCpuid = false;
    expectFailure();
}

TEST_F(Cache, NullSizeComesFirst) {
    cpu.hasCpuid = false;
    EXPECT_EQ(queryBytes(nullptr), kuvStatusNullPtr);
    EXPECT_EQ(kuv::cacheQueryStatus, kuv::cacheNeverQueried);
    kuv::cacheBytes = 4096;
    kuv::cacheQueryStatus = kuvStatusOk;
    EXPECT_EQ(queryBytes(nullptr), kuvStatusNullPtr);
}

TEST_F(Cache, IsAskedOnce) {
    describe(0, data, 4, 1, 32, 64);
    expect(kuvStatusOk, 4 * 32 * 64, 32);
    cpu.asked.clear();
    describe(0, data, 8, 1, 64, 64);
    expect(kuvStatusOk, 4 * 32 * 64, 32);
    EXPECT_TRUE(cpu.asked.empty());
}

TEST_F(Cache, FailuresAreAskedOnceToo) {
    expect(kuvStatusNoCacheInfo, 0, 0);
    describe(0, data, 8, 1, 64, 64);
    cpu.asked.clear();
    expect(kuvStatusNoCacheInfo, 0, 0);
    EXPECT_TRUE(cpu.asked.empty());

    kuvtest::ProcessState::reset();
    cpu.otherVendor(4);
    Kuv32s size = 0;
    EXPECT_EQ(queryBytes(&size), kuvStatusNoCpuid);
    cpu.genuine(4);
    cpu.asked.clear();
    EXPECT_EQ(queryBytes(&size), kuvStatusNoCpuid);
    EXPECT_EQ(size, -1);
    EXPECT_EQ(queryLine(), 0);
    EXPECT_TRUE(cpu.asked.empty());
}

// Answers that are already there are given as they stand: whoever presets them chooses the streaming paths.
TEST_F(Cache, PresetAnswersAreTaken) {
    kuv::cacheBytes = 777;
    kuv::cacheQueryStatus = kuvStatusOk;
    Kuv32s size = 0;
    EXPECT_EQ(queryBytes(&size), kuvStatusOk);
    EXPECT_EQ(size, 777);
    EXPECT_EQ(queryLine(), -1);  // the size is known, so nothing is asked
    kuv::cacheLineBytes = 48;
    EXPECT_EQ(queryLine(), 48);
    kuv::cacheQueryStatus = kuvStatusNoCacheInfo;
    EXPECT_EQ(queryBytes(&size), kuvStatusNoCacheInfo);
    EXPECT_EQ(size, 777);
    EXPECT_TRUE(cpu.asked.empty());
}

TEST_F(Cache, AskedWithUnknownSizeTheKnownStatusHolds) {
    kuv::cacheQueryStatus = kuvStatusOk;
    kuv::cacheLineBytes = 48;
    Kuv32s size = 0;
    EXPECT_EQ(queryBytes(&size), kuvStatusOk);
    EXPECT_EQ(size, -1);
    EXPECT_EQ(kuv::cacheLineBytes, 48);
    kuv::cacheQueryStatus = kuvStatusNoCacheInfo;
    EXPECT_EQ(queryBytes(&size), kuvStatusNoCacheInfo);
    EXPECT_EQ(size, -1);
    EXPECT_EQ(kuv::cacheLineBytes, 0);
    EXPECT_TRUE(cpu.asked.empty());
}

TEST_F(Cache, LineAsksIfNothingIsKnown) {
    describe(0, data, 4, 1, 32, 64);
    EXPECT_EQ(queryLine(), 32);
    EXPECT_EQ(kuv::cacheBytes, 4 * 32 * 64);
    EXPECT_EQ(kuv::cacheQueryStatus, kuvStatusOk);
}

TEST_F(Cache, LineAloneIsKnown) {
    kuv::cacheLineBytes = 48;
    EXPECT_EQ(queryLine(), 48);
    EXPECT_TRUE(cpu.asked.empty());
}

TEST_F(Cache, OfThisProcessor) {
    Kuv32s size = 12345, line = 12345;
    const KuvStatus status = kuv::queryCacheBytes(&size);
    kuv::queryCacheLine(&line);
    if (!kuv::vendorIsTested(kuv::hardware)) {
        EXPECT_EQ(status, kuvStatusNoCpuid);
        EXPECT_EQ(size, -1);
        EXPECT_EQ(line, 0);
    } else if (status == kuvStatusOk) {
        EXPECT_GE(size, 4096);
        EXPECT_GE(line, 0);
    } else {
        EXPECT_EQ(status, kuvStatusNoCacheInfo);
        EXPECT_EQ(size, -1);
        EXPECT_EQ(line, 0);
    }
}

}  // namespace
