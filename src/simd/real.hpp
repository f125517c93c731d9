// Floating-point operations on vectors, and the same on single samples, so that an operation object is written once for both.
#pragma once

#include "simd/vector.hpp"

namespace kuv::KUV_VARIANT {
namespace {

KUV_INLINE Kuv32f add(Kuv32f a, Kuv32f b) { return a + b; }

KUV_INLINE Vector<Kuv32f, 16> add(Vector<Kuv32f, 16> a, Vector<Kuv32f, 16> b) { return {_mm_add_ps(a.raw, b.raw)}; }
KUV_AVX(KUV_INLINE Vector<Kuv32f, 32> add(Vector<Kuv32f, 32> a, Vector<Kuv32f, 32> b) { return {_mm256_add_ps(a.raw, b.raw)}; })

}  // namespace
}  // namespace kuv::KUV_VARIANT
