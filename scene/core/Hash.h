// A hash for tables of what texts name: keyed, so that no text can be written whose names collide.
#pragma once

#include "scene/core/Export.h"
#include "scene/core/Types.h"

#include <cstddef>
#include <cstring>
#include <string_view>

namespace vor {

// Random, and the same for as long as the process runs.
struct HashSeed {
    u64 first;
    u64 second;
};
[[nodiscard]] VRN_API const HashSeed& hashSeed() noexcept;

namespace detail {

// Both halves of the product, which depend on all bits of both numbers.
[[nodiscard]] inline u64 foldedProduct(u64 a, u64 b) noexcept {
    __extension__ using u128 = unsigned __int128;
    const u128 product = static_cast<u128>(a) * b;
    return static_cast<u64>(product) ^ static_cast<u64>(product >> 64);
}

[[nodiscard]] inline u64 wordAt(const char* text) noexcept {
    u64 word;
    std::memcpy(&word, text, sizeof word);
    return word;
}

} // namespace detail

[[nodiscard]] inline u64 keyedHash(u64 number) noexcept {
    const HashSeed& seed = hashSeed();
    return detail::foldedProduct(detail::foldedProduct(number ^ seed.first, seed.second), seed.first | 1);
}

// Of a text. O(n), 16 bytes at a time.
[[nodiscard]] inline u64 keyedHash(std::string_view text) noexcept {
    const HashSeed& seed = hashSeed();
    u64 state = seed.first;
    const char* at = text.data();
    std::size_t left = text.size();
    for (; left > 16; left -= 16, at += 16)
        state = detail::foldedProduct(detail::wordAt(at) ^ seed.second, detail::wordAt(at + 8) ^ state);
    u64 words[2] = {0, 0};
    if (left >= 8) {
        words[0] = detail::wordAt(at);
        words[1] = detail::wordAt(at + left - 8);
    } else if (left > 0) {
        std::memcpy(words, at, left);
    }
    state = detail::foldedProduct(words[0] ^ seed.second, words[1] ^ state);
    return detail::foldedProduct(state ^ text.size(), seed.second | 1);
}

} // namespace vor
