// How large a buffer the labelling of markers needs.
#include "core/dispatch.hpp"

KuvStatus kuviLabelMarkersGetBufferSize_16u_C1R_shared(KuviSize roiSize, Kuv32s* bufferSize) {
    if (bufferSize == nullptr) return kuvStatusNullPtr;
    if (roiSize.width < 1 || roiSize.height < 1) return kuvStatusBadSize;
    // A size beyond 32 bits wraps around.
    const Kuv32u pixels = static_cast<Kuv32u>(roiSize.width) * static_cast<Kuv32u>(roiSize.height);
    const Kuv32u bytes = 6 * pixels + 32;
    __builtin_memcpy(bufferSize, &bytes, sizeof bytes);  // at any address
    return kuvStatusOk;
}
