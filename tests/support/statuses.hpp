// The checks of an export, alone and against each other, in every variant. An export is one statement:
//
//     KUV_CHECKS(kuviAdd_32f_C1IR, call(Source<Kuv32f>{}, InOut<Kuv32f>{}, RoiSize{}),
//                check(kuvStatusNullPtr, null<0>(), null<2>()),
//                badSize<4>());
//
// call() draws valid arguments. Each check names its status and the ways to violate it, in the order of the checks; null<0>() makes
// argument 0 null, set<3>(0) makes argument 3 zero. Tested: the call as drawn gives 0; each violation alone gives its status; a
// violation of one check together with one of any later check gives the earlier one's status; and no error writes anything.
#pragma once

#include <algorithm>
#include <sstream>

#include "support/agreement.hpp"

namespace kuvtest {

template <class Tuple>
struct Violation {
    int argument;
    int field;  // two violations of the same field cannot be had at once
    std::string name;
    std::function<void(Tuple&)> apply;
};

template <class Tuple>
struct Check {
    KuvStatus status;
    std::vector<Violation<Tuple>> violations;
};

// An assignment to an argument, before the prototype is known.
template <int argument, class Value>
struct Setting {
    Value value;

    template <class Tuple>
    Violation<Tuple> bind() const {
        std::ostringstream name;
        name << "argument " << argument << " = ";
        if constexpr (std::is_null_pointer_v<Value>) name << "null";
        else name << value;
        return {argument, 0, name.str(), [value = value](Tuple& arguments) { std::get<argument>(arguments) = value; }};
    }
};

// The same for a field of an argument that is a structure.
template <int argument, class Record, class Value>
struct FieldSetting {
    Value Record::*field;
    Value value;
    int number;
    const char* name;

    template <class Tuple>
    Violation<Tuple> bind() const {
        std::ostringstream text;
        text << "argument " << argument << "." << name << " = " << value;
        return {argument, number, text.str(),
                [field = field, value = value](Tuple& arguments) { std::get<argument>(arguments).*field = value; }};
    }
};

template <int argument>
constexpr Setting<argument, std::nullptr_t> null() {
    return {nullptr};
}
template <int argument, class Value>
constexpr Setting<argument, Value> set(Value value) {
    return {value};
}
template <int argument>
constexpr FieldSetting<argument, KuviSize, Kuv32s> width(Kuv32s value) {
    return {&KuviSize::width, value, 1, "width"};
}
template <int argument>
constexpr FieldSetting<argument, KuviSize, Kuv32s> height(Kuv32s value) {
    return {&KuviSize::height, value, 2, "height"};
}

template <class... Settings>
constexpr auto check(KuvStatus status, Settings... settings) {
    return [=]<class Tuple>(std::type_identity<Tuple>) {
        return Check<Tuple>{status, {settings.template bind<Tuple>()...}};
    };
}

// The sizes below 1, of an image or of a length.
template <int... arguments>
constexpr auto badWidth() {
    return check(kuvStatusBadSize, width<arguments>(0)..., width<arguments>(-1)..., width<arguments>(INT32_MIN)...);
}
template <int... arguments>
constexpr auto badHeight() {
    return check(kuvStatusBadSize, height<arguments>(0)..., height<arguments>(-1)..., height<arguments>(INT32_MIN)...);
}
template <int... arguments>
constexpr auto badSize() {
    return check(kuvStatusBadSize, width<arguments>(0)..., width<arguments>(-1)..., width<arguments>(INT32_MIN)..., height<arguments>(0)...,
                 height<arguments>(-1)..., height<arguments>(INT32_MIN)...);
}
template <int argument>
constexpr auto badLength() {
    return check(kuvStatusBadSize, set<argument>(0), set<argument>(-1), set<argument>(INT32_MIN));
}

// The steps below 1 of one or several images.
template <int... arguments>
constexpr auto badStep() {
    return check(kuvStatusBadStep, set<arguments>(0)..., set<arguments>(-1)..., set<arguments>(INT32_MIN)...);
}

template <class... Descriptors>
auto call(Descriptors... descriptors) {
    return [=](Draw& draw) { return drawArguments(draw, descriptors...); };
}

template <class... Parameters>
class CheckedCall {
public:
    using Arguments = std::tuple<Parameters...>;
    using Violations = std::vector<const Violation<Arguments>*>;

    template <class Drawing, class... Checks>
    CheckedCall(const char* name, KuvStatus (*function)(Parameters...), Drawing drawing, Checks... checks)
        : name_(name), function_(function), drawing_(drawing), checks_{checks(std::type_identity<Arguments>{})...} {}

    // Each violation alone, and with any of a later check.
    void expectAll(const Variant& variant) const {
        std::uint64_t seed = seedOf(name_);
        const auto expect = [&](KuvStatus wanted, const Violations& violations) {
            Draw draw(++seed, 0);
            expectStatus(variant, draw, wanted, violations);
        };
        for (int i = 0; i < 20; ++i) expect(kuvStatusOk, {});
        for (std::size_t first = 0; first < checks_.size(); ++first) {
            for (const auto& violation : checks_[first].violations) {
                expect(checks_[first].status, {&violation});
                for (std::size_t second = first + 1; second < checks_.size(); ++second) {
                    for (const auto& other : checks_[second].violations) {
                        if (!exclude(violation, other)) expect(checks_[first].status, {&violation, &other});
                    }
                }
            }
        }
    }

    // Up to three violations, in every variant that this processor runs.
    void expectDrawn(Random numbers) const {
        std::vector<std::pair<std::size_t, const Violation<Arguments>*>> drawn;
        for (int i = below(numbers, 4); i > 0; --i) {
            const std::size_t index = indexIn(checks_, numbers);
            const Violation<Arguments>& each = checks_[index].violations[indexIn(checks_[index].violations, numbers)];
            const auto excludes = [&](const auto& other) { return exclude(each, *other.second); };
            if (std::none_of(drawn.begin(), drawn.end(), excludes)) drawn.emplace_back(index, &each);
        }
        std::sort(drawn.begin(), drawn.end());
        Violations violations;
        for (const auto& each : drawn) violations.push_back(each.second);
        for (const Variant& variant : variants) {
            if (!variant.canRun()) continue;
            const SelectVariant selection(variant);
            Draw draw(numbers, 0);
            expectStatus(variant, draw, drawn.empty() ? kuvStatusOk : checks_[drawn[0].first].status, violations);
        }
    }

private:
    static bool exclude(const Violation<Arguments>& a, const Violation<Arguments>& b) {
        return a.argument == b.argument && a.field == b.field;
    }

    template <class List>
    static std::size_t indexIn(const List& list, Random& numbers) {
        return static_cast<std::size_t>(below(numbers, static_cast<int>(list.size())));
    }

    void expectStatus(const Variant& variant, Draw& draw, KuvStatus wanted, const Violations& violations) const {
        Arguments arguments = drawing_(draw);
        draw.keep();
        std::string trace = name_ + " in " + variant.code + ", " + draw.description();
        for (const Violation<Arguments>* each : violations) {
            each->apply(arguments);
            trace += "\n  with " + each->name;
        }
        SCOPED_TRACE(trace);
        printCall(name_, variant, draw, arguments);
        EXPECT_EQ(watched([&] { return std::apply(function_, arguments); }), wanted);
        if (wanted >= 0) return;
        for (const DrawnImage& each : draw.images()) EXPECT_EQ(each.image.difference(each.before), "");
    }

    std::string name_;
    KuvStatus (*function_)(Parameters...);
    std::function<Arguments(Draw&)> drawing_;
    std::vector<Check<Arguments>> checks_;
};

template <class... Parameters, class... Rest>
TabledCall tabledChecks(const char* name, const char* file, KuvStatus (*function)(Parameters...), Rest... rest) {
    return {std::string(name) + " checks", file,
            [call = CheckedCall<Parameters...>(name, function, rest...)](const Random& numbers, int) { call.expectDrawn(numbers); }};
}

template <class... Parameters, class... Rest>
bool registerChecks(const char* name, const char* file, int line, KuvStatus (*function)(Parameters...), Rest... rest) {
    tabledCalls().push_back(tabledChecks(name, file, function, rest...));
    registerPerVariant("Statuses", name, 0, file, line,
                       [call = CheckedCall<Parameters...>(name, function, rest...)](const Variant& variant) { call.expectAll(variant); });
    return true;
}

#define KUV_CHECKS(function, ...)                                   \
    [[maybe_unused]] static const bool checksOf_##function =        \
        kuvtest::registerChecks(#function, __FILE__, __LINE__, function, __VA_ARGS__)

}  // namespace kuvtest
