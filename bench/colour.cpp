// Camera colour.
#include "loops.hpp"
#include "support/cases.hpp"
#include "support/forms.hpp"

using namespace kuvbench;

KUV_BENCHMARK(kuviCFAToRGB_8u_C1C3R, "RGGB", Interpolated<Kuv8u>)
KUV_BENCHMARK(kuviCFAToRGB_16u_C1C3R, "RGGB", Interpolated<Kuv16u>)

KUV_BENCHMARK(kuviDemosaicAHD_8u_C1C3R, "RGGB", Demosaic<Kuv8u>)
KUV_BENCHMARK(kuviDemosaicAHD_16u_C1C3R, "RGGB", Demosaic<Kuv16u>)

KUV_BENCHMARK_THREADS(kuviDemosaicAHD_8u_C1C3R, Demosaic<Kuv8u>)
KUV_BENCHMARK_THREADS(kuviDemosaicAHD_16u_C1C3R, Demosaic<Kuv16u>)

#define TO_RGB(function, channels, loop)                                                       \
    KUV_BENCHMARK_AND_LOOPS(function, loop, "aligned", FromTo<Kuv8u, channels, 3>)             \
    KUV_BENCHMARK_AND_LOOPS(function, loop, "unaligned", FromTo<Kuv8u, channels, 3, false>)
TO_RGB(kuviCbYCr422ToRGB_8u_C2C3R, 2, expandVideo)
TO_RGB(kuviGrayToRGB_8u_C1C3R, 1, repeatGrey)
