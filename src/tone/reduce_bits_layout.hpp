// What kuviReduceBits_* keep in the caller's buffer, in bytes from its first multiple of 64.
#pragma once

#include "kuvcv.h"

namespace kuv {

constexpr Kuv32u reduceAlignment = 64;

// Only with noise.
constexpr int noiseEntries = 1024;
constexpr int noiseTableAt = 0;
constexpr int indexTableAt = noiseTableAt + noiseEntries * static_cast<int>(sizeof(Kuv32f));
constexpr int generatorBytes = 56;
constexpr int indexGeneratorAt = indexTableAt + noiseEntries * static_cast<int>(sizeof(Kuv16u));
constexpr int noiseGeneratorAt = indexGeneratorAt + generatorBytes;
constexpr int noiseBytes = noiseGeneratorAt + generatorBytes;
// Generators count for more than they take.
constexpr Kuv32u noiseBytesCounted = indexGeneratorAt + 2 * 64;

// Lines of errors with as many on both sides as a dither looks beyond a row.
struct LinesOf {
    int count, border;
};
constexpr LinesOf floydSteinbergLines = {2, 1}, threeRowLines = {3, 2};

}  // namespace kuv
