// Lexer: turns characters into tokens.
//
// A source of characters derives from it and delivers them one at a time through consume(). A source
// that has more of them at hand shows them as its window, and the scanner takes whole runs from there;
// what comes out is the same. Only the line feed ends a line, and a column is a byte. The scanner
// reports nothing: a lexical error comes out as a token whose text is the finished message.
#pragma once

#include "impl/lexer/ElementSink.h"
#include "impl/lexer/ScanExtent.h"
#include "impl/lexer/TextKeeper.h"
#include "impl/lexer/Token.h"
#include "scene/core/Vector.h"
#include "scene/syntax/CharClass.h"

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

    // The next token; at the end of the text, Eof tokens for ever. If it is a list in braces and there is
    // a sink, that takes the elements, and the token's text is the brackets alone. The text of a token
    // stays until startStatement() has been called four times more.
    [[nodiscard]] Token nextToken(ElementSink* sink = nullptr);

    // To be called when the tokens that have been consumed are not needed any more; at least one of them
    // for each call.
    void startStatement() noexcept {
        texts_.startStatement();
        if (scratch_.capacity() > largeScratch)
            scratch_ = std::string();
    }

    // What has been taken without a word so far: whether a byte of the value of the end stands where the text
    // ends, as far as the source shows it; how many bytes outside ASCII have been skipped between tokens, but for
    // a byte-order mark at the start, and where the first of them is.
    [[nodiscard]] bool isEndedByByte() const noexcept { return isAtEnd() && !window().empty(); }
    [[nodiscard]] u64 foreignBytes() const noexcept { return foreignBytes_; }
    [[nodiscard]] TextPosition firstForeignByte() const noexcept { return firstForeignByte_; }

    // Of the character that would be consumed next.
    [[nodiscard]] TextPosition nextPosition() const noexcept {
        return prev == '\n' ? TextPosition{wrappingAdd(line, 1), 1} : TextPosition{line, wrappingAdd(column, 1)};
    }

protected:
    // Brings the position to the character that is about to be consumed. `pos`, like `line` and
    // `column`, wraps around beyond 2 GiB; a source keeps its own offset.
    void advance() noexcept;

    [[nodiscard]] bool isAtEnd() const noexcept { return cur == endOfText; }

    // Sets `cur` to the first of `characters`, which are at hand from now on, or to the end of the text
    // if there are none. They stay where they are until refill() is called.
    void setWindow(std::string_view characters) noexcept {
        at_ = characters.data();
        end_ = at_ + characters.size();
        cur = characters.empty() ? endOfText : static_cast<signed char>(*at_);
    }

    // Promises that what setWindow() has been given stays as long as the lexer, so that tokens may show it.
    void keepWindow() noexcept { isWindowKept_ = true; }

    // The characters at hand, `cur` being the first; empty for a source that sets no window, and
    // behind the last character.
    [[nodiscard]] std::string_view window() const noexcept { return {at_, end_}; }

    // Asks a source whose window has been consumed to set the next one, or an empty one at its end.
    virtual void refill() {}

    // consume() for a source with a window, up to its end and behind it.
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

    // Takes one step through a list and appends what it contributes to the canonical text.
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
    // Part of nextToken(), so that the position goes into the token from registers: it could not be read
    // back at once as a whole from the two halves that it is written in.
    [[nodiscard, gnu::always_inline]] inline bool takeShownWord(std::string_view& word);
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
    void step(std::size_t count) {
        at_ += count;
        if (at_ != end_)
            cur = static_cast<signed char>(*at_);
        else
            refill();
    }
    [[nodiscard]] std::string_view upcoming(const char& one, std::size_t most) const;
    template <class Belongs> [[nodiscard]] std::string_view takeWhile(Belongs belongs);
    template <class Belongs> [[nodiscard]] std::string_view gatherWhile(Belongs belongs);
    template <class Scanner> [[nodiscard]] ScanEnd take(Scanner& scanner, std::string_view& text);
    [[nodiscard]] Token here(Token::Type type, std::string_view text) const { return {type, text, line, column}; }
    [[nodiscard]] Token message(Token::Type type, const String& text) const { return here(type, texts_.keep(text)); }

    // Positions wrap around beyond 2 GiB.
    static i32 wrappingAdd(i32 number, u64 more) noexcept {
        return static_cast<i32>(static_cast<u32>(number) + static_cast<u32>(more));
    }

    const char* at_ = nullptr; // where `cur` stands in the window
    const char* end_ = nullptr;
    bool isWindowKept_ = false;
    u64 foreignBytes_ = 0;
    u32 markLength_ = 0; // how much of a byte-order mark has been seen
    TextPosition firstForeignByte_;
    mutable TextKeeper texts_;                           // owns the characters of tokens, messages included
    static constexpr std::size_t largeScratch = 1 << 20; // not kept for the next token
    std::string scratch_;                                // characters of a token that no window shows as a whole
};

inline Token Lexer::token(Token::Type type, std::string_view text) const {
    const bool isShown = isWindowKept_ && text.data() != scratch_.data();
    return here(type, isShown ? text : texts_.keep(text));
}

} // namespace vor::velmo_sdk::impl
