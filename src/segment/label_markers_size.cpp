// How large a buffer the labelling of markers needs.
#include "core/checks.hpp"
#include "core/dispatch.hpp"
#include "core/samples.hpp"

namespace {

using namespace kuv;

}  // namespace

KuvStatus kuviLabelMarkersGetBufferSize_16u_C1R_shared(KuviSize roiSize, Kuv32s* bufferSize) {
    if (anyNull(bufferSize)) return kuvStatusNullPtr;
    if (emptyRoi(roiSize)) return kuvStatusBadSize;
    // A size beyond 32 bits wraps around.
    const Kuv32u bytes = 6 * wrappedPixels(roiSize) + 32;
    storeSample(bufferSize, static_cast<Kuv32s>(bytes));
    return kuvStatusOk;
}
