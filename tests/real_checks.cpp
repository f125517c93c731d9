// Floating-point arithmetic on images: agreement of the variants, and the checks.
#include "support/agreement.hpp"
#include "support/statuses.hpp"

namespace {

using namespace kuvtest;

using Bits = Kuv32u;

// (constant): any, or one that is not 0.
struct Constant {
    bool divides = false;

    std::tuple<Kuv32f> operator()(Draw& draw) const {
        const auto bits = static_cast<Bits>(draw.random());
        const Kuv32f any = oneIn(draw.random, 8) ? load<Kuv32f>(&bits) : static_cast<Kuv32f>(below(draw.random, 2001) - 1000) / 64;
        return {divides && any == 0 ? 1 : any};
    }
};

// (pointer, step): an image whose step is a multiple of 4.
template <class T, Role role>
struct Aligned {
    StepClass steps = StepClass::A;
    bool positive = false;

    std::tuple<T*, Kuv32s> operator()(Draw& draw) const {
        const std::ptrdiff_t step = (drawStep(draw.random, steps, 4 * draw.size.width) + 3) & ~3;
        const Image& image = draw.image<Kuv32f>(role, draw.size.width, draw.size.height, step);
        for (int r = 0; positive && r < draw.size.height; ++r) {
            for (int i = 0; i < draw.size.width; ++i) store(image.row(r), i, load<Bits>(image.row(r), i) & 0x7F7FFFFF);
        }
        return {image.row<Kuv32f>(), image.step()};
    }
};
using AlignedInOut = Aligned<Kuv32f, Role::inOut>;
using AlignedSource = Aligned<const Kuv32f, Role::source>;
using AlignedOutput = Aligned<Kuv32f, Role::output>;

// (pointer, step): an image without 0.
struct Divisors {
    std::tuple<const Kuv32f*, Kuv32s> operator()(Draw& draw) const {
        const auto [samples, step] = Source<Kuv32f>{.steps = StepClass::A}(draw);
        for (int r = 0; r < draw.size.height; ++r) {
            char* const row = const_cast<char*>(reinterpret_cast<const char*>(samples)) + std::ptrdiff_t{step} * r;
            for (int i = 0; i < draw.size.width; ++i) store(row, i, load<Bits>(row, i) | 0x00800000);
        }
        return {samples, step};
    }
};

constexpr StepClass A = StepClass::A, B = StepClass::B;

KUV_AGREES(kuviSub_32f_C1IR, Source<Kuv32f>{}, InOut<Kuv32f>{}, RoiSize{});
KUV_AGREES(kuviSub_32f_C1R, Source<Kuv32f>{}, Source<Kuv32f>{}, Output<Kuv32f>{}, RoiSize{});
KUV_AGREES(kuviAddC_32f_C3IR, SourceSignal<Kuv32f>{3}, InOut<Kuv32f>{.channels = 3, .same = sameRealOrBothNaN}, RoiSize{});
KUV_AGREES(kuviMulC_32f_C3IR, SourceSignal<Kuv32f>{3}, InOut<Kuv32f>{.channels = 3, .same = sameRealOrBothNaN}, RoiSize{});
KUV_AGREES(kuviSubC_32f_C1IR, Constant{}, InOut<Kuv32f>{}, RoiSize{});
KUV_AGREES(kuviDivC_32f_C1IR, Constant{}, InOut<Kuv32f>{.steps = A, .same = sameRealOrBothNaN}, RoiSize{});
KUV_AGREES(kuviDiv_32f_C1IR, Source<Kuv32f>{.steps = A}, InOut<Kuv32f>{.steps = A}, RoiSize{});
KUV_AGREES(kuviAbs_32f_C1IR, AlignedInOut{}, RoiSize{});
KUV_AGREES(kuviAbsDiff_32f_C1R, AlignedSource{B}, AlignedSource{B}, AlignedOutput{B}, RoiSize{});
KUV_AGREES(kuviSqr_32f_C1IR, AlignedInOut{}, RoiSize{});
// px has its own rule for NaNs.
KUV_AGREES_FROM(w7, kuviSqrt_32f_C1IR, AlignedInOut{}, RoiSize{});

KUV_CHECKS(kuviSub_32f_C1IR, call(Source<Kuv32f>{}, InOut<Kuv32f>{}, RoiSize{}), check(kuvStatusNullPtr, null<0>(), null<2>()),
           badSize<4>());
KUV_CHECKS(kuviSub_32f_C1R, call(Source<Kuv32f>{}, Source<Kuv32f>{}, Output<Kuv32f>{}, RoiSize{}),
           check(kuvStatusNullPtr, null<0>(), null<2>(), null<4>()), badSize<6>());
KUV_CHECKS(kuviAddC_32f_C3IR, call(SourceSignal<Kuv32f>{3}, InOut<Kuv32f>{.channels = 3}, RoiSize{}),
           check(kuvStatusNullPtr, null<0>(), null<1>()), badSize<3>());
KUV_CHECKS(kuviMulC_32f_C3IR, call(SourceSignal<Kuv32f>{3}, InOut<Kuv32f>{.channels = 3}, RoiSize{}),
           check(kuvStatusNullPtr, null<0>(), null<1>()), badSize<3>());
KUV_CHECKS(kuviSubC_32f_C1IR, call(Constant{}, InOut<Kuv32f>{}, RoiSize{}), check(kuvStatusNullPtr, null<1>()), badSize<3>());
KUV_CHECKS(kuviDivC_32f_C1IR, call(Constant{.divides = true}, InOut<Kuv32f>{.steps = A}, RoiSize{}),
           check(kuvStatusNullPtr, null<1>()), badSize<3>(), badStep<2>(),
           check(kuvStatusDivByZero, set<0>(0.0f), set<0>(-0.0f)));
KUV_CHECKS(kuviDiv_32f_C1IR, call(Divisors{}, InOut<Kuv32f>{.steps = A}, RoiSize{}), check(kuvStatusNullPtr, null<0>(), null<2>()),
           badSize<4>(), badStep<1, 3>());
KUV_CHECKS(kuviAbs_32f_C1IR, call(AlignedInOut{}, RoiSize{}), check(kuvStatusNullPtr, null<0>()), badSize<2>(),
           badStep<1>());
KUV_CHECKS(kuviAbsDiff_32f_C1R, call(AlignedSource{B}, AlignedSource{B}, AlignedOutput{B}, RoiSize{}),
           check(kuvStatusNullPtr, null<0>(), null<2>(), null<4>()), badSize<6>(),
           badStep<1, 3, 5>(), check(kuvStatusBadStep, set<1>(3), set<3>(3), set<5>(3)),
           check(kuvStatusStepNotMultiple, set<1>(0x7FFFFFFF), set<1>(0x7FFFFFFE), set<3>(0x7FFFFFFD), set<5>(0x7FFFFFFE)));
KUV_CHECKS(kuviSqr_32f_C1IR, call(AlignedInOut{}, RoiSize{}), check(kuvStatusNullPtr, null<0>()), badSize<2>(),
           badStep<1>());
KUV_CHECKS(kuviSqrt_32f_C1IR, call(AlignedInOut{.positive = true}, RoiSize{}), check(kuvStatusNullPtr, null<0>()), badSize<2>(),
           badStep<1>());

}  // namespace
