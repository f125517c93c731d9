// The sizes of histograms' blocks, and how bin plans are made and read.
#include <cstddef>
#include <cstdint>

#include "core/checks.hpp"
#include "core/dispatch.hpp"
#include "core/record.hpp"
#include "stats/histogram_layout.hpp"

namespace {

using namespace kuv;

constexpr int mostChannels = 4;

constexpr bool isChannelCount(Kuv32s channels) { return channels == 1 || channels == 3 || channels == 4; }

constexpr bool isDataType(Kuv32s dataType) {
    return dataType == kuvDataType8u || dataType == kuvDataType16u || dataType == kuvDataType16s || dataType == kuvDataType32f;
}

// Toward zero; beyond 32 bits the nearest integer that there is, and of a NaN the lowest.
Kuv32s truncated(Kuv64f level) {
    if (!(level > INT32_MIN)) return INT32_MIN;
    return level < INT32_MAX ? static_cast<Kuv32s>(level) : INT32_MAX;
}

Kuv32s ceiling(Kuv64f level) {
    const Kuv32s whole = truncated(level);
    return whole < INT32_MAX && static_cast<Kuv64f>(whole) < level ? whole + 1 : whole;
}

// Writes a plan; `level(c, k)` gives the words of the levels.
template <class Level>
void writePlan(HistogramHeader header, const Kuv32s* counts, KuviBinPlan* spec, Level level) {
    header.identity = 0;
    std::ptrdiff_t offset = sizeof(HistogramHeader);
    for (int c = 0; c < mostChannels; ++c) {
        const bool used = c < header.channels;
        header.levelCounts[c] = used ? loadSample(counts + c) : 0;
        header.levels[c] = used ? static_cast<Kuv32u>(offset) : 0;
        offset += std::ptrdiff_t{4} * header.levelCounts[c];
    }
    storeSample(placeIn<HistogramHeader>(spec, 0), header);
    offset = sizeof(HistogramHeader);
    for (int c = 0; c < header.channels; ++c) {
        for (std::ptrdiff_t k = 0; k < header.levelCounts[c]; ++k, offset += 4) setWord(spec, offset, level(c, k));
    }
    setWord(spec, offsetof(HistogramHeader, identity), histogramIdentity);
}

}  // namespace

KuvStatus kuviHistogramGetBufferSize_shared(Kuv32s dataType, KuviSize roiSize, const Kuv32s* nLevels, Kuv32s channels, Kuv32s,
                                            Kuv32s* specSize, Kuv32s* bufferSize) {
    if (anyNull(nLevels, specSize, bufferSize)) return kuvStatusNullPtr;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    if (!isChannelCount(channels)) return kuvStatusBadChannelCount;
    Kuv64u levels = 0;
    for (int c = 0; c < channels; ++c) {
        const Kuv32s count = loadSample(nLevels + c);
        if (count < 2) return kuvStatusBadHistLevels;
        levels += static_cast<Kuv64u>(count);
    }
    const Kuv32s valuesOfType = dataType == kuvDataType8u ? valueCount<Kuv8u>
                              : dataType == kuvDataType16u || dataType == kuvDataType16s ? valueCount<Kuv16u> : 0;
    storeSample(specSize, static_cast<Kuv32s>(sizeof(HistogramHeader) + 4 * levels));
    storeSample(bufferSize, 4 * valuesOfType * channels);
    return isDataType(dataType) ? kuvStatusOk : kuvStatusBadDataType;
}

KuvStatus kuviHistogramInit_shared(Kuv32s dataType, const Kuv32f* const* levels, const Kuv32s* nLevels, Kuv32s channels,
                                   KuviBinPlan* spec) {
    if (!isDataType(dataType)) return kuvStatusBadDataType;
    if (anyNull(levels, nLevels, spec)) return kuvStatusNullPtr;
    if (!isChannelCount(channels)) return kuvStatusBadChannelCount;
    for (int c = 0; c < channels; ++c) {
        const Kuv32f* const list = loadSample(levels + c);
        const Kuv32s count = loadSample(nLevels + c);
        if (anyNull(list)) return kuvStatusNullPtr;
        if (count < 2) return kuvStatusBadHistLevels;
        for (std::ptrdiff_t k = 0; k + 1 < count; ++k) {
            if (!(loadSample(list + k) < loadSample(list + k + 1))) return kuvStatusRangeOrder;
        }
    }

    writePlan({dataType, channels, 0, 0, {}, {}, {}}, nLevels, spec, [&](int c, std::ptrdiff_t k) {
        const Kuv32f level = loadSample(loadSample(levels + c) + k);
        return dataType == kuvDataType32f ? __builtin_bit_cast(Kuv32s, level) : ceiling(static_cast<Kuv64f>(level));
    });
    return kuvStatusOk;
}

KuvStatus kuviHistogramUniformInit_shared(Kuv32s dataType, const Kuv32f* lowerLevel, const Kuv32f* upperLevel,
                                          const Kuv32s* nLevels, Kuv32s channels, KuviBinPlan* spec) {
    if (!isDataType(dataType)) return kuvStatusBadDataType;
    if (anyNull(lowerLevel, upperLevel, nLevels, spec)) return kuvStatusNullPtr;
    if (!isChannelCount(channels)) return kuvStatusBadChannelCount;
    for (int c = 0; c < channels; ++c) {
        if (loadSample(nLevels + c) < 2) return kuvStatusBadHistLevels;
        if (!(loadSample(lowerLevel + c) < loadSample(upperLevel + c))) return kuvStatusRangeOrder;
    }

    const bool isReal = dataType == kuvDataType32f;
    HistogramHeader header = {dataType, channels, 1, 0, {}, {}, {}};
    bool isNarrow = false;
    Kuv64f lower[mostChannels], upper[mostChannels], step[mostChannels];
    for (int c = 0; c < channels; ++c) {
        lower[c] = static_cast<Kuv64f>(loadSample(lowerLevel + c));
        upper[c] = static_cast<Kuv64f>(loadSample(upperLevel + c));
        step[c] = (upper[c] - lower[c]) / (loadSample(nLevels + c) - 1);
        if (isReal) header.steps[c] = static_cast<Kuv32f>(step[c]);
        else isNarrow = isNarrow || step[c] < 1.0;
    }
    writePlan(header, nLevels, spec, [&](int c, std::ptrdiff_t k) {
        const Kuv64f product = static_cast<Kuv64f>(k) * step[c];
        const Kuv64f level = k == 0 ? lower[c] : k == loadSample(nLevels + c) - 1 ? upper[c] : product + lower[c];
        return isReal ? __builtin_bit_cast(Kuv32s, static_cast<Kuv32f>(level)) : truncated(level);
    });
    return isNarrow ? kuvStatusSizeWarning : kuvStatusOk;
}

KuvStatus kuviHistogramGetLevels_shared(const KuviBinPlan* spec, Kuv32f* const* levels) {
    if (anyNull(spec, levels)) return kuvStatusNullPtr;
    const auto header = loadSample(placeIn<HistogramHeader>(spec, 0));
    if (header.identity != histogramIdentity) return kuvStatusBadArg;
    for (int c = 0; c < header.channels; ++c) {
        Kuv32f* const to = loadSample(levels + c);
        for (std::ptrdiff_t k = 0; k < header.levelCounts[c]; ++k) {
            const auto word = static_cast<Kuv32s>(wordAt(spec, header.levels[c] + 4 * k));
            if (header.dataType == kuvDataType32f) setWord(to, 4 * k, word);
            else storeSample(to + k, static_cast<Kuv32f>(word));
        }
    }
    return kuvStatusOk;
}
