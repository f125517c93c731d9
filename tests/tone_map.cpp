// Tone maps applied to images.
#include <functional>

#include "support/agreement.hpp"
#include "support/distant.hpp"
#include "support/statuses.hpp"
#include "support/tone_reference.hpp"

namespace {

using namespace kuvtest;

struct Application {
    const char* name;
    int sampleBytes, samples;  // of a pixel
    Kuv32s selector;
    KuvStatus (*call)(void* srcDst, Kuv32s step, KuviSize size, const void* map);

    int mapped() const { return samples == 4 ? 3 : samples; }
    int entries() const { return 1 << 8 * sampleBytes; }
    int pixelBytes() const { return samples * sampleBytes; }
    int sampleAt(const unsigned char* row, int i) const { return sampleBytes == 1 ? row[i] : load<Kuv16u>(row, i); }
    void setSample(unsigned char* row, int i, int value) const {
        if (sampleBytes == 1) row[i] = static_cast<unsigned char>(value);
        else store(row, i, static_cast<Kuv16u>(value));
    }
};

#define APPLICATION(function, T, samples, selector)                                                                        \
    {#function, sizeof(T), samples, selector, [](void* srcDst, Kuv32s step, KuviSize size, const void* map) {              \
         return function(static_cast<T*>(srcDst), step, size, static_cast<const KuviToneMapSpec*>(map));                   \
     }}
constexpr Application applications[] = {
    APPLICATION(kuviLUT_8u_C1IR, Kuv8u, 1, kuvChannelsC1),     APPLICATION(kuviLUT_8u_C3IR, Kuv8u, 3, kuvChannelsC3),
    APPLICATION(kuviLUT_8u_AC4IR, Kuv8u, 4, kuvChannelsAC4),   APPLICATION(kuviLUT_16u_C1IR, Kuv16u, 1, kuvChannelsC1),
    APPLICATION(kuviLUT_16u_C3IR, Kuv16u, 3, kuvChannelsC3),   APPLICATION(kuviLUT_16u_AC4IR, Kuv16u, 4, kuvChannelsAC4)};

// A map in a block of just its size, made by px: the tables of h9 may differ.
class Map {
public:
    explicit Map(const MapSource& source, Guard guard = Guard::end, int gap = 0) {
        const SelectVariant selection(variantOf("px"));
        Kuv32s bytes = 0;
        EXPECT_EQ(source.size(&bytes), kuvStatusOk);
        block_ = std::make_unique<Image>("map", Geometry{bytes, 1, bytes, guard, gap, 1}, 11);
        EXPECT_EQ(source.init(block_->row()), kuvStatusOk);
    }

    const Image& block() const { return *block_; }
    const KuviToneMapSpec* get() const { return block_->row<KuviToneMapSpec>(); }

private:
    std::unique_ptr<Image> block_;
};

Curve stepsOf(Random& random, int entries, int count, bool sorted) {
    Curve curve;
    for (int k = 0; k < count; ++k) {
        curve.levels.push_back(sorted ? between(random, -20, entries + 20) : between(random, -entries / 8, entries + entries / 8));
        curve.values.push_back(between(random, -entries / 8, entries + entries / 8));
    }
    if (sorted) std::sort(curve.levels.begin(), curve.levels.end());
    return curve;
}

// An entry of any value each: spans of a single entry are not computed.
Curve anyTable(Random& random, int entries) {
    Curve curve;
    for (int x = 0; x <= entries; ++x) {
        curve.levels.push_back(x);
        curve.values.push_back(below(random, entries));
    }
    return curve;
}

// One of some maps: words' take too long to make one for each call.
template <class T, Kuv32s selector>
struct AnyMap {
    std::tuple<const KuviToneMapSpec*> operator()(Draw& draw) const {
        // Not destroyed: the list of images that are watched ends with its thread, before statics do.
        static const auto& maps = *new std::vector<std::unique_ptr<Map>>(some());
        return {maps[static_cast<std::size_t>(below(draw.random, static_cast<int>(maps.size())))]->get()};
    }

private:
    static std::vector<std::unique_ptr<Map>> some() {
        constexpr int entries = 1 << 8 * sizeof(T);
        Random random(5);
        std::vector<std::unique_ptr<Map>> maps;
        for (int i = 0; i < 12; ++i) {
            const bool alike = i % 3 == 0, whole = sizeof(T) == 1 && i % 2 == 0;
            MapSource source = {kuvLutStep, selector, sizeof(T), {}};
            for (int c = 0; c < usedChannels(selector); ++c) {
                source.curves.push_back(whole ? anyTable(random, entries) : stepsOf(random, entries, between(random, 2, 30), i % 4 < 2));
                if (alike) source.curves.back() = source.curves.front();
            }
            maps.push_back(std::make_unique<Map>(source, Guard::end, i));
        }
        return maps;
    }
};

constexpr Kuv32u strangers[8][1] = {{0}, {1}, {0x1234566}, {0x1234569}, {0x123456F}, {0x1234579}, {0x1234589}, {0xFFFFFFFF}};
const KuviToneMapSpec* stranger(int i) { return reinterpret_cast<const KuviToneMapSpec*>(strangers[i]); }

#define CHECKS_OF_MAP(function, T, samples, selector)                                                                                  \
    KUV_AGREES(function, InOut<T>{.channels = samples, .steps = StepClass::A}, RoiSize{}, AnyMap<T, selector>{});                      \
    KUV_CHECKS(function, call(InOut<T>{.channels = samples, .steps = StepClass::A}, RoiSize{}, AnyMap<T, selector>{}),                 \
               check(kuvStatusNullPtr, null<0>(), null<3>()), badStep<1>(),                                                            \
               badSize<2>(),                                                                                                           \
               check(kuvStatusBadArg, set<3>(stranger(0)), set<3>(stranger(1)), set<3>(stranger(2)), set<3>(stranger(3)),              \
                     set<3>(stranger(4)), set<3>(stranger(5)), set<3>(stranger(6)), set<3>(stranger(7))))
CHECKS_OF_MAP(kuviLUT_8u_C1IR, Kuv8u, 1, kuvChannelsC1);
CHECKS_OF_MAP(kuviLUT_8u_C3IR, Kuv8u, 3, kuvChannelsC3);
CHECKS_OF_MAP(kuviLUT_8u_AC4IR, Kuv8u, 4, kuvChannelsAC4);
CHECKS_OF_MAP(kuviLUT_16u_C1IR, Kuv16u, 1, kuvChannelsC1);
CHECKS_OF_MAP(kuviLUT_16u_C3IR, Kuv16u, 3, kuvChannelsC3);
CHECKS_OF_MAP(kuviLUT_16u_AC4IR, Kuv16u, 4, kuvChannelsAC4);

class ToneMap : public VariantTest {
protected:
    using Lookup = std::function<int(int channel, int sample)>;

    // Rows in order, in a copy of the image's bytes.
    static void mapRows(const Application& application, KuviSize size, const Image& image, Bytes& bytes, const Lookup& lookup) {
        for (int r = 0; r < size.height; ++r) {
            unsigned char* const row = image.row(bytes, r);
            for (int i = 0; i < size.width * application.samples; ++i) {
                const int channel = i % application.samples;
                if (channel < application.mapped()) application.setSample(row, i, lookup(channel, application.sampleAt(row, i)));
            }
        }
    }

    void expectMapped(const Application& application, KuviSize size, const Image& image, const Map& map, const Lookup& lookup) {
        Bytes wanted = image.bytes();
        mapRows(application, size, image, wanted, lookup);
        const Bytes mapBefore = map.block().bytes();
        SCOPED_TRACE(testing::Message() << GetParam() << ", " << application.name << ", " << size.width << " x " << size.height
                                        << "\n  image: " << image.geometry() << "\n  map: " << map.block().geometry());
        EXPECT_EQ(watched([&] { return application.call(image.row(), image.step(), size, map.get()); }), kuvStatusOk);
        EXPECT_EQ(image.difference(wanted), "");
        EXPECT_EQ(map.block().difference(mapBefore), "");
    }

    struct Place {
        std::ptrdiff_t padding = 0;
        Guard guard = Guard::end;
        int gap = 0;
    };

    Image imageOf(const Application& application, KuviSize size, Place at) {
        const int rowBytes = size.width * application.pixelBytes();
        return Image("srcDst", {rowBytes, size.height, rowBytes + at.padding, at.guard, at.gap, application.sampleBytes}, random_());
    }

    // Maps whose tables are random, and what they give.
    struct Tables {
        std::vector<Curve> curves;
        std::unique_ptr<Map> map;
        Lookup lookup;
    };
    Tables anyTables(const Application& application, bool alike = false, Guard guard = Guard::end, int gap = 0) {
        Tables all;
        for (int c = 0; c < application.mapped(); ++c) {
            all.curves.push_back(alike && c > 0 ? all.curves[0] : anyTable(random_, application.entries()));
        }
        all.map = std::make_unique<Map>(MapSource{kuvLutLinear, application.selector, application.sampleBytes, all.curves}, guard, gap);
        all.lookup = [curves = all.curves](int channel, int sample) {
            return curves[static_cast<std::size_t>(channel)].values[static_cast<std::size_t>(sample)];
        };
        return all;
    }

    struct Steps {
        std::unique_ptr<Map> map;
        Lookup search, table;
    };
    Steps stepsMap(const Application& application, bool sorted, int fewest = 2, int most = 30) {
        std::vector<Curve> curves;
        std::vector<std::vector<Kuv32s>> tables;
        for (int c = 0; c < application.mapped(); ++c) {
            curves.push_back(stepsOf(random_, application.entries(), between(random_, fewest, most), sorted));
            tables.push_back(ToneTableReference(application.sampleBytes, false).table(kuvLutStep, curves.back()));
        }
        Steps all;
        all.map = std::make_unique<Map>(MapSource{kuvLutStep, application.selector, application.sampleBytes, curves});
        all.search = [curves](int channel, int sample) { return searched(curves[static_cast<std::size_t>(channel)], sample); };
        all.table = [tables](int channel, int sample) {
            return tables[static_cast<std::size_t>(channel)][static_cast<std::size_t>(sample)];
        };
        return all;
    }

    // More than an image needs to be taken for a large one.
    static KuviSize manyRowsOf(int width) { return {width, width < 32 ? 9 : 2100 / width + 2}; }

    static bool searches(const Application& application) { return application.sampleBytes == 2 && application.samples != 4; }

    Random random_{1};
};

KUV_FOR_EACH_VARIANT(ToneMap);

TEST_P(ToneMap, EveryWidth) {
    for (const Application& application : applications) {
        for (const bool alike : {false, true}) {
            const Tables tables = anyTables(application, alike);
            for (int width = 1; width <= 800; width += width < 150 ? 1 : 31) {
                for (const Guard guard : {Guard::end, Guard::begin}) {
                    for (const int padding : {0, 1, 64}) {
                        for (const KuviSize size : {KuviSize{width, 3}, manyRowsOf(width)}) {
                            expectMapped(application, size, imageOf(application, size, {padding, guard, 0}), *tables.map, tables.lookup);
                        }
                    }
                }
                if (HasFailure()) return;
            }
        }
    }
}

TEST_P(ToneMap, EveryAlignment) {
    for (const Application& application : applications) {
        for (const bool alike : {false, true}) {
            const Tables tables = anyTables(application, alike);
            for (int gap = 0; gap <= 64 && !HasFailure(); ++gap) {
                for (const KuviSize size : {KuviSize{9, 2}, {45, 7}, {131, 3}, manyRowsOf(131), manyRowsOf(303)}) {
                    expectMapped(application, size, imageOf(application, size, {below(random_, 65), Guard::begin, gap}), *tables.map,
                                 tables.lookup);
                }
            }
        }
    }
}

TEST_P(ToneMap, MapsAtEveryAddress) {
    for (const Application& application : applications) {
        for (int gap = 0; gap < 64; gap += application.sampleBytes == 1 ? 1 : 9) {
            const Tables tables = anyTables(application, false, oneIn(random_, 2) ? Guard::end : Guard::begin, gap);
            const KuviSize size = manyRowsOf(120);
            expectMapped(application, size, imageOf(application, size, {}), *tables.map, tables.lookup);
        }
    }
}

// In order, so that all places of a block see all of them.
TEST_P(ToneMap, EverySample) {
    for (const Application& application : applications) {
        for (const bool alike : {false, true}) {
            const Tables tables = anyTables(application, alike);
            for (const int first : {0, 1, 2, 3, 5, 7}) {
                const KuviSize size = {application.entries() * (application.sampleBytes == 1 ? 8 : 1) + 5, 1};
                const Image image = imageOf(application, size, {});
                for (int i = 0; i < size.width * application.samples; ++i) {
                    application.setSample(image.row(), i, i / application.samples + first + 3 * (i % application.samples));
                }
                expectMapped(application, size, image, *tables.map, tables.lookup);
            }
        }
    }
}

// Steps of any size, odd ones with 16-bit samples, and ones within the row, whose rows meet results of the rows before.
TEST_P(ToneMap, AnyStep) {
    for (const Application& application : applications) {
        for (const bool alike : {false, true}) {
            const Tables tables = anyTables(application, alike);
            for (const int width : {1, 5, 40, 67, 200}) {
                const int rowBytes = width * application.pixelBytes();
                for (const int step : {1, 2, 3, 5, 7, 31, 32, 33, rowBytes / 2, rowBytes - 1, rowBytes, rowBytes + 1, rowBytes + 3, 4099}) {
                    if (step < 1) continue;
                    const KuviSize size = manyRowsOf(width);
                    expectMapped(application, size,
                                 imageOf(application, size,
                                         {step - rowBytes, oneIn(random_, 2) ? Guard::end : Guard::begin, below(random_, 3)}),
                                 *tables.map, tables.lookup);
                }
            }
        }
    }
}

// The search on small images and the table on larger ones; where levels rise they give the same.
TEST_P(ToneMap, StepsSearchedAndFromTheTable) {
    for (const Application& application : applications) {
        for (int round = 0; round < 40 && !HasFailure(); ++round) {
            const bool sorted = round % 2 == 0;
            const Steps steps = stepsMap(application, sorted, 2, round < 10 ? 3 : round < 30 ? 16 : 60);
            for (const KuviSize size :
                 {KuviSize{1, 1}, {1, 31}, {3, 7}, {64, 64}, {4096, 1}, {1, 4096}, {4097, 1}, {17, 241}, {683, 6}, {90, 100}}) {
                const bool search = searches(application) && size.width * size.height <= 4096;
                const Image image =
                    imageOf(application, size, {oneIn(random_, 2) ? 0 : 3, oneIn(random_, 2) ? Guard::end : Guard::begin, 0});
                expectMapped(application, size, image, *steps.map, search ? steps.search : steps.table);
            }
        }
    }
}

// All samples through the search, in parts of 4096 pixels, around levels of every sort: equal, negative, at and past the ends.
TEST_P(ToneMap, EverySampleSearched) {
    const std::vector<Curve> curves = {{{0, 65536}, {7, 9}},
                                       {{0, 65535}, {7, 9}},
                                       {{65535, 65536}, {-1, 9}},
                                       {{-5, -3, -1}, {1, 2, 3}},
                                       {{-5, 0, 0, 100, 100, 100, 65536}, {70000, 2, 3, -4, 5, 65535, 9}},
                                       {{66000, 67000}, {1, 2}},
                                       {{65534, 65535, 65536, 65537}, {1, 2, 3, 4}},
                                       {{INT32_MIN, INT32_MAX}, {INT32_MAX, 0}},
                                       {{INT32_MIN, INT32_MAX}, {INT32_MIN, 0}},
                                       {{100, 50, 200, 30000}, {1, 2, 3, 4}},
                                       {{40000, 20, 10, 50000}, {1, 2, 3, 4}},
                                       stepsOf(random_, 65536, 15, true),
                                       stepsOf(random_, 65536, 16, true),
                                       stepsOf(random_, 65536, 17, true),
                                       stepsOf(random_, 65536, 1000, true)};
    for (const Application& application : applications) {
        if (!searches(application)) continue;
        for (std::size_t first = 0; first < curves.size(); ++first) {
            std::vector<Curve> chosen;
            for (int c = 0; c < application.mapped(); ++c) {
                chosen.push_back(curves[(first + 4 * static_cast<std::size_t>(c)) % curves.size()]);
            }
            const Map map({kuvLutStep, application.selector, 2, chosen});
            const Lookup lookup = [&](int channel, int sample) { return searched(chosen[static_cast<std::size_t>(channel)], sample); };
            for (int part = 0; part < 16 && !HasFailure(); ++part) {
                const KuviSize size = {4096, 1};
                const Image image = imageOf(application, size, {});
                for (int i = 0; i < 4096 * application.samples; ++i) {
                    application.setSample(image.row(), i, part * 4096 + i / application.samples);
                }
                expectMapped(application, size, image, map, lookup);
            }
        }
    }
}

// Unsorted levels tell the two paths apart.
TEST_P(ToneMap, UnsortedLevelsAtTheThreshold) {
    const Curve curve = {{100, 50, 200, 150, 30000}, {1, 2, 3, 4, 5}};
    for (const Application& application : applications) {
        if (application.sampleBytes != 2) continue;
        const std::vector<Curve> curves(static_cast<std::size_t>(application.mapped()), curve);
        const Map map({kuvLutStep, application.selector, 2, curves});
        // In the table the intervals from 50 and from 150 on count; a search stops below 100, and looks at 200 first.
        const int samples[] = {60, 160}, fromTable[] = {2, 4}, bySearch[] = {60, 2};
        for (const KuviSize size : {KuviSize{64, 64}, {4096, 1}, {4097, 1}}) {
            for (int i = 0; i < 2; ++i) {
                const bool search = searches(application) && size.width * size.height <= 4096;
                const Image image = imageOf(application, size, {});
                for (int r = 0; r < size.height; ++r) {
                    for (int x = 0; x < size.width * application.samples; ++x) application.setSample(image.row(r), x, samples[i]);
                }
                EXPECT_EQ(searched(curve, samples[i]), bySearch[i]);
                expectMapped(application, size, image, map, [&](int, int) { return search ? bySearch[i] : fromTable[i]; });
            }
        }
    }
}

// Linear and cubic maps of words do not search, however small the image.
TEST_P(ToneMap, OnlyStepsAreSearched) {
    for (const Application& application : applications) {
        for (const Kuv32s interpolation : {kuvLutLinear, kuvLutCubic}) {
            std::vector<Curve> curves;
            for (int c = 0; c < application.mapped(); ++c) curves.push_back(stepsOf(random_, application.entries(), 8, false));
            const MapSource source = {interpolation, application.selector, application.sampleBytes, curves};
            const Map map(source);
            std::vector<std::vector<Kuv32s>> tables;
            for (const Curve& each : curves) {
                tables.push_back(ToneTableReference(application.sampleBytes, false).table(source.rule(), each));
            }
            for (const KuviSize size : {KuviSize{20, 3}, {300, 20}}) {
                expectMapped(application, size, imageOf(application, size, {}), map, [&](int channel, int sample) {
                    return tables[static_cast<std::size_t>(channel)][static_cast<std::size_t>(sample)];
                });
            }
        }
    }
}

// The product of width and height as 32 bits: 2^31 is negative, so the control points are searched. The tables are spoilt, to see it.
TEST_P(ToneMap, ProductsThatWrapAreSearched) {
    if (sanitized || GetParam().isPx()) GTEST_SKIP() << "slow";
    const Map map({kuvLutStep, kuvChannelsC1, 2, {{{0, 65536}, {77, 0}}}});
    unsigned char* const block = map.block().row();
    std::memset(block + load<Kuv32u>(block, 1), 0x5A, 0x20000);
    const int width = 1 << 16, height = 1 << 15;
    std::vector<Kuv16u> image(static_cast<std::size_t>(width) + height / 2);
    EXPECT_EQ(kuviLUT_16u_C1IR(image.data(), 1, {width, height}, map.get()), kuvStatusOk);
    const auto* const bytes = reinterpret_cast<const unsigned char*>(image.data());
    for (int i = 0; i < height; ++i) ASSERT_EQ(bytes[i], 77) << i;
    for (int i = height - 1; i < height - 1 + 2 * width; ++i) ASSERT_EQ(bytes[i], (i - height) % 2 == 0 ? 0 : 77) << i;
}

// Each of the 24 words, under each of the six functions.
TEST_P(ToneMap, OnlyItsOwnMaps) {
    const Curve curve = {{0, 50, 100, 200}, {10, 20, 30, 40}};
    for (const Kuv32s interpolation : {kuvLutStep, kuvLutLinear, kuvLutCubic}) {
        for (const int sampleBytes : {1, 2}) {
            for (const Kuv32s selector : {kuvChannelsC1, kuvChannelsC3, kuvChannelsC4, kuvChannelsAC4}) {
                const Map map(
                    {interpolation, selector, sampleBytes, std::vector<Curve>(static_cast<std::size_t>(usedChannels(selector)), curve)});
                for (const Application& application : applications) {
                    const KuviSize size = {7, 2};
                    const Image image = imageOf(application, size, {});
                    const Bytes before = image.bytes();
                    const bool own = application.selector == selector && application.sampleBytes == sampleBytes;
                    EXPECT_EQ(watched([&] { return application.call(image.row(), image.step(), size, map.get()); }),
                              own ? kuvStatusOk : kuvStatusBadArg) << application.name;
                    if (own) continue;
                    EXPECT_EQ(image.difference(before), "");
                }
            }
        }
    }
}

// The last level's sample stays as it is on both paths, and the one before it does not.
TEST_P(ToneMap, TheLastLevelIsKept) {
    for (const Application& application : applications) {
        for (const Kuv32s interpolation : {kuvLutStep, kuvLutLinear, kuvLutCubic}) {
            const Curve curve = {{10, 20, 30, 40}, {111, 111, 111, 111}};
            const Map map({interpolation, application.selector, application.sampleBytes,
                           std::vector<Curve>(static_cast<std::size_t>(application.mapped()), curve)});
            for (const KuviSize size : {KuviSize{52, 1}, {52, 200}}) {
                const Image image = imageOf(application, size, {});
                for (int r = 0; r < size.height; ++r) {
                    for (int i = 0; i < size.width * application.samples; ++i) {
                        application.setSample(image.row(r), i, i / application.samples);
                    }
                }
                expectMapped(application, size, image, map, [](int, int x) { return x < 10 || x >= 40 ? x : 111; });
            }
        }
    }
}

TEST_P(ToneMap, RowsFurtherApartThan32BitsTell) {
    constexpr std::ptrdiff_t step = 0x7FFFFFF1;
    const DistantMemory memory(3 * static_cast<std::size_t>(step));
    KUV_NEEDS(memory);
    for (const Application& application : applications) {
        for (const bool steps : {false, true}) {
            const Tables tables = anyTables(application);
            const Steps searchedMap = stepsMap(application, true);
            const Lookup lookup = !steps ? tables.lookup : searches(application) ? searchedMap.search : searchedMap.table;
            const int width = 700, count = width * application.samples;
            std::vector<Bytes> wanted;
            for (int r = 0; r < 3; ++r) {
                auto* const row = reinterpret_cast<unsigned char*>(memory.memory()) + step * r;
                for (int i = 0; i < width * application.pixelBytes(); ++i) row[i] = static_cast<unsigned char>(random_());
                wanted.emplace_back(row, row + width * application.pixelBytes());
                for (int i = 0; i < count; ++i) {
                    const int channel = i % application.samples;
                    if (channel < application.mapped()) {
                        application.setSample(wanted.back().data(), i, lookup(channel, application.sampleAt(row, i)));
                    }
                }
            }
            EXPECT_EQ(watched([&] {
                          return application.call(memory.memory(), step, {width, 3}, steps ? searchedMap.map->get() : tables.map->get());
                      }), kuvStatusOk);
            for (int r = 0; r < 3; ++r) {
                EXPECT_EQ(std::memcmp(memory.memory() + step * r, wanted[static_cast<std::size_t>(r)].data(),
                                      wanted[static_cast<std::size_t>(r)].size()),
                          0)
                    << application.name;
            }
        }
    }
}

}  // namespace
