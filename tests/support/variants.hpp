// The six variants, which of them this processor runs, and tests that run once per variant.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>

#include "kuvcv.h"
#include "support/process_state.hpp"

namespace kuvtest {

struct Variant {
    const char* code;
    int index;
    const char* set;
    KuvCpuFeatures features;

    // What kuvSetCpuFeatures() must be given to select it with status 0, and what the processor must offer to run it.
    KuvCpuFeatures mask() const { return features | ((features & (KUV_CPU_AVX | KUV_CPU_AVX2)) != 0 ? KUV_CPU_OS_AVX : 0); }
    bool canRun() const;

    // For arithmetic that is another one in these.
    bool isPx() const { return index == 0; }
    bool isW7() const { return index == 1; }
    bool isH9() const { return index == 5; }
    bool hasAVX() const { return (features & KUV_CPU_AVX) != 0; }
};

inline constexpr Variant variants[] = {
#define KUV_VARIANT_ROW(code, index, set, features, flags) {#code, index, set, features},
#include "core/variants.def"
#undef KUV_VARIANT_ROW
};

const Variant& variantOf(const std::string& code);

inline std::ostream& operator<<(std::ostream& stream, const Variant& variant) { return stream << variant.code; }

// Selects a variant as a caller would and puts the process back afterwards.
class SelectVariant {
public:
    explicit SelectVariant(const Variant& variant);

private:
    ProcessState state_;
};

// A fixture whose tests run once per variant, with the variant selected. KUV_FOR_EACH_VARIANT instantiates it.
class VariantTest : public testing::TestWithParam<Variant> {
protected:
    void SetUp() override;
    void TearDown() override { selection_.reset(); }

private:
    std::unique_ptr<SelectVariant> selection_;
};

#define KUV_FOR_EACH_VARIANT(suite)                                            \
    INSTANTIATE_TEST_SUITE_P(, suite, testing::ValuesIn(kuvtest::variants),    \
                             [](const testing::TestParamInfo<kuvtest::Variant>& each) { return std::string(each.param.code); })

// Registers `suite.name/code` for every variant from the one with index `first` on; the body runs with the variant selected.
void registerPerVariant(const char* suite, const std::string& name, int first, const char* file, int line,
                        const std::function<void(const Variant&)>& body);

}  // namespace kuvtest
