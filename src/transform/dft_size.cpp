// The sizes of a Fourier transform's blocks.
#include "core/checks.hpp"
#include "transform/dft_plan.hpp"

namespace kuv::KUV_VARIANT {
namespace {

constexpr Kuv64s planBytes = roundedUp(Kuv64s{plan::bytes}, 64);

void addMixedRadix(Kuv32s length, const Factors& factors, BlockSizes& sizes) {
    Kuv64s tables = 0;
    const Kuv32s largestTabled = walkStages(
        length, factors, [&](int, Kuv32s radix, bool isNew) { tables += isNew ? roundedUp(8 * Kuv64s{radix}, 64) : 0; },
        [&](int, Kuv32s radix, Kuv32s remaining, Kuv32s, Kuv32s) { tables += roundedUp(8 * Kuv64s{radix} * remaining, 64); },
        [&](Kuv32s entries) { tables += roundedUp(4 * Kuv64s{entries}, 64); });
    sizes.spec += roundedUp(tables, 64);
    sizes.work += roundedUp(mixedWorkBytes(length, largestTabled), 64);
}

KuvStatus addSizes(Kuv32s length, BlockSizes& sizes);

void addChirp(Kuv32s length, BlockSizes& sizes) {
    const Kuv64s points = convolutionLength(length);
    BlockSizes nested = {};
    addSizes(static_cast<Kuv32s>(points), nested);
    const Kuv64s convolution = roundedUp(nested.work, 64) + 8 * points + 64;
    sizes.spec += roundedUp(roundedUp(8 * Kuv64s{length}, 64) + roundedUp(8 * points, 64) + roundedUp(nested.spec, 64), 64);
    sizes.init += roundedUp(roundedUp(2 * Kuv64s{length}, 64) + roundedUp(nested.init, 64) + roundedUp(convolution, 64), 64);
    sizes.work = roundedUp(roundedUp(nested.work, 64) + roundedUp(convolution, 64), 64);
}

KuvStatus addPath(Kuv32s length, BlockSizes& sizes) {
    Factors factors;
    const DftPath path = pathOf(length, factors);
    const Kuv64s values = roundedUp(8 * Kuv64s{length}, 64);
    if (path == DftPath::fixed) return kuvStatusOk;
    if (path == DftPath::powerOfTwo) {
        const int order = orderOf(length);
        if (order >= fftOrderLimit) return kuvStatusBadOrder;
        const BlockSizes fft = fftSizes(order);
        sizes.spec += roundedUp(fft.spec, 64);
        sizes.init += roundedUp(fft.init, 64);
        sizes.work += roundedUp(fft.work, 64);
        return kuvStatusOk;
    }
    if (path == DftPath::tooLong) return kuvStatusBadSize;
    sizes.init += values;
    if (path == DftPath::mixedRadix) addMixedRadix(length, factors, sizes);
    if (path == DftPath::direct) {
        sizes.spec += values;
        sizes.work += values;
    }
    if (path == DftPath::chirp) addChirp(length, sizes);
    return path == DftPath::chirpTooLong ? kuvStatusBadSize : kuvStatusOk;
}

KuvStatus addSizes(Kuv32s length, BlockSizes& sizes) {
    sizes.spec += planBytes;
    const KuvStatus status = addPath(length, sizes);
    sizes.spec += slack;
    if (sizes.init > 0) sizes.init += slack;
    if (sizes.work > 0) sizes.work += slack;
    return status;
}

}  // namespace
}  // namespace kuv::KUV_VARIANT

KuvStatus KUV_VARIANT_FUNCTION(kuvsDFTGetSize_C_32f)(Kuv32s length, Kuv32s flag, Kuv32s, Kuv32s* specSize, Kuv32s* initSize,
                                                     Kuv32s* workSize) {
    using namespace kuv::KUV_VARIANT;
    if (anyNull(specSize, initSize, workSize)) return kuvStatusNullPtr;
    if (length < 1) return kuvStatusBadSize;
    BlockSizes sizes = {};
    KuvStatus status = kuvStatusBadFlag;
    if (isDftFlag(flag)) status = addSizes(length, sizes);
    else sizes.spec = planBytes + slack;
    storeSample(specSize, static_cast<Kuv32s>(sizes.spec));
    storeSample(initSize, static_cast<Kuv32s>(sizes.init));
    storeSample(workSize, static_cast<Kuv32s>(sizes.work));
    return status;
}
