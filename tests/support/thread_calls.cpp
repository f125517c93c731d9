#include "support/thread_calls.hpp"

#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <random>
#include <stdexcept>

namespace kuvtest {
namespace {

// One geometry for all: rows of 67 pixels of up to 16 bytes, most of them not aligned to a vector.
constexpr KuviSize size = {67, 5};
constexpr Kuv32s step = 1076;
constexpr KuviSize mosaicSize = {66, 12}, kernelSize = {5, 3}, resizedSize = {50, 7};
constexpr KuviRect mosaicRoi = {0, 0, 66, 12};

constexpr Kuv32s order3[] = {2, 0, 1}, order4[] = {3, 1, 0, 2};
constexpr Kuv32f factors3[] = {0.5f, -3, 1.25f};
constexpr Kuv16s summands3[] = {300, -7, 12000};
constexpr Kuv32u shifts3[] = {1, 0, 5};

// Control points of four channels, and the bounds of bins.
constexpr Kuv32s curve[] = {0, 40, 100, 180, 255}, rise[] = {0, 90, 130, 220, 255};
constexpr const Kuv32s *mapLevels[] = {curve, curve, curve, curve}, *mapValues[] = {rise, curve, rise, rise};
constexpr Kuv32f edges[] = {0, 1, 50, 100, 250};
constexpr const Kuv32f* binEdges[] = {edges, edges, edges, edges};
constexpr Kuv32f lowest[] = {-1000, -1000, -1000, -1000}, highest[] = {30000, 30000, 30000, 30000};
constexpr Kuv32s levelCounts[] = {5, 5, 5, 5}, uniformCounts[] = {33, 33, 33, 33};

constexpr int sharedBytes = 2 << 20, bufferBytes = (1 << 20) + 4096;

void expectOk(KuvStatus status) {
    if (status != kuvStatusOk) throw std::logic_error("a set-up call gave status " + std::to_string(status));
}

}  // namespace

SharedData::SharedData() {
    void* const mapping = mmap(nullptr, sharedBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapping == MAP_FAILED) throw std::bad_alloc();
    memory_ = static_cast<unsigned char*>(mapping);

    std::mt19937_64 random(1);
    bytes = take(imageBytes);
    for (int i = 0; i < imageBytes; ++i) bytes.at[i] = static_cast<unsigned char>(random() % 2 == 0 ? 0 : random());
    reals = take(imageBytes);
    for (int i = 0; i < imageBytes / 4; ++i) {
        static_cast<Kuv32f*>(reals)[i] = static_cast<Kuv32f>(static_cast<int>(random() % 2000001) - 1000000) / 1000;
    }
    for (int i = 0; i < 4; ++i) planes[i] = bytes + 100 * i;

    toneMaps();
    binPlans();
    transforms();
    Kuv32s specBytes, otherBytes;
    expectOk(kuviFilterBorderGetSize(kernelSize, size, kuvDataType32f, kuvDataType32f, 1, &specBytes, &otherBytes));
    kernel = take(specBytes);
    expectOk(kuviFilterBorderInit_32f(reals, kernelSize, kuvDataType32f, 1, 0, kernel));
    expectOk(kuviResizeGetSize_16s(size, resizedSize, kuvResizeLinear, 0, &specBytes, &otherBytes));
    resize = take(specBytes);
    expectOk(kuviResizeLinearInit_16s(size, resizedSize, resize));

    if (mprotect(memory_, sharedBytes, PROT_READ) != 0) throw std::bad_alloc();
}

SharedData::~SharedData() { munmap(memory_, sharedBytes); }

Place SharedData::take(int count) {
    const Place block{memory_ + taken_};
    taken_ += (count + 127) & ~63;  // never side by side
    if (taken_ > sharedBytes) throw std::bad_alloc();
    return block;
}

void SharedData::toneMaps() {
    const auto make = [&](Kuv32s dataType, auto init, Kuv32s interpolation, Kuv32s channels) {
        Kuv32s specBytes;
        expectOk(kuviLUT_GetSize(interpolation, dataType, channels, size, levelCounts, &specBytes));
        const Place map = take(specBytes);
        expectOk(init(interpolation, channels, size, mapValues, mapLevels, levelCounts, map));
        return map;
    };
    map8 = make(kuvDataType8u, kuviLUT_Init_8u, kuvLutCubic, kuvChannelsC1);
    map8x3 = make(kuvDataType8u, kuviLUT_Init_8u, kuvLutLinear, kuvChannelsC3);
    map8x4 = make(kuvDataType8u, kuviLUT_Init_8u, kuvLutStep, kuvChannelsAC4);
    map16 = make(kuvDataType16u, kuviLUT_Init_16u, kuvLutStep, kuvChannelsC1);
    map16x3 = make(kuvDataType16u, kuviLUT_Init_16u, kuvLutLinear, kuvChannelsC3);
    map16x4 = make(kuvDataType16u, kuviLUT_Init_16u, kuvLutCubic, kuvChannelsAC4);
}

void SharedData::binPlans() {
    const auto block = [&](Kuv32s dataType, Kuv32s channels, const Kuv32s* counts) {
        Kuv32s specBytes, workBytes;
        expectOk(kuviHistogramGetBufferSize(dataType, size, counts, channels, 0, &specBytes, &workBytes));
        return take(specBytes);
    };
    const auto make = [&](Kuv32s dataType, Kuv32s channels) {
        const Place plan = block(dataType, channels, levelCounts);
        expectOk(kuviHistogramInit(dataType, binEdges, levelCounts, channels, plan));
        return plan;
    };
    const auto makeUniform = [&](Kuv32s dataType, Kuv32s channels) {
        const Place plan = block(dataType, channels, uniformCounts);
        expectOk(kuviHistogramUniformInit(dataType, lowest, highest, uniformCounts, channels, plan));
        return plan;
    };
    bins8 = make(kuvDataType8u, 1);
    bins8x3 = make(kuvDataType8u, 3);
    bins8x4 = make(kuvDataType8u, 4);
    bins16 = make(kuvDataType16u, 1);
    bins16x4 = makeUniform(kuvDataType16u, 4);
    bins16s = makeUniform(kuvDataType16s, 1);
    bins32f = make(kuvDataType32f, 1);
}

void SharedData::transforms() {
    const auto make = [&](Kuv32s length) {
        Kuv32s specBytes, initBytes, workBytes;
        expectOk(kuvsDFTGetSize_C_32f(length, kuvDftScaleBoth, 0, &specBytes, &initBytes, &workBytes));
        std::vector<Kuv8u> init(static_cast<std::size_t>(initBytes));
        const Place plan = take(specBytes);
        expectOk(kuvsDFTInit_C_32f(length, kuvDftScaleBoth, 0, plan, init.data()));
        return plan;
    };
    shortTransform = make(16);
    factors = make(360);
    powerOfTwo = make(1024);
    prime = make(37);
    chirp = make(1009);
}

OwnData::OwnData() : memory_(2 * imageBytes + bufferBytes + 64) {
    bytes.at = static_cast<unsigned char*>(kuvAlignPtr(memory_.data(), 64));
    reals = bytes + imageBytes;
    buffer = reals + imageBytes;
    for (int i = 0; i < 4; ++i) {
        counts[i] = bytes + 1000 * i;
        levels[i] = reals + 1000 * i;
    }
}

void OwnData::start(const SharedData& shared) {
    std::memcpy(bytes, shared.bytes, imageBytes);
    std::memcpy(reals, shared.reals, imageBytes);
}

std::vector<unsigned char> OwnData::results() const { return {bytes.at, bytes.at + 2 * imageBytes}; }

namespace {

// Allocates, writes all of the block, releases it.
template <class Image>
KuvStatus allocated(Image* (*allocate)(Kuv32s, Kuv32s, Kuv32s*), void (*release)(void*), OwnData& own) {
    Kuv32s* const rowStep = own.bytes;
    Image* const image = allocate(11, 7, rowStep);
    if (image == nullptr || reinterpret_cast<std::uintptr_t>(image) % 64 != 0) return kuvStatusInternal;
    std::memset(image, 0x5A, static_cast<std::size_t>(*rowStep) * 7);
    release(image);
    return kuvStatusOk;
}

template <class Sample>
KuvStatus allocated(Sample* (*allocate)(Kuv32s), void (*release)(void*), OwnData&) {
    Sample* const signal = allocate(1000);
    if (signal == nullptr || reinterpret_cast<std::uintptr_t>(signal) % 64 != 0) return kuvStatusInternal;
    std::fill_n(signal, 1000, Sample(1));
    release(signal);
    return kuvStatusOk;
}

KuvStatus ownMap16(OwnData& own) {
    const KuvStatus status = kuviLUT_Init_16u(kuvLutCubic, kuvChannelsC1, size, mapValues, mapLevels, levelCounts, own.buffer);
    return status != kuvStatusOk ? status : kuviLUT_16u_C1IR(own.bytes, step, size, own.buffer);
}

KuvStatus ownTransform(OwnData& own) {
    const Place spec = own.buffer, init = own.buffer + 65536, work = own.buffer + 131072;
    const KuvStatus status = kuvsDFTInit_C_32f(360, kuvDftScaleForward, 0, spec, init);
    return status != kuvStatusOk ? status : kuvsDFTFwd_CToC_32f(own.reals, own.reals + 8192, own.reals, own.reals + 8192, spec, work);
}

KuvStatus version(OwnData& own) {
    const KuvLibraryVersion* const record = kuvcvGetLibVersion();
    std::memcpy(own.bytes, record->variantCode, sizeof record->variantCode);
    return kuvStatusOk;
}

}  // namespace

#define KUV_RUN(name, inOneVariant, ...)                                                                                            \
    {#name, []([[maybe_unused]] const SharedData& shared, [[maybe_unused]] OwnData& own) -> KuvStatus { return __VA_ARGS__; }, inOneVariant}
#define KUV_CALL(function, ...) KUV_RUN(function, false, function(__VA_ARGS__))
#define KUV_CALL_AS(function, ...) KUV_RUN(function, false, __VA_ARGS__)
#define KUV_IN_ONE_VARIANT(function, ...) KUV_RUN(function, true, __VA_ARGS__)

const std::vector<ThreadCall> threadCalls = {
    KUV_CALL_AS(kuvcvGetLibVersion, version(own)),

    KUV_CALL_AS(kuviMalloc_8u_C1, allocated(kuviMalloc_8u_C1, kuviFree, own)),
    KUV_CALL_AS(kuviMalloc_8u_C3, allocated(kuviMalloc_8u_C3, kuviFree, own)),
    KUV_CALL_AS(kuviMalloc_8u_AC4, allocated(kuviMalloc_8u_AC4, kuviFree, own)),
    KUV_CALL_AS(kuviMalloc_16u_C1, allocated(kuviMalloc_16u_C1, kuviFree, own)),
    KUV_CALL_AS(kuviMalloc_16u_C3, allocated(kuviMalloc_16u_C3, kuviFree, own)),
    KUV_CALL_AS(kuviMalloc_16u_C4, allocated(kuviMalloc_16u_C4, kuviFree, own)),
    KUV_CALL_AS(kuviMalloc_16u_AC4, allocated(kuviMalloc_16u_AC4, kuviFree, own)),
    KUV_CALL_AS(kuviMalloc_16s_C1, allocated(kuviMalloc_16s_C1, kuviFree, own)),
    KUV_CALL_AS(kuviMalloc_16s_C3, allocated(kuviMalloc_16s_C3, kuviFree, own)),
    KUV_CALL_AS(kuviMalloc_32s_C1, allocated(kuviMalloc_32s_C1, kuviFree, own)),
    KUV_CALL_AS(kuviMalloc_32f_C1, allocated(kuviMalloc_32f_C1, kuviFree, own)),
    KUV_CALL_AS(kuviMalloc_32f_C3, allocated(kuviMalloc_32f_C3, kuviFree, own)),
    KUV_CALL_AS(kuviFree, allocated(kuviMalloc_8u_C1, kuviFree, own)),
    KUV_CALL_AS(kuvsMalloc_8u, allocated(kuvsMalloc_8u, kuvFree, own)),
    KUV_CALL_AS(kuvsMalloc_32f, allocated(kuvsMalloc_32f, kuvsFree, own)),
    KUV_CALL_AS(kuvsFree, allocated(kuvsMalloc_8u, kuvsFree, own)),

    KUV_CALL(kuviAdd_32f_C1IR, shared.reals, step, own.reals, step, size),
    KUV_CALL(kuviSub_32f_C1IR, shared.reals + 4, step, own.reals, step, size),
    KUV_CALL(kuviSub_32f_C1R, shared.reals, step, shared.reals + 44, step, own.reals, step, size),
    KUV_CALL(kuviAddC_32f_C3IR, factors3, own.reals, step, size),
    KUV_CALL(kuviMulC_32f_C3IR, factors3, own.reals, step, size),
    KUV_CALL(kuviSubC_32f_C1IR, 0.1f, own.reals, step, size),
    KUV_CALL(kuviDivC_32f_C1IR, 3, own.reals, step, size),
    KUV_CALL(kuviDiv_32f_C1IR, shared.reals + 4, step, own.reals, step, size),
    KUV_CALL(kuviAbs_32f_C1IR, own.reals, step, size),
    KUV_CALL(kuviAbsDiff_32f_C1R, shared.reals, step, shared.reals + 4, step, own.reals, step, size),
    KUV_CALL(kuviSqr_32f_C1IR, own.reals, step, size),
    KUV_CALL(kuviSqrt_32f_C1IR, own.reals, step, size),
    KUV_CALL(kuviAdd_16s_C1RSfs, shared.bytes, step, shared.bytes + 6, step, own.bytes, step, size, 1),
    KUV_CALL(kuviAdd_16s_C3IRSfs, shared.bytes + 6, step, own.bytes, step, size, 0),
    KUV_CALL(kuviSub_16s_C1RSfs, shared.bytes, step, shared.bytes + 6, step, own.bytes, step, size, -1),
    KUV_CALL(kuviSub_16s_C1IRSfs, shared.bytes + 6, step, own.bytes, step, size, 3),
    KUV_CALL(kuviAddC_16s_C1IRSfs, 1234, own.bytes, step, size, 1),
    KUV_CALL(kuviAddC_16s_C3IRSfs, summands3, own.bytes, step, size, 1),
    KUV_CALL(kuviSubC_16s_C1IRSfs, -1234, own.bytes, step, size, 2),
    KUV_CALL(kuviSqr_16s_C1IRSfs, own.bytes, step, size, 9),
    KUV_CALL(kuviLShiftC_16u_C1IR, 3, own.bytes, step, size),
    KUV_CALL(kuviRShiftC_16u_C1IR, 3, own.bytes, step, size),
    KUV_CALL(kuviLShiftC_16u_C3IR, shifts3, own.bytes, step, size),
    KUV_CALL(kuviRShiftC_16u_C3IR, shifts3, own.bytes, step, size),
    KUV_CALL(kuviLShiftC_16u_AC4IR, shifts3, own.bytes, step, size),
    KUV_CALL(kuviRShiftC_16u_AC4IR, shifts3, own.bytes, step, size),
    KUV_CALL(kuvsLShiftC_16u_I, 2, own.bytes, 1000),
    KUV_CALL(kuvsRShiftC_16u_I, 2, own.bytes, 1000),

    KUV_CALL(kuviCopy_8u_C1R, shared.bytes + 8, step, own.bytes, step, size),
    KUV_CALL(kuviCopy_16u_C1R, shared.bytes + 8, step, own.bytes, step, size),
    KUV_CALL(kuviCopy_16s_C1R, shared.bytes + 8, step, own.bytes, step, size),
    KUV_CALL(kuviCopy_32s_C1R, shared.bytes + 8, step, own.bytes, step, size),
    KUV_CALL(kuviCopy_32f_C1R, shared.bytes + 8, step, own.bytes, step, size),
    KUV_CALL(kuviCopy_8u_C3R, shared.bytes + 8, step, own.bytes, step, size),
    KUV_CALL(kuviCopy_16u_C3R, shared.bytes + 8, step, own.bytes, step, size),
    KUV_CALL(kuviCopy_8u_C4R, shared.bytes + 8, step, own.bytes, step, size),
    KUV_CALL(kuviCopy_8u_AC4R, shared.bytes + 8, step, own.bytes, step, size),
    KUV_CALL(kuviCopy_16u_AC4R, shared.bytes + 8, step, own.bytes, step, size),
    KUV_CALL(kuviCopy_8u_C3AC4R, shared.bytes + 8, step, own.bytes, step, size),
    KUV_CALL(kuviCopy_16u_C3AC4R, shared.bytes + 8, step, own.bytes, step, size),
    KUV_CALL(kuviCopy_8u_AC4C3R, shared.bytes + 8, step, own.bytes, step, size),
    KUV_CALL(kuviCopy_16u_AC4C3R, shared.bytes + 8, step, own.bytes, step, size),
    KUV_CALL(kuviCopy_8u_C1C3R, shared.bytes + 8, step, own.bytes, step, size),
    KUV_CALL(kuviCopy_8u_P3C3R, shared.planes, step, own.bytes, step, size),
    KUV_CALL(kuviCopy_8u_P4C4R, shared.planes, step, own.bytes, step, size),
    KUV_CALL(kuviCopy_8u_C1MR, shared.bytes + 8, step, own.bytes, step, size, shared.bytes + 1000, step),
    KUV_CALL(kuviCopy_16u_C1MR, shared.bytes + 8, step, own.bytes, step, size, shared.bytes + 1000, step),
    KUV_CALL(kuvsCopy_8u, shared.bytes + 8, own.bytes, 1000),
    KUV_CALL(kuvsZero_8u, own.bytes, 1000),
    KUV_CALL(kuviSet_8u_C1R, 77, own.bytes, step, size),
    KUV_CALL(kuviSet_16u_C1R, 7777, own.bytes, step, size),
    KUV_CALL(kuviSet_32s_C1R, -77777, own.bytes, step, size),
    KUV_CALL(kuviSet_32f_C1R, 7.7f, own.reals, step, size),
    KUV_CALL(kuviSet_8u_C4CR, 77, own.bytes, step, size),
    KUV_CALL(kuviConvert_8u32f_C1R, shared.bytes, step, own.reals, step, size),
    KUV_CALL(kuviConvert_8u32f_C3R, shared.bytes, step, own.reals, step, size),
    KUV_CALL(kuviConvert_16u32f_C1R, shared.bytes, step, own.reals, step, size),
    KUV_CALL(kuviConvert_16u8u_C1R, shared.bytes, step, own.bytes, step, size),
    KUV_CALL(kuviConvert_16u8u_C3R, shared.bytes, step, own.bytes, step, size),
    KUV_CALL(kuviConvert_32f8u_C3R, shared.reals, step, own.bytes, step, size, 1),
    KUV_CALL(kuviScale_8u32f_C3R, shared.bytes, step, own.reals, step, size, -1, 1),
    KUV_CALL(kuviScale_32f8u_C3R, shared.reals, step, own.bytes, step, size, -500, 500),
    KUV_CALL(kuviMirror_8u_C1R, shared.bytes, step, own.bytes, step, size, kuvAxisVertical),
    KUV_CALL(kuviMirror_8u_C3R, shared.bytes, step, own.bytes, step, size, kuvAxisBoth),
    KUV_CALL(kuviMirror_16u_C1R, shared.bytes, step, own.bytes, step, size, kuvAxisHorizontal),
    KUV_CALL(kuviMirror_16u_C3R, shared.bytes, step, own.bytes, step, size, kuvAxisVertical),
    KUV_CALL(kuviMirror_8u_C1IR, own.bytes, step, size, kuvAxisBoth),
    KUV_CALL(kuviMirror_8u_C3IR, own.bytes, step, size, kuvAxisVertical),
    KUV_CALL(kuviMirror_16u_C1IR, own.bytes, step, size, kuvAxisHorizontal),
    KUV_CALL(kuviMirror_16u_C3IR, own.bytes, step, size, kuvAxisBoth),
    KUV_CALL(kuviSwapChannels_8u_C3R, shared.bytes, step, own.bytes, step, size, order3),
    KUV_CALL(kuviSwapChannels_16u_C3R, shared.bytes, step, own.bytes, step, size, order3),
    KUV_CALL(kuviSwapChannels_8u_AC4R, shared.bytes, step, own.bytes, step, size, order3),
    KUV_CALL(kuviSwapChannels_16u_AC4R, shared.bytes, step, own.bytes, step, size, order3),
    KUV_CALL(kuviSwapChannels_8u_C3IR, own.bytes, step, size, order3),
    KUV_CALL(kuviSwapChannels_8u_C4IR, own.bytes, step, size, order4),

    KUV_CALL(kuviLUT_GetSize, kuvLutStep, kuvDataType16u, kuvChannelsC3, size, levelCounts, own.bytes),
    KUV_CALL(kuviLUT_Init_8u, kuvLutCubic, kuvChannelsC3, size, mapValues, mapLevels, levelCounts, own.bytes),
    KUV_CALL_AS(kuviLUT_Init_16u, ownMap16(own)),
    KUV_CALL(kuviLUT_8u_C1IR, own.bytes, step, size, shared.map8),
    KUV_CALL(kuviLUT_8u_C3IR, own.bytes, step, size, shared.map8x3),
    KUV_CALL(kuviLUT_8u_AC4IR, own.bytes, step, size, shared.map8x4),
    KUV_CALL(kuviLUT_16u_C1IR, own.bytes, step, size, shared.map16),
    KUV_CALL(kuviLUT_16u_C3IR, own.bytes, step, size, shared.map16x3),
    KUV_CALL(kuviLUT_16u_AC4IR, own.bytes, step, size, shared.map16x4),
    KUV_CALL(kuviLUTPalette_8u24u_C1R, shared.bytes, step, own.bytes, step, size, shared.bytes + 5, 8),
    KUV_CALL(kuviLUTPalette_8u32u_C1R, shared.bytes, step, own.bytes, step, size, shared.bytes + 5, 7),
    KUV_CALL(kuviLUTPalette_16u24u_C1R, shared.bytes, step, own.bytes, step, size, shared.bytes + 5, 12),
    KUV_CALL(kuviLUTPalette_16u32u_C1R, shared.bytes, step, own.bytes, step, size, shared.bytes + 5, 11),
    KUV_CALL(kuviReduceBits_16u8u_C1R, shared.bytes, step, own.bytes, step, size, 20, kuvDitherFloydSteinberg, 16, own.buffer),
    KUV_CALL(kuviReduceBits_16u8u_C3R, shared.bytes, step, own.bytes, step, size, 0, kuvDitherStucki, 4, own.buffer),
    KUV_CALL(kuviReduceBits_16u8u_AC4R, shared.bytes, step, own.bytes, step, size, 50, kuvDitherOrdered4x4, 8, own.buffer),
    KUV_CALL(kuviReduceBitsGetBufferSize, kuvChannelsC3, size, 20, kuvDitherStucki, own.bytes),

    KUV_CALL(kuviCFAToRGB_8u_C1C3R, shared.bytes, mosaicRoi, mosaicSize, step, own.bytes, step, kuvCfaRGGB, 0),
    KUV_CALL(kuviCFAToRGB_16u_C1C3R, shared.bytes, mosaicRoi, mosaicSize, step, own.bytes, step, kuvCfaGBRG, 0),
    KUV_CALL(kuviDemosaicAHD_8u_C1C3R, shared.bytes, mosaicRoi, mosaicSize, step, own.bytes, step, kuvCfaBGGR, own.buffer, step),
    KUV_CALL(kuviDemosaicAHD_16u_C1C3R, shared.bytes, mosaicRoi, mosaicSize, step, own.bytes, step, kuvCfaGRBG, own.buffer, step),
    KUV_CALL(kuviCbYCr422ToRGB_8u_C2C3R, shared.bytes, step, own.bytes, step, size),
    KUV_CALL(kuviGrayToRGB_8u_C1C3R, shared.bytes, step, own.bytes, step, size),

    KUV_CALL(kuviSum_32f_C1R, shared.reals, step, size, own.bytes, 0),
    KUV_CALL(kuviMean_32f_C1R, shared.reals, step, size, own.bytes, 0),
    KUV_CALL(kuviMean_16s_C1R, shared.bytes, step, size, own.bytes),
    KUV_CALL(kuviMean_8u_C3R, shared.bytes, step, size, own.bytes),
    KUV_CALL(kuviMean_StdDev_8u_C1R, shared.bytes, step, size, own.bytes, own.bytes + 8),
    KUV_CALL(kuviMean_StdDev_16u_C1R, shared.bytes, step, size, own.bytes, own.bytes + 8),
    KUV_CALL(kuviMean_StdDev_32f_C1R, shared.reals, step, size, own.bytes, own.bytes + 8),
    KUV_CALL(kuviMean_StdDev_8u_C3CR, shared.bytes, step, size, 2, own.bytes, own.bytes + 8),
    KUV_CALL(kuviMinMax_16s_C1R, shared.bytes, step, size, own.bytes, own.bytes + 8),
    KUV_CALL(kuviMinMax_32f_C1R, shared.reals, step, size, own.bytes, own.bytes + 8),
    KUV_CALL(kuviMax_32f_C3R, shared.reals, step, size, own.bytes),
    KUV_CALL(kuviHistogramGetBufferSize, kuvDataType8u, size, levelCounts, 3, 0, own.bytes, own.bytes + 4),
    KUV_CALL(kuviHistogramInit, kuvDataType8u, binEdges, levelCounts, 4, own.bytes),
    KUV_CALL(kuviHistogramUniformInit, kuvDataType32f, lowest, highest, uniformCounts, 3, own.bytes),
    KUV_CALL(kuviHistogramGetLevels, shared.bins8x4, own.levels),
    KUV_CALL(kuviHistogram_8u_C1R, shared.bytes, step, size, own.bytes, shared.bins8, own.buffer),
    KUV_CALL(kuviHistogram_8u_C3R, shared.bytes, step, size, own.counts, shared.bins8x3, own.buffer),
    KUV_CALL(kuviHistogram_8u_C4R, shared.bytes, step, size, own.counts, shared.bins8x4, own.buffer),
    KUV_CALL(kuviHistogram_16u_C1R, shared.bytes, step, size, own.bytes, shared.bins16, own.buffer),
    KUV_CALL(kuviHistogram_16u_C4R, shared.bytes, step, size, own.counts, shared.bins16x4, own.buffer),
    KUV_CALL(kuviHistogram_16s_C1R, shared.bytes, step, size, own.bytes, shared.bins16s, own.buffer),
    KUV_CALL(kuviHistogram_32f_C1R, shared.reals, step, size, own.bytes, shared.bins32f, own.buffer),
    KUV_CALL(kuviIntegral_8u32s_C1R, shared.bytes, step, own.bytes, step, size, 7),

    KUV_CALL(kuviFilterBorderGetSize, kernelSize, size, kuvDataType32f, kuvDataType32f, 1, own.bytes, own.bytes + 4),
    KUV_CALL(kuviFilterBorderInit_32f, shared.reals, kernelSize, kuvDataType32f, 1, 0, own.bytes),
    KUV_CALL(kuviFilterBorder_32f_C1R, shared.reals, step, own.reals, step, size, kuvBorderReflect, nullptr, shared.kernel, own.buffer),

    KUV_CALL(kuviResizeGetSize_16s, size, resizedSize, kuvResizeLinear, 0, own.bytes, own.bytes + 4),
    KUV_CALL(kuviResizeGetBufferSize_16s, shared.resize, resizedSize, 3, own.bytes),
    KUV_CALL(kuviResizeLinearInit_16s, size, resizedSize, own.bytes),
    KUV_CALL(kuviResizeLinear_16s_C3R, shared.bytes, step, own.bytes, step, {0, 0}, resizedSize, kuvBorderClamp, nullptr, shared.resize,
             own.buffer),
    // A tile of it.
    KUV_CALL(kuviResizeLinear_16s_C3R, shared.bytes + (step + 6 * 4), step, own.bytes, step, {3, 2}, {40, 4}, kuvBorderClamp, nullptr,
             shared.resize, own.buffer),

    KUV_CALL(kuviLabelMarkersGetBufferSize_16u_C1R, size, own.bytes),
    KUV_CALL(kuviLabelMarkers_16u_C1IR, own.bytes, step, size, 1, 60000, kuvLabelNeighbours4, own.reals, own.buffer),

    KUV_CALL(kuvsDFTGetSize_C_32f, 1009, kuvDftScaleNone, 0, own.bytes, own.bytes + 4, own.bytes + 8),
    KUV_IN_ONE_VARIANT(kuvsDFTInit_C_32f, ownTransform(own)),
#define KUV_TRANSFORM(plan)                                                                                                        \
    KUV_IN_ONE_VARIANT(kuvsDFTFwd_CToC_32f, kuvsDFTFwd_CToC_32f(shared.reals, shared.reals + 8192, own.reals, own.reals + 8192, plan, \
                                                                own.buffer))
    KUV_TRANSFORM(shared.shortTransform),
    KUV_TRANSFORM(shared.factors),
    KUV_TRANSFORM(shared.powerOfTwo),
    KUV_TRANSFORM(shared.prime),
    KUV_TRANSFORM(shared.chirp),
    KUV_CALL(kuviDCT8x8Fwd_16s_C1I, own.bytes),
    KUV_CALL(kuviDCT8x8Inv_16s_C1I, own.bytes),
    KUV_CALL(kuviZigzagInv8x8_16s_C1, shared.bytes, own.bytes),
};

}  // namespace kuvtest
