// What a function is declared with that must not become a call.
#pragma once

#define KUV_INLINE __attribute__((always_inline)) inline
