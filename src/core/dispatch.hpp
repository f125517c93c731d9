// Declarations of the bodies behind the dispatched exports, taken from the list of exports and the public prototypes, so that
// a body whose signature drifts does not compile.
#pragma once

#include "kuvcv.h"

extern "C" {

#define KUV_DIRECT(name)
#define KUV_DECLARE_VARIANTS(name) \
    decltype(::name) name##_px, name##_w7, name##_s8, name##_p8, name##_g9, name##_h9;
#define KUV_DECLARE_SHARED(name) decltype(::name) name##_shared;
#define KUV_DISPATCHED(name, bodies) KUV_DECLARE_##bodies(name)
#include "core/exports.def"
#undef KUV_DIRECT
#undef KUV_DECLARE_VARIANTS
#undef KUV_DECLARE_SHARED
#undef KUV_DISPATCHED

}  // extern "C"
