// A keyed hash, for tables whose keys come from input files: with a random key per process, no input can be crafted to
// make its keys collide (hash flooding).
//
//     keyedHash("camera1")        // differs from run to run; never store it
//
// Not cryptographic. Safe to call from several threads.
#pragma once

#include "scene/core/Export.h"
#include "scene/core/Types.h"

#include <cstddef>
#include <cstring>
#include <string_view>

namespace vor {

// The random key of this process.
struct HashSeed {
    u64 first;
    u64 second;
};
[[nodiscard]] VRN_API const HashSeed& hashSeed() noexcept;

namespace detail {

// The two halves of the 128-bit product, combined: each output bit depends on many bits of both factors.
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

// Linear, 16 bytes per step.
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
