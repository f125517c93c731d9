// A processor that answers what a test says, and notes what it was asked.
#pragma once

#include <map>
#include <utility>
#include <vector>

#include "core/features.hpp"

namespace kuvtest {

class SimulatedProcessor {
public:
    SimulatedProcessor() { current_ = this; }
    ~SimulatedProcessor() { current_ = nullptr; }
    SimulatedProcessor(const SimulatedProcessor&) = delete;
    SimulatedProcessor& operator=(const SimulatedProcessor&) = delete;

    // Leaf 0 of the vendor that the library is tested for, and of others.
    void genuine(Kuv32u maximumLeaf) { leaf(0) = {maximumLeaf, 0x756E6547, 0x6C65746E, 0x49656E69}; }
    void otherVendor(Kuv32u maximumLeaf) { leaf(0) = {maximumLeaf, 0x68747541, 0x444D4163, 0x69746E65}; }

    kuv::CpuidWords& leaf(Kuv32u number, Kuv32u subleaf = 0) { return answers_[{number, subleaf}]; }
    bool wasAsked(Kuv32u number) const {
        for (const auto& each : asked) {
            if (each.first == number) return true;
        }
        return false;
    }

    bool hasCpuid = true;
    Kuv32u xcr0 = 7;

    int xcr0Reads = 0;
    std::vector<std::pair<Kuv32u, Kuv32u>> asked;

    // What the library takes; it speaks for the one simulated processor that is alive.
    static const kuv::Processor processor;

private:
    kuv::CpuidWords answer(Kuv32u leaf, Kuv32u subleaf) {
        asked.emplace_back(leaf, subleaf);
        const auto found = answers_.find({leaf, subleaf});
        return found != answers_.end() ? found->second : kuv::CpuidWords{0, 0, 0, 0};
    }
    Kuv32u readXcr0() {
        ++xcr0Reads;
        return xcr0;
    }

    static inline SimulatedProcessor* current_ = nullptr;
    std::map<std::pair<Kuv32u, Kuv32u>, kuv::CpuidWords> answers_;
};

inline const kuv::Processor SimulatedProcessor::processor = {
    [] { return current_->hasCpuid; },
    [](Kuv32u leaf, Kuv32u subleaf) { return current_->answer(leaf, subleaf); },
    [] { return current_->readXcr0(); }};

}  // namespace kuvtest
