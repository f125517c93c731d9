// Fourier transforms: results against double precision, and the memory that they touch.
#include <bit>
#include <complex>
#include <map>
#include <memory>

#include "support/fuzzing.hpp"
#include "support/statuses.hpp"

namespace {

using namespace kuvtest;
using Complex = std::complex<double>;
using Signal = std::vector<Complex>;

// ---- The reference

struct Roots {
    explicit Roots(std::size_t length) : of(length) {
        const long double turn = 2 * 3.14159265358979323846264338327950288L;
        for (std::size_t k = 0; k < length; ++k) {
            const long double angle = turn * static_cast<long double>(k) / static_cast<long double>(length);
            of[k] = Complex(static_cast<double>(std::cos(angle)), -static_cast<double>(std::sin(angle)));
        }
    }
    Signal of;
};

std::size_t leastFactor(std::size_t length) {
    for (std::size_t p = 2; p * p <= length; ++p) {
        if (length % p == 0) return p;
    }
    return length;
}

Complex product(Complex a, Complex b) {
    return {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real()};
}

void transform(const Complex* src, std::size_t step, Complex* dst, std::size_t length, const Roots& roots) {
    if (length == 1) {
        *dst = *src;
        return;
    }
    const std::size_t whole = roots.of.size(), radix = leastFactor(length), part = length / radix, unit = whole / length;
    for (std::size_t a = 0; a < radix; ++a) transform(src + a * step, step * radix, dst + a * part, part, roots);
    if (radix == 2) {
        for (std::size_t k = 0; k < part; ++k) {
            const Complex even = dst[k], odd = product(dst[part + k], roots.of[k * unit]);
            dst[k] = even + odd;
            dst[part + k] = even - odd;
        }
        return;
    }
    Signal values(radix), inner(radix);
    for (std::size_t a = 0; a < radix; ++a) inner[a] = roots.of[a * (whole / radix)];
    for (std::size_t k = 0; k < part; ++k) {
        for (std::size_t a = 0; a < radix; ++a) values[a] = product(dst[a * part + k], roots.of[a * k * unit]);
        for (std::size_t j = 0; j < radix; ++j) {
            Complex sum = 0;
            for (std::size_t a = 0, index = 0; a < radix; ++a) {
                sum += product(values[a], inner[index]);
                index += j;
                if (index >= radix) index -= radix;
            }
            dst[j * part + k] = sum;
        }
    }
}

// A signal of single-precision values and its transform.
struct Sample {
    std::vector<Kuv32f> re, im;
    Signal wanted;
};
const Sample& sampleOf(int length) {
    static std::map<int, Sample> samples;
    if (samples.size() > 700) samples.clear();
    Sample& sample = samples[length];
    if (!sample.re.empty()) return sample;
    Random random(static_cast<unsigned>(length));
    const auto value = [&] { return static_cast<Kuv32f>(between(random, -100000, 100000)) / 1000; };
    Signal src;
    for (int i = 0; i < length; ++i) {
        sample.re.push_back(value());
        sample.im.push_back(value());
        src.emplace_back(sample.re.back(), sample.im.back());
    }
    sample.wanted.resize(src.size());
    transform(src.data(), 1, sample.wanted.data(), src.size(), Roots(src.size()));
    return sample;
}

// The bound on the relative error, in units of 2^-24.
double bound(int length) {
    int largest = 1;
    for (std::size_t rest = static_cast<std::size_t>(length); rest > 1; rest /= leastFactor(rest)) {
        largest = std::max(largest, static_cast<int>(leastFactor(rest)));
    }
    const bool chirp = largest > 150 || (largest > 50 && length % 4 != 0);
    const double smooth = 3 + 0.3 * std::log2(chirp ? 4.0 * length : length);
    return chirp ? 2 * smooth : largest > 13 ? smooth + 0.4 * std::sqrt(largest) : smooth;
}

// ---- Plans and calls

struct Place {
    Guard guard = Guard::end;
    int gap = 0;
};
Image imageOf(const char* name, int bytes, Place at, std::uint64_t seed) {
    return Image(name, {.rowBytes = bytes, .rows = 1, .step = bytes, .guard = at.guard, .gap = at.gap, .elementBytes = 4}, seed);
}

// All blocks have just the sizes that are asked for.
class Plan {
public:
    explicit Plan(int length, int flag = kuvDftScaleNone, Place at = {}) : length_(length), at_(at) {
        Kuv32s spec = 0, init = 0;
        EXPECT_EQ(kuvsDFTGetSize_C_32f(length, flag, 3, &spec, &init, &workBytes_), kuvStatusOk);
        spec_ = std::make_unique<Image>("plan",
                                        Geometry{.rowBytes = spec, .rows = 1, .step = spec, .guard = at.guard, .gap = at.gap}, 1);
        const Image buffer = imageOf("init buffer", init, {at.guard, (at.gap * 7) % 64}, 2);
        EXPECT_EQ(watched([&] { return kuvsDFTInit_C_32f(length, flag, 3, spec_->row(), init > 0 ? buffer.row() : nullptr); }),
                  kuvStatusOk);
        before_ = spec_->bytes();
    }

    KuvStatus run(const Kuv32f* srcRe, const Kuv32f* srcIm, Kuv32f* dstRe, Kuv32f* dstIm) const {
        const Image work = imageOf("buffer", workBytes_, {at_.guard, (at_.gap * 5) % 64}, 3);
        return watched([&] {
            return kuvsDFTFwd_CToC_32f(srcRe, srcIm, dstRe, dstIm, spec_->row(), workBytes_ > 0 ? work.row<Kuv8u>() : nullptr);
        });
    }

    int length() const { return length_; }
    int workBytes() const { return workBytes_; }
    const Kuv8u* spec() const { return spec_->row(); }
    std::string change() const { return spec_->difference(before_); }

private:
    int length_;
    Place at_;
    Kuv32s workBytes_ = 0;
    std::unique_ptr<Image> spec_;
    Bytes before_;
};

struct Result {
    std::vector<Kuv32f> re, im;
    friend bool operator==(const Result& a, const Result& b) {
        return std::memcmp(a.re.data(), b.re.data(), 4 * a.re.size()) == 0 &&
               std::memcmp(a.im.data(), b.im.data(), 4 * a.im.size()) == 0;
    }
};

double scaleOf(int flag, int length) {
    return flag == kuvDftScaleForward ? 1.0 / length : flag == kuvDftScaleBoth ? 1 / std::sqrt(double(length)) : 1;
}

enum InPlace { neither, real, imaginary, both };

class DFT : public VariantTest {
protected:
    Result resultOf(const Plan& plan, InPlace inPlace = neither, Place at = {}) {
        const int bytes = 4 * plan.length();
        const Sample& sample = sampleOf(plan.length());
        const Image srcRe = imageOf("srcRe", bytes, at, 4), srcIm = imageOf("srcIm", bytes, at, 5);
        const Image otherRe = imageOf("dstRe", bytes, at, 6), otherIm = imageOf("dstIm", bytes, at, 7);
        const Image& dstRe = inPlace & real ? srcRe : otherRe;
        const Image& dstIm = inPlace & imaginary ? srcIm : otherIm;
        std::memcpy(srcRe.row(), sample.re.data(), static_cast<std::size_t>(bytes));
        std::memcpy(srcIm.row(), sample.im.data(), static_cast<std::size_t>(bytes));
        const Bytes reBefore = srcRe.bytes(), imBefore = srcIm.bytes(), dstReBefore = dstRe.bytes(), dstImBefore = dstIm.bytes();
        EXPECT_EQ(plan.run(srcRe.row<Kuv32f>(), srcIm.row<Kuv32f>(), dstRe.row<Kuv32f>(), dstIm.row<Kuv32f>()), kuvStatusOk);
        EXPECT_EQ(plan.change(), "");
        if (!(inPlace & real)) { EXPECT_EQ(srcRe.difference(reBefore), ""); }
        if (!(inPlace & imaginary)) { EXPECT_EQ(srcIm.difference(imBefore), ""); }
        EXPECT_EQ(dstRe.strayWrite(dstReBefore), "");
        EXPECT_EQ(dstIm.strayWrite(dstImBefore), "");
        Result result = {std::vector<Kuv32f>(sample.re.size()), std::vector<Kuv32f>(sample.re.size())};
        std::memcpy(result.re.data(), dstRe.row(), static_cast<std::size_t>(bytes));
        std::memcpy(result.im.data(), dstIm.row(), static_cast<std::size_t>(bytes));
        return result;
    }

    void expectClose(int length, const Result& result, double scale) {
        const Sample& sample = sampleOf(length);
        double error = 0, power = 0;
        for (std::size_t k = 0; k < sample.wanted.size(); ++k) {
            const Complex wanted = sample.wanted[k] * scale;
            error += std::norm(Complex(result.re[k], result.im[k]) - wanted);
            power += std::norm(wanted);
        }
        EXPECT_LE(std::sqrt(error / power) * 0x1p24, bound(length)) << GetParam() << ", length " << length;
    }

    void expectTransform(int length, int flag = kuvDftScaleNone, InPlace inPlace = neither, Place at = {}) {
        SCOPED_TRACE(testing::Message() << GetParam() << ", length " << length << ", flag " << flag << ", in place " << inPlace);
        const Plan plan(length, flag, at);
        expectClose(length, resultOf(plan, inPlace, {at.guard, 4 * at.gap}), scaleOf(flag, length));
    }
};

KUV_FOR_EACH_VARIANT(DFT);

// Every path, all kinds of factors, groups that fit the cache and such that do not.
constexpr int lengthsOfEachPath[] = {1,    2,    3,    7,    9,    12,   15,   16,   17,   18,    23,    32,
                                     47,   48,   53,   60,   64,   73,   77,   79,   96,   121,   128,   209,
                                     256,  289,  404,  512,  596,  625,  1000, 1009, 1024, 1155,  1331,  1920,
                                     2048, 2209, 2401, 3000, 4096, 5003, 5329, 6561, 8192, 10368, 11025, 16384};

TEST_P(DFT, EveryLengthTo600) {
    for (int length = 1; length <= 600 && !HasFailure(); ++length) {
        expectTransform(length, 1 << length % 4, static_cast<InPlace>(length / 4 % 4),
                        {length / 16 % 2 != 0 ? Guard::begin : Guard::end, length % 64});
    }
}

TEST_P(DFT, EveryPath) {
    for (const int length : lengthsOfEachPath) {
        for (const int flag : {1, 2, 4, 8}) expectTransform(length, flag);
        if (HasFailure()) return;
    }
}

TEST_P(DFT, LongLengths) {
    for (const int length : {10007, 16807, 19321, 20449, 25000, 44100, 46656, 50653, 52488, 65383, 65536 + 4, 77077, 90000}) {
        if (sanitized && length > 30000) return;
        expectTransform(length, kuvDftScaleForward, length % 2 != 0 ? both : neither, {Guard::begin, 9});
    }
}

TEST_P(DFT, EveryPowerOfTwo) {
    for (int order = 0; order <= (sanitized ? 16 : 22); ++order) {
        expectTransform(1 << order, order % 2 != 0 ? kuvDftScaleForward : kuvDftScaleNone);
        if (order != 20 && order != 21) expectTransform(1 << order, order % 2 != 0 ? kuvDftScaleBoth : kuvDftScaleInverse, both);
    }
}

// Splits within splits. The transform of some impulses is known.
TEST_P(DFT, SplitTwice) {
    const int order = GetParam().isPx() ? 23 : GetParam().isW7() ? 24 : 0;
    if (order == 0 || sanitized) GTEST_SKIP();
    const int length = 1 << order;
    const Plan plan(length);
    std::vector<Kuv32f> re(static_cast<std::size_t>(length)), im(re.size());
    std::vector<std::pair<std::size_t, Complex>> impulses;
    Random random(1);
    for (int i = 0; i < 20; ++i) {
        const std::size_t n = random() % re.size();
        impulses.emplace_back(n, Complex(i + 1, 3 - i));
        re[n] += static_cast<Kuv32f>(i + 1);
        im[n] += static_cast<Kuv32f>(3 - i);
    }
    ASSERT_EQ(plan.run(re.data(), im.data(), re.data(), im.data()), kuvStatusOk);
    for (int i = 0; i < 2000; ++i) {
        const std::size_t k = random() % re.size();
        Complex wanted = 0;
        for (const auto& [n, value] : impulses) {
            wanted += value * std::polar(1.0, -2 * 3.14159265358979323846 * static_cast<double>(n * k % re.size()) /
                                                  static_cast<double>(re.size()));
        }
        ASSERT_LE(std::abs(Complex(re[k], im[k]) - wanted), 1e-4) << k;
    }
}

TEST_P(DFT, InPlaceInEitherPlane) {
    for (const int length : lengthsOfEachPath) {
        const Plan plan(length, kuvDftScaleBoth);
        const Result wanted = resultOf(plan);
        for (const InPlace inPlace : {real, imaginary, both})
            EXPECT_TRUE(resultOf(plan, inPlace) == wanted) << length << ", in place " << inPlace;
    }
    if (sanitized) return;
    const Plan plan(1 << 19);
    const Result wanted = resultOf(plan);
    for (const InPlace inPlace : {real, imaginary, both})
        EXPECT_TRUE(resultOf(plan, inPlace) == wanted) << "in place " << inPlace;
}

TEST_P(DFT, AnyAddress) {
    for (const int length : {8, 16, 32, 37, 60, 77, 101, 256, 1000, 2048}) {
        const Result wanted = resultOf(Plan(length));
        for (int gap = 0; gap < 64; ++gap) {
            for (const Guard guard : {Guard::end, Guard::begin}) {
                const Plan plan(length, kuvDftScaleNone, {guard, gap});
                ASSERT_TRUE(resultOf(plan, neither, {guard, gap}) == wanted) << "length " << length << ", gap " << gap;
            }
        }
    }
}

TEST_P(DFT, SimpleSignals) {
    for (const int length : {1, 5, 16, 17, 60, 101, 128, 1000, 4096}) {
        const Plan plan(length);
        const auto count = static_cast<std::size_t>(length);
        std::vector<Kuv32f> one(count, 1), none(count, 0), re(count), im(count);
        ASSERT_EQ(plan.run(one.data(), none.data(), re.data(), im.data()), kuvStatusOk);
        for (std::size_t k = 0; k < count; ++k) {
            EXPECT_NEAR(re[k], k == 0 ? length : 0, 1e-6 * length) << length;
            EXPECT_NEAR(im[k], 0, 1e-6 * length) << length;
        }
        std::fill(one.begin() + 1, one.end(), 0.0f);
        ASSERT_EQ(plan.run(none.data(), one.data(), re.data(), im.data()), kuvStatusOk);
        for (std::size_t k = 0; k < count; ++k) {
            EXPECT_NEAR(re[k], 0, 1e-6) << length;
            EXPECT_NEAR(im[k], 1, 1e-6) << length;
        }
    }
}

TEST_P(DFT, OneValue) {
    for (const int flag : {1, 2, 4, 8}) {
        const Plan plan(1, flag);
        const Kuv32f re = 1.2345678f, im = -0.1f;
        Kuv32f dst[2] = {};
        ASSERT_EQ(plan.run(&re, &im, &dst[0], &dst[1]), kuvStatusOk);
        EXPECT_EQ(dst[0], re);
        EXPECT_EQ(dst[1], im);
    }
}

// Real and imaginary parts exchanged, it is the inverse.
TEST_P(DFT, ThereAndBack) {
    for (const int length : lengthsOfEachPath) {
        const Sample& sample = sampleOf(length);
        const Plan plan(length, kuvDftScaleBoth);
        Result result = {sample.re, sample.im};
        ASSERT_EQ(plan.run(result.re.data(), result.im.data(), result.re.data(), result.im.data()), kuvStatusOk);
        ASSERT_EQ(plan.run(result.im.data(), result.re.data(), result.im.data(), result.re.data()), kuvStatusOk);
        double error = 0;
        for (std::size_t i = 0; i < sample.re.size(); ++i) {
            error =
                std::max({error, std::abs(double(result.re[i]) - sample.re[i]), std::abs(double(result.im[i]) - sample.im[i])});
        }
        EXPECT_LE(error, 1e-3) << length;
    }
}

TEST_P(DFT, WhereTheBufferMayBeNull) {
    for (int length = 1; length <= 2048; length += length < 70 ? 1 : length) {
        const Plan plan(length);
        const int order = (length & (length - 1)) == 0 ? std::countr_zero(static_cast<unsigned>(length)) : 99;
        const bool free = length < 17 || order <= (GetParam().isPx() ? 10 : GetParam().hasAVX() ? 6 : 5);
        EXPECT_EQ(plan.workBytes() == 0, free) << length;
        std::vector<Kuv32f> re(static_cast<std::size_t>(length)), im(re.size());
        EXPECT_EQ(kuvsDFTFwd_CToC_32f(re.data(), im.data(), re.data(), im.data(), plan.spec(), nullptr),
                  free ? kuvStatusOk : kuvStatusNullPtr)
            << length;
    }
}

alignas(64) constexpr Kuv32s strangers[][16] = {{13}, {5}, {4}, {0}, {15}, {-14}};
Kuv8u* stranger(int index) { return reinterpret_cast<Kuv8u*>(const_cast<Kuv32s*>(strangers[index])); }

struct RunArguments {
    std::tuple<const Kuv32f*, const Kuv32f*, Kuv32f*, Kuv32f*, const Kuv8u*, Kuv8u*> operator()(Draw& draw) const {
        const Kuv32s length = 100;
        Kuv32s spec, init, work;
        EXPECT_EQ(kuvsDFTGetSize_C_32f(length, 8, 0, &spec, &init, &work), kuvStatusOk);
        const auto bytes = [&](int count) { return draw.image<Kuv8u>(Role::scratch, count, 1, count).row<Kuv8u>(); };
        const auto plane = [&](Role role) { return draw.image<Kuv32f>(role, length, 1, 4 * length).row<Kuv32f>(); };
        Kuv8u *const plan = bytes(spec), *const buffer = bytes(work);
        EXPECT_EQ(kuvsDFTInit_C_32f(length, 8, 0, plan, bytes(init)), kuvStatusOk);
        const Kuv32f *const re = plane(Role::source), *const im = plane(Role::source);
        Kuv32f* const toRe = plane(Role::output);
        return {re, im, toRe, plane(Role::output), plan, buffer};
    }
};
// Any length, in place or not. The variants' orders of operations differ, so what is compared is as close as their bounds make it: no
// value is further off than all errors together.
struct TransformArguments {
    static int length(Random& random) {
        if (oneIn(random, 2)) return between(random, 1, 200);
        if (oneIn(random, 2)) return lengthsOfEachPath[below(random, static_cast<int>(std::size(lengthsOfEachPath)))];
        if (oneIn(random, 2)) return between(random, 1, 6000);
        int product = 1;
        for (int i = 0; i < 12 && product < 200; ++i) product *= between(random, 2, 20);
        return product;
    }

    std::tuple<const Kuv32f*, const Kuv32f*, Kuv32f*, Kuv32f*, const Kuv8u*, Kuv8u*> operator()(Draw& draw) const {
        const int count = length(draw.random), flag = 1 << below(draw.random, 4);
        const int inPlace = oneIn(draw.random, 2) ? neither : below(draw.random, 4);
        Kuv32s specBytes = 0, initBytes = 0, workBytes = 0;
        EXPECT_EQ(kuvsDFTGetSize_C_32f(count, flag, 0, &specBytes, &initBytes, &workBytes), kuvStatusOk);
        const auto block = [&](Role role, int bytes) {
            const Image& image = draw.image<Kuv8u>(role, std::max(bytes, 1), 1, 0);
            return bytes > 0 ? image.row() : nullptr;
        };
        Kuv8u *const spec = block(Role::record, specBytes), *const init = block(Role::scratch, initBytes);
        EXPECT_EQ(watched([&] { return kuvsDFTInit_C_32f(count, flag, 0, spec, init); }), kuvStatusOk);
        Kuv8u* const work = block(Role::scratch, workBytes);

        const auto tolerance = std::make_shared<double>(0);
        const auto close = [tolerance](const void* got, const void* wanted) {
            return *tolerance == HUGE_VAL || std::abs(double(load<Kuv32f>(got)) - load<Kuv32f>(wanted)) <= *tolerance;
        };
        double squares = 0;
        const auto plane = [&](Role role) {
            const Image& image = draw.image<Kuv32f>(role, count, 1, 0, close);
            if (role != Role::output) {
                for (int i = 0; i < count; ++i) squares += std::norm(load<Kuv32f>(image.row(), i));
            }
            return image.row<Kuv32f>();
        };
        Kuv32f* const srcRe = plane(inPlace & real ? Role::inOut : Role::source);
        Kuv32f* const srcIm = plane(inPlace & imaginary ? Role::inOut : Role::source);
        Kuv32f* const dstRe = inPlace & real ? srcRe : plane(Role::output);
        Kuv32f* const dstIm = inPlace & imaginary ? srcIm : plane(Role::output);
        const bool inRange = squares == 0 || (squares > 1e-20 && squares < 1e30);
        *tolerance = inRange ? 4 * bound(count) * 0x1p-24 * std::sqrt(count * squares) * scaleOf(flag, count) : HUGE_VAL;
        return {srcRe, srcIm, dstRe, dstIm, spec, work};
    }
};
KUV_FUZZED(px, kuvsDFTFwd_CToC_32f, TransformArguments{});
KUV_CHECKS(kuvsDFTFwd_CToC_32f, call(RunArguments{}), check(kuvStatusNullPtr, null<4>()),
           check(kuvStatusBadContext, set<4>(stranger(0)), set<4>(stranger(1)), set<4>(stranger(2)), set<4>(stranger(3)),
                 set<4>(stranger(4)), set<4>(stranger(5))),
           check(kuvStatusNullPtr, null<0>(), null<1>(), null<2>(), null<3>()), check(kuvStatusNullPtr, null<5>()));

}  // namespace
