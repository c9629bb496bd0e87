// The difference between two arrays of numbers.
#pragma once

#include "scene/core/Types.h"

#include <algorithm>
#include <cmath>
#include <concepts>
#include <limits>
#include <span>

namespace vrn::inspect {

// Indices count elements, each of which has one or more numbers.
struct NumbersDifference {
    vor::u64 differing = 0; // number of elements that differ
    vor::u64 compared = 0;  // number of elements that both arrays have
    vor::u64 first = 0;     // the first element that differs
    vor::u64 largestAt = 0; // the element with the largest difference
    double largest = 0;     // the largest difference; infinite if one of the numbers is NaN
    bool isSingle = false;  // the numbers are floats, and so `largest` is shown as one
};

// The absolute difference, 0 for equal numbers. NaN equals NaN, -0 equals 0.
template <class Number> [[nodiscard]] double distance(Number a, Number b) {
    if constexpr (std::floating_point<Number>) {
        if (a == b || (std::isnan(a) && std::isnan(b)))
            return 0;
        const double difference = std::abs(static_cast<double>(a) - static_cast<double>(b));
        if (std::isnan(difference))
            return std::numeric_limits<double>::infinity();
        return std::max(difference, std::numeric_limits<double>::denorm_min()); // underflow must not hide a difference
    } else if constexpr (sizeof(Number) < sizeof(vor::u64)) {
        return std::abs(static_cast<double>(a) - static_cast<double>(b));
    } else {
        const auto wideA = static_cast<vor::u64>(a);
        const auto wideB = static_cast<vor::u64>(b);
        return static_cast<double>(a < b ? wideB - wideA : wideA - wideB);
    }
}

// Compares the elements that both arrays have. Real numbers are equal if they differ by at most `tolerance`; integers
// must be equal.
template <class Number>
[[nodiscard]] NumbersDifference compareNumbers(std::span<const Number> a, std::span<const Number> b,
                                               vor::u64 components, double tolerance) {
    const double allowed = std::floating_point<Number> ? tolerance : 0;
    NumbersDifference difference;
    difference.isSingle = std::same_as<Number, float>;
    difference.compared = std::min(a.size(), b.size()) / components;
    for (vor::u64 element = 0; element < difference.compared; ++element) {
        double largest = 0;
        for (vor::u64 i = element * components; i < (element + 1) * components; ++i)
            largest = std::max(largest, distance(a[i], b[i]));
        if (largest <= allowed)
            continue;
        if (difference.differing++ == 0)
            difference.first = element;
        if (largest > difference.largest) {
            difference.largest = largest;
            difference.largestAt = element;
        }
    }
    return difference;
}

} // namespace vrn::inspect
