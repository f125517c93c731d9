// The sizes of a filter's blocks, and the block that keeps its kernel, byte by byte.
#include <vector>

#include "support/agreement.hpp"
#include "support/statuses.hpp"

namespace {

using namespace kuvtest;

constexpr Kuv32s dataTypes[] = {kuvDataType8u, kuvDataType16u, kuvDataType16s, kuvDataType32f};

struct SizeArguments {
    std::tuple<KuviSize, KuviSize, Kuv32s, Kuv32s, Kuv32s, Kuv32s*, Kuv32s*> operator()(Draw& draw) const {
        const KuviSize kernel = {between(draw.random, 1, 20), between(draw.random, 1, 20)};
        const Kuv32s dataType = dataTypes[below(draw.random, 4)], kernelType = oneIn(draw.random, 2) ? kuvDataType16s : kuvDataType32f;
        const Kuv32s channels = between(draw.random, 1, 4);
        Image& results = draw.image<Kuv32s>(Role::inOut, 2, 1, 0);
        return {kernel, draw.size, dataType, kernelType, channels, results.row<Kuv32s>(), results.row<Kuv32s>() + 1};
    }
};
KUV_CHECKS(kuviFilterBorderGetSize, call(SizeArguments{}), badSize<0, 1>(),
           check(kuvStatusBadDataType, set<2>(0), set<2>(2), set<2>(6), set<2>(8), set<2>(12), set<2>(14), set<2>(-1), set<2>(INT32_MIN)),
           check(kuvStatusBadDataType, set<3>(0), set<3>(1), set<3>(5), set<3>(8), set<3>(12), set<3>(14), set<3>(-1)),
           check(kuvStatusBadChannels, set<4>(0), set<4>(5), set<4>(9), set<4>(-1), set<4>(INT32_MAX), set<4>(INT32_MIN)),
           check(kuvStatusNullPtr, null<5>(), null<6>()));

struct InitArguments {
    std::tuple<const Kuv32f*, KuviSize, Kuv32s, Kuv32s, Kuv32s, KuviBorderKernel*> operator()(Draw& draw) const {
        const KuviSize kernel = {between(draw.random, 1, 9), between(draw.random, 1, 9)};
        const int count = kernel.width * kernel.height;
        const Kuv32f* const values = draw.image<Kuv32f>(Role::source, count, 1, 0).row<Kuv32f>();
        const Kuv32s dataType = dataTypes[below(draw.random, 4)], channels = between(draw.random, 1, 4);
        auto* const block = draw.image<Kuv8u>(Role::inOut, 191 + 64 + 20 * count, 1, 0).row<KuviBorderKernel>();
        return {values, kernel, dataType, channels, below(draw.random, 3), block};
    }
};
KUV_AGREES(kuviFilterBorderInit_32f, InitArguments{});
KUV_CHECKS(kuviFilterBorderInit_32f, call(InitArguments{}),
           check(kuvStatusNullPtr, null<0>(), null<5>()), badSize<1>(),
           check(kuvStatusBadDataType, set<2>(0), set<2>(2), set<2>(6), set<2>(8), set<2>(14), set<2>(-1)),
           check(kuvStatusBadChannels, set<3>(0), set<3>(5), set<3>(9), set<3>(-1), set<3>(INT32_MIN)),
           check(kuvStatusBadRoundMode, set<4>(3), set<4>(15), set<4>(19), set<4>(32), set<4>(-1), set<4>(-16), set<4>(INT32_MAX),
                 set<4>(INT32_MIN)));

// The formulae with sums that nothing is lost of.
using Wide = __int128;
Wide roundedTo64(Wide value) { return (value + 63) / 64 * 64; }

struct Sizes {
    Wide spec, buffer;
};

Sizes sizesOf(const Variant& variant, KuviSize kernel, KuviSize region, Kuv32s dataType, Kuv32s kernelType, Kuv32s channels) {
    const Wide kw = kernel.width, kh = kernel.height, rw = region.width, rh = region.height;
    bool integer = kernelType == kuvDataType16s;
    if (dataType == kuvDataType16u) integer = false;
    if (dataType == kuvDataType16s && !((channels == 1 || channels == 2) && kw > 1 && kh > 1 && (channels != 1 || kw >= 3))) {
        integer = false;
    }
    Sizes sizes;
    sizes.spec = roundedTo64(kw * kh * (integer ? 2 : 4)) + roundedTo64((kw + 1) / 2 * 32 * kh) + 191;
    const bool between = !variant.isPx() && !variant.hasAVX();
    if (between && !integer && channels != 2) sizes.spec += roundedTo64(16 * kw * kh);

    Wide elements;
    if (kw >= rw || kh >= rh) {
        elements = (kw + rw - 1) * (kh + rh - 1);
    } else {
        const Wide t = (kh - 1) / 2, l = (kw - 1) / 2, b = kh == 2 ? 2 : kh - t - 1, r = kw == 2 ? 2 : kw - l - 1;
        const Wide strip = b < 1 ? 0 : (kw + rw - 1) * (kh + b - 1), side = (kh + rh - 1) * (kw + r - 1);
        elements = r > 0 && strip <= side ? side : strip;
    }
    const int bytes = dataType == kuvDataType8u ? 1 : dataType == kuvDataType32f ? 4 : 2;
    sizes.buffer = (elements * channels * bytes + 31) / 32 * 32 + 32 + 63;
    if (dataType == kuvDataType32f && !variant.isPx()) {
        if (channels == 1) sizes.buffer += (32 * kw * kh + 191) / 64 * 64;
        if (channels >= 3) sizes.buffer += (16 * kw * kh + 191) / 64 * 64;
    }
    return sizes;
}

class FilterBorderSize : public VariantTest {
protected:
    void expectSizes(KuviSize kernel, KuviSize region, Kuv32s dataType, Kuv32s kernelType, Kuv32s channels) {
        const Sizes wanted = sizesOf(GetParam(), kernel, region, dataType, kernelType, channels);
        const bool fits = wanted.spec <= INT32_MAX && wanted.buffer <= INT32_MAX;
        Kuv32s spec = 77, buffer = 78;
        SCOPED_TRACE(testing::Message() << GetParam() << ", kernel " << kernel.width << " x " << kernel.height << ", region "
                                        << region.width << " x " << region.height << ", types " << dataType << " and " << kernelType << ", "
                                        << channels << " channels");
        EXPECT_EQ(watched([&] { return kuviFilterBorderGetSize(kernel, region, dataType, kernelType, channels, &spec, &buffer); }),
                  fits ? kuvStatusOk : kuvStatusSizeOverflow);
        EXPECT_EQ(spec, fits ? static_cast<Kuv32s>(wanted.spec) : 77);
        EXPECT_EQ(buffer, fits ? static_cast<Kuv32s>(wanted.buffer) : 0);
    }
    void expectSizes(KuviSize kernel, KuviSize region) {
        for (const Kuv32s dataType : dataTypes) {
            for (const Kuv32s kernelType : {kuvDataType16s, kuvDataType32f}) {
                for (Kuv32s channels = 1; channels <= 4; ++channels) expectSizes(kernel, region, dataType, kernelType, channels);
            }
        }
    }

    Random random_{1};
};

KUV_FOR_EACH_VARIANT(FilterBorderSize);

TEST_P(FilterBorderSize, SmallKernelsAndRegions) {
    for (int kw = 1; kw <= 6; ++kw) {
        for (int kh = 1; kh <= 6; ++kh) {
            for (const KuviSize region :
                 {KuviSize{1, 1}, {2, 2}, {3, 7}, {7, 3}, {4, 4}, {5, 5}, {100, 3}, {3, 100}, {1920, 1080}, {9, 4000}}) {
                expectSizes({kw, kh}, region);
            }
        }
        if (HasFailure()) return;
    }
}

TEST_P(FilterBorderSize, AnySizes) {
    for (int i = 0; i < rounds(2000) && !HasFailure(); ++i) {
        const auto extent = [&] { return between(random_, 1, 1 << between(random_, 0, 15)); };
        expectSizes({extent(), extent()}, {extent(), extent()});
    }
}

TEST_P(FilterBorderSize, PastWhat32BitsHold) {
    constexpr int most = INT32_MAX;
    for (const int a : {1, 2, 3, 255, 65536, 1 << 30, most - 1, most}) {
        for (const int b : {1, 2, 3, 255, 65536, 1 << 30, most - 1, most}) {
            for (const int c : {1, 2, 50, 65537, most}) {
                for (const int d : {1, 2, 50, 65537, most}) expectSizes({a, b}, {c, d});
            }
        }
        if (HasFailure()) return;
    }
    for (int i = 0; i < rounds(2000) && !HasFailure(); ++i) {
        const auto extent = [&] { return static_cast<int>((random_() & 0x7FFFFFFF) >> below(random_, 31)) | 1; };
        expectSizes({extent(), extent()}, {extent(), extent()});
    }
    // The buffer would fit, the kernel's block would not.
    if (GetParam().isPx()) expectSizes({11000, 11000}, {1, 1}, kuvDataType32f, kuvDataType32f, 1);
}

TEST_P(FilterBorderSize, NullComesBeforeWhatDoesNotFit) {
    constexpr KuviSize most = {INT32_MAX, INT32_MAX};
    Kuv32s bytes = -1;
    EXPECT_EQ(kuviFilterBorderGetSize(most, {1, 1}, kuvDataType32f, kuvDataType32f, 1, nullptr, &bytes), kuvStatusNullPtr);
    EXPECT_EQ(kuviFilterBorderGetSize(most, {1, 1}, kuvDataType32f, kuvDataType32f, 1, &bytes, nullptr), kuvStatusNullPtr);
    EXPECT_EQ(bytes, -1);
}

TEST_P(FilterBorderSize, SomeSizesAsNumbers) {
    const bool scalar = GetParam().isPx(), between = !scalar && !GetParam().hasAVX();
    Kuv32s spec = 0, buffer = 0;
    const auto ask = [&](KuviSize kernel, KuviSize region, Kuv32s dataType, Kuv32s kernelType) {
        EXPECT_EQ(kuviFilterBorderGetSize(kernel, region, dataType, kernelType, 1, &spec, &buffer), kuvStatusOk);
    };
    ask({3, 3}, {100, 50}, kuvDataType32f, kuvDataType32f);  // 102 * 3 against 52 * 3 elements
    EXPECT_EQ(spec, 64 + 192 + 191 + (between ? 192 : 0));
    EXPECT_EQ(buffer, 1248 + 95 + (scalar ? 0 : 448));
    ask({3, 3}, {2, 2}, kuvDataType32f, kuvDataType32f);
    EXPECT_EQ(buffer, 64 + 95 + (scalar ? 0 : 448));
    ask({1, 1}, {10, 10}, kuvDataType32f, kuvDataType32f);  // no strips
    EXPECT_EQ(spec, 64 + 64 + 191 + (between ? 64 : 0));
    EXPECT_EQ(buffer, 95 + (scalar ? 0 : 192));
    ask({1, 1}, {1, 10}, kuvDataType32f, kuvDataType32f);  // a region no wider than the kernel
    EXPECT_EQ(buffer, 64 + 95 + (scalar ? 0 : 192));
    ask({2, 2}, {10, 20}, kuvDataType32f, kuvDataType32f);  // strips of two rows and columns
    EXPECT_EQ(buffer, 21 * 3 * 4 + 4 + 95 + (scalar ? 0 : 256));
    // An integer kernel of 16-bit samples: from three columns on.
    ask({2, 3}, {50, 50}, kuvDataType16s, kuvDataType16s);
    EXPECT_EQ(spec, 64 + 128 + 191 + (between ? 128 : 0));
    ask({3, 3}, {50, 50}, kuvDataType16s, kuvDataType16s);
    EXPECT_EQ(spec, 64 + 192 + 191);
}

class FilterBorderInit : public VariantTest {
protected:
    // A block of just the size that is asked for, every byte of it.
    void expectBlock(KuviSize size, Kuv32s dataType, Kuv32s channels, Kuv32s roundMode, int gap) {
        Kuv32s bytes = 0, bufferBytes = 0;
        ASSERT_EQ(kuviFilterBorderGetSize(size, {1, 1}, dataType, kuvDataType32f, channels, &bytes, &bufferBytes), kuvStatusOk);
        const int count = size.width * size.height;
        const Guard guard = oneIn(random_, 2) ? Guard::end : Guard::begin;
        const Image kernel("kernel", {4 * count, 1, 0, guard, below(random_, 3), 4}, random_());
        const Image block("block", {bytes, 1, 0, guard, gap, 1}, random_());
        for (int i = 0; i < count; ++i) store(kernel.row(), i, static_cast<Kuv32f>(below(random_, 2001) - 1000) * 0.37f);
        const Bytes kernelBefore = kernel.bytes();
        Bytes wanted = block.bytes();
        write(size, dataType, channels, roundMode, kernel.row(), block.row(), block.row(wanted, 0));
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << size.width << " x " << size.height << ", type " << dataType << ", "
                                        << channels << " channels, block: " << block.geometry());
        EXPECT_EQ(watched([&] {
                      return kuviFilterBorderInit_32f(kernel.row<Kuv32f>(), size, dataType, channels, roundMode,
                                                      block.row<KuviBorderKernel>());
                  }),
                  roundMode & 16 ? kuvStatusRoundFlagSet : kuvStatusOk);
        EXPECT_EQ(block.difference(wanted), "");
        EXPECT_EQ(kernel.difference(kernelBefore), "");
    }

    // What a block at `address` becomes, written to a copy of it.
    static void write(KuviSize size, Kuv32s dataType, Kuv32s channels, Kuv32s roundMode, const void* kernel, const void* address,
                      unsigned char* copy) {
        const int count = size.width * size.height;
        unsigned char* const record = copy + static_cast<std::ptrdiff_t>(-reinterpret_cast<std::uintptr_t>(address) & 63);
        const std::ptrdiff_t lanes = 128 + (4 * count + 63) / 64 * 64;
        const int tag = dataType == kuvDataType8u ? 3 : dataType == kuvDataType16u ? 5 : dataType == kuvDataType16s ? 4 : 6;
        const std::pair<int, std::ptrdiff_t> words[] = {{0, tag}, {1, size.width}, {2, size.height}, {14, roundMode & 15}, {15, 0},
                                                        {16, 0},  {19, 128},       {21, lanes},       {23, channels}};
        for (const auto& [word, value] : words) store(record, word, static_cast<Kuv32u>(value));
        for (int i = 0; i < count; ++i) {
            const Kuv32f value = load<Kuv32f>(kernel, i);
            store(record + 128, count - 1 - i, value);
            if (dataType == kuvDataType32f || channels == 2) continue;
            for (int k = 0; k < 4; ++k) {
                store(record + lanes, 4 * i + k,
                      dataType == kuvDataType16s ? static_cast<Kuv32f>(static_cast<double>(value) / 65536) : value);
            }
        }
    }

    Random random_{1};
};

KUV_FOR_EACH_VARIANT(FilterBorderInit);

TEST_P(FilterBorderInit, EveryTypeAndChannelCount) {
    for (const Kuv32s dataType : dataTypes) {
        for (Kuv32s channels = 1; channels <= 4; ++channels) {
            for (const Kuv32s roundMode : {0, 1, 2, 16, 17, 18}) {
                for (int i = 0; i < 12; ++i) {
                    expectBlock({between(random_, 1, 12), between(random_, 1, 12)}, dataType, channels, roundMode, below(random_, 64));
                }
            }
        }
        if (HasFailure()) return;
    }
    expectBlock({1, 1}, kuvDataType32f, 1, 0, 0);
    expectBlock({300, 1}, kuvDataType32f, 1, 0, 0);
    expectBlock({1, 300}, kuvDataType16s, 3, 0, 0);
}

TEST_P(FilterBorderInit, EveryAlignmentOfTheBlock) {
    for (int gap = 0; gap < 64; ++gap) {
        for (const Kuv32s dataType : dataTypes) expectBlock({between(random_, 1, 9), between(random_, 1, 9)}, dataType, 1, 0, gap);
    }
}

// The coefficients may stand where the block keeps them.
TEST_P(FilterBorderInit, InPlace) {
    for (int count = 1; count <= 40; ++count) {
        for (const Kuv32s dataType : dataTypes) {
            alignas(64) Kuv8u block[64 + 191 + 20 * 40 + 64];
            std::vector<Kuv32f> kernel;
            for (int i = 0; i < count; ++i) kernel.push_back(static_cast<Kuv32f>(i) + 0.25f);
            const int offset = below(random_, 64);
            Kuv8u* const spec = block + offset;
            Kuv32f* const place = reinterpret_cast<Kuv32f*>(block + (offset + 63) / 64 * 64 + 128);
            std::memset(block, 0x5A, sizeof block);
            std::memcpy(place, kernel.data(), 4 * kernel.size());
            Bytes wanted(block, block + sizeof block);
            write({count, 1}, dataType, 1, 0, kernel.data(), spec, wanted.data() + offset);
            EXPECT_EQ(watched([&] {
                          return kuviFilterBorderInit_32f(place, {count, 1}, dataType, 1, 0, reinterpret_cast<KuviBorderKernel*>(spec));
                      }), kuvStatusOk);
            ASSERT_EQ(Bytes(block, block + sizeof block), wanted) << GetParam() << ", " << count << " coefficients";
        }
    }
}

// Bits are kept, whatever they stand for.
TEST_P(FilterBorderInit, AnyBits) {
    const Kuv32u kernel[4] = {0x7FA00001, 0xFF800000, 0x80000000, 0x00000001};
    alignas(64) Kuv8u block[512] = {};
    EXPECT_EQ(kuviFilterBorderInit_32f(reinterpret_cast<const Kuv32f*>(kernel), {2, 2}, kuvDataType32f, 1, 0,
                                       reinterpret_cast<KuviBorderKernel*>(block)), kuvStatusOk);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(load<Kuv32u>(block + 128, 3 - i), kernel[i]);
}

}  // namespace
