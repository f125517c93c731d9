// Error diffusion in single precision, many rows at once: each row is a lane and some pixels behind the row above it, so that what it
// takes from there is known. No value is computed otherwise than row by row.
#pragma once

#include "simd/transpose.hpp"
#include "tone/reduce_bits_vector.hpp"

namespace kuv::KUV_VARIANT {
namespace {

// A block of steps. In each step every row does one pixel.
struct Tile {
    static constexpr int rows = 4 * Reals::lanes, steps = 32, rowPitch = rows + 8, longest = 8;

    alignas(64) Kuv16u samplesOfRow[rows][steps];
    Kuv16u samples[steps][rows];
    Kuv8u bytes[steps][rows];
    Kuv8u bytesOfRow[rows][steps];
    // 65535, or -1 where a row has no pixel: there no error is left.
    alignas(64) Kuv32f limits[steps][rows];
    alignas(64) Kuv32f thresholds[steps][rows];
    // Of the steps before this one.
    alignas(64) Kuv32f errors[longest + steps][rows];
    // Sums of a row's errors for the next row, and for the one after it, where these rows will take them: one lane and some steps on,
    // and two lanes.
    alignas(64) Kuv32f near[steps + longest][rowPitch];
    alignas(64) Kuv32f far[steps + longest][rowPitch];
};

struct FloydSteinbergLanes {
    static constexpr ErrorLines lines = floydSteinbergLines;
    static constexpr int skew = 4, reach = 1;
    static constexpr bool hasFar = false;

    KUV_INLINE Reals fromAbove(const Tile& tile, int k, int lane) const { return load<Reals>(tile.near[k] + lane); }
    KUV_INLINE Reals value(Reals above, Reals left, Reals, Reals sample) const {
        return add(multiply(add(above, multiply(fill<Reals>(7), left)), fill<Reals>(0.0625f)), sample);
    }
    KUV_INLINE void passOn(Tile& tile, int k, int lane, Reals latest) const {
        const Kuv32f (*const errors)[Tile::rows] = tile.errors + Tile::longest + k;
        const Reals c1 = load<Reals>(errors[-1] + lane), c2 = load<Reals>(errors[-2] + lane);
        store(tile.near[k + skew - reach] + lane + 1,
              add(add(multiply(fill<Reals>(3), latest), c2), multiply(fill<Reals>(5), c1)));
    }
};

struct ThreeRowsLanes {
    static constexpr ErrorLines lines = threeRowLines;
    static constexpr int skew = 5, reach = 2;
    static constexpr bool hasFar = true;

    explicit ThreeRowsLanes(ThreeRows weights)
        : nearest_(fill<Reals>(static_cast<Kuv32f>(weights.near))),
          middle_(fill<Reals>(static_cast<Kuv32f>(weights.middle))),
          farthest_(fill<Reals>(static_cast<Kuv32f>(weights.far))),
          part_(fill<Reals>(static_cast<Kuv32f>(weights.part))) {}

    KUV_INLINE Reals fromAbove(const Tile& tile, int k, int lane) const {
        return add(load<Reals>(tile.near[k] + lane), load<Reals>(tile.far[k] + lane));
    }
    KUV_INLINE Reals value(Reals above, Reals left, Reals secondLeft, Reals sample) const {
        return add(multiply(add(add(above, multiply(middle_, secondLeft)), multiply(nearest_, left)), part_), sample);
    }
    KUV_INLINE void passOn(Tile& tile, int k, int lane, Reals latest) const {
        const Kuv32f (*const errors)[Tile::rows] = tile.errors + Tile::longest + k;
        const auto before = [&](int steps) { return load<Reals>(errors[-steps] + lane); };
        const Reals centre = before(2), beside = add(before(3), before(1)), outer = add(before(4), latest);
        store(tile.near[k + skew - reach] + lane + 1,
              add(add(multiply(nearest_, centre), multiply(middle_, beside)), multiply(farthest_, outer)));
        store(tile.far[k + 2 * skew - reach] + lane + 2, add(add(multiply(middle_, centre), multiply(farthest_, beside)), outer));
    }

private:
    Reals nearest_, middle_, farthest_, part_;
};
static_assert(2 * ThreeRowsLanes::skew - ThreeRowsLanes::reach <= Tile::longest);

// What a step makes of its rows; behind them there are zeros up to a register's end.
template <int vectors>
KUV_INLINE void storeBytes(Kuv8u* to, const Reals (&bases)[vectors]) {
    constexpr int parts = vectors * Reals::lanes / integerLanes;
    Vector<Kuv32s, integerBytes> whole[4] = {};
#pragma GCC unroll 2
    for (int i = 0; i < parts; i += 4) {
        constexpr int taken = parts < 4 ? vectors : 4 * integerLanes / Reals::lanes;
        truncateAll<8, taken>(bases + i * integerLanes / Reals::lanes, whole);
        store(to + i * integerLanes, narrowed(whole[0], whole[1], whole[2], whole[3]));
    }
}

// The steps of a block, for as many rows as the vectors have lanes. No lane waits for another, so that more of them cost little.
template <int vectors, class Diffusion>
__attribute__((noinline)) void computeSteps(Diffusion diffusion, LevelSteps levels, Tile& tile) {
    const Reals step = fill<Reals>(levels.step), inverse = fill<Reals>(levels.inverse);
    Reals left[vectors], secondLeft[vectors];
#pragma GCC unroll 4
    for (int i = 0; i < vectors; ++i) {
        left[i] = load<Reals>(tile.errors[Tile::longest - 1] + i * Reals::lanes);
        secondLeft[i] = load<Reals>(tile.errors[Tile::longest - 2] + i * Reals::lanes);
    }
    for (int k = 0; k < Tile::steps; ++k) {
        Reals bases[vectors];
#pragma GCC unroll 4
        for (int i = 0; i < vectors; ++i) {
            const int lane = i * Reals::lanes;
            const Reals above = diffusion.fromAbove(tile, k, lane);
            const Reals value = diffusion.value(above, left[i], secondLeft[i], loadReals(tile.samples[k] + lane));
            const Reals isHigh = atLeast(value, load<Reals>(tile.limits[k] + lane)), isLow = greater(fill<Reals>(0), value);
            const Reals below = multiply(wholePart(multiply(inverse, value)), step), over = add(below, step);
            const Reals toBelow = sub(value, below), toOver = sub(value, over);
            const Reals up = greater(toBelow, load<Reals>(tile.thresholds[k] + lane));
            const Reals error = bitAndNot(isHigh, bitAndNot(isLow, select(up, toOver, toBelow)));
            const Reals base = add(below, bitAnd(up, step));
            bases[i] = maximum(bitAndNot(isLow, base), bitAnd(isHigh, fill<Reals>(65535)));
            secondLeft[i] = left[i];
            left[i] = error;
            store(tile.errors[Tile::longest + k] + lane, error);
            diffusion.passOn(tile, k, lane, error);
        }
        storeBytes(tile.bytes[k], bases);
    }
}

template <int pixelSamples, class Diffusion>
class Wavefront {
    static constexpr int rows = Tile::rows, steps = Tile::steps, skew = Diffusion::skew, channels = reducedChannels<pixelSamples>;

public:
    Wavefront(Diffusion diffusion, Pixels<const Kuv16u> src, Pixels<Kuv8u> dst, KuviSize roi, LevelSteps levels, Noise noise,
              Kuv32f* errors)
        : diffusion_(diffusion), src_(src), dst_(dst), width_(roi.width), height_(roi.height), levels_(levels), noise_(noise) {
        constexpr int lines = Diffusion::lines.count, border = Diffusion::lines.border;
        const ptrdiff_t pitch = width_ + 2 * border;
        __builtin_memset(errors, 0, static_cast<size_t>(lines * pitch) * sizeof(Kuv32f));
        for (int i = 0; i < 3; ++i) lines_[i] = errors + border + (i < lines ? i : 0) * pitch;
        __builtin_memset(tile_.samplesOfRow, 0, sizeof(tile_.samplesOfRow));
        __builtin_memset(tile_.samples, 0, sizeof(tile_.samples));
        for (auto& each : tile_.thresholds) {
            for (Kuv32f& threshold : each) threshold = levels.step / 2;
        }
    }

    void run() {
        // Rows that lie on each other have to be written in their order.
        const ptrdiff_t rowBytes = width_ * pixelSamples, together = dst_.step < rowBytes && -dst_.step < rowBytes ? 1 : rows;
        const ptrdiff_t all = channels * height_;
        for (ptrdiff_t first = 0; first < all; first += together) runGroup(first, smaller(all - first, together));
    }

private:
    // Rows of the sequence that all channels' rows form.
    void runGroup(ptrdiff_t first, ptrdiff_t count) {
        count_ = static_cast<int>(count);
        for (int r = 0; r < count_; ++r) {
            const ptrdiff_t channel = (first + r) / height_;
            y_[r] = (first + r) % height_;
            from_[r] = src_.row(y_[r]) + channel;
            to_[r] = dst_.row(y_[r]) + channel;
        }
        __builtin_memset(tile_.errors, 0, Tile::longest * sizeof(tile_.errors[0]));
        __builtin_memset(tile_.near, 0, Tile::longest * sizeof(tile_.near[0]));
        if (Diffusion::hasFar) __builtin_memset(tile_.far, 0, Tile::longest * sizeof(tile_.far[0]));
        isWhole_ = false;
        // Until the rows after these have got all that they take.
        const bool isLast = first + count == channels * height_;
        const ptrdiff_t end = width_ + skew * (isLast ? count - 1 : count + 1);
        for (ptrdiff_t k = 0; k < end; k += steps) {
            takeLines(k);
            takeSamples(k);
            if (count_ <= Reals::lanes) computeSteps<1>(diffusion_, levels_, tile_);
            else if (count_ <= 2 * Reals::lanes) computeSteps<2>(diffusion_, levels_, tile_);
            else computeSteps<4>(diffusion_, levels_, tile_);
            giveBytes(k);
            giveLines(k);
            __builtin_memcpy(tile_.errors, tile_.errors[steps], Tile::longest * sizeof(tile_.errors[0]));
            __builtin_memcpy(tile_.near, tile_.near[steps], Tile::longest * sizeof(tile_.near[0]));
            if (Diffusion::hasFar) __builtin_memcpy(tile_.far, tile_.far[steps], Tile::longest * sizeof(tile_.far[0]));
        }
    }

    // The steps of the block in which a row that is so many rows behind the first has pixels, and the pixel of step 0.
    struct Stretch {
        ptrdiff_t begin, end, offset;
    };
    KUV_INLINE Stretch stretchOf(ptrdiff_t block, int row) const {
        const ptrdiff_t offset = block - ptrdiff_t{skew} * row;
        return {offset < 0 ? -offset : 0, width_ - offset < steps ? width_ - offset : steps, offset};
    }
    // Calls `use(k, x)` with each of them.
    template <class Use>
    KUV_INLINE void forPixels(ptrdiff_t block, int row, Use use) const {
        const Stretch stretch = stretchOf(block, row);
        for (ptrdiff_t k = stretch.begin; k < stretch.end; ++k) use(k, stretch.offset + k);
    }

    // What the group before leaves to the first row, and to the second.
    void takeLines(ptrdiff_t block) {
        takeLine(tile_.near, lines_[0], block, 0);
        if constexpr (Diffusion::hasFar) {
            takeLine(tile_.far, lines_[1], block, 0);
            takeLine(tile_.far, lines_[2], block, 1);
        }
    }
    void takeLine(Kuv32f (&sums)[steps + Tile::longest][Tile::rowPitch], const Kuv32f* line, ptrdiff_t block, int row) {
        for (int k = 0; k < steps; ++k) sums[k][row] = 0;
        forPixels(block, row, [&](ptrdiff_t k, ptrdiff_t x) { sums[k][row] = line[x]; });
    }
    void giveLines(ptrdiff_t block) {
        forPixels(block, count_, [&](ptrdiff_t k, ptrdiff_t x) { lines_[0][x] = tile_.near[k][count_]; });
        if constexpr (Diffusion::hasFar) {
            forPixels(block, count_, [&](ptrdiff_t k, ptrdiff_t x) { lines_[1][x] = tile_.far[k][count_]; });
            forPixels(block, count_ + 1, [&](ptrdiff_t k, ptrdiff_t x) { lines_[2][x] = tile_.far[k][count_ + 1]; });
        }
    }

    void takeSamples(ptrdiff_t block) {
        const bool wasWhole = isWhole_;
        isWhole_ = block >= ptrdiff_t{skew} * (count_ - 1) && block + steps <= width_;
        const bool limitsChange = !isWhole_ || !wasWhole;
        if (limitsChange) {
            for (auto& each : tile_.limits) {
                for (Kuv32f& limit : each) limit = -1;
            }
        }
        for (int r = 0; r < count_; ++r) {
            const Kuv16u* const from = from_[r];
            Kuv16u* const to = tile_.samplesOfRow[r];
            if (pixelSamples == 1 && isWhole_) {
                __builtin_memcpy(to, from + stretchOf(block, r).offset, sizeof(tile_.samplesOfRow[r]));
            } else {
                forPixels(block, r, [&](ptrdiff_t k, ptrdiff_t x) { to[k] = loadSample(from + x * pixelSamples); });
            }
            if (isWhole_) {
                // So many rows that far apart are more than the processor foresees.
                const ptrdiff_t next = (stretchOf(block, r).offset + steps) * pixelSamples;
                prefetchRow(from + next, steps * pixelSamples);
                prefetchRow(to_[r] + next, steps * pixelSamples);
            }
            if (limitsChange) forPixels(block, r, [&](ptrdiff_t k, ptrdiff_t) { tile_.limits[k][r] = 65535; });
            if (noise_.present()) forPixels(block, r, [&](ptrdiff_t k, ptrdiff_t x) { tile_.thresholds[k][r] = noise_.at(x, y_[r]); });
        }
        for (int r = 0; r < count_; r += 8) {
            for (int k = 0; k < steps; k += 8) {
                transposeBlock<Vector<Kuv16u, 16>>(tile_.samplesOfRow[r] + k, sizeof(tile_.samplesOfRow[0]), tile_.samples[k] + r,
                                                   sizeof(tile_.samples[0]));
            }
        }
    }
    void giveBytes(ptrdiff_t block) {
        for (int r = 0; r < count_; r += 16) {
            for (int k = 0; k < steps; k += 16) {
                transposeBlock<Vector<Kuv8u, 16>>(tile_.bytes[k] + r, sizeof(tile_.bytes[0]), tile_.bytesOfRow[r] + k,
                                                  sizeof(tile_.bytesOfRow[0]));
            }
        }
        for (int r = 0; r < count_; ++r) {
            const Kuv8u* const from = tile_.bytesOfRow[r];
            Kuv8u* const to = to_[r];
            if (pixelSamples == 1 && isWhole_) {
                __builtin_memcpy(to + stretchOf(block, r).offset, from, sizeof(tile_.bytesOfRow[r]));
            } else {
                forPixels(block, r, [&](ptrdiff_t k, ptrdiff_t x) { to[x * pixelSamples] = from[k]; });
            }
        }
    }

    Diffusion diffusion_;
    Pixels<const Kuv16u> src_;
    Pixels<Kuv8u> dst_;
    ptrdiff_t width_, height_;
    LevelSteps levels_;
    Noise noise_;
    Kuv32f* lines_[3];

    // Of the group.
    int count_ = 0;
    ptrdiff_t y_[rows];
    const Kuv16u* from_[rows];
    Kuv8u* to_[rows];
    bool isWhole_ = false;  // the block: all rows of the group have all of its pixels

    Tile tile_;
};

}  // namespace
}  // namespace kuv::KUV_VARIANT
