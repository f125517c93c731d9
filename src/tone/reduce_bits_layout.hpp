// What kuviReduceBits_* keep in the caller's buffer, in bytes from its first multiple of 64.
#pragma once

#include "kuvcv.h"

namespace kuv {
namespace {

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

// How many lines of errors a dither keeps, and by how many zeros each is continued on both sides.
struct ErrorLines {
    int count, border;
};
constexpr ErrorLines floydSteinbergLines = {2, 1}, threeRowLines = {3, 2};

}  // namespace
}  // namespace kuv
