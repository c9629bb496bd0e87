// Text of any bytes, made safe for terminals and JSON.
#pragma once

#include "scene/core/Export.h"
#include "scene/core/String.h"

#include <array>
#include <string>

namespace vor {

// The length of the well-formed UTF-8 sequence (RFC 3629) at the start of `text`; 0 if there is none.
[[nodiscard]] VRN_API std::size_t utf8Length(std::string_view text) noexcept;

// Whether the whole text is well-formed UTF-8.
[[nodiscard]] VRN_API bool isUtf8(std::string_view text) noexcept;

// Whether a byte continues a character of UTF-8 that an earlier byte begins.
[[nodiscard]] constexpr bool isContinuation(char c) noexcept { return (static_cast<u8>(c) & 0xC0) == 0x80; }

// Where the character that contains the byte at `at` begins; `at` itself at the end of the text, and in what is not
// UTF-8. Text can be cut there.
[[nodiscard]] VRN_API std::size_t characterStart(std::string_view text, std::size_t at) noexcept;

// The text if it has at most `length` bytes; otherwise the characters that fit into them, followed by `...`.
[[nodiscard]] VRN_API std::string truncated(std::string_view text, std::size_t length);

// The text as UTF-8: each byte that belongs to no well-formed sequence becomes U+FFFD.
[[nodiscard]] VRN_API String toUtf8(const String& text);

// The text, safe to show on a terminal: control characters (those of ASCII and of Latin-1) and bytes that are not UTF-8
// become `\n`, `\t`, `\r` or `\xHH`; everything else stays.
[[nodiscard]] VRN_API String escapeForTerminal(std::string_view text);

// Well-formed UTF-8 as a JSON string, quotes included. Control characters become `\u00HH`, including DEL and those of
// Latin-1, which are valid in JSON but not safe on a terminal.
[[nodiscard]] VRN_API std::string quoteForJson(std::string_view utf8);

// Appends the first character of `text`, escaped as by escapeForTerminal(), to `out`; returns how many bytes of `text`
// it consumed. `text` must not be empty.
VRN_API std::size_t escapeCharacter(std::string_view text, std::string& out);

// The two hexadecimal digits of a byte, in upper case, the high one first.
[[nodiscard]] constexpr std::array<char, 2> hexDigits(u8 byte) noexcept {
    constexpr char digits[] = "0123456789ABCDEF";
    return {digits[byte >> 4], digits[byte & 15]};
}

} // namespace vor
