// The character classes of the lexer.
#pragma once

#include "scene/core/String.h"

#include <array>
#include <string_view>

namespace vor::velmo_sdk::impl {

// The character after the end of a source. A byte 0xFF in the input is the same character and ends it, too.
inline constexpr signed char endOfText = -1;

/// letter ::= 'a'..'z'   in either case
/// digit ::= '0'..'9'
/// hexdigit ::= digit | 'a'..'f'   in either case
/// blank ::= ' ' | any   if it is not printable ASCII; it separates tokens and list elements
enum CharClass : u8 {
    asciiBlank = 1,
    foreignChar = 64,                     // outside ASCII
    blankChar = asciiBlank | foreignChar, // a space, or not printable ASCII: separates tokens and list elements
    identifierChar = 2,                   // letters, digits, `_`
    numberChar = 4,                       // can continue a number
    listPunctuation = 8,                  // brackets and the comma, which separate list elements
    realChar = 16,                        // makes a number a real
    punctuationChar = 32,                 // is a token by itself
};

// The characters of class punctuationChar.
inline constexpr std::string_view punctuation = "'*+,./:;=\\|";

namespace detail {

constexpr u8 classesOf(char c) noexcept {
    if (c == static_cast<char>(endOfText))
        return 0;
    const char small = String::lower(c);
    const bool isNumber =
        String::isHexDigit(c) || c == '+' || c == '-' || c == '.' || small == 'i' || small == 'n' || small == 'u';
    const bool isPunctuation = c == '(' || c == ')' || c == '[' || c == ']' || c == '{' || c == '}' || c == ',';
    const bool isForeign = static_cast<u8>(c) >= 0x80;
    const bool isBlank = String::isSpace(c) || !String::isPrintable(c);
    const bool isIdentifier = String::isLetter(c) || String::isDigit(c) || c == '_';
    const bool isReal = c == '.' || small == 'f' || small == 'n' || small == 'a' || small == 'i';
    const bool isToken = punctuation.find(c) != std::string_view::npos;
    return static_cast<u8>((isToken ? punctuationChar : 0) | (isReal ? realChar : 0) |
                           (isBlank ? isForeign ? foreignChar : asciiBlank : 0) | (isIdentifier ? identifierChar : 0) |
                           (isNumber ? numberChar : 0) | (isPunctuation ? listPunctuation : 0));
}

constexpr std::array<u8, 256> classesOfAll() noexcept {
    std::array<u8, 256> table{};
    for (std::size_t i = 0; i < table.size(); ++i)
        table[i] = classesOf(static_cast<char>(static_cast<u8>(i)));
    return table;
}
inline constexpr std::array<u8, 256> charClasses = classesOfAll();

} // namespace detail

// Whether a character belongs to one of the classes; the end of the text belongs to none.
[[nodiscard]] constexpr bool isIn(char c, int classes) noexcept {
    return (detail::charClasses[static_cast<u8>(c)] & classes) != 0;
}
[[nodiscard]] constexpr bool isIn(signed char c, int classes) noexcept { return isIn(static_cast<char>(c), classes); }

// The end of the number characters at the start of some characters.
[[nodiscard]] constexpr const char* numberEnd(const char* at, const char* end) noexcept {
    while (at != end && isIn(*at, numberChar))
        ++at;
    return at;
}

// Whether a bracket list can contain the character before its closing bracket.
[[nodiscard]] constexpr bool isBracketChar(char c) noexcept {
    return c == '[' || c == '*' || String::isDigit(c) || isIn(c, blankChar);
}

} // namespace vor::velmo_sdk::impl
