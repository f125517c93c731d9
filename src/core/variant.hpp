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

// The feature bits that the compiler was told to use in this unit.
constexpr unsigned compiledFeatures() {
    unsigned bits = 0x3;
#ifdef __SSE2__
    bits |= 0x4;
#endif
#ifdef __SSE3__
    bits |= 0x8;
#endif
#ifdef __SSSE3__
    bits |= 0x10;
#endif
#ifdef __MOVBE__
    bits |= 0x20;
#endif
#ifdef __SSE4_1__
    bits |= 0x40;
#endif
#ifdef __SSE4_2__
    bits |= 0x80;
#endif
#ifdef __AVX__
    bits |= 0x100;
#endif
#ifdef __AES__
    bits |= 0x400;
#endif
#ifdef __PCLMUL__
    bits |= 0x800;
#endif
#ifdef __RDRND__
    bits |= 0x2000;
#endif
#ifdef __F16C__
    bits |= 0x4000;
#endif
#if defined(__AVX2__) && defined(__FMA__) && defined(__BMI__) && defined(__BMI2__)
    bits |= 0x8000;
#endif
#ifdef __AVX512F__
    bits |= 0x100000;
#endif
    return bits;
}

struct Facts {
    Code code;
    int index;
    unsigned features;
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
static_assert(compiledFeatures() == (facts.features | 0x4), "compiler flags and the variant's feature set disagree");

constexpr bool hasVectors = facts.index >= 1;
constexpr bool hasSSSE3 = (facts.features & 0x10) != 0;
constexpr bool hasSSE41 = (facts.features & 0x40) != 0;
constexpr bool hasAVX = (facts.features & 0x100) != 0;
constexpr bool hasAVX2 = (facts.features & 0x8000) != 0;

// Widest vector of the variant in bytes: integer and floating point differ in AVX alone.
constexpr int integerBytes = hasAVX2 ? 32 : 16;
constexpr int realBytes = hasAVX ? 32 : 16;

}  // namespace
}  // namespace kuv::KUV_VARIANT
