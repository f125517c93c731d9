// The sizes of histograms' blocks, and how bin plans are made and read.
#include <cstddef>
#include <cstdint>

#include "core/dispatch.hpp"
#include "stats/histogram_layout.hpp"

namespace {

using namespace kuv;

constexpr int mostChannels = 4;

constexpr bool isChannelCount(Kuv32s channels) { return channels == 1 || channels == 3 || channels == 4; }

constexpr bool isDataType(Kuv32s dataType) {
    return dataType == kuvDataType8u || dataType == kuvDataType16u || dataType == kuvDataType16s || dataType == kuvDataType32f;
}

// Values of the caller's, at any address.
template <class T>
T valueAt(const T* list, std::ptrdiff_t index) {
    T value;
    __builtin_memcpy(&value, list + index, sizeof value);
    return value;
}

template <class T>
void setValue(void* block, std::ptrdiff_t offset, T value) {
    __builtin_memcpy(static_cast<char*>(block) + offset, &value, sizeof value);
}

// Toward zero; beyond 32 bits the nearest integer that there is, and of a NaN the lowest.
Kuv32s truncated(Kuv64f level) {
    if (!(level > INT32_MIN)) return INT32_MIN;
    return level < INT32_MAX ? static_cast<Kuv32s>(level) : INT32_MAX;
}

Kuv32s roundedUp(Kuv64f level) {
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
        header.levelCounts[c] = used ? valueAt(counts, c) : 0;
        header.levels[c] = used ? static_cast<Kuv32u>(offset) : 0;
        offset += std::ptrdiff_t{4} * header.levelCounts[c];
    }
    setValue(spec, 0, header);
    offset = sizeof(HistogramHeader);
    for (int c = 0; c < header.channels; ++c) {
        for (std::ptrdiff_t k = 0; k < header.levelCounts[c]; ++k, offset += 4) setValue(spec, offset, level(c, k));
    }
    setValue(spec, offsetof(HistogramHeader, identity), histogramIdentity);
}

}  // namespace

extern "C" KuvStatus kuviHistogramGetBufferSize_shared(Kuv32s dataType, KuviSize roiSize, const Kuv32s* nLevels, Kuv32s channels, Kuv32s,
                                                       Kuv32s* specSize, Kuv32s* bufferSize) {
    if (nLevels == nullptr || specSize == nullptr || bufferSize == nullptr) return kuvStatusNullPtr;
    if (roiSize.width < 1 || roiSize.height < 1) return kuvStatusBadSize;
    if (!isChannelCount(channels)) return kuvStatusBadChannelCount;
    Kuv64u levels = 0;
    for (int c = 0; c < channels; ++c) {
        const Kuv32s count = valueAt(nLevels, c);
        if (count < 2) return kuvStatusBadHistLevels;
        levels += static_cast<Kuv64u>(count);
    }
    const Kuv32s valuesOfType = dataType == kuvDataType8u ? valueCount<Kuv8u>
                              : dataType == kuvDataType16u || dataType == kuvDataType16s ? valueCount<Kuv16u> : 0;
    setValue(specSize, 0, static_cast<Kuv32u>(sizeof(HistogramHeader) + 4 * levels));
    setValue(bufferSize, 0, 4 * valuesOfType * channels);
    return isDataType(dataType) ? kuvStatusOk : kuvStatusBadDataType;
}

extern "C" KuvStatus kuviHistogramInit_shared(Kuv32s dataType, const Kuv32f* const* levels, const Kuv32s* nLevels, Kuv32s channels,
                                              KuviBinPlan* spec) {
    if (!isDataType(dataType)) return kuvStatusBadDataType;
    if (levels == nullptr || nLevels == nullptr || spec == nullptr) return kuvStatusNullPtr;
    if (!isChannelCount(channels)) return kuvStatusBadChannelCount;
    for (int c = 0; c < channels; ++c) {
        const Kuv32f* const list = valueAt(levels, c);
        const Kuv32s count = valueAt(nLevels, c);
        if (list == nullptr) return kuvStatusNullPtr;
        if (count < 2) return kuvStatusBadHistLevels;
        for (std::ptrdiff_t k = 0; k + 1 < count; ++k) {
            if (!(valueAt(list, k) < valueAt(list, k + 1))) return kuvStatusRangeOrder;
        }
    }

    writePlan({dataType, channels, 0, 0, {}, {}, {}}, nLevels, spec, [&](int c, std::ptrdiff_t k) {
        const Kuv32f level = valueAt(valueAt(levels, c), k);
        Kuv32s word;
        if (dataType == kuvDataType32f) __builtin_memcpy(&word, &level, sizeof word);
        else word = roundedUp(static_cast<Kuv64f>(level));
        return word;
    });
    return kuvStatusOk;
}

extern "C" KuvStatus kuviHistogramUniformInit_shared(Kuv32s dataType, const Kuv32f* lowerLevel, const Kuv32f* upperLevel,
                                                     const Kuv32s* nLevels, Kuv32s channels, KuviBinPlan* spec) {
    if (!isDataType(dataType)) return kuvStatusBadDataType;
    if (lowerLevel == nullptr || upperLevel == nullptr || nLevels == nullptr || spec == nullptr) return kuvStatusNullPtr;
    if (!isChannelCount(channels)) return kuvStatusBadChannelCount;
    for (int c = 0; c < channels; ++c) {
        if (valueAt(nLevels, c) < 2) return kuvStatusBadHistLevels;
        if (!(valueAt(lowerLevel, c) < valueAt(upperLevel, c))) return kuvStatusRangeOrder;
    }

    const bool isReal = dataType == kuvDataType32f;
    HistogramHeader header = {dataType, channels, 1, 0, {}, {}, {}};
    bool isNarrow = false;
    Kuv64f lower[mostChannels], upper[mostChannels], step[mostChannels];
    for (int c = 0; c < channels; ++c) {
        lower[c] = static_cast<Kuv64f>(valueAt(lowerLevel, c));
        upper[c] = static_cast<Kuv64f>(valueAt(upperLevel, c));
        step[c] = (upper[c] - lower[c]) / (valueAt(nLevels, c) - 1);
        if (isReal) header.steps[c] = static_cast<Kuv32f>(step[c]);
        else isNarrow = isNarrow || step[c] < 1.0;
    }
    writePlan(header, nLevels, spec, [&](int c, std::ptrdiff_t k) {
        const Kuv64f product = static_cast<Kuv64f>(k) * step[c];
        const Kuv64f level = k == 0 ? lower[c] : k == valueAt(nLevels, c) - 1 ? upper[c] : product + lower[c];
        const Kuv32f rounded = static_cast<Kuv32f>(level);
        Kuv32s word;
        if (isReal) __builtin_memcpy(&word, &rounded, sizeof word);
        else word = truncated(level);
        return word;
    });
    return isNarrow ? kuvStatusSizeWarning : kuvStatusOk;
}

extern "C" KuvStatus kuviHistogramGetLevels_shared(const KuviBinPlan* spec, Kuv32f* const* levels) {
    if (spec == nullptr || levels == nullptr) return kuvStatusNullPtr;
    HistogramHeader header;
    __builtin_memcpy(&header, spec, sizeof header);
    if (header.identity != histogramIdentity) return kuvStatusBadArg;
    for (int c = 0; c < header.channels; ++c) {
        const char* const list = reinterpret_cast<const char*>(spec) + header.levels[c];
        Kuv32f* const to = valueAt(levels, c);
        for (std::ptrdiff_t k = 0; k < header.levelCounts[c]; ++k) {
            Kuv32s word;
            __builtin_memcpy(&word, list + 4 * k, sizeof word);
            if (header.dataType == kuvDataType32f) setValue(to, 4 * k, word);
            else setValue(to, 4 * k, static_cast<Kuv32f>(word));
        }
    }
    return kuvStatusOk;
}
