// The version records, through the dispatched export.
#include "support/variants.hpp"

namespace {

// Fetching a record needs none of the variant's instructions, so this runs on every processor: the index is set by force.
TEST(Version, RecordOfEachVariant) {
    const kuvtest::ProcessState state;
    for (const kuvtest::Variant& variant : kuvtest::variants) {
        EXPECT_EQ(kuvSetCpuFeatures(KUV_CPU_FORCE | variant.mask()), kuvStatusOk);
        const KuvLibraryVersion* const record = kuvcvGetLibVersion();
        ASSERT_NE(record, nullptr);
        EXPECT_EQ(record->versionMajor, 2017);
        EXPECT_EQ(record->versionMinor, 0);
        EXPECT_EQ(record->versionUpdate, 3);
        EXPECT_EQ(record->revision, 55431);
        EXPECT_EQ(std::string(record->variantCode, 4), std::string(variant.code) + std::string(2, '\0'));
        EXPECT_STREQ(record->versionText, "2017.0.3 (r55431)");
        EXPECT_STREQ(record->buildDateText, "Apr 12 2017");
        for (int i = 0; i < 3; ++i) EXPECT_EQ(kuvcvGetLibVersion(), record) << "the same record at each call";
    }
}

TEST(Version, Titles) {
    constexpr const char* titles[] = {"kuvCV PX (px)",     "kuvCV SSE2 (w7)", "kuvCV Atom (s8)",
                                      "kuvCV SSE4.2 (p8)", "kuvCV AVX (g9)",  "kuvCV AVX2 (h9)"};
    const kuvtest::ProcessState state;
    for (const kuvtest::Variant& variant : kuvtest::variants) {
        EXPECT_EQ(kuvSetCpuFeatures(KUV_CPU_FORCE | variant.mask()), kuvStatusOk);
        EXPECT_STREQ(kuvcvGetLibVersion()->libraryTitle, titles[variant.index]);
    }
}

TEST(Version, FollowsSelection) {
    const kuvtest::ProcessState state;
    EXPECT_EQ(kuvSetCpuFeatures(3), kuvStatusOk);
    EXPECT_STREQ(kuvcvGetLibVersion()->variantCode, "px");
    kuvInit();
    const KuvLibraryVersion* const best = kuvcvGetLibVersion();
    std::string strongest;
    for (const kuvtest::Variant& variant : kuvtest::variants) {
        if (variant.canRun()) strongest = variant.code;
    }
    EXPECT_EQ(best->variantCode, strongest);
}

}  // namespace
