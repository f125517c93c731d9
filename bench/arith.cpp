// Sums and shifts of images, and what the compiler makes of the plain loops.
#include "loops.hpp"
#include "support/cases.hpp"
#include "support/forms.hpp"

using namespace kuvbench;

KUV_BENCHMARK(kuviAdd_32f_C1IR, "aligned", TwoInPlace<Kuv32f>)
KUV_BENCHMARK(kuviAdd_32f_C1IR, "unaligned", TwoInPlace<Kuv32f, false>)

KUV_LOOP_PEERS(kuviAdd_32f_C1IR, addInPlace, TwoInPlace<Kuv32f>)
KUV_LOOP_PEERS(kuviAdd_32f_C1IR, addInPlace, TwoInPlace<Kuv32f, false>)

#define SHIFT(function, loop, name, ...)            \
    KUV_BENCHMARK(function, name, __VA_ARGS__)      \
    KUV_LOOP_PEERS(function, loop, __VA_ARGS__)
SHIFT(kuviLShiftC_16u_C1IR, shiftLeft, "aligned", ShiftedInPlace<1>)
SHIFT(kuviLShiftC_16u_C1IR, shiftLeft, "unaligned", ShiftedInPlace<1, 3, 3, 3, false>)
SHIFT(kuviRShiftC_16u_C1IR, shiftRight, "aligned", ShiftedInPlace<1>)
SHIFT(kuviRShiftC_16u_C1IR, shiftRight, "unaligned", ShiftedInPlace<1, 3, 3, 3, false>)
SHIFT(kuviLShiftC_16u_C3IR, shiftThreeLeft, "aligned", ShiftedInPlace<3, 1, 2, 3>)
SHIFT(kuviLShiftC_16u_C3IR, shiftThreeLeft, "equal", ShiftedInPlace<3>)
SHIFT(kuviRShiftC_16u_C3IR, shiftThreeRight, "aligned", ShiftedInPlace<3, 1, 2, 3>)
SHIFT(kuviRShiftC_16u_C3IR, shiftThreeRight, "kept", ShiftedInPlace<3, 1, 2, 0>)
SHIFT(kuviRShiftC_16u_C3IR, shiftThreeRight, "equal", ShiftedInPlace<3>)
SHIFT(kuviLShiftC_16u_AC4IR, shiftColoursLeft, "aligned", ShiftedInPlace<4, 1, 2, 3>)
SHIFT(kuviLShiftC_16u_AC4IR, shiftColoursLeft, "equal", ShiftedInPlace<4>)
SHIFT(kuviRShiftC_16u_AC4IR, shiftColoursRight, "aligned", ShiftedInPlace<4, 1, 2, 3>)
SHIFT(kuviRShiftC_16u_AC4IR, shiftColoursRight, "equal", ShiftedInPlace<4>)
SHIFT(kuvsLShiftC_16u_I, shiftSignalLeft, "run", ShiftedInPlace<1>)
SHIFT(kuvsRShiftC_16u_I, shiftSignalRight, "run", ShiftedInPlace<1>)
