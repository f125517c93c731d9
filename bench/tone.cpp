// Palettes, and what the compiler makes of the plain loops.
#include "loops.hpp"
#include "support/cases.hpp"
#include "support/forms.hpp"

using namespace kuvbench;

#define PALETTE(function, loop, name, ...)        \
    KUV_BENCHMARK(function, name, __VA_ARGS__)    \
    KUV_LOOP_PEERS(function, loop, __VA_ARGS__)
PALETTE(kuviLUTPalette_8u24u_C1R, palette8to24, "4 bits", Indexed<Kuv8u, Kuv8u, 3, 4>)
PALETTE(kuviLUTPalette_8u24u_C1R, palette8to24, "8 bits", Indexed<Kuv8u, Kuv8u, 3, 8>)
PALETTE(kuviLUTPalette_8u32u_C1R, palette8to32, "4 bits", Indexed<Kuv8u, Kuv32u, 1, 4>)
PALETTE(kuviLUTPalette_8u32u_C1R, palette8to32, "8 bits", Indexed<Kuv8u, Kuv32u, 1, 8>)
PALETTE(kuviLUTPalette_16u24u_C1R, palette16to24, "12 bits", Indexed<Kuv16u, Kuv8u, 3, 12>)
PALETTE(kuviLUTPalette_16u24u_C1R, palette16to24, "16 bits", Indexed<Kuv16u, Kuv8u, 3, 16>)
PALETTE(kuviLUTPalette_16u32u_C1R, palette16to32, "12 bits", Indexed<Kuv16u, Kuv32u, 1, 12>)
PALETTE(kuviLUTPalette_16u32u_C1R, palette16to32, "16 bits", Indexed<Kuv16u, Kuv32u, 1, 16>)
