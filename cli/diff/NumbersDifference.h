// How two rows of numbers differ.
#pragma once

#include "scene/core/Types.h"

#include <algorithm>
#include <cmath>
#include <concepts>
#include <limits>
#include <span>

namespace vrn::cli {

// Of rows of elements, each so many numbers.
struct NumbersDifference {
    vor::u64 differing = 0; // elements
    vor::u64 compared = 0;
    vor::u64 first = 0;     // the first that differs
    vor::u64 largestAt = 0; // the element in which two numbers are farthest apart
    double largest = 0;     // how far; infinite when one is NaN
    bool isSingle = false;  // of floats: meant to be shown as one
};

// How far apart two numbers are, 0 when they are equal. NaN is equal to NaN, -0 to 0.
template <class Number> [[nodiscard]] double distance(Number a, Number b) {
    if constexpr (std::floating_point<Number>) {
        if (a == b || (std::isnan(a) && std::isnan(b)))
            return 0;
        const double apart = std::abs(static_cast<double>(a) - static_cast<double>(b));
        if (std::isnan(apart))
            return std::numeric_limits<double>::infinity();
        return std::max(apart, std::numeric_limits<double>::denorm_min()); // never 0 where they are not equal
    } else if constexpr (sizeof(Number) < sizeof(vor::u64)) {
        return std::abs(static_cast<double>(a) - static_cast<double>(b));
    } else {
        const auto wideA = static_cast<vor::u64>(a);
        const auto wideB = static_cast<vor::u64>(b);
        return static_cast<double>(a < b ? wideB - wideA : wideA - wideB);
    }
}

// Compares as many elements as both rows have. Real numbers may be `tolerance` apart, integers may not.
template <class Number>
[[nodiscard]] NumbersDifference compareNumbers(std::span<const Number> a, std::span<const Number> b,
                                               vor::u64 components, double tolerance) {
    const double allowed = std::floating_point<Number> ? tolerance : 0;
    NumbersDifference difference;
    difference.isSingle = std::same_as<Number, float>;
    difference.compared = std::min(a.size(), b.size()) / components;
    for (vor::u64 element = 0; element < difference.compared; ++element) {
        double farthest = 0;
        for (vor::u64 i = element * components; i < (element + 1) * components; ++i)
            farthest = std::max(farthest, distance(a[i], b[i]));
        if (farthest <= allowed)
            continue;
        if (difference.differing++ == 0)
            difference.first = element;
        if (farthest > difference.largest) {
            difference.largest = farthest;
            difference.largestAt = element;
        }
    }
    return difference;
}

} // namespace vrn::cli
