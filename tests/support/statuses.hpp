// The checks of an export, alone and against each other, in every variant. An export is one statement:
//
//     KUV_CHECKS(kuviAdd_32f_C1IR, call(Source<Kuv32f>{}, InOut<Kuv32f>{}, RoiSize{}),
//                check(kuvStatusNullPtr, null<0>(), null<2>()),
//                check(kuvStatusBadSize, width<4>(0), width<4>(-1), height<4>(0), height<4>(-1)));
//
// call() draws valid arguments. Each check names its status and the ways to violate it, in the order of the checks; null<0>() makes
// argument 0 null, set<3>(0) makes argument 3 zero. Tested: the call as drawn gives 0; each violation alone gives its status; a
// violation of one check together with one of any later check gives the earlier one's status; and no error writes anything.
#pragma once

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
auto check(KuvStatus status, Settings... settings) {
    return [=]<class Tuple>(std::type_identity<Tuple>) {
        return Check<Tuple>{status, {settings.template bind<Tuple>()...}};
    };
}

template <class... Descriptors>
auto call(Descriptors... descriptors) {
    return [=](Draw& draw) { return drawArguments(draw, descriptors...); };
}

template <class... Parameters, class Drawing, class... Checks>
bool registerChecks(const char* name, const char* file, int line, KuvStatus (*function)(Parameters...), Drawing drawing,
                    Checks... checks) {
    using Arguments = std::tuple<Parameters...>;
    const std::vector<Check<Arguments>> all = {checks(std::type_identity<Arguments>{})...};
    registerPerVariant("Statuses", name, 0, file, line, [=](const Variant& variant) {
        std::uint64_t seed = seedOf(name);
        const auto expectStatus = [&](KuvStatus wanted, std::initializer_list<const Violation<Arguments>*> violations) {
            Draw draw(++seed, 0);
            Arguments arguments = drawing(draw);
            draw.keep();
            std::string trace = std::string(name) + " in " + variant.code + ", " + draw.description();
            for (const Violation<Arguments>* each : violations) {
                each->apply(arguments);
                trace += "\n  with " + each->name;
            }
            SCOPED_TRACE(trace);
            EXPECT_EQ(watched([&] { return std::apply(function, arguments); }), wanted);
            if (wanted >= 0) return;
            for (const DrawnImage& each : draw.images()) EXPECT_EQ(each.image.difference(each.before), "");
        };
        for (int i = 0; i < 20; ++i) expectStatus(kuvStatusOk, {});
        for (std::size_t first = 0; first < all.size(); ++first) {
            for (const auto& violation : all[first].violations) {
                expectStatus(all[first].status, {&violation});
                for (std::size_t second = first + 1; second < all.size(); ++second) {
                    for (const auto& other : all[second].violations) {
                        if (violation.argument == other.argument && violation.field == other.field) continue;
                        expectStatus(all[first].status, {&violation, &other});
                    }
                }
            }
        }
    });
    return true;
}

#define KUV_CHECKS(function, ...)                                   \
    [[maybe_unused]] static const bool checksOf_##function =        \
        kuvtest::registerChecks(#function, __FILE__, __LINE__, function, __VA_ARGS__)

}  // namespace kuvtest
