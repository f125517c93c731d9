// The operations of the vector layer against scalar code, in every variant and register width.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <set>

#include "support/images.hpp"
#include "support/simd_operations.hpp"
#include "support/variants.hpp"

namespace {

using namespace kuvtest;

using In = const unsigned char*;
using Out = unsigned char*;
using Reference = std::function<void(In a, In b, In c, int registerBytes, Out result)>;

template <class T>
int lanesIn(int bytes) { return bytes / static_cast<int>(sizeof(T)); }

// result[i] = f(a[i], b[i], c[i]), computed without loss and then cut to R.
template <class T, class R = T, class F>
Reference eachLane(F f) {
    return [f](In a, In b, In c, int bytes, Out result) {
        for (int i = 0; i < lanesIn<T>(bytes); ++i) {
            store(result, i, static_cast<R>(f(std::int64_t{load<T>(a, i)}, std::int64_t{load<T>(b, i)}, std::int64_t{load<T>(c, i)})));
        }
    };
}
template <class T, class R = T, class F>
Reference binary(F f) {
    return eachLane<T, R>([f](std::int64_t a, std::int64_t b, std::int64_t) { return f(a, b); });
}

template <class F>
Reference ofLongs(F f) {
    return [f](In a, In b, In, int bytes, Out result) {
        for (int i = 0; i < lanesIn<Kuv64u>(bytes); ++i) store(result, i, f(load<Kuv64u>(a, i), load<Kuv64u>(b, i)));
    };
}

// Both halves of each 16 bytes of the result, from f of 16 bytes of a and of b.
template <class T, class R>
Reference packed(int shift = sizeof(T) == 4 ? 1 : 0) {
    return [shift](In a, In b, In, int bytes, Out result) {
        constexpr int n = 16 / sizeof(T);
        const auto limited = [](std::int64_t v) {
            return static_cast<R>(std::clamp<std::int64_t>(v, std::numeric_limits<R>::min(), std::numeric_limits<R>::max()));
        };
        for (int half = 0; half < bytes / 16; ++half) {
            for (int i = 0; i < n; ++i) {
                store(result, half * 2 * n + i, limited(load<T>(a, half * n + i) >> shift));
                store(result, half * 2 * n + n + i, limited(load<T>(b, half * n + i) >> shift));
            }
        }
    };
}

Reference blended(int chosen) {
    return [chosen](In a, In b, In, int bytes, Out result) {
        for (int i = 0; i < lanesIn<Kuv16u>(bytes); ++i) store(result, i, load<Kuv16u>(chosen >> i % 8 & 1 ? b : a, i));
    };
}

// Lane i is lane from(i, lanes).
template <class T>
Reference reordered(int (*from)(int i, int lanes)) {
    return [from](In a, In, In, int bytes, Out result) {
        for (int i = 0; i < lanesIn<T>(bytes); ++i) store(result, i, load<T>(a, from(i, lanesIn<T>(bytes))));
    };
}

template <class T>
Reference halvesInterleaved() {
    return [](In a, In, In, int bytes, Out result) {
        constexpr int n = 16 / sizeof(T);
        for (int i = 0; i < lanesIn<T>(bytes); ++i) {
            const int place = i % n;
            store(result, i, load<T>(a, i - place + place / 2 + place % 2 * n / 2));
        }
    };
}

// The halves of each 16 bytes of a and b, lower (0) or upper (1), lane by lane in turn.
template <class T>
Reference halfInterleaved(int half) {
    return [half](In a, In b, In, int bytes, Out result) {
        constexpr int n = 16 / sizeof(T);
        for (int i = 0; i < lanesIn<T>(bytes); ++i) {
            store(result, i, load<T>(i % 2 == 0 ? a : b, i - i % n + half * n / 2 + i % n / 2));
        }
    };
}

template <class T>
Reference transposedBlock() {
    return [](In a, In, In, int bytes, Out result) {
        const int rows = lanesIn<T>(bytes), columns = lanesIn<T>(16);
        std::array<unsigned char, 16 * 32> block;
        for (int i = 0; i < 16 * rows; ++i) block[static_cast<std::size_t>(i)] = static_cast<unsigned char>(a[i % bytes] + i / bytes * 37);
        for (int i = 0; i < rows * columns; ++i) store(result, i, load<T>(block.data(), i % rows * columns + i / rows));
    };
}

template <class T>
Reference interleaved3() {
    return [](In a, In b, In c, int bytes, Out result) {
        for (int i = 0; i < lanesIn<T>(bytes); ++i) {
            store(result, 3 * i, load<T>(a, i));
            store(result, 3 * i + 1, load<T>(b, i));
            store(result, 3 * i + 2, load<T>(c, i));
        }
    };
}

// 0 for what is no number.
template <class T, class Operation>
Reference ofThree(Operation operation) {
    return [operation](In a, In b, In c, int bytes, Out result) {
        for (int i = 0; i < lanesIn<T>(bytes); ++i) {
            const T value = operation(load<T>(a, i), load<T>(b, i), load<T>(c, i));
            store(result, i, std::isnan(value) ? T{0} : value);
        }
    };
}
template <class T>
Reference fused(T ofProduct, T ofSum) {
    return ofThree<T>([=](T a, T b, T c) { return std::fma(ofProduct * a, b, ofSum * c); });
}
template <class T>
Reference unfused(T ofProduct, T ofSum) {
    return ofThree<T>([=](T a, T b, T c) {
        const T product = ofProduct * a * b;
        return product + ofSum * c;
    });
}

// Of the lanes in each eight bytes.
template <class T>
Reference sumsOf() {
    return [](In a, In, In, int bytes, Out result) {
        constexpr int count = 8 / sizeof(T);
        for (int i = 0; i < bytes / 8; ++i) {
            std::uint64_t sum = 0;
            for (int k = 0; k < count; ++k) sum += load<T>(a, count * i + k);
            store(result, i, sum);
        }
    };
}

template <class T>
Reference reversed() {
    return [](In a, In, In, int bytes, Out result) {
        for (int i = 0; i < lanesIn<T>(bytes); ++i) store(result, i, load<T>(a, lanesIn<T>(bytes) - 1 - i));
    };
}

template <class T>
Reference filled() {
    return [](In a, In, In, int bytes, Out result) {
        for (int i = 0; i < lanesIn<T>(bytes); ++i) store(result, i, load<T>(a));
    };
}

// A NaN among the operands is the result, made quiet.
template <class Compute>
Reference arithmetic(Compute compute) {
    return [compute](In a, In b, In, int bytes, Out result) {
        for (int i = 0; i < lanesIn<float>(bytes); ++i) {
            const float x = load<float>(a, i), y = load<float>(b, i);
            if (std::isnan(x) || std::isnan(y)) store(result, i, load<std::uint32_t>(std::isnan(x) ? a : b, i) | 0x00400000);
            else if (std::isnan(compute(x, y))) store(result, i, 0xFFC00000u);
            else store(result, i, compute(x, y));
        }
    };
}

template <class T>
using BitsOf = std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>;

// One of the operands, bit for bit.
template <class T>
Reference ofTwo(bool (*takesFirst)(T a, T b)) {
    return [takesFirst](In a, In b, In, int bytes, Out result) {
        for (int i = 0; i < lanesIn<T>(bytes); ++i) {
            store(result, i, load<BitsOf<T>>(takesFirst(load<T>(a, i), load<T>(b, i)) ? a : b, i));
        }
    };
}
template <class T>
Reference lesser() { return ofTwo<T>([](T a, T b) { return a < b; }); }
template <class T>
Reference greater() { return ofTwo<T>([](T a, T b) { return a > b; }); }

template <class Holds>
Reference comparison(Holds holds) {
    return [holds](In a, In b, In, int bytes, Out result) {
        for (int i = 0; i < lanesIn<float>(bytes); ++i) store(result, i, holds(load<float>(a, i), load<float>(b, i)) ? -1 : 0);
    };
}

template <class T>
Reference root() {
    return [](In a, In, In, int bytes, Out result) {
        constexpr int quietBit = std::numeric_limits<T>::digits - 2;
        for (int i = 0; i < lanesIn<T>(bytes); ++i) {
            const T x = load<T>(a, i);
            if (std::isnan(x)) store(result, i, load<BitsOf<T>>(a, i) | BitsOf<T>{1} << quietBit);
            else if (x < 0) store(result, i, ~BitsOf<T>{0} << quietBit);
            else store(result, i, std::sqrt(x));
        }
    };
}

void multiplyAddPairsOfBytes(In a, In b, In, int bytes, Out result) {
    for (int i = 0; i < bytes / 2; ++i) {
        const auto product = [&](int j) { return a[j] * ((b[j] & 0x7F) - 64); };
        store(result, i, static_cast<std::int16_t>(product(2 * i) + product(2 * i + 1)));
    }
}
void multiplyAddPairsOfWords(In a, In b, In, int bytes, Out result) {
    for (int i = 0; i < bytes / 4; ++i) {
        const auto product = [&](int j) { return std::int64_t{load<Kuv16s>(a, j)} * load<Kuv16s>(b, j); };
        store(result, i, static_cast<std::int32_t>(product(2 * i) + product(2 * i + 1)));
    }
}

// A NaN and what does not fit become the lowest integer.
Reference toIntegers(double (*cut)(double)) {
    return [cut](In a, In, In, int bytes, Out result) {
        for (int i = 0; i < lanesIn<float>(bytes); ++i) {
            const double x = cut(load<float>(a, i));
            store(result, i, x >= -0x1p31 && x < 0x1p31 ? static_cast<Kuv32s>(x) : std::numeric_limits<Kuv32s>::min());
        }
    };
}

template <class T>
auto lowProduct() { return binary<T>([](auto a, auto b) { return a * b; }); }
template <class T>
auto mean() { return binary<T>([](auto a, auto b) { return (a + b + 1) >> 1; }); }
template <class T>
auto sum() { return binary<T>([](auto a, auto b) { return a + b; }); }
template <class T>
auto difference() { return binary<T>([](auto a, auto b) { return a - b; }); }
template <class T>
auto differenceOr0() { return binary<T>([](auto a, auto b) { return a > b ? a - b : 0; }); }
template <class T>
auto isEqual() { return binary<T>([](auto a, auto b) { return a == b ? -1 : 0; }); }
template <class T>
auto isGreater() { return binary<T>([](auto a, auto b) { return a > b ? -1 : 0; }); }
template <class T>
auto smaller() { return binary<T>([](auto a, auto b) { return a < b ? a : b; }); }
template <class T>
auto larger() { return binary<T>([](auto a, auto b) { return a > b ? a : b; }); }
template <class T>
auto distance() { return binary<T, std::make_unsigned_t<T>>([](auto a, auto b) { return a > b ? a - b : b - a; }); }
auto magnitude() { return binary<Kuv32u>([](auto a, auto) { return a & 0x7FFFFFFF; }); }
template <class T>
auto left(int count) { return binary<T>([count](auto a, auto) { return a * (std::int64_t{1} << count); }); }
template <class T>
auto right(int count) { return binary<T>([count](auto a, auto) { return a >> count; }); }

Reference joinedWords(int wordBytes, int distance) {
    return [=](In a, In, In, int, Out result) {
        for (int i = 0; i < 16; ++i) result[i] = a[i / wordBytes * distance + i % wordBytes];
    };
}

Reference pairsOf(int first, int second) {
    return [=](In a, In b, In, int bytes, Out result) {
        for (int i = 0; i < lanesIn<float>(bytes); ++i) {
            const int lane = i / 4 * 4 + i % 2;
            store(result, i, i % 4 < 2 ? load<std::uint32_t>(a, lane + first) : load<std::uint32_t>(b, lane + second));
        }
    };
}

const std::map<std::string, Reference>& references() {
    static const std::map<std::string, Reference> all = {
        {"load Kuv8u", binary<Kuv8u>([](auto a, auto) { return a; })},
        {"stream Kuv8u", binary<Kuv8u>([](auto a, auto) { return a; })},
        {"loadParts Kuv8u", [](In a, In, In, int bytes, Out result) {
            for (int i = 0; i < bytes; ++i) result[i] = a[i ^ 16];
        }},
        {"loadParts of one Kuv8u", [](In a, In, In, int bytes, Out result) {
            for (int i = 0; i < bytes; ++i) result[i] = a[i % 16];
        }},
        {"loadWords of 4 Kuv8u", joinedWords(4, 3)}, {"loadWords of 8 Kuv8u", joinedWords(8, 6)},
        {"loadReversed Kuv8u", reversed<Kuv8u>()}, {"loadReversed Kuv16u", reversed<Kuv16u>()},
        {"reverseLanes Kuv8u", reordered<Kuv8u>([](int i, int) { return i ^ 15; })},
        {"reverseLanes Kuv16u", reordered<Kuv16u>([](int i, int) { return i ^ 7; })},
        {"storeParts Kuv8u", [](In a, In, In, int bytes, Out result) {
            for (int i = 0; i < bytes; ++i) result[i ^ 16] = a[i];
        }},
        {"storeHalves Kuv8u", binary<Kuv8u>([](auto a, auto) { return a; })},
        {"storeParts3 Kuv8u", [](In a, In b, In c, int bytes, Out result) {
            for (int i = 0; i < 3 * bytes; ++i) result[i] = std::array{a, b, c}[static_cast<std::size_t>(i / 16 % 3)][i / 48 * 16 + i % 16];
        }},
        {"joinTwelves Kuv8u", [](In a, In, In, int bytes, Out result) {
            const int parts = bytes / 16;
            for (int i = 0; i < bytes; ++i) result[i % 16 < 12 ? i / 16 * 12 + i % 16 : parts * 12 + i / 16 * 4 + i % 16 - 12] = a[i];
        }},
        {"storePartsOf four Kuv8u", [](In a, In b, In c, int bytes, Out result) {
            for (int i = 0; i < 4 * bytes; ++i) {
                result[i] = std::array{a, b, c, a}[static_cast<std::size_t>(i / 16 % 4)][i / 64 * 16 + i % 16];
            }
        }},
        {"storePartsOf six Kuv8u", [](In a, In b, In c, int bytes, Out result) {
            for (int i = 0; i < 6 * bytes; ++i) {
                result[i] = std::array{a, b, c, b, a, c}[static_cast<std::size_t>(i / 16 % 6)][i / 96 * 16 + i % 16];
            }
        }},
        {"shuffleBytes Kuv8u", [](In a, In b, In, int bytes, Out result) {
            for (int i = 0; i < bytes; ++i) result[i] = b[i] & 0x80 ? 0 : a[i / 16 * 16 + b[i] % 16];
        }},
        {"as Kuv8u", binary<Kuv8u>([](auto a, auto) { return a; })},
        {"fill Kuv8u", filled<Kuv8u>()}, {"fill Kuv16s", filled<Kuv16s>()}, {"fill Kuv32s", filled<Kuv32s>()},
        {"fill Kuv64u", filled<Kuv64u>()}, {"fillPairs Kuv16s", filled<Kuv32s>()},
        {"add Kuv8s", sum<Kuv8s>()}, {"add Kuv16s", sum<Kuv16s>()}, {"add Kuv32s", sum<Kuv32s>()},
        {"add Kuv64u", ofLongs([](Kuv64u a, Kuv64u b) { return a + b; })},
        {"sumsOfEight Kuv8u", sumsOf<Kuv8u>()}, {"sumsOfTwo Kuv32u", sumsOf<Kuv32u>()},
        {"sub Kuv8s", difference<Kuv8s>()}, {"sub Kuv16s", difference<Kuv16s>()}, {"sub Kuv32s", difference<Kuv32s>()},
        {"addSaturated Kuv16s", binary<Kuv16s>([](auto a, auto b) { return std::clamp<std::int64_t>(a + b, INT16_MIN, INT16_MAX); })},
        {"subSaturated Kuv16s", binary<Kuv16s>([](auto a, auto b) { return std::clamp<std::int64_t>(a - b, INT16_MIN, INT16_MAX); })},
        {"subSaturated Kuv8u", differenceOr0<Kuv8u>()}, {"subSaturated Kuv16u", differenceOr0<Kuv16u>()},
        {"average Kuv8u", mean<Kuv8u>()}, {"average Kuv16u", mean<Kuv16u>()},
        {"multiplyLow Kuv16s", lowProduct<Kuv16s>()}, {"multiplyLow Kuv16u", lowProduct<Kuv16u>()},
        {"multiplyLow Kuv32s", lowProduct<Kuv32s>()},
        {"multiplyRounded Kuv16s", binary<Kuv16s>([](auto a, auto b) {
             return static_cast<std::int64_t>(std::floor(static_cast<double>(a * b) / 32768 + 0.5));
         })},
        // In doubles: of integers GCC 12 makes the upper halves of unsigned products.
        {"multiplyHigh Kuv16s", binary<Kuv16s>([](auto a, auto b) {
             return static_cast<std::int64_t>(std::floor(static_cast<double>(a * b) / 65536));
         })},
        {"multiplyHigh Kuv16u", binary<Kuv16u>([](auto a, auto b) { return a * b >> 16; })},
        {"multiplyAddPairs Kuv16s", multiplyAddPairsOfWords}, {"multiplyAddPairs Kuv8u", multiplyAddPairsOfBytes},
        {"equal Kuv8u", isEqual<Kuv8u>()}, {"equal Kuv8s", isEqual<Kuv8s>()},
        {"equal Kuv16u", isEqual<Kuv16u>()}, {"equal Kuv16s", isEqual<Kuv16s>()},
        {"greater Kuv8s", isGreater<Kuv8s>()}, {"greater Kuv16s", isGreater<Kuv16s>()}, {"greater Kuv32s", isGreater<Kuv32s>()},
        {"minimum Kuv8u", smaller<Kuv8u>()}, {"minimum Kuv16s", smaller<Kuv16s>()},
        {"minimum Kuv16u", smaller<Kuv16u>()}, {"minimum Kuv32s", smaller<Kuv32s>()},
        {"maximum Kuv8u", larger<Kuv8u>()}, {"maximum Kuv16s", larger<Kuv16s>()},
        {"maximum Kuv16u", larger<Kuv16u>()}, {"maximum Kuv32s", larger<Kuv32s>()},
        {"absoluteDifference Kuv8u", distance<Kuv8u>()}, {"absoluteDifference Kuv16u", distance<Kuv16u>()},
        {"absoluteDifference Kuv16s", distance<Kuv16s>()},
        {"bitAnd Kuv8u", binary<Kuv8u>([](auto a, auto b) { return a & b; })},
        {"bitOr Kuv8u", binary<Kuv8u>([](auto a, auto b) { return a | b; })},
        {"bitXor Kuv8u", binary<Kuv8u>([](auto a, auto b) { return a ^ b; })},
        {"bitAndNot Kuv8u", binary<Kuv8u>([](auto a, auto b) { return ~a & b; })},
        {"select Kuv8u", eachLane<Kuv8u>([](auto a, auto b, auto c) { return a == b ? b : c; })},
        {"select Kuv32s", eachLane<Kuv32s>([](auto a, auto b, auto c) { return a > b ? b : c; })},
        {"shiftLeft<0> Kuv16s", left<Kuv16s>(0)}, {"shiftLeft<8> Kuv16s", left<Kuv16s>(8)}, {"shiftLeft<15> Kuv16s", left<Kuv16s>(15)},
        {"shiftLeft<0> Kuv32s", left<Kuv32s>(0)}, {"shiftLeft<8> Kuv32s", left<Kuv32s>(8)},
        {"shiftLeft<16> Kuv32s", left<Kuv32s>(16)}, {"shiftLeft<31> Kuv32s", left<Kuv32s>(31)},
        {"shiftLeft<32> Kuv64u", ofLongs([](Kuv64u a, Kuv64u) { return a << 32; })},
        {"shiftRight<0> Kuv16s", right<Kuv16s>(0)}, {"shiftRight<1> Kuv16s", right<Kuv16s>(1)}, {"shiftRight<2> Kuv16s", right<Kuv16s>(2)},
        {"shiftRight<8> Kuv16s", right<Kuv16s>(8)}, {"shiftRight<15> Kuv16s", right<Kuv16s>(15)},
        {"shiftRight<0> Kuv32s", right<Kuv32s>(0)}, {"shiftRight<1> Kuv32s", right<Kuv32s>(1)}, {"shiftRight<2> Kuv32s", right<Kuv32s>(2)},
        {"shiftRight<8> Kuv32s", right<Kuv32s>(8)}, {"shiftRight<16> Kuv32s", right<Kuv32s>(16)},
        {"shiftRight<31> Kuv32s", right<Kuv32s>(31)},
        {"shiftRight by 0 Kuv32s", right<Kuv32s>(0)}, {"shiftRight by 31 Kuv32s", right<Kuv32s>(31)},
        {"shiftRight<0> Kuv16u", right<Kuv16u>(0)}, {"shiftRight<8> Kuv16u", right<Kuv16u>(8)},
        {"shiftRight<15> Kuv16u", right<Kuv16u>(15)},
        {"shiftRight<0> Kuv32u", right<Kuv32u>(0)}, {"shiftRight<16> Kuv32u", right<Kuv32u>(16)},
        {"shiftRight<31> Kuv32u", right<Kuv32u>(31)},
        {"shiftRight<32> Kuv64u", ofLongs([](Kuv64u a, Kuv64u) { return a >> 32; })},
        {"interleaveLow Kuv8u", halfInterleaved<Kuv8u>(0)}, {"interleaveLow Kuv16u", halfInterleaved<Kuv16u>(0)},
        {"interleaveHigh Kuv8u", halfInterleaved<Kuv8u>(1)}, {"interleaveHigh Kuv16u", halfInterleaved<Kuv16u>(1)},
        {"loadWidened Kuv16u", [](In a, In, In, int bytes, Out result) {
            for (int i = 0; i < lanesIn<Kuv16u>(bytes); ++i) store(result, i, Kuv16u{a[i]});
        }},
        {"loadWidened Kuv32s", [](In a, In, In, int bytes, Out result) {
            for (int i = 0; i < lanesIn<Kuv32s>(bytes); ++i) store(result, i, Kuv32s{a[i]});
        }},
        {"loadWidened of words Kuv32s", [](In a, In, In, int bytes, Out result) {
            for (int i = 0; i < lanesIn<Kuv32s>(bytes); ++i) store(result, i, Kuv32s{load<Kuv16u>(a, i)});
        }},
        {"loadWidened of signed words Kuv32s", [](In a, In, In, int bytes, Out result) {
            for (int i = 0; i < lanesIn<Kuv32s>(bytes); ++i) store(result, i, Kuv32s{load<Kuv16s>(a, i)});
        }},
        {"pack Kuv16s", packed<Kuv16s, Kuv8s>()}, {"pack Kuv32s", packed<Kuv32s, Kuv16s>(0)},
        {"narrowed Kuv16s", [](In a, In b, In, int bytes, Out result) {
            for (int i = 0; i < bytes; ++i) {
                const int sample = load<Kuv16s>(i < bytes / 2 ? a : b, i % (bytes / 2));
                result[i] = static_cast<unsigned char>(std::clamp(sample, 0, 255));
            }
        }},
        {"narrowed Kuv32s", [](In a, In b, In c, int bytes, Out result) {
            for (int i = 0; i < bytes; ++i) {
                const In from = std::array{a, b, c, a}[static_cast<std::size_t>(i / (bytes / 4))];
                result[i] = static_cast<unsigned char>(std::clamp(load<Kuv32s>(from, i % (bytes / 4)), 0, 255));
            }
        }},
        {"narrowed to words Kuv32s", [](In a, In b, In, int bytes, Out result) {
            const int n = bytes / 4;
            for (int i = 0; i < 2 * n; ++i) {
                store(result, i, static_cast<Kuv16s>(std::clamp(load<Kuv32s>(i < n ? a : b, i % n), -32768, 32767)));
            }
        }},
        {"packUnsigned Kuv16s", packed<Kuv16s, Kuv8u>()}, {"packUnsigned Kuv32s", packed<Kuv32s, Kuv16u>()},
        {"interleaveHalves Kuv8u", halvesInterleaved<Kuv8u>()}, {"interleaveHalves Kuv16u", halvesInterleaved<Kuv16u>()},
        {"fillFrom<2> Kuv32s", reordered<Kuv32s>([](int i, int) { return i / 4 * 4 + 2; })},
        {"exchangeMiddle Kuv16s", reordered<Kuv16s>([](int i, int) { return i % 4 == 1 || i % 4 == 2 ? i ^ 3 : i; })},
        {"reverseUpperHalf Kuv16s", reordered<Kuv16s>([](int i, int) { return i & 4 ? i ^ 3 : i; })},
        {"interleaveAcross Kuv16s", reordered<Kuv16s>([](int i, int lanes) { return i / 2 + i % 2 * lanes / 2; })},
        {"blend<0xAA> Kuv16u", blended(0xAA)}, {"blend<0x49> Kuv16u", blended(0x49)}, {"blend<0x6> Kuv32u", blended(0x3C)},
        {"bitsOf Kuv8u", [](In a, In b, In, int bytes, Out result) {
            std::uint32_t bits = 0;
            for (int i = 0; i < bytes; ++i) bits |= std::uint32_t{a[i] == b[i]} << i;
            store(result, 0, bits);
        }},
        {"maskOf Kuv8u", [](In a, In, In, int bytes, Out result) {
            for (int i = 0; i < bytes; ++i) result[i] = load<std::uint32_t>(a) >> i & 1 ? 0xFF : 0;
        }},
        {"storeInterleaved3 Kuv8u", interleaved3<Kuv8u>()}, {"storeInterleaved3 Kuv16u", interleaved3<Kuv16u>()},
        {"storeInterleaved3 Kuv32u", interleaved3<Kuv32u>()},
        {"storeInterleaved4 Kuv8u", [](In a, In b, In c, int bytes, Out result) {
            for (int i = 0; i < bytes; ++i) {
                const unsigned char pixel[] = {a[i], b[i], c[i], static_cast<unsigned char>(a[i] ^ c[i])};
                std::memcpy(result + 4 * i, pixel, 4);
            }
        }},
        {"transposeBlock Kuv8u", transposedBlock<Kuv8u>()}, {"transposeBlock Kuv16u", transposedBlock<Kuv16u>()},
        {"add Kuv32f", arithmetic(std::plus<float>())}, {"single add Kuv32f", arithmetic(std::plus<float>())},
        {"single sub Kuv32f", arithmetic(std::minus<float>())}, {"single multiply Kuv32f", arithmetic(std::multiplies<float>())},
        {"divide Kuv32f", arithmetic(std::divides<float>())},
        {"fused plusProduct Kuv32f", fused<float>(1, 1)}, {"fused plusProduct Kuv64f", fused<double>(1, 1)},
        {"fused productMinus Kuv32f", fused<float>(1, -1)}, {"fused productMinus Kuv64f", fused<double>(1, -1)},
        {"fused minusProduct Kuv32f", fused<float>(-1, 1)}, {"fused minusProduct Kuv64f", fused<double>(-1, 1)},
        {"unfused plusProduct Kuv32f", unfused<float>(1, 1)}, {"unfused plusProduct Kuv64f", unfused<double>(1, 1)},
        {"unfused productMinus Kuv32f", unfused<float>(1, -1)}, {"unfused productMinus Kuv64f", unfused<double>(1, -1)},
        {"unfused minusProduct Kuv32f", unfused<float>(-1, 1)}, {"unfused minusProduct Kuv64f", unfused<double>(-1, 1)},
        {"single plusProduct Kuv32f", unfused<float>(1, 1)}, {"single plusProduct Kuv64f", unfused<double>(1, 1)},
        {"single productMinus Kuv32f", unfused<float>(1, -1)}, {"single minusProduct Kuv32f", unfused<float>(-1, 1)},
        {"lanePairs<1, 2> Kuv32f", pairsOf(1, 2)}, {"lanePairs<2, 0> Kuv32f", pairsOf(2, 0)},
        {"transposeFours Kuv32f", [](In a, In b, In c, int bytes, Out result) {
            for (int i = 0; i < lanesIn<float>(4 * bytes); ++i) {
                const int row = i / lanesIn<float>(bytes), lane = i % lanesIn<float>(bytes);
                store(result, i, load<std::uint32_t>(std::array{a, b, c, a}[static_cast<std::size_t>(lane % 4)], lane / 4 * 4 + row));
            }
        }},
        {"squareRoot Kuv32f", root<float>()}, {"single squareRoot Kuv32f", root<float>()}, {"single squareRoot Kuv64f", root<double>()},
        {"absolute Kuv32f", magnitude()}, {"single absolute Kuv32f", magnitude()},
        {"laneBits Kuv32f", [](In a, In, In, int bytes, Out result) {
            std::uint32_t bits = 0;
            for (int i = 0; i < lanesIn<float>(bytes); ++i) bits |= load<std::uint32_t>(a, i) >> 31 << i;
            store(result, 0, bits);
        }},
        {"storeTruncated Kuv32f", toIntegers([](double x) { return std::trunc(x); })},
        {"equal Kuv32f", comparison(std::equal_to<float>())}, {"unequal Kuv32f", comparison(std::not_equal_to<float>())},
        {"unordered Kuv32f", comparison([](float a, float b) { return std::isnan(a) || std::isnan(b); })},
        {"sub Kuv32f", arithmetic(std::minus<float>())}, {"multiply Kuv32f", arithmetic(std::multiplies<float>())},
        {"minimum Kuv32f", lesser<float>()}, {"maximum Kuv32f", greater<float>()},
        {"minimum Kuv64f", lesser<double>()}, {"maximum Kuv64f", greater<double>()},
        {"bitAnd Kuv32f", binary<Kuv32u>(std::bit_and<Kuv32u>())}, {"bitOr Kuv32f", binary<Kuv32u>(std::bit_or<Kuv32u>())},
        {"bitAndNot Kuv32f", binary<Kuv32u>([](Kuv32u a, Kuv32u b) { return ~a & b; })},
        {"greater Kuv32f", comparison(std::greater<float>())}, {"atLeast Kuv32f", comparison(std::greater_equal<float>())},
        {"asIntegers of atLeast Kuv32s", comparison(std::greater_equal<float>())},
        {"select Kuv32f", [](In a, In b, In c, int bytes, Out result) {
            for (int i = 0; i < lanesIn<float>(bytes); ++i) {
                store(result, i, load<std::uint32_t>(load<float>(a, i) > load<float>(b, i) ? b : c, i));
            }
        }},
        {"wholePart Kuv32f", [](In a, In, In, int bytes, Out result) {
            for (int i = 0; i < lanesIn<float>(bytes); ++i) {
                const float x = load<float>(a, i);
                store(result, i, x > -0x1p31f && x < 0x1p31f ? std::trunc(x) + 0.0f : -0x1p31f);
            }
        }},
        {"fill Kuv32f", filled<Kuv32u>()}, {"storeHalves Kuv32f", binary<Kuv8u>([](auto a, auto) { return a; })},
        {"stream Kuv32f", binary<Kuv8u>([](auto a, auto) { return a; })},
        {"toReals Kuv32s", [](In a, In, In, int bytes, Out result) {
            for (int i = 0; i < lanesIn<Kuv32s>(bytes); ++i) store(result, i, static_cast<float>(load<Kuv32s>(a, i)));
        }},
        {"truncated Kuv32s", toIntegers([](double x) { return std::trunc(x); })},
        {"rounded Kuv32s", toIntegers([](double x) { return std::nearbyint(x); })},
        {"inDoubles from integers Kuv32s", [](In a, In, In, int bytes, Out result) {
            for (int i = 0; i < lanesIn<Kuv32s>(bytes); ++i) store(result, i, static_cast<float>(load<Kuv32s>(a, i) * 0.1 - 7.0));
        }},
        {"inDoubles to integers Kuv32s", toIntegers([](double x) { return std::trunc(x == std::trunc(x) && x < 0x1p31 ? x - 0.5 : x); })},
    };
    return all;
}

SimdOperations operationsOf(const Variant& variant) {
    static constexpr SimdOperations (*all[])() = {
#define KUV_VARIANT_ROW(code, index, set, features, flags) simdOperations_##code,
#include "core/variants.def"
#undef KUV_VARIANT_ROW
    };
    return all[variant.index]();
}

constexpr int longest = 32;
using Operand = std::array<unsigned char, longest>;

// Random bytes, or lanes of one size from among the values at which arithmetic tends to break.
Operand draw(Random& random) {
    Operand operand;
    const int size = 1 << below(random, 4);  // 8 bytes: random ones
    for (int at = 0; at < longest; at += size) {
        const auto sign = std::uint64_t{1} << (8 * size - 1);
        const std::uint64_t values[] = {0, 1, 2, sign - 1, sign, sign + 1, ~std::uint64_t{0}, ~std::uint64_t{1}, sign >> 1, 0xFF,
                                        0x100, 0x8000, 0xFFFF, 0x10000, random(), 0x3F800000, 0x7F800000, 0xFF800000, 0x7FC00001,
                                        0x7FA00000, 0x00000001, 0x80000000};
        const std::uint64_t value = size == 8 || oneIn(random, 4) ? random() : values[below(random, std::size(values))];
        std::memcpy(operand.data() + at, &value, static_cast<std::size_t>(size));
    }
    return operand;
}

// Where two NaNs meet, which one is kept is not stated.
void avoidPairsOfNaNs(const Operand& a, Operand& b) {
    for (int i = 0; i < longest / 4; ++i) {
        if (std::isnan(load<float>(a.data(), i)) && std::isnan(load<float>(b.data(), i))) store(b.data(), i, 1.0f);
    }
}

std::string inHex(const unsigned char* bytes, int count) {
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (int i = 0; i < count; ++i) {
        text += digits[bytes[i] >> 4];
        text += digits[bytes[i] & 15];
        if (i % 4 == 3) text += ' ';
    }
    return text;
}

class Simd : public VariantTest {};

KUV_FOR_EACH_VARIANT(Simd);

TEST_P(Simd, OperationsAreThoseOfScalarCode) {
    Random random(GetParam().index);
    const SimdOperations operations = operationsOf(GetParam());
    for (int o = 0; o < operations.count; ++o) {
        const SimdOperation& operation = operations.list[o];
        const auto reference = references().find(operation.name);
        ASSERT_NE(reference, references().end()) << "no reference for " << operation.name;
        for (int trial = 0; trial < 2000; ++trial) {
            Operand a = draw(random), b = draw(random), c = draw(random);
            if (oneIn(random, 8)) b = a;
            for (unsigned char& each : b) {
                if (oneIn(random, 8)) each = a[static_cast<std::size_t>(&each - b.data())];
            }
            avoidPairsOfNaNs(a, b);
            // At any address, and nothing else written.
            std::array<std::array<unsigned char, 2 * longest>, 3> sources;
            std::array<unsigned char, 18 * longest> wanted;
            wanted.fill(0xA5);
            auto got = wanted;
            const int at[] = {below(random, longest), below(random, longest), below(random, longest)}, to = below(random, longest);
            std::memcpy(sources[0].data() + at[0], a.data(), longest);
            std::memcpy(sources[1].data() + at[1], b.data(), longest);
            std::memcpy(sources[2].data() + at[2], c.data(), longest);
            operation.run(sources[0].data() + at[0], sources[1].data() + at[1], sources[2].data() + at[2], got.data() + to);
            reference->second(a.data(), b.data(), c.data(), operation.registerBytes, wanted.data() + to);
            if (got == wanted) continue;
            ADD_FAILURE() << GetParam() << ", " << operation.name << ", " << operation.registerBytes << " bytes at offset " << to << "\na "
                          << inHex(a.data(), longest) << "\nb " << inHex(b.data(), longest) << "\nc " << inHex(c.data(), longest)
                          << "\ngot    " << inHex(got.data(), static_cast<int>(got.size())) << "\nwanted "
                          << inHex(wanted.data(), static_cast<int>(wanted.size()));
            break;
        }
    }
}

// Each reference is tested in each width that the variant has, and no other operation is listed.
TEST_P(Simd, EveryOperationIsListed) {
    const SimdOperations operations = operationsOf(GetParam());
    for (const int bytes : {16, 32}) {
        std::set<std::string> listed, wanted;
        for (int o = 0; o < operations.count; ++o) {
            if (operations.list[o].registerBytes == bytes) listed.insert(operations.list[o].name);
        }
        for (const auto& [name, reference] : references()) {
            const auto begins = [&name = name](const char* with) { return name.rfind(with, 0) == 0; };
            const bool real = name.find("32f") != std::string::npos || name.find("64f") != std::string::npos;
            if (begins("single") || begins(GetParam().isH9() ? "unfused" : "fused")) continue;
            const char* const first = bytes == 32 ? (real ? "g9" : "h9") : begins("shuffleBytes") ? "s8" : "px";
            if (GetParam().index >= variantOf(first).index) wanted.insert(name);
        }
        EXPECT_EQ(listed, wanted) << bytes << " bytes";
    }
}

}  // namespace
