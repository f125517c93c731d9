// What a call through an export costs beside the work.
#include "support/cases.hpp"
#include "support/forms.hpp"

using namespace kuvbench;

KUV_BENCHMARK_STUB(kuvcvGetLibVersion, Nothing)
KUV_BENCHMARK_STUB(kuviAdd_32f_C1IR, TwoInPlace<Kuv32f>)
