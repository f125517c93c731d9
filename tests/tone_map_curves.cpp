// Tone maps from points of any kind, for the fuzzer. What they must be is said in tone_map_init.cpp.
#include "support/fuzzing.hpp"
#include "support/tone_reference.hpp"

namespace {

using namespace kuvtest;

constexpr Kuv32s interpolations[] = {kuvLutStep, kuvLutLinear, kuvLutCubic};
constexpr Kuv32s selectors[] = {kuvChannelsC1, kuvChannelsC3, kuvChannelsC4, kuvChannelsAC4};

bool withinOneByte(const void* got, const void* wanted) { return std::abs(load<Kuv8u>(got) - load<Kuv8u>(wanted)) <= 1; }
// Of the entries that the bytes belong to; tables begin at even addresses, blocks anywhere.
bool withinOneWord(const void* got, const void* wanted) {
    const auto entry = [](const void* byte) {
        return int{load<Kuv16u>(static_cast<const char*>(byte) - reinterpret_cast<std::uintptr_t>(byte) % 2)};
    };
    return sameBits<Kuv8u>(got, wanted) || std::abs(entry(got) - entry(wanted)) <= 1;
}

bool anyByte(const void*, const void*) { return true; }

// Points of any kind. h9 may be off by 1, but where a cubic's terms are so large that their rounding errors are larger than an entry, or
// infinite.
template <class T>
struct CurveArguments {
    using Pointers = const Kuv32s* const*;
    static Pointers lists(Draw& draw, const std::vector<const Kuv32s*>& all) {
        const Image& image = draw.image<Kuv64u>(Role::record, static_cast<int>(all.size()), 1, 0);  // as large as a pointer
        std::memcpy(image.row(), all.data(), sizeof(all[0]) * all.size());
        return image.row<const Kuv32s* const>();
    }
    static const Kuv32s* numbers(Draw& draw, const std::vector<Kuv32s>& all) {
        const Image& image = draw.image<Kuv32s>(Role::record, static_cast<int>(all.size()), 1, 0);
        for (std::size_t i = 0; i < all.size(); ++i) store(image.row(), static_cast<std::ptrdiff_t>(i), all[i]);
        return image.row<Kuv32s>();
    }

    std::tuple<Kuv32s, Kuv32s, KuviSize, Pointers, Pointers, const Kuv32s*, KuviToneMapSpec*> operator()(Draw& draw) const {
        Random& random = draw.random;
        const Kuv32s interpolation = interpolations[below(random, 3)];
        const Kuv32s selector = selectors[oneIn(random, 4) ? below(random, 4) : 0];
        const int entries = 1 << 8 * sizeof(T), kind = below(random, 3);
        std::vector<const Kuv32s*> values, levels;
        std::vector<Kuv32s> counts;
        bool ascend = true;
        for (int c = 0; c < usedChannels(selector); ++c) {
            const int count = between(random, 2, oneIn(random, 4) ? 40 : 8);
            const auto point = [&] {
                if (kind == 0 && oneIn(random, 3)) return static_cast<Kuv32s>(random.bits<Kuv32u>());
                return between(random, -entries / 4, entries + entries / 4);
            };
            std::vector<Kuv32s> of[2];
            for (int k = 0; k < 2 * count; ++k) of[k % 2].push_back(point());
            if (kind == 2) std::sort(of[0].begin(), of[0].end());
            ascend &= std::adjacent_find(of[0].begin(), of[0].end(), std::greater_equal<>()) == of[0].end();
            levels.push_back(numbers(draw, of[0]));
            values.push_back(numbers(draw, of[1]));
            counts.push_back(count);
        }
        Kuv32s bytes = 0;
        const Kuv32s type = sizeof(T) == 1 ? kuvDataType8u : kuvDataType16u;
        EXPECT_EQ(kuviLUT_GetSize(interpolation, type, selector, draw.size, counts.data(), &bytes), kuvStatusOk);
        const bool fused = variants[kuv::variantIndex].isH9(), large = interpolation == kuvLutCubic && !ascend;
        const auto close = large ? anyByte : sizeof(T) == 1 ? withinOneByte : withinOneWord;
        Image& block = draw.image<Kuv8u>(Role::output, bytes, 1, 0, fused ? close : sameBits<Kuv8u>);
        std::memset(block.row(), 0x55, static_cast<std::size_t>(bytes));  // not all of it is written
        return {interpolation, selector, draw.size, lists(draw, values), lists(draw, levels), numbers(draw, counts),
                block.row<KuviToneMapSpec>()};
    }
};
KUV_FUZZED(px, kuviLUT_Init_8u, CurveArguments<Kuv8u>{});
KUV_FUZZED(px, kuviLUT_Init_16u, CurveArguments<Kuv16u>{});

}  // namespace
