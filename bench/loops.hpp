// The plain loops that a caller would write, vectorised by the compiler: loops.cpp compiled for the baseline and for AVX2.
#pragma once

#include "kuvcv.h"

// Each has the signature of the export whose work it does.
#define KUV_DECLARE_LOOPS(name, like) extern "C" decltype(like) name##_sse2, name##_avx2;
KUV_DECLARE_LOOPS(addInPlace, kuviAdd_32f_C1IR)
KUV_DECLARE_LOOPS(shiftLeft, kuviLShiftC_16u_C1IR)
KUV_DECLARE_LOOPS(shiftRight, kuviRShiftC_16u_C1IR)
KUV_DECLARE_LOOPS(shiftThreeLeft, kuviLShiftC_16u_C3IR)
KUV_DECLARE_LOOPS(shiftThreeRight, kuviRShiftC_16u_C3IR)
KUV_DECLARE_LOOPS(shiftColoursLeft, kuviLShiftC_16u_AC4IR)
KUV_DECLARE_LOOPS(shiftColoursRight, kuviRShiftC_16u_AC4IR)
KUV_DECLARE_LOOPS(shiftSignalLeft, kuvsLShiftC_16u_I)
KUV_DECLARE_LOOPS(shiftSignalRight, kuvsRShiftC_16u_I)
KUV_DECLARE_LOOPS(set16, kuviSet_16u_C1R)
KUV_DECLARE_LOOPS(set32, kuviSet_32s_C1R)
KUV_DECLARE_LOOPS(setReal, kuviSet_32f_C1R)
KUV_DECLARE_LOOPS(setChannelOf4, kuviSet_8u_C4CR)
KUV_DECLARE_LOOPS(convert8to32f, kuviConvert_8u32f_C1R)
KUV_DECLARE_LOOPS(convertThree8to32f, kuviConvert_8u32f_C3R)
KUV_DECLARE_LOOPS(convert16to32f, kuviConvert_16u32f_C1R)
KUV_DECLARE_LOOPS(convert16to8, kuviConvert_16u8u_C1R)
KUV_DECLARE_LOOPS(convertThree16to8, kuviConvert_16u8u_C3R)
KUV_DECLARE_LOOPS(convert32fTo8, kuviConvert_32f8u_C3R)
KUV_DECLARE_LOOPS(scale8to32f, kuviScale_8u32f_C3R)
KUV_DECLARE_LOOPS(scale32fTo8, kuviScale_32f8u_C3R)
KUV_DECLARE_LOOPS(swapThree, kuviSwapChannels_8u_C3R)
KUV_DECLARE_LOOPS(swapThree16, kuviSwapChannels_16u_C3R)
KUV_DECLARE_LOOPS(swapColours, kuviSwapChannels_8u_AC4R)
KUV_DECLARE_LOOPS(swapColours16, kuviSwapChannels_16u_AC4R)
KUV_DECLARE_LOOPS(swapThreeInPlace, kuviSwapChannels_8u_C3IR)
KUV_DECLARE_LOOPS(swapFourInPlace, kuviSwapChannels_8u_C4IR)
KUV_DECLARE_LOOPS(copyAC4_8u, kuviCopy_8u_AC4R)
KUV_DECLARE_LOOPS(copyAC4_16u, kuviCopy_16u_AC4R)
KUV_DECLARE_LOOPS(copyC3AC4_8u, kuviCopy_8u_C3AC4R)
KUV_DECLARE_LOOPS(copyC3AC4_16u, kuviCopy_16u_C3AC4R)
KUV_DECLARE_LOOPS(copyAC4C3_8u, kuviCopy_8u_AC4C3R)
KUV_DECLARE_LOOPS(copyAC4C3_16u, kuviCopy_16u_AC4C3R)
KUV_DECLARE_LOOPS(copyC1C3, kuviCopy_8u_C1C3R)
KUV_DECLARE_LOOPS(copyP3C3, kuviCopy_8u_P3C3R)
KUV_DECLARE_LOOPS(copyP4C4, kuviCopy_8u_P4C4R)
KUV_DECLARE_LOOPS(copyMasked8, kuviCopy_8u_C1MR)
KUV_DECLARE_LOOPS(copyMasked16, kuviCopy_16u_C1MR)

// Makes both loops peers of the export, each of the variant with the same instructions. Needs support/cases.hpp.
#define KUV_LOOP_PEERS(function, loop, ...)                                                                        \
    KUV_ADD(__COUNTER__, addLoop<__VA_ARGS__>(#function, "loop-sse2", "-O3 -msse2", "w7", loop##_sse2))            \
    KUV_ADD(__COUNTER__, addLoop<__VA_ARGS__>(#function, "loop-avx2", "-O3 -mavx2", "h9", loop##_avx2))
