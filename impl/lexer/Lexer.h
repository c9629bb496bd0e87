// Lexer: turns characters into tokens.
//
// A source of characters derives from it and delivers them one at a time through consume(); the
// scanner stands on that alone. Only the line feed ends a line, and a column is a byte. The scanner
// reports nothing: a lexical error comes out as a token whose text is the finished message.
#pragma once

#include "impl/lexer/Token.h"

namespace vor::velmo_sdk::impl {

class Lexer {
public:
    Lexer() = default;
    Lexer(const Lexer&) = delete;
    Lexer& operator=(const Lexer&) = delete;
    virtual ~Lexer() = default;

    // Advances by one character and returns it.
    virtual char consume() = 0;

    // The next token; at the end of the text, Eof tokens for ever.
    [[nodiscard]] Token nextToken();

    // The value of `cur` at the end of the text. A byte of that value in the text ends it there.
    static constexpr signed char endOfText = -1;

protected:
    // Brings the position to the character that is about to be consumed. `pos`, like `line` and
    // `column`, wraps around beyond 2 GiB; a source keeps its own offset.
    void advance() noexcept;

    [[nodiscard]] bool isAtEnd() const noexcept { return cur == endOfText; }

    Token comment();
    Token string();
    Token parens();
    Token braces();
    Token brackets();
    Token id();
    Token number();
    Token token(Token::Type type);
    [[nodiscard]] Token token(Token::Type type, const ds::Vector<char>& text) const;
    [[nodiscard]] Token eof() const;
    [[nodiscard]] Token invalidToken() const;
    [[nodiscard]] Token unexpectedEof(const String& what) const;
    [[nodiscard]] Token invalidListToken(const String& what) const;
    [[nodiscard]] bool isNumberChar() const noexcept;

    signed char prev = 0; // the character consumed last
    signed char cur = 0;  // the one to be consumed next
    i32 pos = 0;
    i32 line = 1; // of `prev`
    i32 column = 0;

private:
    struct ListKind;
    Token nestedList(const ListKind& kind);
    void list(ds::Vector<char>& text, char open, char close);
    [[nodiscard]] Token message(Token::Type type, const String& text) const;

    ds::Vector<char> scratch_; // the characters of the token being read
};

} // namespace vor::velmo_sdk::impl
