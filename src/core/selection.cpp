// From a feature mask to the variant in force.
#include "core/features.hpp"

namespace kuv {

Kuv32s variantIndex = -1;
KuvCpuFeatures enabledFeatures = 3;

namespace {

const SelectionRow& rowOf(Kuv32u low) {
    const SelectionRow* row = selectionTable;
    while ((low & row->test) != row->test) ++row;
    return *row;
}

}  // namespace

KuvStatus selectVariant(const Processor& processor, KuvCpuFeatures mask, Kuv32s& index) {
    Kuv32u low = static_cast<Kuv32u>(mask);
    KuvStatus pending = kuvStatusOk;
    if (mask & forceBit) {
        // The processor is not asked. The mask that was in force becomes the detected one.
        mask &= ~forceBit;
        storeShared(detectedFeatures, loadShared(enabledFeatures));
        storeShared(detectedValid, Kuv32u{1});
    } else {
        KuvCpuFeatures detected = 0;
        detectFeatures(processor, detected);
        const Kuv32u high = static_cast<Kuv32u>(mask >> 32);
        if ((low & undefinedBits) != 0 || (high & 0x7FFFFFFF) != 0) pending = kuvStatusFeatureUnknown;
        if ((low & needOsState) != 0 && (detected & osStateBit) == 0) {
            low &= ~needOsState;
            pending = kuvStatusFeatureMissing;
        }
        const KuvCpuFeatures requested = static_cast<KuvCpuFeatures>(high) << 32 | low;
        if ((requested & ~detected) != 0) pending = kuvStatusFeatureMissing;
    }

    const SelectionRow& row = rowOf(low);
    constexpr KuvCpuFeatures highWord = 0xFFFFFFFF00000000;
    storeShared(enabledFeatures, (mask & highWord) | low | row.closure);
    index = row.index;
    if (pending != kuvStatusOk) return pending;
    if (row.test == 0) return kuvStatusNoCpuid;
    return (low & row.closure) == row.closure ? kuvStatusOk : kuvStatusFeatureIncomplete;
}

KuvStatus initialise(const Processor& processor) {
    KuvCpuFeatures mask = 0;
    if (getCpuFeatures(processor, &mask, nullptr) != kuvStatusOk) {
        mask = 0;
        storeShared(variantIndex, Kuv32s{0});
        storeShared(enabledFeatures, KuvCpuFeatures{3});
    }
    const KuvStatus status = setCpuFeatures(processor, mask);
    return vendorIsTested(processor) ? status : kuvStatusNotVendorCpu;
}

KuvStatus setCpuFeatures(const Processor& processor, KuvCpuFeatures features) {
    Kuv32s index;
    const KuvStatus status = selectVariant(processor, features, index);
    storeShared(variantIndex, index);
    return status;
}

}  // namespace kuv

extern "C" KuvStatus kuvInit(void) { return kuv::initialise(kuv::hardware); }

extern "C" KuvStatus kuvSetCpuFeatures(KuvCpuFeatures features) { return kuv::setCpuFeatures(kuv::hardware, features); }

// The load hook. It stands beside variantIndex so that whoever links the static library and uses an export has it too.
[[gnu::constructor]] static void selectOnLoad() { kuvInit(); }
