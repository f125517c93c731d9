// Tone curves, by the library's tone maps.
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "kuvcv.h"
#include "picture.hpp"

namespace develop {

// Control points: the sample levels[i] becomes values[i]. Levels rise from 0 to 65536, one past the last sample: a map covers the
// samples below its last level.
struct Curve {
    Kuv32s form;  // between the points: kuvLutStep, kuvLutLinear or kuvLutCubic
    std::vector<Kuv32s> levels, values;
};

// Spreads the samples from black to white over the whole range. 0 <= black < white <= 65535.
Curve stretch(int black, int white);

// From light to what a screen expects (sRGB), to 2 parts in 65535.
Curve screenCurve();

class ToneMap {
  public:
    // Either one curve for a mosaic, or one for each colour of a picture, all of one form.
    explicit ToneMap(std::span<const Curve> curves);

    void apply(Mosaic& mosaic) const;
    void apply(Picture16u& picture) const;

  private:
    struct Free {
        void operator()(KuviToneMapSpec* block) const { kuvFree(block); }
    };
    std::unique_ptr<KuviToneMapSpec, Free> spec_;
};

}  // namespace develop
