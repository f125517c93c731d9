// The fuzzed calls: which there are, and that what is wrong with one is found.
#include "support/fuzzing.hpp"

#include <cfenv>
#include <filesystem>
#include <set>

#include "support/statuses.hpp"

namespace {

using namespace kuvtest;

TEST(Fuzzing, EachTabledCallIsInOneFamily) {
    std::size_t count = 0;
    std::set<std::string> files, names;
    for (const FuzzFamily& family : fuzzFamilies) {
        for (const std::string& file : family.files) EXPECT_TRUE(files.insert(file).second) << file;
        for (const TabledCall* each : callsOf(family)) EXPECT_TRUE(names.insert(each->name).second) << each->name;
        count += callsOf(family).size();
    }
    EXPECT_EQ(count, tabledCalls().size());
}

TEST(Fuzzing, EachFamilyHasACorpus) {
    std::set<std::string> families, corpora;
    for (const FuzzFamily& each : fuzzFamilies) families.insert(each.name);
    for (const auto& each : std::filesystem::directory_iterator(KUV_FUZZ_CORPUS)) corpora.insert(each.path().filename());
    EXPECT_EQ(corpora, families);
}

TEST(Fuzzing, EachExportThatTakesDataIsTabled) {
    std::set<std::string> tabled;
    for (const TabledCall& each : tabledCalls()) tabled.insert(each.name);
    // Sizes and contents of their blocks are each variant's own.
    const std::set<std::string> ofTheVariant = {"kuviFilterBorderGetSize", "kuvsDFTGetSize_C_32f", "kuvsDFTInit_C_32f"};
    const auto expectTabled = [&](const std::string& name) {
        if (name.find("Malloc") != std::string::npos || name.find("Free") != std::string::npos || name == "kuvcvGetLibVersion") return;
        EXPECT_TRUE(tabled.contains(name + " checks")) << name;
        EXPECT_NE(tabled.contains(name + " agrees"), ofTheVariant.contains(name)) << name;
    };
#define KUV_DIRECT(name)
#define KUV_DISPATCHED(name, kind) expectTabled(#name);
#include "core/exports.def"
#undef KUV_DIRECT
#undef KUV_DISPATCHED
}

constexpr int faultyVariant = 3;

// What goes wrong in one variant.
enum class Fault { none, sample, guard, source, warning, error, writeOnError, roundingMode };

template <Fault fault>
KuvStatus copyWith(const Kuv8u* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize size) {
    const bool isFaulty = kuv::variantIndex == faultyVariant;
    const auto lastRow = [&](auto* image, std::ptrdiff_t step) { return image + step * (size.height - 1); };
    if (fault == Fault::writeOnError) {
        if (isFaulty) dst[0] ^= 1;
        return kuvStatusBadArg;
    }
    for (std::ptrdiff_t y = 0; y < size.height; ++y) {
        std::memmove(dst + y * dstStep, src + y * srcStep, static_cast<std::size_t>(size.width));
    }
    if (!isFaulty) return kuvStatusOk;
    switch (fault) {
        case Fault::sample: lastRow(dst, dstStep)[size.width - 1] ^= 0x80; break;
        case Fault::guard: lastRow(dst, dstStep)[size.width + 2048] = 7; break;
        case Fault::source: const_cast<Kuv8u*>(src)[0] ^= 1; break;
        case Fault::warning: return kuvStatusNoOperation;
        case Fault::error: return kuvStatusBadArg;
        case Fault::roundingMode: std::fesetround(FE_UPWARD); break;
        default: break;
    }
    return kuvStatusOk;
}

template <Fault fault>
TabledCall callWith() {
    return tabledAgreement("px", "copy", __FILE__, copyWith<fault>, Source<Kuv8u>{}, Output<Kuv8u>{}, RoiSize{});
}

// Reads the images' pointers in the wrong order in one variant.
KuvStatus checkWrongly(const Kuv8u* src, Kuv32s, Kuv8u* dst, Kuv32s, KuviSize size) {
    const bool isFaulty = kuv::variantIndex == faultyVariant;
    if (isFaulty && size.width < 1) return kuvStatusBadSize;
    if (src == nullptr || dst == nullptr) return kuvStatusNullPtr;
    return size.width < 1 ? kuvStatusBadSize : kuvStatusOk;
}

// Of so many inputs, for how many there is trouble that is told by these words.
int findings(const TabledCall& call, const std::string& words, int inputs = 60) {
    Random random(1);
    int count = 0;
    for (int i = 0; i < inputs; ++i) {
        Bytes input(static_cast<std::size_t>(below(random, 200)));
        for (unsigned char& each : input) each = random.bits<unsigned char>();
        const std::string trouble = troubleWith({&call}, input);
        if (trouble.empty()) continue;
        EXPECT_NE(trouble.find(std::string("in ") + variants[faultyVariant].code), std::string::npos) << trouble;
        EXPECT_NE(trouble.find(words), std::string::npos) << trouble;
        ++count;
    }
    return count;
}

class FuzzingFinds : public testing::Test {
protected:
    void SetUp() override {
        if (!variants[faultyVariant].canRun()) GTEST_SKIP() << "this processor cannot run " << variants[faultyVariant];
    }
};

TEST_F(FuzzingFinds, NothingWrong) { EXPECT_EQ(findings(callWith<Fault::none>(), ""), 0); }
TEST_F(FuzzingFinds, AnotherResult) { EXPECT_EQ(findings(callWith<Fault::sample>(), "image 1, output"), 60); }
TEST_F(FuzzingFinds, AChangedSource) { EXPECT_EQ(findings(callWith<Fault::source>(), "image 0, source"), 60); }
TEST_F(FuzzingFinds, AnotherStatus) {
    EXPECT_EQ(findings(callWith<Fault::warning>(), "wanted 0"), 60);
    EXPECT_EQ(findings(callWith<Fault::error>(), "wanted 0"), 60);
}
TEST_F(FuzzingFinds, AWriteDespiteAnError) { EXPECT_EQ(findings(callWith<Fault::writeOnError>(), "image 1, output"), 60); }
TEST_F(FuzzingFinds, AWriteBeyondTheImage) { EXPECT_GT(findings(callWith<Fault::guard>(), "image 1, output"), 30); }
TEST_F(FuzzingFinds, AChangedRoundingMode) { EXPECT_GT(findings(callWith<Fault::roundingMode>(), "MXCSR"), 30); }
TEST_F(FuzzingFinds, ChecksInAnotherOrder) {
    const TabledCall call = tabledChecks("copy", __FILE__, checkWrongly, kuvtest::call(Source<Kuv8u>{}, Output<Kuv8u>{}, RoiSize{}),
                                         check(kuvStatusNullPtr, null<0>(), null<2>()), check(kuvStatusBadSize, width<4>(0), width<4>(-1)));
    EXPECT_GT(findings(call, "copy"), 5);
}

// The same bytes are the same call.
TEST(Fuzzing, PrintsItsCalls) {
    const TabledCall call = callWith<Fault::none>();
    const Bytes input = {0, 0, 0, 0, 0, 0, 0, 0, 12, 4, 1, 1};
    std::ostringstream once, again;
    EXPECT_EQ(troubleWith({&call}, input, &once), "");
    EXPECT_EQ(troubleWith({&call}, input, &again), "");
    EXPECT_NE(once.str().find("copy in px, size 13 x 5"), std::string::npos) << once.str();
    EXPECT_NE(once.str().find("argument 4: 13 x 5"), std::string::npos) << once.str();
    const auto withoutAddresses = [](std::string text) {
        for (std::size_t at = 0; (at = text.find("0x", at)) != std::string::npos;) {
            at += 2;
            text.erase(at, text.find_first_not_of("0123456789abcdef", at) - at);
        }
        return text;
    };
    EXPECT_EQ(withoutAddresses(once.str()), withoutAddresses(again.str()));
}

}  // namespace
