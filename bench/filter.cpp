// Filters with kernels of some sizes.
#include "support/cases.hpp"
#include "support/filtered.hpp"

using namespace kuvbench;

KUV_BENCHMARK(kuviFilterBorder_32f_C1R, "3 x 3", Filtered<3, 3>)
KUV_BENCHMARK(kuviFilterBorder_32f_C1R, "5 x 5", Filtered<5, 5>)
KUV_BENCHMARK(kuviFilterBorder_32f_C1R, "7 x 7", Filtered<7, 7>)
KUV_BENCHMARK(kuviFilterBorder_32f_C1R, "11 x 11", Filtered<11, 11>)
KUV_BENCHMARK(kuviFilterBorder_32f_C1R, "9 x 1", Filtered<9, 1>)
KUV_BENCHMARK(kuviFilterBorder_32f_C1R, "1 x 9", Filtered<1, 9>)
