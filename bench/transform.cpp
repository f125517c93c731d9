// Transforms of 8x8 blocks, and what the compiler makes of the plain loop.
#include "loops.hpp"
#include "support/blocks.hpp"
#include "support/cases.hpp"

using namespace kuvbench;

KUV_BENCHMARK(kuviDCT8x8Fwd_16s_C1I, "samples", Blocks<256>)
KUV_BENCHMARK(kuviDCT8x8Inv_16s_C1I, "coefficients", Blocks<64>)
KUV_BENCHMARK_AND_LOOPS(kuviZigzagInv8x8_16s_C1, unscan, "scan", Blocks<64>)
