#include "support/arguments.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <sstream>
#include <type_traits>

namespace kuvtest {

std::ptrdiff_t drawStep(Random& random, StepClass steps, int rowBytes) {
    const bool freely = steps == StepClass::C, negative = freely || steps == StepClass::D;
    const bool small = steps != StepClass::B;
    switch (below(random, 8)) {
        case 0: return (rowBytes + 63) & ~63;
        case 1: return rowBytes + 2 * below(random, 40);
        case 2:
        case 3: return (rowBytes + below(random, 40)) | 1;
        case 4: return negative ? -rowBytes : rowBytes;
        case 5: return negative ? -((rowBytes + below(random, 40)) | 1) : rowBytes;
        case 6: return freely && oneIn(random, 2) ? 0 : small ? 1 + below(random, rowBytes) : rowBytes;  // rows overlap
        default: return rowBytes;
    }
}

Draw::Draw(const Random& numbers, std::uint64_t side) : random(numbers), irrelevant_(side) {
    size = {between(random, 1, 70), between(random, 1, 9)};
    if (oneIn(random, 8)) size = {between(random, 71, 700), between(random, 1, 4)};
    if (oneIn(random, 32)) size = {between(random, 1, 3), between(random, 10, 300)};
}

DrawnImage& Draw::add(Role role, Geometry geometry, ElementCompare same) {
    geometry.guard = oneIn(random, 2) ? Guard::end : Guard::begin;
    geometry.gap = oneIn(random, 2) ? 0 : below(random, oneIn(random, 8) ? 4096 : 64);  // touching the guard, or at any alignment
    if (role == Role::record) geometry.gap -= geometry.gap % geometry.elementBytes;
    constexpr const char* roles[] = {"source", "record", "output", "in-out", "scratch"};
    const std::string name = "image " + std::to_string(images_.size()) + ", " + roles[static_cast<int>(role)];
    return images_.emplace_back(name, geometry, irrelevant_(), role, std::move(same));
}

void Draw::keep() {
    for (DrawnImage& each : images_) each.before = each.image.bytes();
}

std::string Draw::description() const {
    std::ostringstream text;
    text << "size " << size.width << " x " << size.height;
    for (const DrawnImage& each : images_) text << "\n  " << each.image.name() << ": " << each.image.geometry();
    return text.str();
}

template <class T>
T specialValue(Kuv8u which) {
    using Limits = std::numeric_limits<T>;
    if constexpr (std::is_floating_point_v<T>) {
        constexpr T values[] = {
            0, 1, Limits::min(), Limits::denorm_min(), Limits::max(), Limits::infinity(), Limits::quiet_NaN(), Limits::signaling_NaN()};
        return std::copysign(values[which & 7], which & 8 ? T(-1) : T(1));
    } else {
        return {};
    }
}

template <class T>
void fillSamples(Random& random, const Image& image, int elements) {
    constexpr bool real = std::is_floating_point_v<T>;
    constexpr T lowest = real ? T(-3e38) : std::numeric_limits<T>::lowest();
    constexpr T highest = real ? T(3e38) : std::numeric_limits<T>::max();
    const int pattern = below(random, real ? 9 : 8);
    const auto any = [&]() -> T {
        if constexpr (!real) return random.bits<T>();
        if (pattern == 7) return random.bits<T>();  // NaN and denormals among them
        return static_cast<T>(static_cast<int>(random.bits<Kuv32u>() % 2000001) - 1000000) / T(1000);
    };
    const auto rarely = [&](int count) { return random.bits<Kuv8u>() % count == 0; };
    const T ground = any();
    for (int r = 0; r < image.geometry().rows; ++r) {
        for (int i = 0; i < elements; ++i) {
            T value = any();
            switch (pattern) {
                case 0: value = T(0); break;
                case 1: value = highest; break;
                case 2: value = (i + r) % 2 == 0 ? lowest : highest; break;
                case 3: value = rarely(16) ? value : ground; break;
                case 4: value = static_cast<T>(rarely(2) ? lowest : highest); break;
                case 5: value = static_cast<T>(ground + static_cast<T>((i * 3 + r) % 64)); break;
                case 8: value = rarely(3) ? specialValue<T>(random.bits<Kuv8u>()) : value; break;
                default: break;
            }
            store(image.row(r), i, value);
        }
    }
}

template void fillSamples<Kuv8u>(Random&, const Image&, int);
template void fillSamples<Kuv16u>(Random&, const Image&, int);
template void fillSamples<Kuv16s>(Random&, const Image&, int);
template void fillSamples<Kuv32s>(Random&, const Image&, int);
template void fillSamples<Kuv32u>(Random&, const Image&, int);
template void fillSamples<Kuv64u>(Random&, const Image&, int);
template void fillSamples<Kuv32f>(Random&, const Image&, int);
template void fillSamples<Kuv64f>(Random&, const Image&, int);

}  // namespace kuvtest
