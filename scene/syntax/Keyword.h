// Encodes words of up to eight characters as integers, so that keywords can be compared case-insensitively in one step.
#pragma once

#include "scene/core/Types.h"

#include <bit>
#include <cstring>
#include <string_view>
#include <type_traits>

namespace vor::velmo_sdk::impl {

// The number of an identifier. Two identifiers have the same number if they differ at most in case; the number is 0 if
// the identifier is empty or longer than eight characters.
[[nodiscard]] constexpr u64 keywordNumber(std::string_view word) noexcept {
    constexpr u64 smallLetters = 0x2020202020202020; // changes neither digits nor lower-case letters
    const std::size_t n = word.size();
    if (n == 0 || n > 8)
        return 0;
    u64 number = 0;
    if (std::is_constant_evaluated() || std::endian::native != std::endian::little) {
        for (std::size_t i = 0; i < n; ++i)
            number |= u64(static_cast<u8>(word[i])) << (8 * i);
    } else if (n >= 4) {
        u32 first = 0;
        u32 last = 0;
        std::memcpy(&first, word.data(), sizeof first);
        std::memcpy(&last, word.data() + n - sizeof last, sizeof last);
        number = first | u64(last) << (8 * (n - sizeof last));
    } else {
        number = u64(static_cast<u8>(word[0])) | u64(static_cast<u8>(word[n / 2])) << (8 * (n / 2)) |
                 u64(static_cast<u8>(word[n - 1])) << (8 * (n - 1));
    }
    return number | (smallLetters >> (64 - 8 * n));
}

// Not constexpr, so that a call in a constant expression does not compile. Never defined.
u64 aKeywordHasOneToEightCharacters();

// The number of a keyword of the format. A keyword without a number, empty or too long, does not compile.
[[nodiscard]] consteval u64 keyword(std::string_view word) {
    const u64 number = keywordNumber(word);
    return number != 0 ? number : aKeywordHasOneToEightCharacters();
}

} // namespace vor::velmo_sdk::impl
