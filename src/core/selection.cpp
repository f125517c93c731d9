// From a feature mask to the variant in force.
#include "core/features.hpp"

namespace kuv {

Kuv32s variantIndex = -1;
KuvCpuFeatures enabledFeatures = upToSse;

namespace {

constexpr KuvCpuFeatures undefinedBits = 0x7FFFFFFF60000000;
constexpr KuvCpuFeatures needOsState = KUV_CPU_AVX | KUV_CPU_AVX2 | serverAvx512 | manyCoreAvx512;

const SelectionRow& rowOf(KuvCpuFeatures features) {
    const SelectionRow* row = selectionTable;
    while ((features & row->test) != row->test) ++row;
    return *row;
}

}  // namespace

KuvStatus setCpuFeatures(const Processor& processor, KuvCpuFeatures features) {
    KuvStatus pending = kuvStatusOk;
    if (features & KUV_CPU_FORCE) {
        // The processor is not asked. The mask that was in force becomes the detected one.
        features &= ~KUV_CPU_FORCE;
        storeShared(detectedFeatures, loadShared(enabledFeatures));
        storeShared(detectedValid, Kuv32u{1});
    } else {
        KuvCpuFeatures detected = 0;
        detectFeatures(processor, detected);
        if ((features & undefinedBits) != 0) pending = kuvStatusFeatureUnknown;
        if ((features & needOsState) != 0 && (detected & KUV_CPU_OS_AVX) == 0) {
            features &= ~needOsState;
            pending = kuvStatusFeatureMissing;
        }
        if ((features & ~detected) != 0) pending = kuvStatusFeatureMissing;
    }

    const SelectionRow& row = rowOf(features);
    storeShared(enabledFeatures, features | row.closure);
    storeShared(variantIndex, row.index);
    if (pending != kuvStatusOk) return pending;
    if (row.test == 0) return kuvStatusNoCpuid;
    return (features & row.closure) == row.closure ? kuvStatusOk : kuvStatusFeatureIncomplete;
}

KuvStatus initialise(const Processor& processor) {
    KuvCpuFeatures mask = 0;
    detectFeatures(processor, mask);  // 0 without CPUID
    const KuvStatus status = setCpuFeatures(processor, mask);
    return vendorIsTested(processor) ? status : kuvStatusNotVendorCpu;
}

}  // namespace kuv

extern "C" KuvStatus kuvInit(void) { return kuv::initialise(kuv::hardware); }

extern "C" KuvStatus kuvSetCpuFeatures(KuvCpuFeatures features) { return kuv::setCpuFeatures(kuv::hardware, features); }

// The load hook. It stands beside variantIndex so that whoever links the static library and uses an export has it too.
[[gnu::constructor]] static void selectOnLoad() { kuvInit(); }
