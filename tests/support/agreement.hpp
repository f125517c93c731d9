// Every variant against px on the same random calls. An export is one line, next to its other tests:
//
//     KUV_AGREES(kuviAdd_32f_C1IR, Source<Kuv32f>{}, InOut<Kuv32f>{.same = sameRealOrBothNaN}, RoiSize{});
//
// The descriptors draw the arguments in the order of the prototype. Outputs are compared bit for bit, or by what the descriptor
// states. KUV_AGREES_FROM takes another variant to compare the stronger ones with, where px differs by definition.
//
// The same line makes the call one of those that are fuzzed.
#pragma once

#include <algorithm>
#include <cfenv>
#include <utility>

#include "support/arguments.hpp"
#include "support/calls.hpp"
#include "support/variants.hpp"

namespace kuvtest {

// Describes what a call wrote where it must not, or gives an empty string. After an error it must have written nothing.
std::string trespass(const Draw& draw, bool failed);

// Compares what two calls of the same numbers left behind, and what lies around it. Empty if all is well.
std::string disagreement(const Draw& got, const Draw& wanted);

// A line of the tables, for whoever wants to make its call from other numbers than the tests do.
struct TabledCall {
    std::string name;
    const char* file;
    // Makes the call in every variant that this processor runs. What is wrong is a failure of the current test.
    std::function<void(const Random& numbers, int roundingMode)> make;
};

// Those of all lines that are linked.
std::vector<TabledCall>& tabledCalls();

// Where calls are printed before they are made; null: nowhere.
inline std::ostream* callPrinter = nullptr;

void printArgument(std::ostream& stream, const KuviSize& size);
void printArgument(std::ostream& stream, const KuviRect& rect);
void printArgument(std::ostream& stream, const KuviPoint& point);
void printArgument(std::ostream& stream, const void* address);
template <class T>
    requires std::is_arithmetic_v<T>
void printArgument(std::ostream& stream, T value) {
    stream << +value;
}

template <class... Arguments>
void printCall(const std::string& name, const Variant& variant, const Draw& draw, const std::tuple<Arguments...>& arguments) {
    if (callPrinter == nullptr) return;
    *callPrinter << name << " in " << variant << ", " << draw.description();
    int number = 0;
    const auto print = [&](const auto& argument) {
        *callPrinter << "\n  argument " << number++ << ": ";
        printArgument(*callPrinter, argument);
    };
    std::apply([&](const auto&... each) { (print(each), ...); }, arguments);
    *callPrinter << std::endl;
}

inline std::uint64_t seedOf(const std::string& name) { return std::hash<std::string>{}(name); }

template <class Function, class... Descriptors>
class AgreeingCall {
public:
    AgreeingCall(const char* base, const char* name, Function* function, Descriptors... descriptors)
        : base_(variantOf(base)), name_(name), function_(function), descriptors_(descriptors...) {}

    const Variant& base() const { return base_; }

    // The variant against the base, on many calls.
    void expectSame(const Variant& variant) const {
        const std::uint64_t first = seedOf(name_);
        const int count = rounds(2000);
        for (std::uint64_t seed = first; seed != first + static_cast<unsigned>(count) && !testing::Test::HasFailure(); ++seed) {
            SCOPED_TRACE(testing::Message() << "seed " << seed);
            Draw wanted(seed, 0), got(seed, 1);
            const KuvStatus wantedStatus = run(base_, wanted), gotStatus = run(variant, got);
            expectNothing(variant, disagreement(got, wanted), gotStatus, wantedStatus, gotStatus != wantedStatus);
        }
    }

    // One call in every variant that this processor runs: those from the base on are held to its results, the others to its errors, and all
    // to what they may write.
    void expectEverywhere(const Random& numbers, int roundingMode) const {
        Draw wanted(numbers, static_cast<std::uint64_t>(base_.index));
        const KuvStatus wantedStatus = run(base_, wanted, roundingMode);
        expectNothing(base_, trespass(wanted, wantedStatus < 0), wantedStatus, wantedStatus);
        for (const Variant& variant : variants) {
            if (variant.index == base_.index || !variant.canRun()) continue;
            Draw got(numbers, static_cast<std::uint64_t>(variant.index));
            const KuvStatus status = run(variant, got, roundingMode);
            std::string trouble = trespass(got, status < 0);
            const bool agrees = variant.index > base_.index;
            if (agrees && trouble.empty() && status >= 0) trouble = disagreement(got, wanted);
            expectNothing(variant, trouble, status, wantedStatus,
                          agrees ? status != wantedStatus : std::min(status, 0) != std::min(wantedStatus, 0));
        }
    }

private:
    KuvStatus run(const Variant& variant, Draw& draw, int roundingMode = FE_TONEAREST) const {
        const SelectVariant selection(variant);
        const auto arguments = std::apply([&](const auto&... each) { return drawArguments(draw, each...); }, descriptors_);
        draw.keep();
        SCOPED_TRACE(testing::Message() << name_ << " in " << variant << ", " << draw.description());
        printCall(name_, variant, draw, arguments);
        std::fesetround(roundingMode);
        const KuvStatus status = watched([&] { return std::apply(function_, arguments); });
        std::fesetround(FE_TONEAREST);
        return status;
    }

    void expectNothing(const Variant& variant, const std::string& trouble, KuvStatus status, KuvStatus wanted,
                       bool statusesDiffer = false) const {
        if (trouble.empty() && !statusesDiffer) return;
        ADD_FAILURE() << name_ << " in " << variant << " against " << base_ << ":\n"
                      << trouble << "\nstatus " << status << ", wanted " << wanted;
    }

    const Variant& base_;
    std::string name_;
    Function* function_;
    std::tuple<Descriptors...> descriptors_;
};

template <class... Rest>
TabledCall tabledAgreement(const char* base, const char* name, const char* file, Rest... rest) {
    return {std::string(name) + " agrees", file, [call = AgreeingCall(base, name, rest...)](const Random& numbers, int roundingMode) {
                call.expectEverywhere(numbers, roundingMode);
            }};
}

template <class... Rest>
bool registerAgreement(const char* base, const char* name, const char* file, int line, Rest... rest) {
    tabledCalls().push_back(tabledAgreement(base, name, file, rest...));
    const AgreeingCall call(base, name, rest...);
    registerPerVariant("Agreement", name, call.base().index + 1, file, line, [call](const Variant& variant) { call.expectSame(variant); });
    return true;
}

#define KUV_AGREES_FROM(base, function, ...)                             \
    [[maybe_unused]] static const bool agreementOf_##function =          \
        kuvtest::registerAgreement(#base, #function, __FILE__, __LINE__, function, __VA_ARGS__)
#define KUV_AGREES(function, ...) KUV_AGREES_FROM(px, function, __VA_ARGS__)

}  // namespace kuvtest
