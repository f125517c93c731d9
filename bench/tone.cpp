// Tone maps, palettes and dithers, and what the compiler makes of the plain loops.
#include "loops.hpp"
#include "support/cases.hpp"
#include "support/forms.hpp"

using namespace kuvbench;

KUV_BENCHMARK_AND_LOOPS(kuviLUTPalette_8u24u_C1R, palette8to24, "4 bits", Indexed<Kuv8u, Kuv8u, 3, 4>)
KUV_BENCHMARK_AND_LOOPS(kuviLUTPalette_8u24u_C1R, palette8to24, "8 bits", Indexed<Kuv8u, Kuv8u, 3, 8>)
KUV_BENCHMARK_AND_LOOPS(kuviLUTPalette_8u32u_C1R, palette8to32, "4 bits", Indexed<Kuv8u, Kuv32u, 1, 4>)
KUV_BENCHMARK_AND_LOOPS(kuviLUTPalette_8u32u_C1R, palette8to32, "8 bits", Indexed<Kuv8u, Kuv32u, 1, 8>)
KUV_BENCHMARK_AND_LOOPS(kuviLUTPalette_16u24u_C1R, palette16to24, "12 bits", Indexed<Kuv16u, Kuv8u, 3, 12>)
KUV_BENCHMARK_AND_LOOPS(kuviLUTPalette_16u24u_C1R, palette16to24, "16 bits", Indexed<Kuv16u, Kuv8u, 3, 16>)
KUV_BENCHMARK_AND_LOOPS(kuviLUTPalette_16u32u_C1R, palette16to32, "12 bits", Indexed<Kuv16u, Kuv32u, 1, 12>)
KUV_BENCHMARK_AND_LOOPS(kuviLUTPalette_16u32u_C1R, palette16to32, "16 bits", Indexed<Kuv16u, Kuv32u, 1, 16>)

KUV_BENCHMARK_AND_LOOPS(kuviReduceBits_16u8u_C1R, reduceOne, "off", Reduced<1, kuvDitherOff>)
KUV_BENCHMARK_AND_LOOPS(kuviReduceBits_16u8u_C3R, reduceThree, "off", Reduced<3, kuvDitherOff>)
KUV_BENCHMARK_AND_LOOPS(kuviReduceBits_16u8u_AC4R, reduceColours, "off", Reduced<4, kuvDitherOff>)
KUV_BENCHMARK_AND_LOOPS(kuviReduceBits_16u8u_C1R, orderOne, "ordered", Reduced<1, kuvDitherOrdered4x4>)
KUV_BENCHMARK_AND_LOOPS(kuviReduceBits_16u8u_C3R, orderThree, "ordered", Reduced<3, kuvDitherOrdered4x4>)
KUV_BENCHMARK_AND_LOOPS(kuviReduceBits_16u8u_AC4R, orderColours, "ordered", Reduced<4, kuvDitherOrdered4x4>)
KUV_BENCHMARK_AND_LOOPS(kuviReduceBits_16u8u_C1R, diffuseOne, "Floyd-Steinberg", Reduced<1, kuvDitherFloydSteinberg>)
KUV_BENCHMARK_AND_LOOPS(kuviReduceBits_16u8u_C3R, diffuseThree, "Floyd-Steinberg", Reduced<3, kuvDitherFloydSteinberg>)
KUV_BENCHMARK_AND_LOOPS(kuviReduceBits_16u8u_AC4R, diffuseColours, "Floyd-Steinberg", Reduced<4, kuvDitherFloydSteinberg>)
KUV_BENCHMARK_AND_LOOPS(kuviReduceBits_16u8u_C1R, diffuseOne, "Jarvis-Judice-Ninke", Reduced<1, kuvDitherJarvisJudiceNinke>)
KUV_BENCHMARK_AND_LOOPS(kuviReduceBits_16u8u_C3R, diffuseThree, "Jarvis-Judice-Ninke", Reduced<3, kuvDitherJarvisJudiceNinke>)
KUV_BENCHMARK_AND_LOOPS(kuviReduceBits_16u8u_AC4R, diffuseColours, "Jarvis-Judice-Ninke", Reduced<4, kuvDitherJarvisJudiceNinke>)
KUV_BENCHMARK_AND_LOOPS(kuviReduceBits_16u8u_C1R, diffuseOne, "Stucki", Reduced<1, kuvDitherStucki>)
KUV_BENCHMARK_AND_LOOPS(kuviReduceBits_16u8u_C3R, diffuseThree, "Stucki", Reduced<3, kuvDitherStucki>)
KUV_BENCHMARK_AND_LOOPS(kuviReduceBits_16u8u_AC4R, diffuseColours, "Stucki", Reduced<4, kuvDitherStucki>)

KUV_BENCHMARK(kuviReduceBits_16u8u_C1R, "ordered and noise", Reduced<1, kuvDitherOrdered4x4, 4, 50>)
KUV_BENCHMARK(kuviReduceBits_16u8u_C3R, "ordered and noise", Reduced<3, kuvDitherOrdered4x4, 4, 50>)
KUV_BENCHMARK(kuviReduceBits_16u8u_C1R, "Floyd-Steinberg and noise", Reduced<1, kuvDitherFloydSteinberg, 4, 50>)
KUV_BENCHMARK(kuviReduceBits_16u8u_C3R, "Floyd-Steinberg and noise", Reduced<3, kuvDitherFloydSteinberg, 4, 50>)

KUV_BENCHMARK_AND_LOOPS(kuviLUT_8u_C1IR, mapOne8, "curve", ToneMapped<Kuv8u, 1, kuvLutLinear>)
KUV_BENCHMARK_AND_LOOPS(kuviLUT_8u_C3IR, mapThree8, "three curves", ToneMapped<Kuv8u, 3, kuvLutLinear>)
KUV_BENCHMARK_AND_LOOPS(kuviLUT_8u_C3IR, mapThree8, "one curve", ToneMapped<Kuv8u, 3, kuvLutLinear, true>)
KUV_BENCHMARK_AND_LOOPS(kuviLUT_8u_AC4IR, mapColours8, "three curves", ToneMapped<Kuv8u, 4, kuvLutLinear>)
KUV_BENCHMARK_AND_LOOPS(kuviLUT_16u_C1IR, mapOne16, "curve", ToneMapped<Kuv16u, 1, kuvLutLinear>)
KUV_BENCHMARK_AND_LOOPS(kuviLUT_16u_C3IR, mapThree16, "three curves", ToneMapped<Kuv16u, 3, kuvLutLinear>)
KUV_BENCHMARK_AND_LOOPS(kuviLUT_16u_AC4IR, mapColours16, "three curves", ToneMapped<Kuv16u, 4, kuvLutLinear>)

// Small images of step maps are searched, which the loops do not do.
KUV_BENCHMARK(kuviLUT_16u_C1IR, "steps", ToneMapped<Kuv16u, 1, kuvLutStep>)
KUV_BENCHMARK(kuviLUT_16u_C3IR, "steps", ToneMapped<Kuv16u, 3, kuvLutStep>)
