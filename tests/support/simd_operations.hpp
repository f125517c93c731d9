// What the per-variant unit of the vector layer's tests offers to the test program. It holds nothing that a compiler could emit: the
// unit is compiled with the instructions of its variant.
#pragma once

namespace kuvtest {

struct SimdOperation {
    const char* name;    // of the operation and its lane type
    int registerBytes;
    void (*run)(const unsigned char* a, const unsigned char* b, const unsigned char* c, unsigned char* result);  // at any address
};

struct SimdOperations {
    const SimdOperation* list;
    int count;
};

}  // namespace kuvtest

extern "C" {
#define KUV_VARIANT_ROW(code, index, set, features, flags) kuvtest::SimdOperations simdOperations_##code();
#include "core/variants.def"
#undef KUV_VARIANT_ROW
}
