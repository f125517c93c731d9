// How a kernel is kept for a filter.
#include <cstddef>

#include "core/checks.hpp"
#include "core/dispatch.hpp"
#include "core/record.hpp"
#include "filter/filter_border_layout.hpp"

namespace {

using namespace kuv;

constexpr Kuv32s typeTag(Kuv32s dataType) {
    return dataType == kuvDataType8u ? 3 : dataType == kuvDataType16s ? 4 : dataType == kuvDataType16u ? 5 : 6;
}

constexpr bool hasLaneKernel(Kuv32s dataType, Kuv32s channels) { return dataType != kuvDataType32f && channels != 2; }

void reverse(const Kuv32f* kernel, Kuv32f* reversed, std::ptrdiff_t count) {
    if (kernel != reversed) {
        for (std::ptrdiff_t i = 0; i < count; ++i) reversed[count - 1 - i] = loadSample(kernel + i);
        return;
    }
    for (std::ptrdiff_t i = 0; i < count / 2; ++i) {
        const Kuv32f value = reversed[i];
        reversed[i] = reversed[count - 1 - i];
        reversed[count - 1 - i] = value;
    }
}

}  // namespace

KuvStatus kuviFilterBorderInit_32f_shared(const Kuv32f* kernel, KuviSize kernelSize, Kuv32s dataType, Kuv32s channels,
                                          Kuv32s roundMode, KuviBorderKernel* spec) {
    constexpr Kuv32s roundFlag = 16;
    if (anyNull(kernel, spec)) return kuvStatusNullPtr;
    if (emptyRoi(kernelSize)) return kuvStatusBadSize;
    if (!isFilterDataType(dataType)) return kuvStatusBadDataType;
    if (channels < 1 || channels > 4) return kuvStatusBadChannels;
    const Kuv32s rule = roundMode & ~roundFlag;
    if (rule < 0 || rule > 2) return kuvStatusBadRoundMode;

    KuviBorderKernel* const record = alignedUp(spec);
    const std::ptrdiff_t count = std::ptrdiff_t{kernelSize.width} * kernelSize.height, bytes = count * 4;
    constexpr std::ptrdiff_t reversedAt = sizeof(BorderKernelHeader);
    const std::ptrdiff_t lanesAt = reversedAt + roundedUp(bytes, 64);
    Kuv32f* const reversed = placeIn<Kuv32f>(record, reversedAt);
    reverse(kernel, reversed, count);
    if (hasLaneKernel(dataType, channels)) {
        Kuv32f* lanes = placeIn<Kuv32f>(record, lanesAt);
        for (std::ptrdiff_t i = count - 1; i >= 0; --i) {
            const Kuv32f value = dataType == kuvDataType16s ? static_cast<Kuv32f>(Kuv64f{reversed[i]} * 0x1p-16) : reversed[i];
            for (int k = 0; k < 4; ++k) *lanes++ = value;
        }
    }

    setWord(record, offsetof(BorderKernelHeader, kernelWidth), kernelSize.width);
    setWord(record, offsetof(BorderKernelHeader, kernelHeight), kernelSize.height);
    setWord(record, offsetof(BorderKernelHeader, reversedKernel), reversedAt);
    setWord(record, offsetof(BorderKernelHeader, laneKernel), lanesAt);
    setWord(record, offsetof(BorderKernelHeader, typeTag), typeTag(dataType));
    setWord(record, offsetof(BorderKernelHeader, channels), channels);
    setWord(record, offsetof(BorderKernelHeader, roundMode), rule);
    for (std::ptrdiff_t i = 0; i < 2; ++i) setWord(record, offsetof(BorderKernelHeader, zeros) + 4 * i, 0);
    return rule == roundMode ? kuvStatusOk : kuvStatusRoundFlagSet;
}
