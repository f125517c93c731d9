// The library's process-wide state, put back when the guard goes.
#pragma once

#include "core/features.hpp"

namespace kuvtest {

class ProcessState {
public:
    ProcessState() = default;
    ProcessState(const ProcessState&) = delete;
    ProcessState& operator=(const ProcessState&) = delete;
    ~ProcessState() {
        kuv::variantIndex = variantIndex;
        kuv::enabledFeatures = enabledFeatures;
        kuv::detectedFeatures = detectedFeatures;
        kuv::detectedValid = detectedValid;
        kuv::cacheBytes = cacheBytes;
        kuv::cacheQueryStatus = cacheQueryStatus;
        kuv::cacheLineBytes = cacheLineBytes;
    }

    // As before the load hook ran.
    static void reset() {
        kuv::variantIndex = -1;
        kuv::enabledFeatures = 3;
        kuv::detectedFeatures = 0;
        kuv::detectedValid = 0;
        kuv::cacheBytes = -1;
        kuv::cacheQueryStatus = kuv::cacheNeverQueried;
        kuv::cacheLineBytes = -1;
    }

private:
    const Kuv32s variantIndex = kuv::variantIndex;
    const KuvCpuFeatures enabledFeatures = kuv::enabledFeatures;
    const KuvCpuFeatures detectedFeatures = kuv::detectedFeatures;
    const Kuv32u detectedValid = kuv::detectedValid;
    const Kuv32s cacheBytes = kuv::cacheBytes;
    const Kuv32s cacheQueryStatus = kuv::cacheQueryStatus;
    const Kuv32s cacheLineBytes = kuv::cacheLineBytes;
};

// The answers to the questions about the cache, as if they had been asked.
class PresetCache {
public:
    PresetCache(KuvStatus status, Kuv32s bytes, Kuv32s line = 64) {
        kuv::cacheQueryStatus = status;
        kuv::cacheBytes = bytes;
        kuv::cacheLineBytes = line;
    }

private:
    ProcessState state_;
};

}  // namespace kuvtest
