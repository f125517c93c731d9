// The layout of a bin plan: a header, and the channels' levels end to end behind it.
#pragma once

#include "kuvcv.h"

namespace kuv {
namespace {

struct HistogramHeader {
    Kuv32s dataType;
    Kuv32s channels;
    Kuv32s uniform;
    Kuv32u identity;
    Kuv32s levelCounts[4];
    Kuv32u levels[4];  // offsets in the block
    Kuv32f steps[4];
};
static_assert(sizeof(HistogramHeader) == 64);

constexpr Kuv32u histogramIdentity = 0x74736968;  // "hist"

// How many values samples of a type have, and the lowest.
template <class T>
constexpr Kuv32s valueCount = 1 << 8 * sizeof(T);
template <class T>
constexpr Kuv32s lowestValue = T(-1) < 0 ? -(valueCount<T> / 2) : 0;

}  // namespace
}  // namespace kuv
