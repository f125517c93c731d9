// What is measured. A case is some functions that do the same to the same data. The benchmarks and the comparison are both made
// from the one list of cases, which the families' files fill with a line for each export.
#pragma once

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeindex>
#include <utility>
#include <vector>

#include "support/helper.hpp"
#include "support/variants.hpp"

namespace kuvbench {

// Does its work that many times.
using Repeat = std::function<void(long)>;

template <class Work>
Repeat repeating(Work work) {
    return [work = std::move(work)](long count) mutable {
        for (; count > 0; --count) work();
    };
}

struct Run {
    Repeat work;
    Repeat overhead = {};  // what `work` does beside what is compared; its time is taken off
};

struct Contender {
    std::string name;    // a variant's code, or a peer
    std::string detail;  // how it is called, where that is what is compared
    std::function<Run(void* data)> prepare;
};

// What the contenders of a case are compared in.
enum class Aspect {
    speed,    // processor time of each variant
    threads,  // elapsed time on one thread and on two
    stub      // processor time of a call through the export, of a direct call, and of one to an empty function
};

struct Peer {
    std::string version;
    bool largeOnly;     // says nothing about small images
    const char* rival;  // code of the variant that it is compared with; null: the strongest that the processor runs
    Contender contender;
};

struct Case {
    Aspect aspect;
    std::string function;
    std::string name;
    KuviSize size;
    double bytes;  // read and written by a call
    std::type_index form;  // of the data
    std::function<std::shared_ptr<void>()> makeData;
    std::vector<Contender> contenders;  // of the variants, weakest first
    std::vector<Peer> peers;

    double pixels() const { return double(size.width) * size.height; }
    std::string sizeName() const { return std::to_string(size.width) + "x" + std::to_string(size.height); }
};

// One in the first-level cache, a small odd one for what a call costs, and three of pictures.
inline constexpr KuviSize cacheSize = {128, 24}, oddSize = {61, 7}, smallSize = {320, 240}, videoSize = {1920, 1080},
                          photoSize = {4000, 3000};
constexpr bool isLarge(KuviSize size) { return size.width >= videoSize.width; }

// All cases, with the peers of each: what this processor cannot run is left out.
std::vector<Case> allCases();

// The data of a case. That of the case asked for last is kept, and no other.
void* dataOf(const Case& wanted);

// How the list is filled. `Form` stands for the arguments of a call:
//     explicit Form(KuviSize);                             makes the images
//     static constexpr double bytesPerPixel;               read and written
//     auto call(Function*);                                calls the function on them
//     void callBand(Function*, int band, int bands);       on one of so many bands of rows; only for addThreads()
void addCase(Case added);
bool addPeer(const std::string& function, std::type_index form, Peer peer);  // true, as of all that add

template <class Form>
Case caseOf(Aspect aspect, const char* function, const char* name, KuviSize size) {
    const auto makeData = [size] { return std::make_shared<Form>(size); };
    return {aspect, function, name, size, Form::bytesPerPixel * size.width * size.height, typeid(Form), makeData, {}, {}};
}

template <class Form, class Function>
Contender contenderOf(const char* name, const char* detail, Function* function) {
    return {name, detail, [function](void* data) -> Run {
                Form& form = *static_cast<Form*>(data);
                if constexpr (std::is_same_v<decltype(form.call(function)), KuvStatus>) {
                    if (form.call(function) != kuvStatusOk) throw std::runtime_error("a call that is to be timed fails");
                }
                return {repeating([&form, function] { form.call(function); })};
            }};
}

template <class Form, class Function>
bool addExport(const char* function, const char* name, const Variants<Function>& bodies) {
    for (const KuviSize size : {cacheSize, oddSize, smallSize, videoSize, photoSize}) {
        Case added = caseOf<Form>(Aspect::speed, function, name, size);
        for (const Variant& each : variants) {
            if (each.canRun()) added.contenders.push_back(contenderOf<Form>(each.code, "", bodies[each.index]));
        }
        addCase(std::move(added));
    }
    return true;
}

// `rival` is the variant whose instructions the loop is compiled for.
template <class Form, class Function>
bool addLoop(const char* function, const char* name, const char* options, const char* rival, Function* loop) {
    for (const Variant& each : variants) {
        if (each.code != std::string_view(rival) || !each.canRun()) continue;
        addPeer(function, typeid(Form), {options, false, rival, contenderOf<Form>(name, "", loop)});
    }
    return true;
}

template <class Result, class... Arguments>
Result emptyFunction(Arguments...) {
    return Result();
}
template <class Result, class... Arguments>
auto emptyLike(Result (*)(Arguments...)) {
    return &emptyFunction<Result, Arguments...>;
}

template <class Form, class Function>
bool addStub(const char* function, Function* stub, const Variants<Function>& bodies) {
    const Variant& variant = strongestVariant();
    Case added = caseOf<Form>(Aspect::stub, function, "call", {1, 1});
    added.contenders.push_back(contenderOf<Form>(variant.code, "stub", stub));
    added.contenders.push_back(contenderOf<Form>(variant.code, "direct", bodies[variant.index]));
    added.contenders.push_back(contenderOf<Form>(variant.code, "empty", emptyLike(stub)));
    addCase(std::move(added));
    return true;
}

// Two pieces of work, one after the other or side by side.
template <class First, class Second>
Run onOneThread(First first, Second second) {
    return {repeating([first, second] {
        first();
        second();
    })};
}
template <class First, class Second>
Run onTwoThreads(First first, Second second) {
    return {repeating([first, second, helper = std::make_shared<Helper>()] {
        helper->start(second);
        first();
        helper->wait();
    })};
}

// Two bands of an image; and as a control, in the same rounds, as many pixels in two small images that share nothing: what these
// do not gain, the processors do not have to give.
template <class Form, class Function>
bool addThreads(const char* function, const Variants<Function>& bodies) {
    const Variant& variant = strongestVariant();
    const auto body = bodies[variant.index];
    const auto band = [body](void* data, int index) {
        return [form = static_cast<Form*>(data), body, index] { form->callBand(body, index, 2); };
    };
    for (const KuviSize size : {videoSize, photoSize}) {
        Case added = caseOf<Form>(Aspect::threads, function, "bands", size);
        const auto count = static_cast<long>(added.pixels() / 2 / (cacheSize.width * cacheSize.height));
        const auto control = [body, count] {
            return [form = std::make_shared<Form>(cacheSize), body, count] {
                for (long i = 0; i < count; ++i) form->call(body);
            };
        };
        added.contenders = {
            {variant.code, "1-thread", [band](void* data) { return onOneThread(band(data, 0), band(data, 1)); }},
            {variant.code, "2-threads", [band](void* data) { return onTwoThreads(band(data, 0), band(data, 1)); }},
            {variant.code, "control-1-thread", [control](void*) { return onOneThread(control(), control()); }},
            {variant.code, "control-2-threads", [control](void*) { return onTwoThreads(control(), control()); }}};
        addCase(std::move(added));
    }
    return true;
}

// KUV_BENCHMARK(export, "case", Form) adds all variants at all sizes; the others, what their names say, of the strongest variant.
#define KUV_BENCHMARK(name, caseName, ...) KUV_ADD(__COUNTER__, addExport<__VA_ARGS__>(#name, caseName, KUV_VARIANTS_OF(name)))
#define KUV_BENCHMARK_STUB(name, ...) KUV_ADD(__COUNTER__, addStub<__VA_ARGS__>(#name, &name, KUV_VARIANTS_OF(name)))
#define KUV_BENCHMARK_THREADS(name, ...) KUV_ADD(__COUNTER__, addThreads<__VA_ARGS__>(#name, KUV_VARIANTS_OF(name)))

#define KUV_ADD(counter, ...) KUV_ADD_NAMED(counter, __VA_ARGS__)
#define KUV_ADD_NAMED(counter, ...) [[maybe_unused]] static const bool added##counter = kuvbench::__VA_ARGS__;

}  // namespace kuvbench
