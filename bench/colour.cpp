// Camera colour.
#include "support/cases.hpp"
#include "support/forms.hpp"

using namespace kuvbench;

KUV_BENCHMARK(kuviDemosaicAHD_8u_C1C3R, "RGGB", Demosaic<Kuv8u>)
KUV_BENCHMARK(kuviDemosaicAHD_16u_C1C3R, "RGGB", Demosaic<Kuv16u>)

KUV_BENCHMARK_THREADS(kuviDemosaicAHD_8u_C1C3R, Demosaic<Kuv8u>)
KUV_BENCHMARK_THREADS(kuviDemosaicAHD_16u_C1C3R, Demosaic<Kuv16u>)
