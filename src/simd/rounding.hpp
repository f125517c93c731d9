// The rounding mode of vector arithmetic.
#pragma once

#include <immintrin.h>

#include "core/variant.hpp"

namespace kuv::KUV_VARIANT {
namespace {

enum class Rounding : unsigned { nearest = 0, towardZero = 0x6000 };

// In force for as long as the object lives; then the caller's control register is back as it was. What is computed between a load and
// a store in that time is computed in this mode.
class RoundingScope {
public:
    KUV_INLINE explicit RoundingScope(Rounding mode) : callers_(_mm_getcsr()) { set((callers_ & ~0x6000u) | static_cast<unsigned>(mode)); }
    KUV_INLINE ~RoundingScope() { set(callers_); }
    RoundingScope(const RoundingScope&) = delete;
    RoundingScope& operator=(const RoundingScope&) = delete;

private:
    // The compiler knows nothing of the register: only loads and stores keep to their side of the change.
    static KUV_INLINE void set(unsigned control) {
        asm volatile("" ::: "memory");
        _mm_setcsr(control);
        asm volatile("" ::: "memory");
    }

    unsigned callers_;
};

}  // namespace
}  // namespace kuv::KUV_VARIANT
