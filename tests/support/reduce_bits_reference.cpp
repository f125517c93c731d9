#include "support/reduce_bits_reference.hpp"

#include <algorithm>
#include <cmath>

namespace kuvtest {

namespace {

constexpr std::uint64_t wordValues = std::uint64_t{1} << 32;

// The words as numbers from 0 to 2^32 - 1, but for the borrow.
class Uniform {
public:
    Uniform(float low, float high)
        : scale_((static_cast<double>(high) - static_cast<double>(low)) / 4294967296.0),
          offset_((static_cast<double>(high) + static_cast<double>(low)) / 2) {}

    double next() {
        const std::int64_t sum = asSigned((wordValues + words_[1] - words_[2] + static_cast<std::uint64_t>(borrow_)) % wordValues);
        const std::int64_t fresh = sum < 0 ? sum - 18 : sum;
        words_[2] = words_[1];
        words_[1] = words_[0];
        words_[0] = static_cast<std::uint64_t>(fresh + 2 * static_cast<std::int64_t>(wordValues)) % wordValues;
        borrow_ = sum < 0 ? -1 : 0;
        congruential_ = (congruential_ * 69069 + 1013904243) % wordValues;
        return static_cast<double>(asSigned((words_[0] + congruential_) % wordValues)) * scale_ + offset_;
    }

private:
    static std::int64_t asSigned(std::uint64_t word) {
        return static_cast<std::int64_t>(word) - (word >= wordValues / 2 ? static_cast<std::int64_t>(wordValues) : 0);
    }

    double scale_, offset_;
    std::uint64_t congruential_ = 1131199209;
    std::uint64_t words_[3] = {0, 1013904243, (std::uint64_t{1013904243} * 69069 + 1013904243) % wordValues};  // B, C, D
    std::int64_t borrow_ = -1;
};

constexpr int matrix[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};
float matrixAt(int x, int y) { return static_cast<float>(matrix[y % 4][x % 4]) / 15.0f; }

struct Tables {
    NoiseTables tables;
    float at(int x, int y) const {
        return tables.noises[static_cast<std::size_t>((tables.indices[static_cast<std::size_t>(x % 1024)] + 2 * y + x) % 1024)];
    }
};

// Errors of all rows of all channels one after the other; what lies outside is 0.
template <class Real>
class Errors {
public:
    Errors(int width, int rows) : width_(width), values_(static_cast<std::size_t>(width) * static_cast<std::size_t>(rows)) {}
    Real operator()(int x, int row) const {
        return x < 0 || x >= width_ || row < 0 ? 0 : static_cast<Real>(values_[index(x, row)]);
    }
    void set(int x, int row, float value) { values_[index(x, row)] = value; }

private:
    std::size_t index(int x, int row) const { return static_cast<std::size_t>(static_cast<std::ptrdiff_t>(row) * width_ + x); }
    int width_;
    std::vector<float> values_;
};

int toByte(int value) { return std::clamp(value, 0, 255); }

// `result` is called with the sample at (x, y) of each channel, the place of it and its row in the sequence of all channels' rows.
template <class Result>
std::vector<Kuv8u> forEachSample(const Reduction& r, const std::vector<Kuv16u>& src, std::vector<Kuv8u> dst, Result result) {
    for (int c = 0; c < r.channels(); ++c) {
        for (int y = 0; y < r.size.height; ++y) {
            for (int x = 0; x < r.size.width; ++x) {
                const auto i = static_cast<std::size_t>((static_cast<std::ptrdiff_t>(y) * r.size.width + x) * r.pixelSamples + c);
                dst[i] = static_cast<Kuv8u>(result(src[i], x, y, c * r.size.height + y));
            }
        }
    }
    return dst;
}

}  // namespace

NoiseTables noiseTables(const Reduction& r) {
    NoiseTables tables;
    Uniform integers(0, 1024);
    for (int i = 0; i < 1024; ++i) tables.indices.push_back(static_cast<int>(std::nearbyint(integers.next())));
    const double step = static_cast<double>(static_cast<float>(65535.0 / (r.levels - 1)));
    const bool ordered = r.ditherType == kuvDitherOrdered4x4;
    const double low = ordered ? -r.noise / 100.0 : (50 - r.noise) * step / 100;
    const double high = ordered ? r.noise / 100.0 : (50 + r.noise) * step / 100;
    Uniform reals(static_cast<float>(low), static_cast<float>(high));
    for (int i = 0; i < 1024; ++i) tables.noises.push_back(static_cast<float>(reals.next()));
    return tables;
}

std::vector<Kuv8u> reducedInDoubles(const Reduction& r, const std::vector<Kuv16u>& src, const std::vector<Kuv8u>& before) {
    const double n = r.levels - 1;
    if (r.ditherType == kuvDitherOff) {
        return forEachSample(r, src, before, [&](int sample, int, int, int) {
            const double x = sample / 65535.0;
            double q = std::trunc(n * x) * (1 / n);
            if (x - q > 0.5 / n) q += 1 / n;
            return toByte(static_cast<int>(std::trunc(q * 255 + 0.5)));
        });
    }
    const double s = static_cast<double>(static_cast<float>(65535.0 / n)), i = static_cast<double>(static_cast<float>(n / 65535.0));
    const auto quantised = [&](double v, double threshold) {
        const double t = std::trunc(i * v);
        return v - t * s > threshold ? t * s + s : t * s;
    };
    const auto output = [](double base) { return toByte(static_cast<int>(std::trunc(base + 0.5)) >> 8); };
    const Tables noise = {r.noise > 0 ? noiseTables(r) : NoiseTables{}};
    if (r.ditherType == kuvDitherOrdered4x4) {
        return forEachSample(r, src, before, [&](int sample, int x, int y, int) {
            const double m = static_cast<double>(matrixAt(x, y));
            const double threshold = r.noise > 0 ? s * (m + static_cast<double>(noise.at(x, y)))
                                                 : static_cast<double>(static_cast<float>(m * (65535.0 / n)));
            return output(quantised(sample, threshold));
        });
    }
    Errors<double> c(r.size.width, r.channels() * r.size.height);
    return forEachSample(r, src, before, [&](int sample, int x, int y, int row) {
        const auto p = [&](int dx) { return c(x + dx, row - 1); };
        const auto q = [&](int dx) { return c(x + dx, row - 2); };
        const auto l = [&](int dx) { return c(x + dx, row); };
        double e;
        if (r.ditherType == kuvDitherFloydSteinberg) {
            e = (5 * p(0) + 3 * p(1) + p(-1) + 7 * l(-1)) * 0.0625;
        } else if (r.ditherType == kuvDitherJarvisJudiceNinke) {
            e = (q(-2) + q(2) + 7 * (p(0) + l(-1)) + 5 * (q(0) + p(-1) + p(1) + l(-2)) + 3 * (q(-1) + q(1) + p(-2) + p(2))) *
                static_cast<double>(1.0f / 48);
        } else {
            e = (q(-2) + q(2) + 8 * (p(0) + l(-1)) + 4 * (q(0) + p(-1) + p(1) + l(-2)) + 2 * (q(-1) + q(1) + p(-2) + p(2))) *
                static_cast<double>(1.0f / 42);
        }
        const double v = sample + e;
        if (v >= 65535) return 255;
        if (v < 0) return 0;
        const double base = quantised(v, r.noise > 0 ? static_cast<double>(noise.at(x, y)) : s / 2);
        c.set(x, row, static_cast<float>(v - base));
        return output(base);
    });
}

std::vector<Kuv8u> reducedInSingles(const Reduction& r, const std::vector<Kuv16u>& src, const std::vector<Kuv8u>& before) {
    const float n = static_cast<float>(r.levels - 1);
    if (r.ditherType == kuvDitherOff) {
        return forEachSample(r, src, before, [&](int sample, int, int, int) {
            const float x = static_cast<float>(sample) * 1.5259022e-5f;
            float q = std::trunc(n * x) * (1 / n);
            if (x - q > 0.5f / n) q += 1 / n;
            return toByte(static_cast<int>(std::trunc(q * 255)));
        });
    }
    const float s = 65535 / n, i = n / 65535;
    const auto quantised = [&](float v, float threshold) {
        const float t = std::trunc(i * v), rem = v - t * s;
        return rem > threshold ? t * s + s : t * s;
    };
    const auto output = [](float base) { return toByte(static_cast<int>(std::trunc(base)) >> 8); };
    const Tables noise = {r.noise > 0 ? noiseTables(r) : NoiseTables{}};
    if (r.ditherType == kuvDitherOrdered4x4) {
        return forEachSample(r, src, before, [&](int sample, int x, int y, int) {
            const float m = matrixAt(x, y);
            const float threshold = r.noise > 0 ? s * (m + noise.at(x, y))
                                                : static_cast<float>(static_cast<double>(m) * (65535.0 / (r.levels - 1)));
            return output(quantised(static_cast<float>(sample), threshold));
        });
    }
    Errors<float> c(r.size.width, r.channels() * r.size.height);
    return forEachSample(r, src, before, [&](int sample, int x, int y, int row) {
        const auto p = [&](int dx) { return c(x + dx, row - 1); };
        const auto q = [&](int dx) { return c(x + dx, row - 2); };
        const auto l = [&](int dx) { return c(x + dx, row); };
        float e;
        if (r.ditherType == kuvDitherFloydSteinberg) {
            e = (3 * p(1) + p(-1) + 5 * p(0) + 7 * l(-1)) * 0.0625f;
        } else {
            const bool stucki = r.ditherType == kuvDitherStucki;
            const float a = stucki ? 8 : 7, b = stucki ? 4 : 5, d = stucki ? 2 : 3;
            const float before1 = a * p(0) + b * (p(-1) + p(1)) + d * (p(-2) + p(2));
            const float before2 = b * q(0) + d * (q(-1) + q(1)) + (q(-2) + q(2));
            e = (before1 + before2 + b * l(-2) + a * l(-1)) * (stucki ? 0.023809524f : 0.020833334f);
        }
        const float v = e + static_cast<float>(sample);
        if (v >= 65535) return 255;
        if (v < 0) return 0;
        const float base = quantised(v, r.noise > 0 ? noise.at(x, y) : s / 2);
        c.set(x, row, v - base);
        return output(base);
    });
}

}  // namespace kuvtest
