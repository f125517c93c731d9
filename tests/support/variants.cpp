#include "support/variants.hpp"

#include <stdexcept>

namespace kuvtest {

bool Variant::canRun() const {
    KuvCpuFeatures detected = 0;
    return kuvGetCpuFeatures(&detected, nullptr) == kuvStatusOk && (mask() & ~detected) == 0;
}

const Variant& variantOf(const std::string& code) {
    for (const Variant& each : variants) {
        if (each.code == code) return each;
    }
    throw std::invalid_argument(code);
}

SelectVariant::SelectVariant(const Variant& variant) {
    EXPECT_EQ(kuvSetCpuFeatures(variant.mask()), kuvStatusOk) << variant;
    EXPECT_EQ(kuv::variantIndex, variant.index);
}

void VariantTest::SetUp() {
    if (!GetParam().canRun()) GTEST_SKIP() << "this processor cannot run " << GetParam();
    selection_ = std::make_unique<SelectVariant>(GetParam());
}

namespace {

class RegisteredTest : public testing::Test {
public:
    RegisteredTest(const Variant& variant, std::function<void(const Variant&)> body)
        : variant_(variant), body_(std::move(body)) {}

    void TestBody() override {
        if (!variant_.canRun()) GTEST_SKIP() << "this processor cannot run " << variant_;
        const SelectVariant selection(variant_);
        body_(variant_);
    }

private:
    const Variant& variant_;
    std::function<void(const Variant&)> body_;
};

}  // namespace

void registerPerVariant(const char* suite, const std::string& name, int first, const char* file, int line,
                        const std::function<void(const Variant&)>& body) {
    for (const Variant& each : variants) {
        if (each.index < first) continue;
        testing::RegisterTest(suite, (name + "/" + each.code).c_str(), nullptr, nullptr, file, line,
                              [&each, body]() -> testing::Test* { return new RegisteredTest(each, body); });
    }
}

}  // namespace kuvtest
