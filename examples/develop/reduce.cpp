#include "reduce.hpp"

#include <vector>

#include "../program.hpp"

using namespace examples;

namespace develop {

void reduceBits(const Picture16u& picture, const Reduction& reduction, Picture8u& result) {
    const KuviSize size = {picture.width, picture.height};
    const KuvDitherType type = reduction.dither->type;
    Kuv32s bytes;
    check(kuviReduceBitsGetBufferSize(kuvChannelsC3, size, reduction.noise, type, &bytes));
    std::vector<Kuv8u> buffer(bytes);
    check(kuviReduceBits_16u8u_C3R(picture.samples.data(), picture.step(), result.samples.data(), result.step(), size,
                                   reduction.noise, type, reduction.levels, buffer.data()));
}

}  // namespace develop
