// TextPlace: where a scanner is in a text.
#pragma once

#include "scene/core/Log.h"

#include <cstdint>

namespace vor::velmo_sdk::impl {

// A place between two characters of a window, with the line of the next one. Positions wrap around like those of the
// lexer, so the start of a line is a number: the lower half of the address of the character before it, which may lie
// outside the window.
struct TextPlace {
    const char* at = nullptr; // the next character
    u32 line = 1;
    u32 lineStart = 0;

    [[nodiscard]] static u32 lowerHalf(const char* character) noexcept {
        return static_cast<u32>(reinterpret_cast<std::uintptr_t>(character));
    }
    // The position of a character on the same line.
    [[nodiscard]] TextPosition positionOf(const char* character) const noexcept {
        return {static_cast<i32>(line), static_cast<i32>(lowerHalf(character) - lineStart)};
    }
    [[nodiscard]] TextPosition positionBefore() const noexcept { return positionOf(at - 1); }
};

} // namespace vor::velmo_sdk::impl
