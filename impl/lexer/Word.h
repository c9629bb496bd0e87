// Scans identifiers, numbers and punctuation in a window.
#pragma once

#include "impl/lexer/Token.h"
#include "scene/core/CharBlock.h"
#include "scene/syntax/CharClass.h"

#include <array>
#include <iterator>
#include <string_view>

namespace vor::velmo_sdk::impl {

// The number of leading identifier characters among sixteen.
[[nodiscard]] inline std::size_t identifierLength(const char* text) noexcept {
    const CharBlock block = CharBlock::load(text);
    return (block.lowerCase().between('a', 'z') | block.between('0', '9') | block.is('_')).leading();
}

// Whether two words are equal. At least sixteen characters must be readable at each, unless one is empty.
[[nodiscard]] inline bool isSameWord(std::string_view a, std::string_view b) noexcept {
    if (a.size() != b.size() || a.size() > CharBlock::size || a.empty())
        return a == b;
    return CharBlock::load(a.data()).sameAs(CharBlock::load(b.data())).leading() >= a.size();
}

// The number of leading printable characters among sixteen, up to a quote or a backslash.
[[nodiscard]] inline std::size_t plainTextLength(const char* text) noexcept {
    const CharBlock block = CharBlock::load(text);
    return (block.between(' ', '~') & ~(block.is('"') | block.is('\\'))).leading();
}

// The end of the identifier characters at the start of some characters.
[[nodiscard]] inline const char* identifierEnd(const char* at, const char* end) noexcept {
    if (end - at >= static_cast<std::ptrdiff_t>(CharBlock::size)) {
        const std::size_t length = identifierLength(at);
        at += length;
        if (length < CharBlock::size)
            return at;
    }
    while (at != end && isIn(*at, identifierChar))
        ++at;
    return at;
}

// The end of the word that begins at `at`, which is not `end`; `at` itself if no word begins there.
[[nodiscard]] inline const char* wordEnd(const char* at, const char* end) noexcept {
    if (isIn(*at, punctuationChar))
        return at + 1;
    if (String::isDigit(*at) || *at == '-')
        return numberEnd(at, end);
    return identifierEnd(at, end);
}

// The token type of a punctuation character.
[[nodiscard]] inline Token::Type punctuationType(char c) noexcept {
    struct Table {
        std::array<Token::Type, 128> types{};
        constexpr Table() {
            using enum Token::Type;
            constexpr Token::Type each[] = {Quote, Star,      Plus,   Comma,     Dot, Slash,
                                            Colon, Semicolon, Equals, Backslash, Pipe};
            static_assert(std::size(each) == punctuation.size());
            for (std::size_t i = 0; i < punctuation.size(); ++i)
                types[static_cast<u8>(punctuation[i])] = each[i];
        }
    };
    static constexpr Table table;
    return table.types[static_cast<u8>(c)];
}

} // namespace vor::velmo_sdk::impl
