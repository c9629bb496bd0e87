// Lexer: splits VRN text into tokens.
//
//     StringLexer lexer("a.x = 1;");
//     for (Token token = lexer.nextToken(); token.type > Token::Type::Invalid; token = lexer.nextToken())
//         use(token); // the lexer owns token.text
//
// Derived classes are the sources of characters (StringLexer, FileLexer). A source delivers single characters through
// consume(). If it has more of them in memory, it exposes them as its window, in which the lexer scans whole runs; the
// tokens are the same. Only line feeds end lines; columns count bytes.
//
// The lexer does not log: a lexical error is a token of type Invalid or Eof whose text is the formatted message.
// Scanning is linear in the text; if startStatement() is called, memory is bounded by the tokens of the last four
// statements, without the lists that go to an ElementSink. A lexer is confined to one thread.
#pragma once

#include "impl/lexer/ElementSink.h"
#include "impl/lexer/ScanExtent.h"
#include "impl/lexer/TextKeeper.h"
#include "impl/lexer/TextPlace.h"
#include "impl/lexer/Token.h"
#include "scene/core/Vector.h"
#include "scene/syntax/CharClass.h"

#include <algorithm>
#include <array>
#include <string>

namespace vor::velmo_sdk::impl {

class Lexer {
public:
    Lexer() = default;
    Lexer(const Lexer&) = delete;
    Lexer& operator=(const Lexer&) = delete;
    virtual ~Lexer() = default;

    // Advances by one character and returns it.
    virtual char consume() = 0;

    // The next token; at the end of the text, an Eof token for each call. If the token is a list in braces and there is
    // a sink, the sink receives the elements, and the text of the token is just the braces. The text of a token is
    // valid until startStatement() has been called four more times.
    [[nodiscard]] Token nextToken(ElementSink* sink = nullptr);

    // Call when the consumed tokens are no longer needed, after at least one token for each call.
    void startStatement() noexcept {
        texts_.startStatement();
        if (scratch_.capacity() > largeScratch)
            scratch_ = std::string();
    }

    // The place where a token begins that was returned `tokensAgo` calls of nextToken() ago, at most TextKeeper's
    // `lookahead`; null if it is no longer in the window, or refused. The token must be in a single line.
    [[nodiscard]] TextPlace beginOf(const Token& token, u64 tokensAgo) const noexcept;

    // Goes back or forward to a place in the window. Between there and here must be no bytes outside ASCII.
    void restart(const TextPlace& place) noexcept;

    // Makes beginOf() refuse tokens before a place in the window, so that no text is scanned in vain twice.
    void refuseRestartBefore(const char* place) noexcept { refusedBefore_ = std::max(refusedBefore_, place); }

    // The next character to be consumed.
    [[nodiscard]] char nextCharacter() const noexcept { return static_cast<char>(cur); }

    // Whether the window stays valid as long as the lexer, whoever else reads from the source.
    [[nodiscard]] bool keepsWindow() const noexcept { return isWindowKept_; }

    // The end of the characters that are available without consuming; null if there are none.
    [[nodiscard]] const char* windowEnd() const noexcept { return end_; }

    // Input that has been accepted silently: whether the text was ended by a byte with the value of the end marker,
    // which only a source with a window can determine; the number of bytes outside ASCII that were skipped between
    // tokens, except a byte-order mark at the start; and the position of the first of them.
    [[nodiscard]] bool isEndedByByte() const noexcept { return isAtEnd() && !window().empty(); }
    [[nodiscard]] u64 foreignBytes() const noexcept { return foreignBytes_; }
    [[nodiscard]] TextPosition firstForeignByte() const noexcept { return firstForeignByte_; }

    // The position of the next character to be consumed.
    [[nodiscard]] TextPosition nextPosition() const noexcept {
        return prev == '\n' ? TextPosition{wrappingAdd(line, 1), 1} : TextPosition{line, wrappingAdd(column, 1)};
    }

protected:
    // Moves the position to the character that is about to be consumed. `pos`, `line` and `column` wrap around beyond
    // 2 GiB; a source keeps its own offset.
    void advance() noexcept;

    [[nodiscard]] bool isAtEnd() const noexcept { return cur == endOfText; }

    // Sets the window, and `cur` to its first character, or to the end of the text if it is empty. The characters must
    // stay valid until refill() is called.
    void setWindow(std::string_view characters) noexcept {
        at_ = characters.data();
        end_ = at_ + characters.size();
        begins_ = {};
        refusedBefore_ = nullptr;
        cur = characters.empty() ? endOfText : static_cast<signed char>(*at_);
    }

    // Promises that the window stays valid as long as the lexer, so that tokens may refer to it.
    void keepWindow() noexcept { isWindowKept_ = true; }

    // The available characters, starting with `cur`; empty for a source without a window and at the end of the text.
    [[nodiscard]] std::string_view window() const noexcept { return {at_, end_}; }

    // Called when the window has been consumed: sets the next one, or an empty one at the end of the text.
    virtual void refill() {}

    // consume() for a source with a window, also at the end of the text.
    char consumeFromWindow() {
        advance();
        if (at_ != end_)
            step(1);
        return static_cast<char>(prev);
    }

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
    [[nodiscard]] bool isNumberChar() const noexcept { return isIn(cur, numberChar); }

    signed char prev = 0; // the character consumed last
    signed char cur = 0;  // the one to be consumed next
    i32 pos = 0;
    i32 line = 1; // of `prev`
    i32 column = 0;

private:
    struct ListKind;
    [[nodiscard, gnu::always_inline]] inline Token token(Token::Type type, std::string_view text) const;
    Token nestedListByCharacter(const ListKind& kind);
    Token nestedList(const ListKind& kind);
    [[nodiscard]] std::string_view canonicalList(std::string_view raw);
    Token listFor(ElementSink& sink, const ListKind& kind);
    // Inlined into nextToken() so that the position reaches the token in registers: loading `line` and `column` as one
    // word right after storing them separately would stall on store forwarding.
    [[nodiscard, gnu::always_inline]] inline bool takeWordInWindow(std::string_view& word);
    [[nodiscard, gnu::always_inline]] inline Token wordToken(std::string_view word);
    [[nodiscard, gnu::always_inline]] inline Token idToken(std::string_view word);
    [[nodiscard, gnu::always_inline]] inline Token numberToken(std::string_view text);
    void skipBlanks();
    [[gnu::noinline]] void countForeign(std::string_view blanks);
    void consumeRun(std::size_t count);
    void consumeInLine(std::size_t count) {
        line = wrappingAdd(line, prev == '\n' ? 1 : 0);
        column = wrappingAdd(prev == '\n' ? 0 : column, count);
        pos = wrappingAdd(pos, count);
        prev = static_cast<signed char>(at_[count - 1]);
        step(count);
    }
    void consumePiece(std::size_t count);
    void beginToken(const char* first) noexcept { begins_[tokens_++ % begins_.size()] = first; }
    void step(std::size_t count) {
        at_ += count;
        if (at_ != end_)
            cur = static_cast<signed char>(*at_);
        else
            refill();
    }
    [[nodiscard]] std::string_view upcoming(const char& one, std::size_t maxLength) const;
    template <class Belongs> [[nodiscard]] std::string_view takeWhile(Belongs belongs);
    template <class Belongs> [[nodiscard]] std::string_view gatherWhile(Belongs belongs);
    template <class Scanner> [[nodiscard]] ScanEnd take(Scanner& scanner, std::string_view& text);
    [[nodiscard]] Token here(Token::Type type, std::string_view text) const { return {type, text, line, column}; }
    [[nodiscard]] Token message(Token::Type type, const String& text) const { return here(type, texts_.keep(text)); }

    // Positions wrap around beyond 2 GiB.
    static i32 wrappingAdd(i32 number, u64 more) noexcept {
        return static_cast<i32>(static_cast<u32>(number) + static_cast<u32>(more));
    }

    const char* at_ = nullptr; // `cur` in the window
    const char* end_ = nullptr;
    bool isWindowKept_ = false;
    u64 foreignBytes_ = 0;
    std::array<const char*, 4> begins_{}; // of the last tokens; null if not in the window
    u64 tokens_ = 0;
    const char* refusedBefore_ = nullptr;
    u32 markLength_ = 0; // bytes of a byte-order mark seen so far
    TextPosition firstForeignByte_;
    mutable TextKeeper texts_;                           // owns the text of tokens, including messages
    static constexpr std::size_t largeScratch = 1 << 20; // beyond this, released after the statement
    std::string scratch_;                                // characters of a token that is not in one window
};

inline Token Lexer::token(Token::Type type, std::string_view text) const {
    const bool isInWindow = isWindowKept_ && text.data() != scratch_.data();
    return here(type, isInWindow ? text : texts_.keep(text));
}

} // namespace vor::velmo_sdk::impl
