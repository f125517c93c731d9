// Plans of Fourier transforms: the sizes of their blocks, their words, and what makes a query or an Init fail.
#include <map>

#include "support/statuses.hpp"

namespace {

using namespace kuvtest;

struct Sizes {
    KuvStatus status = kuvStatusOk;
    long long spec = 0, init = 0, work = 0;

    friend bool operator==(const Sizes&, const Sizes&) = default;
    friend std::ostream& operator<<(std::ostream& stream, const Sizes& s) {
        return stream << "status " << s.status << ", spec " << s.spec << ", init " << s.init << ", work " << s.work;
    }
};

long long up(long long x) { return (x + 63) / 64 * 64; }
long long A(long long x) { return (8 * x + 71) / 64 * 64; }
long long B(long long x) { return (x + 67) / 64 * 64; }

// ---- Powers of two, by tables of orders

using Table = std::map<int, int>;  // from an order on; the value of the last entry not above
int at(const Table& table, int order) { return std::prev(table.upper_bound(order))->second; }

struct SplitTables {
    Table row, column;
    int rowBound, smallBound;
};
const SplitTables& tablesOf(const Variant& variant) {
    static const std::map<std::string, SplitTables> tables = {
        {"w7", {{{16, 4}, {19, 6}, {22, 8}}, {{16, 9}, {17, 10}, {19, 13}, {22, 14}}, 16, 17}},
        {"s8", {{{18, 4}, {20, 6}, {21, 8}}, {{18, 10}, {20, 12}, {21, 14}}, 18, 19}},
        {"p8", {{{18, 4}, {21, 8}}, {{18, 10}, {21, 14}}, 18, 19}},
        {"g9", {{{19, 4}, {23, 8}}, {{19, 10}, {23, 14}}, 19, 19}},
        {"h9", {{{19, 4}, {23, 8}}, {{19, 10}, {23, 14}}, 19, 19}}};
    return tables.at(variant.code);
}

Sizes levelOfVectors(const SplitTables& tables, int order) {
    const int row = order - at(tables.row, order);
    Sizes sizes = row < tables.rowBound ? Sizes{0, A(1ll << row), 0, up(8ll << row)} : levelOfVectors(tables, row);
    sizes.spec += 4ll << order;
    sizes.work = std::max(sizes.work, 8ll << at(tables.column, order));
    return sizes;
}

const Table pxSplits = {{0, 0}, {13, 5}, {14, 6}, {15, 7}, {16, 8}, {19, 10}, {23, 8}, {25, 10}};
Sizes levelOfPx(int order) {
    const int split = at(pxSplits, order), row = order - split;
    if (split == 0) return {0, up(8 * ((1ll << order) / 4)) + 8256, 0, 0};
    Sizes sizes = row < 11 ? Sizes{0, A(1ll << row), 0, 0} : levelOfPx(row);
    const long long side = 1ll << split;
    sizes.spec += A(side) + (8ll << order);
    sizes.init += B(side) + 32 * side;
    sizes.work = std::max(sizes.work, 32 * side);
    return sizes;
}

Sizes fftSizes(const Variant& variant, int order) {
    const bool px = variant.isPx(), avx = variant.hasAVX();
    const long long n = 1ll << order;
    if (order <= (avx ? 6 : 5)) return {0, 152, 0, 0};
    const int leaf = px ? 10 : variant.isW7() ? 15 : avx ? 18 : 17;
    if (order <= leaf) {
        if (px) return {0, A(n) + B(n) + 192, 0, 0};
        return {0, A(n) + B(n) + 192, order > 10 ? B(n) + 64 : 0, up(8 * n) + 64};
    }
    Sizes sizes = px ? levelOfPx(order) : levelOfVectors(tablesOf(variant), order);
    if (px || order < tablesOf(variant).smallBound) {
        sizes.spec += B(n);
    } else {
        sizes.spec += n / 1024 + 4160;
        sizes.work = std::max(sizes.work, 0x10000ll);
    }
    sizes.spec += 192;
    sizes.init += B(n) + 64;
    return sizes;
}

// ---- Other lengths

struct Radices {
    bool found = false;
    std::vector<int> stages;
    int remainder = 0;
};

Radices radicesOf(const Variant& variant, int n) {
    const bool px = variant.isPx();
    Radices result;
    std::vector<int>& r = result.stages;
    int v = n;
    while (v % 4 == 0) {
        r.push_back(4);
        v /= 4;
    }
    if (v % 2 == 0) {
        r.push_back(4);
        r[0] = 2;
        v /= 2;
    }
    const auto mayMerge = [&] { return !px && !r.empty() && r[0] == 2 && (r.size() == 1 || r[1] != 4); };
    if (v >= 9) {
        int d = 3;
        do {
            if (v % d == 0) {
                if (d == 3 && mayMerge()) r[0] = 6;
                else r.push_back(d);
                v /= d;
            } else {
                d += 2;
                if (d > (px ? 75 : 50)) return result;
            }
        } while (d * d <= v);
    }
    const int most = px ? 75 : n % 4 == 0 ? 150 : 50;
    if (r.empty() || v > most) return result;
    result.found = true;
    result.remainder = v;
    if (px) return result;
    bool merged = false;
    if (r.size() > 1 && r[1] == 4 && r[0] != 6) {
        r[0] *= 4;
        r.erase(r.begin() + 1);
        merged = true;
    }
    if (merged || r[0] == 2 || r[0] == 4 || r[0] == 6 || r[0] == 8 || r[0] == 16) std::swap(r[0], result.remainder);
    return result;
}

struct Walk {
    long long tables = 0;
    int mark = 0, digits = 1;
    std::vector<int> groupCounts;
};
Walk walk(const Variant& variant, int n, const Radices& radices) {
    const int least = variant.isPx() ? 6 : 14;
    Walk walk;
    int made = 1, m = n;
    const auto radixTable = [&](int f) {
        if (f < least || f % 2 == 0) return;
        if (f != made) walk.tables += up(8 * f);
        made = f;
        walk.mark = std::max(walk.mark, f);
    };
    for (std::size_t k = 0; k < radices.stages.size(); ++k) {
        const int f = radices.stages[k];
        m /= f;
        radixTable(f);
        walk.groupCounts.push_back(walk.digits);
        if (k + 1 == radices.stages.size()) radixTable(m);
        walk.tables += up(8ll * f * m);
        if (k + 1 < radices.stages.size()) walk.digits = f * m > 2000 ? 1 : walk.digits * f;
    }
    walk.tables += up(4ll * walk.digits);
    return walk;
}

long long convolutionLength(long long n) {
    const long long least = 2 * n - 1;
    for (const int m : {128,  144,  160,  192,  200,  256,  288,  320,  384,  400,  512,  576,  640,  768,  800, 1024,
                        1152, 1280, 1536, 1600, 2048, 2304, 2560, 3072, 3200, 4096, 4608, 5120, 6144, 6400, 8192}) {
        if (m >= least) return m;
    }
    long long m = 8192;
    while (m < least) m *= 2;
    return m;
}

Sizes sizesOf(const Variant& variant, int n) {
    const bool px = variant.isPx();
    Sizes sizes = {0, 576, 0, 0};
    const auto padded = [&](KuvStatus status) {
        sizes.status = status;
        sizes.spec += 64;
        if (sizes.init > 0) sizes.init += 64;
        if (sizes.work > 0) sizes.work += 64;
        return sizes;
    };
    if (n < 17) return padded(kuvStatusOk);
    if ((n & (n - 1)) == 0) {
        int order = 0;
        while (1ll << order < n) ++order;
        if (order >= (px ? 27 : 28)) return padded(kuvStatusBadOrder);
        const Sizes fft = fftSizes(variant, order);
        sizes.spec += up(fft.spec);
        sizes.init += up(fft.init);
        sizes.work += up(fft.work);
        return padded(kuvStatusOk);
    }
    if (n > 0x7ffffff) return padded(kuvStatusBadSize);
    sizes.init += up(8ll * n);
    const Radices radices = radicesOf(variant, n);
    if (radices.found) {
        const Walk walked = walk(variant, n, radices);
        sizes.spec += up(walked.tables);
        sizes.work += up((n + walked.mark) * 8ll + 128);
    } else if (n <= (px ? 75 : 50)) {
        sizes.spec += up(8 * n);
        sizes.work += up(8 * n);
    } else if (n <= 0x3ffffff) {
        const long long m = convolutionLength(n);
        const Sizes nested = sizesOf(variant, static_cast<int>(m));
        const long long x = up(nested.work) + 8 * m + 64;
        sizes.spec += up(up(8ll * n) + up(8 * m) + up(nested.spec));
        sizes.init += up(up(2ll * n) + up(nested.init) + up(x));
        sizes.work = up(up(nested.work) + up(x));
    } else {
        return padded(kuvStatusBadSize);
    }
    return padded(kuvStatusOk);
}

Sizes queried(Kuv32s length, Kuv32s flag = kuvDftScaleNone, Kuv32s hint = 0) {
    Kuv32s spec = -1, init = -1, work = -1;
    const KuvStatus status = watched([&] { return kuvsDFTGetSize_C_32f(length, flag, hint, &spec, &init, &work); });
    return {status, spec, init, work};
}

class DFTSize : public VariantTest {
protected:
    void expectSizes(int length) {
        Sizes wanted = sizesOf(GetParam(), length);
        wanted.spec = static_cast<Kuv32s>(wanted.spec);  // the longest chirps take more than 32 bits tell
        EXPECT_EQ(queried(length), wanted) << GetParam() << ", length " << length;
    }

    Random random_{1};
};

KUV_FOR_EACH_VARIANT(DFTSize);

TEST_P(DFTSize, EveryLengthTo5000) {
    for (int length = 1; length <= 5000 && !HasFailure(); ++length) expectSizes(length);
}

TEST_P(DFTSize, EveryPowerOfTwo) {
    for (int order = 0; order <= 30; ++order) expectSizes(1 << order);
}

TEST_P(DFTSize, LongLengths) {
    for (int i = 0; i < rounds(20000) && !HasFailure(); ++i) {
        expectSizes(5000 + below(random_, 1 << between(random_, 8, 30)));
        int smooth = between(random_, 1, 1000);
        while (smooth < 5000 || (!oneIn(random_, 6) && smooth < 0x1000000)) smooth *= between(random_, 2, 50);
        expectSizes(smooth);
    }
    for (const int length :
         {0x3ffffff, 0x4000001, 0x7ffffff, 0x8000001, 0x7fffffe, 0x7ffffff - 1, 129140163, 2 * 43046721, INT32_MAX})
        expectSizes(length);
}

TEST_P(DFTSize, SomeSizesAsNumbers) {
    EXPECT_EQ(queried(1), (Sizes{0, 640, 0, 0}));
    EXPECT_EQ(queried(16), (Sizes{0, 640, 0, 0}));
    EXPECT_EQ(queried(17), (Sizes{0, 640 + 192, 192 + 64, 192 + 64}));
    EXPECT_EQ(queried(32), (Sizes{0, 640 + 192, 0, 0}));
    EXPECT_EQ(queried(1024),
              GetParam().isPx() ? (Sizes{0, 640 + 8256 + 1088 + 192, 0, 0}) : (Sizes{0, 640 + 8256 + 1088 + 192, 0, 8192 + 128}));
    EXPECT_EQ(queried(1 << 27).status, GetParam().isPx() ? kuvStatusBadOrder : kuvStatusOk);
    EXPECT_EQ(queried(1 << 29), (Sizes{kuvStatusBadOrder, 640, 0, 0}));
    EXPECT_EQ(queried(0x4000001).status, kuvStatusBadSize);
    EXPECT_EQ(queried(0x8000001), (Sizes{kuvStatusBadSize, 640, 0, 0}));
}

TEST_P(DFTSize, BadFlags) {
    for (const int flag : {0, 3, 5, 6, 7, 9, 16, -1, INT32_MAX, INT32_MIN}) {
        for (const int length : {1, 100, 1 << 20, 1 << 30, 0x8000001})
            EXPECT_EQ(queried(length, flag), (Sizes{kuvStatusBadFlag, 640, 0, 0}));
    }
    EXPECT_EQ(queried(0, 3), (Sizes{kuvStatusBadSize, -1, -1, -1})) << "the length comes first";
}

TEST_P(DFTSize, NeitherFlagNorHintMatters) {
    for (const int length : {1, 17, 64, 101, 1000, 1 << 20, 10007}) {
        for (const int flag : {1, 2, 4, 8}) {
            for (const int hint : {0, 1, -1, INT32_MIN}) EXPECT_EQ(queried(length, flag, hint), queried(length));
        }
    }
}

struct SizeArguments {
    std::tuple<Kuv32s, Kuv32s, Kuv32s, Kuv32s*, Kuv32s*, Kuv32s*> operator()(Draw& draw) const {
        const auto result = [&] { return draw.image<Kuv32s>(Role::inOut, 1, 1, 4).row<Kuv32s>(); };
        Kuv32s *const spec = result(), *const init = result(), *const work = result();
        return {draw.size.width, 1 << below(draw.random, 4), load<Kuv32s>(spec), spec, init, work};
    }
};
KUV_CHECKS(kuvsDFTGetSize_C_32f, call(SizeArguments{}), check(kuvStatusNullPtr, null<3>(), null<4>(), null<5>()), badLength<0>());

// ---- Plans

struct Word {
    enum : int {
        id,
        length,
        scaleForward,
        scaleInverse,
        scaleValue,
        hint,
        workBytes,
        usesFft,
        altLayout,
        chirpLength = 11,
        directTwiddles,
        chirpTable = 15,
        chirpSpectrum,
        fftPlan,
        chirpPlan,
        usesMixedRadix,
        lastStage,
        digitTable,
        stages
    };
};

class DFTInit : public VariantTest {
protected:
    // The words of a plan on a 64-byte boundary.
    std::vector<Kuv32s> planOf(Kuv32s length, Kuv32s flag = kuvDftScaleNone, Kuv32s hint = 0, KuvStatus wanted = kuvStatusOk) {
        const Sizes sizes = sizesOf(GetParam(), length);
        std::vector<unsigned char> spec(static_cast<std::size_t>(sizes.spec) + 64, 0x77),
            init(static_cast<std::size_t>(sizes.init) + 64, 0x99);
        Kuv8u* const block = spec.data() + (0 - reinterpret_cast<std::uintptr_t>(spec.data())) % 64;
        EXPECT_EQ(kuvsDFTInit_C_32f(length, flag, hint, block, init.data()), wanted);
        std::vector<Kuv32s> words(static_cast<std::size_t>(sizes.spec) / 4);
        std::memcpy(words.data(), block, words.size() * 4);
        return words;
    }
    static Kuv32f scaleOf(const std::vector<Kuv32s>& words) { return load<Kuv32f>(words.data(), Word::scaleValue); }
};

KUV_FOR_EACH_VARIANT(DFTInit);

TEST_P(DFTInit, ScalesByTheFlag) {
    for (const int length : {1, 3, 16, 17, 32, 49, 60, 101, 512, 1009, 2048, 8191}) {
        for (const int flag : {1, 2, 4, 8}) {
            const std::vector<Kuv32s> words = planOf(length, flag, -77);
            EXPECT_EQ(words[Word::id], 14);
            EXPECT_EQ(words[Word::length], length);
            EXPECT_EQ(words[Word::hint], -77);
            EXPECT_EQ(words[Word::scaleForward], flag == 1 || flag == 4);
            EXPECT_EQ(words[Word::scaleInverse], flag == 2 || flag == 4);
            EXPECT_EQ(words[Word::altLayout], 0);
            const Kuv32f whole = GetParam().isPx() ? static_cast<Kuv32f>(1.0 / length) : 1.0f / static_cast<Kuv32f>(length);
            EXPECT_EQ(scaleOf(words), flag == 8 ? 0 : flag == 4 ? static_cast<Kuv32f>(1 / std::sqrt(double(length))) : whole);
        }
    }
}

TEST_P(DFTInit, MixedRadixStages) {
    for (const int length :
         {18, 24, 45, 48, 60, 77, 96, 121, 221, 289, 404, 1000, 1920, 3000, 5329, 9000, 44100, 46656, 2 * 81 * 25, 59049}) {
        const Radices radices = radicesOf(GetParam(), length);
        const std::vector<Kuv32s> words = planOf(length);
        if (!radices.found) {
            EXPECT_EQ(words[Word::usesMixedRadix], 0);
            continue;
        }
        SCOPED_TRACE(length);
        const Walk walked = walk(GetParam(), length, radices);
        EXPECT_EQ(words[Word::usesMixedRadix], 1);
        EXPECT_EQ(words[Word::lastStage], static_cast<int>(radices.stages.size()) - 1);
        EXPECT_EQ(words[Word::workBytes], (length + walked.mark) * 8 + 128);
        EXPECT_GT(words[Word::digitTable], 572);
        int stride = 1, remaining = length;
        for (std::size_t k = 0; k < radices.stages.size(); ++k) {
            const Kuv32s* const stage = &words[Word::stages + 6 * k];
            remaining /= radices.stages[k];
            EXPECT_EQ(stage[0], radices.stages[k]);
            EXPECT_EQ(stage[1], remaining);
            EXPECT_EQ(stage[2], stride);
            EXPECT_EQ(stage[3], walked.groupCounts[k]);
            EXPECT_EQ(stage[4] != 0, stage[0] % 2 != 0 && stage[0] > (GetParam().isPx() ? 5 : 13));
            EXPECT_GT(stage[5], 572);
            EXPECT_EQ(stage[5] % 64, 0);
            stride *= radices.stages[k];
        }
    }
}

TEST_P(DFTInit, WhichPath) {
    EXPECT_EQ(planOf(64)[Word::usesFft], 1);
    EXPECT_EQ(planOf(64)[Word::fftPlan], 576);
    EXPECT_EQ(planOf(16)[Word::usesFft], 0);
    EXPECT_EQ(planOf(17)[Word::directTwiddles], 576);
    EXPECT_EQ(planOf(17)[Word::workBytes], 8 * 17 + 64);
    // Four times a prime is a mixed radix to 150, but not in px, where it takes a chirp.
    EXPECT_EQ(planOf(404)[Word::usesMixedRadix], !GetParam().isPx());
    EXPECT_EQ(planOf(404)[Word::chirpLength], GetParam().isPx() ? 1024 : 0);
    EXPECT_EQ(planOf(1009)[Word::chirpLength], 2048);
    EXPECT_EQ(planOf(5003)[Word::chirpLength], 16384);
    EXPECT_EQ(planOf(61)[Word::chirpLength], GetParam().isPx() ? 0 : 128);
}

TEST_P(DFTInit, ABadFlagLeavesTheIdentity) {
    for (const int length : {1, 17, 64, 100, 1009, 1 << 29}) {
        const std::vector<Kuv32s> words = planOf(length, 3, 5, kuvStatusBadFlag);
        EXPECT_EQ(words[Word::id], 14);
        EXPECT_EQ(words[Word::length], length);
        EXPECT_EQ(words[Word::hint], 5);
    }
}

TEST_P(DFTInit, TooLong) {
    planOf(1 << 28, kuvDftScaleNone, 0, kuvStatusBadOrder);
    planOf(1 << 30, kuvDftScaleNone, 0, kuvStatusBadOrder);
    if (GetParam().isPx()) planOf(1 << 27, kuvDftScaleNone, 0, kuvStatusBadOrder);
    std::vector<unsigned char> spec(1024), init(64);
    EXPECT_EQ(kuvsDFTInit_C_32f(0x4000001, 8, 0, spec.data(), init.data()), kuvStatusBadSize);
    EXPECT_EQ(kuvsDFTInit_C_32f(0x8000001, 8, 0, spec.data(), nullptr), kuvStatusBadSize);
}

// Primes whose chirps px would convolve by 2^27 points: refused before their tables are written.
TEST_P(DFTInit, ChirpsTooLongForPx) {
    if (!GetParam().isPx()) GTEST_SKIP() << "the others make them";
    for (const Kuv32s length : {33554467, 67108859}) {
        Bytes spec(1024, 0x5A), init(64, 0x5A);
        const Bytes initBefore = init;
        EXPECT_EQ(kuvsDFTInit_C_32f(length, 8, 0, spec.data(), nullptr), kuvStatusNullPtr) << length;
        EXPECT_EQ(kuvsDFTInit_C_32f(length, 8, 0, spec.data(), init.data()), kuvStatusBadOrder) << length;
        EXPECT_EQ(init, initBefore) << length;
    }
}

TEST_P(DFTInit, TheOrderOfTheChecks) {
    Bytes spec(1024, 0x5A), init(64, 0x5A);
    const Bytes before = spec, initBefore = init;
    EXPECT_EQ(kuvsDFTInit_C_32f(0, 3, 0, spec.data(), init.data()), kuvStatusBadSize) << "ahead of the flag";
    EXPECT_EQ(spec, before);
    EXPECT_EQ(init, initBefore);
    EXPECT_EQ(kuvsDFTInit_C_32f(0x4000001, 8, 0, spec.data(), nullptr), kuvStatusNullPtr) << "ahead of the length's limit";
}

TEST_P(DFTInit, WhereTheBufferMayBeNull) {
    std::vector<unsigned char> spec(1 << 16);
    for (int length = 1; length <= 40; ++length) {
        const bool free = length < 17 || length == 32;
        EXPECT_EQ(kuvsDFTInit_C_32f(length, 8, 0, spec.data(), nullptr), free ? kuvStatusOk : kuvStatusNullPtr) << length;
    }
    for (int order = 5; order <= 20; ++order) {
        EXPECT_EQ(kuvsDFTInit_C_32f(1 << order, 8, 0, spec.data(), nullptr), order > 10 ? kuvStatusNullPtr : kuvStatusOk)
            << order;
    }
    EXPECT_EQ(kuvsDFTInit_C_32f(1000, 8, 0, spec.data(), nullptr), kuvStatusNullPtr);
}

// An address that is null once it has been aligned.
TEST_P(DFTInit, TheLastBytesOfTheAddressSpace) {
    for (const std::uintptr_t distance : {1, 17, 63}) {
        Kuv8u* const last = reinterpret_cast<Kuv8u*>(0 - distance);
        EXPECT_EQ(kuvsDFTInit_C_32f(8, 8, 0, last, nullptr), kuvStatusNullPtr);
        Kuv32f values[16] = {};
        EXPECT_EQ(kuvsDFTFwd_CToC_32f(values, values, values, values, last, nullptr), kuvStatusNullPtr);
    }
}

struct InitArguments {
    std::tuple<Kuv32s, Kuv32s, Kuv32s, Kuv8u*, Kuv8u*> operator()(Draw& draw) const {
        const Kuv32s length = 100;
        Kuv32s spec, init, work;
        EXPECT_EQ(kuvsDFTGetSize_C_32f(length, 8, 0, &spec, &init, &work), kuvStatusOk);
        Kuv8u* const block = draw.image<Kuv8u>(Role::scratch, spec, 1, spec).row<Kuv8u>();
        return {length, 1 << below(draw.random, 4), below(draw.random, 9), block,
                draw.image<Kuv8u>(Role::scratch, init, 1, init).row<Kuv8u>()};
    }
};
KUV_CHECKS(kuvsDFTInit_C_32f, call(InitArguments{}), check(kuvStatusNullPtr, null<3>()), badLength<0>());

}  // namespace
