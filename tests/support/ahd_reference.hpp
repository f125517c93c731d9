// Adaptive homogeneity-directed demosaicing as plainly as it can be said: whole planes, one step after the other, nothing shared
// with the library. The planes do not depend on the region; only the decision where S is 0 does.
#pragma once

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <vector>

#include "kuvcv.h"
#include "support/images.hpp"
#include "support/mosaics.hpp"

namespace kuvtest {

// A plane over the image and a margin on each side.
class Plane {
public:
    Plane(KuviSize image, int margin)
        : margin_(margin), width_(image.width + 2 * margin),
          values_(static_cast<std::size_t>(width_) * static_cast<std::size_t>(image.height + 2 * margin)) {}

    Kuv32s& operator()(int r, int c) { return values_[index(r, c)]; }
    Kuv32s operator()(int r, int c) const { return values_[index(r, c)]; }

private:
    std::size_t index(int r, int c) const {
        return static_cast<std::size_t>(r + margin_) * static_cast<std::size_t>(width_) + static_cast<std::size_t>(c + margin_);
    }

    int margin_;
    int width_;
    std::vector<Kuv32s> values_;
};

template <class T>
class AhdReference {
public:
    AhdReference(const void* source, std::ptrdiff_t sourceStep, KuviSize image, KuvCfaLayout layout)
        : source_(static_cast<const char*>(source)), sourceStep_(sourceStep), image_(image), layout_(layout) {
        for (Direction* each : {&row_, &column_}) {
            interpolateGreen(*each, each == &row_);
            interpolateColour(*each);
            convert(*each);
        }
        measure();
    }

    // The region as the library clips it; empty if width or height is below 1.
    static KuviRect clipped(KuviRect roi, KuviSize image) {
        if (roi.x < 1) roi.x = 0;
        if (roi.y < 1) roi.y = 0;
        roi.width = static_cast<Kuv32s>(std::min<Kuv64s>(roi.width, Kuv64s{image.width} - roi.x));
        roi.height = static_cast<Kuv32s>(std::min<Kuv64s>(roi.height, Kuv64s{image.height} - roi.y));
        return roi;
    }

    // The rectangles at whose left edge the running value starts afresh: the one region of px, or the block and the four strips of
    // all others, each clipped to the region. Where two overlap the later one holds.
    std::vector<KuviRect> parts(KuviRect region, bool split) const {
        if (!split) return {region};
        const int x = region.x, y = region.y, w = region.width, h = region.height;
        int x0 = std::max(x, 5), y0 = std::max(y, 5);
        int bw = std::min(image_.width - 5, x + w) - x0, bh = std::min(image_.height - 5, y + h) - y0;
        int phase = std::array{2, 0, 1, 3}[static_cast<std::size_t>(layout_)];
        if (x0 % 2 != 0) phase ^= 3;
        if (y0 % 2 != 0) phase ^= 1;
        if (phase > 1) {
            x0 += 1;
            bw -= 1;
            phase ^= 3;
        }
        bw &= ~1;
        if (phase != 0) {
            y0 += 1;
            bh -= 1;
        }
        bh &= ~1;
        std::vector<KuviRect> result;
        const auto add = [&](KuviRect part) {
            const int right = std::min(part.x + part.width, x + w), bottom = std::min(part.y + part.height, y + h);
            part.x = std::max(part.x, x);
            part.y = std::max(part.y, y);
            part.width = right - part.x;
            part.height = bottom - part.y;
            if (part.width >= 1 && part.height >= 1) result.push_back(part);
        };
        if (bw >= 1 && bh >= 1) add({x0, y0, bw, bh});
        add({x, y, w, y0 - y});
        add({x, y0 + bh, w, y + h - y0 - bh});
        add({x, y0, x0 - x, bh});
        add({x0 + bw, y0, x + w - x0 - bw, bh});
        return result;
    }

    // Writes the region's pixels row by row; `target(row)` gives the address of an output row.
    template <class Target>
    void write(KuviRect roi, bool split, Target target) const {
        const KuviRect region = clipped(roi, image_);
        if (region.width < 1 || region.height < 1) return;
        const std::vector<KuviRect> all = parts(region, split);
        for (int r = region.y; r < region.y + region.height; ++r) {
            for (const KuviRect& part : all) {
                if (r < part.y || r >= part.y + part.height) continue;
                int running = 1;
                for (int c = part.x; c < part.x + part.width; ++c) {
                    const int sum = homogeneity(r, c);
                    if (sum != 0) running = sum;
                    const Direction& chosen = running >= 0 ? row_ : column_;
                    void* const pixel = static_cast<void*>(target(r - region.y));
                    const std::ptrdiff_t first = std::ptrdiff_t{3} * (c - region.x);
                    store(pixel, first, static_cast<T>(chosen.red(r, c)));
                    store(pixel, first + 1, static_cast<T>(chosen.green(r, c)));
                    store(pixel, first + 2, static_cast<T>(chosen.blue(r, c)));
                }
            }
        }
    }

    // S of a pixel.
    int homogeneity(int r, int c) const {
        int sum = 0;
        for (int dr = -1; dr <= 1; ++dr) {
            for (int dc = -1; dc <= 1; ++dc) sum += difference_(r + dr, c + dc);
        }
        return sum;
    }

    // Whether a chrominance distance left the range of 32 bits.
    bool chrominanceWrapped() const { return chrominanceWrapped_; }

private:
    struct Direction {
        explicit Direction(KuviSize image)
            : green(image, 3), red(image, 2), blue(image, 2), y(image, 2), u(image, 2), v(image, 2) {}
        Plane green, red, blue, y, u, v;
    };

    Kuv32s E(int r, int c) const {
        return load<T>(source_ + reflected(r, image_.height) * sourceStep_, reflected(c, image_.width));
    }

    Colour colourOf(int r, int c) const { return colourAt(layout_, r, c); }

    void interpolateGreen(Direction& d, bool alongRow) {
        const int dr = alongRow ? 0 : 1, dc = alongRow ? 1 : 0;
        for (int r = -3; r < image_.height + 3; ++r) {
            for (int c = -3; c < image_.width + 3; ++c) {
                if (colourOf(r, c) == Colour::green) {
                    d.green(r, c) = E(r, c);
                    continue;
                }
                const Kuv32s a = E(r - dr, c - dc), b = E(r + dr, c + dc), p = E(r - 2 * dr, c - 2 * dc), q = E(r + 2 * dr, c + 2 * dc);
                const Kuv32s estimate = ((a + b) >> 1) + ((2 * E(r, c) - p - q) >> 2);
                d.green(r, c) = std::clamp(estimate, std::min(a, b), std::max(a, b));
            }
        }
    }

    Kuv32s colourValue(const Direction& d, Colour wanted, int r, int c) const {
        const Plane& G = d.green;
        const Colour here = colourOf(r, c);
        if (here == wanted) return E(r, c);
        Kuv32s value;
        if (here != Colour::green) {
            const Kuv32s samples = E(r - 1, c - 1) + E(r - 1, c + 1) + E(r + 1, c - 1) + E(r + 1, c + 1);
            const Kuv32s greens = G(r - 1, c - 1) + G(r - 1, c + 1) + G(r + 1, c - 1) + G(r + 1, c + 1);
            value = G(r, c) + ((samples - greens) >> 2);
        } else if (colourOf(r, c + 1) == wanted) {
            value = G(r, c) + ((E(r, c - 1) + E(r, c + 1) - G(r, c - 1) - G(r, c + 1)) >> 1);
        } else {
            value = G(r, c) + ((E(r - 1, c) + E(r + 1, c) - G(r - 1, c) - G(r + 1, c)) >> 1);
        }
        return std::clamp<Kuv32s>(value, 0, std::numeric_limits<T>::max());
    }

    void interpolateColour(Direction& d) {
        for (int r = -2; r < image_.height + 2; ++r) {
            for (int c = -2; c < image_.width + 2; ++c) {
                d.red(r, c) = colourValue(d, Colour::red, r, c);
                d.blue(r, c) = colourValue(d, Colour::blue, r, c);
            }
        }
    }

    void convert(Direction& d) {
        for (int r = -2; r < image_.height + 2; ++r) {
            for (int c = -2; c < image_.width + 2; ++c) {
                const Kuv32s R = d.red(r, c), G = d.green(r, c), B = d.blue(r, c);
                d.y(r, c) = (66 * R + 129 * G + 25 * B + 128) >> 8;
                d.u(r, c) = (-38 * R - 74 * G + 112 * B + 128) >> 8;
                d.v(r, c) = (112 * R - 94 * G - 18 * B + 128) >> 8;
            }
        }
    }

    void measure() {
        struct Neighbour {
            Kuv32s luminance, chrominance;
        };
        for (int r = -1; r < image_.height + 1; ++r) {
            for (int c = -1; c < image_.width + 1; ++c) {
                const auto distance = [&](const Direction& d, int nr, int nc) {
                    const Kuv64s du = Kuv64s{d.u(nr, nc)} - d.u(r, c), dv = Kuv64s{d.v(nr, nc)} - d.v(r, c);
                    const Kuv64s square = du * du + dv * dv;
                    const Kuv32s wrapped = static_cast<Kuv32s>(square);
                    chrominanceWrapped_ = chrominanceWrapped_ || wrapped != square;
                    return Neighbour{std::abs(d.y(nr, nc) - d.y(r, c)), wrapped};
                };
                const auto around = [&](const Direction& d) {
                    return std::array{distance(d, r, c - 1), distance(d, r, c + 1), distance(d, r - 1, c), distance(d, r + 1, c)};
                };
                const auto h = around(row_), v = around(column_);  // left, right, up, down
                const Kuv32s luminanceLimit =
                    std::min(std::max(h[0].luminance, h[1].luminance), std::max(v[2].luminance, v[3].luminance));
                const Kuv32s chrominanceLimit =
                    std::min(std::max(h[0].chrominance, h[1].chrominance), std::max(v[2].chrominance, v[3].chrominance));
                const auto count = [&](const std::array<Neighbour, 4>& neighbours) {
                    return static_cast<int>(std::count_if(neighbours.begin(), neighbours.end(), [&](const Neighbour& n) {
                        return n.luminance <= luminanceLimit && n.chrominance <= chrominanceLimit;
                    }));
                };
                difference_(r, c) = count(h) - count(v);
            }
        }
    }

    const char* source_;
    std::ptrdiff_t sourceStep_;
    KuviSize image_;
    KuvCfaLayout layout_;
    Direction row_{image_}, column_{image_};
    Plane difference_{image_, 1};
    bool chrominanceWrapped_ = false;
};

}  // namespace kuvtest
