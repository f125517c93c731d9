// Every variant against px on the same random calls. An export is one line, next to its other tests:
//
//     KUV_AGREES(kuviAdd_32f_C1IR, Source<Kuv32f>{}, InOut<Kuv32f>{.same = sameRealOrBothNaN}, RoiSize{});
//
// The descriptors draw the arguments in the order of the prototype. Outputs are compared bit for bit, or by what the descriptor
// states. KUV_AGREES_FROM takes another variant to compare the stronger ones with, where px differs by definition.
#pragma once

#include "support/arguments.hpp"
#include "support/calls.hpp"
#include "support/variants.hpp"

namespace kuvtest {

// Compares what two calls of one seed left behind, and what lies around it. Empty if all is well.
std::string disagreement(Draw& got, Draw& wanted);

inline std::uint64_t seedOf(const std::string& name) { return std::hash<std::string>{}(name); }

template <class Function, class... Descriptors>
bool registerAgreement(const char* base, const char* name, const char* file, int line, Function* function,
                       Descriptors... descriptors) {
    const Variant& reference = variantOf(base);
    registerPerVariant("Agreement", name, reference.index + 1, file, line, [=, &reference](const Variant& variant) {
        const std::uint64_t first = seedOf(name);
        const int count = rounds(2000);
        for (std::uint64_t seed = first; seed != first + static_cast<unsigned>(count); ++seed) {
            Draw wanted(seed, 0), got(seed, 1);
            const auto run = [&](const Variant& which, Draw& draw) {
                const SelectVariant selection(which);
                const auto arguments = drawArguments(draw, descriptors...);
                draw.keep();
                SCOPED_TRACE(testing::Message() << name << " in " << which << ", seed " << seed << ", " << draw.description());
                return watched([&] { return std::apply(function, arguments); });
            };
            const auto wantedResult = run(reference, wanted);
            const auto gotResult = run(variant, got);
            const std::string trouble = disagreement(got, wanted);
            if (gotResult != wantedResult || !trouble.empty()) {
                ADD_FAILURE() << name << " in " << variant << " against " << reference << ", seed " << seed << "\n"
                              << trouble << "\nresult " << gotResult << ", wanted " << wantedResult << "\n" << got.description();
            }
            if (testing::Test::HasFailure()) return;
        }
    });
    return true;
}

#define KUV_AGREES_FROM(base, function, ...)                             \
    [[maybe_unused]] static const bool agreementOf_##function =          \
        kuvtest::registerAgreement(#base, #function, __FILE__, __LINE__, function, __VA_ARGS__)
#define KUV_AGREES(function, ...) KUV_AGREES_FROM(px, function, __VA_ARGS__)

}  // namespace kuvtest
