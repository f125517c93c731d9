// Resized images.
#include "support/cases.hpp"
#include "support/resized.hpp"

using namespace kuvbench;

KUV_BENCHMARK(kuviResizeLinear_16s_C3R, "to 0.5", Resized<50>)
KUV_BENCHMARK(kuviResizeLinear_16s_C3R, "to 0.7", Resized<70>)
KUV_BENCHMARK(kuviResizeLinear_16s_C3R, "to 1.6", Resized<160>)
KUV_BENCHMARK(kuviResizeLinear_16s_C3R, "to 2", Resized<200>)

KUV_BENCHMARK_THREADS(kuviResizeLinear_16s_C3R, Resized<160>)
