// Whether numbers are finite as floats, which is what other formats store.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

namespace vrn::convert {

[[nodiscard]] inline bool allFinite(std::span<const float> numbers) {
    return std::ranges::all_of(numbers, [](float number) { return std::isfinite(number); });
}

[[nodiscard]] inline bool fitsFloat(double number) {
    return std::abs(number) <= static_cast<double>(std::numeric_limits<float>::max());
}

} // namespace vrn::convert
