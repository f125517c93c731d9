// Arithmetic on images, and what the compiler makes of the plain loops.
#include "loops.hpp"
#include "support/cases.hpp"
#include "support/forms.hpp"
#include "support/forms_arith.hpp"

using namespace kuvbench;

KUV_BENCHMARK(kuviAdd_32f_C1IR, "aligned", TwoInPlace<Kuv32f>)
KUV_BENCHMARK(kuviAdd_32f_C1IR, "unaligned", TwoInPlace<Kuv32f, false>)

KUV_LOOP_PEERS(kuviAdd_32f_C1IR, addInPlace, TwoInPlace<Kuv32f>)
KUV_LOOP_PEERS(kuviAdd_32f_C1IR, addInPlace, TwoInPlace<Kuv32f, false>)

#define REAL(function, loop, ...)                              \
    KUV_BENCHMARK(function, "aligned", __VA_ARGS__ true>)      \
    KUV_BENCHMARK(function, "unaligned", __VA_ARGS__ false>)   \
    KUV_LOOP_PEERS(function, loop, __VA_ARGS__ true>)          \
    KUV_LOOP_PEERS(function, loop, __VA_ARGS__ false>)
REAL(kuviSub_32f_C1IR, subInPlace, TwoInPlace<Kuv32f, )
REAL(kuviSub_32f_C1R, subTwo, TwoTo<Kuv32f, )
REAL(kuviAddC_32f_C3IR, addConstants, RealInPlace<3, )
REAL(kuviMulC_32f_C3IR, multiplyConstants, RealInPlace<3, )
REAL(kuviSubC_32f_C1IR, subConstant, RealInPlace<1, )
REAL(kuviDivC_32f_C1IR, divideConstant, RealInPlace<1, )
REAL(kuviDiv_32f_C1IR, divideInPlace, DividedInPlace<)
REAL(kuviAbs_32f_C1IR, absoluteInPlace, RealInPlace<1, )
REAL(kuviAbsDiff_32f_C1R, absoluteDifference, TwoTo<Kuv32f, )
REAL(kuviSqr_32f_C1IR, squareInPlace, RealInPlace<1, )
REAL(kuviSqrt_32f_C1IR, rootInPlace, RealInPlace<1, )

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

#define SCALED(function, loop, name, ...)                          \
    KUV_BENCHMARK(function, name, ScaledSamples<__VA_ARGS__>)      \
    KUV_LOOP_PEERS(function, loop, ScaledSamples<__VA_ARGS__>)
SCALED(kuviAdd_16s_C1RSfs, addScaled, "plain", 3, 0)
SCALED(kuviAdd_16s_C1RSfs, addScaled, "unaligned", 3, 0, 1, false)
SCALED(kuviAdd_16s_C1RSfs, addScaled, "halved", 3, 1)
SCALED(kuviAdd_16s_C1RSfs, addScaled, "right", 3, 5)
SCALED(kuviAdd_16s_C1RSfs, addScaled, "left", 3, -3)
SCALED(kuviAdd_16s_C1RSfs, addScaled, "sign", 3, -16)
SCALED(kuviSub_16s_C1RSfs, subScaled, "plain", 3, 0)
SCALED(kuviSub_16s_C1RSfs, subScaled, "halved", 3, 1)
SCALED(kuviSub_16s_C1RSfs, subScaled, "right", 3, 5)
SCALED(kuviAdd_16s_C3IRSfs, addThreeScaled, "plain", 2, 0, 3)
SCALED(kuviAdd_16s_C3IRSfs, addThreeScaled, "right", 2, 5, 3)
SCALED(kuviSub_16s_C1IRSfs, subScaledInPlace, "plain", 2, 0)
SCALED(kuviSub_16s_C1IRSfs, subScaledInPlace, "halved", 2, 1)
SCALED(kuviSub_16s_C1IRSfs, subScaledInPlace, "right", 2, 5)
SCALED(kuviSub_16s_C1IRSfs, subScaledInPlace, "left", 2, -3)
SCALED(kuviAddC_16s_C1IRSfs, addConstantScaled, "plain", 1, 0)
SCALED(kuviAddC_16s_C1IRSfs, addConstantScaled, "halved", 1, 1)
SCALED(kuviAddC_16s_C1IRSfs, addConstantScaled, "right", 1, 5)
SCALED(kuviAddC_16s_C1IRSfs, addConstantScaled, "left", 1, -3)
SCALED(kuviAddC_16s_C1IRSfs, addConstantScaled, "sign", 1, -16)
SCALED(kuviSubC_16s_C1IRSfs, subConstantScaled, "plain", 1, 0)
SCALED(kuviSubC_16s_C1IRSfs, subConstantScaled, "halved", 1, 1)
SCALED(kuviAddC_16s_C3IRSfs, addConstantsScaled, "plain", 1, 0, 3)
SCALED(kuviAddC_16s_C3IRSfs, addConstantsScaled, "right", 1, 5, 3)
SCALED(kuviSqr_16s_C1IRSfs, squareScaled, "plain", 1, 0)
SCALED(kuviSqr_16s_C1IRSfs, squareScaled, "halved", 1, 1)
SCALED(kuviSqr_16s_C1IRSfs, squareScaled, "right", 1, 5)
SCALED(kuviSqr_16s_C1IRSfs, squareScaled, "far", 1, 18)
SCALED(kuviSqr_16s_C1IRSfs, squareScaled, "left", 1, -3)
SCALED(kuviSqr_16s_C1IRSfs, squareScaled, "sign", 1, -16)
