// What passes through a stub arrives: probes of the test program's own, behind the library's stub macros, receive every class of
// argument, and kuvInit is made to destroy all that it may destroy.
#include "support/lazy_entry.hpp"

#include <latch>
#include <thread>
#include <vector>

#include "support/variants.hpp"

namespace kuvtest {

LazyEntries lazyEntries;

}  // namespace kuvtest

// Called where a lazy stub calls kuvInit, with the stack pointer at that call.
extern "C" void kuvTestLazyEntry(std::uintptr_t stack) {
    using kuvtest::lazyEntries;
    ++lazyEntries.count;
    if (stack % 16 != 0) ++lazyEntries.misaligned;
    if (lazyEntries.fail) throw kuvtest::LazyFailure();
}

namespace {

struct Complex {
    float re, im;
};
struct TwoReals {
    double a, b;
};
struct Rect {
    int x, y, width, height;
};
struct IntegerAndReal {
    long a;
    double b;
};
struct Large {
    long values[5];
};

// One text of six bodies: each adds its index to what it was given, so that a value tells both what arrived and where.
template <class... Values>
std::vector<double> list(Values... values) {
    return {static_cast<double>(values)...};
}

thread_local std::vector<double> received;

#define BODY(code, index)                                                                                                       \
    extern "C" long kuvProbeIntegers_##code(char a, short b, int c, long d, const void* e, unsigned f, long g, int h, char i) {  \
        received = list(a, b, c, d, reinterpret_cast<std::intptr_t>(e), f, g, h, i);                                            \
        return index;                                                                                                           \
    }                                                                                                                           \
    extern "C" double kuvProbeReals_##code(float a, double b, float c, double d, float e, double f, float g, double h, float i,  \
                                           double j) {                                                                          \
        received = list(a, b, c, d, e, f, g, h, i, j);                                                                          \
        return index + 0.5;                                                                                                     \
    }                                                                                                                           \
    extern "C" int kuvProbeMixed_##code(int a, float b, long c, double d, const void* e, float f, int g, double h, long i, int j, \
                                        float k, long l) {                                                                      \
        received = list(a, b, c, d, reinterpret_cast<std::intptr_t>(e), f, g, h, i, j, k, l);                                   \
        return index;                                                                                                           \
    }                                                                                                                           \
    extern "C" int kuvProbeRecords_##code(KuviSize a, Rect b, Complex c, TwoReals d, IntegerAndReal e, Large f, Rect g,          \
                                          long double h) {                                                                      \
        received = list(a.width, a.height, b.x, b.y, b.width, b.height, c.re, c.im, d.a, d.b, e.a, e.b, f.values[0],            \
                        f.values[4], g.x, g.y, g.width, g.height, h);                                                           \
        return index;                                                                                                           \
    }                                                                                                                           \
    extern "C" Large kuvProbeHiddenResult_##code(long a, double b) {                                                            \
        received = list(a, b);                                                                                                  \
        return {{index, 1, 2, 3, 4}};                                                                                           \
    }                                                                                                                           \
    extern "C" IntegerAndReal kuvProbePairResult_##code(IntegerAndReal a, Complex b) {                                          \
        received = list(a.a, a.b, b.re, b.im);                                                                                  \
        return {index, a.b};                                                                                                    \
    }

}  // namespace

#define KUV_VARIANT_ROW(code, index, set, features, flags) BODY(code, index)
#include "core/variants.def"
#undef KUV_VARIANT_ROW

extern "C" {
decltype(kuvProbeIntegers_px) kuvProbeIntegers;
decltype(kuvProbeReals_px) kuvProbeReals;
decltype(kuvProbeMixed_px) kuvProbeMixed;
decltype(kuvProbeRecords_px) kuvProbeRecords;
decltype(kuvProbeHiddenResult_px) kuvProbeHiddenResult;
decltype(kuvProbePairResult_px) kuvProbePairResult;
}

namespace {

using kuvtest::lazyEntries;

// Calls every probe under `index`; with -1 through its lazy stub. Tells which variant answered.
class Stub : public testing::TestWithParam<int> {
protected:
    void SetUp() override {
        lazyEntries.count = 0;
        lazyEntries.misaligned = 0;
    }

    void prepare() {
        kuv::variantIndex = GetParam();
        received.clear();
    }

    void expectArrived(double answer, const std::vector<double>& values) {
        EXPECT_EQ(received, values);
        EXPECT_GE(kuv::variantIndex, 0);
        EXPECT_EQ(answer, kuv::variantIndex);
        if (GetParam() >= 0) {
            EXPECT_EQ(answer, GetParam());
        }
        EXPECT_EQ(lazyEntries.count.exchange(0), GetParam() < 0 ? 1 : 0) << "calls of kuvInit";
        EXPECT_EQ(lazyEntries.misaligned, 0);
    }

private:
    kuvtest::ProcessState state_;
};

const void* pointer(std::intptr_t value) { return reinterpret_cast<const void*>(value); }

TEST_P(Stub, Integers) {
    prepare();
    const long answer = kuvProbeIntegers(-1, -200, 70000, 1L << 40, pointer(0x1234567), 4000000000u, -7, 8, 9);
    expectArrived(static_cast<double>(answer), {-1, -200, 70000, double(1L << 40), 0x1234567, 4000000000.0, -7, 8, 9});
}

TEST_P(Stub, Reals) {
    prepare();
    const double answer = kuvProbeReals(1.5f, -2.25, 3, 4, 5, 6, 7, 8.125, 9, 10.5);
    expectArrived(answer - 0.5, {1.5, -2.25, 3, 4, 5, 6, 7, 8.125, 9, 10.5});
}

TEST_P(Stub, IntegersAmongReals) {
    prepare();
    const int answer = kuvProbeMixed(1, 2.5f, -3, 4.25, pointer(5), 6.5f, 7, 8.5, 9, 10, 11.5f, 12);
    expectArrived(answer, {1, 2.5, -3, 4.25, 5, 6.5, 7, 8.5, 9, 10, 11.5, 12});
}

TEST_P(Stub, Records) {
    prepare();
    const int answer = kuvProbeRecords({1, -2}, {3, 4, 5, 6}, {7.5f, 8.5f}, {9.5, 10.5}, {11, 12.5}, {{13, 0, 0, 0, 14}},
                                       {15, 16, 17, 18}, 19.5L);
    expectArrived(answer, {1, -2, 3, 4, 5, 6, 7.5, 8.5, 9.5, 10.5, 11, 12.5, 13, 14, 15, 16, 17, 18, 19.5});
}

TEST_P(Stub, ResultThroughAHiddenPointer) {
    prepare();
    const Large answer = kuvProbeHiddenResult(3, 4.5);
    for (int i = 1; i < 5; ++i) EXPECT_EQ(answer.values[i], i);
    expectArrived(static_cast<double>(answer.values[0]), {3, 4.5});
}

TEST_P(Stub, ResultInTwoRegisters) {
    prepare();
    const IntegerAndReal answer = kuvProbePairResult({3, 4.5}, {5.5f, 6.5f});
    EXPECT_EQ(answer.b, 4.5);
    expectArrived(static_cast<double>(answer.a), {3, 4.5, 5.5, 6.5});
}

INSTANTIATE_TEST_SUITE_P(, Stub, testing::Range(-1, 6),
                         [](const testing::TestParamInfo<int>& each) {
                             return each.param < 0 ? std::string("lazy") : std::string(kuvtest::variants[each.param].code);
                         });

// An exception finds its way through a stub's frame only if the unwind information describes it, which is what debuggers and
// profilers read as well.
TEST(LazyStub, CanBeUnwound) {
    const kuvtest::ProcessState state;
    kuv::variantIndex = -1;
    lazyEntries.fail = true;
    EXPECT_THROW(kuvProbeMixed(1, 2, 3, 4, nullptr, 6, 7, 8, 9, 10, 11, 12), kuvtest::LazyFailure);
    EXPECT_THROW(kuvProbeRecords({}, {}, {}, {}, {}, {}, {}, 0), kuvtest::LazyFailure);
    lazyEntries.fail = false;
    EXPECT_EQ(kuv::variantIndex, -1);
}

TEST(LazyStub, ManyThreadsAtOnce) {
    const kuvtest::ProcessState state;
    constexpr int count = 16;
    for (int round = 0; round < 50; ++round) {
        kuvtest::ProcessState::reset();
        lazyEntries.count = 0;
        std::latch start(count);
        std::atomic<int> wrong{0};
        std::vector<std::thread> threads;
        for (int i = 0; i < count; ++i) {
            threads.emplace_back([&, i] {
                start.arrive_and_wait();
                const int answer = kuvProbeMixed(i, 2.5f, -3, 4.25, pointer(5), 6.5f, 7, 8.5, 9, 10, 11.5f, 12);
                if (answer != kuv::variantIndex || answer < 0) ++wrong;
                if (received != std::vector<double>{double(i), 2.5, -3, 4.25, 5, 6.5, 7, 8.5, 9, 10, 11.5, 12}) ++wrong;
                if (kuvcvGetLibVersion()->variantCode != std::string(kuvtest::variants[answer].code)) ++wrong;
            });
        }
        for (std::thread& each : threads) each.join();
        EXPECT_EQ(wrong, 0);
        EXPECT_GE(lazyEntries.count, 1);
        EXPECT_LE(lazyEntries.count, count) << "a thread passes the lazy stub at most once";
    }
}

}  // namespace
