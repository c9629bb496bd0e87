// Scans identifiers, numbers and punctuation in a window.
#pragma once

#include "impl/lexer/Token.h"
#include "scene/syntax/CharClass.h"

#include <array>
#include <bit>
#include <iterator>
#include <string_view>

#ifdef __SSE2__
#    include <emmintrin.h>
#endif

namespace vor::velmo_sdk::impl {

// The number of leading identifier characters among sixteen.
[[nodiscard]] inline std::size_t identifierLength(const char* text) noexcept {
#ifdef __SSE2__
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
    const __m128i fromA = _mm_sub_epi8(_mm_or_si128(bytes, _mm_set1_epi8('a' ^ 'A')), _mm_set1_epi8('a'));
    const __m128i fromZero = _mm_sub_epi8(bytes, _mm_set1_epi8('0'));
    const __m128i letter = _mm_cmpeq_epi8(_mm_min_epu8(fromA, _mm_set1_epi8('z' - 'a')), fromA);
    const __m128i digit = _mm_cmpeq_epi8(_mm_min_epu8(fromZero, _mm_set1_epi8(9)), fromZero);
    const __m128i underscore = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('_'));
    const __m128i belongs = _mm_or_si128(_mm_or_si128(letter, digit), underscore);
    return static_cast<std::size_t>(std::countr_one(static_cast<u32>(_mm_movemask_epi8(belongs))));
#else
    std::size_t length = 0;
    while (length < 16 && isIn(text[length], identifierChar))
        ++length;
    return length;
#endif
}

// Whether two words are equal. At least sixteen characters must be readable at each, unless one is empty.
[[nodiscard]] inline bool isSameWord(std::string_view a, std::string_view b) noexcept {
#ifdef __SSE2__
    if (a.size() != b.size() || a.size() > 16 || a.empty())
        return a == b;
    const __m128i equal = _mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(a.data())),
                                         _mm_loadu_si128(reinterpret_cast<const __m128i*>(b.data())));
    return static_cast<std::size_t>(std::countr_one(static_cast<u32>(_mm_movemask_epi8(equal)))) >= a.size();
#else
    return a == b;
#endif
}

// The number of leading printable characters among sixteen, up to a quote or a backslash.
[[nodiscard]] inline std::size_t plainTextLength(const char* text) noexcept {
#ifdef __SSE2__
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
    const __m128i printable = _mm_cmpgt_epi8(bytes, _mm_set1_epi8(' ' - 1)); // signed: not outside ASCII either
    const __m128i special = _mm_or_si128(
        _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\x7F')),
        _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('"')), _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\\'))));
    return static_cast<std::size_t>(
        std::countr_one(static_cast<u32>(_mm_movemask_epi8(_mm_andnot_si128(special, printable)))));
#else
    std::size_t length = 0;
    while (length < 16 && String::isPrintable(text[length]) && text[length] != '"' && text[length] != '\\')
        ++length;
    return length;
#endif
}

// The end of the word that begins at `at`, at most `end`; `at` itself if no word begins there. There must be more than
// sixteen characters before `end`.
[[nodiscard]] inline const char* wordEnd(const char* at, const char* end) noexcept {
    if (isIn(*at, punctuationChar))
        return at + 1;
    const bool isNumber = String::isDigit(*at) || *at == '-';
    if (!isNumber && !isIn(*at, identifierChar))
        return at;
    if (!isNumber) {
        const std::size_t length = identifierLength(at);
        at += length;
        if (length < 16)
            return at;
    }
    const int belongs = isNumber ? numberChar : identifierChar;
    while (at != end && isIn(*at, belongs))
        ++at;
    return at;
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
