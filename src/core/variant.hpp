// The facts of the variant that a unit is compiled for, and what such a unit may define.
//
// A variant unit is compiled six times with different instruction sets and linked into one library. An inline function or a
// template with external linkage would be emitted six times under one name, the linker would keep any one of the copies, and
// the scalar variant could end up with AVX2 code. So whatever a variant unit defines or includes stands in
//
//     namespace kuv::KUV_VARIANT { namespace { ... } }
//
// or, if units with one body share it, in namespace kuv { namespace { ... } }, except the variant functions themselves, which
// KUV_VARIANT_FUNCTION names. Function templates of the standard library and vector constants at namespace scope are banned for
// the same reason; a test looks for weak symbols and initialisers.
#pragma once

#ifndef KUV_VARIANT
#error "A variant unit is compiled with KUV_VARIANT set to its code."
#endif

#include "core/dispatch.hpp"
#include "core/inline.hpp"

#define KUV_JOIN(a, b) a##_##b
#define KUV_JOIN_EXPANDED(a, b) KUV_JOIN(a, b)
#define KUV_VARIANT_FUNCTION(name) KUV_JOIN_EXPANDED(name, KUV_VARIANT)

namespace kuv::KUV_VARIANT {

// Variant functions take their names from this namespace, and by way of it what units with one body share.
using namespace kuv;

namespace {

enum class Code { px, w7, s8, p8, g9, h9 };

// The features that the compiler was told to use in this unit.
constexpr KuvCpuFeatures compiledFeatures() {
    KuvCpuFeatures features = KUV_CPU_MMX | KUV_CPU_SSE;
#ifdef __SSE2__
    features |= KUV_CPU_SSE2;
#endif
#ifdef __SSE3__
    features |= KUV_CPU_SSE3;
#endif
#ifdef __SSSE3__
    features |= KUV_CPU_SSSE3;
#endif
#ifdef __MOVBE__
    features |= KUV_CPU_MOVBE;
#endif
#ifdef __SSE4_1__
    features |= KUV_CPU_SSE41;
#endif
#ifdef __SSE4_2__
    features |= KUV_CPU_SSE42;
#endif
#ifdef __AVX__
    features |= KUV_CPU_AVX;
#endif
#ifdef __AES__
    features |= KUV_CPU_AES;
#endif
#ifdef __PCLMUL__
    features |= KUV_CPU_PCLMULQDQ;
#endif
#ifdef __RDRND__
    features |= KUV_CPU_RDRAND;
#endif
#ifdef __F16C__
    features |= KUV_CPU_F16C;
#endif
#if defined(__AVX2__) && defined(__FMA__) && defined(__BMI__) && defined(__BMI2__)
    features |= KUV_CPU_AVX2;
#endif
#ifdef __AVX512F__
    features |= KUV_CPU_AVX512F;
#endif
    return features;
}

struct Facts {
    Code code;
    int index;
    KuvCpuFeatures features;
};

constexpr Facts factsOf(Code wanted) {
    constexpr Facts all[] = {
#define KUV_VARIANT_ROW(code, index, set, features, flags) {Code::code, index, features},
#include "core/variants.def"
#undef KUV_VARIANT_ROW
    };
    return all[static_cast<int>(wanted)];
}

constexpr Facts facts = factsOf(Code::KUV_VARIANT);

// px is the baseline of the platform: on x86-64 that has SSE2, which the compiler needs for scalar floating point.
static_assert(compiledFeatures() == (facts.features | KUV_CPU_SSE2), "compiler flags and the variant's feature set disagree");

constexpr bool hasVectors = facts.index >= 1;
constexpr bool hasSSSE3 = (facts.features & KUV_CPU_SSSE3) != 0;
constexpr bool hasSSE41 = (facts.features & KUV_CPU_SSE41) != 0;
constexpr bool hasAVX = (facts.features & KUV_CPU_AVX) != 0;
constexpr bool hasAVX2 = (facts.features & KUV_CPU_AVX2) != 0;

// Widest vector of the variant in bytes: integer and floating point differ in AVX alone.
constexpr int integerBytes = hasAVX2 ? 32 : 16;
constexpr int realBytes = hasAVX ? 32 : 16;

}  // namespace
}  // namespace kuv::KUV_VARIANT
