/* The probes behind the same stubs as the library's exports. */

#if defined(__CET__)
#include <cet.h>
#endif

#include "core/stub_macros.inc"

    .hidden kuvVariantIndex
    .hidden kuvLazyResolve

#define KUV_PROBE(name) kuv_export_VARIANTS name
#include "probes.def"

    .section .note.GNU-stack, "", @progbits
