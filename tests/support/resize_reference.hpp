// Resize plans in memory of just their size, and resized images as the header states them, sample by sample.
#pragma once

#include <algorithm>
#include <climits>
#include <cmath>
#include <map>
#include <memory>
#include <tuple>
#include <vector>

#include "support/statuses.hpp"

namespace kuvtest {

// An image without borders.
struct Scene {
    enum Kind { noise, extremes, ramp };
    std::uint64_t seed = 1;
    Kind kind = noise;

    Kuv16s operator()(std::int64_t x, std::int64_t y, int c) const {
        if (kind == ramp) return static_cast<Kuv16s>(std::clamp<std::int64_t>(7 * x - 11 * y + 1000 * c, -32768, 32767));
        std::uint64_t bits = seed + static_cast<std::uint64_t>(x) * 0x9E3779B97F4A7C15 +
                             static_cast<std::uint64_t>(y) * 0xC2B2AE3D27D4EB4F + static_cast<std::uint64_t>(c) * 0x165667B19E3779F9;
        bits = (bits ^ bits >> 30) * 0xBF58476D1CE4E5B9;
        bits = (bits ^ bits >> 27) * 0x94D049BB133111EB;
        bits ^= bits >> 31;
        return kind == noise ? static_cast<Kuv16s>(bits) : bits % 2 == 0 ? Kuv16s{-32768} : Kuv16s{32767};
    }
};

// The words of a plan's axis.
struct AxisWords {
    Kuv32s srcLength, dstLength, srcReduced, dstReduced;
    Kuv32u positions, fractions, packed, reserved[2];
    Kuv32s leadCount, tailCount;
};

class PlanBlock {
public:
    PlanBlock(KuviSize src, KuviSize dst, Guard guard = Guard::end, int gap = 0)
        : src_(src), dst_(dst), block_("plan", Geometry{bytesFor(src, dst), 1, 0, guard, gap, 1}, 3) {
        EXPECT_EQ(watched([&] { return kuviResizeLinearInit_16s(src, dst, block_.row()); }), kuvStatusOk);
    }

    static Kuv32s bytesFor(KuviSize src, KuviSize dst) {
        Kuv32s bytes = -1, init = -1;
        EXPECT_EQ(kuviResizeGetSize_16s(src, dst, kuvResizeLinear, 0, &bytes, &init), kuvStatusOk);
        return bytes;
    }
    Kuv32s bufferBytes(KuviSize tile) const {
        Kuv32s bytes = -1;
        const bool isLarger = tile.width > dst_.width || tile.height > dst_.height;
        EXPECT_EQ(kuviResizeGetBufferSize_16s(get(), tile, 3, &bytes), isLarger ? kuvStatusSizeWarning : kuvStatusOk);
        return bytes;
    }

    KuviSize src() const { return src_; }
    KuviSize dst() const { return dst_; }
    const Image& block() const { return block_; }
    const Kuv8u* get() const { return block_.row(); }

    unsigned char* start() const {
        const auto address = reinterpret_cast<std::uintptr_t>(block_.row());
        return block_.row() + (0 - address) % 64;
    }
    Kuv32u word(int i) const { return load<Kuv32u>(start(), i); }
    AxisWords vertical() const { return load<AxisWords>(start() + 40); }
    AxisWords horizontal() const { return load<AxisWords>(start() + 84); }
    Kuv32s position(const AxisWords& axis, std::ptrdiff_t i) const { return load<Kuv32s>(start() + axis.positions, i); }
    float fraction(const AxisWords& axis, std::ptrdiff_t i) const { return load<float>(start() + axis.fractions, i); }

    // An axis the other way round.
    void reverse(const AxisWords& axis) const {
        auto* const positions = reinterpret_cast<Kuv32s*>(start() + axis.positions);
        auto* const fractions = reinterpret_cast<float*>(start() + axis.fractions);
        std::reverse(positions, positions + axis.dstLength);
        std::reverse(fractions, fractions + axis.dstLength);
    }

private:
    KuviSize src_, dst_;
    Image block_;
};

// A plan that no test writes to; the same with another word.
inline const PlanBlock& sharedPlan(KuviSize src, KuviSize dst, int word = 0, Kuv32u value = 0x4B617389) {
    using Key = std::tuple<int, int, int, int, int, Kuv32u>;
    static auto& plans = *new std::map<Key, std::unique_ptr<PlanBlock>>;
    std::unique_ptr<PlanBlock>& plan = plans[Key{src.width, src.height, dst.width, dst.height, word, value}];
    if (!plan) {
        plan = std::make_unique<PlanBlock>(src, dst);
        store(plan->start(), word, value);
    }
    return *plan;
}

// For checks: that plan as an argument.
template <int argument>
struct PlanSetting {
    KuviSize src, dst;
    int word;
    Kuv32u value;

    template <class Tuple>
    Violation<Tuple> bind() const {
        return {argument, 0, "plan with word " + std::to_string(word) + " = " + std::to_string(value),
                [*this](Tuple& arguments) { std::get<argument>(arguments) = sharedPlan(src, dst, word, value).get(); }};
    }
};

struct TileOf {
    KuviPoint offset;
    KuviSize size;
    Kuv32u border = kuvBorderClamp;
};

inline std::ostream& operator<<(std::ostream& stream, const TileOf& tile) {
    return stream << "tile " << tile.size.width << " x " << tile.size.height << " at " << tile.offset.x << ", " << tile.offset.y
                  << ", border " << tile.border;
}

enum class ResizeArithmetic { doubles, singles, fused };

inline ResizeArithmetic arithmeticOf(const Variant& variant) {
    using enum ResizeArithmetic;
    return variant.isPx() ? doubles : variant.isH9() ? fused : singles;
}

// A tile in the order of the destination's rows, and which source pixels it takes.
class ResizeReference {
public:
    ResizeReference(const PlanBlock& plan, const Scene& scene, const TileOf& tile, ResizeArithmetic arithmetic)
        : plan_(plan), scene_(scene), arithmetic_(arithmetic), rows_(plan.vertical()), columns_(plan.horizontal()), tile_(tile) {
        tile_.size.width = std::min(tile.size.width, columns_.dstLength - tile.offset.x);
        tile_.size.height = std::min(tile.size.height, rows_.dstLength - tile.offset.y);
        for (int y = 0; y < tile_.size.height; ++y) {
            for (int x = 0; x < tile_.size.width; ++x) {
                for (int c = 0; c < 3; ++c) samples_.push_back(compute(tile_.offset.x + x, tile_.offset.y + y, c));
            }
        }
    }

    KuviSize size() const { return tile_.size; }
    bool isClipped(const TileOf& asked) const { return asked.size.width != tile_.size.width || asked.size.height != tile_.size.height; }
    Kuv16s sample(int x, int y, int c) const {
        return samples_[(static_cast<std::size_t>(y) * static_cast<std::size_t>(tile_.size.width) + static_cast<std::size_t>(x)) * 3 +
                        static_cast<std::size_t>(c)];
    }
    // The source pixels that were taken, and the one that `src` points to.
    std::int64_t left() const { return left_; }
    std::int64_t top() const { return top_; }
    std::int64_t right() const { return right_; }
    std::int64_t bottom() const { return bottom_; }
    KuviPoint origin() const {
        const auto floored = [](std::int64_t offset, const AxisWords& axis) {
            return static_cast<Kuv32s>(offset * axis.srcLength / axis.dstLength);
        };
        return {floored(tile_.offset.x, columns_), floored(tile_.offset.y, rows_)};
    }

private:
    // The two source indices of a destination index, and whether they are one, which repeats.
    struct Ends {
        std::int64_t first, second;
        bool repeats;
    };
    Ends endsOf(const AxisWords& axis, int i, bool hasBefore, bool hasAfter) const {
        const std::int64_t position = plan_.position(axis, i);
        if (position < 0 && !hasBefore) return {0, 0, true};
        if (position >= axis.srcLength - 1 && !hasAfter) return {axis.srcLength - 1, axis.srcLength - 1, true};
        return {position, position + 1, false};
    }

    double at(std::int64_t x, std::int64_t y, int c) {
        left_ = std::min(left_, x);
        top_ = std::min(top_, y);
        right_ = std::max(right_, x);
        bottom_ = std::max(bottom_, y);
        return scene_(x, y, c);
    }

    double between(double a, double b, float fraction) const {
        const auto first = static_cast<float>(a), second = static_cast<float>(b), difference = second - first;
        switch (arithmetic_) {
            case ResizeArithmetic::doubles: {
                const double product = (b - a) * static_cast<double>(fraction);
                return a + product;
            }
            case ResizeArithmetic::singles: {
                const float product = difference * fraction;
                return static_cast<double>(first + product);
            }
            default: return static_cast<double>(std::fma(difference, fraction, first));
        }
    }

    Kuv16s compute(int x, int y, int c) {
        const auto has = [&](Kuv32u flag) { return (tile_.border & flag) != 0; };
        const Ends column = endsOf(columns_, x, has(kuvBorderHaveLeft), has(kuvBorderHaveRight));
        const Ends row = endsOf(rows_, y, has(kuvBorderHaveTop), has(kuvBorderHaveBottom));
        const auto alongRow = [&](std::int64_t of) {
            return between(at(column.first, of, c), at(column.second, of, c), plan_.fraction(columns_, x));
        };
        double value;
        if (row.repeats) {
            value = alongRow(row.first);
        } else {
            const double a = static_cast<double>(static_cast<float>(alongRow(row.first)));
            const double b = static_cast<double>(static_cast<float>(alongRow(row.second)));
            value = between(a, b, plan_.fraction(rows_, y));
        }
        return static_cast<Kuv16s>(std::clamp(std::nearbyint(value), -32768.0, 32767.0));
    }

    const PlanBlock& plan_;
    const Scene& scene_;
    ResizeArithmetic arithmetic_;
    AxisWords rows_, columns_;
    TileOf tile_;
    std::vector<Kuv16s> samples_;
    std::int64_t left_ = INT64_MAX, top_ = INT64_MAX, right_ = INT64_MIN, bottom_ = INT64_MIN;
};

}  // namespace kuvtest
