// Encodes characters as UTF-8 (RFC 3629).
#pragma once

#include <string>

namespace vor {

// `codePoint` is at most U+10FFFF and no surrogate.
inline void appendUtf8(std::string& text, char32_t codePoint) {
    const auto push = [&](char32_t bits) { text += static_cast<char>(bits); };
    if (codePoint < 0x80) {
        push(codePoint);
    } else if (codePoint < 0x800) {
        push(0xC0 | codePoint >> 6);
        push(0x80 | (codePoint & 0x3F));
    } else if (codePoint < 0x10000) {
        push(0xE0 | codePoint >> 12);
        push(0x80 | (codePoint >> 6 & 0x3F));
        push(0x80 | (codePoint & 0x3F));
    } else {
        push(0xF0 | codePoint >> 18);
        push(0x80 | (codePoint >> 12 & 0x3F));
        push(0x80 | (codePoint >> 6 & 0x3F));
        push(0x80 | (codePoint & 0x3F));
    }
}

} // namespace vor
