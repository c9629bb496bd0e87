#include "scene/core/Hash.h"

#include <chrono>
#include <random>

namespace vor {

// Without a random device, falls back to the clock and an address that the loader randomises.
static HashSeed makeSeed() noexcept {
    try {
        std::random_device random;
        const auto word = [&] { return u64(random()) << 32 | random(); };
        return {word(), word()};
    } catch (...) {
        static const char place = 0;
        const auto now = static_cast<u64>(std::chrono::steady_clock::now().time_since_epoch().count());
        return {now * 0x9E3779B97F4A7C15, reinterpret_cast<std::uintptr_t>(&place) * 0xD1B54A32D192ED03};
    }
}

const HashSeed& hashSeed() noexcept {
    static const HashSeed seed = makeSeed();
    return seed;
}

} // namespace vor
