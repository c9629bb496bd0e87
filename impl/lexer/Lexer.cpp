#include "impl/lexer/Lexer.h"

#include "impl/Messages.h"
#include "impl/lexer/Word.h"
#include "scene/syntax/Keyword.h"

#include <algorithm>
#include <cstring>

namespace vor::velmo_sdk::impl {

namespace {

// The 8-bit counter lets the compiler use all lanes of a vector register, but limits a batch to 255 characters.
u64 countLineFeeds(std::string_view text) noexcept {
    u64 count = 0;
    while (!text.empty()) {
        u8 some = 0;
        const std::string_view part = text.substr(0, 240);
        for (const char c : part)
            some = static_cast<u8>(some + (c == '\n' ? 1 : 0));
        count += some;
        text.remove_prefix(part.size());
    }
    return count;
}

} // namespace

void Lexer::advance() noexcept {
    line = wrappingAdd(line, prev == '\n' ? 1 : 0);
    column = prev == '\n' ? 1 : wrappingAdd(column, 1);
    prev = cur;
    pos = wrappingAdd(pos, 1);
}

// Consumes characters of the window. Equivalent to advance() for each of them, with one update of the position.
void Lexer::consumeRun(std::size_t count) {
    const char* run = at_;
    const std::size_t before = count - 1; // a line feed counts when the next character is consumed
    const auto* lastFeed = static_cast<const char*>(memrchr(run, '\n', before));
    if (!lastFeed)
        return consumeInLine(count);
    line = wrappingAdd(line, (prev == '\n' ? 1U : 0U) + countLineFeeds({run, lastFeed + 1}));
    column = wrappingAdd(0, static_cast<u64>(run + before - lastFeed));
    pos = wrappingAdd(pos, count);
    prev = static_cast<signed char>(run[before]);
    step(count);
}

// Consumes characters while `belongs` accepts them and returns them; the view is valid until the next call. `belongs`
// must not accept line feeds.
template <class Belongs> std::string_view Lexer::takeWhile(Belongs belongs) {
    const char* runEnd = at_;
    while (runEnd != end_ && belongs(*runEnd))
        ++runEnd;
    if (runEnd == end_)
        return gatherWhile(belongs); // continues in the next window, or there is no window
    const std::string_view run(at_, runEnd);
    if (!run.empty())
        consumeInLine(run.size());
    return run;
}

template <class Belongs> std::string_view Lexer::gatherWhile(Belongs belongs) {
    scratch_.clear();
    while (!isAtEnd() && belongs(static_cast<char>(cur))) {
        const char* runEnd = at_;
        while (runEnd != end_ && belongs(*runEnd))
            ++runEnd;
        if (runEnd == at_) {
            scratch_ += consume();
        } else {
            scratch_.append(at_, runEnd);
            consumeInLine(static_cast<std::size_t>(runEnd - at_));
        }
    }
    return scratch_;
}

// At most `maxLength` characters of the window; just `one`, which is `cur`, if there is no window.
std::string_view Lexer::upcoming(const char& one, std::size_t maxLength) const {
    return at_ == end_ ? std::string_view(&one, 1) : window().substr(0, maxLength);
}

void Lexer::consumePiece(std::size_t count) {
    if (count == 0)
        return;
    if (at_ == end_)
        consume();
    else
        consumeRun(count);
}

void Lexer::skipBlanks() {
    do {
        if (at_ == end_) {
            const char blank = static_cast<char>(cur);
            countForeign({&blank, 1});
            consume();
            continue;
        }
        // Up to and including the first line feed: within a line, updating the position is cheap.
        const char* blank = at_;
        while (*blank != '\n' && blank + 1 != end_ && isIn(blank[1], blankChar))
            ++blank;
        countForeign({at_, blank + 1});
        consumeInLine(static_cast<std::size_t>(blank + 1 - at_));
    } while (isIn(cur, blankChar));
}

// Counts the bytes outside ASCII in blanks that are about to be consumed.
void Lexer::countForeign(std::string_view blanks) {
    if (std::ranges::none_of(blanks, [](char c) { return isIn(c, foreignChar); }))
        return;
    refuseRestartBefore(at_); // they would be counted twice
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    TextPosition place = nextPosition();
    for (std::size_t i = 0; i < blanks.size(); ++i) {
        if (isIn(blanks[i], foreignChar) && foreignBytes_++ == 0)
            firstForeignByte_ = place;
        // A complete byte-order mark at the start does not count.
        const bool goesOn = markLength_ < byteOrderMark.size() && u64(markLength_) + 1 == foreignBytes_ &&
                            static_cast<u64>(pos) + i == markLength_ && blanks[i] == byteOrderMark[markLength_];
        if (goesOn && ++markLength_ == byteOrderMark.size())
            foreignBytes_ = 0;
        place = blanks[i] == '\n' ? TextPosition{wrappingAdd(place.line, 1), 1}
                                  : TextPosition{place.line, wrappingAdd(place.column, 1)};
    }
}

Token Lexer::idToken(std::string_view word) {
    switch (keywordNumber(word)) {
    case keyword("true"):
        return here(Token::Type::True, "true");
    case keyword("false"):
        return here(Token::Type::False, "false");
    case keyword("null"):
        return here(Token::Type::Null, "null");
    default:
        return token(Token::Type::Id, word);
    }
}

Token Lexer::numberToken(std::string_view text) {
    const bool isReal = std::ranges::any_of(text, [](char c) { return isIn(c, realChar); });
    return token(isReal ? Token::Type::Real : Token::Type::Int, text);
}

// Consumes a word (an identifier, a number, a punctuation character) and the blanks before it with one update of the
// position. Fails if the window may end inside the word. This is the fast path for most tokens.
bool Lexer::takeWordInWindow(std::string_view& word) {
    const char* at = at_;
    const char* lineStart = nullptr; // after the last line feed among the blanks
    u64 feeds = 0;
    for (; at != end_ && isIn(*at, asciiBlank); ++at)
        if (*at == '\n') {
            lineStart = at + 1;
            ++feeds;
        }
    if (end_ - at <= 16)
        return false;
    const char* next = wordEnd(at, end_);
    if (next == at || next == end_)
        return false;
    word = {at, next};
    beginToken(at);
    const auto count = static_cast<std::size_t>(next - at_);
    line = wrappingAdd(line, (prev == '\n' ? 1U : 0U) + feeds);
    column = feeds != 0 ? static_cast<i32>(next - lineStart) : wrappingAdd(prev == '\n' ? 0 : column, count);
    pos = wrappingAdd(pos, count);
    prev = static_cast<signed char>(next[-1]);
    at_ = next;
    cur = static_cast<signed char>(*next);
    return true;
}

Token Lexer::wordToken(std::string_view word) {
    const char first = word[0];
    if (isIn(first, punctuationChar))
        return token(punctuationType(first), word);
    return String::isDigit(first) || first == '-' ? numberToken(word) : idToken(word);
}

Token Lexer::nextToken(ElementSink* sink) {
    std::string_view word;
    if (takeWordInWindow(word))
        return wordToken(word);
    if (isIn(cur, blankChar))
        skipBlanks();
    beginToken(at_ != end_ ? at_ : nullptr);
    if (isAtEnd())
        return eof();
    switch (cur) {
    case '"':
        return string();
    case '#':
        return comment();
    case '(':
        return parens();
    case '{':
        return braces(sink);
    case '[':
        return brackets();
    default:
        break;
    }
    const char c = static_cast<char>(cur);
    if (isIn(c, punctuationChar))
        return token(punctuationType(c));
    if (String::isLetter(c) || c == '_')
        return id();
    if (c == '-' || String::isHexDigit(c))
        return number();
    return invalidToken();
}

TextPlace Lexer::beginOf(const Token& token, u64 tokensAgo) const noexcept {
    const char* const first = begins_[(tokens_ - tokensAgo) % begins_.size()];
    if (!first || first < refusedBefore_)
        return {};
    const char* const last = first + token.text.size() - 1;
    return {first, static_cast<u32>(token.line), TextPlace::lowerHalf(last) - static_cast<u32>(token.column)};
}

void Lexer::restart(const TextPlace& place) noexcept {
    const TextPosition before = place.positionBefore();
    line = before.line;
    column = before.column;
    pos = wrappingAdd(pos, static_cast<u64>(place.at - at_));
    prev = ' '; // no line feed: the position is that of the next character's line
    at_ = place.at;
    cur = static_cast<signed char>(*at_);
}

/// COMMENT ::= '#' any*   up to the end of the line (LF or CR) or the end of the text
Token Lexer::comment() {
    return token(Token::Type::Comment,
                 takeWhile([](char c) { return c != '\n' && c != '\r' && c != static_cast<char>(endOfText); }));
}

/// ID ::= ( letter | '_' ) ( letter | '_' | digit )*   except the next three
/// TRUE ::= 'true'
/// FALSE ::= 'false'
/// NULL ::= 'null'
Token Lexer::id() {
    if (isAtEnd())
        return unexpectedEof("ID");
    return idToken(takeWhile([](char c) { return isIn(c, identifierChar); }));
}

/// INT ::= ( '-' | digit ) number-char*   without `.`, and without f, n, a, i in either case
/// REAL ::= ( '-' | digit ) number-char*   with at least one of these
/// number-char ::= digit | '+' | '-' | '.' | 'a'..'f' | 'i' | 'n' | 'u'   letters in either case
Token Lexer::number() {
    if (isAtEnd())
        return unexpectedEof("NUMBER");
    return numberToken(takeWhile([](char c) { return isIn(c, numberChar); }));
}

/// punctuation ::= "'" | '*' | '+' | ',' | '.' | '/' | ':' | ';' | '=' | '\' | '|'   each character is a token
Token Lexer::token(Token::Type type) {
    const char c = static_cast<char>(cur);
    consume();
    return here(type, texts_.keep({&c, 1}));
}

Token Lexer::token(Token::Type type, const ds::Vector<char>& text) const {
    return here(type, texts_.keep({text.data(), text.size()}));
}

Token Lexer::eof() const { return here(Token::Type::Eof, messages::endOfInput); }

// Nothing is consumed on an error, so its position is that of the previous character.
Token Lexer::invalidToken() const {
    return message(Token::Type::Invalid, String::format(messages::invalidToken, line, column, cur));
}

Token Lexer::unexpectedEof(String what) const { // NOLINT(performance-unnecessary-value-param)
    return message(Token::Type::Eof, String::format(messages::unexpectedEof, what.buf()));
}

Token Lexer::invalidListToken(String what) const { // NOLINT(performance-unnecessary-value-param)
    return message(Token::Type::Invalid, String::format(messages::invalidListToken, what.buf(), line, column, cur));
}

} // namespace vor::velmo_sdk::impl
