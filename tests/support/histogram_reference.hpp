// Bin plans and histograms as the header states them, level by level and sample by sample.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include <gtest/gtest.h>

#include "kuvcv.h"
#include "support/images.hpp"

namespace kuvtest {

// The levels of a channel: given ones, or so many between bounds.
struct Levels {
    std::vector<float> free;
    float lower = 0, upper = 0;
    int count = 0;

    Levels() = default;
    Levels(float first, float last, int levels) : lower(first), upper(last), count(levels) {}
};
inline Levels freeLevels(std::vector<float> list) {
    Levels levels;
    levels.free = std::move(list);
    levels.count = static_cast<int>(levels.free.size());
    return levels;
}

// What a bin plan is made of, and what is in it then.
struct PlanSource {
    Kuv32s type;
    std::vector<Levels> channels;

    int channelCount() const { return static_cast<int>(channels.size()); }
    bool isUniform() const { return channels[0].free.empty(); }
    bool isReal() const { return type == kuvDataType32f; }
    int bins(int c) const { return c < channelCount() ? channels[static_cast<std::size_t>(c)].count - 1 : 0; }
    std::vector<Kuv32s> counts() const {
        std::vector<Kuv32s> all;
        for (const Levels& each : channels) all.push_back(each.count);
        return all;
    }
    int bytes() const {
        int sum = 64;
        for (const Levels& each : channels) sum += 4 * each.count;
        return sum;
    }
    double step(int c) const {
        const Levels& of = channels[static_cast<std::size_t>(c)];
        return (static_cast<double>(of.upper) - of.lower) / (of.count - 1);
    }
    KuvStatus status() const {
        for (int c = 0; c < channelCount(); ++c) {
            if (isUniform() && !isReal() && step(c) < 1) return kuvStatusSizeWarning;
        }
        return kuvStatusOk;
    }

    // As they are kept.
    double level(int c, int k) const {
        const Levels& of = channels[static_cast<std::size_t>(c)];
        const double product = k * step(c);
        const double exact = !isUniform()        ? of.free[static_cast<std::size_t>(k)]
                             : k == 0            ? of.lower
                             : k == of.count - 1 ? of.upper
                                                 : product + of.lower;
        if (isReal()) return static_cast<float>(exact);
        if (std::isnan(exact)) return INT32_MIN;
        return std::clamp<double>(isUniform() ? std::trunc(exact) : std::ceil(exact), INT32_MIN, INT32_MAX) + 0.0;  // no -0
    }
    std::vector<double> levels(int c) const {
        std::vector<double> all;
        for (int k = 0; k <= bins(c); ++k) all.push_back(level(c, k));
        return all;
    }

    // The block, from its first byte on.
    void write(unsigned char* block) const {
        std::memset(block, 0, 64);
        const Kuv32s words[4] = {type, channelCount(), isUniform(), 0x74736968};
        for (int i = 0; i < 4; ++i) store(block, i, words[i]);
        int offset = 64;
        for (int c = 0; c < channelCount(); ++c) {
            store(block, 4 + c, bins(c) + 1);
            store(block, 8 + c, offset);
            if (isUniform() && isReal()) store(block, 12 + c, static_cast<float>(step(c)));
            for (int k = 0; k <= bins(c); ++k, offset += 4) {
                if (isReal()) store(block, offset / 4, static_cast<float>(level(c, k)));
                else store(block, offset / 4, static_cast<Kuv32s>(level(c, k)));
            }
        }
    }

    // The call, with nothing left to allocate.
    auto initOn(void* block) const {
        std::vector<const float*> lists;
        std::vector<float> lower, upper;
        for (const Levels& each : channels) {
            lists.push_back(each.free.data());
            lower.push_back(each.lower);
            upper.push_back(each.upper);
        }
        return [this, block, lists, lower, upper, n = counts()] {
            auto* const spec = static_cast<KuviBinPlan*>(block);
            if (isUniform()) return kuviHistogramUniformInit(type, lower.data(), upper.data(), n.data(), channelCount(), spec);
            return kuviHistogramInit(type, lists.data(), n.data(), channelCount(), spec);
        };
    }
    KuvStatus init(void* block) const { return initOn(block)(); }
};

// A plan in a block of just its size.
class BinPlan {
public:
    explicit BinPlan(const PlanSource& source, Guard guard = Guard::end, int gap = 0)
        : block_("plan", Geometry{source.bytes(), 1, source.bytes(), guard, gap, 1}, 11) {
        EXPECT_EQ(source.init(block_.row()), source.status());
    }
    const Image& block() const { return block_; }
    const KuviBinPlan* get() const { return block_.row<KuviBinPlan>(); }

private:
    Image block_;
};

using Counts = std::vector<std::vector<Kuv32u>>;

// A region in `channels` channels, counted by a plan of at most as many.
class HistogramReference {
public:
    HistogramReference(const PlanSource& plan, int channels, KuviSize size, std::ptrdiff_t step, bool hasRowRule)
        : plan_(plan), channels_(channels), size_(size), step_(step) {
        singleRow_ = hasRowRule && plan.isReal() && plan.isUniform() && plan.bins(0) > 2 && step >> 4 == size.width;
        for (int c = 0; c < plan.channelCount() && c < channels; ++c) levels_.push_back(plan.levels(c));
        const auto product = static_cast<Kuv32s>(static_cast<Kuv32u>(size.width) * static_cast<Kuv32u>(size.height));
        divides_ = plan.isUniform() && (plan.type == kuvDataType16u || plan.type == kuvDataType16s) && product < 65536;
        for (const auto& each : levels_) {
            divides_ = divides_ && std::fmod(each.back() - each.front(), static_cast<double>(each.size() - 1)) == 0;
        }
    }

    bool divides() const { return divides_; }

    Counts count(const unsigned char* src) const {
        Counts counts;
        for (const auto& each : levels_) counts.emplace_back(each.size() - 1, 0u);
        const Kuv64s all = Kuv64s{size_.width} * size_.height;
        for (Kuv64s i = 0; i < all; ++i) {
            const unsigned char* const row = singleRow_ ? src : src + i / size_.width * step_;
            for (int c = 0; c < static_cast<int>(levels_.size()); ++c) {
                const auto k = binOf(c, sample(row, (singleRow_ ? i : i % size_.width) * channels_ + c));
                if (k >= 0) ++counts[static_cast<std::size_t>(c)][static_cast<std::size_t>(k)];
            }
        }
        return counts;
    }

    // -1 if there is none.
    std::ptrdiff_t binOf(int c, double x) const {
        const std::vector<double>& levels = levels_[static_cast<std::size_t>(c)];
        if (!(x >= levels.front() && x < levels.back())) return -1;
        if (divides_) {
            return static_cast<std::ptrdiff_t>((x - levels.front()) /
                                               ((levels.back() - levels.front()) / static_cast<double>(levels.size() - 1)));
        }
        return std::upper_bound(levels.begin(), levels.end(), x) - levels.begin() - 1;
    }

private:
    double sample(const unsigned char* row, std::ptrdiff_t i) const {
        switch (plan_.type) {
            case kuvDataType8u: return row[i];
            case kuvDataType16u: return load<Kuv16u>(row, i);
            case kuvDataType16s: return load<Kuv16s>(row, i);
            default: return static_cast<double>(load<float>(row, i));
        }
    }

    const PlanSource& plan_;
    int channels_;
    KuviSize size_;
    std::ptrdiff_t step_;
    bool singleRow_, divides_;
    std::vector<std::vector<double>> levels_;
};

}  // namespace kuvtest
