// Token: the type and text of a token, with the position of its last character.
#pragma once

#include "scene/core/Log.h"

#include <string_view>

namespace vor::velmo_sdk::impl {

struct Token {
    // The values are fixed; those in the gaps are never used.
    enum class Type : i32 {
        Eof = 0,     // end of input, expected or not
        Invalid = 1, // the text is the message
        Id = 2,
        Int = 3,
        Real = 4,
        Comment = 5,
        Braces = 6,   // a whole `{ ... }` list
        Parens = 7,   // a whole `( ... )` list
        Brackets = 8, // a whole `[ ... ]` list
        String = 9,
        Dot = 15,
        Comma = 16,
        Colon = 17,
        Semicolon = 18,
        Quote = 19,
        Slash = 21,
        Backslash = 22,
        Equals = 29,
        Plus = 30,
        Star = 32,
        Pipe = 33,
        True = 35,
        False = 36,
        Null = 37,
    };

    Type type = Type::Eof;
    std::string_view text; // owned by the lexer; see Lexer::nextToken() for its lifetime
    i32 line = 0;          // 1-based, of the token's last character
    i32 column = 0;

    [[nodiscard]] TextPosition position() const noexcept { return {line, column}; }
};

} // namespace vor::velmo_sdk::impl
