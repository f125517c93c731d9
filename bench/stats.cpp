// Sums, means, deviations, extremes and histograms, and what the compiler makes of the plain loops.
#include "loops.hpp"
#include "support/cases.hpp"
#include "support/forms.hpp"

using namespace kuvbench;

KUV_BENCHMARK_AND_LOOPS(kuviSum_32f_C1R, sumReals, "fast", Measured<Kuv32f, 1>)
KUV_BENCHMARK_AND_LOOPS(kuviSum_32f_C1R, sumReals, "accurate", Measured<Kuv32f, 1, 2>)
KUV_BENCHMARK_AND_LOOPS(kuviMean_32f_C1R, meanReals, "fast", Measured<Kuv32f, 1>)
KUV_BENCHMARK_AND_LOOPS(kuviMean_32f_C1R, meanReals, "accurate", Measured<Kuv32f, 1, 2>)
KUV_BENCHMARK_AND_LOOPS(kuviMean_16s_C1R, meanSigned, "aligned", Measured<Kuv16s, 1>)
KUV_BENCHMARK_AND_LOOPS(kuviMean_8u_C3R, meanThree, "aligned", Measured<Kuv8u, 3>)
KUV_BENCHMARK_AND_LOOPS(kuviMean_StdDev_8u_C1R, deviation8, "aligned", Measured<Kuv8u, 1>)
KUV_BENCHMARK_AND_LOOPS(kuviMean_StdDev_16u_C1R, deviation16, "aligned", Measured<Kuv16u, 1>)
KUV_BENCHMARK_AND_LOOPS(kuviMean_StdDev_32f_C1R, deviationReals, "one pass", Measured<Kuv32f, 1>)
KUV_BENCHMARK_AND_LOOPS(kuviMean_StdDev_32f_C1R, deviationReals, "two passes", Measured<Kuv32f, 1, 0, 90>)
KUV_BENCHMARK_AND_LOOPS(kuviMean_StdDev_8u_C3CR, deviationOfThree, "second channel", Measured<Kuv8u, 3, 2>)
KUV_BENCHMARK_AND_LOOPS(kuviMinMax_16s_C1R, rangeSigned, "aligned", Measured<Kuv16s, 1>)
KUV_BENCHMARK_AND_LOOPS(kuviMinMax_32f_C1R, rangeReals, "aligned", Measured<Kuv32f, 1>)
KUV_BENCHMARK_AND_LOOPS(kuviMax_32f_C3R, largestOfThree, "aligned", Measured<Kuv32f, 3>)
KUV_BENCHMARK_AND_LOOPS(kuviHistogram_8u_C1R, count8, "noise", Counted<Kuv8u, 1, 256>)
KUV_BENCHMARK_AND_LOOPS(kuviHistogram_8u_C1R, count8, "flat", Counted<Kuv8u, 1, 256, true, Content::flat>)
KUV_BENCHMARK_AND_LOOPS(kuviHistogram_8u_C3R, countThree8, "noise", Counted<Kuv8u, 3, 256>)
KUV_BENCHMARK_AND_LOOPS(kuviHistogram_8u_C4R, countFour8, "noise", Counted<Kuv8u, 4, 256>)
KUV_BENCHMARK_AND_LOOPS(kuviHistogram_16u_C1R, count16, "noise", Counted<Kuv16u, 1, 256>)
KUV_BENCHMARK_AND_LOOPS(kuviHistogram_16u_C1R, count16, "noise on free levels", Counted<Kuv16u, 1, 256, false>)
KUV_BENCHMARK_AND_LOOPS(kuviHistogram_16u_C4R, countFour16, "noise", Counted<Kuv16u, 4, 256>)
KUV_BENCHMARK_AND_LOOPS(kuviHistogram_16s_C1R, countSigned, "noise", Counted<Kuv16s, 1, 256>)
KUV_BENCHMARK_AND_LOOPS(kuviHistogram_32f_C1R, countReals, "noise", Counted<Kuv32f, 1, 256>)
KUV_BENCHMARK_AND_LOOPS(kuviHistogram_32f_C1R, countReals, "flat", Counted<Kuv32f, 1, 256, true, Content::flat>)
KUV_BENCHMARK(kuviHistogram_32f_C1R, "noise on 20 free levels", Counted<Kuv32f, 1, 19, false>)
KUV_BENCHMARK(kuviHistogram_32f_C1R, "noise on 65 free levels", Counted<Kuv32f, 1, 64, false>)
KUV_BENCHMARK(kuviHistogram_32f_C1R, "noise on 257 free levels", Counted<Kuv32f, 1, 256, false>)
KUV_BENCHMARK_AND_LOOPS(kuviIntegral_8u32s_C1R, integrate, "aligned", Integrated)
