// The smaller, the larger and the middle one of integers.
#pragma once

#include <type_traits>

namespace kuv {
namespace {

template <class T>
constexpr T smaller(T a, std::type_identity_t<T> b) {
    return a < b ? a : b;
}
template <class T>
constexpr T larger(T a, std::type_identity_t<T> b) {
    return a > b ? a : b;
}
template <class T>
constexpr T clamped(T value, std::type_identity_t<T> least, std::type_identity_t<T> most) {
    return value < least ? least : value > most ? most : value;
}

}  // namespace
}  // namespace kuv
