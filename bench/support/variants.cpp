#include "support/variants.hpp"

namespace kuvbench {

bool Variant::canRun() const {
    constexpr KuvCpuFeatures needState = KUV_CPU_AVX | KUV_CPU_AVX2;
    const KuvCpuFeatures needed = features | ((features & needState) != 0 ? KUV_CPU_OS_AVX : 0);
    KuvCpuFeatures detected = 0;
    return kuvGetCpuFeatures(&detected, nullptr) == kuvStatusOk && (needed & ~detected) == 0;
}

const Variant& strongestVariant() {
    const Variant* strongest = variants;
    for (const Variant& each : variants) {
        if (each.canRun()) strongest = &each;
    }
    return *strongest;
}

}  // namespace kuvbench
