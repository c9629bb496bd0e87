// Whether numbers are finite as floats, which is what other formats store.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

namespace vrn::convert {

// Blocks of a fixed length are compared with vector instructions.
[[nodiscard]] inline bool allFinite(std::span<const float> numbers) {
    constexpr std::size_t block = 64;
    for (; numbers.size() >= block; numbers = numbers.subspan(block)) {
        unsigned finite = 1;
        for (std::size_t i = 0; i < block; ++i)
            finite &= std::abs(numbers[i]) <= std::numeric_limits<float>::max() ? 1U : 0U;
        if (finite == 0)
            return false;
    }
    return std::ranges::all_of(numbers, [](float number) { return std::isfinite(number); });
}

[[nodiscard]] inline bool fitsFloat(double number) {
    return std::abs(number) <= static_cast<double>(std::numeric_limits<float>::max());
}

} // namespace vrn::convert
