// Sums of images, and what the compiler makes of the plain loop.
#include "loops.hpp"
#include "support/cases.hpp"
#include "support/forms.hpp"

using namespace kuvbench;

KUV_BENCHMARK(kuviAdd_32f_C1IR, "aligned", TwoInPlace<Kuv32f>)
KUV_BENCHMARK(kuviAdd_32f_C1IR, "unaligned", TwoInPlace<Kuv32f, false>)

KUV_LOOP_PEERS(kuviAdd_32f_C1IR, addInPlace, TwoInPlace<Kuv32f>)
KUV_LOOP_PEERS(kuviAdd_32f_C1IR, addInPlace, TwoInPlace<Kuv32f, false>)
