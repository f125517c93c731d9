// Results that a call leaves at addresses of their own.
#pragma once

#include "support/arguments.hpp"

namespace kuvtest {

// (pointer): to so many results, which a page may end with.
template <class T, int count = 1>
struct Results {
    std::tuple<T*> operator()(Draw& draw) const {
        return {draw.image<T>(Role::output, count, 1, 0, sameOrBothNaN<T>).template row<T>()};
    }
};

// The same, or null.
template <class T>
struct OptionalResult {
    std::tuple<T*> operator()(Draw& draw) const {
        if (oneIn(draw.random, 4)) return {nullptr};
        return Results<T>{}(draw);
    }
};

}  // namespace kuvtest
