// Records, stubs and the variants behind them.
#include "core/dispatch.hpp"

#include <cstring>

#include "support/variants.hpp"

// The dispatch records by their assembler names: the lazy stub, then the six variants.
#define KUV_DIRECT(name)
#define KUV_DISPATCHED(name, bodies) extern "C" const void* const kuvRecord_##name[7]; extern "C" void kuvLazy_##name();
#include "core/exports.def"
#undef KUV_DISPATCHED

namespace {

struct Export {
    const char* name;
    const void* stub;
    const void* lazy;
    const void* const* record;
    const void* bodies[6];
    bool isShared;
};

template <class Function>
const void* address(Function* function) {
    return reinterpret_cast<const void*>(function);
}

#define KUV_BODIES_VARIANTS(name) \
    {address(name##_px), address(name##_w7), address(name##_s8), address(name##_p8), address(name##_g9), address(name##_h9)}
#define KUV_BODIES_SHARED(name)                                                                                        \
    {address(name##_shared), address(name##_shared), address(name##_shared), address(name##_shared), address(name##_shared), \
     address(name##_shared)}

#define KUV_IS_VARIANTS false
#define KUV_IS_SHARED true

const Export exports[] = {
#define KUV_DISPATCHED(name, bodies)                                                                                          \
    {#name, address(name), address(kuvLazy_##name), kuvRecord_##name, KUV_BODIES_##bodies(name), KUV_IS_##bodies},
#include "core/exports.def"
#undef KUV_DISPATCHED
};

TEST(Dispatch, RecordsHoldTheLazyStubAndTheVariantsInOrder) {
    for (const Export& each : exports) {
        EXPECT_EQ(each.record[0], each.lazy) << each.name;
        for (int i = 0; i < 6; ++i) EXPECT_EQ(each.record[i + 1], each.bodies[i]) << each.name << " slot " << i + 1;
    }
}

// Bodies per variant are six functions; if two were one, a variant would not be what it says.
TEST(Dispatch, BodiesPerVariantAreDistinct) {
    for (const Export& each : exports) {
        if (each.isShared) continue;
        for (int i = 0; i < 6; ++i) {
            for (int j = 0; j < i; ++j) EXPECT_NE(each.bodies[i], each.bodies[j]) << each.name << " " << i << " " << j;
        }
    }
}

// One load of the index, one indirect jump: endbr64, movslq, leaq, jmp and nothing else.
TEST(Dispatch, StubsAreBareJumps) {
    for (const Export& each : exports) {
        const auto* const code = static_cast<const unsigned char*>(each.stub);
        const unsigned char endbr64[] = {0xF3, 0x0F, 0x1E, 0xFA};
        const unsigned char load[] = {0x48, 0x63, 0x05};    // movslq index(%rip), %rax
        const unsigned char record[] = {0x4C, 0x8D, 0x1D};  // leaq record(%rip), %r11
        const unsigned char jump[] = {0x41, 0xFF, 0x24, 0xC3};  // jmp *(%r11,%rax,8)
        EXPECT_EQ(std::memcmp(code, endbr64, 4), 0) << each.name;
        EXPECT_EQ(std::memcmp(code + 4, load, 3), 0) << each.name;
        EXPECT_EQ(std::memcmp(code + 11, record, 3), 0) << each.name;
        EXPECT_EQ(std::memcmp(code + 18, jump, 4), 0) << each.name;
        EXPECT_EQ(std::memcmp(each.lazy, endbr64, 4), 0) << each.name;
    }
}

// The load hook has run by the time that a program begins.
TEST(Dispatch, LoadHookHasSelected) {
    EXPECT_GE(kuv::variantIndex, 0);
    EXPECT_LE(kuv::variantIndex, 5);
    EXPECT_EQ(kuv::detectedValid, 1u);
}

TEST(Dispatch, StubFollowsTheIndex) {
    const kuvtest::ProcessState state;
    for (int index = 0; index < 6; ++index) {
        kuv::variantIndex = index;
        EXPECT_STREQ(kuvcvGetLibVersion()->variantCode, kuvtest::variants[index].code);
    }
}

class LazyDispatch : public testing::Test {
protected:
    void SetUp() override { kuvtest::ProcessState::reset(); }

    void expectSelected() {
        EXPECT_GE(kuv::variantIndex, 0);
        EXPECT_LE(kuv::variantIndex, 5);
        EXPECT_EQ(kuv::detectedValid, 1u);
    }

private:
    kuvtest::ProcessState state_;
};

// One export of every shape: no argument, integers and a pointer, a pointer alone, a structure in one register and one in two, and
// arguments on the stack.
TEST_F(LazyDispatch, GetLibVersion) {
    const KuvLibraryVersion* const record = kuvcvGetLibVersion();
    expectSelected();
    EXPECT_STREQ(record->variantCode, kuvtest::variants[kuv::variantIndex].code);
}

TEST_F(LazyDispatch, MallocAndFree) {
    Kuv32s step = 0;
    Kuv16u* const image = kuviMalloc_16u_C3(11, 7, &step);
    expectSelected();
    EXPECT_NE(image, nullptr);
    EXPECT_EQ(step, 128);
    kuv::variantIndex = -1;
    kuviFree(image);
    expectSelected();
    kuv::variantIndex = -1;
    Kuv32f* const signal = kuvsMalloc_32f(11);
    expectSelected();
    kuv::variantIndex = -1;
    kuvsFree(signal);
    expectSelected();
}

TEST_F(LazyDispatch, Add) {
    const Kuv32f src[6] = {1, 2, 3, 4, 5, 6};
    Kuv32f srcDst[6] = {10, 20, 30, 40, 50, 60};
    EXPECT_EQ(kuviAdd_32f_C1IR(src, 12, srcDst, 12, {3, 2}), kuvStatusOk);
    expectSelected();
    for (int i = 0; i < 6; ++i) EXPECT_EQ(srcDst[i], 11.0f * static_cast<float>(i + 1));
}

TEST_F(LazyDispatch, Demosaic) {
    Kuv8u src[64], dst[3] = {}, tmp[30 * 9];
    for (Kuv8u& each : src) each = 77;
    EXPECT_EQ(kuviDemosaicAHD_8u_C1C3R(src, {2, 3, 1, 1}, {8, 8}, 8, dst, 3, kuvCfaGRBG, tmp, 9), kuvStatusOk);
    expectSelected();
    for (const Kuv8u each : dst) EXPECT_EQ(each, 77);
}

}  // namespace
