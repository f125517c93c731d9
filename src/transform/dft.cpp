// Fourier transforms of any length: plans and their runs.
#include "core/checks.hpp"
#include "transform/dft_init.hpp"

namespace kuv::KUV_VARIANT {
namespace {

KUV_INLINE void runPlan(const void* record, Planes src, Planes dst, Kuv32f* work) {
    const Kuv32s length = static_cast<Kuv32s>(planWord(record, plan::length));
    const bool scales = planWord(record, plan::scaleForward) != 0;
    const Kuv32f scale = planScale(record);
    if (length <= longestFixed) return Runs::runFixed(length, scales, src, dst, scale);
    if (planWord(record, plan::usesFft))
        return Runs::runFft(planTable<char>(record, plan::fftPlan), src.re, src.im, dst.re, dst.im, scales, work);
    if (planWord(record, plan::usesMixedRadix)) Runs::runMixedRadix(record, src.re, src.im, dst.re, dst.im, work);
    else if (length > highestRadix) Runs::runChirp(record, src.re, src.im, dst.re, dst.im, work);
    else Runs::runDirect(record, src.re, src.im, dst.re, dst.im, work);
    if (!scales) return;
    scaleBy(scale, dst.re, length);
    scaleBy(scale, dst.im, length);
}

}  // namespace
}  // namespace kuv::KUV_VARIANT

KuvStatus KUV_VARIANT_FUNCTION(kuvsDFTInit_C_32f)(Kuv32s length, Kuv32s flag, Kuv32s hint, Kuv8u* spec, Kuv8u* initBuffer) {
    using namespace kuv::KUV_VARIANT;
    spec = alignedUp(spec);
    if (anyNull(spec)) return kuvStatusNullPtr;
    if (length < 1) return kuvStatusBadSize;
    return makePlan(spec, splitIdentity, length, flag, hint, initBuffer);
}

KuvStatus KUV_VARIANT_FUNCTION(kuvsDFTFwd_CToC_32f)(const Kuv32f* srcRe, const Kuv32f* srcIm, Kuv32f* dstRe, Kuv32f* dstIm,
                                                    const Kuv8u* spec, Kuv8u* buffer) {
    using namespace kuv::KUV_VARIANT;
    spec = alignedUp(spec);
    if (anyNull(spec)) return kuvStatusNullPtr;
    if (wordAt(spec, plan::id) != splitIdentity) return kuvStatusBadContext;
    if (anyNull(srcRe, srcIm, dstRe, dstIm)) return kuvStatusNullPtr;
    if (planWord(spec, plan::workBytes) > 0 && buffer == nullptr) return kuvStatusNullPtr;
    const Planes src = {const_cast<Kuv32f*>(srcRe), const_cast<Kuv32f*>(srcIm)};
    runPlan(spec, src, {dstRe, dstIm}, alignedUp(reinterpret_cast<Kuv32f*>(buffer)));
    return kuvStatusOk;
}
