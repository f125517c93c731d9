// The plain loops that a caller would write, vectorised by the compiler: loops.cpp compiled for the baseline and for AVX2.
#pragma once

#include "kuvcv.h"

// Each has the signature of the export whose work it does.
#define KUV_DECLARE_LOOPS(name, like) extern "C" decltype(like) name##_sse2, name##_avx2;
KUV_DECLARE_LOOPS(addInPlace, kuviAdd_32f_C1IR)

// Makes both loops peers of the export, each of the variant with the same instructions. Needs support/cases.hpp.
#define KUV_LOOP_PEERS(function, loop, ...)                                                                        \
    KUV_ADD(__COUNTER__, addLoop<__VA_ARGS__>(#function, "loop-sse2", "-O3 -msse2", "w7", loop##_sse2))            \
    KUV_ADD(__COUNTER__, addLoop<__VA_ARGS__>(#function, "loop-avx2", "-O3 -mavx2", "h9", loop##_avx2))
