#include "tone.hpp"

#include <cmath>
#include <new>

#include "../program.hpp"

using namespace examples;

namespace develop {

Curve stretch(int black, int white) {
    Curve curve{kuvLutLinear, {black, white, 65536}, {0, 65535, 65535}};
    if (black > 0) {
        curve.levels.insert(curve.levels.begin(), 0);
        curve.values.insert(curve.values.begin(), 0);
    }
    return curve;
}

Curve screenCurve() {
    // Points at squares lie closest where the curve bends most, in the shadows.
    Curve curve{kuvLutCubic, {}, {}};
    for (int i = 0; i <= 256; ++i) {
        const double light = i * i / 65536.0;
        const double shown = light <= 0.0031308 ? light * 12.92 : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
        curve.levels.push_back(i * i);
        curve.values.push_back(Kuv32s(std::lround(shown * 65536)));
    }
    return curve;
}

ToneMap::ToneMap(std::span<const Curve> curves) {
    const Kuv32s form = curves.front().form;
    const Kuv32s channels = curves.size() == 1 ? kuvChannelsC1 : kuvChannelsC3;
    const KuviSize anySize = {1, 1};
    std::vector<const Kuv32s*> levels, values;
    std::vector<Kuv32s> counts;
    for (const Curve& curve : curves) {
        levels.push_back(curve.levels.data());
        values.push_back(curve.values.data());
        counts.push_back(Kuv32s(curve.levels.size()));
    }
    Kuv32s bytes;
    check(kuviLUT_GetSize(form, kuvDataType16u, channels, anySize, counts.data(), &bytes));
    spec_.reset(static_cast<KuviToneMapSpec*>(kuvMalloc(bytes)));
    if (!spec_) throw std::bad_alloc();
    check(kuviLUT_Init_16u(form, channels, anySize, values.data(), levels.data(), counts.data(), spec_.get()));
}

void ToneMap::apply(Mosaic& mosaic) const {
    check(kuviLUT_16u_C1IR(mosaic.row(0), mosaic.step(), {mosaic.width, mosaic.height}, spec_.get()));
}

void ToneMap::apply(Picture16u& picture) const {
    check(kuviLUT_16u_C3IR(picture.samples.data(), picture.step(), {picture.width, picture.height}, spec_.get()));
}

}  // namespace develop
