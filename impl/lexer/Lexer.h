// Lexer: splits VRN text into tokens.
//
//     StringLexer lexer("a.x = 1;");
//     for (Token token = lexer.nextToken(); token.type > Token::Type::Invalid; token = lexer.nextToken())
//         use(token); // the lexer owns token.text
//
// Derived classes are the sources of characters (StringLexer, FileLexer). The lexer scans a window of the source; the
// text of a token is in the window, as far as it is kept as written. A token that reaches the end of the window is
// scanned on after a refill, which keeps it in one piece. Only line feeds end lines; columns count bytes.
//
// The lexer does not log: a lexical error is a token of type Invalid or Eof whose text is the formatted message.
// Scanning is linear in the text; if startStatement() is called, memory is bounded by the blocks of the source that
// contain the tokens of the last four statements, without the lists that go to an ElementSink. A lexer is confined to
// one thread.
#pragma once

#include "impl/lexer/ElementSink.h"
#include "impl/lexer/TextKeeper.h"
#include "impl/lexer/TextPlace.h"
#include "impl/lexer/Token.h"
#include "scene/core/Vector.h"
#include "scene/syntax/CharClass.h"

#include <algorithm>
#include <array>
#include <memory>

namespace vor::velmo_sdk::impl {

class Lexer {
public:
    Lexer() = default;
    Lexer(const Lexer&) = delete;
    Lexer& operator=(const Lexer&) = delete;
    virtual ~Lexer() = default;

    // Advances by one character and returns it. At the end of the text, asks the source again for more.
    char consume();

    // The next token; at the end of the text, an Eof token for each call. If the token is a list in braces and there is
    // a sink, the sink receives the elements, and the text of the token is just the braces. The text of a token is
    // valid until startStatement() has been called four more times.
    [[nodiscard]] virtual Token nextToken(ElementSink* sink = nullptr);

    // Call when the consumed tokens are no longer needed, after at least one token for each call.
    void startStatement() noexcept { texts_.startStatement(); }

    // The place where a token begins that was returned `tokensAgo` calls of nextToken() ago, at most TextKeeper's
    // `lookahead`; null if it is no longer in the window, or refused. The token must be in a single line.
    [[nodiscard]] TextPlace beginOf(const Token& token, u64 tokensAgo) const noexcept;

    // Goes back or forward to a place in the window. Between there and here must be no bytes outside ASCII.
    void restart(const TextPlace& place) noexcept;

    // Makes beginOf() refuse tokens before a place in the window, so that no text is scanned in vain twice.
    void refuseRestartBefore(const char* place) noexcept { refusedBefore_ = std::max(refusedBefore_, place); }

    // The next character to be consumed.
    [[nodiscard]] char nextCharacter() const noexcept { return static_cast<char>(cur); }

    // Whether others can take characters from the source, so that the window may shrink between two tokens.
    [[nodiscard]] virtual bool isShared() const noexcept { return false; }

    // The end of the characters that are available without consuming; null if there are none.
    [[nodiscard]] const char* windowEnd() const noexcept { return end_; }

    // Input that has been accepted silently: whether the text was ended by a byte with the value of the end marker; the
    // number of bytes outside ASCII that were skipped between tokens, except a byte-order mark at the start; and the
    // position of the first of them.
    [[nodiscard]] bool isEndedByByte() const noexcept { return isAtEnd() && !window().empty(); }
    [[nodiscard]] u64 foreignBytes() const noexcept { return foreignBytes_; }
    [[nodiscard]] TextPosition firstForeignByte() const noexcept { return firstForeignByte_; }

    // The position of the next character to be consumed.
    [[nodiscard]] TextPosition nextPosition() const noexcept {
        return prev == '\n' ? TextPosition{wrappingAdd(line, 1), 1} : TextPosition{line, wrappingAdd(column, 1)};
    }

protected:
    // The characters of the source after `rest`, the end of the window, which they follow in memory: either in place,
    // or after a copy of it. Returns `rest` and these characters; just `rest` at the end of the text. The memory must
    // stay valid as long as the lexer, unless `owner` is set.
    struct Window {
        std::string_view characters;
        std::shared_ptr<const char[]> owner{};
    };
    virtual Window refill(std::string_view rest) = 0;

    // Fetches the first characters. For the constructors of derived classes.
    void start() { step(0); }

    // Takes all characters of the window but `cur` away from the lexer; returns their number.
    std::size_t releaseWindow() noexcept;

    [[nodiscard]] bool isAtEnd() const noexcept { return cur == endOfText; }
    [[nodiscard]] bool isNumberChar() const noexcept { return isIn(cur, numberChar); }

    // The available characters, beginning with `cur`; empty at the end of the text.
    [[nodiscard]] std::string_view window() const noexcept { return {at_, end_}; }

    Token comment();
    Token string();
    Token parens();
    Token braces(ElementSink* sink);
    Token brackets();
    Token id();
    Token number();
    Token token(Token::Type type);
    [[nodiscard]] Token token(Token::Type type, const ds::Vector<char>& text) const;
    [[nodiscard]] Token eof() const;
    [[nodiscard]] Token invalidToken() const;
    [[nodiscard]] Token unexpectedEof(String what) const;
    [[nodiscard]] Token invalidListToken(String what) const;

    // Consumes the next part of a list and appends its contribution to the canonical text.
    void list(ds::Vector<char>& text, char open, char close);

    signed char prev = 0; // the character consumed last
    signed char cur = 0;  // the one to be consumed next
    i32 pos = 0;          // its index; `pos`, `line` and `column` wrap around beyond 2 GiB
    i32 line = 1;         // of `prev`
    i32 column = 0;
    u64 foreignBytes_ = 0;
    TextPosition firstForeignByte_;

private:
    struct ListKind;
    Token listIn(const ListKind& kind);
    Token listFor(ElementSink& sink, const ListKind& kind);
    Token normalisedList(const ListKind& kind, ds::Vector<char> text, ElementSink* sink);
    [[nodiscard]] Token here(Token::Type type, std::string_view text) const { return {type, text, line, column}; }
    [[nodiscard]] Token message(Token::Type type, const String& text) const {
        return here(type, texts_.keep(text.view()));
    }
    void skipBlanks();
    void countForeign();
    // The number of characters up to the end of a run. `endOf` finds it from the first and the end of some characters,
    // and is called again with the characters after them if it returns their end.
    template <class EndOf> [[nodiscard]] std::size_t lengthOf(EndOf endOf);
    [[nodiscard]] signed char characterAt(std::size_t offset) const noexcept {
        return at_ + offset == end_ ? endOfText : static_cast<signed char>(at_[offset]);
    }
    std::string_view take(std::size_t count);
    std::string_view takeInLine(std::size_t count);
    void step(std::size_t count) {
        at_ += count;
        if (at_ == end_) {
            cur = endOfText;
            if (!extend())
                return;
        }
        cur = static_cast<signed char>(*at_);
    }
    [[nodiscard]] bool extend();

    // Positions wrap around beyond 2 GiB.
    static i32 wrappingAdd(i32 number, u64 more) noexcept {
        return static_cast<i32>(static_cast<u32>(number) + static_cast<u32>(more));
    }

    const char* at_ = nullptr; // `cur` in the window
    const char* end_ = nullptr;
    std::shared_ptr<const char[]> owner_; // of the window; null if the source is
    bool hasTokens_ = false;              // whether there are tokens in the memory of the window
    std::array<const char*, 4> begins_{}; // of the last tokens; null if not in the window
    u64 tokens_ = 0;
    const char* refusedBefore_ = nullptr;
    u32 markLength_ = 0;       // bytes of a byte-order mark seen so far
    mutable TextKeeper texts_; // owns the text of tokens that is not in the window
};

template <class EndOf> std::size_t Lexer::lengthOf(EndOf endOf) {
    std::size_t length = 0;
    do
        length = static_cast<std::size_t>(endOf(at_ + length, end_) - at_);
    while (at_ + length == end_ && extend());
    return length;
}

} // namespace vor::velmo_sdk::impl
