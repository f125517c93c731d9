// The questions that fast paths ask when they choose non-temporal stores. An answer never changes a value stored. Variant units
// include this; they must not hold code that is compiled once for all.
#pragma once

#include "kuvcv.h"

namespace kuv {

// kuvStatusOk and the size of the largest cache in bytes, or that it is not known. Once answered it costs a load.
KuvStatus queryCacheBytes(Kuv32s* size);
void queryCacheLine(Kuv32s* line);

}  // namespace kuv
